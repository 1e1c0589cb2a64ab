// SPDX-License-Identifier: MIT
#include "base/folderbounds.h"
#include "base/hexnumber.h"
#include "cli/arguments.h"
#include "cli/cartridge.h"
#include "cli/commandtable.h"
#include "cli/interrupt.h"
#include "cli/output.h"
#include "cli/terminalprogress.h"
#include "model/rom.h"
#include "persist/imagefile.h"
#include "persist/savefile.h"
#include "search/compressedblocks.h"
#include "transfer/blockfiles.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

namespace cli
{
namespace
{
/// Finds the blocks of the loaded image and says so when not all of it could be searched.
BlockList blocksOfImage(Streams &streams)
{
    BlockList list;
    {
        TerminalProgress progress(streams.err);
        progress.setLabel(QStringLiteral("Searching for blocks"));
        list = findBlocks(currentROM.data, &progress);
    }
    if (list.searchedUpTo < currentROM.data.size() && !interrupted())
        streams.remark(QStringLiteral("The search for blocks was given up at %1: too much of the image only looks like blocks")
                           .arg(hexNumber(list.searchedUpTo)));
    return list;
}

QJsonObject json(const CompressedBlock &block)
{
    return {{QStringLiteral("address"), block.address},
            {QStringLiteral("kind"), blockKindName(block.kind)},
            {QStringLiteral("packedSize"), block.packedSize},
            {QStringLiteral("unpackedSize"), block.unpackedSize}};
}

int runBlocks(const Arguments &arguments, Streams &streams)
{
    if (arguments.rejected(streams))
        return WrongUsage;
    OpenedImage image;
    if (!openImage(arguments, &image, streams))
        return Failed;
    const BlockList list = blocksOfImage(streams);
    if (interrupted())
        return streams.failed(QStringLiteral("Interrupted; not everything was searched"));
    const bool complete = list.searchedUpTo == currentROM.data.size();
    if (arguments.isSet("json")) {
        QJsonArray blocks;
        for (const CompressedBlock &block : list.blocks)
            blocks.append(json(block));
        printJson(streams.out,
                  {{QStringLiteral("identifier"), currentROM.romID},
                   {QStringLiteral("searchedUpTo"), list.searchedUpTo},
                   {QStringLiteral("blocks"), blocks}});
        return complete ? Done : Failed;
    }
    for (const CompressedBlock &block : list.blocks)
        streams.out << hexNumber(block.address) << QLatin1String("  ") << blockKindName(block.kind)
                    << QStringLiteral("  %1  %2\n").arg(block.packedSize, 8).arg(block.unpackedSize, 8);
    streams.out << counted(list.blocks.size(), QStringLiteral("block")) << QLatin1String(" found\n");
    return complete ? Done : Failed;
}

/// The blocks at the addresses given, without any all there are. False with the reason said when one is not there.
bool chosenBlocks(const Arguments &arguments, QVector<CompressedBlock> *blocks, Streams &streams)
{
    const QStringList addresses = arguments.positionals().mid(1);
    if (addresses.isEmpty())
        *blocks = blocksOfImage(streams).blocks;
    for (const QString &text : addresses) {
        const int address = parsedNumber(text).value_or(-1);
        const std::optional<CompressedBlock> block = blockAt(currentROM.data, address);
        if (!block) {
            streams.failed(QStringLiteral("There is no compressed block at %1").arg(hexNumber(address)));
            return false;
        }
        blocks->append(*block);
    }
    return true;
}

enum class Unpacking { Written, AlreadyThere, Refused };

/// Writes one block's content, unless there is a file of that name with other content.
Unpacking unpackBlock(const CompressedBlock &block, const QString &folder, bool overwrite, QString *path, QString *error)
{
    *path = QDir(folder).filePath(blockFileName(currentROM.romID, block));
    if (FolderBounds(folder).leadsOut(QFileInfo(*path))) {
        *error = QStringLiteral("It is a link that leads out of the folder");
        return Unpacking::Refused;
    }
    const QByteArray content = unpackedBlock(currentROM.data, block);
    QByteArray present;
    if (QFileInfo::exists(*path) && !overwrite) {
        if (readWholeFile(*path, &present, error) && present == content)
            return Unpacking::AlreadyThere;
        *error = QStringLiteral("It is there already with other content; --overwrite replaces it");
        return Unpacking::Refused;
    }
    return saveWhole(*path, content, error) ? Unpacking::Written : Unpacking::Refused;
}

int runUnpack(const Arguments &arguments, Streams &streams)
{
    const QString folder = arguments.isSet("output") ? arguments.value("output") : QStringLiteral(".");
    const QStringList addresses = arguments.positionals().mid(1);
    for (const QString &address : addresses) {
        if (!parsedNumber(address))
            arguments.reject(QStringLiteral("\"%1\" is no address").arg(address));
    }
    if (folder.isEmpty())
        arguments.reject(QStringLiteral("--output needs the name of a folder"));
    if (arguments.rejected(streams))
        return WrongUsage;
    OpenedImage image;
    QVector<CompressedBlock> blocks;
    if (!openImage(arguments, &image, streams) || !chosenBlocks(arguments, &blocks, streams))
        return Failed;
    if (!QDir().mkpath(folder) || !QFileInfo(folder).isWritable())
        return streams.failed(QStringLiteral("Cannot write to folder %1").arg(folder));

    int refused = 0;
    QJsonArray files;
    for (const CompressedBlock &block : qAsConst(blocks)) {
        if (interrupted())
            return streams.failed(QStringLiteral("Interrupted; not every block was unpacked"));
        QString path;
        QString error;
        if (unpackBlock(block, folder, arguments.isSet("overwrite"), &path, &error) == Unpacking::Refused) {
            ++refused;
            streams.remark(QStringLiteral("Cannot write file %1: %2").arg(path, error));
            continue;
        }
        QJsonObject file = json(block);
        file.insert(QStringLiteral("file"), path);
        files.append(file);
    }
    if (arguments.isSet("json"))
        printJson(streams.out, {{QStringLiteral("identifier"), currentROM.romID}, {QStringLiteral("unpacked"), files}});
    else
        streams.out << QLatin1String("Unpacked ") << counted(files.size(), QStringLiteral("block")) << QLatin1String(" to ")
                    << printable(folder) << QLatin1String(", left out ") << refused << '\n';
    return refused == 0 && !interrupted() ? Done : Failed;
}

/// The files to pack: the one given, or those of the folder given that are named after this image. False with the reason said.
bool filesToPack(const Arguments &arguments, QStringList *paths, Streams &streams)
{
    const QString given = arguments.positional(1);
    const QString identifier = fileIdentifier(currentROM.romID);
    if (!QFileInfo(given).isDir()) {
        const QString fileName = QFileInfo(given).fileName();
        const std::optional<BlockFileName> name = parsedBlockFileName(fileName);
        if (!name)
            streams.failed(QStringLiteral("\"%1\" does not say which block it is: its name is to be like %2")
                               .arg(fileName, blockFileName(currentROM.romID, {BlockKind::Yay0, 0x1000, 0, 0})));
        else if (name->identifier != identifier)
            streams.failed(QStringLiteral("%1 is of the image %2, and this one is %3").arg(given, name->identifier, identifier));
        else
            paths->append(given);
        return !paths->isEmpty();
    }
    const QFileInfoList entries = QDir(given).entryInfoList(QDir::Files | QDir::Hidden, QDir::Name);
    const FolderBounds bounds(given);
    for (const QFileInfo &entry : entries) {
        const std::optional<BlockFileName> name = parsedBlockFileName(entry.fileName());
        if (name && name->identifier == identifier && !bounds.leadsOut(entry))
            paths->append(entry.filePath());
    }
    if (paths->isEmpty())
        streams.failed(QStringLiteral("There is no file %1-ADDRESS.KIND in %2").arg(identifier, given));
    return !paths->isEmpty();
}

/// Why a block was not packed; empty when it was.
QString reasonOf(const BlockPacking &packing, const BlockFileName &name)
{
    const QString place = QStringLiteral("%1 block at %2").arg(blockKindName(name.kind), hexNumber(name.address));
    switch (packing.result) {
    case BlockPacking::Result::Packed:
    case BlockPacking::Result::Unchanged: break;
    case BlockPacking::Result::NoBlock: return QStringLiteral("The image has no %1").arg(place);
    case BlockPacking::Result::NotPackable: return QStringLiteral("A block holds from 1 to %1 bytes").arg(mostUnpackedBytes);
    case BlockPacking::Result::TooLong:
        return QStringLiteral("It packs to %1, and the %2 has %3: %4 missing")
            .arg(counted(packing.packedSize, QStringLiteral("byte")), place)
            .arg(packing.room)
            .arg(counted(packing.missing(), QStringLiteral("byte"))
                 + (packing.missing() == 1 ? QStringLiteral(" is") : QStringLiteral(" are")));
    }
    return QString();
}

struct PackedFile
{
    QString path;
    BlockFileName name;
    BlockPacking packing;
    QString problem; ///< Empty when it was packed.
};

PackedFile packFile(const QString &path, Streams &streams)
{
    PackedFile file {path, *parsedBlockFileName(QFileInfo(path).fileName()), {}, QString()};
    QByteArray content;
    QString error;
    if (!readWholeFile(path, &content, &error)) {
        file.problem = QStringLiteral("Cannot read file %1: %2").arg(path, error);
        return file;
    }
    file.packing = packBlock(currentROM.data, file.name.address, file.name.kind, content);
    file.problem = reasonOf(file.packing, file.name);
    if (file.packing.result == BlockPacking::Result::Packed && !currentROM.overwrite(file.name.address, file.packing.bytes))
        file.problem = QStringLiteral("It cannot be written to the image");
    if (!file.problem.isEmpty())
        file.problem.prepend(path + QLatin1String(": "));
    else if (content.size() != file.packing.oldUnpackedSize)
        streams.remark(QStringLiteral("%1: The content was %2 bytes and is now %3; whatever reads it has to expect that")
                           .arg(path)
                           .arg(file.packing.oldUnpackedSize)
                           .arg(content.size()));
    return file;
}

QJsonObject json(const PackedFile &file)
{
    const bool packed = file.packing.result == BlockPacking::Result::Packed;
    const bool unchanged = file.packing.result == BlockPacking::Result::Unchanged;
    QJsonObject object {{QStringLiteral("file"), file.path},
                        {QStringLiteral("address"), file.name.address},
                        {QStringLiteral("kind"), blockKindName(file.name.kind)},
                        {QStringLiteral("result"),
                         packed          ? QStringLiteral("packed")
                             : unchanged ? QStringLiteral("unchanged")
                                         : QStringLiteral("failed")},
                        {QStringLiteral("packedSize"), file.packing.packedSize},
                        {QStringLiteral("room"), file.packing.room}};
    if (!file.problem.isEmpty())
        object.insert(QStringLiteral("reason"), file.problem);
    return object;
}

int runPack(const Arguments &arguments, Streams &streams)
{
    checkImageWriting(arguments);
    if (arguments.rejected(streams))
        return WrongUsage;
    OpenedImage image;
    QStringList paths;
    if (!openImage(arguments, &image, streams) || !filesToPack(arguments, &paths, streams))
        return Failed;
    QJsonArray files;
    QStringList problems;
    int packed = 0;
    int unchanged = 0;
    for (const QString &path : qAsConst(paths)) {
        if (interrupted())
            return streams.failed(QStringLiteral("Interrupted; nothing was written"));
        const PackedFile file = packFile(path, streams);
        files.append(json(file));
        packed += file.packing.result == BlockPacking::Result::Packed ? 1 : 0;
        unchanged += file.packing.result == BlockPacking::Result::Unchanged ? 1 : 0;
        if (!file.problem.isEmpty())
            problems.append(file.problem);
    }
    for (const QString &problem : qAsConst(problems))
        streams.remark(problem);
    const bool asJson = arguments.isSet("json");
    if (!asJson)
        streams.out << QLatin1String("Packed ") << counted(packed, QStringLiteral("block"))
                    << QStringLiteral(", unchanged %1, left out %2\n").arg(unchanged).arg(problems.size());
    // All that was asked for, or nothing: half of it would be hard to tell from the whole.
    const int status =
        problems.isEmpty() ? writeImage(arguments, image, streams) : streams.failed(QStringLiteral("Nothing was written"));
    if (asJson) {
        QJsonObject document = imageWritingJson(arguments, image);
        if (status != Done)
            document.insert(QStringLiteral("output"), QJsonValue());
        document.insert(QStringLiteral("identifier"), currentROM.romID);
        document.insert(QStringLiteral("files"), files);
        printJson(streams.out, document);
    }
    return status;
}
}

Command blocksCommand()
{
    return {
        QStringLiteral("blocks"),
        QStringLiteral("List the compressed blocks of the image."),
        QStringLiteral("IMAGE"),
        QStringLiteral("Finds all MIO0, Yay0 and Yaz0 blocks, gzip files and zlib streams that decode completely. Prints each:\n"
                       "address, kind, packed and unpacked size."),
        1,
        1,
        jsonOption(),
        runBlocks};
}

Command unpackCommand()
{
    QList<QCommandLineOption> options {
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral("The folder to write to; without it the current folder."),
         QStringLiteral("DIR")},
        {QStringLiteral("overwrite"), QStringLiteral("Replace files that are there with other content.")}};
    options << jsonOption();
    return {QStringLiteral("unpack"),
            QStringLiteral("Write what compressed blocks hold to files."),
            QStringLiteral("IMAGE [ADDRESS...]"),
            QStringLiteral("Writes the content of each block, or of those at the addresses given, to a file\n"
                           "IDENTIFIER-ADDRESS.KIND, which can be opened as an image of its own and has profiles of its own."),
            1,
            -1,
            options,
            runUnpack};
}

Command packCommand()
{
    QList<QCommandLineOption> options = imageWritingOptions();
    options << jsonOption();
    return {
        QStringLiteral("pack"),
        QStringLiteral("Compress unpacked blocks again and put them back."),
        QStringLiteral("IMAGE FILE|DIR"),
        QStringLiteral(
            "Compresses the file that \"unpack\" wrote, or all of those in a folder, and puts each in the place of the block\n"
            "that its name says. What does not fit into the place of the old block is an error, and then nothing is\n"
            "written. Blocks with unchanged content are left as they are."),
        2,
        2,
        options,
        runPack};
}
}
