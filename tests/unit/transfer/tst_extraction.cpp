// SPDX-License-Identifier: MIT
#include "support/images.h"
#include "support/transfer.h"
#include "transfer/extraction.h"

#include <QDateTime>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include <sys/stat.h>

class ExtractionTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void extensions();
    void pngHoldsTheExactPixels();
    void indexedPngKeepsItsTable();
    void jpegIsCopiedByteForByte();
    void capitalJpegIsAnUnknownFormat();
    void unmeasurableJpegGivesAnEmptyFile();
    void refusesWhatCannotBeRead_data();
    void refusesWhatCannotBeRead();
    void replacesAnOlderFile();
    void leavesAnEqualFileAlone();
    void reportsAFileThatCannotBeWritten();
    void doesNotWaitForAPipe();
    void folderMirrorsTheTable();
    void folderIsMadeWithItsParents();
    void progressCountsAndCancels();
    void laterTextureOfANameWins();
    void folderSkipsWhatCannotBeExtracted();
    void hostileNamesStayInside_data();
    void hostileNamesStayInside();
    void hostileFolderNamesStayInside_data();
    void hostileFolderNamesStayInside();
    void namesWithSlashesGiveNestedFolders();
    void nestedFoldersFollowNoLinkOut();
    void linksLeadNowhere();
    void linksInsideAreFollowed();
    void veryDeepTableEndsGracefully();

private:
    QString path(const QString &name = {}) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
    KeptLog m_log;
    QString m_error;
};

void ExtractionTest::init()
{
    loadIntoCurrentROM(QByteArray(0x1000, '\0'));
    m_folder = std::make_unique<QTemporaryDir>();
    m_log = KeptLog();
    m_error.clear();
}

void ExtractionTest::extensions()
{
    QCOMPARE(pictureExtension("jpeg"), QStringLiteral(".jpeg"));
    QCOMPARE(pictureExtension("JPEG"), QStringLiteral(".jpeg"));
    QCOMPARE(pictureExtension("rgba32"), QStringLiteral(".png"));
    QCOMPARE(pictureExtension(""), QStringLiteral(".png"));
}

void ExtractionTest::pngHoldsTheExactPixels()
{
    currentROM.data.replace(0x100, 8, QByteArray::fromHex("0102030405060700"));
    const fileTreeFile *texture = newTexture(currentROM.root, "a \"b\"", 0x100, "rgba32", 2, 1);
    QCOMPARE(extractTexture(*texture, path("a.png"), &m_log, &m_error), ExtractOutcome::Extracted);
    const QImage picture(path("a.png"), "PNG");
    QCOMPARE(picture.size(), QSize(2, 1));
    QCOMPARE(picture.pixel(0, 0), qRgba(1, 2, 3, 4));
    QCOMPARE(picture.pixel(1, 0), qRgba(5, 6, 7, 0));
    QCOMPARE(QSize(picture.dotsPerMeterX(), picture.dotsPerMeterY()), QSize(3780, 3780)); // Whatever the screen has.
    QCOMPARE(m_log.lines,
             QStringList({"\"a \\\"b\\\"\" \"rgba32\" 2 1", "Saving texture in format 5", "Texture format palette colors: 0"}));
}

void ExtractionTest::indexedPngKeepsItsTable()
{
    currentROM.data.replace(0x100, 2, QByteArray::fromHex("01F0"));
    for (int i = 0; i < 16; ++i) // Colour i: red i * 8, opaque where i is odd.
        currentROM.data.replace(0x200 + 2 * i, 2, QByteArray(1, char(i << 3)) + QByteArray(1, char(i & 1)));
    const fileTreeFile *texture = newTexture(currentROM.root, "a", 0x100, "ci4", 4, 1, 0x200);
    QCOMPARE(extractTexture(*texture, path("a.png"), &m_log, &m_error), ExtractOutcome::Extracted);
    const QImage picture(path("a.png"), "PNG");
    QCOMPARE(picture.format(), QImage::Format_Indexed8);
    QVERIFY(picture.colorCount() >= 16);
    for (int i = 0; i < 16; ++i)
        QCOMPARE(picture.color(i), qRgba(i * 8, 0, 0, i & 1 ? 255 : 0));
    const int expected[] = {0, 1, 15, 0};
    for (int x = 0; x < 4; ++x)
        QCOMPARE(picture.pixelIndex(x, 0), expected[x]);
    QCOMPARE(m_log.lines.mid(1), QStringList({"Saving texture in format 3", "Texture format palette colors: 256"}));
}

void ExtractionTest::jpegIsCopiedByteForByte()
{
    const QByteArray jpeg = jpegBytes(16, 16);
    currentROM.data.replace(0x100, jpeg.size(), jpeg);
    const fileTreeFile *texture = newTexture(currentROM.root, "photo", 0x100, "jpeg", 3, 2);
    QCOMPARE(extractTexture(*texture, path("photo.jpeg"), &m_log, &m_error), ExtractOutcome::Extracted);
    QCOMPARE(bytesOfFile(path("photo.jpeg")), jpeg);
    QCOMPARE(m_log.lines, QStringList({"\"photo\" \"jpeg\" 3 2"}));
}

void ExtractionTest::capitalJpegIsAnUnknownFormat()
{
    const fileTreeFile *texture = newTexture(currentROM.root, "photo", 0x100, "JPEG");
    QCOMPARE(extractTexture(*texture, path("photo.jpeg"), &m_log, &m_error), ExtractOutcome::UnknownFormat);
    QVERIFY(!QFile::exists(path("photo.jpeg")));
}

void ExtractionTest::unmeasurableJpegGivesAnEmptyFile()
{
    const fileTreeFile *texture = newTexture(currentROM.root, "photo", 0x100, "jpeg");
    QCOMPARE(extractTexture(*texture, path("photo.jpeg"), &m_log, &m_error), ExtractOutcome::Extracted);
    QVERIFY(QFile::exists(path("photo.jpeg")));
    QCOMPARE(bytesOfFile(path("photo.jpeg")).size(), 0);
}

void ExtractionTest::refusesWhatCannotBeRead_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("address");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("outcome");
    QTest::addColumn<int>("lines");
    QTest::newRow("no width") << "rgba32" << 0 << 0 << 4 << int(ExtractOutcome::MissingData) << 0;
    QTest::newRow("no height") << "rgba32" << 0 << 4 << 0 << int(ExtractOutcome::MissingData) << 0;
    QTest::newRow("no format") << QString() << 0 << 4 << 4 << int(ExtractOutcome::MissingData) << 0;
    QTest::newRow("unknown format") << "rgb565" << 0 << 4 << 4 << int(ExtractOutcome::UnknownFormat) << 0;
    QTest::newRow("past the end") << "rgba32" << 0x1000 << 4 << 4 << int(ExtractOutcome::NotDecodable) << 1;
    QTest::newRow("far outside") << "rgba32" << 0x7FFFFFFF << 4 << 4 << int(ExtractOutcome::NotDecodable) << 1;
    QTest::newRow("before the start") << "ci8" << -16 << 4 << 4 << int(ExtractOutcome::NotDecodable) << 1;
    QTest::newRow("less than a row") << "rgba32" << 0xFF8 << 4 << 4 << int(ExtractOutcome::NotDecodable) << 1;
}

void ExtractionTest::refusesWhatCannotBeRead()
{
    QFETCH(QString, format);
    QFETCH(int, address);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(int, outcome);
    QFETCH(int, lines);
    const fileTreeFile *texture = newTexture(currentROM.root, "a", address, format, width, height);
    QCOMPARE(int(extractTexture(*texture, path("a.png"), &m_log, &m_error)), outcome);
    QVERIFY(!m_error.isEmpty());
    QVERIFY(!QFile::exists(path("a.png")));
    QCOMPARE(m_log.lines.size(), lines);
}

void ExtractionTest::replacesAnOlderFile()
{
    QVERIFY(writeBytes(path("a.png"), QByteArray(100000, 'x')));
    const fileTreeFile *texture = newTexture(currentROM.root, "a", 0, "i8", 3, 2);
    QCOMPARE(extractTexture(*texture, path("a.png"), &m_log, &m_error), ExtractOutcome::Extracted);
    QCOMPARE(QImage(path("a.png"), "PNG").size(), QSize(3, 2));
    QVERIFY(QFileInfo(path("a.png")).size() < 1000);
    QCOMPARE(treeOnDisk(path()), QStringList({"a.png"}));
}

void ExtractionTest::leavesAnEqualFileAlone()
{
    const fileTreeFile *texture = newTexture(currentROM.root, "a", 0, "i8", 3, 2);
    QCOMPARE(extractTexture(*texture, path("a.png"), &m_log, &m_error), ExtractOutcome::Extracted);
    const QDateTime old = QDateTime::fromSecsSinceEpoch(1000000000);
    QFile file(path("a.png"));
    QVERIFY(file.open(QIODevice::ReadWrite) && file.setFileTime(old, QFileDevice::FileModificationTime));
    file.close();
    QCOMPARE(extractTexture(*texture, path("a.png"), &m_log, &m_error), ExtractOutcome::Extracted);
    QCOMPARE(QFileInfo(path("a.png")).lastModified(), old);
    currentROM.data[0] = '\x7F';
    QCOMPARE(extractTexture(*texture, path("a.png"), &m_log, &m_error), ExtractOutcome::Extracted);
    QVERIFY(QFileInfo(path("a.png")).lastModified() != old);
    QCOMPARE(qRed(QImage(path("a.png")).pixel(0, 0)), 0x7F);
}

void ExtractionTest::reportsAFileThatCannotBeWritten()
{
    const fileTreeFile *texture = newTexture(currentROM.root, "a", 0, "i8", 3, 2);
    QCOMPARE(extractTexture(*texture, path("absent/a.png"), &m_log, &m_error), ExtractOutcome::NotWritten);
    QVERIFY(!m_error.isEmpty());
    QVERIFY(QDir(path()).mkdir("directory.png"));
    QCOMPARE(extractTexture(*texture, path("directory.png"), &m_log, &m_error), ExtractOutcome::NotWritten);
    QVERIFY(QDir(path("directory.png")).exists());
}

void ExtractionTest::doesNotWaitForAPipe()
{
    QCOMPARE(::mkfifo(QFile::encodeName(path("pipe.png")).constData(), 0600), 0);
    const fileTreeFile *texture = newTexture(currentROM.root, "pipe", 0, "i8", 3, 2);
    QCOMPARE(extractTexture(*texture, path("pipe.png"), &m_log, &m_error), ExtractOutcome::NotWritten);
}

void ExtractionTest::folderMirrorsTheTable()
{
    const QByteArray jpeg = jpegBytes(16, 16);
    currentROM.data.replace(0x200, jpeg.size(), jpeg);
    fileTreeDirectory *top = newFolder(currentROM.root, "Top");
    newTexture(top, "grass", 0, "i8");
    newTexture(top, "photo", 0x200, "jpeg");
    fileTreeDirectory *sub = newFolder(top, "Sub");
    newTexture(sub, "grass.old", 0, "ci8");
    newFolder(sub, "Empty");
    newTexture(currentROM.root, "not below", 0, "i8");
    const FolderExtraction result = extractFolder(path(), top, &m_log);
    QCOMPARE(treeOnDisk(path()),
             QStringList({"Top/", "Top/Sub/", "Top/Sub/Empty/", "Top/Sub/grass.old.png", "Top/grass.png", "Top/photo.jpeg"}));
    QCOMPARE(result.written, 3);
    QVERIFY(result.problems.isEmpty());
    QCOMPARE(bytesOfFile(path("Top/photo.jpeg")), jpeg);
    QCOMPARE(m_log.lines.filter("4 4"),
             QStringList({"\"grass\" \"i8\" 4 4", "\"photo\" \"jpeg\" 4 4", "\"grass.old\" \"ci8\" 4 4"}));
}

void ExtractionTest::folderIsMadeWithItsParents()
{
    newTexture(currentROM.root, "a", 0, "i8");
    extractFolder(path("x/y"), currentROM.root, &m_log);
    QVERIFY(QFile::exists(path("x/y/Root/a.png")));
}

void ExtractionTest::progressCountsAndCancels()
{
    class CancelledAfterTwo : public KeptProgress
    {
    public:
        void setMaximum(int value) override { maximum = value; }
        bool cancelled() override { return values.size() == 2; }

        int maximum = -1;
    } progress;
    for (const char *name : {"a", "b", "c", "d"})
        newTexture(currentROM.root, name, 0, "i8");
    const FolderExtraction result = extractFolder(path(), currentROM.root, &m_log, &progress);
    QCOMPARE(progress.maximum, 4);
    QCOMPARE(progress.values, QList<int>({1, 2}));
    QCOMPARE(result.written, 2);
    QVERIFY(result.cancelled);
    QVERIFY(QFile::exists(path("Root/b.png")));
    QVERIFY(!QFile::exists(path("Root/c.png")));
    QVERIFY(!extractFolder(path(), currentROM.root, &m_log).cancelled);
}

void ExtractionTest::laterTextureOfANameWins()
{
    newTexture(currentROM.root, "a", 0, "i8", 1, 1);
    fileTreeFile *later = newTexture(currentROM.root, "b", 0, "i8", 2, 2);
    later->name = "a";
    extractFolder(path(), currentROM.root, &m_log);
    QCOMPARE(treeOnDisk(path()), QStringList({"Root/", "Root/a.png"}));
    QCOMPARE(QImage(path("Root/a.png")).size(), QSize(2, 2));
}

void ExtractionTest::folderSkipsWhatCannotBeExtracted()
{
    newTexture(currentROM.root, "unknown", 0, "rgb565");
    newTexture(currentROM.root, "outside", 0x2000);
    newTexture(currentROM.root, QString(300, 'x'), 0);
    newTexture(currentROM.root, "good", 0);
    const FolderExtraction result = extractFolder(path(), currentROM.root, &m_log);
    QCOMPARE(treeOnDisk(path()), QStringList({"Root/", "Root/good.png"}));
    QCOMPARE(result.written, 1);
    QCOMPARE(result.problems.size(), 3);
    QVERIFY(result.problems.at(0).startsWith("Root/unknown: "));
}

void ExtractionTest::hostileNamesStayInside_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("parent") << QStringLiteral("../escaped");
    QTest::newRow("grandparent") << QStringLiteral("../../escaped");
    QTest::newRow("absolute") << QStringLiteral("/tmp/quillary-escaped");
    QTest::newRow("parent of a subfolder") << QStringLiteral("sub/../../escaped");
    QTest::newRow("zero character") << QString(QStringLiteral("a") + QChar(0) + QStringLiteral("b"));
}

void ExtractionTest::hostileNamesStayInside()
{
    QFETCH(QString, name);
    QVERIFY(QDir(path()).mkpath("outer/chosen/Root/sub"));
    newTexture(currentROM.root, "x", 0)->name = name;
    const FolderExtraction result = extractFolder(path("outer/chosen"), currentROM.root, &m_log);
    QCOMPARE(result.written, 0);
    QCOMPARE(result.problems.size(), 1);
    QCOMPARE(treeOnDisk(path()), QStringList({"outer/", "outer/chosen/", "outer/chosen/Root/", "outer/chosen/Root/sub/"}));
    QVERIFY(!QFile::exists("/tmp/quillary-escaped.png"));
}

void ExtractionTest::hostileFolderNamesStayInside_data()
{
    hostileNamesStayInside_data();
    QTest::newRow("just the parent") << QStringLiteral("..");
}

void ExtractionTest::namesWithSlashesGiveNestedFolders()
{
    fileTreeDirectory *folder = newFolder(currentROM.root, "x");
    folder->name = "x/y";
    newTexture(folder, "a", 0);
    newTexture(currentROM.root, "t", 0)->name = "x/t";
    newTexture(currentROM.root, "u", 0)->name = ".."; // The file is called "...png".
    const FolderExtraction result = extractFolder(path(), currentROM.root, &m_log);
    QCOMPARE(result.problems, QStringList());
    QCOMPARE(result.written, 3);
    QCOMPARE(treeOnDisk(path()), QStringList({"Root/", "Root/...png", "Root/x/", "Root/x/t.png", "Root/x/y/", "Root/x/y/a.png"}));
}

void ExtractionTest::nestedFoldersFollowNoLinkOut()
{
    QVERIFY(QDir(path()).mkpath("chosen/Root"));
    QVERIFY(QDir(path()).mkpath("elsewhere"));
    QVERIFY(QFile::link(path("elsewhere"), path("chosen/Root/x")));
    newTexture(currentROM.root, "t", 0)->name = "x/t";
    newFolder(currentROM.root, "f")->name = "x/y";
    const FolderExtraction result = extractFolder(path("chosen"), currentROM.root, &m_log);
    QCOMPARE(result.written, 0);
    QCOMPARE(result.problems.size(), 2);
    QVERIFY(QDir(path("elsewhere")).isEmpty());
}

void ExtractionTest::hostileFolderNamesStayInside()
{
    QFETCH(QString, name);
    QVERIFY(QDir(path()).mkpath("outer/chosen/Root"));
    fileTreeDirectory *folder = newFolder(currentROM.root, "x");
    folder->name = name;
    newTexture(folder, "a", 0);
    newFolder(folder, "below");
    const FolderExtraction result = extractFolder(path("outer/chosen"), currentROM.root, &m_log);
    QCOMPARE(result.written, 0);
    QCOMPARE(result.problems.size(), 1);
    QCOMPARE(treeOnDisk(path()), QStringList({"outer/", "outer/chosen/", "outer/chosen/Root/"}));
    QVERIFY(!QFile::exists("/tmp/quillary-escaped"));

    QVERIFY(extractFolder(path("outer/chosen"), folder, &m_log).written == 0);
    QCOMPARE(treeOnDisk(path()), QStringList({"outer/", "outer/chosen/", "outer/chosen/Root/"}));
}

void ExtractionTest::linksLeadNowhere()
{
    QVERIFY(QDir(path()).mkpath("chosen/Root"));
    QVERIFY(QDir(path()).mkpath("chosen-too"));
    QVERIFY(writeBytes(path("precious.png"), "precious"));
    QVERIFY(QFile::link(path("chosen-too"), path("chosen/Root/Linked")));
    QVERIFY(QFile::link(path("precious.png"), path("chosen/Root/file.png")));
    QVERIFY(QFile::link(path("absent.png"), path("chosen/Root/dangling.png")));
    newTexture(newFolder(currentROM.root, "Linked"), "a", 0);
    newTexture(currentROM.root, "file", 0);
    newTexture(currentROM.root, "dangling", 0);
    const FolderExtraction result = extractFolder(path("chosen"), currentROM.root, &m_log);
    QCOMPARE(result.written, 0);
    QCOMPARE(result.problems.size(), 3);
    QCOMPARE(bytesOfFile(path("precious.png")), QByteArray("precious"));
    QVERIFY(treeOnDisk(path("chosen-too")).isEmpty());
    QVERIFY(!QFile::exists(path("absent.png")));
}

void ExtractionTest::linksInsideAreFollowed()
{
    QVERIFY(QDir(path()).mkpath("real/Root/Other"));
    QVERIFY(QFile::link(path("real"), path("chosen")));
    QVERIFY(QFile::link(path("real/Root/Other"), path("real/Root/Linked")));
    newTexture(newFolder(currentROM.root, "Linked"), "a", 0);
    QCOMPARE(extractFolder(path("chosen"), currentROM.root, &m_log).written, 1);
    QVERIFY(QFile::exists(path("real/Root/Other/a.png")));
}

void ExtractionTest::veryDeepTableEndsGracefully()
{
    fileTreeDirectory *folder = currentROM.root;
    for (int i = 0; i < 100000; ++i)
        folder = newFolder(folder, "a");
    newTexture(folder, "deepest", 0);
    const FolderExtraction result = extractFolder(path(), currentROM.root, &m_log);
    QCOMPARE(result.written, 0);
    QCOMPARE(result.problems.size(), 1);
    QVERIFY(QDir(path("Root/a/a/a/a")).exists());
}

QTEST_GUILESS_MAIN(ExtractionTest)
#include "tst_extraction.moc"
