// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

#include <random>

/// The choices of a walk. A seed means the same choices everywhere: the generator is the standard's, and what it yields is
/// brought into a range by hand, since the library's distributions differ from one implementation to the next.
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
