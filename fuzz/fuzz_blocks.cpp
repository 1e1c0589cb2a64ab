// SPDX-License-Identifier: MIT
// The decoders of MIO0, Yay0, Yaz0, gzip and zlib, whatever the bytes: nothing outside them is read or written, and what is found
// decodes to the size that was told, as a plain decoder does it. Whatever the content, packing and unpacking gives it back, and
// the block is no longer than the one of plain lazy compression.
#include "fuzzinput.h"

#include "search/compressedblocks.h"
#include "tests/support/blocks.h"

namespace
{
bool isLz(BlockKind kind)
{
    return kind != BlockKind::Gzip && kind != BlockKind::Zlib;
}

void checkBlock(const QByteArray &image, const CompressedBlock &block)
{
    require(block.packedSize > 0 && block.end() <= image.size(), "a block lies inside the image");
    require(block.unpackedSize > 0 && block.unpackedSize <= mostUnpackedBytes, "the unpacked size");
    const QByteArray content = unpackedBlock(image, block);
    require(content.size() == block.unpackedSize, "it decodes to that size");
    if (isLz(block.kind) && content.size() < 100000)
        require(blocks::plainlyDecoded(block.kind, image.mid(block.address)) == content, "as a plain decoder does");
}

void checkImage(const QByteArray &image)
{
    const BlockList list = findBlocks(image);
    require(list.searchedUpTo == image.size(), "a small image is searched whole");
    int end = 0;
    for (const CompressedBlock &block : list.blocks) {
        require(block.address >= end, "blocks are apart and in order");
        end = block.end();
        checkBlock(image, block);
    }
}

void checkPacking(BlockKind kind, const QByteArray &content, const QByteArray &original)
{
    const QByteArray packed = packedBlock(kind, content, original);
    require(packed.isEmpty() == content.isEmpty(), "any content can be packed");
    if (content.isEmpty())
        return;
    const std::optional<CompressedBlock> block = blockAt(packed, 0);
    require(block && block->packedSize == packed.size(), "a packed block is a block");
    checkBlock(packed, *block);
    require(unpackedBlock(packed, *block) == content, "the content comes back");
    if (isLz(kind) && content.size() < 600)
        require(packed.size() <= blocks::lazySize(kind, content), "it is no longer than by lazy matching");
}

/// Bytes behind a header of \a kind, so that the fuzzer need not find it.
QByteArray behindHeader(BlockKind kind, FuzzInput *input)
{
    QByteArray block;
    const int size = input->flag() ? input->number() : input->byte() + 1;
    const int links = 16 + input->byte();
    const int chunks = links + input->byte();
    switch (kind) {
    case BlockKind::Gzip: return QByteArray::fromHex("1F8B08") + input->rest();
    case BlockKind::Zlib: return QByteArray::fromHex("789C") + input->rest();
    default: break;
    }
    block = kind == BlockKind::Mio0 ? "MIO0" : kind == BlockKind::Yay0 ? "Yay0" : "Yaz0";
    for (const int number : {size, links, chunks}) {
        for (int shift = 24; shift >= 0; shift -= 8)
            block.append(char(number >> shift));
    }
    return block + input->rest();
}
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const int what = input.below(3);
    const BlockKind kind = input.oneOf(allBlockKinds);
    if (what == 0) {
        checkImage(input.rest());
    } else if (what == 1) {
        checkImage(behindHeader(kind, &input));
    } else {
        const QByteArray original = input.bytes(input.byte());
        checkPacking(kind, input.rest(), original);
    }
    return 0;
}
