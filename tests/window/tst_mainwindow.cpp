// SPDX-License-Identifier: MIT
#include "support/dialogs.h"
#include "support/messages.h"
#include "support/tablewindow.h"

#include <QCursor>
#include <QDir>
#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QMimeData>
#include <QProgressDialog>
#include <QPushButton>
#include <QSettings>
#include <QSplitter>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QToolBar>

namespace
{
const QString appTitle = QStringLiteral("Quillary 1.0.1 - ");

QString profilesFolder()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/profiles/");
}

QString writtenFile(const QTemporaryDir &folder, const QString &name, const QByteArray &content)
{
    QFile file(folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

/// What a menu or a toolbar holds: object names, "-" for a separator.
QStringList contentOf(const QWidget *widget)
{
    QStringList entries;
    const QList<QAction *> actions = widget->actions();
    for (const QAction *action : actions)
        entries << (action->isSeparator() ? QStringLiteral("-") : action->objectName());
    return entries;
}

QImage picture(const QIcon &icon)
{
    return icon.pixmap(32, 32).toImage().convertToFormat(QImage::Format_ARGB32);
}

template<typename Widget> Widget *child(const QObject &window, const char *name)
{
    auto *widget = window.findChild<Widget *>(QLatin1String(name));
    if (!widget)
        qFatal("the window has no %s", name);
    return widget;
}

QAction *action(const QObject &window, const char *name)
{
    return child<QAction>(window, name);
}

QStringList recentTexts(const MainWindow &window)
{
    QStringList texts;
    for (int i = 1; i <= 5; ++i) {
        const QAction *recent = window.findChild<QAction *>(QStringLiteral("recentFileAction%1").arg(i));
        if (recent->isVisible())
            texts << recent->text();
    }
    return texts;
}

/// Drags \a urls into \a window as a file manager does; tells whether the window would take them.
bool dragEnter(MainWindow *window, const QMimeData &mimeData)
{
    QDragEnterEvent event(QPoint(20, 20), Qt::CopyAction, &mimeData, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &event);
    return event.isAccepted();
}

void drop(MainWindow *window, const QMimeData &mimeData)
{
    QDropEvent event(QPoint(20, 20), Qt::CopyAction, &mimeData, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &event);
}

class MimeFiles : public QMimeData
{
public:
    explicit MimeFiles(const QStringList &paths)
    {
        QList<QUrl> urls;
        for (const QString &path : paths)
            urls << QUrl::fromLocalFile(path);
        setUrls(urls);
    }
};

class MainWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { setApplicationIdentity(); }

    void init()
    {
        QSettings().clear();
        QDir(profilesFolder()).removeRecursively();
        resetCurrentROM();
    }

    void methodTable()
    {
        const QList<QByteArray> expected {
            "runFindTexture(QStringList,QMap<QString,textureFormat>,bool,int)",
            "updateSelectedInfo()",
            "importTexture(QImage,int,QString,QByteArray)",
            "insertTexture(QString,fileTreeFile*)",
            "open()",
            "openRecentFile()",
            "save()",
            "saveAs()",
            "about()",
            "updateActions()",
            "parseXML(QString)",
            "createXMLFileInner(QXmlStreamWriter*,fileTreeDirectory*)",
            "createXMLFile(QString)",
            "clearFileTable()",
            "showContextMenu(QPoint)",
            "sortTreeView(int)",
            "saveTexture()",
            "replaceTexture()",
            "importFolder()",
            "importTexturePack()",
            "parseTexturePack(QString)",
            "togglePreviewBackground()",
            "loadTexture(QString,bool)",
            "loadTexture(QString)",
            "loadTexture()",
            "deleteItem()",
            "addFile()",
            "addTexture()",
            "openTextureTab()",
            "loadProfile()",
            "saveProfile()",
            "newProfile()",
            "deleteProfile()",
            "setAutosaveProfile(int)",
            "setAutoloadProfile(QString)",
            "applyTextureChanges()",
            "applyDirectoryChanges()",
            "saveDirectoryInfo()",
            "saveTextureInfo()",
            "expandTreeDirectory(QTreeWidgetItem*)",
            "renderGrid()",
        };
        const QMetaObject &meta = MainWindow::staticMetaObject;
        QCOMPARE(expected.size(), 41);
        QVERIFY(meta.methodCount() - meta.methodOffset() >= expected.size());
        for (int i = 0; i < expected.size(); ++i) {
            const QMetaMethod method = meta.method(meta.methodOffset() + i);
            QCOMPARE(method.methodSignature(), expected.at(i));
            QCOMPARE(method.methodType(), QMetaMethod::Slot);
        }
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            QCOMPARE(meta.method(i).methodType(), QMetaMethod::Slot);
        QCOMPARE(meta.method(meta.indexOfMethod("save()")).returnType(), int(QMetaType::Bool));
        QCOMPARE(meta.method(meta.indexOfMethod("saveAs()")).returnType(), int(QMetaType::Bool));
    }

    void startState()
    {
        MainWindow window;
        QCOMPARE(window.windowTitle(), appTitle + "No File Loaded[*]");
        QVERIFY(!window.isWindowModified());
        QCOMPARE(window.statusBar()->currentMessage(), QString("Ready"));
        QVERIFY(!QSettings().contains("recentFileList"));
        QVERIFY(!QSettings().contains("romPath"));
        QVERIFY(recentTexts(window).isEmpty());
        QVERIFY(window.acceptDrops());
        QVERIFY(!window.windowIcon().isNull());
    }

    void actions_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("icon");
        QTest::addColumn<int>("shortcut");
        QTest::addColumn<QString>("statusTip");
        const auto row = [](const char *name, const char *text, const char *icon, QKeySequence::StandardKey shortcut,
                            const char *statusTip) {
            QTest::newRow(name) << text << QStringLiteral(":/icons/") + icon << int(shortcut) << statusTip;
        };
        row("openAction", "Open...", "open", QKeySequence::Open, "Open a file");
        row("saveAction", "Save", "save", QKeySequence::Save, "Save the file to disk");
        row("saveAsAction", "Save As...", "save_as", QKeySequence::SaveAs, "Save the file under a new name");
        row("exitAction", "Exit", "exit", QKeySequence::Quit, "Exit the application");
        row("extractAction", "Extract", "save_image", QKeySequence::UnknownKey, "Extract the currently selected folder/texture");
        row("importImageAction", "Import Image", "replace_image", QKeySequence::Replace,
            "Import an image over the last selected texture");
        row("importFolderAction", "Import Folder", "folder_textures", QKeySequence::UnknownKey,
            "Import a folder of textures, replacing textures with the same name");
        row("importTexturePackAction", "Import Texture Pack", "archive", QKeySequence::UnknownKey, "Import a texture pack");
        row("findTextureAction", "Find Texture", "search_file", QKeySequence::Find,
            "Provide an image and the application will try to find it in the file");
        row("newFolderAction", "New Folder", "new_folder", QKeySequence::UnknownKey, "Create a new folder");
        row("newTextureAction", "New Texture", "new_file", QKeySequence::UnknownKey, "Create a new texture");
        row("deleteAction", "Delete", "delete", QKeySequence::Delete, "Delete the currently selected folder/texture");
        row("aboutAction", "About", "about", QKeySequence::UnknownKey, "Show the application's About box");
    }

    void actions()
    {
        QFETCH(QString, text);
        QFETCH(QString, icon);
        QFETCH(int, shortcut);
        QFETCH(QString, statusTip);
        MainWindow window;
        const QAction *tested = action(window, QTest::currentDataTag());
        QCOMPARE(tested->parent(), &window);
        QCOMPARE(tested->text(), text);
        QCOMPARE(tested->statusTip(), statusTip);
        QCOMPARE(tested->shortcuts(), QKeySequence::keyBindings(QKeySequence::StandardKey(shortcut)));
        QVERIFY(!picture(tested->icon()).isNull());
        QCOMPARE(picture(tested->icon()), picture(QIcon(icon)));
    }

    void menus()
    {
        MainWindow window;
        const QStringList file {
            "openAction",        "saveAction",        "saveAsAction",      "-", "recentFileAction1", "recentFileAction2",
            "recentFileAction3", "recentFileAction4", "recentFileAction5", "-", "exitAction"};
        const QStringList edit {
            "extractAction", "importImageAction", "-", "newFolderAction", "newTextureAction", "-", "deleteAction", "-"};
        const QList<QPair<QString, QStringList>> expected {
            {"File", file},
            {"Edit", edit},
            {"Import", {"importFolderAction", "importTexturePackAction"}},
            {"Search", {"findTextureAction"}},
            {"-", {}},
            {"Help", {"aboutAction"}},
        };
        const QList<QAction *> titles = window.menuBar()->actions();
        QCOMPARE(titles.size(), expected.size());
        for (int i = 0; i < titles.size(); ++i) {
            const QAction *title = titles.at(i);
            if (expected.at(i).first == "-") {
                QVERIFY(title->isSeparator());
                continue;
            }
            QCOMPARE(title->text(), expected.at(i).first);
            QCOMPARE(contentOf(title->menu()), expected.at(i).second);
        }
    }

    void toolBars()
    {
        MainWindow window;
        const QList<QPair<QString, QStringList>> expected {
            {"File nameToolBar", {"openAction", "saveAction", "saveAsAction"}},
            {"Edit editToolBar",
             {"extractAction", "importImageAction", "-", "newFolderAction", "newTextureAction", "-", "deleteAction"}},
            {"Import importToolBar", {"importFolderAction", "importTexturePackAction"}},
            {"Search searchToolBar", {"findTextureAction"}},
        };
        window.resize(1200, 600);
        window.show();
        int x = -1;
        const QList<QToolBar *> toolBars = window.findChildren<QToolBar *>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(toolBars.size(), expected.size());
        for (int i = 0; i < toolBars.size(); ++i) {
            const QToolBar *toolBar = toolBars.at(i);
            QCOMPARE(toolBar->windowTitle() + ' ' + toolBar->objectName(), expected.at(i).first);
            QCOMPARE(contentOf(toolBar), expected.at(i).second);
            QCOMPARE(toolBar->iconSize(), QSize(32, 32));
            QVERIFY(toolBar->x() > x);
            x = toolBar->x();
        }
    }

    void layout()
    {
        MainWindow window;
        auto *central = window.centralWidget();
        auto *box = qobject_cast<QHBoxLayout *>(central->layout());
        QVERIFY(box);
        QCOMPARE(box->contentsMargins(), QMargins(0, 0, 0, 0));
        QCOMPARE(box->count(), 1);
        auto *splitter = qobject_cast<QSplitter *>(box->itemAt(0)->widget());
        QVERIFY(splitter);
        QCOMPARE(splitter->orientation(), Qt::Horizontal);
        QCOMPARE(splitter->count(), 2);
        QVERIFY(qobject_cast<QTreeWidget *>(splitter->widget(0)));
        QVERIFY(!splitter->isCollapsible(0));
        QVERIFY(splitter->isCollapsible(1));

        auto *tabs = qobject_cast<QTabWidget *>(splitter->widget(1));
        QVERIFY(tabs);
        QCOMPARE(tabs->count(), 2);
        QCOMPARE(tabs->tabText(0), QString("Selection"));
        QCOMPARE(tabs->tabText(1), QString("Profile"));
        QVERIFY(tabs->tabIcon(0).isNull());
        QVERIFY(tabs->tabIcon(1).isNull());
        QVERIFY(tabs->isTabEnabled(0));
        QVERIFY(!tabs->isTabEnabled(1));
        QCOMPARE(tabs->currentIndex(), 0);
        QCOMPARE(tabs->widget(0)->objectName(), QString("selectionPanel"));
        QCOMPARE(tabs->widget(1)->objectName(), QString("profilePanel"));

        // The grid panel is kept, but shown nowhere.
        auto *grid = child<QWidget>(window, "gridPanel");
        QVERIFY(!splitter->isAncestorOf(grid));
        window.show();
        QVERIFY(!grid->isVisible());
    }

    void settingsComeBack()
    {
        QByteArray header, splitterState;
        QRect geometry;
        {
            MainWindow window;
            window.show();
            window.setGeometry(30, 40, 700, 500);
            window.addToolBar(Qt::BottomToolBarArea, child<QToolBar>(window, "importToolBar"));
            auto *tree = child<QTreeWidget>(window, "fileTree");
            tree->setColumnWidth(3, 123);
            auto *splitter = child<QSplitter>(window, "splitter");
            splitter->setSizes({260, 430});
            header = tree->header()->saveState();
            splitterState = splitter->saveState();
            geometry = window.geometry();
            QVERIFY(window.close());
        }
        const QSettings settings;
        QVERIFY(settings.contains("windowState"));
        QVERIFY(settings.contains("geometry"));
        QCOMPARE(settings.value("splitter.state").toByteArray(), splitterState);
        QCOMPARE(settings.value("treeWidget.header.state").toByteArray(), header);

        MainWindow window;
        QCOMPARE(window.toolBarArea(child<QToolBar>(window, "importToolBar")), Qt::BottomToolBarArea);
        QCOMPARE(window.toolBarArea(child<QToolBar>(window, "editToolBar")), Qt::TopToolBarArea);
        QCOMPARE(child<QTreeWidget>(window, "fileTree")->columnWidth(3), 123);
        window.show();
        QCOMPARE(window.geometry().size(), geometry.size());
        QCOMPARE(child<QSplitter>(window, "splitter")->saveState(), splitterState);
    }

    void garbageInSettingsLeavesTheDefaults()
    {
        for (const char *key : {"windowState", "geometry", "splitter.state", "treeWidget.header.state"})
            QSettings().setValue(key, QByteArray("garbage"));
        MainWindow window;
        QCOMPARE(child<QTreeWidget>(window, "fileTree")->columnWidth(0), 296);
        QCOMPARE(child<QSplitter>(window, "splitter")->orientation(), Qt::Horizontal);
        window.show();
        QVERIFY(window.width() > 400);
    }

    void recentFiles()
    {
        MainWindow window;
        MainWindow other;
        for (int i = 1; i <= 6; ++i)
            window.setCurrentFile(QStringLiteral("/roms/%1.z64").arg(i));
        QCOMPARE(QSettings().value("recentFileList").toStringList(),
                 QStringList({"/roms/6.z64", "/roms/5.z64", "/roms/4.z64", "/roms/3.z64", "/roms/2.z64"}));
        window.setCurrentFile("/roms/4.z64");
        const QStringList expected {"&1 /roms/4.z64", "&2 /roms/6.z64", "&3 /roms/5.z64", "&4 /roms/3.z64", "&5 /roms/2.z64"};
        QCOMPARE(recentTexts(window), expected);
        QCOMPARE(recentTexts(other), expected);
        QCOMPARE(window.windowTitle(), appTitle + "/roms/4.z64[*]");
        QCOMPARE(other.windowTitle(), appTitle + "No File Loaded[*]");
        QCOMPARE(action(window, "recentFileAction2")->data().toString(), QString("/roms/6.z64"));
    }

    void recentFilesCleaned()
    {
        // What an older or a strange settings file may hold: too many entries, and one twice.
        QSettings().setValue("recentFileList", QStringList({"a", "b", "a", "c", "d", "e", "f", "g"}));
        MainWindow window;
        QCOMPARE(recentTexts(window), QStringList({"&1 a", "&2 b", "&3 a", "&4 c", "&5 d"}));
        window.setCurrentFile("a");
        QCOMPARE(QSettings().value("recentFileList").toStringList(), QStringList({"a", "b", "c", "d", "e"}));
    }

    void recentFileWithPlaceholders()
    {
        MainWindow window;
        window.setCurrentFile("/roms/%1 %2 %3.z64");
        QCOMPARE(recentTexts(window), QStringList("&1 /roms/%1 %2 %3.z64"));
    }

    void recentFilesHidden()
    {
        MainWindow window;
        window.setCurrentFile("a");
        window.setCurrentFile("b");
        QSettings().setValue("recentFileList", QStringList("b"));
        window.updateRecentFileActions();
        QCOMPARE(recentTexts(window), QStringList("&1 b"));
    }

    void openRecentAsksNothing()
    {
        const QTemporaryDir folder;
        const QString path = writtenFile(folder, "a.bin", QByteArray(10, 'x'));
        MainWindow window;
        window.setCurrentFile(path);
        window.setWindowModified(true);
        action(window, "recentFileAction1")->trigger();
        QCOMPARE(currentROM.data, QByteArray(10, 'x'));
        QVERIFY(!window.isWindowModified());
    }

    void openRecentWithoutActionDoesNothing()
    {
        MainWindow window;
        window.openRecentFile();
        QVERIFY(!currentROM.loaded);
    }

    void currentFileClearsModified()
    {
        MainWindow window;
        window.setWindowModified(true);
        window.setCurrentFile(QString());
        QVERIFY(!window.isWindowModified());
        QVERIFY(!QSettings().contains("recentFileList"));
    }

    void actionStates_data()
    {
        QTest::addColumn<bool>("loaded");
        QTest::addColumn<QStringList>("clicks"); // rows selected one after the other
        QTest::addColumn<QString>("enabled"); // of Extract, Import Image, Import Folder, Import Texture Pack, New Folder,
                                              // New Texture, Find Texture, Delete
        const auto rows = [](const char *name, const QStringList &clicks, const char *whenLoaded, const char *whenNot) {
            QTest::addRow("%s, loaded", name) << true << clicks << whenLoaded;
            QTest::addRow("%s, not loaded", name) << false << clicks << whenNot;
        };
        rows("nothing", {}, "---p----", "--------");
        rows("root", {"root"}, "eifpnts-", "ei--nts-");
        rows("folder", {"folder"}, "eifpntsd", "ei--ntsd");
        rows("known texture", {"known"}, "eifpntsd", "ei--ntsd");
        rows("unknown texture", {"unknown"}, "--fpntsd", "----ntsd");
        rows("empty format", {"empty"}, "--fpntsd", "----ntsd");
        rows("upper-case format", {"upper"}, "--fpntsd", "----ntsd");
        rows("jpeg", {"jpeg"}, "eifpntsd", "ei--ntsd");
        rows("known texture under the root", {"top"}, "eifpntsd", "ei--ntsd");
        rows("folder after known texture", {"known", "folder"}, "eifpntsd", "ei--ntsd");
        rows("folder after unknown texture", {"unknown", "folder"}, "e-fpntsd", "e---ntsd");
        rows("root after known texture", {"known", "root"}, "eifpnts-", "ei--nts-");
        rows("root after unknown texture", {"unknown", "root"}, "e-fpnts-", "e---nts-");
        rows("nothing after known texture", {"known", "nothing"}, "---p----", "--------");
        rows("nothing after folder", {"folder", "nothing"}, "---p----", "--------");
    }

    void actionStates()
    {
        QFETCH(bool, loaded);
        QFETCH(QStringList, clicks);
        QFETCH(QString, enabled);
        TableWindow window;
        fileTreeDirectory *folder = window.addFolder(currentROM.root, "folder", 0x1000);
        window.addTexture(currentROM.root, "top", 0, "i8");
        window.addTexture(folder, "known", 0, "rgb5a1");
        window.addTexture(folder, "unknown", 0, "bc7");
        window.addTexture(folder, "empty", 0, "");
        window.addTexture(folder, "upper", 0, "RGBA32");
        window.addTexture(folder, "jpeg", 0, "jpeg");
        currentROM.loaded = loaded;
        window->updateActions();
        for (const QString &click : clicks) {
            if (click == "nothing")
                window.tree()->clearSelection();
            else if (click == "root")
                window.select(currentROM.root);
            else if (click == "folder")
                window.select(folder);
            else if (click == "top")
                window.select(currentROM.root->files.at(0));
            else
                window.select(folder->getFileByName(click));
        }

        const char *const names[] = {"extractAction",   "importImageAction", "importFolderAction", "importTexturePackAction",
                                     "newFolderAction", "newTextureAction",  "findTextureAction",  "deleteAction"};
        QString found;
        for (int i = 0; i < 8; ++i)
            found += action(*window.get(), names[i])->isEnabled() ? QLatin1Char("eifpntsd"[i]) : QLatin1Char('-');
        QCOMPARE(found, enabled);
        for (const char *name : {"saveAction", "saveAsAction"})
            QCOMPARE(action(*window.get(), name)->isEnabled(), loaded);
        for (const char *name : {"openAction", "exitAction", "aboutAction"})
            QVERIFY(action(*window.get(), name)->isEnabled());
    }

    void selectedTypeIsLogged()
    {
        TableWindow window;
        window.select(currentROM.root);
        const MessageCapture log;
        window->updateActions();
        QCOMPARE(log.textsOf("void MainWindow::updateActions()"), QStringList("1"));
        window.tree()->clearSelection();
        QCOMPARE(log.textsOf("void MainWindow::updateActions()").last(), QString("0"));
    }

    void openDialog()
    {
        const QTemporaryDir folder;
        const QString path = writtenFile(folder, "a.bin", QByteArray(10, 'x'));
        MainWindow window;
        QSettings().setValue("romPath", folder.filePath("earlier.z64"));
        FileDialogAnswer answer(path);
        action(window, "openAction")->trigger();
        QVERIFY(answer.answered());
        QCOMPARE(answer.title, QString("Open File"));
        QCOMPARE(answer.filters, QStringList("Any files (*)"));
        QCOMPARE(answer.directory, QDir(folder.path()).absolutePath());
        QCOMPARE(answer.acceptMode, QFileDialog::AcceptOpen);
        QCOMPARE(answer.fileMode, QFileDialog::ExistingFile);
        QCOMPARE(currentROM.data, QByteArray(10, 'x'));
        QCOMPARE(window.windowTitle(), appTitle + path + "[*]");
    }

    void openWithoutEarlierPath()
    {
        MainWindow window;
        FileDialogAnswer answer((QString()));
        window.open();
        QVERIFY(answer.answered());
        QCOMPARE(QSettings().value("romPath").toString(), QStandardPaths::displayName(QStandardPaths::DesktopLocation));
        QVERIFY(!currentROM.loaded);
    }

    void openAsksFirst_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("dialogComes");
        QTest::addColumn<bool>("saved");
        QTest::newRow("save") << "Save" << true << true;
        QTest::newRow("discard") << "Discard" << true << false;
        QTest::newRow("cancel") << "Cancel" << false << false;
        QTest::newRow("escape") << "" << false << false;
    }

    void openAsksFirst()
    {
        QFETCH(QString, button);
        QFETCH(bool, dialogComes);
        QFETCH(bool, saved);
        const QTemporaryDir folder;
        const QString path = writtenFile(folder, "a.bin", "old");
        MainWindow window;
        window.loadFile(path);
        currentROM.data = "new";
        window.setWindowModified(true);

        BoxAnswer box(button.isEmpty() ? QString() : QMessageBox::tr(qPrintable(button)));
        FileDialogAnswer dialog((QString()));
        window.open();
        QVERIFY(box.answered());
        QCOMPARE(box.title, QString("Application"));
        QCOMPARE(box.text, QString("The file has been modified.\nDo you want to save your changes?"));
        QCOMPARE(box.icon, QMessageBox::Warning);
        QCOMPARE(box.buttons.size(), 3);
        QCOMPARE(dialog.answered(), dialogComes);
        QCOMPARE(contentOf(path), QByteArray(saved ? "new" : "old"));
        QCOMPARE(window.isWindowModified(), !saved);
    }

    void nothingToAskWhenUnmodified()
    {
        MainWindow window;
        QVERIFY(window.maybeSave());
    }

    void failedSaveKeepsTheChanges()
    {
        const QTemporaryDir folder;
        MainWindow window;
        window.loadFile(writtenFile(folder, "a.bin", "old"));
        QSettings().setValue("romPath", folder.filePath("missing/a.bin"));
        window.setWindowModified(true);
        QStringList boxes;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&boxes] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box || !box->isVisible())
                return;
            boxes << box->text().section(':', 0, 0);
            const QMessageBox::StandardButton save = QMessageBox::Save;
            QTest::mouseClick(box->button(save) ? box->button(save) : box->button(QMessageBox::Ok), Qt::LeftButton);
        });
        timer.start(1);
        QVERIFY(!window.maybeSave());
        QCOMPARE(boxes,
                 QStringList({"The file has been modified.\nDo you want to save your changes?",
                              "Cannot write file " + folder.filePath("missing/a.bin")}));
        QVERIFY(window.isWindowModified());
    }

    void saveGoesToTheLastPath()
    {
        const QTemporaryDir folder;
        MainWindow window;
        window.loadFile(writtenFile(folder, "a.bin", "old"));
        currentROM.data = "new";
        action(window, "saveAction")->trigger();
        QCOMPARE(contentOf(folder.filePath("a.bin")), QByteArray("new"));
    }

    void saveWithoutPathAsks()
    {
        MainWindow window;
        loadIntoCurrentROM("new");
        currentROM.baseName = "basename";
        FileDialogAnswer answer((QString()));
        QVERIFY(!window.save());
        QVERIFY(answer.answered());
        QCOMPARE(answer.title, QString("Save File"));
        QCOMPARE(answer.filters, QStringList("Any files (*)"));
        QCOMPARE(answer.acceptMode, QFileDialog::AcceptSave);
        QCOMPARE(QSettings().value("romPath").toString(),
                 QStandardPaths::displayName(QStandardPaths::DesktopLocation) + "/basename");
        QCOMPARE(answer.typedName, QString("basename"));
    }

    void saveAs()
    {
        const QTemporaryDir folder;
        MainWindow window;
        window.loadFile(writtenFile(folder, "a.bin", "old"));
        window.updateActions();
        window.setWindowModified(true);
        const QString chosen = folder.filePath("b.bin");
        FileDialogAnswer answer(chosen);
        action(window, "saveAsAction")->trigger();
        QVERIFY(answer.answered());
        QCOMPARE(answer.directory, QDir(folder.path()).absolutePath());
        QCOMPARE(answer.typedName, QString("a.bin"));
        QCOMPARE(contentOf(chosen), QByteArray("old"));
        QCOMPARE(QSettings().value("romPath").toString(), chosen);
        QCOMPARE(window.windowTitle(), appTitle + chosen + "[*]");
        QVERIFY(!window.isWindowModified());
    }

    void nothingLoadedOverwritesNothing()
    {
        const QTemporaryDir folder;
        const QString path = writtenFile(folder, "a.bin", "of an earlier run");
        QSettings().setValue("romPath", path);
        MainWindow window;
        QVERIFY(!window.save());
        QCOMPARE(contentOf(path), QByteArray("of an earlier run"));
    }

    void closing_data()
    {
        QTest::addColumn<bool>("autosave");
        QTest::addColumn<bool>("modified");
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("closes");
        QTest::newRow("plain") << false << false << "" << true;
        QTest::newRow("autosave") << true << false << "" << true;
        QTest::newRow("autosave, cancel") << true << true << "Cancel" << false;
        QTest::newRow("autosave, discard") << true << true << "Discard" << true;
        QTest::newRow("autosave, save") << true << true << "Save" << true;
        QTest::newRow("cancel") << false << true << "Cancel" << false;
        QTest::newRow("discard") << false << true << "Discard" << true;
    }

    void closing()
    {
        QFETCH(bool, autosave);
        QFETCH(bool, modified);
        QFETCH(QString, button);
        QFETCH(bool, closes);
        const QTemporaryDir folder;
        MainWindow window;
        window.show();
        window.loadFile(writtenFile(folder, "game.bin", "12345"));
        currentROM.autosave = autosave;
        window.setWindowModified(modified);
        const QString fileList = profilesFolder() + "game/default/fileList.xml";
        QVERIFY(!QFile::exists(fileList));

        bool writtenBeforeTheQuestion = false;
        DialogAnswer<QMessageBox> answer([&](QMessageBox *question) {
            writtenBeforeTheQuestion = QFile::exists(fileList);
            const auto which = button == "Save" ? QMessageBox::Save
                : button == "Discard"           ? QMessageBox::Discard
                                                : QMessageBox::Cancel;
            QTest::mouseClick(question->button(which), Qt::LeftButton);
        });
        QCOMPARE(window.close(), closes);
        QCOMPARE(answer.answered(), modified);
        QCOMPARE(window.isVisible(), !closes);
        QCOMPARE(QFile::exists(fileList), autosave);
        if (modified)
            QCOMPARE(writtenBeforeTheQuestion, autosave);
        QCOMPARE(QSettings().contains("geometry"), closes);
    }

    void closingWithNothingLoadedWritesNoList()
    {
        MainWindow window;
        currentROM.autosave = true;
        QVERIFY(window.close());
        QVERIFY(!QFile::exists(profilesFolder()));
    }

    void exitAction()
    {
        MainWindow window;
        window.show();
        action(window, "exitAction")->trigger();
        QVERIFY(!window.isVisible());
    }

    void unsavedTableIsNotLostSilently_data()
    {
        QTest::addColumn<bool>("close");
        QTest::newRow("stay") << false;
        QTest::newRow("close") << true;
    }

    void unsavedTableIsNotLostSilently()
    {
        QFETCH(bool, close);
        const QTemporaryDir folder;
        MainWindow window;
        window.loadFile(writtenFile(folder, "game.bin", "12345"));
        child<QLabel>(window, "unsavedFileList")->show();
        // A folder stands where the list would be written.
        QVERIFY(QDir().mkpath(profilesFolder() + "game/default/fileList.xml/x"));
        QStringList titles;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box || !box->isVisible())
                return;
            titles << box->windowTitle();
            box->done(close && box->button(QMessageBox::Close) ? int(QMessageBox::Close) : int(QMessageBox::Cancel));
        });
        timer.start(1);
        QCOMPARE(window.close(), close);
        QCOMPARE(titles, QStringList({"createXMLFile", "Application"}));
    }

    void dragEnterTakesOneFile()
    {
        const QTemporaryDir folder;
        const QString a = writtenFile(folder, "a.bin", "a");
        const QString b = writtenFile(folder, "b.bin", "b");
        MainWindow window;
        const QString function = "virtual void MainWindow::dragEnterEvent(QDragEnterEvent*)";
        const MessageCapture log;
        QVERIFY(dragEnter(&window, MimeFiles({a})));
        QVERIFY(!dragEnter(&window, MimeFiles({a, b})));
        QVERIFY(!dragEnter(&window, MimeFiles({folder.path()})));
        QCOMPARE(log.texts(), QStringList({'"' + a + '"', '"' + a + '"', '"' + folder.path() + '"'}));
        QCOMPARE(log.textsOf(function), log.texts());

        QMimeData text;
        text.setText("no file");
        QVERIFY(!dragEnter(&window, text));
        QCOMPARE(log.all().size(), 3);
        QMimeData noUrl;
        noUrl.setData("text/uri-list", "");
        QVERIFY(!dragEnter(&window, noUrl));
        QMimeData remote;
        remote.setUrls({QUrl("https://quillary.example/a.z64")});
        QVERIFY(!dragEnter(&window, remote));
    }

    void dragMoveFollowsTheTree()
    {
        const QTemporaryDir folder;
        const MimeFiles mime({writtenFile(folder, "a.bin", "a")});
        MainWindow window;
        // With the tree on the right its rectangle does not begin at the left edge of its parent, and the difference of the two
        // coordinate systems shows.
        window.setLayoutDirection(Qt::RightToLeft);
        window.resize(1200, 560);
        window.move(0, 0);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        auto *tree = child<QTreeWidget>(window, "fileTree");
        child<QSplitter>(window, "splitter")->setSizes({900, 200});
        const QRect rectangle = tree->geometry();
        QVERIFY(rectangle.left() > 0);
        QVERIFY(rectangle.left() < tree->width());
        QVERIFY(dragEnter(&window, mime));

        const auto accepts = [&](const QPoint &inTree) {
            QCursor::setPos(tree->mapToGlobal(inTree));
            QDragMoveEvent event(tree->mapTo(&window, inTree), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(&window, &event);
            return event.isAccepted();
        };
        const int y = tree->height() / 2;
        QVERIFY(accepts(QPoint(rectangle.left(), y)));
        QVERIFY(!accepts(QPoint(rectangle.left() - 1, y)));
        QVERIFY(accepts(QPoint(tree->width() - 1, y)));
        QVERIFY(accepts(QPoint(rectangle.left(), rectangle.top())));
        QVERIFY(!accepts(QPoint(rectangle.left(), rectangle.top() - 1)));
        QVERIFY(accepts(QPoint(rectangle.left(), rectangle.bottom())));
        QVERIFY(!accepts(QPoint(rectangle.left(), rectangle.bottom() + 1)));
    }

    void dropLoadsWithoutAQuestion()
    {
        const QTemporaryDir folder;
        const QString path = writtenFile(folder, "a.bin", "dropped");
        MainWindow window;
        window.setWindowModified(true);
        const MimeFiles mime({path});
        QVERIFY(dragEnter(&window, mime));
        const MessageCapture log;
        drop(&window, mime);
        QVERIFY(log.texts().contains("Dropping \"" + path + '"'));
        QCOMPARE(currentROM.data, QByteArray("dropped"));
        QVERIFY(!window.isWindowModified());
    }

    void noDropWhileADialogAsks()
    {
        const QTemporaryDir folder;
        const MimeFiles mime({writtenFile(folder, "a.bin", "dropped")});
        MainWindow window;
        window.setWindowModified(true);
        QVERIFY(dragEnter(&window, mime));
        bool taken = true;
        DialogAnswer<QMessageBox> answer([&](QMessageBox *box) {
            drop(&window, mime);
            taken = dragEnter(&window, mime);
            box->done(QMessageBox::Cancel);
        });
        QVERIFY(!window.close());
        QVERIFY(answer.answered());
        QVERIFY(!taken);
        QVERIFY(!currentROM.loaded);
    }

    void about()
    {
        MainWindow window;
        BoxAnswer box("OK");
        action(window, "aboutAction")->trigger();
        QVERIFY(box.answered());
        QCOMPARE(box.title, QString("About Quillary"));
        QVERIFY(Qt::mightBeRichText(box.text));
        const QStringList lines = box.text.split("<br>");
        QCOMPARE(lines.size(), 7);
        QCOMPARE(lines.at(0), QString("<b>Quillary</b>"));
        QCOMPARE(lines.at(1), QString());
        QVERIFY(lines.at(2).contains("very first application"));
        QVERIFY(lines.at(2).contains("issues"));
        QVERIFY(lines.at(3).contains("backup"));
        QVERIFY(lines.at(4).contains("web site"));
        QCOMPARE(lines.at(5), QString());
        QVERIFY(lines.at(6).contains("Brimholt"));
        QVERIFY(lines.at(6).contains("2014"));
    }

    void newActionsReachTheTable()
    {
        TableWindow window;
        window.select(currentROM.root);
        action(*window.get(), "newFolderAction")->trigger();
        QCOMPARE(currentROM.root->directories.size(), 1);
        window.select(currentROM.root);
        action(*window.get(), "newTextureAction")->trigger();
        QCOMPARE(currentROM.root->files.size(), 1);
    }

    void deleteActionAsks()
    {
        TableWindow window;
        window.select(window.addFolder(currentROM.root, "folder", 0));
        BoxAnswer box("No");
        action(*window.get(), "deleteAction")->trigger();
        QVERIFY(box.answered());
        QCOMPARE(box.title, QString("Delete"));
    }

    void fileActionsAskForAFile_data()
    {
        QTest::addColumn<QString>("title");
        QTest::newRow("extractAction") << "Save File";
        QTest::newRow("importImageAction") << "Choose texture";
        QTest::newRow("importFolderAction") << "Select Directory";
        QTest::newRow("importTexturePackAction") << "Select Directory";
    }

    void fileActionsAskForAFile()
    {
        QFETCH(QString, title);
        TableWindow window;
        window.select(window.addTexture(currentROM.root, "t", 0, "i8"));
        FileDialogAnswer answer((QString()));
        action(*window.get(), QTest::currentDataTag())->trigger();
        QVERIFY(answer.answered());
        QCOMPARE(answer.title, title);
    }

    void folderAndPackAreToldApart()
    {
        // A folder of pictures by name is no texture pack.
        const QTemporaryDir folder;
        QImage white(32, 32, QImage::Format_ARGB32);
        white.fill(Qt::white);
        QVERIFY(white.save(folder.filePath("t.png")));
        for (const char *name : {"importTexturePackAction", "importFolderAction"}) {
            TableWindow window;
            window.select(window.addTexture(currentROM.root, "t", 0x100, "i8"));
            window.select(currentROM.root);
            FileDialogAnswer answer(folder.path());
            DialogAnswer<QMessageBox> report([](QMessageBox *box) { box->done(QMessageBox::Ok); });
            action(*window.get(), name)->trigger();
            QVERIFY(answer.answered());
            QCOMPARE(currentROM.data.mid(0x100, 1024) == QByteArray(1024, char(0xFF)),
                     name == QLatin1String("importFolderAction"));
        }
    }

    void deleteKeyBelongsToTheFieldWithTheFocus()
    {
        TableWindow window;
        fileTreeFile *texture = window.addTexture(currentROM.root, "name", 0, "i8");
        window.show();
        window.select(texture);
        const QList<QLineEdit *> fields = window->findChildren<QLineEdit *>();
        QLineEdit *field = nullptr;
        for (QLineEdit *candidate : fields) {
            if (candidate->text() == "name" && !candidate->isReadOnly())
                field = candidate;
        }
        QVERIFY(field);
        QApplication::setActiveWindow(window.get());
        field->setFocus();
        field->setCursorPosition(0);
        QTest::keyClick(field, Qt::Key_Delete);
        QCOMPARE(field->text(), QString("ame"));
        QCOMPARE(currentROM.root->files.size(), 1);
    }
};
}

QTEST_MAIN(MainWindowTest)
#include "tst_mainwindow.moc"
