// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

void MainWindow::renderTexture() {}
void MainWindow::togglePreviewBackground() {}
