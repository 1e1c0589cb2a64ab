// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// How the bytes of a texture encode its texels.
enum class TexelCoding { Rgba32, Rgb5a1, I4, Ia4, I8, Ia8, Ia16, Ci8, Ci4, Jpeg, Unknown };

/// The coding of the format called \a formatName; Unknown for any name that is not exactly a format's.
TexelCoding codingOf(const QString &formatName);

/// Whether texels are colour indices.
constexpr bool isIndexed(TexelCoding coding)
{
    return coding == TexelCoding::Ci8 || coding == TexelCoding::Ci4;
}

/// Bits of one texel; 0 for Jpeg and Unknown, which have no texels of one size.
constexpr int bitsPerTexel(TexelCoding coding)
{
    switch (coding) {
    case TexelCoding::Rgba32: return 32;
    case TexelCoding::Rgb5a1:
    case TexelCoding::Ia16: return 16;
    case TexelCoding::I8:
    case TexelCoding::Ia8:
    case TexelCoding::Ci8: return 8;
    case TexelCoding::I4:
    case TexelCoding::Ia4:
    case TexelCoding::Ci4: return 4;
    case TexelCoding::Jpeg:
    case TexelCoding::Unknown: break;
    }
    return 0;
}
