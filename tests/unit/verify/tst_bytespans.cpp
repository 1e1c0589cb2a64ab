// SPDX-License-Identifier: MIT
#include "verify/bytespans.h"

#include <QRandomGenerator>
#include <QTest>

namespace
{
QVector<int> othersOfNaive(const QVector<ByteSpan> &spans, int one)
{
    QVector<int> others;
    for (int i = 0; i < spans.size(); ++i) {
        for (qint64 byte = spans[one].begin; byte < spans[one].end; ++byte) {
            if (i != one && byte >= spans[i].begin && byte < spans[i].end) {
                others.append(i);
                break;
            }
        }
    }
    return others;
}

QVector<ByteSpan> gapsNaive(const QVector<ByteSpan> &spans, int size)
{
    QVector<ByteSpan> gaps;
    for (int byte = 0; byte < size; ++byte) {
        bool covered = false;
        for (const ByteSpan &span : spans)
            covered = covered || (byte >= span.begin && byte < span.end);
        if (covered)
            continue;
        if (!gaps.isEmpty() && gaps.last().end == byte)
            ++gaps.last().end;
        else
            gaps.append({byte, byte + 1});
    }
    return gaps;
}

class ByteSpansTest : public QObject
{
    Q_OBJECT

private slots:
    void sameAsByteByByte()
    {
        QRandomGenerator random(64);
        for (int round = 0; round < 400; ++round) {
            QVector<ByteSpan> spans;
            for (int i = random.bounded(12); i > 0; --i) {
                const int begin = random.bounded(-5, 40);
                spans.append({begin, begin + random.bounded(-2, 12)});
            }
            const QVector<Overlaps> overlaps = overlapsOf(spans, 100);
            const QVector<Overlaps> few = overlapsOf(spans, 2);
            QCOMPARE(overlaps.size(), spans.size());
            for (int i = 0; i < spans.size(); ++i) {
                const QVector<int> expected = othersOfNaive(spans, i);
                QCOMPARE(overlaps[i].others, expected);
                QCOMPARE(overlaps[i].count, qint64(expected.size()));
                QCOMPARE(few[i].count, qint64(expected.size()));
                QCOMPARE(few[i].others.size(), qMin(2, expected.size()));
                for (const int other : few[i].others)
                    QVERIFY(expected.contains(other));
            }
            const int size = random.bounded(45);
            QCOMPARE(gapsBetween(spans, size), gapsNaive(spans, size));
        }
    }

    void touchingSpansDoNotOverlap()
    {
        const QVector<Overlaps> overlaps = overlapsOf({{0, 4}, {4, 8}, {8, 8}}, 5);
        for (const Overlaps &one : overlaps)
            QCOMPARE(one.count, qint64(0));
    }

    void gapsAtBothEnds()
    {
        QCOMPARE(gapsBetween({{4, 6}, {5, 8}}, 10), (QVector<ByteSpan> {{0, 4}, {8, 10}}));
        QCOMPARE(gapsBetween({}, 10), (QVector<ByteSpan> {{0, 10}}));
        QCOMPARE(gapsBetween({}, 0), QVector<ByteSpan>());
        QCOMPARE(gapsBetween({{0, 10}}, 10), QVector<ByteSpan>());
        QCOMPARE(gapsBetween({{20, 30}}, 10), (QVector<ByteSpan> {{0, 10}}));
    }

    void manyOverlapsTakeNoLonger()
    {
        // All pairs would be five thousand million.
        const int count = 100000;
        const QVector<Overlaps> overlaps = overlapsOf(QVector<ByteSpan>(count, {0, 100}), 10);
        for (const Overlaps &one : overlaps) {
            QCOMPARE(one.count, qint64(count - 1));
            QCOMPARE(one.others.size(), 10);
        }
    }
};
}

QTEST_GUILESS_MAIN(ByteSpansTest)
#include "tst_bytespans.moc"
