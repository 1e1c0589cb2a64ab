// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"

QString hexNumber(qint32 value)
{
    return QStringLiteral("0x") + QStringLiteral("%1").arg(quint32(value), 8, 16, QLatin1Char('0')).toUpper();
}

qint32 parseHexadecimal(QStringView text)
{
    bool ok = false;
    const QString digits = text.toString();
    const qint32 value = digits.toInt(&ok, 16);
    return ok ? value : qint32(digits.toUInt(nullptr, 16));
}

qint32 parseTypedNumber(const QString &text)
{
    return text.startsWith(QLatin1String("0x")) ? parseHexadecimal(text) : text.toInt();
}
