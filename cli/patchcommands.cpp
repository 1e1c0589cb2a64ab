// SPDX-License-Identifier: MIT
#include "base/crc32.h"
#include "base/hexnumber.h"
#include "cli/arguments.h"
#include "cli/cartridge.h"
#include "cli/checkcodes.h"
#include "cli/commandtable.h"
#include "cli/files.h"
#include "cli/interrupt.h"
#include "cli/output.h"
#include "model/rom.h"
#include "transfer/imagepatch.h"
#include "transfer/texturewriter.h"

#include <QFileInfo>
#include <QJsonObject>

namespace cli
{
namespace
{
QString hexadecimal(quint32 sum)
{
    return hexNumber(qint32(sum));
}

QString sizeAndSum(qint64 bytes, quint32 sum)
{
    return QStringLiteral("%1, checksum %2").arg(counted(bytes, QStringLiteral("byte")), hexadecimal(sum));
}

QString line(const QString &label, const QString &value)
{
    return label.leftJustified(16) + value + QLatin1Char('\n');
}

QJsonValue orderJson(ByteOrder order)
{
    return order == ByteOrder::Unknown ? QJsonValue() : QJsonValue(byteOrderName(order));
}

/// One of the two images of a patch to make.
struct PatchedImage
{
    QString path;
    QByteArray bytes; ///< Big-endian.
    ByteOrder order = ByteOrder::Unknown; ///< Of the file.

    bool read(Streams &streams) { return readImage(path, &bytes, &order, streams); }
    quint32 sum() const { return crc32(bytes.constData(), bytes.size()); }

    QString text() const
    {
        return QStringLiteral("%1 (%2, %3)").arg(printable(path), byteOrderName(order), sizeAndSum(bytes.size(), sum()));
    }
    QJsonObject json() const
    {
        return {{QStringLiteral("file"), path},
                {QStringLiteral("byteOrder"), orderJson(order)},
                {QStringLiteral("size"), bytes.size()},
                {QStringLiteral("checksum"), hexadecimal(sum())}};
    }
};

bool isSameFile(const QString &first, const QString &second)
{
    const QString path = QFileInfo(first).canonicalFilePath();
    return !path.isEmpty() && QFileInfo(second).canonicalFilePath() == path;
}

PatchKind kindBySuffix(const QString &path)
{
    if (path.endsWith(QLatin1String(".bps"), Qt::CaseInsensitive))
        return PatchKind::Bps;
    return path.endsWith(QLatin1String(".ips"), Qt::CaseInsensitive) ? PatchKind::Ips : PatchKind::Unknown;
}

/// What the header of the big-endian \a image says about its check codes, as lines.
QString checkCodeText(const QByteArray &image, ByteOrder order)
{
    if (order == ByteOrder::Unknown)
        return QStringLiteral("No cartridge header, so there are no check codes.\n");
    const CheckCodeFindings findings = checkCodesOf(image);
    QString text = findings.text();
    if (!findings.obstacle().isEmpty())
        text += findings.obstacle() + QLatin1String(".\n");
    else if (!findings.match())
        text += QStringLiteral("The console refuses to start it: \"quillary-cli checksum --fix\" writes the right codes.\n");
    return text;
}

QJsonValue checkCodeJson(const QByteArray &image, ByteOrder order)
{
    return order == ByteOrder::Unknown ? QJsonValue() : QJsonValue(checkCodesOf(image).json());
}

bool readPatch(const QString &path, QByteArray *patch, Streams &streams)
{
    QString error;
    if (QFileInfo(path).size() > maximumPatchBytes)
        error = QStringLiteral("It is larger than %1 MiB").arg(maximumPatchBytes / 1024 / 1024);
    if (error.isEmpty() && readInput(path, patch, &error))
        return true;
    streams.failed(QStringLiteral("Cannot read file %1: %2").arg(path, error));
    return false;
}

// --- create ---

PatchKind checkedKind(const Arguments &arguments)
{
    if (!arguments.isSet("output")) {
        if (!arguments.isSet("dry-run"))
            arguments.reject(QStringLiteral("Say where to write: --output FILE.bps or FILE.ips"));
        return PatchKind::Bps;
    }
    const QString path = arguments.value("output");
    if (isStandardStream(path))
        return PatchKind::Bps;
    const PatchKind kind = kindBySuffix(path);
    if (kind == PatchKind::Unknown)
        arguments.reject(QStringLiteral("The patch's name tells its kind: it ends in .bps or .ips, unlike \"%1\"").arg(path));
    if (isSameFile(path, arguments.positional(0)) || isSameFile(path, arguments.positional(1)))
        arguments.reject(QStringLiteral("--output names one of the images"));
    return kind;
}

bool makePatch(PatchKind kind, const PatchedImage &original, const PatchedImage &changed, QByteArray *patch, QString *error)
{
    if (kind == PatchKind::Ips)
        return createIps(original.bytes, changed.bytes, patch, error);
    const bool cartridges = original.order != ByteOrder::Unknown && changed.order != ByteOrder::Unknown;
    *patch = createBps(original.bytes, changed.bytes, cartridges ? bigEndianMetadata() : QByteArray());
    return true;
}

void printCreated(const Arguments &arguments, PatchKind kind, const QByteArray &patch, const PatchedImage &original,
                  const PatchedImage &changed, QTextStream &out)
{
    const QString path = arguments.value("output");
    if (arguments.isSet("json")) {
        printJson(out,
                  {{QStringLiteral("patch"), path.isEmpty() ? QJsonValue() : QJsonValue(path)},
                   {QStringLiteral("kind"), patchKindName(kind)},
                   {QStringLiteral("size"), patch.size()},
                   {QStringLiteral("written"), !arguments.isSet("dry-run")},
                   {QStringLiteral("original"), original.json()},
                   {QStringLiteral("changed"), changed.json()},
                   {QStringLiteral("checkCodes"), checkCodeJson(changed.bytes, changed.order)}});
        return;
    }
    const QString what = QStringLiteral("%1, %2").arg(patchKindName(kind), counted(patch.size(), QStringLiteral("byte")));
    if (arguments.isSet("dry-run"))
        out << QStringLiteral("Would write a patch (%1).\n").arg(what);
    else
        out << QStringLiteral("Wrote ") << printable(path) << QStringLiteral(" (%1).\n").arg(what);
    out << line(QStringLiteral("Original:"), original.text()) << line(QStringLiteral("Changed:"), changed.text())
        << checkCodeText(changed.bytes, changed.order);
}

int create(const Arguments &arguments, Streams &streams)
{
    const PatchKind kind = checkedKind(arguments);
    if (arguments.rejected(streams))
        return WrongUsage;
    PatchedImage original {arguments.positional(0), {}, ByteOrder::Unknown};
    PatchedImage changed {arguments.positional(1), {}, ByteOrder::Unknown};
    if (!original.read(streams) || !changed.read(streams))
        return Failed;
    for (const PatchedImage *image : {&original, &changed}) {
        if (image->bytes.size() > maximumImageBytes)
            return streams.failed(
                QStringLiteral("%1 is larger than %2 MiB").arg(image->path).arg(maximumImageBytes / 1024 / 1024));
    }
    if ((original.order == ByteOrder::Unknown) != (changed.order == ByteOrder::Unknown))
        streams.remark(QStringLiteral("Only one of the two is a cartridge image; the other is taken as it is"));
    QByteArray patch;
    QString error;
    if (!makePatch(kind, original, changed, &patch, &error))
        return streams.failed(error);
    if (interrupted())
        return streams.failed(QStringLiteral("Interrupted; no patch was written"));
    const QString path = arguments.value("output");
    if (!arguments.isSet("dry-run") && !writeOutput(path, patch, streams, &error))
        return streams.failed(QStringLiteral("Cannot write file %1: %2").arg(path, error));
    printCreated(arguments, kind, patch, original, changed, streams.out);
    return Done;
}

// --- apply ---

int apply(const Arguments &arguments, Streams &streams)
{
    const QString path = arguments.positional(1);
    checkImageWriting(arguments);
    if (arguments.isSet("output") && isSameFile(arguments.value("output"), path))
        arguments.reject(QStringLiteral("--output names the patch"));
    if (arguments.rejected(streams))
        return WrongUsage;
    OpenedImage image;
    QByteArray patch;
    if (!openImage(arguments, &image, streams) || !readPatch(path, &patch, streams))
        return Failed;
    ByteOrder madeFor = ByteOrder::BigEndian;
    QString error;
    if (!applyPatch(&currentROM.data, image.order != ByteOrder::Unknown, patch, &madeFor, &error))
        return streams.failed(QStringLiteral("Cannot apply %1 to %2: %3").arg(path, image.path, error));
    const PatchKind kind = patchKindOf(patch);
    if (kind == PatchKind::Ips)
        streams.remark(QStringLiteral("An IPS patch has no checksums: nothing tells whether it is for this image"));
    if (madeFor != ByteOrder::BigEndian)
        streams.remark(QStringLiteral("The patch was made for the %1 order and was applied in it").arg(byteOrderName(madeFor)));

    const QByteArray result = currentROM.data;
    const int status = writeImage(arguments, image, streams);
    if (status != Done)
        return status;
    const ByteOrder resultOrder = byteOrderOf(result);
    if (arguments.isSet("json"))
        printJson(streams.out,
                  {{QStringLiteral("kind"), patchKindName(kind)},
                   {QStringLiteral("madeFor"), kind == PatchKind::Bps ? QJsonValue(byteOrderName(madeFor)) : QJsonValue()},
                   {QStringLiteral("size"), result.size()},
                   {QStringLiteral("checksum"), hexadecimal(crc32(result.constData(), result.size()))},
                   {QStringLiteral("verified"), kind == PatchKind::Bps},
                   {QStringLiteral("written"), !arguments.isSet("dry-run")},
                   {QStringLiteral("checkCodes"),
                    arguments.isSet("with-checksum") ? checkCodeJson(result, resultOrder) : QJsonValue()}});
    else if (arguments.isSet("with-checksum"))
        streams.out << checkCodeText(result, resultOrder);
    return Done;
}

// --- info ---

QJsonObject infoJson(const BpsFacts &facts)
{
    const QJsonObject original {{QStringLiteral("size"), facts.sourceBytes},
                                {QStringLiteral("checksum"), hexadecimal(facts.sourceCrc)}};
    const QJsonObject result {{QStringLiteral("size"), facts.targetBytes},
                              {QStringLiteral("checksum"), hexadecimal(facts.targetCrc)}};
    return {{QStringLiteral("kind"), patchKindName(PatchKind::Bps)},
            {QStringLiteral("madeFor"), orderJson(orderInMetadata(facts.metadata))},
            {QStringLiteral("original"), original},
            {QStringLiteral("result"), result},
            {QStringLiteral("parts"), facts.actions},
            {QStringLiteral("newBytes"), facts.newBytes},
            {QStringLiteral("metadata"), QString::fromUtf8(facts.metadata)}};
}

QString infoText(const BpsFacts &facts)
{
    const ByteOrder order = orderInMetadata(facts.metadata);
    return line(QStringLiteral("Kind:"), patchKindName(PatchKind::Bps))
        + line(QStringLiteral("Made for:"), order == ByteOrder::Unknown ? QStringLiteral("not said") : byteOrderName(order))
        + line(QStringLiteral("Original:"), sizeAndSum(facts.sourceBytes, facts.sourceCrc))
        + line(QStringLiteral("Result:"), sizeAndSum(facts.targetBytes, facts.targetCrc))
        + line(QStringLiteral("Actions:"), QString::number(facts.actions))
        + line(QStringLiteral("New bytes:"), QString::number(facts.newBytes))
        + line(QStringLiteral("Metadata:"), counted(facts.metadata.size(), QStringLiteral("byte")));
}

QJsonObject infoJson(const IpsFacts &facts)
{
    return {{QStringLiteral("kind"), patchKindName(PatchKind::Ips)},
            {QStringLiteral("parts"), facts.records},
            {QStringLiteral("runs"), facts.runs},
            {QStringLiteral("newBytes"), facts.newBytes},
            {QStringLiteral("end"), facts.end},
            {QStringLiteral("cutTo"), facts.cutTo < 0 ? QJsonValue() : QJsonValue(facts.cutTo)}};
}

QString infoText(const IpsFacts &facts)
{
    return line(QStringLiteral("Kind:"), patchKindName(PatchKind::Ips))
        + line(QStringLiteral("Records:"),
               QStringLiteral("%1, of them %2").arg(facts.records).arg(counted(facts.runs, QStringLiteral("run"))))
        + line(QStringLiteral("New bytes:"), QString::number(facts.newBytes))
        + line(QStringLiteral("Reaches to:"), hexNumber(facts.end))
        + line(QStringLiteral("Cuts to:"),
               facts.cutTo < 0 ? QStringLiteral("does not cut") : counted(facts.cutTo, QStringLiteral("byte")));
}

template<typename Facts> void printFacts(const Arguments &arguments, const Facts &facts, QTextStream &out)
{
    if (arguments.isSet("json"))
        printJson(out, infoJson(facts));
    else
        out << infoText(facts);
}

int info(const Arguments &arguments, Streams &streams)
{
    if (arguments.rejected(streams))
        return WrongUsage;
    const QString path = arguments.positional(0);
    QByteArray patch;
    if (!readPatch(path, &patch, streams))
        return Failed;
    QString error;
    BpsFacts bps;
    IpsFacts ips;
    const PatchKind kind = patchKindOf(patch);
    if (kind == PatchKind::Bps && readBps(patch, &bps, &error))
        printFacts(arguments, bps, streams.out);
    else if (kind == PatchKind::Ips && readIps(patch, &ips, &error))
        printFacts(arguments, ips, streams.out);
    else
        return streams.failed(QStringLiteral("%1: %2").arg(
            path, kind == PatchKind::Unknown ? QStringLiteral("It is neither a BPS nor an IPS patch") : error));
    return Done;
}
}

Command patchCreateCommand()
{
    QList<QCommandLineOption> options {
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral("Write the patch to FILE, whose name ends in .bps or .ips; \"-\" is a BPS patch on standard output."),
         QStringLiteral("FILE")},
        {QStringLiteral("dry-run"), QStringLiteral("Write nothing, but say what the patch would be; without -o a BPS patch.")}};
    return {
        QStringLiteral("patch create"),
        QStringLiteral("Make a patch of two images."),
        QStringLiteral("ORIGINAL CHANGED"),
        QStringLiteral(
            "Makes the patch that turns ORIGINAL into CHANGED. Each may have any byte order: the patch is for the big-endian\n"
            "images. A BPS patch knows its images by checksums and stays small when bytes moved; an IPS patch reaches 16 MiB\n"
            "far and knows nothing of its image. Tells whether the check codes of CHANGED are right."),
        2,
        2,
        options << jsonOption(),
        create};
}

Command patchApplyCommand()
{
    QList<QCommandLineOption> options = imageWritingOptions();
    options << QCommandLineOption(QStringLiteral("with-checksum"),
                                  QStringLiteral("Tell whether the header's check codes are right after it."))
            << jsonOption();
    return {QStringLiteral("patch apply"),
            QStringLiteral("Apply a patch to an image."),
            QStringLiteral("ORIGINAL PATCH"),
            QStringLiteral(
                "Writes what a BPS or IPS patch makes of ORIGINAL, big-endian. A BPS patch is refused unless the checksums of\n"
                "the patch, the original and the result are right; a patch made for another byte order of the same image\n"
                "is applied in that order."),
            2,
            2,
            options,
            apply};
}

Command patchInfoCommand()
{
    return {QStringLiteral("patch info"),
            QStringLiteral("Show what a patch is for."),
            QStringLiteral("PATCH"),
            QStringLiteral("Checks a BPS or IPS patch and shows the sizes and checksums of its images and how much it changes."),
            1,
            1,
            jsonOption(),
            info};
}
}
