// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/files.h"
#include "cli/interrupt.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "model/rom.h"
#include "model/textureformat.h"
#include "search/compressedblocks.h"
#include "search/discovery.h"
#include "transfer/gallery.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <cstdlib>
#include <limits>

namespace cli
{
namespace
{
const char *const defaultFolder = "Discovered";

QJsonArray jsonOf(const QVector<int> &numbers)
{
    QJsonArray array;
    for (const int number : numbers)
        array.append(number);
    return array;
}

bool usesPalette(const DiscoveredTexture &texture)
{
    return textureFormats::getAsMap().value(texture.format).usesPalette;
}

QJsonObject textureJson(const DiscoveredTexture &texture)
{
    return {{QStringLiteral("address"), texture.address},
            {QStringLiteral("format"), texture.format},
            {QStringLiteral("width"), texture.width},
            {QStringLiteral("height"), texture.height},
            {QStringLiteral("paletteAddress"), texture.paletteAddress >= 0 ? QJsonValue(texture.paletteAddress) : QJsonValue()},
            {QStringLiteral("placedBy"), placedByName(texture.placedBy)},
            {QStringLiteral("confidence"), texture.confidence},
            {QStringLiteral("canBeAdded"), texture.canBeAdded()},
            {QStringLiteral("uses"), texture.uses},
            {QStringLiteral("commands"), jsonOf(texture.commands)}};
}

QJsonValue baseJson(bool isThere, const AddressBase &base)
{
    if (!isThere)
        return QJsonValue();
    return QJsonObject {{QStringLiteral("base"), double(base.base)}, {QStringLiteral("score"), base.score}};
}

QJsonObject neighbourhoodJson(const Neighbourhood &neighbourhood)
{
    return {{QStringLiteral("placedBy"), placedByName(neighbourhood.placedBy)},
            {QStringLiteral("segment"), neighbourhood.segment > 0 ? QJsonValue(neighbourhood.segment) : QJsonValue()},
            {QStringLiteral("firstCommand"), neighbourhood.firstCommand},
            {QStringLiteral("lastCommand"), neighbourhood.lastCommand},
            {QStringLiteral("textures"), neighbourhood.textures},
            {QStringLiteral("placed"), neighbourhood.isPlaced},
            {QStringLiteral("best"), baseJson(neighbourhood.base.hasBest, neighbourhood.base.best)},
            {QStringLiteral("second"), baseJson(neighbourhood.base.hasSecond, neighbourhood.base.second)}};
}

/// What was found inside of a compressed block; all addresses count from the beginning of what it unpacks to.
struct BlockDiscovery
{
    CompressedBlock block;
    Discovery discovery;
};

QJsonArray texturesJson(const Discovery &discovery)
{
    QJsonArray textures;
    for (const DiscoveredTexture &texture : discovery.textures)
        textures.append(textureJson(texture));
    return textures;
}

QJsonObject json(const Discovery &discovery, const QVector<BlockDiscovery> &blocks, int added)
{
    QJsonArray neighbourhoods;
    for (const Neighbourhood &neighbourhood : discovery.neighbourhoods)
        neighbourhoods.append(neighbourhoodJson(neighbourhood));
    QJsonArray inBlocks;
    for (const BlockDiscovery &one : blocks)
        inBlocks.append(QJsonObject {{QStringLiteral("block"), one.block.address},
                                     {QStringLiteral("kind"), blockKindName(one.block.kind)},
                                     {QStringLiteral("textures"), texturesJson(one.discovery)}});
    return {{QStringLiteral("identifier"), currentROM.romID},
            {QStringLiteral("textures"), texturesJson(discovery)},
            {QStringLiteral("neighbourhoods"), neighbourhoods},
            {QStringLiteral("blocks"), inBlocks},
            {QStringLiteral("added"), added}};
}

QString commandsText(const QVector<int> &commands)
{
    constexpr int mostShown = 4;
    QString text;
    for (int i = 0; i < qMin(mostShown, commands.size()); ++i)
        text += (i > 0 ? QStringLiteral(" ") : QString()) + hexNumber(commands.at(i));
    if (commands.size() > mostShown)
        text += QStringLiteral(" and %1 more").arg(commands.size() - mostShown);
    return text;
}

/// \a block is the one that the texture is in, null for one in the image itself.
void printTexture(const DiscoveredTexture &texture, const CompressedBlock *block, QTextStream &out)
{
    const QLatin1String gap("  ");
    const QString palette = !usesPalette(texture) ? QStringLiteral("-")
        : texture.paletteAddress < 0              ? QStringLiteral("unknown")
                                                  : hexNumber(texture.paletteAddress);
    out << hexNumber(block ? block->address : texture.address) << gap << texture.format.leftJustified(8) << gap
        << QStringLiteral("%1x%2").arg(texture.width).arg(texture.height).leftJustified(11) << gap << palette.leftJustified(10)
        << gap << placedByName(texture.placedBy).leftJustified(9) << gap
        << QString::number(texture.confidence, 'f', 2).leftJustified(10) << gap << QString::number(texture.uses).rightJustified(4)
        << gap << commandsText(texture.commands) << (texture.isInterleaved ? ", rows interleaved" : "");
    if (block)
        out << QStringLiteral("  in the %1 block at %2, offset %3")
                   .arg(blockKindName(block->kind), hexNumber(block->address), hexNumber(texture.address));
    out << '\n';
}

/// \a base with its score. Bases of addresses in RAM may be below zero.
QString scored(const AddressBase &base)
{
    const QString sign = base.base < 0 ? QStringLiteral("-") : QString();
    return QStringLiteral("%1%2 (%3)").arg(sign, hexNumber(int(std::abs(base.base)))).arg(base.score, 0, 'f', 3);
}

void printUnplaced(const Neighbourhood &neighbourhood, QTextStream &out)
{
    const QString where =
        neighbourhood.segment > 0 ? QStringLiteral("segment %1").arg(neighbourhood.segment) : QStringLiteral("addresses in RAM");
    out << QStringLiteral("Not placed: %1 of %2, in lists from %3 to %4")
               .arg(counted(neighbourhood.textures, QStringLiteral("texture")), where, hexNumber(neighbourhood.firstCommand),
                    hexNumber(neighbourhood.lastCommand));
    if (neighbourhood.base.hasBest)
        out << "; best base " << scored(neighbourhood.base.best);
    if (neighbourhood.base.hasSecond)
        out << ", then " << scored(neighbourhood.base.second);
    out << '\n';
}

void printText(const Discovery &discovery, const QVector<BlockDiscovery> &blocks, QTextStream &out)
{
    int count = discovery.textures.size();
    for (const BlockDiscovery &one : blocks)
        count += one.discovery.textures.size();
    if (count > 0)
        out << QLatin1String("Address     Format    Dimensions   Palette     Placed by  Confidence  Uses  Commands\n");
    for (const DiscoveredTexture &texture : discovery.textures)
        printTexture(texture, nullptr, out);
    for (const BlockDiscovery &one : blocks) {
        for (const DiscoveredTexture &texture : one.discovery.textures)
            printTexture(texture, &one.block, out);
    }
    for (const Neighbourhood &neighbourhood : discovery.neighbourhoods) {
        if (!neighbourhood.isPlaced)
            printUnplaced(neighbourhood, out);
    }
    out << counted(count, QStringLiteral("texture")) << QLatin1String(" found\n");
}

/// Looks for lists, and for the textures that they use, in what each block from \a begin to before \a end unpacks to. Blocks
/// without any are left out.
QVector<BlockDiscovery> discoverInBlocks(int begin, int end, WorkSteps *steps)
{
    QVector<BlockDiscovery> found;
    const QVector<CompressedBlock> blocks = findBlocks(currentROM.data).blocks;
    for (const CompressedBlock &block : blocks) {
        if (block.address < begin || block.address >= end || interrupted())
            continue;
        const Discovery discovery = discoverTextures(unpackedBlock(currentROM.data, block), 0, block.unpackedSize, steps);
        if (!discovery.textures.isEmpty())
            found.append({block, discovery});
    }
    return found;
}

/// An entry of no table that shows \a texture.
GalleryItem itemOf(const DiscoveredTexture &texture)
{
    fileTreeFile entry;
    entry.name = hexNumber(texture.address);
    entry.format = texture.format;
    entry.width = texture.width;
    entry.height = texture.height;
    entry.address = texture.address;
    entry.paletteAddress = qMax(0, texture.paletteAddress);
    GalleryItem item = galleryItemOf(entry);
    item.folder = placedByName(texture.placedBy) + QLatin1Char('/');
    return item;
}

/// Writes the textures that can be shown as a page. Returns an exit status.
int writeGallery(const QString &path, const QString &title, const Discovery &discovery, Streams &streams)
{
    QString error;
    int leftOut = 0;
    const GalleryHeading heading {title, QStringLiteral("Textures that display lists use")};
    const auto write = [&](QIODevice *device) {
        GalleryWriter page(device, heading);
        for (const DiscoveredTexture &texture : discovery.textures) {
            if (texture.canBeAdded() && !interrupted())
                page.add(itemOf(texture));
        }
        leftOut = page.leftOut();
        return page.finish() && !interrupted();
    };
    const bool written = writeOutput(path, write, streams, &error);
    if (interrupted())
        return streams.failed(QStringLiteral("Interrupted; %1 was not written").arg(path));
    if (!written)
        return streams.failed(QStringLiteral("Cannot write file %1: %2").arg(path, error));
    if (leftOut > 0)
        return streams.failed(QStringLiteral("The page is full: %1 left out").arg(counted(leftOut, QStringLiteral("picture"))));
    return Done;
}

int run(const Arguments &arguments, Streams &streams)
{
    const bool adding = arguments.isSet("add");
    const int from = arguments.number("from").value_or(0);
    const int to = arguments.number("to").value_or(std::numeric_limits<qint32>::max());
    const QString folder = arguments.isSet("folder") ? arguments.value("folder") : QLatin1String(defaultFolder);
    if (!adding && (arguments.isSet("folder") || arguments.isSet("dry-run")))
        arguments.reject(QStringLiteral("Only --add writes a file list; without it there is no use for --folder and --dry-run"));
    if (folder.isEmpty())
        arguments.reject(QStringLiteral("--folder needs a name"));
    if (from >= to)
        arguments.reject(QStringLiteral("--from must be below --to"));
    if (arguments.isSet("gallery") && (arguments.value("gallery").isEmpty() || isStandardStream(arguments.value("gallery"))))
        arguments.reject(QStringLiteral("--gallery needs the name of a file"));
    if (isImageItself(arguments, arguments.value("gallery")))
        arguments.reject(QStringLiteral("--gallery names the image itself"));
    if (arguments.rejected(streams))
        return WrongUsage;

    OpenedImage image;
    ChosenProfile profile;
    if (!openImage(arguments, &image, streams) || (adding && !openProfile(arguments, MissingList::StartEmpty, &profile, streams)))
        return Failed;
    WorkSteps steps([] { return interrupted(); });
    const Discovery discovery = discoverTextures(currentROM.data, from, to, &steps);
    const QVector<BlockDiscovery> blocks =
        arguments.isSet("blocks") ? discoverInBlocks(from, to, &steps) : QVector<BlockDiscovery>();
    if (interrupted())
        return streams.failed(QStringLiteral("Interrupted; not everything was searched, and no file list was written"));
    if (adding && !blocks.isEmpty())
        streams.remark(
            QStringLiteral("What was found inside of compressed blocks is not added: unpack them and use their files"));
    if (arguments.isSet("gallery")) {
        const int status = writeGallery(arguments.value("gallery"), QFileInfo(image.path).fileName(), discovery, streams);
        if (status != Done)
            return status;
    }
    const int added = adding ? addDiscovered(discovery, currentROM.root, folder) : 0;
    if (arguments.isSet("json"))
        printJson(streams.out, json(discovery, blocks, added));
    else
        printText(discovery, blocks, streams.out);
    if (!adding)
        return Done;
    QString sentence;
    QTextStream aside(&sentence);
    Streams quiet(aside, streams.err);
    Streams &words = arguments.isSet("json") ? quiet : streams;
    words.out
        << QStringLiteral("Added %1 to the folder \"%2\".\n").arg(counted(added, QStringLiteral("entry")), printable(folder));
    return added > 0 ? writeProfile(arguments, &profile, words) : Done;
}
}

Command discoverCommand()
{
    QList<QCommandLineOption> options {
        {QStringLiteral("from"), QStringLiteral("Look for display lists from this address in the image on."),
         QStringLiteral("N")},
        {QStringLiteral("to"), QStringLiteral("Look for display lists up to this address, not included."), QStringLiteral("N")},
        {QStringLiteral("blocks"), QStringLiteral("Look also inside the compressed blocks.")},
        {QStringLiteral("add"), QStringLiteral("Add the textures to the profile's file list.")},
        {QStringLiteral("folder"), QStringLiteral("With --add, the folder for them; without it \"Discovered\"."),
         QStringLiteral("NAME")},
        {QStringLiteral("gallery"), QStringLiteral("Write the textures as pictures into this page for a browser."),
         QStringLiteral("FILE")},
        {QStringLiteral("dry-run"), QStringLiteral("With --add, write no file list, but say what would change.")}};
    options << profileOptions() << jsonOption();
    return {
        QStringLiteral("discover"),
        QStringLiteral("Find textures by the display lists that use them."),
        QStringLiteral("IMAGE"),
        QStringLiteral("Finds the display processor's commands in the image, follows them, and prints the textures that they\n"
                       "bring: address, format, width and height, the palette's address, how the place was found, how sure\n"
                       "that is, how often the lists bring it, and where the commands lie."),
        1,
        1,
        options,
        run};
}
}
