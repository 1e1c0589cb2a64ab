// SPDX-License-Identifier: MIT
#include "profilefolder.h"

#include "support/images.h"
#include "verify/verification.h"

#include <QJsonArray>

namespace
{
/// The image of all tests here: zeros behind the header, 64 KiB.
QByteArray plainImage()
{
    QByteArray image = cartridgeImage(64) + QByteArray(0x10000 - 64, '\0');
    return image;
}

QByteArray entry(const char *name, int address, const char *format, int width, int height, int palette = 0)
{
    return QStringLiteral("<texture name=\"%1\" address=\"0x%2\" format=\"%3\" width=\"%4\" height=\"%5\" palette=\"0x%6\"/>")
        .arg(QLatin1String(name), QString::number(address, 16), QLatin1String(format))
        .arg(width)
        .arg(height)
        .arg(palette, 0, 16)
        .toUtf8();
}

class VerifyCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_image = plainImage();
        m_folder.reset(new ProfileFolder(m_image));
    }

    void everythingInOrder()
    {
        m_folder->addProfile(entry("a", 0x1000, "rgba32", 8, 8) + entry("b", 0x1100, "ci4", 8, 8, 0x2000)
                             + entry("c", 0x1120, "i4", 8, 8) + entry("d", 0xFFC0, "ia8", 8, 8));
        const CommandCall verified = m_folder->call("verify");
        QCOMPARE(verified.status, 0);
        QCOMPARE(verified.out, QString("4 entries verified, 0 faulty: 0 problems, 0 remarks\n"));
        QVERIFY(verified.err.isEmpty());
    }

    void emptyProfileIsInOrder()
    {
        m_folder->addProfile("");
        QCOMPARE(m_folder->call("verify").status, 0);
    }

    void eachProblemIsFound_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("kind");
        QTest::newRow("one byte behind the end") << entry("x", 0xFFC1, "i8", 8, 8) << "outside";
        QTest::newRow("behind the end") << entry("x", 0x20000, "i8", 8, 8) << "outside";
        QTest::newRow("before the start") << entry("x", 0x1000, "i8", 8, 8).replace("0x1000", "-0x1000") << "outside";
        QTest::newRow("size that wraps to a small one") << entry("x", 0x1000, "rgba32", 65536, 65537) << "outside";
        QTest::newRow("unknown format") << entry("x", 0x1000, "rgb565", 8, 8) << "format";
        QTest::newRow("format in capitals") << entry("x", 0x1000, "RGBA32", 8, 8) << "format";
        QTest::newRow("no width") << entry("x", 0x1000, "i8", 0, 8) << "dimensions";
        QTest::newRow("negative height") << entry("x", 0x1000, "i8", 8, -8) << "dimensions";
        QTest::newRow("no JPEG") << entry("x", 0x1000, "jpeg", 8, 8) << "jpeg";
        QTest::newRow("JPEG outside") << entry("x", 0x10000, "jpeg", 8, 8) << "outside";
        QTest::newRow("half a byte") << entry("x", 0x1000, "i4", 3, 3) << "undecodable";
        QTest::newRow("less than a byte") << entry("x", 0x1000, "i4", 1, 1) << "undecodable";
        QTest::newRow("palette one byte behind the end") << entry("x", 0x1000, "ci4", 8, 8, 0xFFE1) << "palette";
        QTest::newRow("large palette behind the end") << entry("x", 0x1000, "ci8", 8, 8, 0xFE02) << "palette";
        QTest::newRow("palette before the start")
            << entry("x", 0x1000, "ci4", 8, 8, 0x10).replace("palette=\"0x10\"", "palette=\"-0x10\"") << "palette";
    }

    void eachProblemIsFound()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, kind);
        m_folder->addProfile(content);
        const CommandCall verified = m_folder->call("verify");
        QCOMPARE(verified.status, 1);
        QVERIFY2(verified.out.startsWith("Root/x: " + kind + ": "), qPrintable(verified.out));
        QVERIFY2(verified.out.contains("1 entry verified, 1 faulty: 1 problem, 0 remarks\n"), qPrintable(verified.out));

        const QJsonObject document = m_folder->call("verify", {"--json"}).json();
        QCOMPARE(document["counts"].toObject()[kind].toInt(), 1);
        QCOMPARE(document["findings"].toArray().at(0).toObject()["kind"].toString(), kind);
    }

    void paletteRightAtTheEnd()
    {
        m_folder->addProfile(entry("x", 0x1000, "ci4", 8, 8, 0xFFE0) + entry("y", 0x2000, "ci8", 8, 8, 0xFE00));
        QCOMPARE(m_folder->call("verify").status, 0);
    }

    void jpegsAreMeasuredAndDecoded()
    {
        const auto withJpeg = [this](const QByteArray &jpeg) {
            QByteArray image = m_image;
            image.replace(0x1000, jpeg.size(), jpeg);
            writeFile(m_folder->imagePath(), image);
            return m_folder->call("verify").out;
        };
        m_folder->addProfile(entry("x", 0x1000, "jpeg", 8, 8));
        QVERIFY(withJpeg(QByteArray::fromHex("FFD8FFE000040000FFDB0000")).contains("has no end"));
        QVERIFY(withJpeg(QByteArray::fromHex("FFD8FFE000040000FFDB0000FFD9")).contains("undecodable"));
        QByteArray markers = QByteArray::fromHex("FFD8");
        for (int i = 0; i < 12; ++i)
            markers += QByteArray::fromHex("FFE00002");
        QVERIFY(withJpeg(markers).contains("no quantization table"));
    }

    void overlapsNameTheOthers()
    {
        m_folder->addProfile(entry("a", 0x1000, "i8", 8, 8) + entry("b", 0x1038, "i8", 8, 8) + entry("c", 0x1078, "i8", 8, 8)
                             + entry("d", 0x103F, "i8", 1, 1));
        const CommandCall verified = m_folder->call("verify");
        QCOMPARE(verified.status, 1);
        QVERIFY2(verified.out.contains("Root/a: overlap: It overlaps with Root/b, Root/d\n"), qPrintable(verified.out));
        QVERIFY(verified.out.contains("Root/b: overlap: It overlaps with Root/a, Root/d\n"));
        QVERIFY(verified.out.contains("Root/d: overlap: It overlaps with Root/a, Root/b\n"));
        QVERIFY(!verified.out.contains("Root/c"));
        QVERIFY(verified.out.contains("4 entries verified, 3 faulty: 3 problems"));

        const QJsonObject first = m_folder->call("verify", {"--json"}).json()["findings"].toArray().at(0).toObject();
        QCOMPARE(first["otherCount"].toInt(), 2);
        QCOMPARE(first["others"].toArray().at(1).toString(), QString("Root/d"));
    }

    void veryManyOverlapsAreCounted()
    {
        QByteArray content;
        for (int i = 0; i < 15; ++i)
            content += entry(qPrintable(QString::number(i)), 0x1000, "i8", 8, 8);
        m_folder->addProfile(content);
        QVERIFY(m_folder->call("verify").out.contains(" and 4 more\n"));
    }

    void clearTexelsAreOnlyRemarkedOn_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QByteArray>("texels");
        QTest::addColumn<int>("count");
        QTest::newRow("rgba32") << "rgba32" << QByteArray::fromHex("11223300112233FF44556600") << 2;
        QTest::newRow("rgb5a1") << "rgb5a1" << QByteArray::fromHex("F800F8010002") << 2;
        QTest::newRow("ia4") << "ia4" << QByteArray::fromHex("E22F") << 3;
        QTest::newRow("ia8") << "ia8" << QByteArray::fromHex("F0F10A") << 1;
    }

    void clearTexelsAreOnlyRemarkedOn()
    {
        QFETCH(QString, format);
        QFETCH(QByteArray, texels);
        QFETCH(int, count);
        m_image.replace(0x1000, texels.size(), texels);
        writeFile(m_folder->imagePath(), m_image);
        const int width = format == "ia4" ? 4 : 3;
        m_folder->addProfile(entry("x", 0x1000, format.toUtf8(), width, 1));
        const CommandCall verified = m_folder->call("verify");
        QCOMPARE(verified.status, 0);
        QVERIFY2(verified.out.startsWith(QString("Root/x: transparent: %1 clear texel").arg(count)), qPrintable(verified.out));
        QVERIFY(verified.out.contains("0 faulty: 0 problems, 1 remark\n"));
        const QJsonObject finding = m_folder->call("verify", {"--json"}).json()["findings"].toArray().at(0).toObject();
        QCOMPARE(finding["problem"].toBool(true), false);
    }

    void everyByteOfEveryLosslessFormatComesBack()
    {
        for (int i = 0; i < 256; ++i)
            m_image[0x1000 + i] = char(i);
        writeFile(m_folder->imagePath(), m_image);
        for (const char *format : {"i4", "i8", "ia16", "ci4", "ci8"}) {
            const int texels = format[2] == '1' ? 128 : format[strlen(format) - 1] == '4' ? 512 : 256;
            m_folder->addProfile(entry("x", 0x1000, format, 16, texels / 16, 0x4000));
            const CommandCall verified = m_folder->call("verify");
            QVERIFY2(verified.status == 0 && verified.out.contains("0 remarks"), format);
        }
    }

    void gapsAreListed()
    {
        m_folder->addProfile(entry("a", 0x1000, "i8", 16, 16) + entry("b", 0x1100, "ci4", 16, 16, 0x8000)
                             + entry("c", 0xFF00, "i8", 16, 16));
        const CommandCall verified = m_folder->call("verify", {"--gaps"});
        QCOMPARE(verified.status, 0);
        QVERIFY2(verified.out.endsWith("Uncovered: 0x00000000 to 0x00001000, 4096 bytes\n"
                                       "Uncovered: 0x00001180 to 0x00008000, 28288 bytes\n"
                                       "Uncovered: 0x00008020 to 0x0000FF00, 32480 bytes\n"
                                       "3 uncovered ranges, 64864 bytes\n"),
                 qPrintable(verified.out));
        const QJsonArray gaps = m_folder->call("verify", {"--gaps", "--json"}).json()["gaps"].toArray();
        QCOMPARE(gaps.size(), 3);
        QCOMPARE(gaps.at(1).toObject()["begin"].toInt(), 0x1180);
        QCOMPARE(gaps.at(1).toObject()["end"].toInt(), 0x8000);
        QVERIFY(!m_folder->call("verify", {"--json"}).json().contains("gaps"));
    }

    void aPathLimitsItButOverlapsAreWithAll()
    {
        m_folder->addProfile("<directory name=\"D\" address=\"0x1000\" size=\"0x100\">" + entry("in", 0, "i8", 8, 8)
                             + "</directory>" + entry("out", 0x1000, "i8", 8, 8) + entry("bad", 0x1000, "nonsense", 8, 8));
        const CommandCall verified = m_folder->call("verify", {"Root/D"});
        QCOMPARE(verified.status, 1);
        QVERIFY2(verified.out.startsWith("Root/D/in: overlap: It overlaps with Root/out\n1 entry verified"),
                 qPrintable(verified.out));
        QVERIFY(!verified.out.contains("nonsense"));
        QCOMPARE(m_folder->call("verify", {"Root/nowhere"}).status, 1);
    }

    void findingsOfOneEntryCountItOnce()
    {
        m_folder->addProfile(entry("x", 0x1000, "ci4", 3, 3, 0x10000));
        const CommandCall verified = m_folder->call("verify");
        QVERIFY2(verified.out.contains("1 entry verified, 1 faulty: 2 problems"), qPrintable(verified.out));
    }

    void differentBytesAreToldFromClearedOnes()
    {
        QCOMPARE(withClearTexelsCleared(QByteArray::fromHex("1122330011223344"), "rgba32"),
                 QByteArray::fromHex("0000000011223344"));
        QCOMPARE(withClearTexelsCleared(QByteArray::fromHex("FFFEFFFF"), "rgb5a1"), QByteArray::fromHex("0000FFFF"));
        QCOMPARE(withClearTexelsCleared(QByteArray::fromHex("E32F4411"), "ia4"), QByteArray::fromHex("030F0011"));
        QCOMPARE(withClearTexelsCleared(QByteArray::fromHex("F00FF1"), "ia8"), QByteArray::fromHex("000FF1"));
        QCOMPARE(withClearTexelsCleared(QByteArray::fromHex("F00FF1"), "i8"), QByteArray::fromHex("F00FF1"));
    }

private:
    QByteArray m_image;
    QScopedPointer<ProfileFolder> m_folder;
};
}

QTEST_GUILESS_MAIN(VerifyCommandTest)
#include "tst_cli_verify.moc"
