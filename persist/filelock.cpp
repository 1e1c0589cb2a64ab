// SPDX-License-Identifier: MIT
#include "persist/filelock.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLockFile>

FileLock::FileLock() = default;
FileLock::~FileLock() = default;
FileLock::FileLock(FileLock &&) noexcept = default;
FileLock &FileLock::operator=(FileLock &&) noexcept = default;

bool FileLock::lock(const QString &path, QString *error)
{
    constexpr int patience = 5000; // milliseconds
    const QString target = QFileInfo(path).canonicalFilePath();
    const QString lockPath = (target.isEmpty() ? path : target) + QLatin1String(".lock");
    m_lockFile.reset(); // Releases a lock on the same file first.
    m_lockFile = std::make_unique<QLockFile>(lockPath);
    m_lockFile->setStaleLockTime(0); // However long a program works, its lock counts as long as it runs.
    if (m_lockFile->tryLock(patience) || m_lockFile->error() != QLockFile::LockFailedError)
        return true;
    *error = QCoreApplication::translate("FileLock", "Another program is changing it; its lock is %1").arg(lockPath);
    m_lockFile.reset();
    return false;
}
