// SPDX-License-Identifier: MIT
#pragma once

#include "model/texel.h"

#include <QObject>

#include <functional>

class QLineEdit;

/// Lets keys step through the image in a line edit that holds an address: Up and Down by a texel, Page Up and Page Down by a row,
/// with Ctrl by a texture. Up is more, as in a spin box. The field changes as if the user had typed the new address.
class AddressStepper : public QObject
{
    Q_OBJECT

public:
    /// \a steps is asked at each key how long the steps are. \a field owns the stepper.
    AddressStepper(QLineEdit *field, std::function<TexelSteps()> steps);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void stepBy(qint64 bytes);

    QLineEdit *m_field;
    std::function<TexelSteps()> m_steps;
};
