// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Whether \a character controls the display of other text instead of showing itself: control characters, separators of lines and
/// paragraphs, and those that change the direction of writing.
bool isControlOrBidi(QChar character);

/// \a text, which may come from anywhere, for one line that is read by the user: each character that isControlOrBidi() is
/// replaced by the replacement character.
QString printableText(QString text);
