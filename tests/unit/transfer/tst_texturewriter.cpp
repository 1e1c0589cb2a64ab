// SPDX-License-Identifier: MIT
#include "support/transfer.h"
#include "transfer/texturewriter.h"

#include <QTest>

#include <limits>

namespace
{
const QString unsupported = QStringLiteral("The texture is using an unsupported format. Texture was not imported");
const QString conversionError =
    QStringLiteral("There was an error with the texture converision: Incorrect length. Texture was not imported");
}

class TextureWriterTest : public QObject
{
    Q_OBJECT

private slots:
    void writesTheEncodedBytesInPlace();
    void writesAJpegsFileAsItIs();
    void refusesUnknownFormats_data();
    void refusesUnknownFormats();
    void reportsAPictureThatGivesNoBytes();
    void emptyJpegCountsAsWritten();
    void nothingToWriteBehindTheEndDoesNotGrowTheImage();
    void growsWhereTheRangeCrossesTheEnd();
    void fillsAGapWithZeroBytes();
    void refusesAddressesThatMustNotBeWritten_data();
    void refusesAddressesThatMustNotBeWritten();
    void writesInsideAnImageAboveTheGrowthLimit();
};

void TextureWriterTest::writesTheEncodedBytesInPlace()
{
    QByteArray cartridge(12, '\x11');
    KeptLog log;
    QImage picture(2, 1, QImage::Format_ARGB32);
    picture.setPixel(0, 0, qRgba(255, 0, 0, 255));
    picture.setPixel(1, 0, qRgba(8, 16, 24, 255));
    QCOMPARE(writeTexture(&cartridge, picture, 4, "rgb5a1", QByteArray("not used"), &log), WriteOutcome::Written);
    QCOMPARE(cartridge.toHex(), QByteArray("11111111f801088711111111"));
    QCOMPARE(log.lines, QStringList({"4 textureData.length()"}));
    QVERIFY(log.statuses.isEmpty());
}

void TextureWriterTest::writesAJpegsFileAsItIs()
{
    QByteArray cartridge(12, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&cartridge, QImage(), 2, "jpeg", QByteArray("raw"), &log), WriteOutcome::Written);
    QCOMPARE(cartridge, QByteArray("\x11\x11raw\x11\x11\x11\x11\x11\x11\x11"));
    QVERIFY(log.lines.isEmpty());
}

void TextureWriterTest::refusesUnknownFormats_data()
{
    QTest::addColumn<QString>("format");
    QTest::newRow("none") << QString();
    QTest::newRow("nonsense") << QStringLiteral("rgb565");
    QTest::newRow("other case") << QStringLiteral("RGBA32");
    QTest::newRow("other case of jpeg") << QStringLiteral("JPEG");
    QTest::newRow("null record") << QStringLiteral("null");
}

void TextureWriterTest::refusesUnknownFormats()
{
    QFETCH(QString, format);
    QByteArray cartridge(8, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&cartridge, plainPicture(1, 1, 0), 0, format, "raw", &log), WriteOutcome::UnknownFormat);
    QCOMPARE(cartridge, QByteArray(8, '\x11'));
    QCOMPARE(log.statuses, QStringList({unsupported}));
    QCOMPARE(log.durations, QList<int>({5000}));
    QVERIFY(log.lines.isEmpty());
}

void TextureWriterTest::reportsAPictureThatGivesNoBytes()
{
    QByteArray cartridge(8, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&cartridge, QImage(), 0, "rgba32", "raw", &log), WriteOutcome::NotEncodable);
    QCOMPARE(cartridge, QByteArray(8, '\x11'));
    QCOMPARE(log.lines, QStringList({"0 textureData.length()", conversionError}));
    QCOMPARE(log.statuses, QStringList({conversionError}));
    QCOMPARE(log.durations, QList<int>({5000}));
}

void TextureWriterTest::emptyJpegCountsAsWritten()
{
    for (const QByteArray &nothing : {QByteArray(""), QByteArray()}) {
        QByteArray cartridge(8, '\x11');
        KeptLog log;
        QCOMPARE(writeTexture(&cartridge, QImage(), 3, "jpeg", nothing, &log), WriteOutcome::Written);
        QCOMPARE(cartridge, QByteArray(8, '\x11'));
        QVERIFY(log.statuses.isEmpty());
    }
}

void TextureWriterTest::nothingToWriteBehindTheEndDoesNotGrowTheImage()
{
    QByteArray cartridge(8, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&cartridge, QImage(), 100, "jpeg", QByteArray(""), &log), WriteOutcome::Written);
    QCOMPARE(cartridge, QByteArray(8, '\x11'));
}

void TextureWriterTest::growsWhereTheRangeCrossesTheEnd()
{
    QByteArray cartridge(4, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&cartridge, QImage(), 3, "jpeg", "raw", &log), WriteOutcome::Written);
    QCOMPARE(cartridge, QByteArray("\x11\x11\x11raw"));
    QCOMPARE(writeTexture(&cartridge, QImage(), 6, "jpeg", "!", &log), WriteOutcome::Written);
    QCOMPARE(cartridge, QByteArray("\x11\x11\x11raw!"));
}

void TextureWriterTest::fillsAGapWithZeroBytes()
{
    QByteArray cartridge(2, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&cartridge, plainPicture(1, 1, qRgba(1, 2, 3, 4)), 5, "rgba32", QByteArray(), &log),
             WriteOutcome::Written);
    QCOMPARE(cartridge.toHex(), QByteArray("111100000001020304"));
}

void TextureWriterTest::refusesAddressesThatMustNotBeWritten_data()
{
    QTest::addColumn<int>("address");
    QTest::addColumn<QString>("format");
    for (const QString &format : {QStringLiteral("rgba32"), QStringLiteral("jpeg")}) {
        QTest::addRow("before the start, %s", qPrintable(format)) << -1 << format;
        QTest::addRow("lowest, %s", qPrintable(format)) << std::numeric_limits<int>::min() << format;
        QTest::addRow("highest, %s", qPrintable(format)) << std::numeric_limits<int>::max() << format;
        QTest::addRow("one byte past the limit, %s", qPrintable(format)) << maximumImageBytes - 3 << format;
    }
}

void TextureWriterTest::refusesAddressesThatMustNotBeWritten()
{
    QFETCH(int, address);
    QFETCH(QString, format);
    QByteArray cartridge(8, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&cartridge, plainPicture(1, 1, 0), address, format, "four", &log), WriteOutcome::OutOfRange);
    QCOMPARE(cartridge, QByteArray(8, '\x11'));
    QCOMPARE(log.statuses, QStringList({conversionError}));
    QCOMPARE(log.durations, QList<int>({5000}));
    QCOMPARE(log.lines.last(), conversionError);
}

void TextureWriterTest::writesInsideAnImageAboveTheGrowthLimit()
{
    QByteArray cartridge(maximumImageBytes + 8, Qt::Uninitialized);
    KeptLog log;
    QCOMPARE(writeTexture(&cartridge, QImage(), maximumImageBytes + 4, "jpeg", "four", &log), WriteOutcome::Written);
    QCOMPARE(cartridge.right(4), QByteArray("four"));
    QCOMPARE(writeTexture(&cartridge, QImage(), maximumImageBytes + 5, "jpeg", "four", &log), WriteOutcome::OutOfRange);
    QCOMPARE(cartridge.size(), maximumImageBytes + 8);
}

QTEST_GUILESS_MAIN(TextureWriterTest)
#include "tst_texturewriter.moc"
