// SPDX-License-Identifier: MIT
#include "persist/filesync.h"

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
    int result = 0;
    do {
        result = ::fsync(descriptor);
    } while (result != 0 && errno == EINTR);
    if (result == 0 || errno == EINVAL || errno == ENOTSUP || errno == EROFS)
        return true;
    *error = qt_error_string(errno);
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
    const mode_t taken = ::umask(0);
    ::umask(taken);
    ::fchmod(file->handle(), 0666 & ~taken);
}

void takeOwnerFrom(const QString &path, QFileDevice *file)
{
    struct stat wanted = {};
    struct stat given = {};
    if (::stat(QFile::encodeName(path).constData(), &wanted) != 0 || ::fstat(file->handle(), &given) != 0)
        return;
    if (wanted.st_uid == given.st_uid && wanted.st_gid == given.st_gid)
        return;
    // Only root may give a file away; a group that the user belongs to can be kept all the same.
    if (::fchown(file->handle(), wanted.st_uid, wanted.st_gid) != 0
        && ::fchown(file->handle(), static_cast<uid_t>(-1), wanted.st_gid) != 0)
        return;
    // A change of hands may take permissions away.
    ::fchmod(file->handle(), wanted.st_mode & 07777);
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

void takeOwnerFrom(const QString &, QFileDevice *) { }
#endif
