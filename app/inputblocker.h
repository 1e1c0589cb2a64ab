// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

class QWidget;

/// Keeps the user's input away from a window and all that lies in it, for as long as it lives: keys, clicks, the wheel,
/// shortcuts, context menus, drops, and the request to close. Dialogs of the window are windows of their own and go on working.
/// A progress dialog handles events before it is even shown, when it does not yet block anything itself.
class InputBlocker : public QObject
{
    Q_OBJECT

public:
    /// \a window must outlive the blocker; not owned.
    explicit InputBlocker(QWidget *window);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool isPartOfWindow(const QObject *watched) const;

    QWidget *m_window;
};
