// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

QString MainWindow::removeFilePath(const QString &path) { return path; }
void MainWindow::parseXML(const QString &) {}
void MainWindow::createXMLFileInner(QXmlStreamWriter *, fileTreeDirectory *) {}
void MainWindow::createXMLFile(const QString &) {}
void MainWindow::clearFileTable() {}
bool MainWindow::writeFileListTo(const QString &) { return true; }
