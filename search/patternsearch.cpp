// SPDX-License-Identifier: MIT
#include "search/patternsearch.h"

#include <algorithm>

namespace
{
/// The strides of the sweeps and the shortest pattern for each. A wider stride reads fewer places; a narrower one leaves a
/// pattern more words to choose from for each remainder. Measured: 24 takes a third of the time of 8, and 40 three quarters of
/// the time of 24.
struct SweepClass
{
    int stride;
    int shortestPattern;
};
constexpr SweepClass sweepClasses[] = {{8, 15}, {24, 63}, {40, 127}};
constexpr int sweepClassCount = int(std::size(sweepClasses));
static_assert(sweepClasses[0].shortestPattern >= PatternSweep::shortestPattern(8), "a stride that misses copies");

/// The class for a pattern of \a size bytes; -1 if it is too short for all of them.
int sweepClassFor(int size)
{
    int found = -1;
    for (int i = 0; i < sweepClassCount && size >= sweepClasses[i].shortestPattern; ++i)
        found = i;
    return found;
}

/// The period of the bytes of \a word: 1, 2, 4 or 8.
int periodOf(quint64 word)
{
    int period = 1;
    while (period < wordBytes && (word << 8 * period | word >> (64 - 8 * period)) != word)
        period *= 2;
    return period;
}

/// Compares \a size bytes, of which the part \a flat is a periodic run in both, so that its first word represents it. Compares
/// the bytes after the run first, because they differ most often.
bool equalBesideFlatPart(const char *a, const char *b, int size, const PeriodicRun &flat)
{
    return std::memcmp(a + flat.end, b + flat.end, size_t(size - flat.end)) == 0
        && std::memcmp(a, b, size_t(flat.begin) + size_t(wordBytes)) == 0;
}

/// Shorter patterns are searched for plainly: they have too many copies for a sweep to pay.
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
        const QVector<Pattern *> refused = sweep(classes[i], sweepClasses[i].stride, firstOnly);
        for (Pattern *pattern : refused) {
            if (!lookUpInRuns(pattern))
                pattern->way = Way::Plain;
        }
    }
    for (Pattern &pattern : m_patterns) {
        if (pattern.way == Way::Sweep && (pattern.completeBelow >= m_range.size || !lookUpInRuns(&pattern)))
            keepSeparate(&pattern.positions, pattern.size);
    }
}

/// Sweeps the range for \a patterns. Returns the patterns that are too frequent for a sweep.
QVector<PatternSearch::Pattern *> PatternSearch::sweep(const QVector<Pattern *> &patterns, int stride, bool firstOnly)
{
    if (patterns.isEmpty() || m_steps->isCancelled())
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
    // The positions take at most 1/32 of the memory of the range. Patterns with further copies fall back to plain search.
    const int mostPositions = m_range.size / 128 + 1024;
    sweep.run(firstOnly, mostPositions, m_steps);
    return refused;
}

/// Sorts \a positions and removes those that overlap an earlier copy, as a search from the front does.
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
    if (flatPart.length() < m_runs.minimumLength()) // build() may have raised the minimum.
        return false;
    pattern->flatPart = flatPart;
    pattern->flatPeriod = periodOf(wordAt(pattern->bytes + flatPart.begin));
    pattern->way = Way::Runs;
    return true;
}

int PatternSearch::next(Walk *walk)
{
    const Pattern &pattern = m_patterns.at(walk->m_pattern);
    if (m_steps->isCancelled() || walk->m_from > m_range.size - pattern.size)
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
            // Inside a run the copies are multiples of the period apart.
            const int position = walk->m_from + (-pattern.size & (pattern.flatPeriod - 1));
            if (position <= last)
                return position;
            continue;
        }
        // A copy of the first word is a copy of the whole pattern. There is one at the first eight positions, or none.
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
        // If the flat part ends inside the pattern, its end is the end of a run in the range.
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
        // Windows overlap, so that a copy across a border is found.
        const qint64 window = qMin<qint64>(step + pattern.size - 1, m_range.size - position);
        const void *found = memmem(m_range.data + position, size_t(window), pattern.bytes, size_t(pattern.size));
        if (found)
            return int(static_cast<const char *>(found) - m_range.data);
        if (!m_steps->add(step))
            return -1;
    }
    return -1;
}
