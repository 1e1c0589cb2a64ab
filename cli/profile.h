// SPDX-License-Identifier: MIT
#pragma once

#include "cli/cartridge.h"
#include "persist/filelistfiles.h"
#include "persist/profilestore.h"

#include <QString>

class fileTreeDirectory;

namespace cli
{
/// A profile of the loaded image: the one that --profile and --profiles name, or the one that loads automatically.
struct ChosenProfile
{
    ProfilesFolder folder;
    QString name;
    FileListFiles lists; ///< Knows the profile's list as it was read, and has it locked for a command that writes it.

    ProfileStore store() const;
    QString fileListPath() const { return store().fileListPath(name); }
};

/// The folder of all profiles: --profiles, or the one that the window uses.
ProfilesFolder profilesFolder(const Arguments &arguments);

/// What to do about a profile without a file list.
enum class MissingList {
    Refuse, ///< There is nothing to work on: an error.
    StartEmpty, ///< Begin with an empty table, as the window does: the command will write the list.
    RefuseAndWrite, ///< As Refuse, for a command that will write the list.
    EmptyUnlessNamed, ///< Begin with an empty table, but refuse a profile that --profile names and that does not exist.
};

/// Fills in the profile of the loaded image that \a option names, without it the one that loads automatically. Reads no file
/// list. On failure the result is false and the error is printed.
bool chooseProfile(const Arguments &arguments, const char *option, ChosenProfile *profile, Streams &streams);

/// Finds the profile of the loaded image and reads its file list into currentROM. With StartEmpty, and without --dry-run, the
/// list is locked. On failure, also for a list that could not be read whole, the result is false and the error is printed.
bool openProfile(const Arguments &arguments, MissingList missing, ChosenProfile *profile, Streams &streams);

/// Opens the image that is the first positional argument, and its profile. Returns false with the error printed.
bool openImageAndProfile(const Arguments &arguments, MissingList missing, OpenedImage *image, ChosenProfile *profile,
                         Streams &streams);

/// The error for a path that the profile's table does not have.
QString pathNamesNothing(const QString &path, const ChosenProfile &profile);

/// Reads the file list of \a name, which \a store has, into \a root. Returns false with the reason in \a error.
bool readProfile(const ProfileStore &store, const QString &name, fileTreeDirectory *root, FileListFiles *lists, QString *error);

/// Writes currentROM's table as the profile's file list, whole or not at all, and says so; with --dry-run it says what it would
/// do. Returns an exit status.
int writeProfile(const Arguments &arguments, ChosenProfile *profile, Streams &streams);
}
