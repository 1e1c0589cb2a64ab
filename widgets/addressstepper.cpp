// SPDX-License-Identifier: MIT
#include "widgets/addressstepper.h"

#include "base/hexnumber.h"

#include <QKeyEvent>
#include <QLineEdit>

#include <limits>

namespace
{
/// The bytes that the keys of \a event step by, 0 when they are none of these keys.
qint64 stepOf(const QKeyEvent &event, const TexelSteps &steps)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const bool isCtrl = modifiers == Qt::ControlModifier;
    if (modifiers != Qt::NoModifier && !isCtrl)
        return 0;
    switch (event.key()) {
    case Qt::Key_Up: return isCtrl ? 0 : steps.texel;
    case Qt::Key_Down: return isCtrl ? 0 : -steps.texel;
    case Qt::Key_PageUp: return isCtrl ? steps.texture : steps.row;
    case Qt::Key_PageDown: return isCtrl ? -steps.texture : -steps.row;
    default: return 0;
    }
}
}

AddressStepper::AddressStepper(QLineEdit *field, std::function<TexelSteps()> steps)
    : QObject(field), m_field(field), m_steps(std::move(steps))
{
    field->installEventFilter(this);
}

bool AddressStepper::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_field || event->type() != QEvent::KeyPress || m_field->isReadOnly())
        return false;
    const qint64 bytes = stepOf(*static_cast<QKeyEvent *>(event), m_steps());
    if (bytes == 0)
        return false;
    stepBy(bytes);
    return true;
}

/// A step that would lead from a positive address to a negative one, or out of 32 bits, is not taken.
void AddressStepper::stepBy(qint64 bytes)
{
    const qint64 address = parseTypedNumber(m_field->text());
    const qint64 next = address + bytes;
    if ((address >= 0 && next < 0) || next < std::numeric_limits<qint32>::min() || next > std::numeric_limits<qint32>::max())
        return;
    m_field->selectAll();
    m_field->insert(hexNumber(qint32(next))); // Unlike setText(), this signals an edit, and can be undone.
}
