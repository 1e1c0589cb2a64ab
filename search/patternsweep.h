// SPDX-License-Identifier: MIT
#pragma once

#include "search/byterange.h"
#include "search/wordsample.h"
#include "search/worksteps.h"

#include <QVector>

#include <limits>

/// A pattern in a sweep, and the result of the sweep for it.
struct SweptPattern
{
    const char *bytes = nullptr; ///< Borrowed.
    int size = 0;
    /// Positions of the copies, unsorted and including overlapping ones. Complete below completeBelow.
    QVector<int> positions;
    /// The size of the range, or less if the pattern was too frequent and was dropped.
    int completeBelow = std::numeric_limits<int>::max();

    /// With firstOnly: copies from here on are not needed.
    int endOfInterest = std::numeric_limits<int>::max();
    int tellingWord = 0; ///< Offset of the rarest word, which is compared first.
    qint64 workLeft = 0; ///< Budget, in bytes read.
};

/// Finds the copies of many patterns in one pass over a range, at any alignment. For each remainder of an offset modulo the
/// stride, a pattern contributes its rarest 8-byte word at such an offset to a hash table. Each copy then has exactly one of
/// these words at a multiple of the stride, so a sweep over the multiples of the stride finds each copy once.
class PatternSweep
{
public:
    /// The stride is eight times an odd number: rows of pictures are powers of two long, so a power of two as stride would always
    /// read the same column.
    PatternSweep(const ByteRange &range, int stride);

    /// Shortest pattern that a sweep of \a stride can find.
    static constexpr int shortestPattern(int stride) { return stride + wordBytes - 1; }

    /// Adds \a pattern, of at least shortestPattern() bytes. Returns false, and adds nothing, if its words are so frequent in the
    /// range that most candidates would fail.
    bool add(SweptPattern *pattern, const WordSample &sample);

    /// Fills the positions of all patterns, at most \a mostPositions together. Returns false if it was cancelled.
    bool run(bool firstOnly, int mostPositions, WorkSteps *steps);

private:
    struct Entry
    {
        quint32 tag; ///< Of the word's hash.
        quint32 pattern;
        quint32 offset;
    };

    int rarestOffset(const SweptPattern &pattern, const WordSample &sample, int remainder, int *score) const;
    void buildTable();
    /// Checks the patterns that have the word at \a position. Returns the cost in bytes read.
    qint64 probe(int position, quint64 word, quint64 hash);
    qint64 check(SweptPattern *pattern, int position, int offset);
    void drop(SweptPattern *pattern, int position);

    ByteRange m_range;
    int m_stride;
    bool m_firstOnly = false;
    int m_positionsLeft = 0;
    QVector<SweptPattern *> m_patterns;
    QVector<Entry> m_entries; ///< By bucket, once the table is built.
    QVector<quint32> m_bucketStarts;
    int m_bucketShift = 0;
    QVector<quint64> m_filter; ///< A bit for each value of the upper bits of the hash: set if any word has it.
    int m_filterShift = 0;
};
