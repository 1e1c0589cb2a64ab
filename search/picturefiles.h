// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

/// The paths of the files in \a folder that end in ".png", in the file system's order; with \a subfolders also of those in all
/// folders below. The suffix is case-sensitive.
QStringList picturesInFolder(const QString &folder, bool subfolders);
