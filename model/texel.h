// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <optional>

class fileTreeFile;

/// One pixel of a texture as the loaded image stores it.
struct Texel
{
    qint32 address = 0; ///< Of its first byte in the image. Two texels of a 4-bit format share a byte.
    quint32 value = 0; ///< Its bits, big-endian: a colour as the format packs it, or an index into the palette.
    int hexDigits = 0; ///< How many digits the value has: 1 for 4 bits, 8 for 32.
};

/// The texel at (\a x, \a y) of \a texture. None for a JPEG, whose pixels have no bytes of their own, for an unknown format, and
/// where the image does not reach.
std::optional<Texel> texelAt(const fileTreeFile &texture, int x, int y);

/// How far the parts of a texture lie apart, in bytes, each at least 1.
struct TexelSteps
{
    qint64 texel = 1;
    qint64 row = 1; ///< For a JPEG, which has no rows, as texture.
    qint64 texture = 1;
};

TexelSteps stepsOfTexture(const fileTreeFile &texture);

/// The same for the palette of \a texture: one colour, one palette, and the texture.
TexelSteps stepsOfPalette(const fileTreeFile &texture);
