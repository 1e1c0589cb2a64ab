// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QStringList>
#include <QTimer>

/// Sees to every message box that comes up while it lives.
class BoxHandler : public QObject
{
public:
    BoxHandler()
    {
        m_timer.setInterval(1);
        connect(&m_timer, &QTimer::timeout, this, [this] { look(); });
        m_timer.start();
    }

protected:
    virtual void handle(QMessageBox *box) = 0;

private:
    void look()
    {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (box && box->isVisible())
            handle(box);
    }

    QTimer m_timer;
};

/// Dismisses boxes as Escape does, and keeps "title: text" of each.
class BoxRecorder : public BoxHandler
{
public:
    QStringList boxes;

protected:
    void handle(QMessageBox *box) override
    {
        boxes << box->windowTitle() + QStringLiteral(": ") + box->text();
        box->done(QDialog::Rejected);
    }
};

/// Presses one button in each of several boxes, named by its text without "&", and keeps the boxes' texts. Dismisses a box that
/// lacks the button, and those that come after the last.
class BoxButtons : public BoxHandler
{
public:
    explicit BoxButtons(const QStringList &wanted) : m_wanted(wanted) { }

    QStringList texts;

protected:
    void handle(QMessageBox *box) override
    {
        const QString wanted = m_wanted.value(texts.size());
        texts << box->text();
        const QList<QAbstractButton *> buttons = box->buttons();
        for (QAbstractButton *button : buttons) {
            if (button->text().remove(QLatin1Char('&')) == wanted)
                return button->click();
        }
        box->done(QDialog::Rejected);
    }

private:
    QStringList m_wanted;
};
