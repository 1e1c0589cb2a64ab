// SPDX-License-Identifier: MIT
#include "cli/cartridge.h"

#include "base/hexnumber.h"
#include "cli/arguments.h"
#include "cli/files.h"
#include "cli/interrupt.h"
#include "cli/output.h"
#include "cli/terminalprogress.h"
#include "model/rom.h"

#include <QFileInfo>
#include <QJsonObject>

#include <cstring>

namespace cli
{
namespace
{
/// Converts with a bar on the terminal.
void convert(QByteArray *image, ByteOrder order, const QString &label, Streams &streams)
{
    TerminalProgress progress(streams.err);
    progress.setMaximum(image->size());
    progress.setLabel(label);
    convertByteOrder(image, order, [&progress](int bytes) { progress.setValue(bytes); });
}
}

QString byteOrderName(ByteOrder order)
{
    switch (order) {
    case ByteOrder::BigEndian: return QStringLiteral("z64");
    case ByteOrder::ByteSwapped: return QStringLiteral("v64");
    case ByteOrder::LittleEndian: return QStringLiteral("n64");
    case ByteOrder::Unknown: break;
    }
    return QStringLiteral("unknown");
}

ByteOrder byteOrderNamed(const QString &name)
{
    for (const ByteOrder order : {ByteOrder::BigEndian, ByteOrder::ByteSwapped, ByteOrder::LittleEndian}) {
        if (name == byteOrderName(order))
            return order;
    }
    return ByteOrder::Unknown;
}

bool readImage(const QString &path, QByteArray *bytes, ByteOrder *order, Streams &streams)
{
    QString error;
    if (!readInput(path, bytes, &error)) {
        streams.failed(QStringLiteral("Cannot read file %1: %2").arg(path, error));
        return false;
    }
    *order = byteOrderOf(*bytes);
    convert(bytes, *order, QStringLiteral("Reading %1").arg(path), streams);
    return true;
}

bool openImage(const Arguments &arguments, OpenedImage *image, Streams &streams)
{
    const QString path = arguments.positional(0);
    QByteArray bytes;
    QString error;
    const bool writesOver = arguments.isSet("in-place") && !arguments.isSet("dry-run");
    if (writesOver && !image->lock.lock(path, &error)) {
        streams.failed(QStringLiteral("Cannot write file %1: %2").arg(path, error));
        return false;
    }
    if (!readImage(path, &bytes, &image->order, streams))
        return false;
    image->path = path;
    image->size = bytes.size();
    image->original = bytes;
    currentROM.data = bytes;
    currentROM.loaded = true;
    currentROM.baseName = QFileInfo(path).completeBaseName();
    currentROM.romID = image->order == ByteOrder::Unknown ? currentROM.baseName : cartridgeIdentifier(bytes);
    currentROM.root->directories.clear();
    currentROM.root->files.clear();
    currentROM.root->size = bytes.size();
    return true;
}

bool isImageItself(const Arguments &arguments, const QString &path)
{
    const QString image = QFileInfo(arguments.positional(0)).canonicalFilePath();
    return !image.isEmpty() && QFileInfo(path).canonicalFilePath() == image;
}

void checkImageWriting(const Arguments &arguments)
{
    arguments.checkImageWriting();
    if (!arguments.isSet("output"))
        return;
    if (isImageItself(arguments, arguments.value("output")))
        arguments.reject(QStringLiteral("--output names the image itself; use --in-place to write over it"));
}

ByteChanges changesBetween(const QByteArray &before, const QByteArray &after)
{
    const int common = qMin(before.size(), after.size());
    ByteChanges changes;
    const auto change = [&changes](int position) {
        if (changes.count == 0)
            changes.first = position;
        changes.last = position;
        ++changes.count;
    };
    for (int i = 0; i < common; ++i) {
        if (before.at(i) != after.at(i))
            change(i);
    }
    for (int i = common; i < qMax(before.size(), after.size()); ++i)
        change(i);
    return changes;
}

QString ByteChanges::text() const
{
    if (count == 0)
        return QString();
    return QStringLiteral("%1 from %2 to %3").arg(counted(count, QStringLiteral("byte")), hexNumber(first), hexNumber(last));
}

QJsonObject imageWritingJson(const Arguments &arguments, const OpenedImage &image, ByteOrder order)
{
    const bool known = image.order != ByteOrder::Unknown;
    const ByteChanges changes = changesBetween(image.original, currentROM.data);
    const QString path = arguments.isSet("output") ? arguments.value("output") : image.path;
    return {{QStringLiteral("output"), arguments.isSet("dry-run") ? QJsonValue() : QJsonValue(path)},
            {QStringLiteral("byteOrder"), known ? QJsonValue(byteOrderName(order)) : QJsonValue()},
            {QStringLiteral("size"), currentROM.data.size()},
            {QStringLiteral("changedBytes"), changes.count},
            {QStringLiteral("firstChange"), changes.count > 0 ? QJsonValue(changes.first) : QJsonValue()},
            {QStringLiteral("lastChange"), changes.count > 0 ? QJsonValue(changes.last) : QJsonValue()}};
}

int writeChangedImage(const Arguments &arguments, const OpenedImage &image, Streams &streams)
{
    if (arguments.isSet("dry-run"))
        return writeImage(arguments, image, streams);
    const bool inPlace = !arguments.isSet("output");
    const QString path = inPlace ? image.path : arguments.value("output");
    const auto holdsTheBytes = [&path] {
        if (isStandardStream(path))
            return false;
        QByteArray bytes;
        QString error;
        return QFileInfo(path).size() == currentROM.data.size() && readInput(path, &bytes, &error) && bytes == currentROM.data;
    };
    const bool same = inPlace ? currentROM.data == image.original : holdsTheBytes();
    if (!same)
        return writeImage(arguments, image, streams);
    if (!arguments.isSet("json"))
        streams.out << QStringLiteral("Nothing changes; %1 was not written.\n").arg(printable(path));
    return Done;
}

int writeImage(const Arguments &arguments, const OpenedImage &image, Streams &streams, ByteOrder order)
{
    const QString path = arguments.isSet("output") ? arguments.value("output") : image.path;
    if (currentROM.data.size() != image.size)
        streams.remark(QStringLiteral("The image %1 from %2 to %3 bytes")
                           .arg(currentROM.data.size() > image.size ? QStringLiteral("grew") : QStringLiteral("shrank"))
                           .arg(image.size)
                           .arg(currentROM.data.size()));
    if (arguments.isSet("dry-run")) {
        if (arguments.isSet("json"))
            return Done;
        const QString changes = changesBetween(image.original, currentROM.data).text();
        streams.out
            << QStringLiteral("Would change %1.\n").arg(changes.isEmpty() ? QStringLiteral("no byte of the image") : changes);
        if (image.order != ByteOrder::Unknown && image.order != order)
            streams.out
                << QStringLiteral("Would turn the image from %1 to %2.\n").arg(byteOrderName(image.order), byteOrderName(order));
        return Done;
    }
    QByteArray bytes = currentROM.data;
    if (image.order != ByteOrder::Unknown && order != ByteOrder::BigEndian) {
        // A copy in another order lives beside nothing else: the image itself is not needed any more.
        currentROM.data.clear();
        convert(&bytes, order, QStringLiteral("Converting to %1").arg(byteOrderName(order)), streams);
    }
    if (interrupted())
        return streams.failed(QStringLiteral("Interrupted; %1 was not written").arg(path));
    QString error;
    FileLock lock;
    const bool isOtherFile = arguments.isSet("output") && !isStandardStream(path);
    if ((isOtherFile && !lock.lock(path, &error)) || !writeOutput(path, bytes, streams, &error))
        return streams.failed(QStringLiteral("Cannot write file %1: %2").arg(path, error));
    if (arguments.isSet("json") || isStandardStream(path))
        return Done;
    streams.out << QStringLiteral("Wrote ") << printable(path)
                << QStringLiteral(" (%1, ").arg(byteOrderName(image.order == ByteOrder::Unknown ? ByteOrder::Unknown : order))
                << counted(bytes.size(), QStringLiteral("byte")) << QStringLiteral(").\n");
    return Done;
}
}
