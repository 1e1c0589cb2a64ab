// SPDX-License-Identifier: MIT
#include "resources/resources.h"

#include <QIcon>
#include <QPainter>
#include <QtTest>

class tst_Resources : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initResources(); }
    void icons_data();
    void icons();
    void highDensity();
    void checkerboard();
};

void tst_Resources::icons_data()
{
    QTest::addColumn<QList<int>>("sizes");
    const QList<int> sizes {16, 24, 32, 48, 64};
    for (const char *name : {"about", "archive", "delete", "exit", "file", "folder_empty", "folder_textures", "new_file",
                             "new_folder", "open", "replace_image", "save", "save_as", "save_image", "search_file"})
        QTest::newRow(name) << sizes;
    QTest::newRow("quillary") << sizes + QList<int> {128, 256};
}

/// Each size is a picture of its own, neither empty nor a filled square.
void tst_Resources::icons()
{
    QFETCH(const QList<int>, sizes);
    const QIcon icon(QStringLiteral(":/icons/") + QLatin1String(QTest::currentDataTag()));
    QList<int> found;
    for (const QSize &size : icon.availableSizes()) {
        QCOMPARE(size.width(), size.height());
        found << size.width();
    }
    std::sort(found.begin(), found.end());
    QCOMPARE(found, sizes);
    for (const int size : sizes) {
        const QImage picture = icon.pixmap(size).toImage();
        QCOMPARE(picture.size(), QSize(size, size));
        QVERIFY(picture.hasAlphaChannel());
        int clear = 0;
        int opaque = 0;
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                const int alpha = picture.pixelColor(x, y).alpha();
                clear += alpha == 0;
                opaque += alpha == 255;
            }
        }
        QVERIFY2(clear > size * size / 20, qPrintable(QStringLiteral("%1 clear pixels at size %2").arg(clear).arg(size)));
        QVERIFY2(opaque > size * size / 5, qPrintable(QStringLiteral("%1 opaque pixels at size %2").arg(opaque).arg(size)));
    }
}

/// On a display of double density an icon of 16 points shows the picture drawn for 32 pixels, not a magnified one.
void tst_Resources::highDensity()
{
    const QIcon icon(QStringLiteral(":/icons/open"));
    const QImage drawnFor32 = icon.pixmap(32).toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QImage display(32, 32, QImage::Format_ARGB32_Premultiplied);
    display.setDevicePixelRatio(2);
    display.fill(Qt::transparent);
    const bool wasSet = QCoreApplication::testAttribute(Qt::AA_UseHighDpiPixmaps);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, true);
    {
        QPainter painter(&display);
        icon.paint(&painter, QRect(0, 0, 16, 16));
    }
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, wasSet);
    display.setDevicePixelRatio(1);
    QCOMPARE(display, drawnFor32);
}

void tst_Resources::checkerboard()
{
    const QImage tile(QStringLiteral(":/style/alphaBG"));
    QCOMPARE(tile.size(), QSize(16, 16));
    QCOMPARE(tile.pixel(0, 0), qRgb(255, 255, 255));
    QCOMPARE(tile.pixel(8, 7), qRgb(204, 204, 204));
    QCOMPARE(tile.pixel(7, 8), qRgb(204, 204, 204));
    QCOMPARE(tile.pixel(15, 15), qRgb(255, 255, 255));
}

QTEST_MAIN(tst_Resources)
#include "tst_resources.moc"
