// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// Overwrites the existing file at \a path with \a bytes, for a folder in which no file can take its place. Before anything
/// changes, \a bytes are written and flushed to a file in the recovery folder. It is removed when the work is done, and stays
/// when the program is killed meanwhile. A failure puts the old content back; if that fails too, \a error, the reason, names the
/// file with the new content. Nothing is written when that file cannot be made or the old content cannot be read.
bool writeDirectly(const QString &path, const QByteArray &bytes, QString *error);

/// The folder that keeps new content while a file is written to directly: "Brimholt/Quillary/recovery" in the standard folder for
/// application data.
QString recoveryFolder();
