// SPDX-License-Identifier: MIT
#include "codec/texturemanipulator.h"

#include "codec/decode.h"
#include "codec/encode.h"
#include "codec/pictureloader.h"
#include "codec/pixelsource.h"

#include <QBuffer>
#include <QImageReader>
#include <QVector>

#include <algorithm>
#include <array>
#include <limits>

namespace
{
/// Pixels that one step of encoding takes where a picture has to be converted first: even, so that pairs stay together, and few
/// enough to stay in the first cache.
constexpr int chunkPixels = 2048;

const uchar *bytesOf(const QByteArray &data)
{
    return reinterpret_cast<const uchar *>(data.constData());
}

/// A JPEG may claim any size up to 65,535 x 65,535 in a few bytes: the claim is looked at before room is made for it.
QImage jpegPicture(const QByteArray &data)
{
    // The reader warns in the log about data that is none, as the entries of a table often have.
    if (!data.startsWith("\xFF\xD8"))
        return QImage();
    QBuffer buffer;
    buffer.setData(data);
    const QSize size = QImageReader(&buffer, "JPEG").size();
    QImage image;
    if (size.isValid() && isAcceptablePictureSize(size))
        image.loadFromData(data, "JPEG");
    return image;
}

/// Whole rows of \a width pixels that \a bytes bytes hold; 0 where the numbers make no sense.
int wholeRows(int bytes, double bytesPerPixel, int width)
{
    if (!(bytesPerPixel > 0) || width <= 0)
        return 0;
    const double rows = double(bytes) / bytesPerPixel / width;
    return rows <= std::numeric_limits<int>::max() ? int(rows) : 0;
}

/// The 256 entries of a colour table that the rgb5a1 words in \a palette give: all colours of the coding, or none.
QVector<QRgb> colourTable(TexelCoding coding, const QByteArray &palette)
{
    QVector<QRgb> colours(256, qRgba(0, 0, 0, 255));
    if (!isIndexed(coding))
        return colours;
    const textureFormat &format = coding == TexelCoding::Ci8 ? textureFormats::ci8 : textureFormats::ci4;
    if (palette.size() >= textureFormats::paletteBytes(format))
        decodeColours(TexelCoding::Rgb5a1, bytesOf(palette), colours.data(), textureFormats::paletteColours(format));
    return colours;
}

/// Texels in \a data, with the missing bytes of a last one added as zeros. A record whose bytes per pixel do not fit its coding
/// can show it. A cut rgb5a1 word is read as 0.
qint64 completeTexels(TexelCoding coding, QByteArray *data)
{
    const int texelBytes = bitsPerTexel(coding) / 8;
    const int rest = texelBytes > 1 ? data->size() % texelBytes : 0;
    if (rest > 0) {
        if (coding == TexelCoding::Rgb5a1)
            data->chop(rest);
        data->append(QByteArray(coding == TexelCoding::Rgb5a1 ? texelBytes : texelBytes - rest, '\0'));
    }
    return qint64(data->size()) * 8 / bitsPerTexel(coding);
}

/// \a texels texels of \a data, row by row, as colour indices; where there are fewer than the image has pixels, the rest is 0.
void fillIndices(TexelCoding coding, const QByteArray &data, qint64 texels, QImage *image)
{
    const int width = image->width();
    for (int y = 0; y < image->height(); ++y) {
        const qint64 first = qint64(y) * width;
        const int present = int(qBound(qint64(0), texels - first, qint64(width)));
        uchar *row = image->scanLine(y);
        decodeIndices(coding, bytesOf(data), first, row, present);
        std::fill(row + present, row + width, uchar(0));
    }
}

/// As fillIndices(), as colours, with transparent black for the rest. Rows of 32-bit pixels follow each other without a gap, so
/// the image is filled as if it were one row.
void fillColours(TexelCoding coding, const QByteArray &data, qint64 texels, QImage *image)
{
    const qint64 count = qint64(image->width()) * image->height();
    const qint64 present = std::min(count, texels);
    QRgb *pixels = reinterpret_cast<QRgb *>(image->bits());
    decodeColours(coding, bytesOf(data), pixels, present);
    std::fill(pixels + present, pixels + count, 0U);
}

/// An image without a colour table takes the index itself as the pixel's value.
void fillIndicesAsColours(TexelCoding coding, const QByteArray &data, qint64 texels, QImage *image)
{
    QImage indices(image->size(), QImage::Format_Indexed8);
    fillIndices(coding, data, texels, &indices);
    for (int y = 0; y < image->height(); ++y)
        std::copy_n(indices.constScanLine(y), image->width(), reinterpret_cast<QRgb *>(image->scanLine(y)));
}

/// An image with a colour table takes a colour's value as an index, and ignores those above 255.
void fillColoursAsIndices(TexelCoding coding, const QByteArray &data, qint64 texels, QImage *image)
{
    QImage colours(image->size(), QImage::Format_ARGB32);
    fillColours(coding, data, texels, &colours);
    for (int y = 0; y < image->height(); ++y) {
        const QRgb *from = reinterpret_cast<const QRgb *>(colours.constScanLine(y));
        std::transform(from, from + image->width(), image->scanLine(y),
                       [](QRgb colour) { return uchar(colour < 256 ? colour : 0); });
    }
}

QByteArray encodedColours(TexelCoding coding, const PixelSource &source, int bytes)
{
    QByteArray result(bytes, Qt::Uninitialized);
    auto *out = reinterpret_cast<uchar *>(result.data());
    if (const QRgb *pixels = source.wholePicture()) {
        encodeColours(coding, pixels, source.count(), out);
        return result;
    }
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): clearing it takes as long as encoding a small texture
    std::array<QRgb, chunkPixels> chunk;
    for (qint64 first = 0; first < source.count(); first += chunkPixels) {
        const int count = int(std::min(source.count() - first, qint64(chunkPixels)));
        source.colours(first, count, chunk.data());
        encodeColours(coding, chunk.data(), count, out + first * bitsPerTexel(coding) / 8);
    }
    return result;
}

QByteArray encodedIndices(TexelCoding coding, const PixelSource &source, int bytes)
{
    QByteArray result(bytes, Qt::Uninitialized);
    auto *out = reinterpret_cast<uchar *>(result.data());
    if (coding == TexelCoding::Ci8) {
        source.indices(0, bytes, out);
        return result;
    }
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): clearing it takes as long as encoding a small texture
    std::array<uchar, chunkPixels> chunk;
    for (qint64 first = 0; first < source.count(); first += chunkPixels) {
        const int count = int(std::min(source.count() - first, qint64(chunkPixels)));
        source.indices(first, count, chunk.data());
        packIndexPairs(chunk.data(), count, out + first / 2);
    }
    return result;
}
}

QImage textureManipulator::generateTexture(QByteArray data, textureFormat format, int width, QByteArray palette)
{
    const TexelCoding coding = codingOf(format.name);
    if (coding == TexelCoding::Jpeg)
        return jpegPicture(data);
    const int height = wholeRows(data.size(), format.bytesPerPixel, width);
    if (coding == TexelCoding::Unknown || height == 0)
        return QImage();
    QImage image(width, height, format.usesPalette ? QImage::Format_Indexed8 : QImage::Format_ARGB32);
    if (image.isNull())
        return image;
    if (format.usesPalette)
        image.setColorTable(colourTable(coding, palette));
    const qint64 texels = completeTexels(coding, &data);
    // Every record of the format table has a palette exactly if its coding is indexed; others get what the two rules give.
    if (isIndexed(coding))
        (format.usesPalette ? fillIndices : fillIndicesAsColours)(coding, data, texels, &image);
    else
        (format.usesPalette ? fillColoursAsIndices : fillColours)(coding, data, texels, &image);
    return image;
}

QByteArray textureManipulator::generateData(QImage image, textureFormat format)
{
    const TexelCoding coding = codingOf(format.name);
    if (coding == TexelCoding::Unknown || coding == TexelCoding::Jpeg || image.isNull())
        return QByteArray();
    const PixelSource source(image);
    const qint64 bytes = (source.count() * bitsPerTexel(coding) + 7) / 8;
    // A byte array is shorter than 2 GiB; a picture that encodes to more fits no cartridge either.
    constexpr qint64 maximumBytes = std::numeric_limits<int>::max() / 2;
    if (bytes > maximumBytes)
        return QByteArray();
    return isIndexed(coding) ? encodedIndices(coding, source, int(bytes)) : encodedColours(coding, source, int(bytes));
}
