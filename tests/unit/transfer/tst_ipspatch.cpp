// SPDX-License-Identifier: MIT
#include "transfer/ipspatch.h"

#include <QRandomGenerator>
#include <QTest>

namespace
{
QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

/// The records of \a patch as most programs read them: the first "EOF" at a record's start ends it.
QByteArray appliedPlainly(QByteArray image, const QByteArray &patch)
{
    const auto number = [&patch](int at, int bytes) {
        int value = 0;
        for (int i = 0; i < bytes; ++i)
            value = value << 8 | quint8(patch.at(at + i));
        return value;
    };
    int at = 5;
    while (patch.mid(at, 3) != "EOF") {
        const int offset = number(at, 3);
        int length = number(at + 3, 2);
        QByteArray bytes = patch.mid(at + 5, length);
        at += 5 + length;
        if (length == 0) {
            length = number(at, 2);
            bytes = QByteArray(length, patch.at(at + 2));
            at += 3;
        }
        if (image.size() < offset + length)
            image.append(QByteArray(offset + length - image.size(), '\0'));
        image.replace(offset, length, bytes);
    }
    return at + 3 < patch.size() ? image.left(number(at + 3, 3)) : image;
}

class IpsPatchTest : public QObject
{
    Q_OBJECT

private slots:
    void recordsAreWrittenAsTheFormatSays_data()
    {
        QTest::addColumn<QByteArray>("source");
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("the same") << QByteArray("abc") << QByteArray("abc") << QByteArray();
        QTest::newRow("one record") << QByteArray("abcdef") << QByteArray("abXYef") << hex("0000020002") + "XY";
        QTest::newRow("a short gap is written along")
            << QByteArray("0123456789") << QByteArray("X12345Y789") << hex("0000000007") + "X12345Y";
        QTest::newRow("a long gap is not") << QByteArray("0123456789") << QByteArray("X1234567Y9")
                                           << hex("0000000001") + "X" + hex("0000080001") + "Y";
        QTest::newRow("a run") << QByteArray(20, 'a') << QByteArray(20, 'b') << hex("00000000000014") + "b";
        QTest::newRow("a run between bytes") << QByteArray(24, 'a') << "12" + QByteArray(20, 'b') + "34"
                                             << hex("0000000002") + "12" + hex("00000200000014") + "b" + hex("0000160002") + "34";
        QTest::newRow("grown") << QByteArray("ab") << QByteArray("abcd") << hex("0000020002") + "cd";
    }
    void recordsAreWrittenAsTheFormatSays()
    {
        QFETCH(const QByteArray, source);
        QFETCH(const QByteArray, target);
        QFETCH(const QByteArray, body);
        QByteArray patch;
        QString error;
        QVERIFY(createIps(source, target, &patch, &error));
        QCOMPARE(patch, "PATCH" + body + "EOF");
        QByteArray result;
        QVERIFY2(applyIps(source, patch, &result, &error), qPrintable(error));
        QCOMPARE(result, target);
    }

    void aShorterTargetIsCut()
    {
        QByteArray patch;
        QByteArray result;
        QString error;
        QVERIFY(createIps("abcdef", "abXd", &patch, &error));
        QCOMPARE(patch, "PATCH" + hex("0000020001") + "XEOF" + hex("000004"));
        QVERIFY(applyIps("abcdef", patch, &result, &error));
        QCOMPARE(result, QByteArray("abXd"));
        // Cutting to more than there is changes nothing.
        QVERIFY(applyIps("ab", "PATCHEOF" + hex("000004"), &result, &error));
        QCOMPARE(result, QByteArray("ab"));
    }

    void aRecordBehindTheEndMakesTheImageGrow()
    {
        QByteArray result;
        QString error;
        QVERIFY(applyIps("ab", "PATCH" + hex("0000040001") + "XEOF", &result, &error));
        QCOMPARE(result, QByteArray("ab\0\0X", 5));
    }

    void noRecordBeginsWhereItReadsAsTheEnd_data()
    {
        constexpr int trap = 0x454F46;
        QTest::addColumn<int>("begin");
        QTest::addColumn<int>("length");
        QTest::addColumn<bool>("run");
        QTest::newRow("bytes there") << trap << 3 << false;
        QTest::newRow("run there") << trap << 100 << true;
        QTest::newRow("second record of many bytes") << trap - 0xFFFF << 0xFFFF + 100 << false;
        QTest::newRow("second record of a long run") << trap - 0xFFFF << 0xFFFF + 100 << true;
        QTest::newRow("one byte") << trap << 1 << false;
    }
    void noRecordBeginsWhereItReadsAsTheEnd()
    {
        QFETCH(const int, begin);
        QFETCH(const int, length);
        QFETCH(const bool, run);
        const QByteArray source(0x460000, 's');
        QByteArray target = source;
        for (int i = 0; i < length; ++i)
            target[begin + i] = run ? 'r' : char(i % 100);
        QByteArray patch;
        QString error;
        QVERIFY(createIps(source, target, &patch, &error));
        QVERIFY(appliedPlainly(source, patch) == target);
        QByteArray result;
        QVERIFY2(applyIps(source, patch, &result, &error), qPrintable(error));
        QVERIFY(result == target);
    }

    void aRecordThatReadsAsTheEndIsAppliedAllTheSame()
    {
        const QByteArray source(0x454F48, 's');
        QByteArray target = source;
        target[0x454F46] = 'X';
        QByteArray result;
        QString error;
        QVERIFY2(applyIps(source, "PATCHEOF" + hex("0001") + "XEOF", &result, &error), qPrintable(error));
        QVERIFY(result == target);
    }

    void whatIsCreatedIsApplied()
    {
        QRandomGenerator random(3);
        for (int round = 0; round < 500; ++round) {
            QByteArray source;
            QByteArray target;
            for (int i = random.bounded(200); i > 0; --i)
                source += char('a' + random.bounded(2));
            target = source.left(random.bounded(250));
            for (int i = random.bounded(40); i > 0; --i)
                target += char('a' + random.bounded(2));
            for (int edits = random.bounded(4); edits > 0 && !target.isEmpty(); --edits) {
                const int at = random.bounded(target.size());
                const int length = qMin(random.bounded(40), target.size() - at);
                target.replace(at, length, QByteArray(length, 'c'));
            }
            QByteArray patch;
            QByteArray result;
            QString error;
            QVERIFY(createIps(source, target, &patch, &error));
            QVERIFY2(applyIps(source, patch, &result, &error), qPrintable(error));
            QCOMPARE(result, target);
            QCOMPARE(appliedPlainly(source, patch), target);
        }
    }

    void changesBehind16MebibytesNeedAnotherFormat()
    {
        constexpr int limit = 1 << 24;
        const QString wanted = "The images differ behind the first 16 MiB, which an IPS patch cannot say; make a BPS patch";
        const QByteArray source(limit + 10, 's');
        QByteArray target = source;
        target[limit - 1] = 'x';
        QByteArray patch;
        QString error;
        QVERIFY(createIps(source, target, &patch, &error));
        target[limit] = 'x';
        patch = "untouched";
        QVERIFY(!createIps(source, target, &patch, &error));
        QCOMPARE(error, wanted);
        QCOMPARE(patch, QByteArray("untouched"));
        QVERIFY(!createIps(source, source.left(limit), &patch, &error));
        QCOMPARE(error, wanted);
        QVERIFY(createIps(source, source.left(limit - 1), &patch, &error));
    }

    void wrongPatchesAreRefused_data()
    {
        QTest::addColumn<QByteArray>("patch");
        QTest::addColumn<QString>("error");
        const QString cut = "It is cut off: it ends in the middle of the record at byte 5, or without \"EOF\"";
        QTest::newRow("empty") << QByteArray() << "It is no IPS patch";
        QTest::newRow("another file") << QByteArray("BPS1EOF") << "It is no IPS patch";
        QTest::newRow("mark alone") << QByteArray("PATCH") << cut;
        QTest::newRow("no end") << "PATCH" + hex("0000000001") + "X" << cut;
        QTest::newRow("cut in a head") << "PATCH" + hex("000000") << cut;
        QTest::newRow("cut in the bytes") << "PATCH" + hex("0000000003") + "XY" << cut;
        QTest::newRow("cut in a run") << "PATCH" + hex("000000000000") << cut;
        QTest::newRow("more behind the end") << QByteArray("PATCHEOFmore") << "It goes on behind its end at byte 5";
    }
    void wrongPatchesAreRefused()
    {
        QFETCH(const QByteArray, patch);
        QByteArray result("untouched");
        QString error;
        QVERIFY(!applyIps("source", patch, &result, &error));
        QTEST(error, "error");
        QCOMPARE(result, QByteArray("untouched"));
    }

    void factsAreCounted()
    {
        IpsFacts facts;
        QString error;
        QVERIFY(readIps("PATCH" + hex("0000020002") + "XY" + hex("00001000000005") + "zEOF" + hex("000012"), &facts, &error));
        QCOMPARE(facts.records, 2);
        QCOMPARE(facts.runs, 1);
        QCOMPARE(facts.newBytes, 7);
        QCOMPARE(facts.end, 0x15);
        QCOMPARE(facts.cutTo, 0x12);
    }
};
}

QTEST_GUILESS_MAIN(IpsPatchTest)
#include "tst_ipspatch.moc"
