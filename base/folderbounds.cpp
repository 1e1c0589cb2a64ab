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

QString FolderBounds::linkOn(const QString &path) const
{
    // A link that stays inside leads on from its target, so each name is checked with all links before it followed.
    for (int end = path.indexOf(QLatin1Char('/'), m_folder.size() + 1);; end = path.indexOf(QLatin1Char('/'), end + 1)) {
        const QString name = path.left(end);
        if (leadsOut(QFileInfo(name)))
            return name;
        if (end < 0)
            return QString();
    }
}
