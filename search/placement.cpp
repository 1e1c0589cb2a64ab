// SPDX-License-Identifier: MIT
#include "search/placement.h"

#include "base/progress.h"
#include "search/patternsearch.h"

#include <algorithm>
#include <bitset>
#include <cstring>

namespace
{
constexpr int shortestSearched = 16;
constexpr int shortestAnchor = 32;
constexpr int fewestValuesOfAnchor = 8;
/// How far the surroundings of a piece are looked at on either side, and how many of these bytes have to be the same.
constexpr int surroundingBytes = 256;
constexpr int fewestSurroundingBytes = 64;

/// The number of different values among the \a size bytes, of which so many are looked at that it can matter.
int differentValues(const char *bytes, qint64 size)
{
    std::bitset<256> seen;
    int count = 0;
    for (qint64 i = 0; i < qMin<qint64>(size, 4096) && count < fewestValuesOfAnchor; ++i) {
        count += seen.test(uchar(bytes[i])) ? 0 : 1;
        seen.set(uchar(bytes[i]));
    }
    return count;
}

bool isFlat(const char *bytes, int size)
{
    return size <= wordBytes || std::memcmp(bytes, bytes + wordBytes, size_t(size - wordBytes)) == 0;
}
}

Placement::Placement(const QByteArray &oldImage, const QByteArray &newImage, const QVector<Piece> &pieces, Progress *progress)
    : m_old(oldImage), m_new(newImage)
{
    // A table may have any number of entries that are each as large as the image. The size of all that real ones have in common
    // with the image is a fraction of it.
    QVector<Piece> looked = pieces;
    qint64 bytesLeft = qint64(16) * oldImage.size();
    for (Piece &piece : looked) {
        if (piece.begin < 0 || piece.end() > oldImage.size() || piece.size > bytesLeft)
            piece.size = 0;
        bytesLeft -= qMax(piece.size, 0);
    }
    m_copies.resize(looked.size());
    search(looked, progress);
    followAnchors(looked);
    m_places.reserve(looked.size());
    for (int i = 0; i < looked.size(); ++i)
        m_places.append(placeOf(looked.at(i), m_copies.at(i)));
}

qint64 Placement::displacementAt(int address) const
{
    const auto behind = std::upper_bound(m_stretches.cbegin(), m_stretches.cend(), address,
                                         [](qint64 position, const Stretch &stretch) { return position < stretch.begin; });
    return behind == m_stretches.cbegin() ? 0 : std::prev(behind)->displacement;
}

bool Placement::isSearchable(const Piece &piece) const
{
    return piece.size >= shortestSearched && !isFlat(m_old.constData() + piece.begin, piece.size);
}

/// Counts the copies of each piece in both images. Equal pieces are searched for once.
void Placement::search(const QVector<Piece> &pieces, Progress *progress)
{
    PatternBatch batch;
    QVector<int> patterns(pieces.size(), -1);
    for (int i = 0; i < pieces.size(); ++i) {
        const Piece &piece = pieces.at(i);
        if (isSearchable(piece)) // The bytes are borrowed; the image outlives the batch.
            patterns[i] = batch.add(QByteArray::fromRawData(m_old.constData() + piece.begin, piece.size));
    }
    QVector<Copies> copies(batch.patterns().size());
    WorkSteps steps([progress] { return progress && progress->cancelled(); });
    for (const bool isOld : {true, false}) {
        const QByteArray &image = isOld ? m_old : m_new;
        ByteRange range;
        range.data = image.constData();
        range.size = image.size();
        PatternSearch search(range, &steps);
        search.setPatterns(batch.patterns(), false);
        for (int i = 0; i < copies.size(); ++i) {
            Copies &known = copies[i];
            known.isSearched = true;
            int &count = isOld ? known.inOld : known.inNew;
            PatternSearch::Walk walk(i);
            // Without a copy in the new image, those in the old one do not matter, and the other way round.
            for (int position = 0; count < 2 && (position = search.next(&walk)) >= 0; ++count) {
                if (!isOld)
                    known.positions[count] = position;
            }
        }
    }
    for (int i = 0; i < pieces.size(); ++i) {
        if (patterns.at(i) >= 0)
            m_copies[i] = copies.at(patterns.at(i));
    }
}

/// Makes the stretches. Each gap between two anchors is compared at most twice, forwards from the one and backwards from the
/// other.
void Placement::followAnchors(const QVector<Piece> &pieces)
{
    // Whatever a revision moves, its header stays; and where the length is the same, so does the end unless something tells
    // otherwise.
    QVector<Stretch> anchors {{0, 0, 0}};
    for (int i = 0; i < pieces.size(); ++i) {
        const Piece &piece = pieces.at(i);
        if (m_copies.at(i).areUnique() && piece.size >= shortestAnchor
            && differentValues(m_old.constData() + piece.begin, piece.size) >= fewestValuesOfAnchor)
            anchors.append({piece.begin, piece.end(), qint64(m_copies.at(i).positions[0]) - piece.begin});
    }
    if (m_old.size() == m_new.size())
        anchors.append({m_old.size(), m_old.size(), 0});
    std::sort(anchors.begin(), anchors.end(),
              [](const Stretch &a, const Stretch &b) { return a.begin != b.begin ? a.begin < b.begin : a.end > b.end; });
    qint64 reached = 0;
    for (int i = 0; i < anchors.size(); ++i) {
        Stretch stretch = anchors.at(i);
        const qint64 next = i + 1 < anchors.size() ? anchors.at(i + 1).begin : m_old.size();
        stretch.begin = followBackwards(stretch.begin, qMin(reached, stretch.begin), stretch.displacement);
        reached = qMax(reached, stretch.end);
        stretch.end = followForwards(stretch.end, qMax(next, stretch.end), stretch.displacement);
        addStretch(stretch);
    }
}

/// Adds the next stretch in the order of the anchors: to the one before when it goes on with it. It does not begin before that,
/// because it was followed backwards no further than the anchors before it.
void Placement::addStretch(const Stretch &stretch)
{
    if (!m_stretches.isEmpty()) {
        Stretch &last = m_stretches.last();
        if (stretch.end <= last.end && stretch.begin >= last.begin)
            return;
        if (stretch.displacement == last.displacement && stretch.begin <= last.end) {
            last.end = qMax(last.end, stretch.end);
            return;
        }
    }
    m_stretches.append(stretch);
}

Place Placement::found(const Piece &piece, qint64 displacement) const
{
    return {displacement == 0 ? PlaceState::Same : PlaceState::Moved, int(piece.begin + displacement)};
}

Place Placement::placeOf(const Piece &piece, const Copies &copies) const
{
    if (piece.size <= 0)
        return {};
    const auto behind = std::upper_bound(m_stretches.cbegin(), m_stretches.cend(), qint64(piece.begin),
                                         [](qint64 position, const Stretch &stretch) { return position < stretch.begin; });
    const auto reaching = std::lower_bound(m_stretches.cbegin(), m_stretches.cend(), piece.end(),
                                           [](const Stretch &stretch, qint64 position) { return stretch.end < position; });
    const Stretch &before = behind == m_stretches.cbegin() ? m_stretches.first() : *std::prev(behind);
    if (reaching >= behind)
        return placeBetween(piece, copies, before, reaching == m_stretches.cend() ? nullptr : &*reaching);
    // One stretch has it, or several: at the border of two, what is the same on both sides may belong to either.
    if (reaching->displacement == before.displacement) {
        const bool isSure = copies.isSearched || isInTheMiddle(piece, before);
        return isSure ? found(piece, before.displacement) : Place {PlaceState::Ambiguous, int(piece.begin + before.displacement)};
    }
    if (copies.areUnique())
        return found(piece, qint64(copies.positions[0]) - piece.begin);
    return {PlaceState::Ambiguous, int(piece.begin + reaching->displacement)};
}

/// Of a piece that is in no stretch.
Place Placement::placeBetween(const Piece &piece, const Copies &copies, const Stretch &before, const Stretch *behind) const
{
    const bool agree = behind && behind->displacement == before.displacement;
    if (copies.areUnique()) {
        const qint64 displacement = qint64(copies.positions[0]) - piece.begin;
        const bool isExpected = displacement == before.displacement || (behind && displacement == behind->displacement);
        if (isExpected || piece.size >= surroundingBytes || hasEqualSurroundings(piece, displacement))
            return found(piece, displacement);
        return {PlaceState::Ambiguous, copies.positions[0]};
    }
    const bool fitsBefore = isEqualAt(piece, before.displacement);
    const bool fitsBehind = behind && !agree && isEqualAt(piece, behind->displacement);
    if (fitsBefore != fitsBehind) {
        const qint64 displacement = fitsBefore ? before.displacement : behind->displacement;
        const bool isTelling = agree && copies.isSearched;
        return isTelling || hasEqualSurroundings(piece, displacement)
            ? found(piece, displacement)
            : Place {PlaceState::Ambiguous, int(piece.begin + displacement)};
    }
    if (fitsBefore) {
        const bool nearBefore = hasEqualSurroundings(piece, before.displacement);
        const bool nearBehind = hasEqualSurroundings(piece, behind->displacement);
        if (nearBefore != nearBehind)
            return found(piece, nearBefore ? before.displacement : behind->displacement);
        return {PlaceState::Ambiguous, int(piece.begin + before.displacement)};
    }
    if (copies.inNew > 0 && !(agree && copies.inOld > 1))
        return placeAmongCopies(piece, copies, before.displacement);
    return placeOfCopyless(piece, before.displacement, behind);
}

Place Placement::placeAmongCopies(const Piece &piece, const Copies &copies, qint64 displacement) const
{
    const auto distance = [&](int position) { return qAbs(position - (piece.begin + displacement)); };
    const bool second = copies.inNew > 1 && distance(copies.positions[1]) < distance(copies.positions[0]);
    return {PlaceState::Ambiguous, copies.positions[second ? 1 : 0]};
}

Place Placement::placeOfCopyless(const Piece &piece, qint64 before, const Stretch *behind) const
{
    const auto changed = [&](qint64 displacement) {
        return isInsideNew(piece, displacement) ? Place {PlaceState::Changed, int(piece.begin + displacement)} : Place();
    };
    if (behind && behind->displacement == before)
        return changed(before);
    // Where the two disagree, the place at which much is as it was.
    const int equalBefore = equalBytes(piece, before);
    const int equalBehind = behind ? equalBytes(piece, behind->displacement) : 0;
    const int best = qMax(equalBefore, equalBehind);
    if (best < piece.size / 2 || best == 0 || 2 * qMin(equalBefore, equalBehind) > best)
        return {};
    return changed(equalBefore == best ? before : behind->displacement);
}

bool Placement::isInsideNew(const Piece &piece, qint64 displacement) const
{
    return piece.begin + displacement >= 0 && piece.end() + displacement <= m_new.size();
}

bool Placement::isEqualAt(const Piece &piece, qint64 displacement) const
{
    return isInsideNew(piece, displacement)
        && std::memcmp(m_old.constData() + piece.begin, m_new.constData() + piece.begin + displacement, size_t(piece.size)) == 0;
}

/// Whether what lies around the piece is as displaced as it, and not flat, so that it cannot be so by chance.
bool Placement::hasEqualSurroundings(const Piece &piece, qint64 displacement) const
{
    const qint64 begin = followBackwards(piece.begin, qMax<qint64>(0, piece.begin - surroundingBytes), displacement);
    const qint64 end = followForwards(piece.end(), qMin<qint64>(m_old.size(), piece.end() + surroundingBytes), displacement);
    const qint64 bytesBefore = piece.begin - begin;
    const qint64 bytesBehind = end - piece.end();
    const char *bytes = m_old.constData();
    return bytesBefore + bytesBehind >= fewestSurroundingBytes
        && differentValues(bytes + begin, bytesBefore) + differentValues(bytes + piece.end(), bytesBehind)
        >= fewestValuesOfAnchor;
}

/// Whether \a stretch tells something on both sides of the piece. A flat one at its end may have moved with what follows: what is
/// put between two flat things is often flat as well.
bool Placement::isInTheMiddle(const Piece &piece, const Stretch &stretch) const
{
    constexpr qint64 mostBytes = 4096;
    const char *bytes = m_old.constData();
    const qint64 first = qMax(stretch.begin, piece.begin - mostBytes);
    const bool before = stretch.begin == 0 || differentValues(bytes + first, piece.begin - first) >= fewestValuesOfAnchor;
    return before
        && (stretch.end == m_old.size()
            || differentValues(bytes + piece.end(), stretch.end - piece.end()) >= fewestValuesOfAnchor);
}

int Placement::equalBytes(const Piece &piece, qint64 displacement) const
{
    if (!isInsideNew(piece, displacement))
        return 0;
    const char *before = m_old.constData() + piece.begin;
    const char *now = m_new.constData() + piece.begin + displacement;
    int equal = 0;
    for (int i = 0; i < piece.size; ++i)
        equal += before[i] == now[i] ? 1 : 0;
    return equal;
}

/// The first address from \a from to \a to at which the images, displaced, are not the same; \a to when there is none.
qint64 Placement::followForwards(qint64 from, qint64 to, qint64 displacement) const
{
    if (from + displacement < 0)
        return from;
    to = qMin<qint64>(to, qMin<qint64>(m_old.size(), m_new.size() - displacement));
    const char *before = m_old.constData();
    const char *now = m_new.constData() + displacement;
    while (from + wordBytes <= to && wordAt(before + from) == wordAt(now + from))
        from += wordBytes;
    while (from < to && before[from] == now[from])
        ++from;
    return from;
}

/// The same backwards: the first address from which on up to \a from the images are the same, not before \a to.
qint64 Placement::followBackwards(qint64 from, qint64 to, qint64 displacement) const
{
    if (from + displacement > m_new.size())
        return from;
    to = qMax<qint64>(to, -displacement);
    const char *before = m_old.constData();
    const char *now = m_new.constData() + displacement;
    while (from - wordBytes >= to && wordAt(before + from - wordBytes) == wordAt(now + from - wordBytes))
        from -= wordBytes;
    while (from > to && before[from - 1] == now[from - 1])
        --from;
    return from;
}
