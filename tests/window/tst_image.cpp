// SPDX-License-Identifier: MIT
#include "support/dialogs.h"
#include "support/messages.h"
#include "support/tablewindow.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QProgressDialog>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtEndian>

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

namespace
{
const QString loadSignature = QStringLiteral("void MainWindow::loadFile(const QString&)");

QString profilesFolder()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/profiles/");
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

QLabel *notice(const MainWindow &window)
{
    return window.findChild<QLabel *>(QStringLiteral("unsavedFileList"));
}

/// Bytes without a signature; the identifier in the place of a header's.
QByteArray noCartridge(int size)
{
    QByteArray bytes = cartridgeImage(size, "ABCD", 200);
    bytes[0] = 0;
    return bytes;
}

/// Answers one message box after the other with the buttons in \a answers, Ok or else Cancel where they are used up.
class BoxSequence : public QObject
{
public:
    explicit BoxSequence(const QStringList &answers = QStringList()) : m_answers(answers)
    {
        connect(&m_timer, &QTimer::timeout, this, [this] { look(); });
        m_timer.start(1);
    }

    QStringList texts;

private:
    void look()
    {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        texts << box->windowTitle() + QStringLiteral(": ") + box->text();
        const QString wanted = m_answers.isEmpty() ? QString() : m_answers.takeFirst();
        const QList<QAbstractButton *> buttons = box->buttons();
        for (QAbstractButton *button : buttons) {
            if (button->text().remove('&') == wanted)
                return QTest::mouseClick(button, Qt::LeftButton);
        }
        box->reject();
    }

    QTimer m_timer;
    QStringList m_answers;
};

/// Runs \a work once in the events that a conversion's progress dialog handles. That it handles any takes a dialog that shows at
/// once, as it does for a slow conversion.
class DuringConversion : public QObject
{
public:
    explicit DuringConversion(std::function<void(QProgressDialog *)> work) : m_work(std::move(work))
    {
        qApp->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *dialog = qobject_cast<QProgressDialog *>(watched);
        // The dialog is complete when its cancel button goes.
        if (dialog && event->type() == QEvent::ChildRemoved)
            dialog->setMinimumDuration(0);
        if (dialog && event->type() == QEvent::Show)
            QTimer::singleShot(0, dialog, [this, dialog] { m_work(dialog); });
        return false;
    }

private:
    std::function<void(QProgressDialog *)> m_work;
};

/// Clicks on the name in the first row of the file table.
void clickFirstRow(QTreeWidget *tree)
{
    const QRect row = tree->visualItemRect(tree->topLevelItem(0));
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(row.left() + 40, row.center().y()));
}

class ImageTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    QString path(const QString &name) const { return m_folder.filePath(name); }

    QString writtenFile(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

private slots:
    void initTestCase() { setApplicationIdentity(); }

    void init()
    {
        QSettings().clear();
        QDir(profilesFolder()).removeRecursively();
        QDir(m_folder.path()).removeRecursively();
        QVERIFY(QDir().mkpath(m_folder.path()));
        resetCurrentROM();
    }

    void cleanup() { QVERIFY(!QGuiApplication::overrideCursor()); }

    void loading_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QString>("log");
        QTest::addColumn<QString>("idFirst"); // when the store holds no dialog path yet
        QTest::addColumn<QString>("idLater");
        const QByteArray image = cartridgeImage(4096, "NQLE", 2);
        const QString base = "game.one";
        QTest::newRow("z64") << image << image << "This is a z64 ROM."
                             << "NQLE2"
                             << "NQLE2";
        QTest::newRow("v64") << withReversedUnits(image, 2) << image << "This is a v64 ROM."
                             << "NQLE2"
                             << "NQLE2";
        QTest::newRow("n64") << withReversedUnits(image, 4) << image << "This is a n64 ROM."
                             << "NQLE2"
                             << "NQLE2";
        for (const int size : {68, 72, 96, 100, 104, 1000}) {
            const QByteArray small = cartridgeImage(size, "ABCD", 255);
            QTest::addRow("z64, %d bytes", size) << small << small << "This is a z64 ROM."
                                                 << "ABCD255"
                                                 << "ABCD255";
            QTest::addRow("v64, %d bytes", size) << withReversedUnits(small, 2) << small << "This is a v64 ROM."
                                                 << "ABCD255"
                                                 << "ABCD255";
            QTest::addRow("n64, %d bytes", size) << withReversedUnits(small, 4) << small << "This is a n64 ROM."
                                                 << "ABCD255"
                                                 << "ABCD255";
        }
        const QByteArray unknown = noCartridge(400);
        QTest::newRow("no signature") << unknown << unknown << "This is not a ROM." << base << "ABCD200";
        const QByteArray shortName = cartridgeImage(400, QByteArray("A\0CD", 4), 0);
        QTest::newRow("short identifier") << shortName << shortName << "This is a z64 ROM."
                                          << "A0"
                                          << "A0";
        const QByteArray undetected[] = {QByteArray(),       QByteArray(1, 'x'), cartridgeImage(64),
                                         cartridgeImage(65), cartridgeImage(66), cartridgeImage(67),
                                         cartridgeImage(69), cartridgeImage(99), cartridgeImage(4097)};
        for (const QByteArray &bytes : undetected)
            QTest::addRow("%d bytes", bytes.size()) << bytes << bytes << QString() << base << base;
    }

    void loading()
    {
        QFETCH(QByteArray, file);
        QFETCH(QByteArray, data);
        QFETCH(QString, log);
        QFETCH(QString, idFirst);
        QFETCH(QString, idLater);
        const QString name = writtenFile("game.one.bin", file);
        for (const bool first : {true, false}) {
            resetCurrentROM();
            MainWindow window;
            window.setWindowModified(true);
            const MessageCapture capture;
            window.loadFile(name);
            QCOMPARE(currentROM.data, data);
            QVERIFY(currentROM.loaded);
            QCOMPARE(currentROM.baseName, QString("game.one"));
            QCOMPARE(currentROM.romID, first ? idFirst : idLater);
            QCOMPARE(capture.textsOf(loadSignature), log.isEmpty() ? QStringList() : QStringList(log));
            QCOMPARE(window.windowTitle(), "Quillary 1.0.1 - " + name + "[*]");
            QVERIFY(!window.isWindowModified());
            QCOMPARE(window.statusBar()->currentMessage(), QString("File loaded"));
            auto *tabs = window.findChild<QTabWidget *>("tabWidget");
            QVERIFY(tabs->isTabEnabled(0) && tabs->isTabEnabled(1));
            QVERIFY(window.findChild<QAction *>("saveAction")->isEnabled());
            QVERIFY(QDir(profilesFolder() + currentROM.romID + "/default").exists());
            QCOMPARE(currentROM.profileName, QString("default"));
            QCOMPARE(currentROM.root->size, data.size());
            const QSettings settings;
            QCOMPARE(settings.value("romPath").toString(), name);
            QCOMPARE(settings.value("recentFileList").toStringList(), QStringList(name));
            QCOMPARE(settings.value("fileDialogPath").toString(), QFileInfo(name).absolutePath() + '/');
        }
    }

    void unpackedBlocksAreKnownByTheirNames()
    {
        QSettings().setValue("fileDialogPath", "/elsewhere/");
        MainWindow window;
        window.loadFile(writtenFile("ABCD1-0x00001000.yay0", noCartridge(400)));
        QCOMPARE(currentROM.romID, QString("ABCD1-0x00001000"));
        window.loadFile(writtenFile("ABCD1-0x00001000.bin", noCartridge(400)));
        QCOMPARE(currentROM.romID, QString("ABCD200"));
        window.loadFile(writtenFile("ABCD1-0x00001000.yay0", cartridgeImage(400, "ABCD", 255)));
        QCOMPARE(currentROM.romID, QString("ABCD255"));
    }

    /// Already the line that tells the byte order finds the image in its place.
    void imageIsInPlaceBeforeItsOrderIsKnown()
    {
        static QByteArray data;
        static QString name;
        static bool loaded;
        data.clear();
        MainWindow window;
        const QByteArray file = withReversedUnits(cartridgeImage(400), 2);
        const QtMessageHandler before = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
            if (text != "This is a v64 ROM.")
                return;
            data = QByteArray(currentROM.data.constData(), currentROM.data.size());
            name = currentROM.baseName;
            loaded = currentROM.loaded;
        });
        window.loadFile(writtenFile("game.one.v64", file));
        qInstallMessageHandler(before);
        QCOMPARE(data, file);
        QCOMPARE(name, QString("game.one"));
        QVERIFY(loaded);
        QCOMPARE(currentROM.data, cartridgeImage(400));
    }

    void dialogPathIsOnlySetWhenMissing()
    {
        QSettings().setValue("fileDialogPath", "/elsewhere/");
        MainWindow window;
        window.loadFile(writtenFile("a.z64", cartridgeImage(128)));
        QCOMPARE(QSettings().value("fileDialogPath").toString(), QString("/elsewhere/"));
    }

    void largeImages_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("unit");
        QTest::newRow("v64, 8 MiB") << 8 * 1024 * 1024 << 2;
        QTest::newRow("n64, 8 MiB") << 8 * 1024 * 1024 << 4;
        QTest::newRow("v64, 64 MiB") << 64 * 1024 * 1024 << 2;
        QTest::newRow("n64, 64 MiB") << 64 * 1024 * 1024 << 4;
    }

    void largeImages()
    {
        QFETCH(int, size);
        QFETCH(int, unit);
        // A header of noise, and words that tell every position from its neighbours.
        QByteArray image = cartridgeImage(4096);
        image.resize(size);
        for (int i = 4096; i < size; i += 4)
            qToBigEndian<quint32>(quint32(i) * 2654435761u, image.data() + i);
        const QString name = writtenFile("big.bin", withReversedUnits(image, unit));
        MainWindow window;
        window.loadFile(name);
        QVERIFY(currentROM.data == image);
    }

    void progressDialog_data()
    {
        QTest::addColumn<int>("unit");
        QTest::addColumn<QString>("label");
        QTest::newRow("v64") << 2 << "Converting ROM from Byteswapped Big Endian to Big Endian.";
        QTest::newRow("n64") << 4 << "Converting ROM from Little Endian to Big Endian.";
    }

    void progressDialog()
    {
        QFETCH(int, unit);
        QFETCH(QString, label);
        const QString name = writtenFile("a.bin", withReversedUnits(cartridgeImage(1000), unit));
        MainWindow window;
        bool looked = false;
        const DuringConversion visitor([&](QProgressDialog *dialog) {
            looked = true;
            QCOMPARE(dialog->parent(), &window);
            QCOMPARE(dialog->labelText(), label);
            QCOMPARE(dialog->minimum(), 0);
            QCOMPARE(dialog->maximum(), 1000);
            QVERIFY(dialog->findChildren<QPushButton *>().isEmpty());
            QCOMPARE(dialog->windowModality(), Qt::WindowModal);
            QVERIFY(!(dialog->windowFlags() & Qt::WindowContextHelpButtonHint));
            QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
            // The image is there, and is converted in place.
            QVERIFY(currentROM.loaded);
            QCOMPARE(currentROM.baseName, QStringLiteral("a"));
            QCOMPARE(currentROM.data.size(), 1000);
            QCOMPARE(currentROM.romID, QString());
            // It cannot be cancelled, whatever the user presses.
            QTest::keyClick(dialog, Qt::Key_Escape);
            QVERIFY(dialog->isVisible());
            QVERIFY(!dialog->wasCanceled());
        });
        window.loadFile(name);
        QVERIFY(looked);
        QVERIFY(!window.findChild<QProgressDialog *>());
        QCOMPARE(currentROM.data, cartridgeImage(1000));
    }

    void nothingGetsInDuringAConversion()
    {
        const QString first = writtenFile("first.bin", "first");
        const QString name = writtenFile("a.v64", withReversedUnits(cartridgeImage(1000), 2));
        MainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.loadFile(first);
        QMimeData mime;
        mime.setUrls({QUrl::fromLocalFile(first)});
        bool looked = false;
        bool typed = false;
        const DuringConversion visitor([&](QProgressDialog *) {
            looked = true;
            QVERIFY(!window.close());
            QVERIFY(window.isVisible());
            // None of these may bring up a dialog, which would wait here for ever, nor touch a file.
            window.findChild<QAction *>("openAction")->trigger();
            window.findChild<QAction *>("recentFileAction1")->trigger();
            QVERIFY(!window.save());
            QVERIFY(!window.saveAs());
            QVERIFY(!window.saveFile(path("other.bin")));
            QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(&window, &enter);
            QVERIFY(!enter.isAccepted());
            auto *tree = window.findChild<QTreeWidget *>("fileTree");
            clickFirstRow(tree);
            typed = tree->selectedItems().size() > 0;
            QTest::keyClick(&window, Qt::Key_O, Qt::ControlModifier);
        });
        window.loadFile(name);
        QVERIFY(looked);
        QVERIFY(!typed);
        QCOMPARE(currentROM.data, cartridgeImage(1000));
        QVERIFY(!QFile::exists(path("other.bin")));
        QCOMPARE(contentOf(first), QByteArray("first"));

        // Afterwards the window takes input again.
        auto *tree = window.findChild<QTreeWidget *>("fileTree");
        clickFirstRow(tree);
        QCOMPARE(tree->selectedItems().size(), 1);
        QVERIFY(window.close());
    }

    void unreadable_data()
    {
        QTest::addColumn<QString>("what");
        for (const char *what : {"missing", "directory", "pipe", "endless device", "dangling link"})
            QTest::newRow(what) << what;
    }

    void unreadable()
    {
        QFETCH(QString, what);
        QString name = path("it");
        if (what == "directory")
            QVERIFY(QDir().mkpath(name));
        else if (what == "pipe")
            QCOMPARE(mkfifo(qPrintable(name), 0600), 0);
        else if (what == "endless device")
            name = "/dev/zero";
        else if (what == "dangling link")
            QVERIFY(QFile::link(path("nowhere"), name));

        const QString open = writtenFile("open.z64", cartridgeImage(128));
        MainWindow window;
        window.loadFile(open);
        window.setWindowModified(true);
        const QByteArray before = currentROM.data;
        BoxAnswer box("OK");
        window.loadFile(name);
        QVERIFY(box.answered());
        QCOMPARE(box.title, QString("Application"));
        QCOMPARE(box.icon, QMessageBox::Warning);
        QVERIFY2(box.text.startsWith("Cannot read file " + name + ":\n") && box.text.endsWith('.'), qPrintable(box.text));
        QVERIFY(box.text.size() > QString("Cannot read file " + name + ":\n.").size());
        QCOMPARE(currentROM.data, before);
        QCOMPARE(currentROM.baseName, QString("open"));
        QCOMPARE(QSettings().value("romPath").toString(), open);
        QCOMPARE(QSettings().value("recentFileList").toStringList(), QStringList(open));
        QVERIFY(window.isWindowModified());
        // The open image's list was written all the same.
        QVERIFY(QFile::exists(profilesFolder() + "NQLE0/default/fileList.xml"));
    }

    void unreadableFirst()
    {
        MainWindow window;
        BoxAnswer box("OK");
        window.loadFile(path("a%1<b>b</b>%2"));
        QVERIFY(box.answered());
        QVERIFY(box.text.startsWith("Cannot read file " + path("a%1<b>b</b>%2") + ":\n"));
        QVERIFY(!currentROM.loaded);
        QVERIFY(QSettings().allKeys().isEmpty());
        QVERIFY(!window.findChild<QTabWidget *>("tabWidget")->isTabEnabled(1));
    }

    void secondImageWritesTheFirstOnesList()
    {
        MainWindow window;
        window.loadFile(writtenFile("a.z64", cartridgeImage(4096, "AAAA", 1)));
        currentROM.autosave = false;
        auto *folder = new fileTreeDirectory;
        folder->name = QStringLiteral("kept");
        currentROM.root->addDirectory(folder);
        window.addDirectoryToTree(folder);
        notice(window)->show();

        const BoxSequence boxes;
        window.loadFile(writtenFile("b.z64", cartridgeImage(8192, "BBBB", 1)));
        QCOMPARE(boxes.texts, QStringList());
        QVERIFY(contentOf(profilesFolder() + "AAAA1/default/fileList.xml").contains("kept"));
        QVERIFY(!QFile::exists(profilesFolder() + "BBBB1/default/fileList.xml"));
        QVERIFY(currentROM.root->directories.isEmpty());
        QVERIFY(notice(window)->isHidden());
        QCOMPARE(currentROM.romID, QString("BBBB1"));

        // And back: what was written is there again.
        window.loadFile(path("a.z64"));
        QCOMPARE(currentROM.root->directories.size(), 1);
        QCOMPARE(QString(currentROM.root->directories.at(0)->name), QString("kept"));
    }

    void failedListKeepsTableAndProfileTogether_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("loads");
        QTest::newRow("load") << "Load" << true;
        QTest::newRow("cancel") << "Cancel" << false;
        QTest::newRow("escape") << "" << false;
        QTest::newRow("save and load fails again") << "Save and Load" << false;
    }

    void failedListKeepsTableAndProfileTogether()
    {
        QFETCH(QString, answer);
        QFETCH(bool, loads);
        MainWindow window;
        window.loadFile(writtenFile("a.z64", cartridgeImage(4096, "AAAA", 1)));
        currentROM.root->addDirectory(new fileTreeDirectory);
        notice(window)->show();
        window.setWindowModified(true);
        // A folder stands where the list would be written.
        QVERIFY(QDir().mkpath(profilesFolder() + "AAAA1/default/fileList.xml/x"));

        const BoxSequence boxes({"OK", answer, "OK"});
        window.loadFile(writtenFile("b.z64", cartridgeImage(8192, "BBBB", 1)));
        QVERIFY(boxes.texts.size() >= 2);
        QVERIFY(boxes.texts.at(0).startsWith("createXMLFile: "));
        QVERIFY(boxes.texts.at(1).contains("There are unsaved changes.\nWhat do you want to do?"));
        QCOMPARE(currentROM.romID, QString(loads ? "BBBB1" : "AAAA1"));
        QCOMPARE(currentROM.data.size(), loads ? 8192 : 4096);
        QCOMPARE(currentROM.root->directories.size(), loads ? 0 : 1);
        QCOMPARE(notice(window)->isHidden(), loads);
        QCOMPARE(window.isWindowModified(), !loads);
        QCOMPARE(QSettings().value("romPath").toString(), path(loads ? "b.z64" : "a.z64"));
        QVERIFY(!QFile::exists(profilesFolder() + "BBBB1/default/fileList.xml"));
    }

    void failedListWithoutChangesAsksNothing()
    {
        MainWindow window;
        window.loadFile(writtenFile("a.z64", cartridgeImage(4096, "AAAA", 1)));
        QVERIFY(QDir().mkpath(profilesFolder() + "AAAA1/default/fileList.xml/x"));
        const BoxSequence boxes({"OK"});
        window.loadFile(writtenFile("b.z64", cartridgeImage(8192, "BBBB", 1)));
        QCOMPARE(boxes.texts.size(), 1);
        QCOMPARE(currentROM.romID, QString("BBBB1"));
    }

    void loadingSameFileAgain()
    {
        MainWindow window;
        const QString name = writtenFile("a.z64", cartridgeImage(128));
        window.loadFile(name);
        currentROM.data.fill('x');
        window.loadFile(name);
        QCOMPARE(currentROM.data, cartridgeImage(128));
    }

    void hostileIdentifierStaysInTheProfilesFolder()
    {
        MainWindow window;
        const BoxSequence boxes;
        window.loadFile(writtenFile("a.z64", cartridgeImage(4096, "../a", 1)));
        QVERIFY(currentROM.loaded);
        QVERIFY(!QFile::exists(profilesFolder() + "../a1"));
    }

    void savingWritesBigEndian()
    {
        const QByteArray image = cartridgeImage(4096);
        const QString name = writtenFile("a.v64", withReversedUnits(image, 2));
        MainWindow window;
        window.loadFile(name);
        window.setWindowModified(true);
        const QString target = path("b.z64");
        const MessageCapture log;
        QVERIFY(window.saveFile(target));
        QCOMPARE(log.textsOf("bool MainWindow::saveFile(const QString&)"), QStringList("\"4096\""));
        QCOMPARE(contentOf(target), image);
        QVERIFY(!window.isWindowModified());
        QCOMPARE(window.windowTitle(), "Quillary 1.0.1 - " + target + "[*]");
        QCOMPARE(window.statusBar()->currentMessage(), QString("File saved"));
        QCOMPARE(QSettings().value("romPath").toString(), target);
        QCOMPARE(QSettings().value("recentFileList").toStringList(), QStringList({target, name}));
        // The file list is none of its business.
        QVERIFY(!QFile::exists(profilesFolder() + "NQLE0/default/fileList.xml"));
    }

    /// Nothing is loaded: an empty file may be made, but no file that has contents is lost.
    void savingWithoutAnImage()
    {
        const QString full = writtenFile("full.z64", "contents");
        const QString empty = writtenFile("empty.z64", QByteArray());
        MainWindow window;
        {
            const MessageCapture log;
            QVERIFY(!window.saveFile(full));
            QCOMPARE(log.texts(), QStringList());
        }
        QCOMPARE(contentOf(full), QByteArray("contents"));
        QVERIFY(!QSettings().contains("romPath"));
        for (const QString &name : {empty, path("new.z64")}) {
            const MessageCapture log;
            QVERIFY(window.saveFile(name));
            QCOMPARE(log.textsOf("bool MainWindow::saveFile(const QString&)"), QStringList("\"0\""));
            QCOMPARE(contentOf(name), QByteArray());
            QCOMPARE(window.statusBar()->currentMessage(), QString("File saved"));
            QCOMPARE(QSettings().value("romPath").toString(), name);
        }
    }

    void savingOverTheLoadedFile()
    {
        const QString name = writtenFile("a.n64", withReversedUnits(cartridgeImage(4096), 4));
        QVERIFY(QFile::setPermissions(name, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
        QVERIFY(QFile::link(name, path("link.n64")));
        MainWindow window;
        window.loadFile(path("link.n64"));
        QVERIFY(window.save());
        QCOMPARE(contentOf(name), cartridgeImage(4096));
        QVERIFY(QFileInfo(path("link.n64")).isSymLink());
        QVERIFY(QFile::permissions(name) & QFile::ReadGroup);
        QVERIFY(!(QFile::permissions(name) & QFile::ReadOther));
    }

    void unwritable_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("no such folder") << "missing/a.z64";
        QTest::newRow("a folder") << ".";
        QTest::newRow("below a file") << "a.z64/b.z64";
    }

    void unwritable()
    {
        QFETCH(QString, name);
        MainWindow window;
        const QString loaded = writtenFile("a.z64", cartridgeImage(128));
        window.loadFile(loaded);
        window.setWindowModified(true);
        const QString target = path(name);
        BoxAnswer box("OK");
        QVERIFY(!window.saveFile(target));
        QVERIFY(box.answered());
        QCOMPARE(box.title, QString("Application"));
        QCOMPARE(box.icon, QMessageBox::Warning);
        QVERIFY2(box.text.startsWith("Cannot write file " + target + ":\n") && box.text.endsWith('.'), qPrintable(box.text));
        QVERIFY(window.isWindowModified());
        QCOMPARE(QSettings().value("romPath").toString(), loaded);
        QCOMPARE(QSettings().value("recentFileList").toStringList(), QStringList(loaded));
    }

    void shortWriteKeepsTheOldFile()
    {
        const QString name = writtenFile("a.z64", cartridgeImage(1024 * 1024));
        MainWindow window;
        window.loadFile(name);
        currentROM.data.fill('x');
        window.setWindowModified(true);

        // The disk is full after half of it.
        rlimit unlimited;
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &unlimited), 0);
        const auto previous = std::signal(SIGXFSZ, SIG_IGN);
        rlimit small = unlimited;
        small.rlim_cur = 512 * 1024;
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        BoxAnswer box("OK");
        const bool saved = window.save();
        setrlimit(RLIMIT_FSIZE, &unlimited);
        std::signal(SIGXFSZ, previous);

        QVERIFY(!saved);
        QVERIFY(box.answered());
        QVERIFY(box.text.startsWith("Cannot write file " + name + ":\n"));
        QVERIFY(contentOf(name) == cartridgeImage(1024 * 1024));
        QVERIFY(window.isWindowModified());
        QCOMPARE(QDir(m_folder.path()).entryList(QDir::Files), QStringList("a.z64"));
    }
};
}

QTEST_MAIN(ImageTest)
#include "tst_image.moc"
