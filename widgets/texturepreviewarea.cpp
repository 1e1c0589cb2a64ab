// SPDX-License-Identifier: MIT
#include "widgets/texturepreviewarea.h"

void TexturePreviewArea::dragEnterEvent(QDragEnterEvent *) {}
void TexturePreviewArea::dropEvent(QDropEvent *) {}
