// SPDX-License-Identifier: MIT
#include "codec/lzblock.h"

#include <QtEndian>

#include <cstring>

namespace lzblock
{
namespace
{
/// Reads single bytes of a table and knows where it ends.
struct Table
{
    const uchar *next = nullptr;
    const uchar *end = nullptr;

    int left() const { return int(end - next); }
};

const char *magicOf(BlockKind kind)
{
    return kind == BlockKind::Mio0 ? "MIO0" : kind == BlockKind::Yay0 ? "Yay0" : "Yaz0";
}

/// The tables of one block. In a Yaz0 block all three are the same stream of bytes.
struct Tables
{
    Table bits;
    Table links; ///< Two bytes a match.
    Table chunks; ///< Literals, and the lengths of long matches.
};

/// Where the tables of a block with tables of their own begin; the bits come first. False when they are not in that order.
bool findTables(const uchar *bytes, int size, Tables *tables)
{
    const quint32 links = qFromBigEndian<quint32>(bytes + 8);
    const quint32 chunks = qFromBigEndian<quint32>(bytes + 12);
    if (links < quint32(headerBytes) || chunks < links || chunks > quint32(size))
        return false;
    tables->bits = {bytes + headerBytes, bytes + links};
    tables->links = {bytes + links, bytes + chunks};
    tables->chunks = {bytes + chunks, bytes + size};
    return true;
}

/// Writes what is decoded, or only counts it.
class Target
{
public:
    Target(uchar *bytes, int size) : m_bytes(bytes), m_size(size) { }

    bool isFull() const { return m_done == m_size; }
    void addLiteral(uchar byte)
    {
        if (m_bytes)
            m_bytes[m_done] = byte;
        ++m_done;
    }
    /// False when the match reaches before the beginning or beyond the end.
    bool addMatch(int distance, int length)
    {
        if (distance > m_done || length > m_size - m_done)
            return false;
        if (m_bytes) {
            uchar *to = m_bytes + m_done;
            if (distance >= length) {
                std::memcpy(to, to - distance, size_t(length));
            } else { // What is copied is being made: byte by byte.
                for (int i = 0; i < length; ++i)
                    to[i] = to[i - distance];
            }
        }
        m_done += length;
        return true;
    }

private:
    uchar *m_bytes;
    int m_size;
    int m_done = 0;
};

constexpr int firstLongLength = 0x12;

/// Takes the steps of a block until \a target is full. \a links and \a chunks may be one and the same table, as may \a bits.
template<BlockKind kind> bool takeSteps(Table &bits, Table &links, Table &chunks, Target *target, qint64 *work)
{
    while (!target->isFull()) {
        if (bits.left() < 1 || *work <= 0)
            return false;
        const uchar *const chunksBefore = chunks.next;
        const uchar *const linksBefore = links.next;
        unsigned code = *bits.next++;
        for (int bit = 0; bit < 8 && !target->isFull(); ++bit, code <<= 1) {
            if (code & 0x80) {
                if (chunks.left() < 1)
                    return false;
                target->addLiteral(*chunks.next++);
                continue;
            }
            if (links.left() < 2)
                return false;
            const int word = qFromBigEndian<quint16>(links.next);
            links.next += 2;
            const int distance = (word & 0xFFF) + 1;
            int length = word >> 12;
            if (kind == BlockKind::Mio0) {
                length += 3;
            } else if (length > 0) {
                length += 2;
            } else {
                if (chunks.left() < 1)
                    return false;
                length = *chunks.next++ + firstLongLength;
            }
            if (!target->addMatch(distance, length))
                return false;
        }
        *work -= 1 + (chunks.next - chunksBefore) + (kind == BlockKind::Yaz0 ? 0 : links.next - linksBefore);
    }
    return true;
}
}

bool hasMagic(BlockKind kind, const uchar *bytes, int size)
{
    return size >= headerBytes && std::memcmp(bytes, magicOf(kind), 4) == 0;
}

int unpackedSize(BlockKind kind, const uchar *bytes, int size)
{
    // Nothing is denser than steps of the longest match: a bit, two bytes, and for those of the last two kinds one byte more.
    const qint64 bitsPerStep = kind == BlockKind::Mio0 ? 17 : 25;
    const qint64 bytesPerStep = kind == BlockKind::Mio0 ? 18 : 0xFF + firstLongLength;
    const qint64 most = qMin<qint64>(mostUnpackedBytes, (qint64(size - headerBytes) * 8 / bitsPerStep + 1) * bytesPerStep);
    const qint64 stated = qFromBigEndian<quint32>(bytes + 4);
    return stated > most ? 0 : int(stated);
}

int decode(BlockKind kind, const uchar *bytes, int size, uchar *target, qint64 *work)
{
    const int content = unpackedSize(kind, bytes, size);
    if (content == 0)
        return 0;
    Target writer(target, content);
    Tables tables;
    if (kind == BlockKind::Yaz0) {
        Table stream {bytes + headerBytes, bytes + size};
        return takeSteps<BlockKind::Yaz0>(stream, stream, stream, &writer, work) ? int(stream.next - bytes) : 0;
    }
    if (!findTables(bytes, size, &tables))
        return 0;
    const bool done = kind == BlockKind::Mio0
        ? takeSteps<BlockKind::Mio0>(tables.bits, tables.links, tables.chunks, &writer, work)
        : takeSteps<BlockKind::Yay0>(tables.bits, tables.links, tables.chunks, &writer, work);
    // The chunks come last, so the block ends where they do.
    return done ? int(tables.chunks.next - bytes) : 0;
}
}
