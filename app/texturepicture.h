// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>

class fileTreeFile;

/// A texture as a picture for the screen, or the reason why there is none.
struct TexturePicture
{
    enum Problem {
        None,
        UnknownFormat, ///< The format's name is not in the table.
        PastEnd, ///< The texture ends behind the loaded image.
        TooManyPixels, ///< More than maximumPixels.
        NoData, ///< The texture has no bytes; a JPEG does not start at its address.
        NotDecoded ///< The bytes make no picture.
    };
    static constexpr qint64 maximumPixels = 1048576;

    QImage image; ///< Null unless problem is None.
    Problem problem = None;
};

/// Decodes \a texture from the loaded image. The first check that fails, in the order of the problems, is the problem; any values
/// in \a texture are allowed.
TexturePicture textureToShow(const fileTreeFile &texture);
