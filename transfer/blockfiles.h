// SPDX-License-Identifier: MIT
#pragma once

#include "codec/compressedblock.h"

#include <QString>

#include <optional>

/// What the name of an unpacked block's file says: IDENTIFIER-ADDRESS.KIND, as in "NQDE0-0x000F8000.yay0".
struct BlockFileName
{
    QString identifier; ///< Of the image, as fileIdentifier() writes it.
    int address = 0; ///< Of the block in the image, in bytes.
    BlockKind kind = BlockKind::Mio0;
};

/// The identifier of an image for a file name: what a file system or a shell may take for something else is replaced by "_".
QString fileIdentifier(const QString &romID);

/// The name, without a folder, of the file that holds what \a block of the image \a romID unpacks to. Without its last extension
/// it is the identifier of the file, when that is opened as an image.
QString blockFileName(const QString &romID, const CompressedBlock &block);

/// What \a fileName, without a folder, says; nothing when it is no such name.
std::optional<BlockFileName> parsedBlockFileName(const QString &fileName);

/// The outcome of packing a block.
struct BlockPacking
{
    enum class Result {
        Packed, ///< There is a new block.
        Unchanged, ///< The old block has that content, so there is nothing to write.
        NoBlock, ///< At the address there is no block that decodes, or one of another kind.
        NotPackable, ///< The content is empty or too large for any block.
        TooLong, ///< The new block does not fit into the place of the old one.
    };

    Result result = Result::NoBlock;
    int oldUnpackedSize = 0;
    int room = 0; ///< Bytes that the old block takes up.
    int packedSize = 0; ///< Of the new block, in bytes.
    QByteArray bytes; ///< The new block and zeros up to the end of the old one, to write to its address; empty unless Packed.
    int missing() const { return packedSize - room; } ///< Bytes, when the result is TooLong.
};

/// Packs \a content for the place of the block of \a kind at \a address of \a image. It has to fit into the old block's place.
BlockPacking packBlock(const QByteArray &image, int address, BlockKind kind, const QByteArray &content);
