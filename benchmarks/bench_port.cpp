// SPDX-License-Identifier: MIT
// Taking 10,000 textures over to a made revision of a 64 MiB image: the time, in CPU time of the thread and in read passes,
// against searching for one after the other, which is measured on some of them and scaled; and how many are placed right.
#include "benchmark.h"

#include "search/placement.h"
#include "tests/support/revisions.h"

#include <cstdio>
#include <cstring>

namespace
{
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

/// Searches both images for each of some pieces by memmem, up to the second copy. Returns nanoseconds, scaled to all.
qint64 plainTime(const revisions::Revision &revision, const QVector<Piece> &pieces)
{
    const int step = qMax(1, pieces.size() / 50);
    int searched = 0;
    volatile int copiesFound = 0; // or the compiler leaves the searching out
    const qint64 time = nanosecondsOf([&] {
        for (int i = 0; i < pieces.size(); i += step, ++searched) {
            for (const QByteArray &image : {revision.oldImage, revision.newImage}) {
                const char *from = image.constData();
                for (int copies = 0; copies < 2 && from; ++copies) {
                    const void *found = memmem(from, size_t(image.constEnd() - from),
                                               revision.oldImage.constData() + pieces.at(i).begin, size_t(pieces.at(i).size));
                    copiesFound = copiesFound + (found ? 1 : 0);
                    from = found ? static_cast<const char *>(found) + 1 : nullptr;
                }
            }
        }
    });
    return time / searched * pieces.size();
}

void measure(int textures, int meanSize, int parts)
{
    const revisions::Revision revision = revisions::made(1, textures, meanSize, parts);
    QVector<Piece> pieces;
    for (const revisions::Texture &texture : revision.textures)
        pieces.append({texture.begin, texture.size});
    QVector<qint64> read;
    QVector<qint64> times;
    QVector<Place> places;
    for (int round = 0; round < 5; ++round) {
        read << readPass(revision.oldImage);
        times << nanosecondsOf([&] { places = Placement(revision.oldImage, revision.newImage, pieces, nullptr).places(); });
    }
    int findable = 0;
    int right = 0;
    int wrong = 0;
    int marked = 0;
    for (int i = 0; i < places.size(); ++i) {
        const Place &place = places.at(i);
        const bool isRight = place.address == revision.truth.at(i) || place.address == revision.otherTruth.at(i);
        const bool isSure = place.state == PlaceState::Same || place.state == PlaceState::Moved;
        findable += revision.isIntact.at(i) ? 1 : 0;
        right += revision.isIntact.at(i) && isRight ? 1 : 0;
        marked += revision.isIntact.at(i) && isRight && !isSure ? 1 : 0;
        wrong += isSure && !isRight ? 1 : 0;
    }
    const qint64 plain = plainTime(revision, pieces);
    std::printf("%6d textures, %5.1f MiB, %5d parts: %7.1f ms, %5.1f read passes; plain %8.1f s (x %.0f)\n"
                "       of %d findable %d right (%.2f %%), %d of them marked; %d wrong and not marked\n",
                textures, revision.oldImage.size() / 1048576.0, parts, double(medianOf(times)) / 1e6,
                double(medianOf(times)) / double(medianOf(read)), double(plain) / 1e9, double(plain) / double(medianOf(times)),
                findable, right, 100.0 * right / findable, marked, wrong);
}
}

int main()
{
    measure(10000, 6800, 20);
    measure(10000, 6800, 200);
    measure(10000, 6800, 2000);
    measure(100000, 600, 200);
    return 0;
}
