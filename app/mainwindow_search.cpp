// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

bool MainWindow::findTexture(const QString, QProgressDialog *, QMap<QString, textureFormat>, const bool, const int) { return false; }
QString MainWindow::removeFileExtension(QString path) { return path; }
bool MainWindow::runFindTexture(QStringList, QMap<QString, textureFormat>, const bool, const int) { return false; }
void MainWindow::loadTexture(const QString &, bool) {}
