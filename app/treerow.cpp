// SPDX-License-Identifier: MIT
#include "app/treerow.h"

#include "model/rom.h"

#include <QTreeWidgetItem>

namespace
{
template<typename Node> void forgetRowOf(Node *node, const QTreeWidgetItem *row)
{
    if (node && node->treeItem == row)
        node->treeItem = nullptr;
}
}

void forgetRows(QTreeWidgetItem *row)
{
    QList<QTreeWidgetItem *> waiting;
    if (row)
        waiting.append(row);
    while (!waiting.isEmpty()) {
        QTreeWidgetItem *next = waiting.takeLast();
        const QVariant node = next->data(0, Qt::UserRole);
        forgetRowOf(node.value<fileTreeFile *>(), next);
        forgetRowOf(node.value<fileTreeDirectory *>(), next);
        for (int i = 0; i < next->childCount(); ++i)
            waiting.append(next->child(i));
    }
}

void RowDeleter::operator()(QTreeWidgetItem *row) const
{
    QList<QTreeWidgetItem *> waiting {row};
    while (!waiting.isEmpty()) {
        const std::unique_ptr<QTreeWidgetItem> next(waiting.takeLast());
        if (next)
            waiting += next->takeChildren();
    }
}
