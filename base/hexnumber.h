// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringView>

/// "0x" and exactly eight upper-case hexadecimal digits: how addresses, offsets and sizes are shown and stored. A negative
/// value shows its 32-bit two's complement.
QString hexNumber(qint32 value);

/// The value of hexadecimal digits, with or without "0x" before them; 0 when they are none or need more than 32 bits. Eight
/// digits from 80000000 on are the two's complement that hexNumber() writes for a negative value.
qint32 parseHexadecimal(QStringView text);

/// What a user types: hexadecimal when it begins with "0x" (the capital X is no prefix), else decimal; 0 when it is no number.
qint32 parseTypedNumber(const QString &text);
