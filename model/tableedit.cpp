// SPDX-License-Identifier: MIT
#include "model/tableedit.h"

#include "base/wrapping.h"

namespace
{
int difference(int a, int b)
{
    return addWrapping(a, addWrapping(~b, 1));
}

/// Moves a texture; the addresses in the image are kept by changing the offsets by as much as the folders differ.
void moveTexture(fileTreeFile *texture, fileTreeDirectory *folder, MoveKeeps keeps)
{
    const int address = texture->realAddress();
    const int paletteAddress = texture->realPaletteAddress();
    texture->destroy();
    folder->addFile(texture);
    if (keeps == MoveKeeps::Offsets)
        return;
    setRealAddress(texture, address);
    setRealPaletteAddress(texture, paletteAddress);
}

void moveFolder(fileTreeDirectory *moved, fileTreeDirectory *folder, MoveKeeps keeps)
{
    const int address = moved->realAddress();
    const int oldOffset = moved->address;
    moved->destroy();
    folder->addDirectory(moved);
    if (keeps == MoveKeeps::Offsets)
        return;
    setRealAddress(moved, address);
    // Palettes count from the folder's own offset, which changed although the folder did not move.
    for (fileTreeFile *texture : qAsConst(moved->files))
        texture->paletteAddress = addWrapping(texture->paletteAddress, difference(oldOffset, moved->address));
}
}

void moveContents(const fileTreeDirectory &folder, int delta)
{
    for (fileTreeFile *file : folder.files)
        file->address = addWrapping(file->address, delta);
    for (fileTreeDirectory *directory : folder.directories)
        directory->address = addWrapping(directory->address, delta);
}

void setRealAddress(fileTreeFile *texture, int address)
{
    texture->address = addWrapping(texture->address, difference(address, texture->realAddress()));
}

void setRealAddress(fileTreeDirectory *folder, int address)
{
    folder->address = addWrapping(folder->address, difference(address, folder->realAddress()));
}

void setRealPaletteAddress(fileTreeFile *texture, int address)
{
    texture->paletteAddress = addWrapping(texture->paletteAddress, difference(address, texture->realPaletteAddress()));
}

bool isInside(const fileTreeDirectory &folder, const TableNode &node)
{
    const fileTreeDirectory *outer = &folder;
    while (outer && outer != node.folder)
        outer = outer->parent;
    return node.folder && outer;
}

void moveNode(const TableNode &node, fileTreeDirectory *folder, MoveKeeps keeps)
{
    if (node.texture && node.texture->parent != folder)
        moveTexture(node.texture, folder, keeps);
    else if (node.folder && node.folder->parent != folder)
        moveFolder(node.folder, folder, keeps);
}
