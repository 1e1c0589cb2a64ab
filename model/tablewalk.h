// SPDX-License-Identifier: MIT
#pragma once

#include "model/rom.h"

#include <functional>

/// A node of the file table; both null when there is none.
struct TableNode
{
    fileTreeDirectory *folder = nullptr;
    fileTreeFile *texture = nullptr;

    bool exists() const { return folder || texture; }
};

/// The node that \a path names below \a root: the path as the list command prints it, with or without the root's name in front.
/// Case counts only where two names differ in nothing else. A texture comes before a folder of the same name unless a "/" ends
/// the path. The empty path and the root's name give the root.
TableNode nodeAtPath(fileTreeDirectory *root, const QString &path);

/// The name of \a node behind those of the folders around it; a folder's with a "/" at the end.
QString fullPath(const fileTreeFile &texture);
QString fullPath(const fileTreeDirectory &folder);

/// Called for a folder and, with the folder's path and "/", for the textures in it.
struct TableVisitor
{
    std::function<void(const fileTreeDirectory &folder, const QString &path)> folder;
    std::function<void(const fileTreeFile &texture, const QString &path)> texture;
};

/// Visits \a top, its textures, and then each folder below in the same way, in list order and without recursion.
void walkTable(const fileTreeDirectory &top, const TableVisitor &visitor);
