// SPDX-License-Identifier: MIT
#include "demo/displaylists.h"

#include <QtEndian>

namespace demo
{
namespace
{
// What the display processor calls formats.
constexpr int rgba = 0;
constexpr int indexed = 2;
constexpr int intensityAlpha = 3;
constexpr int intensity = 4;

constexpr int loadTile = 7; ///< By custom what loads; what draws is tile 0.
constexpr int paletteMemory = 256; ///< In 64-bit words: the upper half.
constexpr int textureMemoryBytes = 4096;

struct Format
{
    int format;
    int bits;
};

Format formatOf(const QString &name)
{
    if (name == QLatin1String("rgba32"))
        return {rgba, 32};
    if (name == QLatin1String("rgb5a1"))
        return {rgba, 16};
    const int bits = name.endsWith(QLatin1String("16")) ? 16 : name.endsWith(QLatin1Char('8')) ? 8 : 4;
    return {name.startsWith(QLatin1String("ci"))       ? indexed
                : name.startsWith(QLatin1String("ia")) ? intensityAlpha
                                                       : intensity,
            bits};
}

/// Which power of two \a value is.
int exponentOf(int value)
{
    int exponent = 0;
    while (1 << exponent < value)
        ++exponent;
    return 1 << exponent == value ? exponent : 0;
}

/// Writes a display list as the games' macros compose it.
class ListWriter
{
public:
    /// Begins at \a position of the image. An address in the image becomes one of the list by adding \a toList.
    ListWriter(Layout *layout, int position, quint32 toList) : m_layout(layout), m_position(position), m_toList(toList) { }

    /// Brings \a texture into the texture memory, if need be in several parts, and draws something with it.
    void use(const Texture &texture, bool paletteFirst)
    {
        const bool hasPalette = texture.paletteAddress >= 0;
        if (hasPalette && paletteFirst)
            usePalette(texture);
        const Format format = formatOf(texture.format);
        const int rowBytes = texture.picture.width() * format.bits / 8;
        const int room = hasPalette ? textureMemoryBytes / 2 : textureMemoryBytes;
        if (texture.data.size() <= room && format.bits != 4) {
            block(texture, format);
        } else if (texture.data.size() <= room && texture.picture.height() == texture.picture.width()) {
            block(texture, format);
        } else {
            const int rows = qMin(room / rowBytes, texture.picture.height());
            for (int top = 0; top < texture.picture.height(); top += rows)
                rectangle(texture, format, top, qMin(rows, texture.picture.height() - top));
            return;
        }
        if (hasPalette && !paletteFirst)
            usePalette(texture);
        draw();
    }

    void end() { put(0xDF000000, 0); }

private:
    void put(quint32 high, quint32 low)
    {
        m_layout->putWord(m_position, high);
        m_layout->putWord(m_position + 4, low);
        m_position += 8;
    }

    void syncLoad() { put(0xE6000000, 0); }
    void syncPipe() { put(0xE7000000, 0); }
    void syncTile() { put(0xE8000000, 0); }

    static quint32 sizeField(int bits) { return quint32(exponentOf(bits / 4)) << 19; }

    void setTextureImage(int format, int bits, int width, int address)
    {
        put(0xFD000000 | quint32(format) << 21 | sizeField(bits) | quint32(width - 1), quint32(address) + m_toList);
    }

    void setTile(const Format &format, int bits, int line, int memory, int tile, const QImage &picture = QImage())
    {
        const quint32 masks =
            picture.isNull() ? 0 : quint32(exponentOf(picture.height()) << 14 | exponentOf(picture.width()) << 4);
        put(0xF5000000 | quint32(format.format) << 21 | sizeField(bits) | quint32(line) << 9 | quint32(memory),
            quint32(tile) << 24 | masks);
    }

    /// The coordinates of the first and the last texel that a command covers, with two fraction bits.
    void putRectangle(quint32 command, int tile, int top, int width, int height)
    {
        put(command << 24 | quint32(top * 4),
            quint32(tile) << 24 | quint32((width - 1) * 4) << 12 | quint32((top + height - 1) * 4));
    }

    void usePalette(const Texture &texture)
    {
        const int colours = texture.format == QLatin1String("ci8") ? 256 : 16;
        setTextureImage(rgba, 16, 1, texture.paletteAddress);
        syncTile();
        setTile({rgba, 4}, 4, 0, paletteMemory, loadTile);
        syncLoad();
        put(0xF0000000, quint32(loadTile) << 24 | quint32((colours - 1) * 4) << 12);
        syncPipe();
    }

    static int lineOf(int width, const Format &format)
    {
        // Of 32-bit texels each half of the memory holds half of every one.
        return (width * qMin(format.bits, 16) / 8 + 7) / 8;
    }

    /// All of the texture at once, as 16-bit texels unless they have 32 bits.
    void block(const Texture &texture, const Format &format)
    {
        const int loadBits = qMax(format.bits, 16);
        const int rowWords = texture.picture.width() * format.bits / 64;
        setTextureImage(format.format, loadBits, 1, texture.address);
        setTile(format, loadBits, 0, 0, loadTile, texture.picture);
        syncLoad();
        put(0xF3000000,
            quint32(loadTile) << 24 | quint32(texture.data.size() * 8 / loadBits - 1) << 12
                | quint32((2048 + rowWords - 1) / rowWords));
        syncPipe();
        setTile(format, format.bits, lineOf(texture.picture.width(), format), 0, 0, texture.picture);
        putRectangle(0xF2, 0, 0, texture.picture.width(), texture.picture.height());
    }

    /// \a rows rows from \a top on; 4-bit texels in pairs.
    void rectangle(const Texture &texture, const Format &format, int top, int rows)
    {
        const int loadBits = qMax(format.bits, 8);
        const int width = texture.picture.width();
        const int loadWidth = width * format.bits / loadBits;
        const int line = lineOf(width, format);
        setTextureImage(format.format, loadBits, loadWidth, texture.address);
        setTile(format, loadBits, line, 0, loadTile);
        syncLoad();
        putRectangle(0xF4, loadTile, top, loadWidth, rows);
        syncPipe();
        setTile(format, format.bits, line, 0, 0);
        putRectangle(0xF2, 0, top, width, rows);
        draw();
    }

    /// Four vertices and two triangles.
    void draw()
    {
        put(0x01004008, 0x05000000);
        put(0x06000204, 0x00000406);
    }

    Layout *m_layout;
    int m_position;
    quint32 m_toList;
};

struct Lists
{
    const char *folder; ///< What the paths of the textures' folders begin with; empty for those of the root.
    int position; ///< Where they begin.
    quint32 toList; ///< From an address in the image to one in the list.
};
}

void addDisplayLists(Layout *layout)
{
    // The console itself loads what follows the boot code to the address in the header.
    constexpr quint32 bootToRam = 0x80000400 - 0x1000;
    static const Lists all[] = {
        {"", 0x20000, bootToRam},
        {"Title/", 0x20800, 0x80300000 - 0x100000},
        {"Level/", 0x30000, 0x06000000 - 0x140000},
        {"Actors/", 0x40000, 0x07000000 - 0x1C0000},
        {"Interface/", 0x50000, 0x08000000 - 0x200000},
        {"Effects/", 0x50800, 0x08000000 - 0x200000},
    };
    for (const Lists &lists : all) {
        const QString folder = QLatin1String(lists.folder);
        ListWriter writer(layout, lists.position, lists.toList);
        bool paletteFirst = true;
        for (const Texture &texture : qAsConst(layout->cartridge.textures)) {
            const bool belongs = folder.isEmpty() ? texture.folder.isEmpty() : texture.folder.startsWith(folder);
            if (!belongs || !texture.listed || texture.format == QLatin1String("jpeg"))
                continue;
            writer.use(texture, paletteFirst);
            // Games load palettes before the texels or behind them.
            if (texture.paletteAddress >= 0)
                paletteFirst = !paletteFirst;
        }
        writer.end();
    }
}
}
