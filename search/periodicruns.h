// SPDX-License-Identifier: MIT
#pragma once

#include "search/byterange.h"
#include "search/worksteps.h"

#include <QVector>

/// The bytes from \a begin to before \a end, in which every byte equals the one eight bytes later. Flat areas are such runs in
/// every format: a colour is one, two or four bytes that repeat.
struct PeriodicRun
{
    int begin = 0;
    int end = 0;

    int length() const { return end - begin; }
};

/// The longest periodic run in \a size bytes, the first of that length; empty when there are fewer than eight.
PeriodicRun longestPeriodicRun(const char *bytes, int size);

/// The long periodic runs of a range. A copy of a flat pattern, or of a pattern with a long flat part, lies at such a run. The
/// list finds it without reading the range again; a search by content has a candidate at every byte of every run.
class PeriodicRuns
{
public:
    /// Reads \a range once. Returns false if it was cancelled; the list is then incomplete.
    bool build(const ByteRange &range, WorkSteps *steps);

    bool isBuilt() const { return m_built; }
    /// All runs of at least this length, in bytes, are in the list.
    int minimumLength() const { return m_minimumLength; }
    /// Maximal runs, ascending by begin and by end; neighbours share less than eight bytes.
    const QVector<PeriodicRun> &runs() const { return m_runs; }

private:
    void keepLongOnes();

    QVector<PeriodicRun> m_runs;
    int m_minimumLength = 48;
    bool m_built = false;
};
