// SPDX-License-Identifier: MIT
#pragma once

#include "codec/compressedblock.h"

/// gzip files and zlib streams: zlib decodes them, libdeflate makes them, unless zlib makes them shorter.
namespace deflateblock
{
/// Whether \a bytes begin like a stream of \a kind, which is Gzip or Zlib. About one in 2,000 places of noise does for zlib.
bool hasHeader(BlockKind kind, const uchar *bytes, int size);

/// Decodes the stream at \a bytes, of which \a size bytes are there, and checks its sum. Returns the size of the packed stream
/// and fills in \a unpackedSize; 0 when it does not decode, or to nothing, or to more than mostUnpackedBytes. With \a target, of
/// \a targetSize bytes, the content is written there; it has to be that many. \a work is lowered by the bytes read and made;
/// decoding stops with 0 when it falls to 0.
int decode(BlockKind kind, const uchar *bytes, int size, uchar *target, int targetSize, int *unpackedSize, qint64 *work);

/// A stream with that content and the header of \a original, which may be empty.
QByteArray encoded(BlockKind kind, const QByteArray &content, const QByteArray &original);
}
