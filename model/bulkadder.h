// SPDX-License-Identifier: MIT
#pragma once

#include "model/rom.h"

#include <QHash>
#include <QString>
#include <QVector>

/// The naming rule: a name that a sibling has gets the lowest free number from here on, as in "Sky (2)".
constexpr int firstNameNumber = 2;
QString numberedName(const QString &name, int number);
/// Splits "Sky (3)" into "Sky" and 3; false for every text that numberedName() does not give.
bool splitNumberedName(const QString &text, QString *name, int *number);

/// The names that siblings have, for finding free ones. Each operation takes constant time on average.
class SiblingNames
{
public:
    void insert(const QString &name) { ++m_names[name].bearers; }
    void remove(const QString &name);

    /// Inserts \a requested, or if it is there "requested (2)", "requested (3)" ..., the first that is not. Returns that name.
    QString take(const QString &requested);

private:
    struct Entry
    {
        int bearers = 0; ///< Siblings with this name; names written directly to the nodes need not be unique.
        int nextNumber = firstNameNumber; ///< All lower numbers from 2 on are in use behind this name.
    };
    QHash<QString, Entry> m_names;
};

/// A texture to add, and the one that it replaces.
struct TextureReplacement
{
    fileTreeFile *added = nullptr;
    fileTreeFile *replaced = nullptr; ///< Null when it replaces none.
};

/// Adds many nodes to one folder in linear time: it knows the names of the children, so that an add visits none of them. While it
/// is in use nothing else may add, rename or remove children of the folder.
class BulkAdder
{
public:
    explicit BulkAdder(fileTreeDirectory *folder);

    fileTreeDirectory *folder() const { return m_folder; }

    /// Do what the folder's functions of these names do, for nodes that it does not list yet.
    fileTreeFile *addFile(fileTreeFile *file);
    fileTreeDirectory *addDirectory(fileTreeDirectory *directory);
    /// Does for each of \a changes in turn what replaced->destroy() and then addFile(added) do. The replaced textures must be
    /// children of the folder.
    void replaceFiles(const QVector<TextureReplacement> &changes);

private:
    fileTreeDirectory *m_folder;
    SiblingNames m_files;
    SiblingNames m_directories;
};
