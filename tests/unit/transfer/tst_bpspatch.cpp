// SPDX-License-Identifier: MIT
#include "support/bootimages.h"

#include "base/hexnumber.h"
#include "transfer/bpsdelta.h"
#include "transfer/bpspatch.h"
#include "transfer/imagepatch.h"

#include <QRandomGenerator>
#include <QTest>
#include <QtEndian>

#include <limits>

namespace
{
QByteArray sum(const QByteArray &bytes)
{
    const quint32 value = qToLittleEndian(~plainCrcRegister(bytes));
    return QByteArray(reinterpret_cast<const char *>(&value), 4);
}

QByteArray number(quint64 value)
{
    QByteArray bytes;
    appendBpsNumber(&bytes, value);
    return bytes;
}

QByteArray action(int kind, int length)
{
    return number(quint64(length - 1) << 2 | quint64(kind));
}

/// A patch with right checksums, whatever its actions.
QByteArray patchOf(const QByteArray &source, const QByteArray &target, const QByteArray &actions, const QByteArray &metadata = {})
{
    const QByteArray patch = "BPS1" + number(quint64(source.size())) + number(quint64(target.size()))
        + number(quint64(metadata.size())) + metadata + actions + sum(source) + sum(target);
    return patch + sum(patch);
}

/// \a patch with its last sum made right.
QByteArray sealed(const QByteArray &patch)
{
    const QByteArray body = patch.left(patch.size() - 4);
    return body + sum(body);
}

QByteArray noise(QRandomGenerator *random, int size)
{
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(random->bounded(256));
    return bytes;
}

class BpsPatchTest : public QObject
{
    Q_OBJECT

private slots:
    void numbersAreWrittenAsTheFormatSays_data()
    {
        QTest::addColumn<quint64>("value");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("0") << quint64(0) << QByteArray::fromHex("80");
        QTest::newRow("127") << quint64(127) << QByteArray::fromHex("ff");
        QTest::newRow("128") << quint64(128) << QByteArray::fromHex("0080");
        QTest::newRow("16511") << quint64(16511) << QByteArray::fromHex("7fff");
        QTest::newRow("16512") << quint64(16512) << QByteArray::fromHex("000080");
    }
    void numbersAreWrittenAsTheFormatSays()
    {
        QFETCH(const quint64, value);
        QTEST(number(value), "bytes");
    }

    void aPatchOfEveryActionIsApplied()
    {
        // Each action by hand: read "abc", new "XY", copy "hi" from 7, copy "ef" backwards from 4, then "X" from target 3 and the
        // two after it from itself.
        const QByteArray source("abcdefghij");
        const QByteArray target("abcXYhiefXXX");
        const QByteArray actions = QByteArray::fromHex("88") + QByteArray::fromHex("85") + "XY" + QByteArray::fromHex("868e")
            + QByteArray::fromHex("868b") + QByteArray::fromHex("8386") + QByteArray::fromHex("878a");
        QByteArray result;
        QString error;
        QVERIFY2(applyBps(source, patchOf(source, target, actions), &result, &error), qPrintable(error));
        QCOMPARE(result, target);
        BpsFacts facts;
        QVERIFY(readBps(patchOf(source, target, actions, "<x/>"), &facts, &error));
        QCOMPARE(facts.sourceBytes, 10);
        QCOMPARE(facts.targetBytes, 12);
        QCOMPARE(facts.metadata, QByteArray("<x/>"));
        QCOMPARE(facts.actions, 6);
        QCOMPARE(facts.newBytes, 2);
        QCOMPARE(facts.sourceCrc, ~plainCrcRegister(source));
        QCOMPARE(facts.targetCrc, ~plainCrcRegister(target));
    }

    void copiesMayOverlapWhatTheyMake()
    {
        const QByteArray target("abababab");
        QByteArray result;
        QString error;
        const QByteArray actions = action(1, 2) + "ab" + action(3, 6) + number(0);
        QVERIFY2(applyBps("", patchOf("", target, actions), &result, &error), qPrintable(error));
        QCOMPARE(result, target);
    }

    void wrongPatchesAreRefused_data()
    {
        const QByteArray source("abcdefgh");
        const QByteArray target("abcdefgh");
        const QByteArray whole = patchOf(source, target, action(0, 8));
        QTest::addColumn<QByteArray>("patch");
        QTest::addColumn<QString>("error");
        QTest::newRow("empty") << QByteArray() << "It is no whole BPS patch";
        QTest::newRow("another file") << QByteArray("PATCHEOF and something else") << "It is no whole BPS patch";
        QTest::newRow("mark alone") << QByteArray("BPS1") << "It is no whole BPS patch";
        QTest::newRow("cut off") << whole.chopped(1) << "It is damaged: its own checksum is wrong";
        QTest::newRow("more behind") << whole + "x"
                                     << "It is damaged: its own checksum is wrong";
        QByteArray other = whole;
        other[5] = char(other[5] ^ 1);
        QTest::newRow("a byte changed") << other << "It is damaged: its own checksum is wrong";
        QTest::newRow("result too short") << patchOf(source, target, action(0, 7)) << "It makes 7 of the result's 8 bytes";
        QTest::newRow("no actions") << patchOf(source, target, "") << "It makes 0 of the result's 8 bytes";
        QTest::newRow("result too long") << patchOf(source, target, action(0, 9))
                                         << "The action at byte 7 reaches past the result's end";
        QTest::newRow("read past the source")
            << patchOf("abcd", target, action(0, 8)) << "The action at byte 7 takes bytes from outside";
        QTest::newRow("copy past the source")
            << patchOf(source, target, action(2, 8) + number(2)) << "The action at byte 7 takes bytes from outside";
        QTest::newRow("copy before the source")
            << patchOf(source, target, action(2, 8) + number(3)) << "The action at byte 7 takes bytes from outside";
        QTest::newRow("copy of what is not made yet")
            << patchOf(source, target, action(3, 8) + number(0)) << "The action at byte 7 takes bytes from outside";
        QTest::newRow("copy before the target") << patchOf(source, target, action(0, 4) + action(3, 4) + number(3))
                                                << "The action at byte 8 takes bytes from outside";
        QTest::newRow("new bytes that are missing")
            << patchOf(source, target, action(1, 8) + "abc") << "The action at byte 7 takes bytes from outside";
        QTest::newRow("number cut off") << patchOf(source, target, QByteArray(1, '\x01')) << "It ends in the middle of a number";
        QTest::newRow("distance cut off") << patchOf(source, target, action(2, 8)) << "It ends in the middle of a number";
        QTest::newRow("number too large") << patchOf(source, target, QByteArray(8, '\x7F'))
                                          << "The number before byte 13 is too large";
        QTest::newRow("huge result") << sealed("BPS1" + number(8) + number(quint64(1) << 39) + number(0) + QByteArray(12, '\0'))
                                     << "It is for images above 256 MiB";
        QTest::newRow("huge source") << sealed("BPS1" + number(quint64(1) << 32) + number(8) + number(0) + QByteArray(12, '\0'))
                                     << "It is for images above 256 MiB";
        QTest::newRow("huge metadata") << sealed("BPS1" + number(8) + number(8) + number(1000000) + QByteArray(12, '\0'))
                                       << "Its metadata reach past its end";
        QTest::newRow("wrong target sum") << patchOf(source, "abcdefgX", action(0, 8))
                                          << "The result has the checksum 0xAEEF2A50, not 0x88361AFC as the patch says";
    }
    void wrongPatchesAreRefused()
    {
        QFETCH(const QByteArray, patch);
        QByteArray result("untouched");
        QString error;
        QVERIFY(!applyBps("abcdefgh", patch, &result, &error));
        QTEST(error, "error");
        QCOMPARE(result, QByteArray("untouched"));
    }

    void aWrongOriginalIsNamedByItsChecksum()
    {
        const QByteArray patch = createBps("123456789", "target", {});
        QByteArray result;
        QString error;
        QVERIFY(!applyBps("123456780", patch, &result, &error));
        QCOMPARE(error,
                 QStringLiteral("It is for another image: it expects 9 bytes with the checksum 0xCBF43926, not 9 bytes with %1")
                     .arg(hexNumber(qint32(~plainCrcRegister("123456780")))));
    }

    void whatIsCreatedIsApplied()
    {
        QRandomGenerator random(1);
        for (int round = 0; round < 400; ++round) {
            // Few letters, so that matches of all kinds meet.
            QByteArray source;
            QByteArray target;
            const int letters = 1 + random.bounded(3);
            for (int i = random.bounded(600); i > 0; --i)
                source += char('a' + random.bounded(letters));
            for (int parts = random.bounded(8); parts > 0; --parts) {
                const int begin = random.bounded(source.size() + 1);
                target += random.bounded(4) ? source.mid(begin, random.bounded(200)) : noise(&random, random.bounded(60));
            }
            QByteArray result;
            QString error;
            QVERIFY2(applyBps(source, createBps(source, target, "m"), &result, &error), qPrintable(error));
            QCOMPARE(result, target);
        }
    }

    void aPatchIsSmall_data()
    {
        QRandomGenerator random(2);
        const QByteArray source = noise(&random, 100000);
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<int>("most");
        QTest::newRow("the same") << source << 32;
        QByteArray edited = source;
        edited.replace(5000, 300, noise(&random, 300));
        QTest::newRow("300 bytes edited") << edited << 300 + 40;
        QByteArray moved = source;
        const QByteArray region = source.mid(70001, 4000);
        moved.replace(1003, 4000, region);
        QTest::newRow("region moved to an odd place") << moved << 48;
        QTest::newRow("bytes inserted") << source.left(333) + "insert" + source.mid(333) << 48;
        QTest::newRow("bytes removed") << source.left(333) + source.mid(340) << 48;
        QTest::newRow("a long run") << source + QByteArray(50000, '\xFF') << 48;
        const QByteArray fresh = noise(&random, 500);
        QTest::newRow("new bytes twice") << source + fresh + source.left(100) + fresh << 500 + 64;
        QTest::newRow("nothing left") << QByteArray() << 24;
    }
    void aPatchIsSmall()
    {
        QRandomGenerator random(2);
        const QByteArray source = noise(&random, 100000);
        QFETCH(const QByteArray, target);
        QFETCH(const int, most);
        const QByteArray patch = createBps(source, target, {});
        QVERIFY2(patch.size() <= most, qPrintable(QString::number(patch.size())));
        QByteArray result;
        QString error;
        QVERIFY2(applyBps(source, patch, &result, &error), qPrintable(error));
        QCOMPARE(result, target);
    }

    void aPatchMadeInAnotherByteOrderIsApplied()
    {
        const QByteArray original = cartridgeImage(256);
        QByteArray changed = original;
        changed.replace(100, 5, "fresh");
        for (const ByteOrder order : {ByteOrder::BigEndian, ByteOrder::ByteSwapped, ByteOrder::LittleEndian}) {
            QByteArray source = original;
            QByteArray target = changed;
            convertByteOrder(&source, order);
            convertByteOrder(&target, order);
            QByteArray image = original;
            ByteOrder madeFor = ByteOrder::Unknown;
            QString error;
            QVERIFY2(applyPatch(&image, true, createBps(source, target, {}), &madeFor, &error), qPrintable(error));
            QCOMPARE(image, changed);
            QCOMPARE(madeFor, order);
        }
    }

    void anAppliedPatchIsRecognised()
    {
        QByteArray image("changed");
        ByteOrder madeFor = ByteOrder::Unknown;
        QString error;
        QVERIFY(!applyPatch(&image, false, createBps("original", "changed", {}), &madeFor, &error));
        QVERIFY2(error.endsWith("; the image is what the patch makes already"), qPrintable(error));
        QCOMPARE(image, QByteArray("changed"));
    }
};
}

QTEST_GUILESS_MAIN(BpsPatchTest)
#include "tst_bpspatch.moc"
