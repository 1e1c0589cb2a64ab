// SPDX-License-Identifier: MIT
#include "base/printabletext.h"

namespace
{
bool changesDirection(ushort code)
{
    constexpr ushort arabicLetterMark = 0x061C;
    return code == arabicLetterMark || code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E)
        || (code >= 0x2066 && code <= 0x2069);
}
}

bool isControlOrBidi(QChar character)
{
    switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph: return true;
    default: return changesDirection(character.unicode());
    }
}

QString printableText(QString text)
{
    for (QChar &character : text) {
        if (isControlOrBidi(character))
            character = QChar(QChar::ReplacementCharacter);
    }
    return text;
}
