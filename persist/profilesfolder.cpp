// SPDX-License-Identifier: MIT
#include "persist/profilesfolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStorageInfo>
#include <QTemporaryFile>

namespace
{
/// Whether files can be created in \a path or, where it is missing, whether it can be created. Permission bits do not tell, with
/// read-only file systems, access lists and privileged users, so a temporary file is tried; most systems give it no name at all.
bool canBeWritten(const QString &path)
{
    QFileInfo place(QDir::cleanPath(path));
    if (place.isRelative())
        return false;
    while (!place.exists() && !place.isSymLink() && !place.isRoot())
        place.setFile(place.path());
    if (!place.isDir())
        return false;
    if (QTemporaryFile(place.filePath() + QLatin1String("/.quillary-XXXXXX")).open())
        return true;
    // A full disk is no reason to look elsewhere: the profiles that are there would seem to be gone.
    const QStorageInfo disk(place.filePath());
    return place.isWritable() && disk.bytesTotal() > 0 && disk.bytesAvailable() == 0;
}
}

ProfilesFolder chooseProfilesFolder(const QString &besideProgram, const QString &ofUser)
{
    if (canBeWritten(besideProgram) || !canBeWritten(ofUser))
        return {besideProgram, QString()};
    return {ofUser, besideProgram};
}

ProfilesFolder chooseProfilesFolder()
{
    return chooseProfilesFolder(QCoreApplication::applicationDirPath() + QLatin1String("/profiles/"), userProfilesFolder());
}

QString userProfilesFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QLatin1String("/Brimholt/Quillary/profiles/");
}

QString describe(const ProfilesFolder &folder)
{
    const QString path = QDir::toNativeSeparators(folder.path);
    if (folder.unwritable.isEmpty())
        return QCoreApplication::translate("ProfilesFolder", "Profiles are kept in %1").arg(path);
    return QCoreApplication::translate("ProfilesFolder", "Profiles are kept in %1, because %2 cannot be written")
        .arg(path, QDir::toNativeSeparators(folder.unwritable));
}
