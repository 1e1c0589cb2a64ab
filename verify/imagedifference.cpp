// SPDX-License-Identifier: MIT
#include "verify/imagedifference.h"

#include "verify/verification.h"

#include <algorithm>
#include <cstring>

namespace
{
/// Counts the bytes of a range that differ, by sums over blocks: the same megabytes may be in any number of textures.
class ChangeCounter
{
public:
    ChangeCounter(const QByteArray &before, const QByteArray &after)
        : m_before(before), m_after(after), m_common(std::min(before.size(), after.size())),
          m_size(std::max(before.size(), after.size()))
    {
        m_upTo.append(0);
        for (qint64 begin = 0; begin < m_size; begin += blockBytes)
            m_upTo.append(m_upTo.constLast() + countSingly(begin, std::min(begin + blockBytes, m_size)));
    }

    qint64 size() const { return m_size; }

    bool differs(qint64 at) const { return at >= m_common || m_before.at(int(at)) != m_after.at(int(at)); }

    qint64 count(ByteSpan span) const
    {
        span.begin = std::clamp<qint64>(span.begin, 0, m_size);
        span.end = std::clamp<qint64>(span.end, span.begin, m_size);
        const qint64 first = (span.begin + blockBytes - 1) / blockBytes;
        const qint64 last = span.end / blockBytes;
        if (first > last)
            return countSingly(span.begin, span.end);
        return countSingly(span.begin, first * blockBytes) + m_upTo.at(int(last)) - m_upTo.at(int(first))
            + countSingly(last * blockBytes, span.end);
    }

    /// The first byte in [\a begin, \a end) that differs; \a end when none does.
    qint64 next(qint64 begin, qint64 end) const
    {
        while (begin < end) {
            const qint64 block = begin / blockBytes;
            if (begin % blockBytes == 0 && m_upTo.at(int(block)) == m_upTo.at(int(block) + 1)) {
                begin += blockBytes;
                continue;
            }
            if (differs(begin))
                return begin;
            ++begin;
        }
        return end;
    }

private:
    static constexpr qint64 blockBytes = 256;

    qint64 countSingly(qint64 begin, qint64 end) const
    {
        if (end <= begin)
            return 0;
        if (end <= m_common && std::memcmp(m_before.constData() + begin, m_after.constData() + begin, size_t(end - begin)) == 0)
            return 0;
        qint64 count = 0;
        for (qint64 at = begin; at < end; ++at)
            count += differs(at);
        return count;
    }

    const QByteArray &m_before;
    const QByteArray &m_after;
    const qint64 m_common;
    const qint64 m_size;
    QVector<qint64> m_upTo; ///< For each block: the differing bytes before it.
};

/// Adds the ranges of bytes that differ within \a gap, which no texture has.
void addRanges(const ChangeCounter &changes, const ByteSpan &gap, ImageDifference *difference)
{
    constexpr qint64 joinedBelow = 16;
    qint64 at = changes.next(gap.begin, gap.end);
    while (at < gap.end) {
        ChangedRange range {{at, at + 1}, 1};
        for (at = changes.next(at + 1, gap.end); at < gap.end && at - range.span.end < joinedBelow;
             at = changes.next(at + 1, gap.end)) {
            range.span.end = at + 1;
            ++range.bytes;
        }
        difference->outsideBytes += range.bytes;
        if (difference->outsideCount++ < mostChangedRanges)
            difference->outside.append(range);
    }
}
}

MeasuredImage measuredImage(const QList<fileTreeFile *> &all)
{
    MeasuredImage image {currentROM.data, {}};
    image.textures.reserve(all.size());
    for (const fileTreeFile *texture : all)
        image.textures.append(spanOf(*texture));
    return image;
}

ImageDifference differenceBetween(const MeasuredImage &before, const MeasuredImage &after, const QList<fileTreeFile *> &all)
{
    const ChangeCounter changes(before.bytes, after.bytes);
    ImageDifference difference;
    difference.bytes = changes.count({0, changes.size()});
    QVector<ByteSpan> covered = before.textures + after.textures;
    for (int i = 0; i < all.size(); ++i) {
        const ByteSpan palette = paletteSpanOf(*all.at(i));
        covered.append(palette);
        // A JPEG's longer one of the two covers what either has: both begin at the same address.
        const qint64 bytes = std::max(changes.count(before.textures.at(i)), changes.count(after.textures.at(i)));
        const ChangedEntry entry {i, bytes, changes.count(palette)};
        if (entry.bytes > 0 || entry.paletteBytes > 0)
            difference.entries.append(entry);
    }
    const QVector<ByteSpan> gaps = gapsBetween(covered, changes.size());
    for (const ByteSpan &gap : gaps)
        addRanges(changes, gap, &difference);
    return difference;
}
