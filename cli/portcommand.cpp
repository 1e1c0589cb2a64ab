// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/interrupt.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "cli/terminalprogress.h"
#include "model/rom.h"
#include "search/porting.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

namespace cli
{
namespace
{
constexpr PlaceState allStates[] = {PlaceState::Same, PlaceState::Moved, PlaceState::Ambiguous, PlaceState::Changed,
                                    PlaceState::Missing};

QString nameOf(PlaceState state)
{
    switch (state) {
    case PlaceState::Same: return QStringLiteral("same");
    case PlaceState::Moved: return QStringLiteral("moved");
    case PlaceState::Ambiguous: return QStringLiteral("ambiguous");
    case PlaceState::Changed: return QStringLiteral("changed");
    case PlaceState::Missing: break;
    }
    return QStringLiteral("missing");
}

int countOf(const QVector<PortedTexture> &textures, PlaceState state)
{
    return int(std::count_if(textures.cbegin(), textures.cend(),
                             [state](const PortedTexture &texture) { return texture.state == state; }));
}

/// Where the table comes from, or goes to.
struct Side
{
    QString identifier;
    QString profile;

    QJsonObject json() const { return {{QStringLiteral("identifier"), identifier}, {QStringLiteral("profile"), profile}}; }
};

QJsonObject json(const PortedTexture &texture)
{
    const auto address = [](const Place &place) {
        return place.state == PlaceState::Missing ? QJsonValue() : QJsonValue(place.address);
    };
    QJsonObject object {{QStringLiteral("path"), texture.path},
                        {QStringLiteral("state"), nameOf(texture.state)},
                        {QStringLiteral("oldAddress"), texture.oldAddress},
                        {QStringLiteral("address"), address(texture.place)}};
    if (texture.hasPalette) {
        object.insert(QStringLiteral("paletteState"), nameOf(texture.palette.state));
        object.insert(QStringLiteral("oldPaletteAddress"), texture.oldPaletteAddress);
        object.insert(QStringLiteral("paletteAddress"), address(texture.palette));
    }
    return object;
}

QJsonObject json(const QVector<PortedTexture> &textures, const Side &from, const Side &to)
{
    QJsonObject counts;
    for (const PlaceState state : allStates)
        counts.insert(nameOf(state), countOf(textures, state));
    QJsonArray entries;
    for (const PortedTexture &texture : textures)
        entries.append(json(texture));
    return {{QStringLiteral("from"), from.json()},
            {QStringLiteral("to"), to.json()},
            {QStringLiteral("counts"), counts},
            {QStringLiteral("textures"), entries}};
}

/// The textures that somebody should look at, and how many there are of each kind.
void printText(const QVector<PortedTexture> &textures, QTextStream &out)
{
    for (const PortedTexture &texture : textures) {
        if (texture.state < PlaceState::Ambiguous)
            continue;
        const bool placed = texture.place.state != PlaceState::Missing;
        out << nameOf(texture.state).leftJustified(9) << QLatin1String("  ") << hexNumber(texture.oldAddress)
            << QLatin1String("  ") << (placed ? hexNumber(texture.place.address) : QStringLiteral("-         "))
            << QLatin1String("  ") << printable(texture.path);
        if (texture.hasPalette && texture.palette.state > texture.place.state)
            out << QLatin1String(" (its palette)");
        out << '\n';
    }
    QStringList counts;
    for (const PlaceState state : allStates)
        counts << QString::number(countOf(textures, state)) + QLatin1Char(' ') + nameOf(state)
                + (state == PlaceState::Changed ? QStringLiteral(" (placed by neighbours)") : QString());
    out << counted(textures.size(), QStringLiteral("texture")) << QLatin1String(": ") << counts.join(QLatin1String(", ")) << '\n';
}

/// Makes the new image the loaded one in all but its bytes, and finds the profile for the table. False with the reason said when
/// that would take the place of another list.
bool chooseTarget(const Arguments &arguments, ByteOrder order, const QByteArray &bytes, ChosenProfile *target, Streams &streams)
{
    const QString source = QFileInfo(target->fileListPath()).absoluteFilePath();
    currentROM.baseName = QFileInfo(arguments.positional(1)).completeBaseName();
    currentROM.romID = order == ByteOrder::Unknown ? currentROM.baseName : cartridgeIdentifier(bytes);
    if (!chooseProfile(arguments, "to-profile", target, streams))
        return false;
    const QString path = target->fileListPath();
    const bool isSource = QFileInfo(path).absoluteFilePath() == source;
    if (!isSource && (!target->store().hasFileList(target->name) || arguments.isSet("overwrite")))
        return true;
    streams.failed(
        isSource ? QStringLiteral(
                       "Both images are %1, and the table comes from the profile \"%2\"; name another one with --to-profile")
                       .arg(currentROM.romID, target->name)
                 : QStringLiteral("There is a file list already: %1; name another profile with --to-profile, or replace it with "
                                  "--overwrite")
                       .arg(path));
    return false;
}

int run(const Arguments &arguments, Streams &streams)
{
    if (arguments.rejected(streams))
        return WrongUsage;
    OpenedImage oldImage;
    ChosenProfile profile;
    QByteArray newImage;
    ByteOrder order = ByteOrder::Unknown;
    if (!openImageAndProfile(arguments, MissingList::Refuse, &oldImage, &profile, streams)
        || !readImage(arguments.positional(1), &newImage, &order, streams))
        return Failed;
    const Side from {currentROM.romID, profile.name};
    if (!chooseTarget(arguments, order, newImage, &profile, streams))
        return Failed;
    const Side to {currentROM.romID, profile.name};

    QVector<PortedTexture> textures;
    {
        TerminalProgress progress(streams.err);
        progress.setLabel(QStringLiteral("Searching"));
        textures = portTable(currentROM.root, newImage, &progress);
    }
    if (interrupted())
        return streams.failed(QStringLiteral("Interrupted; no file list was written"));
    currentROM.data = newImage;
    currentROM.root->size = newImage.size();

    QString sentence;
    QTextStream aside(&sentence);
    Streams quiet(aside, streams.err);
    const bool asJson = arguments.isSet("json");
    if (!asJson)
        printText(textures, streams.out);
    const int status = writeProfile(arguments, &profile, asJson ? quiet : streams);
    if (asJson && status == Done)
        printJson(streams.out, json(textures, from, to));
    if (status != Done)
        return status;
    const int missing = countOf(textures, PlaceState::Missing);
    return missing == 0
        ? int(Done)
        : streams.failed(QStringLiteral("%1 could not be taken over whole").arg(counted(missing, QStringLiteral("texture"))));
}
}

Command portCommand()
{
    QList<QCommandLineOption> options {
        {QStringLiteral("to-profile"),
         QStringLiteral("The profile of NEW to write; without it the one that loads automatically."), QStringLiteral("NAME")},
        {QStringLiteral("overwrite"), QStringLiteral("Replace the file list that this profile has.")},
        {QStringLiteral("dry-run"), QStringLiteral("Write no file list, but say what would become of the table.")}};
    options << profileOptions() << jsonOption();
    return {QStringLiteral("port"),
            QStringLiteral("Take a file table over to another revision of the image."),
            QStringLiteral("OLD NEW"),
            QStringLiteral(
                "Searches in NEW for the bytes of every texture and palette that OLD's profile describes, and writes the table\n"
                "that describes NEW. Prints what is not certain: ambiguous (in several places), changed (placed by its\n"
                "neighbours) and missing (left out)."),
            2,
            2,
            options,
            run};
}
}
