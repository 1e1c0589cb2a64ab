// SPDX-License-Identifier: MIT
#include "codec/compressedblock.h"

#include "codec/deflateblock.h"
#include "codec/lzblock.h"

#include <cstring>
#include <limits>

namespace
{
constexpr int yaz0ReservedOffset = 8;

bool isDeflate(BlockKind kind)
{
    return kind == BlockKind::Gzip || kind == BlockKind::Zlib;
}

QByteArray encoded(BlockKind kind, const QByteArray &content, const QByteArray &original)
{
    if (isDeflate(kind))
        return deflateblock::encoded(kind, content, original);
    QByteArray block = lzblock::encoded(kind, content);
    // What the format leaves open.
    if (kind == BlockKind::Yaz0 && original.size() >= lzblock::headerBytes)
        block.replace(yaz0ReservedOffset, 8, original.mid(yaz0ReservedOffset, 8));
    return block;
}

bool isBlockOf(const QByteArray &block, BlockKind kind, const QByteArray &content)
{
    const std::optional<CompressedBlock> decoded = blockAt(block, 0);
    return decoded && decoded->kind == kind && decoded->packedSize == block.size() && unpackedBlock(block, *decoded) == content;
}
}

QString blockKindName(BlockKind kind)
{
    switch (kind) {
    case BlockKind::Mio0: return QStringLiteral("MIO0");
    case BlockKind::Yay0: return QStringLiteral("Yay0");
    case BlockKind::Yaz0: return QStringLiteral("Yaz0");
    case BlockKind::Gzip: return QStringLiteral("gzip");
    case BlockKind::Zlib: break;
    }
    return QStringLiteral("zlib");
}

std::optional<CompressedBlock> blockAt(const QByteArray &image, int address, qint64 *work)
{
    if (address < 0 || address >= image.size())
        return std::nullopt;
    qint64 unlimited = std::numeric_limits<qint64>::max();
    if (!work)
        work = &unlimited;
    const auto *bytes = reinterpret_cast<const uchar *>(image.constData()) + address;
    const int size = image.size() - address;
    for (const BlockKind kind : allBlockKinds) {
        CompressedBlock block {kind, address, 0, 0};
        if (isDeflate(kind)) {
            if (deflateblock::hasHeader(kind, bytes, size))
                block.packedSize = deflateblock::decode(kind, bytes, size, nullptr, 0, &block.unpackedSize, work);
        } else if (lzblock::hasMagic(kind, bytes, size)) {
            block.unpackedSize = lzblock::unpackedSize(kind, bytes, size);
            block.packedSize = lzblock::decode(kind, bytes, size, nullptr, work);
        }
        if (block.packedSize > 0)
            return block;
    }
    return std::nullopt;
}

QByteArray unpackedBlock(const QByteArray &image, const CompressedBlock &block)
{
    QByteArray content(block.unpackedSize, '\0');
    const auto *bytes = reinterpret_cast<const uchar *>(image.constData()) + block.address;
    auto *target = reinterpret_cast<uchar *>(content.data());
    qint64 unlimited = std::numeric_limits<qint64>::max();
    int unpackedSize = 0;
    if (isDeflate(block.kind))
        deflateblock::decode(block.kind, bytes, block.packedSize, target, content.size(), &unpackedSize, &unlimited);
    else
        lzblock::decode(block.kind, bytes, block.packedSize, target, &unlimited);
    return content;
}

QByteArray packedBlock(BlockKind kind, const QByteArray &content, const QByteArray &original)
{
    if (content.isEmpty() || content.size() > mostUnpackedBytes)
        return QByteArray();
    const QByteArray block = encoded(kind, content, original);
    if (isBlockOf(block, kind, content))
        return block;
    // A header that was damaged, or no header at all, is nothing to keep.
    return original.isEmpty() ? QByteArray() : packedBlock(kind, content);
}
