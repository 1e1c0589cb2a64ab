// SPDX-License-Identifier: MIT
#include "search/periodicruns.h"

#include <algorithm>

namespace
{
/// The end of the run that contains the eight bytes before \a position: one past the last byte that equals the byte eight before.
int endOfRun(const char *data, int size, int position)
{
    constexpr int block = 512;
    const auto wordRepeats = [data, &position] { return wordAt(data + position) == wordAt(data + position - wordBytes); };
    // Most runs end in the first word, so compare that before calling memcmp on blocks.
    while (position <= size - block && wordRepeats() && std::memcmp(data + position, data + position - wordBytes, block) == 0)
        position += block;
    while (position <= size - wordBytes && wordRepeats())
        position += wordBytes;
    while (position < size && data[position] == data[position - wordBytes])
        ++position;
    return position;
}

int beginOfRun(const char *data, int position)
{
    while (position > 0 && data[position - 1] == data[position - 1 + wordBytes])
        --position;
    return position;
}

/// The position where the next run can begin: maximal runs share at most seven bytes.
int firstBeyond(const PeriodicRun &run)
{
    return run.end - wordBytes + 1;
}
}

PeriodicRun longestPeriodicRun(const char *bytes, int size)
{
    PeriodicRun longest;
    for (int begin = 0; begin <= size - wordBytes;) {
        const PeriodicRun run {begin, endOfRun(bytes, size, begin + wordBytes)};
        if (run.length() > longest.length())
            longest = run;
        begin = firstBeyond(run);
    }
    return longest;
}

bool PeriodicRuns::build(const ByteRange &range, WorkSteps *steps)
{
    // The list takes at most 1/32 of the memory of the range. With too many short runs the minimum length is doubled.
    const int mostRuns = range.size / 256 + 64;
    m_runs.clear();
    m_built = false;
    for (int position = 0; position <= range.size - 2 * wordBytes;) {
        // Every run of the minimum length contains two words at one of these positions.
        const int stride = m_minimumLength - 2 * wordBytes;
        if (wordAt(range.data + position) != wordAt(range.data + position + wordBytes)) {
            if (!steps->add(stride))
                return false;
            position += stride;
            continue;
        }
        const PeriodicRun run {beginOfRun(range.data, position), endOfRun(range.data, range.size, position + 2 * wordBytes)};
        if (run.length() >= m_minimumLength) {
            m_runs.append(run);
            if (m_runs.size() > mostRuns)
                keepLongOnes();
        }
        if (!steps->add(run.end - position))
            return false;
        position = firstBeyond(run);
    }
    m_built = true;
    return true;
}

void PeriodicRuns::keepLongOnes()
{
    m_minimumLength *= 2;
    const auto isShort = [this](const PeriodicRun &run) { return run.length() < m_minimumLength; };
    m_runs.erase(std::remove_if(m_runs.begin(), m_runs.end(), isShort), m_runs.end());
}
