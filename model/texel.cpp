// SPDX-License-Identifier: MIT
#include "model/texel.h"

#include "model/rom.h"
#include "model/textureformat.h"

#include <algorithm>

namespace
{
constexpr int bytesPerColour = 2; // of a palette

qint64 atLeastOneByte(qint64 bytes)
{
    return std::max<qint64>(bytes, 1);
}
}

std::optional<Texel> texelAt(const fileTreeFile &texture, int x, int y)
{
    const textureFormat *format = textureFormats::find(texture.format);
    if (!format || textureFormats::isJpeg(texture.format) || x < 0 || y < 0 || x >= texture.width || y >= texture.height)
        return std::nullopt;
    const qint64 index = qint64(y) * texture.width + x;
    const int bytes = int(atLeastOneByte(textureFormats::bytesOfPixels(*format, 1)));
    const qint64 address = texture.realAddress() + textureFormats::bytesOfPixels(*format, index);
    if (address < 0 || address + bytes > currentROM.data.size())
        return std::nullopt;

    Texel texel {qint32(address), 0, 2 * bytes};
    for (int i = 0; i < bytes; ++i)
        texel.value = texel.value << 8 | quint8(currentROM.data.at(int(address) + i));
    if (format->bytesPerPixel < 1) { // The first of two pixels is in the upper four bits.
        texel.value = index % 2 == 0 ? texel.value >> 4 : texel.value & 0xF;
        texel.hexDigits = 1;
    }
    return texel;
}

TexelSteps stepsOfTexture(const fileTreeFile &texture)
{
    TexelSteps steps;
    steps.texture = atLeastOneByte(texture.unwrappedSize());
    if (textureFormats::isJpeg(texture.format)) {
        steps.row = steps.texture;
    } else if (const textureFormat *format = textureFormats::find(texture.format)) {
        steps.texel = atLeastOneByte(textureFormats::bytesOfPixels(*format, 1));
        steps.row = atLeastOneByte(textureFormats::bytesOfPixels(*format, texture.width));
    }
    return steps;
}

TexelSteps stepsOfPalette(const fileTreeFile &texture)
{
    const textureFormat format = textureFormats::getAsMap().value(texture.format, textureFormats::null);
    TexelSteps steps = stepsOfTexture(texture);
    steps.texel = bytesPerColour;
    steps.row = atLeastOneByte(textureFormats::paletteBytes(format));
    return steps;
}
