// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "app/messagebox.h"
#include "app/waitcursor.h"
#include "base/debuglog.h"
#include "model/byteorder.h"
#include "persist/filelock.h"
#include "persist/imagefile.h"
#include "persist/savefile.h"
#include "transfer/blockfiles.h"

#include <QApplication>
#include <QFileInfo>
#include <QProgressDialog>
#include <QScopedValueRollback>
#include <QStatusBar>
#include <QTabWidget>
#include <QUuid>

namespace
{
constexpr const char *loadFileSignature = "void MainWindow::loadFile(const QString&)";

void logByteOrder(ByteOrder order)
{
    switch (order) {
    case ByteOrder::BigEndian: QUILLARY_DEBUG_AS(loadFileSignature) << "This is a z64 ROM."; break;
    case ByteOrder::ByteSwapped: QUILLARY_DEBUG_AS(loadFileSignature) << "This is a v64 ROM."; break;
    case ByteOrder::LittleEndian: QUILLARY_DEBUG_AS(loadFileSignature) << "This is a n64 ROM."; break;
    case ByteOrder::Unknown: QUILLARY_DEBUG_AS(loadFileSignature) << "This is not a ROM."; break;
    }
}

/// The folder of a file as import and export keep it: with a "/" at its end.
QString folderOf(const QString &fileName)
{
    const QString folder = QFileInfo(fileName).absolutePath();
    return folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
}

QString pathKey()
{
    return QStringLiteral("romPath");
}

/// The setting that names the running program which stored "romPath" last.
QString ownerKey()
{
    return QStringLiteral("romPathOwner");
}

QString thisProgram()
{
    static const QString name = QUuid::createUuid().toString(QUuid::WithoutBraces);
    return name;
}
}

void MainWindow::storeImagePath(const QString &fileName)
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    for (QWidget *widget : widgets) { // All windows of a program show the one currentROM.
        if (auto *window = qobject_cast<MainWindow *>(widget))
            window->m_imagePath = fileName;
    }
    m_imagePath = fileName;
    m_settings.setValue(pathKey(), fileName);
    m_settings.setValue(ownerKey(), thisProgram());
}

void MainWindow::storeImagePathAgain()
{
    if (currentROM.loaded && !m_imagePath.isEmpty())
        storeImagePath(m_imagePath);
}

void MainWindow::takeBackImagePath()
{
    m_settings.sync();
    if (m_settings.value(ownerKey()).toString() != thisProgram())
        storeImagePathAgain();
}

void MainWindow::loadFile(const QString &fileName)
{
    if (isBusy())
        return;
    // Written before anything else, so that the loading below finds nothing unsaved to ask about.
    if (currentROM.loaded)
        saveFileListOfOpenImage();

    QByteArray image;
    QString error;
    if (!readWholeFile(fileName, &image, &error)) {
        showBox(this, QMessageBox::Warning, tr("Application"), tr("Cannot read file %1:\n%2.").arg(fileName, error));
        return;
    }
    // Still unsaved means that the writing failed: this asks while the table and its profile belong together.
    if (currentROM.loaded && !mayReplaceFileTable())
        return;

    const bool hadDialogPath = m_settings.contains(QStringLiteral("fileDialogPath"));
    storeImagePath(fileName);
    if (!hadDialogPath)
        m_settings.setValue(QStringLiteral("fileDialogPath"), folderOf(fileName));

    const WaitCursor waitCursor;
    const QScopedValueRollback<bool> loading(m_loadsImage, true);
    currentROM.baseName = QFileInfo(fileName).completeBaseName();
    currentROM.loaded = true;
    currentROM.data = std::move(image);
    // A file unpacked from a block has no header with an identifier: its profiles go by its name.
    const bool isBlock = parsedBlockFileName(QFileInfo(fileName).fileName()).has_value();
    const bool identified = normaliseImage(hadDialogPath && !isBlock);
    m_isTableOfOtherImage = true;
    currentROM.romID = identified ? cartridgeIdentifier(currentROM.data) : currentROM.baseName;

    for (int i = 0; i < m_tabWidget->count(); ++i)
        m_tabWidget->setTabEnabled(i, true);
    readProfiles();
    loadProfile();
    setCurrentFile(fileName);
    updateActions();
    statusBar()->showMessage(tr("File loaded"), 2000);
}

bool MainWindow::normaliseImage(bool unknownCounts)
{
    QByteArray *image = &currentROM.data;
    if (!hasDetectableByteOrder(image->size()))
        return false;
    const ByteOrder order = byteOrderOf(*image);
    logByteOrder(order);
    if (order == ByteOrder::Unknown)
        return unknownCounts;
    if (order == ByteOrder::BigEndian)
        return true;

    const BusyScope busy(this);
    const QString label = order == ByteOrder::ByteSwapped ? tr("Converting ROM from Byteswapped Big Endian to Big Endian.")
                                                          : tr("Converting ROM from Little Endian to Big Endian.");
    const std::unique_ptr<QProgressDialog> progress(createProgressDialog(label, QString(), image->size()));
    convertByteOrder(image, order, [&progress](int bytes) { progress->setValue(bytes); });
    progress->close();
    return true;
}

bool MainWindow::saveFile(const QString &fileName)
{
    if (isBusy())
        return false;
    // With nothing loaded an empty file is written, but never over a file that has contents.
    if (!currentROM.loaded && currentROM.data.isEmpty() && QFileInfo(fileName).size() > 0)
        return false;
    qDebug() << QString::number(currentROM.data.size());

    QString error;
    const auto write = [&] {
        const WaitCursor waitCursor;
        FileLock lock;
        return lock.lock(fileName, &error) && saveWhole(fileName, currentROM.data, &error);
    };
    if (!write()) {
        showBox(this, QMessageBox::Warning, tr("Application"), tr("Cannot write file %1:\n%2.").arg(fileName, error));
        return false;
    }
    setCurrentFile(fileName);
    statusBar()->showMessage(tr("File saved"), 2000);
    storeImagePath(fileName);
    return true;
}
