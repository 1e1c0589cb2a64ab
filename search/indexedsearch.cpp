// SPDX-License-Identifier: MIT
#include "search/indexedsearch.h"

#include <QtEndian>

#include <algorithm>

namespace
{
/// Signatures look at what lies up to this many bytes before.
constexpr int reach = 8;
constexpr int strides[] = {40, 24, 8};
constexpr int sampleBits = 15;
constexpr int samples = 8192;
/// Signatures that are in more of the samples than this are common.
constexpr int mostOfRare = 8;

/// The signature of the eight bytes at \a bytes as indices of \a bits bits. The eight before are read too.
template<int bits> quint64 signatureAt(const char *bytes)
{
    // Big-endian, so that indices further on are in lower bits whatever their size.
    const auto word = qFromBigEndian<quint64>(bytes);
    const auto before = qFromBigEndian<quint64>(bytes - reach);
    quint64 signature = 0;
    if (bits == 8) {
        constexpr quint64 low = Q_UINT64_C(0x7F7F7F7F7F7F7F7F);
        for (int distance = 1; distance <= 8; ++distance) {
            const int shift = 8 * distance;
            const quint64 other = distance == 8 ? before : word >> shift | before << (64 - shift);
            const quint64 difference = word ^ other;
            const quint64 differs = (((difference & low) + low) | difference) & ~low;
            signature |= differs >> (distance - 1);
        }
        return signature;
    }
    for (int distance = 1; distance <= 4; ++distance) {
        const int shift = 4 * distance;
        const quint64 difference = word ^ (word >> shift | before << (64 - shift));
        const quint64 pairs = difference | (difference >> 1 & Q_UINT64_C(0x7777777777777777));
        const quint64 differs = (pairs | (pairs >> 2 & Q_UINT64_C(0x3333333333333333))) & Q_UINT64_C(0x1111111111111111);
        signature |= differs << (distance - 1);
    }
    return signature;
}

quint64 signatureOf(int bits, const char *bytes)
{
    return bits == 8 ? signatureAt<8>(bytes) : signatureAt<4>(bytes);
}

int slotOf(quint64 signature)
{
    return int(hashOfWord(signature) >> (64 - sampleBits));
}

/// Bytes that lie wholly in the pattern; a last half byte may be anything in the range.
int wholeBytes(const IndexedPattern &pattern)
{
    return pattern.pixels * pattern.bits / 8;
}

template<int bits> bool corresponds(const ByteRange &range, int position, const IndexedPattern &pattern, int *indexOf)
{
    int numberOf[1 << bits];
    std::fill(std::begin(numberOf), std::end(numberOf), -1);
    std::fill(indexOf, indexOf + pattern.colours.size(), -1);
    const auto *bytes = reinterpret_cast<const uchar *>(range.data + position);
    for (int i = 0; i < pattern.pixels; ++i) {
        const int index = bits == 8 ? bytes[i] : bytes[i / 2] >> (i % 2 ? 0 : 4) & 0xF;
        const int number = pattern.numberAt(i);
        if (indexOf[number] < 0 && numberOf[index] < 0) {
            indexOf[number] = index;
            numberOf[index] = number;
        } else if (indexOf[number] != index) {
            return false;
        }
    }
    return true;
}
}

QVector<int> indicesAt(const ByteRange &range, int position, const IndexedPattern &pattern)
{
    QVector<int> indices(pattern.colours.size());
    if (position < 0 || position > range.size - pattern.numbers.size())
        return {};
    const bool fits = pattern.bits == 8 ? corresponds<8>(range, position, pattern, indices.data())
                                        : corresponds<4>(range, position, pattern, indices.data());
    return fits ? indices : QVector<int>();
}

IndexedSearch::IndexedSearch(const ByteRange &range, WorkSteps *steps) : m_range(range), m_steps(steps) { }

/// Counts the signatures at places spread over the range.
void IndexedSearch::sample(int bits)
{
    m_counts.fill(0, 1 << sampleBits);
    const int step = (m_range.size / samples + 1) | 1;
    for (qint64 position = reach; position <= m_range.size - wordBytes; position += step)
        ++m_counts[slotOf(signatureOf(bits, m_range.data + position))];
}

int IndexedSearch::commonness(quint64 signature) const
{
    return m_counts.at(slotOf(signature));
}

/// Chooses a signature of \a pattern for each remainder of its offset. False, and nothing added, when there are too few of them,
/// or only common ones for some remainder, unless \a takeCommon.
bool IndexedSearch::addEntries(const IndexedPattern &pattern, int number, int stride, bool takeCommon, QVector<Entry> *entries)
{
    const int last = wholeBytes(pattern) - wordBytes;
    if (last - reach + 1 < stride)
        return false;
    QVector<Entry> chosen;
    Telling telling;
    int rarest = samples + 1;
    for (int remainder = 0; remainder < stride; ++remainder) {
        int best = samples + 1;
        Entry entry {0, number, 0};
        for (int offset = reach + remainder; offset <= last && best > 0; offset += stride) {
            const quint64 signature = signatureOf(pattern.bits, pattern.numbers.constData() + offset);
            const int common = commonness(signature);
            if (common < best) {
                best = common;
                entry.signature = signature;
                entry.offset = offset;
            }
        }
        if (best > mostOfRare && !takeCommon)
            return false;
        if (best < rarest) {
            rarest = best;
            telling = {entry.signature, entry.offset};
        }
        chosen.append(entry);
    }
    m_telling[number] = telling;
    *entries += chosen;
    return true;
}

QVector<QVector<int>> IndexedSearch::find(const QVector<IndexedPattern> &patterns)
{
    m_found = QVector<QVector<int>>(patterns.size());
    m_telling = QVector<Telling>(patterns.size());
    if (patterns.isEmpty())
        return m_found;
    const int bits = patterns.first().bits;
    sample(bits);
    QVector<Entry> entries[std::size(strides)];
    for (int i = 0; i < patterns.size(); ++i) {
        for (size_t s = 0; s < std::size(strides); ++s) {
            if (addEntries(patterns.at(i), i, strides[s], s + 1 == std::size(strides), &entries[s]))
                break;
        }
    }
    for (size_t s = 0; s < std::size(strides); ++s) {
        if (bits == 8)
            sweep<8>(patterns, entries[s], strides[s]);
        else
            sweep<4>(patterns, entries[s], strides[s]);
    }
    for (QVector<int> &positions : m_found)
        std::sort(positions.begin(), positions.end());
    return m_found;
}

template<int bits> void IndexedSearch::sweep(const QVector<IndexedPattern> &patterns, QVector<Entry> entries, int stride)
{
    if (entries.isEmpty())
        return;
    // Entries by the upper bits of their hashes; a bit for each value of some more of them says whether there is any.
    int bucketBits = 8;
    while (1 << bucketBits < entries.size())
        ++bucketBits;
    const int bucketShift = 64 - bucketBits;
    const int filterShift = 64 - qMin(bucketBits + 5, 24);
    std::sort(entries.begin(), entries.end(),
              [](const Entry &a, const Entry &b) { return hashOfWord(a.signature) < hashOfWord(b.signature); });
    QVector<int> starts((1 << bucketBits) + 1, entries.size());
    QVector<quint64> filter((1 << (64 - filterShift)) / 64 + 1);
    for (int i = entries.size() - 1; i >= 0; --i) {
        const quint64 hash = hashOfWord(entries.at(i).signature);
        starts[int(hash >> bucketShift)] = i;
        filter[int(hash >> filterShift >> 6)] |= Q_UINT64_C(1) << (hash >> filterShift & 63);
    }
    for (int bucket = (1 << bucketBits) - 1; bucket >= 0; --bucket)
        starts[bucket] = qMin(starts.at(bucket), starts.at(bucket + 1));

    const quint64 *filterWords = filter.constData();
    qint64 work = 0;
    QVector<int> indices(256);
    for (qint64 position = stride; position <= m_range.size - wordBytes; position += stride) {
        const quint64 signature = signatureAt<bits>(m_range.data + position);
        const quint64 hash = hashOfWord(signature);
        work += stride;
        if (work >= WorkSteps::bytesPerStep) {
            if (!m_steps->add(work))
                return;
            work = 0;
        }
        if (Q_LIKELY(!(filterWords[hash >> filterShift >> 6] >> (hash >> filterShift & 63) & 1)))
            continue;
        const int bucket = int(hash >> bucketShift);
        for (int i = starts.at(bucket); i < starts.at(bucket + 1); ++i) {
            const Entry &entry = entries.at(i);
            if (entry.signature != signature)
                continue;
            const IndexedPattern &pattern = patterns.at(entry.pattern);
            const qint64 start = position - entry.offset;
            if (start < 0 || start > m_range.size - pattern.numbers.size())
                continue;
            work += wordBytes;
            const Telling &telling = m_telling.at(entry.pattern);
            if (signatureAt<bits>(m_range.data + start + telling.offset) != telling.signature)
                continue;
            work += pattern.pixels;
            if (corresponds<bits>(m_range, int(start), pattern, indices.data()))
                m_found[entry.pattern].append(int(start));
        }
    }
}
