// SPDX-License-Identifier: MIT
#pragma once

#include "search/patternsweep.h"
#include "search/periodicruns.h"

#include <QByteArray>
#include <QHash>
#include <QVector>

#include <memory>

/// Patterns to search for together, each different one kept once: among a game's pictures many look alike in some format.
class PatternBatch
{
public:
    /// Takes \a pattern in. Returns its place, or that of the equal one which is there already; -1 for an empty one.
    int add(const QByteArray &pattern);

    const QVector<QByteArray> &patterns() const { return m_patterns; }
    /// Of all patterns together.
    qint64 bytes() const { return m_bytes; }

private:
    QVector<QByteArray> m_patterns;
    QHash<QByteArray, int> m_places;
    qint64 m_bytes = 0;
};

/// Finds the copies of many byte patterns in one range: the same copies in the same order as searching for each pattern from the
/// front, each time from the end of the copy before, but for the cost of reading the range a few times.
///
/// How a pattern is searched for depends on it. Most take part in one sweep for all. Flat ones, and those with a long flat part,
/// are looked up in the list of the range's periodic runs. What is left, very short patterns and those made of what the range is
/// full of, goes to plain substring search at the time its copies are asked for.
class PatternSearch
{
public:
    /// Borrows \a range and \a steps for its lifetime. Once the work is unwanted, no more copies are found.
    PatternSearch(const ByteRange &range, WorkSteps *steps);

    /// Takes \a patterns in place of former ones and does what can be done for all of them at once. With \a firstOnly no more
    /// than the first copy of each is going to be asked for.
    void setPatterns(const QVector<QByteArray> &patterns, bool firstOnly);

    /// Walks the copies of one pattern.
    class Walk
    {
    public:
        explicit Walk(int pattern) : m_pattern(pattern) { }

    private:
        friend class PatternSearch;
        int m_pattern;
        int m_from = 0; ///< The end of the copy before.
        bool m_isInsideRun = false; ///< The copy before lies in the run that is next to be looked at.
        int m_step = 0; ///< How much of the pattern's positions, or of the runs, is behind.
    };

    /// The position of the next copy, -1 when there is none.
    int next(Walk *walk);

private:
    enum class Way { None, Sweep, Runs, Plain };
    struct Pattern : SweptPattern
    {
        Way way = Way::None;
        int flatPeriod = wordBytes; ///< After how many bytes the flat part repeats.
        PeriodicRun flatPart; ///< Of a pattern that is looked up in the runs.
    };

    void sweepAll(bool firstOnly);
    QVector<Pattern *> sweep(const QVector<Pattern *> &patterns, int stride, bool firstOnly);
    static bool isFlat(const Pattern &pattern);
    /// Lets \a pattern be looked up in the runs. False, and nothing changed, when no part of it is flat enough.
    bool lookUpInRuns(Pattern *pattern);
    static void keepSeparate(QVector<int> *positions, int size);

    int nextSwept(const Pattern &pattern, Walk *walk);
    int nextFlat(const Pattern &pattern, Walk *walk);
    int nextAroundRun(const Pattern &pattern, Walk *walk);
    int nextPlain(const Pattern &pattern, int from);

    ByteRange m_range;
    WorkSteps *m_steps;
    std::unique_ptr<WordSample> m_sample; ///< Made when first needed, as are the runs.
    PeriodicRuns m_runs;
    QVector<QByteArray> m_bytes;
    QVector<Pattern> m_patterns;
};
