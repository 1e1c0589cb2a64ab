// SPDX-License-Identifier: MIT
#include "cli/arguments.h"
#include "cli/cartridge.h"
#include "cli/commandtable.h"
#include "cli/files.h"
#include "cli/interrupt.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "model/rom.h"
#include "model/tablewalk.h"
#include "persist/splatyaml.h"
#include "persist/tablecsv.h"
#include "persist/tablejson.h"
#include "persist/zeldaxml.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

namespace cli
{
namespace
{
/// The formats of tables, by their places among the choices of --as.
enum TableFormat { Csv, Json, Zapd, Splat };

const QStringList &formatChoices()
{
    static const QStringList choices {QStringLiteral("csv"), QStringLiteral("json"), QStringLiteral("zapd"),
                                      QStringLiteral("splat")};
    return choices;
}

QCommandLineOption asOption()
{
    return {
        QStringLiteral("as"),
        QStringLiteral("The format of FILE; without it the one that its name ends in: .csv, .json, .xml for zapd, .yaml or .yml "
                       "for splat."),
        QStringLiteral("csv|json|zapd|splat")};
}

/// The format that --as names, or the one that \a path ends in. Rejects the arguments when neither tells.
TableFormat chosenFormat(const Arguments &arguments, const QString &path)
{
    const std::optional<int> chosen = arguments.choice("as", formatChoices());
    if (chosen)
        return TableFormat(*chosen);
    const QString suffix = QFileInfo(path).suffix().toLower();
    const int place = QStringList({QStringLiteral("csv"), QStringLiteral("json"), QStringLiteral("xml"), QStringLiteral("yaml"),
                                   QStringLiteral("yml")})
                          .indexOf(suffix);
    if (place < 0)
        arguments.reject(QStringLiteral("Say which format it is: --as %1").arg(formatChoices().join(QStringLiteral(" or "))));
    return TableFormat(qBound(int(Csv), place, int(Splat)));
}

// --- export ---

bool writeTable(TableFormat format, QByteArray *document, QStringList *leftOut, QString *error)
{
    const fileTreeDirectory &root = *currentROM.root;
    switch (format) {
    case Csv: return writeTableCsv(root, document, error);
    case Json: return writeTableJson(root, currentROM.romID, currentROM.profileName, document, error);
    case Zapd: return writeZeldaXml(root, currentROM.romID, document, leftOut, error);
    case Splat: break;
    }
    return writeSplatYaml(root, currentROM.romID, currentROM.data.size(), document, leftOut, error);
}

void printLeftOut(const QStringList &leftOut, Streams &streams)
{
    for (const QString &line : leftOut)
        streams.remark(QStringLiteral("Left out: ") + line);
}

int exportTable(const Arguments &arguments, Streams &streams)
{
    const QString path = arguments.value("output");
    const bool dryRun = arguments.isSet("dry-run");
    const TableFormat format = chosenFormat(arguments, path);
    if (path.isEmpty() && !dryRun)
        arguments.reject(QStringLiteral("Say where to write: --output FILE"));
    if (isImageItself(arguments, path))
        arguments.reject(QStringLiteral("--output names the image itself"));
    if (arguments.rejected(streams))
        return WrongUsage;
    OpenedImage image;
    ChosenProfile profile;
    if (!openImageAndProfile(arguments, MissingList::Refuse, &image, &profile, streams))
        return Failed;
    QByteArray document;
    QStringList leftOut;
    QString error;
    if (!writeTable(format, &document, &leftOut, &error))
        return streams.failed(error);
    if (interrupted())
        return streams.failed(QStringLiteral("Interrupted; no table was written"));
    if (!dryRun && !writeOutput(path, document, streams, &error))
        return streams.failed(QStringLiteral("Cannot write file %1: %2").arg(path, error));
    const int folders = fileTreeContainer().allDirectories(currentROM.root).size();
    const int textures = fileTreeContainer().allFiles(currentROM.root).size() - leftOut.size();
    printLeftOut(leftOut, streams);
    if (arguments.isSet("json"))
        printJson(streams.out,
                  {{QStringLiteral("output"), dryRun ? QJsonValue() : QJsonValue(path)},
                   {QStringLiteral("format"), formatChoices().at(format)},
                   {QStringLiteral("folders"), folders},
                   {QStringLiteral("textures"), textures},
                   {QStringLiteral("leftOut"), QJsonArray::fromStringList(leftOut)}});
    else if (!isStandardStream(path))
        streams.out << (dryRun ? QStringLiteral("Would write ") : QStringLiteral("Wrote ")) << printable(path)
                    << QStringLiteral(" (%1, ").arg(formatChoices().at(format)) << counted(folders, QStringLiteral("folder"))
                    << QStringLiteral(", ") << counted(textures, QStringLiteral("texture")) << QStringLiteral(").\n");
    return Done;
}

// --- import ---

bool readTable(TableFormat format, const QByteArray &document, TableDocument *table, QString *error)
{
    switch (format) {
    case Csv: return readTableCsv(document, table, error);
    case Json: return readTableJson(document, table, error);
    case Zapd: return readZeldaXml(document, table, error);
    case Splat: break;
    }
    return readSplatYaml(document, table, error);
}

bool readTableFile(const Arguments &arguments, TableFormat format, TableDocument *table, Streams &streams)
{
    const QString path = arguments.positional(1);
    QByteArray document;
    QString error;
    if (QFileInfo(path).size() > maximumTableBytes || (readInput(path, &document, &error) && document.size() > maximumTableBytes))
        error = QStringLiteral("It is larger than %1 MiB").arg(maximumTableBytes / 1024 / 1024);
    if (!error.isEmpty()) {
        streams.failed(QStringLiteral("Cannot read file %1: %2").arg(path, error));
        return false;
    }
    if (readTable(format, document, table, &error))
        return true;
    streams.failed(QStringLiteral("%1: %2").arg(path, error));
    return false;
}

/// The folder that --into names; one that is not there yet is put before the names of all records.
fileTreeDirectory *target(const Arguments &arguments, TableDocument *table)
{
    QString path = arguments.value("into");
    if (!path.isEmpty() && !path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    const TableNode node = nodeAtPath(currentROM.root, path);
    if (node.folder)
        return node.folder;
    QStringList names;
    bool isFolder = false;
    splitPath(path, &names, &isFolder);
    for (TableRecord &record : table->records)
        record.folders = names + record.folders;
    return currentROM.root;
}

void warnAboutFormats(const TableDocument &table, Streams &streams)
{
    for (const TableRecord &record : table.records) {
        if (!record.isFolder && !textureFormats::find(record.format))
            streams.remark(QStringLiteral("line %1: \"%2\" is no format of textures; it is kept as it is written")
                               .arg(QString::number(record.line), record.format));
    }
}

int importTable(const Arguments &arguments, Streams &streams)
{
    const TableFormat format = chosenFormat(arguments, arguments.positional(1));
    const qint32 base = arguments.number("base").value_or(0);
    QStringList names;
    bool isFolder = false;
    if (arguments.isSet("into") && !splitPath(arguments.value("into") + QLatin1Char('/'), &names, &isFolder)
        && !arguments.value("into").endsWith(QLatin1Char('/')))
        arguments.reject(QStringLiteral("--into names no folder"));
    if (arguments.rejected(streams))
        return WrongUsage;
    OpenedImage image;
    ChosenProfile profile;
    TableDocument table;
    if (!openImageAndProfile(arguments, MissingList::StartEmpty, &image, &profile, streams)
        || !readTableFile(arguments, format, &table, streams))
        return Failed;
    fileTreeDirectory *folder = target(arguments, &table);
    const QString targetPath = arguments.isSet("into") ? arguments.value("into") : fullPath(*folder);
    AddedRecords added;
    QString error;
    if (!addRecords(table.records, folder, base, currentROM.data.size(), &added, &error))
        return streams.failed(QStringLiteral("%1: %2").arg(arguments.positional(1), error));
    warnAboutFormats(table, streams);
    printLeftOut(table.leftOut, streams);

    const bool json = arguments.isSet("json");
    QString sentence;
    QTextStream aside(&sentence);
    Streams quiet(aside, streams.err);
    const int status = writeProfile(arguments, &profile, json ? quiet : streams);
    if (status != Done)
        return status;
    if (json)
        printJson(streams.out,
                  {{QStringLiteral("source"), arguments.positional(1)},
                   {QStringLiteral("format"), formatChoices().at(format)},
                   {QStringLiteral("target"), targetPath},
                   {QStringLiteral("profile"), profile.name},
                   {QStringLiteral("foldersAdded"), added.folders},
                   {QStringLiteral("texturesAdded"), added.textures},
                   {QStringLiteral("unchanged"), added.unchanged},
                   {QStringLiteral("leftOut"), QJsonArray::fromStringList(table.leftOut)}});
    else
        streams.out << (arguments.isSet("dry-run") ? QStringLiteral("Would add ") : QStringLiteral("Added "))
                    << counted(added.folders, QStringLiteral("folder")) << QStringLiteral(" and ")
                    << counted(added.textures, QStringLiteral("texture")) << QStringLiteral("; ")
                    << counted(added.unchanged, QStringLiteral("texture")) << QStringLiteral(" there already.\n");
    return Done;
}
}

Command tableExportCommand()
{
    QList<QCommandLineOption> options {
        asOption(),
        {{QStringLiteral("o"), QStringLiteral("output")}, QStringLiteral("Write the table to FILE."), QStringLiteral("FILE")},
        {QStringLiteral("dry-run"), QStringLiteral("Write nothing, but say what would be.")}};
    options << profileOptions() << jsonOption();
    return {QStringLiteral("table export"),
            QStringLiteral("Write the file table for another tool."),
            QStringLiteral("IMAGE"),
            QStringLiteral(
                "Writes the profile's table as comma-separated values (csv) or JSON, both of which keep all of it, as Zelda\n"
                "extraction XML (zapd) or as a splat document. What has no counterpart there is named and left out."),
            1,
            1,
            options,
            exportTable};
}

Command tableImportCommand()
{
    QList<QCommandLineOption> options {
        asOption(),
        {QStringLiteral("into"),
         QStringLiteral("The folder of the table to put everything into, made if it is missing; without it the root."),
         QStringLiteral("PATH")},
        {QStringLiteral("base"),
         QStringLiteral("Added to each address: where the file that they count from begins in the image."), QStringLiteral("N")},
        {QStringLiteral("dry-run"), QStringLiteral("Write nothing, but say what would change.")}};
    options << profileOptions() << jsonOption();
    return {QStringLiteral("table import"),
            QStringLiteral("Add another tool's table to the file table."),
            QStringLiteral("IMAGE FILE"),
            QStringLiteral(
                "Adds the folders and textures of a table in one of the formats of \"table export\" to the profile's file list.\n"
                "What has no counterpart is named and left out. A file with an error in it adds nothing."),
            2,
            2,
            options,
            importTable};
}
}
