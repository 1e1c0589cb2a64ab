// SPDX-License-Identifier: MIT
#include "profilefolder.h"

#include "codec/compressedblock.h"
#include "support/blocks.h"
#include "support/images.h"
#include "transfer/blockfiles.h"

#include <QJsonArray>

#include <unistd.h>

namespace
{
constexpr int yayAddress = 0x1004;
constexpr int zlibAddress = 0x4001;

class BlockCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_yay = blocks::mixedContent(4000, 1);
        m_zlib = blocks::mixedContent(3000, 2);
        m_image = cartridgeImage(0x8000);
        m_yayPacked = packedBlock(BlockKind::Yay0, m_yay);
        m_zlibPacked = packedBlock(BlockKind::Zlib, m_zlib);
        m_image.replace(yayAddress, m_yayPacked.size(), m_yayPacked);
        m_image.replace(zlibAddress, m_zlibPacked.size(), m_zlibPacked);
        m_folder.reset(new ProfileFolder(m_image));
    }

    void listsBlocks()
    {
        const CommandCall list = command({"blocks", m_folder->imagePath()});
        QCOMPARE(list.status, 0);
        QCOMPARE(list.out,
                 QString("0x00001004  Yay0  %1      4000\n0x00004001  zlib  %2      3000\n2 blocks found\n")
                     .arg(m_yayPacked.size(), 8)
                     .arg(m_zlibPacked.size(), 8));
        const QJsonObject json = command({"blocks", "--json", m_folder->imagePath()}).json();
        QCOMPARE(json["identifier"].toString(), QString("NQLE0"));
        QCOMPARE(json["searchedUpTo"].toInt(), 0x8000);
        QCOMPARE(json["blocks"].toArray().size(), 2);
        const QJsonObject first = json["blocks"].toArray().at(0).toObject();
        QCOMPARE(first["address"].toInt(), yayAddress);
        QCOMPARE(first["kind"].toString(), QString("Yay0"));
        QCOMPARE(first["packedSize"].toInt(), m_yayPacked.size());
        QCOMPARE(first["unpackedSize"].toInt(), 4000);
    }

    void saysWhenItGaveUp()
    {
        const QByteArray header = QByteArray("Yaz0") + QByteArray::fromHex("00FFFFFF") + QByteArray(10, '\xFF');
        m_folder->addPart("hostile.bin", header.repeated(20000) + QByteArray(4000000, '\xFF'));
        const CommandCall list = command({"blocks", m_folder->path("hostile.bin")});
        QCOMPARE(list.status, 1);
        QVERIFY2(list.err.contains("given up at 0x0000"), qPrintable(list.err));
    }

    void unpacksAll()
    {
        const CommandCall unpacked = command({"unpack", m_folder->imagePath(), "-o", m_folder->path("new/out")});
        QCOMPARE(unpacked.status, 0);
        QCOMPARE(unpacked.out, "Unpacked 2 blocks to " + m_folder->path("new/out") + ", left out 0\n");
        QCOMPARE(QDir(m_folder->path("new/out")).entryList(QDir::Files),
                 QStringList({"NQLE0-0x00001004.yay0", "NQLE0-0x00004001.zlib"}));
        QCOMPARE(fileBytes(m_folder->path("new/out/NQLE0-0x00001004.yay0")), m_yay);
        QCOMPARE(fileBytes(m_folder->path("new/out/NQLE0-0x00004001.zlib")), m_zlib);
    }

    void unpacksThoseNamed()
    {
        const QJsonObject json = command({"unpack", m_folder->imagePath(), "-o", out(), "0x4001", "--json"}).json();
        QCOMPARE(json["unpacked"].toArray().size(), 1);
        QCOMPARE(json["unpacked"].toArray().at(0)["file"].toString(), zlibFile());
        QCOMPARE(QDir(out()).entryList(QDir::Files).size(), 1);
        const CommandCall none = command({"unpack", m_folder->imagePath(), "-o", out(), "0x4002"});
        QCOMPARE(none.status, 1);
        QVERIFY(none.err.contains("no compressed block at 0x00004002"));
    }

    void unpackingKeepsWork()
    {
        unpack();
        QCOMPARE(unpack().status, 0); // The same content is no reason to complain.
        writeFile(yayFile(), "work");
        const CommandCall again = unpack();
        QCOMPARE(again.status, 1);
        QVERIFY2(again.err.contains("other content"), qPrintable(again.err));
        QCOMPARE(fileBytes(yayFile()), QByteArray("work"));
        QCOMPARE(command({"unpack", m_folder->imagePath(), "-o", out(), "--overwrite"}).status, 0);
        QCOMPARE(fileBytes(yayFile()), m_yay);
    }

    void unpackingStaysInTheFolder()
    {
        writeFile(m_folder->path("outside"), "outside");
        QDir().mkpath(out());
        QCOMPARE(::symlink("../outside", QFile::encodeName(yayFile()).constData()), 0);
        const CommandCall unpacked = command({"unpack", m_folder->imagePath(), "-o", out(), "--overwrite"});
        QCOMPARE(unpacked.status, 1);
        QVERIFY(unpacked.err.contains("leads out of the folder"));
        QCOMPARE(fileBytes(m_folder->path("outside")), QByteArray("outside"));
    }

    void identifiersAreMadeFileNames_data()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("expected");
        QTest::newRow("plain") << "NQDE0"
                               << "NQDE0";
        QTest::newRow("folders") << "A/B\\1"
                                 << "A_B_1";
        QTest::newRow("upwards") << "../0"
                                 << "_.._0";
        QTest::newRow("hidden") << ".x0"
                                << "_.x0";
        QTest::newRow("option") << "-x0"
                                << "_-x0";
        QTest::newRow("control characters") << QString("A\x01\x1B\n0") << "A___0";
        QTest::newRow("empty") << ""
                               << "_";
        QTest::newRow("letters of other scripts") << QString::fromLatin1("\xC4 0") << QString::fromLatin1("\xC4 0");
    }

    void identifiersAreMadeFileNames()
    {
        QFETCH(QString, identifier);
        QFETCH(QString, expected);
        QCOMPARE(fileIdentifier(identifier), expected);
        const CompressedBlock block {BlockKind::Mio0, 0x12AB34, 5, 6};
        QCOMPARE(blockFileName(identifier, block), expected + "-0x0012AB34.mio0");
        const std::optional<BlockFileName> name = parsedBlockFileName(expected + "-0x0012AB34.mio0");
        QVERIFY(name);
        QCOMPARE(name->identifier, expected);
        QCOMPARE(name->address, 0x12AB34);
        QCOMPARE(int(name->kind), int(BlockKind::Mio0));
    }

    void otherNamesAreNone()
    {
        for (const char *name : {"", ".yay0", "x.yay0", "-0x00001000.yay0", "x0x00001000.yay0", "x-0x00001000.png",
                                 "x-0x00001000.Yay0", "x-0x0000100g.yay0", "x-0X00001000.yay0", "x-0x80001000.yay0",
                                 "x-0x0000abcd.yay0", "x-0x00001000", "x-0x00001000.", "x-0x1000.yay0", "x-00x0001000.yay0"})
            QVERIFY2(!parsedBlockFileName(name), name);
    }

    void packsAFile()
    {
        unpack();
        QByteArray changed = m_yay;
        changed.replace(100, 200, QByteArray(200, '\0'));
        writeFile(yayFile(), changed);
        const CommandCall packed = pack({yayFile(), "-o", m_folder->path("new.z64")});
        QVERIFY2(packed.status == 0, qPrintable(packed.err));
        QVERIFY(packed.out.startsWith("Packed 1 block, unchanged 0, left out 0\n"));
        const QByteArray image = fileBytes(m_folder->path("new.z64"));
        QCOMPARE(image.size(), m_image.size());
        const std::optional<CompressedBlock> block = blockAt(image, yayAddress);
        QVERIFY(block);
        QVERIFY(block->packedSize < m_yayPacked.size());
        QCOMPARE(unpackedBlock(image, *block), changed);
        // Zeros up to the old end, and all around as it was.
        const int left = m_yayPacked.size() - block->packedSize;
        QCOMPARE(image.mid(block->end(), left), QByteArray(left, '\0'));
        QCOMPARE(image.left(yayAddress), m_image.left(yayAddress));
        QCOMPARE(image.mid(yayAddress + m_yayPacked.size()), m_image.mid(yayAddress + m_yayPacked.size()));
        QCOMPARE(fileBytes(m_folder->imagePath()), m_image);
    }

    void packsAFolder()
    {
        unpack();
        QByteArray changed = m_zlib;
        changed.replace(0, 400, QByteArray(400, 'x'));
        writeFile(zlibFile(), changed);
        writeFile(out() + "/OTHER0-0x00001004.yay0", "of another image");
        writeFile(out() + "/notes.txt", "notes");
        const QJsonObject json = pack({out(), "--in-place", "--json"}).json();
        QCOMPARE(json["files"].toArray().size(), 2);
        QCOMPARE(json["files"].toArray().at(0)["result"].toString(), QString("unchanged"));
        QCOMPARE(json["files"].toArray().at(1)["result"].toString(), QString("packed"));
        QCOMPARE(json["files"].toArray().at(1)["room"].toInt(), m_zlibPacked.size());
        const QByteArray image = fileBytes(m_folder->imagePath());
        QCOMPARE(unpackedBlock(image, *blockAt(image, zlibAddress)), changed);
        QCOMPARE(image.left(zlibAddress), m_image.left(zlibAddress));
    }

    void unchangedBlocksKeepTheirBytes()
    {
        // As a worse compressor would have made it: literals alone.
        QByteArray poor =
            QByteArray("Yaz0") + QByteArray::fromHex("00000010 0102030405060708 FF") + "abababab" + '\xFF' + "cdcdcdcd";
        m_image.replace(0x6000, poor.size(), poor);
        m_folder->addPart("game.z64", m_image);
        unpack();
        const CommandCall packed = pack({out(), "--in-place"});
        QCOMPARE(packed.status, 0);
        QVERIFY(packed.out.startsWith("Packed 0 blocks, unchanged 3, left out 0\n"));
        QCOMPARE(fileBytes(m_folder->imagePath()), m_image);
    }

    void whatDoesNotFitIsRefused()
    {
        unpack();
        QByteArray noise;
        QRandomGenerator random(4);
        while (noise.size() < m_yay.size())
            noise.append(char(random.bounded(256)));
        writeFile(yayFile(), noise);
        writeFile(zlibFile(), QByteArray(3000, 'x'));
        const CommandCall packed = pack({out(), "--in-place"});
        QCOMPARE(packed.status, 1);
        const int missing = packedBlock(BlockKind::Yay0, noise).size() - m_yayPacked.size();
        QVERIFY2(packed.err.contains(QString("%1 bytes are missing").arg(missing)), qPrintable(packed.err));
        QVERIFY(packed.err.contains("Nothing was written"));
        QCOMPARE(fileBytes(m_folder->imagePath()), m_image);
    }

    void wrongFilesAreRefused_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("message");
        QTest::newRow("no name of a block") << "x.bin" << QByteArray("x") << "does not say which block";
        QTest::newRow("of another image") << "OTHER0-0x00001004.yay0" << QByteArray("x") << "is of the image OTHER0";
        QTest::newRow("of another place") << "NQLE0-0x00001005.yay0" << QByteArray("x")
                                          << "The image has no Yay0 block at 0x00001005";
        QTest::newRow("of another kind") << "NQLE0-0x00001004.mio0" << QByteArray("x") << "The image has no MIO0 block";
        QTest::newRow("empty") << "NQLE0-0x00001004.yay0" << QByteArray("") << "holds from 1 to";
    }

    void wrongFilesAreRefused()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(QString, message);
        m_folder->addPart(name, content);
        const CommandCall packed = pack({m_folder->path(name), "--in-place"});
        QCOMPARE(packed.status, 1);
        QVERIFY2(packed.err.contains(message), qPrintable(packed.err));
        QCOMPARE(fileBytes(m_folder->imagePath()), m_image);
    }

    void anotherSizeIsRemarkedOn()
    {
        m_folder->addPart("NQLE0-0x00001004.yay0", m_yay.left(3999));
        const CommandCall packed = pack({m_folder->path("NQLE0-0x00001004.yay0"), "--in-place"});
        QCOMPARE(packed.status, 0);
        QVERIFY2(packed.err.contains("was 4000 bytes and is now 3999"), qPrintable(packed.err));
    }

    void dryRunWritesNothing()
    {
        unpack();
        writeFile(yayFile(), QByteArray(4000, 'x'));
        const CommandCall packed = pack({out(), "--dry-run"});
        QCOMPARE(packed.status, 0);
        QVERIFY(packed.out.contains("Would change"));
        QCOMPARE(fileBytes(m_folder->imagePath()), m_image);
    }

    void unpackedFilesAreImagesOfTheirOwn()
    {
        unpack();
        const QJsonObject info = command({"info", yayFile(), "--profiles", m_folder->profiles(), "--json"}).json();
        QCOMPARE(info["identifier"].toString(), QString("NQLE0-0x00001004"));
        QVERIFY(info["byteOrder"].isNull());
    }

    void wrongUsage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("no place to write") << QStringList {"pack", "image", "file"};
        QTest::newRow("over the image") << QStringList {"pack", m_folder ? m_folder->imagePath() : "x", "file"};
        QTest::newRow("no address") << QStringList {"unpack", "image",
                                                    "0x"
                                                    "zz"};
        QTest::newRow("no folder") << QStringList {"unpack", "image", "-o", ""};
        QTest::newRow("no file") << QStringList {"pack", "image", "--dry-run"};
    }

    void wrongUsage()
    {
        QFETCH(QStringList, arguments);
        QCOMPARE(command(arguments).status, 2);
    }

private:
    static CommandCall command(const QStringList &arguments) { return ::call(arguments); }
    CommandCall unpack() const { return command({"unpack", m_folder->imagePath(), "-o", out()}); }
    CommandCall pack(const QStringList &more) const { return command(QStringList {"pack", m_folder->imagePath()} + more); }
    QString out() const { return m_folder->path("out"); }
    QString yayFile() const { return out() + "/NQLE0-0x00001004.yay0"; }
    QString zlibFile() const { return out() + "/NQLE0-0x00004001.zlib"; }

    QByteArray m_yay;
    QByteArray m_zlib;
    QByteArray m_yayPacked;
    QByteArray m_zlibPacked;
    QByteArray m_image;
    QScopedPointer<ProfileFolder> m_folder;
};
}

QTEST_GUILESS_MAIN(BlockCommandsTest)
#include "tst_cli_blocks.moc"
