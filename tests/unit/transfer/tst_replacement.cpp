// SPDX-License-Identifier: MIT
#include "support/images.h"
#include "support/transfer.h"
#include "transfer/replacement.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <limits>

namespace
{
SizeAnswer mustNotAsk(const QSize &, const QSize &)
{
    QTest::qFail("asked about the size", __FILE__, __LINE__);
    return SizeAnswer::Abort;
}

SizeQuestion answering(SizeAnswer answer)
{
    return [answer](const QSize &, const QSize &) { return answer; };
}

QStringList namesOf(const QList<fileTreeFile *> &textures)
{
    QStringList names;
    for (const fileTreeFile *texture : textures)
        names << texture->name;
    return names;
}
}

class ReplacementTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void fittingPictureGoesWithoutAQuestion();
    void asksWithBothSizes();
    void abortHandsNothingOver();
    void ignoringTheAspectRatioStretches();
    void keepingTheAspectRatioPads();
    void undecodablePictureIsAskedAboutAsZeroByZero();
    void hugeTextureGivesNoPicture();
    void jpegTakesAnySize_data();
    void jpegTakesAnySize();
    void paletteFollowsThePixels_data();
    void paletteFollowsThePixels();
    void paletteOfAPictureWithoutColourTable();
    void paletteIsHandedOverWhenTheFileIsUnreadable();
    void unknownFormatHasNoPalette();
    void touchingTextures_data();
    void touchingTextures();
    void touchingTexturesInTableOrder();
    void touchingRangesWrapAt32Bits();
    void touchingAmong100000IsQuick();

private:
    QString saved(const QImage &picture) const
    {
        const QString path = m_folder.filePath("picture.png");
        picture.save(path, "PNG");
        return path;
    }

    QTemporaryDir m_folder;
    QList<HandedOver> m_handedOver;
    KeptLog m_log;
};

void ReplacementTest::init()
{
    loadIntoCurrentROM(cartridgeImage(0x10000));
    m_handedOver.clear();
    m_log = KeptLog();
}

void ReplacementTest::fittingPictureGoesWithoutAQuestion()
{
    fileTreeDirectory *folder = newFolder(currentROM.root, "A", 0x100);
    const fileTreeFile *texture = newTexture(folder, "grass", 0x20);
    const QImage picture = plainPicture(4, 4, qRgba(1, 2, 3, 4));
    const QString path = saved(picture);
    QCOMPARE(::replaceTexture(*texture, path, mustNotAsk, keepIn(&m_handedOver), &m_log), ReplaceOutcome::Replaced);
    QCOMPARE(m_handedOver.size(), 1);
    QCOMPARE(m_handedOver.at(0).picture, picture);
    QCOMPARE(m_handedOver.at(0).address, 0x120);
    QCOMPARE(m_handedOver.at(0).format, QStringLiteral("rgba32"));
    QCOMPARE(m_handedOver.at(0).rawPicture, bytesOfFile(path));
    QVERIFY(m_log.lines.isEmpty());
    QVERIFY(m_log.statuses.isEmpty());
}

void ReplacementTest::asksWithBothSizes()
{
    const fileTreeFile *texture = newTexture(currentROM.root, "grass", 0, "rgba32", 8, 2);
    QSize asked;
    QSize of;
    ::replaceTexture(
        *texture, saved(plainPicture(2, 8, 0)),
        [&](const QSize &picture, const QSize &size) {
            asked = picture;
            of = size;
            return SizeAnswer::Abort;
        },
        keepIn(&m_handedOver), &m_log);
    QCOMPARE(asked, QSize(2, 8));
    QCOMPARE(of, QSize(8, 2));
}

void ReplacementTest::abortHandsNothingOver()
{
    const fileTreeFile *texture = newTexture(currentROM.root, "grass", 0, "ci8");
    QCOMPARE(
        ::replaceTexture(*texture, saved(plainPicture(2, 8, 0)), answering(SizeAnswer::Abort), keepIn(&m_handedOver), &m_log),
        ReplaceOutcome::Aborted);
    QVERIFY(m_handedOver.isEmpty());
    QVERIFY(m_log.lines.isEmpty());
    QVERIFY(m_log.statuses.isEmpty());
}

void ReplacementTest::ignoringTheAspectRatioStretches()
{
    const fileTreeFile *texture = newTexture(currentROM.root, "grass", 0, "rgba32", 32, 32);
    QImage picture = plainPicture(64, 32, qRgba(255, 0, 0, 255));
    for (int y = 0; y < 32; ++y) {
        for (int x = 32; x < 64; ++x)
            picture.setPixel(x, y, qRgba(0, 0, 255, 255));
    }
    ::replaceTexture(*texture, saved(picture), answering(SizeAnswer::IgnoreAspectRatio), keepIn(&m_handedOver), &m_log);
    const QImage stretched = m_handedOver.at(0).picture;
    QCOMPARE(stretched.size(), QSize(32, 32));
    QCOMPARE(stretched.pixel(0, 0), qRgba(255, 0, 0, 255));
    QCOMPARE(stretched.pixel(0, 31), qRgba(255, 0, 0, 255));
    QCOMPARE(stretched.pixel(31, 31), qRgba(0, 0, 255, 255));
    QCOMPARE(stretched, picture.scaled(32, 32, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    QVERIFY(m_log.lines.isEmpty());
}

void ReplacementTest::keepingTheAspectRatioPads()
{
    const fileTreeFile *texture = newTexture(currentROM.root, "grass", 0, "rgba32", 32, 24);
    const QImage picture = plainPicture(64, 32, qRgba(255, 0, 0, 255));
    ::replaceTexture(*texture, saved(picture), answering(SizeAnswer::KeepAspectRatio), keepIn(&m_handedOver), &m_log);
    const QImage padded = m_handedOver.at(0).picture;
    QCOMPARE(padded.size(), QSize(32, 24));
    for (int y = 0; y < 24; ++y) {
        for (int x = 0; x < 32; ++x)
            QCOMPARE(padded.pixel(x, y), y < 16 ? qRgba(255, 0, 0, 255) : qRgba(0, 0, 0, 0));
    }
    QCOMPARE(m_log.lines, QStringList({"24  -  32"}));
}

void ReplacementTest::undecodablePictureIsAskedAboutAsZeroByZero()
{
    const fileTreeFile *texture = newTexture(currentROM.root, "grass", 0);
    const QString path = m_folder.filePath("broken.png");
    QVERIFY(writeBytes(path, "no picture"));
    QSize asked(1, 1);
    const SizeQuestion ask = [&](const QSize &picture, const QSize &) {
        asked = picture;
        return SizeAnswer::IgnoreAspectRatio;
    };
    QCOMPARE(::replaceTexture(*texture, path, ask, keepIn(&m_handedOver), &m_log), ReplaceOutcome::Replaced);
    QCOMPARE(asked, QSize(0, 0));
    QVERIFY(m_handedOver.at(0).picture.isNull());
}

void ReplacementTest::hugeTextureGivesNoPicture()
{
    const QImage picture = plainPicture(2, 2, 0);
    QVERIFY(fitPicture(picture, QSize(60000, 60000), SizeAnswer::IgnoreAspectRatio).isNull());
    QVERIFY(fitPicture(picture, QSize(60000, 60000), SizeAnswer::KeepAspectRatio).isNull());
    QVERIFY(fitPicture(picture, QSize(0, 0), SizeAnswer::KeepAspectRatio).isNull());
    QVERIFY(fitPicture(picture, QSize(-5, -7), SizeAnswer::IgnoreAspectRatio).isNull());
    QVERIFY(fitPicture(QImage(), QSize(4, 4), SizeAnswer::KeepAspectRatio).isNull());
}

void ReplacementTest::jpegTakesAnySize_data()
{
    QTest::addColumn<QString>("format");
    QTest::newRow("jpeg") << QStringLiteral("jpeg");
    QTest::newRow("capitals") << QStringLiteral("JPEG");
}

void ReplacementTest::jpegTakesAnySize()
{
    QFETCH(QString, format);
    const fileTreeFile *texture = newTexture(currentROM.root, "photo", 0x40, format, 4, 4);
    const QString path = m_folder.filePath("photo.jpeg");
    QVERIFY(writeBytes(path, jpegBytes(20, 10)));
    QCOMPARE(::replaceTexture(*texture, path, mustNotAsk, keepIn(&m_handedOver), &m_log), ReplaceOutcome::Replaced);
    QCOMPARE(m_handedOver.size(), 1);
    QCOMPARE(m_handedOver.at(0).format, format);
    QCOMPARE(m_handedOver.at(0).rawPicture, jpegBytes(20, 10));
}

void ReplacementTest::paletteFollowsThePixels_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("count");
    QTest::newRow("ci4") << QStringLiteral("ci4") << 16;
    QTest::newRow("ci8") << QStringLiteral("ci8") << 256;
}

void ReplacementTest::paletteFollowsThePixels()
{
    QFETCH(QString, format);
    QFETCH(int, count);
    fileTreeDirectory *outer = newFolder(currentROM.root, "A", 0x100);
    fileTreeDirectory *folder = newFolder(outer, "B", 0x40);
    const fileTreeFile *texture = newTexture(folder, "grass", 0x20, format, 2, 1, 0x800);
    QImage picture(2, 1, QImage::Format_Indexed8);
    picture.setColorTable({qRgba(8, 16, 24, 255), qRgba(248, 0, 0, 255), qRgba(1, 2, 3, 77)});
    picture.setPixel(0, 0, 1);
    picture.setPixel(1, 0, 2);
    ::replaceTexture(*texture, saved(picture), mustNotAsk, keepIn(&m_handedOver), &m_log);
    QCOMPARE(m_handedOver.size(), 2);
    QCOMPARE(m_handedOver.at(0).address, 0x160);
    QCOMPARE(m_handedOver.at(0).format, format);
    QCOMPARE(m_handedOver.at(1).address, 0x840); // Only the folder that lists the texture counts.
    QCOMPARE(m_handedOver.at(1).format, QStringLiteral("rgb5a1"));
    QVERIFY(m_handedOver.at(1).rawPicture.isEmpty());
    const QImage palette = m_handedOver.at(1).picture;
    QCOMPARE(palette.size(), QSize(count, 1));
    QCOMPARE(palette.format(), QImage::Format_ARGB32);
    QCOMPARE(palette.pixel(0, 0), qRgba(8, 16, 24, 255));
    QCOMPARE(palette.pixel(1, 0), qRgba(248, 0, 0, 255));
    QCOMPARE(palette.pixel(2, 0), qRgba(1, 2, 3, 77));
    for (int i = 3; i < count; ++i)
        QCOMPARE(palette.pixel(i, 0), qRgba(0, 0, 0, 0));
}

void ReplacementTest::paletteOfAPictureWithoutColourTable()
{
    const QImage palette = paletteOfPicture(plainPicture(2, 2, qRgb(9, 9, 9)), textureFormats::ci4);
    QCOMPARE(palette.size(), QSize(16, 1));
    for (int i = 0; i < 16; ++i)
        QCOMPARE(palette.pixel(i, 0), qRgba(0, 0, 0, 0));
    QVERIFY(paletteOfPicture(plainPicture(2, 2, 0), textureFormats::i4).isNull());
}

void ReplacementTest::paletteIsHandedOverWhenTheFileIsUnreadable()
{
    const fileTreeFile *texture = newTexture(currentROM.root, "grass", 0, "ci4", 2, 1, 0x300);
    QCOMPARE(::replaceTexture(*texture, m_folder.filePath("absent.png"), answering(SizeAnswer::IgnoreAspectRatio),
                              keepIn(&m_handedOver), &m_log),
             ReplaceOutcome::Unreadable);
    QCOMPARE(m_log.statuses, QStringList({"Could not read image file"}));
    QCOMPARE(m_log.durations, QList<int>({2000}));
    QCOMPARE(m_handedOver.size(), 1);
    QCOMPARE(m_handedOver.at(0).address, 0x300);
    QCOMPARE(m_handedOver.at(0).picture.size(), QSize(16, 1));
}

void ReplacementTest::unknownFormatHasNoPalette()
{
    const fileTreeFile *texture = newTexture(currentROM.root, "grass", 0, "CI8", 2, 1);
    ::replaceTexture(*texture, saved(plainPicture(2, 1, 0)), mustNotAsk, keepIn(&m_handedOver), &m_log);
    QCOMPARE(m_handedOver.size(), 1);
    QCOMPARE(m_handedOver.at(0).format, QStringLiteral("CI8"));
}

void ReplacementTest::touchingTextures_data()
{
    // The replaced texture covers 0x1000 to 0x103F; the other is one of i8 with 16 bytes a row.
    QTest::addColumn<int>("address");
    QTest::addColumn<int>("rows");
    QTest::addColumn<bool>("touches");
    QTest::newRow("ends one byte earlier") << 0xFEF << 1 << false;
    QTest::newRow("ends where it begins") << 0xFF0 << 1 << true;
    QTest::newRow("reaches in") << 0xFF1 << 1 << true;
    QTest::newRow("inside") << 0x1010 << 1 << true;
    QTest::newRow("same range") << 0x1000 << 4 << true;
    QTest::newRow("around") << 0xF00 << 64 << true;
    QTest::newRow("last byte") << 0x103F << 1 << true;
    QTest::newRow("begins where it ends") << 0x1040 << 1 << true;
    QTest::newRow("begins one byte later") << 0x1041 << 1 << false;
    QTest::newRow("empty at the start") << 0x1000 << 0 << true;
    QTest::newRow("empty at the end") << 0x1040 << 0 << false;
    QTest::newRow("far away") << 0x8000 << 4 << false;
}

void ReplacementTest::touchingTextures()
{
    QFETCH(int, address);
    QFETCH(int, rows);
    QFETCH(bool, touches);
    const fileTreeFile *replaced = newTexture(currentROM.root, "replaced", 0x1000, "rgba32", 4, 4);
    newTexture(currentROM.root, "other", address, "i8", 16, rows);
    QCOMPARE(namesOf(::touchingTextures(currentROM.root, *replaced)),
             touches ? QStringList({"replaced", "other"}) : QStringList({"replaced"}));
}

void ReplacementTest::touchingTexturesInTableOrder()
{
    fileTreeDirectory *first = newFolder(currentROM.root, "A", 0x100);
    fileTreeDirectory *nested = newFolder(first, "B", 0x100);
    fileTreeDirectory *second = newFolder(currentROM.root, "C", 0x200);
    newTexture(second, "last", 0x10);
    newTexture(nested, "third", 8);
    newTexture(first, "second", 0x108);
    newTexture(currentROM.root, "first", 0x208);
    newTexture(currentROM.root, "elsewhere", 0x1000);
    const fileTreeFile *replaced = newTexture(nested, "self", 0);
    QCOMPARE(namesOf(::touchingTextures(currentROM.root, *replaced)), QStringList({"first", "second", "third", "self", "last"}));
}

void ReplacementTest::touchingRangesWrapAt32Bits()
{
    const fileTreeFile *replaced = newTexture(currentROM.root, "replaced", std::numeric_limits<int>::max() - 1, "i8", 16, 1);
    newTexture(currentROM.root, "at the start", 0, "i8", 16, 1);
    newTexture(currentROM.root, "at the lowest", std::numeric_limits<int>::min() + 14, "i8", 16, 1);
    // The end wraps to below the start, so nothing lies in the range, itself least of all, but an entry may hold that end.
    QCOMPARE(namesOf(::touchingTextures(currentROM.root, *replaced)), QStringList({"at the lowest"}));
    replaced = newTexture(currentROM.root, "all", std::numeric_limits<int>::min(), "i8", std::numeric_limits<int>::max(), 1);
    QVERIFY(namesOf(::touchingTextures(currentROM.root, *replaced)).contains("at the lowest"));
    QVERIFY(!namesOf(::touchingTextures(currentROM.root, *replaced)).contains("at the start"));
}

void ReplacementTest::touchingAmong100000IsQuick()
{
    fileTreeDirectory *folder = newFolder(currentROM.root, "A");
    addManyTextures(folder, 100000, 64, 8, 8);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(namesOf(::touchingTextures(currentROM.root, *folder->files.at(50000))), QStringList({"49999", "50000", "50001"}));
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
}

QTEST_GUILESS_MAIN(ReplacementTest)
#include "tst_replacement.moc"
