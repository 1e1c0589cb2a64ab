// SPDX-License-Identifier: MIT
#include "codec/decode.h"

#include "codec/texels.h"

#include <array>
#include <cstring>

namespace
{
struct PixelPair
{
    QRgb pixels[2];
};

/// The colours of the two texels in each value of a byte: the one in the high nibble comes first.
template<typename Texel> constexpr std::array<PixelPair, 256> pairsOf(Texel fromNibble)
{
    std::array<PixelPair, 256> pairs {};
    for (quint32 byte = 0; byte < 256; ++byte)
        pairs[byte] = {{fromNibble(byte >> 4), fromNibble(byte & 0xF)}};
    return pairs;
}

constexpr std::array<PixelPair, 256> pairsOfI4 = pairsOf(texels::fromI4);
constexpr std::array<PixelPair, 256> pairsOfIa4 = pairsOf(texels::fromIa4);

Q_ALWAYS_INLINE void decodePairs(const std::array<PixelPair, 256> &pairs, const uchar *__restrict data, QRgb *__restrict pixels,
                                 qint64 count)
{
    const qint64 whole = count / 2;
    for (qint64 i = 0; i < whole; ++i)
        std::memcpy(pixels + 2 * i, &pairs[data[i]], sizeof(PixelPair));
    if (count % 2)
        pixels[count - 1] = pairs[data[whole]].pixels[0];
}

/// The loop behind the codings of whole bytes: one word of type Word, as this machine loads it, is one texel.
template<typename Word, typename Texel>
Q_ALWAYS_INLINE void decodeWords(const uchar *__restrict data, QRgb *__restrict pixels, qint64 count, Texel fromWord)
{
    for (qint64 i = 0; i < count; ++i) {
        Word word;
        std::memcpy(&word, data + sizeof(Word) * size_t(i), sizeof(Word));
        pixels[i] = fromWord(word);
    }
}

Q_ALWAYS_INLINE void decodeColoursInline(TexelCoding coding, const uchar *data, QRgb *pixels, qint64 count)
{
    switch (coding) {
    case TexelCoding::Rgba32: decodeWords<quint32>(data, pixels, count, texels::fromRgbaBytes); break;
    case TexelCoding::Rgb5a1:
        decodeWords<quint16>(data, pixels, count, [](quint32 word) { return texels::fromRgb5a1(texels::bigEndian(word)); });
        break;
    case TexelCoding::I4: decodePairs(pairsOfI4, data, pixels, count); break;
    case TexelCoding::Ia4: decodePairs(pairsOfIa4, data, pixels, count); break;
    case TexelCoding::I8: decodeWords<quint8>(data, pixels, count, texels::fromI8); break;
    case TexelCoding::Ia8: decodeWords<quint8>(data, pixels, count, texels::fromIa8); break;
    case TexelCoding::Ia16:
        decodeWords<quint16>(data, pixels, count, [](quint32 word) { return texels::fromIa16(texels::bigEndian(word)); });
        break;
    case TexelCoding::Ci8:
    case TexelCoding::Ci4:
    case TexelCoding::Jpeg:
    case TexelCoding::Unknown: break;
    }
}

void decodeColoursBaseline(TexelCoding coding, const uchar *data, QRgb *pixels, qint64 count)
{
    decodeColoursInline(coding, data, pixels, count);
}

QUILLARY_AVX2 void decodeColoursAvx2(TexelCoding coding, const uchar *data, QRgb *pixels, qint64 count)
{
    decodeColoursInline(coding, data, pixels, count);
}
}

void decodeColours(TexelCoding coding, const uchar *data, QRgb *pixels, qint64 count, CodePath path)
{
    if (path == CodePath::Avx2)
        decodeColoursAvx2(coding, data, pixels, count);
    else
        decodeColoursBaseline(coding, data, pixels, count);
}

void decodeIndices(TexelCoding coding, const uchar *data, qint64 first, uchar *indices, qint64 count)
{
    if (coding == TexelCoding::Ci8) {
        std::memcpy(indices, data + first, size_t(count));
    } else if (coding == TexelCoding::Ci4) {
        const uchar *__restrict bytes = data + first / 2;
        uchar *__restrict row = indices;
        if (first % 2 && count > 0) {
            *row++ = *bytes++ & 0xF;
            --count;
        }
        const qint64 whole = count / 2;
        for (qint64 i = 0; i < whole; ++i) {
            row[2 * i] = uchar(bytes[i] >> 4);
            row[2 * i + 1] = bytes[i] & 0xF;
        }
        if (count % 2)
            row[count - 1] = uchar(bytes[whole] >> 4);
    }
}
