// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "app/waitcursor.h"
#include "base/debuglog.h"
#include "base/hexnumber.h"
#include "base/wrapping.h"
#include "model/bulkadder.h"
#include "search/findtexturedialog.h"
#include "search/searchobserver.h"
#include "search/texturesearch.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QProgressDialog>
#include <QSet>
#include <QStatusBar>
#include <QTreeWidget>

namespace
{
constexpr int messageMilliseconds = 2000;
constexpr int outcomeMilliseconds = 5000;

// The functions that the debug lines name: the two operations of the window that a search consists of.
constexpr const char *runFunction = "bool MainWindow::runFindTexture(QStringList, QMap<QString, textureFormat>, bool, int)";
constexpr const char *findFunction =
    "bool MainWindow::findTexture(QString, QProgressDialog*, QMap<QString, textureFormat>, bool, int)";

QString noFolderMessage()
{
    return MainWindow::tr("You must select a folder to search in.");
}
}

/// Shows a search in the window: in its progress dialog, in boxes, in the debug log, and in the rows of the tree.
class MainWindow::SearchView : public SearchObserver
{
public:
    /// \a progress may be null: then nothing shows how far the search is, and it cannot be cancelled.
    SearchView(MainWindow *window, QProgressDialog *progress, fileTreeDirectory *folder)
        : m_window(window), m_progress(progress), m_folder(folder)
    {
        m_sinceEvents.start();
    }

    void beginPicture(const QString &file, int number, int count) override
    {
        m_isFirstCopy = true;
        if (m_progress)
            m_progress->setLabelText(MainWindow::tr("Searching for %1...").arg(file));
        handleEvents();
        QUILLARY_DEBUG_AS(runFunction) << "File" << QString::number(number) << "of" << count;
    }

    void setValue(int value) override
    {
        if (m_progress)
            m_progress->setValue(value);
    }

    bool cancelled() override
    {
        handleEvents();
        return wasCancelled();
    }

    bool interrupted() override
    {
        constexpr int shortestMilliseconds = 20;
        return m_sinceEvents.hasExpired(shortestMilliseconds) ? cancelled() : wasCancelled();
    }

    void cannotReadPicture(const QString &file) override
    {
        QMessageBox box(QMessageBox::Warning, MainWindow::tr("Application"), MainWindow::tr("Cannot read file %1.").arg(file),
                        QMessageBox::Ok, m_window);
        box.setTextFormat(Qt::PlainText); // A file's name is data.
        box.exec();
    }

    void foundCopy(const QString &format, int position) override
    {
        ++m_copies;
        m_picturesFound += m_isFirstCopy ? 1 : 0;
        m_isFirstCopy = false;
        QUILLARY_DEBUG_AS(findFunction) << QString(QStringLiteral("Found ") + format + QStringLiteral(" texture at 0x")
                                                   + QString::number(quint32(position), 16).toUpper());
    }

    void copyHandled(Outcome outcome) override
    {
        switch (outcome) {
        case Outcome::Overwrote: QUILLARY_DEBUG_AS(findFunction) << "Overwrote old texture"; break;
        case Outcome::Added: QUILLARY_DEBUG_AS(findFunction) << "Adding new texture"; break;
        case Outcome::Ignored: QUILLARY_DEBUG_AS(findFunction) << "Ignoring texture"; break;
        }
    }

    void beforeReplacing(const QVector<TextureReplacement> &changes) override
    {
        QVector<fileTreeFile *> leaving;
        m_newSelection = nullptr;
        for (const TextureReplacement &change : changes) {
            if (!change.replaced)
                continue;
            leaving.append(change.replaced);
            if (change.replaced == currentROM.lastSelectedTexture)
                m_newSelection = change.added;
        }
        m_rowIsCurrent = currentROM.selectedType == TextureSelected;
        m_window->takeTextureRows(m_folder, leaving);
    }

    void entriesAdded(const QVector<fileTreeFile *> &entries) override
    {
        for (fileTreeFile *entry : entries)
            m_window->addTextureToTree(entry);
        m_window->showUnsavedFileListNotice();
        if (m_newSelection)
            selectNewEntry();
        m_newSelection = nullptr;
    }

    /// What was found of \a pictures pictures, for the user.
    QString outcome(int pictures) const
    {
        if (m_copies == 0)
            return MainWindow::tr("No copies found.");
        return MainWindow::tr("Copies found: %1. Pictures found: %2 of %3.")
            .arg(QString::number(m_copies), QString::number(m_picturesFound), QString::number(pictures));
    }

private:
    bool wasCancelled() const { return m_progress && m_progress->wasCanceled(); }

    void handleEvents()
    {
        QApplication::processEvents();
        m_sinceEvents.start();
    }

    /// The entry takes the place of the one that was selected, in the tree and in the panel, or in the panel alone.
    void selectNewEntry()
    {
        if (m_rowIsCurrent && m_newSelection->treeItem) {
            m_window->m_treeWidget->setCurrentItem(m_newSelection->treeItem);
            return;
        }
        currentROM.lastSelectedTexture = m_newSelection;
        m_window->enableActions();
        m_window->updateTextureInfo();
    }

    MainWindow *m_window;
    QProgressDialog *m_progress;
    fileTreeDirectory *m_folder;
    QElapsedTimer m_sinceEvents;
    int m_copies = 0; ///< Of all pictures.
    int m_picturesFound = 0; ///< Those with a copy.
    bool m_isFirstCopy = false; ///< The next copy is the first of its picture.
    fileTreeFile *m_newSelection = nullptr; ///< What replaces the selected texture; null when it stays.
    bool m_rowIsCurrent = false; ///< The replaced texture's row was the tree's current one.
};

void MainWindow::takeTextureRows(fileTreeDirectory *folder, const QVector<fileTreeFile *> &textures)
{
    QTreeWidgetItem *folderRow = folder->treeItem;
    if (!folderRow)
        return;
    QSet<QTreeWidgetItem *> rows;
    for (const fileTreeFile *texture : textures)
        rows.insert(texture->treeItem);
    if (rows.contains(m_treeWidget->currentItem()))
        m_treeWidget->setCurrentItem(folderRow);
    // From the last on, so that few rows move up for each that goes.
    for (int i = folderRow->childCount() - 1; i >= 0; --i) {
        if (!rows.contains(folderRow->child(i)))
            continue;
        const RemovedRow row(folderRow->takeChild(i));
        forgetRows(row.get());
    }
}

void MainWindow::loadTexture(const QString &fileName, bool multiple)
{
    if (!currentROM.loaded || isBusy())
        return;
    const fileTreeDirectory *folder = currentROM.lastSelectedFolder;
    if (!folder) {
        statusBar()->showMessage(noFolderMessage(), messageMilliseconds);
        return;
    }
    const int start = folder->realAddress();
    const QString description =
        tr("Searching in %1%2, from address %3 to %4.\n"
           "Note that searching within large amounts of data is very slow.")
            .arg(folder->path(), folder->name, hexNumber(start), hexNumber(addWrapping(start, folder->size)));
    findTextureDialog dialog(this, description, fileName, multiple);
    dialog.exec();
}

bool MainWindow::runFindTexture(QStringList entries, QMap<QString, textureFormat> formats, const bool firstOnly,
                                const int duplicateMode)
{
    if (entries.isEmpty() || isBusy())
        return false;
    fileTreeDirectory *folder = currentROM.lastSelectedFolder;
    if (!folder) {
        statusBar()->showMessage(noFolderMessage(), messageMilliseconds);
        return false;
    }
    const BusyScope busy(this);
    const WaitCursor waitCursor;
    delete m_searchProgress;
    QProgressDialog *progress = createProgressDialog(tr("Initializing search..."), tr("Cancel"), entries.size());
    m_searchProgress = progress;
    if (auto *label = progress->findChild<QLabel *>())
        label->setTextFormat(Qt::PlainText); // A file's name is data.
    progress->setValue(0);
    progress->show();
    QApplication::processEvents();

    SearchView view(this, progress, folder);
    TextureSearch search(folder, {formats, firstOnly, duplicateMode}, &view);
    if (search.run(entries))
        sortByCurrentColumn();
    closeProgress(progress);
    statusBar()->showMessage(view.outcome(entries.size()), outcomeMilliseconds);
    return false;
}

bool MainWindow::findTexture(const QString fileName, QProgressDialog *progress, QMap<QString, textureFormat> formats,
                             const bool firstOnly, const int duplicateMode)
{
    fileTreeDirectory *folder = currentROM.lastSelectedFolder;
    if (!folder)
        return false;
    const BusyScope busy(this);
    SearchView view(this, progress, folder);
    TextureSearch search(folder, {formats, firstOnly, duplicateMode}, &view);
    return search.runOne(fileName);
}

QString MainWindow::removeFileExtension(QString path)
{
    return QFileInfo(path).completeBaseName();
}
