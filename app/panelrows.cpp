// SPDX-License-Identifier: MIT
#include "app/panelrows.h"

#include "app/mainwindow.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QWheelEvent>

#include <algorithm>

namespace
{
constexpr int charactersToShow = 22; // of a field, at least

/// A spin box that the wheel turns only while it has the focus: elsewhere the wheel scrolls the column that it stands in.
class PixelField : public QSpinBox
{
public:
    explicit PixelField(QWidget *parent) : QSpinBox(parent) { setFocusPolicy(Qt::StrongFocus); }

protected:
    void wheelEvent(QWheelEvent *event) override
    {
        if (hasFocus())
            QSpinBox::wheelEvent(event);
        else
            event->ignore();
    }
};
}

PanelRows::PanelRows(QGroupBox *box) : m_box(box), m_grid(new QGridLayout(box))
{
    m_grid->setColumnStretch(0, 1);
    m_grid->setColumnStretch(1, 3);
}

QLabel *PanelRows::add(const QString &caption, QWidget *field, const QString &name)
{
    auto *label = new QLabel(caption, m_box);
    label->setBuddy(field);
    field->setObjectName(name);
    QString accessibleName = caption;
    accessibleName.chop(1); // the colon
    field->setAccessibleName(m_box->title() + QStringLiteral(": ") + accessibleName);
    m_grid->addWidget(label, m_row, 0);
    m_grid->addWidget(field, m_row, 1);
    keepWidth(0, label->sizeHint().width());
    ++m_row;
    return label;
}

QLineEdit *PanelRows::addText(const QString &caption, const QString &name, QLabel **label)
{
    auto *field = new QLineEdit(m_box);
    field->setReadOnly(true);
    field->setMinimumWidth(field->fontMetrics().averageCharWidth() * charactersToShow);
    QLabel *added = add(caption, field, name);
    if (label)
        *label = added;
    return field;
}

QSpinBox *PanelRows::addPixels(const QString &caption, const QString &name, QLabel **label)
{
    auto *field = new PixelField(m_box);
    field->setRange(1, 100000);
    field->setLocale(QLocale::c()); // Digits as in the table, whatever the user's locale writes numbers in.
    // The panel frames its line edits; the one inside a spin box has the box's own frame.
    field->setStyleSheet(QStringLiteral("QLineEdit {qproperty-frame: false}"));
    *label = add(caption, field, name);
    return field;
}

void PanelRows::addWhole(QWidget *widget, const QString &name)
{
    widget->setObjectName(name);
    m_grid->addWidget(widget, m_row, 0, 1, 2);
    keepWidth(1, widget->sizeHint().width() - m_grid->columnMinimumWidth(0) - m_grid->horizontalSpacing());
    ++m_row;
}

QLabel *PanelRows::addUnsavedLabel(const QString &name)
{
    auto *label = new QLabel(MainWindow::tr("There are unsaved changes."), m_box);
    label->setAlignment(Qt::AlignHCenter);
    QSizePolicy policy = label->sizePolicy();
    policy.setRetainSizeWhenHidden(true); // The button below does not jump.
    label->setSizePolicy(policy);
    label->hide();
    addWhole(label, name);
    return label;
}

QPushButton *PanelRows::addSaveButton(const QString &name)
{
    auto *button = new QPushButton(MainWindow::tr("Save changes"), m_box);
    button->setEnabled(false);
    addWhole(button, name);
    return button;
}

void PanelRows::keepWidth(int column, int width)
{
    m_grid->setColumnMinimumWidth(column, std::max(m_grid->columnMinimumWidth(column), width));
}

/// Shows a path from its beginning, and whole in the tool tip, where a name that looks like rich text stays a name.
void showPath(QLineEdit *field, const QString &path)
{
    field->setText(path);
    field->setCursorPosition(0);
    field->setToolTip(QStringLiteral("<span style=\"white-space:pre\">%1</span>").arg(path.toHtmlEscaped()));
}

void clickOnEnter(QPushButton *button, QLineEdit *field)
{
    QObject::connect(field, &QLineEdit::returnPressed, button, &QPushButton::click);
}

void setReadOnly(QWidget *panel, const QList<QLineEdit *> &fields, bool readOnly)
{
    bool changed = false;
    for (QLineEdit *field : fields) {
        changed = changed || field->isReadOnly() != readOnly;
        field->setReadOnly(readOnly);
    }
    if (changed)
        panel->setStyleSheet(panel->styleSheet());
}
