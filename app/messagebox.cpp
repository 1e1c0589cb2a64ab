// SPDX-License-Identifier: MIT
#include "app/messagebox.h"

#include "base/printabletext.h"

#include <QPushButton>

namespace
{
/// \a text, in which names of others may stand, as printableText(), but with its own lines.
QString withoutSteering(const QString &text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString &line : lines)
        line = printableText(line);
    return lines.join(QLatin1Char('\n'));
}
}

void showTextAsItIs(QMessageBox *box)
{
    box->setTextFormat(Qt::PlainText);
    box->setText(withoutSteering(box->text()));
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
