// SPDX-License-Identifier: MIT
#pragma once

#include "model/tablewalk.h"

/// Changes of the file table, for the window and the command line alike.

/// Adds \a delta bytes to the offset of all that lies directly in \a folder. What lies deeper moves with its own folder.
void moveContents(const fileTreeDirectory &folder, int delta);

/// Gives \a texture the offset with which it lies at \a address in the image.
void setRealAddress(fileTreeFile *texture, int address);
/// Gives \a folder the offset with which it begins at \a address in the image. The boundary is left to the caller.
void setRealAddress(fileTreeDirectory *folder, int address);
/// Gives \a texture the palette offset with which its palette lies at \a address in the image.
void setRealPaletteAddress(fileTreeFile *texture, int address);

/// What a node that goes to another folder keeps.
enum class MoveKeeps {
    Addresses, ///< All textures and palettes stay where they are in the image; offsets change.
    Offsets, ///< All numbers stay as they are; the textures move in the image.
};

/// Whether \a folder is \a node, or lies in it, so that the node cannot go there.
bool isInside(const fileTreeDirectory &folder, const TableNode &node);

/// Takes \a node, which is not the root, out of its folder and adds it to \a folder, where its name is made unique. The folder
/// must not lie inside the node. A node that is there already stays as it is.
void moveNode(const TableNode &node, fileTreeDirectory *folder, MoveKeeps keeps);
