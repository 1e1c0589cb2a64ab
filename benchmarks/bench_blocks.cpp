// SPDX-License-Identifier: MIT
// Compressed blocks: how long finding them takes against one pass of reading, and packing against plain greedy compression, in
// time and in size. Figures are CPU time of the thread, medians of five.
#include "benchmark.h"

#include "search/compressedblocks.h"
#include "tests/support/blocks.h"

#include <cstdio>

namespace
{
constexpr int mebibyte = 1024 * 1024;

double milliseconds(qint64 nanoseconds)
{
    return double(nanoseconds) / 1e6;
}

QByteArray noise(int size)
{
    QRandomGenerator64 random(1);
    QByteArray bytes(size, '\0');
    for (int i = 0; i + 8 <= size; i += 8) {
        const quint64 word = random.generate();
        memcpy(bytes.data() + i, &word, 8);
    }
    return bytes;
}

qint64 readPass(const QByteArray &image)
{
    return nanosecondsOf([&] {
        quint64 sum = 0;
        for (int i = 0; i + 8 <= image.size(); i += 8) {
            quint64 word = 0;
            memcpy(&word, image.constData() + i, 8);
            sum += word;
        }
        volatile quint64 result = sum;
        Q_UNUSED(result)
    });
}

/// Tries every address without going on behind the blocks found, as the plainest code would.
int plainlyFound(const QByteArray &image)
{
    int count = 0;
    for (int address = 0; address < image.size(); ++address)
        count += blockAt(image, address) ? 1 : 0;
    return count;
}

void measureFinding(const char *name, const QByteArray &image, bool plain)
{
    QVector<qint64> fast;
    QVector<qint64> read;
    int count = 0;
    for (int round = 0; round < 5; ++round) {
        read << readPass(image);
        fast << nanosecondsOf([&] { count = findBlocks(image).blocks.size(); });
    }
    std::printf("%-28s %6d blocks %9.1f ms %8.1f read passes", name, count, milliseconds(medianOf(fast)),
                double(medianOf(fast)) / double(medianOf(read)));
    if (plain) {
        int plainCount = 0;
        const qint64 time = nanosecondsOf([&] { plainCount = plainlyFound(image); });
        std::printf("   plain %9.1f ms (x %.1f), %d", milliseconds(time), double(time) / double(medianOf(fast)), plainCount);
    }
    std::printf("\n");
}

void measurePacking(const char *name, const QByteArray &content, bool plain)
{
    for (const BlockKind kind : allBlockKinds) {
        QVector<qint64> times;
        int size = 0;
        for (int round = 0; round < 3; ++round)
            times << nanosecondsOf([&] { size = packedBlock(kind, content).size(); });
        std::printf("%-18s %5s  %8d -> %8d bytes %9.1f ms", name, qPrintable(blockKindName(kind)), content.size(), size,
                    milliseconds(medianOf(times)));
        const bool isDeflate = kind == BlockKind::Gzip || kind == BlockKind::Zlib;
        if (plain || isDeflate) {
            // Qt's own compression is zlib's, with four bytes before it; gzip has twelve more around it.
            int lazy = 0;
            const qint64 time = nanosecondsOf([&] {
                lazy = isDeflate ? qCompress(content, 6).size() - 4 + (kind == BlockKind::Gzip ? 12 : 0)
                                 : blocks::lazySize(kind, content);
            });
            std::printf("   plain lazy %8d bytes (%+.2f %%) %9.1f ms (x %.1f)", lazy, 100.0 * (lazy - size) / size,
                        milliseconds(time), double(time) / double(medianOf(times)));
        }
        std::printf("\n");
    }
}

void measureUnpacking(const QByteArray &content)
{
    for (const BlockKind kind : allBlockKinds) {
        const QByteArray packed = packedBlock(kind, content);
        const std::optional<CompressedBlock> block = blockAt(packed, 0);
        QVector<qint64> measured;
        QVector<qint64> unpacked;
        for (int round = 0; round < 5; ++round) {
            measured << nanosecondsOf([&] { blockAt(packed, 0); });
            unpacked << nanosecondsOf([&] { unpackedBlock(packed, *block); });
        }
        std::printf("%5s  check %6.0f MiB/s of content, unpack %6.0f MiB/s\n", qPrintable(blockKindName(kind)),
                    content.size() / 1048576.0 / (double(medianOf(measured)) / 1e9),
                    content.size() / 1048576.0 / (double(medianOf(unpacked)) / 1e9));
    }
}
}

int main()
{
    std::printf("Finding, 64 MiB\n");
    measureFinding("zeros", QByteArray(64 * mebibyte, '\0'), false);
    const QByteArray wide = noise(64 * mebibyte);
    measureFinding("noise", wide, false);
    QByteArray full;
    QByteArray content = blocks::mixedContent(mebibyte, 1);
    QVector<QByteArray> packed;
    for (const BlockKind kind : allBlockKinds)
        packed << packedBlock(kind, content);
    while (full.size() < 64 * mebibyte)
        full += packed.at(full.size() % packed.size()) + wide.left(5000);
    full.truncate(64 * mebibyte);
    measureFinding("blocks of 1 MiB", full, false);
    // Each header promises 16 MiB, and what follows decodes as literals up to the end of the image, which comes too early.
    const QByteArray header = QByteArray("Yaz0") + QByteArray::fromHex("00FFFFFF FF");
    measureFinding("false headers", wide.left(48 * mebibyte) + header.repeated(16 * mebibyte / header.size()), false);
    measureFinding("blocks, 4 MiB", full.left(4 * mebibyte), true);

    std::printf("\nPacking\n");
    measurePacking("mixed", content, false);
    measurePacking("zeros", QByteArray(mebibyte, '\0'), false);
    measurePacking("noise", noise(mebibyte), false);
    QByteArray two(mebibyte, 'a');
    QRandomGenerator random(1);
    for (char &byte : two)
        byte = random.bounded(2) == 0 ? 'a' : 'b';
    measurePacking("two values", two, false);
    QByteArray counting;
    for (int i = 0; i < mebibyte / 2; ++i)
        counting.append(char(i >> 8)).append(char(i));
    measurePacking("counting", counting, false);
    measurePacking("mixed, 128 KiB", content.left(mebibyte / 8), true);

    std::printf("\nUnpacking, 1 MiB mixed\n");
    measureUnpacking(content);
    return 0;
}
