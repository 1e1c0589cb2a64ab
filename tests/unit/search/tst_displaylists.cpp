// SPDX-License-Identifier: MIT
#include "search/displaylistscan.h"
#include "support/displaylists.h"

#include <QRandomGenerator>
#include <QTest>

namespace
{
/// "address format WxH palette", or "-" for none, of each texture.
QStringList texturesOf(const QByteArray &bytes, int offset = 0)
{
    WorkSteps steps([] { return false; });
    const QVector<TextureReference> found =
        joinedTextures(scanDisplayLists({bytes.constData(), bytes.size(), 0}, offset, &steps).textures);
    QStringList texts;
    for (const TextureReference &texture : found) {
        texts.append(QStringLiteral("%1 %2 %3x%4 %5%6")
                         .arg(texture.address, 0, 16)
                         .arg(texture.format)
                         .arg(texture.width)
                         .arg(texture.height)
                         .arg(texture.hasPalette ? QString::number(texture.paletteAddress, 16) : QStringLiteral("-"))
                         .arg(texture.isInterleaved ? QStringLiteral(" interleaved") : QString()));
    }
    texts.sort();
    return texts;
}

QStringList texturesOf(const TestList &list)
{
    return texturesOf(list.bytes());
}
}

class tst_DisplayLists : public QObject
{
    Q_OBJECT

private slots:
    void fieldsOfCommands();
    void impossibleCommands_data();
    void impossibleCommands();
    void blocks_data();
    void blocks();
    void upperBitsDoNotMatter();
    void paletteBeforeAndBehind();
    void paletteBanks();
    void sharedPalette();
    void sizeFromMasksAndLine();
    void loadTiles();
    void stripsAreOnePicture();
    void tilesFromBefore();
    void smallerVersionsInOneBlock();
    void whatCannotBeIsDropped_data();
    void whatCannotBeIsDropped();
    void interleavedRowsAreMarked();
    void listsEnd();
    void usesAreCounted();
    void positionsAreAligned();
    void randomBytesHoldNothing();
    void endlessCommandsAreQuick();
};

void tst_DisplayLists::fieldsOfCommands()
{
    const DisplayCommand image(Q_UINT64_C(0xFD70001F06001238));
    QVERIFY(image.isPossible());
    QCOMPARE(image.operation(), DisplayOperation::SetTextureImage);
    QCOMPARE(image.format(), TexelFormat::IntensityAlpha);
    QCOMPARE(image.bitsPerTexel(), 16);
    QCOMPARE(image.imageWidth(), 32);
    QCOMPARE(image.address(), 0x06001238U);
    // Format 2, size 0, line 5, memory 0x100, tile 3, palette 7, mask T 6, mask S 4.
    const DisplayCommand tile(Q_UINT64_C(0xF5400B000371C040 | 0x18000));
    QVERIFY(tile.isPossible());
    QCOMPARE(tile.format(), TexelFormat::Indexed);
    QCOMPARE(tile.bitsPerTexel(), 4);
    QCOMPARE(tile.line(), 5);
    QCOMPARE(tile.memoryAddress(), 0x100);
    QCOMPARE(tile.tile(), 3);
    QCOMPARE(tile.paletteNumber(), 7);
    QCOMPARE(tile.maskS(), 4);
    const DisplayCommand size(Q_UINT64_C(0xF20080040107C03C));
    QCOMPARE(size.left(), 8);
    QCOMPARE(size.top(), 4);
    QCOMPARE(size.tile(), 1);
    QCOMPARE(size.width(), 30);
    QCOMPARE(size.height(), 15);
    const DisplayCommand block(Q_UINT64_C(0xF3000000073FF100));
    QVERIFY(block.isPossible());
    QCOMPARE(block.blockTexels(), 1024);
    QCOMPARE(block.rowIncrement(), 256);
}

void tst_DisplayLists::impossibleCommands_data()
{
    QTest::addColumn<quint64>("word");
    QTest::newRow("image: bits 50 to 42") << Q_UINT64_C(0xFD10040000001000);
    QTest::newRow("image: format 5") << Q_UINT64_C(0xFDB0000000001000);
    QTest::newRow("image: address not aligned") << Q_UINT64_C(0xFD10000000001004);
    QTest::newRow("tile: bit 50") << Q_UINT64_C(0xF514000000000000);
    QTest::newRow("tile: bits 31 to 27") << Q_UINT64_C(0xF510000080000000);
    QTest::newRow("tile size: bits 31 to 27") << Q_UINT64_C(0xF20000000807C07C);
    QTest::newRow("tile size: ends before it begins") << Q_UINT64_C(0xF20100000000003C);
    QTest::newRow("block: starts in another row") << Q_UINT64_C(0xF3000001073FF100);
    QTest::newRow("sync with values") << Q_UINT64_C(0xE600000000000001);
    QTest::newRow("another command") << Q_UINT64_C(0xE400000000000000);
}

void tst_DisplayLists::impossibleCommands()
{
    QFETCH(quint64, word);
    QVERIFY(!DisplayCommand(word).isPossible());
}

void tst_DisplayLists::blocks_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<QString>("expected");
    QTest::newRow("rgb5a1") << int(TestList::Rgba) << 16 << 32 << 32 << "6001000 rgb5a1 32x32 -";
    QTest::newRow("rgb5a1, all of the memory") << int(TestList::Rgba) << 16 << 32 << 64 << "6001000 rgb5a1 32x64 -";
    QTest::newRow("rgba32, both halves") << int(TestList::Rgba) << 32 << 32 << 32 << "6001000 rgba32 32x32 -";
    QTest::newRow("i4") << int(TestList::Intensity) << 4 << 64 << 32 << "6001000 i4 64x32 -";
    QTest::newRow("i8") << int(TestList::Intensity) << 8 << 64 << 64 << "6001000 i8 64x64 -";
    QTest::newRow("ia4") << int(TestList::IntensityAlpha) << 4 << 16 << 16 << "6001000 ia4 16x16 -";
    QTest::newRow("ia8") << int(TestList::IntensityAlpha) << 8 << 32 << 16 << "6001000 ia8 32x16 -";
    QTest::newRow("ia16") << int(TestList::IntensityAlpha) << 16 << 24 << 8 << "6001000 ia16 24x8 -";
    QTest::newRow("yuv is reported") << int(TestList::Yuv) << 16 << 32 << 16 << "6001000 yuv16 32x16 -";
    QTest::newRow("ci8 without a palette") << int(TestList::Indexed) << 8 << 32 << 32 << "6001000 ci8 32x32 -";
}

void tst_DisplayLists::blocks()
{
    QFETCH(int, format);
    QFETCH(int, bits);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(QString, expected);
    QCOMPARE(texturesOf(TestList().block(format, bits, width, height, 0x06001000)), QStringList(expected));
    // Followed by drawing, by the next texture, and by the end.
    TestList next;
    next.block(format, bits, width, height, 0x06001000).draw().block(TestList::Rgba, 16, 8, 8, 0x06009000).draw().end();
    QCOMPARE(texturesOf(next), QStringList({expected, "6009000 rgb5a1 8x8 -"}));
}

void tst_DisplayLists::upperBitsDoNotMatter()
{
    QByteArray bytes = TestList().block(TestList::Rgba, 16, 32, 32, 0x06001000).bytes();
    for (int i = 0; i < bytes.size(); i += 8)
        bytes[i] = char(bytes.at(i) & 0x3F);
    QCOMPARE(texturesOf(bytes), QStringList("6001000 rgb5a1 32x32 -"));
}

void tst_DisplayLists::paletteBeforeAndBehind()
{
    TestList before;
    before.palette(16, 0x06000000).block(TestList::Indexed, 4, 32, 32, 0x06001000).draw();
    before.palette(16, 0x06000020).block(TestList::Indexed, 4, 32, 32, 0x06002000).draw().end();
    const QStringList expected {"6001000 ci4 32x32 6000000", "6002000 ci4 32x32 6000020"};
    QCOMPARE(texturesOf(before), expected);
    TestList behind;
    behind.block(TestList::Indexed, 4, 32, 32, 0x06001000).palette(16, 0x06000000).draw();
    behind.block(TestList::Indexed, 4, 32, 32, 0x06002000).palette(16, 0x06000020).draw().end();
    QCOMPARE(texturesOf(behind), expected);
    TestList undrawn;
    undrawn.palette(16, 0x06000000).block(TestList::Indexed, 4, 32, 32, 0x06001000);
    undrawn.palette(16, 0x06000020).block(TestList::Indexed, 4, 32, 32, 0x06002000);
    QCOMPARE(texturesOf(undrawn), expected);
}

void tst_DisplayLists::paletteBanks()
{
    // Four palettes of sixteen colours in one load; the texture draws with the third.
    TestList list;
    list.palette(64, 0x06000000).block(TestList::Indexed, 4, 32, 32, 0x06001000);
    list.tile(0, TestList::Indexed, 4, 2, 0, 2).tileSize(0, 32, 32).draw();
    // One into the place of the second alone.
    list.palette(16, 0x06000400, 256 + 16).tile(0, TestList::Indexed, 4, 2, 0, 1).tileSize(0, 32, 32);
    list.block(TestList::Indexed, 4, 16, 16, 0x06003000).tile(0, TestList::Indexed, 4, 1, 0, 1).tileSize(0, 16, 16).draw();
    QCOMPARE(texturesOf(list), QStringList({"6001000 ci4 32x32 6000040", "6003000 ci4 16x16 6000400"}));
}

void tst_DisplayLists::sharedPalette()
{
    TestList list;
    list.palette(256, 0x06000000).block(TestList::Indexed, 8, 32, 32, 0x06001000).draw();
    list.block(TestList::Indexed, 8, 32, 64, 0x06002000).draw().end();
    QCOMPARE(texturesOf(list), QStringList({"6001000 ci8 32x32 6000000", "6002000 ci8 32x64 6000000"}));
}

void tst_DisplayLists::sizeFromMasksAndLine()
{
    TestList masks;
    masks.image(TestList::Rgba, 16, 1, 0x06001000).tile(7, TestList::Rgba, 16, 0, 0).loadBlock(7, 1024, 256);
    masks.tile(0, TestList::Rgba, 16, 8, 0, 0, 5, 5);
    QCOMPARE(texturesOf(masks), QStringList("6001000 rgb5a1 32x32 -"));
    TestList line;
    line.image(TestList::Rgba, 16, 1, 0x06001000).tile(7, TestList::Rgba, 16, 0, 0).loadBlock(7, 1024, 256);
    line.tile(0, TestList::Rgba, 16, 8, 0);
    QCOMPARE(texturesOf(line), QStringList("6001000 rgb5a1 32x32 -"));
    // A size beyond the mask repeats the texture.
    TestList repeated;
    repeated.image(TestList::Rgba, 16, 1, 0x06001000).tile(7, TestList::Rgba, 16, 0, 0).loadBlock(7, 1024, 256);
    repeated.tile(0, TestList::Rgba, 16, 8, 0, 0, 5, 5).tileSize(0, 128, 64);
    QCOMPARE(texturesOf(repeated), QStringList("6001000 rgb5a1 32x32 -"));
}

void tst_DisplayLists::loadTiles()
{
    // All of a picture; 4-bit texels as pairs; the tile that loads is the one that draws; a part of a wider picture.
    TestList whole;
    whole.image(TestList::IntensityAlpha, 8, 48, 0x80301000).tile(7, TestList::IntensityAlpha, 8, 6, 0).syncs();
    whole.loadTile(7, 0, 0, 48, 20).tile(0, TestList::IntensityAlpha, 8, 6, 0).tileSize(0, 48, 20);
    QCOMPARE(texturesOf(whole), QStringList("80301000 ia8 48x20 -"));
    TestList pairs;
    pairs.image(TestList::Intensity, 8, 16, 0x06001000).tile(7, TestList::Intensity, 8, 2, 0).loadTile(7, 0, 0, 16, 32);
    pairs.tile(0, TestList::Intensity, 4, 2, 0).tileSize(0, 32, 32);
    QCOMPARE(texturesOf(pairs), QStringList("6001000 i4 32x32 -"));
    TestList same;
    same.image(TestList::Rgba, 16, 32, 0x06001000).tile(0, TestList::Rgba, 16, 8, 0).loadTile(0, 0, 0, 32, 32).draw().end();
    QCOMPARE(texturesOf(same), QStringList("6001000 rgb5a1 32x32 -"));
    TestList part;
    part.image(TestList::Rgba, 16, 320, 0x06001000).tile(7, TestList::Rgba, 16, 8, 0).loadTile(7, 64, 16, 32, 32);
    part.tile(0, TestList::Rgba, 16, 8, 0).tileSize(0, 32, 32);
    QCOMPARE(texturesOf(part), QStringList("6003800 rgb5a1 320x32 -"));
}

void tst_DisplayLists::stripsAreOnePicture()
{
    TestList list;
    for (int top = 0; top < 64; top += 16) {
        list.image(TestList::Rgba, 32, 64, 0x06001000).tile(7, TestList::Rgba, 32, 16, 0).syncs().loadTile(7, 0, top, 64, 16);
        list.tile(0, TestList::Rgba, 32, 16, 0).tileSize(0, 64, 16).draw();
    }
    QCOMPARE(texturesOf(list), QStringList("6001000 rgba32 64x64 -"));
}

void tst_DisplayLists::tilesFromBefore()
{
    TestList list;
    list.tile(7, TestList::Rgba, 16, 0, 0).tile(0, TestList::Rgba, 16, 8, 0).tileSize(0, 32, 32);
    for (quint32 address = 0x06001000; address < 0x06003000; address += 0x800)
        list.image(TestList::Rgba, 16, 1, address).syncs().loadBlock(7, 1024, 256).draw();
    QCOMPARE(
        texturesOf(list.end()),
        QStringList({"6001000 rgb5a1 32x32 -", "6001800 rgb5a1 32x32 -", "6002000 rgb5a1 32x32 -", "6002800 rgb5a1 32x32 -"}));
}

void tst_DisplayLists::smallerVersionsInOneBlock()
{
    TestList list;
    list.image(TestList::Rgba, 16, 1, 0x06001000).tile(7, TestList::Rgba, 16, 0, 0).syncs().loadBlock(7, 1024 + 256, 0);
    list.tile(0, TestList::Rgba, 16, 8, 0).tileSize(0, 32, 32).tile(1, TestList::Rgba, 16, 4, 256).tileSize(1, 16, 16).draw();
    QCOMPARE(texturesOf(list), QStringList({"6001000 rgb5a1 32x32 - interleaved", "6001800 rgb5a1 16x16 - interleaved"}));
}

void tst_DisplayLists::whatCannotBeIsDropped_data()
{
    QTest::addColumn<QByteArray>("list");
    const auto row = [](const char *name, const TestList &list) { QTest::newRow(name) << list.bytes(); };
    TestList list;
    row("no tile", TestList().image(TestList::Rgba, 16, 1, 0x06001000).loadBlock(7, 1024, 256));
    row("no image", TestList().tile(7, TestList::Rgba, 16, 8, 0).loadBlock(7, 1024, 256));
    row("beyond the memory", TestList().block(TestList::Rgba, 16, 32, 72, 0x06001000));
    row("32 bits beyond a half", TestList().block(TestList::Rgba, 32, 32, 40, 0x06001000));
    row("indices in the palettes' half", TestList().palette(256, 0x06000000).block(TestList::Indexed, 8, 32, 72, 0x06001000));
    row("4-bit load",
        TestList().image(TestList::Intensity, 4, 32, 0x06001000).tile(0, TestList::Intensity, 4, 2, 0).loadTile(0, 0, 0, 32, 32));
    row("image and tile of different sizes",
        TestList()
            .image(TestList::Intensity, 8, 32, 0x06001000)
            .tile(0, TestList::Intensity, 16, 8, 0)
            .loadTile(0, 0, 0, 32, 32));
    row("no such format", TestList().block(TestList::Intensity, 16, 32, 32, 0x06001000));
    row("larger than the load",
        TestList()
            .image(TestList::Rgba, 16, 1, 0x06001000)
            .tile(7, TestList::Rgba, 16, 0, 0)
            .loadBlock(7, 512, 256)
            .tile(0, TestList::Rgba, 16, 8, 0)
            .tileSize(0, 32, 32));
    row("wider than the line",
        TestList()
            .image(TestList::Rgba, 16, 1, 0x06001000)
            .tile(7, TestList::Rgba, 16, 0, 0)
            .loadBlock(7, 1024, 256)
            .tile(0, TestList::Rgba, 16, 8, 0)
            .tileSize(0, 64, 16));
    row("rows of another length",
        TestList()
            .image(TestList::Rgba, 16, 1, 0x06001000)
            .tile(7, TestList::Rgba, 16, 0, 0)
            .loadBlock(7, 1024, 128)
            .tile(0, TestList::Rgba, 16, 8, 0)
            .tileSize(0, 32, 32));
    row("wider than the picture",
        TestList().image(TestList::Rgba, 16, 16, 0x06001000).tile(0, TestList::Rgba, 16, 8, 0).loadTile(0, 0, 0, 32, 32));
    row("rows longer than the line",
        TestList().image(TestList::Rgba, 16, 32, 0x06001000).tile(0, TestList::Rgba, 16, 4, 0).loadTile(0, 0, 0, 32, 32));
}

void tst_DisplayLists::whatCannotBeIsDropped()
{
    QFETCH(QByteArray, list);
    QCOMPARE(texturesOf(list), QStringList());
}

void tst_DisplayLists::interleavedRowsAreMarked()
{
    TestList list;
    list.image(TestList::Rgba, 16, 1, 0x06001000).tile(7, TestList::Rgba, 16, 0, 0).loadBlock(7, 1024, 0);
    list.tile(0, TestList::Rgba, 16, 8, 0).tileSize(0, 32, 32);
    QCOMPARE(texturesOf(list), QStringList("6001000 rgb5a1 32x32 - interleaved"));
}

void tst_DisplayLists::listsEnd()
{
    // The palette of one list is not that of the next.
    TestList list;
    list.palette(16, 0x06000000).block(TestList::Indexed, 4, 32, 32, 0x06001000).draw().end();
    list.block(TestList::Indexed, 4, 32, 32, 0x06002000).draw().end();
    QCOMPARE(texturesOf(list), QStringList({"6001000 ci4 32x32 6000000", "6002000 ci4 32x32 -"}));
    // Neither is what lies far away.
    TestList far;
    far.palette(16, 0x06000000);
    const QByteArray bytes =
        far.bytes() + QByteArray(9000, '\0') + TestList().block(TestList::Indexed, 4, 32, 32, 0x06002000).bytes();
    QCOMPARE(texturesOf(bytes), QStringList("6002000 ci4 32x32 -"));
}

void tst_DisplayLists::usesAreCounted()
{
    TestList list;
    for (int i = 0; i < 3; ++i)
        list.block(TestList::Rgba, 16, 32, 32, 0x06001000).draw();
    const QByteArray bytes = list.end().bytes();
    WorkSteps steps([] { return false; });
    const DisplayListScan scan = scanDisplayLists({bytes.constData(), bytes.size(), 0}, 0x1000, &steps);
    const QVector<TextureReference> found = joinedTextures(scan.textures);
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().uses, 3);
    // Of each use: the image, the tile that loads, the load, the tile that draws; eleven words a use.
    QCOMPARE(found.first().commands,
             QVector<int>({0x1000, 0x1008, 0x1028, 0x1030, 0x1050, 0x1058, 0x1078, 0x1080, 0x10A0, 0x10A8, 0x10C8, 0x10D0}));
    QCOMPARE(scan.commands, found.first().commands);
}

void tst_DisplayLists::positionsAreAligned()
{
    const QByteArray list = TestList().block(TestList::Rgba, 16, 32, 32, 0x06001000).bytes();
    QCOMPARE(texturesOf(QByteArray(4, '\0') + list), QStringList());
    QCOMPARE(texturesOf(QByteArray(4, '\0') + list, 0x1004), QStringList("6001000 rgb5a1 32x32 -"));
    QCOMPARE(texturesOf(list.left(8)), QStringList());
    QCOMPARE(texturesOf(QByteArray()), QStringList());
}

void tst_DisplayLists::randomBytesHoldNothing()
{
    QRandomGenerator random(14);
    QByteArray bytes(16 * 1024 * 1024, '\0');
    random.fillRange(reinterpret_cast<quint32 *>(bytes.data()), bytes.size() / 4);
    QVERIFY2(texturesOf(bytes).size() <= 1, qPrintable(texturesOf(bytes).join(QLatin1Char('\n'))));
}

/// Made-up lists cost no more than their length.
void tst_DisplayLists::endlessCommandsAreQuick()
{
    TestList some;
    for (int i = 0; i < 8; ++i)
        some.image(TestList::Rgba, 16, 1, 0x06001000).tile(i, TestList::Rgba, 16, 1, i * 8).loadBlock(i, 8, 0).draw();
    const QByteArray bytes = some.bytes().repeated(20000);
    QCOMPARE(texturesOf(bytes).size(), 1);
}

QTEST_GUILESS_MAIN(tst_DisplayLists)
#include "tst_displaylists.moc"
