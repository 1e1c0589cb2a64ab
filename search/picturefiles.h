// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

/// The paths of the files in \a folder that end in ".png", in the file system's order; with \a subfolders also of those in all
/// folders below. Capitals in the ending do not count as such.
QStringList picturesInFolder(const QString &folder, bool subfolders);
