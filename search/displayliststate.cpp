// SPDX-License-Identifier: MIT
#include "search/displayliststate.h"

#include <QSet>

#include <algorithm>

namespace
{
constexpr int wordBytesOfMemory = 8;
/// More loads at once than any list has use for; the bound keeps made-up lists from costing more than their length.
constexpr int mostLoads = 8;
/// A row is 2048 of these; each 64-bit word of a block adds its increment.
constexpr int incrementOfRow = 2048;
constexpr int coloursOfBank = 16;
/// What draws is at least vertices and a triangle. One unknown command alone may as well be a setting.
constexpr int fewestDrawingCommands = 2;

struct NamedFormat
{
    TexelFormat format;
    int bits;
    const char *name;
};
constexpr NamedFormat namedFormats[] = {
    {TexelFormat::Rgba, 16, "rgb5a1"},       {TexelFormat::Rgba, 32, "rgba32"},         {TexelFormat::Yuv, 16, "yuv16"},
    {TexelFormat::Indexed, 4, "ci4"},        {TexelFormat::Indexed, 8, "ci8"},          {TexelFormat::IntensityAlpha, 4, "ia4"},
    {TexelFormat::IntensityAlpha, 8, "ia8"}, {TexelFormat::IntensityAlpha, 16, "ia16"}, {TexelFormat::Intensity, 4, "i4"},
    {TexelFormat::Intensity, 8, "i8"},
};

QString nameOf(TexelFormat format, int bits)
{
    for (const NamedFormat &named : namedFormats) {
        if (named.format == format && named.bits == bits)
            return QLatin1String(named.name);
    }
    return QString();
}

/// The side of a texture: \a size as set, 0 for none, which repeats after 2^\a mask unless that is 0; \a otherwise without both.
int sideOf(int size, int mask, int otherwise)
{
    if (mask == 0)
        return size > 0 ? size : otherwise;
    const int period = 1 << qMin(mask, 12);
    return size > 0 ? qMin(size, period) : period;
}

/// Whether a block of rows of \a rowWords words counts a row after just that many words.
bool fitsIncrement(int rowWords, int increment)
{
    return (incrementOfRow + rowWords - 1) / rowWords == increment;
}
}

int bitsPerPixel(const QString &format)
{
    for (const NamedFormat &named : namedFormats) {
        if (format == QLatin1String(named.name))
            return named.bits;
    }
    return 0;
}

qint64 TextureReference::size() const
{
    return (qint64(width) * height * bitsPerPixel(format) + 7) / 8;
}

void DisplayListState::follow(DisplayCommand command, int position)
{
    ++m_clock;
    if (!command.isPossible()) {
        if (command.endsList())
            end();
        else
            unknownCommand();
        return;
    }
    switch (command.operation()) {
    case DisplayOperation::SetTextureImage:
        m_image = {true, command.address(), command.format(), command.bitsPerTexel(), command.imageWidth(), position};
        break;
    case DisplayOperation::SetTile: setTile(command, position); break;
    case DisplayOperation::SetTileSize: setTileSize(command); break;
    case DisplayOperation::LoadBlock: loadBlock(command, position); break;
    case DisplayOperation::LoadTile: loadTile(command, position); break;
    case DisplayOperation::LoadTlut: loadPalette(command, position); break;
    case DisplayOperation::SyncLoad:
    case DisplayOperation::SyncPipe:
    case DisplayOperation::SyncTile: return;
    }
    m_changed = true;
}

void DisplayListState::end()
{
    for (Load &load : m_loads)
        settle(&load);
    QVector<TextureReference> textures;
    textures.swap(m_textures);
    const int clock = m_clock;
    *this = DisplayListState();
    m_textures.swap(textures);
    m_clock = clock;
}

QVector<TextureReference> DisplayListState::takeTextures()
{
    QVector<TextureReference> taken;
    taken.swap(m_textures);
    return taken;
}

void DisplayListState::unknownCommand()
{
    for (Load &load : m_loads) {
        ++load.unknownCommands;
        m_hasDrawn |= load.unknownCommands >= fewestDrawingCommands;
        if (m_changed && !load.isTaken)
            takeByNewTiles(&load, true);
    }
    m_changed = false;
}

/// A tile is about to be described anew: what has been drawn by it so far is settled.
void DisplayListState::settleDrawn()
{
    for (Load &load : m_loads) {
        if (load.unknownCommands >= fewestDrawingCommands)
            settle(&load);
    }
}

void DisplayListState::setTile(DisplayCommand command, int position)
{
    settleDrawn();
    Tile &tile = m_tiles[command.tile()];
    tile = Tile();
    tile.isSet = true;
    tile.format = command.format();
    tile.bits = command.bitsPerTexel();
    tile.line = command.line();
    tile.memory = command.memoryAddress();
    tile.palette = command.paletteNumber();
    tile.maskS = command.maskS();
    tile.maskT = command.maskT();
    tile.position = position;
    tile.setAt = m_clock;
}

void DisplayListState::setTileSize(DisplayCommand command)
{
    settleDrawn();
    Tile &tile = m_tiles[command.tile()];
    tile.width = command.width();
    tile.height = command.height();
}

void DisplayListState::loadBlock(DisplayCommand command, int position)
{
    const Tile &tile = m_tiles[command.tile()];
    if (!m_image.isSet || !tile.isSet || tile.bits != m_image.bits || tile.bits == 4)
        return;
    Load load;
    load.isWide = tile.bits == 32;
    load.bytes = command.blockTexels() * tile.bits / 8;
    const int memoryBytes = load.isWide ? load.bytes / 2 : load.bytes;
    load.words = (memoryBytes + wordBytesOfMemory - 1) / wordBytesOfMemory;
    load.memory = tile.memory;
    load.address = m_image.address + quint32(command.left() * tile.bits / 8);
    load.rowIncrement = command.rowIncrement();
    load.tile = command.tile();
    load.commands = {m_image.position, tile.position, position};
    if (load.address % textureAlignment == 0)
        addLoad(load);
}

void DisplayListState::loadTile(DisplayCommand command, int position)
{
    Tile &tile = m_tiles[command.tile()];
    if (!m_image.isSet || !tile.isSet || tile.bits != m_image.bits || tile.bits == 4)
        return;
    if ((command.right() >> 2) + 1 > m_image.width)
        return;
    Load load;
    load.isTile = true;
    load.isWide = tile.bits == 32;
    load.rowBytes = command.width() * tile.bits / 8;
    load.rows = command.height();
    load.line = tile.line;
    load.pictureRowBytes = m_image.width * tile.bits / 8;
    load.pictureAddress = m_image.address;
    load.firstRow = command.top() >> 2;
    load.address = m_image.address + quint32(load.firstRow * load.pictureRowBytes);
    load.words = load.line * load.rows;
    load.memory = tile.memory;
    load.tile = command.tile();
    load.commands = {m_image.position, tile.position, position};
    if (load.line * wordBytesOfMemory * (load.isWide ? 2 : 1) < load.rowBytes)
        return;
    tile.width = command.width();
    tile.height = command.height();
    addLoad(load);
}

void DisplayListState::addLoad(const Load &load)
{
    if (load.words < 1 || load.memory + load.words > (load.isWide ? textureMemoryHalf : textureMemoryWords))
        return;
    const auto overlaps = [&load](const Load &other) {
        return load.isWide || other.isWide
            || (other.memory < load.memory + load.words && load.memory < other.memory + other.words);
    };
    for (Load &other : m_loads) {
        if (overlaps(other))
            settle(&other);
    }
    m_loads.erase(std::remove_if(m_loads.begin(), m_loads.end(), overlaps), m_loads.end());
    if (m_loads.size() == mostLoads) {
        settle(&m_loads.first());
        m_loads.removeFirst();
    }
    m_loads.append(load);
    m_loads.last().doneAt = m_clock;
    m_hasTexels = true;
}

void DisplayListState::loadPalette(DisplayCommand command, int position)
{
    const Tile &tile = m_tiles[command.tile()];
    const int entries = command.width();
    if (!m_image.isSet || !tile.isSet || m_image.bits != 16 || command.height() != 1 || tile.memory < textureMemoryHalf
        || tile.memory % coloursOfBank != 0 || tile.memory + entries > textureMemoryWords)
        return;
    if (!m_hasTexels)
        m_palettesFirst = true;
    for (Load &load : m_loads) {
        // What has not been drawn yet is drawn with this palette. In a list that draws nothing the order tells.
        if (!load.isTaken && m_palettesFirst && !m_hasDrawn)
            takeByNewTiles(&load, true);
    }
    const quint32 address =
        m_image.address + quint32((command.left() >> 2) * 2) + quint32((command.top() >> 2) * m_image.width * 2);
    const int firstBank = (tile.memory - textureMemoryHalf) / coloursOfBank;
    for (int done = 0, bank = firstBank; done < entries; done += coloursOfBank, ++bank) {
        m_palettes[bank].isSet = true;
        m_palettes[bank].address = address + quint32(done * 2);
        m_palettes[bank].entries = entries - done;
        m_palettes[bank].commands = {m_image.position, position};
    }
}

/// Makes a texture of \a load if that has not been done, since it is about to be overwritten or described anew.
void DisplayListState::settle(Load *load)
{
    if (load->isTaken || takeByNewTiles(load, false))
        return;
    // No tile was described after the load: one from before draws it, the tile that loaded it last of all.
    const Tile *latest = nullptr;
    TextureReference described;
    const auto consider = [&](const Tile &tile) {
        TextureReference texture;
        if (tile.isSet && tile.memory == load->memory && (!latest || tile.setAt > latest->setAt)
            && describe(*load, tile, &texture)) {
            latest = &tile;
            described = texture;
        }
    };
    for (int i = 0; i < 8; ++i) {
        if (i != load->tile)
            consider(m_tiles[i]);
    }
    if (!latest)
        consider(m_tiles[load->tile]);
    if (latest)
        take(load, *latest, described);
}

/// Makes textures of \a load by the tiles that were described after it; several, as with smaller versions of one picture that are
/// loaded together, when they begin at different places. With \a onlyComplete the tiles need sizes, and indices a palette.
bool DisplayListState::takeByNewTiles(Load *load, bool onlyComplete)
{
    QVector<const Tile *> tiles;
    for (const Tile &tile : m_tiles) {
        if (tile.isSet && tile.setAt > load->doneAt)
            tiles.append(&tile);
    }
    std::sort(tiles.begin(), tiles.end(), [](const Tile *a, const Tile *b) { return a->setAt > b->setAt; });
    QSet<int> places;
    for (const Tile *tile : qAsConst(tiles)) {
        const bool isComplete = tile->width > 0 && (tile->format != TexelFormat::Indexed || paletteOf(*tile).isSet);
        TextureReference texture;
        if ((onlyComplete && !isComplete) || places.contains(tile->memory) || !describe(*load, *tile, &texture))
            continue;
        places.insert(tile->memory);
        take(load, *tile, texture);
    }
    return !places.isEmpty();
}

const DisplayListState::PaletteBank &DisplayListState::paletteOf(const Tile &tile) const
{
    return m_palettes[tile.bits == 4 ? tile.palette : 0];
}

void DisplayListState::take(Load *load, const Tile &tile, TextureReference texture)
{
    load->isTaken = true;
    texture.commands = load->commands;
    texture.commands.append(tile.position);
    const PaletteBank &palette = paletteOf(tile);
    if (texture.isIndexed() && palette.isSet) {
        texture.hasPalette = true;
        texture.paletteAddress = palette.address;
        texture.paletteEntries = qMin(palette.entries, 1 << tile.bits);
        texture.commands += palette.commands;
    }
    m_textures.append(texture);
}

/// The texture that \a tile draws of \a load. False when it lies outside or does not fit.
bool DisplayListState::describe(const Load &load, const Tile &tile, TextureReference *texture) const
{
    texture->format = nameOf(tile.format, tile.bits);
    const int offset = tile.memory - load.memory;
    if (texture->format.isEmpty() || offset < 0 || offset >= load.words || load.isWide != (tile.bits == 32)
        || (load.isWide && offset != 0))
        return false;
    if (!(load.isTile ? describeTile(load, tile, texture) : describeBlock(load, tile, texture)))
        return false;
    // Palettes take the upper half.
    return tile.format != TexelFormat::Indexed || tile.memory + tile.line * texture->height <= textureMemoryHalf;
}

bool DisplayListState::describeBlock(const Load &load, const Tile &tile, TextureReference *texture) const
{
    const int rowBytes = tile.line * wordBytesOfMemory * (load.isWide ? 2 : 1);
    if (rowBytes == 0)
        return false;
    const int offsetBytes = (tile.memory - load.memory) * wordBytesOfMemory;
    const int rows = (load.bytes - offsetBytes) / rowBytes;
    const int mostPixels = rowBytes * 8 / tile.bits;
    const int height = sideOf(tile.height, tile.maskT, rows);
    if (height > rows || sideOf(tile.width, tile.maskS, mostPixels) > mostPixels)
        return false;
    const int rowWords = rowBytes / wordBytesOfMemory;
    // The block counts its rows while it is loaded. One row too many or few, and all behind them is shifted.
    if (load.rowIncrement != 0 && height > 1 && offsetBytes == 0 && !fitsIncrement(rowWords, load.rowIncrement))
        return false;
    texture->isInterleaved = load.rowIncrement == 0 && height > 1;
    texture->address = load.address + quint32(offsetBytes);
    // In RAM the rows follow one another as they do here, what is not drawn of them included.
    texture->width = mostPixels;
    texture->height = height;
    return true;
}

bool DisplayListState::describeTile(const Load &load, const Tile &tile, TextureReference *texture) const
{
    const int offset = tile.memory - load.memory;
    if (load.line == 0 || offset % load.line != 0 || (tile.line != load.line && load.rows > 1))
        return false;
    const int skippedRows = offset / load.line;
    const int width = sideOf(tile.width, tile.maskS, load.rowBytes * 8 / tile.bits);
    const int height = sideOf(tile.height, tile.maskT, load.rows - skippedRows);
    if (width * tile.bits > load.rowBytes * 8 || height > load.rows - skippedRows)
        return false;
    texture->isPart = true;
    texture->pictureAddress = load.pictureAddress;
    texture->firstRow = load.firstRow + skippedRows;
    texture->address = load.address + quint32(skippedRows * load.pictureRowBytes);
    // The picture that the rectangle is cut from: only its whole rows lie together.
    texture->width = load.pictureRowBytes * 8 / tile.bits;
    texture->height = height;
    return true;
}

namespace
{
bool isSamePicture(const TextureReference &a, const TextureReference &b)
{
    return a.isPart == b.isPart && a.format == b.format && a.width == b.width && a.hasPalette == b.hasPalette
        && a.paletteAddress == b.paletteAddress && a.isInterleaved == b.isInterleaved
        && (a.isPart ? a.pictureAddress == b.pictureAddress : a.address == b.address && a.height == b.height);
}

bool comesBefore(const TextureReference &a, const TextureReference &b)
{
    const auto key = [](const TextureReference &texture) {
        return std::make_tuple(texture.isPart, texture.isPart ? texture.pictureAddress : texture.address, texture.width,
                               texture.hasPalette, texture.paletteAddress, texture.isInterleaved,
                               texture.isPart ? texture.firstRow : texture.height);
    };
    const int formats = a.format.compare(b.format);
    return formats != 0 ? formats < 0 : key(a) < key(b);
}
}

QVector<TextureReference> joinedTextures(QVector<TextureReference> textures)
{
    std::sort(textures.begin(), textures.end(), comesBefore);
    QVector<TextureReference> joined;
    for (const TextureReference &texture : qAsConst(textures)) {
        TextureReference *last = joined.isEmpty() ? nullptr : &joined.last();
        if (!last || !isSamePicture(*last, texture) || texture.firstRow > last->firstRow + last->height) {
            joined.append(texture);
            continue;
        }
        last->height = qMax(last->height, texture.firstRow - last->firstRow + texture.height);
        last->paletteEntries = qMax(last->paletteEntries, texture.paletteEntries);
        if (texture.firstRow == last->firstRow)
            last->uses += texture.uses;
        last->commands += texture.commands;
    }
    for (TextureReference &texture : joined) {
        std::sort(texture.commands.begin(), texture.commands.end());
        texture.commands.erase(std::unique(texture.commands.begin(), texture.commands.end()), texture.commands.end());
    }
    return joined;
}
