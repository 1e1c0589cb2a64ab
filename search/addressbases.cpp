// SPDX-License-Identifier: MIT
#include "search/addressbases.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr int baseAlignment = 16;
/// The image is sampled once in as many bytes.
constexpr int cellBytes = 256;
/// More textures than this hardly make a base clearer.
constexpr int mostChosen = 24;
constexpr int fewestTextures = 3;
/// Textures that the samples are taken for: the largest, since a sample is one in 256 bytes.
constexpr size_t mostSampled = 10;
/// Places of the first, sampled pass that are looked at exactly, and how far around each.
constexpr int mostPeaks = 24;
constexpr int peakReach = 384;
/// How far around the lists all places are looked at exactly.
constexpr qint64 mostLocalBytes = 256 * 1024;
constexpr qint64 localReach = 16 * 1024;
/// Regions of the image that are looked at by decoding, how far apart they are, and how far around each.
constexpr int mostRegions = 6;
constexpr int regionBytes = 1024;
constexpr int refineReach = 512;
/// Candidates of a region, and how far apart they are: what is closer are the slopes of a better one.
constexpr int mostPeaksOfRegion = 3;
constexpr int slopeReach = 64;
/// Regions that are by this much worse than the best are no rivals.
constexpr double hopeless = 0.2;
/// Textures that a region is refined with, and how large they are if possible: decoding takes its time.
constexpr int refiningTextures = 12;
constexpr int refiningBytes = 1024;
/// So many of them decide which bases of a region the others are tried at, and at how many.
constexpr int firstTextures = 4;
constexpr int mostTried = 12;
/// Sampled tables that are kept; each takes a sixty-fourth of the image.
constexpr int mostTables = 12;

/// The least mean score at which textures look like pictures at all.
constexpr double leastScore = 0.45;
/// By how much a base is better than any other.
constexpr double leastLead = 0.01;

qint64 alignedUp(qint64 value)
{
    return (value + baseAlignment - 1) & -qint64(baseAlignment);
}

/// Keeps the best of \a values, by \a score, that are at least \a reach apart, best first.
template<typename T, typename Place, typename Score>
QVector<T> bestApart(QVector<T> values, int most, qint64 reach, Place place, Score score)
{
    std::sort(values.begin(), values.end(),
              [&](const T &a, const T &b) { return score(a) != score(b) ? score(a) > score(b) : place(a) < place(b); });
    QVector<T> kept;
    for (const T &value : qAsConst(values)) {
        const bool isSlope = std::any_of(kept.cbegin(), kept.cend(),
                                         [&](const T &better) { return std::abs(place(better) - place(value)) < reach; });
        if (!isSlope)
            kept.append(value);
        if (kept.size() == most)
            break;
    }
    return kept;
}
}

AddressBases::AddressBases(const ByteRange &image, const QVector<int> &commands, WorkSteps *steps)
    : m_image(image), m_commands(commands), m_steps(steps)
{
}

AddressBases::~AddressBases() = default;

/// Takes the textures that tell most: the larger half, evenly.
void AddressBases::choose(const QVector<TextureReference> &textures)
{
    QVector<TextureReference> telling;
    for (const TextureReference &texture : textures) {
        if (RowLikeness(texture).isTelling() && texture.format != QLatin1String("yuv16") && !texture.isInterleaved)
            telling.append(texture);
    }
    std::stable_sort(telling.begin(), telling.end(),
                     [](const TextureReference &a, const TextureReference &b) { return a.size() > b.size(); });
    if (telling.size() > 2 * mostChosen)
        telling.resize(telling.size() / 2);
    m_chosen.clear();
    m_likeness.clear();
    const int count = qMin(mostChosen, telling.size());
    for (int i = 0; i < count; ++i) {
        m_chosen.append(telling.at(int(qint64(i) * telling.size() / count)));
        m_likeness.emplace_back(m_chosen.last());
    }
}

AddressBases::Extent AddressBases::extentOf(const QVector<TextureReference> &textures) const
{
    qint64 first = textures.first().address;
    qint64 end = 0;
    for (const TextureReference &texture : textures) {
        first = qMin<qint64>(first, texture.address);
        end = qMax<qint64>(end, texture.address + texture.size());
        if (texture.hasPalette) {
            first = qMin<qint64>(first, texture.paletteAddress);
            end = qMax<qint64>(end, qint64(texture.paletteAddress) + 2 * texture.paletteEntries);
        }
    }
    return {alignedUp(-first), m_image.size - end};
}

/// Sums over the cells of the image of how much a sample of each resembles what lies a row further on.
const QVector<float> &AddressBases::samplesFor(const RowLikeness &likeness)
{
    const quint64 key = quint64(likeness.kind()) << 32 | quint64(likeness.rowBytes());
    const auto known = m_samples.constFind(key);
    if (known != m_samples.constEnd())
        return *known;
    if (m_samples.size() >= mostTables)
        m_samples.clear();
    QVector<float> sums(m_image.size / cellBytes + 2);
    for (int cell = 0; cell + 1 < sums.size(); ++cell) {
        // Two samples, at changing places: columns at the edge of a picture would all be clear.
        const quint64 spread = hashOfWord(quint64(cell) + 1) >> 40;
        const qint64 first = qint64(cell) * cellBytes;
        const float value = likeness.atSample(m_image, first + qint64(spread % (cellBytes / wordBytes)) * wordBytes)
            + likeness.atSample(m_image, first + qint64((spread >> 8) % (cellBytes / wordBytes)) * wordBytes);
        sums[cell + 1] = sums.at(cell) + value / 2;
    }
    m_steps->add(m_image.size);
    return *m_samples.insert(key, sums);
}

QVector<qint64> AddressBases::promisingBases(const Extent &extent)
{
    const qint64 first = (extent.lowest + cellBytes - 1) & -qint64(cellBytes);
    const int count = int(qMax<qint64>(0, (extent.highest - first) / cellBytes + 1));
    QVector<float> scores(count);
    for (size_t i = 0; i < qMin(m_likeness.size(), mostSampled); ++i) {
        const QVector<float> &sums = samplesFor(m_likeness[i]);
        const qint64 address = m_chosen.at(int(i)).address;
        const qint64 cell = (first + address) / cellBytes;
        const qint64 cells = qMax(1, m_likeness[i].bytes() / cellBytes);
        const auto weight = 1 / float(cells);
        const int last = int(qMin<qint64>(count, sums.size() - cells - cell));
        const float *from = sums.constData() + cell;
        float *score = scores.data();
        for (int c = 0; c < last; ++c)
            score[c] += (from[c + cells] - from[c]) * weight;
    }
    m_steps->add(qint64(count) * m_chosen.size());
    QVector<int> peaks;
    for (int c = 0; c < count; ++c) {
        const bool isPeak = (c == 0 || scores.at(c) >= scores.at(c - 1)) && (c + 1 == count || scores.at(c) > scores.at(c + 1));
        if (isPeak && scores.at(c) > 0.2F * float(qMin(m_likeness.size(), mostSampled)))
            peaks.append(c);
    }
    const auto better = [&scores](int a, int b) { return scores.at(a) != scores.at(b) ? scores.at(a) > scores.at(b) : a < b; };
    if (peaks.size() > mostPeaks) {
        std::nth_element(peaks.begin(), peaks.begin() + mostPeaks, peaks.end(), better);
        peaks.resize(mostPeaks);
    }
    QVector<qint64> bases;
    for (const int peak : qAsConst(peaks))
        bases.append(first + qint64(peak) * cellBytes);
    return bases;
}

/// Adds the local maxima among the bases from \a from to \a to.
void AddressBases::scoreWindow(qint64 from, qint64 to, QVector<Candidate> *candidates)
{
    const int count = int((to - from) / baseAlignment + 1);
    QVector<float> sums(count);
    m_scores.resize(count);
    for (size_t i = 0; i < m_likeness.size(); ++i) {
        m_likeness[i].score(m_image, from + m_chosen.at(int(i)).address, baseAlignment, count, m_scores.data());
        const float *scores = m_scores.constData();
        float *sum = sums.data();
        for (int c = 0; c < count; ++c)
            sum[c] += scores[c];
        m_steps->add(qint64(count) * baseAlignment + m_likeness[i].bytes());
    }
    for (int c = 0; c < count; ++c) {
        if ((c == 0 || sums.at(c) >= sums.at(c - 1)) && (c + 1 == count || sums.at(c) > sums.at(c + 1))) {
            Candidate candidate;
            candidate.base = from + qint64(c) * baseAlignment;
            candidate.score = double(sums.at(c)) / m_chosen.size();
            candidates->append(candidate);
        }
    }
}

bool AddressBases::coversCommands(qint64 base) const
{
    return std::any_of(m_chosen.cbegin(), m_chosen.cend(), [this, base](const TextureReference &texture) {
        const qint64 begin = base + texture.address;
        const auto command = std::lower_bound(m_commands.cbegin(), m_commands.cend(), begin);
        return command != m_commands.cend() && *command < begin + texture.size();
    });
}

/// How much like a picture the texture \a chosen looks at \a base.
double AddressBases::scoreOf(int chosen, qint64 base) const
{
    const TextureReference &texture = m_chosen.at(chosen);
    m_steps->add(4 * texture.size());
    return pictureliness(m_image, texture, base + texture.address, texture.hasPalette ? base + texture.paletteAddress : -1);
}

void AddressBases::scorePictures(Candidate *candidate)
{
    candidate->scores.resize(m_chosen.size());
    candidate->score = 0;
    for (int i = 0; i < m_chosen.size(); ++i) {
        candidate->scores[i] = scoreOf(i, candidate->base);
        candidate->score += candidate->scores.at(i) / m_chosen.size();
    }
}

/// The best bases near \a around, by pictures; none when the first textures look much worse there than in \a bestRegion, the best
/// mean of these textures in the regions before, which it updates.
QVector<AddressBases::Candidate> AddressBases::refined(const Candidate &around, const Extent &extent, double *bestRegion)
{
    QVector<int> textures;
    for (int i = 0; i < m_chosen.size(); ++i)
        textures.append(i);
    std::stable_sort(textures.begin(), textures.end(), [this](int a, int b) {
        return std::abs(m_chosen.at(a).size() - refiningBytes) < std::abs(m_chosen.at(b).size() - refiningBytes);
    });
    textures = textures.mid(0, refiningTextures);
    QVector<Candidate> candidates;
    const qint64 end = qMin(extent.highest, around.base + refineReach);
    for (qint64 base = qMax(extent.lowest, around.base - refineReach); base <= end; base += baseAlignment) {
        Candidate candidate;
        candidate.base = base;
        if (coversCommands(base))
            continue;
        for (const int texture : textures.mid(0, firstTextures))
            candidate.score += scoreOf(texture, base) / textures.size();
        candidates.append(candidate);
    }
    candidates = bestApart(
        candidates, mostTried, baseAlignment, [](const Candidate &c) { return c.base; },
        [](const Candidate &c) { return c.score; });
    const double first =
        candidates.isEmpty() ? 0 : candidates.first().score * textures.size() / qMin(firstTextures, textures.size());
    if (first < *bestRegion - hopeless)
        return {};
    *bestRegion = qMax(*bestRegion, first);
    for (Candidate &candidate : candidates) {
        for (const int texture : textures.mid(firstTextures))
            candidate.score += scoreOf(texture, candidate.base) / textures.size();
    }
    candidates = bestApart(
        candidates, mostPeaksOfRegion, slopeReach, [](const Candidate &c) { return c.base; },
        [](const Candidate &c) { return c.score; });
    for (Candidate &candidate : candidates)
        scorePictures(&candidate);
    return candidates;
}

/// Whether \a best is better than \a other by much, the more the fewer textures there are, or a little for nearly all of them:
/// beside the right base most textures still show most of their rows.
bool AddressBases::isClearOf(const Candidate &best, const Candidate &other)
{
    double better = 0;
    double worse = 0;
    for (int i = 0; i < best.scores.size(); ++i) {
        const double lead = best.scores.at(i) - other.scores.at(i);
        (lead > 0 ? better : worse) += std::abs(lead);
    }
    const double lead = best.score - other.score;
    const double sureLead = 0.02 * (1 + 6.0 / best.scores.size());
    return lead >= sureLead || (lead >= leastLead && better > 2 * worse);
}

FoundBase AddressBases::find(const QVector<TextureReference> &textures, int listsBegin, int listsEnd)
{
    FoundBase found;
    choose(textures);
    if (m_chosen.size() < fewestTextures || m_steps->isCancelled())
        return found;
    Extent extent = extentOf(textures);
    extent.highest &= -qint64(baseAlignment);
    if (extent.lowest > extent.highest)
        return found;
    QVector<Candidate> candidates;
    const qint64 localEnd = qMin(extent.highest, alignedUp(listsEnd + localReach));
    const qint64 localBegin = qMax(
        extent.lowest, alignedUp(qMax(listsBegin - (m_image.size - extent.highest) - localReach, localEnd - mostLocalBytes)));
    if (localBegin <= localEnd)
        scoreWindow(localBegin, localEnd, &candidates);
    const QVector<qint64> promising = promisingBases(extent);
    for (const qint64 base : promising) {
        const qint64 from = qMax(extent.lowest, base - peakReach);
        const qint64 to = qMin(extent.highest, base + peakReach);
        if (from <= to)
            scoreWindow(from, to, &candidates);
    }
    const auto place = [](const Candidate &candidate) { return candidate.base; };
    const auto score = [](const Candidate &candidate) { return candidate.score; };
    const QVector<Candidate> regions = bestApart(candidates, mostRegions, regionBytes, place, score);
    candidates.clear();
    double bestRegion = 0;
    for (const Candidate &region : regions) {
        if (region.score >= regions.first().score - hopeless)
            candidates += refined(region, extent, &bestRegion);
    }
    if (m_steps->isCancelled() || candidates.isEmpty())
        return found;
    const qint64 best = bestApart(candidates, 1, baseAlignment, place, score).first().base;
    for (qint64 base = qMax(extent.lowest, best - slopeReach); base <= qMin(extent.highest, best + slopeReach);
         base += baseAlignment) {
        Candidate candidate;
        candidate.base = base;
        scorePictures(&candidate);
        candidates.append(candidate);
    }
    return decided(bestApart(candidates, candidates.size(), baseAlignment, place, score));
}

/// The result, from the candidates by falling score.
FoundBase AddressBases::decided(const QVector<Candidate> &candidates)
{
    FoundBase found;
    const Candidate &best = candidates.first();
    found.hasBest = true;
    found.best = {best.base, best.score};
    if (candidates.size() > 1) {
        found.hasSecond = true;
        found.second = {candidates.at(1).base, candidates.at(1).score};
    }
    found.isClear = best.score >= leastScore
        && std::all_of(candidates.cbegin() + 1, candidates.cend(),
                       [&best](const Candidate &other) { return isClearOf(best, other); });
    return found;
}
