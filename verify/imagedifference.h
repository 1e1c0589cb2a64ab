// SPDX-License-Identifier: MIT
#pragma once

#include "model/rom.h"
#include "verify/bytespans.h"

#include <QByteArray>
#include <QList>
#include <QVector>

/// An image and the bytes that each texture of a table takes in it, in the table's order; a JPEG may differ in length from image
/// to image.
struct MeasuredImage
{
    QByteArray bytes;
    QVector<ByteSpan> textures;
};

/// currentROM's image, with the bytes that the textures \a all take there.
MeasuredImage measuredImage(const QList<fileTreeFile *> &all);

/// A texture that two images show differently, by its own bytes or by those of its palette.
struct ChangedEntry
{
    int place = 0; ///< In the list of all textures.
    qint64 bytes = 0; ///< Bytes of the texture that differ.
    qint64 paletteBytes = 0; ///< Bytes of its palette that differ.
};

/// A range of the images that begins and ends with a byte that differs; between them, fewer than 16 equal ones follow each other.
struct ChangedRange
{
    ByteSpan span;
    qint64 bytes = 0; ///< How many differ.
};

/// How many ranges outside the textures are kept; the others are counted.
constexpr int mostChangedRanges = 10000;

/// What differs between two images. What only one of them has, because it is longer, differs.
struct ImageDifference
{
    qint64 bytes = 0;
    QVector<ChangedEntry> entries; ///< In the table's order.
    qint64 outsideBytes = 0; ///< That neither a texture nor a palette has, in either image.
    int outsideCount = 0; ///< Ranges of such bytes.
    QVector<ChangedRange> outside; ///< Ascending; the first mostChangedRanges of them.
};

/// Compares two images, which were measured with the same list \a all. Takes time linear in the images and the table, however
/// much the textures overlap.
ImageDifference differenceBetween(const MeasuredImage &before, const MeasuredImage &after, const QList<fileTreeFile *> &all);
