// SPDX-License-Identifier: MIT
// Searching for pictures as indexed textures, and for palettes, in repetitive images, against a search that tries every place
// with maps. The places are the same, in the same order, at any size and alignment, and no byte beside the range is read.
#include "fuzzinput.h"

#include "search/indexedsearch.h"
#include "search/palettesearch.h"

#include <QImage>

#include <map>
#include <vector>

namespace
{
int indexAt(const std::vector<char> &bytes, int position, int bits, int pixel)
{
    if (bits == 8)
        return uchar(bytes[size_t(position + pixel)]);
    return uchar(bytes[size_t(position + pixel / 2)]) >> (pixel % 2 ? 0 : 4) & 0xF;
}

bool fits(const std::vector<char> &bytes, int position, const IndexedPattern &pattern)
{
    std::map<int, int> numberOf;
    std::map<int, int> indexOf;
    for (int i = 0; i < pattern.pixels; ++i) {
        const int index = indexAt(bytes, position, pattern.bits, i);
        const int number = pattern.numberAt(i);
        if (numberOf.emplace(index, number).first->second != number || indexOf.emplace(number, index).first->second != index)
            return false;
    }
    return true;
}

QVector<int> plainPlaces(const std::vector<char> &bytes, const IndexedPattern &pattern)
{
    QVector<int> places;
    for (int position = 0; position + pattern.numbers.size() <= int(bytes.size()); ++position) {
        if (fits(bytes, position, pattern))
            places.append(position);
    }
    return places;
}

bool isPaletteAt(const std::vector<char> &bytes, int position, const WantedPalette &palette)
{
    for (int i = 0; i < palette.indices.size(); ++i) {
        const auto at = size_t(position + 2 * palette.indices.at(i));
        if (at + 2 > bytes.size())
            return false;
        const int colour = uchar(bytes[at]) << 8 | uchar(bytes[at + 1]);
        if (palette.words.at(i) != 0 ? colour != palette.words.at(i) : (colour & 1) != 0)
            return false;
    }
    return true;
}

/// A part of the image as a picture, each index a colour, some of them alike or clear.
QImage anyPicture(FuzzInput *input, const std::vector<char> &bytes, int bits)
{
    const int width = 1 + input->below(40);
    const int height = 1 + input->below(24);
    const int step = 1 + input->below(3);
    const bool hasClear = input->flag();
    const int place = (input->byte() << 8 | input->byte()) % int(bytes.size());
    const int all = (int(bytes.size()) - place) * 8 / bits;
    QImage picture(width, height, QImage::Format_ARGB32);
    for (int i = 0; i < width * height; ++i) {
        const int index = indexAt(bytes, place, bits, i % all);
        picture.setPixel(i % width, i / width, qRgba(index * step % 256, index, 0, hasClear && index < 2 ? index : 255));
    }
    return picture;
}
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const int bits = input.flag() ? 4 : 8;
    QByteArray image;
    for (int parts = 1 + input.below(16); parts > 0; --parts) {
        switch (input.below(3)) {
        case 0: image += input.bytes(input.below(80)); break;
        case 1: image += QByteArray(input.below(60), char(input.byte())); break;
        default: image += image.mid(input.byte(), input.byte()); break;
        }
    }
    if (image.isEmpty())
        return 0;
    const std::vector<char> bytes(image.begin(), image.end()); // No byte behind it can be read unnoticed.
    const ByteRange range {bytes.data(), int(bytes.size()), 0};
    WorkSteps steps([] { return false; });
    QVector<IndexedPattern> patterns;
    for (int i = input.below(4); i >= 0; --i) {
        QString refusal;
        const QVector<IndexedPattern> some = indexedPatterns(anyPicture(&input, bytes, bits), bits, &refusal);
        require(some.isEmpty() != refusal.isEmpty(), "a picture is searched for or refused");
        patterns += some;
    }
    const QVector<QVector<int>> found = IndexedSearch(range, &steps).find(patterns);
    QVector<WantedPalette> palettes;
    for (int i = 0; i < patterns.size(); ++i) {
        require(found.at(i) == plainPlaces(bytes, patterns.at(i)), "the places that trying every one finds");
        for (const int position : found.at(i))
            palettes.append({indicesAt(range, position, patterns.at(i)), patterns.at(i).colours});
    }
    const QVector<QVector<int>> places = findPalettes(range, palettes, &steps);
    for (int i = 0; i < palettes.size(); ++i) {
        QVector<int> expected;
        const bool isOpaque = palettes.at(i).words.count(0) < palettes.at(i).words.size();
        for (int position = 0; isOpaque && position < range.size; position += 2) {
            if (isPaletteAt(bytes, position, palettes.at(i)))
                expected.append(position);
        }
        require(places.at(i) == expected, "the palettes that trying every place finds");
    }
    return 0;
}
