// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"

#include <QTest>

#include <limits>

class HexNumberTest : public QObject
{
    Q_OBJECT

private slots:
    void shown_data();
    void shown();
    void stored_data();
    void stored();
    void typed_data();
    void typed();
    void shownNumbersReadBack();
};

void HexNumberTest::shown_data()
{
    QTest::addColumn<qint32>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0 << "0x00000000";
    QTest::newRow("upper-case digits, lower-case prefix") << 0x1a2b << "0x00001A2B";
    QTest::newRow("eight digits") << 10597056 << "0x00A1B2C0";
    QTest::newRow("largest") << 0x7fffffff << "0x7FFFFFFF";
    QTest::newRow("negative") << -0x80 << "0xFFFFFF80";
}

void HexNumberTest::shown()
{
    QFETCH(qint32, value);
    QTEST(hexNumber(value), "text");
}

void HexNumberTest::stored_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint32>("value");
    QTest::newRow("with prefix") << "0x1A2b" << 0x1a2b;
    QTest::newRow("without prefix") << "1A2b" << 0x1a2b;
    QTest::newRow("sign") << "-10" << -16;
    QTest::newRow("two's complement") << "0xFFFFFF80" << -0x80;
    QTest::newRow("smallest") << "0x80000000" << std::numeric_limits<qint32>::min();
    QTest::newRow("more than 32 bits") << "0x100000000" << 0;
    QTest::newRow("no number") << "0xGG" << 0;
    QTest::newRow("digits and rubbish") << "12 34" << 0;
    QTest::newRow("empty") << "" << 0;
}

void HexNumberTest::stored()
{
    QFETCH(QString, text);
    QTEST(parseHexadecimal(text), "value");
}

void HexNumberTest::typed_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint32>("value");
    QTest::newRow("decimal") << "10" << 10;
    QTest::newRow("hexadecimal") << "0x10" << 16;
    QTest::newRow("capital X") << "0X10" << 0;
    QTest::newRow("hexadecimal digits without prefix") << "1A" << 0;
    QTest::newRow("negative decimal") << "-5" << -5;
    QTest::newRow("too large") << "4294967296" << 0;
    QTest::newRow("empty") << "" << 0;
    QTest::newRow("prefix alone") << "0x" << 0;
}

void HexNumberTest::typed()
{
    QFETCH(QString, text);
    QTEST(parseTypedNumber(text), "value");
}

void HexNumberTest::shownNumbersReadBack()
{
    for (const qint32 value : {0, 1, -1, 0x12345678, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()}) {
        QCOMPARE(parseHexadecimal(hexNumber(value)), value);
        QCOMPARE(parseTypedNumber(hexNumber(value)), value);
    }
}

QTEST_GUILESS_MAIN(HexNumberTest)
#include "tst_hexnumber.moc"
