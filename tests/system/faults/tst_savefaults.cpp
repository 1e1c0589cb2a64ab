// SPDX-License-Identifier: MIT
#include "persist/directwrite.h"
#include "persist/filelist.h"
#include "persist/profilestore.h"
#include "persist/savefile.h"
#include "support/images.h"
#include "support/transfer.h"
#include "system/faults/faultruns.h"
#include "transfer/extraction.h"

#include <QDir>

#include <sys/stat.h>
#include <unistd.h>

Q_DECLARE_METATYPE(Operation)

namespace
{
constexpr int imageBytes = 200 * 1024;

QString saveImage(const QString &folder)
{
    QString error;
    return saveWhole(folder + "/game.z64", cartridgeImage(imageBytes, "NQLE", 0, 2), &error) ? QString() : error;
}

Operation imageSave(bool isNew)
{
    return {[isNew](const QString &folder) {
                if (!isNew)
                    QVERIFY(writeBytes(folder + "/game.z64", cartridgeImage(imageBytes + 4096, "NQLE", 0, 1)));
            },
            saveImage};
}

void makeTable(int textures)
{
    loadIntoCurrentROM(cartridgeImage(64 * 1024));
    fileTreeDirectory *folder = newFolder(currentROM.root, "Sprites", 0x1000);
    for (int i = 0; i < textures; ++i)
        newTexture(folder, QStringLiteral("Sprite %1").arg(i), 64 * i);
}

QString saveList(const QString &folder)
{
    QString error;
    QBuffer list;
    list.open(QIODevice::WriteOnly);
    return writeFileList(currentROM.root, &list, &error) && saveWhole(folder + "/fileList.xml", list.data(), &error) ? QString()
                                                                                                                     : error;
}

Operation listSave()
{
    return {[](const QString &folder) { QVERIFY(writeBytes(folder + "/fileList.xml", QByteArray(50000, 'x'))); },
            [](const QString &folder) {
                makeTable(800);
                return saveList(folder);
            }};
}

Operation settingsSave()
{
    return {
        [](const QString &folder) {
            QVERIFY(QDir(folder).mkpath("NQLE0"));
            QVERIFY(writeBytes(folder + "/NQLE0/settings.xml", "<settings/>"));
        },
        [](const QString &folder) {
            QString error;
            return ProfileStore({folder + '/', QString()}, "NQLE0").writeSettings({"painted", false}, &error) ? QString() : error;
        }};
}

/// Two pictures, one of which is there in another form already.
Operation extraction()
{
    return {[](const QString &folder) {
                QVERIFY(QDir(folder).mkpath("Sprites"));
                QVERIFY(writeBytes(folder + "/Sprites/Sprite 0.png", QByteArray(20000, 'x')));
            },
            [](const QString &folder) {
                makeTable(2);
                KeptLog log;
                return extractFolder(folder, currentROM.root->directories.first(), &log).problems.join('\n');
            }};
}

QStringList recoveredFiles()
{
    return QDir(recoveryFolder()).entryList(QDir::Files);
}

void removeRecovered()
{
    QDir(recoveryFolder()).removeRecursively();
}
}

class TestSaveFaults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyCallThatMattersIsSeen();
    void eachFileIsTheOldOrTheNewOne_data();
    void eachFileIsTheOldOrTheNewOne();
    void aFolderWithoutRoomForAnotherFileCanBeWrittenTo();
    void aKillWhileWritingDirectlyLeavesTheNewContent();
    void aFailureWhileWritingDirectlyPutsTheOldContentBack();
    void aFileThatCannotBePutBackIsNamedWithItsRecovery();
    void nothingIsWrittenDirectlyWithoutARecovery();

    void linksAreFollowed_data();
    void linksAreFollowed();
    void linksInACircleAreRefused();
    void permissionsAndOwnerAreKept();
    void newFilesGetTheUsualPermissions();
    void otherNamesOfTheFileKeepTheOldContent();
    void whatIsNoRegularFileIsLeftAlone();
    void longNamesCanBeSavedTo();
    void whatMayNotBeWrittenIsLeftAlone();

private:
    QTemporaryDir m_dataHome; ///< Holds the recovery folder.
};

void TestSaveFaults::initTestCase()
{
    QVERIFY(m_dataHome.isValid());
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_dataHome.path()));
    QVERIFY(recoveryFolder().startsWith(m_dataHome.path()));
}

void TestSaveFaults::everyCallThatMattersIsSeen()
{
    const FaultRuns runs(imageSave(false));
    QVERIFY(runs.calls().startsWith("open(O_TMPFILE)"));
    for (const char *call : {"write", "fsync", "linkat", "rename"})
        QVERIFY2(runs.calls().contains(call), call);
    QVERIFY2(runs.calls().lastIndexOf("fsync") > runs.calls().indexOf("rename"), "the folder is not flushed to the disk");
    QVERIFY2(runs.calls().indexOf("fsync") < runs.calls().indexOf("rename"),
             "the content is not flushed before it gets the name");
}

void TestSaveFaults::eachFileIsTheOldOrTheNewOne_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::newRow("new image") << imageSave(true);
    QTest::newRow("image") << imageSave(false);
    QTest::newRow("file list") << listSave();
    QTest::newRow("profile settings") << settingsSave();
    QTest::newRow("extraction") << extraction();
}

void TestSaveFaults::eachFileIsTheOldOrTheNewOne()
{
    QFETCH(Operation, operation);
    FaultRuns runs(operation);
    runs.killAtEachCall();
    runs.failOnceAtEachCall();
    runs.failFromEachCallOn();
}

void TestSaveFaults::aFolderWithoutRoomForAnotherFileCanBeWrittenTo()
{
    for (const int oldSize : {0, 1000, imageBytes, imageBytes + 1, 3 * imageBytes}) {
        const QTemporaryDir folder;
        const QString path = folder.filePath("game.z64");
        QVERIFY(writeBytes(path, QByteArray(oldSize, 'o')));
        faults::arm(folder.path(), {faults::What::Nothing, 0, 0, true});
        const QString message = saveImage(folder.path());
        faults::disarm();
        QCOMPARE(message, QString());
        QCOMPARE(bytesOfFile(path), cartridgeImage(imageBytes, "NQLE", 0, 2));
        QCOMPARE(recoveredFiles(), QStringList());
    }
}

void TestSaveFaults::aKillWhileWritingDirectlyLeavesTheNewContent()
{
    removeRecovered();
    const QByteArray newImage = cartridgeImage(imageBytes, "NQLE", 0, 2);
    int kills = 0;
    for (const faults::What what : {faults::What::Kill, faults::What::KillHalfway}) {
        for (int at = 1;; ++at) {
            const QTemporaryDir folder;
            imageSave(false).prepare(folder.path());
            const QByteArray oldImage = bytesOfFile(folder.filePath("game.z64"));
            const int status = faults::runInChild([&] {
                faults::arm(folder.path(), {what, at, 0, true});
                saveImage(folder.path());
                if (faults::disarm().size() < at)
                    _exit(1);
            });
            if (status == 1)
                break;
            if (status == 0)
                continue;
            QCOMPARE(status, faults::killed);
            ++kills;
            const QByteArray image = bytesOfFile(folder.filePath("game.z64"));
            QCOMPARE(recoveredFiles().size(), 1);
            QVERIFY(recoveredFiles().first().startsWith("game.z64."));
            QCOMPARE(bytesOfFile(recoveryFolder() + '/' + recoveredFiles().first()), newImage);
            QVERIFY(image.size() == oldImage.size() || image == newImage);
            QCOMPARE(saveImage(folder.path()), QString());
            QCOMPARE(bytesOfFile(folder.filePath("game.z64")), newImage);
            removeRecovered();
        }
    }
    QVERIFY(kills > 3);
}

void TestSaveFaults::aFailureWhileWritingDirectlyPutsTheOldContentBack()
{
    FaultRuns runs(imageSave(false), true);
    runs.failOnceAtEachCall();
    QCOMPARE(recoveredFiles(), QStringList());
}

void TestSaveFaults::aFileThatCannotBePutBackIsNamedWithItsRecovery()
{
    const QTemporaryDir folder;
    imageSave(false).prepare(folder.path());
    faults::arm(folder.path(), {faults::What::FailFromHereOn, 1, EIO, true});
    const QString message = saveImage(folder.path());
    faults::disarm();
    QVERIFY2(message.contains(qt_error_string(EIO)), qPrintable(message));
    QCOMPARE(recoveredFiles().size(), 1);
    const QString recovered = recoveryFolder() + '/' + recoveredFiles().first();
    QVERIFY2(message.contains(recovered), qPrintable(message));
    QCOMPARE(bytesOfFile(recovered), cartridgeImage(imageBytes, "NQLE", 0, 2));
    removeRecovered();
}

void TestSaveFaults::nothingIsWrittenDirectlyWithoutARecovery()
{
    const QTemporaryDir folder;
    imageSave(false).prepare(folder.path());
    const QByteArray oldImage = bytesOfFile(folder.filePath("game.z64"));
    removeRecovered();
    // Files stand where folders should be, which binds root as well.
    QVERIFY(writeBytes(recoveryFolder(), "in the way"));
    faults::arm(folder.path(), {faults::What::Nothing, 0, 0, true});
    const QString message = saveImage(folder.path());
    const QList<QByteArray> calls = faults::disarm();
    QVERIFY(QFile::remove(recoveryFolder()));
    QVERIFY2(message.contains("no copy could be kept in " + recoveryFolder()), qPrintable(message));
    QCOMPARE(calls, QList<QByteArray>());
    QCOMPARE(bytesOfFile(folder.filePath("game.z64")), oldImage);
}

void TestSaveFaults::linksAreFollowed_data()
{
    QTest::addColumn<int>("links");
    QTest::addColumn<bool>("isThere");
    QTest::newRow("one") << 1 << true;
    QTest::newRow("a chain") << 3 << true;
    QTest::newRow("to a file to be made") << 1 << false;
    QTest::newRow("a chain to a file to be made") << 3 << false;
}

void TestSaveFaults::linksAreFollowed()
{
    QFETCH(int, links);
    QFETCH(bool, isThere);
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkpath("images"));
    const QString image = folder.filePath("images/game.z64");
    QString previous = "images/game.z64"; // Relative to the link.
    for (int i = links; i > 0; --i) {
        const QString link = folder.filePath(i == 1 ? "game.z64" : QString("link %1").arg(i));
        QVERIFY(QFile::link(previous, link));
        previous = QFileInfo(link).fileName();
    }
    if (isThere)
        QVERIFY(writeBytes(image, "old"));
    const QStringList before = treeOnDisk(folder.path());
    QCOMPARE(saveImage(folder.path()), QString());
    QCOMPARE(bytesOfFile(image), cartridgeImage(imageBytes, "NQLE", 0, 2));
    QVERIFY(!QFileInfo(image).isSymLink());
    for (int i = links; i > 0; --i)
        QVERIFY(QFileInfo(folder.filePath(i == 1 ? "game.z64" : QString("link %1").arg(i))).isSymLink());
    QCOMPARE(treeOnDisk(folder.path()).size(), before.size() + (isThere ? 0 : 1));
}

void TestSaveFaults::linksInACircleAreRefused()
{
    const QTemporaryDir folder;
    QVERIFY(QFile::link(folder.filePath("game.z64"), folder.filePath("other")));
    QVERIFY(QFile::link(folder.filePath("other"), folder.filePath("game.z64")));
    QVERIFY(!saveImage(folder.path()).isEmpty());
    QVERIFY(QFileInfo(folder.filePath("game.z64")).isSymLink());
    QVERIFY(QFileInfo(folder.filePath("other")).isSymLink());
}

void TestSaveFaults::permissionsAndOwnerAreKept()
{
    const QTemporaryDir folder;
    const QByteArray path = QFile::encodeName(folder.filePath("game.z64"));
    for (const mode_t mode : {0600, 0640, 0664, 0755}) {
        QVERIFY(writeBytes(folder.filePath("game.z64"), "old"));
        QCOMPARE(chmod(path.constData(), mode), 0);
        constexpr unsigned someone = 4711;
        const bool isRoot = geteuid() == 0; // Nobody else may give files away.
        if (isRoot)
            QCOMPARE(chown(path.constData(), someone, someone + 1), 0);
        QCOMPARE(saveImage(folder.path()), QString());
        struct stat now = {};
        QCOMPARE(stat(path.constData(), &now), 0);
        QCOMPARE(now.st_mode & 07777, mode);
        QCOMPARE(now.st_uid, isRoot ? someone : getuid());
        QCOMPARE(now.st_gid, isRoot ? someone + 1 : getgid());
        QCOMPARE(now.st_size, off_t(imageBytes));
    }
}

void TestSaveFaults::newFilesGetTheUsualPermissions()
{
    const QTemporaryDir folder;
    const mode_t before = umask(027);
    QString error;
    const bool saved = saveWhole(folder.filePath("saved"), "x", &error);
    const bool made = saveNew(folder.filePath("made"), "x", &error);
    const mode_t during = umask(before);
    QVERIFY(saved && made);
    QCOMPARE(during, mode_t(027));
    for (const char *name : {"saved", "made"}) {
        struct stat now = {};
        QCOMPARE(stat(QFile::encodeName(folder.filePath(name)).constData(), &now), 0);
        QCOMPARE(now.st_mode & 07777, mode_t(0640));
    }
}

void TestSaveFaults::otherNamesOfTheFileKeepTheOldContent()
{
    const QTemporaryDir folder;
    QVERIFY(writeBytes(folder.filePath("game.z64"), "old"));
    QCOMPARE(link(QFile::encodeName(folder.filePath("game.z64")).constData(),
                  QFile::encodeName(folder.filePath("backup.z64")).constData()),
             0);
    QCOMPARE(saveImage(folder.path()), QString());
    QCOMPARE(bytesOfFile(folder.filePath("game.z64")), cartridgeImage(imageBytes, "NQLE", 0, 2));
    QCOMPARE(bytesOfFile(folder.filePath("backup.z64")), QByteArray("old"));
}

void TestSaveFaults::whatIsNoRegularFileIsLeftAlone()
{
    const QTemporaryDir folder;
    const QByteArray path = QFile::encodeName(folder.filePath("game.z64"));
    QCOMPARE(mkfifo(path.constData(), 0600), 0);
    QVERIFY(saveImage(folder.path()).contains("not a regular file"));
    struct stat now = {};
    QCOMPARE(lstat(path.constData(), &now), 0);
    QVERIFY(S_ISFIFO(now.st_mode));
    QVERIFY(QFile::remove(folder.filePath("game.z64")));
    QVERIFY(QDir(folder.path()).mkpath("game.z64/below"));
    QVERIFY(!saveImage(folder.path()).isEmpty());
    QCOMPARE(treeOnDisk(folder.path()), QStringList({"game.z64/", "game.z64/below/"}));
}

void TestSaveFaults::longNamesCanBeSavedTo()
{
    const QTemporaryDir folder;
    for (const int length : {240, 248, 249, 255}) {
        const QString path = folder.filePath(QString(length, 'n'));
        for (const char *content : {"first", "second, longer", "third"}) {
            QString error;
            QVERIFY2(saveWhole(path, QByteArray(content), &error), qPrintable(error));
            QCOMPARE(bytesOfFile(path), QByteArray(content));
        }
    }
    QCOMPARE(treeOnDisk(folder.path()).size(), 4);
    QCOMPARE(recoveredFiles(), QStringList());
}

void TestSaveFaults::whatMayNotBeWrittenIsLeftAlone()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("game.z64");
    imageSave(false).prepare(folder.path());
    const QByteArray oldImage = bytesOfFile(path);
    const auto readable = QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther;
    QVERIFY(QFile::setPermissions(path, readable));
    QVERIFY(QFile::setPermissions(folder.path(), readable | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther));
    const int status = faults::runInChild([&] {
        faults::becomeOrdinaryUser();
        _exit(saveImage(folder.path()).isEmpty() ? 1 : 0);
    });
    QVERIFY(QFile::setPermissions(folder.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(status, 0);
    QCOMPARE(bytesOfFile(path), oldImage);
    QCOMPARE(treeOnDisk(folder.path()), QStringList("game.z64"));
    QVERIFY(QFile::setPermissions(path, readable | QFile::WriteOwner));
    QCOMPARE(saveImage(folder.path()), QString());
}

QTEST_GUILESS_MAIN(TestSaveFaults)
#include "tst_savefaults.moc"
