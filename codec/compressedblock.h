// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// The formats of compressed data that games keep on cartridges. docs/formats.md describes them bit by bit.
enum class BlockKind { Mio0, Yay0, Yaz0, Gzip, Zlib };
constexpr BlockKind allBlockKinds[] = {BlockKind::Mio0, BlockKind::Yay0, BlockKind::Yaz0, BlockKind::Gzip, BlockKind::Zlib};

/// A compressed block of an image that decodes completely. Sizes and address are in bytes.
struct CompressedBlock
{
    BlockKind kind = BlockKind::Mio0;
    int address = 0; ///< Of its first byte, in the image.
    int packedSize = 0; ///< Header included.
    int unpackedSize = 0; ///< 1 to mostUnpackedBytes.

    int end() const { return address + packedSize; } ///< Of the byte after its last.
};

/// What a block may grow to: the console has 8 MiB of memory, so anything larger is no block of a game.
constexpr int mostUnpackedBytes = 16 * 1024 * 1024;

/// "MIO0", "Yay0", "Yaz0", "gzip" or "zlib". In lower case it is the last extension of an unpacked block's file.
QString blockKindName(BlockKind kind);

/// Looks for a block that begins exactly at \a address and decodes it to its end, without keeping what comes out. Any address and
/// any bytes are allowed. \a work counts what that cost, in bytes read or made, and ends it early when it falls to 0; it may be
/// null.
std::optional<CompressedBlock> blockAt(const QByteArray &image, int address, qint64 *work = nullptr);

/// The content of \a block, which blockAt() found in \a image.
QByteArray unpackedBlock(const QByteArray &image, const CompressedBlock &block);

/// \a content, of 1 to mostUnpackedBytes bytes, as a block of \a kind, as short as the format allows or close to it. What the
/// format leaves open in the header (a name, a time, reserved bytes) is taken from \a original, the block to replace; it may be
/// empty. The result decodes to \a content, which is checked; empty when it does not.
QByteArray packedBlock(BlockKind kind, const QByteArray &content, const QByteArray &original = QByteArray());
