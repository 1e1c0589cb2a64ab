// SPDX-License-Identifier: MIT
#include "app/messagebox.h"

#include <QPushButton>

void showTextAsItIs(QMessageBox *box)
{
    box->setTextFormat(Qt::PlainText);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    // A text that can be selected takes the keyboard first otherwise.
    if (QPushButton *initial = box->defaultButton())
        initial->setFocus();
}

QMessageBox::StandardButton showBox(QWidget *parent, QMessageBox::Icon icon, const QString &title, const QString &text,
                                    QMessageBox::StandardButtons buttons, QMessageBox::StandardButton initial)
{
    QMessageBox box(icon, title, text, buttons, parent);
    box.setDefaultButton(initial);
    showTextAsItIs(&box);
    return QMessageBox::StandardButton(box.exec());
}
