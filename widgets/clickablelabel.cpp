// SPDX-License-Identifier: MIT
#include "widgets/clickablelabel.h"

void ClickableLabel::mousePressEvent(QMouseEvent *)
{
    emit clicked();
}
