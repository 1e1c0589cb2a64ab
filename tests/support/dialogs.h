// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <functional>

/// Waits, while the code under test runs a modal dialog of type Dialog, until that dialog is up, and hands it to a handler once.
/// The handler must make the dialog end. answered() tells afterwards whether the dialog came at all: check it in every test.
template<typename Dialog> class DialogAnswer : public QObject
{
public:
    explicit DialogAnswer(std::function<void(Dialog *)> handler) : m_handler(std::move(handler))
    {
        m_timer.setInterval(1);
        connect(&m_timer, &QTimer::timeout, this, [this] { look(); });
        m_timer.start();
    }

    bool answered() const { return m_answered; }

private:
    void look()
    {
        auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible())
            return;
        m_timer.stop();
        m_answered = true;
        m_handler(dialog);
    }

    QTimer m_timer;
    std::function<void(Dialog *)> m_handler;
    bool m_answered = false;
};

/// Answers the next message box by the button whose text, without "&", is \a buttonText; an empty text closes it as Escape does.
/// Keeps what the box said.
class BoxAnswer
{
public:
    explicit BoxAnswer(const QString &buttonText)
        : m_answer([this, buttonText](QMessageBox *box) { answer(box, buttonText); }) { }

    bool answered() const { return m_answer.answered(); }

    QString title;
    QString text;
    QString informativeText;
    QString detailedText;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QStringList buttons; ///< Texts without "&", in the order the box lists them.

private:
    void answer(QMessageBox *box, const QString &buttonText)
    {
        title = box->windowTitle();
        text = box->text();
        informativeText = box->informativeText();
        detailedText = box->detailedText();
        icon = box->icon();
        QAbstractButton *wanted = nullptr;
        const QList<QAbstractButton *> all = box->buttons();
        for (QAbstractButton *button : all) {
            const QString plain = button->text().remove(QLatin1Char('&'));
            buttons << plain;
            if (plain == buttonText)
                wanted = button;
        }
        if (wanted) {
            QTest::mouseClick(wanted, Qt::LeftButton);
        } else {
            if (!buttonText.isEmpty())
                QTest::qFail(qPrintable(QStringLiteral("the box has no button ") + buttonText), __FILE__, __LINE__);
            box->done(QDialog::Rejected);
        }
    }

    DialogAnswer<QMessageBox> m_answer;
};

/// Answers the next file dialog by choosing \a path; an empty path cancels it. Keeps what the dialog offered.
class FileDialogAnswer
{
public:
    explicit FileDialogAnswer(const QString &path) : m_answer([this, path](QFileDialog *dialog) { answer(dialog, path); }) { }

    bool answered() const { return m_answer.answered(); }

    QString title;
    QString directory; ///< Absolute path of the folder it started in.
    QString typedName; ///< What stood in its name field.
    QStringList filters;
    QFileDialog::FileMode fileMode = QFileDialog::AnyFile;
    QFileDialog::AcceptMode acceptMode = QFileDialog::AcceptOpen;
    QFileDialog::Options options;

private:
    void answer(QFileDialog *dialog, const QString &path)
    {
        title = dialog->windowTitle();
        directory = dialog->directory().absolutePath();
        filters = dialog->nameFilters();
        fileMode = dialog->fileMode();
        acceptMode = dialog->acceptMode();
        options = dialog->options();
        auto *nameField = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
        typedName = nameField ? nameField->text() : QString();
        if (path.isEmpty()) {
            dialog->reject();
            return;
        }
        if (nameField)
            nameField->setText(path);
        // Through the object, so that the dialog's own accept() runs with its checks.
        QMetaObject::invokeMethod(dialog, "accept");
    }

    DialogAnswer<QFileDialog> m_answer;
};
