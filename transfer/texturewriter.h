// SPDX-License-Identifier: MIT
#pragma once

#include "base/progress.h"
#include "model/rom.h"

#include <QByteArray>
#include <QImage>
#include <QString>

#include <functional>

/// The outcome of writing a texture.
enum class WriteOutcome {
    Written,
    UnknownFormat, ///< The format is not in the format table.
    NotEncodable, ///< The picture gives no bytes in the format.
    OutOfRange, ///< The address is negative, or the image would grow past maximumImageBytes.
};

/// Writes \a picture, encoded in the format named \a format, into the image of \a rom from byte \a address on; for "jpeg", in any
/// case, \a rawPicture, the bytes of the picture's file, as they are. No palette is written. The image grows as
/// ROM::overwrite() lets it; no bytes to write change nothing. On any outcome but Written the image is as it was, and \a log has
/// a status message.
[[nodiscard]] WriteOutcome writeTexture(ROM *rom, const QImage &picture, int address, const QString &format,
                                        const QByteArray &rawPicture, WorkLog *log);

/// Where imports put the textures they have read: the arguments of writeTexture() that differ from texture to texture.
using TextureSink = std::function<void(const QImage &picture, int address, const QString &format, const QByteArray &rawPicture)>;
