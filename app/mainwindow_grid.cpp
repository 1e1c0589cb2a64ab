// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

void MainWindow::createGridPanel() {}
void MainWindow::renderGrid() {}
