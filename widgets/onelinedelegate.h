// SPDX-License-Identifier: MIT
#pragma once

#include <QStyledItemDelegate>

/// Shows names from files of others in their cells as printableText(); the items keep them as they are.
class OneLineDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant &value, const QLocale &locale) const override;
};
