// SPDX-License-Identifier: MIT
#include "transfer/quantiser.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

namespace
{
int channel(int colour, int shift)
{
    return colour >> shift & 31;
}

int squaredDistance(int a, int b)
{
    int sum = 0;
    for (const int shift : {10, 5, 0}) {
        const int difference = channel(a, shift) - channel(b, shift);
        sum += difference * difference;
    }
    return sum;
}

/// The sum over all pixels of the squared distance to the nearest of \a colours.
double errorOf(const QVector<quint32> &pixelsOf, const QVector<quint16> &colours)
{
    double sum = 0;
    for (int colour = 0; colour < pixelsOf.size(); ++colour) {
        if (pixelsOf.at(colour) == 0)
            continue;
        int least = 1 << 20;
        for (const quint16 choice : colours)
            least = qMin(least, squaredDistance(colour, choice));
        sum += double(least) * pixelsOf.at(colour);
    }
    return sum;
}

int opaque(int red, int green, int blue)
{
    return red << 10 | green << 5 | blue;
}
}

class QuantiserTest : public QObject
{
    Q_OBJECT

private slots:
    void fewColoursStayAsTheyAre();
    void emptyPictureHasNone();
    void findsTheGroups();
    void rareColoursCountLess();
    void neverMoreThanAsked_data();
    void neverMoreThanAsked();
    void roundingWastesNoPlace();
    void betterThanEvenSteps();
    void sameEveryTime();
    void nearestIsTheFirstOfEquals();
};

void QuantiserTest::fewColoursStayAsTheyAre()
{
    QVector<quint32> pixelsOf(opaqueColourCount);
    pixelsOf[opaque(31, 31, 31)] = 1;
    pixelsOf[opaque(0, 0, 0)] = 1000000;
    pixelsOf[opaque(31, 31, 30)] = 5;
    QCOMPARE(quantisedColours(pixelsOf, 3), QVector<quint16>({0, 32766, 32767}));
    QCOMPARE(quantisedColours(pixelsOf, 256), QVector<quint16>({0, 32766, 32767}));
}

void QuantiserTest::emptyPictureHasNone()
{
    QVERIFY(quantisedColours(QVector<quint32>(opaqueColourCount), 16).isEmpty());
}

void QuantiserTest::findsTheGroups()
{
    // Three tight groups; their means are whole numbers.
    QVector<quint32> pixelsOf(opaqueColourCount);
    for (const int d : {-1, 0, 1}) {
        pixelsOf[opaque(5 + d, 5, 5)] = 10;
        pixelsOf[opaque(25, 25 + d, 5)] = 20;
        pixelsOf[opaque(10, 10, 25 + d)] = 30;
    }
    QCOMPARE(quantisedColours(pixelsOf, 3),
             QVector<quint16>({quint16(opaque(5, 5, 5)), quint16(opaque(10, 10, 25)), quint16(opaque(25, 25, 5))}));
}

void QuantiserTest::rareColoursCountLess()
{
    QVector<quint32> pixelsOf(opaqueColourCount);
    pixelsOf[opaque(0, 0, 0)] = 1000;
    pixelsOf[opaque(4, 0, 0)] = 1;
    QCOMPARE(quantisedColours(pixelsOf, 1), QVector<quint16>({0}));
    pixelsOf[opaque(4, 0, 0)] = 1000;
    QCOMPARE(quantisedColours(pixelsOf, 1), QVector<quint16>({quint16(opaque(2, 0, 0))}));
}

void QuantiserTest::neverMoreThanAsked_data()
{
    QTest::addColumn<int>("most");
    for (const int most : {1, 2, 15, 16, 255, 256})
        QTest::newRow(qPrintable(QString::number(most))) << most;
}

void QuantiserTest::neverMoreThanAsked()
{
    QFETCH(int, most);
    QRandomGenerator random(1);
    QVector<quint32> pixelsOf(opaqueColourCount);
    for (int i = 0; i < 3000; ++i)
        pixelsOf[random.bounded(opaqueColourCount)] += random.bounded(1, 9);
    const QVector<quint16> colours = quantisedColours(pixelsOf, most);
    QCOMPARE(colours.size(), most);
    QVERIFY(std::is_sorted(colours.begin(), colours.end()));
    QVERIFY(std::adjacent_find(colours.begin(), colours.end()) == colours.end());
}

void QuantiserTest::roundingWastesNoPlace()
{
    // 20 neighbouring colours in 16 places: means that round to the same colour leave places to those shown worst.
    QVector<quint32> pixelsOf(opaqueColourCount);
    for (int i = 0; i < 20; ++i)
        pixelsOf[opaque(i, 0, 0)] = 1;
    QCOMPARE(quantisedColours(pixelsOf, 16).size(), 16);
    QCOMPARE(errorOf(pixelsOf, quantisedColours(pixelsOf, 16)), 4.0);
}

void QuantiserTest::betterThanEvenSteps()
{
    // A gradient of three colours with noise: 64 chosen colours show it better than 64 evenly spread ones would, by far.
    QRandomGenerator random(2);
    QVector<quint32> pixelsOf(opaqueColourCount);
    for (int i = 0; i < 20000; ++i) {
        const int at = random.bounded(32);
        ++pixelsOf[opaque(at, qBound(0, 31 - at + random.bounded(-2, 3), 31), random.bounded(8))];
    }
    QVector<quint16> even;
    for (int i = 0; i < 64; ++i)
        even.append(quint16(opaque(4 + 8 * (i >> 4), 4 + 8 * (i >> 2 & 3), 4 + 8 * (i & 3))));
    QVERIFY(errorOf(pixelsOf, quantisedColours(pixelsOf, 64)) * 4 < errorOf(pixelsOf, even));
}

void QuantiserTest::sameEveryTime()
{
    QRandomGenerator random(3);
    QVector<quint32> pixelsOf(opaqueColourCount);
    for (int i = 0; i < 5000; ++i)
        ++pixelsOf[random.bounded(opaqueColourCount)];
    QCOMPARE(quantisedColours(pixelsOf, 100), quantisedColours(pixelsOf, 100));
}

void QuantiserTest::nearestIsTheFirstOfEquals()
{
    const QVector<quint16> choices {quint16(opaque(10, 0, 0)), quint16(opaque(0, 10, 0)), quint16(opaque(0, 0, 12))};
    QCOMPARE(nearestColour(quint16(opaque(0, 9, 0)), choices), 1);
    QCOMPARE(nearestColour(quint16(opaque(0, 0, 9)), choices), 2);
    QCOMPARE(nearestColour(quint16(opaque(5, 5, 0)), choices), 0);
}

QTEST_GUILESS_MAIN(QuantiserTest)
#include "tst_quantiser.moc"
