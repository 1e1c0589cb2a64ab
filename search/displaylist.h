// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// The commands of the display processor that bring textures into its memory and describe them. A command is a big-endian 64-bit
/// word in a display list, its number in bits 61..56; the bits 63 and 62 have no meaning to the processor.
enum class DisplayOperation : quint8 {
    SyncLoad = 0x26,
    SyncPipe = 0x27,
    SyncTile = 0x28,
    LoadTlut = 0x30, ///< Colours of a palette into the upper half of the texture memory.
    SetTileSize = 0x32,
    LoadBlock = 0x33, ///< Bytes in a row, whatever the width.
    LoadTile = 0x34, ///< A rectangle out of a picture.
    SetTile = 0x35,
    SetTextureImage = 0x3D,
};

/// The numbers by which the processor knows pixel formats.
enum class TexelFormat : quint8 { Rgba = 0, Yuv = 1, Indexed = 2, IntensityAlpha = 3, Intensity = 4 };

/// One 64-bit command. All values are as the processor reads them.
class DisplayCommand
{
public:
    explicit DisplayCommand(quint64 word) : m_word(word) { }
    /// The command in the eight bytes at \a bytes.
    static DisplayCommand at(const char *bytes);

    /// Whether it is one of the operations above with values that a list can have: unused bits zero, a known format, an aligned
    /// address.
    bool isPossible() const;
    DisplayOperation operation() const { return DisplayOperation(field(61, 56)); }
    /// The word with which the usual microcodes end a list. It is for the signal processor; the display processor never sees it.
    bool endsList() const;

    TexelFormat format() const { return TexelFormat(field(55, 53)); }
    int bitsPerTexel() const { return 4 << field(52, 51); } ///< 4, 8, 16 or 32.

    // Of SetTextureImage.
    int imageWidth() const { return field(41, 32) + 1; } ///< Texels.
    quint32 address() const { return quint32(m_word); } ///< In RAM, or a segment and an offset in it.

    // Of SetTile.
    int line() const { return field(49, 41); } ///< 64-bit words a row.
    int memoryAddress() const { return field(40, 32); } ///< In the texture memory, in 64-bit words.
    int paletteNumber() const { return field(23, 20); }
    int maskT() const { return field(17, 14); } ///< The texture repeats after 2^mask rows; 0: never.
    int maskS() const { return field(7, 4); }

    int tile() const { return field(26, 24); }

    // Of SetTileSize and the loads; coordinates have two fraction bits.
    int left() const { return field(55, 44); }
    int top() const { return field(43, 32); }
    int right() const { return field(23, 12); }
    int bottom() const { return field(11, 0); }
    int width() const { return ((right() - left()) >> 2) + 1; } ///< Texels; below 1 when the order is wrong.
    int height() const { return ((bottom() - top()) >> 2) + 1; }

    // Of LoadBlock.
    int blockTexels() const { return right() - left() + 1; }
    int rowIncrement() const
    {
        return field(11, 0);
    } ///< By which each 64-bit word counts towards the next row, 2048 being a row.

private:
    int field(int high, int low) const { return int(m_word >> low & ((Q_UINT64_C(1) << (high - low + 1)) - 1)); }

    quint64 m_word;
};

constexpr int commandBytes = 8;
/// Loads from RAM begin at whole 64-bit words.
constexpr int textureAlignment = 8;
/// Of the texture memory: 512 words of 64 bits. A palette and the second half of 32-bit texels take its upper half.
constexpr int textureMemoryWords = 512;
constexpr int textureMemoryHalf = 256;
