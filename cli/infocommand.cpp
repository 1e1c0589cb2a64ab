// SPDX-License-Identifier: MIT
#include "cli/arguments.h"
#include "cli/cartridge.h"
#include "cli/checkcodes.h"
#include "cli/commandtable.h"
#include "cli/output.h"
#include "model/hexnumber.h"
#include "model/rom.h"

#include <QJsonObject>
#include <QTextCodec>
#include <QtEndian>

namespace cli
{
namespace
{
constexpr int clockRateOffset = 4;
constexpr int titleOffset = 0x20;
constexpr int titleBytes = 20;
constexpr int versionOffset = 63;

/// The title in the header, whose characters are those of the console's home country, without the blanks that fill it up.
QString titleOf(const QByteArray &image)
{
    const QTextCodec *codec = QTextCodec::codecForName("Shift-JIS");
    const char *characters = image.constData() + titleOffset;
    const int length = int(qstrnlen(characters, titleBytes));
    const QString title = codec ? codec->toUnicode(characters, length) : QString::fromLatin1(characters, length);
    return printable(title).replace(QLatin1Char('\n'), QLatin1Char(' ')).trimmed();
}

quint32 clockRateOf(const QByteArray &image)
{
    return qFromBigEndian<quint32>(image.constData() + clockRateOffset);
}

QString line(const QString &label, const QString &value)
{
    return label.leftJustified(16) + value + QLatin1Char('\n');
}

QString orderText(ByteOrder order)
{
    switch (order) {
    case ByteOrder::BigEndian: return QStringLiteral("z64 (big-endian)");
    case ByteOrder::ByteSwapped: return QStringLiteral("v64 (byte-swapped 16-bit words)");
    case ByteOrder::LittleEndian: return QStringLiteral("n64 (little-endian 32-bit words)");
    case ByteOrder::Unknown: break;
    }
    return QStringLiteral("unknown: no cartridge image, taken as it is");
}

QString headerText(const QByteArray &image)
{
    return line(QStringLiteral("Title:"), titleOf(image))
        + line(QStringLiteral("Version:"), QString::number(quint8(image.at(versionOffset))))
        + line(QStringLiteral("Clock rate:"), hexNumber(qint32(clockRateOf(image)))) + checkCodesOf(image).text();
}

QJsonObject headerJson(const QByteArray &image)
{
    return {{QStringLiteral("title"), titleOf(image)},
            {QStringLiteral("version"), quint8(image.at(versionOffset))},
            {QStringLiteral("clockRate"), qint64(clockRateOf(image))},
            {QStringLiteral("checkCodes"), checkCodesOf(image).json()}};
}

QString text(const OpenedImage &image)
{
    const QByteArray &bytes = currentROM.data;
    return line(QStringLiteral("File:"), printable(image.path)) + line(QStringLiteral("Byte order:"), orderText(image.order))
        + line(QStringLiteral("Size:"), QStringLiteral("%1 bytes (%2)").arg(bytes.size()).arg(hexNumber(bytes.size())))
        + line(QStringLiteral("Identifier:"), printable(currentROM.romID))
        + (image.order == ByteOrder::Unknown ? QString() : headerText(bytes));
}

QJsonObject json(const OpenedImage &image)
{
    const QByteArray &bytes = currentROM.data;
    const bool known = image.order != ByteOrder::Unknown;
    return {{QStringLiteral("file"), image.path},
            {QStringLiteral("byteOrder"), known ? QJsonValue(byteOrderName(image.order)) : QJsonValue()},
            {QStringLiteral("size"), bytes.size()},
            {QStringLiteral("identifier"), currentROM.romID},
            {QStringLiteral("header"), known ? QJsonValue(headerJson(bytes)) : QJsonValue()}};
}

int run(const Arguments &arguments, Streams &streams)
{
    if (arguments.rejected(streams))
        return WrongUsage;
    OpenedImage image;
    if (!openImage(arguments.positional(0), &image, streams))
        return Failed;
    if (arguments.isSet("json"))
        printJson(streams.out, json(image));
    else
        streams.out << text(image);
    return Done;
}
}

Command infoCommand()
{
    return {QStringLiteral("info"),
            QStringLiteral("Show what an image is and what profiles it has."),
            QStringLiteral("IMAGE"),
            QStringLiteral(
                "Shows byte order, size, header and check codes of the image, and the profiles that its identifier leads to."),
            1,
            1,
            jsonOption(),
            run};
}
}
