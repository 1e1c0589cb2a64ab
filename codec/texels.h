// SPDX-License-Identifier: MIT
#pragma once

#include <QRgb>

/// The arithmetic of single texels, both ways. What the texture unit leaves open is settled here: how narrow channels widen,
/// which alpha counts as opaque, and that a grey picture's red channel is its intensity.
namespace texels
{
/// One intensity in all three colour channels.
constexpr QRgb grey(quint32 intensity, quint32 alpha)
{
    return alpha << 24 | intensity << 16 | intensity << 8 | intensity;
}

/// A plain shift widens each channel: full intensity is 248, not 255.
constexpr QRgb fromRgb5a1(quint32 word)
{
    return (0U - (word & 1U)) << 24 | (word & 0xF800U) << 8 | (word & 0x07C0U) << 5 | (word & 0x003EU) << 2;
}

/// A 16-bit word with its two bytes exchanged where this machine keeps the low one first; upper bits are 0.
constexpr quint32 bigEndian(quint32 word)
{
    return Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? (word >> 8 & 0x00FFU) | (word << 8 & 0xFF00U) : word;
}

/// Exchanges red and blue: between QRgb and, on a little-endian machine, four bytes in the order red, green, blue, alpha.
constexpr quint32 withRedAndBlueSwapped(quint32 pixel)
{
    return (pixel & 0xFF00FF00U) | (pixel >> 16 & 0x000000FFU) | (pixel << 16 & 0x00FF0000U);
}

/// A pixel from the four bytes red, green, blue, alpha as this machine loads them, and back. Not as a swap of bytes and a
/// rotation, for which plain x86-64 has no vector instructions.
constexpr QRgb fromRgbaBytes(quint32 loaded)
{
    return Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? withRedAndBlueSwapped(loaded) : loaded >> 8 | loaded << 24;
}
constexpr quint32 toRgbaBytes(QRgb pixel)
{
    return Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? withRedAndBlueSwapped(pixel) : pixel << 8 | pixel >> 24;
}

/// The intensity serves as alpha as well: black texels are transparent.
constexpr QRgb fromI4(quint32 nibble)
{
    return grey(nibble * 17U, nibble * 17U);
}

/// The 3-bit intensity widens by 36: full intensity is 252, not 255.
constexpr QRgb fromIa4(quint32 nibble)
{
    return grey((nibble >> 1) * 36U, (nibble & 1U) * 255U);
}

constexpr QRgb fromI8(quint32 byte)
{
    return grey(byte, byte);
}

constexpr QRgb fromIa8(quint32 byte)
{
    return grey((byte >> 4) * 17U, (byte & 0xFU) * 17U);
}

constexpr QRgb fromIa16(quint32 word)
{
    return grey(word >> 8, word & 0xFFU);
}

/// A channel value divided by 17, without a division; exact up to 255.
constexpr quint32 seventeenth(quint32 channel)
{
    return channel * 241U >> 12;
}

constexpr quint32 redOf(QRgb pixel)
{
    return pixel >> 16 & 0xFFU;
}

/// All bits set where \a pixel is fully transparent or opaque respectively, else none.
constexpr quint32 transparencyMask(QRgb pixel)
{
    return (((pixel >> 24) + 0xFFU) >> 8) - 1U;
}
constexpr quint32 opacityMask(QRgb pixel)
{
    return 0U - (((pixel >> 24) + 1U) >> 8);
}

/// The four bytes in memory order. A transparent pixel loses its colour.
constexpr quint32 toRgba32(QRgb pixel)
{
    return toRgbaBytes(pixel) & ~transparencyMask(pixel);
}

/// Only alpha 255 counts as opaque; every other pixel becomes the all-zero word.
constexpr quint32 toRgb5a1(QRgb pixel)
{
    return ((pixel >> 8 & 0xF800U) | (pixel >> 5 & 0x07C0U) | (pixel >> 2 & 0x003EU) | 1U) & opacityMask(pixel);
}

constexpr quint32 toI4(QRgb pixel)
{
    return seventeenth(redOf(pixel));
}

/// The intensity is rounded, not cut, and alpha from 128 on counts as opaque; every other pixel becomes 0. The product is a
/// division by 36, exact up to 273.
constexpr quint32 toIa4(QRgb pixel)
{
    return (((redOf(pixel) + 18U) * 57U >> 11) << 1 | 1U) & (0U - (pixel >> 31));
}

constexpr quint32 toI8(QRgb pixel)
{
    return redOf(pixel);
}

/// A transparent pixel loses its intensity.
constexpr quint32 toIa8(QRgb pixel)
{
    return (seventeenth(redOf(pixel)) << 4 | seventeenth(pixel >> 24)) & ~transparencyMask(pixel);
}

constexpr quint32 toIa16(QRgb pixel)
{
    return redOf(pixel) << 8 | pixel >> 24;
}

static_assert(fromRgb5a1(0xFFFF) == qRgba(248, 248, 248, 255), "no low bits are made up");
static_assert(fromRgb5a1(0xF800) == qRgba(248, 0, 0, 0), "a transparent word keeps its colour");
static_assert(fromIa4(0xF) == qRgba(252, 252, 252, 255), "seven times 36");
static_assert(toRgb5a1(qRgba(255, 255, 255, 255)) == 0xFFFF, "opaque white");
static_assert(toRgb5a1(qRgba(255, 255, 255, 254)) == 0, "nearly opaque is transparent");
static_assert(toIa4(qRgba(255, 0, 0, 128)) == 0xF && toIa4(qRgba(255, 0, 0, 127)) == 0, "half opaque is opaque");
static_assert(toIa8(qRgba(255, 0, 0, 255)) == 0xFF && toIa8(qRgba(255, 0, 0, 0)) == 0, "transparent is black");
}
