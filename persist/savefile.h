// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

class QIODevice;

/// Replaces the file at \a path by what \a write puts into the device it is given, whole or not at all: a failure leaves the old
/// file as it was. Links are followed, and the file keeps its permissions and, as far as the user may do that, its owner. On
/// success the content is on the disk. Where the folder allows no new file, the old one is written to directly, see
/// writeDirectly(). What is no regular file is left alone.
/// \a write returns false to give up. On failure the result is false and \a error says why.
bool saveWhole(const QString &path, const std::function<bool(QIODevice *)> &write, QString *error);

/// As above, with \a bytes as the content.
bool saveWhole(const QString &path, const QByteArray &bytes, QString *error);

/// Writes \a bytes to a file at \a path that is not there yet: whole or not at all, as above, but the system may take its time to
/// put them on the disk, so that thousands of files can be made. False also when there is something at \a path by now.
bool saveNew(const QString &path, const QByteArray &bytes, QString *error);
