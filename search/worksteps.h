// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <functional>

/// Polls for cancellation about once per megabyte of work, so that a cancelled search ends within milliseconds.
class WorkSteps
{
public:
    /// \a isCancelled is called once per bytesPerStep of work.
    explicit WorkSteps(std::function<bool()> isCancelled) : m_isCancelled(std::move(isCancelled)) { }

    /// Adds work that costs about as much as reading \a bytes. Returns false after a cancellation.
    bool add(qint64 bytes)
    {
        m_done += bytes;
        if (m_done < bytesPerStep || m_cancelled)
            return !m_cancelled;
        m_done = 0;
        m_cancelled = m_isCancelled();
        return !m_cancelled;
    }

    bool isCancelled() const { return m_cancelled; }
    void cancel() { m_cancelled = true; }

    /// A few milliseconds of plain substring search in its worst case.
    static constexpr qint64 bytesPerStep = qint64(1024) * 1024;

private:
    std::function<bool()> m_isCancelled;
    qint64 m_done = 0;
    bool m_cancelled = false;
};
