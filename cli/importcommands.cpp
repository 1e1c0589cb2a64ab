// SPDX-License-Identifier: MIT
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/importsummary.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "cli/terminalprogress.h"
#include "cli/worklog.h"
#include "model/rom.h"
#include "model/tablewalk.h"
#include "transfer/folderimport.h"
#include "transfer/texturepack.h"

#include <QFileInfo>
#include <QJsonObject>

namespace cli
{
namespace
{
void printText(const ImportSummary &summary, bool dryRun, QTextStream &out)
{
    out << (dryRun ? QLatin1String("Would import ") : QLatin1String("Imported "))
        << counted(summary.written, QStringLiteral("texture")) << QLatin1String(" from ") << printable(summary.source)
        << QLatin1String(" into ") << printable(summary.target) << QLatin1String(", left out ") << summary.left.size() << '\n';
    if (summary.foldersAdded > 0 || summary.texturesAdded > 0)
        out << (dryRun ? QLatin1String("Would add ") : QLatin1String("Added "))
            << counted(summary.foldersAdded, QStringLiteral("folder")) << QLatin1String(" and ")
            << counted(summary.texturesAdded, QStringLiteral("entry")) << '\n';
}

bool isReadableFolder(const QString &path, Streams &streams)
{
    const QFileInfo info(path);
    if (info.isDir() && info.isReadable())
        return true;
    streams.failed(info.exists() ? QStringLiteral("%1 is no folder that can be read").arg(path)
                                 : QStringLiteral("There is no folder %1").arg(path));
    return false;
}

/// Writes what the import changed and prints the summary, which is the whole output with --json.
int finish(const Arguments &arguments, const OpenedImage &image, ChosenProfile *listToWrite, const ImportSummary &summary,
           Streams &streams)
{
    printProblems(summary, streams);
    QString sentences;
    QTextStream aside(&sentences);
    Streams quiet(aside, streams.err);
    Streams &chosen = arguments.isSet("json") ? quiet : streams;
    int status = writeChangedImage(arguments, image, chosen);
    if (status == Done && listToWrite)
        status = writeProfile(arguments, listToWrite, chosen);
    if (status != Done)
        return status;
    if (arguments.isSet("json"))
        printJson(streams.out, json(summary));
    else
        printText(summary, arguments.isSet("dry-run"), streams.out);
    return summary.left.isEmpty() ? Done : Failed;
}

int runFolder(const Arguments &arguments, Streams &streams)
{
    checkImageWriting(arguments);
    if (arguments.rejected(streams))
        return WrongUsage;
    OpenedImage image;
    ChosenProfile profile;
    const QString source = arguments.positional(1);
    if (!openImageAndProfile(arguments, MissingList::Refuse, &image, &profile, streams) || !isReadableFolder(source, streams))
        return Failed;
    QString path = arguments.positional(2);
    if (!path.isEmpty() && !path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/'); // Only a folder can be meant.
    const TableNode node = nodeAtPath(currentROM.root, path);
    if (!node.folder)
        return streams.failed(pathNamesNothing(arguments.positional(2), profile));

    ImportSummary summary;
    summary.source = source;
    summary.target = fullPath(*node.folder);
    ImageWriter writer;
    KeptMessages log;
    QString report;
    {
        TerminalProgress progress(streams.err);
        progress.setMaximum(countFilesBelow(source));
        progress.setLabel(QStringLiteral("Importing textures"));
        importPictureFolder(source, node.folder, writer.sink(), &progress, &log, &report, jpegRule(arguments));
    }
    summary.written = writer.written;
    summary.left = report.split(QLatin1Char('\n'), Qt::SkipEmptyParts) + log.messages + writer.failures;
    summary.warnings = log.warnings;
    return finish(arguments, image, nullptr, summary, streams);
}

int runPack(const Arguments &arguments, Streams &streams)
{
    checkImageWriting(arguments);
    if (arguments.rejected(streams))
        return WrongUsage;
    OpenedImage image;
    ChosenProfile profile;
    const QString source = arguments.positional(1);
    if (!openImageAndProfile(arguments, MissingList::StartEmpty, &image, &profile, streams) || !isReadableFolder(source, streams))
        return Failed;

    ImageWriter writer;
    KeptMessages log;
    const TexturePackImport added =
        importPack(source, currentROM.root, currentROM.data, writer.sink(), &log, jpegRule(arguments));
    const bool listed = !arguments.isSet("no-add") && added.lastFolder;
    const ImportSummary summary {
        source,        fullPath(*currentROM.root), writer.written, log.messages + writer.failures, log.warnings, added.folders,
        added.textures};
    return finish(arguments, image, listed ? &profile : nullptr, summary, streams);
}
}

Command importFolderCommand()
{
    return {QStringLiteral("import-folder"),
            QStringLiteral("Write a folder of pictures over the textures of the same names."),
            QStringLiteral("IMAGE FOLDER [PATH]"),
            QStringLiteral(
                "FOLDER stands for the folder of the table that PATH names, without it for the root: each picture in it is\n"
                "written over the texture of its name, each directory into the folder of its name. Palettes stay: for ci4 and\n"
                "ci8, a picture without a colour table gets the nearest colours of the texture's palette. What is not imported\n"
                "is listed on standard error, and the exit status is then 1; the rest is imported all the same."),
            2,
            3,
            imageWritingOptions() << allowOverrunOption() << profileOptions() << jsonOption(),
            runFolder};
}

Command importPackCommand()
{
    QList<QCommandLineOption> options = imageWritingOptions();
    options << QCommandLineOption(QStringLiteral("no-add"), QStringLiteral("Leave the profile's file list as it is."))
            << allowOverrunOption() << profileOptions() << jsonOption();
    return {QStringLiteral("import-pack"),
            QStringLiteral("Import a texture pack into the image and the file list."),
            QStringLiteral("IMAGE PACK"),
            QStringLiteral(
                "Writes the pictures of a texture pack, whose names say where they belong, into the image, and adds their\n"
                "folders and entries to the profile's file list."),
            2,
            2,
            options,
            runPack};
}
}
