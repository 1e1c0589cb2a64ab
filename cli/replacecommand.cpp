// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/describedtexture.h"
#include "cli/files.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "cli/worklog.h"
#include "codec/pictureloader.h"
#include "model/rom.h"
#include "model/tablewalk.h"
#include "transfer/replacement.h"

#include <QFileInfo>
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

/// What a user should know although the replacement goes on as in the window.
void remarkOnPicture(const fileTreeFile &texture, const QImage &picture, const QString &path, Streams &streams)
{
    const textureFormat format = textureFormats::getAsMap().value(texture.format);
    if (format.usesPalette && picture.colorCount() == 0)
        streams.remark(QStringLiteral("%1 has no colour table, so that %2 becomes all clear; a picture for %3 needs one")
                           .arg(path, texture.name, format.name));
    const qint64 bytes = QFileInfo(path).size();
    if (textureFormats::isJpeg(format.name) && texture.size() > 1 && bytes > texture.size())
        streams.remark(QStringLiteral("%1 has %2 bytes and the JPEG it replaces %3; what lies behind is overwritten")
                           .arg(path)
                           .arg(bytes)
                           .arg(texture.size()));
}

int replace(const fileTreeFile &texture, const QString &path, std::optional<int> resize, Streams &streams)
{
    SizeAnswerer sizes(resize);
    ImageWriter writer;
    KeptMessages log;
    const ReplaceOutcome outcome = replaceTexture(
        texture, path, [&sizes](const QSize &picture, const QSize &size) { return sizes.answer(picture, size); }, writer.sink(),
        &log);
    if (outcome == ReplaceOutcome::Aborted)
        return streams.failed(QStringLiteral("%1: %2").arg(path, sizes.error));
    if (outcome == ReplaceOutcome::Unreadable)
        return streams.failed(QStringLiteral("Cannot read file %1").arg(path));
    if (!writer.failures.isEmpty())
        return streams.failed(QStringLiteral("%1: %2").arg(texture.name, writer.failures.constFirst()));
    return Done;
}

int replaceAndWrite(const Arguments &arguments, const fileTreeFile &texture, const QString &picturePath, const OpenedImage &image,
                    Streams &streams)
{
    if (!textureFormats::find(texture.format))
        return streams.failed(QStringLiteral("%1: There is no texture format \"%2\"").arg(texture.name, texture.format));
    const QImage picture = loadPicture(picturePath);
    if (picture.isNull() && !textureFormats::isJpeg(texture.format))
        return streams.failed(QStringLiteral("Cannot read picture %1").arg(picturePath));
    remarkOnPicture(texture, picture, picturePath, streams);
    const int status = replace(texture, picturePath, arguments.choice("resize", resizeChoices()), streams);
    if (status != Done)
        return status;
    QJsonObject report = arguments.isSet("json") ? imageWritingJson(arguments, image) : QJsonObject();
    if (const int written = writeImage(arguments, image, streams))
        return written;
    if (arguments.isSet("json")) {
        report.insert(QStringLiteral("texture"), texture.parent ? QJsonValue(fullPath(texture)) : QJsonValue());
        report.insert(QStringLiteral("picture"), arguments.positionals().constLast());
        printJson(streams.out, report);
    }
    return Done;
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
    options << textureOptions() << imageWritingOptions() << profileOptions() << jsonOption();
    return {QStringLiteral("replace"),
            QStringLiteral("Write a picture over a texture."),
            QStringLiteral("IMAGE [PATH] PICTURE"),
            QStringLiteral(
                "Encodes the picture in the format of the entry that PATH names and writes it over the entry's bytes, and its\n"
                "colour table over the palette of ci4 and ci8. A JPEG entry takes the picture file as it is. With --offset and\n"
                "--format, no profile is needed; width and height are then the picture's own unless given."),
            2,
            3,
            options,
            run};
}
}
