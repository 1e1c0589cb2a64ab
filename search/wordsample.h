// SPDX-License-Identifier: MIT
#pragma once

#include "search/byterange.h"

#include <QVector>

/// Counts a sample of the 8-byte words of a range, to tell frequent words from rare ones.
class WordSample
{
public:
    explicit WordSample(const ByteRange &range);

    /// Number of sampled words in the hash slot of \a word; 0 for a rare word.
    int count(quint64 word) const { return m_counts.at(int(hashOfWord(word) >> (64 - slotBits))); }
    /// Number of words of the range for each sampled word.
    int wordsPerSample() const { return m_stride; }

private:
    static constexpr int slotBits = 15;
    static constexpr int sampledWords = 8192; ///< Fits a quint16 count.

    QVector<quint16> m_counts;
    int m_stride;
};
