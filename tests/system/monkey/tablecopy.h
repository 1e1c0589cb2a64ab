// SPDX-License-Identifier: MIT
#pragma once

#include "model/rom.h"

#include <QByteArray>

/// A file table of its own, which is freed with it.
class TableCopy
{
public:
    TableCopy();
    ~TableCopy();
    TableCopy(const TableCopy &) = delete;
    TableCopy &operator=(const TableCopy &) = delete;

    fileTreeDirectory *root() { return m_root; }
    /// Takes over what \a source holds, as copies.
    void copyContents(const fileTreeDirectory &source);
    /// Adds what \a list describes, for an image of \a imageSize bytes. False when it is damaged.
    bool read(const QByteArray &list, int imageSize);
    /// The list that the table is saved as; sorts it.
    QByteArray written();

private:
    fileTreeDirectory *m_root;
};

/// The list that \a root would be saved as; \a root itself stays as it is.
QByteArray listOf(const fileTreeDirectory &root);

/// \a list as it is after it was read and saved again.
QByteArray savedAgain(const QByteArray &list, int imageSize);
