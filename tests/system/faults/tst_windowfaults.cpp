// SPDX-License-Identifier: MIT
#include "support/boxes.h"
#include "support/dialogs.h"
#include "support/messages.h"
#include "support/tablewindow.h"
#include "support/transfer.h"
#include "system/faults/faultruns.h"

#include <QComboBox>
#include <QDir>
#include <QInputDialog>
#include <QRegularExpression>
#include <QSettings>

#include <memory>
#include <unistd.h>

namespace
{
constexpr int imageBytes = 64 * 1024;

QByteArray oldImage()
{
    return cartridgeImage(imageBytes, "NQLE", 0, 1);
}

QByteArray newImage()
{
    return cartridgeImage(imageBytes, "NQLE", 0, 2);
}

/// Agrees to replacing and deleting; dismisses other boxes, and keeps their texts.
class Boxes : public BoxHandler
{
public:
    QStringList texts;

protected:
    void handle(QMessageBox *box) override
    {
        if (QAbstractButton *yes = box->button(QMessageBox::Yes))
            return yes->click();
        texts << box->windowTitle() + ": " + box->text();
        box->done(QDialog::Rejected);
    }
};

/// What the user is told while \a action runs: the boxes, and behind them the debug log; nothing when no box came.
QString toldDuring(const std::function<void()> &action)
{
    const MessageCapture log;
    Boxes boxes;
    action();
    return boxes.texts.isEmpty() ? QString() : (boxes.texts + log.texts()).join('\n');
}

/// The lines of the debug log during \a action that begin with \a start.
QString loggedDuring(const QString &start, const std::function<void()> &action)
{
    const MessageCapture log;
    action();
    return log.texts().filter(QRegularExpression('^' + QRegularExpression::escape(start))).join('\n');
}

void fail(const char *what)
{
    QTest::qFail(what, __FILE__, __LINE__);
}
}

class TestWindowFaults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void savingTheImage();
    void savingTheImageUnderAnotherName();
    void savingTheFileList();
    void closing();
    void opening();
    void savingTheSettings();
    void makingAProfile();
    void deletingAProfile();
    void keepingADamagedList();
    void extractingATexture();
    void extractingAFolder();
    void theSettingsStore();

    void aFolderThatVanishes();
    void aProfileFolderThatVanishes();
    void permissionsThatAreTakenAway();

private:
    QString cartridgeFolder() const { return m_window->profilesFolder().path + "NQLE0"; }
    void fillTable();
    static void prepareProfile(const QString &folder);
    static void check(const Operation &operation);

    std::unique_ptr<MainWindow> m_window;
    QTemporaryDir m_elsewhere;
    QString m_image; ///< An image outside the folders in which calls fail.
};

void TestWindowFaults::initTestCase()
{
    setApplicationIdentity();
    QVERIFY(m_elsewhere.isValid());
    m_image = m_elsewhere.filePath("other.z64");
    QVERIFY(writeBytes(m_image, cartridgeImage(imageBytes, "ELSE")));
}

void TestWindowFaults::init()
{
    QSettings().clear();
    resetCurrentROM();
    m_window = std::make_unique<MainWindow>();
    QVERIFY(m_window->profilesFolder().path.startsWith(QCoreApplication::applicationDirPath()));
}

void TestWindowFaults::cleanup()
{
    m_window.reset();
    QDir(QCoreApplication::applicationDirPath() + "/profiles").removeRecursively();
}

void TestWindowFaults::check(const Operation &operation)
{
    FaultRuns runs(operation);
    runs.killAtEachCall();
    runs.failOnceAtEachCall();
    runs.failFromEachCallOn();
}

void TestWindowFaults::savingTheImage()
{
    const auto prepare = [](const QString &folder) { QVERIFY(writeBytes(folder + "/game.z64", oldImage())); };
    const auto save = [&](const QString &folder) {
        loadIntoCurrentROM(newImage());
        m_window->setWindowModified(true);
        QSettings().setValue("romPath", QString(folder + "/game.z64"));
        bool saved = false;
        const QString told = toldDuring([&] { saved = m_window->save(); });
        if (saved != told.isEmpty() || m_window->isWindowModified() == saved)
            fail("the window does not know whether the image is saved");
        return told;
    };
    check({prepare, save, true});
}

void TestWindowFaults::savingTheImageUnderAnotherName()
{
    const auto prepare = [](const QString &folder) { QVERIFY(writeBytes(folder + "/game.z64", oldImage())); };
    const auto save = [&](const QString &folder) {
        loadIntoCurrentROM(newImage());
        m_window->setWindowModified(true);
        bool saved = false;
        const QString told = toldDuring([&] {
            FileDialogAnswer dialog(folder + "/painted.z64");
            saved = m_window->saveAs();
        });
        if (saved != told.isEmpty() || m_window->isWindowModified() == saved)
            fail("the window does not know whether the image is saved");
        return told;
    };
    // A process that has shown a file dialog is not to be copied, since that has threads: nothing is killed here.
    FaultRuns runs({prepare, save, true});
    runs.failOnceAtEachCall();
}

void TestWindowFaults::fillTable()
{
    loadIntoCurrentROM(newImage());
    currentROM.romID = "NQLE0";
    currentROM.profileName = currentROM.autoloadProfile = "default";
    currentROM.autosave = true;
    m_window->clearFileTable();
    fileTreeDirectory *folder = newFolder(currentROM.root, "Sprites", 0x100);
    for (int i = 0; i < 200; ++i)
        newTexture(folder, QStringLiteral("Sprite %1").arg(i), 64 * i);
}

void TestWindowFaults::prepareProfile(const QString &folder)
{
    QVERIFY(QDir(folder).mkpath("default"));
    QVERIFY(writeBytes(folder + "/settings.xml", "<settings/>"));
    QVERIFY(writeBytes(folder + "/default/fileList.xml", "<root version=\"2\"/>"));
}

void TestWindowFaults::savingTheFileList()
{
    auto *notice = m_window->findChild<QLabel *>("unsavedFileList");
    const auto save = [&](const QString &) {
        fillTable();
        notice->show();
        const QString told = toldDuring([&] { m_window->saveProfile(); });
        if (notice->isHidden() != told.isEmpty())
            fail("the notice does not tell whether the list is saved");
        return told;
    };
    check({prepareProfile, save, true, true, cartridgeFolder()});
}

void TestWindowFaults::closing()
{
    auto *notice = m_window->findChild<QLabel *>("unsavedFileList");
    const auto close = [&](const QString &) {
        fillTable();
        m_window->setWindowModified(false);
        notice->show();
        bool closed = false;
        const QString told = toldDuring([&] { closed = m_window->close(); });
        if (closed != told.isEmpty() || notice->isHidden() != closed)
            fail("the window closes over an unsaved list");
        return told;
    };
    check({prepareProfile, close, true, true, cartridgeFolder()});
}

void TestWindowFaults::opening()
{
    const auto prepare = [&](const QString &folder) {
        QVERIFY(QDir(folder).mkpath("NQLE0"));
        prepareProfile(folder + "/NQLE0");
    };
    const auto open = [&](const QString &) {
        fillTable();
        return toldDuring([&] { m_window->loadFile(m_image); });
    };
    FaultRuns({prepare, open, true, true, QFileInfo(cartridgeFolder()).path()}).killAtEachCall();
}

void TestWindowFaults::savingTheSettings()
{
    const auto save = [&](const QString &) {
        fillTable();
        currentROM.autosave = false;
        return toldDuring([&] { m_window->setAutosaveProfile(Qt::Checked); });
    };
    check({prepareProfile, save, true, true, cartridgeFolder()});
}

void TestWindowFaults::makingAProfile()
{
    const auto make = [&](const QString &folder) {
        fillTable();
        m_window->readProfiles();
        if (QFileInfo::exists(folder + "/Third"))
            return QString();
        return toldDuring([&] {
            DialogAnswer<QInputDialog> name([](QInputDialog *dialog) {
                dialog->setTextValue("Third");
                dialog->accept();
            });
            m_window->newProfile();
        });
    };
    check({prepareProfile, make, true, false, cartridgeFolder()});
}

void TestWindowFaults::deletingAProfile()
{
    const auto prepare = [](const QString &folder) {
        prepareProfile(folder);
        QVERIFY(QDir(folder).mkpath("Third"));
        QVERIFY(writeBytes(folder + "/Third/fileList.xml", "<root version=\"2\"/>"));
        QVERIFY(writeBytes(folder + "/Third/notes.txt", "mine"));
    };
    const auto remove = [&](const QString &) {
        fillTable();
        m_window->readProfiles();
        auto *profiles = m_window->findChild<QComboBox *>("profile");
        const int third = profiles->findText("Third");
        profiles->setCurrentIndex(third);
        return third < 0 ? QString() : toldDuring([&] { m_window->deleteProfile(); });
    };
    check({prepare, remove, true, false, cartridgeFolder()});
}

void TestWindowFaults::keepingADamagedList()
{
    const auto prepare = [](const QString &folder) {
        prepareProfile(folder);
        QVERIFY(writeBytes(folder + "/default/fileList.xml", "<root version=\"2\"><directory>"));
        QVERIFY(writeBytes(folder + "/default/fileList.xml.damaged", "an earlier one"));
    };
    const auto read = [&](const QString &folder) {
        fillTable();
        const QString copy = folder + "/default/fileList.xml.damaged";
        QString told;
        const QString logged = loggedDuring(copy, [&] {
            BoxAnswer box("OK");
            m_window->parseXML(folder + "/default/fileList.xml");
            told = box.informativeText;
        });
        if (told.contains(copy) == !logged.isEmpty())
            fail("the box names a copy that is not there");
        return logged;
    };
    check({prepare, read, true, true, cartridgeFolder()});
}

void TestWindowFaults::extractingATexture()
{
    const auto prepare = [](const QString &folder) { QVERIFY(writeBytes(folder + "/picture.png", "an earlier one")); };
    const auto extract = [&](const QString &folder) {
        fillTable();
        fileTreeFile *texture = currentROM.root->directories.first()->files.first();
        return loggedDuring(folder, [&] { QVERIFY(m_window->extractTexture(texture, folder + "/picture.png")); });
    };
    check({prepare, extract, true});
}

void TestWindowFaults::extractingAFolder()
{
    const auto prepare = [](const QString &folder) { QVERIFY(writeBytes(folder + "/notes.txt", "mine")); };
    const auto extract = [&](const QString &folder) {
        fillTable();
        fileTreeDirectory *sprites = currentROM.root->directories.first();
        sprites->files = sprites->files.mid(0, 2);
        newTexture(newFolder(sprites, "Below"), "One", 0);
        return loggedDuring("Root/", [&] { m_window->saveFolder(folder, sprites); });
    };
    check({prepare, extract, false, false});
}

void TestWindowFaults::theSettingsStore()
{
    const auto prepare = [](const QString &folder) {
        QVERIFY(writeBytes(folder + "/Quillary.conf", "[General]\nromPath=old\n"));
    };
    const auto save = [](const QString &folder) {
        QSettings settings(folder + "/Quillary.conf", QSettings::NativeFormat);
        settings.setValue("romPath", QString(500, 'x'));
        settings.sync();
        return settings.status() == QSettings::NoError ? QString() : QStringLiteral("not saved");
    };
    FaultRuns runs({prepare, save});
    // Before that the library makes its lock. An empty one, of a process that was killed while making it, counts for half a
    // minute.
    const int first = runs.calls().indexOf("open(O_TMPFILE)") + 1;
    QVERIFY(first > 1);
    runs.killAtEachCall(first);
}

void TestWindowFaults::aFolderThatVanishes()
{
    const QTemporaryDir folder;
    const QString image = folder.filePath("images/game.z64");
    QVERIFY(QDir(folder.path()).mkpath("images"));
    QVERIFY(writeBytes(image, oldImage()));
    m_window->loadFile(image);
    m_window->setWindowModified(true);
    QVERIFY(QDir(folder.filePath("images")).removeRecursively());
    const QString told = toldDuring([&] { QVERIFY(!m_window->save()); });
    QVERIFY2(told.contains(image) && told.contains(qt_error_string(ENOENT)), qPrintable(told));
    QVERIFY(m_window->isWindowModified());
    QVERIFY(QDir(folder.path()).mkpath("images"));
    QVERIFY(m_window->save());
    QVERIFY(!m_window->isWindowModified());
    QCOMPARE(bytesOfFile(image), oldImage());
}

void TestWindowFaults::aProfileFolderThatVanishes()
{
    m_window->loadFile(m_image);
    const QString folder = m_window->profilesFolder().path + "ELSE0/default";
    auto *notice = m_window->findChild<QLabel *>("unsavedFileList");
    notice->show();
    QVERIFY(QDir(folder).removeRecursively());
    const QString told = toldDuring([&] { m_window->saveProfile(); });
    QVERIFY2(told.contains(folder) && told.contains(qt_error_string(ENOENT)), qPrintable(told));
    QVERIFY(!notice->isHidden());
    QVERIFY(QDir().mkpath(folder));
    QCOMPARE(toldDuring([&] { m_window->saveProfile(); }), QString());
    QVERIFY(notice->isHidden());
    QVERIFY(QFile::exists(folder + "/fileList.xml"));
}

void TestWindowFaults::permissionsThatAreTakenAway()
{
    const QTemporaryDir folder;
    const QString image = folder.filePath("game.z64");
    QVERIFY(writeBytes(image, oldImage()));
    m_window->loadFile(image);
    currentROM.data = newImage();
    m_window->setWindowModified(true);
    QVERIFY(QFile::setPermissions(image, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
    QVERIFY(QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther));
    const int status = faults::runInChild([&] {
        faults::becomeOrdinaryUser();
        bool saved = false;
        const QString told = toldDuring([&] { saved = m_window->save(); });
        _exit(!saved && told.contains("Cannot write file " + image + ":\n") && m_window->isWindowModified() ? 0 : 1);
    });
    QVERIFY(QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QVERIFY(QFile::setPermissions(image, QFile::ReadOwner | QFile::WriteOwner));
    QCOMPARE(status, 0);
    QCOMPARE(bytesOfFile(image), oldImage());
    QVERIFY(m_window->save());
    QCOMPARE(bytesOfFile(image), newImage());
}

QTEST_MAIN(TestWindowFaults)
#include "tst_windowfaults.moc"
