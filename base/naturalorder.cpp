// SPDX-License-Identifier: MIT
#include "base/naturalorder.h"

namespace
{
bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

/// The end of the run of digits that begins at \a from.
int endOfDigits(const QString &text, int from)
{
    while (from < text.size() && isDigit(text.at(from)))
        ++from;
    return from;
}

/// Compares two runs of digits of any length by their value.
int compareDigits(QStringView a, QStringView b)
{
    while (!a.isEmpty() && a.front() == QLatin1Char('0'))
        a = a.mid(1);
    while (!b.isEmpty() && b.front() == QLatin1Char('0'))
        b = b.mid(1);
    return a.size() != b.size() ? (a.size() < b.size() ? -1 : 1) : a.compare(b);
}
}

bool naturallyBefore(const QString &a, const QString &b)
{
    int i = 0;
    int j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a.at(i)) && isDigit(b.at(j))) {
            const int endA = endOfDigits(a, i);
            const int endB = endOfDigits(b, j);
            if (const int order = compareDigits(QStringView(a).mid(i, endA - i), QStringView(b).mid(j, endB - j)))
                return order < 0;
            i = endA;
            j = endB;
            continue;
        }
        const QChar left = a.at(i).toCaseFolded();
        const QChar right = b.at(j).toCaseFolded();
        if (left != right)
            return left < right;
        ++i;
        ++j;
    }
    if (i < a.size() || j < b.size())
        return i >= a.size();
    return a < b;
}
