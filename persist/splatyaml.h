// SPDX-License-Identifier: MIT
#pragma once

#include "persist/tablerecords.h"

/// The textures of the table below \a root as the segments of a splat document, by address, with a segment of the kind palette
/// for each palette and of the kind bin for what lies between. \a imageSize is in bytes. What has no counterpart gets a line in
/// \a leftOut. False, with the reason in \a error, when the document would be too large.
bool writeSplatYaml(const fileTreeDirectory &root, const QString &identifier, int imageSize, QByteArray *document,
                    QStringList *leftOut, QString *error);

/// Reads such a document: segments and subsegments in list form, "[start, kind, name, width, height]", and in dictionary form
/// with start, or vram inside a segment with start and vram, kind as "type", name, and dims or width and height. A "/" in a name
/// makes folders. A ci4 or ci8 segment has the palette that "palettes" names, otherwise the one of its own name. Kinds without a
/// picture are left out. False, with line and element in \a error, when anything in it is wrong.
bool readSplatYaml(const QByteArray &document, TableDocument *table, QString *error);
