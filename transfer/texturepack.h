// SPDX-License-Identifier: MIT
#pragma once

#include "base/progress.h"
#include "model/rom.h"
#include "transfer/jpegcheck.h"
#include "transfer/texturewriter.h"

#include <QByteArray>
#include <QString>

/// What importing a texture pack added to the table.
struct TexturePackImport
{
    int folders = 0;
    int textures = 0;
    fileTreeDirectory *lastFolder = nullptr; ///< The folder added last, null when there is none; not owned.
};

/// Adds to \a root what the texture pack in the directory at \a path describes, and hands its pictures to \a write.
///
/// A directory named "A_<hexadecimal>_<name>" becomes a folder at that address; with "P" the address is that of the big-endian
/// word in \a cartridge that holds the folder's, and a directory whose word lies outside or in the first four bytes is left out.
/// A file in it named "<hexadecimal>_<format>_<name>" becomes a texture; the number is its offset in the folder, and also the
/// absolute address at which its picture is written. Digits are upper case; a number from 80000000 on is a negative address,
/// which is kept in the table but never written to. What is named otherwise is left out, and so are links that lead out of the
/// pack. \a cartridge is read while \a write may change it; it is the loaded image.
///
/// No palette is written: for a palette format, a picture without a colour table gets the nearest colours of the palette at the
/// new entry's palette address. \a log is told of directories and pictures that are left out, a pack without a directory for it
/// among them, and of JPEGs that \a rule refuses, all as not imported, and as warnings what the pictures lose.
TexturePackImport importPack(const QString &path, fileTreeDirectory *root, const QByteArray &cartridge, const TextureSink &write,
                             WorkLog *log, JpegRule rule = JpegRule::WriteAnyway);
