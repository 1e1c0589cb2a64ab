// SPDX-License-Identifier: MIT
#pragma once

#include "base/progress.h"

#include <QString>
#include <QVector>

class fileTreeFile;

/// What a search tells whoever runs it, in this order for each picture: that it begins, then either that it cannot be read or
/// each copy found, then what became of the copies, and last the value.
class SearchObserver : public Progress
{
public:
    /// Asked while much is read at a stretch, at least every few milliseconds: whether the user has cancelled. It may let only
    /// some of the calls handle events. cancelled() is asked once per picture, format and copy, and always handles them.
    virtual bool interrupted() { return cancelled(); }

    /// The search turns to \a file, the \a number-th, counted from 1, of \a count.
    virtual void beginPicture(const QString & /*file*/, int /*number*/, int /*count*/) { }
    /// There is no picture in \a file, or none that can be loaded; the search goes on with the next.
    virtual void cannotReadPicture(const QString & /*file*/) { }
    /// A copy of the picture in \a format lies at \a position of the range.
    virtual void foundCopy(const QString & /*format*/, int /*position*/) { }

    /// \a entries are about to leave their folder for equal ones: the last moment to let go of what shows them.
    virtual void beforeReplacing(const QVector<fileTreeFile *> & /*entries*/) { }
    /// \a entries have become the last of their folder's, in this order.
    virtual void entriesAdded(const QVector<fileTreeFile *> & /*entries*/) { }
    enum class Outcome { Overwrote, Added, Ignored };
    /// What became of one copy; once for each, in the order found, before the changes are made.
    virtual void copyHandled(Outcome) { }
};
