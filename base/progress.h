// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Receives the progress of long work: the window's progress dialog, a terminal's bar, a test, or nothing.
class Progress
{
public:
    virtual ~Progress() = default;
    virtual void setLabel(const QString &) { } ///< What is being worked on now.
    virtual void setMaximum(int) { } ///< The value that means done.
    virtual void setValue(int) { } ///< How far the work has come; may let the window handle events.
    /// Lets pending events be handled and says whether the user has cancelled. Work that cannot be cancelled never asks.
    virtual bool cancelled() { return false; }
};

/// Receives the messages of an operation. The window writes them to its debug log and its
/// status bar, the command line to standard error.
class WorkLog
{
public:
    virtual ~WorkLog() = default;
    virtual void debug(const QString &) { } ///< A line for the debug log, ready to print.
    virtual void status(const QString &, int) { } ///< A message for the user, and the milliseconds it stays up.
    virtual void warning(const QString &) { } ///< What the work drops or changes although it succeeds.
    virtual void notImported(const QString &) { } ///< A picture or folder that is left out, and why.
};
