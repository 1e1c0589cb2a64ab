// SPDX-License-Identifier: MIT
#pragma once

#include <QVector>

/// The opaque colours of rgb5a1, as numbers: red << 10 | green << 5 | blue, each from 0 to 31. The word is twice that plus 1.
constexpr int opaqueColourCount = 32 * 32 * 32;

/// At most \a most (1 to 256) opaque colours to show a picture with, ascending: chosen so that the sum of the squared distances
/// of all pixels to their nearest colour is small. \a pixelsOf holds the number of pixels of each of the opaqueColourCount
/// colours. When there are no more than \a most different ones, the result is exactly those. The same input gives the same
/// result.
QVector<quint16> quantisedColours(const QVector<quint32> &pixelsOf, int most);

/// The one of \a choices (not empty) that is nearest to \a colour by the squared distance of the three channels; the first of
/// several. Returns its place in the list.
int nearestColour(quint16 colour, const QVector<quint16> &choices);
