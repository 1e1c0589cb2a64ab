// SPDX-License-Identifier: MIT
#include "app/texturepicture.h"

#include "codec/texturemanipulator.h"
#include "model/rom.h"
#include "model/textureformat.h"

#include <cmath>

namespace
{
/// The texture's length in bytes. size() wraps at 32 bits, and what it wraps to says nothing of where such a texture ends.
double trueSize(const fileTreeFile &texture, const textureFormat &format)
{
    if (texture.format == textureFormats::jpeg.name)
        return texture.size();
    return std::trunc(double(qint64(texture.width) * texture.height) * format.bytesPerPixel);
}
}

TexturePicture textureToShow(const fileTreeFile &texture)
{
    const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    const auto format = formats.constFind(texture.format);
    if (format == formats.constEnd())
        return {QImage(), TexturePicture::UnknownFormat};
    if (texture.realAddress() + trueSize(texture, *format) > currentROM.data.size())
        return {QImage(), TexturePicture::PastEnd};
    if (qint64(texture.width) * texture.height > TexturePicture::maximumPixels)
        return {QImage(), TexturePicture::TooManyPixels};
    const QByteArray data = texture.data();
    if (data.isNull())
        return {QImage(), TexturePicture::NoData};
    const QImage image = textureManipulator::generateTexture(data, *format, texture.width, texture.palette());
    return {image, image.isNull() ? TexturePicture::NotDecoded : TexturePicture::None};
}
