// SPDX-License-Identifier: MIT
#include "demo/sprites.h"

#include "demo/canvas.h"

namespace demo
{
namespace
{
using Rows = QVector<const char *>;

/// A drawing of 16 x 16 characters: a space is clear, 'a' the first of \a colours.
QImage drawn(const Rows &rows, const QVector<QRgb> &colours)
{
    return painted(16, 16, [&](int x, int y) {
        const char character = rows.at(y)[x];
        return character == ' ' ? QRgb(0) : colours.at(character - 'a');
    });
}

/// How far below the edge of an ellipse a pixel lies when light falls from the upper left: 0 dark to 255 bright.
int roundLight(int x, int y, int centreX, int centreY, int radiusX, int radiusY)
{
    return clamped(255 - ellipse(x, y, centreX - radiusX / 3, centreY - radiusY / 3, radiusX, radiusY) * 5 / 8);
}

void addEye(QImage *picture, int centreX, int centreY)
{
    for (int y = centreY - 10; y <= centreY + 10; ++y) {
        for (int x = centreX - 10; x <= centreX + 10; ++x) {
            QRgb colour = 0;
            if (ellipse(x, y, centreX, centreY, 10, 10) < 256)
                colour = 0xFFF0DDB4;
            if (ellipse(x, y, centreX, centreY, 8, 8) < 256)
                colour = mixed(0xFFFFD75A, 0xFFE07B12, ellipse(x, y, centreX, centreY, 8, 8) / 32 * 32);
            if (ellipse(x, y, centreX, centreY, 5, 5) < 256)
                colour = 0xFF181020;
            if (ellipse(x, y, centreX - 2, centreY - 2, 2, 2) < 256)
                colour = 0xFFFFFFFF;
            if (colour)
                picture->setPixel(x, y, colour);
        }
    }
}

QRgb owlFeather(int x, int y)
{
    const Stone feather = stoneAt(x, y * 2 % 64, 64, 10, 161);
    const QRgb tone = gradient({0xFF4E3019, 0xFF7A5028, 0xFFA97B43}, roundLight(x, y, 32, 34, 26, 30) / 16 * 16);
    return feather.toBorder < 12 ? lightened(tone, -24) : tone;
}

QRgb owlPixel(int x, int y)
{
    // The belly, the body with the ears, then the night behind them.
    if (ellipse(x, y, 32, 56, 14, 18) < 256)
        return (x / 3 + y / 2) % 3 == 0 ? QRgb(0xFFB98B52) : QRgb(0xFFE8CE9C);
    const bool ear =
        y >= 4 && y < 24 && (qAbs(x - (16 - (24 - y) / 5)) < (y - 2) / 3 || qAbs(x - (47 + (24 - y) / 5)) < (y - 2) / 3);
    if (ellipse(x, y, 32, 28, 22, 20) < 256 || ellipse(x, y, 32, 56, 25, 30) < 256 || ear)
        return owlFeather(x, y);
    if (ellipse(x, y, 50, 12, 9, 9) < 256 && ellipse(x, y, 46, 10, 8, 8) >= 256)
        return 0xFFFFF0B8;
    if (scatteredBelow(61, x, y, 162) == 0)
        return 0xFFDDE6FF;
    return gradient({0xFF17163F, 0xFF2D2B6B, 0xFF584A97}, y * 4 / 16 * 16);
}

void addBeak(QImage *picture)
{
    for (int y = 30; y < 40; ++y) {
        const int half = (40 - y) / 2;
        for (int x = 32 - half; x <= 32 + half; ++x)
            picture->setPixel(x, y, x < 32 ? 0xFFFFC04A : 0xFFC97A1C);
    }
}

void addScarf(QImage *picture)
{
    for (int y = 44; y < 52; ++y) {
        for (int x = 8; x < 56; ++x) {
            const int sag = sine((x - 8) * 128 / 48) / 16;
            picture->setPixel(x, y + sag, x / 6 % 2 ? 0xFFD63A3A : 0xFFF3F0EA);
        }
    }
}
}

QImage heart(Heart state, Season season)
{
    static const Rows rows {"                ", "  aaaa    aaaa  ", " abbbba  abbbba ", "abbccbbaabbbbbda",
                            "abccbbbbbbbbbbda", "abcbbbbbbbbbbdda", "abbbbbbbbbbbbdda", "abbbbbbbbbbbbdda",
                            " abbbbbbbbbbdda ", "  abbbbbbbbdda  ", "   abbbbbbdda   ", "    abbbbdda    ",
                            "     abbdda     ", "      abda      ", "       aa       ", "                "};
    const QRgb red = season == Season::Summer ? 0xFFE23B4B : 0xFF3F8FE0;
    const QImage full = drawn(rows, {0xFF2A0F1C, red, 0xFFFFD9DC, lightened(red, -60)});
    const QImage empty = drawn(rows, {0xFF2A0F1C, 0xFF4B4250, 0xFF6B6270, 0xFF3A333F});
    return painted(16, 16, [&](int x, int y) {
        return (state == Heart::Full || (state == Heart::Half && x < 8) ? full : empty).pixel(x, y);
    });
}

QImage gem(Season season)
{
    static const Rows rows {"                ", "                ", "    aaaaaaaa    ", "   abbcccbbda   ",
                            "  abbcccccbdda  ", " abbbcccccbddda ", "aaaaaaaaaaaaaaaa", "abbbaccccaddddea",
                            " abbaccccadddea ", "  abbaccadddea  ", "  abbaccaddeea  ", "   abbacaddea   ",
                            "    abbaadea    ", "     abaaea     ", "      aaaa      ", "       aa       "};
    return enlarged(season == Season::Summer ? drawn(rows, {0xFF0C3B36, 0xFF3FD6B0, 0xFFC9FFF0, 0xFF1E9E86, 0xFF12705F})
                                             : drawn(rows, {0xFF401040, 0xFFE36BE0, 0xFFFFE0FF, 0xFFA93AA8, 0xFF772277}));
}

QImage mushroom(Season season)
{
    static const Rows rows {"                ", "     aaaaaa     ", "   aabbccbbaa   ", "  abbbccccbbba  ",
                            " abccbbccbbccba ", " abccbbbbbbccda ", "abbbbbbccbbbbdda", "abbbbbccccbbbdda",
                            "addbbbccccbbdada", " aadddddddddaaa ", "   aeeeeeeeea   ", "   aeaeeeaefa   ",
                            "   aeaeeeaefa   ", "   aeeeeeeffa   ", "    aeeeefa     ", "     aaaaa      "};
    const QRgb cap = season == Season::Summer ? 0xFFD8402F : 0xFF3C6FD0;
    return enlarged(drawn(rows, {0xFF2B1710, cap, 0xFFFFF4E0, lightened(cap, -64), 0xFFF6DFB8, 0xFFCFAE7E}));
}

QImage key()
{
    static const Rows rows {"                ", "     aaaaaa     ", "    abbbbbba    ", "   abbcaaabba   ",
                            "   abca  abda   ", "   abca  abda   ", "   abbcaaabda   ", "    abbbbdda    ",
                            "     aabdaa     ", "      abda      ", "      abda      ", "      abdaaa    ",
                            "      abbbba    ", "      abdaaa    ", "      abbbba    ", "      aaaaaa    "};
    return enlarged(drawn(rows, {0xFF4A3208, 0xFFF2C230, 0xFFFFF3B0, 0xFFB9861A}));
}

QImage leaf(Season season)
{
    static const Rows rows {"                ", "            aaa ", "         aaabba ", "       aabbcba  ",
                            "      abbbcbba  ", "     abbbcbbba  ", "    abbbcbbbda  ", "    abbcbbbda   ",
                            "   abbcbbbbda   ", "   abcbbbbda    ", "   acbbbbda     ", "   acbbdda      ",
                            "   acddaa       ", "  aaaaa         ", " aa             ", " a              "};
    const QRgb green = season == Season::Summer ? 0xFF63B948 : 0xFFD08A32;
    return enlarged(drawn(rows, {0xFF1C3517, green, lightened(green, 70), lightened(green, -40)}));
}

QVector<QRgb> coinPalette()
{
    return QVector<QRgb> {0} + ramp({0xFF4A2D05, 0xFF9A640E, 0xFFE0A318, 0xFFFFD24A, 0xFFFFF6C8}, 15);
}

QImage coin(int frame)
{
    static constexpr int widths[4] = {14, 10, 3, 10};
    const int radius = widths[frame % 4];
    return indexPainted(32, 32, coinPalette(), [&](int x, int y) {
        const int outside = ellipse(x, y, 16, 16, radius, 14);
        if (outside >= 256)
            return 0;
        if (outside > 200)
            return x + y < 32 ? 5 : 2;
        if (outside > 150 && radius > 4)
            return x + y < 32 ? 14 : 6;
        const bool mark = radius > 4 && qAbs(x - 16) <= radius / 5 && qAbs(y - 16) <= 6;
        const bool shine = frame % 4 == 1 ? x < 14 : x > 18 && frame % 4 == 3;
        if (mark)
            return qAbs(y - 16) == 6 || x - 16 == radius / 5 ? 4 : 13;
        return clamped(11 - (x + y - 32) / 4 + (shine ? 2 : 0), 7, 15);
    });
}

QVector<QRgb> slimePalette()
{
    return QVector<QRgb> {0, 0xFFFFFFFF, 0xFF20101C} + ramp({0xFF0E4A2A, 0xFF1E8A44, 0xFF46C864, 0xFFA8F5A4, 0xFFF0FFE8}, 13);
}

QImage slime(int frame)
{
    const int height = frame % 2 ? 13 : 10;
    const int width = frame % 2 ? 12 : 15;
    return indexPainted(32, 32, slimePalette(), [&](int x, int y) {
        const int foot = 28;
        const int centreY = foot - height / 2;
        if (y > foot || ellipse(x, y, 16, centreY, width, height) >= 256)
            return 0;
        for (const int eye : {11, 20}) {
            if (ellipse(x, y, eye, centreY - 1, 2, 3) < 256)
                return x == eye - 1 && y == centreY - 2 ? 1 : 2;
        }
        if (y == foot || ellipse(x, y, 16, centreY, width - 1, height - 1) >= 256)
            return 3;
        return 4 + roundLight(x, y, 16, centreY, width, height) * 11 / 255;
    });
}

QImage owl(Season season)
{
    QImage picture = painted(64, 64, owlPixel);
    addEye(&picture, 22, 26);
    addEye(&picture, 42, 26);
    addBeak(&picture);
    if (season == Season::Winter)
        addScarf(&picture);
    return picture;
}

QImage glow(int side)
{
    return painted(side, side, [&](int x, int y) {
        const int out = ellipse(x * 2 + 1, y * 2 + 1, side, side, side, side);
        const int strength = clamped(256 - out, 0, 255);
        return grey(160 + strength * 95 / 255, strength * strength / 255);
    });
}

QImage flare(int side)
{
    return painted(side, side, [&](int x, int y) {
        const int dx = qAbs(x * 2 + 1 - side);
        const int dy = qAbs(y * 2 + 1 - side);
        const int core = clamped(255 - (dx * dx + dy * dy) * 4096 / (side * side));
        const int cross = clamped(255 - squareRoot(dx * dy * 64) * 160 / side - (dx + dy) * 190 / side);
        const int ring = clamped(110 - qAbs(squareRoot(dx * dx + dy * dy) - side * 5 / 8) * 24);
        return grey(255, qMax(core, qMax(cross, ring)));
    });
}

QImage smoke(int side)
{
    return painted(side, side, [&](int x, int y) {
        const int out = ellipse(x * 2 + 1, y * 2 + 1, side, side, side, side);
        return grey((noise(x, y, side, side / 4, 4, 171) + 64 - out) * 3 / 2);
    });
}

QImage shadow(int side)
{
    return painted(side, side, [&](int x, int y) { return grey(256 - ellipse(x * 2 + 1, y * 2 + 1, side, side, side, side)); });
}

QImage rain(int side)
{
    return painted(side, side, [&](int x, int y) {
        // Drops fall along a slope of one in four, each over a part of its line.
        const int lane = (x + y / 4) % side;
        const int along = (y + scatteredBelow(side, lane, 0, 181)) % side;
        if (scatteredBelow(5, lane, 1, 181) != 0 || along > side / 3)
            return grey(0, 0);
        return grey(72 + along * 3 * 180 / side);
    });
}

QImage sun(int side, Season season)
{
    const QRgb core = season == Season::Summer ? 0xFFFFF7C8 : 0xFFFFFFFF;
    const QRgb rim = season == Season::Summer ? 0xFFFFA41F : 0xFFBFD6F0;
    return painted(side, side, [&](int x, int y) {
        const int dx = x * 2 + 1 - side;
        const int dy = y * 2 + 1 - side;
        const int distance = squareRoot((dx * dx + dy * dy) * 16384 / (side * side));
        const QRgb colour = mixed(core, rim, distance * 3);
        return distance < 72 ? colour : withAlpha(rim, 210 - (distance - 72) * 4);
    });
}
}
