// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Lets windows and commands that change the same file wait for each other, by a lock on an empty file beside it: its name and
/// ".lock". The lock ends with the object, or with the program however that ends. The file alone is no lock.
class FileLock
{
public:
    FileLock() = default;
    ~FileLock() { release(); }
    FileLock(FileLock &&other) noexcept { swap(other); }
    FileLock &operator=(FileLock &&other) noexcept
    {
        swap(other);
        return *this;
    }

    /// Locks the file at \a path, which need not exist; links are followed. Waits for another program for up to five seconds.
    /// Returns false, with the reason in \a error, when that one still has the lock. Where no lock file can be created, as in a
    /// folder that is read-only, the result is true without a lock.
    bool lock(const QString &path, QString *error);

private:
    void swap(FileLock &other) noexcept;
    void release();

    int m_descriptor = -1; ///< Of the locked file.
    QString m_lockPath;
};
