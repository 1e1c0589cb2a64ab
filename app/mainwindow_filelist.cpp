// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "app/messagebox.h"
#include "app/treerow.h"
#include "base/debuglog.h"
#include "base/hexnumber.h"
#include "persist/filelist.h"

#include <QFileInfo>
#include <QTreeWidget>

namespace
{
/// Makes a row of everything that is read, and tells the debug log where folders begin and end.
class RowMaker : public FileListObserver
{
public:
    explicit RowMaker(MainWindow *window) : m_window(window) { }

    void directoryStarted(fileTreeDirectory *directory) override
    {
        log("Starting dir", directory);
        m_window->addDirectoryToTree(directory);
    }
    void directoryEnded(fileTreeDirectory *directory) override { log("Ending dir", directory); }
    void fileAdded(fileTreeFile *file) override { m_window->addTextureToTree(file); }

private:
    static void log(const char *what, const fileTreeDirectory *directory)
    {
        QUILLARY_DEBUG_AS("void MainWindow::parseXML(const QString &)") << what << QString(directory->name);
    }

    MainWindow *m_window;
};
}

QString MainWindow::removeFilePath(const QString &path)
{
    return QFileInfo(path).fileName();
}

void MainWindow::parseXML(const QString &path)
{
    RowMaker rows(this);
    QString error;
    QString copy;
    m_treeWidget->setUpdatesEnabled(false);
    const FileListFiles::Reading outcome = m_fileLists.read(path, currentROM.data.size(), currentROM.root, &rows, &error, &copy);
    m_treeWidget->setUpdatesEnabled(true);
    if (outcome == FileListFiles::Reading::NotOpened) {
        qDebug().noquote() << path + QLatin1Char(':') << error;
        showBox(this, QMessageBox::Critical, QStringLiteral("parseXML"), tr("Couldn't open %1").arg(path));
        return;
    }
    if (outcome == FileListFiles::Reading::Malformed)
        showBoxWithReason(QStringLiteral("XMLReader::parseXML"), error,
                          copy.isEmpty() ? QString() : tr("The list is kept as it was in %1.").arg(copy));
    sortByCurrentColumn();
}

void MainWindow::showBoxWithReason(const QString &title, const QString &text, const QString &reason)
{
    QMessageBox box(QMessageBox::Critical, title, text, QMessageBox::Ok, this);
    box.setInformativeText(reason);
    showTextAsItIs(&box);
    box.exec();
}

void MainWindow::createXMLFileInner(QXmlStreamWriter *writer, fileTreeDirectory *currentDirectory)
{
    writeFolder(writer, currentDirectory);
}

void MainWindow::createXMLFile(const QString &path)
{
    writeFileListTo(path);
}

bool MainWindow::writeFileListTo(const QString &path)
{
    QString error;
    const FileListFiles::Writing outcome = m_fileLists.write(path, currentROM.root, &error);
    if (outcome == FileListFiles::Writing::Done)
        return true;
    if (outcome == FileListFiles::Writing::NotWritten)
        QUILLARY_DEBUG_AS("void MainWindow::createXMLFile(const QString &)") << "error";
    qDebug().noquote() << path + QLatin1Char(':') << error;
    showUnwritableList(path, error);
    return false;
}

void MainWindow::showUnwritableList(const QString &path, const QString &reason)
{
    if (!m_asksNothing)
        showBoxWithReason(QStringLiteral("createXMLFile"), tr("Couldn't open %1").arg(path), reason);
}

void MainWindow::clearFileTable()
{
    const bool showedSelection = currentROM.lastSelectedFolder || currentROM.lastSelectedTexture;
    fileTreeDirectory *root = currentROM.root;
    root->directories.clear();
    root->files.clear();
    currentROM.selectedType = NothingSelected;
    currentROM.lastSelectedTexture = nullptr;
    currentROM.lastSelectedFolder = nullptr;
    root->size = currentROM.data.size();

    // While rows leave one by one the selection would move on to the next, whose node has left the table already.
    m_treeWidget->selectionModel()->clear();
    m_treeWidget->collapseAll();
    while (m_treeWidget->topLevelItemCount() > 0) {
        const RemovedRow row(m_treeWidget->takeTopLevelItem(0));
        forgetRows(row.get());
    }
    m_treeWidget->clear();
    currentROM.editedFolder->treeItem = nullptr;
    currentROM.editedTexture->treeItem = nullptr;

    addDirectoryToTree(root);
    const QString size = hexNumber(root->size);
    const QStringList cells = {QStringLiteral("Root"), hexNumber(0), size, hexNumber(0), size, size};
    for (int column = 0; column < cells.size(); ++column)
        root->treeItem->setText(column, cells.at(column));
    // The tree signals nothing where none of its rows was selected, as after the import of a texture pack.
    if (showedSelection) {
        enableActions();
        updateSelectedInfo();
    }
}
