// SPDX-License-Identifier: MIT
// Converting an image to big-endian in place, against copying it and against the loop that exchanges single bytes.
#include "benchmark.h"

#include "model/byteorder.h"

#include <cstdio>
#include <cstring>

namespace
{
/// Byte by byte in the array that holds the image, looking for progress at each step.
void swapBytesOneByOne(QByteArray &bytes, int step, int (*reported)(int))
{
    for (int i = 0; i < bytes.size(); i += 2) {
        if (i % step <= 1)
            reported(i);
        const char first = bytes[i];
        bytes[i] = bytes[i + 1];
        bytes[i + 1] = first;
    }
}

void reverseBytesOneByOne(QByteArray &bytes, int step, int (*reported)(int))
{
    for (int i = 0; i < bytes.size(); i += 4) {
        if (i % step <= 3)
            reported(i);
        const char old[4] = {bytes[i], bytes[i + 1], bytes[i + 2], bytes[i + 3]};
        for (int k = 0; k < 4; ++k)
            bytes[i + k] = old[3 - k];
    }
}

int lastReport = 0;

int report(int bytes)
{
    lastReport = bytes;
    return bytes;
}
}

int main()
{
    constexpr int repetitions = 7;
    std::printf("%8s %-16s %10s %10s %10s %14s %14s\n", "size", "order", "converting", "memcpy", "byte loop", "to memcpy",
                "loop to it");
    for (const int mebibytes : {8, 64}) {
        const int size = mebibytes << 20;
        QByteArray image(size, '\x5A');
        QByteArray copy(size, '\0');
        for (const ByteOrder order : {ByteOrder::ByteSwapped, ByteOrder::LittleEndian}) {
            QVector<double> converting;
            QVector<double> copying;
            QVector<double> looping;
            QVector<double> toCopy;
            QVector<double> toLoop;
            const auto loop = order == ByteOrder::ByteSwapped ? swapBytesOneByOne : reverseBytesOneByOne;
            for (int i = 0; i < repetitions; ++i) {
                converting << double(nanosecondsOf([&] { convertByteOrder(&image, order, [](int bytes) { report(bytes); }); }));
                copying << double(nanosecondsOf([&] { std::memcpy(copy.data(), image.constData(), size_t(size)); }));
                looping << double(nanosecondsOf([&] { loop(image, size / 100, report); }));
                toCopy << converting.last() / copying.last();
                toLoop << looping.last() / converting.last();
            }
            std::printf("%4d MiB %-16s %7.2f ms %7.2f ms %7.1f ms %14.2f %14.1f\n", mebibytes,
                        order == ByteOrder::ByteSwapped ? "16-bit swap" : "32-bit reversal", medianOf(converting) / 1e6,
                        medianOf(copying) / 1e6, medianOf(looping) / 1e6, medianOf(toCopy), medianOf(toLoop));
        }
    }
    if (lastReport == 0)
        return 1;
    std::printf("targets at 64 MiB: at most 1.5 times memcpy (stretch 0.8), the loop at least 20 times as slow\n");
}
