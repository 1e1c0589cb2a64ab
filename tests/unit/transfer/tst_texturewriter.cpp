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
    void fillsAGapAsQByteArrayReplaceDoes();
    void refusesAddressesThatMustNotBeWritten_data();
    void refusesAddressesThatMustNotBeWritten();
    void writesInsideAnImageAboveTheGrowthLimit();
};

void TextureWriterTest::writesTheEncodedBytesInPlace()
{
    ROM rom;
    rom.data = QByteArray(12, '\x11');
    KeptLog log;
    QImage picture(2, 1, QImage::Format_ARGB32);
    picture.setPixel(0, 0, qRgba(255, 0, 0, 255));
    picture.setPixel(1, 0, qRgba(8, 16, 24, 255));
    QCOMPARE(writeTexture(&rom, picture, 4, "rgb5a1", QByteArray("not used"), &log), WriteOutcome::Written);
    QCOMPARE(rom.data.toHex(), QByteArray("11111111f801088711111111"));
    QCOMPARE(log.lines, QStringList({"4 textureData.length()"}));
    QVERIFY(log.statuses.isEmpty());
}

void TextureWriterTest::writesAJpegsFileAsItIs()
{
    ROM rom;
    rom.data = QByteArray(12, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&rom, QImage(), 2, "jpeg", QByteArray("raw"), &log), WriteOutcome::Written);
    QCOMPARE(rom.data, QByteArray("\x11\x11raw\x11\x11\x11\x11\x11\x11\x11"));
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
    ROM rom;
    rom.data = QByteArray(8, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&rom, plainPicture(1, 1, 0), 0, format, "raw", &log), WriteOutcome::UnknownFormat);
    QCOMPARE(rom.data, QByteArray(8, '\x11'));
    QCOMPARE(log.statuses, QStringList({unsupported}));
    QCOMPARE(log.durations, QList<int>({5000}));
    QVERIFY(log.lines.isEmpty());
}

void TextureWriterTest::reportsAPictureThatGivesNoBytes()
{
    ROM rom;
    rom.data = QByteArray(8, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&rom, QImage(), 0, "rgba32", "raw", &log), WriteOutcome::NotEncodable);
    QCOMPARE(rom.data, QByteArray(8, '\x11'));
    QCOMPARE(log.lines, QStringList({"0 textureData.length()", conversionError}));
    QCOMPARE(log.statuses, QStringList({conversionError}));
    QCOMPARE(log.durations, QList<int>({5000}));
}

void TextureWriterTest::emptyJpegCountsAsWritten()
{
    for (const QByteArray &nothing : {QByteArray(""), QByteArray()}) {
        ROM rom;
        rom.data = QByteArray(8, '\x11');
        KeptLog log;
        QCOMPARE(writeTexture(&rom, QImage(), 3, "jpeg", nothing, &log), WriteOutcome::Written);
        QCOMPARE(rom.data, QByteArray(8, '\x11'));
        QVERIFY(log.statuses.isEmpty());
    }
}

void TextureWriterTest::nothingToWriteBehindTheEndDoesNotGrowTheImage()
{
    ROM rom;
    rom.data = QByteArray(8, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&rom, QImage(), 100, "jpeg", QByteArray(""), &log), WriteOutcome::Written);
    QCOMPARE(rom.data, QByteArray(8, '\x11'));
}

void TextureWriterTest::growsWhereTheRangeCrossesTheEnd()
{
    ROM rom;
    rom.data = QByteArray(4, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&rom, QImage(), 3, "jpeg", "raw", &log), WriteOutcome::Written);
    QCOMPARE(rom.data, QByteArray("\x11\x11\x11raw"));
    QCOMPARE(writeTexture(&rom, QImage(), 6, "jpeg", "!", &log), WriteOutcome::Written);
    QCOMPARE(rom.data, QByteArray("\x11\x11\x11raw!"));
}

void TextureWriterTest::fillsAGapAsQByteArrayReplaceDoes()
{
    ROM rom;
    rom.data = QByteArray(2, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&rom, plainPicture(1, 1, qRgba(1, 2, 3, 4)), 5, "rgba32", QByteArray(), &log), WriteOutcome::Written);
    QByteArray reference(2, '\x11');
    QCOMPARE(rom.data, reference.replace(5, 4, "\x01\x02\x03\x04"));
    QCOMPARE(rom.data.toHex(), QByteArray("111120202001020304"));
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
    ROM rom;
    rom.data = QByteArray(8, '\x11');
    KeptLog log;
    QCOMPARE(writeTexture(&rom, plainPicture(1, 1, 0), address, format, "four", &log), WriteOutcome::OutOfRange);
    QCOMPARE(rom.data, QByteArray(8, '\x11'));
    QCOMPARE(log.statuses, QStringList({conversionError}));
    QCOMPARE(log.durations, QList<int>({5000}));
    QCOMPARE(log.lines.last(), conversionError);
}

void TextureWriterTest::writesInsideAnImageAboveTheGrowthLimit()
{
    ROM rom;
    rom.data = QByteArray(maximumImageBytes + 8, Qt::Uninitialized);
    KeptLog log;
    QCOMPARE(writeTexture(&rom, QImage(), maximumImageBytes + 4, "jpeg", "four", &log), WriteOutcome::Written);
    QCOMPARE(rom.data.right(4), QByteArray("four"));
    QCOMPARE(writeTexture(&rom, QImage(), maximumImageBytes + 5, "jpeg", "four", &log), WriteOutcome::OutOfRange);
    QCOMPARE(rom.data.size(), maximumImageBytes + 8);
}

QTEST_GUILESS_MAIN(TextureWriterTest)
#include "tst_texturewriter.moc"
