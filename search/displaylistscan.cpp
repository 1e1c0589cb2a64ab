// SPDX-License-Identifier: MIT
#include "search/displaylistscan.h"

#include <QtEndian>

#include <algorithm>

namespace
{
/// Commands of one list are at most this many bytes apart: what is drawn with a texture, and then the next one is set.
constexpr int mostBytesApart = 4096;

/// Whether the word at \a bytes sets a texture image: the command's number, and nine bits that are zero.
bool setsTextureImage(const char *bytes)
{
    static const quint64 mask = qToBigEndian(Q_UINT64_C(0x3F07FC0000000007));
    static const quint64 value = qToBigEndian(Q_UINT64_C(0x3D00000000000000));
    return (wordAt(bytes) & mask) == value;
}

/// The first position from \a from on, a multiple of eight, that sets a texture image; the range's size when there is none.
int nextTextureImage(const ByteRange &range, int from)
{
    constexpr int block = 8 * commandBytes;
    int position = from;
    // Such words are rare, so eight are looked at for one branch.
    for (; position <= range.size - block; position += block) {
        bool any = false;
        for (int i = 0; i < block; i += commandBytes)
            any |= setsTextureImage(range.data + position + i);
        if (any)
            break;
    }
    for (; position <= range.size - commandBytes; position += commandBytes) {
        if (setsTextureImage(range.data + position))
            return position;
    }
    return range.size;
}
}

DisplayListScan scanDisplayLists(const ByteRange &range, int offset, WorkSteps *steps)
{
    DisplayListScan scan;
    DisplayListState state;
    // Commands are aligned in the image, wherever the range begins.
    int position = (commandBytes - offset % commandBytes) % commandBytes;
    int next = nextTextureImage(range, position);
    int followedTo = position;
    while (next < range.size) {
        // Tiles may be described before the texture image is set.
        position = qMax(followedTo, next - mostBytesApart);
        if (position > followedTo)
            state.end();
        int lastImage = next;
        for (; position <= range.size - commandBytes && position <= lastImage + mostBytesApart; position += commandBytes) {
            if (setsTextureImage(range.data + position))
                lastImage = position;
            state.follow(DisplayCommand::at(range.data + position), offset + position);
        }
        state.end();
        scan.textures += state.takeTextures();
        if (!steps->add(position - followedTo))
            return scan;
        followedTo = position;
        next = nextTextureImage(range, position);
    }
    for (const TextureReference &texture : qAsConst(scan.textures))
        scan.commands += texture.commands;
    std::sort(scan.commands.begin(), scan.commands.end());
    scan.commands.erase(std::unique(scan.commands.begin(), scan.commands.end()), scan.commands.end());
    return scan;
}
