// SPDX-License-Identifier: MIT
#pragma once

#include "base/progress.h"
#include "model/rom.h"
#include "model/textureformat.h"
#include "transfer/jpegcheck.h"
#include "transfer/texturewriter.h"

#include <QImage>
#include <QList>
#include <QSize>
#include <QString>

#include <functional>

/// What to do with a picture whose size is not the texture's.
enum class SizeAnswer {
    IgnoreAspectRatio, ///< Stretch it to the texture's size.
    KeepAspectRatio, ///< Scale it as a whole into the top left corner; the rest becomes zero pixels.
    Abort,
};

/// Asked once a replacement, and only when the sizes differ and the texture is no JPEG.
using SizeQuestion = std::function<SizeAnswer(const QSize &picture, const QSize &texture)>;

/// \a picture scaled smoothly to \a texture pixels as \a answer says. Null for a null picture, for Abort, and for a texture
/// larger than maximumPicturePixels.
QImage fitPicture(const QImage &picture, const QSize &texture, SizeAnswer answer);

/// The one row of colours that \a picture brings for \a format: 16 or 256, transparent black where its colour table has none.
/// Null for a format without palette.
QImage paletteOfPicture(const QImage &picture, const textureFormat &format);

/// The outcome of replacing a texture.
enum class ReplaceOutcome {
    Replaced, ///< Everything has been handed to the sink, which knows whether it was written.
    Aborted, ///< The size question was answered so: nothing was handed over.
    Unreadable, ///< The file could not be read: only a palette was handed over.
    Refused, ///< The JPEG rule forbids it: nothing was handed over, and the log says why.
};

/// Hands the picture in the file \a fileName to \a write, fitted to \a texture of the loaded image, and then, for a palette
/// format, its palette: whole from the colour table of a picture that has one. For a picture without, fitPalette() makes the
/// indices, and only what it changes of the palette is handed over.
/// A JPEG texture takes the file's bytes, whatever the picture's size, unless \a rule refuses them. What is dropped, and which
/// other textures change their colours, are warnings in \a log.
ReplaceOutcome replaceTexture(const fileTreeFile &texture, const QString &fileName, const SizeQuestion &ask,
                              const TextureSink &write, WorkLog *log, JpegRule rule = JpegRule::WriteAnyway);

/// The textures below \a root that overlap or touch the bytes of \a texture, in the table's order; \a texture is one of them
/// unless it is empty. Addresses and ends wrap at 32 bits.
QList<fileTreeFile *> touchingTextures(const fileTreeDirectory *root, const fileTreeFile &texture);
