// SPDX-License-Identifier: MIT
#include "support/images.h"
#include "support/transfer.h"
#include "transfer/texturepack.h"

#include <QTemporaryDir>
#include <QTest>

#include <limits>
#include <memory>

class TexturePackTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void folderReachesToTheEnd();
    void skipsOtherDirectories_data();
    void skipsOtherDirectories();
    void takesNames_data();
    void takesNames();
    void pointerLeadsToTheFolder();
    void skipsUnreadablePointers_data();
    void skipsUnreadablePointers();
    void fileBecomesATexture();
    void skipsOtherFiles_data();
    void skipsOtherFiles();
    void addressesAbove31BitsAreNegative();
    void unreadablePictureKeepsItsEntry();
    void brokenPictureKeepsItsEntry();
    void leavesDeeperDirectoriesAndTopFilesOut();
    void linksOutOfThePackAreLeftOut();
    void lastFolderIsReported();
    void debugLines();
    void missingPackAddsNothing();

private:
    QString path(const QString &name = {}) const { return m_folder->filePath(name); }
    bool makeDirectory(const QString &name) const { return QDir(path()).mkpath(name); }
    bool save(const QString &name, const QImage &picture) const
    {
        return QDir().mkpath(QFileInfo(path(name)).path()) && picture.save(path(name), "PNG");
    }
    TexturePackImport run() { return importPack(path(), currentROM.root, currentROM.data, keepIn(&m_handedOver), &m_log); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QList<HandedOver> m_handedOver;
    KeptLog m_log;
};

void TexturePackTest::init()
{
    loadIntoCurrentROM(QByteArray(0x2000, '\0'));
    m_folder = std::make_unique<QTemporaryDir>();
    m_handedOver.clear();
    m_log = KeptLog();
}

void TexturePackTest::folderReachesToTheEnd()
{
    QVERIFY(makeDirectory("A_00001F00_Grass"));
    const TexturePackImport added = run();
    QCOMPARE(added.folders, 1);
    QCOMPARE(added.textures, 0);
    QCOMPARE(currentROM.root->directories, QList<fileTreeDirectory *>({added.lastFolder}));
    QCOMPARE(added.lastFolder->name, QStringLiteral("Grass"));
    QCOMPARE(added.lastFolder->address, 0x1F00);
    QCOMPARE(added.lastFolder->size, 0x100);
    QCOMPARE(added.lastFolder->parent, currentROM.root);
    QVERIFY(!added.lastFolder->treeItem);
}

void TexturePackTest::skipsOtherDirectories_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"a_1000_x", "A_1000", "B_1000_x", "A_123456789_x", "A__x", "A_10ab_x", "xA_1000_x", "A_1000x",
                             "Grass", "A 1000 x", "AP_1000_x"})
        QTest::newRow(name) << QString(name);
}

void TexturePackTest::skipsOtherDirectories()
{
    QFETCH(QString, name);
    QVERIFY(save(name + "/00000010_rgba32_a.png", plainPicture(1, 1, 0)));
    const TexturePackImport added = run();
    QCOMPARE(added.folders, 0);
    QVERIFY(!added.lastFolder);
    QVERIFY(currentROM.root->directories.isEmpty());
    QVERIFY(m_handedOver.isEmpty());
}

void TexturePackTest::takesNames_data()
{
    QTest::addColumn<QString>("directory");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("address");
    QTest::newRow("one digit") << "A_F_x"
                               << "x" << 0xF;
    QTest::newRow("underscores in the name") << "A_10_x_y_z"
                                             << "x_y_z" << 0x10;
    QTest::newRow("dots and spaces") << "A_10_x .y"
                                     << "x .y" << 0x10;
    QTest::newRow("line feed") << "A_10_x\ny"
                               << "x\ny" << 0x10;
    QTest::newRow("other letters") << QString::fromUtf8("A_10_Gr\xC3\xBCn") << QString::fromUtf8("Gr\xC3\xBCn") << 0x10;
    QTest::newRow("no name") << "A_10_"
                             << "New Folder" << 0x10; // An unnamed folder gets the default name when added.
}

void TexturePackTest::takesNames()
{
    QFETCH(QString, directory);
    QFETCH(QString, name);
    QFETCH(int, address);
    QVERIFY(makeDirectory(directory));
    const TexturePackImport added = run();
    QVERIFY(added.lastFolder);
    QCOMPARE(added.lastFolder->name, name);
    QCOMPARE(added.lastFolder->address, address);
}

void TexturePackTest::pointerLeadsToTheFolder()
{
    currentROM.data.replace(0x1000, 4, QByteArray::fromHex("00B5F000"));
    QVERIFY(makeDirectory("P_1000_Grass"));
    const TexturePackImport added = run();
    QVERIFY(added.lastFolder);
    QCOMPARE(added.lastFolder->address, 0x00B5F000);
    QCOMPARE(added.lastFolder->size, 0x2000 - 0x00B5F000);
}

void TexturePackTest::skipsUnreadablePointers_data()
{
    QTest::addColumn<QString>("digits");
    QTest::addColumn<bool>("readable");
    QTest::newRow("start") << "0" << false;
    QTest::newRow("in the first word") << "3" << false;
    QTest::newRow("second word") << "4" << true;
    QTest::newRow("last word") << "1FFC" << true;
    QTest::newRow("crosses the end") << "1FFD" << false;
    QTest::newRow("end") << "2000" << false;
    QTest::newRow("highest positive") << "7FFFFFFF" << false;
    QTest::newRow("lowest negative") << "80000000" << false;
    QTest::newRow("highest") << "FFFFFFFF" << false;
}

void TexturePackTest::skipsUnreadablePointers()
{
    QFETCH(QString, digits);
    QFETCH(bool, readable);
    QVERIFY(save("P_" + digits + "_x/00000010_rgba32_a.png", plainPicture(1, 1, 0)));
    QCOMPARE(run().folders, readable ? 1 : 0);
    QCOMPARE(m_handedOver.size(), readable ? 1 : 0);
}

void TexturePackTest::fileBecomesATexture()
{
    const QImage picture = plainPicture(3, 2, qRgba(1, 2, 3, 4));
    QVERIFY(save("A_1000_Grass/00000010_rgba32_tile_a.png", picture));
    const TexturePackImport added = run();
    QCOMPARE(added.textures, 1);
    QCOMPARE(added.lastFolder->files.size(), 1);
    const fileTreeFile *texture = added.lastFolder->files.at(0);
    QCOMPARE(texture->name, QStringLiteral("tile_a.png"));
    QCOMPARE(texture->format, QStringLiteral("rgba32"));
    QCOMPARE(texture->address, 0x10);
    QCOMPARE(texture->realAddress(), 0x1010);
    QCOMPARE(texture->width, 3);
    QCOMPARE(texture->height, 2);
    QVERIFY(!texture->treeItem);
    // The number in the name is an absolute address for the pixels, and relative to the folder in the table.
    QCOMPARE(m_handedOver.size(), 1);
    QCOMPARE(m_handedOver.at(0).address, 0x10);
    QCOMPARE(m_handedOver.at(0).picture, picture);
    QCOMPARE(m_handedOver.at(0).format, QStringLiteral("rgba32"));
    QCOMPARE(m_handedOver.at(0).rawPicture, bytesOfFile(path("A_1000_Grass/00000010_rgba32_tile_a.png")));
}

void TexturePackTest::skipsOtherFiles_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"10_rgb565_a.png", "10_RGBA32_a.png", "1a_rgba32_a.png", "123456789_rgba32_a.png", "10_rgba32",
                             "10__a.png", "_rgba32_a.png", "x10_rgba32_a.png", ".10_rgba32_a.png"})
        QTest::newRow(name) << QString(name);
}

void TexturePackTest::skipsOtherFiles()
{
    QFETCH(QString, name);
    QVERIFY(save("A_0_x/" + name, plainPicture(1, 1, 0)));
    const TexturePackImport added = run();
    QCOMPARE(added.folders, 1);
    QCOMPARE(added.textures, 0);
    QVERIFY(m_handedOver.isEmpty());
}

void TexturePackTest::addressesAbove31BitsAreNegative()
{
    QVERIFY(save("A_FFFFFFF0_x/80000000_rgba32_a.png", plainPicture(1, 1, 0)));
    const TexturePackImport added = run();
    QCOMPARE(added.lastFolder->address, -16);
    QCOMPARE(added.lastFolder->size, 0x2010);
    QCOMPARE(added.lastFolder->files.at(0)->address, std::numeric_limits<int>::min());
    QCOMPARE(m_handedOver.at(0).address, std::numeric_limits<int>::min());
    // Such an address is refused where it would be written.
    const QByteArray before = currentROM.data;
    QCOMPARE(writeTexture(&currentROM, m_handedOver.at(0).picture, m_handedOver.at(0).address, "rgba32", {}, &m_log),
             WriteOutcome::OutOfRange);
    QCOMPARE(currentROM.data, before);
}

void TexturePackTest::unreadablePictureKeepsItsEntry()
{
    const QString one = path("A_0_x/10_rgba32_a.png");
    const QString two = path("A_0_x/20_rgba32_b.png");
    QVERIFY(save("A_0_x/10_rgba32_a.png", plainPicture(1, 1, 0)));
    QVERIFY(save("A_0_x/20_rgba32_b.png", plainPicture(1, 1, 0)));
    int handedOver = 0;
    const TextureSink removingBoth = [&](const QImage &, int, const QString &, const QByteArray &) {
        ++handedOver;
        QFile::remove(one);
        QFile::remove(two);
    };
    QCOMPARE(importPack(path(), currentROM.root, currentROM.data, removingBoth, &m_log).textures, 2);
    QCOMPARE(handedOver, 1);
    QCOMPARE(m_log.statuses, QStringList({"Could not read image file"}));
    QCOMPARE(m_log.durations, QList<int>({2000}));
}

void TexturePackTest::brokenPictureKeepsItsEntry()
{
    QVERIFY(makeDirectory("A_0_x"));
    QVERIFY(writeBytes(path("A_0_x/10_rgba32_a.png"), pngHeader(60000, 60000)));
    const TexturePackImport added = run();
    QCOMPARE(added.textures, 1);
    QCOMPARE(added.lastFolder->files.at(0)->width, 0);
    QCOMPARE(added.lastFolder->files.at(0)->height, 0);
    QCOMPARE(m_handedOver.size(), 1);
    QVERIFY(m_handedOver.at(0).picture.isNull());
}

void TexturePackTest::leavesDeeperDirectoriesAndTopFilesOut()
{
    QVERIFY(save("A_0_x/A_0_y/10_rgba32_a.png", plainPicture(1, 1, 0)));
    QVERIFY(makeDirectory("A_0_x/20_rgba32_directory"));
    QVERIFY(save("10_rgba32_a.png", plainPicture(1, 1, 0)));
    QVERIFY(save("A_0_file", plainPicture(1, 1, 0)));
    const TexturePackImport added = run();
    QCOMPARE(added.folders, 1);
    QCOMPARE(added.textures, 0);
}

void TexturePackTest::linksOutOfThePackAreLeftOut()
{
    QTemporaryDir elsewhere;
    QVERIFY(plainPicture(1, 1, 0).save(elsewhere.filePath("10_rgba32_a.png"), "PNG"));
    QVERIFY(makeDirectory("A_0_x"));
    QVERIFY(save("A_0_x/20_rgba32_b.png", plainPicture(1, 1, 0)));
    QVERIFY(QFile::link(elsewhere.path(), path("A_0_y")));
    QVERIFY(QFile::link(elsewhere.filePath("10_rgba32_a.png"), path("A_0_x/10_rgba32_a.png")));
    QVERIFY(QFile::link(path("A_0_x/20_rgba32_b.png"), path("A_0_x/30_rgba32_c.png")));
    const TexturePackImport added = run();
    QCOMPARE(added.folders, 1);
    QCOMPARE(added.textures, 2);
    QCOMPARE(m_handedOver.size(), 2);
}

void TexturePackTest::lastFolderIsReported()
{
    QVERIFY(makeDirectory("A_0_x"));
    QVERIFY(makeDirectory("A_10_x"));
    const TexturePackImport added = run();
    QCOMPARE(added.folders, 2);
    QCOMPARE(currentROM.root->directories.size(), 2);
    QCOMPARE(currentROM.root->directories.last(), added.lastFolder);
    QCOMPARE(added.lastFolder->name, QStringLiteral("x (2)"));
}

void TexturePackTest::debugLines()
{
    QVERIFY(save("A_00001000_Grass/00000010_rgba32_tile_a.png", plainPicture(1, 1, 0)));
    run();
    const QString folder = path("A_00001000_Grass");
    const int first = m_log.lines.indexOf("\"Directory path: " + folder + " Directory name: A_00001000_Grass\"");
    QVERIFY(first >= 0);
    QCOMPARE(m_log.lines.value(first + 1), QStringLiteral("(\"A_00001000_Grass\", \"A\", \"00001000\", \"Grass\")"));
    QCOMPARE(m_log.lines.value(first + 2), QStringLiteral("\"4096\""));
    QCOMPARE(m_log.lines.value(first + 3),
             QStringLiteral("(\"00000010_rgba32_tile_a.png\", \"00000010\", \"rgba32\", \"tile_a.png\")"));
}

void TexturePackTest::missingPackAddsNothing()
{
    const TexturePackImport added = importPack(path("absent"), currentROM.root, currentROM.data, keepIn(&m_handedOver), &m_log);
    QCOMPARE(added.folders, 0);
    QVERIFY(currentROM.root->directories.isEmpty());
}

QTEST_GUILESS_MAIN(TexturePackTest)
#include "tst_texturepack.moc"
