// SPDX-License-Identifier: MIT
// Searching for 100 pictures of 32 x 32 as indexed textures in 64 MiB, palettes included, against trying every place.
#include "benchmark.h"
#include "content.h"

#include "search/indexedsearch.h"
#include "search/palettesearch.h"

#include <QImage>

#include <algorithm>
#include <cstdio>

namespace
{
constexpr int rounds = 5;
volatile quint64 sink;

/// By turns: few flat colours in shapes, soft shades, noise, and a figure on clear ground.
QImage madePicture(int number, int colours)
{
    QVector<QRgb> palette;
    for (int i = 0; i < colours; ++i)
        palette.append(qRgb(i % 32 * 8, (i / 32 * 40 + below(30)) & 0xF8, below(256) & 0xF8));
    QImage picture(32, 32, QImage::Format_ARGB32);
    const int step = 3 + below(9);
    const int margin = 3 + below(8);
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 32; ++x) {
            const bool inside = x >= margin && x < 32 - margin && y >= margin && y < 32 - margin;
            const int shape = (x * x / step + y * y / (step + 2)) % qMin(colours, 12);
            const int shade = ((x + y) * step / 4 + below(3)) % colours;
            switch (number % 4) {
            case 0: picture.setPixel(x, y, palette.at(shape)); break;
            case 1: picture.setPixel(x, y, palette.at(shade)); break;
            case 2: picture.setPixel(x, y, palette.at(below(colours))); break;
            default: picture.setPixel(x, y, inside ? palette.at(shade) : 0); break;
            }
        }
    }
    return picture;
}

/// The pattern with other indices, and a palette with its colours at them.
void place(const IndexedPattern &pattern, QByteArray *image)
{
    QVector<int> order;
    for (int i = 0; i < 1 << pattern.bits; ++i)
        order.append(i);
    std::shuffle(order.begin(), order.end(), random64);
    QByteArray bytes((pattern.pixels * pattern.bits + 7) / 8, '\0');
    for (int i = 0; i < pattern.pixels; ++i) {
        const int index = order.at(pattern.numberAt(i));
        if (pattern.bits == 8)
            bytes[i] = char(index);
        else
            bytes[i / 2] = char(uchar(bytes.at(i / 2)) | index << (i % 2 ? 0 : 4));
    }
    QByteArray palette(2 << pattern.bits, '\0');
    for (int i = 0; i < pattern.colours.size(); ++i) {
        palette[order.at(i) * 2] = char(pattern.colours.at(i) >> 8);
        palette[order.at(i) * 2 + 1] = char(pattern.colours.at(i));
    }
    const int at = below(image->size() - 0x2000) & ~7;
    image->replace(at, palette.size(), palette);
    image->replace(at + 0x400 + below(8), bytes.size(), bytes);
}

struct Found
{
    int copies = 0;
    int withPalette = 0;
};

Found search(const QByteArray &image, const QVector<QImage> &pictures)
{
    Found result;
    WorkSteps steps([] { return false; });
    const ByteRange range {image.constData(), image.size(), 0};
    QVector<WantedPalette> palettes;
    for (const int bits : {4, 8}) {
        QVector<IndexedPattern> patterns;
        for (const QImage &picture : pictures) {
            QString refusal;
            patterns += indexedPatterns(picture, bits, &refusal);
        }
        const QVector<QVector<int>> places = IndexedSearch(range, &steps).find(patterns);
        for (int i = 0; i < patterns.size(); ++i) {
            for (const int position : places.at(i)) {
                ++result.copies;
                palettes.append({indicesAt(range, position, patterns.at(i)), patterns.at(i).colours});
            }
        }
    }
    const QVector<QVector<int>> found = findPalettes(range, palettes, &steps);
    for (const QVector<int> &places : found)
        result.withPalette += places.isEmpty() ? 0 : 1;
    return result;
}
}

int main()
{
    QByteArray image = mixedContent();
    QVector<QImage> pictures;
    QVector<IndexedPattern> patterns;
    for (int i = 0; i < 100; ++i) {
        const int bits = i % 2 ? 8 : 4;
        pictures.append(madePicture(i / 2, bits == 4 ? 3 + below(13) : 17 + below(200)));
        QString refusal;
        const QVector<IndexedPattern> some = indexedPatterns(pictures.last(), bits, &refusal);
        if (some.isEmpty()) {
            std::printf("picture %d is refused: %s\n", i, qPrintable(refusal));
            continue;
        }
        patterns.append(some.first());
        place(some.first(), &image);
    }
    QVector<double> passes;
    QVector<double> times;
    Found found;
    for (int round = 0; round < rounds; ++round) {
        const qint64 pass = nanosecondsOf([&image] { sink = readPass(image); });
        const qint64 time = nanosecondsOf([&] { found = search(image, pictures); });
        passes.append(double(time) / double(pass));
        times.append(double(time) / 1e6);
    }
    // The naive way, for every tenth pattern at a part of the places.
    const QByteArray part = image.left(image.size() / 64);
    const qint64 some = nanosecondsOf([&] {
        int copies = 0;
        for (int i = 0; i < patterns.size(); i += 10) {
            for (int position = 0; position < part.size(); ++position)
                copies += indicesAt({part.constData(), part.size(), 0}, position, patterns.at(i)).isEmpty() ? 0 : 1;
        }
        sink = quint64(copies);
    });
    const double naive = double(some) / 1e6 * 64 * 10;
    const double median = medianOf(passes);
    std::printf("100 pictures of 32 x 32 as ci4 and ci8 in 64 MiB: %d placed, %d copies found, %d with palettes\n"
                "%.1f ms, %.1f read passes; every place tried: about %.0f ms, %.0fx  %s\n",
                patterns.size(), found.copies, found.withPalette, medianOf(times), median, naive, naive / medianOf(times),
                median <= 100 && found.copies >= patterns.size() ? "met" : "MISSED");
    return 0;
}
