// SPDX-License-Identifier: MIT
// Following display lists and placing what they use, in images of any words. Whatever they are, nothing beside the range is read,
// each texture has a size that fits the texture memory or a picture of whole rows, commands that lie in the range, and an address
// that leads into the image; adding the textures makes as many entries as are said to be new, and none the second time.
#include "fuzzinput.h"

#include "model/rom.h"
#include "search/discovery.h"

#include <QtEndian>

#include <vector>

namespace
{
/// Words like those of lists, with most fields from the input.
void appendCommand(FuzzInput *input, QByteArray *bytes)
{
    static const int operations[] = {0x3D, 0x35, 0x35, 0x33, 0x34, 0x30, 0x32, 0x27, 0x01, 0x1F};
    const quint64 operation = quint64(0xC0 | input->oneOf(operations)) << 56;
    const quint64 fields = quint64(quint32(input->number())) << 24 | quint32(input->number());
    static const quint64 masks[] = {~Q_UINT64_C(0), Q_UINT64_C(0x00F803FF0F00FFF8), Q_UINT64_C(0x00FBFFFF07FFFFFF),
                                    Q_UINT64_C(0x00FFFFFF07FFFFFF)};
    QByteArray word(8, '\0');
    qToBigEndian(operation | (fields & masks[input->below(4)] & Q_UINT64_C(0x00FFFFFFFFFFFFFF)), word.data());
    *bytes += word;
}
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const int offset = input.below(16);
    QByteArray image(0x2000 + input.below(4) * 0x400, char(input.byte()));
    image.replace(8, 4, input.bytes(4));
    QByteArray lists;
    while (!input.isUsedUp() && lists.size() < 4000)
        appendCommand(&input, &lists);
    image.replace(0x1100 + offset, qMin(lists.size(), image.size() - 0x1100 - offset),
                  lists.left(image.size() - 0x1100 - offset));

    const std::vector<char> exact(image.begin(), image.end()); // No byte behind it can be read unnoticed.
    WorkSteps steps([] { return false; });
    const DisplayListScan scan = scanDisplayLists({exact.data(), int(exact.size()), 0}, offset, &steps);
    for (const TextureReference &texture : scan.textures) {
        require(texture.width > 0 && texture.height > 0 && texture.size() > 0, "sizes are positive");
        require(texture.isPart || texture.size() <= textureMemoryWords * 8, "a block fits the texture memory");
        require(texture.address % 8 == 0 || texture.isPart, "blocks are aligned");
        for (const int command : texture.commands)
            require(command >= offset && command < offset + int(exact.size()) && command % 8 == 0, "commands lie in the range");
    }
    const Discovery discovery = discoverTextures(image, 0, image.size(), &steps);
    int wanted = 0;
    for (const DiscoveredTexture &texture : discovery.textures) {
        require(texture.address >= 0 && texture.address < image.size(), "textures lie in the image");
        require(texture.paletteAddress < image.size(), "palettes lie in the image");
        require(texture.confidence >= 0 && texture.confidence <= 1, "confidence is from 0 to 1");
        wanted += texture.canBeAdded() ? 1 : 0;
    }
    currentROM.data = image;
    currentROM.loaded = true;
    fileTreeDirectory root;
    root.isRoot = true;
    const int added = addDiscovered(discovery, &root, QStringLiteral("Discovered"));
    require(added <= wanted && (added > 0) == (wanted > 0), "what can be added is added once");
    require(fileTreeContainer().allFiles(&root).size() == added, "as many entries as said");
    require(addDiscovered(discovery, &root, QStringLiteral("Discovered")) == 0, "nothing is added twice");
    const QList<fileTreeFile *> files = fileTreeContainer().allFiles(&root);
    const QList<fileTreeDirectory *> folders = fileTreeContainer().allDirectories(&root);
    qDeleteAll(files);
    qDeleteAll(folders);
    return 0;
}
