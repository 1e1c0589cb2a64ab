// SPDX-License-Identifier: MIT
#include "persist/filesync.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QTemporaryFile>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

bool openUnbuffered(QTemporaryFile *file)
{
    // The class itself offers no choice of the mode.
    QIODevice *device = file;
    return device->open(QIODevice::ReadWrite | QIODevice::Unbuffered);
}

bool writeAll(QFileDevice *file, const QByteArray &bytes)
{
    for (int written = 0; written < bytes.size();) {
        const qint64 part = file->write(bytes.constData() + written, bytes.size() - written);
        if (part <= 0)
            return false;
        written += int(part);
    }
    return true;
}

#ifdef Q_OS_UNIX
namespace
{
bool syncDescriptor(int descriptor, QString *error)
{
    constexpr int mostInterruptions = 100;
    int result = ::fsync(descriptor);
    for (int i = 0; i < mostInterruptions && result != 0 && errno == EINTR; ++i)
        result = ::fsync(descriptor);
    if (result == 0 || errno == EINVAL || errno == ENOTSUP || errno == EROFS)
        return true;
    *error = qt_error_string(errno);
    return false;
}

/// Gives \a file the permissions \a mode. Where it does not have those of the owner, the group and the others afterwards, the
/// result is false with the reason in \a error. A file system without permissions gives the same ones to all files.
bool givePermissions(QFileDevice *file, mode_t mode, QString *error)
{
    constexpr mode_t permissions = 0777;
    struct stat given = {};
    const int changed = ::fchmod(file->handle(), mode);
    const int systemError = errno;
    if (::fstat(file->handle(), &given) == 0 && (given.st_mode & permissions) == (mode & permissions))
        return true;
    *error = QCoreApplication::translate("SaveFile", "Its permissions cannot be kept: %1")
                 .arg(qt_error_string(changed != 0 ? systemError : EPERM));
    return false;
}
}

void surviveFileSizeLimit()
{
    std::signal(SIGXFSZ, SIG_IGN);
}

bool syncFile(QFileDevice *file, QString *error)
{
    if (file->flush())
        return syncDescriptor(file->handle(), error);
    *error = file->errorString();
    return false;
}

bool syncFolder(const QString &path, QString *error)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return true;
    const bool synced = syncDescriptor(descriptor, error);
    ::close(descriptor);
    return synced;
}

void takeUsualPermissions(QFileDevice *file)
{
    const mode_t masked = ::umask(0);
    ::umask(masked);
    ::fchmod(file->handle(), 0666 & ~masked);
}

bool takeOwnerAndPermissions(const QString &path, QFileDevice *file, QString *error)
{
    struct stat wanted = {};
    struct stat given = {};
    if (::stat(QFile::encodeName(path).constData(), &wanted) != 0) {
        if (errno == ENOENT)
            return true;
        *error = qt_error_string(errno);
        return false;
    }
    if (::fstat(file->handle(), &given) != 0) {
        *error = qt_error_string(errno);
        return false;
    }
    // Only root may give a file away; a group that the user belongs to can be kept all the same.
    if ((wanted.st_uid != given.st_uid || wanted.st_gid != given.st_gid)
        && ::fchown(file->handle(), wanted.st_uid, wanted.st_gid) != 0
        && ::fchown(file->handle(), static_cast<uid_t>(-1), wanted.st_gid) != 0)
        qDebug().noquote() << path + QLatin1String(": Its owner and group change:") << qt_error_string(errno);
    return givePermissions(file, wanted.st_mode & 07777, error);
}
#else
void surviveFileSizeLimit() { }

bool syncFile(QFileDevice *file, QString *error)
{
    if (file->flush())
        return true;
    *error = file->errorString();
    return false;
}

bool syncFolder(const QString &, QString *)
{
    return true;
}

void takeUsualPermissions(QFileDevice *) { }

bool takeOwnerAndPermissions(const QString &, QFileDevice *, QString *)
{
    return true;
}
#endif
