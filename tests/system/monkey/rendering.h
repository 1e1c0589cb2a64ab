// SPDX-License-Identifier: MIT
#pragma once

#include "model/rom.h"

#include <QImage>
#include <QStringList>

/// The expected contents of the tree rows, computed from the table and the image.

QString hexCell(qint32 value);
/// The sum of the addresses up to the root, by hand.
qint32 addressInImage(const fileTreeDirectory *folder);
QStringList cellsOfFolder(const fileTreeDirectory &folder);
QStringList cellsOfTexture(const fileTreeFile &texture);
/// Whether the texture's cell in \a column depends on the bytes of the image.
bool dependsOnBytes(const fileTreeFile &texture, int column);
/// The icon of a texture's row: the decoded picture in a square of 16 pixels, or a plain sheet.
QImage iconOfTexture(const fileTreeFile &texture);
/// One of the program's icons at 16 pixels.
QImage builtInIcon(const QString &name);
