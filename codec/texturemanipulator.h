// SPDX-License-Identifier: MIT
#pragma once

#include "model/textureformat.h"

#include <QByteArray>
#include <QImage>

/// Converts between the bytes of a texture, as they lie in the big-endian cartridge image, and pictures. Stateless.
class textureManipulator
{
public:
    /// The picture that \a data shows: \a width pixels wide, and as many rows high as \a data fills at the record's bytes per
    /// pixel; a part row is dropped. The record's name decides how texels are read, its usesPalette whether the picture has
    /// Format_Indexed8 with 256 colours or Format_ARGB32; for jpeg the picture is what Qt's reader gives. \a palette holds
    /// big-endian rgb5a1 words: 512 bytes for ci8, 32 for ci4; if it is shorter, all colours are opaque black. Null for an
    /// unknown name, a width below 1, less than one row of data, bytes that are no JPEG, and a JPEG that claims more than
    /// maximumPicturePixels.
    static QImage generateTexture(QByteArray data, textureFormat format, int width, QByteArray palette);

    /// The bytes of \a image in \a format. Pixels are read as QImage::pixel() and pixelIndex() give them: 0 if an index has no
    /// colour, and if a picture has no indices. Null for jpeg, for an unknown format, and for an image without rows. No
    /// palette is made: the palette formats take the indices as they are.
    static QByteArray generateData(QImage image, textureFormat format);
};
