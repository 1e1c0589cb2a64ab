// SPDX-License-Identifier: MIT
#include "search/patternsearch.h"

#include <algorithm>

namespace
{
/// The strides of the sweeps, and how long a pattern has to be for each: the longer, the fewer places are looked at; the shorter,
/// the more words a pattern can choose from for each remainder.
struct SweepClass
{
    int stride;
    int shortestPattern;
};
constexpr SweepClass sweepClasses[] = {{8, 15}, {24, 63}, {40, 127}};
constexpr int sweepClassCount = int(std::size(sweepClasses));
static_assert(sweepClasses[0].shortestPattern >= PatternSweep::shortestPattern(8), "a stride that misses copies");

/// Wider strides, for few long patterns: each pattern costs one table entry per byte of the stride. From some 50 bytes on memory
/// decides how long a sweep takes, until the places looked at are pages rather than lines of the cache apart.
constexpr SweepClass wideClasses[] = {{56, 456}, {504, 1024}, {1016, 2048}};
constexpr int mostWideEntries = 4096;

/// The class for a pattern of \a size bytes, -1 for one that is too short for any.
int sweepClassFor(int size)
{
    int found = -1;
    for (int i = 0; i < sweepClassCount && size >= sweepClasses[i].shortestPattern; ++i)
        found = i;
    return found;
}

/// The strides to try for patterns of a class, one after the other: what the first refuses, for want of rare words to choose
/// from, may go with the second.
QVector<int> stridesFor(int sweepClass, int shortestPattern, int patternCount)
{
    QVector<int> strides {sweepClasses[sweepClass].stride};
    int wide = 0;
    for (const SweepClass &candidate : wideClasses) {
        if (shortestPattern >= candidate.shortestPattern && candidate.stride * patternCount <= mostWideEntries)
            wide = candidate.stride;
    }
    if (wide > 0)
        strides.prepend(wide);
    return strides;
}

/// After how many bytes, 1, 2, 4 or 8, the bytes of \a word repeat.
int periodOf(quint64 word)
{
    int period = 1;
    while (period < wordBytes && (word << 8 * period | word >> (64 - 8 * period)) != word)
        period *= 2;
    return period;
}

/// Compares \a size bytes of which those of \a flat are a periodic run in both: its first word stands for all of it. What comes
/// behind the run is looked at first, since it differs most.
bool equalBesideFlatPart(const char *a, const char *b, int size, const PeriodicRun &flat)
{
    return std::memcmp(a + flat.end, b + flat.end, size_t(size - flat.end)) == 0
        && std::memcmp(a, b, size_t(flat.begin) + size_t(wordBytes)) == 0;
}

/// Patterns shorter than this are no matter for sweep or runs: their copies abound.
constexpr int shortestSweptPattern = sweepClasses[0].shortestPattern;
}

int PatternBatch::add(const QByteArray &pattern)
{
    if (pattern.isEmpty())
        return -1;
    const auto known = m_places.constFind(pattern);
    if (known != m_places.constEnd())
        return *known;
    const int place = m_patterns.size();
    m_places.insert(pattern, place);
    m_patterns.append(pattern);
    m_bytes += pattern.size();
    return place;
}

PatternSearch::PatternSearch(const ByteRange &range, WorkSteps *steps) : m_range(range), m_steps(steps) { }

void PatternSearch::setPatterns(const QVector<QByteArray> &patterns, bool firstOnly)
{
    m_bytes = patterns;
    m_patterns.clear();
    m_patterns.resize(patterns.size());
    for (int i = 0; i < patterns.size(); ++i) {
        Pattern &pattern = m_patterns[i];
        pattern.bytes = m_bytes.at(i).constData();
        pattern.size = m_bytes.at(i).size();
        if (pattern.size == 0 || pattern.size > m_range.size)
            pattern.way = Way::None;
        else
            pattern.way = pattern.size < shortestSweptPattern ? Way::Plain : Way::Sweep;
    }
    sweepAll(firstOnly);
}

void PatternSearch::sweepAll(bool firstOnly)
{
    QVector<Pattern *> classes[sweepClassCount];
    for (Pattern &pattern : m_patterns) {
        if (pattern.way == Way::Sweep && !(isFlat(pattern) && lookUpInRuns(&pattern)))
            classes[sweepClassFor(pattern.size)].append(&pattern);
    }
    for (int i = 0; i < sweepClassCount; ++i) {
        QVector<Pattern *> waiting = classes[i];
        int shortest = m_range.size;
        for (const Pattern *pattern : qAsConst(waiting))
            shortest = qMin(shortest, pattern->size);
        const QVector<int> strides = stridesFor(i, shortest, waiting.size());
        for (const int stride : strides)
            waiting = sweep(waiting, stride, firstOnly);
        for (Pattern *pattern : qAsConst(waiting)) {
            if (!lookUpInRuns(pattern))
                pattern->way = Way::Plain;
        }
    }
    for (Pattern &pattern : m_patterns) {
        if (pattern.way == Way::Sweep && (pattern.completeBelow >= m_range.size || !lookUpInRuns(&pattern)))
            keepSeparate(&pattern.positions, pattern.size);
    }
}

/// Sweeps the range for \a patterns. Returns those that are too frequent for it.
QVector<PatternSearch::Pattern *> PatternSearch::sweep(const QVector<Pattern *> &patterns, int stride, bool firstOnly)
{
    if (patterns.isEmpty() || m_steps->isUnwanted())
        return {};
    if (!m_sample)
        m_sample = std::make_unique<WordSample>(m_range);
    PatternSweep sweep(m_range, stride);
    QVector<Pattern *> refused;
    for (Pattern *pattern : patterns) {
        if (!sweep.add(pattern, *m_sample))
            refused.append(pattern);
        if (!m_steps->add(pattern->size))
            return {};
    }
    // The positions of a sweep take at most a thirty-second of the range's size; what exceeds that is found one by one.
    const int mostPositions = m_range.size / 128 + 1024;
    sweep.run(firstOnly, mostPositions, m_steps);
    return refused;
}

/// Sorts \a positions and leaves of those that overlap the ones that a search from the front comes to.
void PatternSearch::keepSeparate(QVector<int> *positions, int size)
{
    std::sort(positions->begin(), positions->end());
    int kept = 0;
    for (int position : qAsConst(*positions)) {
        if (kept == 0 || position - positions->at(kept - 1) >= size)
            (*positions)[kept++] = position;
    }
    positions->resize(kept);
}

bool PatternSearch::isFlat(const Pattern &pattern)
{
    return std::memcmp(pattern.bytes, pattern.bytes + wordBytes, size_t(pattern.size - wordBytes)) == 0;
}

bool PatternSearch::lookUpInRuns(Pattern *pattern)
{
    const PeriodicRun flatPart = longestPeriodicRun(pattern->bytes, pattern->size);
    if (flatPart.length() < m_runs.minimumLength())
        return false;
    if (!m_runs.isBuilt() && !m_runs.build(m_range, m_steps))
        return false;
    if (flatPart.length() < m_runs.minimumLength()) // Building it may have raised the minimum.
        return false;
    pattern->flatPart = flatPart;
    pattern->flatPeriod = periodOf(wordAt(pattern->bytes + flatPart.begin));
    pattern->way = Way::Runs;
    return true;
}

int PatternSearch::next(Walk *walk)
{
    const Pattern &pattern = m_patterns.at(walk->m_pattern);
    if (m_steps->isUnwanted() || walk->m_from > m_range.size - pattern.size)
        return -1;
    int position = -1;
    switch (pattern.way) {
    case Way::None: break;
    case Way::Sweep: position = nextSwept(pattern, walk); break;
    case Way::Runs:
        position = pattern.flatPart.length() == pattern.size ? nextFlat(pattern, walk) : nextAroundRun(pattern, walk);
        break;
    case Way::Plain: position = nextPlain(pattern, walk->m_from); break;
    }
    walk->m_from = position < 0 ? m_range.size : position + pattern.size;
    return position;
}

int PatternSearch::nextSwept(const Pattern &pattern, Walk *walk)
{
    if (walk->m_step < pattern.positions.size())
        return pattern.positions.at(walk->m_step++);
    if (pattern.completeBelow >= m_range.size)
        return -1;
    return nextPlain(pattern, qMax(walk->m_from, pattern.completeBelow));
}

int PatternSearch::nextFlat(const Pattern &pattern, Walk *walk)
{
    const QVector<PeriodicRun> &runs = m_runs.runs();
    const quint64 word = wordAt(pattern.bytes);
    for (; walk->m_step < runs.size(); ++walk->m_step, walk->m_isInsideRun = false) {
        if (!m_steps->add(int(sizeof(PeriodicRun))))
            return -1;
        const PeriodicRun &run = runs.at(walk->m_step);
        const int last = run.end - pattern.size;
        if (walk->m_isInsideRun) {
            // Within a run the pattern lies wherever the distance to a copy of it is a multiple of what repeats.
            const int position = walk->m_from + (-pattern.size & (pattern.flatPeriod - 1));
            if (position <= last)
                return position;
            continue;
        }
        // Where the first word lies, all of the pattern does: at one in eight places at least, or nowhere.
        const int first = qMax(run.begin, walk->m_from);
        for (int position = first; position <= qMin(last, first + wordBytes - 1); ++position) {
            if (wordAt(m_range.data + position) == word) {
                walk->m_isInsideRun = true;
                return position;
            }
        }
    }
    return -1;
}

int PatternSearch::nextAroundRun(const Pattern &pattern, Walk *walk)
{
    const QVector<PeriodicRun> &runs = m_runs.runs();
    const PeriodicRun &flat = pattern.flatPart;
    const bool endsInside = flat.end < pattern.size;
    while (walk->m_step < runs.size()) {
        const PeriodicRun &run = runs.at(walk->m_step++);
        if (!m_steps->add(int(sizeof run)))
            return -1;
        // An end of the flat part inside the pattern is the end of a run in the range.
        const bool fits = run.length() == flat.length() || (run.length() > flat.length() && !(flat.begin > 0 && endsInside));
        if (!fits)
            continue;
        const int position = endsInside ? run.end - flat.end : run.begin - flat.begin;
        if (position < walk->m_from || position > m_range.size - pattern.size)
            continue;
        if (!m_steps->add(pattern.size))
            return -1;
        if (equalBesideFlatPart(m_range.data + position, pattern.bytes, pattern.size, flat))
            return position;
    }
    return -1;
}

int PatternSearch::nextPlain(const Pattern &pattern, int from)
{
    const qint64 step = qMax<qint64>(WorkSteps::bytesPerStep, 4 * qint64(pattern.size));
    for (qint64 position = from; position <= m_range.size - pattern.size; position += step) {
        // The windows overlap, so that a copy across their border is found.
        const qint64 window = qMin<qint64>(step + pattern.size - 1, m_range.size - position);
        const void *found = memmem(m_range.data + position, size_t(window), pattern.bytes, size_t(pattern.size));
        if (found)
            return int(static_cast<const char *>(found) - m_range.data);
        if (!m_steps->add(step))
            return -1;
    }
    return -1;
}
