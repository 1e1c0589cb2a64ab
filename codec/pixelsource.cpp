// SPDX-License-Identifier: MIT
#include "codec/pixelsource.h"

#include "codec/texels.h"

#include <QVector>

#include <algorithm>
#include <cstring>

namespace
{
/// Calls part(y, x, offset, length) for each piece of a row that the \a count pixels from number \a first on are made of.
template<typename Part> void forEachRow(int width, qint64 first, int count, Part part)
{
    int y = int(first / width);
    int x = int(first % width);
    for (int done = 0; done < count; ++y) {
        const int length = std::min(count - done, width - x);
        part(y, x, done, length);
        done += length;
        x = 0;
    }
}

/// Converts 32-bit pixels, which need not be aligned: a picture may wrap foreign memory with rows of any length.
template<typename Conversion>
void copyConverted(const uchar *__restrict row, int x, int count, QRgb *__restrict out, Conversion converted)
{
    const uchar *__restrict from = row + 4 * qint64(x);
    for (int i = 0; i < count; ++i) {
        quint32 pixel = 0;
        std::memcpy(&pixel, from + 4 * qint64(i), sizeof pixel);
        out[i] = converted(pixel);
    }
}
}

PixelSource::PixelSource(const QImage &image) : m_image(image)
{
    const QVector<QRgb> table = image.colorTable();
    std::copy_n(table.constBegin(), std::min(table.size(), int(m_colourOf.size())), m_colourOf.begin());
}

const QRgb *PixelSource::wholePicture() const
{
    const QImage::Format format = m_image.format();
    if (format != QImage::Format_ARGB32 && format != QImage::Format_ARGB32_Premultiplied)
        return nullptr;
    const uchar *bits = m_image.constBits();
    if (qint64(m_image.bytesPerLine()) != 4 * qint64(m_image.width()) || quintptr(bits) % alignof(QRgb) != 0)
        return nullptr;
    return reinterpret_cast<const QRgb *>(bits);
}

void PixelSource::colours(qint64 first, int count, QRgb *out) const
{
    forEachRow(m_image.width(), first, count,
               [&](int y, int x, int offset, int length) { coloursOfRow(y, x, length, out + offset); });
}

void PixelSource::indices(qint64 first, int count, uchar *out) const
{
    forEachRow(m_image.width(), first, count,
               [&](int y, int x, int offset, int length) { indicesOfRow(y, x, length, out + offset); });
}

void PixelSource::coloursOfRow(int y, int x, int count, QRgb *__restrict out) const
{
    const uchar *__restrict row = m_image.constScanLine(y);
    switch (m_image.format()) {
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied: std::memcpy(out, row + 4 * qint64(x), 4 * size_t(count)); break;
    case QImage::Format_RGB32: copyConverted(row, x, count, out, [](quint32 pixel) { return pixel | 0xFF000000U; }); break;
    case QImage::Format_RGBX8888:
    case QImage::Format_RGBA8888:
    case QImage::Format_RGBA8888_Premultiplied: copyConverted(row, x, count, out, texels::fromRgbaBytes); break;
    case QImage::Format_RGB888:
        for (int i = 0; i < count; ++i) {
            const uchar *channels = row + 3 * qint64(x + i);
            out[i] = qRgb(channels[0], channels[1], channels[2]);
        }
        break;
    case QImage::Format_Grayscale8:
        for (int i = 0; i < count; ++i)
            out[i] = 0xFF000000U | row[x + i] * 0x010101U;
        break;
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
    case QImage::Format_Indexed8:
        for (int i = 0; i < count; ++i)
            out[i] = m_colourOf[size_t(m_image.format() == QImage::Format_Indexed8 ? row[x + i] : m_image.pixelIndex(x + i, y))];
        break;
    default:
        for (int i = 0; i < count; ++i)
            out[i] = m_image.pixel(x + i, y);
        break;
    }
}

void PixelSource::indicesOfRow(int y, int x, int count, uchar *out) const
{
    switch (m_image.format()) {
    case QImage::Format_Indexed8: std::memcpy(out, m_image.constScanLine(y) + x, size_t(count)); break;
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
        for (int i = 0; i < count; ++i)
            out[i] = uchar(m_image.pixelIndex(x + i, y));
        break;
    default:
        // Asked for an index, QImage would give 0 here too, with a warning for every pixel.
        std::memset(out, 0, size_t(count));
        break;
    }
}
