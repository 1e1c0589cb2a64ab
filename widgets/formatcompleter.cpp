// SPDX-License-Identifier: MIT
#include "widgets/formatcompleter.h"

#include "model/textureformat.h"

#include <QFocusEvent>
#include <QHelpEvent>
#include <QLineEdit>
#include <QStandardItemModel>
#include <QToolTip>

namespace
{
constexpr int typedRole = Qt::UserRole; // What the user may type to find a row.

QStandardItemModel *createModel(QObject *parent)
{
    auto *model = new QStandardItemModel(parent);
    const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    for (const textureFormat &format : formats) {
        auto *row = new QStandardItem(format.name);
        row->setToolTip(textureFormats::describe(format));
        row->setData(QString(format.name + QLatin1Char('\n') + textureFormats::aliasOf(format)), typedRole);
        model->appendRow(row);
    }
    return model;
}
}

FormatCompleter::FormatCompleter(QLineEdit *field) : QCompleter(field), m_field(field)
{
    setModel(createModel(this));
    setCompletionRole(typedRole);
    setCaseSensitivity(Qt::CaseInsensitive);
    setFilterMode(Qt::MatchContains);
    setMaxVisibleItems(model()->rowCount());
    field->setCompleter(this);
    field->installEventFilter(this);
    // The line edit takes the text of a row without the signal of an edit.
    connect(this, QOverload<const QString &>::of(&QCompleter::highlighted), this, &FormatCompleter::enter);
    connect(this, QOverload<const QString &>::of(&QCompleter::activated), this, &FormatCompleter::enter);
    // Connected before whatever saves the text at Enter.
    connect(field, &QLineEdit::returnPressed, this, &FormatCompleter::replaceAlias);
}

QString FormatCompleter::pathFromIndex(const QModelIndex &index) const
{
    return index.data(Qt::DisplayRole).toString();
}

bool FormatCompleter::eventFilter(QObject *watched, QEvent *event)
{
    // The field's own signal is left out when the list is open.
    if (watched == m_field && event->type() == QEvent::FocusOut
        && static_cast<QFocusEvent *>(event)->reason() != Qt::PopupFocusReason)
        replaceAlias();
    const bool isHelp = watched == m_field && event->type() == QEvent::ToolTip;
    if (!isHelp || m_field->toolTip().isEmpty() || textureFormats::find(m_field->text()))
        return QCompleter::eventFilter(watched, event);
    const QString names = QStringList(textureFormats::getAsMap().keys()).join(QStringLiteral(", "));
    QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                       m_field->toolTip() + QLatin1Char('\n') + tr("The formats are: %1").arg(names), m_field);
    return true;
}

void FormatCompleter::enter(const QString &name)
{
    if (m_field->isReadOnly() || name == m_field->text())
        return;
    m_field->selectAll();
    m_field->insert(name);
}

void FormatCompleter::replaceAlias()
{
    const textureFormat *format = textureFormats::findByNameOrAlias(m_field->text());
    if (format)
        enter(format->name);
}
