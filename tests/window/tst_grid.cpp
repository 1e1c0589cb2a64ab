// SPDX-License-Identifier: MIT
#include "support/messages.h"
#include "support/tablewindow.h"

#include <QBoxLayout>
#include <QGroupBox>
#include <QSettings>
#include <QSplitter>
#include <QTabWidget>
#include <QTableWidget>

namespace
{
const QColor red(255, 0, 0, 255);
const QColor green(0, 255, 0, 255);

constexpr int areaSize = 0x4000;

/// A window whose image holds sixteen flat, opaque grey areas of the format rgba32.
class GridWindow : public TableWindow
{
public:
    GridWindow() : TableWindow(shades()) { }

    QTableWidget *table() { return find<QTableWidget>("gridTable"); }
    QLabel *label() { return find<QLabel>("gridLabel"); }
    QImage picture() { return label()->pixmap(Qt::ReturnByValue).toImage().convertToFormat(QImage::Format_ARGB32); }
    void type(int row, int column, const QString &path) { table()->setItem(row, column, new QTableWidgetItem(path)); }

    fileTreeFile *addShade(const QString &name, int shade, int width, int height)
    {
        return addTexture(currentROM.root, name, shade * areaSize, QStringLiteral("rgba32"), width, height);
    }

private:
    static QByteArray shades()
    {
        QByteArray image;
        for (int shade = 0; shade < 16; ++shade) {
            QByteArray pixel(4, char(shade * 16));
            pixel[3] = '\xFF';
            image += pixel.repeated(areaSize / 4);
        }
        return image;
    }
};

/// The shade drawn at a pixel, -1 where nothing was drawn.
int shadeAt(const QImage &image, int x, int y)
{
    const QRgb pixel = image.pixel(x, y);
    return qAlpha(pixel) == 0 ? -1 : qRed(pixel) / 16;
}
}

class TestGrid : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { setApplicationIdentity(); }
    void init() { QSettings().clear(); }

    void widgets();
    void emptyTable();
    void foundAndMissingPaths();
    void log();
    void placesAtFixedPitch();
    void largerTexturesOverlap();
    void leavesOutWhatCannotBeShown_data();
    void leavesOutWhatCannotBeShown();
    void undecodableTexture();
    void followsThePreviewBackground();
    void recursionEnds();
};

void TestGrid::widgets()
{
    GridWindow window;
    QCOMPARE(window.table()->rowCount(), 5);
    QCOMPARE(window.table()->columnCount(), 3);
    const auto *layoutBox = qobject_cast<QGroupBox *>(window.table()->parentWidget());
    const auto *previewBox = qobject_cast<QGroupBox *>(window.label()->parentWidget());
    QVERIFY(layoutBox && previewBox);
    QCOMPARE(layoutBox->title(), QStringLiteral("Grid Layout"));
    QCOMPARE(previewBox->title(), QStringLiteral("Grid Preview"));
    QWidget *panel = layoutBox->parentWidget();
    QCOMPARE(previewBox->parentWidget(), panel);
    QVERIFY(qobject_cast<QBoxLayout *>(panel->layout()));
    QVERIFY(panel->layout()->indexOf(const_cast<QGroupBox *>(layoutBox)) >= 0);
    // Kept, but placed nowhere.
    window.show();
    QVERIFY(!panel->isVisible());
    QVERIFY(!window->findChild<QSplitter *>()->isAncestorOf(panel));
    QCOMPARE(window->findChild<QTabWidget *>()->indexOf(panel), -1);
}

void TestGrid::emptyTable()
{
    GridWindow window;
    window->renderGrid();
    const QImage picture = window.picture();
    QCOMPARE(picture.size(), QSize(240, 160));
    for (int y = 0; y < 160; ++y) {
        for (int x = 0; x < 240; ++x)
            QCOMPARE(picture.pixel(x, y), qRgba(0, 0, 0, 0));
    }
    QCOMPARE(window.label()->size(), window.label()->sizeHint());
    QCOMPARE(window.label()->text(), QString());
}

void TestGrid::foundAndMissingPaths()
{
    GridWindow window;
    window.addShade("Sky", 5, 8, 8);
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "A", 0);
    window.addTexture(folder, "Sea", 0, "i8", 8, 8);
    window.type(0, 0, "Root/Sky");
    window.type(1, 0, "Root/Sand");
    window.type(2, 0, "Sky");
    window.type(3, 1, "anything/a/SEA");
    window.type(4, 2, "");
    const auto background = [&](int row, int column) { return window.table()->item(row, column)->background().color(); };
    QCOMPARE(background(0, 0), green);
    QCOMPARE(background(1, 0), red);
    QCOMPARE(background(2, 0), red);
    QCOMPARE(background(3, 1), green);
    QCOMPARE(background(4, 2), red);
    window.table()->item(1, 0)->setText("Root/Sky");
    QCOMPARE(background(1, 0), green);
    window.table()->item(0, 0)->setText("Root/");
    QCOMPARE(background(0, 0), red);
}

void TestGrid::log()
{
    GridWindow window;
    window.addShade("Sky", 5, 8, 8);
    window.type(1, 0, "Root/Sky");
    window.type(0, 2, "Nowhere");
    const MessageCapture capture;
    window->renderGrid();
    QCOMPARE(capture.texts(),
             QStringList({"0 , 0 is empty.", "searching for file \"Root/Sky\"", "Found file from path \"Root/Sky\"",
                          "0 , 2 is empty.", "0 , 3 is empty.", "0 , 4 is empty.", "1 , 0 is empty.", "1 , 1 is empty.",
                          "1 , 2 is empty.", "1 , 3 is empty.", "1 , 4 is empty.", "searching for file \"Nowhere\"",
                          "2 , 1 is empty.", "2 , 2 is empty.", "2 , 3 is empty.", "2 , 4 is empty."}));
}

void TestGrid::placesAtFixedPitch()
{
    GridWindow window;
    window.addShade("Five", 5, 8, 4);
    window.type(3, 2, "Root/Five");
    const QImage picture = window.picture();
    for (int y = 0; y < 160; ++y) {
        for (int x = 0; x < 240; ++x) {
            const bool inside = x >= 160 && x < 168 && y >= 96 && y < 100;
            QCOMPARE(shadeAt(picture, x, y), inside ? 5 : -1);
        }
    }
}

void TestGrid::largerTexturesOverlap()
{
    GridWindow window;
    window.addShade("Large", 5, 64, 64);
    window.addShade("Wide", 6, 128, 32);
    window.addShade("Small", 7, 8, 8);
    window.type(0, 0, "Root/Large");
    QCOMPARE(shadeAt(window.picture(), 63, 63), 5); // not cut to the cell
    window.type(1, 0, "Root/Small");
    QCOMPARE(shadeAt(window.picture(), 0, 32), 7); // a later row paints over it
    QCOMPARE(shadeAt(window.picture(), 8, 32), 5);
    window.type(0, 1, "Root/Small");
    window.type(0, 0, "Root/Wide");
    QCOMPARE(shadeAt(window.picture(), 80, 0), 7); // and so does a later column
    QCOMPARE(shadeAt(window.picture(), 88, 0), 6);
    window.type(4, 2, "Root/Wide");
    QCOMPARE(shadeAt(window.picture(), 239, 159), 6); // clipped at the picture's edge only
    QCOMPARE(window.picture().size(), QSize(240, 160));
}

void TestGrid::leavesOutWhatCannotBeShown_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("address");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::newRow("unknown format") << "tim" << 0x5000 << 8 << 8;
    QTest::newRow("past the end") << "i8" << 16 * areaSize - 63 << 8 << 8;
    QTest::newRow("too many pixels") << "i8" << 0 << 1024 << 1025;
    QTest::newRow("hostile size") << "i8" << 0 << INT_MAX << INT_MAX;
    QTest::newRow("no bytes") << "jpeg" << 0x5000 << 8 << 8;
    QTest::newRow("negative address") << "i8" << -1 << 8 << 8;
}

void TestGrid::leavesOutWhatCannotBeShown()
{
    QFETCH(QString, format);
    QFETCH(int, address);
    QFETCH(int, width);
    QFETCH(int, height);
    GridWindow window;
    if (height == 1025)
        currentROM.data.resize(2 * 1024 * 1024);
    window.addTexture(currentROM.root, "Sky", address, format, width, height);
    window.type(0, 0, "Root/Sky");
    QCOMPARE(window.table()->item(0, 0)->background().color(), green);
    QCOMPARE(window.label()->text(), QString());
    const QImage picture = window.picture();
    for (int y = 0; y < 160; ++y) {
        for (int x = 0; x < 240; ++x)
            QCOMPARE(qAlpha(picture.pixel(x, y)), 0);
    }
}

void TestGrid::undecodableTexture()
{
    GridWindow window;
    window.addShade("Five", 5, 8, 8);
    window.addTexture(currentROM.root, "Empty", 0, "i8", 0, 8);
    window.type(0, 0, "Root/Empty");
    window.type(1, 0, "Root/Five");
    QCOMPARE(window.label()->text(), QString()); // the picture comes last
    QCOMPARE(shadeAt(window.picture(), 0, 32), 5);
}

void TestGrid::followsThePreviewBackground()
{
    GridWindow window;
    window->renderGrid();
    QCOMPARE(window.label()->styleSheet(), QStringLiteral("background: url(:/style/alphaBG);"));
    window.select(window.addShade("Five", 5, 8, 8));
    QTest::mouseClick(window.find<QLabel>("previewLabel"), Qt::LeftButton);
    window->renderGrid();
    QCOMPARE(window.label()->styleSheet(), QStringLiteral("background: rgb(255,0,255);"));
}

void TestGrid::recursionEnds()
{
    GridWindow window;
    window.addShade("Five", 5, 8, 8);
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 3; ++column)
            window.type(row, column, (row + column) % 2 ? "Root/Five" : "Root/None");
    }
    // One pass for the change and one for each colour that the renaming changes.
    currentROM.root->files.first()->name = "None";
    for (const int passes : {16, 1}) {
        const MessageCapture log;
        window->renderGrid();
        QCOMPARE(log.texts().filter("searching for file").size(), 15 * passes);
    }
}

QTEST_MAIN(TestGrid)
#include "tst_grid.moc"
