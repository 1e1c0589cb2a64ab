// SPDX-License-Identifier: MIT
#include "verify/bytespans.h"

#include <algorithm>
#include <map>

namespace
{
/// The places of the spans that are not empty, by ascending begin.
QVector<int> byBegin(const QVector<ByteSpan> &spans)
{
    QVector<int> order;
    for (int i = 0; i < spans.size(); ++i) {
        if (!spans.at(i).isEmpty())
            order.append(i);
    }
    std::stable_sort(order.begin(), order.end(), [&spans](int a, int b) { return spans.at(a).begin < spans.at(b).begin; });
    return order;
}
}

QVector<Overlaps> overlapsOf(const QVector<ByteSpan> &spans, int most)
{
    QVector<Overlaps> result(spans.size());
    const QVector<int> order = byBegin(spans);
    QVector<qint64> begins;
    QVector<qint64> ends;
    for (const int i : order) {
        begins.append(spans.at(i).begin);
        ends.append(spans.at(i).end);
    }
    std::sort(ends.begin(), ends.end());

    std::multimap<qint64, int> open; // By end: spans that begin no later than the current one and end behind its begin.
    for (int place = 0; place < order.size(); ++place) {
        const int current = order.at(place);
        const ByteSpan span = spans.at(current);
        Overlaps &found = result[current];
        // All but those that end before it begins, those that begin when it has ended, and itself.
        const auto endedBefore = std::distance(ends.cbegin(), std::upper_bound(ends.cbegin(), ends.cend(), span.begin));
        const auto beginBehind = std::distance(std::lower_bound(begins.cbegin(), begins.cend(), span.end), begins.cend());
        found.count = order.size() - endedBefore - beginBehind - 1;

        open.erase(open.begin(), open.upper_bound(span.begin));
        for (auto one = open.crbegin(); one != open.crend() && found.others.size() < most; ++one)
            found.others.append(one->second);
        for (int next = place + 1; next < order.size() && begins.at(next) < span.end && found.others.size() < most; ++next)
            found.others.append(order.at(next));
        std::sort(found.others.begin(), found.others.end());
        open.emplace(span.end, current);
    }
    return result;
}

QVector<ByteSpan> gapsBetween(QVector<ByteSpan> spans, qint64 size)
{
    std::sort(spans.begin(), spans.end(), [](const ByteSpan &a, const ByteSpan &b) { return a.begin < b.begin; });
    QVector<ByteSpan> gaps;
    qint64 covered = 0;
    for (const ByteSpan &span : spans) {
        if (span.isEmpty())
            continue;
        if (span.begin > covered && covered < size)
            gaps.append({covered, qMin(span.begin, size)});
        covered = qMax(covered, span.end);
    }
    if (covered < size)
        gaps.append({covered, size});
    return gaps;
}
