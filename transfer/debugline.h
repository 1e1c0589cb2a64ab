// SPDX-License-Identifier: MIT
#pragma once

#include <QDebug>
#include <QString>

/// The line that qDebug() would print for \a items: one space between them, strings in double quotes, literals as they are.
template<typename... Items> QString debugLine(const Items &...items)
{
    QString line;
    {
        QDebug stream(&line);
        (stream << ... << items);
    }
    if (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    return line;
}
