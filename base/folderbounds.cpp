// SPDX-License-Identifier: MIT
#include "base/folderbounds.h"

#include <QFileInfo>

FolderBounds::FolderBounds(const QString &folder) : m_folder(folder), m_canonicalFolder(QFileInfo(folder).canonicalFilePath())
{
    if (!m_canonicalFolder.isEmpty() && !m_canonicalFolder.endsWith(QLatin1Char('/')))
        m_canonicalFolder += QLatin1Char('/');
}

bool FolderBounds::leadsOut(const QFileInfo &entry) const
{
    if (!entry.isSymLink())
        return false;
    const QString target = entry.exists() ? entry.canonicalFilePath() : QString();
    return target.isEmpty() || m_canonicalFolder.isEmpty() || !(target + QLatin1Char('/')).startsWith(m_canonicalFolder);
}

bool FolderBounds::leavesOn(const QString &path) const
{
    // A link that stays inside leads on from where it leads to, so that each name is looked at with all links before it followed.
    for (int end = path.indexOf(QLatin1Char('/'), m_folder.size() + 1);; end = path.indexOf(QLatin1Char('/'), end + 1)) {
        if (leadsOut(QFileInfo(end < 0 ? path : path.left(end))))
            return true;
        if (end < 0)
            return false;
    }
}
