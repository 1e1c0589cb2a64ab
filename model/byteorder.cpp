// SPDX-License-Identifier: MIT
#include "model/byteorder.h"

#include <QtEndian>

#include <cstring>

namespace
{
constexpr int headerBytes = 64;
constexpr int identifierOffset = 59;
constexpr int identifierLength = 4;
constexpr int versionOffset = 63;

quint64 swappedIn16BitWords(quint64 word)
{
    constexpr quint64 even = 0x00FF00FF00FF00FF;
    return (word & even) << 8 | (word >> 8 & even);
}

quint64 reversedIn32BitWords(quint64 word)
{
    const quint64 reversed = qbswap(word);
    return reversed << 32 | reversed >> 32;
}

/// Replaces each word of \a size bytes, a multiple of 4, by what \a convert makes of it.
template<quint64 convert(quint64)> void convertWords(char *__restrict bytes, int size)
{
    int i = 0;
    for (; i <= size - 8; i += 8) {
        quint64 word = 0;
        std::memcpy(&word, bytes + i, 8);
        word = convert(word);
        std::memcpy(bytes + i, &word, 8);
    }
    if (i < size) {
        // The last four bytes stand in both halves, so that the kernel's halves need no telling apart.
        quint32 half = 0;
        std::memcpy(&half, bytes + i, 4);
        half = quint32(convert(quint64(half) << 32 | half));
        std::memcpy(bytes + i, &half, 4);
    }
}

/// The first multiple of \a unit from \a position on.
int roundedUp(int position, int unit)
{
    return (position + unit - 1) / unit * unit;
}
}

bool hasDetectableByteOrder(int bytes)
{
    return bytes > headerBytes && bytes % 4 == 0;
}

ByteOrder byteOrderOf(const QByteArray &image)
{
    // Bus timings and clock rate, the same in every commercial header.
    constexpr quint64 bigEndian = 0x803712400000000F;
    constexpr quint64 byteSwapped = 0x3780401200000F00;
    constexpr quint64 littleEndian = 0x401237800F000000;
    if (!hasDetectableByteOrder(image.size()))
        return ByteOrder::Unknown;
    switch (qFromBigEndian<quint64>(image.constData())) {
    case bigEndian: return ByteOrder::BigEndian;
    case byteSwapped: return ByteOrder::ByteSwapped;
    case littleEndian: return ByteOrder::LittleEndian;
    default: return ByteOrder::Unknown;
    }
}

void convertByteOrder(QByteArray *image, ByteOrder order, const ConversionProgress &progress)
{
    if (order != ByteOrder::ByteSwapped && order != ByteOrder::LittleEndian)
        return;
    const int unit = order == ByteOrder::ByteSwapped ? 2 : 4;
    const auto convert = order == ByteOrder::ByteSwapped ? convertWords<swappedIn16BitWords> : convertWords<reversedIn32BitWords>;
    const int size = image->size() / 4 * 4;
    const int step = qMax(1, size / 100);
    int converted = 0;
    // The progress function may copy the image, so the bytes are asked for anew at each step.
    const auto convertUpTo = [&](int end) {
        convert(image->data() + converted, end - converted);
        converted = end;
    };

    // Progress is reported at the first word of every hundredth; the bytes between two such words are converted in one piece.
    int reported = -1;
    for (qint64 hundredth = 0; hundredth < size; hundredth += step) {
        const int position = roundedUp(int(hundredth), unit);
        if (position == reported || position >= size)
            continue;
        const int whole = position / 4 * 4;
        convertUpTo(whole);
        if (progress)
            progress(position);
        reported = position;
    }
    convertUpTo(size);
    if (progress)
        progress(size);
}

QString cartridgeIdentifier(const QByteArray &image)
{
    if (image.size() < headerBytes)
        return QString();
    QByteArray characters = image.mid(identifierOffset, identifierLength);
    const int end = characters.indexOf('\0');
    if (end >= 0)
        characters.truncate(end);
    return QString::fromLatin1(characters) + QString::number(quint8(image.at(versionOffset)));
}
