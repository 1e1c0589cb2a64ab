// SPDX-License-Identifier: MIT
#include "persist/xmltext.h"

#include <algorithm>

namespace
{
bool isAllowedAlone(QChar c)
{
    constexpr ushort firstNonCharacter = 0xFFFE;
    return c.unicode() >= 0x20 ? !c.isSurrogate() && c.unicode() < firstNonCharacter
                               : c == QLatin1Char('\t') || c == QLatin1Char('\n') || c == QLatin1Char('\r');
}
}

QString xmlText(const QString &text)
{
    if (std::all_of(text.cbegin(), text.cend(), isAllowedAlone))
        return text;
    QString cleaned;
    cleaned.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        const bool isPair = text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (isPair)
            cleaned += text.at(i++);
        if (isPair || isAllowedAlone(text.at(i)))
            cleaned += text.at(i);
    }
    return cleaned;
}
