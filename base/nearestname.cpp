// SPDX-License-Identifier: MIT
#include "base/nearestname.h"

#include <QStringView>
#include <QVector>

#include <algorithm>
#include <numeric>

namespace
{
/// The number of letters to replace, leave out or add that make \a b of \a a (Levenshtein's distance); any number above \a limit
/// stands for more than that.
int distanceBetween(QStringView a, QStringView b, int limit)
{
    // What both begin and end with costs nothing, and is most of names that are numbered.
    while (!a.isEmpty() && !b.isEmpty() && a.front() == b.front()) {
        a = a.mid(1);
        b = b.mid(1);
    }
    while (!a.isEmpty() && !b.isEmpty() && a.back() == b.back()) {
        a.chop(1);
        b.chop(1);
    }
    if (std::abs(a.size() - b.size()) > limit)
        return limit + 1;
    QVector<int> row(int(b.size()) + 1); // For the letters of a so far: the distances to each beginning of b.
    std::iota(row.begin(), row.end(), 0);
    for (int i = 0; i < a.size(); ++i) {
        int diagonal = row.at(0);
        row[0] = i + 1;
        for (int j = 0; j < b.size(); ++j) {
            const int replaced = diagonal + (a.at(i) == b.at(j) ? 0 : 1);
            diagonal = row.at(j + 1);
            row[j + 1] = std::min({replaced, diagonal + 1, row.at(j) + 1});
        }
        if (*std::min_element(row.constBegin(), row.constEnd()) > limit)
            return limit + 1;
    }
    return row.constLast();
}
}

QString nearestName(const QString &wanted, const QStringList &names)
{
    constexpr int longest = 64; // A name that long is no slip of the hand, and would take long to compare.
    if (wanted.size() > longest)
        return QString();
    const QString lower = wanted.toLower();
    QString nearest;
    constexpr int mostSlips = 3;
    int least = std::clamp(wanted.size() / 3, 1, mostSlips) + 1;
    for (const QString &name : names) {
        if (std::abs(name.size() - lower.size()) >= least)
            continue;
        const QString candidate = name.toLower();
        const int distance = distanceBetween(lower, candidate, least - 1);
        if (distance < least) {
            least = distance;
            nearest = name;
        }
    }
    return nearest;
}
