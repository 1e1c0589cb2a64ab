// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

class QFileDevice;
class QTemporaryFile;

/// Opens \a file without a buffer, for writeAll().
bool openUnbuffered(QTemporaryFile *file);

/// Writes all of \a bytes to \a file, which is open without a buffer. Where the system takes only a part, as on a disk that is
/// getting full, the rest is tried again, which brings out the reason. Returns false when that fails; \a file has the reason.
bool writeAll(QFileDevice *file, const QByteArray &bytes);

/// Ignores SIGXFSZ, so that a write beyond the user's limit on file sizes fails with EFBIG instead of ending the program.
void surviveFileSizeLimit();

/// Flushes \a file, which is open, to the disk. Returns false, with the reason in \a error, when that fails; a file system that
/// cannot do it is not a failure.
bool syncFile(QFileDevice *file, QString *error);

/// The same for the names in the folder at \a path. A folder that cannot be opened is not a failure either.
bool syncFolder(const QString &path, QString *error);

/// Gives \a file, which is open, the permissions of a new file: those that the user's umask leaves. If that fails, the file stays
/// as it was created: for its owner alone.
void takeUsualPermissions(QFileDevice *file);

/// Gives \a file, which is open, the owner and group of the file at \a path, as far as the user may do that, and its permissions.
/// Does nothing when there is no such file. Returns false, with the reason in \a error, when the permissions cannot be given.
bool takeOwnerAndPermissions(const QString &path, QFileDevice *file, QString *error);
