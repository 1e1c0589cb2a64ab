// SPDX-License-Identifier: MIT
#include "search/picturefiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

QStringList picturesInFolder(const QString &folder, bool subfolders)
{
    QStringList files;
    QDirIterator entry(QDir(folder).absolutePath(), subfolders ? QDirIterator::Subdirectories : QDirIterator::NoIteratorFlags);
    while (entry.hasNext()) {
        const QString file = entry.next();
        if (!entry.fileInfo().isDir() && file.endsWith(QLatin1String(".png"), Qt::CaseSensitive))
            files.append(file);
    }
    return files;
}
