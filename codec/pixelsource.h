// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>

#include <array>

/// Hands out the pixels of a picture of any format in reading order, with the values of QImage::pixel() and pixelIndex(), many at
/// a time. The picture must outlive it unchanged.
class PixelSource
{
public:
    explicit PixelSource(const QImage &image);

    /// Number of pixels.
    qint64 count() const { return qint64(m_image.width()) * m_image.height(); }

    /// All pixels in one piece, where the picture holds them so in memory; else null, and colours() has to be asked.
    const QRgb *wholePicture() const;

    /// Copies the \a count pixels from number \a first on. Both must lie within the picture. An index outside the colour table
    /// gives 0. Premultiplied formats give their stored values.
    void colours(qint64 first, int count, QRgb *out) const;

    /// Copies the colour indices of the \a count pixels from number \a first on: 0 for pictures without indices.
    void indices(qint64 first, int count, uchar *out) const;

private:
    void coloursOfRow(int y, int x, int count, QRgb *out) const;
    void indicesOfRow(int y, int x, int count, uchar *out) const;

    const QImage &m_image;
    std::array<QRgb, 256> m_colourOf {}; ///< Colour of each index, for indexed and monochrome pictures.
};
