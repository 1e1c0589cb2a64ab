// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// Writes \a bytes over the file at \a path, in which they take the place of all that is there, for a folder that allows no file
/// beside it. Before anything changes, \a bytes are kept whole in a file of the recovery folder, where they stay if the program
/// is ended meanwhile. A failure puts the old content back; where that fails too, \a error, which gives the reason, says where
/// the new content is kept. Nothing is written when it cannot be kept, or the old content cannot be read.
bool writeDirectly(const QString &path, const QByteArray &bytes, QString *error);

/// The folder in which new content is kept while a file is being written to directly: "Brimholt/Quillary/recovery" in the standard place for application data.
QString recoveryFolder();
