// SPDX-License-Identifier: MIT
#pragma once

#include "search/byterange.h"
#include "search/indexedpattern.h"
#include "search/worksteps.h"

#include <QVector>

/// The index that stands for each number of \a pattern where it lies at \a position of \a range, by number; empty when the
/// indices there and the pattern's numbers do not correspond one to one.
QVector<int> indicesAt(const ByteRange &range, int position, const IndexedPattern &pattern);

/// Finds every place of a range where the indices correspond one to one to the numbers of a pattern, for many patterns at once,
/// at any byte. Copies may overlap.
///
/// What does not depend on the palette is which indices are equal. Of the eight bytes at a place a signature is made, with a bit
/// for each index and each of the distances 1 to 8 (1 to 4 for half bytes): whether the index differs from the one so far before.
/// A pattern has the same signatures wherever it lies. So the signatures are searched for as a PatternSweep searches for words:
/// at every S-th byte of the range, with one signature for each remainder from each pattern, the rarest that there is. What has
/// one is compared in full.
class IndexedSearch
{
public:
    /// Borrows both.
    IndexedSearch(const ByteRange &range, WorkSteps *steps);

    /// The positions of each of \a patterns, ascending. Fewer once the work is cancelled. All patterns have the same bits.
    QVector<QVector<int>> find(const QVector<IndexedPattern> &patterns);

private:
    struct Entry
    {
        quint64 signature;
        int pattern;
        int offset;
    };
    /// The rarest signature of a pattern, to reject candidates by.
    struct Telling
    {
        quint64 signature = 0;
        int offset = 0;
    };

    void sample(int bits);
    int commonness(quint64 signature) const;
    bool addEntries(const IndexedPattern &pattern, int number, int stride, bool takeCommon, QVector<Entry> *entries);
    template<int bits> void sweep(const QVector<IndexedPattern> &patterns, QVector<Entry> entries, int stride);

    ByteRange m_range;
    WorkSteps *m_steps;
    QVector<quint16> m_counts; ///< Of sampled signatures, by hash.
    QVector<Telling> m_telling; ///< By pattern.
    QVector<QVector<int>> m_found;
};
