// SPDX-License-Identifier: MIT
#include "search/wordsample.h"

// An odd step samples every alignment.
WordSample::WordSample(const ByteRange &range) : m_counts(1 << slotBits), m_stride((range.size / sampledWords + 1) | 1)
{
    quint16 *counts = m_counts.data();
    for (qint64 position = 0; position <= range.size - wordBytes; position += m_stride)
        ++counts[hashOfWord(wordAt(range.data + position)) >> (64 - slotBits)];
}
