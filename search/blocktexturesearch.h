// SPDX-License-Identifier: MIT
#pragma once

#include "codec/compressedblock.h"
#include "model/textureformat.h"

#include <QMap>
#include <QStringList>
#include <QVector>

class Progress;

/// A copy of a picture inside a compressed block.
struct BlockHit
{
    int picture = 0; ///< Place in the list of files.
    int width = 0; ///< Pixels.
    int height = 0;
    QString format;
    int block = 0; ///< Place in the list of blocks.
    int offset = 0; ///< In the block's content, in bytes.
};

/// Searches what \a blocks of \a image hold for the bytes that the pictures in \a files have in each of \a formats, at any
/// alignment, as TextureSearch does in the image. With \a firstOnly a picture's search ends with its first copy, by format and
/// block. Pictures that cannot be read, or that are larger than any block, have no copies. The hits come by picture, format,
/// block and offset. One block at a time is unpacked. \a progress may be null; when it is cancelled, not all hits are there.
QVector<BlockHit> searchInBlocks(const QByteArray &image, const QVector<CompressedBlock> &blocks, const QStringList &files,
                                 const QMap<QString, textureFormat> &formats, bool firstOnly, Progress *progress);
