// SPDX-License-Identifier: MIT
#include "demo/scenery.h"

#include "demo/canvas.h"
#include "demo/lettering.h"
#include "demo/sprites.h"

namespace demo
{
namespace
{
/// One chain of hills, from the back to the front of a landscape.
struct Chain
{
    int base; ///< Height of its foot line, in 256ths of the picture from the top.
    int reach; ///< How far its tops rise above that, in 256ths.
    int cell; ///< Width of a hill in pixels.
    QRgb summer;
    QRgb winter;
};

constexpr Chain chains[] = {{150, 90, 64, 0xFF8FB4D8, 0xFFB4C4D6},
                            {160, 60, 32, 0xFF6E9CB8, 0xFF9DB2C6},
                            {176, 50, 64, 0xFF5C9A6A, 0xFFC9D8E6},
                            {206, 44, 32, 0xFF478A45, 0xFFDCE7F0},
                            {244, 40, 64, 0xFF2F6B34, 0xFFF2F6FA}};

int crest(const Chain &chain, int x, int width, int height, int seed)
{
    return (chain.base - noise(x, 0, width, chain.cell, 5, seed) * chain.reach / 255) * height / 256;
}

QRgb air(int y, int height, Season season)
{
    const int position = y * 255 / (height * 3 / 4);
    return season == Season::Summer ? gradient({0xFF2E5FB8, 0xFF5F9FE6, 0xFFFFDDA8, 0xFFFFB980}, position)
                                    : gradient({0xFF5A6E8C, 0xFF8EA4BF, 0xFFDFE6EE, 0xFFF3EDE6}, position);
}

void addTree(QImage *picture, int x, int foot, int height, QRgb colour)
{
    for (int step = 0; step < height; ++step) {
        const int half = step * 2 / 5 - step % 4 / 2;
        for (int i = -half; i <= half; ++i) {
            if (picture->valid(x + i, foot - height + step))
                picture->setPixel(x + i, foot - height + step, lightened(colour, i < 0 ? 18 : -12));
        }
    }
}

void addTower(QImage *picture, int left, int foot, int width, int height)
{
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool battlement = y < 4 && x / 3 % 2;
            const bool window = y > 9 && y % 14 < 5 && qAbs(x - width / 2) < 2;
            if (!battlement && picture->valid(left + x, foot - height + y))
                picture->setPixel(left + x, foot - height + y,
                                  window ? 0xFFFFE08A : mixed(0xFFB9B3C4, 0xFF5D5774, x * 256 / width));
        }
    }
}

void addCastle(QImage *picture, int x, int foot)
{
    addTower(picture, x - 18, foot, 36, 20);
    addTower(picture, x - 24, foot, 12, 36);
    addTower(picture, x + 12, foot, 12, 36);
    addTower(picture, x - 6, foot, 12, 46);
}
}

QImage panorama(int width, int height, Season season)
{
    QImage picture = painted(width, height, [&](int x, int y) {
        const QRgb clear = air(y, height, season);
        const int cloud = noise(x, y * 3 % width, width, 32, 5, 201) - 140;
        return mixed(clear, 0xFFFFFAF0, clamped(cloud * 5, 0, 200));
    });
    drawOnto(&picture, sun(64, season), width * 3 / 4 - 32, height / 6);
    int number = 0;
    for (const Chain &chain : chains) {
        const QRgb colour = season == Season::Summer ? chain.summer : chain.winter;
        for (int x = 0; x < width; ++x) {
            const int top = crest(chain, x, width, height, 210 + number);
            for (int y = qMax(0, top); y < height; ++y) {
                const int texture = noise(x, y, width, 8, 3, 220 + number) / 8 - 16;
                picture.setPixel(x, y, lightened(colour, texture + (y - top < 2 ? 26 : 0) - (y - top) / 3));
            }
        }
        if (number == 2)
            addCastle(&picture, width / 3, crest(chain, width / 3, width, height, 210 + number) + 8);
        if (number >= 3) {
            for (int i = 0; i < width / 10; ++i) {
                const int x = scatteredBelow(width, i, number, 230);
                addTree(&picture, x, crest(chain, x, width, height, 210 + number) + 4, 10 + scatteredBelow(10, i, number, 231),
                        season == Season::Summer ? 0xFF1F5230 : 0xFFA9C0D2);
            }
        }
        ++number;
    }
    return picture;
}

QImage islandMap(int side)
{
    const QVector<QRgb> colours = ramp({0xFF123E7A, 0xFF1F66AE, 0xFF3C9AD6, 0xFF7CCBEE}, 16) + ramp({0xFFF4E2A8, 0xFFE2C77E}, 6)
        + ramp({0xFF8CC858, 0xFF3E8E3C, 0xFF245F30}, 22) + ramp({0xFF7C7466, 0xFF9C948A, 0xFFFFFFFF}, 20);
    QVector<QRgb> palette = colours;
    palette.resize(256);
    return indexPainted(side, side, palette, [&](int x, int y) {
        const int out = ellipse(x * 2, y * 2, side, side, side, side);
        const int height = clamped(noise(x, y, side, side / 4, 5, 241) + 100 - out);
        return clamped(height * colours.size() / 256, 0, colours.size() - 1);
    });
}

QImage label()
{
    QImage picture = painted(64, 64, [](int x, int y) {
        const int edge = qMin(qMin(x, 63 - x), qMin(y, 63 - y));
        if (edge < 2)
            return QRgb(0xFF2A1A4A);
        return gradient({0xFF3C2A78, 0xFF7A3F98, 0xFFE0647A, 0xFFFFB25C}, y * 4);
    });
    drawOnto(&picture, gem(Season::Summer), 16, 10);
    const QImage name = text(QStringLiteral("QUILLARY"), 0xFFFFFFFF);
    drawOnto(&picture, text(QStringLiteral("QUILLARY"), 0xFF2A1A4A), (64 - name.width()) / 2 + 1, 47);
    drawOnto(&picture, name, (64 - name.width()) / 2, 46);
    return picture;
}
}
