// SPDX-License-Identifier: MIT
#include "codec/compressedblock.h"

#include "codec/longestmatches.h"
#include "support/blocks.h"

#include <QTest>

Q_DECLARE_METATYPE(BlockKind)

namespace
{
bool isLz(BlockKind kind)
{
    return kind != BlockKind::Gzip && kind != BlockKind::Zlib;
}

void addKinds(bool all)
{
    QTest::addColumn<BlockKind>("kind");
    for (const BlockKind kind : allBlockKinds) {
        if (all || isLz(kind))
            QTest::newRow(qPrintable(blockKindName(kind))) << kind;
    }
}

/// A block as the format's layout has it, in hexadecimal; '|' parts the tables.
QByteArray block(const char *text)
{
    return QByteArray::fromHex(QByteArray(text).replace('|', ' '));
}

/// The fewest bits by trying every length and distance class at each position: from the end to the front, without any short cut.
int fewestBits(BlockKind kind, const QByteArray &content)
{
    QVector<int> bits(content.size() + 1, 0);
    const int longestShort = kind == BlockKind::Mio0 ? 18 : 17;
    for (int i = content.size() - 1; i >= 0; --i) {
        bits[i] = 9 + bits.at(i + 1);
        int distance = 0;
        const int longest = blocks::plainMatch(content, i, blocks::longestLength(kind), &distance);
        for (int length = 3; length <= longest; ++length)
            bits[i] = qMin(bits.at(i), (length <= longestShort ? 17 : 25) + bits.at(i + length));
    }
    return bits.first();
}

class CompressedBlockTest : public QObject
{
    Q_OBJECT

private slots:
    void decodesWrittenOutBlocks_data()
    {
        QTest::addColumn<QByteArray>("packed");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QByteArray>("content");
        // "abc", then five bytes from three back, then "d": steps L L L M L.
        QTest::newRow("MIO0") << block("4D494F30 00000009 00000014 00000016 | E8000000 | 2002 | 61626364") << "MIO0"
                              << QByteArray("abcabcabd");
        QTest::newRow("Yay0") << block("59617930 00000009 00000014 00000016 | E8000000 | 3002 | 61626364") << "Yay0"
                              << QByteArray("abcabcabd");
        QTest::newRow("Yaz0") << block("59617A30 00000009 00000000 00000000 | E8 616263 3002 64") << "Yaz0"
                              << QByteArray("abcabcabd");
        // One "x" and a long match of 0x12 + 2 bytes from one back: the length is a byte of the chunks.
        QTest::newRow("long Yay0") << block("59617930 00000015 00000014 00000016 | 80000000 | 0000 | 78 02") << "Yay0"
                                   << QByteArray(21, 'x');
        QTest::newRow("long Yaz0") << block("59617A30 00000015 00000000 00000000 | 80 78 0000 02") << "Yaz0"
                                   << QByteArray(21, 'x');
        // Made by another program: 45 bytes, in gzip with the name "a.bin".
        const QByteArray thrice = QByteArray("abcabcabcabcabd").repeated(3);
        QTest::newRow("zlib") << block("78DA4B4C4A4E44A09444BC5C008C84113E") << "zlib" << thrice;
        QTest::newRow("gzip") << block("1F8B08080000000002FF612E62696E004B4C4A4E44A09444BC5C00284D72602D000000") << "gzip"
                              << thrice;
    }

    void decodesWrittenOutBlocks()
    {
        QFETCH(QByteArray, packed);
        QFETCH(QString, kind);
        QFETCH(QByteArray, content);
        const QByteArray image = QByteArray(5, '\x55') + packed + QByteArray(3, '\x55');
        const std::optional<CompressedBlock> found = blockAt(image, 5);
        QVERIFY(found);
        QCOMPARE(blockKindName(found->kind), kind);
        QCOMPARE(found->address, 5);
        QCOMPARE(found->packedSize, packed.size());
        QCOMPARE(found->unpackedSize, content.size());
        QCOMPARE(unpackedBlock(image, *found), content);
        QVERIFY(!blockAt(image, 4));
        // Without its last byte, the block does not decode to its end.
        QVERIFY(!blockAt(image.left(5 + packed.size() - 1), 5));
    }

    void refusesWhatDoesNotDecode_data()
    {
        QTest::addColumn<QByteArray>("packed");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("magic alone") << QByteArray("Yaz0");
        QTest::newRow("nothing in it") << block("59617A30 00000000 00000000 00000000 | 80 78");
        QTest::newRow("match before the beginning") << block("59617A30 00000004 00000000 00000000 | 80 78 1001");
        QTest::newRow("match beyond the end") << block("59617A30 00000003 00000000 00000000 | 80 78 1000");
        QTest::newRow("more than the input can hold") << block("59617A30 00010000 00000000 00000000 | 80 78 0000FF");
        QTest::newRow("a size of 31 bits") << block("59617A30 7FFFFFFF 00000000 00000000 | 80 78 0000FF");
        QTest::newRow("a size of 32 bits") << block("59617A30 FFFFFFFF 00000000 00000000 | 80 78 0000FF");
        QTest::newRow("tables in the header") << block("59617930 00000001 00000008 00000014 | 80000000 | 78");
        QTest::newRow("tables in another order") << block("59617930 00000001 00000015 00000014 | 80000000 | 78 00");
        QTest::newRow("tables behind the end") << block("59617930 00000001 00000014 00000040 | 80000000 | 78");
        QTest::newRow("tables far behind the end") << block("59617930 00000001 FFFFFFF0 FFFFFFFF | 80000000 | 78");
        QTest::newRow("bits that run into the links")
            << block("59617930 00000009 00000011 00000014 | FF000000 | 4142434445464748 49");
        QTest::newRow("links that run into the chunks") << block("4D494F30 00000004 00000014 00000015 | 80000000 | 00 7800");
        QTest::newRow("zlib with a wrong sum") << block("78DA4B4C4A4E44A09444BC5C008C84113F");
        QTest::newRow("gzip with a wrong sum") << block("1F8B08000000000002FF4B4C4A4E44A09444BC5C00284D72612D000000");
        QTest::newRow("zlib with a dictionary") << block("78F94B4C4A4E44A09444BC5C008C84113E");
        QTest::newRow("zlib of nothing") << block("789C030000000001");
    }

    void refusesWhatDoesNotDecode()
    {
        QFETCH(QByteArray, packed);
        QVERIFY(!blockAt(packed, 0));
        QVERIFY(!blockAt(packed, packed.size()));
        QVERIFY(!blockAt(packed, -1));
    }

    void workEndsDecoding()
    {
        const QByteArray content = blocks::mixedContent(20000, 3);
        for (const BlockKind kind : allBlockKinds) {
            const QByteArray packed = packedBlock(kind, content);
            qint64 enough = 100000;
            QVERIFY(blockAt(packed, 0, &enough));
            QVERIFY(enough > 0 && enough <= 100000 - packed.size() + 20);
            qint64 little = 100;
            QVERIFY(!blockAt(packed, 0, &little));
            QVERIFY(little <= 0);
        }
    }

    void packedContentComesBack_data() { addKinds(true); }
    void packedContentComesBack()
    {
        QFETCH(BlockKind, kind);
        for (int size : {1, 2, 3, 4, 17, 18, 19, 20, 272, 273, 274, 275, 4095, 4096, 4097, 4098, 4099, 4100, 9000}) {
            for (const QByteArray &content : {QByteArray(size, 'x'), blocks::mixedContent(size, quint32(size)),
                                              blocks::mixedContent(4097, 1).left(size / 2) + QByteArray(size - size / 2, '\0')}) {
                const QByteArray packed = packedBlock(kind, content);
                QVERIFY2(!packed.isEmpty(), qPrintable(QString::number(size)));
                if (isLz(kind))
                    QVERIFY(blocks::plainlyDecoded(kind, packed) == content);
                const std::optional<CompressedBlock> found = blockAt(packed + "abc", 0);
                QVERIFY(found && found->packedSize == packed.size() && found->kind == kind);
                QVERIFY(unpackedBlock(packed, *found) == content);
            }
        }
        QVERIFY(packedBlock(kind, QByteArray()).isEmpty());
        QVERIFY(packedBlock(kind, QByteArray(mostUnpackedBytes + 1, 'x')).isEmpty());
    }

    void isAsShortAsItGets_data() { addKinds(false); }
    void isAsShortAsItGets()
    {
        QFETCH(BlockKind, kind);
        for (quint32 seed = 0; seed < 5; ++seed) {
            const QByteArray content = blocks::mixedContent(700 + int(seed) * 37, seed);
            const int size = packedBlock(kind, content).size();
            const int lazy = blocks::lazySize(kind, content);
            QVERIFY2(size <= lazy, qPrintable(QStringLiteral("%1 against %2").arg(size).arg(lazy)));
            // Rounding the bits up to words adds less than four bytes.
            const int fewest = 16 + (fewestBits(kind, content) + 7) / 8;
            const bool isExact = kind == BlockKind::Yaz0;
            QVERIFY2(size >= fewest && size <= fewest + (isExact ? 0 : 4),
                     qPrintable(QStringLiteral("%1 against %2").arg(size).arg(fewest)));
        }
        // Where waiting one byte is not enough, the difference shows.
        QByteArray trap;
        for (QRandomGenerator random(99); trap.size() < 1500;)
            trap.append(char('a' + random.bounded(3)));
        QVERIFY(packedBlock(kind, trap).size() < blocks::lazySize(kind, trap));
    }

    void streamsAreShort_data()
    {
        QTest::addColumn<QByteArray>("content");
        QByteArray twoValues;
        for (QRandomGenerator random(1); twoValues.size() < 60000;)
            twoValues.append(char(random.bounded(2)));
        QByteArray counting;
        for (int i = 0; i < 50000; ++i)
            counting.append(char(i >> 8)).append(char(i));
        QTest::newRow("mixed") << blocks::mixedContent(60000, 3);
        QTest::newRow("two values") << twoValues;
        QTest::newRow("counting") << counting;
        QTest::newRow("zeros") << QByteArray(1000000, '\0');
    }
    void streamsAreShort()
    {
        QFETCH(QByteArray, content);
        // Qt's own compression is zlib's, which is greedy with lazy matching, with the size before it.
        constexpr int usualLevel = 6;
        constexpr int sizeBytes = 4;
        constexpr int gzipBytes = 12; // By which gzip's header and tail are longer.
        const int usual = qCompress(content, usualLevel).size() - sizeBytes;
        QVERIFY(packedBlock(BlockKind::Zlib, content).size() <= usual);
        QVERIFY(packedBlock(BlockKind::Gzip, content).size() <= usual + gzipBytes);
        if (QTest::currentDataTag() == QByteArray("mixed"))
            QVERIFY(packedBlock(BlockKind::Zlib, content).size() * 100 < qCompress(content, 9).size() * 97);
    }

    void matchesAreTheLongest()
    {
        QRandomGenerator random(5);
        for (int round = 0; round < 24; ++round) {
            QByteArray content;
            const int letters = 1 + random.bounded(3);
            for (int size = random.bounded(700); content.size() < size;)
                content.append(char('a' + random.bounded(letters)));
            const int most = round % 2 == 0 ? 18 : 273;
            const QVector<Match> matches = longestMatches(content, 0x1000, most);
            for (int i = 0; i < content.size(); ++i) {
                int distance = 0;
                QCOMPARE(matches.at(i).length, blocks::plainMatch(content, i, most, &distance));
                for (int k = 0; k < matches.at(i).length; ++k)
                    QCOMPARE(content.at(i + k), content.at(i + k - matches.at(i).distance));
            }
        }
    }

    void matchesStayInTheWindow()
    {
        const QByteArray piece = blocks::mixedContent(40, 7);
        for (const int gap : {0xFFF - 39, 0x1000 - 39, 0x1000 - 40, 0x1001 - 40}) {
            QByteArray noise;
            QRandomGenerator random(9);
            while (noise.size() < gap)
                noise.append(char(128 + random.bounded(128)));
            const QByteArray content = piece + noise + piece;
            const QVector<Match> matches = longestMatches(content, 0x1000, 273);
            const int distance = 40 + gap;
            QCOMPARE(matches.at(distance).distance == distance, distance <= 0x1000);
        }
    }

    void headersAreKept()
    {
        const QByteArray content = blocks::mixedContent(5000, 4);
        const QByteArray reserved = block("59617A30 00000001 01020304 05060708 | 80 78");
        QCOMPARE(packedBlock(BlockKind::Yaz0, content, reserved).mid(8, 8), reserved.mid(8, 8));
        const QByteArray named = block("1F8B081C5A5B5C5D0203 0200 4142 6E616D6500 6E6F746500");
        const QByteArray gzip = packedBlock(BlockKind::Gzip, content, named + QByteArray(20, '\0'));
        QVERIFY(gzip.startsWith(named));
        QVERIFY(packedBlock(BlockKind::Gzip, content).startsWith(block("1F8B08000000000002FF")));
        QVERIFY(packedBlock(BlockKind::Zlib, content, block("789C00")).startsWith(block("789C")));
        QVERIFY(packedBlock(BlockKind::Zlib, content, block("285300")).startsWith(block("2853")));
        QVERIFY(!packedBlock(BlockKind::Zlib, content, block("081D00")).isEmpty());
        QVERIFY(packedBlock(BlockKind::Zlib, content).startsWith(block("78DA")));
        // Cut-off headers are no reason to fail.
        for (int size = 0; size < named.size(); ++size)
            QVERIFY(!packedBlock(BlockKind::Gzip, content.left(20), named.left(size)).isEmpty());
        QVERIFY(
            !packedBlock(BlockKind::Gzip, content, block("1F8B0802000000000000 1234")).isEmpty()); // a wrong sum of the header
    }
};
}

QTEST_GUILESS_MAIN(CompressedBlockTest)
#include "tst_compressedblock.moc"
