// SPDX-License-Identifier: MIT
#include "app/texturepicture.h"

#include "codec/texturemanipulator.h"
#include "model/rom.h"
#include "model/textureformat.h"

TexturePicture textureToShow(const fileTreeFile &texture)
{
    const textureFormat *format = textureFormats::find(texture.format);
    if (!format)
        return {QImage(), TexturePicture::UnknownFormat};
    if (texture.realAddress() + texture.unwrappedSize() > currentROM.data.size())
        return {QImage(), TexturePicture::PastEnd};
    if (qint64(texture.width) * texture.height > TexturePicture::maximumPixels)
        return {QImage(), TexturePicture::TooManyPixels};
    const QByteArray data = texture.data();
    if (data.isNull())
        return {QImage(), TexturePicture::NoData};
    const QImage image = textureManipulator::generateTexture(data, *format, texture.width, texture.palette());
    return {image, image.isNull() ? TexturePicture::NotDecoded : TexturePicture::None};
}
