// SPDX-License-Identifier: MIT
#include "support/images.h"
#include "transfer/gallery.h"

#include <QBuffer>
#include <QRegularExpression>
#include <QTest>

namespace
{
QImage filled(int width, int height, QRgb colour)
{
    QImage picture(width, height, QImage::Format_ARGB32);
    picture.fill(colour);
    return picture;
}

GalleryItem itemNamed(const QString &name)
{
    GalleryItem item;
    item.name = name;
    item.pictures = {{QString(), filled(2, 3, 0xFF112233), {}}};
    return item;
}

QString pageOf(const QVector<GalleryItem> &items, const GalleryHeading &heading = {"Title", "Remark"})
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    GalleryWriter page(&buffer, heading);
    for (const GalleryItem &item : items)
        page.add(item);
    if (!page.finish() || page.items() != items.size())
        QTest::qFail("the page was not written", __FILE__, __LINE__);
    return QString::fromUtf8(buffer.data());
}

/// The pictures that the page holds, in its order.
QVector<QImage> picturesIn(const QString &page)
{
    QVector<QImage> pictures;
    QRegularExpressionMatchIterator match = QRegularExpression("src=\"data:image/([a-z]+);base64,([^\"]*)\"").globalMatch(page);
    while (match.hasNext()) {
        const QRegularExpressionMatch one = match.next();
        pictures.append(
            QImage::fromData(QByteArray::fromBase64(one.captured(2).toLatin1()), one.captured(1).toLatin1().constData()));
    }
    return pictures;
}

/// The part of the page that holds the items.
QString cardsOf(const QString &page)
{
    const int begin = page.indexOf("<main");
    return page.mid(begin, page.indexOf("</main>") - begin);
}

/// A device that takes a number of bytes and no more.
class FullDevice : public QIODevice
{
public:
    explicit FullDevice(int room) : m_room(room) { open(WriteOnly | Unbuffered); }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 length) override
    {
        if (length > m_room)
            return -1;
        m_room -= int(length);
        return length;
    }

private:
    int m_room;
};

class GalleryTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { loadIntoCurrentROM(QByteArray(0x1000, '\0')); }

    void pageHoldsPicturesAndFacts()
    {
        GalleryItem item = itemNamed("Sky");
        item.folder = "Root/Town/";
        item.address = 0x110;
        item.format = "rgba32";
        item.bytes = 24;
        item.note = "A note.";
        item.palette = {0xFF010203, 0x00000000, 0xFF0A0B0C};
        const QString page = pageOf({item});
        QVERIFY(page.startsWith("<!DOCTYPE html>\n"));
        QVERIFY(page.contains("<title>Title</title>") && page.contains("<h1>Title</h1>") && page.contains(">Remark</p>"));
        const QString cards = cardsOf(page);
        for (const char *part : {"<h2>Sky</h2>", ">Root/Town/</p>", "0x00000110", "rgba32", "2\u00D73", "24 bytes", "A note.",
                                 "data-address=\"272\"", "data-format=\"rgba32\"", "data-pixels=\"6\"", "data-bytes=\"24\""})
            QVERIFY2(cards.contains(QString::fromUtf8(part)), part);
        const QVector<QImage> pictures = picturesIn(page);
        QCOMPARE(pictures.size(), 2);
        QCOMPARE(pictures.at(0).size(), QSize(2, 3));
        QCOMPARE(pictures.at(0).pixel(1, 2), 0xFF112233u);
        QCOMPARE(pictures.at(1).size(), QSize(3, 1));
        QCOMPARE(pictures.at(1).pixel(0, 0), 0xFF010203u);
        QCOMPARE(qAlpha(pictures.at(1).pixel(1, 0)), 0);
        QCOMPARE(pictures.at(1).pixel(2, 0), 0xFF0A0B0Cu);
    }

    void swatchesGoOnInRowsOfSixteen()
    {
        GalleryItem item = itemNamed("x");
        item.palette = QVector<QRgb>(18, 0xFF000000);
        item.palette[17] = 0xFF00FF00;
        const QImage swatches = picturesIn(pageOf({item})).at(1);
        QCOMPARE(swatches.size(), QSize(16, 2));
        QCOMPARE(swatches.pixel(1, 1), 0xFF00FF00u);
    }

    void twoPicturesToCompare()
    {
        GalleryItem item = itemNamed("x");
        item.pictures = {{"before", filled(2, 2, 0xFF0000FF), {}}, {"after", filled(4, 2, 0xFFFF0000), {}}};
        const QString page = pageOf({item});
        const QVector<QImage> pictures = picturesIn(page);
        QCOMPARE(pictures.size(), 2);
        QCOMPARE(pictures.at(1).pixel(3, 1), 0xFFFF0000u);
        QVERIFY(page.indexOf("<figcaption>before</figcaption>") < page.indexOf("<figcaption>after</figcaption>"));
        QVERIFY(page.contains("2\u00D72 \u00B7 4\u00D72"));
        QVERIFY(page.contains("--w:6;--h:2;--n:2"));
    }

    void untrustedTextsStayTexts()
    {
        const QString evil = "</script><script>alert(1)</script><img src=x onerror=alert(1)>\"'&\033[2J\n\u202E";
        GalleryItem item = itemNamed(evil);
        item.folder = item.format = item.note = evil;
        item.pictures[0].caption = evil;
        item.pictures.append({evil, QImage(), {}});
        const QString honest = pageOf({itemNamed("x")});
        const QString page = pageOf({item}, {evil, evil});
        QCOMPARE(page.count("<script"), honest.count("<script"));
        QCOMPARE(page.count("</script"), honest.count("</script"));
        QVERIFY(!page.contains("<img src=x"));
        QVERIFY(!page.contains("\"'&"));
        QVERIFY(!page.contains('\033') && !page.contains(QChar(0x202E)));
        QVERIFY(page.contains("&lt;/script&gt;"));
    }

    void needsNoNetwork()
    {
        const QString page = pageOf({itemNamed("x")});
        QVERIFY(page.contains("default-src 'none'"));
        QVERIFY(!page.contains("http:") && !page.contains("https:") && !page.contains("//\""));
    }

    void missingPictureIsSaid()
    {
        GalleryItem item = itemNamed("x");
        item.pictures = {{QString(), QImage(), {}}};
        QVERIFY(cardsOf(pageOf({item})).contains("no picture"));
    }

    void fullPageLeavesPicturesOut()
    {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        GalleryWriter page(&buffer, {"Title", {}});
        GalleryItem item;
        QImage large(16384, 4096, QImage::Format_Mono); // Half of what fits.
        large.fill(0);
        item.pictures = {{QString(), large, {}}};
        for (int i = 0; i < 3; ++i)
            page.add(item);
        page.add(itemNamed("behind"));
        QVERIFY(page.finish());
        QCOMPARE(page.items(), 4);
        QCOMPARE(page.leftOut(), 2);
        QCOMPARE(buffer.data().count("data:image/png"), 2);
        QCOMPARE(buffer.data().count("left out"), 2);
    }

    void refusedDataIsAFailure()
    {
        for (const int room : {0, 100, 20000}) {
            FullDevice device(room);
            GalleryWriter page(&device, {"Title", {}});
            for (int i = 0; i < 50; ++i)
                page.add(itemNamed("x"));
            QVERIFY(!page.finish());
        }
    }

    void itemOfAnEntry()
    {
        currentROM.data.replace(0x140, 4, QByteArray::fromHex("10010000")); // Indices 1 0 0 1, 0 0 0 0.
        currentROM.data.replace(0x120, 4, QByteArray::fromHex("0001F801")); // Black and red.
        auto *folder = currentROM.root->addDirectory(new fileTreeDirectory);
        folder->setName("Town");
        folder->address = 0x100;
        fileTreeFile *texture = folder->addFile(new fileTreeFile);
        texture->setName("Stone");
        texture->format = "ci4";
        texture->address = 0x40;
        texture->paletteAddress = 0x20;
        texture->width = 4;
        texture->height = 2;
        const GalleryItem item = galleryItemOf(*texture);
        QCOMPARE(item.name, QString("Stone"));
        QCOMPARE(item.folder, QString("Root/Town/"));
        QCOMPARE(item.address, qint64(0x140));
        QCOMPARE(item.format, QString("ci4"));
        QCOMPARE(item.bytes, qint64(4));
        QCOMPARE(item.palette.size(), 16);
        QCOMPARE(item.palette.at(0), 0xFF000000u);
        QCOMPARE(item.palette.at(1), 0xFFF80000u);
        QCOMPARE(item.pictures.size(), 1);
        QCOMPARE(item.pictures.at(0).picture.size(), QSize(4, 2));
        QCOMPARE(item.pictures.at(0).picture.pixel(0, 0), 0xFFF80000u);
        QCOMPARE(item.pictures.at(0).picture.pixel(1, 0), 0xFF000000u);
        QVERIFY(item.note.isEmpty() && item.pictures.at(0).jpeg.isEmpty());
    }

    void jpegGoesInAsItIs()
    {
        QBuffer file;
        file.open(QIODevice::WriteOnly);
        QVERIFY(filled(8, 4, 0xFF808080).save(&file, "JPEG"));
        currentROM.data.replace(0x100, file.data().size(), file.data());
        fileTreeFile *texture = currentROM.root->addFile(new fileTreeFile);
        texture->format = "jpeg";
        texture->address = 0x100;
        const GalleryItem item = galleryItemOf(*texture);
        QCOMPARE(item.pictures.at(0).jpeg, file.data());
        QVERIFY(pageOf({item}).contains("data:image/jpeg;base64," + QString::fromLatin1(file.data().toBase64())));
    }

    void entriesWithoutPictureSayWhy_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<int>("address");
        QTest::addColumn<QString>("note");
        QTest::newRow("unknown format") << "bmp" << 0 << "no such format";
        QTest::newRow("no JPEG") << "jpeg" << 0x100 << "no picture";
        QTest::newRow("beyond the end") << "i8" << 0x10000 << "no picture";
        QTest::newRow("cut short") << "i8" << 0xFE0 << "beyond the end";
    }

    void entriesWithoutPictureSayWhy()
    {
        QFETCH(QString, format);
        QFETCH(int, address);
        QFETCH(QString, note);
        fileTreeFile *texture = currentROM.root->addFile(new fileTreeFile);
        texture->format = format;
        texture->address = address;
        texture->width = texture->height = 16;
        const GalleryItem item = galleryItemOf(*texture);
        QVERIFY2(item.note.contains(note), qPrintable(item.note));
        pageOf({item});
    }
};
}

QTEST_MAIN(GalleryTest)
#include "tst_gallery.moc"
