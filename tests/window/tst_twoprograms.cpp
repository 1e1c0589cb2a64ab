// SPDX-License-Identifier: MIT
// The built program beside others, and ended from outside: what it does to files that it shares with them.
#include "app/mainwindow.h"
#include "app/termination.h"
#include "support/dialogs.h"
#include "support/images.h"
#include "support/pictures.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>

namespace
{
/// The built program without a display, with its profiles and settings in a folder of the test.
class Program
{
public:
    Program(const QString &folder, const QString &image) : m_folder(folder)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("*.debug=false"));
        m_process.setProcessEnvironment(environment);
        m_process.start(folder + "/quillary", {image});
    }
    ~Program()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    /// Whether the settings have come to name \a image as the one opened last.
    bool hasOpened(const QString &image)
    {
        return QTest::qWaitFor(
            [&] {
                QSettings settings;
                settings.sync();
                return settings.value("recentFileList").toStringList().value(0) == image;
            },
            30000);
    }

    bool endsBy(int signal)
    {
        ::kill(pid_t(m_process.processId()), signal);
        return m_process.waitForFinished(30000) && m_process.exitStatus() == QProcess::CrashExit
            && m_process.exitCode() == signal;
    }

private:
    QString m_folder;
    QProcess m_process;
};

class TwoProgramsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void saveNeverHitsTheOtherProgramsFile_data();
    void saveNeverHitsTheOtherProgramsFile();
    void activeWindowStoresItsPath();
    void saveGoesByTheStoredPath();
    void signalSavesTheFileList_data();
    void signalSavesTheFileList();
    void signalAsksNothing();
    void sessionEndSavesTheFileList();
    void screenshotStoresNothing();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString image(const QString &name, const QByteArray &id)
    {
        return writeBytes(path(name), cartridgeImage(4096, id)) ? path(name) : QString();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TwoProgramsTest::initTestCase()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Brimholt"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillary"));
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

void TwoProgramsTest::init()
{
    QSettings settings;
    settings.clear();
    settings.sync();
    resetCurrentROM();
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QFile::copy(QStringLiteral(QUILLARY_PROGRAM), path("quillary")));
}

void TwoProgramsTest::saveNeverHitsTheOtherProgramsFile_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"action", "close question", "save as"})
        QTest::newRow(way) << way;
}

/// The other program opens its image while this window stays the active one.
void TwoProgramsTest::saveNeverHitsTheOtherProgramsFile()
{
    QFETCH(const QString, way);
    const QString a = image("a.z64", "AAAA");
    const QString b = image("b.z64", "BBBB");
    MainWindow window;
    window.loadFile(a);
    currentROM.data[100] = 'x';
    window.setWindowModified(true);
    Program other(m_folder->path(), b);
    QVERIFY(other.hasOpened(b));
    QCOMPARE(QSettings().value("romPath").toString(), b);
    if (way == "action") {
        window.findChild<QAction *>("saveAction")->trigger();
    } else if (way == "close question") {
        BoxAnswer save("Save");
        QVERIFY(window.close());
        QVERIFY(save.answered());
    } else {
        FileDialogAnswer proposed("");
        window.saveAs();
        QVERIFY(proposed.answered());
        QCOMPARE(proposed.typedName, QString("a.z64"));
        QVERIFY(window.save());
    }
    QCOMPARE(bytesOfFile(b), cartridgeImage(4096, "BBBB"));
    QCOMPARE(bytesOfFile(a), currentROM.data);
    QVERIFY(!window.isWindowModified());
    QCOMPARE(QSettings().value("romPath").toString(), a);
}

void TwoProgramsTest::activeWindowStoresItsPath()
{
    const QString a = image("a.z64", "AAAA");
    MainWindow window;
    window.loadFile(a);
    QSettings().setValue("romPath", "/elsewhere");
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QCOMPARE(QSettings().value("romPath").toString(), a);
}

/// Whoever stored it in this program: only another one's path is not gone by.
void TwoProgramsTest::saveGoesByTheStoredPath()
{
    MainWindow window;
    window.loadFile(image("a.z64", "AAAA"));
    QSettings().setValue("romPath", path("c.z64"));
    QVERIFY(window.save());
    QCOMPARE(bytesOfFile(path("c.z64")), cartridgeImage(4096, "AAAA"));
}

void TwoProgramsTest::signalSavesTheFileList_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<bool>("autosave");
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        QTest::addRow("%d", signal) << signal << true;
    QTest::newRow("without auto-save") << SIGTERM << false;
}

void TwoProgramsTest::signalSavesTheFileList()
{
    QFETCH(const int, signal);
    QFETCH(const bool, autosave);
    const QString a = image("a.z64", "AAAA");
    const QString profile = path("profiles/AAAA0");
    QVERIFY(QDir().mkpath(profile + "/default"));
    QVERIFY(writeBytes(profile + "/settings.xml",
                       QByteArray("<settings><autoload>default</autoload><autosave>") + (autosave ? "true" : "false")
                           + "</autosave></settings>"));
    Program program(m_folder->path(), a);
    QVERIFY(program.hasOpened(a));
    QVERIFY(program.endsBy(signal));
    QCOMPARE(bytesOfFile(profile + "/default/fileList.xml").contains("<root"), autosave);
    QCOMPARE(bytesOfFile(a), cartridgeImage(4096, "AAAA"));
}

/// Not even of a list that cannot be written.
void TwoProgramsTest::signalAsksNothing()
{
    const QString a = image("a.z64", "AAAA");
    QVERIFY(QDir().mkpath(path("profiles/AAAA0/default/fileList.xml")));
    MainWindow window;
    window.loadFile(a);
    Program program(m_folder->path(), a);
    QVERIFY(program.hasOpened(a));
    QVERIFY(program.endsBy(SIGTERM));
}

void TwoProgramsTest::sessionEndSavesTheFileList()
{
    QDir(QCoreApplication::applicationDirPath() + "/profiles").removeRecursively();
    const QString a = image("a.z64", "AAAA");
    auto window = std::make_unique<MainWindow>();
    saveFileListAtTermination(window.get());
    QVERIFY(!QGuiApplication::isFallbackSessionManagementEnabled());
    window->loadFile(a);
    currentROM.data[100] = 'x';
    window->setWindowModified(true);
    const QString list = QCoreApplication::applicationDirPath() + "/profiles/AAAA0/default/fileList.xml";
    QVERIFY(!QFile::exists(list));
    QSessionManager *none = nullptr; // There is no session that ends; nothing is asked of it.
    void *arguments[] = {nullptr, none};
    QMetaObject::activate(qApp, &QGuiApplication::staticMetaObject,
                          QGuiApplication::staticMetaObject.indexOfSignal("commitDataRequest(QSessionManager&)")
                              - QGuiApplication::staticMetaObject.methodOffset(),
                          arguments);
    QVERIFY(bytesOfFile(list).contains("<root"));
    QVERIFY(window->isWindowModified());
    QCOMPARE(bytesOfFile(a), cartridgeImage(4096, "AAAA"));
    // A list that cannot be written brings up no box.
    QVERIFY(QFile::remove(list));
    QVERIFY(QDir().mkpath(list));
    window->saveFileListUnasked();
    QVERIFY(QDir().rmdir(list));
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        std::signal(signal, SIG_DFL);
}

void TwoProgramsTest::screenshotStoresNothing()
{
    QSettings settings;
    settings.setValue("romPath", "/elsewhere");
    settings.sync();
    const QByteArray before = bytesOfFile(settings.fileName());
    QVERIFY(!before.isEmpty());
    QCOMPARE(QProcess::execute(path("quillary"), {"--screenshot", path("window.png"), image("a.z64", "AAAA")}), 0);
    QVERIFY(QFile::exists(path("window.png")));
    QCOMPARE(bytesOfFile(settings.fileName()), before);
}
}

QTEST_MAIN(TwoProgramsTest)
#include "tst_twoprograms.moc"
