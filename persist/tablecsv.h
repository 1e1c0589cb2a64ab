// SPDX-License-Identifier: MIT
#pragma once

#include "persist/tablerecords.h"

/// The table below \a root as comma-separated values (RFC 4180) in UTF-8: the columns path, address, format, width, height,
/// palette, size. A folder's path ends in "/", and it alone has a size. Cells are data, whatever character they begin with.
/// False, with the reason in \a error, when the document would be too large.
bool writeTableCsv(const fileTreeDirectory &root, QByteArray *document, QString *error);

/// Reads such a document. The first line names the columns, in any order; path and address must be among them, others are passed
/// over. False, with line and column in \a error, when anything in it is wrong.
bool readTableCsv(const QByteArray &document, TableDocument *table, QString *error);
