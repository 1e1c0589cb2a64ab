// SPDX-License-Identifier: MIT
#pragma once

#include "persist/tablerecords.h"

/// The table below \a root as Zelda extraction XML: one File, named \a identifier, with a Texture for each entry. Offsets count
/// from the image's start, and OutName is the path. What has no counterpart gets a line in \a leftOut. False, with the reason in
/// \a error, when the document would be too large.
bool writeZeldaXml(const fileTreeDirectory &root, const QString &identifier, QByteArray *document, QStringList *leftOut,
                   QString *error);

/// Reads such a document. Each File becomes a folder at address 0, its textures are named by OutName, or else by Name, in which
/// "/" makes folders. Offsets count from the file's start; those with the file's segment number in their top byte too. False,
/// with line and element in \a error, when anything in it is wrong.
bool readZeldaXml(const QByteArray &document, TableDocument *table, QString *error);
