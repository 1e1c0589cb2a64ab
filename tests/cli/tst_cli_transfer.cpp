// SPDX-License-Identifier: MIT
// Extracting, replacing and importing through the command line.
#include "profilefolder.h"

#include "support/images.h"

#include <QDateTime>
#include <QDirIterator>
#include <QImage>
#include <QJsonArray>

namespace
{
constexpr int imageSize = 0x8000;

const char *const table = "<directory name=\"Town\" address=\"0x1000\" size=\"0x1000\">"
                          "<directory name=\"Empty\" address=\"0x0\" size=\"0x10\"/>"
                          "<texture name=\"Sign\" address=\"0x10\" format=\"rgba32\" width=\"2\" height=\"2\"/>"
                          "<texture name=\"Tile\" address=\"0x40\" format=\"ci4\" width=\"4\" height=\"1\" palette=\"0x80\"/>"
                          "</directory>"
                          "<texture name=\"Grey\" address=\"0x3000\" format=\"i8\" width=\"4\" height=\"2\"/>"
                          "<texture name=\"Photo\" address=\"0x4000\" format=\"jpeg\"/>"
                          "<texture name=\"Odd\" address=\"0x5000\" format=\"rgb565\" width=\"4\" height=\"4\"/>"
                          "<texture name=\"up/../down\" address=\"0x5000\" format=\"i8\" width=\"4\" height=\"4\"/>";

QByteArray jpegBytes()
{
    return QByteArray::fromHex("FFD8FFE000040000FFDB0011223344FFD9");
}

QByteArray testImage()
{
    QByteArray image = cartridgeImage(imageSize);
    image.replace(0x1010, 16, QByteArray::fromHex("FF0000FF00FF00FF0000FF80FFFFFFFF"));
    image.replace(0x1040, 2, QByteArray::fromHex("0102"));
    image.replace(0x1080, 32, QByteArray(32, '\0'));
    image.replace(0x1080, 6, QByteArray::fromHex("F80107C1003F"));
    image.replace(0x3000, 8, QByteArray::fromHex("0011223344556677"));
    image.replace(0x4000, jpegBytes().size(), jpegBytes());
    return image;
}

QImage picture(int width, int height, QRgb colour)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

QStringList filesBelow(const QString &folder)
{
    QStringList files;
    QDirIterator iterator(folder, QDir::AllEntries | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        iterator.next();
        files << QDir(folder).relativeFilePath(iterator.filePath()) + (iterator.fileInfo().isDir() ? "/" : "");
    }
    files.sort();
    return files;
}

class TransferCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void extractWritesAnEntry();
    void extractWritesIntoAFolder();
    void extractCopiesAJpeg();
    void extractWritesAFolder();
    void extractWithoutAPathWritesEverything();
    void extractNeedsNoProfile();
    void extractRefusesWhatMakesNoSense_data();
    void extractRefusesWhatMakesNoSense();
    void extractNeverWritesOverTheImage();
    void extractNamesWhatFails_data();
    void extractNamesWhatFails();
    void extractRemarksOnTheEndOfTheImage();

    void replaceWritesAPicture();
    void replaceWritesInPlaceAndBigEndian();
    void replaceAsksForResize();
    void replaceResizes_data();
    void replaceResizes();
    void replaceWritesThePalette();
    void replaceTurnsTrueColourToIndices();
    void replaceCopiesAJpeg();
    void replaceRefusesSpoiltJpegs();
    void replaceTellsWhatIsDropped();
    void replaceWritesNothingWhenNothingChanges();
    void replacePrintsJson();
    void replaceNeedsNoProfile();
    void replaceGrowsTheImageAloud();
    void replaceRefusesWhatMakesNoSense_data();
    void replaceRefusesWhatMakesNoSense();
    void replaceNamesWhatFails_data();
    void replaceNamesWhatFails();
    void dryRunWritesNothing();

    void folderIsImportedByName();
    void folderIsImportedIntoAFolder();
    void folderImportReadsBackWhatExtractWrote();
    void folderImportListsWhatIsLeftOut();
    void folderImportTellsWhatIsDropped();
    void folderImportWritesNothingWhenNothingChanges();
    void folderImportNamesWhatFails_data();
    void folderImportNamesWhatFails();

    void packGoesIntoImageAndList();
    void packStartsAProfile();
    void packLeavesTheListAlone();
    void packDryRun();
    void packNamesWhatIsUnreadable();
    void packWithoutAFolderFails();
    void packTellsWhatIsDropped();

private:
    QString path(const QString &name) const { return m_folder->path(name); }
    QString save(const QString &name, const QImage &image) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        if (!image.save(path(name)))
            QTest::qFail(qPrintable("cannot save " + name), __FILE__, __LINE__);
        return path(name);
    }
    CommandCall call(const QString &command, const QStringList &more) const { return m_folder->call(command, more); }
    QByteArray image() const { return fileBytes(m_folder->imagePath()); }

    QScopedPointer<ProfileFolder> m_folder;
    QByteArray m_image;
};

void TransferCommandsTest::init()
{
    m_image = testImage();
    m_folder.reset(new ProfileFolder(m_image));
    m_folder->addProfile(table);
}

void TransferCommandsTest::extractWritesAnEntry()
{
    const CommandCall extracted = call("extract", {"Root/Town/Sign", "-o", path("out.png")});
    QCOMPARE(extracted.status, 0);
    QVERIFY(extracted.out.contains(path("out.png")));
    const QImage sign(path("out.png"));
    QCOMPARE(sign.size(), QSize(2, 2));
    QCOMPARE(sign.pixel(0, 0), qRgba(255, 0, 0, 255));
    QCOMPARE(sign.pixel(1, 0), qRgba(0, 255, 0, 255));
    QCOMPARE(sign.pixel(0, 1), qRgba(0, 0, 255, 128));
    QCOMPARE(sign.pixel(1, 1), qRgba(255, 255, 255, 255));
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::extractWritesIntoAFolder()
{
    QDir().mkpath(path("out"));
    QCOMPARE(call("extract", {"Town/Tile", "-o", path("out")}).status, 0);
    const QImage tile(path("out/Tile.png"));
    QCOMPARE(tile.size(), QSize(4, 1));
    QCOMPARE(tile.pixel(0, 0), qRgba(248, 0, 0, 255));
    QCOMPARE(tile.pixel(1, 0), qRgba(0, 248, 0, 255));
    QCOMPARE(tile.pixel(3, 0), qRgba(0, 0, 248, 255));
}

void TransferCommandsTest::extractCopiesAJpeg()
{
    QDir().mkpath(path("out"));
    QCOMPARE(call("extract", {"Photo", "-o", path("out/")}).status, 0);
    QCOMPARE(fileBytes(path("out/Photo.jpeg")), jpegBytes());
}

void TransferCommandsTest::extractWritesAFolder()
{
    const CommandCall extracted = call("extract", {"Root/Town", "-o", path("new/out")});
    QCOMPARE(extracted.status, 0);
    QVERIFY(extracted.out.contains("2 files"));
    QCOMPARE(filesBelow(path("new/out")), QStringList({"Town/", "Town/Empty/", "Town/Sign.png", "Town/Tile.png"}));
}

void TransferCommandsTest::extractWithoutAPathWritesEverything()
{
    const CommandCall extracted = call("extract", {"-o", path("out")});
    QCOMPARE(extracted.status, 1); // Two entries cannot be extracted.
    QVERIFY(extracted.err.contains("Root/Odd"));
    QVERIFY(extracted.err.contains("up/../down"));
    QCOMPARE(filesBelow(path("out")),
             QStringList({"Root/", "Root/Grey.png", "Root/Photo.jpeg", "Root/Town/", "Root/Town/Empty/", "Root/Town/Sign.png",
                          "Root/Town/Tile.png"}));
}

void TransferCommandsTest::extractNeedsNoProfile()
{
    const auto extract = [this](const QStringList &more) {
        return ::call(QStringList {"extract", m_folder->imagePath(), "-o", path("out.png"), "--profiles", path("none")} + more);
    };
    QCOMPARE(extract({"--format", "rgba32", "--offset", "0x1010", "--width", "2", "--height", "2"}).status, 0);
    QCOMPARE(QImage(path("out.png")).pixel(0, 1), qRgba(0, 0, 255, 128));
    QCOMPARE(extract({"--format", "ci4", "--offset", "4160", "--width", "4", "--height", "1", "--palette", "0x1080"}).status, 0);
    QCOMPARE(QImage(path("out.png")).pixel(3, 0), qRgba(0, 0, 248, 255));
    QCOMPARE(extract({"--format", "rgba16", "--offset", "0x1080", "--width", "3", "--height", "1"}).status, 0);
    QCOMPARE(QImage(path("out.png")).pixel(1, 0), qRgba(0, 248, 0, 255));
    QCOMPARE(extract({"--format", "jpeg", "--offset", "0x4000"}).status, 0);
    QCOMPARE(fileBytes(path("out.png")), jpegBytes());
    QVERIFY(!QDir(path("none")).exists());
}

void TransferCommandsTest::extractRefusesWhatMakesNoSense_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("path and offset") << QStringList {"Root/Grey", "--offset", "1",        "--format", "i8",
                                                     "--width",   "1",        "--height", "1"}
                                     << "PATH";
    QTest::newRow("offset alone") << QStringList {"--offset", "1"} << "--format";
    QTest::newRow("format alone") << QStringList {"--format", "i8", "--width", "1", "--height", "1"} << "--offset";
    QTest::newRow("palette alone") << QStringList {"--palette", "1"} << "--offset";
    QTest::newRow("no width") << QStringList {"--offset", "1", "--format", "i8", "--height", "1"} << "--width";
    QTest::newRow("no palette") << QStringList {"--offset", "1", "--format", "ci8", "--width", "1", "--height", "1"}
                                << "--palette";
    QTest::newRow("palette too many") << QStringList {"--offset", "1",        "--format", "i8",        "--width",
                                                      "1",        "--height", "1",        "--palette", "1"}
                                      << "no palette";
    QTest::newRow("width 0") << QStringList {"--offset", "1", "--format", "i8", "--width", "0", "--height", "1"} << "at least 1";
    QTest::newRow("no number") << QStringList {"--offset", "ten", "--format", "i8", "--width", "1", "--height", "1"} << "\"ten\"";
    QTest::newRow("no format") << QStringList {"--offset", "1", "--format", "I8", "--width", "1", "--height", "1"} << "\"I8\"";
    QTest::newRow("no target") << QStringList {"Root/Grey", "-o", ""} << "--output";
}

void TransferCommandsTest::extractRefusesWhatMakesNoSense()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const CommandCall refused = call("extract", arguments);
    QCOMPARE(refused.status, 2);
    QVERIFY2(refused.err.contains(message), qPrintable(refused.err));
    QVERIFY(refused.out.isEmpty());
}

void TransferCommandsTest::extractNeverWritesOverTheImage()
{
    QVERIFY(QFile::link(m_folder->imagePath(), path("link.z64")));
    for (const QString &name : {QStringLiteral("game.z64"), QStringLiteral("./game.z64"), QStringLiteral("link.z64")}) {
        const CommandCall refused = call("extract", {"Root/Grey", "-o", path(name)});
        QCOMPARE(refused.status, 2);
        QVERIFY2(refused.err.contains("the image itself"), qPrintable(refused.err));
        QCOMPARE(image(), m_image);
    }
    // The name of the entry leads there as well.
    QVERIFY(QFile::link(m_folder->imagePath(), path("Grey.png")));
    const CommandCall failed = call("extract", {"Root/Grey", "-o", path("")});
    QCOMPARE(failed.status, 1);
    QVERIFY2(failed.err.contains("the image itself"), qPrintable(failed.err));
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::extractNamesWhatFails_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("no such path") << QStringList {"Root/Gray"} << "Root/Gray";
    QTest::newRow("unknown format") << QStringList {"Root/Odd", "-o", "@/out.png"} << "Root/Odd";
    QTest::newRow("file in the way") << QStringList {"Root/Grey", "-o", "@/game.z64/no/out.png"} << "game.z64/no";
    QTest::newRow("file in a folder's way") << QStringList {"Root/Town", "-o", "@/game.z64/x"} << "game.z64/x";
    QTest::newRow("name that leads out") << QStringList {"Root/up/../down", "-o", "@/"} << "up/../down";
    QTest::newRow("no JPEG") << QStringList {"--offset", "0x3000", "--format", "jpeg", "-o", "@/out.jpeg"} << "0x00003000";
    QTest::newRow("outside") << QStringList {"--offset", "0x9000",   "--format", "i8", "--width",
                                             "1",        "--height", "1",        "-o", "@/out.png"}
                             << "0x00009000";
}

void TransferCommandsTest::extractNamesWhatFails()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    arguments.replaceInStrings("@", path("."));
    const QStringList before = filesBelow(path("."));
    const CommandCall failed = call("extract", arguments);
    QCOMPARE(failed.status, 1);
    QVERIFY2(failed.err.contains(message), qPrintable(failed.err));
    QVERIFY(failed.out.isEmpty());
    QCOMPARE(filesBelow(path(".")), before);
}

void TransferCommandsTest::extractRemarksOnTheEndOfTheImage()
{
    const CommandCall cut =
        call("extract", {"--offset", "0x7FF0", "--format", "i8", "--width", "4", "--height", "8", "-o", path("out.png")});
    QCOMPARE(cut.status, 0);
    QVERIFY(cut.err.contains("end of the image"));
    QCOMPARE(QImage(path("out.png")).size(), QSize(4, 4));
}

void TransferCommandsTest::replaceWritesAPicture()
{
    QImage sign(2, 2, QImage::Format_ARGB32);
    sign.setPixel(0, 0, qRgba(1, 2, 3, 255));
    sign.setPixel(1, 0, qRgba(4, 5, 6, 7));
    sign.setPixel(0, 1, qRgba(8, 9, 10, 0));
    sign.setPixel(1, 1, qRgba(11, 12, 13, 14));
    const CommandCall replaced = call("replace", {"Root/Town/Sign", save("sign.png", sign), "-o", path("out.z64")});
    QCOMPARE(replaced.status, 0);
    QVERIFY2(replaced.err.isEmpty(), qPrintable(replaced.err));
    m_image.replace(0x1010, 16, QByteArray::fromHex("010203FF04050607000000000B0C0D0E"));
    QCOMPARE(fileBytes(path("out.z64")), m_image);
    QCOMPARE(image(), testImage());
}

void TransferCommandsTest::replaceWritesInPlaceAndBigEndian()
{
    writeFile(m_folder->imagePath(), withReversedUnits(m_image, 4));
    QCOMPARE(call("replace", {"Root/Grey", save("grey.png", picture(4, 2, qRgb(9, 9, 9))), "--in-place"}).status, 0);
    m_image.replace(0x3000, 8, QByteArray(8, '\x09'));
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::replaceAsksForResize()
{
    const CommandCall refused = call("replace", {"Root/Grey", save("grey.png", picture(5, 2, qRgb(9, 9, 9))), "--in-place"});
    QCOMPARE(refused.status, 1);
    QVERIFY2(refused.err.contains("5x2") && refused.err.contains("4x2") && refused.err.contains("--resize"),
             qPrintable(refused.err));
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::replaceResizes_data()
{
    QTest::addColumn<QString>("choice");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("ignore") << "ignore" << QByteArray::fromHex("0909090909090909");
    QTest::newRow("keep") << "keep" << QByteArray::fromHex("0909000009090000");
}

void TransferCommandsTest::replaceResizes()
{
    QFETCH(QString, choice);
    QFETCH(QByteArray, bytes);
    const QString grey = save("grey.png", picture(8, 8, qRgb(9, 9, 9)));
    QCOMPARE(call("replace", {"Root/Grey", grey, "--in-place", "--resize", choice}).status, 0);
    m_image.replace(0x3000, 8, bytes);
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::replaceWritesThePalette()
{
    QImage tile(4, 1, QImage::Format_Indexed8);
    tile.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0), qRgb(8, 16, 24)});
    for (int x = 0; x < 4; ++x)
        tile.setPixel(x, 0, uint(x % 3));
    QCOMPARE(call("replace", {"Root/Town/Tile", save("tile.png", tile), "--in-place"}).status, 0);
    m_image.replace(0x1040, 2, QByteArray::fromHex("0120"));
    m_image.replace(0x1080, 32, QByteArray::fromHex("FFFF00010887").leftJustified(32, '\0'));
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::replaceTurnsTrueColourToIndices()
{
    // The palette begins with red, green and blue. The new colour takes the place of green, which the picture does not use.
    QImage tile = picture(4, 1, qRgb(0, 0, 248));
    tile.setPixel(1, 0, qRgb(248, 0, 0));
    tile.setPixel(2, 0, qRgb(8, 16, 24));
    const CommandCall replaced = call("replace", {"Root/Town/Tile", save("tile.png", tile), "--in-place"});
    QCOMPARE(replaced.status, 0);
    QVERIFY2(replaced.err.isEmpty(), qPrintable(replaced.err));
    m_image.replace(0x1040, 2, QByteArray::fromHex("2012"));
    m_image.replace(0x1082, 2, QByteArray::fromHex("0887"));
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::replaceCopiesAJpeg()
{
    const QByteArray jpeg = QByteArray::fromHex("FFD8FFE000040000FFDB00AABBCCDDEEFF00FFD9");
    writeFile(path("photo.jpeg"), jpeg);
    const CommandCall replaced = call("replace", {"Photo", path("photo.jpeg"), "--in-place", "--allow-overrun"});
    QCOMPARE(replaced.status, 0);
    QVERIFY(replaced.err.contains("warning: "));
    m_image.replace(0x4000, jpeg.size(), jpeg);
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::replaceRefusesSpoiltJpegs()
{
    m_folder->addProfile(QByteArray(table)
                         + "<texture name=\"Behind\" address=\"0x4011\" format=\"i8\" width=\"4\" height=\"2\"/>");
    writeFile(path("long.jpeg"), jpegBytes() + "x");
    const CommandCall tooLong = call("replace", {"Photo", path("long.jpeg"), "--in-place"});
    QCOMPARE(tooLong.status, 1);
    QVERIFY2(tooLong.err.contains("runs over Root/Behind"), qPrintable(tooLong.err));
    QVERIFY(tooLong.out.isEmpty());
    writeFile(path("photo.png"), "\x89PNG");
    const CommandCall notJpeg = call("replace", {"Photo", path("photo.png"), "--in-place", "--allow-overrun"});
    QCOMPARE(notJpeg.status, 1);
    QVERIFY2(notJpeg.err.contains("FF D8") && !notJpeg.err.contains("warning"), qPrintable(notJpeg.err));
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::replaceTellsWhatIsDropped()
{
    const CommandCall replaced =
        call("replace", {"Root/Grey", save("grey.png", picture(4, 2, qRgba(9, 8, 9, 200))), "--in-place"});
    QCOMPARE(replaced.status, 0);
    QCOMPARE(replaced.err,
             QStringLiteral("quillary-cli: warning: %1: 8 pixels lose their alpha; i8 has none of its own\n"
                            "quillary-cli: warning: %1: 8 pixels are not grey; i8 keeps only the red channel\n")
                 .arg(path("grey.png")));
}

void TransferCommandsTest::replaceWritesNothingWhenNothingChanges()
{
    QImage same(4, 2, QImage::Format_ARGB32);
    for (int i = 0; i < 8; ++i)
        same.setPixel(i % 4, i / 4, qRgb(0x11 * i, 0x11 * i, 0x11 * i));
    const QString grey = save("grey.png", same);
    // Not even a file in another byte order is written, which would be turned.
    const QByteArray asFound = withReversedUnits(m_image, 2);
    writeFile(m_folder->imagePath(), asFound);
    QFile file(m_folder->imagePath());
    QVERIFY(file.setPermissions(QFile::ReadOwner));
    const QDateTime past = QDateTime::fromSecsSinceEpoch(1000000000);
    QVERIFY(file.open(QIODevice::ReadOnly) && file.setFileTime(past, QFileDevice::FileModificationTime));
    file.close();
    const CommandCall unchanged = call("replace", {"Root/Grey", grey, "--in-place"});
    QCOMPARE(unchanged.status, 0);
    QCOMPARE(unchanged.out, QStringLiteral("Nothing changes; %1 was not written.\n").arg(m_folder->imagePath()));
    QCOMPARE(image(), asFound);
    QCOMPARE(QFileInfo(m_folder->imagePath()).lastModified(), past);
    // A file to be made is made, and left alone once it has the bytes.
    QVERIFY(call("replace", {"Root/Grey", grey, "-o", path("out.z64")}).out.startsWith("Wrote "));
    QCOMPARE(fileBytes(path("out.z64")), m_image);
    QVERIFY(call("replace", {"Root/Grey", grey, "-o", path("out.z64")}).out.startsWith("Nothing changes; "));
    writeFile(path("out.z64"), QByteArray(m_image.size(), 'x'));
    QVERIFY(call("replace", {"Root/Grey", grey, "-o", path("out.z64")}).out.startsWith("Wrote "));
    QCOMPARE(fileBytes(path("out.z64")), m_image);
}

void TransferCommandsTest::replacePrintsJson()
{
    const QString grey = save("grey.png", picture(4, 2, qRgba(9, 9, 9, 200)));
    const QJsonObject done = call("replace", {"Root/Grey", grey, "--in-place", "--json"}).json();
    QCOMPARE(done["picture"].toString(), grey);
    QCOMPARE(done["texture"].toString(), QString("Root/Grey"));
    QCOMPARE(done["written"].toInt(), 1);
    QCOMPARE(done["warnings"].toArray().size(), 1);
    QCOMPARE(done["notImported"].toArray().size(), 0);
    const CommandCall failed = call("replace", {"Root/Town/Sign", grey, "--in-place", "--json"});
    QCOMPARE(failed.status, 1);
    QCOMPARE(failed.json()["written"].toInt(), 0);
    QCOMPARE(failed.json()["notImported"].toArray().size(), 1);
}

void TransferCommandsTest::replaceNeedsNoProfile()
{
    const auto replace = [this](const QStringList &more) {
        return ::call(QStringList {"replace", m_folder->imagePath(), "--in-place", "--profiles", path("none")} + more);
    };
    const QString grey = save("grey.png", picture(2, 2, qRgb(255, 9, 9)));
    QCOMPARE(replace({grey, "--offset", "0x6000", "--format", "i8"}).status, 0);
    m_image.replace(0x6000, 4, QByteArray::fromHex("FFFFFFFF"));
    QCOMPARE(image(), m_image);
    QCOMPARE(replace({grey, "--offset", "0x6000", "--format", "rgba16"}).status, 0);
    m_image.replace(0x6000, 8, QByteArray::fromHex("F843F843F843F843"));
    QCOMPARE(image(), m_image);
    QCOMPARE(replace({grey, "--offset", "0x6000", "--format", "i8", "--width", "1", "--height", "1"}).status, 1);
    QCOMPARE(
        replace({grey, "--offset", "0x6100", "--format", "i8", "--width", "3", "--height", "1", "--resize", "ignore"}).status, 0);
    m_image.replace(0x6100, 3, QByteArray::fromHex("FFFFFF"));
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::replaceGrowsTheImageAloud()
{
    const QString grey = save("grey.png", picture(4, 1, qRgb(9, 9, 9)));
    const CommandCall grown = call("replace", {grey, "--offset", "0x7FFE", "--format", "i8", "-o", path("out.z64")});
    QCOMPARE(grown.status, 0);
    QVERIFY(grown.err.contains("grew"));
    QCOMPARE(fileBytes(path("out.z64")), m_image.left(0x7FFE) + QByteArray(4, '\x09'));
}

void TransferCommandsTest::replaceRefusesWhatMakesNoSense_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("nowhere to write") << QStringList {"Root/Grey", "x.png"} << "--output";
    QTest::newRow("no path") << QStringList {"x.png", "--in-place"} << "PATH";
    QTest::newRow("path and offset") << QStringList {"Root/Grey", "x.png", "--offset", "1", "--format", "i8", "--in-place"}
                                     << "PATH";
    QTest::newRow("no such resize") << QStringList {"Root/Grey", "x.png", "--in-place", "--resize", "crop"} << "\"crop\"";
}

void TransferCommandsTest::replaceRefusesWhatMakesNoSense()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const CommandCall refused = call("replace", arguments);
    QCOMPARE(refused.status, 2);
    QVERIFY2(refused.err.contains(message), qPrintable(refused.err));
}

void TransferCommandsTest::replaceNamesWhatFails_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("no such path") << QStringList {"Root/Gray", "@/grey.png"} << "Root/Gray";
    QTest::newRow("a folder") << QStringList {"Root/Town", "@/grey.png"} << "Root/Town";
    QTest::newRow("no such picture") << QStringList {"Root/Grey", "@/gray.png"} << "gray.png";
    QTest::newRow("no picture") << QStringList {"Root/Grey", "@/game.z64"} << "game.z64";
    QTest::newRow("no such JPEG") << QStringList {"Root/Photo", "@/gray.jpeg"} << "gray.jpeg";
    QTest::newRow("unknown format") << QStringList {"Root/Odd", "@/grey.png"} << "rgb565";
    QTest::newRow("no picture, no profile") << QStringList {"@/gray.png", "--offset", "1", "--format", "i8"} << "gray.png";
}

void TransferCommandsTest::replaceNamesWhatFails()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    save("grey.png", picture(4, 2, qRgb(9, 9, 9)));
    arguments.replaceInStrings("@", path("."));
    const CommandCall failed = call("replace", arguments + QStringList {"--in-place", "--resize", "ignore"});
    QCOMPARE(failed.status, 1);
    QVERIFY2(failed.err.contains(message), qPrintable(failed.err));
    QVERIFY(failed.out.isEmpty());
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::dryRunWritesNothing()
{
    const QString grey = save("grey.png", picture(4, 2, qRgb(9, 9, 9)));
    const CommandCall dry = call("replace", {"Root/Grey", grey, "--dry-run"});
    QCOMPARE(dry.status, 0);
    QCOMPARE(dry.out, QString("Would change 8 bytes from 0x00003000 to 0x00003007.\n"));
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::folderIsImportedByName()
{
    save("in/Grey.png", picture(4, 2, qRgb(9, 9, 9)));
    save("in/Town/sign.png", picture(2, 2, qRgba(1, 2, 3, 4)));
    const CommandCall imported = call("import-folder", {path("in"), "--in-place"});
    QCOMPARE(imported.status, 0);
    QVERIFY2(imported.out.contains("Imported 2 textures"), qPrintable(imported.out));
    QVERIFY(imported.err.isEmpty());
    m_image.replace(0x3000, 8, QByteArray(8, '\x09'));
    m_image.replace(0x1010, 16, QByteArray::fromHex("01020304010203040102030401020304"));
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::folderIsImportedIntoAFolder()
{
    save("in/Sign.png", picture(2, 2, qRgba(1, 2, 3, 4)));
    QCOMPARE(call("import-folder", {path("in"), "Root/Town", "-o", path("out.z64")}).status, 0);
    m_image.replace(0x1010, 16, QByteArray::fromHex("01020304010203040102030401020304"));
    QCOMPARE(fileBytes(path("out.z64")), m_image);
    QCOMPARE(image(), testImage());
}

void TransferCommandsTest::folderImportReadsBackWhatExtractWrote()
{
    QCOMPARE(call("extract", {"Root/Town", "-o", path("out")}).status, 0);
    QByteArray erased = m_image;
    erased.replace(0x1010, 16, QByteArray(16, 'x'));
    erased.replace(0x1040, 2, QByteArray(2, 'x'));
    writeFile(m_folder->imagePath(), erased);
    QCOMPARE(call("import-folder", {path("out/Town"), "Town", "--in-place"}).status, 0);
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::folderImportListsWhatIsLeftOut()
{
    save("in/Grey.png", picture(4, 2, qRgb(9, 9, 9)));
    save("in/Town/Sign.png", picture(3, 2, qRgb(9, 9, 9)));
    save("in/Odd.png", picture(4, 4, qRgb(9, 9, 9)));
    save("in/Village/x.png", picture(3, 2, qRgb(9, 9, 9)));
    m_folder->addPart("in/readme.txt", "x");
    const CommandCall imported = call("import-folder", {path("in"), "--in-place", "--json"});
    QCOMPARE(imported.status, 1);
    const QJsonObject document = imported.json();
    QCOMPARE(document["written"].toInt(), 1);
    QCOMPARE(document["target"].toString(), QString("Root/"));
    QCOMPARE(document["source"].toString(), path("in"));
    const QJsonArray left = document["notImported"].toArray();
    QCOMPARE(left.size(), 4);
    for (const char *part : {"in/readme.txt was not imported. File format not supported.", "Sign.png was not imported. Incorrect",
                             "No folder named Village in Root.", "0x00005000, rgb565: "}) {
        QVERIFY2(imported.err.contains(QLatin1String(part)), part);
        bool listed = false;
        for (const QJsonValue &line : left)
            listed = listed || line.toString().contains(QLatin1String(part));
        QVERIFY2(listed, part);
    }
    m_image.replace(0x3000, 8, QByteArray(8, '\x09'));
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::folderImportTellsWhatIsDropped()
{
    save("in/Gray.png", picture(4, 2, qRgb(9, 9, 9)));
    save("in/Town/Tile.png", picture(4, 1, qRgba(200, 0, 0, 255)));
    const CommandCall imported = call("import-folder", {path("in"), "--in-place", "--json"});
    QCOMPARE(imported.status, 1); // Only because of Gray.
    const QJsonArray left = imported.json()["notImported"].toArray();
    QCOMPARE(left, QJsonArray {path("in/Gray.png") + ": no such texture in Root/; the nearest name is \"Grey\""});
    const QJsonArray warnings = imported.json()["warnings"].toArray();
    QCOMPARE(warnings,
             QJsonArray {path("in/Town/Tile.png")
                         + ": 1 of 1 colour are not in the palette of Root/Town/Tile; the nearest take their part"});
    QVERIFY(imported.err.contains("warning: " + warnings.at(0).toString()));
    QVERIFY(!imported.err.contains("warning: " + left.at(0).toString()));
    m_image.replace(0x1040, 2, QByteArray::fromHex("0000"));
    QCOMPARE(image(), m_image);
    // A warning alone is no failure.
    QVERIFY(QFile::remove(path("in/Gray.png")));
    QCOMPARE(call("import-folder", {path("in"), "--dry-run"}).status, 0);
}

void TransferCommandsTest::folderImportWritesNothingWhenNothingChanges()
{
    QDir().mkpath(path("out"));
    QCOMPARE(call("extract", {"Root/Town", "-o", path("out")}).status, 0);
    QVERIFY(QFile(m_folder->imagePath()).setPermissions(QFile::ReadOwner));
    const CommandCall unchanged = call("import-folder", {path("out/Town"), "Root/Town", "--in-place"});
    QCOMPARE(unchanged.status, 0);
    QVERIFY2(unchanged.out.startsWith("Nothing changes; " + m_folder->imagePath()), qPrintable(unchanged.out));
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::folderImportNamesWhatFails_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("no such folder") << QStringList {"@/nowhere"} << "nowhere";
    QTest::newRow("a file") << QStringList {"@/game.z64"} << "game.z64";
    QTest::newRow("no such path") << QStringList {"@", "Root/Village"} << "Root/Village";
    QTest::newRow("an entry") << QStringList {"@", "Root/Grey"} << "Root/Grey";
}

void TransferCommandsTest::folderImportNamesWhatFails()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    arguments.replaceInStrings("@", path("."));
    const CommandCall failed = call("import-folder", arguments + QStringList {"--in-place"});
    QCOMPARE(failed.status, 1);
    QVERIFY2(failed.err.contains(message), qPrintable(failed.err));
    QVERIFY(failed.out.isEmpty());
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::packGoesIntoImageAndList()
{
    save("pack/A_00006000_Hills/00006010_i8_rock.png", picture(2, 2, qRgb(9, 9, 9)));
    const CommandCall imported = call("import-pack", {path("pack"), "--in-place", "--json"});
    QCOMPARE(imported.status, 0);
    m_image.replace(0x6010, 4, QByteArray(4, '\x09'));
    QCOMPARE(image(), m_image);
    QCOMPARE(imported.json()["foldersAdded"].toInt(), 1);
    QCOMPARE(imported.json()["texturesAdded"].toInt(), 1);
    QCOMPARE(imported.json()["written"].toInt(), 1);
    const QByteArray list = fileBytes(m_folder->fileListPath());
    QVERIFY(list.contains("<directory name=\"Hills\" address=\"0x00006000\" size=\"0x00002000\">"));
    QVERIFY(list.contains("<texture name=\"rock.png\" address=\"0x00006010\" format=\"i8\" width=\"2\" height=\"2\"/>"));
    QVERIFY(list.contains("name=\"Grey\""));
}

void TransferCommandsTest::packStartsAProfile()
{
    save("pack/A_00006000_Hills/00006010_i8_rock.png", picture(2, 2, qRgb(9, 9, 9)));
    const CommandCall imported = call("import-pack", {path("pack"), "--profile", "new one", "-o", path("out.z64")});
    QCOMPARE(imported.status, 0);
    QVERIFY(imported.out.contains("Added 1 folder and 1 entry"));
    QVERIFY(!fileBytes(m_folder->fileListPath("new one")).contains("name=\"Grey\""));
    QVERIFY(fileBytes(m_folder->fileListPath("new one")).contains("rock.png"));
}

void TransferCommandsTest::packLeavesTheListAlone()
{
    const QByteArray list = fileBytes(m_folder->fileListPath());
    save("pack/A_00006000_Hills/00006010_i8_rock.png", picture(2, 2, qRgb(9, 9, 9)));
    QCOMPARE(call("import-pack", {path("pack"), "--in-place", "--no-add"}).status, 0);
    QCOMPARE(image().mid(0x6010, 4), QByteArray(4, '\x09'));
    QCOMPARE(fileBytes(m_folder->fileListPath()), list);
}

void TransferCommandsTest::packDryRun()
{
    const QByteArray list = fileBytes(m_folder->fileListPath());
    save("pack/A_00006000_Hills/00006010_i8_rock.png", picture(2, 2, qRgb(9, 9, 9)));
    const CommandCall dry = call("import-pack", {path("pack"), "--dry-run"});
    QCOMPARE(dry.status, 0);
    QVERIFY(dry.out.contains("from 0x00006010 to 0x00006013"));
    QVERIFY(dry.out.contains("Would write " + m_folder->fileListPath()));
    QVERIFY(dry.out.contains("Would add 1 folder and 1 entry"));
    QCOMPARE(image(), m_image);
    QCOMPARE(fileBytes(m_folder->fileListPath()), list);
}

void TransferCommandsTest::packNamesWhatIsUnreadable()
{
    m_folder->addPart("pack/A_00006000_Hills/00006010_i8_rock.png", "no picture");
    const CommandCall imported = call("import-pack", {path("pack"), "--in-place"});
    QCOMPARE(imported.status, 1);
    QVERIFY2(imported.err.contains("0x00006010, i8: "), qPrintable(imported.err));
    QCOMPARE(image(), m_image);
    QCOMPARE(call("import-pack", {path("nowhere"), "--in-place"}).status, 1);
}
}

void TransferCommandsTest::packWithoutAFolderFails()
{
    QDir().mkpath(path("pack/Grass"));
    const CommandCall imported = call("import-pack", {path("pack"), "--in-place"});
    QCOMPARE(imported.status, 1);
    QVERIFY2(imported.err.contains("pack: no directory in it is named"), qPrintable(imported.err));
    QCOMPARE(image(), m_image);
}

void TransferCommandsTest::packTellsWhatIsDropped()
{
    save("pack/A_0_Signs/00001010_rgb5a1_a.png", picture(2, 2, qRgba(8, 8, 8, 128)));
    save("pack/A_0_Signs/b.png", picture(2, 2, 0));
    const CommandCall imported = call("import-pack", {path("pack"), "--in-place", "--json"});
    QCOMPARE(imported.status, 1);
    QCOMPARE(imported.json()["warnings"].toArray(),
             QJsonArray {path("pack/A_0_Signs/00001010_rgb5a1_a.png") + ": 4 pixels of partial alpha become clear in rgb5a1"});
    QCOMPARE(imported.json()["notImported"].toArray().size(), 1);
}

QTEST_GUILESS_MAIN(TransferCommandsTest)
#include "tst_cli_transfer.moc"
