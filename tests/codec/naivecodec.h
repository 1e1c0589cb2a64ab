// SPDX-License-Identifier: MIT
#pragma once

#include "model/textureformat.h"

#include <QByteArray>
#include <QColor>
#include <QDataStream>
#include <QImage>

#include <cmath>

/// The codec as one would write it down: a stream, a colour and setPixel() for every texel. What the quick one has to equal.
namespace naive
{
/// Places texels one after another, row by row, and drops those below the last row.
class Placer
{
public:
    explicit Placer(QImage *image) : m_image(image) { }

    void colour(int red, int green, int blue, int alpha)
    {
        QColor colour;
        colour.setRgb(red, green, blue, alpha);
        place(colour.rgba());
    }

    void index(int value) { place(uint(value)); }

private:
    void place(uint value)
    {
        const int column = m_next % m_image->width();
        const int row = m_next / m_image->width();
        ++m_next;
        if (row < m_image->height())
            m_image->setPixel(column, row, value);
    }

    QImage *m_image;
    int m_next = 0;
};

/// The picture in \a data for a width from 1 on, jpeg aside.
inline QImage generateTexture(const QByteArray &data, const textureFormat &format, int width, const QByteArray &palette)
{
    const int height = int(data.size() / format.bytesPerPixel / width);
    if (height == 0)
        return QImage();
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(qRgba(0, 0, 0, 0));
    if (format.usesPalette) {
        image = image.convertToFormat(QImage::Format_Indexed8);
        for (int i = 0; i < 256; ++i)
            image.setColor(i, qRgba(0, 0, 0, 255));
        const int used = format.name == "ci8" ? 256 : 16;
        const QImage colours = generateTexture(palette, textureFormats::rgb5a1, used, QByteArray());
        for (int i = 0; i < used && !colours.isNull(); ++i)
            image.setColor(i, colours.pixel(i, 0));
    }

    Placer placer(&image);
    QDataStream stream(data);
    while (!stream.atEnd()) {
        quint8 byte = 0;
        if (format.name == "rgba32") {
            quint8 red = 0, green = 0, blue = 0, alpha = 0;
            stream >> red >> green >> blue >> alpha;
            placer.colour(red, green, blue, alpha);
        } else if (format.name == "rgb5a1") {
            quint16 word = 0;
            stream >> word;
            placer.colour(word >> 8 & 0xF8, word >> 3 & 0xF8, (word & 0x3E) << 2, word & 1 ? 255 : 0);
        } else if (format.name == "i4") {
            stream >> byte;
            for (const int nibble : {byte >> 4, byte & 0xF})
                placer.colour(nibble * 17, nibble * 17, nibble * 17, nibble * 17);
        } else if (format.name == "ia4") {
            stream >> byte;
            for (const int nibble : {byte >> 4, byte & 0xF}) {
                const int intensity = int((nibble & 0xE) * 18.0 + 0.5);
                placer.colour(intensity, intensity, intensity, nibble & 1 ? 255 : 0);
            }
        } else if (format.name == "i8") {
            stream >> byte;
            placer.colour(byte, byte, byte, byte);
        } else if (format.name == "ia8") {
            stream >> byte;
            const int intensity = (byte >> 4) * 17;
            placer.colour(intensity, intensity, intensity, (byte & 0xF) * 17);
        } else if (format.name == "ia16") {
            quint8 alpha = 0;
            stream >> byte >> alpha;
            placer.colour(byte, byte, byte, alpha);
        } else if (format.name == "ci8") {
            stream >> byte;
            placer.index(byte);
        } else {
            stream >> byte;
            placer.index(byte >> 4);
            placer.index(byte & 0xF);
        }
    }
    return image;
}

/// Pixel number \a p as QImage hands it out; nothing but zeros beyond the last.
inline QRgb pixelNumber(const QImage &image, int p)
{
    const int row = p / image.width();
    return row < image.height() ? image.pixel(p % image.width(), row) : 0;
}

inline int indexNumber(const QImage &image, int p)
{
    const int row = p / image.width();
    return row < image.height() ? image.pixelIndex(p % image.width(), row) : 0;
}

inline int ia4Nibble(QRgb pixel)
{
    if (qAlpha(pixel) < 128)
        return 0;
    return (int(std::floor(qRed(pixel) / 18.0 * 0.5 + 0.5)) & 7) * 2 + 1;
}

/// The bytes of \a image in any format but jpeg.
inline QByteArray generateData(const QImage &image, const textureFormat &format)
{
    QByteArray result;
    const bool pairs = format.bytesPerPixel < 1;
    for (int p = 0; image.width() > 0 && p / image.width() < image.height(); p += pairs ? 2 : 1) {
        const QRgb pixel = format.usesPalette ? 0 : pixelNumber(image, p);
        const QRgb second = pairs && !format.usesPalette ? pixelNumber(image, p + 1) : 0;
        const int red = qRed(pixel);
        const int alpha = qAlpha(pixel);
        if (format.name == "rgba32") {
            result.append(char(alpha ? red : 0));
            result.append(char(alpha ? qGreen(pixel) : 0));
            result.append(char(alpha ? qBlue(pixel) : 0));
            result.append(char(alpha));
        } else if (format.name == "rgb5a1") {
            int word = 0;
            if (alpha == 255)
                word = (red / 8 << 11) + (qGreen(pixel) / 8 << 6) + qBlue(pixel) / 8 * 2 + 1;
            result.append(char(word >> 8));
            result.append(char(word & 0xFF));
        } else if (format.name == "i4") {
            result.append(char(red / 17 * 16 + qRed(second) / 17));
        } else if (format.name == "ia4") {
            result.append(char(ia4Nibble(pixel) * 16 + ia4Nibble(second)));
        } else if (format.name == "i8") {
            result.append(char(red));
        } else if (format.name == "ia8") {
            result.append(char(alpha ? int(std::floor(red / 17.0)) * 16 + int(std::floor(alpha / 17.0)) : 0));
        } else if (format.name == "ia16") {
            result.append(char(red));
            result.append(char(alpha));
        } else if (format.name == "ci8") {
            result.append(char(indexNumber(image, p)));
        } else {
            result.append(char(indexNumber(image, p) * 16 + indexNumber(image, p + 1)));
        }
    }
    return result;
}
}
