// SPDX-License-Identifier: MIT
#pragma once

#include "search/patternsweep.h"
#include "search/periodicruns.h"

#include <QByteArray>
#include <QHash>
#include <QVector>

#include <memory>

/// Patterns to search for together, without duplicates: many pictures of a game have the same bytes in some format.
class PatternBatch
{
public:
    /// Adds \a pattern. Returns its index, or that of an equal pattern; -1 for an empty pattern.
    int add(const QByteArray &pattern);

    const QVector<QByteArray> &patterns() const { return m_patterns; }
    /// Total size of the patterns.
    qint64 bytes() const { return m_bytes; }

private:
    QVector<QByteArray> m_patterns;
    QHash<QByteArray, int> m_places;
    qint64 m_bytes = 0;
};

/// Finds the copies of many byte patterns in one range, at the cost of reading the range a few times. The copies and their order
/// are those of a plain search for each pattern from the front, where each search continues at the end of the previous copy.
///
/// There are three ways. One sweep serves most patterns together. Flat patterns, and patterns with a long flat part, are looked
/// up in the list of periodic runs of the range. The rest, very short patterns and patterns of very frequent words, use plain
/// substring search when their copies are asked for. docs/search.md explains and measures each.
class PatternSearch
{
public:
    /// Borrows \a range and \a steps for its lifetime. After a cancellation no more copies are found.
    PatternSearch(const ByteRange &range, WorkSteps *steps);

    /// Replaces the patterns and does the work that serves all of them. With \a firstOnly the caller asks only for the first
    /// copy of each.
    void setPatterns(const QVector<QByteArray> &patterns, bool firstOnly);

    /// Walks the copies of one pattern.
    class Walk
    {
    public:
        explicit Walk(int pattern) : m_pattern(pattern) { }

    private:
        friend class PatternSearch;
        int m_pattern;
        int m_from = 0; ///< The end of the previous copy.
        bool m_isInsideRun = false; ///< The previous copy lies in the current run.
        int m_step = 0; ///< Index of the next position or run.
    };

    /// The position of the next copy, -1 when there is none.
    int next(Walk *walk);

private:
    enum class Way { None, Sweep, Runs, Plain };
    struct Pattern : SweptPattern
    {
        Way way = Way::None;
        int flatPeriod = wordBytes; ///< Period of the flat part, in bytes.
        PeriodicRun flatPart; ///< For Way::Runs.
    };

    void sweepAll(bool firstOnly);
    QVector<Pattern *> sweep(const QVector<Pattern *> &patterns, int stride, bool firstOnly);
    static bool isFlat(const Pattern &pattern);
    /// Switches \a pattern to Way::Runs. Returns false, and changes nothing, if no part of it is flat enough.
    bool lookUpInRuns(Pattern *pattern);
    static void keepSeparate(QVector<int> *positions, int size);

    int nextSwept(const Pattern &pattern, Walk *walk);
    int nextFlat(const Pattern &pattern, Walk *walk);
    int nextAroundRun(const Pattern &pattern, Walk *walk);
    int nextPlain(const Pattern &pattern, int from);

    ByteRange m_range;
    WorkSteps *m_steps;
    std::unique_ptr<WordSample> m_sample; ///< Made when first needed, like the runs.
    PeriodicRuns m_runs;
    QVector<QByteArray> m_bytes;
    QVector<Pattern> m_patterns;
};
