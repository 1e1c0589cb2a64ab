// SPDX-License-Identifier: MIT
#include "model/tablewalk.h"

#include <QVector>

namespace
{
/// A folder and what of the path is still to be found below it.
struct Step
{
    fileTreeDirectory *folder;
    QString rest;
};

/// Names may hold "/" themselves, so the path is compared with names rather than cut at each "/".
TableNode nodeBelow(fileTreeDirectory *root, const QString &path, Qt::CaseSensitivity sensitivity)
{
    QVector<Step> steps {{root, path}};
    TableNode folderFound;
    while (!steps.isEmpty()) {
        const Step step = steps.takeLast();
        if (step.rest.isEmpty()) {
            folderFound.folder = folderFound.folder ? folderFound.folder : step.folder;
            continue;
        }
        for (fileTreeFile *texture : qAsConst(step.folder->files)) {
            if (step.rest.compare(texture->name, sensitivity) == 0)
                return {nullptr, texture};
        }
        for (int i = step.folder->directories.size() - 1; i >= 0; --i) {
            fileTreeDirectory *child = step.folder->directories.at(i);
            if (step.rest.compare(child->name, sensitivity) == 0)
                steps.append({child, QString()});
            else if (step.rest.startsWith(child->name + QLatin1Char('/'), sensitivity))
                steps.append({child, step.rest.mid(child->name.size() + 1)});
        }
    }
    return folderFound;
}
}

TableNode nodeAtPath(fileTreeDirectory *root, const QString &path)
{
    const QString top = root->name + QLatin1Char('/');
    if (path.isEmpty() || path.compare(root->name, Qt::CaseInsensitive) == 0)
        return {root, nullptr};
    for (const Qt::CaseSensitivity sensitivity : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
        if (path.startsWith(top, Qt::CaseInsensitive)) {
            const TableNode node = nodeBelow(root, path.mid(top.size()), sensitivity);
            if (node.exists())
                return node;
        }
        const TableNode node = nodeBelow(root, path, sensitivity);
        if (node.exists())
            return node;
    }
    return {};
}

QString fullPath(const fileTreeFile &texture)
{
    return texture.path() + texture.name;
}

QString fullPath(const fileTreeDirectory &folder)
{
    return folder.path() + folder.name + QLatin1Char('/');
}

void walkTable(const fileTreeDirectory &top, const TableVisitor &visitor)
{
    struct Pending
    {
        const fileTreeDirectory *folder;
        QString path;
    };
    QVector<Pending> pending {{&top, fullPath(top)}};
    while (!pending.isEmpty()) {
        const Pending current = pending.takeLast();
        visitor.folder(*current.folder, current.path);
        for (const fileTreeFile *texture : current.folder->files)
            visitor.texture(*texture, current.path + texture->name);
        for (int i = current.folder->directories.size() - 1; i >= 0; --i) {
            const fileTreeDirectory *child = current.folder->directories.at(i);
            pending.append({child, current.path + child->name + QLatin1Char('/')});
        }
    }
}
