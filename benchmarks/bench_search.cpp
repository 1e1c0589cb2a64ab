// SPDX-License-Identifier: MIT
// Searching for many pictures in a large image, against substring search for each pattern and against reading the image once.
#include "benchmark.h"
#include "content.h"

#include "codec/texturemanipulator.h"
#include "model/rom.h"
#include "search/patternsearch.h"
#include "search/searchobserver.h"
#include "search/texturesearch.h"

#include <QRandomGenerator>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>

#include <sys/resource.h>

namespace
{
constexpr int rounds = 5;

QRgb grey(int value, int alpha = 255)
{
    return qRgba(value, value, value, alpha);
}

/// The kinds of pictures that come out of games, by turns.
QImage madePicture(int kind)
{
    constexpr int side = 32;
    QImage picture(side, side, QImage::Format_ARGB32);
    const int base = below(200);
    const int margin = 2 + below(12);
    const int colours = 2 + below(3);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const bool inside = x >= margin && x < side - margin && y >= margin && y < side - margin;
            QRgb colour = 0;
            switch (kind % 20) {
            case 0: colour = qRgba(0, below(256), below(256), 255); break;
            case 1: colour = grey(base); break;
            case 2: colour = inside && below(40) == 0 ? grey(255) : 0; break;
            case 3: colour = kind % 40 == 3 ? 0 : grey(base); break;
            case 4:
            case 5:
            case 6:
            case 7: colour = qRgba(below(256), below(256), below(256), 255); break;
            case 8:
            case 9:
            case 10:
            case 11: colour = grey(below(colours) * 60); break;
            case 12:
            case 13:
            case 14:
            case 15: colour = inside ? qRgba(below(256), below(256), below(256), 255) : 0; break;
            default: colour = grey(qBound(0, base + x + y + below(9), 255)); break;
            }
            picture.setPixel(x, y, colour);
        }
    }
    return picture;
}

QVector<QByteArray> encodedInAllFormats(const QImage &picture)
{
    QVector<QByteArray> patterns;
    const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    for (const textureFormat &format : formats) {
        if (!format.usesPalette && format.name != textureFormats::jpeg.name)
            patterns.append(textureManipulator::generateData(picture, format));
    }
    return patterns;
}

volatile quint64 sink;

int countByMemmem(const QByteArray &range, const QByteArray &pattern)
{
    int copies = 0;
    const char *from = range.constData();
    const char *const end = from + range.size();
    while (const void *found = memmem(from, size_t(end - from), pattern.constData(), size_t(pattern.size()))) {
        ++copies;
        from = static_cast<const char *>(found) + pattern.size();
    }
    return copies;
}

int countByIndexOf(const QByteArray &range, const QByteArray &pattern)
{
    int copies = 0;
    for (int at = range.indexOf(pattern); at >= 0; at = range.indexOf(pattern, at + pattern.size()))
        ++copies;
    return copies;
}

/// All copies of all patterns, batch by batch, as a search for pictures asks for them.
qint64 countBySearch(const QByteArray &range, const QVector<QByteArray> &patterns, bool firstOnly)
{
    WorkSteps steps([] { return false; });
    PatternSearch search({range.constData(), range.size(), 0}, &steps);
    qint64 copies = 0;
    for (int first = 0; first < patterns.size();) {
        PatternBatch batch;
        QVector<int> places;
        while (first < patterns.size() && batch.bytes() < mostPatternBytes(range.size()))
            places.append(batch.add(patterns.at(first++)));
        search.setPatterns(batch.patterns(), firstOnly);
        for (const int place : qAsConst(places)) {
            PatternSearch::Walk walk(place);
            while (search.next(&walk) >= 0) {
                ++copies;
                if (firstOnly)
                    break;
            }
        }
    }
    return copies;
}

double milliseconds(qint64 nanoseconds)
{
    return double(nanoseconds) / 1e6;
}

struct Timed
{
    double time = 0; ///< Milliseconds, the median.
    double passes = 0; ///< In read passes of the same moment, the median.
    qint64 copies = 0;
};

template<typename Work> Timed timed(const QByteArray &range, int repetitions, Work work)
{
    Timed result;
    QVector<double> times;
    QVector<double> ratios;
    for (int round = 0; round < repetitions; ++round) {
        const double pass = milliseconds(nanosecondsOf([&range] { sink = readPass(range); }));
        const double time = milliseconds(nanosecondsOf([&] { result.copies = work(); }));
        times.append(time);
        ratios.append(time / pass);
    }
    result.time = medianOf(times);
    result.passes = medianOf(ratios);
    return result;
}

const char *verdict(double value, double target, double stretch)
{
    return value <= stretch ? "stretch met" : value <= target ? "met" : "MISSED";
}

void compareCounts(const char *what, qint64 expected, qint64 found)
{
    if (expected != found) {
        std::printf("%s: %lld copies instead of %lld\n", what, static_cast<long long>(found), static_cast<long long>(expected));
        std::exit(1);
    }
}

void searchForPictures(QByteArray range)
{
    QVector<QByteArray> all;
    QVector<int> ends; // of the patterns of each picture
    for (int kind = 0; kind < 1000; ++kind) {
        const QVector<QByteArray> patterns = encodedInAllFormats(madePicture(kind + 12));
        if (kind % 2) {
            const QByteArray &copy = patterns.at(below(patterns.size()));
            const int place = below(range.size() - copy.size()) & ~(kind % 8 == 1 ? 0 : 7);
            range.replace(place, copy.size(), copy);
        }
        all += patterns;
        ends.append(all.size());
    }
    std::printf("\nPictures of 32 x 32 in seven formats in 64 MiB of mixed content\n");
    std::printf("%-9s %9s %22s %22s %14s %11s %8s\n", "pictures", "copies", "all copies", "first copies", "memmem each",
                "speed-up", "");
    const int counts[] = {1, 10, 100, 1000};
    const double targets[] = {12, 15, 20, 40};
    const double stretches[] = {3, 5, 8, 30};
    for (int i = 0; i < 4; ++i) {
        const QVector<QByteArray> patterns = all.mid(0, ends.at(counts[i] - 1));
        const Timed search = timed(range, rounds, [&] { return countBySearch(range, patterns, false); });
        const Timed first = timed(range, rounds, [&] { return countBySearch(range, patterns, true); });
        // Every so many patterns stand for all.
        const int step = qMax(1, patterns.size() / 140);
        qint64 taken = 0;
        int sampled = 0;
        for (int p = 0; p < patterns.size(); p += step, ++sampled) {
            int copies = 0;
            taken += nanosecondsOf([&] { copies = countByMemmem(range, patterns.at(p)); });
            compareCounts("memmem", copies, countBySearch(range, {patterns.at(p)}, false));
        }
        const double memmemTime = milliseconds(taken) * patterns.size() / sampled;
        std::printf("%-9d %9lld %8.1f ms %4.1f passes %8.1f ms %4.1f passes %11.0f ms %10.0fx  %s\n", counts[i],
                    static_cast<long long>(search.copies), search.time, search.passes, first.time, first.passes, memmemTime,
                    memmemTime / search.time, verdict(search.passes, targets[i], stretches[i]));
    }
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    std::printf("most memory ever used, with range, pictures' patterns and their copies: %.1f MiB\n",
                double(usage.ru_maxrss) / 1024);
    std::printf("QByteArray::indexOf, the first four patterns, a sprite's, in a sixteenth of the range:");
    const QByteArray part = range.left(rangeSize / 16);
    for (int p = 0; p < 4; ++p) {
        const qint64 taken = nanosecondsOf([&] { sink = quint64(countByIndexOf(part, all.at(p))); });
        std::printf(" %.0f ms", milliseconds(taken));
    }
    std::printf("\n");
}

bool isFlat(const QByteArray &pattern)
{
    return pattern == repeated(pattern.left(wordBytes), pattern.size());
}

void searchForOne(const char *what, const QByteArray &range, const QByteArray &pattern)
{
    const Timed memmem = timed(range, 3, [&] { return qint64(countByMemmem(range, pattern)); });
    const Timed search = timed(range, rounds, [&] { return countBySearch(range, {pattern}, false); });
    compareCounts(what, memmem.copies, search.copies);
    const double ratio = search.time / memmem.time;
    constexpr int shortestOfTarget = 64;
    const bool met = isFlat(pattern) ? search.passes <= 3 : ratio <= 1.5 && search.passes <= 50;
    const char *outcome = pattern.size() < shortestOfTarget ? "" : met ? "met" : "MISSED";
    std::printf("%-28s %6d %8lld %9.2f ms %5.1f passes %9.2f ms %6.2f  %s\n", what, pattern.size(),
                static_cast<long long>(search.copies), search.time, search.passes, memmem.time, ratio, outcome);
}

void printHeadOfOne(const char *where)
{
    std::printf("\nOne pattern in %s\n%-28s %6s %8s %12s %12s %12s %6s\n", where, "pattern", "bytes", "copies", "search", "",
                "memmem", "ratio");
}

void searchForDegenerate()
{
    const QByteArray tile = noise(16);
    const QByteArray range = noise(32 * mebibyte) + QByteArray(24 * mebibyte, '\0') + repeated(tile, 8 * mebibyte);
    printHeadOfOne("32 MiB of noise, 24 of zeros, 8 of one tile");
    for (const int size : {64, 512, 4096}) {
        const QByteArray zeros(size, '\0');
        QByteArray pattern = zeros;
        searchForOne("all zero", range, pattern);
        searchForOne("flat, absent", range, QByteArray(size, '\x55'));
        pattern[0] = 1;
        searchForOne("one set byte, then zeros", range, pattern);
        pattern = zeros;
        pattern[size / 2] = 1;
        searchForOne("one set byte in the middle", range, pattern);
        pattern = zeros;
        pattern[size - 1] = 1;
        searchForOne("zeros, then one set byte", range, pattern);
        pattern = repeated(tile, size);
        searchForOne("the tile itself", range, pattern);
        pattern[size / 2] = char(pattern.at(size / 2) ^ 1);
        searchForOne("the tile, one bit changed", range, pattern);
        searchForOne("noise", range, noise(size));
    }
}

void searchForParts(const QByteArray &range)
{
    printHeadOfOne("64 MiB of mixed content");
    for (const int size : {16, 32, 64, 128, 512, 1024, 4096}) {
        for (int i = 0; i < 6; ++i)
            searchForOne("cut from the range", range, range.mid(below(range.size() - size), size));
        searchForOne("two-valued noise", range, noise(size, 2));
        searchForOne("noise", range, noise(size));
    }
}

/// Every copy becomes an entry of one folder, then each is overwritten.
void addEntries()
{
    std::printf("\nCopies of one picture, as entries of one folder\n%-9s %14s %14s\n", "copies", "added", "overwritten");
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("white.png"));
    QImage picture(4, 2, QImage::Format_ARGB32);
    picture.fill(Qt::white);
    picture.save(file);
    const QMap<QString, textureFormat> formats {{textureFormats::i8.name, textureFormats::i8}};
    double before[2] = {};
    for (const int copies : {10000, 100000}) {
        currentROM.data = QByteArray(copies * 8, '\xFF');
        currentROM.loaded = true;
        fileTreeDirectory target;
        target.isRoot = true;
        double times[2];
        for (const int mode : {CreateNewEntry, OverwriteEntry}) {
            SearchObserver nobody;
            TextureSearch search(&target, {formats, false, mode}, &nobody);
            times[mode == OverwriteEntry] = milliseconds(nanosecondsOf([&] { search.run({file}); }));
        }
        compareCounts("entries", copies, target.files.size());
        std::printf("%-9d %11.1f ms %11.1f ms", copies, times[0], times[1]);
        if (before[0] > 0)
            std::printf("   growth %.1f and %.1f", times[0] / before[0], times[1] / before[1]);
        std::printf("\n");
        before[0] = times[0];
        before[1] = times[1];
    }
}
}

int main()
{
    const QByteArray range = mixedContent();
    std::printf("one read pass over 64 MiB: %.2f ms\n", milliseconds(nanosecondsOf([&range] { sink = readPass(range); })));
    searchForPictures(range);
    searchForParts(range);
    searchForDegenerate();
    addEntries();
    return 0;
}
