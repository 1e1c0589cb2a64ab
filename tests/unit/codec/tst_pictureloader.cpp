// SPDX-License-Identifier: MIT
#include "codec/pictureloader.h"
#include "support/pictures.h"

#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

class PictureLoaderTest : public QObject
{
    Q_OBJECT

private slots:
    void loadsWhatQImageLoads();
    void goesByContentNotByName();
    void refusesAHugePictureUndecoded();
    void takesAPictureOfTheLargestSize();
    void brokenPicturesAreWhatQImageMakesOfThem_data();
    void brokenPicturesAreWhatQImageMakesOfThem();
    void doesNotWaitForAPipe();
    void tellsTheSizeOfWhatIsThere();

private:
    QString path(const QString &name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void PictureLoaderTest::loadsWhatQImageLoads()
{
    QImage picture = plainPicture(5, 3, qRgba(1, 2, 3, 128));
    picture.setPixel(4, 2, qRgba(9, 8, 7, 255));
    QVERIFY(picture.save(path("a.png"), "PNG"));
    QCOMPARE(loadPicture(path("a.png")), picture);
    QVERIFY(writeBytes(path("a.jpeg"), jpegBytes(9, 7)));
    QCOMPARE(loadPicture(path("a.jpeg")), QImage(path("a.jpeg")));
    QCOMPARE(loadPicture(path("a.jpeg")).size(), QSize(9, 7));

    QImage indexed(2, 1, QImage::Format_Indexed8);
    indexed.setColorTable({qRgba(1, 2, 3, 255), qRgba(4, 5, 6, 0)});
    indexed.setPixel(0, 0, 1);
    indexed.setPixel(1, 0, 0);
    QVERIFY(indexed.save(path("i.png"), "PNG"));
    QCOMPARE(loadPicture(path("i.png")).colorTable(), QImage(path("i.png")).colorTable());
    QCOMPARE(loadPicture(path("i.png")).format(), QImage(path("i.png")).format());
}

void PictureLoaderTest::goesByContentNotByName()
{
    QVERIFY(writeBytes(path("really_a_jpeg.png"), jpegBytes(6, 5)));
    QCOMPARE(loadPicture(path("really_a_jpeg.png")).size(), QSize(6, 5));
}

void PictureLoaderTest::refusesAHugePictureUndecoded()
{
    QVERIFY(writeBytes(path("huge.png"), pngHeader(60000, 60000)));
    QVERIFY(loadPicture(path("huge.png")).isNull());
    QVERIFY(writeBytes(path("wide.png"), pngHeader(0x7FFFFFFF, 0x7FFFFFFF)));
    QVERIFY(loadPicture(path("wide.png")).isNull());
    QVERIFY(!isAcceptablePictureSize(QSize(60000, 60000)));
    QVERIFY(!isAcceptablePictureSize(QSize(8192, 8193)));

    QImage oneRowTooMany(8192, 8193, QImage::Format_Mono);
    oneRowTooMany.fill(0);
    QVERIFY(oneRowTooMany.save(path("one_row_too_many.png")));
    QVERIFY(!QImage(path("one_row_too_many.png")).isNull());
    QVERIFY(loadPicture(path("one_row_too_many.png")).isNull());
}

void PictureLoaderTest::takesAPictureOfTheLargestSize()
{
    QVERIFY(isAcceptablePictureSize(QSize(8192, 8192)));
    QVERIFY(isAcceptablePictureSize(QSize()));
    QVERIFY(isAcceptablePictureSize(QSize(maximumPicturePixels, 1)));
}

void PictureLoaderTest::brokenPicturesAreWhatQImageMakesOfThem_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    plainPicture(32, 32, qRgb(1, 2, 3)).save(&buffer, "PNG");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("text") << QByteArray("no picture");
    QTest::newRow("truncated png") << png.left(png.size() / 2);
    QTest::newRow("png header alone") << pngHeader(32, 32);
    QTest::newRow("png of no pixels") << pngHeader(0, 0);
    QTest::newRow("truncated jpeg") << jpegBytes(64, 64).left(400);
    QTest::newRow("jpeg start alone") << QByteArray::fromHex("FFD8");
}

void PictureLoaderTest::brokenPicturesAreWhatQImageMakesOfThem()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(writeBytes(path("broken.png"), bytes));
    const QImage expected(path("broken.png"));
    const QImage loaded = loadPicture(path("broken.png"));
    QCOMPARE(loaded.isNull(), expected.isNull());
    QCOMPARE(loaded.size(), expected.size());
}

void PictureLoaderTest::doesNotWaitForAPipe()
{
    QCOMPARE(::mkfifo(QFile::encodeName(path("pipe.png")).constData(), 0600), 0);
    QVERIFY(loadPicture(path("pipe.png")).isNull());
    QVERIFY(loadPicture(m_folder.path()).isNull());
    QVERIFY(loadPicture(path("absent.png")).isNull());
    QVERIFY(!sizeOfPicture(path("pipe.png")).isValid());
    QVERIFY(!sizeOfPicture(m_folder.path()).isValid());
}

void PictureLoaderTest::tellsTheSizeOfWhatIsThere()
{
    QVERIFY(writeBytes(path("sized.png"), pngHeader(60000, 3)));
    QCOMPARE(sizeOfPicture(path("sized.png")), QSize(60000, 3));
    QVERIFY(writeBytes(path("sized.jpeg"), jpegBytes(9, 7)));
    QCOMPARE(sizeOfPicture(path("sized.jpeg")), QSize(9, 7));
    QVERIFY(!sizeOfPicture(path("sized")).isValid());
    QVERIFY(writeBytes(path("text.png"), "no picture"));
    QVERIFY(!sizeOfPicture(path("text.png")).isValid());
}

QTEST_GUILESS_MAIN(PictureLoaderTest)
#include "tst_pictureloader.moc"
