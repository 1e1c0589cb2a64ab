// SPDX-License-Identifier: MIT
// Decoding and encoding of a large and a small texture, against copying the picture and against going texel by texel.
#include "benchmark.h"

#include "codec/texturemanipulator.h"
#include "tests/unit/codec/naivecodec.h"

#include <QRandomGenerator>

#include <cstdio>
#include <cstring>

namespace
{
constexpr int rounds = 9;

struct Result
{
    double quick = 0; ///< Microseconds.
    double plain = 0; ///< Microseconds.
    double copy = 0; ///< Microseconds.
    double quickToCopy = 0; ///< Median over the rounds, each ratio taken within one.
    double plainToQuick = 0; ///< Likewise.
};

QByteArray noise(int size)
{
    QRandomGenerator random(64);
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    return bytes;
}

QImage noisyPicture(int edge, QImage::Format format)
{
    QImage image(edge, edge, format);
    const QByteArray bytes = noise(int(image.sizeInBytes()));
    std::memcpy(image.bits(), bytes.constData(), size_t(bytes.size()));
    if (format == QImage::Format_Indexed8)
        image.setColorTable(QVector<QRgb>(256, 0xFF808080));
    // Of noise nearly no pixel is opaque; half of a sprite is.
    for (int p = 0; format == QImage::Format_ARGB32 && p < edge * edge; p += 2)
        image.setPixel(p % edge, p / edge, image.pixel(p % edge, p / edge) | 0xFF000000);
    return image;
}

template<typename Work> double microseconds(int calls, Work &&work)
{
    const qint64 taken = nanosecondsOf([&] {
        for (int i = 0; i < calls; ++i)
            work();
    });
    return double(taken) / 1000 / calls;
}

/// Runs the three in turn, so that all of them see the same moments; the first round only warms up.
template<typename Quick, typename Plain, typename Copy>
Result compared(int calls, int plainCalls, Quick quick, Plain plain, Copy copy)
{
    QVector<double> quicks, plains, copies, quickToCopy, plainToQuick;
    for (int round = 0; round <= rounds; ++round) {
        const double copying = microseconds(calls, copy);
        const double quickly = microseconds(calls, quick);
        const double plainly = microseconds(plainCalls, plain);
        if (round == 0)
            continue;
        quicks << quickly;
        plains << plainly;
        copies << copying;
        quickToCopy << quickly / copying;
        plainToQuick << plainly / quickly;
    }
    return {medianOf(quicks), medianOf(plains), medianOf(copies), medianOf(quickToCopy), medianOf(plainToQuick)};
}

/// Keeps the compiler from leaving out work whose outcome nobody looks at.
template<typename T> void keep(const T &value)
{
    asm volatile("" : : "r"(&value) : "memory");
}

const char *verdict(bool met)
{
    return met ? "met" : "MISSED";
}

void printHead(const char *what, int edge, const char *targets)
{
    std::printf("\n%s, %d x %d (%s)\n", what, edge, edge, targets);
    std::printf("%-8s %12s %12s %12s %12s %12s\n", "format", "quick", "plain", "copy", "quick/copy", "plain/quick");
}

void printRow(const QString &name, const Result &result, bool met)
{
    std::printf("%-8s %9.2f us %9.1f us %9.2f us %12.2f %12.0f  %s\n", qPrintable(name), result.quick, result.plain, result.copy,
                result.quickToCopy, result.plainToQuick, verdict(met));
}

Result decoding(const textureFormat &format, int edge, int calls, int plainCalls)
{
    const QByteArray data = noise(int(edge * edge * format.bytesPerPixel));
    const QByteArray palette = noise(format.usesPalette ? 512 : 0);
    const QImage expected = naive::generateTexture(data, format, edge, palette);
    const QImage actual = textureManipulator::generateTexture(data, format, edge, palette);
    if (actual != expected)
        qFatal("decoding %s differs from the plain way", qPrintable(format.name));
    QImage target = actual.copy();
    uchar *const to = target.bits();
    const size_t bytes = size_t(actual.sizeInBytes());
    return compared(
        calls, plainCalls, [&] { keep(textureManipulator::generateTexture(data, format, edge, palette)); },
        [&] { keep(naive::generateTexture(data, format, edge, palette)); },
        [&] {
            std::memcpy(to, actual.constBits(), bytes);
            keep(target);
        });
}

Result encoding(const textureFormat &format, int edge, int calls, int plainCalls, QImage::Format imageFormat)
{
    const QImage image = noisyPicture(edge, imageFormat);
    if (textureManipulator::generateData(image, format) != naive::generateData(image, format))
        qFatal("encoding %s differs from the plain way", qPrintable(format.name));
    QImage target = image.copy();
    uchar *const to = target.bits();
    const size_t bytes = size_t(image.sizeInBytes());
    return compared(
        calls, plainCalls, [&] { keep(textureManipulator::generateData(image, format)); },
        [&] { keep(naive::generateData(image, format)); },
        [&] {
            std::memcpy(to, image.constBits(), bytes);
            keep(target);
        });
}
}

int main()
{
    using namespace textureFormats;
    const QList<textureFormat> formats {i4, ia4, i8, ia8, ia16, rgb5a1, rgba32, ci8, ci4};

    printHead("Decoding", 1024, "targets: at most 5 x copy, at least 50 x plain");
    for (const textureFormat &format : formats) {
        const Result result = decoding(format, 1024, 20, 1);
        printRow(format.name, result, result.quickToCopy <= 5 && result.plainToQuick >= 50);
    }
    printHead("Decoding", 32, "targets: at most 2 us, at least 25 x plain");
    for (const textureFormat &format : formats) {
        const Result result = decoding(format, 32, 5000, 50);
        printRow(format.name, result, result.quick <= 2 && result.plainToQuick >= 25);
    }
    printHead("Encoding", 1024, "targets: at most 8 x copy, at least 10 x plain, ia8 8 x plain");
    for (const textureFormat &format : formats) {
        const Result result = encoding(format, 1024, 20, 1, format.usesPalette ? QImage::Format_Indexed8 : QImage::Format_ARGB32);
        printRow(format.name, result, result.quickToCopy <= 8 && result.plainToQuick >= (format.name == ia8.name ? 8 : 10));
    }
    printHead("Encoding an RGB32 picture", 1024, "targets as above");
    for (const textureFormat &format : formats) {
        if (format.usesPalette)
            continue;
        const Result result = encoding(format, 1024, 20, 1, QImage::Format_RGB32);
        printRow(format.name, result, result.quickToCopy <= 8 && result.plainToQuick >= (format.name == ia8.name ? 8 : 10));
    }
}
