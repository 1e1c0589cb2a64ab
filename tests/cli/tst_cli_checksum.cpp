// SPDX-License-Identifier: MIT
#include "commandcall.h"
#include "support/bootimages.h"

#include <QTemporaryDir>

namespace
{
QString hexadecimal(quint32 value)
{
    return "0x" + QString::number(value, 16).toUpper().rightJustified(8, '0');
}

class ChecksumCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder.reset(new QTemporaryDir);
        QVERIFY(m_folder->isValid());
        m_image = bootImage(0x98BC2C86);
        m_path = m_folder->filePath("game.z64");
        writeFile(m_path, m_image);
        m_expected = plainCheckCodes(m_image, 6105);
    }

    void showsStoredAndComputedCodes()
    {
        const CommandCall shown = call({"checksum", m_path});
        QCOMPARE(shown.status, 1);
        QVERIFY(shown.out.contains("6105/7105"));
        QVERIFY(shown.out.contains(hexadecimal(m_expected[0]) + ' ' + hexadecimal(m_expected[1])));
        QVERIFY(shown.out.contains("(different)"));
        QVERIFY(shown.out.contains("0x" + m_image.mid(0x10, 4).toHex().toUpper()));
        QCOMPARE(fileBytes(m_path), m_image);
    }

    void fixWritesThem()
    {
        QCOMPARE(call({"checksum", "--fix", "--in-place", m_path}).status, 0);
        QByteArray expected = m_image;
        for (int code = 0; code < 2; ++code) {
            for (int byte = 0; byte < 4; ++byte)
                expected[0x10 + 4 * code + byte] = char(m_expected[size_t(code)] >> (24 - 8 * byte));
        }
        QCOMPARE(fileBytes(m_path), expected);
        const CommandCall again = call({"checksum", m_path});
        QCOMPARE(again.status, 0);
        QVERIFY(again.out.contains("(the same)"));
    }

    void fixWritesElsewhereAndInAnyOrderIn()
    {
        const QString swapped = m_folder->filePath("game.v64");
        const QByteArray swappedBytes = withReversedUnits(m_image, 2);
        writeFile(swapped, swappedBytes);
        const QString fixed = m_folder->filePath("fixed.z64");
        QCOMPARE(call({"checksum", "--fix", "-o", fixed, swapped}).status, 0);
        QCOMPARE(fileBytes(swapped), swappedBytes);
        QCOMPARE(call({"checksum", fixed}).status, 0);
        QCOMPARE(fileBytes(fixed).mid(0x18), m_image.mid(0x18));
    }

    void dryRunWritesNothing()
    {
        const CommandCall dry = call({"checksum", "--fix", "--in-place", "--dry-run", m_path});
        QCOMPARE(dry.status, 0);
        QVERIFY2(dry.out.contains("Would change"), qPrintable(dry.out));
        QVERIFY2(dry.out.contains("from 0x00000010 to 0x00000017"), qPrintable(dry.out));
        QCOMPARE(fileBytes(m_path), m_image);
    }

    void json()
    {
        const QJsonObject document = call({"checksum", "--json", m_path}).json();
        QCOMPARE(document["bootChip"].toString(), QString("6105/7105"));
        QCOMPARE(document["computed"].toObject()["first"].toString(), hexadecimal(m_expected[0]));
        QCOMPARE(document["computed"].toObject()["second"].toString(), hexadecimal(m_expected[1]));
        QCOMPARE(document["match"].toBool(true), false);
        QVERIFY(document["match"].isBool());

        const CommandCall fixed = call({"checksum", "--json", "--fix", "--in-place", m_path});
        QCOMPARE(fixed.status, 0);
        QVERIFY(fixed.json().contains("stored"));
    }

    void unknownBootCodeNeedsAChip()
    {
        m_image[0x40] = char(m_image[0x40] ^ 1);
        writeFile(m_path, m_image);
        const CommandCall unknown = call({"checksum", "--fix", "--in-place", m_path});
        QCOMPARE(unknown.status, 1);
        QVERIFY(unknown.err.contains("boot code"));
        QCOMPARE(fileBytes(m_path), m_image);
        const QJsonObject document = call({"checksum", "--json", m_path}).json();
        QVERIFY(document["bootChip"].isNull());
        QVERIFY(document["computed"].isNull());

        QCOMPARE(call({"checksum", "--fix", "--in-place", "--chip", "7103", m_path}).status, 0);
        const std::array<quint32, 2> codes = plainCheckCodes(m_image, 6103);
        QVERIFY(call({"checksum", "--chip", "6103", m_path}).out.contains(hexadecimal(codes[0]) + ' ' + hexadecimal(codes[1])));
    }

    void shortImageSaysSo()
    {
        writeFile(m_path, m_image.left(0x1000));
        const CommandCall tooShort = call({"checksum", m_path});
        QCOMPARE(tooShort.status, 1);
        QVERIFY2(tooShort.err.contains(QString::number(0x101000)), qPrintable(tooShort.err));
        QVERIFY(tooShort.out.contains("6105/7105"));
    }

    void noImageSaysSo()
    {
        writeFile(m_path, QByteArray(200, 'x'));
        const CommandCall none = call({"checksum", m_path});
        QCOMPARE(none.status, 1);
        QVERIFY(none.err.contains(m_path));
        QVERIFY(none.out.isEmpty());
    }

private:
    QScopedPointer<QTemporaryDir> m_folder;
    QString m_path;
    QByteArray m_image;
    std::array<quint32, 2> m_expected {};
};
}

QTEST_GUILESS_MAIN(ChecksumCommandTest)
#include "tst_cli_checksum.moc"
