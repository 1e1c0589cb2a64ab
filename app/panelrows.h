// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

class QGridLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QWidget;

/// Builds the rows of a group box from top to bottom: captions in the first column, fields in the second.
class PanelRows
{
public:
    explicit PanelRows(QGroupBox *box);
    PanelRows(const PanelRows &) = delete;
    PanelRows &operator=(const PanelRows &) = delete;

    /// A row with \a field, which gets the object name \a name. Returns the caption.
    QLabel *add(const QString &caption, QWidget *field, const QString &name);
    /// A row with a read-only line edit. \a label, if not null, receives the caption.
    QLineEdit *addText(const QString &caption, const QString &name, QLabel **label = nullptr);
    /// A row with a spin box for a number of pixels. The wheel changes it only while it has the focus.
    QSpinBox *addPixels(const QString &caption, const QString &name, QLabel **label);
    /// A row of \a widget alone, below those with captions.
    void addWhole(QWidget *widget, const QString &name);
    /// A row with the hidden label "There are unsaved changes.", which keeps its room while hidden.
    QLabel *addUnsavedLabel(const QString &name);
    /// A row with the disabled button "Save changes".
    QPushButton *addSaveButton(const QString &name);

private:
    /// Room for a text, also while its row is hidden: the panel does not become wider later.
    void keepWidth(int column, int width);

    QGroupBox *m_box;
    QGridLayout *m_grid;
    int m_row = 0;
};

/// Shows a path from its beginning, and whole in the tool tip, where a name that looks like rich text stays a name.
void showPath(QLineEdit *field, const QString &path);

/// Lets Enter in \a field do what a click on \a button does.
void clickOnEnter(QPushButton *button, QLineEdit *field);

/// Makes \a fields read-only or not. Their look depends on that; Qt applies it when the style sheet of \a panel, which holds
/// them, is set again. Styling the whole panel is slow, so it is left out when nothing changes.
void setReadOnly(QWidget *panel, const QList<QLineEdit *> &fields, bool readOnly);
