// SPDX-License-Identifier: MIT
#pragma once

#include "search/byterange.h"
#include "search/wordsample.h"
#include "search/worksteps.h"

#include <QVector>

#include <limits>

/// A pattern that takes part in a sweep, and what the sweep found out about it.
struct SweptPattern
{
    const char *bytes = nullptr; ///< Borrowed.
    int size = 0;
    /// Where its copies begin, in no order, copies that overlap included; all of those before completeBelow are there.
    QVector<int> positions;
    /// The range's size unless the pattern proved too frequent and was dropped on the way.
    int completeBelow = std::numeric_limits<int>::max();

    /// For whoever wants the first copy only: none from here on is looked for.
    int endOfInterest = std::numeric_limits<int>::max();
    int tellingWord = 0; ///< Offset of a word that is likely to tell a copy from what only resembles one.
    qint64 workLeft = 0; ///< In bytes read.
};

/// Finds the copies of many patterns in one pass over a range, at any alignment. Of each pattern one word is taken for every
/// remainder that its offset can have on division by the stride, the rarest there is, so that each copy has one of them at a
/// multiple of the stride; a sweep that looks at those places alone sees every copy once.
class PatternSweep
{
public:
    /// The stride is eight times an odd number: pictures repeat at powers of two, and a power of two as stride would see the same
    /// column of each row.
    PatternSweep(const ByteRange &range, int stride);

    /// Shortest pattern that a sweep of \a stride can find.
    static constexpr int shortestPattern(int stride) { return stride + wordBytes - 1; }

    /// Adds \a pattern, of at least shortestPattern() bytes. False, and nothing added, when its words are so frequent in the
    /// range that it would be looked for in vain all the time.
    bool add(SweptPattern *pattern, const WordSample &sample);

    /// Fills the positions of all patterns added, of at most \a mostPositions copies together. False when the work was unwanted
    /// before its end.
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
    /// Looks at the patterns that have the word at \a position. Returns what that cost, in bytes read.
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
    QVector<quint64> m_filter; ///< One bit for each value of the hash's upper bits: whether any word has it.
    int m_filterShift = 0;
};
