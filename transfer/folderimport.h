// SPDX-License-Identifier: MIT
#pragma once

#include "base/progress.h"
#include "model/rom.h"
#include "transfer/jpegcheck.h"
#include "transfer/texturewriter.h"

#include <QString>

/// The number of files in the directory at \a path and in all directories below it, whatever their type; links and hidden ones do
/// not count. 0 where there is no such directory.
int countFilesBelow(const QString &path);

/// Hands each ".png" and ".jpeg" file in the directory at \a path to \a write, with the address and the format of the texture in
/// \a directory that has its name, ignoring case; then the same for each subdirectory that has the name of a folder in
/// \a directory. Palettes are not imported and pictures are not resized; for a palette format, a picture without a colour table
/// gets the nearest colours of the palette that the loaded image holds. Entries come in the file system's order; links and
/// hidden ones are left out. Adds to \a report a line, ended by a line feed, for what was not imported, and sets \a progress to
/// the number of files visited so far after each. A null \a directory imports nothing but the line about it.
///
/// \a log is told what \a report does not have: pictures without a texture of their name, with the nearest name for the first of
/// them, links, and JPEGs that \a rule refuses as not imported; and as warnings what the pictures lose.
void importPictureFolder(const QString &path, const fileTreeDirectory *directory, const TextureSink &write, Progress *progress,
                         WorkLog *log, QString *report, JpegRule rule = JpegRule::WriteAnyway);
