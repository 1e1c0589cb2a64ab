// SPDX-License-Identifier: MIT
#include "persist/profilesfolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryFile>

#include <cerrno>

namespace
{
/// The nearest folder on the way to \a path that exists; empty where something else is in the way.
QString existingFolder(const QString &path)
{
    QFileInfo place(QDir::cleanPath(path));
    while (!place.exists() && !place.isSymLink() && !place.isRoot())
        place.setFile(place.path());
    return place.isDir() && place.isAbsolute() ? place.filePath() : QString();
}

enum class Access { Writable, NoPermission, Unusable };

/// Whether files can be created in \a path or, if it is missing, whether it can be created. Permission bits do not tell, with
/// read-only file systems, access lists and privileged users, so a temporary file is tried; most systems give it no name at all.
Access accessTo(const QString &path)
{
    const QString folder = existingFolder(path);
    if (folder.isEmpty())
        return Access::Unusable;
    QTemporaryFile file(folder + QLatin1String("/.quillary-XXXXXX"));
    errno = 0;
    if (file.open())
        return Access::Writable;
    return errno == EACCES || errno == EPERM || errno == EROFS ? Access::NoPermission : Access::Unusable;
}
}

ProfilesFolder chooseProfilesFolder(const QString &besideProgram, const QString &ofUser)
{
    // Of everything else that can be wrong, such as a full disk or a file in the folder's place, the user is told on saving.
    if (accessTo(besideProgram) == Access::NoPermission && accessTo(ofUser) == Access::Writable)
        return {ofUser, besideProgram};
    return {besideProgram, QString()};
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
