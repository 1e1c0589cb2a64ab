// SPDX-License-Identifier: MIT
#pragma once

#include "codec/compressedblock.h"

/// MIO0, Yay0 and Yaz0: three layouts of one scheme. Bits say whether the next step copies a literal byte or a match, a run of
/// bytes from up to 4,096 bytes back. The header is the magic word and the unpacked size, and for the first two, the places of
/// the other two tables.
namespace lzblock
{
constexpr int headerBytes = 16;

bool hasMagic(BlockKind kind, const uchar *bytes, int size);

/// Decodes the block at \a bytes, of which \a size bytes are there. With \a target, which takes as many bytes as the header says,
/// the content is written there. Returns the size of the packed block; 0 when it does not decode to its end. \a work is lowered
/// by the bytes read; decoding stops with 0 when it falls to 0.
int decode(BlockKind kind, const uchar *bytes, int size, uchar *target, qint64 *work);

/// What the header says of the unpacked size; 0 when it cannot be right for a block within \a size bytes.
int unpackedSize(BlockKind kind, const uchar *bytes, int size);

/// The shortest block with that content.
QByteArray encoded(BlockKind kind, const QByteArray &content);
}
