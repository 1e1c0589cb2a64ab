// SPDX-License-Identifier: MIT
#include "model/byteorder.h"

#include "support/images.h"

#include <QMap>
#include <QTest>

class ByteOrderTest : public QObject
{
    Q_OBJECT

private slots:
    void recognised_data();
    void recognised();
    void needsMoreThanAHeaderInWholeWords();
    void convertsLikeTheByteLoop_data();
    void convertsLikeTheByteLoop();
    void reportsTheFirstWordOfEveryHundredth_data();
    void reportsTheFirstWordOfEveryHundredth();
    void copiesTakenDuringAConversionStay();
    void otherOrdersAreLeftAlone();
    void identifier_data();
    void identifier();
};

Q_DECLARE_METATYPE(ByteOrder)

void ByteOrderTest::recognised_data()
{
    QTest::addColumn<QByteArray>("signature");
    QTest::addColumn<ByteOrder>("order");
    QTest::newRow("z64") << QByteArray("803712400000000F") << ByteOrder::BigEndian;
    QTest::newRow("v64") << QByteArray("3780401200000F00") << ByteOrder::ByteSwapped;
    QTest::newRow("n64") << QByteArray("401237800F000000") << ByteOrder::LittleEndian;
    QTest::newRow("last byte differs") << QByteArray("803712400000000E") << ByteOrder::Unknown;
    QTest::newRow("first byte differs") << QByteArray("813712400000000F") << ByteOrder::Unknown;
    QTest::newRow("zeros") << QByteArray("0000000000000000") << ByteOrder::Unknown;
}

void ByteOrderTest::recognised()
{
    QFETCH(QByteArray, signature);
    QTEST(byteOrderOf(QByteArray::fromHex(signature) + QByteArray(60, '\x55')), "order");
}

void ByteOrderTest::needsMoreThanAHeaderInWholeWords()
{
    for (const int size : {0, 1, 8, 64, 65, 66, 67, 69})
        QVERIFY2(!hasDetectableByteOrder(size), qPrintable(QString::number(size)));
    QVERIFY(hasDetectableByteOrder(68));
    const QByteArray header = bigEndianSignature();
    QCOMPARE(byteOrderOf(header), ByteOrder::Unknown);
    QCOMPARE(byteOrderOf(header + QByteArray(56, '\0')), ByteOrder::Unknown);
    QCOMPARE(byteOrderOf(header + QByteArray(60, '\0')), ByteOrder::BigEndian);
    QCOMPARE(byteOrderOf(QByteArray()), ByteOrder::Unknown);
}

void ByteOrderTest::convertsLikeTheByteLoop_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {68, 72, 96, 100, 104, 196, 200, 396, 400, 404, 1000, 4096, 65540, 1 << 20, 8 << 20})
        QTest::addRow("%d bytes", size) << size;
}

void ByteOrderTest::convertsLikeTheByteLoop()
{
    QFETCH(int, size);
    const QByteArray z64 = cartridgeImage(size);
    QByteArray image = withReversedUnits(z64, 2);
    QCOMPARE(byteOrderOf(image), ByteOrder::ByteSwapped);
    convertByteOrder(&image, ByteOrder::ByteSwapped);
    QVERIFY(image == z64);

    image = withReversedUnits(z64, 4);
    QCOMPARE(byteOrderOf(image), ByteOrder::LittleEndian);
    convertByteOrder(&image, ByteOrder::LittleEndian);
    QVERIFY(image == z64);
    convertByteOrder(&image, ByteOrder::LittleEndian);
    QVERIFY(image == withReversedUnits(z64, 4));
}

void ByteOrderTest::reportsTheFirstWordOfEveryHundredth_data()
{
    convertsLikeTheByteLoop_data();
}

void ByteOrderTest::reportsTheFirstWordOfEveryHundredth()
{
    QFETCH(int, size);
    for (const ByteOrder order : {ByteOrder::ByteSwapped, ByteOrder::LittleEndian}) {
        const int unit = order == ByteOrder::ByteSwapped ? 2 : 4;
        const int step = qMax(1, size / 100);
        QList<int> expected;
        for (int i = 0; i < size; i += unit) {
            if (i % step <= unit - 1)
                expected << i;
        }
        expected << size;

        const QByteArray original = cartridgeImage(size);
        QByteArray image = original;
        QList<int> reported;
        convertByteOrder(&image, order, [&](int bytes) { reported << bytes; });
        QCOMPARE(reported, expected);
        QVERIFY(image == withReversedUnits(original, unit));
    }
}

/// Each holds the words converted so far and the others as they were, also when the rest is converted.
void ByteOrderTest::copiesTakenDuringAConversionStay()
{
    const QByteArray z64 = cartridgeImage(1000);
    for (const int unit : {2, 4}) {
        const QByteArray original = withReversedUnits(z64, unit);
        QByteArray image = original;
        QMap<int, QByteArray> copies;
        convertByteOrder(&image, unit == 2 ? ByteOrder::ByteSwapped : ByteOrder::LittleEndian,
                         [&](int bytes) { copies.insert(bytes, image); });
        QVERIFY(image == z64);
        QVERIFY(copies.size() > 90);
        for (auto copy = copies.cbegin(); copy != copies.cend(); ++copy) {
            const int words = copy.key() / 4 * 4;
            QVERIFY(copy.value() == z64.left(words) + original.mid(words));
        }
    }
}

void ByteOrderTest::otherOrdersAreLeftAlone()
{
    const QByteArray original = cartridgeImage(400);
    for (const ByteOrder order : {ByteOrder::BigEndian, ByteOrder::Unknown}) {
        QByteArray image = original;
        int reports = 0;
        convertByteOrder(&image, order, [&](int) { ++reports; });
        QCOMPARE(image, original);
        QCOMPARE(reports, 0);
    }
}

void ByteOrderTest::identifier_data()
{
    QTest::addColumn<QByteArray>("characters");
    QTest::addColumn<int>("version");
    QTest::addColumn<QString>("identifier");
    QTest::newRow("four characters") << QByteArray("ABCD") << 2 << "ABCD2";
    QTest::newRow("version is unsigned") << QByteArray("ABCD") << 255 << "ABCD255";
    QTest::newRow("up to the first zero") << QByteArray("AB\0D", 4) << 0 << "AB0";
    QTest::newRow("zeros") << QByteArray(4, '\0') << 7 << "7";
    QTest::newRow("one character a byte") << QByteArray("\xC0\xE9\xFF"
                                                        "A")
                                          << 1 << QString::fromUtf8("ÀéÿA1");
}

void ByteOrderTest::identifier()
{
    QFETCH(QByteArray, characters);
    QFETCH(int, version);
    QTEST(cartridgeIdentifier(cartridgeImage(64, characters, quint8(version))), "identifier");
    QCOMPARE(cartridgeIdentifier(cartridgeImage(64, characters, quint8(version)).left(63)), QString());
}

QTEST_GUILESS_MAIN(ByteOrderTest)
#include "tst_byteorder.moc"
