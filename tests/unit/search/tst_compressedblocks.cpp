// SPDX-License-Identifier: MIT
#include "search/compressedblocks.h"

#include "base/progress.h"
#include "support/blocks.h"

#include <QTest>

namespace
{
QByteArray noise(int size, quint32 seed)
{
    QRandomGenerator random(seed);
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    return bytes;
}

QString described(const CompressedBlock &block)
{
    return QStringLiteral("%1 %2 %3 %4")
        .arg(blockKindName(block.kind))
        .arg(block.address)
        .arg(block.packedSize)
        .arg(block.unpackedSize);
}

class CompressedBlocksTest : public QObject
{
    Q_OBJECT

private slots:
    void findsAllKindsAtAnyAddress()
    {
        QByteArray image = noise(3001, 1);
        QStringList expected;
        QVector<QByteArray> contents;
        for (const BlockKind kind : allBlockKinds) {
            for (int round = 0; round < 4; ++round) {
                contents.append(blocks::mixedContent(500 + 777 * round, quint32(round)));
                const QByteArray packed = packedBlock(kind, contents.last());
                expected << QStringLiteral("%1 %2 %3 %4")
                                .arg(blockKindName(kind))
                                .arg(image.size())
                                .arg(packed.size())
                                .arg(contents.last().size());
                image += packed;
                if (round != 2) // Once two blocks follow each other directly.
                    image += noise(round * 5 + 1, quint32(round));
            }
        }
        const BlockList list = findBlocks(image);
        QStringList found;
        for (const CompressedBlock &block : list.blocks)
            found << described(block);
        QCOMPARE(found, expected);
        QCOMPARE(list.searchedUpTo, image.size());
        for (int i = 0; i < contents.size(); ++i)
            QVERIFY(unpackedBlock(image, list.blocks.at(i)) == contents.at(i));
    }

    void smallImages()
    {
        for (int size = 0; size < 20; ++size) {
            QCOMPARE(findBlocks(QByteArray(size, 'Y')).blocks.size(), 0);
            QCOMPARE(findBlocks(QByteArray(size, 'Y')).searchedUpTo, size);
        }
        const QByteArray alone = packedBlock(BlockKind::Yay0, "abc");
        QCOMPARE(findBlocks(alone).blocks.size(), 1);
    }

    /// What lies inside a block is part of it, also when it looks like a block.
    void blocksInsideBlocksAreContent()
    {
        const QByteArray inner = packedBlock(BlockKind::Yaz0, noise(300, 5));
        const QByteArray outer = packedBlock(BlockKind::Mio0, noise(50, 6) + inner + noise(50, 7));
        QVERIFY(outer.contains(inner.left(8)));
        const BlockList list = findBlocks(QByteArray(7, '\0') + outer + inner);
        QCOMPARE(list.blocks.size(), 2);
        QCOMPARE(list.blocks.at(0).address, 7);
        QCOMPARE(list.blocks.at(1).address, 7 + outer.size());
    }

    void noiseHasNoBlocks()
    {
        const BlockList list = findBlocks(noise(2000000, 2));
        QCOMPARE(list.blocks.size(), 0);
        QCOMPARE(list.searchedUpTo, 2000000);
    }

    /// Headers that lead far and to nothing: the same bytes are never decoded again and again without an end.
    void falseHeadersCostLittle()
    {
        // Each says that it is nearly 16 MiB large. The bytes that tell eight literals are nine apart, and so are those of every
        // other header: all of them decode up to the image's end, which is too near.
        const QByteArray header = QByteArray("Yaz0") + QByteArray::fromHex("00FFFFFF") + QByteArray(10, '\xFF');
        QByteArray image = header.repeated(20000) + QByteArray(4000000, '\xFF');
        const BlockList list = findBlocks(image);
        QCOMPARE(list.blocks.size(), 0);
        QVERIFY(list.searchedUpTo < 20000 * header.size());
        QVERIFY(list.searchedUpTo > 0);
        // A few of them are no reason to give up.
        const QByteArray packed = packedBlock(BlockKind::Yay0, blocks::mixedContent(1000, 3));
        image = header.repeated(5) + QByteArray(300000, '\xFF') + packed;
        QCOMPARE(findBlocks(image).blocks.size(), 1);
        QCOMPARE(findBlocks(image).searchedUpTo, image.size());
    }

    void canBeCancelled()
    {
        class Impatient : public Progress
        {
        public:
            bool cancelled() override { return ++asked > 2; }
            void setValue(int value) override { last = value; }
            int asked = 0;
            int last = 0;
        } progress;
        const QByteArray image(8000000, '\0');
        const BlockList list = findBlocks(image, &progress);
        QVERIFY(list.searchedUpTo < image.size());
        QCOMPARE(progress.asked, 3);
        QVERIFY(progress.last > 0);
    }
};
}

QTEST_GUILESS_MAIN(CompressedBlocksTest)
#include "tst_compressedblocks.moc"
