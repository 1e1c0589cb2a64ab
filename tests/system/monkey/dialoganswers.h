// SPDX-License-Identifier: MIT
#pragma once

#include "system/monkey/walkrandom.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

class QAbstractButton;
class QFileDialog;
class QInputDialog;
class QMenu;
class QMessageBox;
class QWidget;
class findTextureDialog;

/// Answers every dialog, box and context menu that opens during its lifetime with random choices.
class DialogAnswers : public QObject
{
public:
    DialogAnswers(WalkRandom *random, QStringList *trail);

    /// The choices for the dialogs of the next operation.
    struct Choices
    {
        QStringList paths; ///< For file dialogs.
        QStringList pictures; ///< For the file dialog that the find dialog opens for one picture.
        QStringList folders; ///< The same for a folder.
        QStringList names; ///< For input dialogs.
        QString button; ///< To press in message boxes that have it; empty for any.
        bool cancelsProgress = false;
    };
    void prepare(const Choices &choices);
    /// Number of dialogs answered since prepare().
    int count() const { return m_count; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void look();
    void answer(QWidget *widget);
    void answerBox(QMessageBox *box);
    void answerFileDialog(QFileDialog *dialog);
    void answerInput(QInputDialog *dialog);
    void answerFind(findTextureDialog *dialog);
    void answerMenu(QMenu *menu);
    void note(const QString &text) { m_trail->append(QStringLiteral("  ") + text); }

    WalkRandom *m_random;
    QStringList *m_trail;
    Choices m_choices;
    QTimer m_timer;
    bool m_isAnswering = false;
    int m_count = 0;
    QPointer<QWidget> m_lastFileDialog;
};
