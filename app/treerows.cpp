// SPDX-License-Identifier: MIT
#include "model/rom.h"

#include <QIcon>
#include <QTreeWidgetItem>

namespace
{
void removeRow(QTreeWidgetItem *parentRow, QTreeWidgetItem *row)
{
    parentRow->removeChild(row);
    if (parentRow->childCount() == 0)
        parentRow->setIcon(0, QIcon(QStringLiteral(":/icons/folder_empty")));
}

const bool installed = [] {
    removeTreeRow = removeRow;
    return true;
}();
}
