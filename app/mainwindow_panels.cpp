// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

void MainWindow::createTextureViewer() {}
void MainWindow::updateDirectoryInfo() {}
void MainWindow::updateTextureInfo() {}
void MainWindow::applyTextureChanges() {}
void MainWindow::applyDirectoryChanges() {}
void MainWindow::saveDirectoryInfo() {}
void MainWindow::saveTextureInfo() {}
