// SPDX-License-Identifier: MIT
#include "cli/profile.h"

#include "cli/arguments.h"
#include "cli/interrupt.h"
#include "cli/output.h"
#include "model/rom.h"
#include "persist/profilesfolder.h"

namespace cli
{
namespace
{
/// Fills in the profile's name: the one that \a option gives, or what settings.xml says.
bool chooseName(const Arguments &arguments, const char *option, ChosenProfile *profile, QString *error)
{
    profile->folder = profilesFolder(arguments);
    if (!ProfileStore::isSafeIdentifier(currentROM.romID)) {
        *error = QStringLiteral("The identifier \"%1\" cannot name a folder of profiles").arg(currentROM.romID);
        return false;
    }
    ProfileSettings settings;
    QString reason;
    if (arguments.isSet(option))
        profile->name = arguments.value(option);
    else if (profile->store().readSettings(&settings, &reason) != ProfileStore::Reading::Malformed)
        profile->name = settings.autoload;
    else
        *error = QStringLiteral("Cannot read file %1: %2").arg(profile->store().settingsToRead(), reason);
    if (!error->isEmpty())
        return false;
    if (!ProfileStore::isSafeName(profile->name))
        *error = QStringLiteral("\"%1\" cannot name a profile").arg(profile->name);
    return error->isEmpty();
}
}

ProfileStore ChosenProfile::store() const
{
    return ProfileStore(folder, currentROM.romID);
}

ProfilesFolder profilesFolder(const Arguments &arguments)
{
    if (!arguments.isSet("profiles"))
        return chooseProfilesFolder();
    const QString folder = arguments.value("profiles");
    return {folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/'), QString()};
}

bool readProfile(const ProfileStore &store, const QString &name, fileTreeDirectory *root, FileListFiles *lists, QString *error)
{
    const QString path = store.fileListToRead(name);
    if (lists->read(path, currentROM.data.size(), root, nullptr, error, nullptr) == FileListFiles::Reading::Done)
        return true;
    *error = QStringLiteral("Cannot read file %1: %2").arg(path, *error);
    return false;
}

QString pathNamesNothing(const QString &path, const ChosenProfile &profile)
{
    return QStringLiteral("There is no \"%1\" in the profile \"%2\" of %3").arg(path, profile.name, currentROM.romID);
}

bool chooseProfile(const Arguments &arguments, const char *option, ChosenProfile *profile, Streams &streams)
{
    QString error;
    const bool chosen = chooseName(arguments, option, profile, &error);
    if (!chosen)
        streams.failed(error);
    return chosen;
}

bool openProfile(const Arguments &arguments, MissingList missing, ChosenProfile *profile, Streams &streams)
{
    QString error;
    if (!chooseProfile(arguments, "profile", profile, streams))
        return false;
    currentROM.profileName = profile->name;
    const ProfileStore store = profile->store();
    const QString link = store.linkToFileList(profile->name);
    if (!link.isEmpty()) {
        streams.failed(QStringLiteral("Cannot read file %1: %2 is a link that leads out of the profiles folder")
                           .arg(profile->fileListPath(), link));
        return false;
    }
    const bool writes = missing == MissingList::StartEmpty || missing == MissingList::RefuseAndWrite;
    if (writes && !arguments.isSet("dry-run") && !profile->lists.lock(profile->fileListPath(), &error)) {
        streams.failed(QStringLiteral("Cannot write file %1: %2").arg(profile->fileListPath(), error));
        return false;
    }
    if (!store.hasFileList(profile->name)) {
        const bool absent = arguments.isSet("profile") && !store.hasProfile(profile->name);
        if (missing == MissingList::StartEmpty || (missing == MissingList::EmptyUnlessNamed && !absent))
            return true;
        streams.failed((store.hasProfile(profile->name) ? QStringLiteral("The profile \"%1\" of %2 has no file list: %3")
                                                        : QStringLiteral("There is no profile \"%1\" of %2: %3"))
                           .arg(profile->name, currentROM.romID, profile->fileListPath()));
        return false;
    }
    if (readProfile(store, profile->name, currentROM.root, &profile->lists, &error))
        return true;
    streams.failed(error);
    return false;
}

bool openImageAndProfile(const Arguments &arguments, MissingList missing, OpenedImage *image, ChosenProfile *profile,
                         Streams &streams)
{
    return openImage(arguments, image, streams) && openProfile(arguments, missing, profile, streams);
}

int writeProfile(const Arguments &arguments, ChosenProfile *profile, Streams &streams)
{
    const QString path = profile->fileListPath();
    if (arguments.isSet("dry-run")) {
        if (arguments.isSet("json"))
            return Done;
        streams.out << QStringLiteral("Would write ") << printable(path) << QStringLiteral(".\n");
        return Done;
    }
    if (interrupted())
        return streams.failed(QStringLiteral("Interrupted; %1 was not written").arg(path));
    QString error;
    if (!profile->store().createProfile(profile->name))
        return streams.failed(QStringLiteral("Cannot create folder %1").arg(profile->store().profileFolder(profile->name)));
    if (profile->lists.write(path, currentROM.root, &error) != FileListFiles::Writing::Done)
        return streams.failed(QStringLiteral("Cannot write file %1: %2").arg(path, error));
    if (!arguments.isSet("json"))
        streams.out << QStringLiteral("Wrote ") << printable(path) << QStringLiteral(".\n");
    return Done;
}
}
