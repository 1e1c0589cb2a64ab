// SPDX-License-Identifier: MIT
#pragma once

#include "search/placement.h"

#include <QString>
#include <QVector>

class fileTreeDirectory;

/// What became of one texture entry of a table that was taken over to another image.
struct PortedTexture
{
    QString path; ///< Folders and name, as before.
    PlaceState state = PlaceState::Missing; ///< The less sure one of texture and palette.
    int oldAddress = 0; ///< In the old image.
    Place place; ///< Of the texture in the new image.
    bool hasPalette = false;
    int oldPaletteAddress = 0; ///< In the old image.
    Place palette; ///< Of the palette in the new image.
};

/// Turns the table below \a root, which describes the loaded image, into one that describes \a newImage. Each texture goes to
/// where its bytes are now, and its palette address to where the palette is; a palette that is nowhere keeps its displacement
/// from the texture. A texture whose place nothing tells leaves the table. Folders move with their contents and keep names,
/// order, nesting and sizes. Returns what became of each texture, in the order of the table. \a progress may be null; when it is
/// cancelled, the table is of no use.
QVector<PortedTexture> portTable(fileTreeDirectory *root, const QByteArray &newImage, Progress *progress);
