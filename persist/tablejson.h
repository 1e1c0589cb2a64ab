// SPDX-License-Identifier: MIT
#pragma once

#include "persist/tablerecords.h"

/// The table below \a root as a JSON document with the keys that the command list uses; in paths, "\" precedes a "/" or "\" that
/// belongs to a name. False, with the reason in \a error, when the document would be too large.
bool writeTableJson(const fileTreeDirectory &root, const QString &identifier, const QString &profile, QByteArray *document,
                    QString *error);

/// Reads such a document, also one that list has printed. False, with line and element in \a error, when anything in it is wrong.
bool readTableJson(const QByteArray &document, TableDocument *table, QString *error);
