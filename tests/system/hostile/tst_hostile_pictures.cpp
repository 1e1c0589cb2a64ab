// SPDX-License-Identifier: MIT
#include "codec/pictureloader.h"
#include "codec/texturemanipulator.h"
#include "model/bulkadder.h"
#include "model/jpegends.h"
#include "support/images.h"
#include "support/transfer.h"
#include "system/hostile/limits.h"
#include "transfer/folderimport.h"
#include "transfer/texturepack.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtEndian>

namespace
{
QByteArray pngChunk(const QByteArray &type, const QByteArray &content)
{
    const QByteArray checked = type + content;
    quint32 crc = 0xFFFFFFFF;
    for (const char byte : checked) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
    }
    QByteArray chunk(4, '\0');
    qToBigEndian(quint32(content.size()), chunk.data());
    QByteArray sum(4, '\0');
    qToBigEndian(~crc, sum.data());
    return chunk + checked + sum;
}

/// A sound PNG of one colour, packed as tightly as its format can: a few bytes for each thousand pixels.
QByteArray pngBomb(int width, int height)
{
    QByteArray header(8, '\0');
    qToBigEndian(quint32(width), header.data());
    qToBigEndian(quint32(height), header.data() + 4);
    header += QByteArray::fromHex("0800000000"); // Eight bits of grey.
    const QByteArray rows((width + 1) * height, '\0');
    return QByteArray::fromHex("89504E470D0A1A0A") + pngChunk("IHDR", header) + pngChunk("IDAT", qCompress(rows, 9).mid(4))
        + pngChunk("IEND", QByteArray());
}

constexpr qint64 megabyte = 1024 * 1024;
}

class TestHostilePictures : public QObject
{
    Q_OBJECT

private slots:
    void claimsCostNothing_data();
    void claimsCostNothing();
    void bombsAreNotDecoded();
    void largeFlatPicturesAreTaken();
    void foldersOfBombsAreImportedQuickly();
    void absurdJpegStreams_data();
    void absurdJpegStreams();
    void manyJpegEntriesWithoutAnEnd();
    void endsAreThoseOfAPlainSearch();
};

void TestHostilePictures::claimsCostNothing_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("png 60000x60000") << pngHeader(60000, 60000);
    QTest::newRow("png 2147483647x1") << pngHeader(0x7FFFFFFF, 1);
    QTest::newRow("png 1x2147483647") << pngHeader(1, 0x7FFFFFFF);
    QTest::newRow("png 8192x8192") << pngHeader(8192, 8192);
    QByteArray jpeg = jpegBytes(16, 16);
    const int frame = jpeg.indexOf("\xFF\xC0");
    QVERIFY(frame > 0);
    jpeg.replace(frame + 5, 4, QByteArray::fromHex("FFFFFFFF"));
    QTest::newRow("jpeg 65535x65535") << jpeg;
    QTest::newRow("bmp 60000x60000") << QByteArray::fromHex("424D36000000000000003600000028000000"
                                                            "60EA0000"
                                                            "60EA0000"
                                                            "01001800000000000000000000000000000000000000000000000000");
    QTest::newRow("ppm 60000x60000") << QByteArray("P6 60000 60000 255\n");
    QTest::newRow("gif 65535x65535") << QByteArray::fromHex(
        "474946383961FFFFFFFF800000000000FFFFFF2C00000000FFFFFFFF0002024401003B");
}

void TestHostilePictures::claimsCostNothing()
{
    QFETCH(QByteArray, file);
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.png");
    QVERIFY(writeBytes(path, file));
    QVERIFY(fitsInto(32 * megabyte, [&] { return loadPicture(path).isNull(); }));
    QVERIFY(isQuick(file.size(), [&] { QVERIFY(loadPicture(path).isNull()); }));
}

void TestHostilePictures::bombsAreNotDecoded()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.png");
    const QByteArray bomb = pngBomb(8000, 8000);
    QVERIFY(bomb.size() < 100 * 1024);
    QVERIFY(writeBytes(path, bomb));
    QVERIFY(fitsInto(16 * megabyte, [&] { return loadPicture(path).isNull(); }));
}

void TestHostilePictures::largeFlatPicturesAreTaken()
{
    const QTemporaryDir folder;
    QVERIFY(writeBytes(folder.filePath("a.png"), pngBomb(4096, 4096)));
    QCOMPARE(loadPicture(folder.filePath("a.png")).size(), QSize(4096, 4096));
}

void TestHostilePictures::foldersOfBombsAreImportedQuickly()
{
    loadIntoCurrentROM(cartridgeImage(64 * 1024));
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkpath("pack/A_0_x"));
    QVERIFY(QDir(folder.path()).mkpath("pictures"));
    const QByteArray bomb = pngBomb(8000, 8000);
    constexpr int count = 40;
    for (int i = 0; i < count; ++i) {
        newTexture(currentROM.root, QString::number(i), 0);
        QVERIFY(writeBytes(folder.filePath(QString("pictures/%1.png").arg(i)), bomb));
        QVERIFY(writeBytes(folder.filePath(QString("pack/A_0_x/%1_rgba32_a.png").arg(i)), bomb));
    }
    QList<HandedOver> handedOver;
    KeptLog log;
    KeptProgress progress;
    QString report;
    QVERIFY(isQuick(count * bomb.size(), [&] {
        importPictureFolder(folder.filePath("pictures"), currentROM.root, keepIn(&handedOver), &progress, &log, &report);
    }));
    QCOMPARE(report.count("Incorrect image dimensions."), count);
    QVERIFY(isQuick(count * bomb.size(),
                    [&] { importPack(folder.filePath("pack"), currentROM.root, currentROM.data, keepIn(&handedOver), &log); }));
}

void TestHostilePictures::absurdJpegStreams_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::newRow("start alone") << QByteArray::fromHex("FFD8");
    QTest::newRow("segment of no length") << QByteArray::fromHex("FFD8FFE00000FFE00000FFDB0000FFD9");
    QTest::newRow("segment beyond the end") << QByteArray::fromHex("FFD8FFE0FFFF");
    QTest::newRow("segment beyond and back") << QByteArray::fromHex("FFD8FFE0FFFFFFE1FFFFFFE2FFFFFFDB");
    QTest::newRow("starts without end") << QByteArray::fromHex("FFD8").repeated(10000);
    QTest::newRow("table without content") << QByteArray::fromHex("FFD8FFDBFFD9");
    QTest::newRow("no marker") << QByteArray::fromHex("FFD8") + QByteArray(5000, '\0');
    QTest::newRow("fill bytes") << QByteArray::fromHex("FFD8") + QByteArray(5000, '\xFF');
    QByteArray huge = jpegBytes(16, 16);
    huge.replace(huge.indexOf("\xFF\xC0") + 5, 4, QByteArray::fromHex("FFFFFFFF"));
    QTest::newRow("a huge picture") << huge;
    QByteArray scans = jpegBytes(16, 16);
    const int scan = scans.indexOf("\xFF\xDA");
    scans.chop(2);
    QTest::newRow("a thousand scans") << scans + scans.mid(scan).repeated(1000) + QByteArray::fromHex("FFD9");
}

void TestHostilePictures::absurdJpegStreams()
{
    QFETCH(QByteArray, stream);
    for (const int before : {0, 64, 4096}) {
        QByteArray image = QByteArray(before, '\x55') + stream;
        loadIntoCurrentROM(image);
        fileTreeFile *texture = newTexture(currentROM.root, "a", before, "jpeg");
        QVERIFY(isQuick(image.size(), [&] {
            const int size = texture->size();
            QVERIFY(size >= -2 && size <= image.size() - before);
            const QByteArray data = texture->data();
            QVERIFY(data.size() <= image.size());
            QVERIFY(textureManipulator::generateTexture(data, textureFormats::jpeg, 0, QByteArray()).width() <= 65535);
        }));
        QVERIFY(fitsInto(64 * megabyte, [&] {
            textureManipulator::generateTexture(texture->data(), textureFormats::jpeg, 0, QByteArray());
            return true;
        }));
    }
}

void TestHostilePictures::manyJpegEntriesWithoutAnEnd()
{
    constexpr int entries = 100000;
    constexpr int bytesOfEntry = 60; // In a file list.
    QByteArray image(64 * 1024 * 1024, '\0');
    for (int address = 0; address < entries * 4; address += 4)
        image.replace(address, 4, QByteArray::fromHex("FFD8FFDB"));
    loadIntoCurrentROM(image);
    BulkAdder root(currentROM.root);
    for (int i = 0; i < entries; ++i) {
        auto *texture = new fileTreeFile;
        texture->address = 4 * i;
        texture->format = "jpeg";
        root.addFile(texture);
    }
    int sum = 0;
    QVERIFY(isQuick(entries * bytesOfEntry + image.size(), [&] {
        for (const fileTreeFile *texture : qAsConst(currentROM.root->files))
            sum += texture->size();
    }));
    QCOMPARE(sum, entries); // A missing end counts as a length of 1.
}

void TestHostilePictures::endsAreThoseOfAPlainSearch()
{
    constexpr int block = 64 * 1024;
    QByteArray image(6 * block + 100, '\xFF');
    const auto check = [&] {
        for (const int near : {0, 1, block, 2 * block, 3 * block, 4 * block, 5 * block, 6 * block, image.size()}) {
            for (int from = qMax(0, near - 3); from <= qMin(image.size(), near + 3); ++from)
                QCOMPARE(nextJpegEnd(image, from), image.indexOf("\xFF\xD9", from));
        }
    };
    check();
    for (const int position : {6 * block + 99, 5 * block, 4 * block - 1, 2 * block + 1, 2 * block, 7, 1}) {
        image[position] = '\xD9';
        check();
    }
    image.fill('\0');
    check();
    image.clear();
    QCOMPARE(nextJpegEnd(image, 0), -1);
}

QTEST_GUILESS_MAIN(TestHostilePictures)
#include "tst_hostile_pictures.moc"
