// SPDX-License-Identifier: MIT
#include "transfer/bpsdelta.h"

#include <QVector>

#include <cstring>

namespace
{
/// Blocks are what is looked up: a match that holds a whole aligned block of the source is found wherever it is in the target.
constexpr int blockBytes = 16;

/// What an action costs in the patch, in bytes, together with the action it interrupts. A match pays when it is longer.
constexpr int readCost = 4;
constexpr int copyCost = 10;

/// Same-place matches of this length are taken without looking for a better one.
constexpr int longMatch = 64;

quint64 wordAt(const char *bytes)
{
    quint64 word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

quint64 hashOfBlock(const char *bytes)
{
    quint64 hash = wordAt(bytes) * 0x9E3779B97F4A7C15u ^ wordAt(bytes + 8) * 0xC2B2AE3D27D4EB4Fu;
    hash ^= hash >> 32;
    return hash * 0xD6E8FEB86659FD93u;
}

/// How many bytes \a first and \a second have in common from their starts on, at most \a limit.
int commonBytes(const char *first, const char *second, int limit)
{
    int length = 0;
    while (length + 8 <= limit && wordAt(first + length) == wordAt(second + length))
        length += 8;
    while (length < limit && first[length] == second[length])
        ++length;
    return length;
}

/// How many bytes before \a first and \a second are the same, at most \a limit.
int commonBytesBefore(const char *first, const char *second, int limit)
{
    int length = 0;
    while (length < limit && first[-length - 1] == second[-length - 1])
        ++length;
    return length;
}

/// Where blocks are, by their content. Positions from the source's size on are in the target. It is a hint: of blocks with the
/// same content the first is kept, and one that finds no free slot nearby is forgotten.
class BlockIndex
{
public:
    BlockIndex(const QByteArray &source, const QByteArray &target) : m_source(source), m_target(target)
    {
        const int blocks = source.size() / blockBytes + target.size() / blockBytes;
        int bits = 4;
        while ((1 << bits) < blocks)
            ++bits;
        m_slots.resize(1 << bits);
        m_shift = 64 - bits;
        for (int position = 0; position + blockBytes <= source.size(); position += blockBytes)
            insert(quint32(position));
    }

    void insert(quint32 position)
    {
        const quint64 hash = hashOfBlock(at(position));
        for (Slot *slot = slotOf(hash), *end = slot + probes; slot != end; ++slot) {
            if (slot->next == 0) {
                *slot = {quint32(hash), position + 1};
                return;
            }
            if (slot->tag == quint32(hash) && std::memcmp(at(slot->next - 1), at(position), blockBytes) == 0)
                return;
        }
    }

    /// Position of a block with the bytes at \a block; -1 when none is known.
    qint64 find(const char *block) const
    {
        const quint64 hash = hashOfBlock(block);
        for (const Slot *slot = slotOf(hash), *end = slot + probes; slot != end && slot->next != 0; ++slot) {
            if (slot->tag == quint32(hash) && std::memcmp(at(slot->next - 1), block, blockBytes) == 0)
                return slot->next - 1;
        }
        return -1;
    }

private:
    struct Slot
    {
        quint32 tag = 0;
        quint32 next = 0; ///< Position + 1; 0 in a free slot.
    };
    static constexpr int probes = 8;

    const char *at(quint32 position) const
    {
        const auto sourceBytes = quint32(m_source.size());
        return position < sourceBytes ? m_source.constData() + position : m_target.constData() + (position - sourceBytes);
    }
    /// The first of the slots for \a hash; at least as many as are probed follow.
    const Slot *slotOf(quint64 hash) const
    {
        return m_slots.constData() + qMin<quint64>(hash >> m_shift, quint64(m_slots.size() - probes));
    }
    Slot *slotOf(quint64 hash) { return const_cast<Slot *>(qAsConst(*this).slotOf(hash)); }

    const QByteArray &m_source;
    const QByteArray &m_target;
    QVector<Slot> m_slots;
    int m_shift = 0;
};

struct Match
{
    BpsAction action = BpsAction::SourceRead;
    int from = 0; ///< In the source, or in the target.
    int length = 0;
    int gain = 0; ///< Bytes that the patch is smaller by.
};

class Delta
{
public:
    Delta(QByteArray *patch, const QByteArray &source, const QByteArray &target)
        : m_patch(patch), m_source(source), m_target(target), m_index(source, target)
    {
    }

    void append()
    {
        int position = 0;
        while (position < m_target.size()) {
            Match match = matchAt(position);
            if (match.gain <= 0) {
                ++position;
                indexNewBlock(position);
                continue;
            }
            const int end = position + match.length;
            extendBack(&match, position);
            appendNewBytes(end - match.length);
            appendMatch(match);
            position = m_done = end;
        }
        appendNewBytes(m_target.size());
    }

private:
    Match matchAt(int position) const
    {
        Match best = samePlace(position);
        if (best.length >= longMatch)
            return best;
        for (const Match &other : {repetition(position), movedBlock(position)}) {
            if (other.gain > best.gain)
                best = other;
        }
        return best;
    }

    Match samePlace(int position) const
    {
        const int limit = qMin(m_source.size(), m_target.size()) - position;
        const int length = limit > 0 ? commonBytes(m_source.constData() + position, m_target.constData() + position, limit) : 0;
        return {BpsAction::SourceRead, position, length, length - readCost};
    }

    /// The byte before, again and again.
    Match repetition(int position) const
    {
        if (position == 0)
            return {};
        const char *bytes = m_target.constData() + position;
        const int length = commonBytes(bytes - 1, bytes, m_target.size() - position);
        return {BpsAction::TargetCopy, position - 1, length, length - copyCost};
    }

    Match movedBlock(int position) const
    {
        const int left = m_target.size() - position;
        if (left < blockBytes)
            return {};
        const char *bytes = m_target.constData() + position;
        const qint64 found = m_index.find(bytes);
        if (found < 0)
            return {};
        if (found < m_source.size()) {
            const int from = int(found);
            const int length = commonBytes(m_source.constData() + from, bytes, qMin(left, m_source.size() - from));
            return {BpsAction::SourceCopy, from, length, length - copyCost};
        }
        const int from = int(found - m_source.size());
        const int length = commonBytes(m_target.constData() + from, bytes, left);
        return {BpsAction::TargetCopy, from, length, length - copyCost};
    }

    /// Makes \a match, which begins at \a position, begin earlier, over new bytes that are not written yet.
    void extendBack(Match *match, int position) const
    {
        const QByteArray &from = match->action == BpsAction::TargetCopy ? m_target : m_source;
        const int more = commonBytesBefore(from.constData() + match->from, m_target.constData() + position,
                                           qMin(position - m_done, match->from));
        match->from -= more;
        match->length += more;
    }

    /// New bytes are worth finding again.
    void indexNewBlock(int end)
    {
        if (end % blockBytes == 0 && end - blockBytes >= m_done)
            m_index.insert(quint32(m_source.size()) + quint32(end - blockBytes));
    }

    void appendAction(BpsAction action, int length) { appendBpsNumber(m_patch, quint64(length - 1) << 2 | quint64(action)); }

    void appendNewBytes(int end)
    {
        if (end == m_done)
            return;
        appendAction(BpsAction::TargetRead, end - m_done);
        m_patch->append(m_target.constData() + m_done, end - m_done);
        m_done = end;
    }

    void appendMatch(const Match &match)
    {
        appendAction(match.action, match.length);
        if (match.action == BpsAction::SourceRead)
            return;
        int &last = match.action == BpsAction::SourceCopy ? m_sourceEnd : m_targetEnd;
        const int distance = match.from - last;
        appendBpsNumber(m_patch, quint64(qAbs(distance)) << 1 | quint64(distance < 0));
        last = match.from + match.length;
    }

    QByteArray *m_patch;
    const QByteArray &m_source;
    const QByteArray &m_target;
    BlockIndex m_index;
    int m_done = 0; ///< Target bytes that the actions so far make.
    int m_sourceEnd = 0; ///< Where the last source copy ended: offsets are relative to it.
    int m_targetEnd = 0;
};
}

void appendBpsNumber(QByteArray *patch, quint64 number)
{
    while (number >= 0x80) {
        patch->append(char(number & 0x7F));
        number = (number >> 7) - 1;
    }
    patch->append(char(number | 0x80));
}

void appendBpsActions(QByteArray *patch, const QByteArray &source, const QByteArray &target)
{
    Delta(patch, source, target).append();
}
