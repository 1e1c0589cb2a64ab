// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

void MainWindow::createTreeView() {}
void MainWindow::addDirectoryToTree(fileTreeDirectory *) {}
void MainWindow::addTextureToTree(fileTreeFile *) {}
void MainWindow::updateDirectoryInTree(fileTreeDirectory *) {}
void MainWindow::updateTextureInTree(fileTreeFile *) {}
void MainWindow::updateChildrenInTree(fileTreeDirectory *) {}
void MainWindow::selectFileTableItem() {}
QString MainWindow::selectedItemType() const { return QString(); }
void MainWindow::updateSelectedInfo() {}
void MainWindow::showContextMenu(const QPoint &) {}
void MainWindow::sortTreeView(int) {}
void MainWindow::deleteItem() {}
void MainWindow::addFile() {}
void MainWindow::addTexture() {}
void MainWindow::openTextureTab() {}
void MainWindow::expandTreeDirectory(QTreeWidgetItem *) {}
