// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

/// A label that can be clicked.
class ClickableLabel : public QLabel
{
    Q_OBJECT

public:
    using QLabel::QLabel;

signals:
    void clicked(); ///< A mouse button was pressed on the label.

protected:
    void mousePressEvent(QMouseEvent *event) override;
};
