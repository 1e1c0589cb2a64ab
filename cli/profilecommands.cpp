// SPDX-License-Identifier: MIT
// The commands about the profiles of an image: profile list, new, copy, delete, autoload.
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "model/rom.h"
#include "persist/imagefile.h"
#include "persist/savefile.h"

#include <QJsonArray>
#include <QJsonObject>

namespace cli
{
namespace
{
QList<QCommandLineOption> readingOptions()
{
    return QList<QCommandLineOption> {profilesOption()} << jsonOption();
}

QList<QCommandLineOption> writingOptions()
{
    return QList<QCommandLineOption> {{QStringLiteral("dry-run"), QStringLiteral("Write nothing, but say what would change.")}}
    << readingOptions();
}

/// The profiles of the image that is the first positional argument.
struct Profiles
{
    ProfilesFolder folder; ///< Of all profiles.
    ProfileSettings settings;

    ProfileStore store() const { return ProfileStore(folder, currentROM.romID); }
};

/// Opens the image and reads the settings. False with the reason said.
bool openProfiles(const Arguments &arguments, Profiles *profiles, Streams &streams)
{
    OpenedImage image;
    if (!openImage(arguments, &image, streams))
        return false;
    profiles->folder = profilesFolder(arguments);
    QString error;
    if (!ProfileStore::isSafeIdentifier(currentROM.romID))
        error = QStringLiteral("The identifier \"%1\" cannot name a folder of profiles").arg(currentROM.romID);
    else if (profiles->store().readSettings(&profiles->settings, &error) == ProfileStore::Reading::Malformed)
        error = QStringLiteral("Cannot read file %1: %2").arg(profiles->store().settingsPath(), error);
    else
        return true;
    streams.failed(error);
    return false;
}

QStringList sortedNames(const ProfileStore &store)
{
    QStringList names = store.profiles();
    names.sort();
    return names;
}

/// Says that \a profile was \a made, or with --dry-run that the command would \a make it, and returns Done.
int done(const Arguments &arguments, const char *make, const char *made, const QString &profile, Streams &streams)
{
    const bool dry = arguments.isSet("dry-run");
    if (arguments.isSet("json"))
        printJson(streams.out,
                  {{QStringLiteral("identifier"), currentROM.romID},
                   {QStringLiteral("profile"), profile},
                   {QStringLiteral("dryRun"), dry}});
    else
        streams.out << (dry ? QLatin1String("Would ") : QLatin1String("")) << QLatin1String(dry ? make : made)
                    << QLatin1String(" the profile \"") << printable(profile) << QLatin1String("\"\n");
    return Done;
}

/// Says why a profile named \a name is no new one; empty when it can be.
QString obstacleToNew(const ProfileStore &store, const QString &name)
{
    if (!ProfileStore::isAllowedName(name))
        return QStringLiteral("\"%1\" is no name for a profile: it is empty, or has one of / : * ? < > |").arg(name);
    return store.hasProfile(name) ? QStringLiteral("There is a profile \"%1\" already").arg(name) : QString();
}

QString missing(const QString &name)
{
    return QStringLiteral("There is no profile \"%1\" of %2").arg(name, currentROM.romID);
}

int runList(const Arguments &arguments, Streams &streams)
{
    Profiles profiles;
    if (!openProfiles(arguments, &profiles, streams))
        return Failed;
    QJsonArray all;
    const QStringList names = sortedNames(profiles.store());
    for (const QString &name : names) {
        const bool autoload = name == profiles.settings.autoload;
        all.append(QJsonObject {{QStringLiteral("name"), name}, {QStringLiteral("autoload"), autoload}});
        if (!arguments.isSet("json"))
            streams.out << printable(name) << (autoload ? QLatin1String("  (loads automatically)") : QLatin1String("")) << '\n';
    }
    if (arguments.isSet("json"))
        printJson(streams.out,
                  {{QStringLiteral("identifier"), currentROM.romID},
                   {QStringLiteral("profilesFolder"), profiles.folder.path},
                   {QStringLiteral("profiles"), all}});
    return Done;
}

int runNew(const Arguments &arguments, Streams &streams)
{
    Profiles profiles;
    const QString name = arguments.positional(1);
    if (!openProfiles(arguments, &profiles, streams))
        return Failed;
    const QString obstacle = obstacleToNew(profiles.store(), name);
    if (!obstacle.isEmpty())
        return streams.failed(obstacle);
    if (!arguments.isSet("dry-run") && !profiles.store().createProfile(name))
        return streams.failed(QStringLiteral("Cannot create folder %1").arg(profiles.store().profileFolder(name)));
    return done(arguments, "make", "Made", name, streams);
}

/// Gives the new profile \a name the file list of \a source, byte by byte. Returns what is wrong; empty when nothing is.
QString copyList(const ProfileStore &store, const QString &source, const QString &name)
{
    QByteArray list;
    QString error;
    const bool hasList = store.hasFileList(source);
    if (hasList && !readWholeFile(store.fileListToRead(source), &list, &error))
        return QStringLiteral("Cannot read file %1: %2").arg(store.fileListToRead(source), error);
    if (!store.createProfile(name))
        return QStringLiteral("Cannot create folder %1").arg(store.profileFolder(name));
    if (hasList && !saveWhole(store.fileListPath(name), list, &error))
        return QStringLiteral("Cannot write file %1: %2").arg(store.fileListPath(name), error);
    return QString();
}

int runCopy(const Arguments &arguments, Streams &streams)
{
    Profiles profiles;
    const QString source = arguments.positional(1);
    const QString name = arguments.positional(2);
    if (!openProfiles(arguments, &profiles, streams))
        return Failed;
    const ProfileStore store = profiles.store();
    if (!ProfileStore::isSafeName(source) || !store.hasProfile(source))
        return streams.failed(missing(source));
    QString obstacle = obstacleToNew(store, name);
    if (obstacle.isEmpty() && !arguments.isSet("dry-run"))
        obstacle = copyList(store, source, name);
    return obstacle.isEmpty() ? done(arguments, "make", "Made", name, streams) : streams.failed(obstacle);
}

int runDelete(const Arguments &arguments, Streams &streams)
{
    Profiles profiles;
    const QString name = arguments.positional(1);
    if (!openProfiles(arguments, &profiles, streams))
        return Failed;
    const ProfileStore store = profiles.store();
    if (!ProfileStore::isSafeName(name) || !store.hasProfile(name))
        return streams.failed(missing(name));
    // The window's rule, and the profile of exactly that name, whatever its case.
    if (name == profiles.settings.autoload || name.toLower() == profiles.settings.autoload)
        return streams.failed(
            QStringLiteral("\"%1\" loads automatically; choose another with \"profile autoload\" first").arg(name));
    if (!arguments.isSet("dry-run") && !store.removeProfile(name))
        return streams.failed(QStringLiteral("Cannot delete %1").arg(store.profileFolder(name)));
    return done(arguments, "delete", "Deleted", name, streams);
}

int runAutoload(const Arguments &arguments, Streams &streams)
{
    Profiles profiles;
    const QString name = arguments.positional(1);
    if (!openProfiles(arguments, &profiles, streams))
        return Failed;
    const ProfileStore store = profiles.store();
    if (!ProfileStore::isSafeName(name) || !store.hasProfile(name))
        return streams.failed(missing(name));
    profiles.settings.autoload = name;
    QString error;
    if (!arguments.isSet("dry-run") && !store.writeSettings(profiles.settings, &error))
        return streams.failed(QStringLiteral("Cannot write file %1: %2").arg(store.settingsPath(), error));
    return done(arguments, "choose", "Chose", name, streams);
}
}

Command profileListCommand()
{
    return {QStringLiteral("profile list"),
            QStringLiteral("List the profiles of an image."),
            QStringLiteral("IMAGE"),
            QStringLiteral("Lists the profiles of the image's identifier and tells which one loads automatically."),
            1,
            1,
            readingOptions(),
            runList};
}

Command profileNewCommand()
{
    return {QStringLiteral("profile new"),
            QStringLiteral("Make an empty profile."),
            QStringLiteral("IMAGE NAME"),
            QStringLiteral("Makes a profile of that name without entries."),
            2,
            2,
            writingOptions(),
            runNew};
}

Command profileCopyCommand()
{
    return {QStringLiteral("profile copy"),
            QStringLiteral("Make a copy of a profile."),
            QStringLiteral("IMAGE PROFILE NAME"),
            QStringLiteral("Makes a profile of the name NAME with the same file list as PROFILE."),
            3,
            3,
            writingOptions(),
            runCopy};
}

Command profileDeleteCommand()
{
    return {QStringLiteral("profile delete"),
            QStringLiteral("Delete a profile with its file list."),
            QStringLiteral("IMAGE PROFILE"),
            QStringLiteral("Deletes the profile with its files. The one that loads automatically is kept."),
            2,
            2,
            writingOptions(),
            runDelete};
}

Command profileAutoloadCommand()
{
    return {QStringLiteral("profile autoload"),
            QStringLiteral("Choose the profile that loads automatically."),
            QStringLiteral("IMAGE PROFILE"),
            QStringLiteral("Has the window, and the commands without --profile, load that profile with the image."),
            2,
            2,
            writingOptions(),
            runAutoload};
}
}
