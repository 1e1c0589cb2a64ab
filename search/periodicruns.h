// SPDX-License-Identifier: MIT
#pragma once

#include "search/byterange.h"
#include "search/worksteps.h"

#include <QVector>

/// The bytes from \a begin to before \a end, in which every byte equals the one eight further on. Flat areas of every format are
/// such: one colour is one, two, four or, with a few more patterns, eight bytes that repeat.
struct PeriodicRun
{
    int begin = 0;
    int end = 0;

    int length() const { return end - begin; }
};

/// The longest periodic run in \a size bytes, the first of that length; empty when there are fewer than eight.
PeriodicRun longestPeriodicRun(const char *bytes, int size);

/// The long periodic runs of a range. A pattern that is flat, or has a long flat part, can only lie where such a run is: with the
/// list it is found without reading the range again, where any search by content would stumble over every byte of every run.
class PeriodicRuns
{
public:
    /// Reads \a range once. False when the work was unwanted before its end; the list is then of no use.
    bool build(const ByteRange &range, WorkSteps *steps);

    bool isBuilt() const { return m_built; }
    /// Runs of at least this length are listed, all of them.
    int minimumLength() const { return m_minimumLength; }
    /// As far as they can reach, by ascending begin and by ascending end; neighbours share less than eight bytes.
    const QVector<PeriodicRun> &runs() const { return m_runs; }

private:
    void keepLongOnes();

    QVector<PeriodicRun> m_runs;
    int m_minimumLength = 48;
    bool m_built = false;
};
