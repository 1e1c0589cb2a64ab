// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QVector>

/// Drawing with whole numbers alone, so that the demo's art is the same to the last bit on every machine.
namespace demo
{
/// A picture of \a width x \a height pixels in Format_ARGB32, each from \a colourAt(x, y).
template<typename Function> QImage painted(int width, int height, Function colourAt)
{
    QImage picture(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            picture.setPixel(x, y, colourAt(x, y));
    }
    return picture;
}

/// A picture of palette indices with the colours of \a palette (at most 256).
template<typename Function> QImage indexPainted(int width, int height, const QVector<QRgb> &palette, Function indexAt)
{
    QImage picture(width, height, QImage::Format_Indexed8);
    picture.setColorTable(palette);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            picture.setPixel(x, y, static_cast<uint>(indexAt(x, y)));
    }
    return picture;
}

/// \a value cut to \a low .. \a high.
int clamped(int value, int low = 0, int high = 255);
/// The square root, rounded down; 0 for negative values.
int squareRoot(int value);
/// \a from and \a to mixed, alpha included: \a amount 0 gives \a from, 256 gives \a to; it is cut to that range.
QRgb mixed(QRgb from, QRgb to, int amount);
/// \a colour with \a amount (-255 .. 255) added to red, green and blue.
QRgb lightened(QRgb colour, int amount);
QRgb grey(int value, int alpha = 255);
QRgb withAlpha(QRgb colour, int alpha);
/// The colour at \a position (0 .. 255) of a gradient of evenly spaced stops (at least one), in between mixed.
QRgb gradient(const QVector<QRgb> &stops, int position);
/// \a count colours (at least 2) along such a gradient.
QVector<QRgb> ramp(const QVector<QRgb> &stops, int count);

/// A number from the coordinates alone, evenly spread over 32 bits.
quint32 scattered(int x, int y, int seed);
/// The same, from 0 to \a bound - 1.
int scatteredBelow(int bound, int x, int y, int seed);
/// Smooth noise from 0 to 255 that repeats every \a period pixels: \a octaves layers, the first with cells of \a cell pixels,
/// each further one half as large and half as strong. Cells down to one pixel have to divide the period.
int noise(int x, int y, int period, int cell, int octaves, int seed);

/// Which of the stones of a repeating pavement covers a pixel.
struct Stone
{
    int column = 0; ///< Together with row: which stone.
    int row = 0;
    int offsetX = 0; ///< From the stone's centre, in sixteenths of a pixel.
    int offsetY = 0;
    int toBorder = 0; ///< How much further the next stone's centre is, in sixteenths of a pixel.
};
/// The stone at a pixel of a tile of \a period pixels with \a across x \a across stones. \a drift moves the centres in circles:
/// 256 is once around.
Stone stoneAt(int x, int y, int period, int across, int seed, int drift = 0);

/// Squared distance from the centre of an ellipse: below 256 inside, 256 on its edge.
int ellipse(int x, int y, int centreX, int centreY, int radiusX, int radiusY);

/// Sixteen steps of a sine wave: \a angle in 256ths of a turn, the result from -64 to 64.
int sine(int angle);

/// Twice as large, with diagonals smoothed: corners between equal neighbours take their colour.
QImage enlarged(const QImage &picture);
/// \a picture with an outline of \a colour, a pixel wide, where it is clear (alpha 0) beside a pixel that is not.
QImage outlined(const QImage &picture, QRgb colour);
/// \a top drawn onto \a picture at (\a left, \a upper); clear pixels of \a top leave it as it is, others are mixed by their
/// alpha.
void drawOnto(QImage *picture, const QImage &top, int left, int upper);
/// \a picture with at most \a colours colours (256 or 16) of five bits a channel, as Format_Indexed8.
QImage withPalette(const QImage &picture, int colours);
}
