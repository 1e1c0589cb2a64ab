// SPDX-License-Identifier: MIT
#pragma once

#include "base/progress.h"
#include "model/rom.h"

#include <QString>
#include <QStringList>

/// The outcome of extracting a texture.
enum class ExtractOutcome {
    Extracted,
    MissingData, ///< The entry does not say enough to be read.
    UnknownFormat, ///< Its format is not in the format table.
    NotDecodable, ///< Its bytes give no picture.
    NotWritten, ///< The file could not be written; an old one is as it was.
};

/// The extension of the file that holds a texture of \a format: ".jpeg" for "jpeg" in any case, else ".png".
QString pictureExtension(const QString &format);

/// Writes \a texture, as the loaded image holds it, to the file at \a path: a JPEG's bytes as they are, else a PNG. The file is
/// written whole or not at all, and \a error says why it was not written.
ExtractOutcome extractTexture(const fileTreeFile &texture, const QString &path, WorkLog *log, QString *error);

/// The outcome of extracting a folder.
struct FolderExtraction
{
    int written = 0; ///< Files.
    QStringList problems; ///< One line for each texture or folder that was left out: its path in the table, ": ", the reason.
    bool cancelled = false; ///< The progress had it end before all was written.
};

/// Writes \a directory and all below it into the folder at \a path: each folder as a directory of its name, an empty one too, and
/// each texture as a file of its name. A name with "/" gives nested directories. Nothing is written outside \a path: absolute
/// names, names with a component "..", and symbolic links that lead out are left out and reported. A \a progress, unless null,
/// counts the textures visited and is asked before each whether to go on.
FolderExtraction extractFolder(const QString &path, const fileTreeDirectory *directory, WorkLog *log,
                               Progress *progress = nullptr);
