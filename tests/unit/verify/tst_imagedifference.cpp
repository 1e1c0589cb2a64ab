// SPDX-License-Identifier: MIT
#include "support/transfer.h"
#include "verify/imagedifference.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTest>

namespace
{
ImageDifference compared(const QByteArray &before, const QByteArray &after)
{
    const QList<fileTreeFile *> all = fileTreeContainer().allFiles(currentROM.root);
    currentROM.data = before;
    const MeasuredImage one = measuredImage(all);
    currentROM.data = after;
    return differenceBetween(one, measuredImage(all), all);
}

QString textOf(const ImageDifference &difference)
{
    QStringList parts;
    for (const ChangedEntry &entry : difference.entries)
        parts << QStringLiteral("%1:%2/%3").arg(entry.place).arg(entry.bytes).arg(entry.paletteBytes);
    for (const ChangedRange &range : difference.outside)
        parts << QStringLiteral("%1-%2:%3").arg(range.span.begin).arg(range.span.end).arg(range.bytes);
    return parts.join(' ');
}
}

class ImageDifferenceTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void sameImages();
    void entriesPalettesAndTheRest();
    void rangesAreJoinedAndCounted();
    void oneImageIsLonger();
    void jpegOfAnotherLength();
    void likeCountingByteByByte();
    void rangesAreBounded();
    void manyEntriesOverTheSameBytesAreQuick();
};

void ImageDifferenceTest::init()
{
    currentROM.root->files.clear();
    currentROM.root->directories.clear();
}

void ImageDifferenceTest::sameImages()
{
    newTexture(currentROM.root, "a", 0, "i8");
    const ImageDifference none = compared(QByteArray(1000, 'x'), QByteArray(1000, 'x'));
    QCOMPARE(none.bytes, 0);
    QVERIFY(none.entries.isEmpty() && none.outside.isEmpty());
    QCOMPARE(compared(QByteArray(), QByteArray()).bytes, 0);
}

void ImageDifferenceTest::entriesPalettesAndTheRest()
{
    newTexture(currentROM.root, "same", 0x100, "i8", 16, 1);
    newTexture(currentROM.root, "pixels", 0x110, "i8", 16, 1);
    newTexture(currentROM.root, "palette", 0x120, "ci4", 16, 1, 0x200);
    newTexture(currentROM.root, "both", 0x110, "ci4", 2, 1, 0x200);
    newTexture(currentROM.root, "unknown", 0x110, "rgb565", 16, 1);
    QByteArray after(0x1000, '\0');
    after[0x110] = 1;
    after[0x11F] = 1;
    after[0x21F] = 1; // The palette's last byte.
    after[0x220] = 1;
    const ImageDifference difference = compared(QByteArray(0x1000, '\0'), after);
    QCOMPARE(textOf(difference), QStringLiteral("1:2/0 2:0/1 3:1/1 544-545:1"));
    QCOMPARE(difference.bytes, 4);
    QCOMPARE(difference.outsideBytes, 1);
    QCOMPARE(difference.outsideCount, 1);
}

void ImageDifferenceTest::rangesAreJoinedAndCounted()
{
    QByteArray after(1000, '\0');
    for (const int at : {10, 26, 43, 300, 999})
        after[at] = 1;
    // 15 equal bytes lie between 10 and 26, and 16 between 26 and 43.
    QCOMPARE(textOf(compared(QByteArray(1000, '\0'), after)), QStringLiteral("10-27:2 43-44:1 300-301:1 999-1000:1"));
    newTexture(currentROM.root, "between", 20, "i8", 1, 1);
    QCOMPARE(textOf(compared(QByteArray(1000, '\0'), after)), QStringLiteral("10-11:1 26-27:1 43-44:1 300-301:1 999-1000:1"));
}

void ImageDifferenceTest::oneImageIsLonger()
{
    newTexture(currentROM.root, "a", 90, "i8", 20, 1);
    newTexture(currentROM.root, "outside", 5000, "i8", 20, 1);
    newTexture(currentROM.root, "negative", -10, "i8", 20, 1);
    QCOMPARE(textOf(compared(QByteArray(100, 'x'), QByteArray(130, 'x'))), QStringLiteral("0:10/0 110-130:20"));
    QCOMPARE(textOf(compared(QByteArray(130, 'x'), QByteArray(100, 'x'))), QStringLiteral("0:10/0 110-130:20"));
}

void ImageDifferenceTest::jpegOfAnotherLength()
{
    newTexture(currentROM.root, "a", 0x10, "jpeg");
    const QByteArray image(0x100, '\0');
    QByteArray before = image;
    before.replace(0x10, 10, QByteArray::fromHex("FFD8FFDB00000000FFD9"));
    QByteArray after = image;
    after.replace(0x10, 12, QByteArray::fromHex("FFD8FFDB000000000000FFD9"));
    QCOMPARE(textOf(compared(before, after)), QStringLiteral("0:4/0"));
    QCOMPARE(textOf(compared(after, before)), QStringLiteral("0:4/0"));
}

void ImageDifferenceTest::likeCountingByteByByte()
{
    QRandomGenerator random(4);
    for (int round = 0; round < 200; ++round) {
        currentROM.root->files.clear();
        QByteArray before(random.bounded(2000), '\0');
        QByteArray after(random.bounded(4) == 0 ? random.bounded(2000) : before.size(), '\0');
        for (int i = random.bounded(20); i > 0 && !after.isEmpty(); --i)
            after[random.bounded(after.size())] = 1;
        const int size = qMax(before.size(), after.size());
        QVector<bool> differs(size);
        qint64 bytes = 0;
        for (int i = 0; i < size; ++i) {
            differs[i] = i >= qMin(before.size(), after.size()) || before.at(i) != after.at(i);
            bytes += differs.at(i);
        }
        QVector<bool> covered(size);
        QStringList expected;
        for (int i = 0; i < 5; ++i) {
            const int address = random.bounded(2100);
            const int width = random.bounded(1, 900);
            newTexture(currentROM.root, QString::number(i), address, "i8", width, 1);
            int count = 0;
            for (int at = address; at < qMin(size, address + width); ++at) {
                covered[at] = true;
                count += differs.at(at);
            }
            if (count > 0)
                expected << QStringLiteral("%1:%2").arg(i).arg(count);
        }
        qint64 outside = 0;
        for (int i = 0; i < size; ++i)
            outside += differs.at(i) && !covered.at(i);
        const ImageDifference difference = compared(before, after);
        QStringList found;
        for (const ChangedEntry &entry : difference.entries)
            found << QStringLiteral("%1:%2").arg(entry.place).arg(entry.bytes);
        QCOMPARE(found, expected);
        QCOMPARE(difference.bytes, bytes);
        QCOMPARE(difference.outsideBytes, outside);
    }
}

void ImageDifferenceTest::rangesAreBounded()
{
    QByteArray after(20 * (mostChangedRanges + 5), '\0');
    for (int i = 0; i < after.size(); i += 20)
        after[i] = 1;
    const ImageDifference difference = compared(QByteArray(after.size(), '\0'), after);
    QCOMPARE(difference.outside.size(), mostChangedRanges);
    QCOMPARE(difference.outsideCount, mostChangedRanges + 5);
    QCOMPARE(difference.outsideBytes, mostChangedRanges + 5);
}

void ImageDifferenceTest::manyEntriesOverTheSameBytesAreQuick()
{
    constexpr int size = 8 * 1024 * 1024;
    addManyTextures(currentROM.root, 20000, 1, 4096, 1024);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(compared(QByteArray(size, '\0'), QByteArray(size, '\1')).entries.size(), 20000);
    QVERIFY2(timer.elapsed() < 10000, qPrintable(QString::number(timer.elapsed())));
}

QTEST_GUILESS_MAIN(ImageDifferenceTest)
#include "tst_imagedifference.moc"
