// SPDX-License-Identifier: MIT
#pragma once

#include "base/progress.h"

#include <QString>
#include <QVector>

class fileTreeFile;
struct TextureReplacement;

/// Callbacks of a search, in this order for each picture: it begins; it cannot be read, or each copy found; the outcome of each
/// copy; the progress value.
class SearchObserver : public Progress
{
public:
    /// Cancellation polling inside long reads, at least every few milliseconds; it need not process events on each call.
    /// cancelled() is called once for each picture, format and copy, and always processes events.
    virtual bool interrupted() { return cancelled(); }

    /// The search starts with \a file, number \a number of \a count, counted from 1.
    virtual void beginPicture(const QString & /*file*/, int /*number*/, int /*count*/) { }
    /// \a file is no picture that can be loaded; the search continues with the next.
    virtual void cannotReadPicture(const QString & /*file*/) { }
    /// A copy of the picture in \a format lies at \a position of the range.
    virtual void foundCopy(const QString & /*format*/, int /*position*/) { }

    /// \a changes are about to be made, and at least one replaces an entry: the last moment to remove what shows it.
    virtual void beforeReplacing(const QVector<TextureReplacement> & /*changes*/) { }
    /// \a entries have been appended to their folder, in this order.
    virtual void entriesAdded(const QVector<fileTreeFile *> & /*entries*/) { }
    enum class Outcome { Overwrote, Added, Ignored };
    /// The outcome of one copy; called once for each, in the order found, before the table changes.
    virtual void copyHandled(Outcome) { }
};
