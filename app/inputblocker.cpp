// SPDX-License-Identifier: MIT
#include "app/inputblocker.h"

#include <QCoreApplication>
#include <QDialog>
#include <QEvent>

namespace
{
bool isInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Shortcut:
    case QEvent::InputMethod:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
    case QEvent::NativeGesture:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
    case QEvent::Close: return true;
    default: return false;
    }
}
}

InputBlocker::InputBlocker(QWidget *window) : m_window(window)
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool InputBlocker::isPartOfWindow(const QObject *watched) const
{
    for (const QObject *object = watched; object; object = object->parent()) {
        if (object == m_window)
            return true;
        if (qobject_cast<const QDialog *>(object))
            return false;
    }
    return false;
}

bool InputBlocker::eventFilter(QObject *watched, QEvent *event)
{
    if (!isInput(event->type()) || !isPartOfWindow(watched))
        return QObject::eventFilter(watched, event);
    event->ignore();
    return true;
}
