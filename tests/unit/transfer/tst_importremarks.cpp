// SPDX-License-Identifier: MIT
// What imports have to say beside what they do: what a picture loses, and what is left out.
#include "base/nearestname.h"
#include "support/images.h"
#include "support/pictures.h"
#include "support/transfer.h"
#include "transfer/folderimport.h"
#include "transfer/importremarks.h"
#include "transfer/jpegcheck.h"
#include "transfer/replacement.h"
#include "transfer/texturepack.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

namespace
{
/// A picture of one row.
QImage row(const QVector<QRgb> &pixels)
{
    QImage picture(pixels.size(), 1, QImage::Format_ARGB32);
    for (int x = 0; x < pixels.size(); ++x)
        picture.setPixel(x, 0, pixels.at(x));
    return picture;
}

/// A JPEG's start and end, \a size bytes in all.
QByteArray jpegOf(int size)
{
    return QByteArray::fromHex("FFD8FFDB") + QByteArray(size - 6, '\0') + QByteArray::fromHex("FFD9");
}
}

class ImportRemarksTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void tellsWhatEncodingDrops_data();
    void tellsWhatEncodingDrops();
    void tellsOfIndicesThatDoNotFit();
    void tellsWhatReducingDrops();
    void tellsWhatTheNearestColoursAre();
    void tellsOfAnotherColourTable();
    void tellsWhoseColoursChange();
    void jpegsAreChecked_data();
    void jpegsAreChecked();
    void jpegNamesWhatItRunsOver();
    void jpegRules();
    void foldersTellOfPicturesWithoutTexture();
    void foldersTellOfLinks();
    void foldersRefuseSpoiltJpegs();
    void foldersKeepTexturesWithoutPalette();
    void manyPicturesWithoutTextureAreQuick();
    void packsTellWhatIsLeftOut();
    void packsMapToThePresentPalette();
    void packsRefuseSpoiltJpegs();
    void nearestName_data();
    void nearestName();
    void longListsAreCut();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    void save(const QString &name, const QImage &picture) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        QVERIFY(picture.save(path(name), "PNG"));
    }
    void importFolder(JpegRule rule = JpegRule::Refuse)
    {
        Progress progress;
        importPictureFolder(m_folder->path(), currentROM.root, keepIn(&m_handedOver), &progress, &m_log, &m_report, rule);
    }
    void importPack(JpegRule rule = JpegRule::Refuse)
    {
        ::importPack(m_folder->path(), currentROM.root, currentROM.data, keepIn(&m_handedOver), &m_log, rule);
        m_log.left.sort(); // The file system's order is any.
    }

    QScopedPointer<QTemporaryDir> m_folder;
    QList<HandedOver> m_handedOver;
    KeptLog m_log;
    QString m_report;
};

void ImportRemarksTest::init()
{
    m_folder.reset(new QTemporaryDir);
    loadIntoCurrentROM(QByteArray(0x10000, '\0'));
    m_handedOver.clear();
    m_log = KeptLog();
    m_report.clear();
}

void ImportRemarksTest::tellsWhatEncodingDrops_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QVector<QRgb>>("pixels");
    QTest::addColumn<QStringList>("warnings");
    const QVector<QRgb> alphas {qRgba(8, 8, 8, 0), qRgba(8, 8, 8, 1), qRgba(8, 8, 8, 128), qRgba(8, 8, 8, 254), qRgb(8, 8, 8)};
    const QVector<QRgb> nearly {qRgb(16, 16, 16), qRgb(17, 17, 17), qRgb(18, 18, 18)};
    QTest::newRow("rgba32") << "rgba32" << alphas << QStringList();
    QTest::newRow("rgb5a1") << "rgb5a1" << alphas << QStringList {"3 pixels of partial alpha become clear in rgb5a1"};
    QTest::newRow("ia4") << "ia4" << alphas
                         << QStringList {"1 pixel of partial alpha become clear in ia4",
                                         "2 pixels of partial alpha become opaque in ia4"};
    QTest::newRow("ia8") << "ia8" << alphas << QStringList {"1 pixel of partial alpha become clear in ia8"};
    QTest::newRow("ia16") << "ia16" << alphas << QStringList();
    QTest::newRow("i8") << "i8" << alphas << QStringList {"4 pixels lose their alpha; i8 has none of its own"};
    QTest::newRow("i8 as extracted") << "i8" << QVector<QRgb> {qRgba(8, 8, 8, 8), qRgba(200, 200, 200, 200)} << QStringList();
    QTest::newRow("i4 as extracted") << "i4" << QVector<QRgb> {qRgba(17, 17, 17, 17), qRgba(0, 0, 0, 0)} << QStringList();
    QTest::newRow("five bits") << "rgb5a1" << nearly << QStringList {"3 colours become 1 in rgb5a1"};
    QTest::newRow("all of eight bits") << "i8" << nearly << QStringList();
    QTest::newRow("four bits") << "ia8" << nearly << QStringList {"3 colours become 2 in ia8"};
    QTest::newRow("colours") << "i8" << QVector<QRgb> {qRgb(1, 2, 1), qRgb(1, 1, 2), qRgb(3, 3, 3)}
                             << QStringList {"2 pixels are not grey; i8 keeps only the red channel"};
    QTest::newRow("jpeg") << "jpeg" << alphas << QStringList();
}

void ImportRemarksTest::tellsWhatEncodingDrops()
{
    QFETCH(QString, format);
    QFETCH(QVector<QRgb>, pixels);
    QFETCH(QStringList, warnings);
    const QString file = QStringLiteral("in/a.png");
    const fileTreeFile *texture = newTexture(currentROM.root, "a", 0, format);
    ImportRemarks(file, *texture, &m_log).onEncoding(row(pixels), textureFormats::getAsMap().value(format));
    for (QString &warning : warnings)
        warning.prepend("in/a.png: ");
    QCOMPARE(m_log.warnings, warnings);
}

void ImportRemarksTest::tellsOfIndicesThatDoNotFit()
{
    newTexture(currentROM.root, "a", 0x100, "ci4", 2, 1, 0x200);
    QImage picture(2, 1, QImage::Format_Indexed8);
    picture.setColorTable(QVector<QRgb>(20, qRgb(8, 8, 8)));
    picture.fill(16);
    save("a.png", picture);
    ::replaceTexture(*currentROM.root->files.first(), path("a.png"), {}, keepIn(&m_handedOver), &m_log);
    QCOMPARE(m_log.warnings, QStringList {path("a.png") + ": 2 pixels have a colour index above 15, which ci4 cannot hold"});
}

void ImportRemarksTest::tellsWhatReducingDrops()
{
    fileTreeFile *texture = newTexture(currentROM.root, "a", 0x100, "ci4", 18, 1, 0x200);
    QVector<QRgb> pixels {qRgba(1, 1, 1, 200)};
    for (int i = 0; i < 17; ++i)
        pixels << qRgb(8 * i, 0, 0);
    save("a.png", row(pixels));
    ::replaceTexture(*texture, path("a.png"), {}, keepIn(&m_handedOver), &m_log);
    QCOMPARE(m_log.warnings.size(), 2);
    QCOMPARE(m_log.warnings.at(0), path("a.png") + ": 1 pixel of partial alpha become clear in ci4");
    QVERIFY2(m_log.warnings.at(1).startsWith(path("a.png") + ": 18 colours are too many for ci4; "),
             qPrintable(m_log.warnings.at(1)));
}

void ImportRemarksTest::tellsWhatTheNearestColoursAre()
{
    fileTreeDirectory *folder = newFolder(currentROM.root, "Town", 0);
    newTexture(folder, "a", 0x100, "ci4", 3, 1, 0x200);
    currentROM.data.replace(0x200, 32, QByteArray::fromHex("F801").repeated(16));
    save("Town/a.png", row({qRgb(248, 0, 0), qRgb(0, 0, 248), qRgba(0, 0, 0, 0)}));
    importFolder();
    QCOMPARE(m_log.warnings,
             QStringList(
                 {path("Town/a.png") + ": 1 pixel become opaque; the palette of Root/Town/a has no clear colour",
                  path("Town/a.png") + ": 2 of 3 colours are not in the palette of Root/Town/a; the nearest take their part"}));
    QCOMPARE(m_handedOver.size(), 1);
    QVERIFY(m_log.left.isEmpty() && m_report.isEmpty());
}

void ImportRemarksTest::tellsOfAnotherColourTable()
{
    newTexture(currentROM.root, "a", 0x100, "ci4", 2, 1, 0x200);
    currentROM.data.replace(0x200, 4, QByteArray::fromHex("F80107C1"));
    QImage picture(2, 1, QImage::Format_Indexed8);
    picture.setColorTable({qRgb(248, 0, 0), qRgb(0, 0, 248)});
    picture.setPixel(0, 0, 0);
    picture.setPixel(1, 0, 0);
    save("a.png", picture);
    importFolder();
    QVERIFY(m_log.warnings.isEmpty()); // The second colour is not in use.
    picture.setPixel(1, 0, 1);
    save("a.png", picture);
    importFolder();
    QCOMPARE(m_log.warnings,
             QStringList {path("a.png")
                          + ": 1 colour of its colour table are not those of the palette of Root/a, which stays as it is"});
}

void ImportRemarksTest::tellsWhoseColoursChange()
{
    fileTreeFile *texture = newTexture(currentROM.root, "a", 0x100, "ci4", 2, 1, 0x200);
    newTexture(currentROM.root, "b", 0x300, "ci4", 2, 1, 0x200);
    newTexture(currentROM.root, "c", 0x310, "ci4", 2, 1, 0x200);
    currentROM.data.replace(0x200, 32, QByteArray::fromHex("F801").repeated(16));
    currentROM.data[0x300] = 0x01;
    QImage picture(2, 1, QImage::Format_Indexed8);
    picture.setColorTable(QVector<QRgb>(16, qRgb(248, 0, 0)));
    picture.fill(0);
    save("a.png", picture);
    ::replaceTexture(*texture, path("a.png"), {}, keepIn(&m_handedOver), &m_log);
    QVERIFY(m_log.warnings.isEmpty()); // The same palette is written.
    picture.setColor(1, qRgb(0, 0, 248));
    save("a.png", picture);
    ::replaceTexture(*texture, path("a.png"), {}, keepIn(&m_handedOver), &m_log);
    QCOMPARE(
        m_log.warnings,
        QStringList({path("a.png") + ": colours of Root/b change too: the palette of Root/a is shared",
                     path("a.png") + ": the palette of Root/a changes, which Root/c shares without a change of its colours"}));
}

void ImportRemarksTest::jpegsAreChecked_data()
{
    QTest::addColumn<QByteArray>("present");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("text");
    const QString notJpeg = QStringLiteral("It is no JPEG: it does not begin with the bytes FF D8");
    QTest::newRow("shorter") << jpegOf(20) << jpegOf(10) << QString();
    QTest::newRow("as long") << jpegOf(20) << jpegOf(20) << QString();
    QTest::newRow("longer")
        << jpegOf(20) << jpegOf(21)
        << "It has 21 bytes and the JPEG it replaces 20; no texture is listed behind, but the bytes there may be in use";
    QTest::newRow("nothing to measure") << QByteArray("\xFF\xD8") << jpegOf(21) << QString();
    QTest::newRow("no JPEG") << jpegOf(20) << QByteArray("\x89PNG") << notJpeg;
    QTest::newRow("empty") << jpegOf(20) << QByteArray() << notJpeg;
    QTest::newRow("both") << jpegOf(20) << QByteArray(30, 'x')
                          << notJpeg
            + "; It has 30 bytes and the JPEG it replaces 20; no texture is listed behind, but the bytes there may be in use";
}

void ImportRemarksTest::jpegsAreChecked()
{
    QFETCH(QByteArray, present);
    QFETCH(QByteArray, file);
    QFETCH(QString, text);
    currentROM.data.replace(0x100, present.size(), present);
    const fileTreeFile *texture = newTexture(currentROM.root, "a", 0x100, "jpeg");
    QCOMPARE(JpegChecker(currentROM.root).check(file, *texture).text(), text);
}

void ImportRemarksTest::jpegNamesWhatItRunsOver()
{
    currentROM.data.replace(0x100, 20, jpegOf(20));
    const fileTreeFile *texture = newTexture(currentROM.root, "a", 0x100, "jpeg");
    newTexture(currentROM.root, "inside", 0x110, "i8", 4, 1);
    newTexture(currentROM.root, "right behind", 0x114, "i8", 4, 1);
    newTexture(currentROM.root, "last byte", 0x11F, "i8", 4, 1);
    newTexture(currentROM.root, "just not", 0x120, "i8", 4, 1);
    newTexture(currentROM.root, "around", 0x0, "i8", 32, 32);
    newTexture(currentROM.root, "before", 0x0, "i8", 16, 16);
    newTexture(currentROM.root, "the same", 0x100, "jpeg");
    QCOMPARE(JpegChecker(currentROM.root).check(jpegOf(32), *texture).overrun,
             QStringLiteral(
                 "It has 32 bytes and the JPEG it replaces 20; it runs over Root/around, Root/right behind, Root/last byte"));
    // Where no JPEG is, only what is listed can tell that the bytes are in use.
    currentROM.data[0x100] = 0;
    QCOMPARE(JpegChecker(currentROM.root).check(jpegOf(17), *texture).overrun,
             QStringLiteral("It has 17 bytes and no JPEG is there to replace; it runs over Root/around, Root/inside"));
}

void ImportRemarksTest::jpegRules()
{
    JpegProblems none;
    JpegProblems overrun;
    overrun.overrun = QStringLiteral("x");
    JpegProblems notJpeg;
    notJpeg.notJpeg = QStringLiteral("x");
    for (const JpegRule rule : {JpegRule::WriteAnyway, JpegRule::Refuse, JpegRule::AllowOverrun}) {
        QVERIFY(!none.areRefused(rule));
        QCOMPARE(overrun.areRefused(rule), rule == JpegRule::Refuse);
        QCOMPARE(notJpeg.areRefused(rule), rule != JpegRule::WriteAnyway);
    }
    QVERIFY(!none.exist() && overrun.exist() && notJpeg.exist());

    fileTreeFile *texture = newTexture(currentROM.root, "a", 0x100, "jpeg");
    QVERIFY(writeBytes(path("a.jpeg"), "no JPEG"));
    QCOMPARE(::replaceTexture(*texture, path("a.jpeg"), {}, keepIn(&m_handedOver), &m_log, JpegRule::Refuse),
             ReplaceOutcome::Refused);
    QVERIFY(m_handedOver.isEmpty());
    QCOMPARE(m_log.left.size(), 1);
    QCOMPARE(::replaceTexture(*texture, path("a.jpeg"), {}, keepIn(&m_handedOver), &m_log), ReplaceOutcome::Replaced);
    QCOMPARE(m_handedOver.size(), 1);
    QCOMPARE(m_log.warnings.size(), 1);
    QCOMPARE(m_log.left.size(), 1);
}

void ImportRemarksTest::foldersTellOfPicturesWithoutTexture()
{
    fileTreeDirectory *folder = newFolder(currentROM.root, "Town");
    newTexture(folder, "Gate", 0, "i8");
    newTexture(folder, "Grass", 0, "i8");
    save("Town/Gras.png", row({0}));
    save("Town/Cloud.png", row({0}));
    importFolder();
    m_log.left.sort();
    QCOMPARE(m_log.left,
             QStringList({path("Town/Cloud.png") + ": no such texture in Root/Town/",
                          path("Town/Gras.png") + ": no such texture in Root/Town/; the nearest name is \"Grass\""}));
    QVERIFY(m_report.isEmpty()); // What the window shows says nothing of them.
}

void ImportRemarksTest::foldersTellOfLinks()
{
    newTexture(currentROM.root, "a", 0, "i8", 1, 1);
    newFolder(currentROM.root, "d");
    QTemporaryDir elsewhere;
    QVERIFY(QFile::link(elsewhere.path(), path("d")));
    QVERIFY(row({0}).save(elsewhere.filePath("a.png")));
    QVERIFY(QFile::link(elsewhere.filePath("a.png"), path("a.png")));
    importFolder();
    m_log.left.sort();
    QCOMPARE(m_log.left,
             QStringList({path("a.png") + ": a link, and links are left out", path("d") + ": a link, and links are left out"}));
    QVERIFY(m_handedOver.isEmpty());
}

void ImportRemarksTest::foldersRefuseSpoiltJpegs()
{
    currentROM.data.replace(0x100, 20, jpegOf(20));
    newTexture(currentROM.root, "a", 0x100, "jpeg", 1, 1);
    newTexture(currentROM.root, "b", 0x200, "jpeg", 1, 1);
    save("b.png", row({0})); // A PNG would be written as it is.
    QVERIFY(writeBytes(path("a.jpeg"), jpegOf(30)));
    importFolder(JpegRule::Refuse);
    QCOMPARE(m_log.left.size(), 2);
    QVERIFY(m_handedOver.isEmpty());
    importFolder(JpegRule::AllowOverrun);
    QCOMPARE(m_log.left.size(), 3);
    QCOMPARE(m_handedOver.size(), 1);
    importFolder(JpegRule::WriteAnyway);
    QCOMPARE(m_log.left.size(), 3);
    QCOMPARE(m_handedOver.size(), 3);
}

void ImportRemarksTest::foldersKeepTexturesWithoutPalette()
{
    newTexture(currentROM.root, "a", 0x100, "ci8", 1, 1, 0x20000);
    save("a.png", row({qRgb(1, 2, 3)}));
    importFolder();
    QVERIFY(m_handedOver.isEmpty());
    QCOMPARE(m_report, path("a.png") + " was not imported. Its palette lies outside the image.\n");
}

void ImportRemarksTest::manyPicturesWithoutTextureAreQuick()
{
    addManyTextures(currentROM.root, 20000, 0, 4, 4, QStringLiteral("a texture with a long name %1"));
    for (int i = 0; i < 300; ++i)
        QVERIFY(writeBytes(path(QStringLiteral("a texture with a long name x%1.png").arg(i)), "x"));
    QElapsedTimer timer;
    timer.start();
    importFolder();
    QCOMPARE(m_log.left.size(), 300);
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
}

void ImportRemarksTest::packsTellWhatIsLeftOut()
{
    save("A_0_Grass/10_rgba32_a.png", row({0}));
    save("A_0_Grass/10_rgb565_b.png", row({0}));
    save("A_0_Grass/c.png", row({0}));
    save("A_0_Grass/deeper/10_rgba32_a.png", row({0}));
    QVERIFY(writeBytes(path("A_0_Grass/readme.txt"), "x"));
    save("a_0_Grass/10_rgba32_a.png", row({0}));
    save("P_FFFFF_Grass/10_rgba32_a.png", row({0}));
    save("d.png", row({0}));
    QVERIFY(writeBytes(path("licence.txt"), "x"));
    importPack();
    QCOMPARE(
        m_log.left,
        QStringList({path("A_0_Grass/10_rgb565_b.png") + ": there is no texture format \"rgb565\"",
                     path("A_0_Grass/c.png") + ": its name is not one of a pack's picture, such as \"00001A00_rgba32_tile.png\"",
                     path("A_0_Grass/deeper") + ": directories in a pack's directories are not read",
                     path("P_FFFFF_Grass") + ": its pointer lies outside the image",
                     path("a_0_Grass") + ": its name is not one of a pack's directory, such as \"A_00B5F000_Grass\"",
                     path("d.png") + ": only the pictures in a pack's directories are read"}));
    QCOMPARE(m_handedOver.size(), 1);

    m_folder.reset(new QTemporaryDir);
    m_log = KeptLog();
    importPack();
    QCOMPARE(m_log.left, QStringList {m_folder->path() + ": no directory in it is named as \"A_00B5F000_Grass\" is"});
}

void ImportRemarksTest::packsMapToThePresentPalette()
{
    // The new entry has no palette address, which makes it the folder's own.
    currentROM.data.replace(0x400, 4, QByteArray::fromHex("07C1F801"));
    save("A_400_Grass/100_ci8_a.png", row({qRgb(248, 0, 0), qRgb(0, 248, 0)}));
    importPack();
    QCOMPARE(m_handedOver.size(), 1);
    QCOMPARE(m_handedOver.at(0).address, 0x100);
    QCOMPARE(m_handedOver.at(0).picture.pixelIndex(0, 0), 1);
    QCOMPARE(m_handedOver.at(0).picture.pixelIndex(1, 0), 0);
    QVERIFY(m_log.warnings.isEmpty());
}

void ImportRemarksTest::packsRefuseSpoiltJpegs()
{
    currentROM.data.replace(0x100, 20, jpegOf(20));
    newTexture(currentROM.root, "behind", 0x114, "i8", 4, 1);
    QDir().mkpath(path("A_0_Photo"));
    QVERIFY(writeBytes(path("A_0_Photo/100_jpeg_a.jpeg"), jpegOf(30)));
    importPack();
    QVERIFY(m_handedOver.isEmpty());
    QCOMPARE(m_log.left,
             QStringList {path("A_0_Photo/100_jpeg_a.jpeg")
                          + ": It has 30 bytes and the JPEG it replaces 20; it runs over Root/behind"});
    importPack(JpegRule::AllowOverrun);
    QCOMPARE(m_handedOver.size(), 1);
}

void ImportRemarksTest::nearestName_data()
{
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<QString>("nearest");
    QTest::newRow("left out") << "Gras"
                              << "Grass";
    QTest::newRow("added") << "Graass"
                           << "Grass";
    QTest::newRow("wrong") << "Grasz"
                           << "Grass";
    QTest::newRow("case") << "gRASS"
                          << "Grass";
    QTest::newRow("first of equals") << "Water 3"
                                     << "Water 1";
    QTest::newRow("too far") << "Cloud"
                             << "";
    QTest::newRow("short") << "X"
                           << "";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("very long") << QString(100000, 'x') << "";
}

void ImportRemarksTest::nearestName()
{
    QFETCH(QString, wanted);
    QFETCH(QString, nearest);
    QCOMPARE(::nearestName(wanted, {"Gate", "Grass", "Water 1", "Water 2", "Owls"}), nearest);
}

void ImportRemarksTest::longListsAreCut()
{
    QStringList names;
    for (int i = 1; i <= 10; ++i)
        names << QString::number(i);
    QCOMPARE(listed(names), QStringLiteral("1, 2, 3, 4, 5, 6, 7, 8, 9, 10"));
    names << "11"
          << "12";
    QCOMPARE(listed(names), QStringLiteral("1, 2, 3, 4, 5, 6, 7, 8, 9, 10 and 2 more"));
}

QTEST_GUILESS_MAIN(ImportRemarksTest)
#include "tst_importremarks.moc"
