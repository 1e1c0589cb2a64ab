// SPDX-License-Identifier: MIT
#include "support/images.h"
#include "support/transfer.h"
#include "transfer/extraction.h"
#include "transfer/folderimport.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>

#include <sys/stat.h>

class FolderImportTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void countsAllFilesBelow();
    void handsOverWhatMatches();
    void matchesByCompleteBaseName();
    void reportsOtherFileTypes();
    void skipsUnknownNamesSilently();
    void checksTheDimensions();
    void jpegFileNeedsNoDimensions();
    void descendsIntoFoldersOfTheName();
    void reportsDirectoriesWithoutAFolder();
    void reportsAMissingFolder();
    void statesAnUnreadableFile();
    void leavesLinksAndHiddenEntriesOut();
    void takesTheFirstOfSeveralNames();
    void brokenPicturesAreReported();
    void progressCountsEveryFile();
    void extractedFolderComesBackUnchanged();

private:
    QString path(const QString &name = {}) const { return m_folder->filePath(name); }
    bool save(const QString &name, const QImage &picture) const
    {
        return QDir().mkpath(QFileInfo(path(name)).path()) && picture.save(path(name), "PNG");
    }
    void run(const fileTreeDirectory *directory)
    {
        importPictureFolder(path(), directory, keepIn(&m_handedOver), &m_progress, &m_log, &m_report);
    }
    QStringList addresses() const
    {
        QStringList list;
        for (const HandedOver &texture : m_handedOver)
            list << QString::number(texture.address, 16);
        list.sort();
        return list;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QList<HandedOver> m_handedOver;
    KeptLog m_log;
    KeptProgress m_progress;
    QString m_report;
};

void FolderImportTest::init()
{
    loadIntoCurrentROM(QByteArray(0x4000, '\0'));
    m_folder = std::make_unique<QTemporaryDir>();
    m_handedOver.clear();
    m_log = KeptLog();
    m_progress = KeptProgress();
    m_report.clear();
}

void FolderImportTest::countsAllFilesBelow()
{
    QVERIFY(QDir(path()).mkpath("a/b"));
    QVERIFY(QDir(path()).mkpath("%1/empty"));
    for (const char *name : {"1.png", "2.txt", "a/3.png", "a/b/4", "%1/5.PNG"})
        QVERIFY(writeBytes(path(name), "x"));
    QVERIFY(QFile::link(path("1.png"), path("link.png")));
    QVERIFY(QFile::link(path("a"), path("%1/linked")));
    QVERIFY(QFile::link(path("a"), path("a/b/linked")));
    QCOMPARE(countFilesBelow(path()), 5);
    QCOMPARE(countFilesBelow(path("a")), 2);
    QCOMPARE(countFilesBelow(path("%1/empty")), 0);
    QCOMPARE(countFilesBelow(path("absent")), 0);
}

void FolderImportTest::handsOverWhatMatches()
{
    fileTreeDirectory *folder = newFolder(currentROM.root, "A", 0x100);
    newTexture(folder, "Grass", 0x20, "ci8", 2, 1, 0x500);
    QImage picture(2, 1, QImage::Format_Indexed8);
    picture.setColorTable({qRgb(8, 16, 24), qRgb(248, 0, 0)});
    picture.setPixel(0, 0, 1);
    picture.setPixel(1, 0, 0);
    QVERIFY(save("grass.png", picture));
    run(folder);
    QCOMPARE(m_handedOver.size(), 1); // The pixels; no palette.
    QCOMPARE(m_handedOver.at(0).picture, picture);
    QCOMPARE(m_handedOver.at(0).address, 0x120);
    QCOMPARE(m_handedOver.at(0).format, QStringLiteral("ci8"));
    QCOMPARE(m_handedOver.at(0).rawPicture, bytesOfFile(path("grass.png")));
    QVERIFY(m_report.isEmpty());
    QCOMPARE(m_log.lines,
             QStringList({"Importing directory \"" + path() + '"', "Importing Texture \"" + path("grass.png") + '"'}));
}

void FolderImportTest::matchesByCompleteBaseName()
{
    newTexture(currentROM.root, "grass.old", 0x10, "i8");
    newTexture(currentROM.root, "grass", 0x20, "i8");
    QVERIFY(save("grass.old.png", plainPicture(4, 4, 0)));
    run(currentROM.root);
    QCOMPARE(addresses(), QStringList({"10"}));
}

void FolderImportTest::reportsOtherFileTypes()
{
    newTexture(currentROM.root, "grass", 0, "i8");
    QVERIFY(save("grass.PNG", plainPicture(4, 4, 0)));
    run(currentROM.root);
    QVERIFY(m_handedOver.isEmpty());
    QCOMPARE(m_report, path("grass.PNG") + " was not imported. File format not supported.\n");
    m_report.clear();
    QVERIFY(QFile::rename(path("grass.PNG"), path("grass.jpg")));
    run(currentROM.root);
    QVERIFY(m_handedOver.isEmpty());
    QCOMPARE(m_report, path("grass.jpg") + " was not imported. File format not supported.\n");
}

void FolderImportTest::skipsUnknownNamesSilently()
{
    newTexture(currentROM.root, "grass", 0, "i8");
    QVERIFY(save("stone.png", plainPicture(4, 4, 0)));
    run(currentROM.root);
    QVERIFY(m_handedOver.isEmpty());
    QVERIFY(m_report.isEmpty());
    QCOMPARE(m_progress.values, QList<int>({1}));
}

void FolderImportTest::checksTheDimensions()
{
    newTexture(currentROM.root, "grass", 0, "i8", 4, 4);
    for (const QSize &size : {QSize(4, 5), QSize(5, 4)}) {
        m_report.clear();
        QVERIFY(save("grass.png", plainPicture(size.width(), size.height(), 0)));
        run(currentROM.root);
        QVERIFY(m_handedOver.isEmpty());
        QCOMPARE(m_report, path("grass.png") + " was not imported. Incorrect image dimensions.\n");
    }
}

void FolderImportTest::jpegFileNeedsNoDimensions()
{
    // The file's name decides about the check, the entry's format about what is written.
    newTexture(currentROM.root, "photo", 0x10, "jpeg", 4, 4);
    newTexture(currentROM.root, "pixels", 0x20, "i8", 4, 4);
    QVERIFY(writeBytes(path("photo.jpeg"), jpegBytes(20, 10)));
    QVERIFY(writeBytes(path("pixels.jpeg"), jpegBytes(12, 10)));
    run(currentROM.root);
    std::sort(m_handedOver.begin(), m_handedOver.end(),
              [](const HandedOver &a, const HandedOver &b) { return a.address < b.address; });
    QCOMPARE(m_handedOver.size(), 2);
    QCOMPARE(m_handedOver.at(0).rawPicture, jpegBytes(20, 10));
    QCOMPARE(m_handedOver.at(0).format, QStringLiteral("jpeg"));
    QCOMPARE(m_handedOver.at(1).picture.size(), QSize(12, 10));
    QCOMPARE(m_handedOver.at(1).format, QStringLiteral("i8"));
    QVERIFY(m_report.isEmpty());
}

void FolderImportTest::descendsIntoFoldersOfTheName()
{
    fileTreeDirectory *a = newFolder(currentROM.root, "Alpha", 0x100);
    fileTreeDirectory *b = newFolder(a, "Beta", 0x100);
    newTexture(a, "x", 0x10, "i8");
    newTexture(b, "x", 0x20, "i8");
    QVERIFY(save("alpha/x.png", plainPicture(4, 4, 0)));
    QVERIFY(save("alpha/BETA.new/x.png", plainPicture(4, 4, 0)));
    run(currentROM.root);
    QCOMPARE(addresses(), QStringList({"110", "220"}));
    QVERIFY(m_report.isEmpty());
    QVERIFY(m_log.lines.contains("Found directory \"" + path("alpha") + '"'));
    QVERIFY(m_log.lines.contains("Importing directory \"" + path("alpha/BETA.new") + '"'));
    const int found = m_log.lines.indexOf("Found directory \"" + path("alpha/BETA.new") + '"');
    QCOMPARE(m_log.lines.value(found + 1), "Importing directory \"" + path("alpha/BETA.new") + '"');
}

void FolderImportTest::reportsDirectoriesWithoutAFolder()
{
    newFolder(currentROM.root, "Alpha");
    QVERIFY(QDir(path()).mkpath("alpha/odd.name"));
    QVERIFY(save("alpha/odd.name/x.png", plainPicture(4, 4, 0)));
    run(currentROM.root);
    QCOMPARE(m_report, path("alpha/odd.name") + " was not imported. No folder named odd in Root/Alpha.\n");
    QCOMPARE(m_log.lines.last(), QStringLiteral("Could not find directory \"odd\""));
    QVERIFY(m_progress.values.isEmpty());
}

void FolderImportTest::reportsAMissingFolder()
{
    QVERIFY(save("x.png", plainPicture(4, 4, 0)));
    run(nullptr);
    QCOMPARE(m_report, path() + " was not imported. The program tried to import into a non-existent folder.\n");
    QCOMPARE(m_log.lines, QStringList({"Importing directory \"" + path() + '"'}));
    QVERIFY(m_progress.values.isEmpty());
}

void FolderImportTest::statesAnUnreadableFile()
{
    newTexture(currentROM.root, "one", 0, "jpeg");
    newTexture(currentROM.root, "two", 0, "jpeg");
    QVERIFY(writeBytes(path("one.jpeg"), jpegBytes(4, 4)));
    QVERIFY(writeBytes(path("two.jpeg"), jpegBytes(4, 4)));
    int handedOver = 0;
    const TextureSink removingBoth = [&](const QImage &, int, const QString &, const QByteArray &) {
        ++handedOver;
        QFile::remove(path("one.jpeg"));
        QFile::remove(path("two.jpeg"));
    };
    importPictureFolder(path(), currentROM.root, removingBoth, &m_progress, &m_log, &m_report);
    QCOMPARE(handedOver, 1);
    QVERIFY(m_report.isEmpty());
    QCOMPARE(m_log.statuses, QStringList({"Could not read image file"}));
    QCOMPARE(m_log.durations, QList<int>({2000}));
    QCOMPARE(m_progress.values, QList<int>({1, 2}));
}

void FolderImportTest::leavesLinksAndHiddenEntriesOut()
{
    newTexture(currentROM.root, "x", 0, "i8");
    newFolder(currentROM.root, "x");
    QTemporaryDir elsewhere;
    QVERIFY(plainPicture(4, 4, 0).save(elsewhere.filePath("x.png"), "PNG"));
    QVERIFY(QFile::link(elsewhere.filePath("x.png"), path("x.png")));
    QVERIFY(QFile::link(elsewhere.path(), path("x")));
    QCOMPARE(::mkfifo(QFile::encodeName(path("x.jpeg")).constData(), 0600), 0);
    QVERIFY(save(".x.png", plainPicture(4, 4, 0)));
    run(currentROM.root);
    QVERIFY(m_handedOver.isEmpty());
    QVERIFY(m_report.isEmpty());
    QVERIFY(m_progress.values.isEmpty());
}

void FolderImportTest::takesTheFirstOfSeveralNames()
{
    newTexture(currentROM.root, "GRASS", 0x10, "i8");
    newTexture(currentROM.root, "grass", 0x20, "i8");
    fileTreeDirectory *first = newFolder(currentROM.root, "SUB", 0x100);
    newTexture(first, "x", 0, "i8");
    newTexture(newFolder(currentROM.root, "sub", 0x200), "x", 0, "i8");
    QVERIFY(save("grass.png", plainPicture(4, 4, 0)));
    QVERIFY(save("sub/x.png", plainPicture(4, 4, 0)));
    run(currentROM.root);
    QCOMPARE(addresses(), QStringList({"10", "100"}));
}

void FolderImportTest::brokenPicturesAreReported()
{
    newTexture(currentROM.root, "huge", 0, "i8", 60000, 60000);
    newTexture(currentROM.root, "text", 0, "i8");
    newTexture(currentROM.root, "raw", 0x30, "jpeg");
    QVERIFY(writeBytes(path("huge.png"), pngHeader(60000, 60000)));
    QVERIFY(writeBytes(path("text.png"), "no picture"));
    QVERIFY(writeBytes(path("raw.jpeg"), "no picture either"));
    run(currentROM.root);
    QStringList report = m_report.split('\n');
    report.sort();
    QCOMPARE(report,
             QStringList({QString(), path("huge.png") + " was not imported. Incorrect image dimensions.",
                          path("text.png") + " was not imported. Incorrect image dimensions."}));
    QCOMPARE(addresses(), QStringList({"30"}));
}

void FolderImportTest::progressCountsEveryFile()
{
    fileTreeDirectory *sub = newFolder(currentROM.root, "sub");
    newTexture(sub, "x", 0, "i8");
    QVERIFY(save("sub/x.png", plainPicture(4, 4, 0)));
    QVERIFY(save("unknown.png", plainPicture(4, 4, 0)));
    QVERIFY(writeBytes(path("other.txt"), "x"));
    run(currentROM.root);
    QCOMPARE(m_progress.values, QList<int>({1, 2, 3}));
}

void FolderImportTest::extractedFolderComesBackUnchanged()
{
    QRandomGenerator random(1);
    for (char &byte : currentROM.data)
        byte = char(random.bounded(256));
    fileTreeDirectory *folder = newFolder(currentROM.root, "A", 0x40);
    int address = 0;
    for (const char *format : {"i4", "i8", "ia16", "ci4", "ci8"}) {
        newTexture(folder, format, address, format, 16, 16, 0x3000);
        address += 0x200;
    }
    // Texels with an alpha of zero lose their colour, so these have none.
    fileTreeDirectory *opaque = newFolder(folder, "B", address);
    for (int i = 0; i < 0x1000; ++i)
        currentROM.data[0x40 + address + i] = char(quint8(currentROM.data.at(0x40 + address + i)) | 0x11);
    address = 0;
    for (const char *format : {"rgba32", "rgb5a1", "ia4", "ia8"}) {
        newTexture(opaque, format, address, format, 16, 16);
        address += 0x400;
    }
    const QByteArray jpeg = jpegBytes(16, 16);
    currentROM.data.replace(0x2000, jpeg.size(), jpeg);
    newTexture(opaque, "jpeg", 0x2000 - opaque->realAddress(), "jpeg");

    const QByteArray before = currentROM.data;
    QCOMPARE(extractFolder(path(), folder, &m_log).written, 10);
    int written = 0;
    const TextureSink sink = [&](const QImage &picture, int at, const QString &format, const QByteArray &raw) {
        currentROM.data.replace(at, 8, QByteArray(8, '\0')); // What comes back must come from the file.
        if (writeTexture(&currentROM, picture, at, format, raw, &m_log) == WriteOutcome::Written)
            ++written;
    };
    importPictureFolder(path("A"), folder, sink, &m_progress, &m_log, &m_report);
    QCOMPARE(m_report, QString());
    QCOMPARE(written, 10);
    QVERIFY(currentROM.data == before);
}

QTEST_GUILESS_MAIN(FolderImportTest)
#include "tst_folderimport.moc"
