// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <functional>

/// Counts work in bytes read, and asks now and then whether it is still wanted, so that a cancelled search ends within a moment
/// wherever its time goes.
class WorkSteps
{
public:
    /// \a isUnwanted is asked about once per step's worth of work.
    explicit WorkSteps(std::function<bool()> isUnwanted) : m_isUnwanted(std::move(isUnwanted)) { }

    /// Adds work that cost about as much as reading \a bytes. False once the work is unwanted.
    bool add(qint64 bytes)
    {
        m_done += bytes;
        if (m_done < bytesPerStep || m_unwanted)
            return !m_unwanted;
        m_done = 0;
        m_unwanted = m_isUnwanted();
        return !m_unwanted;
    }

    bool isUnwanted() const { return m_unwanted; }
    void setUnwanted() { m_unwanted = true; }

    /// A few milliseconds at the slowest that plain substring search gets.
    static constexpr qint64 bytesPerStep = qint64(1024) * 1024;

private:
    std::function<bool()> m_isUnwanted;
    qint64 m_done = 0;
    bool m_unwanted = false;
};
