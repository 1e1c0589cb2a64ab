// SPDX-License-Identifier: MIT
#pragma once

#include "search/byterange.h"

#include <QVector>

/// Counts a sample of the eight-byte words of a range, to tell words that are frequent in it from rare ones.
class WordSample
{
public:
    explicit WordSample(const ByteRange &range);

    /// How often the sample has \a word, or another that shares its slot: 0 for a word that is rare.
    int count(quint64 word) const { return m_counts.at(int(hashOfWord(word) >> (64 - slotBits))); }
    /// How many words of the range one of the sample stands for.
    int wordsPerSample() const { return m_stride; }

private:
    static constexpr int slotBits = 15;
    static constexpr int sampledWords = 8192; ///< Fits a quint16 count.

    QVector<quint16> m_counts;
    int m_stride;
};
