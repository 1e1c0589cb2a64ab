// SPDX-License-Identifier: MIT
#pragma once

#include "demo/materials.h"

#include <QImage>

/// Figures and things on a clear ground.
namespace demo
{
enum class Heart { Full, Half, Empty };

/// 16 x 16 pixels.
QImage heart(Heart state, Season season);
/// 32 x 32 pixels.
QImage gem(Season season);
QImage mushroom(Season season);
QImage key();
QImage leaf(Season season);

/// The sixteen colours of coins; the first is clear.
QVector<QRgb> coinPalette();
/// One of four pictures of a turning coin, 32 x 32 pixels, with the indices of the sixteen colours.
QImage coin(int frame);
/// The sixteen colours of slimes; the first is clear.
QVector<QRgb> slimePalette();
/// One of two pictures of a hopping slime, 32 x 32 pixels, with the indices of the sixteen colours.
QImage slime(int frame);

/// An owl's portrait, 64 x 64 pixels; in winter with a scarf.
QImage owl(Season season);

/// Lights in shades of grey with alpha.
QImage glow(int side);
QImage flare(int side);
/// Shades of grey alone.
QImage smoke(int side);
QImage shadow(int side);
QImage rain(int side);
/// A disc with rays, in colour with alpha.
QImage sun(int side, Season season);
}
