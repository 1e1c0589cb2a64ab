// SPDX-License-Identifier: MIT
#include "codec/encode.h"

#include "codec/texels.h"

#include <cstring>

namespace
{
template<typename Texel>
Q_ALWAYS_INLINE void encodePairs(const QRgb *__restrict pixels, qint64 count, uchar *__restrict out, Texel toNibble)
{
    const qint64 whole = count / 2;
    for (qint64 i = 0; i < whole; ++i)
        out[i] = uchar(toNibble(pixels[2 * i]) << 4 | toNibble(pixels[2 * i + 1]));
    if (count % 2)
        out[whole] = uchar(toNibble(pixels[count - 1]) << 4);
}

template<typename Word, typename Texel>
Q_ALWAYS_INLINE void encodeWords(const QRgb *__restrict pixels, qint64 count, uchar *__restrict out, Texel toWord)
{
    for (qint64 i = 0; i < count; ++i) {
        const Word word = Word(toWord(pixels[i]));
        std::memcpy(out + sizeof(Word) * size_t(i), &word, sizeof(Word));
    }
}

Q_ALWAYS_INLINE void encodeColoursInline(TexelCoding coding, const QRgb *pixels, qint64 count, uchar *out)
{
    switch (coding) {
    case TexelCoding::Rgba32: encodeWords<quint32>(pixels, count, out, texels::toRgba32); break;
    case TexelCoding::Rgb5a1:
        encodeWords<quint16>(pixels, count, out, [](QRgb pixel) { return texels::bigEndian(texels::toRgb5a1(pixel)); });
        break;
    case TexelCoding::I4: encodePairs(pixels, count, out, texels::toI4); break;
    case TexelCoding::Ia4: encodePairs(pixels, count, out, texels::toIa4); break;
    case TexelCoding::I8: encodeWords<quint8>(pixels, count, out, texels::toI8); break;
    case TexelCoding::Ia8: encodeWords<quint8>(pixels, count, out, texels::toIa8); break;
    case TexelCoding::Ia16:
        encodeWords<quint16>(pixels, count, out, [](QRgb pixel) { return texels::bigEndian(texels::toIa16(pixel)); });
        break;
    case TexelCoding::Ci8:
    case TexelCoding::Ci4:
    case TexelCoding::Jpeg:
    case TexelCoding::Unknown: break;
    }
}

void encodeColoursBaseline(TexelCoding coding, const QRgb *pixels, qint64 count, uchar *out)
{
    encodeColoursInline(coding, pixels, count, out);
}

QUILLARY_AVX2 void encodeColoursAvx2(TexelCoding coding, const QRgb *pixels, qint64 count, uchar *out)
{
    encodeColoursInline(coding, pixels, count, out);
}
}

void encodeColours(TexelCoding coding, const QRgb *pixels, qint64 count, uchar *out, CodePath path)
{
    if (path == CodePath::Avx2)
        encodeColoursAvx2(coding, pixels, count, out);
    else
        encodeColoursBaseline(coding, pixels, count, out);
}

void packIndexPairs(const uchar *indices, qint64 count, uchar *out)
{
    const uchar *__restrict pixels = indices;
    uchar *__restrict bytes = out;
    const qint64 whole = count / 2;
    for (qint64 i = 0; i < whole; ++i)
        bytes[i] = uchar((pixels[2 * i] << 4) + pixels[2 * i + 1]);
    if (count % 2)
        bytes[whole] = uchar(pixels[count - 1] << 4);
}
