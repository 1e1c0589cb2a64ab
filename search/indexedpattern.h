// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

class QImage;

/// What a picture looks like to somebody who does not know its palette: which pixels have the same colour. The colours are
/// numbered in the order in which they appear.
struct IndexedPattern
{
    int bits = 8; ///< Of an index: 8, or 4 with the first pixel in the upper half of a byte.
    int pixels = 0;
    QByteArray numbers; ///< Packed as indices are, the numbers in place of the indices; a last half byte is zero.
    /// The colours by number, as palettes hold them; 0 stands for any clear one.
    QVector<quint16> colours;

    int numberAt(int pixel) const
    {
        return bits == 8 ? uchar(numbers.at(pixel)) : uchar(numbers.at(pixel / 2)) >> (pixel % 2 ? 0 : 4) & 0xF;
    }
};

/// The ways to read \a picture for indices of \a bits bits, or none, with the reason in \a refusal.
///
/// Palettes hold less than pictures show: several colours of a picture may be one in a palette, and of clear pixels only that
/// they are clear. The game may have given such colours one index or several, so both are tried, for colours and for clear pixels
/// each: at most four readings, fewer where they come to the same. Within a reading equal colours have one index, and different
/// ones have different indices. A palette with the same colour twice, where the picture has it once, is not found.
///
/// Refused are pictures with more colours than indices, with a single one, with less than 24 bytes, and those with so little
/// structure that they would be found everywhere: for each distance from 1 to 8 at least twelve pixels must differ from the one
/// so many before, and of random bytes less than one place in 2^40 may match.
QVector<IndexedPattern> indexedPatterns(const QImage &picture, int bits, QString *refusal);
