// SPDX-License-Identifier: MIT
#pragma once

#include "persist/filelock.h"

#include <QByteArray>
#include <QHash>
#include <QString>

class FileListObserver;
class fileTreeDirectory;

/// Reads and replaces file lists on disk, and remembers what it read and wrote. A list that is about to be replaced and holds
/// anything else was never read whole, or another program changed it: then a copy of it is made first.
class FileListFiles
{
public:
    enum class Reading { Done, NotOpened, Malformed };
    enum class Writing { Done, NotOpened, NotWritten };

    /// Reads the list at \a path, see readFileList(). \a error is the reason of a failure. Unless
    /// \a copy is null, a malformed list is copied to a free name, its own with ".damaged"; \a copy is the path of the copy then,
    /// empty when none could be made.
    Reading read(const QString &path, int imageSize, fileTreeDirectory *root, FileListObserver *observer, QString *error,
                 QString *copy);

    /// Replaces the list at \a path, whole or not at all, by \a root's. Another program that changes it is waited for. A list
    /// that is not known is first copied to a free name, its own with a number; if that fails the list is not replaced. \a error
    /// is the reason of a failure: NotWritten when the file could be opened.
    Writing write(const QString &path, fileTreeDirectory *root, QString *error);

    /// Locks the list at \a path from now on, for a program that reads it, changes it and writes it. See FileLock::lock().
    bool lock(const QString &path, QString *error);

private:
    bool keepUnknown(const QString &path, QString *error) const;

    QHash<QString, QByteArray> m_known; ///< By path, the checksum of the list that was read whole, copied or written.
    QString m_lockedPath;
    FileLock m_lock; ///< On m_lockedPath.
};
