// SPDX-License-Identifier: MIT
#include "support/messages.h"
#include "support/tablewindow.h"
#include "widgets/clickablelabel.h"
#include "widgets/texturepreviewarea.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGroupBox>
#include <QLineEdit>
#include <QMimeData>
#include <QScrollBar>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QUrl>

#include <memory>

namespace
{
const QString checkerboard = QStringLiteral("background: url(:/style/alphaBG);");
const QString magenta = QStringLiteral("background: rgb(255,0,255);");

class PreviewWindow : public TableWindow
{
public:
    using TableWindow::TableWindow;

    ClickableLabel *label() { return find<ClickableLabel>("previewLabel"); }
    TexturePreviewArea *area() { return find<TexturePreviewArea>("previewArea"); }
    bool showsPicture() { return !label()->pixmap(Qt::ReturnByValue).isNull(); }
    QSize pictureSize() { return showsPicture() ? label()->pixmap(Qt::ReturnByValue).size() : QSize(); }

    /// Selects a new texture directly in the root.
    fileTreeFile *showTexture(const QString &format, int address, int width, int height)
    {
        fileTreeFile *texture = addTexture(currentROM.root, QStringLiteral("Sky"), address, format, width, height);
        select(texture);
        return texture;
    }

    void click() { QTest::mouseClick(label(), Qt::LeftButton); }
};

/// Opens the drag handler: what it refuses goes on to the window, which may take it.
class OpenArea : public TexturePreviewArea
{
public:
    using TexturePreviewArea::dragEnterEvent;
};

/// Whether the preview takes a drag of these files.
bool takesDrag(PreviewWindow *window, const QStringList &paths)
{
    QMimeData data;
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls << QUrl::fromLocalFile(path);
    data.setUrls(urls);
    QDragEnterEvent event(QPoint(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    (window->area()->*&OpenArea::dragEnterEvent)(&event);
    return event.isAccepted();
}
}

class TestPreview : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { setApplicationIdentity(); }
    void init() { QSettings().clear(); }

    void widgets();
    void messages_data();
    void messages();
    void messageRemovesPicture();
    void messageGoesNowhereElse();
    void nothingSelectedKeepsTheView();
    void drawsTheWorkingCopy();
    void drawsExactPixels();
    void drawsUpToTheLastByte();
    void drawsUpToTheLargestPicture();
    void palettePastTheEndIsBlack();
    void hostileValues_data();
    void hostileValues();
    void clickTogglesTheBackground();
    void clickOnMessageChangesNothing();
    void everyWindowStartsWithTheCheckerboard();
    void labelFitsAndIsCentred();
    void dragsAccepted_data();
    void dragsAccepted();
    void dragsWithoutImageOrTexture();
    void dragIsLogged();
    void dragWithoutFiles();
    void refusedDragIsNotTakenByTheWindow_data();
    void refusedDragIsNotTakenByTheWindow();
    void dropReplacesTheTexture();
    void scrollBarsLookLikeOthers();
};

/// The sheets of the area and of the label are not theirs.
void TestPreview::scrollBarsLookLikeOthers()
{
    PreviewWindow window;
    window.show();
    window.showTexture("i8", 0, 4096, 2);
    QScrollBar *bar = window.area()->horizontalScrollBar();
    QTRY_VERIFY(bar->isVisible());
    QScrollBar other(Qt::Horizontal);
    other.setRange(bar->minimum(), bar->maximum());
    other.setPageStep(bar->pageStep());
    other.setValue(bar->value());
    other.resize(bar->size());
    const auto look = [](QScrollBar *shown) {
        QImage image(shown->size(), QImage::Format_RGB32);
        image.fill(Qt::green);
        shown->render(&image);
        return image;
    };
    QCOMPARE(look(bar), look(&other));
}

void TestPreview::widgets()
{
    PreviewWindow window;
    QCOMPARE(window.label()->text(), QString());
    QCOMPARE(window.label()->alignment(), Qt::AlignCenter);
    QCOMPARE(window.label()->sizePolicy().horizontalPolicy(), QSizePolicy::Ignored);
    QCOMPARE(window.label()->sizePolicy().verticalPolicy(), QSizePolicy::Ignored);
    QCOMPARE(window.area()->styleSheet(), QStringLiteral("background:transparent;"));
    QCOMPARE(window.area()->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(window.area()->sizePolicy().verticalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(window.area()->alignment(), Qt::AlignCenter);
    QCOMPARE(window.area()->frameShape(), QFrame::NoFrame);
    QVERIFY(window.area()->acceptDrops());
    QCOMPARE(window.area()->widget(), window.label());
    const auto *box = window.find<QGroupBox>("previewBox");
    QCOMPARE(box->title(), QStringLiteral("Texture Preview"));
    QVERIFY(box->isAncestorOf(window.area()));
    QCOMPARE(box->sizePolicy().horizontalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(box->sizePolicy().verticalPolicy(), QSizePolicy::Expanding);
}

void TestPreview::messages_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("address");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<QString>("message"); // none for a picture

    const QString unsupported = "The texture format is not supported.";
    const QString pastEnd = "The texture extends past the end of the file. Can't display texture.";
    const QString tooLarge = "The texture exceeds 1048576 pixels. Can't display texture.";
    const QString noJpeg = "This textures address is not the start of a jpeg texture.";
    const QString noData = "NULL was returned when trying to obtain the textures data. Can't display texture.";
    const QString noImage = "The generated texture returned as NULL. Can't dislay texture.";
    const int end = 4 * 1024 * 1024; // of the image
    QTest::newRow("unknown format") << "bmp" << 0 << 8 << 8 << unsupported;
    QTest::newRow("format in capitals") << "RGBA32" << 0 << 8 << 8 << unsupported;
    QTest::newRow("jpeg in capitals") << "JPEG" << 0 << 8 << 8 << unsupported;
    QTest::newRow("unknown format comes first") << "bmp" << end << 100000 << 100000 << unsupported;
    QTest::newRow("last byte") << "i8" << end - 64 << 8 << 8 << QString();
    QTest::newRow("one byte more") << "i8" << end - 63 << 8 << 8 << pastEnd;
    QTest::newRow("past the end comes before the pixel count") << "rgba32" << end - 16 << 1024 << 1025 << pastEnd;
    QTest::newRow("1048576 pixels") << "i8" << 0 << 1024 << 1024 << QString();
    QTest::newRow("1048577 pixels") << "i8" << 0 << 1048577 / 17 << 17 << tooLarge;
    QTest::newRow("1024 x 1025") << "i8" << 0 << 1024 << 1025 << tooLarge;
    QTest::newRow("too large comes before the data") << "i8" << -1 << 1024 << 1025 << tooLarge;
    QTest::newRow("negative address") << "i8" << -1 << 8 << 8 << noData;
    QTest::newRow("no jpeg") << "jpeg" << 16 << 8 << 8 << noJpeg;
    QTest::newRow("jpeg at the end") << "jpeg" << end + 1 << 8 << 8 << noJpeg;
    QTest::newRow("jpeg behind the image") << "jpeg" << end + 2 << 8 << 8 << pastEnd;
    QTest::newRow("broken jpeg") << "jpeg" << 0x100 << 8 << 8 << noImage;
    QTest::newRow("no pixels") << "i8" << 0 << 0 << 8 << noImage;
}

void TestPreview::messages()
{
    QFETCH(QString, format);
    QFETCH(int, address);
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(QString, message);
    QByteArray image(4 * 1024 * 1024, '\x55');
    image.replace(0x100, 10, QByteArray::fromHex("FFD8FFDB00000000FFD9")); // markers alone
    PreviewWindow window(image);
    window.showTexture(format, address, width, height);
    QCOMPARE(window.label()->text(), message);
    QCOMPARE(window.showsPicture(), message.isEmpty());
    QCOMPARE(window.label()->styleSheet(), message.isEmpty() ? checkerboard : QString());
    QCOMPARE(window.label()->size(), window.label()->sizeHint());
    if (message.isEmpty())
        QCOMPARE(window.pictureSize(), QSize(width, height));
}

void TestPreview::messageRemovesPicture()
{
    PreviewWindow window;
    window.showTexture("i8", 0, 8, 8);
    QVERIFY(window.showsPicture());
    QTest::keyClicks(window.find<QLineEdit>("textureFormat"), "x");
    QVERIFY(!window.showsPicture());
    QCOMPARE(window.label()->text(), QStringLiteral("The texture format is not supported."));
    QTest::keyClick(window.find<QLineEdit>("textureFormat"), Qt::Key_Backspace);
    QVERIFY(window.showsPicture());
    QCOMPARE(window.label()->text(), QString());
}

void TestPreview::messageGoesNowhereElse()
{
    PreviewWindow window;
    window.showTexture("i8", 0, 8, 8);
    window->statusBar()->clearMessage();
    currentROM.editedTexture->format = "bmp";
    const MessageCapture log;
    window->renderTexture();
    QCOMPARE(window.label()->text(), QStringLiteral("The texture format is not supported."));
    QVERIFY(log.all().isEmpty());
    QVERIFY(window->statusBar()->currentMessage().isEmpty());
}

void TestPreview::nothingSelectedKeepsTheView()
{
    PreviewWindow window;
    window.showTexture("i8", 0, 8, 8);
    currentROM.lastSelectedTexture = nullptr;
    currentROM.editedTexture->format = "bmp";
    window->renderTexture();
    QCOMPARE(window.pictureSize(), QSize(8, 8));
}

void TestPreview::drawsTheWorkingCopy()
{
    PreviewWindow window;
    const fileTreeFile *texture = window.showTexture("i8", 0, 8, 8);
    window.find<QSpinBox>("textureWidth")->setValue(20);
    QCOMPARE(window.pictureSize(), QSize(20, 8));
    QCOMPARE(texture->width, 8);
}

void TestPreview::drawsExactPixels()
{
    QByteArray image = cartridgeImage(64 * 1024);
    image.replace(0x200, 16, QByteArray::fromHex("FF0000FF00FF00FF0000FFFF12345600"));
    PreviewWindow window(image);
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Folder", 0x100);
    window.select(window.addTexture(folder, "Sky", 0x100, "rgba32", 2, 2));
    const QImage shown = window.label()->pixmap(Qt::ReturnByValue).toImage();
    QCOMPARE(shown.size(), QSize(2, 2));
    QCOMPARE(shown.pixel(0, 0), qRgba(255, 0, 0, 255));
    QCOMPARE(shown.pixel(1, 0), qRgba(0, 255, 0, 255));
    QCOMPARE(shown.pixel(0, 1), qRgba(0, 0, 255, 255));
    QCOMPARE(qAlpha(shown.pixel(1, 1)), 0);
}

void TestPreview::drawsUpToTheLastByte()
{
    PreviewWindow window;
    window.showTexture("rgba32", 64 * 1024 - 4096, 32, 32);
    QCOMPARE(window.pictureSize(), QSize(32, 32));
    auto *offset = window.find<QLineEdit>("textureOffset");
    offset->selectAll();
    QTest::keyClicks(offset, QString::number(64 * 1024 - 4095));
    QCOMPARE(window.label()->text(), QStringLiteral("The texture extends past the end of the file. Can't display texture."));
}

void TestPreview::drawsUpToTheLargestPicture()
{
    PreviewWindow window(cartridgeImage(4 * 1024 * 1024 + 4096));
    window.showTexture("rgba32", 0, 1024, 1024);
    QCOMPARE(window.pictureSize(), QSize(1024, 1024));
    window.find<QSpinBox>("textureHeight")->setValue(1025);
    QCOMPARE(window.label()->text(), QStringLiteral("The texture exceeds 1048576 pixels. Can't display texture."));
}

void TestPreview::palettePastTheEndIsBlack()
{
    for (const char *format : {"ci4", "ci8"}) {
        PreviewWindow window;
        fileTreeFile *texture = window.showTexture(format, 0, 8, 8);
        texture->paletteAddress = 0x7000000;
        window->updateTextureInfo();
        QVERIFY(window.showsPicture());
        const QImage shown = window.label()->pixmap(Qt::ReturnByValue).toImage();
        for (int i = 0; i < 64; ++i)
            QCOMPARE(shown.pixel(i % 8, i / 8), qRgba(0, 0, 0, 255));
    }
}

void TestPreview::hostileValues_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("address");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    for (const char *format : {"i4", "rgba32", "ci8", "jpeg"}) {
        for (const int address : {0, INT_MAX, INT_MIN, -1}) {
            for (const int width : {INT_MAX, INT_MIN, -8, 65536, 0})
                QTest::addRow("%s at %d, %d wide", format, address, width) << format << address << width << width;
        }
    }
}

void TestPreview::hostileValues()
{
    QFETCH(QString, format);
    QFETCH(int, address);
    QFETCH(int, width);
    QFETCH(int, height);
    PreviewWindow window;
    window.showTexture(format, address, width, height);
    QVERIFY(!window.showsPicture());
    QVERIFY(!window.label()->text().isEmpty());
    // 65536 x 65536 pixels are none when counted in 32 bits.
    if (width == 65536 && address == 0 && format != "jpeg")
        QCOMPARE(window.label()->text(), QStringLiteral("The texture extends past the end of the file. Can't display texture."));
}

void TestPreview::clickTogglesTheBackground()
{
    PreviewWindow window;
    fileTreeFile *texture = window.showTexture("i8", 0, 8, 8);
    QCOMPARE(window.label()->styleSheet(), checkerboard);
    window.click();
    QCOMPARE(window.label()->styleSheet(), magenta);
    QCOMPARE(window.pictureSize(), QSize(8, 8));
    window.select(window.addTexture(currentROM.root, "Sea", 0, "i8", 4, 4));
    QCOMPARE(window.label()->styleSheet(), magenta);
    window.click();
    QCOMPARE(window.label()->styleSheet(), checkerboard);
    window.select(texture);
    QCOMPARE(window.label()->styleSheet(), checkerboard);
}

void TestPreview::clickOnMessageChangesNothing()
{
    PreviewWindow window;
    window.click();
    QCOMPARE(window.label()->styleSheet(), QString());
    window.showTexture("i8", 0, 8, 8);
    window.click();
    const fileTreeFile *broken = window.addTexture(currentROM.root, "Broken", 0, "bmp");
    window.select(broken);
    window.click();
    QCOMPARE(window.label()->styleSheet(), QString());
    QCOMPARE(window.label()->text(), QStringLiteral("The texture format is not supported."));
    window.showTexture("i8", 0, 4, 4);
    QCOMPARE(window.label()->styleSheet(), magenta);

    window.label()->setStyleSheet("background: rgb(255, 0, 255);"); // not spelt exactly so
    window.click();
    QCOMPARE(window.label()->styleSheet(), QStringLiteral("background: rgb(255, 0, 255);"));
}

void TestPreview::everyWindowStartsWithTheCheckerboard()
{
    {
        PreviewWindow window;
        window.showTexture("i8", 0, 8, 8);
        window.click();
        window.show();
        window->close();
    }
    PreviewWindow window;
    window.showTexture("i8", 0, 8, 8);
    QCOMPARE(window.label()->styleSheet(), checkerboard);
}

void TestPreview::labelFitsAndIsCentred()
{
    PreviewWindow window;
    window.show();
    window.showTexture("i8", 0, 40, 20);
    QCoreApplication::processEvents();
    const QRect label = window.label()->geometry();
    const QRect viewport = window.area()->viewport()->rect();
    QCOMPARE(label.size(), QSize(40, 20));
    QVERIFY((label.center() - viewport.center()).manhattanLength() <= 2);
}

void TestPreview::dragsAccepted_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("png") << "rgba32" << QStringList({"/a/b.png"}) << true;
    QTest::newRow("png in capitals") << "ci8" << QStringList({"/a/b.PNG"}) << true;
    QTest::newRow("last suffix counts") << "i8" << QStringList({"/a/b.jpg.png"}) << true;
    QTest::newRow("jpg") << "jpeg" << QStringList({"/a/b.jpg"}) << true;
    QTest::newRow("JPG") << "jpeg" << QStringList({"/a/b.JPG"}) << true;
    QTest::newRow("jpeg") << "jpeg" << QStringList({"/a/b.jpeg"}) << true;
    QTest::newRow("png for a jpeg") << "jpeg" << QStringList({"/a/b.png"}) << false;
    QTest::newRow("jpg for another") << "rgba32" << QStringList({"/a/b.jpg"}) << false;
    QTest::newRow("two files") << "rgba32" << QStringList({"/a/b.png", "/a/c.png"}) << false;
    QTest::newRow("bmp") << "rgba32" << QStringList({"/a/b.bmp"}) << false;
    QTest::newRow("no suffix") << "rgba32" << QStringList({"/a/png"}) << false;
    QTest::newRow("unknown format") << "tim" << QStringList({"/a/b.png"}) << false;
    QTest::newRow("JPEG is unknown") << "JPEG" << QStringList({"/a/b.jpg"}) << false;
}

void TestPreview::dragsAccepted()
{
    QFETCH(QString, format);
    QFETCH(QStringList, files);
    QFETCH(bool, accepted);
    PreviewWindow window;
    window.showTexture(format, 0, 8, 8);
    QCOMPARE(takesDrag(&window, files), accepted);
}

void TestPreview::dragsWithoutImageOrTexture()
{
    PreviewWindow window;
    QVERIFY(!takesDrag(&window, {"/a/b.png"}));
    window.showTexture("i8", 0, 8, 8);
    QVERIFY(takesDrag(&window, {"/a/b.png"}));
    currentROM.loaded = false;
    QVERIFY(!takesDrag(&window, {"/a/b.png"}));
}

void TestPreview::dragIsLogged()
{
    PreviewWindow window;
    const MessageCapture log;
    takesDrag(&window, {"/a/b.png", "/a/c.png"});
    QCOMPARE(log.textsOf("virtual void TexturePreviewArea::dragEnterEvent(QDragEnterEvent *)"), QStringList({"\"/a/b.png\""}));
}

void TestPreview::dragWithoutFiles()
{
    PreviewWindow window;
    window.showTexture("i8", 0, 8, 8);
    QMimeData data;
    data.setText("b.png");
    QDragEnterEvent event(QPoint(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    event.accept();
    const MessageCapture log;
    (window.area()->*&OpenArea::dragEnterEvent)(&event);
    QVERIFY(!event.isAccepted());
    QVERIFY(log.all().isEmpty());
}

void TestPreview::refusedDragIsNotTakenByTheWindow_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("file");
    QTest::newRow("picture of another kind") << "jpeg"
                                             << "picture.png";
    QTest::newRow("texture of an unknown format") << "tim"
                                                  << "picture.png";
    QTest::newRow("cartridge image") << "i8"
                                     << "game.z64";
    QTest::newRow("no texture selected") << QString() << "picture.png";
}

void TestPreview::refusedDragIsNotTakenByTheWindow()
{
    QFETCH(QString, format);
    QFETCH(QString, file);
    PreviewWindow window;
    window.show();
    if (!format.isEmpty())
        window.showTexture(format, 0, 8, 8);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile("/a/" + file)});
    QDragEnterEvent overPreview(QPoint(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.area()->viewport(), &overPreview);
    QVERIFY(!overPreview.isAccepted());
    QDragEnterEvent overTree(QPoint(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.tree()->viewport(), &overTree);
    QVERIFY(overTree.isAccepted());
}

void TestPreview::dropReplacesTheTexture()
{
    QTemporaryDir folder;
    QImage picture(8, 8, QImage::Format_ARGB32);
    picture.fill(qRgba(1, 2, 3, 255));
    const QString path = folder.filePath("picture.png");
    QVERIFY(picture.save(path));
    PreviewWindow window;
    window.showTexture("rgba32", 0x400, 8, 8);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path)});
    QDragEnterEvent enter(QPoint(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.area()->viewport(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent event(QPointF(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.area()->viewport(), &event);
    QVERIFY(event.isAccepted());
    QCOMPARE(currentROM.data.mid(0x400, 4), QByteArray::fromHex("010203FF"));
    QCOMPARE(currentROM.data.mid(0x4FC, 4), QByteArray::fromHex("010203FF"));
    QCOMPARE(window.label()->pixmap(Qt::ReturnByValue).toImage().pixel(3, 3), qRgba(1, 2, 3, 255));
}

QTEST_MAIN(TestPreview)
#include "tst_preview.moc"
