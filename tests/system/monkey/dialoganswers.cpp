// SPDX-License-Identifier: MIT
#include "system/monkey/dialoganswers.h"

#include "search/findtexturedialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

namespace
{
constexpr int mostDialogsOfAStep = 40;

QString plainText(const QAbstractButton *button)
{
    return button->text().remove(QLatin1Char('&'));
}
}

DialogAnswers::DialogAnswers(WalkRandom *random, QStringList *trail) : m_random(random), m_trail(trail)
{
    m_timer.setInterval(0);
    connect(&m_timer, &QTimer::timeout, this, [this] { look(); });
    m_timer.start();
    qApp->installEventFilter(this);
}

void DialogAnswers::prepare(const Choices &choices)
{
    m_choices = choices;
    m_count = 0;
}

bool DialogAnswers::eventFilter(QObject *watched, QEvent *event)
{
    auto *progress = event->type() == QEvent::Show ? qobject_cast<QProgressDialog *>(watched) : nullptr;
    if (progress && m_choices.cancelsProgress) {
        note(QStringLiteral("progress: cancel"));
        QMetaObject::invokeMethod(progress, "cancel", Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}

void DialogAnswers::look()
{
    QWidget *widget = QApplication::activePopupWidget();
    if (!widget)
        widget = QApplication::activeModalWidget();
    if (!widget || !widget->isVisible() || m_isAnswering || qobject_cast<QProgressDialog *>(widget))
        return;
    // Not from here: a timer does not fire again inside its own slot, where the answer may bring up the next dialog.
    m_isAnswering = true;
    QPointer<QWidget> waiting = widget;
    QMetaObject::invokeMethod(
        this,
        [this, waiting] {
            m_isAnswering = false;
            if (waiting && waiting->isVisible())
                answer(waiting);
        },
        Qt::QueuedConnection);
}

void DialogAnswers::answer(QWidget *widget)
{
    if (++m_count > mostDialogsOfAStep)
        qFatal("there is no end of dialogs; the last is %s \"%s\"", widget->metaObject()->className(),
               qPrintable(widget->windowTitle()));
    if (auto *box = qobject_cast<QMessageBox *>(widget))
        answerBox(box);
    else if (auto *fileDialog = qobject_cast<QFileDialog *>(widget))
        answerFileDialog(fileDialog);
    else if (auto *input = qobject_cast<QInputDialog *>(widget))
        answerInput(input);
    else if (auto *find = qobject_cast<findTextureDialog *>(widget))
        answerFind(find);
    else if (auto *menu = qobject_cast<QMenu *>(widget))
        answerMenu(menu);
    else
        qFatal("nobody knows how to answer a %s", widget->metaObject()->className());
}

void DialogAnswers::answerBox(QMessageBox *box)
{
    const QList<QAbstractButton *> buttons = box->buttons();
    QAbstractButton *chosen = nullptr;
    for (QAbstractButton *button : buttons) {
        if (!m_choices.button.isEmpty() && plainText(button) == m_choices.button)
            chosen = button;
    }
    if (!chosen) {
        const int place = m_random->below(buttons.size() + 1);
        chosen = place < buttons.size() ? buttons.at(place) : nullptr;
    }
    note(QStringLiteral("box \"%1: %2\": %3")
             .arg(box->windowTitle(), box->text().left(60).simplified(), chosen ? plainText(chosen) : QStringLiteral("Escape")));
    if (chosen) {
        QTest::mouseClick(chosen, Qt::LeftButton);
        return;
    }
    QTest::keyClick(box, Qt::Key_Escape);
    // A box whose buttons tell it nothing of Escape stays; the window manager's close button is left then.
    if (box->isVisible())
        box->done(QDialog::Rejected);
}

void DialogAnswers::answerFileDialog(QFileDialog *dialog)
{
    // What a dialog did not take the first time it does not take the second time either.
    const bool again = m_lastFileDialog == dialog;
    m_lastFileDialog = dialog;
    QStringList paths = m_choices.paths;
    if (qobject_cast<findTextureDialog *>(dialog->parentWidget()))
        paths = dialog->fileMode() == QFileDialog::Directory ? m_choices.folders : m_choices.pictures;
    if (again || paths.isEmpty() || m_random->chance(15)) {
        note(QStringLiteral("file dialog: cancel"));
        dialog->reject();
        return;
    }
    const QString path = m_random->oneOf(paths);
    note(QStringLiteral("file dialog: ") + path.section(QLatin1Char('/'), -1));
    dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(path);
    QMetaObject::invokeMethod(dialog, "accept");
}

void DialogAnswers::answerInput(QInputDialog *dialog)
{
    if (m_choices.names.isEmpty() || m_random->chance(20)) {
        note(QStringLiteral("input: cancel"));
        dialog->reject();
        return;
    }
    const QString name = m_random->oneOf(m_choices.names);
    note(QStringLiteral("input: ") + name);
    auto *field = dialog->findChild<QLineEdit *>();
    field->selectAll();
    QTest::keyClicks(field, name);
    if (name.isEmpty())
        QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClick(dialog, Qt::Key_Return);
}

void DialogAnswers::answerFind(findTextureDialog *dialog)
{
    const auto button = [dialog](const char *name) { return dialog->findChild<QPushButton *>(QLatin1String(name)); };
    if (m_random->chance(15)) {
        note(QStringLiteral("find dialog: Escape"));
        QTest::keyClick(dialog, Qt::Key_Escape);
        return;
    }
    QTest::mouseClick(button(m_random->chance(75) ? "selectImageButton" : "selectFolderButton"), Qt::LeftButton);
    const QList<QCheckBox *> boxes = dialog->findChildren<QCheckBox *>();
    for (QCheckBox *box : boxes) {
        if (m_random->chance(25))
            QTest::keyClick(box, Qt::Key_Space);
    }
    const QList<QRadioButton *> modes = dialog->findChildren<QRadioButton *>();
    QRadioButton *mode = m_random->oneOf(modes);
    QTest::keyClick(mode, Qt::Key_Space);
    QPushButton *search = button("searchButton");
    note(QStringLiteral("find dialog: %1, %2").arg(mode->objectName(), search->isEnabled() ? "search" : "close"));
    if (search->isEnabled())
        QTest::mouseClick(search, Qt::LeftButton);
    else
        dialog->reject();
}

void DialogAnswers::answerMenu(QMenu *menu)
{
    QList<QAction *> entries;
    const QList<QAction *> actions = menu->actions();
    for (QAction *action : actions) {
        if (!action->isSeparator() && action->isEnabled())
            entries << action;
    }
    if (entries.isEmpty() || m_random->chance(20)) {
        note(QStringLiteral("menu: Escape"));
        QTest::keyClick(menu, Qt::Key_Escape);
        return;
    }
    QAction *entry = m_random->oneOf(entries);
    note(QStringLiteral("menu: ") + entry->text());
    menu->setActiveAction(entry);
    QTest::keyClick(menu, Qt::Key_Return);
}
