// SPDX-License-Identifier: MIT
// The gallery of 10,000 textures: how long it takes, and how much of that the pictures take, against PNG files as extraction
// writes them. The target is 2 seconds.
#include "benchmark.h"

#include "model/rom.h"
#include "transfer/gallery.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QLoggingCategory>
#include <QTextStream>

namespace
{
constexpr int textures = 10000;

/// A table over an image of smooth shades with some noise, about as hard to compress as a game's textures: sizes and formats take
/// turns.
void makeTable()
{
    constexpr int imageSize = 16 * 1024 * 1024;
    QByteArray image(imageSize, '\0');
    quint32 noise = 64;
    for (int i = 0; i < imageSize; ++i) {
        noise = noise * 1664525 + 1013904223;
        image[i] = char((i / 64 % 64) * 4 + (noise >> 30));
    }
    currentROM.data = image;
    currentROM.loaded = true;
    const QStringList formats {"rgb5a1", "ci8", "ci4", "ia8", "rgba32", "i4"};
    const int sizes[] {16, 32, 32, 64};
    for (int i = 0; i < textures; ++i) {
        fileTreeFile *texture = currentROM.root->addFile(new fileTreeFile);
        texture->name = QStringLiteral("Texture %1").arg(i);
        texture->format = formats.at(i % formats.size());
        texture->width = texture->height = sizes[i % 4];
        texture->address = i * 1600;
        texture->paletteAddress = i * 1600;
    }
}

QByteArray page()
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    GalleryWriter writer(&buffer, {QStringLiteral("Benchmark"), {}});
    for (const fileTreeFile *texture : qAsConst(currentROM.root->files))
        writer.add(galleryItemOf(*texture));
    writer.finish();
    return buffer.data();
}

/// The plain way to PNG: as well compressed as the library does unasked.
qint64 plainPngs()
{
    qint64 bytes = 0;
    for (const fileTreeFile *texture : qAsConst(currentROM.root->files)) {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        galleryItemOf(*texture).pictures.constFirst().picture.save(&buffer, "PNG");
        bytes += buffer.data().size();
    }
    return bytes;
}
}

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    QTextStream out(stdout);
    makeTable();
    QVector<qint64> gallery;
    QVector<qint64> plain;
    int bytes = 0;
    for (int round = 0; round < 3; ++round) {
        gallery.append(nanosecondsOf([&bytes] { bytes = page().size(); }));
        plain.append(nanosecondsOf([] { plainPngs(); }));
    }
    const double seconds = medianOf(gallery) / 1e9;
    const double plainSeconds = medianOf(plain) / 1e9;
    out << "gallery of " << textures << " textures: " << seconds << " s, " << bytes / 1024 / 1024 << " MiB\n"
        << "the same pictures as PNG files of the usual compression: " << plainSeconds << " s\n"
        << "ratio: " << plainSeconds / seconds << '\n';
    return seconds <= 2 ? 0 : 1;
}
