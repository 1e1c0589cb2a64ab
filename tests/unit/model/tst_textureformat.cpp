// SPDX-License-Identifier: MIT
#include "model/textureformat.h"

#include <QTest>

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
};

void TextureFormatTest::record_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<double>("bytesPerPixel");
    QTest::addColumn<bool>("usesPalette");
    QTest::addColumn<QString>("description");

    QTest::newRow("i4") << "i4" << 0.5 << false << "4 bit per pixel. All channels share value.";
    QTest::newRow("ia4") << "ia4" << 0.5 << false
                         << "4 bit per pixel. 3 bit for greyscale channel, 1 bit for alpha channel.";
    QTest::newRow("i8") << "i8" << 1.0 << false << "8 bit per pixel. All channels share value.";
    QTest::newRow("ia8") << "ia8" << 1.0 << false
                         << "8 bit per pixel. 4 bit for greyscale channel, 4 bit for alpha channel.";
    QTest::newRow("ia16") << "ia16" << 2.0 << false
                          << "16 bit per pixel. 8 bit for greyscale channel, 8 bit for alpha channel.";
    QTest::newRow("rgb5a1") << "rgb5a1" << 2.0 << false
                            << "16 bit per pixel. 5 bit per color channel, 1 bit for alpha channel. Also known as rgba16.";
    QTest::newRow("rgba32") << "rgba32" << 4.0 << false
                            << "32 bit per pixel. 8 bit per color channel, 8 bit for alpha channel.";
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
    const QStringList expected{"ci4", "ci8", "i4", "i8", "ia16", "ia4", "ia8", "jpeg", "rgb5a1", "rgba32"};
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

QTEST_GUILESS_MAIN(TextureFormatTest)
#include "tst_textureformat.moc"
