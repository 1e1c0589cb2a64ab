// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

void MainWindow::loadFile(const QString &) {}
bool MainWindow::saveFile(const QString &) { return false; }
