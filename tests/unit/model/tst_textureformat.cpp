// SPDX-License-Identifier: MIT
#include "model/textureformat.h"

#include <QTest>

#include <limits>

namespace
{
// Made before main(), perhaps before the static variables of the file that the functions are in.
const QString earlyName = textureFormats::ia16.name;
const textureFormat earlyRecord = textureFormats::getAsMap().value(QStringLiteral("ci8"));
const int earlyColours = textureFormats::paletteColours(*textureFormats::find(QStringLiteral("ci4")));
}

class TextureFormatTest : public QObject
{
    Q_OBJECT

private slots:
    void record_data();
    void record();
    void mapHoldsTheTenRealFormatsByName();
    void nullStandsForUnknown();
    void lookUpIsExact();
    void callersGetAMapOfTheirOwn();
    void usableBeforeMain();
    void find();
    void jpegNames();
    void bytesOfPixels();
    void palettes();
};

void TextureFormatTest::record_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<double>("bytesPerPixel");
    QTest::addColumn<bool>("usesPalette");
    QTest::addColumn<QString>("description");

    QTest::newRow("i4") << "i4" << 0.5 << false << "4 bit per pixel. All channels share value.";
    QTest::newRow("ia4") << "ia4" << 0.5 << false << "4 bit per pixel. 3 bit for greyscale channel, 1 bit for alpha channel.";
    QTest::newRow("i8") << "i8" << 1.0 << false << "8 bit per pixel. All channels share value.";
    QTest::newRow("ia8") << "ia8" << 1.0 << false << "8 bit per pixel. 4 bit for greyscale channel, 4 bit for alpha channel.";
    QTest::newRow("ia16") << "ia16" << 2.0 << false << "16 bit per pixel. 8 bit for greyscale channel, 8 bit for alpha channel.";
    QTest::newRow("rgb5a1") << "rgb5a1" << 2.0 << false
                            << "16 bit per pixel. 5 bit per color channel, 1 bit for alpha channel. Also known as rgba16.";
    QTest::newRow("rgba32") << "rgba32" << 4.0 << false << "32 bit per pixel. 8 bit per color channel, 8 bit for alpha channel.";
    QTest::newRow("ci8") << "ci8" << 1.0 << true << "8 bit per pixel. Uses a rgb5a1 palette.";
    QTest::newRow("ci4") << "ci4" << 0.5 << true << "4 bit per pixel. Uses a rgb5a1 palette.";
    QTest::newRow("jpeg") << "jpeg" << 1.0 << false << "Uses the JPEG File Interchange Format (JFIF) standard.";
}

void TextureFormatTest::record()
{
    QFETCH(QString, key);
    QFETCH(double, bytesPerPixel);
    QFETCH(bool, usesPalette);
    QFETCH(QString, description);
    QVERIFY(textureFormats::getAsMap().contains(key));
    const textureFormat record = textureFormats::getAsMap().value(key);
    QCOMPARE(record.name, key);
    QCOMPARE(record.bytesPerPixel, bytesPerPixel);
    QCOMPARE(record.usesPalette, usesPalette);
    QCOMPARE(record.description, description);
}

void TextureFormatTest::mapHoldsTheTenRealFormatsByName()
{
    const QStringList expected {"ci4", "ci8", "i4", "i8", "ia16", "ia4", "ia8", "jpeg", "rgb5a1", "rgba32"};
    QCOMPARE(QStringList(textureFormats::getAsMap().keys()), expected);
}

void TextureFormatTest::nullStandsForUnknown()
{
    for (const char *name : {"", "null", "rgba16", "I4"}) {
        const textureFormat record = textureFormats::getAsMap().value(QString::fromLatin1(name), textureFormats::null);
        QCOMPARE(record.name, QStringLiteral("null"));
        QCOMPARE(record.bytesPerPixel, 0.0);
        QCOMPARE(record.usesPalette, false);
        QCOMPARE(record.description, QStringLiteral("Unknown format."));
    }
}

void TextureFormatTest::lookUpIsExact()
{
    QVERIFY(!textureFormats::getAsMap().contains(QStringLiteral("RGBA32")));
    QVERIFY(!textureFormats::getAsMap().contains(QStringLiteral("rgba32 ")));
}

void TextureFormatTest::callersGetAMapOfTheirOwn()
{
    QMap<QString, textureFormat> mine = textureFormats::getAsMap();
    mine.clear();
    QCOMPARE(textureFormats::getAsMap().size(), 10);
}

void TextureFormatTest::usableBeforeMain()
{
    QCOMPARE(earlyName, QStringLiteral("ia16"));
    QCOMPARE(earlyRecord.name, QStringLiteral("ci8"));
    QCOMPARE(earlyColours, 16);
}

void TextureFormatTest::find()
{
    const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    for (const textureFormat &format : formats) {
        const textureFormat *found = textureFormats::find(format.name);
        QVERIFY(found);
        QCOMPARE(found->name, format.name);
        QCOMPARE(found->bytesPerPixel, format.bytesPerPixel);
        QCOMPARE(found->usesPalette, format.usesPalette);
        QCOMPARE(textureFormats::find(format.name), found);
    }
    for (const char *name : {"", "null", "rgba16", "I4", "jpeg "})
        QVERIFY(!textureFormats::find(QString::fromLatin1(name)));
}

void TextureFormatTest::jpegNames()
{
    QVERIFY(textureFormats::isJpeg(QStringLiteral("jpeg")));
    QVERIFY(textureFormats::isJpegInAnyCase(QStringLiteral("jpeg")));
    for (const char *name : {"JPEG", "Jpeg"}) {
        QVERIFY(!textureFormats::isJpeg(QString::fromLatin1(name)));
        QVERIFY(textureFormats::isJpegInAnyCase(QString::fromLatin1(name)));
    }
    for (const char *name : {"", "jpg", "jpeg2"}) {
        QVERIFY(!textureFormats::isJpeg(QString::fromLatin1(name)));
        QVERIFY(!textureFormats::isJpegInAnyCase(QString::fromLatin1(name)));
    }
}

void TextureFormatTest::bytesOfPixels()
{
    using namespace textureFormats;
    QCOMPARE(textureFormats::bytesOfPixels(rgba32, 10), qint64(40));
    QCOMPARE(textureFormats::bytesOfPixels(i4, 9), qint64(4));
    QCOMPARE(textureFormats::bytesOfPixels(ci4, -9), qint64(-4));
    QCOMPARE(textureFormats::bytesOfPixels(null, 10), qint64(0));
    QCOMPARE(textureFormats::bytesOfPixels(rgba32, std::numeric_limits<qint64>::max()), qint64(1) << 42);
    QCOMPARE(textureFormats::bytesOfPixels(rgba32, std::numeric_limits<qint64>::min()), -(qint64(1) << 42));
    QCOMPARE(encodedBytes(ia4, 9), qint64(5));
    QCOMPARE(encodedBytes(ia4, 8), qint64(4));
    QCOMPARE(encodedBytes(i8, 9), qint64(9));
    QCOMPARE(encodedBytes(rgb5a1, 9), qint64(18));
}

void TextureFormatTest::palettes()
{
    using namespace textureFormats;
    QCOMPARE(paletteColours(ci8), 256);
    QCOMPARE(paletteColours(ci4), 16);
    QCOMPARE(paletteBytes(ci8), 512);
    QCOMPARE(paletteBytes(ci4), 32);
    for (const textureFormat &format : {i8, rgba32, jpeg, null}) {
        QCOMPARE(paletteColours(format), 0);
        QCOMPARE(paletteBytes(format), 0);
    }
}

QTEST_GUILESS_MAIN(TextureFormatTest)
#include "tst_textureformat.moc"
