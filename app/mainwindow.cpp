// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "app/inputblocker.h"
#include "app/messagebox.h"
#include "base/debuglog.h"
#include "resources/resources.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QCursor>
#include <QDragEnterEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QMimeData>
#include <QProgressDialog>
#include <QScopedValueRollback>
#include <QScreen>
#include <QSplitter>
#include <QStandardPaths>
#include <QStatusBar>
#include <QStatusTipEvent>
#include <QTabBar>
#include <QTabWidget>
#include <QToolBar>
#include <QTreeWidget>
#include <QUrl>

#include <algorithm>

namespace
{
constexpr int progressDelay = 400; // milliseconds of work until its progress shows: long enough not to flash, too short to wonder

/// A progress dialog that the user can neither cancel nor close, for work that cannot be interrupted.
class SteadyProgressDialog : public QProgressDialog
{
public:
    using QProgressDialog::QProgressDialog;

    void reject() override { }

protected:
    void closeEvent(QCloseEvent *event) override
    {
        // The user's request is refused; the program's own closes it.
        if (event->spontaneous())
            event->ignore();
        else
            QProgressDialog::closeEvent(event);
    }
};

/// The splitter between the table and the panels. Its stretch factors give the table what the window gains; beyond the width of
/// all columns, half of the gain goes to the panels. A place that the user has chosen for the handle is kept relative to that.
class TableSplitter : public QSplitter
{
public:
    TableSplitter(const QHeaderView *columns, QWidget *parent) : QSplitter(parent), m_columns(columns) { }

protected:
    void resizeEvent(QResizeEvent *event) override
    {
        const int before = sizes().value(0) + sizes().value(1);
        QSplitter::resizeEvent(event);
        const QList<int> now = sizes();
        const int gained = gainOfPanels(now.value(0) + now.value(1)) - gainOfPanels(before);
        if (isVisible() && gained != 0)
            setSizes({now.value(0) - gained, now.value(1) + gained});
    }

private:
    /// Pixels that the panels have beyond their preferred width when both parts together have \a width pixels.
    int gainOfPanels(int width) const
    {
        const int last = m_columns->logicalIndex(m_columns->count() - 1); // Stretched to the end of the table.
        const int columns = m_columns->length() - m_columns->sectionSize(last) + m_columns->sectionSizeHint(last);
        return std::max(0, width - columns - widget(1)->sizeHint().width()) / 2;
    }

    const QHeaderView *m_columns;
};

QString desktopDisplayName()
{
    return QStandardPaths::displayName(QStandardPaths::DesktopLocation);
}

QString firstLocalFile(const QMimeData *mimeData)
{
    return mimeData->urls().value(0).toLocalFile();
}
}

MainWindow::MainWindow() : m_profilesFolder(chooseProfilesFolder())
{
    initResources();
    setObjectName(QStringLiteral("mainWindow"));
    setWindowIcon(QIcon(QStringLiteral(":/icons/quillary")));
    createActions();
    createMenus();
    createToolBars();
    createStatusBar();
    setupGUI();
    updateRecentFileActions();
    updateActions();
    readSettings();
    setCurrentFile(QString());
    setUnifiedTitleAndToolBarOnMac(true);
}

MainWindow::~MainWindow() = default;

MainWindow::BusyScope::BusyScope(MainWindow *window) : m_window(window), m_inputBlocker(std::make_unique<InputBlocker>(window))
{
    ++m_window->m_busy;
}

MainWindow::BusyScope::~BusyScope()
{
    --m_window->m_busy;
}

QProgressDialog *MainWindow::createProgressDialog(const QString &label, const QString &cancelText, int maximum)
{
    auto *dialog = cancelText.isNull() ? new SteadyProgressDialog(label, tr("Abort"), 0, maximum, this)
                                       : new QProgressDialog(label, cancelText, 0, maximum, this);
    dialog->setObjectName(QStringLiteral("progressDialog"));
    dialog->setWindowFlags(dialog->windowFlags() & ~Qt::WindowContextHelpButtonHint);
    dialog->setMinimumDuration(progressDelay);
    dialog->setWindowModality(Qt::WindowModal);
    if (cancelText.isNull())
        dialog->setCancelButton(nullptr);
    return dialog;
}

void MainWindow::closeProgress(QProgressDialog *dialog)
{
    // A dialog that was cancelled, or has been at its maximum, would show once more.
    if (dialog->isVisible())
        dialog->setValue(dialog->maximum());
}

QAction *MainWindow::createAction(const QString &name, const QString &text, const QString &icon, const QString &statusTip)
{
    auto *action = new QAction(QIcon(QStringLiteral(":/icons/") + icon), text, this);
    action->setObjectName(name);
    action->setStatusTip(statusTip);
    return action;
}

QAction *MainWindow::createRecentFileAction(int number)
{
    auto *action = new QAction(this);
    action->setObjectName(QStringLiteral("recentFileAction%1").arg(number));
    action->setVisible(false);
    connect(action, &QAction::triggered, this, &MainWindow::openRecentFile);
    return action;
}

void MainWindow::createActions()
{
    m_openAction = createAction(QStringLiteral("openAction"), tr("Open..."), QStringLiteral("open"), tr("Open a file"));
    m_openAction->setShortcuts(QKeySequence::Open);
    connect(m_openAction, &QAction::triggered, this, &MainWindow::open);

    m_saveAction = createAction(QStringLiteral("saveAction"), tr("Save"), QStringLiteral("save"), tr("Save the file to disk"));
    m_saveAction->setShortcuts(QKeySequence::Save);
    connect(m_saveAction, &QAction::triggered, this, &MainWindow::save);

    m_saveAsAction = createAction(QStringLiteral("saveAsAction"), tr("Save As..."), QStringLiteral("save_as"),
                                  tr("Save the file under a new name"));
    m_saveAsAction->setShortcuts(QKeySequence::SaveAs);
    connect(m_saveAsAction, &QAction::triggered, this, &MainWindow::saveAs);

    for (int i = 0; i < maximumRecentFiles; ++i)
        m_recentFileActions[i] = createRecentFileAction(i + 1);

    m_exitAction = createAction(QStringLiteral("exitAction"), tr("Exit"), QStringLiteral("exit"), tr("Exit the application"));
    m_exitAction->setShortcuts(QKeySequence::Quit);
    connect(m_exitAction, &QAction::triggered, this, &MainWindow::close);

    m_extractAction = createAction(QStringLiteral("extractAction"), tr("Extract"), QStringLiteral("save_image"),
                                   tr("Extract the currently selected folder/texture"));
    connect(m_extractAction, &QAction::triggered, this, &MainWindow::saveTexture);

    m_importImageAction = createAction(QStringLiteral("importImageAction"), tr("Import Image"), QStringLiteral("replace_image"),
                                       tr("Import an image over the last selected texture"));
    m_importImageAction->setShortcuts(QKeySequence::Replace);
    connect(m_importImageAction, &QAction::triggered, this, &MainWindow::replaceTexture);

    m_importFolderAction =
        createAction(QStringLiteral("importFolderAction"), tr("Import Folder"), QStringLiteral("folder_textures"),
                     tr("Import a folder of textures, replacing textures with the same name"));
    connect(m_importFolderAction, &QAction::triggered, this, &MainWindow::importFolder);

    m_importTexturePackAction = createAction(QStringLiteral("importTexturePackAction"), tr("Import Texture Pack"),
                                             QStringLiteral("archive"), tr("Import a texture pack"));
    connect(m_importTexturePackAction, &QAction::triggered, this, &MainWindow::importTexturePack);

    m_findTextureAction = createAction(QStringLiteral("findTextureAction"), tr("Find Texture"), QStringLiteral("search_file"),
                                       tr("Provide an image and the application will try to find it in the file"));
    m_findTextureAction->setShortcuts(QKeySequence::Find);
    connect(m_findTextureAction, &QAction::triggered, this, [this] { loadTexture(); });

    m_newFolderAction = createAction(QStringLiteral("newFolderAction"), tr("New Folder"), QStringLiteral("new_folder"),
                                     tr("Create a new folder"));
    connect(m_newFolderAction, &QAction::triggered, this, &MainWindow::addFile);

    m_newTextureAction = createAction(QStringLiteral("newTextureAction"), tr("New Texture"), QStringLiteral("new_file"),
                                      tr("Create a new texture"));
    connect(m_newTextureAction, &QAction::triggered, this, &MainWindow::addTexture);

    m_deleteAction = createAction(QStringLiteral("deleteAction"), tr("Delete"), QStringLiteral("delete"),
                                  tr("Delete the currently selected folder/texture"));
    m_deleteAction->setShortcuts(QKeySequence::Delete);
    connect(m_deleteAction, &QAction::triggered, this, &MainWindow::deleteItem);

    m_aboutAction =
        createAction(QStringLiteral("aboutAction"), tr("About"), QStringLiteral("about"), tr("Show the application's About box"));
    connect(m_aboutAction, &QAction::triggered, this, &MainWindow::about);
}

void MainWindow::createMenus()
{
    menuBar()->setObjectName(QStringLiteral("menuBar"));

    m_fileMenu = menuBar()->addMenu(tr("File"));
    m_fileMenu->setObjectName(QStringLiteral("fileMenu"));
    m_fileMenu->addActions({m_openAction, m_saveAction, m_saveAsAction});
    m_fileMenu->addSeparator();
    for (QAction *action : m_recentFileActions)
        m_fileMenu->addAction(action);
    m_fileMenu->addSeparator();
    m_fileMenu->addAction(m_exitAction);

    m_editMenu = menuBar()->addMenu(tr("Edit"));
    m_editMenu->setObjectName(QStringLiteral("editMenu"));
    m_editMenu->addActions({m_extractAction, m_importImageAction});
    m_editMenu->addSeparator();
    m_editMenu->addActions({m_newFolderAction, m_newTextureAction});
    m_editMenu->addSeparator();
    m_editMenu->addAction(m_deleteAction);
    m_editMenu->addSeparator();

    m_importMenu = menuBar()->addMenu(tr("Import"));
    m_importMenu->setObjectName(QStringLiteral("importMenu"));
    m_importMenu->addActions({m_importFolderAction, m_importTexturePackAction});

    m_searchMenu = menuBar()->addMenu(tr("Search"));
    m_searchMenu->setObjectName(QStringLiteral("searchMenu"));
    m_searchMenu->addAction(m_findTextureAction);

    menuBar()->addSeparator();

    m_helpMenu = menuBar()->addMenu(tr("Help"));
    m_helpMenu->setObjectName(QStringLiteral("helpMenu"));
    m_helpMenu->addAction(m_aboutAction);
}

QToolBar *MainWindow::createToolBar(const QString &name, const QString &title)
{
    QToolBar *toolBar = addToolBar(title);
    toolBar->setObjectName(name);
    toolBar->setIconSize(QSize(32, 32));
    return toolBar;
}

void MainWindow::createToolBars()
{
    m_fileToolBar = createToolBar(QStringLiteral("nameToolBar"), tr("File"));
    m_fileToolBar->addActions({m_openAction, m_saveAction, m_saveAsAction});

    m_editToolBar = createToolBar(QStringLiteral("editToolBar"), tr("Edit"));
    m_editToolBar->addActions({m_extractAction, m_importImageAction});
    m_editToolBar->addSeparator();
    m_editToolBar->addActions({m_newFolderAction, m_newTextureAction});
    m_editToolBar->addSeparator();
    m_editToolBar->addAction(m_deleteAction);

    m_importToolBar = createToolBar(QStringLiteral("importToolBar"), tr("Import"));
    m_importToolBar->addActions({m_importFolderAction, m_importTexturePackAction});

    m_searchToolBar = createToolBar(QStringLiteral("searchToolBar"), tr("Search"));
    m_searchToolBar->addAction(m_findTextureAction);
}

void MainWindow::createStatusBar()
{
    statusBar()->setObjectName(QStringLiteral("statusBar"));
    statusBar()->showMessage(tr("Ready"));
    // A tip that had to wait for the end of an outcome shows then, if the pointer is still there.
    connect(statusBar(), &QStatusBar::messageChanged, this, [this](const QString &message) {
        if (message.isEmpty() && !m_statusTip.isEmpty())
            statusBar()->showMessage(m_statusTip);
    });
}

void MainWindow::createPanels()
{
    createTreeView();
    createTextureViewer();
    createProfilePanel();
    createGridPanel();
}

void MainWindow::createTabs()
{
    m_tabWidget = new QTabWidget(this);
    m_tabWidget->setObjectName(QStringLiteral("tabWidget"));
    m_tabWidget->insertTab(0, m_selectionPanel, QIcon(), tr("Selection"));
    m_tabWidget->insertTab(1, m_profilePanel, QIcon(), tr("Profile"));
    // A profile belongs to a cartridge; there is none yet.
    m_tabWidget->setTabEnabled(1, false);
    m_tabWidget->setCurrentIndex(0);
}

void MainWindow::createSplitter()
{
    m_splitter = new TableSplitter(m_treeWidget->header(), this);
    m_splitter->setObjectName(QStringLiteral("splitter"));
    m_splitter->addWidget(m_treeWidget);
    m_splitter->addWidget(m_tabWidget);
    m_splitter->setCollapsible(0, false);
    // What a larger window gains goes to the table, until all its columns show.
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 0);
}

void MainWindow::setupGUI()
{
    setAcceptDrops(true);
    createPanels();
    createTabs();
    createSplitter();

    m_horizontalLayout = new QHBoxLayout;
    m_horizontalLayout->setObjectName(QStringLiteral("horizontalLayout"));
    m_horizontalLayout->setContentsMargins(0, 0, 0, 0);
    m_horizontalLayout->addWidget(m_splitter);
    m_centralWidget = new QWidget(this);
    m_centralWidget->setObjectName(QStringLiteral("centralWidget"));
    m_centralWidget->setLayout(m_horizontalLayout);
    setCentralWidget(m_centralWidget);
    // Tab goes the way the eye does: the tree, the tabs, what the tab in front shows, and the tree again. The tab widget would
    // hand the focus to its tabs once more before that.
    m_tabWidget->setFocusProxy(nullptr);
    m_tabWidget->setFocusPolicy(Qt::NoFocus);
    setTabOrder(m_treeWidget, m_tabWidget->tabBar());

    // All columns and the panels beside them, but no more than nearly the whole screen.
    resize(QSize(1760, 900).boundedTo(screen()->availableSize() * 0.92));
}

void MainWindow::updateRecentFileActions()
{
    const QStringList files = m_settings.value(QStringLiteral("recentFileList")).toStringList();
    for (int i = 0; i < maximumRecentFiles; ++i) {
        QAction *action = m_recentFileActions[i];
        const bool used = i < files.size();
        action->setVisible(used);
        if (!used)
            continue;
        action->setText(tr("&%1 %2").arg(QString::number(i + 1), files.at(i)));
        action->setData(files.at(i));
    }
}

void MainWindow::readSettings()
{
    restoreState(m_settings.value(QStringLiteral("windowState")).toByteArray());
    restoreGeometry(m_settings.value(QStringLiteral("geometry")).toByteArray());
    m_splitter->restoreState(m_settings.value(QStringLiteral("splitter.state")).toByteArray());
    m_treeWidget->header()->restoreState(m_settings.value(QStringLiteral("treeWidget.header.state")).toByteArray());
}

void MainWindow::writeSettings()
{
    m_settings.setValue(QStringLiteral("windowState"), saveState());
    m_settings.setValue(QStringLiteral("geometry"), saveGeometry());
    m_settings.setValue(QStringLiteral("splitter.state"), m_splitter->saveState());
    m_settings.setValue(QStringLiteral("treeWidget.header.state"), m_treeWidget->header()->saveState());
}

void MainWindow::setCurrentFile(const QString &fileName)
{
    setWindowModified(false);
    const QString product = QStringLiteral("Quillary " QUILLARY_VERSION " - ");
    if (fileName.isEmpty()) {
        setWindowTitle(product + tr("No File Loaded") + QStringLiteral("[*]"));
        return;
    }

    QStringList files = m_settings.value(QStringLiteral("recentFileList")).toStringList();
    files.removeAll(fileName);
    files.prepend(fileName);
    while (files.size() > maximumRecentFiles)
        files.removeLast();
    m_settings.setValue(QStringLiteral("recentFileList"), files);

    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *widget : windows) {
        if (auto *window = qobject_cast<MainWindow *>(widget))
            window->updateRecentFileActions();
    }
    setWindowTitle(product + fileName + QStringLiteral("[*]"));
}

bool MainWindow::maybeSave()
{
    if (!isWindowModified())
        return true;
    switch (QMessageBox::warning(this, tr("Application"), tr("The file has been modified.\nDo you want to save your changes?"),
                                 QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel)) {
    case QMessageBox::Save: return save();
    case QMessageBox::Discard: return true;
    default: return false;
    }
}

void MainWindow::open()
{
    if (isBusy())
        return;
    const QString pathKey = QStringLiteral("romPath");
    if (!m_settings.contains(pathKey))
        m_settings.setValue(pathKey, desktopDisplayName());
    if (!maybeSave())
        return;
    const QString fileName = QFileDialog::getOpenFileName(this, tr("Open File"), m_settings.value(pathKey).toString(),
                                                          tr("Any files (*)"), nullptr, m_fileDialogOptions);
    if (!fileName.isEmpty())
        loadFile(fileName);
}

void MainWindow::openRecentFile()
{
    if (const auto *action = qobject_cast<QAction *>(sender()))
        loadFile(action->data().toString());
}

bool MainWindow::save()
{
    takeBackImagePath();
    const QString pathKey = QStringLiteral("romPath");
    return m_settings.contains(pathKey) ? saveFile(m_settings.value(pathKey).toString()) : saveAs();
}

bool MainWindow::saveAs()
{
    if (isBusy())
        return false;
    takeBackImagePath();
    const QString pathKey = QStringLiteral("romPath");
    if (!m_settings.contains(pathKey))
        m_settings.setValue(pathKey, QString(desktopDisplayName() + QLatin1Char('/') + currentROM.baseName));
    const QString fileName = QFileDialog::getSaveFileName(this, tr("Save File"), m_settings.value(pathKey).toString(),
                                                          tr("Any files (*)"), nullptr, m_fileDialogOptions);
    return !fileName.isEmpty() && saveFile(fileName);
}

void MainWindow::about()
{
    QMessageBox::about(
        this, tr("About Quillary"),
        tr("<b>Quillary</b><br><br>"
           "This is my very first application, so there may be issues.<br>"
           "Always keep a backup when you edit files.<br>"
           "Updates can be found on my web site, <a href=\"https://quillary.example\">quillary.example</a>.<br><br>"
           "Brimholt, 2014"));
}

void MainWindow::updateActions()
{
    selectFileTableItem();
    enableActions();
    qDebug() << currentROM.selectedType;
}

void MainWindow::enableActions()
{
    const bool loaded = currentROM.loaded;
    m_saveAction->setEnabled(loaded);
    m_saveAsAction->setEnabled(loaded);

    const int type = currentROM.selectedType;
    const fileTreeDirectory *folder = currentROM.lastSelectedFolder;
    const fileTreeFile *texture = currentROM.lastSelectedTexture;
    const bool folderIsRoot = folder && folder == currentROM.root;
    // Without a texture a folder stands in for it, so that Import Image can be reached and say what it lacks.
    const bool formatOK = texture ? textureFormats::find(texture->format) != nullptr : folder != nullptr;

    m_extractAction->setEnabled(type == FolderSelected || (type == TextureSelected && formatOK));
    m_importImageAction->setEnabled(formatOK);
    m_importFolderAction->setEnabled(loaded && folder);
    m_importTexturePackAction->setEnabled(loaded);
    m_newFolderAction->setEnabled(folder);
    m_newTextureAction->setEnabled(folder);
    m_findTextureAction->setEnabled(folder);
    m_deleteAction->setEnabled(folder && (type != FolderSelected || !folderIsRoot));
}

bool MainWindow::autosaveFileList()
{
    if (!currentROM.loaded || !currentROM.autosave || saveFileListOfOpenImage() || m_unsavedFileListLabel->isHidden())
        return true;
    return showBox(this, QMessageBox::Warning, tr("Application"),
                   tr("The changes in the file list could not be saved.\nDo you want to close and lose them?"),
                   QMessageBox::Close | QMessageBox::Cancel, QMessageBox::Cancel)
        == QMessageBox::Close;
}

void MainWindow::saveFileListUnasked()
{
    // While an image is loaded, the list of the one before has been written, and the table may not be that of the new one yet.
    if (!currentROM.loaded || !currentROM.autosave || m_loadsImage)
        return;
    const QScopedValueRollback<bool> quiet(m_asksNothing, true);
    saveFileListOfOpenImage();
}

/// The outcome of an operation keeps its place in the status bar for its time: without this, the tip of the button or the menu
/// entry under the pointer would replace it at once.
bool MainWindow::event(QEvent *event)
{
    if (event->type() == QEvent::StatusTip) {
        const QString shown = statusBar()->currentMessage();
        const bool isOutcome = !shown.isEmpty() && shown != m_statusTip && shown != tr("Ready");
        m_statusTip = static_cast<QStatusTipEvent *>(event)->tip();
        if (isOutcome)
            return true;
    }
    return QMainWindow::event(event);
}

void MainWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (!m_wasShown)
        fitColumnsToFont();
    m_wasShown = true;
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        storeImagePathAgain();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (isBusy()) {
        event->ignore();
        return;
    }
    if (!autosaveFileList() || !maybeSave()) {
        event->ignore();
        return;
    }
    writeSettings();
    event->accept();
}

bool MainWindow::acceptsImages() const
{
    return !isBusy() && !QApplication::activeModalWidget();
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    const QMimeData *mimeData = event->mimeData();
    const bool isRefused = event->dropAction() == Qt::IgnoreAction; // By the part of the window that it is over.
    if (isRefused || !mimeData->hasUrls())
        return;
    const QString path = firstLocalFile(mimeData);
    qDebug() << path;
    if (acceptsImages() && mimeData->urls().size() == 1 && !path.isEmpty() && !QFileInfo(path).isDir())
        event->acceptProposedAction();
}

void MainWindow::dragMoveEvent(QDragMoveEvent *event)
{
    // The rectangle is in the coordinates of the tree's parent and the point in the tree's own: the difference is meant to be.
    if (m_treeWidget->geometry().contains(m_treeWidget->mapFromGlobal(QCursor::pos())))
        event->acceptProposedAction();
    else
        event->ignore();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    const QString path = firstLocalFile(event->mimeData());
    qDebug() << "Dropping" << path;
    if (acceptsImages())
        loadFile(path);
}
