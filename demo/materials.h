// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>

/// Surfaces: square pictures that repeat without a seam.
namespace demo
{
/// The pictures come in two seasons; the second is what the demo's pictures to import show.
enum class Season { Summer, Winter };

QImage grass(int side, Season season);
QImage flowers(int side, Season season);
QImage dirt(int side, Season season);
QImage cobblestones(int side, Season season);
QImage sand(int side, Season season);
QImage bricks(int side, Season season);
QImage planks(int side, Season season);
QImage metalPlate(int side, Season season);
QImage leaves(int side, Season season);
QImage lava(int side);
QImage sky(int side, Season season);

/// The sixteen colours of water.
QVector<QRgb> waterPalette();
/// One of \a frames pictures of moving water, with the indices of the sixteen colours; in winter the pattern of ice.
QImage water(int side, int frame, int frames, Season season);
}
