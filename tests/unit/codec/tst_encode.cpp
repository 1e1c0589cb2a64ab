// SPDX-License-Identifier: MIT
#include "codec/texturemanipulator.h"
#include "unit/codec/codecsupport.h"
#include "unit/codec/naivecodec.h"

#include "support/messages.h"

#include <QtTest>

class EncodeTest : public QObject
{
    Q_OBJECT

private slots:
    void knownPixels_data();
    void knownPixels();
    void everyRedAndAlpha_data();
    void everyRedAndAlpha();
    void everyGreenAndBlue_data();
    void everyGreenAndBlue();
    void everyImageFormat_data();
    void everyImageFormat();
    void everyColourOfNarrowPictures_data();
    void everyColourOfNarrowPictures();
    void smallSizes_data();
    void smallSizes();
    void chunkEdges_data();
    void chunkEdges();
    void wrappedMemory_data();
    void wrappedMemory();
    void fewColours_data();
    void fewColours();
    void indicesOfOtherPictures_data();
    void indicesOfOtherPictures();
    void indexPairs();
    void smoothlyScaledPicture();
    void pictureStaysAsItIs();
    void nothingToEncode_data();
    void nothingToEncode();
    void onlyTheNameCounts();
    void roundTripOfOpaqueFormats_data();
    void roundTripOfOpaqueFormats();
    void roundTripLosesTransparentColours_data();
    void roundTripLosesTransparentColours();
    void roundTripOfIndices();
};

Q_DECLARE_METATYPE(textureFormat)

namespace
{
void addFormats()
{
    QTest::addColumn<textureFormat>("format");
    for (const textureFormat &format : texelFormats())
        QTest::newRow(qPrintable(format.name)) << format;
}

void addImageFormats()
{
    QTest::addColumn<QImage::Format>("imageFormat");
    for (int format = QImage::Format_Mono; format < QImage::NImageFormats; ++format)
        QTest::addRow("image format %d", format) << QImage::Format(format);
}

/// A picture of any format with noise in every bit, also the padding and unused ones.
QImage noisyPicture(int width, int height, QImage::Format format, quint32 seed)
{
    QImage image(width, height, format);
    const QByteArray bytes = noise(int(image.sizeInBytes()), seed);
    std::memcpy(image.bits(), bytes.constData(), size_t(bytes.size()));
    QRandomGenerator random(seed);
    if (format == QImage::Format_Indexed8) {
        for (int i = 0; i < 256; ++i)
            image.setColor(i, random.generate());
    } else if (format == QImage::Format_Mono || format == QImage::Format_MonoLSB) {
        image.setColorTable({random.generate(), random.generate()});
    }
    return image;
}

QImage pictureOf(const QVector<QRgb> &pixels, int width)
{
    QImage image(width, pixels.size() / width, QImage::Format_ARGB32);
    for (int p = 0; p < pixels.size(); ++p)
        image.setPixel(p % width, p / width, pixels.at(p));
    return image;
}

/// Compares with the naive encoder in every format; a picture without indices yields zeros for the indexed ones.
QString differenceInAnyFormat(const QImage &image)
{
    const MessageCapture warnings;
    for (const textureFormat &format : texelFormats()) {
        if (textureManipulator::generateData(image, format) != naive::generateData(image, format))
            return format.name;
    }
    return QString();
}
}

void EncodeTest::knownPixels_data()
{
    QTest::addColumn<textureFormat>("format");
    QTest::addColumn<QVector<QRgb>>("pixels");
    QTest::addColumn<QByteArray>("hex");
    using Pixels = QVector<QRgb>;

    QTest::newRow("rgba32") << textureFormats::rgba32 << Pixels {0x01020304, 0xFF102030} << QByteArray("02030401102030ff");
    QTest::newRow("rgba32 transparent") << textureFormats::rgba32 << Pixels {0x00FFFFFF} << QByteArray("00000000");
    QTest::newRow("rgb5a1 white") << textureFormats::rgb5a1 << Pixels {0xFFFFFFFF} << QByteArray("ffff");
    QTest::newRow("rgb5a1 alpha 254") << textureFormats::rgb5a1 << Pixels {0xFEFFFFFF} << QByteArray("0000");
    QTest::newRow("rgb5a1 channels") << textureFormats::rgb5a1 << Pixels {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFF070707}
                                     << QByteArray("f80107c1003f0001");
    QTest::newRow("i4") << textureFormats::i4 << Pixels {0xFFFF0000, 0xFF100000} << QByteArray("f0");
    QTest::newRow("i4 drops alpha") << textureFormats::i4 << Pixels {0x00FF0000, 0x00110000} << QByteArray("f1");
    QTest::newRow("i4 odd count") << textureFormats::i4 << Pixels {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF} << QByteArray("fff0");
    QTest::newRow("ia4 white") << textureFormats::ia4 << Pixels {0xFFFFFFFF, 0xFFFFFFFF} << QByteArray("ff");
    QTest::newRow("ia4 alpha 127") << textureFormats::ia4 << Pixels {0x7FFFFFFF, 0xFFFFFFFF} << QByteArray("0f");
    QTest::newRow("ia4 alpha 128") << textureFormats::ia4 << Pixels {0x80FFFFFF, 0x80000000} << QByteArray("f1");
    QTest::newRow("ia4 rounds") << textureFormats::ia4 << Pixels {0xFF110000, 0xFF120000, 0xFF350000, 0xFF360000}
                                << QByteArray("1335");
    QTest::newRow("ia4 odd count") << textureFormats::ia4 << Pixels {0xFFFFFFFF} << QByteArray("f0");
    QTest::newRow("i8") << textureFormats::i8 << Pixels {0x00FF1122, 0xFF803344} << QByteArray("ff80");
    QTest::newRow("ia8") << textureFormats::ia8 << Pixels {0xFFFF1234, 0x00FF1234, 0x10FFFFFF, 0x11210000}
                         << QByteArray("ff00f011");
    QTest::newRow("ia16") << textureFormats::ia16 << Pixels {0x40801234, 0x00FF0000} << QByteArray("8040ff00");
}

void EncodeTest::knownPixels()
{
    QFETCH(textureFormat, format);
    QFETCH(QVector<QRgb>, pixels);
    QFETCH(QByteArray, hex);
    QCOMPARE(textureManipulator::generateData(pictureOf(pixels, pixels.size()), format).toHex(), hex);
    QCOMPARE(textureManipulator::generateData(pictureOf(pixels, 1), format).toHex(), hex);
}

void EncodeTest::everyRedAndAlpha_data()
{
    addFormats();
}

void EncodeTest::everyRedAndAlpha()
{
    QFETCH(textureFormat, format);
    if (format.usesPalette)
        return;
    QImage image(256, 256, QImage::Format_ARGB32);
    for (int alpha = 0; alpha < 256; ++alpha) {
        for (int red = 0; red < 256; ++red)
            image.setPixel(red, alpha, qRgba(red, 255 - red, alpha ^ red, alpha));
    }
    QCOMPARE(textureManipulator::generateData(image, format), naive::generateData(image, format));
    // Every value in the second place of a pair too.
    const QImage mirrored = image.mirrored(true, false);
    QCOMPARE(textureManipulator::generateData(mirrored, format), naive::generateData(mirrored, format));
}

void EncodeTest::everyGreenAndBlue_data()
{
    addFormats();
}

void EncodeTest::everyGreenAndBlue()
{
    QFETCH(textureFormat, format);
    if (format.usesPalette)
        return;
    for (const int alpha : {0, 254, 255}) {
        QImage image(256, 256, QImage::Format_ARGB32);
        for (int green = 0; green < 256; ++green) {
            for (int blue = 0; blue < 256; ++blue)
                image.setPixel(blue, green, qRgba(77, green, blue, alpha));
        }
        QCOMPARE(textureManipulator::generateData(image, format), naive::generateData(image, format));
    }
}

void EncodeTest::everyImageFormat_data()
{
    addImageFormats();
}

void EncodeTest::everyImageFormat()
{
    QFETCH(QImage::Format, imageFormat);
    for (const QSize size : {QSize(37, 23), QSize(32, 32), QSize(1, 9), QSize(67, 40)}) {
        const QImage image = noisyPicture(size.width(), size.height(), imageFormat, 14);
        QCOMPARE(differenceInAnyFormat(image), QString());
    }
}

void EncodeTest::everyColourOfNarrowPictures_data()
{
    addImageFormats();
}

void EncodeTest::everyColourOfNarrowPictures()
{
    QFETCH(QImage::Format, imageFormat);
    QImage image = noisyPicture(256, 256, imageFormat, 15);
    if (image.depth() > 16)
        return;
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < image.bytesPerLine(); ++x) {
            // All 65536 words of a 16-bit picture; of narrower ones every byte.
            image.scanLine(y)[x] = image.depth() == 16 ? uchar(x % 2 ? y : x / 2) : uchar(x);
        }
    }
    const MessageCapture warnings;
    for (const textureFormat &format : {textureFormats::rgba32, textureFormats::ci8})
        QCOMPARE(textureManipulator::generateData(image, format), naive::generateData(image, format));
}

void EncodeTest::smallSizes_data()
{
    addImageFormats();
}

void EncodeTest::smallSizes()
{
    QFETCH(QImage::Format, imageFormat);
    for (int width = 1; width <= 18; ++width) {
        for (int height = 1; height <= 4; ++height) {
            const QImage image = noisyPicture(width, height, imageFormat, quint32(width * 16 + height));
            const QString found = differenceInAnyFormat(image);
            QVERIFY2(found.isEmpty(), qPrintable(QStringLiteral("%1 x %2: %3").arg(width).arg(height).arg(found)));
        }
    }
}

void EncodeTest::chunkEdges_data()
{
    QTest::addColumn<QImage::Format>("imageFormat");
    QTest::newRow("whole") << QImage::Format_ARGB32;
    QTest::newRow("converted") << QImage::Format_RGB32;
    QTest::newRow("indexed") << QImage::Format_Indexed8;
}

void EncodeTest::chunkEdges()
{
    QFETCH(QImage::Format, imageFormat);
    // Pictures are converted a power of two of pixels at a time.
    for (const int power : {256, 512, 1024, 2048, 4096, 8192}) {
        for (const int count : {power - 1, power, power + 1}) {
            QCOMPARE(differenceInAnyFormat(noisyPicture(count, 1, imageFormat, quint32(count))), QString());
            QCOMPARE(differenceInAnyFormat(noisyPicture(1, count, imageFormat, quint32(count))), QString());
        }
        QCOMPARE(differenceInAnyFormat(noisyPicture(power / 2 + 1, 5, imageFormat, quint32(power))), QString());
    }
}

void EncodeTest::wrappedMemory_data()
{
    addImageFormats();
}

void EncodeTest::wrappedMemory()
{
    QFETCH(QImage::Format, imageFormat);
    const int depth = QImage(1, 1, imageFormat).depth();
    const int alignment = depth % 32 == 0 ? 4 : depth == 16 ? 2 : 1;
    for (const int width : {1, 3, 8, 21}) {
        for (const int padding : {0, 1, 5, 64}) {
            // Rows with a gap between them, the last ending right before memory that cannot be read.
            const int rowBytes = (width * depth + 7) / 8;
            const int stride = rowBytes + padding * qMax(alignment, depth / 8);
            GuardedBytes memory(noise(2 * stride + rowBytes, 16));
            QImage image(reinterpret_cast<uchar *>(memory.begin()), width, 3, stride, imageFormat);
            QVERIFY(!image.isNull());
            if (depth <= 8 && imageFormat != QImage::Format_Alpha8 && imageFormat != QImage::Format_Grayscale8)
                image.setColorTable(noisyPicture(1, 1, imageFormat, 17).colorTable());
            QCOMPARE(differenceInAnyFormat(image), QString());
        }
    }
}

void EncodeTest::fewColours_data()
{
    QTest::addColumn<QImage::Format>("imageFormat");
    QTest::addColumn<int>("colours");
    for (const int colours : {0, 1, 2, 100, 255})
        QTest::addRow("indexed, %d", colours) << QImage::Format_Indexed8 << colours;
    for (const int colours : {0, 1, 2}) {
        QTest::addRow("mono, %d", colours) << QImage::Format_Mono << colours;
        QTest::addRow("mono LSB, %d", colours) << QImage::Format_MonoLSB << colours;
    }
}

void EncodeTest::fewColours()
{
    QFETCH(QImage::Format, imageFormat);
    QFETCH(int, colours);
    QImage image = noisyPicture(40, 40, imageFormat, 18);
    image.setColorTable(image.colorTable().mid(0, colours));
    QCOMPARE(image.colorCount(), colours);
    QCOMPARE(differenceInAnyFormat(image), QString());

    // Indices without a colour stay silent: a warning for each pixel would drown the log.
    const MessageCapture messages;
    textureManipulator::generateData(image, textureFormats::rgba32);
    QCOMPARE(messages.texts(), QStringList());
}

void EncodeTest::indicesOfOtherPictures_data()
{
    addImageFormats();
}

void EncodeTest::indicesOfOtherPictures()
{
    QFETCH(QImage::Format, imageFormat);
    const QImage image = noisyPicture(16, 16, imageFormat, 19);
    const MessageCapture messages;
    const QByteArray bytes = textureManipulator::generateData(image, textureFormats::ci8);
    const QByteArray pairs = textureManipulator::generateData(image, textureFormats::ci4);
    QCOMPARE(messages.texts(), QStringList());
    const bool indexed = image.colorCount() > 0;
    QCOMPARE(bytes == QByteArray(256, '\0'), !indexed);
    QCOMPARE(pairs == QByteArray(128, '\0'), !indexed);
}

void EncodeTest::indexPairs()
{
    QImage image(3, 1, QImage::Format_Indexed8);
    image.setColorTable(QVector<QRgb>(256, 0xFF000000));
    const auto encoded = [&](uint first, uint second, uint third) {
        image.setPixel(0, 0, first);
        image.setPixel(1, 0, second);
        image.setPixel(2, 0, third);
        return textureManipulator::generateData(image, textureFormats::ci4).toHex();
    };
    QCOMPARE(encoded(1, 2, 3), QByteArray("1230"));
    QCOMPARE(encoded(15, 15, 15), QByteArray("fff0"));
    // Of a first index above 15 the low half is kept, a second one is added as it is.
    QCOMPARE(encoded(0x12, 0x13, 0xF4), QByteArray("3340"));
    QCOMPARE(encoded(0xFF, 0xFF, 0x10), QByteArray("ef00"));
    QCOMPARE(textureManipulator::generateData(image, textureFormats::ci8).toHex(), QByteArray("ffff10"));
}

void EncodeTest::smoothlyScaledPicture()
{
    const QImage scaled =
        noisyPicture(40, 40, QImage::Format_ARGB32, 20).scaled(32, 32, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QCOMPARE(scaled.format(), QImage::Format_ARGB32_Premultiplied);
    QCOMPARE(differenceInAnyFormat(scaled), QString());
    QCOMPARE(differenceInAnyFormat(scaled.copy(3, 1, 17, 30)), QString());
}

void EncodeTest::pictureStaysAsItIs()
{
    const QImage image = noisyPicture(33, 9, QImage::Format_RGB32, 21);
    const QImage shared = image;
    const qint64 key = image.cacheKey();
    textureManipulator::generateData(image, textureFormats::rgba32);
    QCOMPARE(image.cacheKey(), key);
    QCOMPARE(image.constBits(), shared.constBits());
}

void EncodeTest::nothingToEncode_data()
{
    QTest::addColumn<QImage>("image");
    QTest::addColumn<textureFormat>("format");
    const QImage image(4, 4, QImage::Format_Indexed8);
    for (const textureFormat &format : texelFormats()) {
        QTest::newRow(qPrintable("null image " + format.name)) << QImage() << format;
        QTest::newRow(qPrintable("no rows " + format.name)) << QImage(4, 0, QImage::Format_ARGB32) << format;
        QTest::newRow(qPrintable("no columns " + format.name)) << QImage(0, 4, QImage::Format_ARGB32) << format;
    }
    QTest::newRow("jpeg") << image << textureFormats::jpeg;
    QTest::newRow("null") << image << textureFormats::null;
    QTest::newRow("empty record") << image << textureFormat();
    QTest::newRow("upper case") << image << textureFormat {"I8", QString(), 1.0, false};
}

void EncodeTest::nothingToEncode()
{
    QFETCH(QImage, image);
    QFETCH(textureFormat, format);
    QVERIFY(textureManipulator::generateData(image, format).isNull());
}

void EncodeTest::onlyTheNameCounts()
{
    const QImage image = noisyPicture(9, 9, QImage::Format_Indexed8, 22);
    for (const textureFormat &format : texelFormats())
        QCOMPARE(textureManipulator::generateData(image, {format.name, QString(), 0, !format.usesPalette}),
                 textureManipulator::generateData(image, format));
}

void EncodeTest::roundTripOfOpaqueFormats_data()
{
    QTest::addColumn<textureFormat>("format");
    QTest::newRow("i4") << textureFormats::i4;
    QTest::newRow("i8") << textureFormats::i8;
    QTest::newRow("ia16") << textureFormats::ia16;
}

void EncodeTest::roundTripOfOpaqueFormats()
{
    QFETCH(textureFormat, format);
    QByteArray data;
    for (int word = 0; word < 65536; ++word)
        data.append(char(word >> 8)).append(char(word & 0xFF));
    const QImage image = textureManipulator::generateTexture(data, format, 256, QByteArray());
    QCOMPARE(textureManipulator::generateData(image, format), data);
}

void EncodeTest::roundTripLosesTransparentColours_data()
{
    QTest::addColumn<textureFormat>("format");
    QTest::newRow("rgba32") << textureFormats::rgba32;
    QTest::newRow("rgb5a1") << textureFormats::rgb5a1;
    QTest::newRow("ia4") << textureFormats::ia4;
    QTest::newRow("ia8") << textureFormats::ia8;
}

void EncodeTest::roundTripLosesTransparentColours()
{
    QFETCH(textureFormat, format);
    QByteArray data;
    QByteArray expected;
    for (int word = 0; word < 65536; ++word) {
        const int high = word >> 8;
        const int low = word & 0xFF;
        data.append(char(high)).append(char(low));
        if (format.name == "rgba32") {
            // Words of two make a texel: alpha is the low byte of the second.
            data.append(char(low)).append(char(high));
            const QByteArray texel = data.right(4);
            expected.append(high == 0 ? QByteArray(4, '\0') : texel);
        } else if (format.name == "rgb5a1") {
            expected.append(word & 1 ? data.right(2) : QByteArray(2, '\0'));
        } else {
            for (const int byte : {high, low}) {
                if (format.name == "ia8")
                    expected.append(char(byte & 0xF ? byte : 0));
                else
                    expected.append(char((byte & 0x10 ? byte & 0xF0 : 0) | (byte & 0x01 ? byte & 0xF : 0)));
            }
        }
    }
    const QImage image = textureManipulator::generateTexture(data, format, 64, QByteArray());
    QCOMPARE(textureManipulator::generateData(image, format), expected);
}

void EncodeTest::roundTripOfIndices()
{
    const QByteArray data = noise(35 * 12, 23);
    const QByteArray palette = noise(512, 24);
    for (const textureFormat &format : {textureFormats::ci8, textureFormats::ci4}) {
        const QImage image = textureManipulator::generateTexture(data, format, 35, palette);
        QCOMPARE(textureManipulator::generateData(image, format), data);
    }
}

QTEST_GUILESS_MAIN(EncodeTest)
#include "tst_encode.moc"
