// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

class QIODevice;

namespace cli
{
class Streams;

/// Whether \a path is "-", which stands for standard input or standard output where one file is meant. A file of that name is
/// "./-".
bool isStandardStream(const QString &path);

/// Reads the whole file at \a path, or standard input, into \a bytes. On failure the result is false and \a error says why.
bool readInput(const QString &path, QByteArray *bytes, QString *error);

/// Writes what \a write puts into the device it is given to the file at \a path, whole or not at all, and makes the folders above
/// it that are missing; or to standard output, and nothing when \a write gives up. On failure the result is false and \a error
/// says why.
bool writeOutput(const QString &path, const std::function<bool(QIODevice *)> &write, Streams &streams, QString *error);

/// As above, with \a bytes as the content.
bool writeOutput(const QString &path, const QByteArray &bytes, Streams &streams, QString *error);

/// Makes the folder in which the file at \a path lies, with all above it. On failure the result is false and \a error says which.
bool makeFolderFor(const QString &path, QString *error);
}
