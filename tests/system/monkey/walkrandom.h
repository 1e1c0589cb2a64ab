// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

#include <random>

/// The random choices of a run. A seed gives the same choices on every system: the generator is std::mt19937, and the range is
/// reduced here, because the distributions of the standard library differ between implementations.
class WalkRandom
{
public:
    explicit WalkRandom(quint32 seed) : m_engine(seed) { }

    /// A number from 0 to \a count - 1.
    int below(int count) { return int(quint32(m_engine()) % quint32(count)); }
    bool chance(int percent) { return below(100) < percent; }
    template<typename T> T oneOf(const QList<T> &list) { return list.at(below(list.size())); }

private:
    std::mt19937 m_engine;
};
