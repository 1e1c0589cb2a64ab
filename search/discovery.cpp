// SPDX-License-Identifier: MIT
#include "search/discovery.h"

#include "base/hexnumber.h"
#include "model/bulkadder.h"
#include "model/headerchecksum.h"
#include "model/rom.h"
#include "model/textureformat.h"

#include <QMap>
#include <QtEndian>

#include <algorithm>
#include <set>
#include <tuple>

namespace
{
constexpr int bootStart = 0x1000;
constexpr int bootBytes = 0x100000;
constexpr int entryAddress = 8;
constexpr quint32 ramBytes = 0x800000;
/// Lists further apart than this hardly share what a segment stands for.
constexpr int mostBytesApart = 64 * 1024;
/// Finding a base takes a while. What has more neighbourhoods than this is no game.
constexpr int mostSearches = 1000;
constexpr double confidenceOfBoot = 0.95;

/// An address as lists have it, by what it is relative to.
struct Location
{
    bool isValid = false;
    PlacedBy placedBy = PlacedBy::Ram;
    int segment = 0;
    quint32 offset = 0; ///< In the image for Boot, in the segment, or in RAM.
};

/// How the console maps addresses, as far as the image tells.
class AddressMap
{
public:
    explicit AddressMap(const QByteArray &image)
    {
        if (image.size() <= bootStart)
            return;
        quint32 entry = qFromBigEndian<quint32>(image.constData() + entryAddress);
        // These chips have the boot code move the program to below where the header says.
        const BootChip chip = bootChipOf(image);
        if (chip == BootChip::Cic6103)
            entry -= 0x100000;
        else if (chip == BootChip::Cic6106)
            entry -= 0x200000;
        m_hasBoot = isPointer(entry);
        m_bootAddress = physical(entry);
        m_bootBytes = quint32(qMin(image.size() - bootStart, bootBytes));
    }

    Location locate(quint32 address, qint64 bytes) const
    {
        Location location;
        const int segment = int(address >> 24);
        if (segment >= 1 && segment <= 15) {
            location = {true, PlacedBy::Segment, segment, address & 0xFFFFFF};
        } else if (isPointer(address) || segment == 0) {
            const quint32 offset = physical(address);
            location = {offset < ramBytes && offset + bytes <= ramBytes, PlacedBy::Ram, 0, offset};
            if (m_hasBoot && offset >= m_bootAddress && offset + bytes <= qint64(m_bootAddress) + m_bootBytes) {
                location.placedBy = PlacedBy::Boot;
                location.offset = offset - m_bootAddress + bootStart;
            }
        }
        return location;
    }

private:
    /// In one of the two windows onto physical memory, cached and not.
    static bool isPointer(quint32 address) { return address >> 29 == 4 || address >> 29 == 5; }
    static quint32 physical(quint32 address) { return address & 0x1FFFFFFF; }

    bool m_hasBoot = false;
    quint32 m_bootAddress = 0;
    quint32 m_bootBytes = 0;
};

/// A texture of one list, with its addresses located.
struct LocatedTexture
{
    TextureReference texture;
    Location location;
    Location palette;
};

QVector<LocatedTexture> located(const QVector<TextureReference> &textures, const AddressMap &map)
{
    QVector<LocatedTexture> result;
    for (const TextureReference &texture : textures) {
        LocatedTexture one {texture, map.locate(texture.address, texture.size()), Location()};
        std::sort(one.texture.commands.begin(), one.texture.commands.end());
        if (texture.hasPalette)
            one.palette = map.locate(texture.paletteAddress, 2 * texture.paletteEntries);
        if (one.location.isValid && (!texture.hasPalette || one.palette.isValid))
            result.append(one);
    }
    std::stable_sort(result.begin(), result.end(), [](const LocatedTexture &a, const LocatedTexture &b) {
        return a.texture.commands.first() < b.texture.commands.first();
    });
    return result;
}

bool isSameKind(const Location &a, const Location &b)
{
    return a.placedBy == b.placedBy && a.segment == b.segment;
}

/// Turns the addresses of a texture into offsets, so that a base can be added to them. Palettes of another kind are left out.
TextureReference withOffsets(const LocatedTexture &one)
{
    TextureReference texture = one.texture;
    // A part belongs to its picture, which the offset moves as well.
    texture.pictureAddress = one.location.offset - (texture.address - texture.pictureAddress);
    texture.address = one.location.offset;
    texture.hasPalette = texture.hasPalette && isSameKind(one.location, one.palette);
    texture.paletteAddress = texture.hasPalette ? one.palette.offset : 0;
    return texture;
}

/// Places the textures of one kind of address.
class Discoverer
{
public:
    Discoverer(const QByteArray &image, const QVector<int> &commands, WorkSteps *steps)
        : m_image(image), m_bases({image.constData(), image.size(), 0}, commands, steps)
    {
    }

    /// Takes the textures of one kind, in order of position, apart into neighbourhoods and places them.
    void addKind(const QVector<LocatedTexture> &textures)
    {
        int begin = 0;
        for (int i = 1; i <= textures.size(); ++i) {
            if (i == textures.size() || gapBefore(textures, i) > mostBytesApart) {
                addNeighbourhood(textures.mid(begin, i - begin), 0);
                begin = i;
            }
        }
    }

    /// Gives palettes that lie in other neighbourhoods their addresses, and sorts.
    Discovery finished()
    {
        for (const Waiting &waiting : qAsConst(m_waiting))
            m_discovery.textures[waiting.texture].paletteAddress = placeOf(waiting);
        std::stable_sort(m_discovery.textures.begin(), m_discovery.textures.end(),
                         [](const DiscoveredTexture &a, const DiscoveredTexture &b) { return a.address < b.address; });
        return m_discovery;
    }

private:
    struct Waiting
    {
        int texture;
        Location palette;
        int bytes;
    };

    static int gapBefore(const QVector<LocatedTexture> &textures, int i)
    {
        return textures.at(i).texture.commands.first() - textures.at(i - 1).texture.commands.last();
    }

    void addNeighbourhood(const QVector<LocatedTexture> &textures, int depth)
    {
        Neighbourhood neighbourhood;
        neighbourhood.placedBy = textures.first().location.placedBy;
        neighbourhood.segment = textures.first().location.segment;
        neighbourhood.firstCommand = textures.first().texture.commands.first();
        neighbourhood.lastCommand = textures.last().texture.commands.last();
        QVector<TextureReference> references;
        QHash<quint32, Location> otherPalettes; // By the texture's address.
        for (const LocatedTexture &one : textures) {
            references.append(withOffsets(one));
            if (one.texture.hasPalette && !references.last().hasPalette)
                otherPalettes.insert(references.last().address, one.palette);
        }
        references = joinedTextures(references);
        neighbourhood.textures = references.size();
        qint64 base = 0;
        double confidence = confidenceOfBoot;
        if (neighbourhood.placedBy != PlacedBy::Boot) {
            if (m_searches++ >= mostSearches)
                return;
            neighbourhood.base = m_bases.find(references, neighbourhood.firstCommand, neighbourhood.lastCommand);
            if (!neighbourhood.base.isClear && split(textures, depth))
                return;
            base = neighbourhood.base.best.base;
            const double lead = neighbourhood.base.best.score - neighbourhood.base.second.score;
            confidence = qBound(0.0, 0.5 + lead, 1.0) * 0.9;
        }
        neighbourhood.isPlaced = neighbourhood.placedBy == PlacedBy::Boot || neighbourhood.base.isClear;
        if (neighbourhood.isPlaced) {
            for (const TextureReference &reference : qAsConst(references))
                add(reference, base, confidence, neighbourhood.placedBy, otherPalettes);
        }
        m_discovery.neighbourhoods.append(neighbourhood);
    }

    /// Two lists that follow one another may be of two files, so the widest gap between lists is where to part them. False when
    /// that does not help either.
    bool split(const QVector<LocatedTexture> &textures, int depth)
    {
        constexpr int deepest = 3;
        constexpr int fewest = 8;
        int widest = 0;
        for (int i = 1; i < textures.size(); ++i) {
            if (widest == 0 || gapBefore(textures, i) > gapBefore(textures, widest))
                widest = i;
        }
        if (depth == deepest || textures.size() < fewest || widest == 0)
            return false;
        const int texturesBefore = m_discovery.textures.size();
        const int neighbourhoodsBefore = m_discovery.neighbourhoods.size();
        addNeighbourhood(textures.mid(0, widest), depth + 1);
        addNeighbourhood(textures.mid(widest), depth + 1);
        if (m_discovery.textures.size() > texturesBefore)
            return true;
        m_discovery.neighbourhoods.resize(neighbourhoodsBefore);
        return false;
    }

    void add(const TextureReference &reference, qint64 base, double confidence, PlacedBy placedBy,
             const QHash<quint32, Location> &otherPalettes)
    {
        const qint64 address = base + reference.address;
        if (address < 0 || address + reference.size() > m_image.size())
            return;
        DiscoveredTexture texture;
        texture.address = int(address);
        texture.format = reference.format;
        texture.width = reference.width;
        texture.height = reference.height;
        texture.isInterleaved = reference.isInterleaved;
        texture.placedBy = placedBy;
        texture.confidence = confidence;
        texture.uses = reference.uses;
        texture.neighbourhood = m_discovery.neighbourhoods.size();
        texture.commands = reference.commands;
        if (reference.hasPalette)
            texture.paletteAddress = int(base + reference.paletteAddress);
        const auto other = otherPalettes.constFind(reference.address);
        if (!reference.hasPalette && other != otherPalettes.constEnd())
            m_waiting.append({m_discovery.textures.size(), *other, 2 * reference.paletteEntries});
        m_discovery.textures.append(texture);
    }

    /// Where the palette of another kind lies: its kind's neighbourhood that is nearest to the lists decides.
    int placeOf(const Waiting &waiting) const
    {
        qint64 address = waiting.palette.offset;
        if (waiting.palette.placedBy != PlacedBy::Boot) {
            const int lists = m_discovery.textures.at(waiting.texture).commands.first();
            const Neighbourhood *nearest = nullptr;
            for (const Neighbourhood &other : m_discovery.neighbourhoods) {
                if (other.isPlaced && other.placedBy == waiting.palette.placedBy && other.segment == waiting.palette.segment
                    && (!nearest || std::abs(other.firstCommand - lists) < std::abs(nearest->firstCommand - lists)))
                    nearest = &other;
            }
            if (!nearest)
                return -1;
            address += nearest->base.best.base;
        }
        return address >= 0 && address + waiting.bytes <= m_image.size() ? int(address) : -1;
    }

    const QByteArray &m_image;
    AddressBases m_bases;
    Discovery m_discovery;
    QVector<Waiting> m_waiting;
    int m_searches = 0;
};

/// Equal ones of two neighbourhoods become one.
void joinEqual(QVector<DiscoveredTexture> *textures)
{
    QMap<std::tuple<int, QString, int, int, int>, int> places;
    QVector<DiscoveredTexture> joined;
    for (const DiscoveredTexture &texture : qAsConst(*textures)) {
        const auto key = std::make_tuple(texture.address, texture.format, texture.width, texture.height, texture.paletteAddress);
        const auto known = places.constFind(key);
        if (known == places.constEnd()) {
            places.insert(key, joined.size());
            joined.append(texture);
            continue;
        }
        DiscoveredTexture &first = joined[*known];
        first.uses += texture.uses;
        first.commands += texture.commands;
        first.confidence = qMax(first.confidence, texture.confidence);
        std::sort(first.commands.begin(), first.commands.end());
    }
    *textures = joined;
}
}

QString placedByName(PlacedBy placedBy)
{
    switch (placedBy) {
    case PlacedBy::Boot: return QStringLiteral("boot");
    case PlacedBy::Segment: return QStringLiteral("segment");
    case PlacedBy::Ram: break;
    }
    return QStringLiteral("ram");
}

bool DiscoveredTexture::canBeAdded() const
{
    const textureFormat known = textureFormats::getAsMap().value(format, textureFormats::null);
    return known.bytesPerPixel > 0 && !isInterleaved && (!known.usesPalette || paletteAddress >= 0);
}

Discovery discoverTextures(const QByteArray &image, int begin, int end, WorkSteps *steps)
{
    const int from = qBound(0, begin, image.size());
    const ByteRange range {image.constData() + from, qMax(0, qMin(end, image.size()) - from), 0};
    const DisplayListScan scan = scanDisplayLists(range, from, steps);
    QMap<QPair<int, int>, QVector<LocatedTexture>> kinds;
    const QVector<LocatedTexture> textures = located(scan.textures, AddressMap(image));
    for (const LocatedTexture &texture : textures)
        kinds[{int(texture.location.placedBy), texture.location.segment}].append(texture);
    Discoverer discoverer(image, scan.commands, steps);
    for (const QVector<LocatedTexture> &kind : qAsConst(kinds)) {
        if (!steps->isCancelled())
            discoverer.addKind(kind);
    }
    Discovery discovery = discoverer.finished();
    joinEqual(&discovery.textures);
    return discovery;
}

namespace
{
QString folderName(const Neighbourhood &neighbourhood)
{
    switch (neighbourhood.placedBy) {
    case PlacedBy::Boot: return QStringLiteral("Boot");
    case PlacedBy::Segment:
        return QStringLiteral("Segment %1 of %2").arg(neighbourhood.segment).arg(hexNumber(neighbourhood.firstCommand));
    case PlacedBy::Ram: break;
    }
    return QStringLiteral("RAM of %1").arg(hexNumber(neighbourhood.firstCommand));
}

/// What makes two entries equal, wherever in the table they are.
using EntryKey = std::tuple<int, QString, int, int>;

/// The folder \a name in \a parent, made to cover the bytes from \a begin to \a end when it is missing.
fileTreeDirectory *folderIn(fileTreeDirectory *parent, const QString &name, int begin, int end)
{
    fileTreeDirectory *folder = parent->getDirectoryByName(name);
    if (folder)
        return folder;
    folder = new fileTreeDirectory;
    folder->setName(name);
    folder->address = begin - parent->realAddress();
    folder->size = end - begin;
    return parent->addDirectory(folder);
}

fileTreeFile *entryFor(const DiscoveredTexture &texture, const fileTreeDirectory &folder)
{
    auto *entry = new fileTreeFile;
    entry->name = hexNumber(texture.address);
    entry->format = texture.format;
    entry->width = texture.width;
    entry->height = texture.height;
    entry->address = texture.address - folder.realAddress();
    // A palette's address counts from the immediate folder's own address alone.
    if (texture.paletteAddress >= 0)
        entry->paletteAddress = texture.paletteAddress - folder.address;
    return entry;
}
}

int addDiscovered(const Discovery &discovery, fileTreeDirectory *root, const QString &name)
{
    std::set<EntryKey> known;
    const QList<fileTreeFile *> entries = fileTreeContainer().allFiles(root);
    for (const fileTreeFile *entry : entries)
        known.insert(EntryKey(entry->realAddress(), entry->format, entry->width, entry->height));
    QMap<int, QVector<DiscoveredTexture>> added; // By neighbourhood.
    int count = 0;
    for (const DiscoveredTexture &texture : discovery.textures) {
        const EntryKey key(texture.address, texture.format, texture.width, texture.height);
        if (!texture.canBeAdded() || known.count(key) > 0)
            continue;
        known.insert(key);
        added[texture.neighbourhood].append(texture);
        ++count;
    }
    for (auto neighbourhood = added.cbegin(); neighbourhood != added.cend(); ++neighbourhood) {
        int begin = neighbourhood->first().address;
        int end = 0;
        for (const DiscoveredTexture &texture : *neighbourhood) {
            const double bytesPerPixel = textureFormats::getAsMap().value(texture.format).bytesPerPixel;
            begin = qMin(begin, texture.paletteAddress >= 0 ? texture.paletteAddress : begin);
            end = qMax(end, texture.address + int(texture.width * texture.height * bytesPerPixel));
        }
        fileTreeDirectory *all = folderIn(root, name, 0, currentROM.data.size());
        fileTreeDirectory *folder = folderIn(all, folderName(discovery.neighbourhoods.at(neighbourhood.key())), begin, end);
        BulkAdder adder(folder);
        for (const DiscoveredTexture &texture : *neighbourhood)
            adder.addFile(entryFor(texture, *folder));
    }
    return count;
}
