// SPDX-License-Identifier: MIT
#pragma once

#include "fuzzinput.h"

#include "model/rom.h"

#include <QSet>
#include <QStringList>

/// Holds the file table below \a root to what is true of every table: parents, positions, and names without a double.
inline void requireConsistent(const fileTreeDirectory *root)
{
    QList<fileTreeDirectory *> all = fileTreeContainer().allDirectories(root);
    int textures = 0;
    const auto check = [&textures](const fileTreeDirectory *folder) {
        QSet<QString> names;
        for (const fileTreeDirectory *child : folder->directories) {
            require(child->parent == folder, "a folder knows the one that lists it");
            require(!names.contains(child->name), "folders have names of their own");
            names.insert(child->name);
        }
        names.clear();
        for (const fileTreeFile *texture : folder->files) {
            require(texture->parent == folder, "a texture knows the folder that lists it");
            require(!names.contains(texture->name), "textures have names of their own");
            names.insert(texture->name);
        }
        textures += folder->files.size();
    };
    check(root);
    for (const fileTreeDirectory *folder : qAsConst(all))
        check(folder);
    require(fileTreeContainer().allFiles(root).size() == textures, "a walk visits each texture once");
}

/// A line for each folder and texture below \a root, with all that a file list keeps of it, in list order.
inline QStringList describeTable(const fileTreeDirectory *root)
{
    QStringList lines;
    const auto describe = [&lines](const fileTreeDirectory *folder, int number) {
        lines << QStringLiteral("%1 folder %2 %3 of %4").arg(number).arg(folder->address).arg(folder->size).arg(folder->name);
        for (const fileTreeFile *texture : folder->files) {
            lines << QStringLiteral("%1 %2x%3 palette %4 format %5 name %6")
                         .arg(QString::number(texture->address), QString::number(texture->width),
                              QString::number(texture->height), QString::number(texture->paletteAddress), texture->format,
                              texture->name);
        }
        lines << QString::number(folder->directories.size());
    };
    describe(root, 0);
    const QList<fileTreeDirectory *> all = fileTreeContainer().allDirectories(root);
    for (int i = 0; i < all.size(); ++i)
        describe(all.at(i), i + 1);
    return lines;
}

/// Frees all below \a root, which is empty afterwards: a fuzzer's run makes more nodes than a program's.
inline void deleteBelow(fileTreeDirectory *root)
{
    const QList<fileTreeFile *> textures = fileTreeContainer().allFiles(root);
    const QList<fileTreeDirectory *> folders = fileTreeContainer().allDirectories(root);
    root->files.clear();
    root->directories.clear();
    qDeleteAll(textures);
    qDeleteAll(folders);
}

/// A root folder that is freed with all below it.
class TableRoot : public fileTreeDirectory
{
public:
    TableRoot()
    {
        isRoot = true;
        size = 0;
    }
    ~TableRoot() { deleteBelow(this); }
};
