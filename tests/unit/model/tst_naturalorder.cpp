// SPDX-License-Identifier: MIT
#include "base/naturalorder.h"

#include <QStringList>
#include <QTest>

#include <algorithm>

class NaturalOrderTest : public QObject
{
    Q_OBJECT

private slots:
    void sortsAsPeopleDo()
    {
        const QStringList sorted {
            "",  "a",  "A",   "a/2",   "a/10", "a1b", "a01b", "a2", "a10", "a99999999999999999998", "a99999999999999999999",
            "b", "B2", "b10", "\u00E4"};
        QStringList shuffled = sorted;
        std::reverse(shuffled.begin(), shuffled.end());
        std::sort(shuffled.begin(), shuffled.end(), naturallyBefore);
        for (int i = 0; i + 1 < sorted.size(); ++i)
            QVERIFY2(!naturallyBefore(sorted.at(i), sorted.at(i)), qPrintable(sorted.at(i)));
        for (const QString &one : sorted) {
            for (const QString &other : sorted)
                QVERIFY(!(naturallyBefore(one, other) && naturallyBefore(other, one)));
        }
        QVERIFY(naturallyBefore("a2", "a10") && !naturallyBefore("a10", "a2"));
        QVERIFY(naturallyBefore("a/2", "A/10"));
        QVERIFY(naturallyBefore("a99999999999999999998", "a99999999999999999999"));
        QVERIFY(naturallyBefore("a", "a1") && naturallyBefore("x1y2", "x1y10"));
        QVERIFY(naturallyBefore("a1", "B1") && naturallyBefore("A", "a"));
        QVERIFY(naturallyBefore("a01", "a1") != naturallyBefore("a1", "a01"));
        QVERIFY(shuffled.indexOf("a2") < shuffled.indexOf("a10") && shuffled.indexOf("B2") < shuffled.indexOf("b10"));
    }
};

QTEST_GUILESS_MAIN(NaturalOrderTest)
#include "tst_naturalorder.moc"
