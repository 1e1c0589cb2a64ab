// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

class QFileDevice;
class QTemporaryFile;

/// Opens \a file, without a buffer, for writeAll().
bool openUnbuffered(QTemporaryFile *file);

/// Writes all of \a bytes to \a file, which has been opened without a buffer. Where the system takes only a part, as the last it
/// does on a disk that becomes full, the rest is tried again, which brings out the reason. Returns false when that fails; \a file
/// then has the reason.
bool writeAll(QFileDevice *file, const QByteArray &bytes);

/// Has a write beyond the user's limit on the size of files fail, where the system would end the program.
void surviveFileSizeLimit();

/// Has the system put what was written to \a file, which is open, on the disk, so that a loss of power does not take it. Returns
/// false, with the reason in \a error, when that fails; a file system that cannot do it is no failure.
bool syncFile(QFileDevice *file, QString *error);

/// The same for the names in the folder at \a path. A folder that cannot be opened is no failure either.
bool syncFolder(const QString &path, QString *error);

/// Lets \a file, which is open, be read and written by whom the user wants new files to be.
void takeUsualPermissions(QFileDevice *file);

/// Gives \a file, which is open, the owner and the group of the file at \a path, as far as the user may do that.
void takeOwnerFrom(const QString &path, QFileDevice *file);
