// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <memory>

class QLockFile;

/// Lets windows and commands that change the same file wait for each other, by a lock file beside it: its name and ".lock".
/// The lock ends with the object. A lock file whose program has ended is ignored.
class FileLock
{
public:
    FileLock();
    ~FileLock();
    FileLock(FileLock &&) noexcept;
    FileLock &operator=(FileLock &&) noexcept;

    /// Locks the file at \a path, which need not exist; links are followed. Waits for another program for up to five seconds.
    /// Returns false, with the reason in \a error, when that one still has the lock. Where no lock file can be created, as in a
    /// folder that is read-only, the result is true without a lock.
    bool lock(const QString &path, QString *error);

private:
    std::unique_ptr<QLockFile> m_lockFile;
};
