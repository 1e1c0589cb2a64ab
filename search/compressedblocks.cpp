// SPDX-License-Identifier: MIT
#include "search/compressedblocks.h"

#include "base/progress.h"

#include <array>

namespace
{
/// Whether a block can begin with a byte: 'M', 'Y', gzip's 1F, and of zlib the eight that say how large its window is.
constexpr std::array<bool, 256> makeFirstBytes()
{
    std::array<bool, 256> first {};
    first['M'] = first['Y'] = first[0x1F] = true;
    for (int window = 0; window < 8; ++window)
        first[size_t(window << 4 | 8)] = true;
    return first;
}
constexpr std::array<bool, 256> isFirstByte = makeFirstBytes();

/// Whether \a bytes, at least two, can be the first two of a block.
bool canBegin(const uchar *bytes)
{
    switch (bytes[0]) {
    case 'M': return bytes[1] == 'I';
    case 'Y': return bytes[1] == 'a';
    case 0x1F: return bytes[1] == 0x8B;
    default: return (bytes[0] << 8 | bytes[1]) % 31 == 0;
    }
}

/// What decoding may cost for an image of \a size bytes, in bytes read and made. Real images stay far below it: their streams
/// grow to two or three times their size.
qint64 mostWork(int size)
{
    constexpr qint64 forSmallImages = qint64(64) * 1024 * 1024;
    return 8 * qint64(size) + forSmallImages;
}
}

BlockList findBlocks(const QByteArray &image, Progress *progress)
{
    constexpr int bytesPerStep = 0x100000;
    BlockList found;
    const auto *bytes = reinterpret_cast<const uchar *>(image.constData());
    const int last = image.size() - 1; // A header has two bytes at least.
    qint64 work = mostWork(image.size());
    int nextReport = 0;
    int position = 0;
    if (progress)
        progress->setMaximum(image.size());
    while (position < last) {
        if (position >= nextReport && progress) {
            progress->setValue(position);
            if (progress->cancelled())
                break;
            nextReport = position + bytesPerStep;
        }
        const int end = int(qMin<qint64>(last, qint64(position) + bytesPerStep));
        while (position < end && !(isFirstByte[bytes[position]] && canBegin(bytes + position)))
            ++position;
        if (position == end)
            continue;
        const std::optional<CompressedBlock> block = blockAt(image, position, &work);
        if (work <= 0)
            break;
        if (block)
            found.blocks.append(*block);
        position = block ? block->end() : position + 1;
    }
    found.searchedUpTo = position >= last ? image.size() : position;
    return found;
}
