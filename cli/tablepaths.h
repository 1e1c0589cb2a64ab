// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

namespace cli
{
/// The profiles of the image at \a imagePath, sorted; none when it cannot be read. \a profiles is the folder of all profiles,
/// empty for the one that the window uses. Reads no more of the image than its header.
QStringList profileNames(const QString &imagePath, const QString &profiles);

/// The paths in the table of \a profile, empty for the one that loads automatically, that begin with \a start, down to the next
/// "/": those of folders end in one. None when there is no such image or profile.
QStringList tablePaths(const QString &imagePath, const QString &profiles, const QString &profile, const QString &start);
}
