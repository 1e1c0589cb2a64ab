// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// Reads the whole of the regular file at \a path into \a bytes, as it is. On failure the result is false, \a error says why, and
/// \a bytes is left alone. A file that is no regular one or is larger than a QByteArray can be is refused unread.
bool readWholeFile(const QString &path, QByteArray *bytes, QString *error);
