// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>

/// Pictures of text, from a pixel font of capital letters, digits and a few signs.
namespace demo
{
/// \a text in \a colour on a clear ground: seven pixels high, six wide for each character but the last. Characters that the font
/// lacks stay blank.
QImage text(const QString &text, QRgb colour);
/// The whole font, white on clear ground: sixteen columns and four rows of cells of 8 x 8 pixels.
QImage fontSheet();
/// The program's name in gold, 192 x 40 pixels.
QImage logo(QRgb top, QRgb bottom);
/// A line of text on a fading band, in shades of grey with alpha.
QImage banner(const QString &line, int width, int height);
/// The ten digits in cells of 16 x 16 pixels, white with a black outline.
QImage digits();
}
