// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

class QTreeWidgetItem;

/// Makes the nodes that \a row and the rows below it show forget their rows. Null is allowed.
void forgetRows(QTreeWidgetItem *row);

/// Frees \a row, which must stand in no tree, and all rows below it, without recursion. Null is allowed.
struct RowDeleter
{
    void operator()(QTreeWidgetItem *row) const;
};
using RemovedRow = std::unique_ptr<QTreeWidgetItem, RowDeleter>;
