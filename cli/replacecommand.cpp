// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/describedtexture.h"
#include "cli/files.h"
#include "cli/importsummary.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "cli/worklog.h"
#include "codec/pictureloader.h"
#include "model/rom.h"
#include "model/tablewalk.h"
#include "transfer/replacement.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryFile>

namespace cli
{
namespace
{
const QStringList &resizeChoices()
{
    static const QStringList choices {QStringLiteral("ignore"), QStringLiteral("keep")};
    return choices;
}

/// Answers the size question by --resize; without it, or when it cannot be answered, by giving up with a reason.
class SizeAnswerer
{
public:
    explicit SizeAnswerer(std::optional<int> choice) : m_choice(choice) { }

    SizeAnswer answer(const QSize &picture, const QSize &texture)
    {
        if (m_choice && isAcceptablePictureSize(texture))
            return *m_choice == 0 ? SizeAnswer::IgnoreAspectRatio : SizeAnswer::KeepAspectRatio;
        error = QStringLiteral("The picture is %1x%2 while the texture is %3x%4")
                    .arg(picture.width())
                    .arg(picture.height())
                    .arg(texture.width())
                    .arg(texture.height());
        error += m_choice ? QStringLiteral("; that is too large to scale to")
                          : QStringLiteral("; say --resize ignore to stretch it, or --resize keep to keep its shape");
        return SizeAnswer::Abort;
    }

    QString error;

private:
    std::optional<int> m_choice;
};

/// Writes the picture at \a path over \a texture in the loaded image; \a summary tells what was done, or why nothing was.
void replace(const Arguments &arguments, const fileTreeFile &texture, const QString &path, ImportSummary *summary)
{
    SizeAnswerer sizes(arguments.choice("resize", resizeChoices()));
    ImageWriter writer;
    KeptMessages log;
    const ReplaceOutcome outcome = replaceTexture(
        texture, path, [&sizes](const QSize &picture, const QSize &size) { return sizes.answer(picture, size); }, writer.sink(),
        &log, jpegRule(arguments));
    summary->warnings = log.warnings;
    if (outcome == ReplaceOutcome::Replaced && writer.failures.isEmpty())
        summary->written = 1;
    else if (outcome == ReplaceOutcome::Replaced)
        summary->left.append(QStringLiteral("%1: %2").arg(texture.name, writer.failures.constFirst()));
    else if (outcome == ReplaceOutcome::Aborted)
        summary->left.append(QStringLiteral("%1: %2").arg(path, sizes.error));
    else if (outcome == ReplaceOutcome::Unreadable)
        summary->left.append(QStringLiteral("Cannot read file %1").arg(path));
    else
        summary->left = log.messages;
}

int replaceAndWrite(const Arguments &arguments, const fileTreeFile &texture, const QString &picturePath, const OpenedImage &image,
                    Streams &streams)
{
    if (!textureFormats::find(texture.format))
        return streams.failed(QStringLiteral("%1: There is no texture format \"%2\"").arg(texture.name, texture.format));
    if (!textureFormats::isJpeg(texture.format) && loadPicture(picturePath).isNull())
        return streams.failed(QStringLiteral("Cannot read picture %1").arg(arguments.positionals().constLast()));
    ImportSummary summary;
    replace(arguments, texture, picturePath, &summary);
    // Messages name what the user gave, not the file that standard input was written to.
    summary.warnings.replaceInStrings(picturePath, arguments.positionals().constLast());
    summary.left.replaceInStrings(picturePath, arguments.positionals().constLast());
    printProblems(summary, streams);
    QJsonObject report;
    if (arguments.isSet("json")) {
        report = imageWritingJson(arguments, image);
        report.insert(QStringLiteral("texture"), texture.parent ? QJsonValue(fullPath(texture)) : QJsonValue());
        report.insert(QStringLiteral("picture"), arguments.positionals().constLast());
        report.insert(QStringLiteral("written"), summary.written);
        report.insert(QStringLiteral("warnings"), QJsonArray::fromStringList(summary.warnings));
        report.insert(QStringLiteral("notImported"), QJsonArray::fromStringList(summary.left));
    }
    const int status = summary.left.isEmpty() ? writeChangedImage(arguments, image, streams) : Failed;
    if (!summary.left.isEmpty())
        report.insert(QStringLiteral("output"), QJsonValue());
    else if (status != Done)
        return status;
    if (arguments.isSet("json"))
        printJson(streams.out, report);
    return status;
}

/// Fills \a file with standard input. Returns false with the reason said.
bool receive(QTemporaryFile *file, Streams &streams)
{
    QByteArray bytes;
    QString error;
    if (readInput(QStringLiteral("-"), &bytes, &error)) {
        if (file->open() && file->write(bytes) == bytes.size() && file->flush())
            return true;
        error = file->errorString();
    }
    streams.failed(QStringLiteral("Cannot read the picture from standard input: %1").arg(error));
    return false;
}

int runDescribed(const Arguments &arguments, const QString &picturePath, Streams &streams)
{
    OpenedImage image;
    if (!openImage(arguments, &image, streams))
        return Failed;
    const fileTreeFile *texture = describedTexture(arguments, loadPicture(picturePath).size());
    return replaceAndWrite(arguments, *texture, picturePath, image, streams);
}

int run(const Arguments &arguments, Streams &streams)
{
    const bool described = describesTexture(arguments);
    if (described)
        checkDescribedTexture(arguments, true);
    if (described == (arguments.positionals().size() == 3))
        arguments.reject(described ? QStringLiteral("Either PATH names an entry, or --offset and --format describe a texture")
                                   : QStringLiteral("Too few arguments: it takes IMAGE PATH PICTURE, or --offset and --format"));
    arguments.choice("resize", resizeChoices());
    checkImageWriting(arguments);
    if (arguments.rejected(streams))
        return WrongUsage;

    // What reads pictures wants a file.
    QString picturePath = arguments.positionals().constLast();
    QTemporaryFile received;
    if (isStandardStream(picturePath) && !receive(&received, streams))
        return Failed;
    picturePath = received.isOpen() ? received.fileName() : picturePath;
    if (described)
        return runDescribed(arguments, picturePath, streams);
    OpenedImage image;
    ChosenProfile profile;
    if (!openImageAndProfile(arguments, MissingList::Refuse, &image, &profile, streams))
        return Failed;
    const TableNode node = nodeAtPath(currentROM.root, arguments.positional(1));
    if (!node.texture)
        return streams.failed(node.folder ? QStringLiteral("\"%1\" is a folder, not an entry").arg(arguments.positional(1))
                                          : pathNamesNothing(arguments.positional(1), profile));
    return replaceAndWrite(arguments, *node.texture, picturePath, image, streams);
}
}

Command replaceCommand()
{
    QList<QCommandLineOption> options {
        {QStringLiteral("resize"),
         QStringLiteral(
             "What to do with a picture of another size: ignore the aspect ratio and stretch it, or keep it and leave the "
             "rest clear. Without it, another size is an error."),
         QStringLiteral("ignore|keep")}};
    options << allowOverrunOption() << textureOptions() << imageWritingOptions() << profileOptions() << jsonOption();
    return {QStringLiteral("replace"),
            QStringLiteral("Write a picture over a texture."),
            QStringLiteral("IMAGE [PATH] PICTURE"),
            QStringLiteral(
                "Encodes the picture in the format of the entry that PATH names and writes it over the entry's bytes. For ci4\n"
                "and ci8, a picture's colour table is written over the palette; a picture without one keeps the palette's\n"
                "colours that it has, and only its other colours are written. A JPEG entry takes the picture file as it is,\n"
                "and no longer one than it has. With --offset and --format, no profile is needed; width and height are then\n"
                "the picture's own unless given. What is dropped on the way is a warning on standard error."),
            2,
            3,
            options,
            run};
}
}
