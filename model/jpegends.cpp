// SPDX-License-Identifier: MIT
#include "model/jpegends.h"

#include <QVector>

namespace
{
/// Bytes that a search reads before it uses the kept markers: longer than most textures.
constexpr int blockBytes = 16 * 1024;

struct KnownEnds
{
    QByteArray image; ///< Shares the bytes of the image whose markers these are.
    QVector<int> nextOfBlock; ///< The first marker that begins in each block or behind it, -1 if there is none.
};

KnownEnds &knownEnds()
{
    static KnownEnds ends;
    return ends;
}

/// The first marker that begins in [from, to), -1 if there is none. Its second byte may lie at \a to.
int markerIn(const QByteArray &image, int from, int to)
{
    const int bytes = qMin(to + 1, image.size()) - from;
    const int found = QByteArray::fromRawData(image.constData() + from, bytes).indexOf("\xFF\xD9");
    return found < 0 ? -1 : from + found;
}

KnownEnds findEnds(const QByteArray &image)
{
    const int blocks = (image.size() + blockBytes - 1) / blockBytes;
    KnownEnds ends {image, QVector<int>(blocks)};
    int next = -1;
    for (int block = blocks - 1; block >= 0; --block) {
        const int start = block * blockBytes;
        const int found = markerIn(image, start, qMin(start + blockBytes, image.size()));
        next = found >= 0 ? found : next;
        ends.nextOfBlock[block] = next;
    }
    return ends;
}
}

int nextJpegEnd(const QByteArray &image, int from)
{
    const int block = from / blockBytes + 1;
    const int blockStart = qMin(block * blockBytes, image.size());
    const int near = markerIn(image, from, blockStart);
    if (near >= 0 || blockStart == image.size())
        return near;
    KnownEnds &ends = knownEnds();
    if (!ends.image.isSharedWith(image))
        ends = findEnds(image);
    return ends.nextOfBlock.at(block);
}

void forgetJpegEnds()
{
    knownEnds() = KnownEnds();
}
