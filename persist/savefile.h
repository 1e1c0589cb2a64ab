// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

class QIODevice;

/// Replaces the file at \a path by what \a write puts into the device it is given, whole or not at all: a failure leaves the old
/// file as it was, unless the folder allows no new file, so that the old one had to be written to directly.
/// \a write returns false to give up. On failure the result is false and \a error says why.
bool saveWhole(const QString &path, const std::function<bool(QIODevice *)> &write, QString *error);

/// As above, with \a bytes as the content.
bool saveWhole(const QString &path, const QByteArray &bytes, QString *error);
