// SPDX-License-Identifier: MIT
#include "transfer/palettesharing.h"

#include "model/textureformat.h"
#include "transfer/palettefitting.h"

#include <algorithm>

namespace
{
constexpr int bytesPerColour = 2;

/// The indices among the first \a count bytes of \a texels.
std::bitset<256> indicesIn(const char *texels, qint64 count, bool pairs)
{
    std::bitset<256> bytes;
    for (qint64 i = 0; i < count; ++i)
        bytes.set(quint8(texels[i]));
    if (!pairs)
        return bytes;
    std::bitset<256> nibbles;
    for (size_t byte = 0; byte < bytes.size(); ++byte) {
        if (bytes.test(byte)) {
            nibbles.set(byte >> 4);
            nibbles.set(byte & 15);
        }
    }
    return nibbles;
}

/// \a indices of a palette that begins \a offset bytes behind the one of interest, as places of that one: two for each index
/// where the palettes are half a colour apart.
std::bitset<256> shifted(const std::bitset<256> &indices, qint64 offset)
{
    std::bitset<256> places;
    for (int i = 0; i < int(indices.size()); ++i) {
        if (!indices.test(size_t(i)))
            continue;
        const qint64 first = bytesPerColour * i + offset;
        for (const qint64 byte : {first, first + 1}) {
            if (byte >= 0 && byte / bytesPerColour < qint64(places.size()))
                places.set(size_t(byte / bytesPerColour));
        }
    }
    return places;
}
}

QVector<PaletteSharer> paletteSharers(const fileTreeDirectory *root, const fileTreeFile &texture, const QByteArray &cartridge)
{
    // A table may list the same megabytes a hundred thousand times.
    qint64 bytesLeft = 64 * 1024 * 1024;
    const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    const int palette = texture.realPaletteAddress();
    const int bytes = bytesPerColour * textureFormats::paletteColours(formats.value(texture.format));
    const int address = texture.realAddress();

    QVector<PaletteSharer> sharers;
    const QList<fileTreeFile *> all = fileTreeContainer().allFiles(root);
    for (const fileTreeFile *other : all) {
        const int otherPlaces = textureFormats::paletteColours(formats.value(other->format));
        const qint64 offset = qint64(other->realPaletteAddress()) - palette;
        if (otherPlaces == 0 || offset >= bytes || offset + bytesPerColour * otherPlaces <= 0)
            continue;
        const int otherAddress = other->realAddress();
        if (other == &texture || (otherAddress == address && other->format == texture.format))
            continue;
        const qint64 present =
            otherAddress < 0 ? 0 : std::clamp<qint64>(qint64(cartridge.size()) - otherAddress, 0, std::max(0, other->size()));
        bytesLeft -= present;
        PaletteSharer sharer {other, {}};
        if (bytesLeft < 0)
            sharer.places.set();
        else if (present > 0)
            sharer.places = shifted(indicesIn(cartridge.constData() + otherAddress, present, otherPlaces == 16), offset);
        sharers.append(sharer);
    }
    return sharers;
}

std::bitset<256> placesUsedBy(const QVector<PaletteSharer> &sharers)
{
    std::bitset<256> places;
    for (const PaletteSharer &sharer : sharers)
        places |= sharer.places;
    return places;
}
