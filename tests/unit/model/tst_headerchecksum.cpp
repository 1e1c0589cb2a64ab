// SPDX-License-Identifier: MIT
#include "support/bootimages.h"

#include "base/crc32.h"
#include "model/headerchecksum.h"

#include <QTest>

namespace
{
class HeaderChecksumTest : public QObject
{
    Q_OBJECT

private slots:
    void crcOfTheStandardCheckText()
    {
        QCOMPARE(crc32("123456789", 9), 0xCBF43926u);
        QCOMPARE(crc32("", 0), 0u);
    }

    void chipsAreToldByTheirBootCode_data()
    {
        QTest::addColumn<quint32>("crc");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("number");
        QTest::newRow("6101") << 0x6170A4A1u << "6101/7102" << 6101;
        QTest::newRow("7102") << 0x009E9EA3u << "6101/7102" << 6101;
        QTest::newRow("6102") << 0x90BB6CB5u << "6102/7101" << 6102;
        QTest::newRow("6103") << 0x0B050EE0u << "6103/7103" << 6103;
        QTest::newRow("6105") << 0x98BC2C86u << "6105/7105" << 6105;
        QTest::newRow("6106") << 0xACC8580Au << "6106/7106" << 6106;
    }

    void chipsAreToldByTheirBootCode()
    {
        QFETCH(quint32, crc);
        QFETCH(QString, name);
        QFETCH(int, number);
        QByteArray image = bootImage(crc);
        QCOMPARE(bootChipName(bootChipOf(image)), name);

        const std::array<quint32, 2> expected = plainCheckCodes(image, number);
        const std::optional<CheckCodes> computed = computedCheckCodes(image, bootChipOf(image));
        QVERIFY(computed);
        QCOMPARE(computed->first, expected[0]);
        QCOMPARE(computed->second, expected[1]);

        image[0x40] = char(image[0x40] ^ 1);
        QCOMPARE(bootChipOf(image), BootChip::Unknown);
    }

    void onlyTheCoveredBytesCount()
    {
        QByteArray image = bootImage(0x90BB6CB5, 0x101010);
        const CheckCodes codes = *computedCheckCodes(image, BootChip::Cic6102);
        image[0x101000] = char(image[0x101000] ^ 1);
        image[0xFFF] = char(image[0xFFF] ^ 1);
        QCOMPARE(computedCheckCodes(image, BootChip::Cic6102)->first, codes.first);
        image[0x100FFF] = char(image[0x100FFF] ^ 1);
        QVERIFY(*computedCheckCodes(image, BootChip::Cic6102) != codes);
    }

    void shortImagesHaveNone()
    {
        const QByteArray image = bootImage(0x90BB6CB5);
        QVERIFY(!computedCheckCodes(image.left(0x101000 - 1), BootChip::Cic6102));
        QVERIFY(!computedCheckCodes(image, BootChip::Unknown));
        QCOMPARE(bootChipOf(image.left(0xFFF)), BootChip::Unknown);
        QCOMPARE(bootChipOf(image.left(0x1000)), BootChip::Cic6102);
        QVERIFY(!storedCheckCodes(image.left(0x3F)));
        QVERIFY(!storedCheckCodes(QByteArray()));
    }

    void codesAreStoredBigEndianInTheHeader()
    {
        QByteArray image = cartridgeImage(0x40);
        const QByteArray before = image;
        storeCheckCodes(&image, {0x01234567, 0x89ABCDEF});
        QCOMPARE(image.mid(0x10, 8), QByteArray::fromHex("0123456789ABCDEF"));
        QCOMPARE(image.left(0x10), before.left(0x10));
        QCOMPARE(image.mid(0x18), before.mid(0x18));
        QCOMPARE(storedCheckCodes(image)->first, 0x01234567u);
        QCOMPARE(storedCheckCodes(image)->second, 0x89ABCDEFu);

        QByteArray stump(0x3F, 'x');
        storeCheckCodes(&stump, {1, 2});
        QCOMPARE(stump, QByteArray(0x3F, 'x'));
    }

    void chipsHaveNames()
    {
        QCOMPARE(bootChipNamed("7101"), BootChip::Cic6102);
        QCOMPARE(bootChipNamed("6102"), BootChip::Cic6102);
        QCOMPARE(bootChipNamed("7102"), BootChip::Cic6101);
        QCOMPARE(bootChipNamed("6105/7105"), BootChip::Cic6105);
        QCOMPARE(bootChipNamed("6104"), BootChip::Unknown);
        QCOMPARE(bootChipNamed(""), BootChip::Unknown);
        QCOMPARE(bootChipName(BootChip::Unknown), QString("unknown"));
    }
};
}

QTEST_GUILESS_MAIN(HeaderChecksumTest)
#include "tst_headerchecksum.moc"
