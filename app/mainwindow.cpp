// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

MainWindow::MainWindow() = default;
MainWindow::~MainWindow() = default;
MainWindow::BusyScope::BusyScope(MainWindow *window) : m_window(window) { ++m_window->m_busy; }
MainWindow::BusyScope::~BusyScope() { --m_window->m_busy; }
QAction *MainWindow::createAction(const QString &, const QString &, const QString &, const QString &) { return nullptr; }
QProgressDialog *MainWindow::createProgressDialog(const QString &, const QString &, int) { return nullptr; }
void MainWindow::createActions() {}
void MainWindow::createMenus() {}
void MainWindow::createToolBars() {}
void MainWindow::createStatusBar() {}
void MainWindow::setupGUI() {}
void MainWindow::updateRecentFileActions() {}
void MainWindow::readSettings() {}
void MainWindow::writeSettings() {}
void MainWindow::setCurrentFile(const QString &) {}
bool MainWindow::maybeSave() { return true; }
void MainWindow::open() {}
void MainWindow::openRecentFile() {}
bool MainWindow::save() { return false; }
bool MainWindow::saveAs() { return false; }
void MainWindow::about() {}
void MainWindow::updateActions() {}
void MainWindow::closeEvent(QCloseEvent *) {}
void MainWindow::dragEnterEvent(QDragEnterEvent *) {}
void MainWindow::dragMoveEvent(QDragMoveEvent *) {}
void MainWindow::dropEvent(QDropEvent *) {}
