// SPDX-License-Identifier: MIT
#include "codec/texturemanipulator.h"
#include "demo/democartridge.h"
#include "support/images.h"
#include "support/pictures.h"
#include "support/transfer.h"
#include "transfer/folderimport.h"
#include "transfer/palettefitting.h"
#include "transfer/palettesharing.h"
#include "transfer/replacement.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

namespace
{
const QRgb red = qRgb(248, 0, 0);
const QRgb green = qRgb(0, 248, 0);
const QRgb blue = qRgb(0, 0, 248);
const QRgb white = qRgb(248, 248, 248);
const QRgb clear = qRgba(0, 0, 0, 0);

QImage row(const QVector<QRgb> &pixels)
{
    QImage picture(pixels.size(), 1, QImage::Format_ARGB32);
    for (int x = 0; x < pixels.size(); ++x)
        picture.setPixel(x, 0, pixels.at(x));
    return picture;
}

QByteArray words(const QVector<int> &values, int places = 16)
{
    QByteArray bytes(2 * places, '\0');
    for (int i = 0; i < values.size(); ++i)
        qToBigEndian(quint16(values.at(i)), bytes.data() + 2 * i);
    return bytes;
}

PresentTexture present(const QByteArray &palette, const QByteArray &texels = QByteArray())
{
    PresentTexture texture;
    texture.palette = palette;
    texture.texels = texels;
    return texture;
}

QVector<int> indicesOf(const QImage &picture)
{
    QVector<int> indices;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            indices.append(picture.pixelIndex(x, y));
    }
    return indices;
}

/// What is to be written, as text: place, ":", and the words.
QStringList textOf(const QVector<PaletteRun> &runs)
{
    QStringList texts;
    for (const PaletteRun &run : runs)
        texts << QString::number(run.first) + ':'
                + QString::fromLatin1(textureManipulator::generateData(run.colours, textureFormats::rgb5a1).toHex());
    return texts;
}

/// An image of random bytes with one texture: its pixels at 0x100 and its palette at \a paletteAddress.
fileTreeFile *randomTexture(const QString &format, int width, int height, QRandomGenerator *random, int colourMask)
{
    loadIntoCurrentROM(cartridgeImage(0x2000));
    for (int i = 0x100; i < currentROM.data.size(); ++i)
        currentROM.data[i] = char(random->generate() & quint32(i >= 0x1000 ? colourMask : 0xFF));
    currentROM.root->files.clear();
    return newTexture(currentROM.root, "a", 0x100, format, width, height, 0x1000);
}

/// As another program saves an indexed picture: in true colour, and without the colour of clear pixels.
QImage repainted(const QImage &picture)
{
    QImage result = picture.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            if (qAlpha(result.pixel(x, y)) == 0)
                result.setPixel(x, y, 0);
        }
    }
    return result;
}

TextureSink writeIntoROM()
{
    return [](const QImage &picture, int address, const QString &format, const QByteArray &raw) {
        WorkLog log;
        QCOMPARE(writeTexture(&currentROM, picture, address, format, raw, &log), WriteOutcome::Written);
    };
}

SizeAnswer stretch(const QSize &, const QSize &)
{
    return SizeAnswer::IgnoreAspectRatio;
}
}

class PaletteFittingTest : public QObject
{
    Q_OBJECT

private slots:
    void coloursOfThePaletteNeedNoOther();
    void firstPlaceOfAColourWins();
    void presentIndexStays();
    void everyPartlyClearPixelIsClear();
    void clearWordsAreOneColour();
    void newColoursTakeFreePlaces();
    void newColoursTakePlacesOfOthersLast();
    void secondPlacesOfAColourAreTakenAtTheEnd();
    void changesAreApart();
    void paletteOutsideTheImageIsWrittenWhole();
    void manyColoursAreReduced_data();
    void manyColoursAreReduced();
    void reducedAgainChangesNothing();
    void oneClearPlaceAmongMany();
    void nearestColourWithoutAChange();
    void withoutAClearColourAllIsOpaque();
    void opaqueInAnAllClearPalette();
    void noPaletteNoPicture();
    void whatNeedsAPalette();
    void presentTextureIsCutAtTheEnd();

    void sharersAreFound();
    void sharingIsBounded();

    void untouchedPicturesKeepEveryByte_data();
    void untouchedPicturesKeepEveryByte();
    void demoTexturesKeepEveryByte();
    void resizedIndexedPictureGoesThisWay();
    void replacingSparesThePlacesOfOthers();
    void megapixelIsQuick();
};

void PaletteFittingTest::coloursOfThePaletteNeedNoOther()
{
    const FittedPicture fitted =
        fitPalette(row({blue, red, green, red}), textureFormats::ci4, present(words({0xF801, 0x07C1, 0x003F})));
    QCOMPARE(fitted.picture.format(), QImage::Format_Indexed8);
    QCOMPARE(indicesOf(fitted.picture), QVector<int>({2, 0, 1, 0}));
    QVERIFY(fitted.changes.isEmpty());
    QCOMPARE(fitted.colours, 3);
    QCOMPARE(fitted.lostColours, 0);
    QCOMPARE(fitted.picture.color(1), green);
    QCOMPARE(fitted.picture.colorCount(), 16);
}

void PaletteFittingTest::firstPlaceOfAColourWins()
{
    const FittedPicture fitted = fitPalette(row({red, red}), textureFormats::ci8, present(words({1, 0xF801, 0xF801}, 256)));
    QCOMPARE(indicesOf(fitted.picture), QVector<int>({1, 1}));
}

void PaletteFittingTest::presentIndexStays()
{
    const QByteArray palette = words({1, 0xF801, 0xF801, 0xFFFF});
    // Present are 2, 1, 3, 2; the third pixel is painted over.
    const FittedPicture ci4 =
        fitPalette(row({red, red, red, white}), textureFormats::ci4, present(palette, QByteArray::fromHex("2132")));
    QCOMPARE(indicesOf(ci4.picture), QVector<int>({2, 1, 1, 3}));
    const FittedPicture ci8 = fitPalette(row({red, red, red, white}), textureFormats::ci8,
                                         present(words({1, 0xF801, 0xF801, 0xFFFF}, 256), QByteArray::fromHex("020103")));
    QCOMPARE(indicesOf(ci8.picture), QVector<int>({2, 1, 1, 3})); // The fourth texel lies outside the image.
    QVERIFY(ci4.changes.isEmpty() && ci8.changes.isEmpty());
}

void PaletteFittingTest::everyPartlyClearPixelIsClear()
{
    const FittedPicture fitted =
        fitPalette(row({qRgba(248, 0, 0, 254), qRgba(248, 0, 0, 255)}), textureFormats::ci4, present(words({0xF801, 0})));
    QCOMPARE(indicesOf(fitted.picture), QVector<int>({1, 0}));
}

void PaletteFittingTest::clearWordsAreOneColour()
{
    // 0xF800 and 0x07C0 are clear words with colour bits.
    const FittedPicture fitted = fitPalette(row({clear, qRgba(0, 248, 0, 0), red}), textureFormats::ci4,
                                            present(words({0xF801, 0xF800, 0x07C0}), QByteArray::fromHex("2000")));
    QCOMPARE(indicesOf(fitted.picture), QVector<int>({2, 1, 0}));
    QVERIFY(fitted.changes.isEmpty());
}

void PaletteFittingTest::newColoursTakeFreePlaces()
{
    PresentTexture texture = present(words({0xF801, 0x07C1, 0x003F, 0xF800}));
    texture.usedByOthers.set(1);
    const FittedPicture fitted = fitPalette(row({white, red, qRgb(8, 8, 8)}), textureFormats::ci4, texture);
    QCOMPARE(indicesOf(fitted.picture), QVector<int>({3, 0, 2}));
    QCOMPARE(textOf(fitted.changes), QStringList({"2:0843ffff"}));
}

void PaletteFittingTest::newColoursTakePlacesOfOthersLast()
{
    PresentTexture texture = present(words({0xF801, 0x07C1}));
    texture.usedByOthers.set();
    texture.usedByOthers.reset(9);
    const FittedPicture fitted = fitPalette(row({red, white, qRgb(8, 8, 8)}), textureFormats::ci4, texture);
    QCOMPARE(indicesOf(fitted.picture), QVector<int>({0, 1, 9}));
    QCOMPARE(textOf(fitted.changes), QStringList({"1:ffff", "9:0843"}));
}

void PaletteFittingTest::secondPlacesOfAColourAreTakenAtTheEnd()
{
    // Every place is red and used by a texel, which keeps it but for the one that the new colour needs.
    const QVector<int> reds(16, 0xF801);
    QVector<QRgb> pixels(16, red);
    pixels.append(white);
    const FittedPicture fitted =
        fitPalette(row(pixels), textureFormats::ci4, present(words(reds), QByteArray::fromHex("0123456789abcdef00")));
    QCOMPARE(textOf(fitted.changes), QStringList({"1:ffff"}));
    QCOMPARE(indicesOf(fitted.picture), QVector<int>({0, 0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 1}));
}

void PaletteFittingTest::changesAreApart()
{
    PresentTexture texture = present(words({0xF801, 0xF800, 0x07C1, 0xF800, 0x003F}));
    // Clear words with colour bits at 1 and 3 are not in the picture: 1 and 3 are free, 2 is not.
    const FittedPicture fitted = fitPalette(row({red, green, blue, white, qRgb(8, 8, 8)}), textureFormats::ci4, texture);
    QCOMPARE(textOf(fitted.changes), QStringList({"1:0843", "3:ffff"}));
}

void PaletteFittingTest::paletteOutsideTheImageIsWrittenWhole()
{
    const FittedPicture fitted = fitPalette(row({red, white}), textureFormats::ci4, present(words({0xF801, 0x0001}, 2) + "\x01"));
    QCOMPARE(indicesOf(fitted.picture), QVector<int>({0, 1}));
    QCOMPARE(textOf(fitted.changes), QStringList({"1:ffff" + QString(56, '0')}));
}

void PaletteFittingTest::manyColoursAreReduced_data()
{
    QTest::addColumn<QString>("format");
    QTest::newRow("ci4") << "ci4";
    QTest::newRow("ci8") << "ci8";
}

void PaletteFittingTest::manyColoursAreReduced()
{
    QFETCH(QString, format);
    const textureFormat record = textureFormats::getAsMap().value(format);
    QImage picture(64, 64, QImage::Format_RGB32);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x)
            picture.setPixel(x, y, qRgb(4 * x, 4 * y, 2 * (x + y)));
    }
    // The darkest colour of the picture is in the palette at place 7, and surely not the one that shows it best.
    const FittedPicture fitted = fitPalette(picture, record, present(words({}, textureFormats::paletteColours(record))));
    QVERIFY(fitted.colours > textureFormats::paletteColours(record));
    QVERIFY(fitted.lostColours > 0);
    double error = 0;
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x)
            error += qAbs(qRed(picture.pixel(x, y)) - qRed(fitted.picture.pixel(x, y)));
    }
    QVERIFY2(error / (64 * 64) < (format == "ci4" ? 32 : 10), qPrintable(QString::number(error / (64 * 64))));
}

void PaletteFittingTest::reducedAgainChangesNothing()
{
    QRandomGenerator random(5);
    QImage picture(32, 32, QImage::Format_ARGB32);
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 32; ++x)
            picture.setPixel(x, y, random.bounded(10) == 0 ? 0 : random.generate() | 0xFF000000U);
    }
    loadIntoCurrentROM(QByteArray(0x1000, '\x55'));
    const textureFormat &format = textureFormats::ci8;
    const auto import = [&] {
        const FittedPicture fitted = fitPalette(picture, format, presentTexture(currentROM.data, format, 0, 0x800, 32 * 32));
        writeIntoROM()(fitted.picture, 0, format.name, QByteArray());
        for (const PaletteRun &run : fitted.changes)
            writeIntoROM()(run.colours, 0x800 + 2 * run.first, "rgb5a1", QByteArray());
        return fitted;
    };
    QCOMPARE(textOf(import().changes).join(' ').size() > 256 * 4, true);
    const QByteArray once = currentROM.data;
    QVERIFY(import().changes.isEmpty());
    QCOMPARE(currentROM.data, once);
}

void PaletteFittingTest::oneClearPlaceAmongMany()
{
    QVector<QRgb> pixels {clear, qRgba(9, 9, 9, 9)};
    for (int i = 0; i < 32; ++i)
        pixels.append(qRgb(8 * i, 255 - 8 * i, 0));
    const FittedPicture fitted = fitPalette(row(pixels), textureFormats::ci4, present(words(QVector<int>(16, 1))));
    int clearPlaces = 0;
    for (int i = 0; i < 16; ++i)
        clearPlaces += qAlpha(fitted.picture.color(i)) == 0;
    QCOMPARE(clearPlaces, 1);
    for (int x = 0; x < pixels.size(); ++x)
        QCOMPARE(qAlpha(fitted.picture.pixel(x, 0)), x < 2 ? 0 : 255);
}

void PaletteFittingTest::nearestColourWithoutAChange()
{
    const FittedPicture fitted =
        fitToPalette(row({qRgb(200, 40, 0), blue, clear, qRgb(0, 0, 200), green}), textureFormats::ci4,
                     present(words({0xF801, 0x07C1, 0x003F, 0xFFFE, 0x003F}), QByteArray::fromHex("040400")));
    QCOMPARE(indicesOf(fitted.picture), QVector<int>({0, 4, 3, 4, 1}));
    QVERIFY(fitted.changes.isEmpty());
    QCOMPARE(fitted.colours, 5);
    QCOMPARE(fitted.lostColours, 2);
    QVERIFY(!fitted.clearBecomesOpaque);
}

void PaletteFittingTest::withoutAClearColourAllIsOpaque()
{
    QVector<int> values(16, 0x0001);
    values[3] = 0xF801;
    const FittedPicture fitted = fitToPalette(row({clear, qRgba(248, 0, 0, 9)}), textureFormats::ci4, present(words(values)));
    QCOMPARE(indicesOf(fitted.picture), QVector<int>({0, 3}));
    QVERIFY(fitted.clearBecomesOpaque);
}

void PaletteFittingTest::opaqueInAnAllClearPalette()
{
    const FittedPicture fitted = fitToPalette(row({red, clear}), textureFormats::ci4, present(words({0xF800})));
    QCOMPARE(indicesOf(fitted.picture), QVector<int>({0, 0}));
    QCOMPARE(fitted.lostColours, 1);
}

void PaletteFittingTest::noPaletteNoPicture()
{
    QVERIFY(fitToPalette(row({red}), textureFormats::ci4, present(QByteArray("\x01"))).picture.isNull());
}

void PaletteFittingTest::whatNeedsAPalette()
{
    QImage indexed(1, 1, QImage::Format_Indexed8);
    QVERIFY(needsPalette(indexed, textureFormats::ci4)); // A colour table without colours is none.
    indexed.setColorTable({red});
    QVERIFY(!needsPalette(indexed, textureFormats::ci4));
    QVERIFY(!needsPalette(QImage(), textureFormats::ci8));
    QVERIFY(!needsPalette(row({red}), textureFormats::rgb5a1));
    QVERIFY(needsPalette(row({red}).convertToFormat(QImage::Format_Grayscale8), textureFormats::ci8));
}

void PaletteFittingTest::presentTextureIsCutAtTheEnd()
{
    const QByteArray image = QByteArray::fromHex("00112233445566778899");
    const PresentTexture cut = presentTexture(image, textureFormats::ci4, 2, 7, 5);
    QCOMPARE(cut.texels, QByteArray::fromHex("223344"));
    QCOMPARE(cut.palette, QByteArray::fromHex("778899"));
    const PresentTexture outside = presentTexture(image, textureFormats::ci8, -1, 10, 4);
    QVERIFY(outside.texels.isEmpty() && outside.palette.isEmpty());
}

void PaletteFittingTest::sharersAreFound()
{
    loadIntoCurrentROM(QByteArray(0x1000, '\0'));
    currentROM.data.replace(0x200, 2, QByteArray::fromHex("13F3"));
    currentROM.data.replace(0x300, 4, QByteArray::fromHex("01020AFF"));
    fileTreeDirectory *folder = newFolder(currentROM.root, "A", 0x100);
    fileTreeFile *texture = newTexture(folder, "self", 0, "ci4", 2, 2, 0x700); // Palette from 0x800 to 0x81F.
    newTexture(folder, "same texels", 0, "ci4", 4, 4, 0x700);
    newTexture(folder, "ci4", 0x100, "ci4", 4, 1, 0x700);
    newTexture(folder, "ci8 before", 0x200, "ci8", 4, 1, 0x6F0); // 16 bytes before: its place 10 is place 2.
    newTexture(folder, "half a colour behind", 0x100, "ci4", 2, 1, 0x701);
    newTexture(folder, "right behind", 0x100, "ci4", 4, 1, 0x720);
    newTexture(folder, "right before", 0x100, "ci4", 4, 1, 0x6E0);
    newTexture(folder, "direct colour", 0x100, "rgb5a1", 4, 1, 0x700);
    newTexture(folder, "outside", 0x7FFFFFF0, "ci4", 4, 1, 0x700);
    QStringList found;
    for (const PaletteSharer &sharer : paletteSharers(currentROM.root, *texture, currentROM.data)) {
        QString places;
        for (size_t i = 0; i < sharer.places.size(); ++i)
            places += sharer.places.test(i) ? QString(" %1").arg(i) : QString();
        found << sharer.texture->name + ':' + places;
    }
    QCOMPARE(found, QStringList({"ci4: 1 3 15", "ci8 before: 2 247", "half a colour behind: 1 2 3 4", "outside:"}));
}

void PaletteFittingTest::sharingIsBounded()
{
    loadIntoCurrentROM(QByteArray(32 * 1024 * 1024, '\0'));
    const fileTreeFile *texture = newTexture(currentROM.root, "self", 0, "ci8", 1, 1, 0x1000);
    for (int i = 0; i < 1000; ++i)
        newTexture(currentROM.root, QString::number(i), 16, "ci8", 5000, 5000, 0x1000);
    QElapsedTimer timer;
    timer.start();
    const QVector<PaletteSharer> sharers = paletteSharers(currentROM.root, *texture, currentROM.data);
    QCOMPARE(sharers.size(), 1000);
    QCOMPARE(int(sharers.at(0).places.count()), 1);
    QVERIFY(sharers.at(999).places.all()); // What would take long to look at counts as used.
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
}

void PaletteFittingTest::untouchedPicturesKeepEveryByte_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("colourMask");
    QTest::newRow("ci4") << "ci4" << 0xFF;
    QTest::newRow("ci8") << "ci8" << 0xFF;
    QTest::newRow("ci4, colours twice") << "ci4" << 0x01;
    QTest::newRow("ci8, colours twice") << "ci8" << 0x81;
    QTest::newRow("ci8, one clear colour with other bits") << "ci8" << 0xFE;
}

void PaletteFittingTest::untouchedPicturesKeepEveryByte()
{
    QFETCH(QString, format);
    QFETCH(int, colourMask);
    QRandomGenerator random(7);
    QTemporaryDir folder;
    for (int round = 0; round < 20; ++round) {
        fileTreeFile *texture = randomTexture(format, random.bounded(1, 17) * 2, random.bounded(1, 33), &random, colourMask);
        const QByteArray before = currentROM.data;
        const QImage picture =
            textureManipulator::generateTexture(texture->data(), textureFormats::getAsMap().value(format), texture->width,
                                                currentROM.data.mid(0x1000, format == "ci4" ? 32 : 512));
        const QString path = folder.filePath("a.png");
        QVERIFY(repainted(picture).save(path));
        WorkLog log;
        QCOMPARE(::replaceTexture(*texture, path, stretch, writeIntoROM(), &log), ReplaceOutcome::Replaced);
        QVERIFY(currentROM.data == before);
        Progress progress;
        QString report;
        importPictureFolder(folder.path(), currentROM.root, writeIntoROM(), &progress, &log, &report);
        QVERIFY(currentROM.data == before);
        QVERIFY(report.isEmpty());
    }
}

void PaletteFittingTest::demoTexturesKeepEveryByte()
{
    QTemporaryDir folder;
    int count = 0;
    for (const demo::Texture &drawn : demo::cartridge().textures) {
        if (drawn.paletteAddress < 0)
            continue;
        ++count;
        loadIntoCurrentROM(demo::cartridge().image);
        currentROM.root->files.clear();
        fileTreeFile *texture = newTexture(currentROM.root, drawn.name, drawn.address, drawn.format, drawn.picture.width(),
                                           drawn.picture.height(), drawn.paletteAddress);
        const QImage picture =
            textureManipulator::generateTexture(texture->data(), textureFormats::getAsMap().value(drawn.format), texture->width,
                                                currentROM.data.mid(drawn.paletteAddress, drawn.format == "ci4" ? 32 : 512));
        QVERIFY(repainted(picture).save(folder.filePath("a.png")));
        WorkLog log;
        ::replaceTexture(*texture, folder.filePath("a.png"), stretch, writeIntoROM(), &log);
        QVERIFY2(currentROM.data == demo::cartridge().image, qPrintable(drawn.name));
    }
    QVERIFY(count > 3);
}

void PaletteFittingTest::resizedIndexedPictureGoesThisWay()
{
    loadIntoCurrentROM(QByteArray(0x1000, '\0'));
    currentROM.root->files.clear();
    fileTreeFile *texture = newTexture(currentROM.root, "a", 0x100, "ci4", 2, 2, 0x800);
    currentROM.data.replace(0x800, 32, words({0x0001, 0xF801}));
    QImage picture(4, 4, QImage::Format_Indexed8);
    picture.setColorTable({white, red});
    picture.fill(1);
    QTemporaryDir folder;
    QVERIFY(picture.save(folder.filePath("a.png")));
    WorkLog log;
    ::replaceTexture(*texture, folder.filePath("a.png"), stretch, writeIntoROM(), &log);
    QCOMPARE(currentROM.data.mid(0x100, 2), QByteArray::fromHex("1111"));
    QCOMPARE(currentROM.data.mid(0x800, 32), words({0x0001, 0xF801})); // Not the picture's colour table.
}

void PaletteFittingTest::replacingSparesThePlacesOfOthers()
{
    loadIntoCurrentROM(QByteArray(0x1000, '\0'));
    currentROM.root->files.clear();
    fileTreeFile *texture = newTexture(currentROM.root, "a", 0x100, "ci4", 2, 1, 0x800);
    newTexture(currentROM.root, "b", 0x200, "ci4", 2, 1, 0x800);
    currentROM.data.replace(0x200, 1, QByteArray::fromHex("02"));
    currentROM.data.replace(0x800, 32, words({0xF801, 0x07C0, 0x003F}));
    QTemporaryDir folder;
    QVERIFY(row({white, red}).save(folder.filePath("a.png")));
    KeptLog log;
    ::replaceTexture(*texture, folder.filePath("a.png"), stretch, writeIntoROM(), &log);
    QCOMPARE(currentROM.data.mid(0x100, 1), QByteArray::fromHex("10"));
    QCOMPARE(currentROM.data.mid(0x800, 32), words({0xF801, 0xFFFF, 0x003F}));
    QCOMPARE(log.warnings,
             QStringList({folder.filePath("a.png")
                          + ": the palette of Root/a changes, which Root/b shares without a change of its colours"}));
}

void PaletteFittingTest::megapixelIsQuick()
{
    QRandomGenerator random(9);
    QImage picture(1024, 1024, QImage::Format_ARGB32);
    for (int y = 0; y < 1024; ++y) {
        for (int x = 0; x < 1024; ++x)
            picture.setPixel(x, y, qRgb((x / 4 + random.bounded(16)) & 255, (y / 4 + random.bounded(16)) & 255, (x + y) / 8));
    }
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(fitPalette(picture, textureFormats::ci8, PresentTexture()).picture.size(), QSize(1024, 1024));
    // Far above what it takes, also without optimisation and on a busy machine: bench_quantiser measures.
    QVERIFY2(timer.elapsed() < 10000, qPrintable(QString::number(timer.elapsed())));
}

QTEST_GUILESS_MAIN(PaletteFittingTest)
#include "tst_palettefitting.moc"
