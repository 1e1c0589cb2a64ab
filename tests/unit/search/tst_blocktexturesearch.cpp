// SPDX-License-Identifier: MIT
#include "search/blocktexturesearch.h"

#include "codec/texturemanipulator.h"
#include "search/compressedblocks.h"
#include "support/blocks.h"

#include <QImage>
#include <QTemporaryDir>
#include <QTest>

namespace
{
/// The hits by the plain way: unpack each block and search it from the front, each time from the end of the copy before.
QStringList plainHits(const QByteArray &image, const QVector<CompressedBlock> &blocks, const QStringList &files,
                      const QMap<QString, textureFormat> &formats, bool firstOnly)
{
    QStringList hits;
    for (int picture = 0; picture < files.size(); ++picture) {
        const QImage read(files.at(picture));
        bool found = false;
        for (const textureFormat &format : formats) {
            const QByteArray bytes = textureManipulator::generateData(read, format);
            for (int block = 0; block < blocks.size(); ++block) {
                const QByteArray content = unpackedBlock(image, blocks.at(block));
                for (int from = 0; !bytes.isEmpty() && !(firstOnly && found) && (from = content.indexOf(bytes, from)) >= 0;
                     from += bytes.size()) {
                    hits << QStringLiteral("%1 %2 %3 %4 %5x%6")
                                .arg(picture)
                                .arg(format.name)
                                .arg(block)
                                .arg(from)
                                .arg(read.width())
                                .arg(read.height());
                    found = true;
                }
            }
        }
    }
    return hits;
}

class BlockTextureSearchTest : public QObject
{
    Q_OBJECT

private slots:
    void agreesWithThePlainWay()
    {
        QTemporaryDir folder;
        const QMap<QString, textureFormat> all = textureFormats::getAsMap();
        QMap<QString, textureFormat> formats;
        for (const char *name : {"i8", "rgb5a1", "rgba32", "ia8"})
            formats.insert(name, all.value(name));
        QRandomGenerator random(2);
        QStringList files;
        QVector<QImage> pictures;
        for (int i = 0; i < 8; ++i) {
            QImage picture(4 + i, 5, QImage::Format_ARGB32);
            for (int pixel = 0; pixel < picture.width() * 5; ++pixel) // Every third is flat: its copies abound.
                picture.setPixel(pixel % picture.width(), pixel / picture.width(),
                                 i % 3 == 2 ? 0xFF000000U : random.generate() | 0xFF000000U);
            files << folder.filePath(QString::number(i) + ".png");
            QVERIFY(picture.save(files.last()));
            pictures.append(picture);
        }
        files << folder.filePath("none.png");
        QByteArray image(50, '\1');
        for (const BlockKind kind : allBlockKinds) {
            QByteArray content = blocks::mixedContent(300, quint32(kind));
            for (int i = 0; i < 6; ++i) {
                const QImage &picture = pictures.at(random.bounded(pictures.size()));
                content += textureManipulator::generateData(picture, formats.values().at(random.bounded(formats.size())));
                content += QByteArray(random.bounded(40), '\0');
            }
            image += packedBlock(kind, content) + QByteArray(3, '\1');
        }
        const QVector<CompressedBlock> found = findBlocks(image).blocks;
        QCOMPARE(found.size(), 5);
        for (const bool firstOnly : {false, true}) {
            QStringList hits;
            for (const BlockHit &hit : searchInBlocks(image, found, files, formats, firstOnly, nullptr))
                hits << QStringLiteral("%1 %2 %3 %4 %5x%6")
                            .arg(hit.picture)
                            .arg(hit.format)
                            .arg(hit.block)
                            .arg(hit.offset)
                            .arg(hit.width)
                            .arg(hit.height);
            QVERIFY(hits.size() >= (firstOnly ? 5 : 20));
            QCOMPARE(hits, plainHits(image, found, files, formats, firstOnly));
        }
        QVERIFY(searchInBlocks(image, {}, files, formats, false, nullptr).isEmpty());
    }
};
}

QTEST_GUILESS_MAIN(BlockTextureSearchTest)
#include "tst_blocktexturesearch.moc"
