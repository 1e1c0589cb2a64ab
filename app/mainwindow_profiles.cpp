// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

void MainWindow::createProfilePanel() {}
void MainWindow::readProfiles() {}
void MainWindow::readProfileSettings() {}
void MainWindow::saveProfileSettings() {}
void MainWindow::loadProfile() {}
void MainWindow::saveProfile() {}
void MainWindow::newProfile() {}
void MainWindow::deleteProfile() {}
void MainWindow::setAutosaveProfile(int) {}
void MainWindow::setAutoloadProfile(QString) {}
QString MainWindow::cartridgeFolder() const { return QString(); }
QString MainWindow::fileListPath() const { return QString(); }
void MainWindow::showUnsavedFileListNotice() {}
bool MainWindow::saveFileListOfOpenImage() { return true; }
bool MainWindow::mayReplaceFileTable() { return true; }
