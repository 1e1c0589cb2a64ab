// SPDX-License-Identifier: MIT
// Makes a BPS patch of a full-size image with edited and moved regions, and applies it, against the naive way: comparing byte by
// byte at the same place and writing what differs. Sizes count as the new bytes and 16 more for each edit.
#include "benchmarks/benchmark.h"
#include "transfer/bpspatch.h"

#include <QRandomGenerator>

#include <cstdio>
#include <sys/resource.h>

namespace
{
constexpr int imageBytes = 64 * 1024 * 1024;
constexpr int edits = 1000;
constexpr int moves = 50;

/// Half noise, like compressed data, and half rows that resemble each other, like code, tables and textures.
QByteArray makeImage(QRandomGenerator *random)
{
    QByteArray image(imageBytes, Qt::Uninitialized);
    for (int block = 0; block < imageBytes; block += 4096) {
        const bool noise = random->bounded(2) == 0;
        for (int i = block; i < block + 4096; ++i)
            image[i] = char(noise ? random->bounded(256) : (i / 16) & random->bounded(4));
    }
    return image;
}

/// Puts fresh bytes in places of their own; returns how many.
int edit(QByteArray *image, QRandomGenerator *random)
{
    int fresh = 0;
    for (int i = 0; i < edits; ++i) {
        const int length = 16 + random->bounded(2000);
        const int at = int(qint64(imageBytes) * i / edits) + random->bounded(20000);
        for (int k = 0; k < length; ++k)
            (*image)[at + k] = char(random->bounded(256));
        fresh += length;
    }
    return fresh;
}

void move(QByteArray *image, const QByteArray &original, QRandomGenerator *random)
{
    for (int i = 0; i < moves; ++i) {
        const int length = 1000 + random->bounded(30000);
        const int from = random->bounded(imageBytes - length);
        // Behind the edits of their part, so that both stay whole.
        const int to = int(qint64(imageBytes) * (20 * i) / edits) + 25000;
        image->replace(to, length, original.mid(from, length));
    }
}

/// What the naive way writes: each range that differs at the same place, and five bytes of head.
qint64 naiveSize(const QByteArray &source, const QByteArray &target)
{
    qint64 bytes = 0;
    bool open = false;
    for (int i = 0; i < target.size(); ++i) {
        const bool differs = source.at(i) != target.at(i);
        bytes += differs ? (open ? 1 : 6) : 0;
        open = differs;
    }
    return bytes;
}

long peakKilobytes()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}
}

int main()
{
    QRandomGenerator random(15);
    const QByteArray source = makeImage(&random);
    QByteArray target = source;
    move(&target, source, &random);
    const int fresh = edit(&target, &random);

    QByteArray patch;
    const qint64 making = nanosecondsOf([&] { patch = createBps(source, target, {}); });
    const long peak = peakKilobytes();
    QByteArray made;
    QString error;
    bool right = false;
    const qint64 applying = nanosecondsOf([&] { right = applyBps(source, patch, &made, &error); });
    qint64 naive = 0;
    const qint64 comparing = nanosecondsOf([&] { naive = naiveSize(source, target); });

    const double allowed = fresh + 16.0 * edits;
    std::printf("64 MiB, %d regions edited (%d new bytes), %d moved\n", edits, fresh, moves);
    std::printf("patch      %10d bytes   %6.3f times the new bytes and 16 for each edit   %6.3f times the naive patch\n",
                patch.size(), patch.size() / allowed, double(patch.size()) / double(naive));
    std::printf("making it  %10.2f s       %6.1f times the naive comparison\n", double(making) / 1e9,
                double(making) / double(comparing));
    std::printf("applying   %10.2f s\n", double(applying) / 1e9);
    std::printf("peak       %10.1f times the image\n", double(peak) * 1024 / imageBytes);

    // The worst case: nothing of the target is in the source.
    QByteArray other(imageBytes, Qt::Uninitialized);
    for (char &byte : other)
        byte = char(random.bounded(256));
    patch.clear();
    made.clear();
    const qint64 worst = nanosecondsOf([&] { patch = createBps(source, other, {}); });
    std::printf("all new    %10.2f s       %6.3f times the target   peak %.1f times the image (with a third image)\n",
                double(worst) / 1e9, double(patch.size()) / imageBytes, double(peakKilobytes()) * 1024 / imageBytes);
    return right && made.isEmpty() ? 0 : 1;
}
