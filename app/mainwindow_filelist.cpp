// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "app/messagebox.h"
#include "app/treerow.h"
#include "base/debuglog.h"
#include "base/hexnumber.h"
#include "persist/filelist.h"
#include "persist/imagefile.h"
#include "persist/savefile.h"
#include "persist/xmltext.h"

#include <QFile>
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

/// Keeps a list that could be read only in part beside itself, since the next save replaces it. Returns the copy's path, empty
/// when there is none.
QString keepDamagedCopy(const QString &path)
{
    QString copy = path + QLatin1String(".damaged");
    // Whoever the profile came from may have put a link there, which must not be written through.
    if (QFileInfo(copy).isSymLink())
        QFile::remove(copy);
    QByteArray list;
    QString error;
    if (readWholeFile(path, &list, &error) && saveWhole(copy, list, &error))
        return copy;
    qDebug().noquote() << copy + QLatin1Char(':') << error;
    return QString();
}
}

QString MainWindow::removeFilePath(const QString &path)
{
    return QFileInfo(path).fileName();
}

void MainWindow::parseXML(const QString &path)
{
    QFile file(path);
    if (!openXmlFile(&file)) {
        showBox(this, QMessageBox::Critical, QStringLiteral("parseXML"), tr("Couldn't open %1").arg(path));
        return;
    }
    RowMaker rows(this);
    QString error;
    m_treeWidget->setUpdatesEnabled(false);
    const bool complete = readFileList(&file, currentROM.data.size(), currentROM.root, &rows, &error);
    m_treeWidget->setUpdatesEnabled(true);
    file.close();
    if (!complete) {
        const QString copy = keepDamagedCopy(path);
        QMessageBox box(QMessageBox::Critical, QStringLiteral("XMLReader::parseXML"), error, QMessageBox::Ok, this);
        if (!copy.isEmpty())
            box.setInformativeText(tr("The list is kept as it was in %1.").arg(copy));
        showTextAsItIs(&box);
        box.exec();
    }
    sortByCurrentColumn();
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
    bool opened = false;
    const auto write = [&error, &opened](QIODevice *device) {
        opened = true;
        return writeFileList(currentROM.root, device, &error);
    };
    if (saveWhole(path, write, &error))
        return true;
    if (opened)
        QUILLARY_DEBUG_AS("void MainWindow::createXMLFile(const QString &)") << "error";
    qDebug().noquote() << path + QLatin1Char(':') << error;
    showUnwritableList(path);
    return false;
}

void MainWindow::showUnwritableList(const QString &path)
{
    if (!m_asksNothing)
        showBox(this, QMessageBox::Critical, QStringLiteral("createXMLFile"), tr("Couldn't open %1").arg(path));
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
