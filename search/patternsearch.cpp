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

/// Wider strides, for few long patterns: each costs one table entry per byte of the stride.
constexpr int wideStrides[] = {56, 120, 248, 504};
constexpr int mostWideEntries = 4096;

/// The class for a pattern of \a size bytes, -1 for one that is too short for any.
int sweepClassFor(int size)
{
    int found = -1;
    for (int i = 0; i < sweepClassCount && size >= sweepClasses[i].shortestPattern; ++i)
        found = i;
    return found;
}

int strideFor(int sweepClass, int shortestPattern, int patternCount)
{
    constexpr int choices = 8;
    int stride = sweepClasses[sweepClass].stride;
    for (int wide : wideStrides) {
        if (shortestPattern >= wide * choices + wordBytes && wide * patternCount <= mostWideEntries)
            stride = wide;
    }
    return stride;
}

/// Patterns shorter than this are no matter for sweep or runs: their copies abound.
constexpr int shortestSweptPattern = sweepClasses[0].shortestPattern;
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
        if (pattern.way == Way::Sweep)
            classes[sweepClassFor(pattern.size)].append(&pattern);
    }
    for (int i = 0; i < sweepClassCount; ++i) {
        if (classes[i].isEmpty() || m_steps->isUnwanted())
            continue;
        if (!m_sample)
            m_sample = std::make_unique<WordSample>(m_range);
        int shortest = m_range.size;
        for (const Pattern *pattern : qAsConst(classes[i]))
            shortest = qMin(shortest, pattern->size);
        PatternSweep sweep(m_range, strideFor(i, shortest, classes[i].size()));
        for (Pattern *pattern : qAsConst(classes[i])) {
            if (!sweep.add(pattern, *m_sample) && !lookUpInRuns(pattern))
                pattern->way = Way::Plain;
            if (!m_steps->add(pattern->size))
                return;
        }
        // The positions of a batch take at most a thirty-second of the range's size; what exceeds that is found one by one.
        const int mostPositions = m_range.size / 128 + 1024;
        if (!sweep.run(firstOnly, mostPositions, m_steps))
            return;
    }
    for (Pattern &pattern : m_patterns) {
        if (pattern.way != Way::Sweep)
            continue;
        if (pattern.completeBelow >= m_range.size || !lookUpInRuns(&pattern))
            keepSeparate(&pattern.positions, pattern.size);
    }
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
    case Way::Runs: position = pattern.isFlat() ? nextFlat(pattern, walk) : nextAroundRun(pattern, walk); break;
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
    for (; walk->m_step < runs.size(); ++walk->m_step) {
        const PeriodicRun &run = runs.at(walk->m_step);
        if (!m_steps->add(int(sizeof run)))
            return -1;
        // Where the first word lies, all of the pattern does; it can lie at one in eight places at least, or nowhere.
        const int first = qMax(run.begin, walk->m_from);
        const int last = qMin(run.end - pattern.size, first + wordBytes - 1);
        for (int position = first; position <= last; ++position) {
            if (wordAt(m_range.data + position) == word)
                return position;
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
        if (std::memcmp(m_range.data + position, pattern.bytes, size_t(pattern.size)) == 0)
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
