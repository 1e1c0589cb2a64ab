// SPDX-License-Identifier: MIT
#include "codec/texelcoding.h"

TexelCoding codingOf(const QString &formatName)
{
    struct NamedCoding
    {
        QLatin1String name;
        TexelCoding coding = TexelCoding::Unknown;
    };
    static const NamedCoding codings[] = {
        {QLatin1String("rgba32"), TexelCoding::Rgba32}, {QLatin1String("rgb5a1"), TexelCoding::Rgb5a1},
        {QLatin1String("i4"), TexelCoding::I4},         {QLatin1String("ia4"), TexelCoding::Ia4},
        {QLatin1String("i8"), TexelCoding::I8},         {QLatin1String("ia8"), TexelCoding::Ia8},
        {QLatin1String("ia16"), TexelCoding::Ia16},     {QLatin1String("ci8"), TexelCoding::Ci8},
        {QLatin1String("ci4"), TexelCoding::Ci4},       {QLatin1String("jpeg"), TexelCoding::Jpeg},
    };
    for (const NamedCoding &candidate : codings) {
        if (formatName == candidate.name)
            return candidate.coding;
    }
    return TexelCoding::Unknown;
}
