// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

class QIODevice;

/// Replaces the file at \a path by \a bytes, whole or not at all: a failure leaves the old file as it was. Links are followed.
/// The file keeps its permissions and, as far as the user may give files away, its owner. On success the content has been flushed
/// to the disk. Where no file can be created in the folder, or none may take the old one's place, the old one is written to
/// directly, see writeDirectly(). What is not a regular file is left alone. On failure the result is false and \a error says why.
bool saveWhole(const QString &path, const QByteArray &bytes, QString *error);

/// As above, with the bytes that \a write puts into the device that it is given; it returns false to give up. It is called when a
/// file has been opened for writing, and not at all if that fails.
bool saveWhole(const QString &path, const std::function<bool(QIODevice *)> &write, QString *error);

/// Whether a new file is flushed to the disk before the call returns. Thousands of files are written much faster without.
enum class Flush { No, Yes };

/// Writes \a bytes to a file at \a path that does not exist yet: whole or not at all, as above. Fails when there is something at
/// \a path by now.
bool saveNew(const QString &path, const QByteArray &bytes, QString *error, Flush flush = Flush::No);
