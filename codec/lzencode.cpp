// SPDX-License-Identifier: MIT
#include "codec/longestmatches.h"
#include "codec/lzblock.h"

#include <QVector>
#include <QtEndian>

namespace lzblock
{
namespace
{
/// What a step costs in bits, by its length.
struct Costs
{
    int longestShort; ///< Up to here a match takes a bit and two bytes, beyond it one byte more.
    int longest;
};
constexpr int literalBits = 1 + 8;
constexpr int shortBits = 1 + 16;
constexpr int longBits = 1 + 24;
constexpr int shortestMatch = 3;
constexpr int longestDistance = 0x1000;

Costs costsOf(BlockKind kind)
{
    return kind == BlockKind::Mio0 ? Costs {18, 18} : Costs {17, 0xFF + 0x12};
}

/// The lengths of the steps, from the front; 1 is a literal.
using Steps = QVector<int>;

/// The cheapest steps: from the end to the front, for each position the step after which the rest costs least. Every part of the
/// longest match is a match as well, and no distance is cheaper than another, so all choices there are get compared.
Steps cheapestSteps(const QVector<Match> &matches, const Costs &costs)
{
    const int size = matches.size();
    QVector<int> costFrom(size + 1);
    QVector<int> lengthAt(size);
    int *const cost = costFrom.data();
    for (int i = size - 1; i >= 0; --i) {
        int best = literalBits + cost[i + 1];
        int bestLength = 1;
        const int longest = matches.at(i).length;
        const auto consider = [&](int first, int last, int bits) {
            for (int length = last; length >= first; --length) {
                if (bits + cost[i + length] < best) {
                    best = bits + cost[i + length];
                    bestLength = length;
                }
            }
        };
        consider(shortestMatch, qMin(longest, costs.longestShort), shortBits);
        consider(costs.longestShort + 1, longest, longBits);
        cost[i] = best;
        lengthAt[i] = bestLength;
    }
    Steps steps;
    for (int i = 0; i < size; i += lengthAt.at(i))
        steps.append(lengthAt.at(i));
    return steps;
}

/// The steps of the usual compressors: the longest match, unless a longer one begins a byte later.
Steps lazySteps(const QVector<Match> &matches)
{
    Steps steps;
    for (int i = 0; i < matches.size();) {
        const int length = matches.at(i).length;
        const bool waits = i + 1 < matches.size() && matches.at(i + 1).length > length;
        steps.append(length < shortestMatch || waits ? 1 : length);
        i += steps.last();
    }
    return steps;
}

/// Collects the tables of a block. With \a separate tables, each is kept by itself; else everything goes into the chunks, with
/// each byte of bits before the eight steps that it describes.
class Writer
{
public:
    explicit Writer(bool separate) : m_separate(separate) { }

    void add(const char *literal)
    {
        addBit(true);
        chunks.append(*literal);
    }
    void add(BlockKind kind, int distance, int length)
    {
        addBit(false);
        const bool isLong = kind != BlockKind::Mio0 && length > costsOf(kind).longestShort;
        const int nibble = kind == BlockKind::Mio0 ? length - 3 : isLong ? 0 : length - 2;
        const int word = nibble << 12 | (distance - 1);
        QByteArray &target = m_separate ? links : chunks;
        target.append(char(word >> 8)).append(char(word));
        if (isLong)
            chunks.append(char(length - 0x12));
    }

    QByteArray bits;
    QByteArray links;
    QByteArray chunks;

private:
    void addBit(bool literal)
    {
        QByteArray &target = m_separate ? bits : chunks;
        if (m_bit == 0) {
            m_bit = 0x80;
            m_codePlace = target.size();
            target.append('\0');
        }
        if (literal)
            target[m_codePlace] = char(target.at(m_codePlace) | m_bit);
        m_bit >>= 1;
    }

    bool m_separate;
    int m_bit = 0;
    int m_codePlace = 0;
};

QByteArray bigEndian(int value)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(quint32(value), bytes.data());
    return bytes;
}

/// Decoders load bits by words of 32 and links by words of 16.
void alignTo(QByteArray *table, int bytes)
{
    while (table->size() % bytes != 0)
        table->append('\0');
}

QByteArray written(BlockKind kind, const QByteArray &content, const QVector<Match> &matches, const Steps &steps)
{
    Writer writer(kind != BlockKind::Yaz0);
    int position = 0;
    for (const int length : steps) {
        if (length == 1)
            writer.add(content.constData() + position);
        else
            writer.add(kind, matches.at(position).distance, length);
        position += length;
    }
    if (kind == BlockKind::Yaz0)
        return QByteArrayLiteral("Yaz0") + bigEndian(content.size()) + QByteArray(8, '\0') + writer.chunks;
    alignTo(&writer.bits, 4);
    const int links = headerBytes + writer.bits.size();
    return (kind == BlockKind::Mio0 ? QByteArrayLiteral("MIO0") : QByteArrayLiteral("Yay0")) + bigEndian(content.size())
        + bigEndian(links) + bigEndian(links + writer.links.size()) + writer.bits + writer.links + writer.chunks;
}
}

QByteArray encoded(BlockKind kind, const QByteArray &content)
{
    const Costs costs = costsOf(kind);
    const QVector<Match> matches = longestMatches(content, longestDistance, costs.longest);
    QByteArray best = written(kind, content, matches, cheapestSteps(matches, costs));
    // The bits are rounded up to words: once in a while steps that cost a bit more take up a few bytes less.
    const QByteArray lazy = written(kind, content, matches, lazySteps(matches));
    return lazy.size() < best.size() ? lazy : best;
}
}
