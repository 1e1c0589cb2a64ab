// SPDX-License-Identifier: MIT
#include "model/rom.h"
#include "model/texel.h"
#include "model/textureformat.h"
#include "support/images.h"

#include <QTest>

namespace
{
fileTreeFile textureOf(const char *format, int address, int width, int height)
{
    fileTreeFile texture;
    texture.format = QLatin1String(format);
    texture.address = address;
    texture.width = width;
    texture.height = height;
    return texture;
}
}

class TexelTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { loadIntoCurrentROM(QByteArray::fromHex("00112233445566778899AABBCCDDEEFF")); }
    void cleanup() { resetCurrentROM(); }

    void values_data();
    void values();
    void countsFromTheRealAddress();
    void nothingOutside_data();
    void nothingOutside();
    void steps_data();
    void steps();
    void stepsOfJpeg();
    void alias();
};

void TexelTest::values_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QPoint>("pixel");
    QTest::addColumn<int>("address");
    QTest::addColumn<quint32>("value");
    QTest::addColumn<int>("digits");

    QTest::newRow("i4, upper half") << "i4" << QPoint(0, 1) << 2 << 0x2u << 1; // the third pixel of a row of 3 is in byte 1
    QTest::newRow("i4, lower half") << "i4" << QPoint(2, 1) << 3 << 0x3u << 1;
    QTest::newRow("ci4, odd row") << "ci4" << QPoint(1, 0) << 1 << 0x1u << 1;
    QTest::newRow("ia8") << "ia8" << QPoint(2, 1) << 6 << 0x66u << 2;
    QTest::newRow("ci8") << "ci8" << QPoint(0, 0) << 1 << 0x11u << 2;
    QTest::newRow("rgb5a1") << "rgb5a1" << QPoint(1, 1) << 9 << 0x99AAu << 4;
    QTest::newRow("ia16") << "ia16" << QPoint(0, 0) << 1 << 0x1122u << 4;
    QTest::newRow("rgba32") << "rgba32" << QPoint(2, 0) << 9 << 0x99AABBCCu << 8;
}

void TexelTest::values()
{
    QFETCH(const QString, format);
    QFETCH(const QPoint, pixel);
    const fileTreeFile texture = textureOf(format.toLatin1(), 1, 3, 2);
    const std::optional<Texel> texel = texelAt(texture, pixel.x(), pixel.y());
    QVERIFY(texel);
    QTEST(int(texel->address), "address");
    QTEST(texel->value, "value");
    QTEST(texel->hexDigits, "digits");
}

void TexelTest::countsFromTheRealAddress()
{
    fileTreeDirectory folder;
    folder.parent = currentROM.root;
    folder.address = 8;
    fileTreeFile texture = textureOf("i8", 2, 2, 2);
    texture.parent = &folder;
    QCOMPARE(texelAt(texture, 1, 0)->address, 11);
    QCOMPARE(texelAt(texture, 1, 0)->value, 0xBBu);
}

void TexelTest::nothingOutside_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("address");
    QTest::addColumn<QPoint>("pixel");

    QTest::newRow("left of it") << "i8" << 0 << QPoint(-1, 0);
    QTest::newRow("above it") << "i8" << 0 << QPoint(0, -1);
    QTest::newRow("right of it") << "i8" << 0 << QPoint(4, 0);
    QTest::newRow("below it") << "i8" << 0 << QPoint(0, 4);
    QTest::newRow("half behind the image") << "rgba32" << 14 << QPoint(0, 0);
    QTest::newRow("before the image") << "i8" << -1 << QPoint(0, 0);
    QTest::newRow("far behind the image") << "rgba32" << 0x7FFFFFFF << QPoint(3, 3);
    QTest::newRow("jpeg") << "jpeg" << 0 << QPoint(0, 0);
    QTest::newRow("unknown") << "I8" << 0 << QPoint(0, 0);
}

void TexelTest::nothingOutside()
{
    QFETCH(const QString, format);
    QFETCH(const int, address);
    QFETCH(const QPoint, pixel);
    QVERIFY(!texelAt(textureOf(format.toLatin1(), address, 4, 4), pixel.x(), pixel.y()));
}

void TexelTest::steps_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QList<qint64>>("texture");
    QTest::addColumn<QList<qint64>>("palette");

    QTest::newRow("i4") << "i4" << QSize(8, 4) << QList<qint64> {1, 4, 16} << QList<qint64> {2, 1, 16};
    QTest::newRow("ci4") << "ci4" << QSize(8, 4) << QList<qint64> {1, 4, 16} << QList<qint64> {2, 32, 16};
    QTest::newRow("ci8") << "ci8" << QSize(8, 4) << QList<qint64> {1, 8, 32} << QList<qint64> {2, 512, 32};
    QTest::newRow("rgb5a1") << "rgb5a1" << QSize(8, 4) << QList<qint64> {2, 16, 64} << QList<qint64> {2, 1, 64};
    QTest::newRow("rgba32") << "rgba32" << QSize(8, 4) << QList<qint64> {4, 32, 128} << QList<qint64> {2, 1, 128};
    QTest::newRow("one pixel of 4 bits") << "i4" << QSize(1, 1) << QList<qint64> {1, 1, 1} << QList<qint64> {2, 1, 1};
    QTest::newRow("hostile") << "i8" << QSize(-5, 7) << QList<qint64> {1, 1, 1} << QList<qint64> {2, 1, 1};
    QTest::newRow("unknown") << "sky" << QSize(8, 4) << QList<qint64> {1, 1, 1} << QList<qint64> {2, 1, 1};
    QTest::newRow("no jpeg there") << "jpeg" << QSize(8, 4) << QList<qint64> {1, 1, 1} << QList<qint64> {2, 1, 1};
}

void TexelTest::steps()
{
    QFETCH(const QString, format);
    QFETCH(const QSize, size);
    const fileTreeFile texture = textureOf(format.toLatin1(), 0, size.width(), size.height());
    const TexelSteps steps = stepsOfTexture(texture);
    QTEST((QList<qint64> {steps.texel, steps.row, steps.texture}), "texture");
    const TexelSteps paletteSteps = stepsOfPalette(texture);
    QTEST((QList<qint64> {paletteSteps.texel, paletteSteps.row, paletteSteps.texture}), "palette");
}

void TexelTest::stepsOfJpeg()
{
    loadIntoCurrentROM(QByteArray::fromHex("FFD8FFDB00000000FFD90000"));
    const TexelSteps steps = stepsOfTexture(textureOf("jpeg", 0, 8, 4));
    QCOMPARE(steps.texel, 1);
    QCOMPARE(steps.row, 10);
    QCOMPARE(steps.texture, 10);
}

void TexelTest::alias()
{
    QCOMPARE(textureFormats::findByNameOrAlias(QStringLiteral("rgba16"))->name, QStringLiteral("rgb5a1"));
    QCOMPARE(textureFormats::findByNameOrAlias(QStringLiteral("i4"))->name, QStringLiteral("i4"));
    QVERIFY(!textureFormats::findByNameOrAlias(QString()));
    QVERIFY(!textureFormats::find(QStringLiteral("rgba16")));
    QCOMPARE(textureFormats::aliasOf(textureFormats::i4), QString());
}

QTEST_APPLESS_MAIN(TexelTest)
#include "tst_texel.moc"
