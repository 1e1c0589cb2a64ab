// SPDX-License-Identifier: MIT
// Extracts a folder of small textures and imports it back, against coding the same pictures as PNG in memory and nothing else.
#include "benchmarks/benchmark.h"
#include "codec/texturemanipulator.h"
#include "model/rom.h"
#include "transfer/extraction.h"
#include "transfer/folderimport.h"
#include "transfer/texturewriter.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <cstdio>

namespace
{
constexpr int textureCount = 5000;
constexpr int side = 32;
constexpr int repetitions = 5;

/// Smooth pictures with a little grain, as painted textures are.
void fill(QByteArray *bytes, int bytesPerRow)
{
    QRandomGenerator random(5);
    for (int i = 0; i < bytes->size(); ++i)
        (*bytes)[i] = char((i % bytesPerRow + i / bytesPerRow + random.bounded(4)) | 1);
}

fileTreeDirectory *makeTable()
{
    const textureFormat &format = textureFormats::rgba32;
    const int textureBytes = int(side * side * format.bytesPerPixel);
    currentROM.data.resize(textureCount * textureBytes);
    fill(&currentROM.data, side * 4);
    auto *folder = new fileTreeDirectory;
    folder->name = "Textures";
    for (int i = 0; i < textureCount; ++i) {
        auto *texture = new fileTreeFile;
        texture->name = QString::number(i);
        texture->address = i * textureBytes;
        texture->format = format.name;
        texture->width = side;
        texture->height = side;
        folder->addFile(texture);
    }
    return currentROM.root->addDirectory(folder);
}

QImage pictureOf(const fileTreeFile &texture)
{
    return textureManipulator::generateTexture(texture.data(), textureFormats::rgba32, side, QByteArray());
}

QByteArray encoded(const QImage &picture)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG");
    return buffer.data();
}

/// CPU and wall-clock milliseconds, and the CPU time as a multiple of the bare coding's.
struct Figures
{
    QVector<double> cpu;
    QVector<double> wall;
    QVector<double> ratio;

    template<typename Work> void measure(Work &&work)
    {
        QElapsedTimer timer;
        timer.start();
        cpu.append(double(nanosecondsOf(work)) / 1e6);
        wall.append(double(timer.nsecsElapsed()) / 1e6);
    }

    template<typename Work> void measureAgainst(const Figures &reference, Work &&work)
    {
        measure(work);
        ratio.append(cpu.last() / reference.cpu.last());
    }

    void print(const char *label) const
    {
        std::printf("%-26s %8.1f ms CPU %8.1f ms wall", label, medianOf(cpu), medianOf(wall));
        if (!ratio.isEmpty())
            std::printf(" %6.2f x coding", medianOf(ratio));
        std::printf("\n");
    }
};
}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const fileTreeDirectory *folder = makeTable();
    QVector<QImage> pictures;
    for (const fileTreeFile *texture : folder->files)
        pictures.append(pictureOf(*texture));

    Figures encoding;
    Figures decoding;
    Figures extraction;
    Figures again;
    Figures importing;
    WorkLog log;
    Progress progress;
    const QByteArray before = currentROM.data;
    // Kept to the end: file systems are slow to create files just after having deleted as many.
    const QTemporaryDir place;
    for (int i = 0; i < repetitions; ++i) {
        const QString directory = place.filePath(QString::number(i));
        QVector<QByteArray> files;
        encoding.measure([&] {
            for (const QImage &picture : qAsConst(pictures))
                files.append(encoded(picture));
        });
        decoding.measure([&] {
            for (const QByteArray &file : qAsConst(files))
                QImage::fromData(file);
        });
        extraction.measureAgainst(encoding, [&] { extractFolder(directory, folder, &log); });
        again.measureAgainst(encoding, [&] { extractFolder(directory, folder, &log); });
        int written = 0;
        QString report;
        importing.measureAgainst(decoding, [&] {
            const TextureSink sink = [&](const QImage &picture, int address, const QString &format, const QByteArray &raw) {
                written += writeTexture(&currentROM, picture, address, format, raw, &log) == WriteOutcome::Written;
            };
            importPictureFolder(directory + "/Textures", folder, sink, &progress, &log, &report);
        });
        if (written != textureCount || currentROM.data != before)
            qFatal("%d of %d textures came back", written, textureCount);
    }
    std::printf("%d textures of %dx%d\n", textureCount, side, side);
    encoding.print("PNG encoding in memory");
    extraction.print("extract the folder");
    again.print("extract it again");
    decoding.print("PNG decoding in memory");
    importing.print("import the folder");
    return 0;
}
