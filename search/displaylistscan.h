// SPDX-License-Identifier: MIT
#pragma once

#include "search/byterange.h"
#include "search/displayliststate.h"
#include "search/worksteps.h"

#include <QVector>

/// What the display lists of a range use, and where they are.
struct DisplayListScan
{
    QVector<TextureReference> textures; ///< One for each time that a list brings it, in order of position.
    QVector<int> commands; ///< Positions of all commands that described a texture, ascending.
};

/// Finds the display lists in \a range and follows them. Positions in the result count from the range's start plus \a offset.
/// Reads the range once; where nothing sets a texture image, there is nothing else to do. Stops early once the work is unwanted.
DisplayListScan scanDisplayLists(const ByteRange &range, int offset, WorkSteps *steps);
