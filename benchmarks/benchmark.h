// SPDX-License-Identifier: MIT
#pragma once

#include <QVector>

#include <algorithm>
#include <ctime>

/// CPU time of this thread in nanoseconds: unlike the clock on the wall, other work on the machine hardly moves it.
inline qint64 threadNanoseconds()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}

/// Nanoseconds of CPU time that \a work takes.
template<typename Work> qint64 nanosecondsOf(Work &&work)
{
    const qint64 start = threadNanoseconds();
    work();
    return threadNanoseconds() - start;
}

template<typename T> T medianOf(QVector<T> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? T() : values.at(values.size() / 2);
}
