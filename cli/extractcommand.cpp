// SPDX-License-Identifier: MIT
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/describedtexture.h"
#include "cli/files.h"
#include "cli/interrupt.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "cli/terminalprogress.h"
#include "cli/worklog.h"
#include "model/rom.h"
#include "model/tablewalk.h"
#include "transfer/extraction.h"
#include "verify/verification.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>

namespace cli
{
namespace
{
QString targetOf(const Arguments &arguments)
{
    return arguments.isSet("output") ? arguments.value("output") : QStringLiteral(".");
}

/// The file for \a texture: the target itself, or one of the texture's name in it when it is a folder. Empty when the name is
/// none for a file.
QString fileFor(const fileTreeFile &texture, const QString &target)
{
    if (isStandardStream(target) || (!target.endsWith(QLatin1Char('/')) && !QFileInfo(target).isDir()))
        return target;
    if (!ProfileStore::isSafeName(texture.name))
        return QString();
    return QDir(target).filePath(texture.name + pictureExtension(texture.format));
}

/// Writes the file at \a path to standard output.
int passOn(const QString &path, Streams &streams)
{
    QByteArray bytes;
    QString error;
    if (readInput(path, &bytes, &error) && streams.writeBytes(bytes, &error))
        return Done;
    return streams.failed(QStringLiteral("Cannot write to standard output: %1").arg(error));
}

QJsonObject report(const QString &target, int written, const QStringList &problems)
{
    return {{QStringLiteral("target"), target},
            {QStringLiteral("written"), written},
            {QStringLiteral("notExtracted"), QJsonArray::fromStringList(problems)}};
}

int extractOne(const fileTreeFile &texture, const QString &name, const Arguments &arguments, Streams &streams)
{
    const QString path = fileFor(texture, targetOf(arguments));
    if (path.isEmpty())
        return streams.failed(QStringLiteral("\"%1\" cannot name a file; name one with --output").arg(texture.name));
    if (isImageItself(arguments, path))
        return streams.failed(QStringLiteral("%1 is the image itself; name another file with --output").arg(path));
    const bool isJpeg = textureFormats::isJpeg(texture.format);
    // A size of 1 or less says that no JPEG, or none with an end, lies there.
    if (isJpeg && texture.size() <= 1)
        return streams.failed(QStringLiteral("%1: No JPEG lies at its address").arg(name));
    if (spanOf(texture).end > currentROM.data.size())
        streams.remark(QStringLiteral("%1 reaches beyond the end of the image; only what lies inside is extracted").arg(name));
    if (interrupted())
        return streams.failed(QStringLiteral("Interrupted; %1 was not written").arg(path));
    KeptMessages log;
    QString error;
    // The picture goes through a file in any case: what makes it decides by the texture what kind of file it is.
    QTemporaryDir passing;
    const bool toOutput = isStandardStream(path);
    if (!toOutput && !makeFolderFor(path, &error))
        return streams.failed(error);
    const QString file = toOutput ? passing.filePath(QStringLiteral("picture")) : path;
    switch (extractTexture(texture, file, &log, &error)) {
    case ExtractOutcome::Extracted: break;
    case ExtractOutcome::NotWritten: return streams.failed(QStringLiteral("Cannot write file %1: %2").arg(path, error));
    default: return streams.failed(QStringLiteral("%1: %2").arg(name, error));
    }
    if (toOutput)
        return passOn(file, streams);
    if (arguments.isSet("json"))
        printJson(streams.out, report(path, 1, {}));
    else
        streams.out << QLatin1String("Wrote ") << printable(path) << '\n';
    return Done;
}

int extractAll(const fileTreeDirectory &folder, const Arguments &arguments, Streams &streams)
{
    const QString target = targetOf(arguments);
    if (isStandardStream(target))
        return streams.failed(QStringLiteral("\"%1\" is a folder; only one entry can go to standard output").arg(folder.name));
    // Said here, because the extraction would only leave everything out.
    if (!QDir().mkpath(target) || !QFileInfo(target).isWritable())
        return streams.failed(QStringLiteral("Cannot write to folder %1").arg(target));
    KeptMessages log;
    FolderExtraction result;
    {
        TerminalProgress progress(streams.err);
        progress.setLabel(QStringLiteral("Extracting"));
        result = extractFolder(target, &folder, &log, &progress);
    }
    for (const QString &problem : qAsConst(result.problems))
        streams.remark(problem);
    if (arguments.isSet("json"))
        printJson(streams.out, report(QDir(target).filePath(folder.name), result.written, result.problems));
    else
        streams.out << QLatin1String("Wrote ") << counted(result.written, QStringLiteral("file")) << QLatin1String(" to ")
                    << printable(QDir(target).filePath(folder.name)) << QLatin1String(", left out ") << result.problems.size()
                    << '\n';
    if (result.cancelled)
        return streams.failed(QStringLiteral("Interrupted; not every texture was extracted"));
    return result.problems.isEmpty() ? Done : Failed;
}

int run(const Arguments &arguments, Streams &streams)
{
    const bool described = describesTexture(arguments);
    const QString path = arguments.positional(1);
    if (described)
        checkDescribedTexture(arguments, false);
    if (described && !path.isEmpty())
        arguments.reject(QStringLiteral("Either PATH names an entry, or --offset and --format describe a texture"));
    if (arguments.isSet("output") && arguments.value("output").isEmpty())
        arguments.reject(QStringLiteral("--output needs a name"));
    if (arguments.isSet("output") && isImageItself(arguments, arguments.value("output")))
        arguments.reject(QStringLiteral("--output names the image itself"));
    if (arguments.rejected(streams))
        return WrongUsage;

    OpenedImage image;
    if (described) {
        if (!openImage(arguments, &image, streams))
            return Failed;
        const fileTreeFile *texture = describedTexture(arguments);
        return extractOne(*texture, texture->name, arguments, streams);
    }
    ChosenProfile profile;
    if (!openImageAndProfile(arguments, MissingList::Refuse, &image, &profile, streams))
        return Failed;
    const TableNode node = nodeAtPath(currentROM.root, path);
    if (!node.exists())
        return streams.failed(pathNamesNothing(path, profile));
    return node.texture ? extractOne(*node.texture, fullPath(*node.texture), arguments, streams)
                        : extractAll(*node.folder, arguments, streams);
}
}

Command extractCommand()
{
    QList<QCommandLineOption> options {
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral("The file or folder to write to, - for standard output; without it the current folder."),
         QStringLiteral("TARGET")}};
    options << textureOptions() << profileOptions() << jsonOption();
    return {QStringLiteral("extract"),
            QStringLiteral("Write a texture or a folder of textures to picture files."),
            QStringLiteral("IMAGE [PATH]"),
            QStringLiteral(
                "Extracts the entry or the folder that PATH names, without it the whole table. An entry becomes a PNG, or the\n"
                "JPEG that it is; a folder becomes a directory of its name in the target, which import-folder reads back.\n"
                "With --offset and --format, a texture is extracted without any profile."),
            1,
            2,
            options,
            run};
}
}
