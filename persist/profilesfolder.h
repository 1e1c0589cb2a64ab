// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The folder of all cartridges' profiles, for the window and the command line alike.
struct ProfilesFolder
{
    QString path; ///< Ends in "/". Need not exist yet.
    QString unwritable; ///< The folder beside the program when path is another, because it cannot be written; ends in "/".
                        ///< What path does not have is read from there. Else empty.
};

/// Where profiles are kept: in \a besideProgram or, when only the permission to write there is missing, in \a ofUser; both end in
/// "/". Creates nothing.
ProfilesFolder chooseProfilesFolder(const QString &besideProgram, const QString &ofUser);

/// As above, with the folder "profiles" beside the running program, or else userProfilesFolder().
ProfilesFolder chooseProfilesFolder();

/// The user's own folder for profiles, in the standard folder for application data; ends in "/". The same for every program of
/// this project, whatever application name it has set.
QString userProfilesFolder();

/// One line that tells the user where profiles are kept, and why there if it is not beside the program.
QString describe(const ProfilesFolder &folder);
