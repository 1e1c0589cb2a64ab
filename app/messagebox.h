// SPDX-License-Identifier: MIT
#pragma once

#include <QMessageBox>

/// Makes \a box show its texts as they are, also where a name looks like rich text, and lets mouse and keyboard select them.
void showTextAsItIs(QMessageBox *box);

/// A modal box that shows \a text as it is. Returns the button that ended it; \a initial is the one that Enter presses, and
/// Escape presses Cancel or the only button.
QMessageBox::StandardButton showBox(QWidget *parent, QMessageBox::Icon icon, const QString &title, const QString &text,
                                    QMessageBox::StandardButtons buttons = QMessageBox::Ok,
                                    QMessageBox::StandardButton initial = QMessageBox::Ok);
