// SPDX-License-Identifier: MIT
#include "codec/texturemanipulator.h"
#include "demo/democartridge.h"
#include "model/rom.h"
#include "search/discovery.h"
#include "search/pictureliness.h"
#include "support/bootimages.h"
#include "support/displaylists.h"

#include <QRandomGenerator>
#include <QTest>

#include <cstdlib>
#include <limits>

namespace
{
constexpr quint32 entry = 0x80000400;

Discovery discover(const QByteArray &image, int from = 0, int to = std::numeric_limits<int>::max())
{
    WorkSteps steps([] { return false; });
    return discoverTextures(image, from, to, &steps);
}

/// An image of \a size bytes with a header, else zero, and \a list at \a position.
QByteArray imageWith(const TestList &list, int position = 0x2000, int size = 0x200000)
{
    QByteArray image(size, '\0');
    image.replace(0, 12, QByteArray::fromHex("803712400000000F80000400"));
    image.replace(59, 4, "NQLE");
    return image.replace(position, list.bytes().size(), list.bytes());
}

/// Which of the demo's textures \a found is; null for none.
const demo::Texture *demoTexture(const DiscoveredTexture &found)
{
    for (const demo::Texture &texture : demo::cartridge().textures) {
        if (texture.listed && texture.address == found.address && texture.format == found.format
            && texture.picture.size() == QSize(found.width, found.height) && texture.paletteAddress == found.paletteAddress)
            return &texture;
    }
    return nullptr;
}

const Discovery &demoDiscovery()
{
    static const Discovery found = discover(demo::cartridge().image);
    return found;
}
}

class tst_Discovery : public QObject
{
    Q_OBJECT

private slots:
    void findsTheDemosTextures();
    void addsThemSoThatTheyShow();
    void addsNothingTwice();
    void leavesOutWhatNoEntryShows();
    void bootAddresses_data();
    void bootAddresses();
    void chipsMoveTheEntry_data();
    void chipsMoveTheEntry();
    void rangesBehindTheBootAreNoBoot();
    void paletteOfAnotherKind();
    void oneListAloneIsNotPlaced();
    void reportsWhatIsNotClear();
    void onlyListsInTheRange();
    void emptyAndShortImages();
    void endsWhenUnwanted();
    void rowsAreComparedByTheirValues_data();
    void rowsAreComparedByTheirValues();
};

void tst_Discovery::findsTheDemosTextures()
{
    int right = 0;
    for (const DiscoveredTexture &texture : demoDiscovery().textures) {
        QVERIFY2(demoTexture(texture), qPrintable(QString::number(texture.address, 16)));
        QVERIFY(texture.confidence > 0 && texture.confidence <= 1);
        QVERIFY(texture.uses == 1);
        QVERIFY(texture.commands.size() >= 4);
        ++right;
    }
    QVERIFY2(right >= 36, qPrintable(QString::number(right)));
    QSet<int> kinds;
    for (const Neighbourhood &neighbourhood : demoDiscovery().neighbourhoods) {
        QVERIFY(neighbourhood.isPlaced);
        kinds.insert(int(neighbourhood.placedBy));
        if (neighbourhood.placedBy != PlacedBy::Boot)
            QVERIFY(neighbourhood.base.best.score > neighbourhood.base.second.score);
    }
    QCOMPARE(kinds.size(), 3);
}

void tst_Discovery::addsThemSoThatTheyShow()
{
    loadIntoCurrentROM(demo::cartridge().image);
    QCOMPARE(addDiscovered(demoDiscovery(), currentROM.root, "Found"), demoDiscovery().textures.size());
    const fileTreeDirectory *folder = currentROM.root->getDirectoryByName("Found");
    QVERIFY(folder);
    QVERIFY(folder->files.isEmpty());
    QCOMPARE(folder->directories.size(), demoDiscovery().neighbourhoods.size());
    const QList<fileTreeFile *> entries = fileTreeContainer().allFiles(currentROM.root);
    for (const fileTreeFile *file : entries) {
        QCOMPARE(QString(file->name).toLower(), QStringLiteral("0x%1").arg(file->realAddress(), 8, 16, QLatin1Char('0')));
        const demo::Texture *texture = nullptr;
        for (const demo::Texture &candidate : demo::cartridge().textures)
            texture = candidate.address == file->realAddress() ? &candidate : texture;
        QVERIFY(texture);
        QCOMPARE(file->data(), texture->data);
        if (texture->paletteAddress >= 0)
            QCOMPARE(file->realPaletteAddress(), texture->paletteAddress);
    }
    QVERIFY(folder->directories.last()->address != 0); // From which palettes count.
}

void tst_Discovery::addsNothingTwice()
{
    loadIntoCurrentROM(demo::cartridge().image);
    auto *mine = new fileTreeFile;
    mine->name = QStringLiteral("Mine");
    mine->address = 0x140000;
    mine->format = QStringLiteral("rgb5a1");
    currentROM.root->addFile(mine);
    const int all = demoDiscovery().textures.size();
    QCOMPARE(addDiscovered(demoDiscovery(), currentROM.root, "Discovered"), all - 1);
    QCOMPARE(addDiscovered(demoDiscovery(), currentROM.root, "Discovered"), 0);
    QCOMPARE(addDiscovered(demoDiscovery(), currentROM.root, "Elsewhere"), 0);
    QVERIFY(!currentROM.root->getDirectoryByName("Elsewhere"));
    QCOMPARE(fileTreeContainer().allFiles(currentROM.root).size(), all);
}

void tst_Discovery::leavesOutWhatNoEntryShows()
{
    TestList list;
    list.block(TestList::Yuv, 16, 16, 16, entry + 0x40000).draw();
    list.block(TestList::Indexed, 4, 16, 16, entry + 0x41000).draw();
    list.image(TestList::Rgba, 16, 1, entry + 0x42000).tile(7, TestList::Rgba, 16, 0, 0).loadBlock(7, 256, 0);
    list.tile(0, TestList::Rgba, 16, 4, 0).tileSize(0, 16, 16).draw().end();
    const QByteArray image = imageWith(list);
    const Discovery found = discover(image);
    QCOMPARE(found.textures.size(), 3);
    for (const DiscoveredTexture &texture : found.textures)
        QVERIFY(!texture.canBeAdded());
    loadIntoCurrentROM(image);
    QCOMPARE(addDiscovered(found, currentROM.root, "Discovered"), 0);
    QVERIFY(currentROM.root->directories.isEmpty());
}

void tst_Discovery::bootAddresses_data()
{
    QTest::addColumn<quint32>("address");
    QTest::addColumn<int>("found"); // -1: not
    QTest::newRow("cached") << entry + 0x3000 << 0x4000;
    QTest::newRow("uncached") << (entry | 0x20000000) + 0x3000 << 0x4000;
    QTest::newRow("physical") << (entry & 0x1FFFFFFF) + 0x3000 << 0x4000;
    QTest::newRow("the first") << entry << 0x1000;
    QTest::newRow("the last") << entry + 0x100000 - 0x800 << 0x101000 - 0x800;
    QTest::newRow("below") << entry - 8 << -1;
    QTest::newRow("partly beyond") << entry + 0x100000 - 0x7F8 << -1;
    QTest::newRow("no memory") << 0x80800000U << -1;
    QTest::newRow("no address") << 0x40001000U << -1;
}

void tst_Discovery::bootAddresses()
{
    QFETCH(quint32, address);
    QFETCH(int, found);
    const Discovery discovery = discover(imageWith(TestList().block(TestList::Rgba, 16, 32, 32, address)));
    QCOMPARE(discovery.textures.size(), found < 0 ? 0 : 1);
    if (found < 0)
        return;
    QCOMPARE(discovery.textures.first().address, found);
    QCOMPARE(discovery.textures.first().placedBy, PlacedBy::Boot);
    QCOMPARE(discovery.textures.first().commands.first(), 0x2000);
}

void tst_Discovery::chipsMoveTheEntry_data()
{
    QTest::addColumn<quint32>("bootCode");
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<bool>("found");
    QTest::newRow("6102") << 0x90BB6CB5U << QByteArray("80000400") << true;
    QTest::newRow("6102, moved") << 0x90BB6CB5U << QByteArray("80100400") << false;
    QTest::newRow("6103: 0x100000 too high") << 0x0B050EE0U << QByteArray("80100400") << true;
    QTest::newRow("6106: 0x200000 too high") << 0xACC8580AU << QByteArray("80200400") << true;
}

void tst_Discovery::chipsMoveTheEntry()
{
    QFETCH(quint32, bootCode);
    QFETCH(QByteArray, header);
    QFETCH(bool, found);
    QByteArray image = bootImage(bootCode, 0x200000);
    image.replace(0x1000, image.size() - 0x1000, QByteArray(image.size() - 0x1000, '\0'));
    image.replace(8, 4, QByteArray::fromHex(header));
    const TestList list = TestList().block(TestList::Rgba, 16, 32, 32, entry + 0x3000);
    image.replace(0x2000, list.bytes().size(), list.bytes());
    const Discovery discovery = discover(image);
    QCOMPARE(discovery.textures.size(), found ? 1 : 0);
    if (found)
        QCOMPARE(discovery.textures.first().address, 0x4000);
}

void tst_Discovery::rangesBehindTheBootAreNoBoot()
{
    // The image ends before the first MiB does.
    const Discovery discovery =
        discover(imageWith(TestList().block(TestList::Rgba, 16, 32, 32, entry + 0x2F000), 0x2000, 0x30000));
    QVERIFY(discovery.textures.isEmpty());
    QCOMPARE(discovery.neighbourhoods.size(), 1);
    QVERIFY(!discovery.neighbourhoods.first().isPlaced);
    QVERIFY(!discovery.neighbourhoods.first().base.hasBest);
}

/// The demo's level with one palette among what the console itself loads.
void tst_Discovery::paletteOfAnotherKind()
{
    TestList list;
    for (const demo::Texture &texture : demo::cartridge().textures) {
        const quint32 address = 0x06000000 + quint32(texture.address) - 0x140000;
        if (texture.folder.startsWith("Level/") && texture.format == "rgb5a1" && texture.picture.width() == 32)
            list.block(TestList::Rgba, 16, 32, 32, address).draw();
        if (texture.name == "Water 1")
            list.palette(16, entry + 0x5000).block(TestList::Indexed, 4, 32, 32, address).draw();
    }
    QByteArray image = demo::cartridge().image;
    image.replace(0x10000, 0x50000, QByteArray(0x50000, '\0')); // The demo's own lists.
    image.replace(0x10000, list.bytes().size(), list.bytes());
    const Discovery discovery = discover(image);
    int palettes = 0;
    for (const DiscoveredTexture &texture : discovery.textures) {
        if (texture.format == "ci4") {
            ++palettes;
            QCOMPARE(texture.paletteAddress, 0x6000);
        }
    }
    QCOMPARE(palettes, 1);
}

/// One texture looks like a picture at too many places.
void tst_Discovery::oneListAloneIsNotPlaced()
{
    QByteArray image = demo::cartridge().image;
    image.replace(0x10000, 0x50000, QByteArray(0x50000, '\0'));
    const TestList list = TestList().block(TestList::Rgba, 16, 32, 32, 0x06000000).draw().end();
    image.replace(0x10000, list.bytes().size(), list.bytes());
    const Discovery discovery = discover(image);
    QVERIFY(discovery.textures.isEmpty());
    QCOMPARE(discovery.neighbourhoods.size(), 1);
    QCOMPARE(discovery.neighbourhoods.first().segment, 6);
    QCOMPARE(discovery.neighbourhoods.first().textures, 1);
    QVERIFY(!discovery.neighbourhoods.first().isPlaced);
}

/// Textures that are nowhere in the image: the best place is not good enough, or not better than the next.
void tst_Discovery::reportsWhatIsNotClear()
{
    TestList list;
    for (int i = 0; i < 12; ++i)
        list.block(TestList::Rgba, 16, 32, 32, 0x06000000 + quint32(i) * 0x800).draw();
    QByteArray image = cartridgeImage(0x200000);
    image.replace(0x10000, list.bytes().size(), list.bytes());
    const Discovery noise = discover(image);
    QVERIFY(noise.textures.isEmpty());
    QVERIFY(!noise.neighbourhoods.first().isPlaced);
    // The same picture over and over: each next one is as good.
    const QByteArray grass = demo::cartridge().image.mid(0x140000, 0x800);
    image.replace(0x100000, 0x40000, grass.repeated(0x80));
    const Discovery repeated = discover(image);
    QVERIFY(repeated.textures.isEmpty());
    QVERIFY(repeated.neighbourhoods.first().base.hasBest);
    QVERIFY(repeated.neighbourhoods.first().base.hasSecond);
}

void tst_Discovery::onlyListsInTheRange()
{
    const QByteArray image = imageWith(TestList().block(TestList::Rgba, 16, 32, 32, entry + 0x3000).end());
    QCOMPARE(discover(image, 0x2000, 0x3000).textures.size(), 1);
    QCOMPARE(discover(image, 0x2008, 0x3000).textures.size(), 0);
    QCOMPARE(discover(image, 0, 0x2030).textures.size(), 0);
    QCOMPARE(discover(image, -5, 0x3000).textures.size(), 1);
    QCOMPARE(discover(image, 0x7000000, 0x7000001).textures.size(), 0);
}

void tst_Discovery::emptyAndShortImages()
{
    QVERIFY(discover(QByteArray()).textures.isEmpty());
    for (int size = 0; size < 0x60; ++size)
        discover(TestList().block(TestList::Rgba, 16, 32, 32, entry).bytes().left(size));
}

void tst_Discovery::endsWhenUnwanted()
{
    int asked = 0;
    WorkSteps steps([&asked] { return ++asked > 0; });
    steps.add(WorkSteps::bytesPerStep);
    QVERIFY(discoverTextures(demo::cartridge().image, 0, 0x300000, &steps).textures.size() <= 1);
}

void tst_Discovery::rowsAreComparedByTheirValues_data()
{
    QTest::addColumn<QString>("format");
    for (const char *format : {"i4", "i8", "ia8", "rgb5a1", "rgba32", "ci4", "ci8"})
        QTest::newRow(format) << QString(format);
}

/// The mean difference of two bytes, from the values that \a format has in eight bytes, each by itself.
double plainDifference(const QString &format, const uchar *a, const uchar *b)
{
    double sum = 0;
    for (int i = 0; i < 8; ++i) {
        const int nibbles[] = {std::abs((a[i] >> 4) - (b[i] >> 4)), std::abs((a[i] & 15) - (b[i] & 15))};
        if (format == "ci8")
            sum += a[i] != b[i] ? 85 : 0;
        else if (format == "ci4")
            sum += 42.5 * ((nibbles[0] ? 1 : 0) + (nibbles[1] ? 1 : 0));
        else if (format == "i4")
            sum += 8.5 * (nibbles[0] + nibbles[1]);
        else if (format != "rgb5a1")
            sum += std::abs(a[i] - b[i]);
    }
    for (int i = 0; format == "rgb5a1" && i < 8; i += 2) {
        const int x = a[i] << 8 | a[i + 1];
        const int y = b[i] << 8 | b[i + 1];
        for (const int shift : {11, 6, 1})
            sum += 4 * std::abs((x >> shift & 31) - (y >> shift & 31));
        sum += (x & 1) != (y & 1) ? 127 : 0;
    }
    return sum / 8;
}

void tst_Discovery::rowsAreComparedByTheirValues()
{
    QFETCH(QString, format);
    TextureReference texture;
    texture.format = format;
    texture.width = 64 / bitsPerPixel(format);
    texture.height = 16;
    QRandomGenerator random(3);
    for (int round = 0; round < 50; ++round) {
        QByteArray image(256, '\0');
        for (int i = 0; i < 128; ++i) // Near values as well as far ones.
            image[i] = char(random.bounded(round % 2 ? 256 : 3) - 1);
        const auto *bytes = reinterpret_cast<const uchar *>(image.constData());
        double sum = 0;
        for (int row = 0; row + 1 < 16; ++row)
            sum += plainDifference(format, bytes + 8 * row, bytes + 8 * (row + 1)) / 15;
        float score = -1;
        RowLikeness(texture).score({image.constData(), image.size(), 0}, 0, 16, 1, &score);
        QVERIFY2(std::abs(score - qMax(0.0, 1 - sum / 85)) < 0.002, qPrintable(QString("%1 %2").arg(score).arg(1 - sum / 85)));
    }
}

QTEST_GUILESS_MAIN(tst_Discovery)
#include "tst_discovery.moc"
