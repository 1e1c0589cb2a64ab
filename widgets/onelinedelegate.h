// SPDX-License-Identifier: MIT
#pragma once

#include <QStyledItemDelegate>

/// Shows untrusted names in cells as printableText(); the items keep the original text.
class OneLineDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant &value, const QLocale &locale) const override;
};
