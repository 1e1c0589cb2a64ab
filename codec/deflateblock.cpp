// SPDX-License-Identifier: MIT
#include "codec/deflateblock.h"

#include <QtEndian>

#include <libdeflate.h>
#include <zlib.h>

namespace deflateblock
{
namespace
{
constexpr int largestWindowBits = 15;
constexpr int gzipHeaderBytes = 10;

/// Fields of the first bytes of a zlib stream.
int windowBitsOf(const uchar *bytes)
{
    return 8 + (bytes[0] >> 4);
}

/// A z_stream that is cleaned up.
class Inflation
{
public:
    explicit Inflation(BlockKind kind)
    {
        constexpr int gzipOnly = 16;
        m_isReady = inflateInit2(&stream, kind == BlockKind::Gzip ? largestWindowBits + gzipOnly : largestWindowBits) == Z_OK;
    }
    ~Inflation()
    {
        if (m_isReady)
            inflateEnd(&stream);
    }
    Inflation(const Inflation &) = delete;
    Inflation &operator=(const Inflation &) = delete;

    bool isReady() const { return m_isReady; }

    z_stream stream = {};

private:
    bool m_isReady = false;
};

/// \a content as zlib deflates it, greedily with lazy matching, without any header; empty when there is no memory for it. Behind
/// a match of \a goodLength only a quarter of the \a longestChain of places is looked at.
QByteArray lazilyDeflated(const QByteArray &content, int windowBits, int goodLength, int longestChain)
{
    constexpr int longestMatch = 258;
    z_stream stream = {};
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, -windowBits, MAX_MEM_LEVEL - 1, Z_DEFAULT_STRATEGY) != Z_OK)
        return QByteArray();
    deflateTune(&stream, goodLength, longestMatch, longestMatch, longestChain);
    QByteArray result(int(deflateBound(&stream, uLong(content.size()))), Qt::Uninitialized);
    // zlib does not write to its input, but for C's sake it is not const.
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(content.constData()));
    stream.avail_in = uInt(content.size());
    stream.next_out = reinterpret_cast<Bytef *>(result.data());
    stream.avail_out = uInt(result.size());
    const bool done = deflate(&stream, Z_FINISH) == Z_STREAM_END;
    result.truncate(done ? int(stream.total_out) : 0);
    deflateEnd(&stream);
    return result;
}

/// \a content as libdeflate deflates it, by dynamic programming over the lengths, with the largest window; empty when there is no
/// memory for it.
QByteArray closelyDeflated(const QByteArray &content)
{
    constexpr int bestLevel = 12;
    libdeflate_compressor *compressor = libdeflate_alloc_compressor(bestLevel);
    if (!compressor)
        return QByteArray();
    const auto size = size_t(content.size());
    QByteArray result(int(libdeflate_deflate_compress_bound(compressor, size)), Qt::Uninitialized);
    result.truncate(
        int(libdeflate_deflate_compress(compressor, content.constData(), size, result.data(), size_t(result.size()))));
    libdeflate_free_compressor(compressor);
    return result;
}

QByteArray shortestDeflated(const QByteArray &content, int windowBits)
{
    // zlib's own settings for its best level take seconds for a mebibyte of two values.
    if (windowBits < largestWindowBits)
        return lazilyDeflated(content, windowBits, 8, 4096);
    // Most content gets shorter by some percent, but not all: where to end a code is a guess for both.
    const QByteArray close = closelyDeflated(content);
    const QByteArray lazy = lazilyDeflated(content, windowBits, 32, 1024);
    return close.isEmpty() || (!lazy.isEmpty() && lazy.size() < close.size()) ? lazy : close;
}

/// The header of the gzip file \a bytes, with the name and whatever else it has; a plain one when there is none.
QByteArray gzipHeader(const QByteArray &bytes)
{
    enum Flag { Sum = 2, Extra = 4, Name = 8, Comment = 16 };
    if (!hasHeader(BlockKind::Gzip, reinterpret_cast<const uchar *>(bytes.constData()), bytes.size()))
        return QByteArray::fromHex("1F8B08000000000002FF");
    const int flags = bytes.at(3);
    int size = gzipHeaderBytes;
    if ((flags & Extra) && bytes.size() >= size + 2)
        size += 2 + qFromLittleEndian<quint16>(bytes.constData() + size);
    for (const Flag text : {Name, Comment}) {
        if (flags & text)
            size = bytes.indexOf('\0', size) + 1;
    }
    return bytes.left(size + (flags & Sum ? 2 : 0));
}

QByteArray gzipEncoded(const QByteArray &content, const QByteArray &original)
{
    uchar tail[8];
    const auto *bytes = reinterpret_cast<const Bytef *>(content.constData());
    qToLittleEndian(quint32(crc32(crc32(0, nullptr, 0), bytes, uInt(content.size()))), tail);
    qToLittleEndian(quint32(content.size()), tail + 4);
    return gzipHeader(original) + shortestDeflated(content, largestWindowBits)
        + QByteArray(reinterpret_cast<const char *>(tail), sizeof tail);
}

QByteArray zlibEncoded(const QByteArray &content, const QByteArray &original)
{
    const auto *old = reinterpret_cast<const uchar *>(original.constData());
    QByteArray header = QByteArray::fromHex("78DA");
    int windowBits = largestWindowBits;
    // What reads the block may have room for the window that it was made with, and no more. zlib makes none of 256 bytes.
    if (hasHeader(BlockKind::Zlib, old, original.size())) {
        windowBits = qMax(9, windowBitsOf(old));
        header = windowBits == windowBitsOf(old) ? original.left(2) : QByteArray::fromHex("1819");
    }
    uchar sum[4];
    const auto *bytes = reinterpret_cast<const Bytef *>(content.constData());
    qToBigEndian(quint32(adler32(adler32(0, nullptr, 0), bytes, uInt(content.size()))), sum);
    return header + shortestDeflated(content, windowBits) + QByteArray(reinterpret_cast<const char *>(sum), sizeof sum);
}
}

bool hasHeader(BlockKind kind, const uchar *bytes, int size)
{
    if (kind == BlockKind::Gzip) {
        constexpr int reservedFlags = 0xE0;
        return size > gzipHeaderBytes && bytes[0] == 0x1F && bytes[1] == 0x8B && bytes[2] == Z_DEFLATED
            && (bytes[3] & reservedFlags) == 0;
    }
    constexpr int dictionaryFlag = 0x20;
    return size > 2 && (bytes[0] & 0x8F) == Z_DEFLATED && (bytes[1] & dictionaryFlag) == 0
        && (bytes[0] << 8 | bytes[1]) % 31 == 0;
}

int decode(BlockKind kind, const uchar *bytes, int size, uchar *target, int targetSize, int *unpackedSize, qint64 *work)
{
    Inflation inflation(kind);
    if (!inflation.isReady())
        return 0;
    z_stream &stream = inflation.stream;
    stream.next_in = const_cast<Bytef *>(bytes);
    stream.avail_in = uInt(size);
    uchar scratch[0x4000];
    qint64 counted = 0;
    int status = Z_OK;
    while (status == Z_OK && *work > 0) {
        stream.next_out = target ? target + stream.total_out : scratch;
        stream.avail_out = target ? uInt(targetSize) - uInt(stream.total_out) : uInt(sizeof scratch);
        // Without room or input left, this ends with Z_BUF_ERROR.
        status = inflate(&stream, Z_NO_FLUSH);
        const qint64 done = qint64(stream.total_in) + qint64(stream.total_out);
        *work -= done - counted;
        counted = done;
        if (stream.total_out > uLong(mostUnpackedBytes))
            return 0;
    }
    const bool complete = status == Z_STREAM_END && stream.total_out > 0 && (!target || int(stream.total_out) == targetSize);
    if (!complete)
        return 0;
    *unpackedSize = int(stream.total_out);
    return int(stream.total_in);
}

QByteArray encoded(BlockKind kind, const QByteArray &content, const QByteArray &original)
{
    return kind == BlockKind::Gzip ? gzipEncoded(content, original) : zlibEncoded(content, original);
}
}
