// SPDX-License-Identifier: MIT
#include "codec/texturemanipulator.h"
#include "support/messages.h"
#include "unit/codec/codecsupport.h"
#include "unit/codec/naivecodec.h"

#include <QBuffer>
#include <QtTest>

#include <limits>

class DecodeTest : public QObject
{
    Q_OBJECT

private slots:
    void knownTexels_data();
    void knownTexels();
    void everyTexelValue_data();
    void everyTexelValue();
    void everyRgba32Channel();
    void sizesAndPartRows_data();
    void sizesAndPartRows();
    void readsNothingPastTheEnd_data();
    void readsNothingPastTheEnd();
    void unalignedData_data();
    void unalignedData();
    void largePicture_data();
    void largePicture();
    void imageKinds();
    void partRowIsDropped();
    void shortPaletteIsBlack_data();
    void shortPaletteIsBlack();
    void paletteColours();
    void longPaletteIsCut();
    void paletteIsIgnoredByDirectColours();
    void hostileWidths_data();
    void hostileWidths();
    void emptyData();
    void unknownFormats_data();
    void unknownFormats();
    void oddRecords();
    void recordsOfNoTable_data();
    void recordsOfNoTable();
    void contradictingRecords();
    void jpegIsWhatTheReaderGives();
    void jpegThatIsNone_data();
    void jpegThatIsNone();
    void dataThatStartsNoJpegIsNotReported();
    void jpegOfClaimedSize_data();
    void jpegOfClaimedSize();
};

namespace
{
void addFormats()
{
    QTest::addColumn<textureFormat>("format");
    for (const textureFormat &format : texelFormats())
        QTest::newRow(qPrintable(format.name)) << format;
}

QByteArray paletteFor(const textureFormat &format)
{
    return format.usesPalette ? noise(format.name == "ci8" ? 512 : 32, 5) : QByteArray();
}

QImage decoded(const char *hex, const textureFormat &format, int width)
{
    return textureManipulator::generateTexture(QByteArray::fromHex(hex), format, width, QByteArray());
}

QByteArray jpegBytes()
{
    QImage image(16, 8, QImage::Format_RGB32);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 16; ++x)
            image.setPixel(x, y, qRgb(x * 16, y * 32, 100));
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG");
    return bytes;
}

/// jpegBytes() with another size in its frame header.
QByteArray jpegClaiming(int width, int height)
{
    QByteArray bytes = jpegBytes();
    const int frame = bytes.indexOf(QByteArray::fromHex("FFC0"));
    Q_ASSERT(frame > 0);
    bytes[frame + 5] = char(height >> 8);
    bytes[frame + 6] = char(height & 0xFF);
    bytes[frame + 7] = char(width >> 8);
    bytes[frame + 8] = char(width & 0xFF);
    return bytes;
}
}

Q_DECLARE_METATYPE(textureFormat)

void DecodeTest::knownTexels_data()
{
    QTest::addColumn<textureFormat>("format");
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<QVector<QRgb>>("pixels");
    using Pixels = QVector<QRgb>;

    QTest::newRow("rgba32") << textureFormats::rgba32 << QByteArray("01020304 FFFEFD00") << Pixels {0x04010203, 0x00FFFEFD};
    QTest::newRow("rgb5a1 white") << textureFormats::rgb5a1 << QByteArray("FFFF") << Pixels {0xFFF8F8F8};
    QTest::newRow("rgb5a1 transparent red") << textureFormats::rgb5a1 << QByteArray("F800") << Pixels {0x00F80000};
    QTest::newRow("rgb5a1 channels") << textureFormats::rgb5a1 << QByteArray("0843 07C0 003E 8421")
                                     << Pixels {0xFF080808, 0x0000F800, 0x000000F8, 0xFF808080};
    QTest::newRow("i4") << textureFormats::i4 << QByteArray("F0 1E") << Pixels {0xFFFFFFFF, 0x00000000, 0x11111111, 0xEEEEEEEE};
    QTest::newRow("ia4 white") << textureFormats::ia4 << QByteArray("FF") << Pixels {0xFFFCFCFC, 0xFFFCFCFC};
    QTest::newRow("ia4 black") << textureFormats::ia4 << QByteArray("10") << Pixels {0xFF000000, 0x00000000};
    QTest::newRow("ia4 steps") << textureFormats::ia4 << QByteArray("2E 5B")
                               << Pixels {0x00242424, 0x00FCFCFC, 0xFF484848, 0xFFB4B4B4};
    QTest::newRow("i8") << textureFormats::i8 << QByteArray("00 80 FF") << Pixels {0x00000000, 0x80808080, 0xFFFFFFFF};
    QTest::newRow("ia8") << textureFormats::ia8 << QByteArray("F0 0F 84") << Pixels {0x00FFFFFF, 0xFF000000, 0x44888888};
    QTest::newRow("ia16") << textureFormats::ia16 << QByteArray("8040 00FF") << Pixels {0x40808080, 0xFF000000};
}

void DecodeTest::knownTexels()
{
    QFETCH(textureFormat, format);
    QFETCH(QByteArray, hex);
    QFETCH(QVector<QRgb>, pixels);

    const QImage image = decoded(hex, format, pixels.size());
    QCOMPARE(image.size(), QSize(pixels.size(), 1));
    for (int x = 0; x < pixels.size(); ++x)
        QCOMPARE(QString::number(image.pixel(x, 0), 16), QString::number(pixels.at(x), 16));
}

void DecodeTest::everyTexelValue_data()
{
    addFormats();
}

void DecodeTest::everyTexelValue()
{
    QFETCH(textureFormat, format);
    // All words in order: they hold every 16-bit texel, and every byte in each place.
    QByteArray data;
    for (int word = 0; word < 65536; ++word)
        data.append(char(word >> 8)).append(char(word & 0xFF));
    const QByteArray palette = paletteFor(format);
    QCOMPARE(difference(textureManipulator::generateTexture(data, format, 256, palette),
                        naive::generateTexture(data, format, 256, palette)),
             QString());
}

void DecodeTest::everyRgba32Channel()
{
    for (int channel = 0; channel < 4; ++channel) {
        QByteArray data(4 * 256, '\x5A');
        for (int value = 0; value < 256; ++value)
            data[4 * value + channel] = char(value);
        QCOMPARE(difference(textureManipulator::generateTexture(data, textureFormats::rgba32, 16, QByteArray()),
                            naive::generateTexture(data, textureFormats::rgba32, 16, QByteArray())),
                 QString());
    }
}

void DecodeTest::sizesAndPartRows_data()
{
    addFormats();
}

void DecodeTest::sizesAndPartRows()
{
    QFETCH(textureFormat, format);
    const QByteArray palette = paletteFor(format);
    const QByteArray data = noise(300, 1);
    for (int width = 1; width <= 70; ++width) {
        for (int length = 0; length <= data.size(); length += length < 80 ? 1 : 37) {
            const QByteArray part = data.left(length);
            const QString found = difference(textureManipulator::generateTexture(part, format, width, palette),
                                             naive::generateTexture(part, format, width, palette));
            QVERIFY2(found.isEmpty(), qPrintable(QStringLiteral("%1 bytes, width %2: %3").arg(length).arg(width).arg(found)));
        }
    }
}

void DecodeTest::readsNothingPastTheEnd_data()
{
    addFormats();
}

void DecodeTest::readsNothingPastTheEnd()
{
    QFETCH(textureFormat, format);
    const QByteArray palette = paletteFor(format);
    GuardedBytes guardedPalette(palette);
    for (int length = 0; length <= 131; ++length) {
        GuardedBytes guarded(noise(length, quint32(length)));
        for (const int width : {1, 2, 3, 5, 7, 8, 16, 31, length, 2 * length}) {
            if (width == 0)
                continue;
            QCOMPARE(difference(textureManipulator::generateTexture(guarded.view(), format, width, guardedPalette.view()),
                                naive::generateTexture(guarded.view(), format, width, palette)),
                     QString());
        }
    }
}

void DecodeTest::unalignedData_data()
{
    addFormats();
}

void DecodeTest::unalignedData()
{
    QFETCH(textureFormat, format);
    const QByteArray palette = paletteFor(format);
    const QByteArray bytes = noise(1100, 3);
    for (int offset = 0; offset < 17; ++offset) {
        const QByteArray data = QByteArray::fromRawData(bytes.constData() + offset, 1024);
        QCOMPARE(difference(textureManipulator::generateTexture(data, format, 16, palette),
                            naive::generateTexture(data, format, 16, palette)),
                 QString());
    }
}

void DecodeTest::largePicture_data()
{
    addFormats();
}

void DecodeTest::largePicture()
{
    QFETCH(textureFormat, format);
    const QByteArray palette = paletteFor(format);
    const QByteArray data = noise(int(333 * 211 * format.bytesPerPixel), 4);
    QCOMPARE(difference(textureManipulator::generateTexture(data, format, 333, palette),
                        naive::generateTexture(data, format, 333, palette)),
             QString());
}

void DecodeTest::imageKinds()
{
    for (const textureFormat &format : texelFormats()) {
        const QImage image = textureManipulator::generateTexture(QByteArray(64, '\x11'), format, 8, paletteFor(format));
        QCOMPARE(image.width(), 8);
        QCOMPARE(image.height(), int(8 / format.bytesPerPixel));
        QCOMPARE(image.format(), format.usesPalette ? QImage::Format_Indexed8 : QImage::Format_ARGB32);
        QCOMPARE(image.colorCount(), format.usesPalette ? 256 : 0);
    }
}

void DecodeTest::partRowIsDropped()
{
    const QByteArray data = noise(100, 6);
    const QImage image = textureManipulator::generateTexture(data, textureFormats::i8, 32, QByteArray());
    QCOMPARE(image.size(), QSize(32, 3));
    QCOMPARE(qRed(image.pixel(31, 2)), int(uchar(data.at(95))));
    QCOMPARE(textureManipulator::generateTexture(QByteArray(2048, 'x'), textureFormats::i4, 64, QByteArray()).height(), 64);
}

void DecodeTest::shortPaletteIsBlack_data()
{
    QTest::addColumn<textureFormat>("format");
    QTest::addColumn<int>("length");
    QTest::newRow("ci8 without") << textureFormats::ci8 << 0;
    QTest::newRow("ci8 of ci4's length") << textureFormats::ci8 << 32;
    QTest::newRow("ci8 a byte short") << textureFormats::ci8 << 511;
    QTest::newRow("ci4 without") << textureFormats::ci4 << 0;
    QTest::newRow("ci4 a byte short") << textureFormats::ci4 << 31;
}

void DecodeTest::shortPaletteIsBlack()
{
    QFETCH(textureFormat, format);
    QFETCH(int, length);
    const QByteArray data = noise(64, 7);
    const QImage image = textureManipulator::generateTexture(data, format, 8, QByteArray(length, '\xFF'));
    QCOMPARE(image.colorTable(), QVector<QRgb>(256, 0xFF000000));
    QCOMPARE(image.pixel(3, 0), QRgb(0xFF000000));
    QCOMPARE(image.pixelIndex(0, 0), format.name == "ci8" ? int(uchar(data.at(0))) : uchar(data.at(0)) >> 4);
}

void DecodeTest::paletteColours()
{
    for (const char *firstWord : {"0001", "0000"}) {
        const QByteArray palette =
            QByteArray::fromHex(firstWord) + QByteArray::fromHex("FFFFF80107C1003FFFFE") + QByteArray(20, '\xFF');
        const QImage image = textureManipulator::generateTexture(QByteArray::fromHex("01235F"), textureFormats::ci4, 6, palette);
        QCOMPARE(image.size(), QSize(6, 1));
        QCOMPARE(image.pixel(0, 0), QByteArray(firstWord) == "0001" ? QRgb(0xFF000000) : QRgb(0x00000000));
        QCOMPARE(image.pixel(1, 0), QRgb(0xFFF8F8F8));
        QCOMPARE(image.pixel(2, 0), QRgb(0xFFF80000));
        QCOMPARE(image.pixel(3, 0), QRgb(0xFF00F800));
        QCOMPARE(image.pixel(4, 0), QRgb(0x00F8F8F8));
        QCOMPARE(image.pixelIndex(5, 0), 15);
        QCOMPARE(image.colorTable().mid(16), QVector<QRgb>(240, 0xFF000000));
    }
    const QImage image = textureManipulator::generateTexture(QByteArray::fromHex("00FF80"), textureFormats::ci8, 3,
                                                             QByteArray(510, '\x00') + QByteArray::fromHex("F801"));
    QCOMPARE(image.pixel(0, 0), QRgb(0x00000000));
    QCOMPARE(image.pixel(1, 0), QRgb(0xFFF80000));
    QCOMPARE(image.pixelIndex(2, 0), 128);
}

void DecodeTest::longPaletteIsCut()
{
    const QByteArray palette = noise(512, 8);
    const QByteArray data = noise(32, 9);
    QCOMPARE(difference(textureManipulator::generateTexture(data, textureFormats::ci4, 8, palette),
                        textureManipulator::generateTexture(data, textureFormats::ci4, 8, palette.left(32))),
             QString());
    QCOMPARE(difference(textureManipulator::generateTexture(data, textureFormats::ci8, 8, palette + palette + "x"),
                        textureManipulator::generateTexture(data, textureFormats::ci8, 8, palette)),
             QString());
}

void DecodeTest::paletteIsIgnoredByDirectColours()
{
    const QByteArray data = noise(64, 10);
    for (const textureFormat &format : texelFormats()) {
        if (format.usesPalette)
            continue;
        QCOMPARE(difference(textureManipulator::generateTexture(data, format, 4, noise(512, 11)),
                            textureManipulator::generateTexture(data, format, 4, QByteArray())),
                 QString());
    }
}

void DecodeTest::hostileWidths_data()
{
    QTest::addColumn<int>("width");
    for (const int width : {0, -1, -32, std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), 1 << 30, 65536, 129})
        QTest::newRow(qPrintable(QString::number(width))) << width;
}

void DecodeTest::hostileWidths()
{
    QFETCH(int, width);
    for (const textureFormat &format : texelFormats()) {
        // Enough for one row of 128 at 4 bits a texel.
        QVERIFY2(textureManipulator::generateTexture(QByteArray(64, 'x'), format, width, QByteArray(512, 'p')).isNull(),
                 qPrintable(format.name));
    }
}

void DecodeTest::emptyData()
{
    for (const textureFormat &format : texelFormats()) {
        QVERIFY(textureManipulator::generateTexture(QByteArray(), format, 1, QByteArray(512, 'p')).isNull());
        QVERIFY(textureManipulator::generateTexture(QByteArray(""), format, 32, QByteArray()).isNull());
    }
}

void DecodeTest::unknownFormats_data()
{
    QTest::addColumn<textureFormat>("format");
    QTest::newRow("null") << textureFormats::null;
    QTest::newRow("empty record") << textureFormat();
    for (const char *name : {"", "RGBA32", "rgba16", "ci", "i4 ", "JPEG", "i16"})
        QTest::newRow(name) << textureFormat {name, QString(), 1.0, false};
}

void DecodeTest::unknownFormats()
{
    QFETCH(textureFormat, format);
    QVERIFY(textureManipulator::generateTexture(jpegBytes(), format, 4, QByteArray(512, 'p')).isNull());
}

void DecodeTest::oddRecords()
{
    const QByteArray data = noise(64, 12);
    const auto withBytes = [](double bytesPerPixel) { return textureFormat {"i8", QString(), bytesPerPixel, false}; };
    for (const double bytes : {0.0, -1.0, qQNaN(), -qInf(), 1e-300})
        QVERIFY(textureManipulator::generateTexture(data, withBytes(bytes), 8, QByteArray()).isNull());
    QVERIFY(textureManipulator::generateTexture(data, withBytes(qInf()), 8, QByteArray()).isNull());
}

void DecodeTest::recordsOfNoTable_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("usesPalette");
    for (const textureFormat &format : texelFormats()) {
        for (const bool usesPalette : {false, true})
            QTest::addRow("%s, %s palette", qPrintable(format.name), usesPalette ? "with" : "without")
                << format.name << usesPalette;
    }
}

void DecodeTest::recordsOfNoTable()
{
    QFETCH(QString, name);
    QFETCH(bool, usesPalette);
    const MessageCapture quiet; // The naive codec stores values that are no index.
    const QByteArray palette = noise(512, 5);
    QByteArray bytes = noise(67, 12);
    bytes.replace(8, 24, QByteArray(24, '\0')); // Some texels whose colour is below 256.
    bytes[11] = bytes[12] = bytes[14] = '\x3E';
    // The name decides what a texel is, the record's bytes per pixel alone on the height.
    for (const double bytesPerPixel : {0.25, 0.5, 1.0, 1.5, 2.0, 3.0, 4.0, 70.0}) {
        const textureFormat format {name, QString(), bytesPerPixel, usesPalette};
        for (const int size : {0, 1, 3, 64, 65, 66, 67}) {
            for (const int width : {1, 3, 8}) {
                const QString found = difference(textureManipulator::generateTexture(bytes.left(size), format, width, palette),
                                                 naive::generateTexture(bytes.left(size), format, width, palette));
                QVERIFY2(found.isEmpty(),
                         qPrintable(QStringLiteral("%1 bytes a pixel, %2 bytes, width %3: %4")
                                        .arg(bytesPerPixel)
                                        .arg(size)
                                        .arg(width)
                                        .arg(found)));
            }
        }
    }
}

void DecodeTest::contradictingRecords()
{
    // Without a colour table the index is the pixel's value.
    const QImage plain = textureManipulator::generateTexture("\x07\xFF", {"ci8", QString(), 1.0, false}, 2, QByteArray(512, 'p'));
    QCOMPARE(plain.format(), QImage::Format_ARGB32);
    QCOMPARE(plain.pixel(0, 0), 0x00000007U);
    QCOMPARE(plain.pixel(1, 0), 0x000000FFU);
    // With one a colour is an index where it is one; no palette is read.
    const QImage indexed = textureManipulator::generateTexture(QByteArray::fromHex("003EFFFF"), {"rgb5a1", QString(), 2.0, true},
                                                               2, QByteArray(512, 'p'));
    QCOMPARE(indexed.format(), QImage::Format_Indexed8);
    QCOMPARE(indexed.pixelIndex(0, 0), 0xF8);
    QCOMPARE(indexed.pixelIndex(1, 0), 0);
    QCOMPARE(indexed.colorTable(), QVector<QRgb>(256, qRgba(0, 0, 0, 255)));
}

void DecodeTest::jpegIsWhatTheReaderGives()
{
    const QByteArray bytes = jpegBytes();
    QImage expected;
    QVERIFY(expected.loadFromData(bytes, "JPEG"));
    for (const int width : {16, 0, -1, 1000}) {
        QCOMPARE(difference(textureManipulator::generateTexture(bytes, textureFormats::jpeg, width, QByteArray()), expected),
                 QString());
    }
    QCOMPARE(difference(textureManipulator::generateTexture(bytes + QByteArray(100, 'x'), textureFormats::jpeg, 1, "palette"),
                        expected),
             QString());

    QByteArray grey;
    QBuffer buffer(&grey);
    buffer.open(QIODevice::WriteOnly);
    expected.convertToFormat(QImage::Format_Grayscale8).save(&buffer, "JPEG");
    QCOMPARE(textureManipulator::generateTexture(grey, textureFormats::jpeg, 1, QByteArray()).format(),
             QImage::Format_Grayscale8);
}

void DecodeTest::jpegThatIsNone_data()
{
    QTest::addColumn<QByteArray>("data");
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    QImage(4, 4, QImage::Format_RGB32).save(&buffer, "PNG");

    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("noise") << noise(500, 13);
    QTest::newRow("start marker alone") << QByteArray::fromHex("FFD8");
    QTest::newRow("tables only") << jpegBytes().left(100);
    QTest::newRow("junk first") << "x" + jpegBytes();
    QTest::newRow("png") << png;
    QTest::newRow("no rows") << jpegClaiming(16, 0);
    QTest::newRow("no columns") << jpegClaiming(0, 8);
}

void DecodeTest::jpegThatIsNone()
{
    QFETCH(QByteArray, data);
    QVERIFY(textureManipulator::generateTexture(data, textureFormats::jpeg, 32, QByteArray()).isNull());
}

void DecodeTest::dataThatStartsNoJpegIsNotReported()
{
    const MessageCapture log;
    for (const QByteArray &data : {QByteArray(), noise(500, 13), QByteArray("\xFF"), "x" + jpegBytes()})
        QVERIFY(textureManipulator::generateTexture(data, textureFormats::jpeg, 32, QByteArray()).isNull());
    QCOMPARE(log.texts(), QStringList());
}

void DecodeTest::jpegOfClaimedSize_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("refused");
    QTest::newRow("a little more than there is") << QSize(64, 64) << false;
    QTest::newRow("long row") << QSize(60000, 8) << false;
    QTest::newRow("60000 x 60000") << QSize(60000, 60000) << true;
    QTest::newRow("a row too many") << QSize(8192, 8193) << true;
}

void DecodeTest::jpegOfClaimedSize()
{
    QFETCH(QSize, size);
    QFETCH(bool, refused);
    const QImage image =
        textureManipulator::generateTexture(jpegClaiming(size.width(), size.height()), textureFormats::jpeg, 32, QByteArray());
    QCOMPARE(image.isNull(), refused);
    if (!refused)
        QCOMPARE(image.size(), size);
}

QTEST_GUILESS_MAIN(DecodeTest)
#include "tst_decode.moc"
