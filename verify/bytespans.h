// SPDX-License-Identifier: MIT
#pragma once

#include <QVector>

/// The bytes from \a begin to before \a end; empty when there are none between.
struct ByteSpan
{
    qint64 begin = 0;
    qint64 end = 0;

    bool isEmpty() const { return end <= begin; }
    bool operator==(const ByteSpan &other) const { return begin == other.begin && end == other.end; }
};

/// Which other spans share bytes with a span.
struct Overlaps
{
    qint64 count = 0; ///< Of all of them.
    QVector<int> others; ///< Their places in the list, ascending; not all when there are very many.
};

/// For each of \a spans the others that share at least one byte with it, \a most of them by name. Empty spans share none. Takes
/// n log n steps, however many overlap.
QVector<Overlaps> overlapsOf(const QVector<ByteSpan> &spans, int most);

/// What of the bytes 0 to before \a size none of \a spans covers, ascending.
QVector<ByteSpan> gapsBetween(QVector<ByteSpan> spans, qint64 size);
