// SPDX-License-Identifier: MIT
// Decoding any bytes in any format with any width and palette. No read outside the bytes; a picture has the width asked for and
// as many rows as the bytes fill; what has no row, no width or no known format gives none; a format that keeps all it reads gives
// its bytes back when the picture is encoded again.
#include "fuzzinput.h"

#include "codec/texturemanipulator.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    const QStringList names = formats.keys();
    const textureFormat format = formats.value(names.value(input.byte() % (names.size() + 1)), textureFormats::null);
    const std::uint8_t choice = input.byte();
    const int width = choice < 200 ? choice : input.number();
    const QByteArray palette = input.bytes(input.byte() * 3);
    const QByteArray texels = input.rest();
    const QImage image = textureManipulator::generateTexture(texels, format, width, palette);
    if (format.name == textureFormats::jpeg.name)
        return 0;

    const int height = width > 0 && format.bytesPerPixel > 0 ? int(texels.size() / format.bytesPerPixel / width) : 0;
    require(image.isNull() == (height == 0), "a picture comes exactly from at least one row");
    if (image.isNull())
        return 0;
    require(image.width() == width && image.height() == height, "the rows that the bytes fill");
    require(image.format() == (format.usesPalette ? QImage::Format_Indexed8 : QImage::Format_ARGB32), "the picture's format");
    require(!format.usesPalette || image.colorCount() == 256, "a full colour table");

    const bool keepsAll = format.usesPalette || format.name == textureFormats::i4.name || format.name == textureFormats::i8.name
        || format.name == textureFormats::ia16.name;
    const bool wholeBytes = (width * height) % 2 == 0 || format.bytesPerPixel >= 1;
    if (keepsAll && wholeBytes)
        require(texels.startsWith(textureManipulator::generateData(image, format)), "encoding gives the bytes back");
    return 0;
}
