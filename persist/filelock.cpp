// SPDX-License-Identifier: MIT
#include "persist/filelock.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <utility>

// QLockFile is not used: a program that is killed before it has written its number into the lock file, or a lock file that a loss
// of power emptied, would keep everybody out until the file is deleted by hand.
#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
enum class Attempt { Locked, Taken, Impossible };

/// Whether \a path still names the open file: the program that had the lock before may have removed it meanwhile.
bool isStillThere(int descriptor, const QByteArray &path)
{
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(descriptor, &opened) == 0 && ::lstat(path.constData(), &named) == 0 && opened.st_dev == named.st_dev
        && opened.st_ino == named.st_ino;
}

Attempt tryToLock(const QByteArray &path, int *descriptor)
{
    const int file = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0666);
    if (file < 0)
        return Attempt::Impossible;
    if (::flock(file, LOCK_EX | LOCK_NB) == 0 && isStillThere(file, path)) {
        *descriptor = file;
        return Attempt::Locked;
    }
    const bool isTaken = errno == EWOULDBLOCK || errno == EINTR || !isStillThere(file, path);
    ::close(file);
    return isTaken ? Attempt::Taken : Attempt::Impossible;
}
}

bool FileLock::lock(const QString &path, QString *error)
{
    constexpr int patience = 5000; // milliseconds
    constexpr int pause = 20;
    release(); // It may be a lock on the same file.
    const QString target = QFileInfo(path).canonicalFilePath();
    const QString lockPath = (target.isEmpty() ? path : target) + QLatin1String(".lock");
    QElapsedTimer time;
    time.start();
    Attempt attempt = tryToLock(QFile::encodeName(lockPath), &m_descriptor);
    while (attempt == Attempt::Taken && time.elapsed() < patience) {
        QThread::msleep(pause);
        attempt = tryToLock(QFile::encodeName(lockPath), &m_descriptor);
    }
    m_lockPath = lockPath;
    if (attempt != Attempt::Taken)
        return true;
    *error = QCoreApplication::translate("FileLock", "Another program is changing it; its lock is %1").arg(lockPath);
    return false;
}

void FileLock::release()
{
    if (m_descriptor < 0)
        return;
    // Removed while it is locked: a program that waits for it finds that it is gone and makes another.
    ::unlink(QFile::encodeName(m_lockPath).constData());
    ::close(m_descriptor);
    m_descriptor = -1;
}
#else
bool FileLock::lock(const QString &, QString *)
{
    return true;
}

void FileLock::release() { }
#endif

void FileLock::swap(FileLock &other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    m_lockPath.swap(other.m_lockPath);
}
