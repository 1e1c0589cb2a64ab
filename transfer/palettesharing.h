// SPDX-License-Identifier: MIT
#pragma once

#include "model/rom.h"

#include <QByteArray>
#include <QVector>

#include <bitset>

/// Another texture that uses some of a palette.
struct PaletteSharer
{
    const fileTreeFile *texture = nullptr; ///< Not owned.
    std::bitset<256> places; ///< Those of the palette whose colours its texels have.
};

/// The textures below \a root, in the table's order, whose palettes overlap that of \a texture, with what they use of it as
/// \a cartridge holds them. Entries of the same texels, address and format, are left out: they are the same texture. So much that
/// looking would take long counts as using every place.
QVector<PaletteSharer> paletteSharers(const fileTreeDirectory *root, const fileTreeFile &texture, const QByteArray &cartridge);

/// The places that any of \a sharers uses.
std::bitset<256> placesUsedBy(const QVector<PaletteSharer> &sharers);
