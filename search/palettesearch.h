// SPDX-License-Identifier: MIT
#pragma once

#include "search/byterange.h"
#include "search/worksteps.h"

#include <QHash>
#include <QVector>

/// What is known of a palette: which colours stand at some of its places.
struct WantedPalette
{
    QVector<int> indices; ///< From 0 to 255, all different.
    QVector<quint16> words; ///< The colour at each of them; 0 for any clear one.

    bool operator==(const WantedPalette &other) const { return indices == other.indices && words == other.words; }
};

/// More places of one palette are not kept: it says so little that they mean nothing.
constexpr int mostPlacesOfPalette = 65536;

/// For each of \a wanted the positions in \a range, a multiple of two from the image's start, where all its colours stand,
/// ascending; none for a palette without any opaque colour. What lies behind the last colour need not be in the range.
QVector<QVector<int>> findPalettes(const ByteRange &range, const QVector<WantedPalette> &wanted, WorkSteps *steps);

/// Sorts places of a palette for a texture at \a texture: first those at multiples of eight, and of each the nearest first.
void sortPlaces(QVector<int> *places, int texture);
