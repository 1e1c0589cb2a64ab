// SPDX-License-Identifier: MIT
#include "model/bulkadder.h"

#include "support/images.h"
#include "support/messages.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTest>
#include <QTreeWidgetItem>
#include <QVector>

#include <climits>
#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

namespace
{
fileTreeFile *texture(fileTreeDirectory *folder, const QString &name, qint32 address = 0)
{
    auto *file = new fileTreeFile;
    file->name = name;
    file->address = address;
    return folder->addFile(file);
}

fileTreeDirectory *folderIn(fileTreeDirectory *parent, const QString &name, qint32 address = 0)
{
    auto *folder = new fileTreeDirectory;
    folder->name = name;
    folder->address = address;
    return parent->addDirectory(folder);
}

/// A texture of format "jpeg" in the root, over an image that holds \a stream (hexadecimal) at \a address and zeros before it.
fileTreeFile *jpegAt(int address, const QByteArray &stream)
{
    loadIntoCurrentROM(QByteArray(address, '\0') + QByteArray::fromHex(stream));
    fileTreeFile *file = texture(currentROM.root, "picture", address);
    file->format = QStringLiteral("jpeg");
    return file;
}
}

class FileTableTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { resetCurrentROM(); }

    void defaultsOfATexture();
    void defaultsOfAFolder();
    void romAtStart();
    void romCanBeCopied();
    void overwrite_data();
    void overwrite();
    void overwriteRefusesWhatDoesNotFit();
    void nodesCanBeMadeAnywhere();
    void realAddresses();
    void addressesWrapAround();
    void size_data();
    void size();
    void sizesWrapAround();
    void jpegSize_data();
    void jpegSize();
    void jpegOutsideTheImage();
    void jpegStepsAreLimited();
    void jpegEndsFollowTheImage();
    void jpegsWithoutEndAreMeasuredQuickly();
    void writingKeepsNoSecondImage();
    void dataIsCutAtTheImagesEnd();
    void dataFollowsTheImage();
    void palette();
    void paletteLine();
    void textureExists();
    void folderExists();
    void indexes();
    void paths();
    void setNameRules();
    void foldersAndTexturesMayShareAName();
    void lookUpByNameIgnoresCase();
    void fileFromPath();
    void fileFromPathWritesALine();
    void containsFile();
    void sortIsByRelativeAddress();
    void comparatorsGoBySignedOffsets();
    void boundary_data();
    void boundary();
    void boundaryWithoutImage();
    void addFileLeavesThePreviousParentAlone();
    void destroyUnlinks();
    void destroyWithoutParent();
    void rowsGoWithTheirNodes();
    void rowsStayWithoutAParentsRow();
    void walkersKeepTheirOrder();
    void depthCostsNoStack();
    void folderValuesAreCopiedWithoutChildren();
    void copiedFolderHasTheSameFields();
};

void FileTableTest::defaultsOfATexture()
{
    const fileTreeFile file;
    QVERIFY(!file.parent);
    QVERIFY(!file.treeItem);
    QCOMPARE(QString(file.name), QStringLiteral("New Texture"));
    QCOMPARE(file.format, QStringLiteral("rgba32"));
    QCOMPARE(file.address, 0);
    QCOMPARE(file.paletteAddress, 0);
    QCOMPARE(file.width, 32);
    QCOMPARE(file.height, 32);
    QCOMPARE(file.size(), 4096);
    QCOMPARE(file.index(), -1);
    QCOMPARE(file.path(), QString());
}

void FileTableTest::defaultsOfAFolder()
{
    QCOMPARE(fileTreeDirectory().size, 0);
    loadIntoCurrentROM(QByteArray(1000, '\0'));
    const fileTreeDirectory folder;
    QVERIFY(!folder.parent);
    QVERIFY(!folder.treeItem);
    QVERIFY(folder.directories.isEmpty());
    QVERIFY(folder.files.isEmpty());
    QCOMPARE(QString(folder.name), QStringLiteral("New Folder"));
    QCOMPARE(folder.size, 1000);
    QCOMPARE(folder.address, 0);
    QCOMPARE(folder.isRoot, false);
    QCOMPARE(folder.index(), -1);
    currentROM.loaded = false;
    QCOMPARE(fileTreeDirectory().size, 0);
}

void FileTableTest::romAtStart()
{
    const ROM rom;
    QVERIFY(rom.baseName.isEmpty() && rom.romID.isEmpty() && rom.profileName.isEmpty() && rom.autoloadProfile.isEmpty());
    QVERIFY(!rom.autosave && !rom.profileListUpdating && !rom.loaded);
    QVERIFY(rom.data.isEmpty());
    QCOMPARE(QString(rom.root->name), QStringLiteral("Root"));
    QCOMPARE(rom.root->address, 0);
    QCOMPARE(rom.root->isRoot, true);
    QVERIFY(!rom.root->parent);
    QVERIFY(!rom.lastSelectedFolder && !rom.lastSelectedTexture);
    QCOMPARE(QString(rom.editedFolder->name), QStringLiteral("New Folder"));
    QCOMPARE(QString(rom.editedTexture->name), QStringLiteral("New Texture"));
    QCOMPARE(rom.selectedType, 0);
}

void FileTableTest::romCanBeCopied()
{
    ROM rom;
    rom.romID = QStringLiteral("NQLE0");
    rom.data = "bytes";
    rom.selectedType = 2;
    fileTreeFile *file = texture(rom.root, "t");
    rom.lastSelectedTexture = file;
    const ROM copy = rom;
    ROM assigned;
    assigned = rom;
    for (const ROM &other : {copy, assigned}) {
        QCOMPARE(other.romID, rom.romID);
        QCOMPARE(other.data, rom.data);
        QCOMPARE(other.selectedType, 2);
        QCOMPARE(other.root, rom.root);
        QCOMPARE(other.editedFolder, rom.editedFolder);
        QCOMPARE(other.editedTexture, rom.editedTexture);
        QCOMPARE(other.lastSelectedTexture, file);
    }
    // The bytes are each copy's own; the nodes are shared.
    QVERIFY(assigned.overwrite(0, "B"));
    QCOMPARE(rom.data, QByteArray("bytes"));
    texture(assigned.root, "u");
    QCOMPARE(rom.root->files.size(), 2);
}

void FileTableTest::overwrite_data()
{
    QTest::addColumn<int>("address");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("inside") << 1 << QByteArray("XY") << QByteArray("aXYd");
    QTest::newRow("all") << 0 << QByteArray("WXYZ") << QByteArray("WXYZ");
    QTest::newRow("nothing") << 2 << QByteArray() << QByteArray("abcd");
    QTest::newRow("across the end") << 3 << QByteArray("XY") << QByteArray("abcXY");
    QTest::newRow("at the end") << 4 << QByteArray("XY") << QByteArray("abcdXY");
    QTest::newRow("behind the end") << 7 << QByteArray("XY") << QByteArray("abcd   XY");
    QTest::newRow("nothing behind the end") << 7 << QByteArray("") << QByteArray("abcd");
}

void FileTableTest::overwrite()
{
    QFETCH(int, address);
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, expected);
    ROM rom;
    rom.data = "abcd";
    QVERIFY(rom.overwrite(address, bytes));
    QCOMPARE(rom.data, expected);
    QCOMPARE(rom.data, QByteArray("abcd").replace(address, bytes.size(), bytes));
}

void FileTableTest::overwriteRefusesWhatDoesNotFit()
{
    ROM rom;
    rom.data = "abcd";
    for (const int address : {-1, INT_MIN, INT_MAX, maximumImageBytes - 1})
        QVERIFY(!rom.overwrite(address, "XY"));
    QCOMPARE(rom.data, QByteArray("abcd"));
}

/// Each of these outlives main(). Freeing one of them at exit would end this program with an error.
static fileTreeFile staticArray[3];
static const auto staticPointer = std::make_unique<fileTreeDirectory>();

void FileTableTest::nodesCanBeMadeAnywhere()
{
    static std::vector<fileTreeFile> staticVector(3);
    static QVector<fileTreeDirectory> staticQtVector(3);
    static const std::unique_ptr<fileTreeFile[]> ownedArray(new fileTreeFile[2]);
    static const auto shared = std::make_shared<fileTreeFile>();
    std::aligned_storage_t<sizeof(fileTreeFile), alignof(fileTreeFile)> memory;
    auto *placed = new (&memory) fileTreeFile;
    QCOMPARE(placed->name, QStringLiteral("New Texture"));
    placed->~fileTreeFile();
    // Neither linked nor reachable from here on: not a leak.
    auto *lost = new fileTreeFile(staticArray[0]);
    lost->name = QString(1000, QLatin1Char('x'));
    delete new fileTreeDirectory;
    staticPointer->addFile(&staticArray[1]);
    staticArray[1].destroy();
    QVERIFY(staticPointer->files.isEmpty());
}

void FileTableTest::realAddresses()
{
    currentROM.root->address = 0x5000;
    fileTreeDirectory *a = folderIn(currentROM.root, "A", 0x100);
    fileTreeFile *inA = texture(a, "inA", 0x10);
    inA->paletteAddress = 0x20;
    fileTreeDirectory *b = folderIn(a, "B", 0x40);
    fileTreeFile *inB = texture(b, "inB", 0x10);
    inB->paletteAddress = 0x20;
    fileTreeFile *inRoot = texture(currentROM.root, "inRoot", 0x10);
    inRoot->paletteAddress = 0x20;

    QCOMPARE(currentROM.root->realAddress(), 0);
    QCOMPARE(a->realAddress(), 0x100);
    QCOMPARE(b->realAddress(), 0x140);
    QCOMPARE(inA->realAddress(), 0x110);
    QCOMPARE(inA->realPaletteAddress(), 0x120);
    QCOMPARE(inB->realAddress(), 0x150);
    QCOMPARE(inB->realPaletteAddress(), 0x60);
    QCOMPARE(inRoot->realAddress(), 0x10);
    // Only the immediate folder's own field is added, the root's too.
    QCOMPARE(inRoot->realPaletteAddress(), 0x5020);
}

void FileTableTest::addressesWrapAround()
{
    fileTreeDirectory *a = folderIn(currentROM.root, "A", INT_MAX);
    fileTreeFile *file = texture(a, "t", 1);
    file->paletteAddress = 2;
    QCOMPARE(file->realAddress(), INT_MIN);
    QCOMPARE(file->realPaletteAddress(), INT_MIN + 1);
    QVERIFY(file->data().isNull());
}

void FileTableTest::size_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("expected");
    QTest::newRow("rgba32") << "rgba32" << 32 << 32 << 4096;
    QTest::newRow("ci4") << "ci4" << 16 << 16 << 128;
    QTest::newRow("ci8") << "ci8" << 32 << 32 << 1024;
    QTest::newRow("ia16") << "ia16" << 3 << 5 << 30;
    QTest::newRow("half a byte is dropped") << "i4" << 3 << 3 << 4;
    QTest::newRow("unknown format") << "rgba16" << 32 << 32 << 0;
    QTest::newRow("name in capitals") << "RGBA32" << 32 << 32 << 0;
    QTest::newRow("jpeg in capitals is unknown") << "JPEG" << 32 << 32 << 0;
    QTest::newRow("null record") << "null" << 32 << 32 << 0;
    QTest::newRow("zero width") << "i8" << 0 << 7 << 0;
    QTest::newRow("negative width, truncated toward zero") << "i4" << -3 << 1 << -1;
}

void FileTableTest::size()
{
    QFETCH(QString, format);
    QFETCH(int, width);
    QFETCH(int, height);
    fileTreeFile file;
    file.format = format;
    file.width = width;
    file.height = height;
    QTEST(file.size(), "expected");
}

void FileTableTest::sizesWrapAround()
{
    fileTreeFile file;
    file.format = QStringLiteral("i8");
    file.width = 65536;
    file.height = 65537;
    QCOMPARE(file.size(), 65536);
    file.format = QStringLiteral("rgba32");
    file.width = file.height = INT_MAX;
    QCOMPARE(file.size(), 4);
    file.width = INT_MIN;
    file.height = 1;
    QCOMPARE(file.size(), 0);
}

void FileTableTest::jpegSize_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<int>("expected");
    const QByteArray app0 = "FFE00004AABB";
    QTest::newRow("table, then end") << QByteArray("FFD8 FFDB 1122 FFD9 33") << 8;
    QTest::newRow("header segment is stepped over") << "FFD8" + app0 + "FFDB 00 FFD9" << 13;
    QTest::newRow("end inside a header segment does not count") << QByteArray("FFD8 FFE0 0006 FFD9 0000 FFDB FFD9") << 14;
    QTest::newRow("end right behind the table marker") << QByteArray("FFD8FFDBFFD9") << 6;
    QTest::newRow("first end counts") << QByteArray("FFD8FFDB FFD9 FFD9") << 6;
    QTest::newRow("start marker twice") << QByteArray("FFD8FFD8FFDBFFD9") << 8;
    QTest::newRow("segment of length 0") << QByteArray("FFD8 FFE0 0000 FFDB FFD9") << -2;
    QTest::newRow("no end") << QByteArray("FFD8FFDB112233") << 1;
    QTest::newRow("end split over the image's end") << QByteArray("FFD8FFDB11FF") << 1;
    QTest::newRow("no start") << QByteArray("FFD9FFDBFFD9") << -1;
    QTest::newRow("start comes later") << QByteArray("00FFD8FFDBFFD9") << -1;
    QTest::newRow("one byte") << QByteArray("FF") << -1;
    QTest::newRow("start alone") << QByteArray("FFD8") << -2;
    QTest::newRow("marker cut by the end") << QByteArray("FFD8FF") << -2;
    QTest::newRow("length missing") << QByteArray("FFD8FFE0") << -2;
    QTest::newRow("length cut by the end") << QByteArray("FFD8FFE000") << -2;
    QTest::newRow("segment beyond the end") << QByteArray("FFD8FFE0FFFF0000") << -2;
    QTest::newRow("segment ends at the end") << QByteArray("FFD8FFE000040000") << -2;
}

void FileTableTest::jpegSize()
{
    QFETCH(QByteArray, stream);
    QFETCH(int, expected);
    stream.replace(' ', "");
    // At the image's start and further in; the stream's end is the image's.
    for (const int address : {0, 0x123}) {
        const fileTreeFile *file = jpegAt(address, stream);
        QCOMPARE(file->size(), expected);
        if (expected < 0)
            QVERIFY(file->data().isNull());
        else
            QCOMPARE(file->data(), QByteArray::fromHex(stream).left(expected));
    }
}

void FileTableTest::jpegOutsideTheImage()
{
    fileTreeFile *file = jpegAt(4, "FFD8FFDBFFD9");
    for (const int address : {10, 11, INT_MAX, -1, INT_MIN}) {
        file->address = address;
        QCOMPARE(file->size(), -1);
        QVERIFY(file->data().isNull());
    }
}

void FileTableTest::jpegStepsAreLimited()
{
    // The start marker takes the first of ten steps, the table marker the last.
    const QByteArray segment = "FFE10002";
    QCOMPARE(jpegAt(0, "FFD8" + segment.repeated(8) + "FFDBFFD9")->size(), 2 + 8 * 4 + 4);
    QCOMPARE(jpegAt(0, "FFD8" + segment.repeated(9) + "FFDBFFD9")->size(), -2);
    QCOMPARE(jpegAt(0, "FFD8" + segment.repeated(11) + "FFDBFFD9")->size(), -2);
}

void FileTableTest::jpegEndsFollowTheImage()
{
    constexpr int imageSize = 64 * 1024;
    QRandomGenerator random(7);
    loadIntoCurrentROM(QByteArray(imageSize, '\0'));
    QList<fileTreeFile *> entries;
    for (int address = 0; address < imageSize; address += 1024) {
        currentROM.data.replace(address, 4, QByteArray::fromHex("FFD8FFDB"));
        entries << texture(currentROM.root, "picture", address);
        entries.last()->format = QStringLiteral("jpeg");
    }
    for (int i = 0; i < 20000; ++i) {
        const fileTreeFile *entry = entries.at(random.bounded(entries.size()));
        const int end = currentROM.data.indexOf("\xFF\xD9", entry->address + 4);
        QCOMPARE(entry->size(), end < 0 ? 1 : end + 2 - entry->address);
        if (random.bounded(50) > 0)
            continue;
        // Away with a marker, or down with one, by one of the ways to write; never over the starts.
        const int place = 1024 * random.bounded(entries.size()) + 4 + random.bounded(1018);
        const bool areMany = currentROM.data.count("\xFF\xD9") > 3;
        if (areMany)
            currentROM.data.replace(currentROM.data.indexOf("\xFF\xD9"), 2, "..");
        else if (random.bounded(2))
            currentROM.data.replace(place, 2, "\xFF\xD9");
        else
            std::memcpy(currentROM.data.data() + place, "\xFF\xD9", 2);
    }
}

void FileTableTest::jpegsWithoutEndAreMeasuredQuickly()
{
    constexpr int imageSize = 16 << 20;
    constexpr int count = 20000;
    loadIntoCurrentROM(QByteArray(imageSize, '\0'));
    QList<const fileTreeFile *> entries;
    BulkAdder root(currentROM.root);
    for (int i = 0; i < count; ++i) {
        currentROM.data.replace(i * 8, 4, QByteArray::fromHex("FFD8FFDB"));
        auto *entry = root.addFile(new fileTreeFile);
        entry->address = i * 8;
        entry->format = QStringLiteral("jpeg");
        entries << entry;
    }
    QElapsedTimer timer;
    timer.start();
    for (const fileTreeFile *entry : qAsConst(entries))
        QCOMPARE(entry->size(), 1);
    // Reading on to the end of the image for each takes minutes.
    QVERIFY(timer.elapsed() < 10000);
}

void FileTableTest::writingKeepsNoSecondImage()
{
    fileTreeFile *file = jpegAt(4, "FFD8FFDB" + QByteArray(200000, '0'));
    QCOMPARE(file->size(), 1);
    const char *bytes = currentROM.data.constData();
    QVERIFY(currentROM.overwrite(90000, "\xFF\xD9"));
    QCOMPARE(currentROM.data.constData(), bytes);
    QCOMPARE(file->size(), 90000 - 4 + 2);
}

void FileTableTest::dataIsCutAtTheImagesEnd()
{
    loadIntoCurrentROM("0123456789");
    fileTreeFile *file = texture(currentROM.root, "t", 4);
    file->format = QStringLiteral("i8");
    file->width = 3;
    file->height = 1;
    QCOMPARE(file->data(), QByteArray("456"));
    file->width = 100;
    QCOMPARE(file->data(), QByteArray("456789"));
    file->address = 9;
    QCOMPARE(file->data(), QByteArray("9"));
    file->address = 10;
    QVERIFY(file->data().isEmpty());
    file->address = 11;
    QVERIFY(file->data().isNull());
    file->address = -1;
    QVERIFY(file->data().isNull());
    // No bytes asked for inside the image are none, not a failure.
    file->address = 4;
    file->width = 0;
    QVERIFY(file->data().isEmpty() && !file->data().isNull());
}

void FileTableTest::dataFollowsTheImage()
{
    loadIntoCurrentROM("0123456789");
    fileTreeFile *file = texture(currentROM.root, "t", 4);
    file->format = QStringLiteral("i8");
    file->width = file->height = 1;
    currentROM.data[4] = 'x';
    QCOMPARE(file->data(), QByteArray("x"));
}

void FileTableTest::palette()
{
    QByteArray image(2000, '\0');
    for (int i = 0; i < image.size(); ++i)
        image[i] = char(i * 7);
    loadIntoCurrentROM(image);
    fileTreeFile *file = texture(folderIn(currentROM.root, "A", 100), "t");
    file->paletteAddress = 11;
    MessageCapture capture;
    file->format = QStringLiteral("ci8");
    QCOMPARE(file->palette(), image.mid(111, 512));
    file->format = QStringLiteral("ci4");
    QCOMPARE(file->palette(), image.mid(111, 32));
    file->paletteAddress = 1890;
    QCOMPARE(file->palette(), image.mid(1990));
    file->paletteAddress = 100000;
    QVERIFY(file->palette().isEmpty());
    file->paletteAddress = -101;
    QVERIFY(file->palette().isEmpty());
    for (const char *format : {"i4", "rgba32", "jpeg", "unknown", "CI4", ""}) {
        file->format = QString::fromLatin1(format);
        QVERIFY(file->palette().isEmpty());
    }
}

void FileTableTest::paletteLine()
{
    loadIntoCurrentROM(QByteArray(2000, '\0'));
    fileTreeFile *file = texture(folderIn(currentROM.root, "A", 100), "t");
    file->paletteAddress = 11;
    MessageCapture capture;
    file->palette();
    QVERIFY(capture.all().isEmpty());
    file->format = QStringLiteral("ci4");
    file->palette();
    QCOMPARE(capture.textsOf("QByteArray fileTreeFile::palette()"), QStringList {"111"});
    QVERIFY(capture.all().constFirst().file.contains("rom"));
}

void FileTableTest::textureExists()
{
    fileTreeFile file;
    QVERIFY(file.exists());
    file.width = 0;
    QVERIFY(!file.exists());
    file.width = 1;
    file.height = 0;
    QVERIFY(!file.exists());
    file.format = QStringLiteral("JPEG");
    QVERIFY(file.exists());
    file.format = QStringLiteral("anything");
    file.height = 1;
    QVERIFY(file.exists());
    file.format = QString();
    QVERIFY(!file.exists());
    file.format = QStringLiteral("jpeg");
    file.name = QString();
    QVERIFY(!file.exists());
    file.name = QStringLiteral("");
    QVERIFY(file.exists());
}

void FileTableTest::folderExists()
{
    fileTreeDirectory folder;
    QVERIFY(!folder.exists());
    folder.size = 1;
    QVERIFY(folder.exists());
    folder.size = -1;
    QVERIFY(!folder.exists());
    folder.size = 1;
    folder.name = QString();
    QVERIFY(!folder.exists());
}

void FileTableTest::indexes()
{
    texture(currentROM.root, "a");
    const fileTreeFile *second = texture(currentROM.root, "b");
    folderIn(currentROM.root, "a");
    const fileTreeDirectory *secondFolder = folderIn(currentROM.root, "b");
    QCOMPARE(second->index(), 1);
    QCOMPARE(secondFolder->index(), 1);
    QCOMPARE(currentROM.root->index(), -1);
    fileTreeFile stranger;
    stranger.parent = currentROM.root;
    QCOMPARE(stranger.index(), -1);
}

void FileTableTest::paths()
{
    fileTreeDirectory *a = folderIn(currentROM.root, "A");
    fileTreeDirectory *b = folderIn(a, "B");
    QCOMPARE(currentROM.root->path(), QString());
    QCOMPARE(a->path(), QStringLiteral("Root/"));
    QCOMPARE(b->path(), QStringLiteral("Root/A/"));
    QCOMPARE(texture(currentROM.root, "t")->path(), QStringLiteral("Root/"));
    QCOMPARE(texture(b, "t")->path(), QStringLiteral("Root/A/B/"));
}

void FileTableTest::setNameRules()
{
    fileTreeFile *file = texture(currentROM.root, "Sky");
    texture(currentROM.root, "Sky");
    QCOMPARE(QString(texture(currentROM.root, "Sky")->name), QStringLiteral("Sky (3)"));
    file->setName("Sky");
    QCOMPARE(QString(file->name), QStringLiteral("Sky"));
    file->setName("");
    QCOMPARE(QString(file->name), QStringLiteral("Sky"));
    file->setName("sky");
    QCOMPARE(QString(file->name), QStringLiteral("sky"));
    file->setName("Sky (2)");
    QCOMPARE(QString(file->name), QStringLiteral("Sky (2) (2)"));

    fileTreeFile alone;
    alone.name = QString();
    alone.setName(QString());
    QCOMPARE(QString(alone.name), QStringLiteral("New Texture"));
    fileTreeDirectory aloneFolder;
    aloneFolder.name = QString();
    aloneFolder.setName(QString());
    QCOMPARE(QString(aloneFolder.name), QStringLiteral("New Folder"));

    folderIn(currentROM.root, "Sky");
    QCOMPARE(QString(folderIn(currentROM.root, "Sky")->name), QStringLiteral("Sky (2)"));
    QCOMPARE(QString(folderIn(currentROM.root, "")->name), QStringLiteral("New Folder"));
    // An empty current name still has to become free here.
    QCOMPARE(QString(folderIn(currentROM.root, "")->name), QStringLiteral("New Folder (2)"));
}

void FileTableTest::foldersAndTexturesMayShareAName()
{
    texture(currentROM.root, "Sky");
    QCOMPARE(QString(folderIn(currentROM.root, "Sky")->name), QStringLiteral("Sky"));
}

void FileTableTest::lookUpByNameIgnoresCase()
{
    fileTreeFile *lower = texture(currentROM.root, "sky");
    fileTreeFile *upper = texture(currentROM.root, "SKY");
    QVERIFY(upper != lower);
    QCOMPARE(currentROM.root->getFileByName("Sky"), lower);
    QCOMPARE(currentROM.root->getFileByName("SKY"), lower);
    fileTreeDirectory *a = folderIn(currentROM.root, "Grass");
    fileTreeDirectory *inner = folderIn(a, "Inner");
    QVERIFY(inner);
    QCOMPARE(currentROM.root->getDirectoryByName("gRASS"), a);
    QVERIFY(!currentROM.root->getDirectoryByName("Inner"));
    QVERIFY(!currentROM.root->getDirectoryByName("sky"));
    QVERIFY(!currentROM.root->getFileByName("Grass"));
    QVERIFY(!currentROM.root->getFileByName(""));
}

void FileTableTest::fileFromPath()
{
    fileTreeDirectory *a = folderIn(currentROM.root, "A");
    fileTreeFile *deep = texture(a, "Tex");
    fileTreeFile *top = texture(currentROM.root, "Top");
    const fileTreeContainer container;
    const MessageCapture quiet;
    QCOMPARE(container.fileFromPath("Root/A/Tex"), deep);
    QCOMPARE(container.fileFromPath("anything/a/tex"), deep);
    QCOMPARE(container.fileFromPath("/A/Tex"), deep);
    QCOMPARE(container.fileFromPath("Root/Top"), top);
    for (const char *path : {"Root", "", "Root/", "Root/A", "Root/A/", "Root/B/Tex", "Root/A/Top", "Root//A/Tex", "Top"})
        QVERIFY2(!container.fileFromPath(QString::fromLatin1(path)), path);
    top->name = QStringLiteral("");
    QCOMPARE(container.fileFromPath("Root/"), top);
    currentROM.root = nullptr;
    QVERIFY(!container.fileFromPath("Root/A/Tex"));
}

void FileTableTest::fileFromPathWritesALine()
{
    texture(currentROM.root, "Top");
    MessageCapture capture;
    fileTreeContainer().fileFromPath("Root/Nothing");
    QVERIFY(capture.all().isEmpty());
    fileTreeContainer().fileFromPath("Root/top");
    QCOMPARE(capture.textsOf("fileTreeFile *fileTreeContainer::fileFromPath(QString)"),
             QStringList {"Found file from path \"Root/top\""});
}

void FileTableTest::containsFile()
{
    fileTreeFile *first = texture(currentROM.root, "first", 0x10);
    fileTreeFile *second = texture(currentROM.root, "second", 0x20);
    QCOMPARE(currentROM.root->containsFile(second, false), 1);
    fileTreeFile other = *second;
    other.name = QStringLiteral("other");
    QCOMPARE(currentROM.root->containsFile(&other, false), -1);
    QCOMPARE(currentROM.root->containsFile(&other, true), 1);
    first->address = 0x20;
    QCOMPARE(currentROM.root->containsFile(&other, true), 0);
    first->address = 0x10;
    for (const auto field : {&fileTreeFile::address, &fileTreeFile::width, &fileTreeFile::height}) {
        fileTreeFile changed = other;
        changed.*field += 1;
        QCOMPARE(currentROM.root->containsFile(&changed, true), -1);
    }
    other.paletteAddress = 99;
    QCOMPARE(currentROM.root->containsFile(&other, true), 1);
    other.format = QStringLiteral("RGBA32");
    QCOMPARE(currentROM.root->containsFile(&other, true), -1);
}

void FileTableTest::sortIsByRelativeAddress()
{
    fileTreeDirectory *a = folderIn(currentROM.root, "a", 5);
    fileTreeDirectory *b = folderIn(currentROM.root, "b", -1);
    fileTreeFile *late = texture(currentROM.root, "late", 9);
    fileTreeFile *early = texture(currentROM.root, "early", 3);
    texture(a, "2", 2);
    texture(a, "1", 1);
    currentROM.root->sort();
    QCOMPARE(currentROM.root->directories, (QList<fileTreeDirectory *> {b, a}));
    QCOMPARE(currentROM.root->files, (QList<fileTreeFile *> {early, late}));
    QCOMPARE(QString(a->files.first()->name), QStringLiteral("2"));
}

void FileTableTest::comparatorsGoBySignedOffsets()
{
    fileTreeDirectory *a = folderIn(currentROM.root, "a", -1);
    fileTreeDirectory *b = folderIn(currentROM.root, "b", 5);
    fileTreeDirectory *inner = folderIn(b, "inner", 5);
    QVERIFY(sortDirectoryDown(a, b));
    QVERIFY(!sortDirectoryDown(b, a));
    QVERIFY(!sortDirectoryDown(b, inner)); // 5 in both: relative, and strictly less
    QVERIFY(!sortDirectoryDown(inner, b));
    fileTreeFile *early = texture(currentROM.root, "z", -1);
    fileTreeFile *late = texture(currentROM.root, "a", 3);
    fileTreeFile *deeper = texture(b, "b", 3);
    QVERIFY(sortFileDown(early, late));
    QVERIFY(!sortFileDown(late, early));
    QVERIFY(!sortFileDown(late, deeper));
    QVERIFY(!sortFileDown(deeper, late));
}

void FileTableTest::boundary_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("address");
    QTest::addColumn<int>("expected");
    QTest::newRow("inside") << 100 << 200 << 100;
    QTest::newRow("up to the end") << 800 << 200 << 800;
    QTest::newRow("one past the end") << 801 << 200 << 800;
    QTest::newRow("nothing") << 0 << 200 << 800;
    QTest::newRow("negative") << -5 << 200 << 800;
    QTest::newRow("address past the end") << 10 << 1200 << -200;
    QTest::newRow("sum above 32 bits") << INT_MAX << 200 << 800;
}

void FileTableTest::boundary()
{
    QFETCH(int, size);
    QFETCH(int, address);
    loadIntoCurrentROM(QByteArray(1000, '\0'));
    // The folder around it does not count, only the own relative address does.
    fileTreeDirectory *outer = folderIn(currentROM.root, "outer", 900);
    fileTreeDirectory *folder = folderIn(outer, "inner");
    folder->address = address;
    folder->setSize(size);
    QTEST(folder->size, "expected");
    folder->size = size;
    folder->setAddress(address);
    QCOMPARE(folder->address, address);
    QTEST(folder->size, "expected");
}

void FileTableTest::boundaryWithoutImage()
{
    fileTreeDirectory folder;
    MessageCapture capture;
    folder.setSize(0);
    folder.setSize(77);
    folder.setAddress(-3);
    QCOMPARE(folder.size, 77);
    QCOMPARE(folder.address, -3);
    const QString line = QStringLiteral("Could not update file boundary because the ROM isn't loaded");
    QCOMPARE(capture.textsOf("void fileTreeDirectory::updateBoundary()"), (QStringList {line, line, line}));
}

void FileTableTest::addFileLeavesThePreviousParentAlone()
{
    fileTreeDirectory *a = folderIn(currentROM.root, "A");
    fileTreeDirectory *b = folderIn(currentROM.root, "B");
    fileTreeFile *file = texture(a, "t");
    QCOMPARE(b->addFile(file), file);
    QCOMPARE(file->parent, b);
    QVERIFY(a->files.contains(file));
    QCOMPARE(b->addDirectory(a), a);
    QCOMPARE(a->parent, b);
    QVERIFY(currentROM.root->directories.contains(a));
}

void FileTableTest::destroyUnlinks()
{
    fileTreeDirectory *a = folderIn(currentROM.root, "A");
    fileTreeFile *inner = texture(a, "inner");
    fileTreeFile *file = texture(currentROM.root, "t");
    currentROM.lastSelectedTexture = file;
    currentROM.lastSelectedFolder = currentROM.root;
    file->destroy();
    QVERIFY(currentROM.root->files.isEmpty());
    QVERIFY(!currentROM.lastSelectedTexture);
    QCOMPARE(currentROM.lastSelectedFolder, currentROM.root);

    currentROM.lastSelectedTexture = inner;
    currentROM.lastSelectedFolder = a;
    a->destroy();
    QVERIFY(currentROM.root->directories.isEmpty());
    QVERIFY(!currentROM.lastSelectedFolder);
    // The node and what lies below it stay valid.
    QCOMPARE(currentROM.lastSelectedTexture, inner);
    QCOMPARE(a->files, QList<fileTreeFile *> {inner});
    QCOMPARE(inner->path(), QStringLiteral("Root/A/"));
}

void FileTableTest::destroyWithoutParent()
{
    fileTreeFile file;
    currentROM.lastSelectedTexture = &file;
    file.destroy();
    QVERIFY(!currentROM.lastSelectedTexture);
    currentROM.lastSelectedFolder = currentROM.root;
    currentROM.root->destroy();
    QVERIFY(!currentROM.lastSelectedFolder);
}

void FileTableTest::rowsGoWithTheirNodes()
{
    // A program without a window or a GUI application, whose nodes have rows all the same.
    QTreeWidgetItem rootRow;
    currentROM.root->treeItem = &rootRow;
    fileTreeDirectory *a = folderIn(currentROM.root, "A");
    fileTreeFile *inner = texture(a, "inner");
    fileTreeFile *file = texture(currentROM.root, "t");
    const auto fileRow = std::make_unique<QTreeWidgetItem>(&rootRow);
    const auto folderRow = std::make_unique<QTreeWidgetItem>(&rootRow);
    const auto innerRow = std::make_unique<QTreeWidgetItem>(folderRow.get());
    file->treeItem = fileRow.get();
    a->treeItem = folderRow.get();
    inner->treeItem = innerRow.get();

    file->destroy();
    QCOMPARE(rootRow.childCount(), 1);
    QVERIFY(!fileRow->parent());
    QVERIFY(!rootRow.data(0, Qt::DecorationRole).isValid());
    inner->destroy();
    QCOMPARE(folderRow->childCount(), 0);
    QCOMPARE(folderRow->data(0, Qt::DecorationRole).userType(), int(QMetaType::QIcon));
    a->destroy();
    QCOMPARE(rootRow.childCount(), 0);
    QCOMPARE(rootRow.data(0, Qt::DecorationRole).userType(), int(QMetaType::QIcon));
}

void FileTableTest::rowsStayWithoutAParentsRow()
{
    QTreeWidgetItem foreignRow;
    const auto row = std::make_unique<QTreeWidgetItem>(&foreignRow);
    fileTreeFile *file = texture(currentROM.root, "t");
    file->treeItem = row.get();
    file->destroy();
    QCOMPARE(row->parent(), &foreignRow);
}

void FileTableTest::walkersKeepTheirOrder()
{
    fileTreeDirectory *a = folderIn(currentROM.root, "A");
    fileTreeDirectory *b = folderIn(currentROM.root, "B");
    fileTreeDirectory *a1 = folderIn(a, "A1");
    fileTreeDirectory *a2 = folderIn(a, "A2");
    fileTreeDirectory *a11 = folderIn(a1, "A11");
    fileTreeDirectory *b1 = folderIn(b, "B1");
    const fileTreeContainer container;
    QCOMPARE(container.allDirectories(currentROM.root), (QList<fileTreeDirectory *> {a, b, a1, a2, a11, b1}));
    QCOMPARE(container.allDirectories(a11), QList<fileTreeDirectory *>());
    QVERIFY(container.allDirectories(nullptr).isEmpty());

    fileTreeFile *inB = texture(b, "inB");
    fileTreeFile *inA11 = texture(a11, "inA11");
    fileTreeFile *inA = texture(a, "inA");
    fileTreeFile *inA2 = texture(a2, "inA2");
    fileTreeFile *inRoot = texture(currentROM.root, "inRoot");
    QCOMPARE(container.allFiles(currentROM.root), (QList<fileTreeFile *> {inRoot, inA, inA11, inA2, inB}));
    QVERIFY(container.allFiles(nullptr).isEmpty());
}

void FileTableTest::depthCostsNoStack()
{
    constexpr int levels = 100000;
    fileTreeDirectory *folder = currentROM.root;
    for (int i = 0; i < levels; ++i) {
        auto *next = new fileTreeDirectory;
        next->address = 1;
        folder = folder->addDirectory(next);
    }
    fileTreeFile *file = texture(folder, "deepest");
    QCOMPARE(file->realAddress(), levels);
    QCOMPARE(file->path().size(), 5 + levels * 11);
    const MessageCapture quiet;
    QCOMPARE(fileTreeContainer().allDirectories(currentROM.root).size(), levels);
    QCOMPARE(fileTreeContainer().allFiles(currentROM.root), QList<fileTreeFile *> {file});
    QCOMPARE(fileTreeContainer().fileFromPath(file->path() + file->name), file);
}

void FileTableTest::folderValuesAreCopiedWithoutChildren()
{
    fileTreeDirectory *a = folderIn(currentROM.root, "A", 1);
    texture(a, "t");
    fileTreeDirectory values;
    values.name = QStringLiteral("B");
    values.address = 7;
    values.size = 8;
    a->copyValues(values);
    QCOMPARE(QString(a->name), QStringLiteral("B"));
    QCOMPARE(a->address, 7);
    QCOMPARE(a->size, 8);
    QCOMPARE(a->files.size(), 1);
    QCOMPARE(a->parent, currentROM.root);
}

void FileTableTest::copiedFolderHasTheSameFields()
{
    fileTreeDirectory *a = folderIn(currentROM.root, "A", 1);
    a->size = 9;
    fileTreeFile *file = texture(a, "t");
    fileTreeDirectory copy = *a;
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(copy.parent, currentROM.root);
        QCOMPARE(QString(copy.name), QStringLiteral("A"));
        QCOMPARE(copy.address, 1);
        QCOMPARE(copy.size, 9);
        QCOMPARE(copy.files, QList<fileTreeFile *> {file});
        QCOMPARE(copy.isRoot, false);
        copy = fileTreeDirectory();
        copy = *a;
    }
    const fileTreeDirectory &same = copy;
    copy = same;
    QCOMPARE(QString(copy.name), QStringLiteral("A"));
    QCOMPARE(copy.files, QList<fileTreeFile *> {file});
    // Names taken in the copy are not taken in the original.
    auto *late = new fileTreeFile;
    late->name = QStringLiteral("late");
    copy.addFile(late);
    QCOMPARE(QString(texture(a, "late")->name), QStringLiteral("late"));
    QCOMPARE(a->files.size(), 2);
}

QTEST_GUILESS_MAIN(FileTableTest)
#include "tst_filetable.moc"
