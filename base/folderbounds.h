// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QFileInfo;

/// A folder from an untrusted source, in which symbolic links may lead elsewhere. The folder itself may be reached by links: that
/// is the user's choice.
class FolderBounds
{
public:
    /// \a folder may be missing; then every link in it leads out.
    explicit FolderBounds(const QString &folder);

    /// Whether \a entry, whose own folder lies inside, is a link that leads out of the folder, or nowhere.
    bool leadsOut(const QFileInfo &entry) const;

    /// The first of the names in \a path, as a path, that is such a link; empty when none is. \a path begins with the folder's
    /// own. What is missing is not a link.
    QString linkOn(const QString &path) const;

    /// Whether there is such a link.
    bool leavesOn(const QString &path) const { return !linkOn(path).isEmpty(); }

private:
    QString m_folder;
    QString m_canonicalFolder; ///< Ends in "/"; empty when the folder is missing.
};
