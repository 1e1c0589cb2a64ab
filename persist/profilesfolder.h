// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The folder of all cartridges' profiles, for the window and the command line alike.
struct ProfilesFolder
{
    QString path; ///< Ends in "/". Need not be there yet.
    QString unwritable; ///< The folder beside the program, when it cannot be written and path is another; else empty.
};

/// Where profiles are kept: in \a besideProgram, or, when that cannot be written, in \a ofUser, both ending in "/". When neither
/// can, \a besideProgram stays, so that whoever writes there says what is wrong. Only looks: nothing is created.
ProfilesFolder chooseProfilesFolder(const QString &besideProgram, const QString &ofUser);

/// As above, with the folder "profiles" beside the running program, or else userProfilesFolder().
ProfilesFolder chooseProfilesFolder();

/// The user's own folder for profiles, in the standard place for application data; ends in "/". The same for every program of
/// the house, whatever application name it has set.
QString userProfilesFolder();

/// One line that tells the user where profiles are kept, and why there if it is not beside the program.
QString describe(const ProfilesFolder &folder);
