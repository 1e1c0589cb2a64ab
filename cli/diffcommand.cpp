// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/files.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "model/rom.h"
#include "model/tablewalk.h"
#include "transfer/gallery.h"
#include "verify/imagedifference.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

namespace cli
{
namespace
{
/// Two images, the table that describes them, and what differs.
struct Comparison
{
    QList<fileTreeFile *> textures;
    ChosenProfile profile;
    MeasuredImage before;
    MeasuredImage after;
    ImageDifference difference;
};

/// Reads both images and compares them. Returns false with the reason said.
bool compare(const Arguments &arguments, Comparison *comparison, Streams &streams)
{
    OpenedImage image;
    const MissingList missing = arguments.isSet("profile") ? MissingList::Refuse : MissingList::StartEmpty;
    if (!openImageAndProfile(arguments, missing, &image, &comparison->profile, streams))
        return false;
    const QString identifier = currentROM.romID;
    QByteArray bytes;
    ByteOrder order = ByteOrder::Unknown;
    if (!readImage(arguments.positional(1), &bytes, &order, streams))
        return false;
    const QString otherIdentifier =
        order == ByteOrder::Unknown ? QFileInfo(arguments.positional(1)).completeBaseName() : cartridgeIdentifier(bytes);
    // What is no cartridge image is identified by its name, and two files have two names.
    if (identifier != otherIdentifier && (order != ByteOrder::Unknown || image.order != ByteOrder::Unknown))
        streams.warn(QStringLiteral("%1 is an image of %2 and %3 one of %4; the table is that of the first")
                         .arg(arguments.positional(0), identifier, arguments.positional(1), otherIdentifier));

    comparison->textures = fileTreeContainer().allFiles(currentROM.root);
    comparison->before = measuredImage(comparison->textures);
    currentROM.data = bytes;
    comparison->after = measuredImage(comparison->textures);
    comparison->difference = differenceBetween(comparison->before, comparison->after, comparison->textures);
    return true;
}

const fileTreeFile &textureOf(const Comparison &comparison, const ChangedEntry &entry)
{
    return *comparison.textures.at(entry.place);
}

QJsonObject json(const Arguments &arguments, const Comparison &comparison)
{
    QJsonArray entries;
    for (const ChangedEntry &entry : comparison.difference.entries) {
        const fileTreeFile &texture = textureOf(comparison, entry);
        entries.append(QJsonObject {{QStringLiteral("path"), fullPath(texture)},
                                    {QStringLiteral("address"), texture.realAddress()},
                                    {QStringLiteral("format"), texture.format},
                                    {QStringLiteral("changedBytes"), entry.bytes},
                                    {QStringLiteral("changedPaletteBytes"), entry.paletteBytes}});
    }
    QJsonArray outside;
    for (const ChangedRange &range : comparison.difference.outside)
        outside.append(QJsonObject {{QStringLiteral("begin"), range.span.begin},
                                    {QStringLiteral("end"), range.span.end},
                                    {QStringLiteral("changedBytes"), range.bytes}});
    return {{QStringLiteral("old"), arguments.positional(0)},
            {QStringLiteral("new"), arguments.positional(1)},
            {QStringLiteral("oldSize"), comparison.before.bytes.size()},
            {QStringLiteral("newSize"), comparison.after.bytes.size()},
            {QStringLiteral("identifier"), currentROM.romID},
            {QStringLiteral("profile"), comparison.profile.name},
            {QStringLiteral("changedBytes"), comparison.difference.bytes},
            {QStringLiteral("entries"), entries},
            {QStringLiteral("outsideBytes"), comparison.difference.outsideBytes},
            {QStringLiteral("outsideRanges"), comparison.difference.outsideCount},
            {QStringLiteral("outside"), outside}};
}

void printText(const Comparison &comparison, QTextStream &out)
{
    const ImageDifference &difference = comparison.difference;
    const QString byte = QStringLiteral("byte");
    for (const ChangedEntry &entry : difference.entries) {
        QStringList parts;
        if (entry.bytes > 0)
            parts << counted(entry.bytes, byte);
        if (entry.paletteBytes > 0)
            parts << QStringLiteral("palette ") + counted(entry.paletteBytes, byte);
        out << printable(fullPath(textureOf(comparison, entry))) << QLatin1String(": ") << parts.join(QStringLiteral(", "))
            << '\n';
    }
    for (const ChangedRange &range : difference.outside)
        out << QLatin1String("Outside: ") << hexNumber(qint32(range.span.begin)) << QLatin1String(" to ")
            << hexNumber(qint32(range.span.end - 1)) << QLatin1String(", ") << counted(range.bytes, byte) << '\n';
    if (difference.outsideCount > difference.outside.size())
        out << QLatin1String("Outside: ") << (difference.outsideCount - difference.outside.size())
            << QLatin1String(" more ranges\n");
    if (comparison.before.bytes.size() != comparison.after.bytes.size())
        out << QStringLiteral("The sizes differ: %1 and %2 bytes\n")
                   .arg(comparison.before.bytes.size())
                   .arg(comparison.after.bytes.size());
    out << counted(difference.bytes, byte) << QLatin1String(" changed, ")
        << counted(difference.entries.size(), QStringLiteral("entry")) << QLatin1String(", ")
        << counted(difference.outsideBytes, byte) << QLatin1String(" outside all entries\n");
}

/// Writes the page with each changed texture as it was and as it is. Returns false with the reason said.
bool writeGallery(const Arguments &arguments, const Comparison &comparison, Streams &streams)
{
    const QString path = arguments.value("gallery");
    const GalleryHeading heading {
        QStringLiteral("%1 and %2")
            .arg(QFileInfo(arguments.positional(0)).fileName(), QFileInfo(arguments.positional(1)).fileName()),
        QStringLiteral("Changed entries of the profile \"%1\" of %2").arg(comparison.profile.name, currentROM.romID)};
    const auto writePage = [&](QIODevice *device) {
        GalleryWriter page(device, heading);
        for (const ChangedEntry &entry : comparison.difference.entries) {
            const fileTreeFile &texture = textureOf(comparison, entry);
            currentROM.data = comparison.before.bytes;
            const GalleryItem old = galleryItemOf(texture);
            currentROM.data = comparison.after.bytes;
            GalleryItem item = galleryItemOf(texture);
            const auto captioned = [](const QString &caption, const GalleryItem &one) {
                GalleryPicture picture = one.pictures.value(0);
                picture.caption = caption;
                return picture;
            };
            item.pictures = {captioned(QStringLiteral("before"), old), captioned(QStringLiteral("after"), item)};
            page.add(item);
        }
        return page.finish();
    };
    QString error;
    if (writeOutput(path, writePage, streams, &error))
        return true;
    streams.failed(QStringLiteral("Cannot write file %1: %2").arg(path, error));
    return false;
}

int run(const Arguments &arguments, Streams &streams)
{
    if (arguments.isSet("gallery")) {
        const QString path = arguments.value("gallery");
        const QString written = QFileInfo(path).canonicalFilePath();
        if (path.isEmpty() || isStandardStream(path))
            arguments.reject(QStringLiteral("--gallery needs a file name"));
        if (!written.isEmpty()
            && (isImageItself(arguments, path) || written == QFileInfo(arguments.positional(1)).canonicalFilePath()))
            arguments.reject(QStringLiteral("--gallery names one of the images"));
    }
    if (arguments.rejected(streams))
        return WrongUsage;
    Comparison comparison;
    if (!compare(arguments, &comparison, streams))
        return Failed;
    if (arguments.isSet("gallery") && !writeGallery(arguments, comparison, streams))
        return Failed;
    if (arguments.isSet("json"))
        printJson(streams.out, json(arguments, comparison));
    else
        printText(comparison, streams.out);
    return arguments.isSet("exit-code") && comparison.difference.bytes > 0 ? Failed : Done;
}
}

Command diffCommand()
{
    QList<QCommandLineOption> options {
        {QStringLiteral("gallery"),
         QStringLiteral("Also write a page with each changed entry before and after, as \"gallery\" does."),
         QStringLiteral("FILE")},
        {QStringLiteral("exit-code"), QStringLiteral("End with 1 when the images differ.")}};
    options << profileOptions() << jsonOption();
    return {QStringLiteral("diff"),
            QStringLiteral("Tell which entries differ between two images."),
            QStringLiteral("OLD NEW"),
            QStringLiteral(
                "Lists the entries of the profile whose bytes or palettes differ, with the number of bytes, and the ranges of\n"
                "bytes that differ outside all entries. The images may have different byte orders. The profile is that of OLD;\n"
                "without one, all differences are outside."),
            2,
            2,
            options,
            run};
}
}
