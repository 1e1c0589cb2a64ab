// SPDX-License-Identifier: MIT
#include "demo/canvas.h"

#include <QHash>

namespace demo
{
namespace
{
/// From 0 to 256 with a gentle start and end.
int eased(int t)
{
    return t * t * (768 - 2 * t) / 65536;
}

int smoothNoise(int x, int y, int period, int cell, int seed)
{
    const int cells = period / cell;
    const auto corner = [&](int column, int row) {
        return scatteredBelow(256, (column % cells + cells) % cells, (row % cells + cells) % cells, seed);
    };
    const int column = x / cell;
    const int row = y / cell;
    const int tx = eased(x % cell * 256 / cell);
    const int ty = eased(y % cell * 256 / cell);
    const int top = corner(column, row) * (256 - tx) + corner(column + 1, row) * tx;
    const int bottom = corner(column, row + 1) * (256 - tx) + corner(column + 1, row + 1) * tx;
    return (top * (256 - ty) + bottom * ty) / 65536;
}

int mixedChannel(int from, int to, int amount)
{
    return from + (to - from) * amount / 256;
}

/// A quarter of a turn of the sine wave, in sixteen steps.
constexpr int quarterWave[17] = {0, 6, 12, 19, 24, 30, 36, 41, 45, 49, 53, 56, 59, 61, 63, 64, 64};

/// \a colour with the low bits of each channel cleared; alpha becomes all or nothing.
QRgb coarse(QRgb colour, int bits)
{
    if (qAlpha(colour) < 128)
        return 0;
    const int mask = 0xFF & ~((1 << (8 - bits)) - 1);
    return qRgb(qRed(colour) & mask, qGreen(colour) & mask, qBlue(colour) & mask);
}
}

int clamped(int value, int low, int high)
{
    return qBound(low, value, high);
}

int squareRoot(int value)
{
    int root = 0;
    for (int bit = 1 << 15; bit; bit >>= 1) {
        const qint64 candidate = root + bit;
        if (candidate * candidate <= value)
            root += bit;
    }
    return root;
}

QRgb mixed(QRgb from, QRgb to, int amount)
{
    amount = clamped(amount, 0, 256);
    return qRgba(mixedChannel(qRed(from), qRed(to), amount), mixedChannel(qGreen(from), qGreen(to), amount),
                 mixedChannel(qBlue(from), qBlue(to), amount), mixedChannel(qAlpha(from), qAlpha(to), amount));
}

QRgb lightened(QRgb colour, int amount)
{
    return qRgba(clamped(qRed(colour) + amount), clamped(qGreen(colour) + amount), clamped(qBlue(colour) + amount),
                 qAlpha(colour));
}

QRgb grey(int value, int alpha)
{
    value = clamped(value);
    return qRgba(value, value, value, clamped(alpha));
}

QRgb withAlpha(QRgb colour, int alpha)
{
    return qRgba(qRed(colour), qGreen(colour), qBlue(colour), clamped(alpha));
}

QRgb gradient(const QVector<QRgb> &stops, int position)
{
    const int along = clamped(position) * (stops.size() - 1);
    const int stop = along / 255;
    return stop + 1 < stops.size() ? mixed(stops.at(stop), stops.at(stop + 1), along % 255 * 256 / 255) : stops.last();
}

QVector<QRgb> ramp(const QVector<QRgb> &stops, int count)
{
    QVector<QRgb> colours;
    for (int i = 0; i < count; ++i)
        colours.append(gradient(stops, i * 255 / (count - 1)));
    return colours;
}

quint32 scattered(int x, int y, int seed)
{
    quint32 hash = quint32(x) * 0x8DA6B343u ^ quint32(y) * 0xD8163841u ^ quint32(seed) * 0xCB1AB31Fu;
    hash = (hash ^ hash >> 15) * 0x2C1B3C6Du;
    hash = (hash ^ hash >> 12) * 0x297A2D39u;
    return hash ^ hash >> 15;
}

int scatteredBelow(int bound, int x, int y, int seed)
{
    return int(scattered(x, y, seed) % quint32(bound));
}

int noise(int x, int y, int period, int cell, int octaves, int seed)
{
    int sum = 0;
    int weights = 0;
    int weight = 1 << octaves;
    for (int octave = 0; octave < octaves && cell > 0; ++octave, cell /= 2, weight /= 2) {
        sum += smoothNoise(x, y, period, cell, seed + octave) * weight;
        weights += weight;
    }
    return weights > 0 ? sum / weights : 0;
}

Stone stoneAt(int x, int y, int period, int across, int seed, int drift)
{
    const int cell = period * 16 / across;
    const int px = x * 16 + 8;
    const int py = y * 16 + 8;
    int nearest = 1 << 20;
    int next = 1 << 20;
    Stone stone;
    for (int row = py / cell - 1; row <= py / cell + 1; ++row) {
        for (int column = px / cell - 1; column <= px / cell + 1; ++column) {
            const int wrappedColumn = (column + across) % across;
            const int wrappedRow = (row + across) % across;
            const int phase = scatteredBelow(256, wrappedColumn, wrappedRow, seed);
            const int reach = scatteredBelow(cell * 2 / 5, wrappedColumn, wrappedRow, seed + 1);
            const int dx = px - (column * cell + cell / 2 + reach * sine(phase + drift) / 64);
            const int dy = py - (row * cell + cell / 2 + reach * sine(phase + drift + 64) / 64);
            const int distance = squareRoot(dx * dx + dy * dy);
            if (distance < nearest) {
                next = nearest;
                nearest = distance;
                stone = {wrappedColumn, wrappedRow, dx, dy, 0};
            } else if (distance < next) {
                next = distance;
            }
        }
    }
    stone.toBorder = next - nearest;
    return stone;
}

int ellipse(int x, int y, int centreX, int centreY, int radiusX, int radiusY)
{
    const int dx = x - centreX;
    const int dy = y - centreY;
    return dx * dx * 256 / (radiusX * radiusX) + dy * dy * 256 / (radiusY * radiusY);
}

int sine(int angle)
{
    const int step = (angle & 255) / 4;
    const int along = step % 16;
    switch (step / 16) {
    case 0: return quarterWave[along];
    case 1: return quarterWave[16 - along];
    case 2: return -quarterWave[along];
    default: return -quarterWave[16 - along];
    }
}

QImage enlarged(const QImage &picture)
{
    const auto at = [&](int x, int y) {
        return picture.pixel(clamped(x, 0, picture.width() - 1), clamped(y, 0, picture.height() - 1));
    };
    return painted(picture.width() * 2, picture.height() * 2, [&](int x, int y) {
        const int column = x / 2;
        const int row = y / 2;
        const QRgb beside = at(column + (x % 2 ? 1 : -1), row);
        const QRgb otherSide = at(column + (x % 2 ? -1 : 1), row);
        const QRgb above = at(column, row + (y % 2 ? 1 : -1));
        const QRgb below = at(column, row + (y % 2 ? -1 : 1));
        return beside == above && beside != below && above != otherSide ? beside : at(column, row);
    });
}

QImage outlined(const QImage &picture, QRgb colour)
{
    const auto filled = [&](int x, int y) { return picture.valid(x, y) && qAlpha(picture.pixel(x, y)) > 0; };
    return painted(picture.width(), picture.height(), [&](int x, int y) {
        if (!filled(x, y) && (filled(x - 1, y) || filled(x + 1, y) || filled(x, y - 1) || filled(x, y + 1)))
            return colour;
        return picture.pixel(x, y);
    });
}

void drawOnto(QImage *picture, const QImage &top, int left, int upper)
{
    for (int y = 0; y < top.height(); ++y) {
        for (int x = 0; x < top.width(); ++x) {
            if (!picture->valid(left + x, upper + y))
                continue;
            const QRgb under = picture->pixel(left + x, upper + y);
            const QRgb over = top.pixel(x, y);
            const QRgb result = mixed(withAlpha(under, 255), withAlpha(over, 255), qAlpha(over) * 256 / 255);
            picture->setPixel(left + x, upper + y, withAlpha(result, qMax(qAlpha(under), qAlpha(over))));
        }
    }
}

QImage withPalette(const QImage &picture, int colours)
{
    QHash<QRgb, int> indices;
    QVector<QRgb> palette;
    int bits = 6;
    do {
        --bits;
        indices.clear();
        palette.clear();
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                const QRgb colour = coarse(picture.pixel(x, y), bits);
                if (!indices.contains(colour)) {
                    indices.insert(colour, palette.size());
                    palette.append(colour);
                }
            }
        }
    } while (palette.size() > colours);
    palette.resize(colours);
    return indexPainted(picture.width(), picture.height(), palette,
                        [&](int x, int y) { return indices.value(coarse(picture.pixel(x, y), bits)); });
}
}
