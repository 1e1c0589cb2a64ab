// SPDX-License-Identifier: MIT
// Turns true-colour pictures to palettes of 16 and 256 colours: the demo's pictures, painted noise like a photograph's, and the
// picture files named as arguments. Prints the time, and the mean error as a multiple of that of ImageMagick's "convert -colors N
// +dither", where that is installed. Both errors are distances in steps of rgb5a1, to the picture's colours in rgb5a1.
#include "benchmarks/benchmark.h"
#include "codec/texels.h"
#include "demo/canvas.h"
#include "demo/democartridge.h"
#include "model/textureformat.h"
#include "transfer/palettefitting.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <cmath>
#include <cstdio>

namespace
{
struct Sample
{
    QString name;
    QImage picture; ///< Format_ARGB32, in the colours of rgb5a1.
};

QImage inTextureColours(const QImage &picture)
{
    QImage result = picture.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x)
            result.setPixel(x, y, texels::fromRgb5a1(texels::toRgb5a1(result.pixel(x, y))));
    }
    return result;
}

/// Hills, a sky and grain: gradients with noise of every size in them, as in a photograph.
QImage landscape(int side)
{
    return demo::painted(side, side, [side](int x, int y) {
        const int hill = demo::noise(x, 0, side, side / 4, 4, 1) * side / 400 + side / 4;
        const int grain = demo::noise(x, y, side, 32, 5, 2) - 128;
        const QVector<QRgb> sky {qRgb(40, 90, 190), qRgb(140, 180, 230), qRgb(250, 220, 170)};
        const QVector<QRgb> ground {qRgb(150, 170, 60), qRgb(60, 110, 40), qRgb(90, 60, 30), qRgb(20, 25, 15)};
        const bool above = y < hill;
        const int depth = above ? 255 * y / qMax(1, hill) : 255 * (y - hill) / qMax(1, side - hill);
        return demo::lightened(demo::gradient(above ? sky : ground, demo::clamped(depth + grain / 4)),
                               above ? grain / 4 : grain / 2);
    });
}

/// The distance of the pixels of \a shown to those of \a picture, in steps of a channel, on average. A clear pixel is as far from
/// an opaque one as black from white.
double meanError(const QImage &picture, const QImage &shown)
{
    double sum = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb a = picture.pixel(x, y);
            const QRgb b = shown.pixel(x, y);
            // Rounded: what is not in the colours of rgb5a1 is not to lose by being cut.
            const auto channel = [](int value) { return qMin(31, (value + 4) / 8); };
            const int red = channel(qRed(a)) - channel(qRed(b));
            const int green = channel(qGreen(a)) - channel(qGreen(b));
            const int blue = channel(qBlue(a)) - channel(qBlue(b));
            if ((qAlpha(a) == 255) != (qAlpha(b) == 255))
                sum += std::sqrt(3 * 31.0 * 31.0);
            else if (qAlpha(a) == 255)
                sum += std::sqrt(double(red * red + green * green + blue * blue));
        }
    }
    return sum / (double(picture.width()) * picture.height());
}

/// What ImageMagick makes of \a picture; null where it is not installed.
QImage byImageMagick(const QImage &picture, int colours, const QTemporaryDir &folder)
{
    const QString in = folder.filePath(QStringLiteral("in.png"));
    const QString out = folder.filePath(QStringLiteral("out.png"));
    picture.save(in);
    QProcess process;
    process.start(
        QStringLiteral("convert"),
        {in, QStringLiteral("+dither"), QStringLiteral("-colors"), QString::number(colours), QStringLiteral("PNG32:") + out});
    if (!process.waitForFinished(120000) || process.exitCode() != 0)
        return QImage();
    return QImage(out);
}

void measure(const Sample &sample, const textureFormat &format, const QTemporaryDir &folder)
{
    FittedPicture fitted;
    QVector<double> milliseconds;
    for (int i = 0; i < 3; ++i)
        milliseconds.append(double(nanosecondsOf([&] { fitted = fitPalette(sample.picture, format, PresentTexture()); })) / 1e6);
    const double own = meanError(sample.picture, fitted.picture);
    const QImage other = byImageMagick(sample.picture, textureFormats::paletteColours(format), folder);
    std::printf("%-28s %4dx%-4d %6d colours to %3d %8.1f ms  mean error %6.3f", qPrintable(sample.name.right(28)),
                sample.picture.width(), sample.picture.height(), fitted.colours, textureFormats::paletteColours(format),
                medianOf(milliseconds), own);
    if (!other.isNull()) {
        const double theirs = meanError(sample.picture, other);
        std::printf("  ImageMagick %6.3f", theirs);
        if (theirs > 0)
            std::printf(", %5.2f x", own / theirs);
    }
    std::printf("\n");
}
}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QVector<Sample> samples;
    samples.append({QStringLiteral("painted landscape"), inTextureColours(landscape(1024))});
    samples.append({QStringLiteral("painted landscape"), inTextureColours(landscape(64))});
    QImage noise(1024, 1024, QImage::Format_ARGB32);
    for (int y = 0; y < noise.height(); ++y) {
        for (int x = 0; x < noise.width(); ++x)
            noise.setPixel(x, y, 0xFF000000U | demo::scattered(x, y, 3));
    }
    samples.append({QStringLiteral("noise"), inTextureColours(noise)});
    for (const demo::Texture &texture : demo::cartridge().textures)
        samples.append({texture.folder + texture.name, inTextureColours(texture.picture)});
    const QStringList files = QCoreApplication::arguments().mid(1);
    for (const QString &file : files)
        samples.append({QFileInfo(file).fileName(), inTextureColours(QImage(file))});

    const QTemporaryDir folder;
    for (const Sample &sample : qAsConst(samples)) {
        if (sample.picture.isNull())
            continue;
        measure(sample, textureFormats::ci4, folder);
        measure(sample, textureFormats::ci8, folder);
    }
    return 0;
}
