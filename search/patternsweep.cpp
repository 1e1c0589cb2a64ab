// SPDX-License-Identifier: MIT
#include "search/patternsweep.h"

#include <algorithm>

namespace
{
/// Fixed cost of a candidate, in bytes read: the pattern's bytes may not be in the cache.
constexpr int candidateCost = 64;

/// Number of bytes in \a word that equal their neighbour, 0 to 7. Flat words are frequent even if the sample has none.
int flatnessOf(quint64 word)
{
    const quint64 neighbours = word ^ (word << 8 | word >> 56);
    int equal = 0;
    for (int shift = 8; shift < 64; shift += 8)
        equal += (neighbours >> shift & 0xFF) == 0;
    return equal;
}

/// Length of the common prefix of \a a and \a b, rounded down to whole blocks unless all \a size bytes are equal.
int equalBytes(const char *a, const char *b, int size)
{
    constexpr int block = 128;
    int done = 0;
    for (; size - done >= block; done += block) {
        if (std::memcmp(a + done, b + done, block) != 0)
            return done;
    }
    return std::memcmp(a + done, b + done, size_t(size - done)) == 0 ? size : done;
}

int bitsFor(qint64 values)
{
    int bits = 1;
    while ((Q_INT64_C(1) << bits) < values)
        ++bits;
    return bits;
}
}

PatternSweep::PatternSweep(const ByteRange &range, int stride) : m_range(range), m_stride(stride) { }

int PatternSweep::rarestOffset(const SweptPattern &pattern, const WordSample &sample, int remainder, int *score) const
{
    constexpr int flatnessWeight = 2;
    constexpr int goodEnough = 3 * flatnessWeight;
    constexpr int mostTries = 16;
    const int choices = (pattern.size - wordBytes - remainder) / m_stride + 1;
    int best = remainder;
    *score = std::numeric_limits<int>::max();
    // Start in the middle: the edges of a picture are often flat.
    for (int i = 0; i < qMin(choices, mostTries) && *score > goodEnough; ++i) {
        const int offset = remainder + (choices / 2 + i) % choices * m_stride;
        const quint64 word = wordAt(pattern.bytes + offset);
        const int wordScore = sample.count(word) * 16 + flatnessOf(word) * flatnessWeight;
        if (wordScore < *score) {
            *score = wordScore;
            best = offset;
        }
    }
    return best;
}

bool PatternSweep::add(SweptPattern *pattern, const WordSample &sample)
{
    pattern->workLeft = m_range.size / 4 + 65536;
    const qint64 mostCandidates = pattern->workLeft / candidateCost;
    const int firstEntry = m_entries.size();
    qint64 sampled = 0;
    int bestScore = std::numeric_limits<int>::max();
    for (int remainder = 0; remainder < m_stride; ++remainder) {
        int score = 0;
        const int offset = rarestOffset(*pattern, sample, remainder, &score);
        if (score < bestScore) {
            bestScore = score;
            pattern->tellingWord = offset;
        }
        sampled += sample.count(wordAt(pattern->bytes + offset));
        if (sampled * sample.wordsPerSample() / m_stride > mostCandidates) {
            m_entries.resize(firstEntry);
            return false;
        }
        m_entries.append({0, quint32(m_patterns.size()), quint32(offset)});
    }
    m_patterns.append(pattern);
    return true;
}

void PatternSweep::buildTable()
{
    constexpr int filterBitsPerEntry = 32;
    constexpr int leastFilterBits = 15; // 4 KiB
    constexpr int mostFilterBits = 23; // 1 MiB: a larger filter does not fit into the L2 cache.
    const int bucketBits = bitsFor(m_entries.size());
    const int filterBits = qBound(leastFilterBits, bitsFor(qint64(m_entries.size()) * filterBitsPerEntry), mostFilterBits);
    m_bucketShift = 64 - bucketBits;
    m_filterShift = 64 - filterBits;
    m_filter.fill(0, 1 << (filterBits - 6));
    m_bucketStarts.fill(0, (1 << bucketBits) + 1);

    const auto hashOf = [this](const Entry &entry) {
        return hashOfWord(wordAt(m_patterns.at(int(entry.pattern))->bytes + entry.offset));
    };
    QVector<quint64> hashes(m_entries.size());
    for (int i = 0; i < m_entries.size(); ++i) {
        const quint64 hash = hashOf(m_entries.at(i));
        hashes[i] = hash;
        const quint64 bit = hash >> m_filterShift;
        m_filter[int(bit >> 6)] |= Q_UINT64_C(1) << (bit & 63);
        ++m_bucketStarts[int(hash >> m_bucketShift)];
    }
    // Counting sort: each start begins as the end of its bucket and moves down while the bucket fills.
    quint32 sum = 0;
    for (quint32 &start : m_bucketStarts)
        start = sum += start;
    QVector<Entry> sorted(m_entries.size());
    for (int i = m_entries.size() - 1; i >= 0; --i) {
        const quint64 hash = hashes.at(i);
        Entry &place = sorted[int(--m_bucketStarts[int(hash >> m_bucketShift)])];
        place = m_entries.at(i);
        place.tag = quint32(hash);
    }
    m_entries = sorted;
}

bool PatternSweep::run(bool firstOnly, int mostPositions, WorkSteps *steps)
{
    if (m_patterns.isEmpty())
        return true;
    m_firstOnly = firstOnly;
    m_positionsLeft = mostPositions;
    buildTable();
    constexpr qint64 block = qint64(64) * 1024;
    const char *data = m_range.data;
    const quint64 *filter = m_filter.constData();
    const qint64 end = m_range.size - wordBytes + 1;
    for (qint64 position = 0; position < end;) {
        const qint64 blockStart = position;
        const qint64 blockEnd = qMin(end, position + block);
        qint64 cost = 0;
        for (; position < blockEnd; position += m_stride) {
            const quint64 word = wordAt(data + position);
            const quint64 hash = hashOfWord(word);
            const quint64 bit = hash >> m_filterShift;
            if (Q_UNLIKELY(filter[bit >> 6] >> (bit & 63) & 1))
                cost += probe(int(position), word, hash);
        }
        if (!steps->add(position - blockStart + cost))
            return false;
    }
    return true;
}

qint64 PatternSweep::probe(int position, quint64 word, quint64 hash)
{
    const quint64 bucket = hash >> m_bucketShift;
    const quint32 end = m_bucketStarts.at(int(bucket) + 1);
    qint64 cost = 0;
    for (quint32 i = m_bucketStarts.at(int(bucket)); i < end; ++i) {
        const Entry &entry = m_entries.at(int(i));
        if (entry.tag != quint32(hash))
            continue;
        SweptPattern *pattern = m_patterns.at(int(entry.pattern));
        if (position >= pattern->completeBelow || wordAt(pattern->bytes + entry.offset) != word)
            continue;
        cost += check(pattern, position, int(entry.offset));
    }
    return cost;
}

qint64 PatternSweep::check(SweptPattern *pattern, int position, int offset)
{
    const int start = position - offset;
    if (start < 0 || start > m_range.size - pattern->size || start >= pattern->endOfInterest)
        return 0;
    qint64 cost = candidateCost;
    const char *candidate = m_range.data + start;
    if (wordAt(candidate + pattern->tellingWord) == wordAt(pattern->bytes + pattern->tellingWord)) {
        const int equal = equalBytes(candidate, pattern->bytes, pattern->size);
        cost += equal;
        if (equal == pattern->size) {
            pattern->positions.append(start);
            --m_positionsLeft;
            if (m_firstOnly)
                pattern->endOfInterest = start;
        }
    }
    pattern->workLeft -= cost;
    if (pattern->workLeft < 0 || m_positionsLeft < 0)
        drop(pattern, position);
    return cost;
}

void PatternSweep::drop(SweptPattern *pattern, int position)
{
    // Copies that begin later than this may have their word at a place that was not read.
    const int complete = qMax(0, position - (pattern->size - wordBytes));
    pattern->completeBelow = complete;
    QVector<int> &positions = pattern->positions;
    positions.erase(std::remove_if(positions.begin(), positions.end(), [complete](int start) { return start >= complete; }),
                    positions.end());
}
