// SPDX-License-Identifier: MIT
#include "demo/materials.h"

#include "demo/canvas.h"

namespace demo
{
namespace
{
using Stops = QVector<QRgb>;

Stops grassColours(Season season)
{
    return season == Season::Summer ? Stops {0xFF1F5A2A, 0xFF2F7F33, 0xFF4BA03C, 0xFF7CC452, 0xFFB2E070}
                                    : Stops {0xFF8FA9C4, 0xFFB9CDE0, 0xFFDCE7F1, 0xFFEFF5FA, 0xFFFFFFFF};
}

/// A few blades over \a picture, each a light stroke on a dark foot. They cross the tile's edges.
void addBlades(QImage *picture, const Stops &colours, int count, int seed)
{
    const int side = picture->width();
    for (int i = 0; i < count; ++i) {
        const int x = scatteredBelow(side, i, 0, seed);
        const int y = scatteredBelow(side, i, 1, seed);
        const int length = 2 + scatteredBelow(3, i, 2, seed);
        for (int step = 0; step < length; ++step)
            picture->setPixel(x, (y - step + side) % side, gradient(colours, 60 + step * 170 / length));
    }
}

void dust(QImage *picture, QRgb colour, int threshold, int seed)
{
    const int side = picture->width();
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const int cover = noise(x, y, side, side / 4, 4, seed) - threshold;
            if (cover > 0)
                picture->setPixel(x, y, mixed(picture->pixel(x, y), colour, clamped(cover * 10, 0, 230)));
        }
    }
}

QImage winterly(QImage picture, Season season, int threshold, int seed)
{
    if (season == Season::Winter)
        dust(&picture, 0xFFF2F7FC, threshold, seed);
    return picture;
}
}

QImage grass(int side, Season season)
{
    const Stops colours = grassColours(season);
    QImage picture =
        painted(side, side, [&](int x, int y) { return gradient(colours, 20 + noise(x, y, side, side / 4, 4, 11) * 3 / 4); });
    addBlades(&picture, colours, side * side / 12, 12);
    return picture;
}

QImage flowers(int side, Season season)
{
    static const QRgb petals[] = {0xFFF6F2FF, 0xFFFFD23F, 0xFFEF6F9A, 0xFF9D8CFF};
    QImage picture = grass(side, season);
    for (int i = 0; i < side / 4; ++i) {
        const int x = 1 + scatteredBelow(side - 2, i, 0, 21);
        const int y = 1 + scatteredBelow(side - 2, i, 1, 21);
        const QRgb petal = season == Season::Winter ? 0xFF9CC7EE : petals[i % 4];
        picture.setPixel(x - 1, y, petal);
        picture.setPixel(x + 1, y, petal);
        picture.setPixel(x, y - 1, lightened(petal, 20));
        picture.setPixel(x, y + 1, lightened(petal, -30));
        picture.setPixel(x, y, petal == 0xFFFFD23F ? 0xFFC8741A : 0xFFFFD23F);
    }
    return picture;
}

QImage dirt(int side, Season season)
{
    const Stops colours {0xFF4A2E1B, 0xFF6E4526, 0xFF8D5F36, 0xFFA97B4B};
    const QImage picture = painted(side, side, [&](int x, int y) {
        const Stone pebble = stoneAt(x, y, side, side / 4, 31);
        const int shade = noise(x, y, side, side / 4, 4, 32);
        if (scatteredBelow(4, pebble.column, pebble.row, 33) == 0 && pebble.toBorder > 26)
            return lightened(0xFF9A8467, clamped(-(pebble.offsetX + pebble.offsetY), -40, 40));
        return gradient(colours, shade);
    });
    return winterly(picture, season, 135, 34);
}

QImage cobblestones(int side, Season season)
{
    const QImage picture = painted(side, side, [&](int x, int y) {
        const Stone stone = stoneAt(x, y, side, 4, 41);
        const int grain = noise(x, y, side, side / 8, 3, 42) - 128;
        const int width = stone.toBorder * 32 / side;
        if (width < 14)
            return lightened(0xFF3A3733, grain / 6);
        const QRgb tone =
            gradient({0xFF6F6A66, 0xFF8B857C, 0xFFA39A8B, 0xFF7E8388}, scatteredBelow(256, stone.column, stone.row, 43));
        const int light = -(stone.offsetX + stone.offsetY) * 32 / side / 3;
        return lightened(tone, clamped(light, -48, 48) + grain / 5 - (width < 26 ? 22 : 0));
    });
    return winterly(picture, season, 130, 44);
}

QImage sand(int side, Season season)
{
    const QImage picture = painted(side, side, [&](int x, int y) {
        const int ripple = sine(y * 256 * 4 / side + noise(x, y, side, side / 2, 2, 51));
        return gradient({0xFFC79A55, 0xFFE0BC76, 0xFFF3DCA0}, 128 + ripple + scatteredBelow(30, x, y, 52) - 15);
    });
    return winterly(picture, season, 140, 53);
}

QImage bricks(int side, Season season)
{
    const int height = side / 4;
    const int width = side / 2;
    const QImage picture = painted(side, side, [&](int x, int y) {
        const int row = y / height;
        const int shifted = (x + (row % 2) * width / 2) % side;
        const int inX = shifted % width;
        const int inY = y % height;
        const int grain = noise(x, y, side, side / 8, 3, 61) - 128;
        const int joint = qMax(1, side / 32);
        if (inX < joint || inY < joint)
            return lightened(0xFFB5A48E, grain / 5);
        const QRgb tone =
            gradient({0xFF8C3526, 0xFFA6452F, 0xFFB85A3C, 0xFF95402F}, scatteredBelow(256, shifted / width, row, 62));
        int light = grain / 5;
        if (inY == joint || inX == joint)
            light += 32;
        else if (inY == height - 1 || inX == width - 1)
            light -= 38;
        return lightened(tone, light);
    });
    return winterly(picture, season, 150, 63);
}

QImage planks(int side, Season season)
{
    const int width = side / 4;
    const QImage picture = painted(side, side, [&](int x, int y) {
        const int plank = x / width;
        const int inX = x % width;
        const int along = (y + plank * side * 3 / 8) % side;
        const int grain = noise(x * 4 % side, y, side, side / 2, 4, 71 + plank) - 128;
        QRgb tone = lightened(gradient({0xFF7A4C26, 0xFF92602F, 0xFFA87239}, scatteredBelow(256, plank, 0, 72)), grain / 4);
        if (inX == 0 || along == 0)
            return lightened(tone, -58);
        if (inX == 1 || along == 1)
            return lightened(tone, 26);
        if ((along == 3 || along == side - 3) && inX == width / 2)
            return QRgb(0xFF3D2A1A);
        return tone;
    });
    return winterly(picture, season, 150, 73);
}

QImage metalPlate(int side, Season season)
{
    const int rivet = side / 8;
    const QImage picture = painted(side, side, [&](int x, int y) {
        const int edge = qMin(qMin(x, side - 1 - x), qMin(y, side - 1 - y));
        const int brushed = noise(x, y * 8 % side, side, side / 4, 3, 81) - 128;
        QRgb tone = lightened(gradient({0xFFA9B3BF, 0xFF7D8896, 0xFF94A0AE}, y * 255 / side), brushed / 6);
        if (edge == 0)
            return lightened(tone, x + y < side ? 46 : -58);
        if (edge == 1)
            return lightened(tone, x + y < side ? 18 : -30);
        const int cornerX = qMin(x, side - 1 - x);
        const int cornerY = qMin(y, side - 1 - y);
        const int toRivet = ellipse(cornerX, cornerY, rivet, rivet, qMax(2, side / 16), qMax(2, side / 16));
        if (toRivet < 256) {
            const bool lit =
                (x < side / 2 ? x - rivet : x - (side - 1 - rivet)) + (y < side / 2 ? y - rivet : y - (side - 1 - rivet)) < 0;
            return lightened(tone, lit ? 52 : -26);
        }
        if (toRivet < 480)
            return lightened(tone, -44);
        return tone;
    });
    return winterly(picture, season, 150, 82);
}

QImage leaves(int side, Season season)
{
    const Stops colours = season == Season::Summer ? Stops {0xFF143C1E, 0xFF256B2B, 0xFF3F8F35, 0xFF79B94A}
                                                   : Stops {0xFF33495E, 0xFF7C97AE, 0xFFCBDBE8, 0xFFFFFFFF};
    return painted(side, side, [&](int x, int y) {
        const Stone leaf = stoneAt(x, y, side, side / 5, 91);
        if (leaf.toBorder < 8 && scatteredBelow(3, leaf.column, leaf.row, 92) == 0)
            return QRgb(0);
        const int light = 128 - (leaf.offsetX + leaf.offsetY * 2) + scatteredBelow(70, leaf.column, leaf.row, 93) - 35;
        return gradient(colours, light - (leaf.toBorder < 10 ? 60 : 0));
    });
}

QImage lava(int side)
{
    return painted(side, side, [&](int x, int y) {
        const Stone crust = stoneAt(x, y, side, 4, 101);
        const int heat = 255 - crust.toBorder * 64 / side * 2 + (noise(x, y, side, side / 4, 3, 102) - 128) / 2;
        return gradient({0xFF1D1010, 0xFF3A1512, 0xFF8E1E0E, 0xFFE8590C, 0xFFFFB01F, 0xFFFFF1A0}, heat);
    });
}

QImage sky(int side, Season season)
{
    const Stops air =
        season == Season::Summer ? Stops {0xFF2B6FD0, 0xFF5AA5EC, 0xFFA9DAFA} : Stops {0xFF6F8299, 0xFF9DB0C4, 0xFFD3DEE8};
    return painted(side, side, [&](int x, int y) {
        // A checked pattern of half a step hides the bands that five bits a channel would show.
        const int dither = (x + y) % 2 * 4;
        const int cloud = noise(x, y * 2 % side, side, side / 2, 4, 111) - 128;
        const QRgb tone = lightened(gradient(air, y * 255 / side), dither);
        return mixed(tone, season == Season::Summer ? 0xFFFFFFFF : 0xFFF4F6F8, clamped(cloud * 6, 0, 230));
    });
}

QVector<QRgb> waterPalette()
{
    return ramp({0xFF0B3C78, 0xFF14579C, 0xFF2078BE, 0xFF3FA0DA, 0xFF8FD3F2, 0xFFF4FDFF}, 16);
}

QImage water(int side, int frame, int frames, Season season)
{
    return indexPainted(side, side, waterPalette(), [&](int x, int y) {
        if (season == Season::Winter) {
            const Stone floe = stoneAt(x, y, side, 3, 121);
            const int glaze = noise(x, y, side, side / 4, 3, 122) / 40 + frame % 2;
            return clamped(floe.toBorder * 32 / side < 10 ? 15 : 8 + glaze, 0, 15);
        }
        const Stone wave = stoneAt(x, y, side, 4, 123, frame * 256 / frames);
        const int crest = 84 - wave.toBorder * 32 / side * 2;
        const int depth = noise(x, y, side, side / 2, 2, 124) / 32;
        return clamped(depth + clamped(crest, 0, 84) / 8, 0, 15);
    });
}
}
