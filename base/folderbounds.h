// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QFileInfo;

/// A folder that somebody else may have put together, in which symbolic links may lead elsewhere. The folder itself may be
/// reached by links: that is the user's choice.
class FolderBounds
{
public:
    /// \a folder may be missing; then every link in it leads out.
    explicit FolderBounds(const QString &folder);

    /// Whether \a entry, whose own folder lies inside, is a link that leads out of the folder, or nowhere.
    bool leadsOut(const QFileInfo &entry) const;

    /// Whether one of the names in \a path, which begins with the folder's own, is such a link. What is missing is none.
    bool leavesOn(const QString &path) const;

private:
    QString m_folder;
    QString m_canonicalFolder; ///< Ends in "/"; empty when the folder is missing.
};
