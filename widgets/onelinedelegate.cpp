// SPDX-License-Identifier: MIT
#include "widgets/onelinedelegate.h"

#include "base/printabletext.h"

QString OneLineDelegate::displayText(const QVariant &value, const QLocale &locale) const
{
    return printableText(QStyledItemDelegate::displayText(value, locale));
}
