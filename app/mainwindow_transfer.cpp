// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

bool MainWindow::extractTexture(fileTreeFile *, QString) { return false; }
void MainWindow::saveFolder(QString, fileTreeDirectory *) {}
int MainWindow::countFiles(const QString &) { return 0; }
void MainWindow::iterateFolder(QString, fileTreeDirectory *, QProgressDialog *, QString *) {}
void MainWindow::importTexture(QImage, int, QString, QByteArray) {}
void MainWindow::insertTexture(QString, fileTreeFile *) {}
void MainWindow::saveTexture() {}
void MainWindow::replaceTexture() {}
void MainWindow::importFolder() {}
void MainWindow::importTexturePack() {}
void MainWindow::parseTexturePack(QString) {}
