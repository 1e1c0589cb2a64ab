// SPDX-License-Identifier: MIT
// Discovering textures by display lists in 64 MiB: the scan alone against looking at every field of every word, and the bases of
// 100 segments with 10,000 textures against decoding all textures at every base.
#include "benchmark.h"
#include "content.h"

#include "codec/texturemanipulator.h"
#include "model/textureformat.h"
#include "search/discovery.h"
#include "support/displaylists.h"

#include <cstdio>
#include <limits>
#include <set>

namespace
{
constexpr int rounds = 5;
volatile quint64 sink;

Discovery discover(const QByteArray &image)
{
    WorkSteps steps([] { return false; });
    return discoverTextures(image, 0, std::numeric_limits<int>::max(), &steps);
}

/// Words that one after the other are taken for what they could be.
int countCommands(const QByteArray &image)
{
    int count = 0;
    for (int position = 0; position + commandBytes <= image.size(); position += commandBytes)
        count += DisplayCommand::at(image.constData() + position).isPossible() ? 1 : 0;
    return count;
}

void scan(const char *what, const QByteArray &image, int mostTextures)
{
    QVector<double> passes;
    Discovery found;
    for (int round = 0; round < rounds; ++round) {
        const qint64 pass = nanosecondsOf([&image] { sink = readPass(image); });
        passes.append(double(nanosecondsOf([&] { found = discover(image); })) / double(pass));
    }
    const qint64 pass = nanosecondsOf([&image] { sink = readPass(image); });
    const qint64 plain = nanosecondsOf([&image] { sink = quint64(countCommands(image)); });
    const double median = medianOf(passes);
    std::printf("%-16s %4d textures, %5.2f read passes; field by field %5.1f: %4.1fx  %s\n", what, found.textures.size(), median,
                double(plain) / double(pass), double(plain) / double(pass) / median,
                median <= 10 && found.textures.size() <= mostTextures ? "met" : "MISSED");
}

/// A picture of soft shapes, with some grain.
QImage softPicture(int width, int height)
{
    QImage picture(width, height, QImage::Format_ARGB32);
    const int base[] = {below(200), below(200), below(200)};
    const int slopes[] = {below(7) - 3, below(7) - 3, below(7) - 3, below(7) - 3};
    const int centreX = below(width);
    const int centreY = below(height);
    const int radius = 4 + below(qMax(1, qMin(width, height) / 2));
    const bool isCut = below(4) == 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool inside = (x - centreX) * (x - centreX) + (y - centreY) * (y - centreY) < radius * radius;
            const int grain = below(12) + (inside ? 50 : 0);
            const int red = qBound(0, base[0] + x * slopes[0] + y * slopes[1] + grain, 255);
            const int green = qBound(0, base[1] + x * slopes[2] + grain, 255);
            const int blue = qBound(0, base[2] + y * slopes[3] + grain, 255);
            picture.setPixel(x, y, isCut && !inside ? 0 : qRgba(red, green, blue, 255));
        }
    }
    return picture;
}

struct Placed
{
    int address;
    QString format;
};

/// A file of 100 textures of several formats, one behind the other, and then the list that uses them.
QByteArray madeFile(int segment, int address, QVector<Placed> *placed)
{
    struct Kind
    {
        const char *name;
        int format;
        int bits;
    };
    static const Kind kinds[] = {{"rgb5a1", TestList::Rgba, 16},         {"rgb5a1", TestList::Rgba, 16},
                                 {"i8", TestList::Intensity, 8},         {"ia8", TestList::IntensityAlpha, 8},
                                 {"ia16", TestList::IntensityAlpha, 16}, {"rgba32", TestList::Rgba, 32},
                                 {"i4", TestList::Intensity, 4}};
    QByteArray file;
    TestList list;
    for (int i = 0; i < 100; ++i) {
        const Kind &kind = kinds[below(int(std::size(kinds)))];
        const int width = 16 << below(kind.bits == 32 ? 2 : 3);
        const int height = qMin(16 << below(2), 4096 * 8 / kind.bits / width);
        const textureFormat format = textureFormats::getAsMap().value(kind.name);
        placed->append({address + file.size(), format.name});
        list.block(kind.format, kind.bits, width, height, quint32(segment) << 24 | quint32(file.size())).draw();
        file += textureManipulator::generateData(softPicture(width, height), format);
    }
    return file + list.end().bytes();
}

void placeSegments(QByteArray image)
{
    QVector<Placed> placed;
    for (int i = 0; i < 100; ++i) {
        const int address = 0x20000 + i * (image.size() / 101) / 16 * 16;
        const QByteArray file = madeFile(1 + i % 15, address, &placed);
        image.replace(address, file.size(), file);
    }
    Discovery found;
    const double seconds = double(nanosecondsOf([&] { found = discover(image); })) / 1e9;
    std::set<std::pair<int, QString>> right;
    for (const Placed &texture : qAsConst(placed))
        right.emplace(texture.address, texture.format);
    int wrong = 0;
    for (const DiscoveredTexture &texture : qAsConst(found.textures))
        wrong += right.count({texture.address, texture.format}) ? 0 : 1;
    int clear = 0;
    for (const Neighbourhood &neighbourhood : qAsConst(found.neighbourhoods))
        clear += neighbourhood.isPlaced ? 1 : 0;

    // The naive way, at some of the bases of one neighbourhood.
    constexpr int bases = 200;
    TextureReference texture;
    texture.format = QStringLiteral("rgb5a1");
    texture.width = texture.height = 32;
    const qint64 some = nanosecondsOf([&] {
        double sum = 0;
        for (int base = 0; base < bases; ++base) {
            for (int i = 0; i < 100; ++i)
                sum += pictureliness({image.constData(), image.size(), 0}, texture, base * 16 + i * 2048, -1);
        }
        sink = quint64(sum);
    });
    const double naive = double(some) / 1e9 * (double(image.size()) / 16 / bases) * 100;
    std::printf("%d textures in 100 segments: %.2f s, %d of %d neighbourhoods placed, %d textures, %d wrong; every base decoded: "
                "about %.0f s, %.0fx  %s\n",
                placed.size(), seconds, clear, found.neighbourhoods.size(), found.textures.size(), wrong, naive, naive / seconds,
                seconds <= 2 && wrong == 0 ? "met" : "MISSED");
}
}

int main()
{
    const QByteArray mixed = mixedContent();
    scan("mixed content", mixed, 10);
    QByteArray random(rangeSize, '\0');
    QRandomGenerator(14).fillRange(reinterpret_cast<quint32 *>(random.data()), random.size() / 4);
    scan("random bytes", random, 1);
    placeSegments(mixed);
    return 0;
}
