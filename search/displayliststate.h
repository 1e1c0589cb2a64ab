// SPDX-License-Identifier: MIT
#pragma once

#include "search/displaylist.h"

#include <QString>
#include <QVector>

/// A texture that a display list uses. Addresses are as the list has them: in RAM, or a segment and an offset in it.
struct TextureReference
{
    quint32 address = 0;
    quint32 paletteAddress = 0; ///< Meaningful with hasPalette.
    bool hasPalette = false;
    bool isInterleaved = false; ///< Every other row lies in RAM with its 32-bit words exchanged.
    QString format; ///< A key of textureFormats::getAsMap(), or "yuv16", which the table does not have.
    int width = 0; ///< Pixels, as for height.
    int height = 0;
    int paletteEntries = 0; ///< Colours that are loaded.
    /// Of LoadTile: the texture is a part of the picture at this address, from this row on.
    bool isPart = false;
    quint32 pictureAddress = 0;
    int firstRow = 0;
    int uses = 1;
    QVector<int> commands; ///< Positions of the commands that describe it, ascending.

    qint64 size() const; ///< Bytes.
    bool isIndexed() const { return format.startsWith(QLatin1String("ci")); }
};

/// Bits of a pixel of \a format, which is a TextureReference's.
int bitsPerPixel(const QString &format);

/// Follows display lists as the display processor does: which texture image is set, how the eight tiles are described, and what
/// has been loaded into the texture memory. It does not know what draws, since that is up to the microcode; any command that it
/// does not know may.
///
/// A texture is taken to be drawn by the tile that is described after its load and begins inside what was loaded. When there is
/// none, as in lists that describe their tiles once for many textures, the tiles count that are described when something else is
/// loaded over it, or when the list ends.
class DisplayListState
{
public:
    /// Follows \a command, which is at \a position of the image.
    void follow(DisplayCommand command, int position);
    /// The list has ended: nothing in the processor is known any more.
    void end();
    /// The textures found so far. Those of LoadTile are parts of pictures: joinedTextures() joins them.
    QVector<TextureReference> takeTextures();

private:
    struct Image
    {
        bool isSet = false;
        quint32 address = 0;
        TexelFormat format = TexelFormat::Rgba;
        int bits = 0;
        int width = 0;
        int position = 0;
    };
    struct Tile
    {
        bool isSet = false;
        TexelFormat format = TexelFormat::Rgba;
        int bits = 0;
        int line = 0;
        int memory = 0;
        int palette = 0;
        int maskS = 0;
        int maskT = 0;
        int width = 0; ///< 0 until a size is set.
        int height = 0;
        int position = 0;
        int setAt = 0; ///< Counts commands: the larger, the later.
    };
    struct Load
    {
        quint32 address = 0; ///< Of the first byte loaded.
        int memory = 0; ///< Where it begins in the texture memory, in 64-bit words.
        int words = 0; ///< What it takes there; with 32-bit texels, in each half.
        int bytes = 0; ///< Loaded by LoadBlock.
        bool isWide = false; ///< 32-bit texels: in both halves.
        bool isTile = false; ///< By LoadTile.
        int rowBytes = 0; ///< Of a row that LoadTile loads.
        int rows = 0;
        int line = 0; ///< Words from row to row in the texture memory.
        int pictureRowBytes = 0; ///< From row to row in RAM.
        quint32 pictureAddress = 0;
        int firstRow = 0;
        int rowIncrement = 0; ///< Of LoadBlock.
        int tile = 0;
        QVector<int> commands;
        int doneAt = 0;
        bool isTaken = false; ///< A texture has been made of it.
        int unknownCommands = 0; ///< Since the load; they may have drawn it.
    };
    /// Sixteen colours in the upper half of the texture memory.
    struct PaletteBank
    {
        bool isSet = false;
        quint32 address = 0;
        int entries = 0; ///< From here on, in one load.
        QVector<int> commands;
    };

    void unknownCommand();
    void setTile(DisplayCommand command, int position);
    void setTileSize(DisplayCommand command);
    void loadBlock(DisplayCommand command, int position);
    void loadTile(DisplayCommand command, int position);
    void loadPalette(DisplayCommand command, int position);
    void addLoad(const Load &load);
    void settleDrawn();
    void settle(Load *load);
    bool takeByNewTiles(Load *load, bool onlyComplete);
    bool describe(const Load &load, const Tile &tile, TextureReference *texture) const;
    bool describeBlock(const Load &load, const Tile &tile, TextureReference *texture) const;
    bool describeTile(const Load &load, const Tile &tile, TextureReference *texture) const;
    const PaletteBank &paletteOf(const Tile &tile) const;
    void take(Load *load, const Tile &tile, TextureReference texture);

    Image m_image;
    Tile m_tiles[8];
    QVector<Load> m_loads; ///< What is in the texture memory, in order of loading.
    PaletteBank m_palettes[16];
    bool m_palettesFirst = false; ///< The list loads palettes before the texels that use them.
    bool m_hasTexels = false;
    bool m_hasDrawn = false;
    bool m_changed = false; ///< Since the last unknown command.
    int m_clock = 0;
    QVector<TextureReference> m_textures;
};

/// Joins textures that are parts of one picture, which games load row by row because it is larger than the texture memory, and
/// counts equal ones as several uses of one.
QVector<TextureReference> joinedTextures(QVector<TextureReference> textures);
