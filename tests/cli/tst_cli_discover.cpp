// SPDX-License-Identifier: MIT
#include "profilefolder.h"

#include "codec/compressedblock.h"
#include "demo/democartridge.h"
#include "support/displaylists.h"
#include "support/images.h"

#include <QJsonArray>
#include <QRegularExpression>

namespace
{
constexpr quint32 entry = 0x80000400;

/// An image with two lists of addresses that the console itself maps, and one of a segment.
QByteArray image()
{
    QByteArray bytes(0x20000, '\0');
    bytes.replace(0, 12, QByteArray::fromHex("803712400000000F80000400"));
    bytes.replace(59, 4, "NQLE");
    TestList list;
    list.palette(16, entry + 0x7000).block(TestList::Indexed, 4, 32, 32, entry + 0x7020).draw();
    list.block(TestList::Rgba, 16, 32, 16, entry + 0x8000).draw().block(TestList::Rgba, 16, 32, 16, entry + 0x8000).draw().end();
    bytes.replace(0x2000, list.bytes().size(), list.bytes());
    const TestList other = TestList().block(TestList::Rgba, 16, 32, 32, 0x06000000).end();
    bytes.replace(0x4000, other.bytes().size(), other.bytes());
    return bytes;
}

class DiscoverCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_folder.reset(new ProfileFolder(image())); }

    void printsWhatListsUse()
    {
        const CommandCall found = m_folder->call("discover");
        QCOMPARE(found.status, 0);
        QVERIFY2(found.err.isEmpty(), qPrintable(found.err));
        QCOMPARE(found.out,
                 QString("Address     Format    Dimensions   Palette     Placed by  Confidence  Uses  Commands\n"
                         "0x00008020  ci4       32x32        0x00008000  boot       0.95           1  0x00002000 0x00002028 "
                         "0x00002030 0x00002038 and 2 more\n"
                         "0x00009000  rgb5a1    32x16        -           boot       0.95           2  0x00002080 0x00002088 "
                         "0x000020A8 0x000020B0 and 4 more\n"
                         "Not placed: 1 texture of segment 6, in lists from 0x00004000 to 0x00004030\n"
                         "2 textures found\n"));
        QVERIFY(!QDir(m_folder->profiles()).exists());
    }

    void namesTheBestPlacesOfWhatIsNotClear()
    {
        // The same picture over and over: each next one is as good.
        TestList list;
        for (int i = 0; i < 12; ++i)
            list.block(TestList::Rgba, 16, 32, 32, 0x06000000 + quint32(i) * 0x800).draw();
        QByteArray bytes = cartridgeImage(0x200000);
        bytes.replace(0x10000, list.bytes().size(), list.bytes());
        bytes.replace(0x100000, 0x40000, demo::cartridge().image.mid(0x140000, 0x800).repeated(0x80));
        m_folder->addPart("game.z64", bytes);
        const QString out = m_folder->call("discover").out;
        const QRegularExpression line("Not placed: 12 textures of segment 6, in lists from 0x00010000 to 0x0001[0-9A-F]{4}; "
                                      "best base 0x001[0-3][0-9A-F]{4} \\(0\\.\\d{3}\\), then 0x001[0-3][0-9A-F]{4} "
                                      "\\(0\\.\\d{3}\\)\n0 textures found\n$");
        QVERIFY2(line.match(out).hasMatch(), qPrintable(out));
    }

    void looksInsideBlocks()
    {
        const QByteArray block = packedBlock(BlockKind::Yay0, image());
        m_folder->addPart("game.z64", cartridgeImage(0x1000) + block);
        QVERIFY(m_folder->call("discover").out.endsWith("0 textures found\n"));
        const CommandCall found = m_folder->call("discover", {"--blocks"});
        QCOMPARE(found.status, 0);
        QVERIFY2(found.out.contains(
                     "0x00001000  rgb5a1    32x16        -           boot       0.95           2  0x00002080 0x00002088 "
                     "0x000020A8 0x000020B0 and 4 more  in the Yay0 block at 0x00001000, offset 0x00009000\n"),
                 qPrintable(found.out));
        QVERIFY(found.out.endsWith("2 textures found\n"));
        const QJsonObject json = m_folder->call("discover", {"--blocks", "--json"}).json();
        QCOMPARE(json["textures"].toArray().size(), 0);
        const QJsonObject inBlock = json["blocks"].toArray().at(0).toObject();
        QCOMPARE(inBlock["block"].toInt(), 0x1000);
        QCOMPARE(inBlock["kind"].toString(), QString("Yay0"));
        QCOMPARE(inBlock["textures"].toArray().at(1).toObject()["address"].toInt(), 0x9000);
        QCOMPARE(m_folder->call("discover", {"--blocks", "--from", "0x1001", "--json"}).json()["blocks"].toArray().size(), 0);
        QVERIFY(m_folder->call("discover", {"--blocks", "--add"}).err.contains("is not added"));
    }

    void jsonHasTheKeysOfList()
    {
        const QJsonObject json = m_folder->call("discover", {"--json"}).json();
        QCOMPARE(json["identifier"].toString(), QString("NQLE0"));
        const QJsonObject first = json["textures"].toArray().at(0).toObject();
        QCOMPARE(first["address"].toInt(), 0x8020);
        QCOMPARE(first["format"].toString(), QString("ci4"));
        QCOMPARE(first["width"].toInt(), 32);
        QCOMPARE(first["height"].toInt(), 32);
        QCOMPARE(first["paletteAddress"].toInt(), 0x8000);
        QCOMPARE(first["placedBy"].toString(), QString("boot"));
        QVERIFY(first["confidence"].toDouble() > 0.5);
        QCOMPARE(first["uses"].toInt(), 1);
        QCOMPARE(first["commands"].toArray().size(), 6);
        QVERIFY(json["textures"].toArray().at(1).toObject()["paletteAddress"].isNull());
        const QJsonArray neighbourhoods = json["neighbourhoods"].toArray();
        QCOMPARE(neighbourhoods.size(), 2);
        QCOMPARE(neighbourhoods.at(1).toObject()["segment"].toInt(), 6);
        QCOMPARE(neighbourhoods.at(1).toObject()["placed"].toBool(), false);
    }

    void addsOnce()
    {
        const CommandCall added = m_folder->call("discover", {"--add"});
        QCOMPARE(added.status, 0);
        QVERIFY(added.out.contains("Added 2 entries to the folder \"Discovered\"."));
        const QByteArray list = fileBytes(m_folder->fileListPath());
        // The palette counts from its folder, which begins at the palette.
        QVERIFY2(list.contains("<texture name=\"0x00008020\" address=\"0x00000020\" format=\"ci4\""), list.constData());
        QVERIFY(list.contains("palette=\"0x00000000\"") || !list.contains("palette="));
        const CommandCall again = m_folder->call("discover", {"--add"});
        QCOMPARE(again.status, 0);
        QVERIFY(again.out.contains("Added 0 entries"));
        QCOMPARE(fileBytes(m_folder->fileListPath()), list);
        const QJsonArray listed = m_folder->call("list", {"--json"}).json()["textures"].toArray();
        QCOMPARE(listed.size(), 2);
        QCOMPARE(listed.at(0).toObject()["address"].toInt(), 0x8020);
        QCOMPARE(listed.at(0).toObject()["paletteAddress"].toInt(), 0x8000);
    }

    void folderRangeAndDryRun()
    {
        QVERIFY(m_folder->call("discover", {"--add", "--dry-run"}).out.contains("Added 2 entries"));
        QVERIFY(!QFile::exists(m_folder->fileListPath()));
        QCOMPARE(m_folder->call("discover", {"--add", "--folder", "Mine", "--from", "0x2080", "--json"}).json()["added"].toInt(),
                 1);
        QVERIFY(fileBytes(m_folder->fileListPath()).contains("<directory name=\"Mine\""));
        QVERIFY(m_folder->call("discover", {"--to", "0x2080"}).out.contains("1 texture found"));
    }

    void galleryShowsThem()
    {
        const CommandCall call = m_folder->call("discover", {"--gallery", m_folder->path("page.html")});
        QCOMPARE(call.status, 0);
        const QByteArray page = fileBytes(m_folder->path("page.html"));
        QVERIFY(page.contains("0x00008020") && page.contains("0x00009000"));
        const CommandCall failed = m_folder->call("discover", {"--gallery", m_folder->imagePath() + "/page.html"});
        QCOMPARE(failed.status, 1);
        QVERIFY(failed.err.contains("page.html"));
        QCOMPARE(m_folder->call("discover", {"--gallery", m_folder->imagePath()}).status, 2);
        QCOMPARE(m_folder->call("discover", {"--gallery", "-"}).status, 2);
    }

    void wrongUsage_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::newRow("folder without add") << QStringList {"--folder", "A"};
        QTest::newRow("dry run without add") << QStringList {"--dry-run"};
        QTest::newRow("folder without name") << QStringList {"--add", "--folder", ""};
        QTest::newRow("range backwards") << QStringList {"--from", "5", "--to", "5"};
        QTest::newRow("no number") << QStringList {"--from", "x"};
    }
    void wrongUsage()
    {
        QFETCH(QStringList, options);
        QCOMPARE(m_folder->call("discover", options).status, 2);
    }

private:
    QScopedPointer<ProfileFolder> m_folder;
};
}

QTEST_GUILESS_MAIN(DiscoverCommandTest)
#include "tst_cli_discover.moc"
