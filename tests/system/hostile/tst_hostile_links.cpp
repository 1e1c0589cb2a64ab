// SPDX-License-Identifier: MIT
#include "base/folderbounds.h"
#include "persist/profilestore.h"
#include "search/picturefiles.h"
#include "support/images.h"
#include "support/messages.h"
#include "support/transfer.h"
#include "transfer/extraction.h"
#include "transfer/folderimport.h"
#include "transfer/texturepack.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/// Folders that were handed on, with symbolic links in them: "inside" is the user's, "outside" must neither be read nor written.
class TestHostileLinks : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void linksThatLeadOut_data();
    void linksThatLeadOut();
    void profileLinksStayInside_data();
    void profileLinksStayInside();
    void profilesMayBeReachedByALink();
    void linksBetweenProfilesAreFollowed();
    void searchTakesLinkedPictures();
    void importsReadNothingOutside();
    void directoriesInACircleEnd();
    void extractionWritesNothingOutside();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString inside(const QString &name) const { return path("inside/" + name); }
    QString outside(const QString &name) const { return path("outside/" + name); }
    QStringList outsideNow() const { return treeOnDisk(path("outside")); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestHostileLinks::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_folder->path()).mkpath("inside"));
    QVERIFY(QDir(m_folder->path()).mkpath("outside/default"));
    QVERIFY(writeBytes(outside("settings.xml"), "<settings><autoload>secret</autoload></settings>"));
    QVERIFY(writeBytes(outside("default/fileList.xml"), "<root><texture name=\"secret\"/></root>"));
    QVERIFY(plainPicture(4, 4, 0).save(outside("secret.png")));
    QVERIFY(plainPicture(4, 4, 0).save(outside("10_rgba32_secret.png")));
    loadIntoCurrentROM(cartridgeImage(64 * 1024));
}

void TestHostileLinks::linksThatLeadOut_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("leadsOut");
    QTest::newRow("outside") << "../outside/secret.png" << true;
    QTest::newRow("beginning with the same letters") << "../inside-too/a.png" << true;
    QTest::newRow("the parent") << ".." << true;
    QTest::newRow("nowhere") << "missing" << true;
    QTest::newRow("itself") << "link" << true;
    QTest::newRow("inside") << "real/a.png" << false;
    QTest::newRow("the folder itself") << "." << false;
    QTest::newRow("out and in again") << "../inside/real/a.png" << false;
}

void TestHostileLinks::linksThatLeadOut()
{
    QFETCH(QString, target);
    QFETCH(bool, leadsOut);
    QVERIFY(QDir(inside("")).mkpath("real") && QDir(path("")).mkpath("inside-too"));
    QVERIFY(writeBytes(inside("real/a.png"), "a") && writeBytes(path("inside-too/a.png"), "a"));
    QVERIFY(QFile::link(target, inside("link")));
    for (const QString &folder : {inside(""), path("inside")}) {
        const FolderBounds bounds(folder);
        QCOMPARE(bounds.leadsOut(QFileInfo(inside("link"))), leadsOut);
        QVERIFY(!bounds.leadsOut(QFileInfo(inside("real/a.png"))));
        QVERIFY(!bounds.leadsOut(QFileInfo(inside("missing.png"))));
    }
    const FolderBounds bounds(path("inside"));
    QCOMPARE(bounds.leavesOn(inside("link")), leadsOut);
    QCOMPARE(bounds.leavesOn(inside("link/below/it")), leadsOut);
    QVERIFY(!bounds.leavesOn(inside("real/a.png")));
    QVERIFY(!bounds.leavesOn(inside("missing/a.png")));
}

void TestHostileLinks::profileLinksStayInside_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("target");
    QTest::newRow("cartridge") << "NQLE0"
                               << "";
    QTest::newRow("profile") << "NQLE0/default"
                             << "default";
    QTest::newRow("file list") << "NQLE0/default/fileList.xml"
                               << "default/fileList.xml";
    QTest::newRow("file list to be made") << "NQLE0/default/fileList.xml"
                                          << "default/new.xml";
    QTest::newRow("settings") << "NQLE0/settings.xml"
                              << "settings.xml";
    QTest::newRow("settings to be made") << "NQLE0/settings.xml"
                                         << "new.xml";
}

void TestHostileLinks::profileLinksStayInside()
{
    QFETCH(QString, link);
    QFETCH(QString, target);
    QVERIFY(QDir().mkpath(QFileInfo(inside(link)).path()));
    QVERIFY(QFile::link(outside(target), inside(link)));
    const QStringList before = outsideNow();
    const bool isSettings = link.endsWith("settings.xml");
    const ProfileStore store({inside(""), QString()}, "NQLE0");
    const MessageCapture log;

    ProfileSettings settings;
    QString error;
    if (link != "NQLE0/default" && !link.endsWith("fileList.xml")) {
        store.readSettings(&settings, &error);
        QCOMPARE(settings.autoload, QString("default"));
        QVERIFY(!store.writeSettings({"other", true}));
        QVERIFY(!store.hasSettings());
    }
    if (!isSettings) {
        QVERIFY(!store.isSafe("default"));
        QVERIFY(!store.hasFileList("default"));
        QVERIFY(!store.createProfile("default"));
    }
    if (link == "NQLE0") {
        QVERIFY(!store.createCartridgeFolder());
        QCOMPARE(store.profiles(), QStringList());
        QVERIFY(!store.removeProfile("default"));
    }
    QVERIFY(!log.texts().filter("leads out of the profiles folder").isEmpty());
    QCOMPARE(outsideNow(), before);
    QCOMPARE(bytesOfFile(outside("settings.xml")), QByteArray("<settings><autoload>secret</autoload></settings>"));
    QCOMPARE(bytesOfFile(outside("default/fileList.xml")), QByteArray("<root><texture name=\"secret\"/></root>"));
}

void TestHostileLinks::profilesMayBeReachedByALink()
{
    QVERIFY(QFile::link(inside(""), path("chosen")));
    const ProfileStore store({path("chosen/"), QString()}, "NQLE0");
    QVERIFY(store.createProfile("default"));
    QVERIFY(store.writeSettings({}));
    QVERIFY(store.isSafe("default") && store.hasSettings());
    QCOMPARE(store.profiles(), QStringList("default"));
    QVERIFY(QFile::exists(inside("NQLE0/settings.xml")));
}

void TestHostileLinks::linksBetweenProfilesAreFollowed()
{
    const ProfileStore store({inside(""), QString()}, "NQLE0");
    QVERIFY(store.createProfile("one"));
    QVERIFY(writeBytes(store.fileListPath("one"), "<root/>"));
    QVERIFY(QFile::link("one", store.profileFolder("two")));
    QVERIFY(store.hasFileList("two"));
}

void TestHostileLinks::searchTakesLinkedPictures()
{
    QVERIFY(QDir(inside("")).mkpath("below"));
    QVERIFY(plainPicture(4, 4, 0).save(inside("mine.png")));
    QVERIFY(QFile::link(inside("mine.png"), inside("below/too.png")));
    QVERIFY(QFile::link(outside("secret.png"), inside("a.png")));
    QVERIFY(QFile::link(outside("secret.png"), inside("below/b.png")));
    QVERIFY(QFile::link(path("outside"), inside("below/c")));
    QVERIFY(QFile::link(inside(""), inside("below/circle")));
    QStringList found = picturesInFolder(inside(""), true);
    found.sort();
    // Linked folders are not entered.
    QCOMPARE(found, QStringList({inside("a.png"), inside("below/b.png"), inside("below/too.png"), inside("mine.png")}));
    QCOMPARE(picturesInFolder(inside(""), false).size(), 2);
}

void TestHostileLinks::importsReadNothingOutside()
{
    QVERIFY(QDir(inside("")).mkpath("A_0_x"));
    QVERIFY(QFile::link(outside("10_rgba32_secret.png"), inside("A_0_x/10_rgba32_secret.png")));
    QVERIFY(QFile::link(path("outside"), inside("A_10_y")));
    QVERIFY(QFile::link(outside("secret.png"), inside("secret.png")));
    newTexture(currentROM.root, "secret", 0);
    newTexture(newFolder(currentROM.root, "A_10_y"), "secret", 0);
    QList<HandedOver> handedOver;
    KeptLog log;
    KeptProgress progress;
    QString report;
    importPictureFolder(inside(""), currentROM.root, keepIn(&handedOver), &progress, &log, &report);
    QCOMPARE(handedOver.size(), 0);
    QCOMPARE(importPack(inside(""), currentROM.root, currentROM.data, keepIn(&handedOver), &log).textures, 0);
    QCOMPARE(handedOver.size(), 0);
    QCOMPARE(log.left.filter("a link that leads out of the pack").size(), 2);
}

void TestHostileLinks::directoriesInACircleEnd()
{
    QVERIFY(QDir(inside("")).mkpath("a/b"));
    QVERIFY(QFile::link(inside("a"), inside("a/b/a")));
    QVERIFY(QFile::link(inside(""), inside("A_0_x")));
    QVERIFY(QFile::link("../..", inside("a/b/P_0_y")));
    fileTreeDirectory *folder = currentROM.root;
    for (const char *name : {"a", "b", "a", "b", "a"})
        folder = newFolder(folder, name);
    QList<HandedOver> handedOver;
    KeptLog log;
    KeptProgress progress;
    QString report;
    importPictureFolder(inside(""), currentROM.root, keepIn(&handedOver), &progress, &log, &report);
    QCOMPARE(countFilesBelow(inside("")), 0);
    QCOMPARE(importPack(inside(""), currentROM.root, currentROM.data, keepIn(&handedOver), &log).folders, 1);
    QCOMPARE(picturesInFolder(inside(""), true), QStringList());
}

void TestHostileLinks::extractionWritesNothingOutside()
{
    QVERIFY(QDir(inside("")).mkpath("Root"));
    QVERIFY(QFile::link(path("outside"), inside("Root/Folder")));
    QVERIFY(QFile::link(outside("secret.png"), inside("Root/file.png")));
    QVERIFY(QFile::link(outside("new.png"), inside("Root/new.png")));
    const QStringList before = outsideNow();
    const QByteArray secret = bytesOfFile(outside("secret.png"));
    newTexture(newFolder(currentROM.root, "Folder"), "a", 0);
    newTexture(currentROM.root, "file", 0);
    newTexture(currentROM.root, "new", 0);
    KeptLog log;
    const FolderExtraction result = extractFolder(path("inside"), currentROM.root, &log);
    QCOMPARE(result.written, 0);
    QCOMPARE(log.lines.filter("A link of that name leads out of the chosen folder").size(), 3);
    QCOMPARE(outsideNow(), before);
    QCOMPARE(bytesOfFile(outside("secret.png")), secret);
}

QTEST_GUILESS_MAIN(TestHostileLinks)
#include "tst_hostile_links.moc"
