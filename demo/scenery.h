// SPDX-License-Identifier: MIT
#pragma once

#include "demo/materials.h"

#include <QImage>

namespace demo
{
/// A wide landscape of hills, a lake and a castle.
QImage panorama(int width, int height, Season season);
/// The island of the game from above, in at most 64 colours, as Format_Indexed8 with 256 of them.
QImage islandMap(int side);
/// A label for the cartridge, 64 x 64 pixels.
QImage label();
}
