// SPDX-License-Identifier: MIT
#pragma once

#include "model/rom.h"

#include <QByteArray>

/// A separate file table; owns its nodes.
class TableCopy
{
public:
    TableCopy();
    ~TableCopy();
    TableCopy(const TableCopy &) = delete;
    TableCopy &operator=(const TableCopy &) = delete;

    fileTreeDirectory *root() { return m_root; }
    /// Copies the contents of \a source.
    void copyContents(const fileTreeDirectory &source);
    /// Adds what \a list describes, for an image of \a imageSize bytes. False when it is damaged.
    bool read(const QByteArray &list, int imageSize);
    /// The file list document of the table; sorts the table.
    QByteArray written();

private:
    fileTreeDirectory *m_root;
};

/// The file list document of \a root; does not change \a root.
QByteArray listOf(const fileTreeDirectory &root);

/// \a list after it was read and saved again.
QByteArray savedAgain(const QByteArray &list, int imageSize);
