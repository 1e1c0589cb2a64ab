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
        image.fill(0); // Unspecified: the rule converts pixels that were never set.
        for (int i = 0; i < 256; ++i)
            image.setColor(i, qRgba(0, 0, 0, 255));
    }
    if (format.name == "ci8" || format.name == "ci4") {
        const int used = format.name == "ci8" ? 256 : 16;
        const QImage colours = generateTexture(palette, textureFormats::rgb5a1, used, QByteArray());
        for (int i = 0; i < used && !colours.isNull(); ++i)
            image.setColor(i, colours.pixel(i, 0));
    }

    Placer placer(&image);
    QDataStream stream(data);
    const auto untilTheEnd = [&stream](auto step) {
        while (!stream.atEnd())
            step();
    };
    const auto byte = [&stream] {
        quint8 value = 0;
        stream >> value;
        return int(value);
    };
    if (format.name == "rgba32") {
        untilTheEnd([&] {
            const int red = byte();
            const int green = byte();
            const int blue = byte();
            placer.colour(red, green, blue, byte());
        });
    } else if (format.name == "rgb5a1") {
        untilTheEnd([&] {
            quint16 word = 0;
            stream >> word;
            placer.colour(word >> 8 & 0xF8, word >> 3 & 0xF8, (word & 0x3E) << 2, word & 1 ? 255 : 0);
        });
    } else if (format.name == "i4") {
        untilTheEnd([&] {
            const int both = byte();
            for (const int nibble : {both >> 4, both & 0xF})
                placer.colour(nibble * 17, nibble * 17, nibble * 17, nibble * 17);
        });
    } else if (format.name == "ia4") {
        untilTheEnd([&] {
            const int both = byte();
            for (const int nibble : {both >> 4, both & 0xF}) {
                const int intensity = int((nibble & 0xE) * 18.0 + 0.5);
                placer.colour(intensity, intensity, intensity, nibble & 1 ? 255 : 0);
            }
        });
    } else if (format.name == "i8") {
        untilTheEnd([&] {
            const int intensity = byte();
            placer.colour(intensity, intensity, intensity, intensity);
        });
    } else if (format.name == "ia8") {
        untilTheEnd([&] {
            const int both = byte();
            const int intensity = (both >> 4) * 17;
            placer.colour(intensity, intensity, intensity, (both & 0xF) * 17);
        });
    } else if (format.name == "ia16") {
        untilTheEnd([&] {
            const int intensity = byte();
            placer.colour(intensity, intensity, intensity, byte());
        });
    } else if (format.name == "ci8") {
        untilTheEnd([&] { placer.index(byte()); });
    } else {
        untilTheEnd([&] {
            const int both = byte();
            placer.index(both >> 4);
            placer.index(both & 0xF);
        });
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
    // Calls step(p) for every pixel number p, or every other one.
    const auto fromPixelToPixel = [&image](int distance, auto step) {
        for (int p = 0; image.width() > 0 && p / image.width() < image.height(); p += distance)
            step(p);
    };
    if (format.name == "rgba32") {
        fromPixelToPixel(1, [&](int p) {
            const QRgb pixel = pixelNumber(image, p);
            const bool visible = qAlpha(pixel) != 0;
            result.append(char(visible ? qRed(pixel) : 0));
            result.append(char(visible ? qGreen(pixel) : 0));
            result.append(char(visible ? qBlue(pixel) : 0));
            result.append(char(qAlpha(pixel)));
        });
    } else if (format.name == "rgb5a1") {
        fromPixelToPixel(1, [&](int p) {
            const QRgb pixel = pixelNumber(image, p);
            int word = 0;
            if (qAlpha(pixel) == 255)
                word = (qRed(pixel) / 8 << 11) + (qGreen(pixel) / 8 << 6) + qBlue(pixel) / 8 * 2 + 1;
            result.append(char(word >> 8));
            result.append(char(word & 0xFF));
        });
    } else if (format.name == "i4") {
        fromPixelToPixel(
            2, [&](int p) { result.append(char(qRed(pixelNumber(image, p)) / 17 * 16 + qRed(pixelNumber(image, p + 1)) / 17)); });
    } else if (format.name == "ia4") {
        fromPixelToPixel(
            2, [&](int p) { result.append(char(ia4Nibble(pixelNumber(image, p)) * 16 + ia4Nibble(pixelNumber(image, p + 1)))); });
    } else if (format.name == "i8") {
        fromPixelToPixel(1, [&](int p) { result.append(char(qRed(pixelNumber(image, p)))); });
    } else if (format.name == "ia8") {
        fromPixelToPixel(1, [&](int p) {
            const QRgb pixel = pixelNumber(image, p);
            const int intensity = int(std::floor(qRed(pixel) / 17.0));
            const int alpha = int(std::floor(qAlpha(pixel) / 17.0));
            result.append(char(qAlpha(pixel) ? intensity * 16 + alpha : 0));
        });
    } else if (format.name == "ia16") {
        fromPixelToPixel(1, [&](int p) {
            const QRgb pixel = pixelNumber(image, p);
            result.append(char(qRed(pixel)));
            result.append(char(qAlpha(pixel)));
        });
    } else if (format.name == "ci8") {
        fromPixelToPixel(1, [&](int p) { result.append(char(indexNumber(image, p))); });
    } else {
        fromPixelToPixel(2, [&](int p) { result.append(char(indexNumber(image, p) * 16 + indexNumber(image, p + 1))); });
    }
    return result;
}
}
