// SPDX-License-Identifier: MIT
#pragma once

#include "codec/compressedblock.h"

#include <QByteArray>
#include <QRandomGenerator>
#include <QVector>

/// What the tests and benchmarks of compressed blocks share: content of several kinds, and plain code to hold the fast one
/// against.
namespace blocks
{
/// \a size bytes that repeat themselves as graphics do: runs, pieces from further in front, noise.
inline QByteArray mixedContent(int size, quint32 seed)
{
    QRandomGenerator random(seed);
    QByteArray content;
    while (content.size() < size) {
        const int length = 1 + random.bounded(random.bounded(8) == 0 ? 600 : 40);
        switch (random.bounded(4)) {
        case 0: content.append(QByteArray(length, char(random.bounded(4) * 85))); break;
        case 1:
        case 2:
            if (!content.isEmpty()) {
                const int from = random.bounded(content.size());
                for (int i = 0; i < length; ++i)
                    content.append(content.at(from + i));
                break;
            }
            Q_FALLTHROUGH();
        default:
            for (int i = 0; i < length; ++i)
                content.append(char(random.bounded(random.bounded(2) == 0 ? 256 : 5)));
        }
    }
    content.truncate(size);
    return content;
}

/// The longest match at \a position by trying every distance; its length, 0 below three bytes.
inline int plainMatch(const QByteArray &content, int position, int mostLength, int *distance)
{
    int longest = 0;
    for (int back = 1; back <= qMin(position, 0x1000); ++back) {
        int length = 0;
        while (length < mostLength && position + length < content.size()
               && content.at(position + length) == content.at(position + length - back))
            ++length;
        if (length > longest) {
            longest = length;
            *distance = back;
        }
    }
    return longest < 3 ? 0 : longest;
}

inline int longestLength(BlockKind kind)
{
    return kind == BlockKind::Mio0 ? 18 : 273;
}

/// The size of a block made of \a literals, short and long matches.
inline int sizeOfBlock(BlockKind kind, int literals, int shortMatches, int longMatches)
{
    const int steps = literals + shortMatches + longMatches;
    const int payload = literals + 2 * shortMatches + 3 * longMatches;
    return 16 + (kind == BlockKind::Yaz0 ? (steps + 7) / 8 : (steps + 31) / 32 * 4) + payload;
}

/// The size of the block that plain greedy compression with lazy matching makes: the longest match, or a literal when the next
/// position has a longer one.
inline int lazySize(BlockKind kind, const QByteArray &content)
{
    const int mostLength = longestLength(kind);
    const int longestShort = kind == BlockKind::Mio0 ? 18 : 17;
    int literals = 0;
    int shortMatches = 0;
    int longMatches = 0;
    int distance = 0;
    for (int i = 0; i < content.size();) {
        const int length = plainMatch(content, i, mostLength, &distance);
        if (length == 0 || plainMatch(content, i + 1, mostLength, &distance) > length) {
            ++literals;
            ++i;
            continue;
        }
        ++(length > longestShort ? longMatches : shortMatches);
        i += length;
    }
    return sizeOfBlock(kind, literals, shortMatches, longMatches);
}

inline int numberAt(const QByteArray &bytes, int position, int count)
{
    int number = 0;
    for (int i = 0; i < count; ++i)
        number = number << 8 | uchar(bytes.at(position + i));
    return number;
}

/// Decodes a valid MIO0, Yay0 or Yaz0 block bit by bit.
inline QByteArray plainlyDecoded(BlockKind kind, const QByteArray &block)
{
    const int size = numberAt(block, 4, 4);
    QByteArray content;
    const bool isStream = kind == BlockKind::Yaz0;
    int bitPlace = 16;
    int linkPlace = isStream ? 0 : numberAt(block, 8, 4);
    int chunkPlace = isStream ? 0 : numberAt(block, 12, 4);
    int bit = 8;
    int code = 0;
    const auto take = [&](int *place) { return uchar(block.at((isStream ? bitPlace : *place)++)); };
    while (content.size() < size) {
        if (bit == 8) {
            bit = 0;
            code = uchar(block.at(bitPlace++));
        }
        if (code >> (7 - bit++) & 1) {
            content.append(char(take(&chunkPlace)));
            continue;
        }
        const int first = take(&linkPlace);
        const int distance = ((first & 15) << 8 | take(&linkPlace)) + 1;
        int length = (first >> 4) + (kind == BlockKind::Mio0 ? 3 : 2);
        if (kind != BlockKind::Mio0 && first >> 4 == 0)
            length = take(&chunkPlace) + 0x12;
        for (int i = 0; i < length; ++i)
            content.append(content.at(content.size() - distance));
    }
    return content;
}
}
