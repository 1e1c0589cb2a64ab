// SPDX-License-Identifier: MIT
#pragma once

#include "app/treerow.h"
#include "model/rom.h"
#include "model/textureformat.h"
#include "persist/filelistfiles.h"
#include "persist/profilesfolder.h"

#include <QFileDialog>
#include <QIcon>
#include <QImage>
#include <QMainWindow>
#include <QMap>
#include <QPointer>
#include <QSettings>
#include <QStringList>

#include <memory>

class FolderPanel;
class InputBlocker;
class ProfileStore;
class PreviewLabel;
class Progress;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QMenu;
class QProgressDialog;
class QSplitter;
class QTabWidget;
class QTableWidget;
class QTreeWidget;
class QTreeWidgetItem;
class QXmlStreamWriter;
class TexturePanel;
class TexturePreviewArea;

/// The window of the program. Its slots ask the user, call a function of a lower layer and show the outcome; each topic has a
/// source file of its own, mainwindow_<topic>.cpp.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// Item types of the tree's rows.
    enum RowType { TextureRow = 1001, FolderRow = 1002 };
    /// The deepest level at which a folder gets a row; the root's is 0. Qt sorts, lays out and frees rows by recursion, so that
    /// deeper ones could exhaust the stack. What lies deeper is part of the table all the same.
    static constexpr int deepestFolderRow = 6000;
    /// Values of ROM::selectedType.
    enum SelectedType { NothingSelected = 0, FolderSelected = 1, TextureSelected = 2 };

    MainWindow();
    ~MainWindow() override;

    /// Where the window keeps all profiles, settled at its construction.
    const ProfilesFolder &profilesFolder() const { return m_profilesFolder; }

    // Image (mainwindow_image.cpp)
    void loadFile(const QString &fileName);
    bool saveFile(const QString &fileName);
    /// Writes the file list as closing does, when auto-save is on, but shows no message and leaves the image file alone. For a
    /// program that is ended from outside.
    void saveFileListUnasked();

    // Construction, settings and state (mainwindow.cpp)
    void createActions();
    void createMenus();
    void createToolBars();
    void createStatusBar();
    void setupGUI();
    void updateRecentFileActions();
    void readSettings();
    void writeSettings();
    void setCurrentFile(const QString &fileName);
    bool maybeSave();

    // Tree (mainwindow_tree.cpp)
    void createTreeView();
    void addDirectoryToTree(fileTreeDirectory *directory);
    void addTextureToTree(fileTreeFile *file);
    void updateDirectoryInTree(fileTreeDirectory *directory);
    void updateTextureInTree(fileTreeFile *file);
    void updateChildrenInTree(fileTreeDirectory *directory);
    void selectFileTableItem();
    QString selectedItemType() const;

    // File list (mainwindow_filelist.cpp)
    QString removeFilePath(const QString &path);

    // Panels (mainwindow_panels.cpp)
    void createTextureViewer();

    // Grid (mainwindow_grid.cpp)
    void createGridPanel();

    // Transfer (mainwindow_transfer.cpp)
    bool extractTexture(fileTreeFile *file, QString fileName);
    void saveFolder(QString path, fileTreeDirectory *directory);
    int countFiles(const QString &path);
    void iterateFolder(QString path, fileTreeDirectory *directory, QProgressDialog *progress, QString *log);

    // Search (mainwindow_search.cpp)
    bool findTexture(const QString fileName, QProgressDialog *progress, QMap<QString, textureFormat> formats,
                     const bool firstOnly, const int duplicateMode);
    QString removeFileExtension(QString path);

public slots:
    // The order is that of the meta-object's method table and is relied on; loadTexture() takes three entries there. New slots
    // go behind the last of these.
    bool runFindTexture(QStringList entries, QMap<QString, textureFormat> formats, const bool firstOnly, const int duplicateMode);
    void updateSelectedInfo();
    void importTexture(QImage image, int address, QString format, QByteArray rawImage);
    void insertTexture(QString fileName, fileTreeFile *texture);
    void open();
    void openRecentFile();
    bool save();
    bool saveAs();
    void about();
    void updateActions();
    void parseXML(const QString &path);
    void createXMLFileInner(QXmlStreamWriter *writer, fileTreeDirectory *currentDirectory);
    void createXMLFile(const QString &path);
    void clearFileTable();
    void showContextMenu(const QPoint &position);
    void sortTreeView(int index);
    void saveTexture();
    void replaceTexture();
    void importFolder();
    void importTexturePack();
    void parseTexturePack(QString archive);
    void togglePreviewBackground();
    void loadTexture(const QString &fileName = QString(), bool multiple = false);
    void deleteItem();
    void addFile();
    void addTexture();
    void openTextureTab();
    void loadProfile();
    void saveProfile();
    void newProfile();
    void deleteProfile();
    void setAutosaveProfile(int enable);
    void setAutoloadProfile(QString name);
    void applyTextureChanges();
    void applyDirectoryChanges();
    void saveDirectoryInfo();
    void saveTextureInfo();
    void expandTreeDirectory(QTreeWidgetItem *item);
    void renderGrid();

    void updateDirectoryInfo();
    void updateTextureInfo();
    void renderTexture();
    void createProfilePanel();
    void readProfiles();
    void readProfileSettings();
    void saveProfileSettings();

protected:
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    /// Marks the window busy for a scope: a progress dialog runs the event loop inside an operation, and nothing that arrives
    /// then (a drop, a shortcut, a close) may pull the image or the table from under it.
    class BusyScope
    {
    public:
        explicit BusyScope(MainWindow *window);
        ~BusyScope();
        BusyScope(const BusyScope &) = delete;
        BusyScope &operator=(const BusyScope &) = delete;

    private:
        MainWindow *m_window;
        std::unique_ptr<InputBlocker> m_inputBlocker;
    };
    bool isBusy() const { return m_busy > 0; }
    class SearchView;

    /// Converts currentROM's bytes to big-endian order, in place and under a progress dialog. Returns whether the header names
    /// the cartridge; \a unknownCounts is the answer for whole words in no known order.
    bool normaliseImage(bool unknownCounts);
    /// Stores \a fileName as the path that Save writes to. The setting is shared with other running programs.
    void storeImagePath(const QString &fileName);
    /// Stores the path of the image that is loaded here again, if one is.
    void storeImagePathAgain();
    /// As storeImagePathAgain(), but only where another running program stored its path last: Save must not hit that file.
    void takeBackImagePath();

    /// An action of the window with the icon ":/icons/" + \a icon.
    QAction *createAction(const QString &name, const QString &text, const QString &icon, const QString &statusTip);
    QAction *createRecentFileAction(int number);
    QToolBar *createToolBar(const QString &name, const QString &title);
    void createPanels();
    void createTabs();
    void createSplitter();
    /// Writes the file list before closing, where the profile settings say so. False when that failed and the user would rather
    /// stay than lose unsaved changes.
    bool autosaveFileList();
    /// Enables the actions that make sense for the selection as currentROM has it.
    void enableActions();
    /// Whether the window may take in another image now: not while it works, nor while a dialog waits for its answer.
    bool acceptsImages() const;

    void showUnsavedFileListNotice();
    /// Writes the file table to \a path, whole or not at all. On failure it shows the box for an unwritable file and returns
    /// false; the unsaved notice does not change.
    bool writeFileListTo(const QString &path);
    /// A critical box with \a reason, which may be empty, below its text.
    void showBoxWithReason(const QString &title, const QString &text, const QString &reason);
    /// Writes the file table to the current profile and hides the unsaved notice. On failure it shows the box for an unwritable
    /// file, the notice stays, and the result is false. This is what opening another image and closing the window call.
    bool saveFileListOfOpenImage();
    /// If the unsaved notice shows, asks whether to save the changes, and hides it unless the user cancels or saving fails; then
    /// the result is false and the table must not be replaced. True without a question when nothing is unsaved.
    bool mayReplaceFileTable();
    /// As writeFileListTo(), to the list of \a profile; a name that leads out of the profiles folder counts as unwritable.
    bool writeFileListOf(const QString &profile);
    void showUnwritableList(const QString &path, const QString &reason);
    QString selectedProfile() const;
    void replaceUnusableAutoloadProfile();
    ProfileStore profileStore() const;
    QGroupBox *createGlobalSettingsBox();
    QGroupBox *createProfileSettingsBox();

    /// Sorts the tree again by the column and order of its header.
    void sortByCurrentColumn();
    /// Leaves the tree without a current and a selected row, and without a signal, so that a click on any row selects it.
    void clearHighlight();
    /// Widens columns that still have their initial width where the font leaves no room in it.
    void fitColumnsToFont();
    void addRow(QTreeWidgetItem *parentRow, QTreeWidgetItem *row);
    QIcon iconOf(const fileTreeFile &texture) const;
    void deleteFolder(fileTreeDirectory *folder);
    void keepRemovedRow(QTreeWidgetItem *row);
    /// Takes the rows of \a textures, all of \a folder, out of the tree and frees them, in time linear in the folder's rows. The
    /// selection moves to the folder when it was on one of them.
    void takeTextureRows(fileTreeDirectory *folder, const QVector<fileTreeFile *> &textures);

    void createPreviewBox();
    void showTextureFields(const fileTreeFile &texture);
    void moveEditedTexture(const fileTreeDirectory &folder, int delta);
    void followMovedFolder(const fileTreeDirectory &folder);
    void clearPreview();
    /// Puts the cursor into the Name of the texture or folder whose row is current, with its text selected. The root keeps its.
    void editNameOfSelection();
    void showPreviewMessage(const QString &message);

    void saveSelectedTexture(); ///< saveTexture() for a texture.
    void saveSelectedFolder(); ///< saveTexture() for a folder.

    /// A window-modal progress dialog from 0 to \a maximum. With a null \a cancelText it has no cancel button, and the user
    /// cannot close it either. It belongs to the window; the caller deletes it when the work is done.
    QProgressDialog *createProgressDialog(const QString &label, const QString &cancelText, int maximum);
    /// Takes \a dialog to its maximum, which closes it. One that has closed already stays closed.
    static void closeProgress(QProgressDialog *dialog);

    QSettings m_settings;
    QFileDialog::Options m_fileDialogOptions;
    const ProfilesFolder m_profilesFolder;
    FileListFiles m_fileLists;
    bool m_isTableOfOtherImage = false; ///< While an image is being loaded: its identifier is set, its table not yet read.
    int m_busy = 0;
    QString m_imagePath; ///< Where the loaded image was read from or last saved to.
    bool m_loadsImage = false; ///< The table still is, or may be, that of the image before.
    bool m_asksNothing = false; ///< The program is being ended: no message box may wait for an answer.
    QString m_statusTip; ///< The last tip, which shows or waits for the end of an outcome.
    bool m_wasShown = false;
    QPointer<QProgressDialog> m_searchProgress; ///< Of the last search; stays until the next one.

    QWidget *m_centralWidget = nullptr;
    QHBoxLayout *m_horizontalLayout = nullptr;
    QSplitter *m_splitter = nullptr;
    QTabWidget *m_tabWidget = nullptr;
    QWidget *m_selectionPanel = nullptr;
    QWidget *m_profilePanel = nullptr;
    QTreeWidget *m_treeWidget = nullptr;
    QWidget *m_gridPanel = nullptr;

    QIcon m_emptyFolderIcon;
    QIcon m_folderIcon;
    QIcon m_fileIcon;
    RemovedRow m_removedRow; ///< What was last taken out of the tree.

    QMenu *m_fileMenu = nullptr;
    QMenu *m_editMenu = nullptr;
    QMenu *m_importMenu = nullptr;
    QMenu *m_searchMenu = nullptr;
    QMenu *m_helpMenu = nullptr;
    QToolBar *m_fileToolBar = nullptr;
    QToolBar *m_editToolBar = nullptr;
    QToolBar *m_importToolBar = nullptr;
    QToolBar *m_searchToolBar = nullptr;

    static constexpr int maximumRecentFiles = 5;
    QAction *m_openAction = nullptr;
    QAction *m_saveAction = nullptr;
    QAction *m_saveAsAction = nullptr;
    QAction *m_recentFileActions[maximumRecentFiles] = {};
    QAction *m_exitAction = nullptr;
    QAction *m_extractAction = nullptr;
    QAction *m_importImageAction = nullptr;
    QAction *m_importFolderAction = nullptr;
    QAction *m_importTexturePackAction = nullptr;
    QAction *m_findTextureAction = nullptr;
    QAction *m_newFolderAction = nullptr;
    QAction *m_newTextureAction = nullptr;
    QAction *m_deleteAction = nullptr;
    QAction *m_aboutAction = nullptr;

    FolderPanel *m_folderPanel = nullptr;
    TexturePanel *m_texturePanel = nullptr;

    // Preview
    QGroupBox *m_previewBox = nullptr;
    TexturePreviewArea *m_previewArea = nullptr;
    PreviewLabel *m_previewLabel = nullptr;
    const fileTreeFile *m_previewedTexture = nullptr; ///< The texture that the preview was last drawn for.
    QString m_previewBackground; ///< The style sheet that the label gets with every picture.

    // Profiles
    QLabel *m_romIDLabel = nullptr;
    QComboBox *m_autoloadProfileBox = nullptr;
    QCheckBox *m_autosaveBox = nullptr;
    QLabel *m_currentProfileLabel = nullptr;
    QComboBox *m_profileBox = nullptr;
    QLabel *m_unsavedFileListLabel = nullptr;

    // Grid
    QTableWidget *m_gridTable = nullptr;
    QLabel *m_gridLabel = nullptr;
};
