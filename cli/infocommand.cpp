// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"
#include "cli/arguments.h"
#include "cli/cartridge.h"
#include "cli/checkcodes.h"
#include "cli/commandtable.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "model/rom.h"

#include <QJsonArray>
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
constexpr int gameCodeOffset = 59;
constexpr int versionOffset = 63;

/// The title in the header, whose characters are those of the console's home country, without the blanks that fill it up.
QString titleOf(const QByteArray &image)
{
    const QTextCodec *codec = QTextCodec::codecForName("Shift-JIS");
    const char *characters = image.constData() + titleOffset;
    const int length = int(qstrnlen(characters, titleBytes));
    const QString title = codec ? codec->toUnicode(characters, length) : QString(QLatin1String(characters, length));
    return printable(title).trimmed();
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

/// Whether the header has no game code, so that the identifier is the version alone.
bool isShared(const OpenedImage &image)
{
    return image.order != ByteOrder::Unknown && currentROM.data.at(gameCodeOffset) == '\0';
}

/// A profile of the image and what its file list holds.
struct ProfileCounts
{
    QString name;
    bool autoload = false;
    int folders = 0;
    int textures = 0;
    QString error; ///< Why the list could not be read whole; empty when it could, or when there is none yet.
};

ProfileCounts countsOf(const ProfileStore &store, const QString &name, const QString &autoload)
{
    ProfileCounts counts;
    counts.name = name;
    counts.autoload = name == autoload;
    if (!store.hasFileList(name))
        return counts;
    auto *root = new fileTreeDirectory;
    root->isRoot = true;
    FileListFiles lists;
    readProfile(store, name, root, &lists, &counts.error);
    counts.folders = fileTreeContainer().allDirectories(root).size();
    counts.textures = fileTreeContainer().allFiles(root).size();
    return counts;
}

QList<ProfileCounts> profilesOf(const ProfilesFolder &folder)
{
    const ProfileStore store(folder, currentROM.romID);
    ProfileSettings settings;
    QString error;
    store.readSettings(&settings, &error);
    QStringList names = store.profiles();
    names.sort();
    QList<ProfileCounts> profiles;
    for (const QString &name : qAsConst(names))
        profiles.append(countsOf(store, name, settings.autoload));
    return profiles;
}

QString profilesText(const QList<ProfileCounts> &profiles)
{
    if (profiles.isEmpty())
        return line(QStringLiteral("Profiles:"), QStringLiteral("none"));
    QString text;
    for (const ProfileCounts &profile : profiles) {
        QString value = printable(profile.name) + QStringLiteral(": ") + counted(profile.folders, QStringLiteral("folder"))
            + QStringLiteral(", ") + counted(profile.textures, QStringLiteral("texture"));
        value += profile.autoload ? QStringLiteral(", loads automatically") : QString();
        value += profile.error.isEmpty() ? QString() : QStringLiteral(", not readable to its end");
        text += line(text.isEmpty() ? QStringLiteral("Profiles:") : QString(), value);
    }
    return text;
}

QJsonArray profilesJson(const QList<ProfileCounts> &profiles)
{
    QJsonArray array;
    for (const ProfileCounts &profile : profiles)
        array.append(QJsonObject {{QStringLiteral("name"), profile.name},
                                  {QStringLiteral("autoload"), profile.autoload},
                                  {QStringLiteral("folders"), profile.folders},
                                  {QStringLiteral("textures"), profile.textures},
                                  {QStringLiteral("error"), profile.error.isEmpty() ? QJsonValue() : QJsonValue(profile.error)}});
    return array;
}

QString text(const OpenedImage &image, const QString &folder, const QList<ProfileCounts> &profiles)
{
    const QByteArray &bytes = currentROM.data;
    return line(QStringLiteral("File:"), printable(image.path)) + line(QStringLiteral("Byte order:"), orderText(image.order))
        + line(QStringLiteral("Size:"), QStringLiteral("%1 bytes (%2)").arg(bytes.size()).arg(hexNumber(bytes.size())))
        + line(QStringLiteral("Identifier:"),
               printable(currentROM.romID)
                   + (isShared(image) ? QStringLiteral(" (the header names no game: images like that share their profiles)")
                                      : QString()))
        + (image.order == ByteOrder::Unknown ? QString() : headerText(bytes))
        + line(QStringLiteral("Profiles in:"), printable(folder)) + profilesText(profiles);
}

QJsonObject json(const OpenedImage &image, const QString &folder, const QList<ProfileCounts> &profiles)
{
    const QByteArray &bytes = currentROM.data;
    const bool known = image.order != ByteOrder::Unknown;
    return {{QStringLiteral("file"), image.path},
            {QStringLiteral("byteOrder"), known ? QJsonValue(byteOrderName(image.order)) : QJsonValue()},
            {QStringLiteral("size"), bytes.size()},
            {QStringLiteral("identifier"), currentROM.romID},
            {QStringLiteral("identifierShared"), isShared(image)},
            {QStringLiteral("header"), known ? QJsonValue(headerJson(bytes)) : QJsonValue()},
            {QStringLiteral("profilesFolder"), folder},
            {QStringLiteral("profiles"), profilesJson(profiles)}};
}

int run(const Arguments &arguments, Streams &streams)
{
    OpenedImage image;
    if (!openImage(arguments, &image, streams))
        return Failed;
    const ProfilesFolder folder = profilesFolder(arguments);
    const QList<ProfileCounts> profiles = profilesOf(folder);
    if (arguments.isSet("json"))
        printJson(streams.out, json(image, folder.path, profiles));
    else
        streams.out << text(image, folder.path, profiles);
    int status = Done;
    for (const ProfileCounts &profile : profiles) {
        if (!profile.error.isEmpty())
            status = streams.failed(profile.error);
    }
    return status;
}
}

Command infoCommand()
{
    return {
        QStringLiteral("info"),
        QStringLiteral("Show what an image is and what profiles it has."),
        QStringLiteral("IMAGE"),
        QStringLiteral(
            "Shows byte order, size, header and check codes of the image, the folder where profiles are kept, and the profiles\n"
            "that the image's identifier leads to."),
        1,
        1,
        QList<QCommandLineOption> {profilesOption()} << jsonOption(),
        run};
}
}
