// SPDX-License-Identifier: MIT
#pragma once

#include "search/byterange.h"

#include <QByteArray>
#include <QRandomGenerator>

constexpr int mebibyte = 1024 * 1024;
constexpr int rangeSize = 64 * mebibyte;

inline QRandomGenerator random64(64);

inline int below(int limit)
{
    return int(random64.bounded(limit));
}

inline QByteArray noise(int size, int values = 256)
{
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(below(values));
    return bytes;
}

inline QByteArray repeated(const QByteArray &tile, int size)
{
    QByteArray bytes = tile.repeated(size / tile.size() + 1);
    bytes.truncate(size);
    return bytes;
}

/// Big-endian words that count, as tables and display lists do.
inline QByteArray wordStructured(int size)
{
    QByteArray bytes(size, '\0');
    quint32 word = 0x80000000 + quint32(below(1 << 20));
    for (int i = 0; i + 4 <= size; i += 4) {
        word += quint32(below(3)) * 8;
        for (int byte = 0; byte < 4; ++byte)
            bytes[i + byte] = char(word >> (24 - 8 * byte));
    }
    return bytes;
}

/// What the bytes of a cartridge are like, by their share: compressed data, padding, masks and small palettes, tiles, tables.
inline QByteArray mixedContent()
{
    QByteArray range;
    range.reserve(rangeSize + 4 * mebibyte);
    while (range.size() < rangeSize) {
        const int kind = below(1000);
        const int size = 1024 + below(64 * 1024);
        if (kind < 300)
            range += noise(size);
        else if (kind < 340)
            range += QByteArray(1024 << below(12), '\0');
        else if (kind < 560)
            range += QByteArray(1024 << below(8), '\0');
        else if (kind < 590)
            range += QByteArray(size, char(1 + below(255)));
        else if (kind < 770)
            range += noise(size, 2 + below(3));
        else if (kind < 880)
            range += repeated(noise(1 << (4 + below(6))), size);
        else
            range += wordStructured(size);
    }
    range.truncate(rangeSize);
    return range;
}

/// Reads everything once: the unit in which searches are measured.
inline quint64 readPass(const QByteArray &range)
{
    quint64 sum = 0;
    for (int i = 0; i + wordBytes <= range.size(); i += wordBytes)
        sum += wordAt(range.constData() + i);
    return sum;
}
