// SPDX-License-Identifier: MIT
#include "codec/texturemanipulator.h"
#include "model/textureformat.h"
#include "support/pictures.h"
#include "support/tablewindow.h"
#include "widgets/formatcompleter.h"
#include "widgets/previewlabel.h"
#include "widgets/texturepreviewarea.h"

#include <QHelpEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSettings>
#include <QSpinBox>
#include <QStatusBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolTip>
#include <QWheelEvent>

namespace
{
class MappingWindow : public TableWindow
{
public:
    using TableWindow::TableWindow;

    PreviewLabel *label() { return find<PreviewLabel>("previewLabel"); }
    TexturePreviewArea *area() { return find<TexturePreviewArea>("previewArea"); }
    QLineEdit *field(const char *name) { return find<QLineEdit>(name); }
    QString status() { return get()->statusBar()->currentMessage(); }

    fileTreeFile *showTexture(const QString &format, int address, int width, int height)
    {
        fileTreeFile *texture = addTexture(currentROM.root, QStringLiteral("Sky"), address, format, width, height);
        select(texture);
        return texture;
    }

    /// Turns the wheel by \a angle eighths of a degree over \a position of the label. Only an event of the system is passed on to
    /// the widgets around the label.
    void turnWheel(const QPoint &position, int angle, Qt::KeyboardModifiers modifiers = Qt::ControlModifier)
    {
        QWheelEvent event(position, label()->mapToGlobal(position), QPoint(), QPoint(0, angle), Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&event);
        qApp->notify(label(), &event);
    }

    void showActive()
    {
        show();
        get()->activateWindow();
        if (!QTest::qWaitForWindowActive(get()))
            qFatal("the window is not active");
    }
};

/// What \a label draws, at \a ratio device pixels for each unit.
QImage drawn(QWidget *label, int ratio)
{
    QImage image(label->size() * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    label->render(&image);
    return image;
}
}

class MappingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { setApplicationIdentity(); }
    void init() { QSettings().clear(); }
    void cleanup() { resetCurrentROM(); }

    void zoomsWithTheWheel();
    void zoomsWithKeys();
    void pixelsAreSharp_data();
    void pixelsAreSharp();
    void zoomEndsWithTheTexture();
    void zoomKeepsWhatIsUnderThePointer();
    void zoomedPreviewIsClicked();
    void zoomsTheLongestTexture();
    void hoverTellsThePixel();
    void hoverFollowsTheTexture();
    void stepsOffset_data();
    void stepsOffset();
    void stepsPalette();
    void stepsCanBeUndone();
    void stepsStayInRange();
    void readOnlyFieldsDoNotStep();
    void completesFormats_data();
    void completesFormats();
    void chosenFormatIsPreviewed();
    void aliasIsNotStored();
    void tipOfUnknownFormatListsAll();
    void tips();
    void enterSaves_data();
    void enterSaves();
    void f2GoesToTheName();
    void newEntriesAreNamedAtOnce();
    void searchTellsItsOutcome();
};

void MappingTest::zoomsWithTheWheel()
{
    MappingWindow window;
    window.show();
    QTest::keyClick(window.get(), Qt::Key_Plus, Qt::ControlModifier); // no picture yet
    QCOMPARE(window.label()->zoom(), 1);
    window.showTexture("i8", 0x100, 8, 4);
    QCOMPARE(window.label()->size(), QSize(8, 4));

    window.turnWheel(QPoint(1, 1), 120);
    QCOMPARE(window.label()->zoom(), 2);
    QCOMPARE(window.label()->size(), QSize(16, 8));
    window.turnWheel(QPoint(1, 1), 60);
    QCOMPARE(window.label()->zoom(), 2);
    window.turnWheel(QPoint(1, 1), 60); // Finer wheels add up.
    QCOMPARE(window.label()->zoom(), 3);
    window.turnWheel(QPoint(1, 1), 120 * 30);
    QCOMPARE(window.label()->zoom(), 16);
    QCOMPARE(window.label()->size(), QSize(128, 64));
    window.turnWheel(QPoint(1, 1), -120);
    QCOMPARE(window.label()->zoom(), 15);
    window.turnWheel(QPoint(1, 1), -120 * 30);
    QCOMPARE(window.label()->zoom(), 1);
    window.turnWheel(QPoint(1, 1), 120, Qt::NoModifier);
    QCOMPARE(window.label()->zoom(), 1);
    QCOMPARE(window.label()->pixmap(Qt::ReturnByValue).size(), QSize(8, 4));
}

void MappingTest::zoomsWithKeys()
{
    MappingWindow window;
    window.showActive();
    window.showTexture("i8", 0x100, 8, 4);
    window.tree()->setFocus();
    QTest::keyClick(window.tree(), Qt::Key_Plus, Qt::ControlModifier);
    QCOMPARE(window.label()->zoom(), 2);
    QTest::keyClick(window.tree(), Qt::Key_Equal, Qt::ControlModifier);
    QCOMPARE(window.label()->zoom(), 3);
    QTest::keyClick(window.tree(), Qt::Key_Minus, Qt::ControlModifier);
    QCOMPARE(window.label()->zoom(), 2);
    QTest::keyClick(window.tree(), Qt::Key_Plus, Qt::ControlModifier);
    QTest::keyClick(window.tree(), Qt::Key_0, Qt::ControlModifier);
    QCOMPARE(window.label()->zoom(), 1);
}

void MappingTest::pixelsAreSharp_data()
{
    QTest::addColumn<int>("zoom");
    QTest::addColumn<int>("ratio");

    QTest::newRow("1:1") << 1 << 1;
    QTest::newRow("1:1 at two device pixels") << 1 << 2;
    QTest::newRow("5:1") << 5 << 1;
    QTest::newRow("3:1 at two device pixels") << 3 << 2;
    QTest::newRow("16:1 at two device pixels") << 16 << 2;
}

void MappingTest::pixelsAreSharp()
{
    QFETCH(const int, zoom);
    QFETCH(const int, ratio);
    MappingWindow window;
    window.show();
    window.showTexture("rgb5a1", 0x100, 5, 3);
    for (int i = 0; i < 15; ++i) { // Opaque, and each pixel different from its neighbours.
        currentROM.data[0x100 + 2 * i] = char(0x10 * i);
        currentROM.data[0x101 + 2 * i] = char(i % 2 == 0 ? 0x3F : 0x01);
    }
    window->renderTexture();
    window.label()->setZoom(zoom);
    const QImage picture = window.label()->pixmap(Qt::ReturnByValue).toImage();
    const int side = zoom * ratio;
    QImage expected(QSize(5, 3) * side, QImage::Format_RGB32);
    for (int y = 0; y < expected.height(); ++y) {
        for (int x = 0; x < expected.width(); ++x)
            expected.setPixel(x, y, picture.pixel(x / side, y / side));
    }
    QImage shown = drawn(window.label(), ratio);
    shown.setDevicePixelRatio(1);
    QCOMPARE(shown, expected);
}

void MappingTest::zoomEndsWithTheTexture()
{
    MappingWindow window;
    window.show();
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Ground", 0);
    fileTreeFile *first = window.showTexture("i8", 0x100, 8, 4);
    fileTreeFile *second = window.addTexture(currentROM.root, "Other", 0x200, "i8", 8, 4);
    window.turnWheel(QPoint(1, 1), 240);
    window.find<QSpinBox>("textureWidth")->setValue(16); // an edit of the same texture
    QCOMPARE(window.label()->size(), QSize(48, 12));
    window.select(folder); // shows the same texture
    QCOMPARE(window.label()->zoom(), 3);
    window.select(second);
    QCOMPARE(window.label()->zoom(), 1);
    QCOMPARE(window.label()->size(), QSize(8, 4));
    window.turnWheel(QPoint(1, 1), 240);
    window.select(first);
    QCOMPARE(window.label()->zoom(), 1);
}

void MappingTest::zoomKeepsWhatIsUnderThePointer()
{
    MappingWindow window;
    window.show();
    window.showTexture("i8", 0, 240, 250);
    window.turnWheel(QPoint(120, 120), 120 * 7);
    const QPoint pixel(100, 120);
    const QPoint before = window.label()->mapTo(window.area(), pixel * 8);
    window.turnWheel(pixel * 8, 120);
    const QPoint after = window.label()->mapTo(window.area(), pixel * 9);
    QVERIFY((before - after).manhattanLength() <= 2);
}

void MappingTest::zoomedPreviewIsClicked()
{
    MappingWindow window;
    window.show();
    window.showTexture("i8", 0x100, 8, 4);
    window.turnWheel(QPoint(1, 1), 120 * 9);
    QTest::mouseClick(window.label(), Qt::LeftButton, Qt::NoModifier, QPoint(70, 30));
    QCOMPARE(window.label()->styleSheet(), QStringLiteral("background: rgb(255,0,255);"));
    QCOMPARE(window.label()->zoom(), 10);
}

/// No picture of the enlarged size is made: it would have 256 times as many pixels.
void MappingTest::zoomsTheLongestTexture()
{
    MappingWindow window(cartridgeImage(1024 * 1024));
    window.show();
    window.showTexture("i4", 0, 1000000, 1);
    window.turnWheel(QPoint(1, 0), 120 * 20);
    QCOMPARE(window.label()->size(), QSize(16000000, 16));
    QScrollBar *bar = window.area()->horizontalScrollBar();
    bar->setValue(bar->maximum());
    QVERIFY(!window.area()->grab().isNull());
}

void MappingTest::hoverTellsThePixel()
{
    MappingWindow window;
    window.show();
    window.showTexture("rgb5a1", 0x100, 8, 4);
    currentROM.data.replace(0x100 + 2 * 11, 2, QByteArray::fromHex("0ABC"));
    window.turnWheel(QPoint(1, 1), 120 * 9);
    QTRY_VERIFY(window.label()->isVisible());
    QTest::mouseMove(window.label(), QPoint(3 * 10 + 9, 1 * 10));
    QTRY_COMPARE(window.status(), QStringLiteral("Pixel 3, 1, address 0x00000116, value 0x0ABC"));
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(window.label(), &leave);
    QCOMPARE(window.status(), QString());
}

void MappingTest::hoverFollowsTheTexture()
{
    MappingWindow window;
    window.show();
    window.showTexture("i4", 0x100, 8, 4);
    currentROM.data.replace(0x100, 2, QByteArray::fromHex("1A2B"));
    window.turnWheel(QPoint(1, 1), 120 * 9);
    QTest::mouseMove(window.label(), QPoint(15, 5));
    QTRY_COMPARE(window.status(), QStringLiteral("Pixel 1, 0, address 0x00000100, value 0xA"));
    QTest::keyClick(window.field("textureOffset"), Qt::Key_Up);
    QCOMPARE(window.status(), QStringLiteral("Pixel 1, 0, address 0x00000101, value 0xB"));
    window.field("textureFormat")->selectAll();
    QTest::keyClicks(window.field("textureFormat"), "sky"); // a message in place of the picture
    QCOMPARE(window.status(), QString());
}

void MappingTest::stepsOffset_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<int>("offset");

    QTest::newRow("texel") << "rgb5a1" << int(Qt::Key_Up) << 0 << 0x1002;
    QTest::newRow("texel back") << "rgba32" << int(Qt::Key_Down) << 0 << 0xFFC;
    QTest::newRow("a byte at least") << "i4" << int(Qt::Key_Up) << 0 << 0x1001;
    QTest::newRow("row") << "i4" << int(Qt::Key_PageUp) << 0 << 0x1008;
    QTest::newRow("row back") << "rgba32" << int(Qt::Key_PageDown) << 0 << 0xFC0;
    QTest::newRow("texture") << "ia8" << int(Qt::Key_PageUp) << int(Qt::ControlModifier) << 0x1080;
    QTest::newRow("texture back") << "ia8" << int(Qt::Key_PageDown) << int(Qt::ControlModifier) << 0xF80;
    QTest::newRow("keypad") << "ia8" << int(Qt::Key_Up) << int(Qt::KeypadModifier) << 0x1001;
    QTest::newRow("not with Shift") << "ia8" << int(Qt::Key_Up) << int(Qt::ShiftModifier) << 0x1000;
}

void MappingTest::stepsOffset()
{
    QFETCH(const QString, format);
    QFETCH(const int, offset);
    QFETCH(const int, key);
    QFETCH(const int, modifiers);
    MappingWindow window;
    const fileTreeFile *texture = window.showTexture(format, 0x1000, 16, 8);
    QTest::keyClick(window.field("textureOffset"), Qt::Key(key), Qt::KeyboardModifiers(modifiers));
    QCOMPARE(window.field("textureOffset")->text(),
             QStringLiteral("0x%1").arg(offset, 8, 16, QLatin1Char('0')).toUpper().replace('X', 'x'));
    QCOMPARE(currentROM.editedTexture->address, offset); // as by typing: only the working copy
    QCOMPARE(texture->address, 0x1000);
    QCOMPARE(window.find<QLabel>("textureUnsaved")->isHidden(), offset == 0x1000);
    const QImage picture = window.label()->pixmap(Qt::ReturnByValue).toImage().convertToFormat(QImage::Format_ARGB32);
    const QImage expected =
        textureManipulator::generateTexture(currentROM.editedTexture->data(), *textureFormats::find(format), 16, QByteArray());
    QCOMPARE(picture.pixel(3, 2), QPixmap::fromImage(expected).toImage().convertToFormat(QImage::Format_ARGB32).pixel(3, 2));
}

void MappingTest::stepsPalette()
{
    MappingWindow window;
    window.showTexture("ci4", 0x1000, 16, 8);
    QLineEdit *palette = window.field("texturePalette");
    const auto after = [palette](int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(palette, Qt::Key(key), modifiers);
        return currentROM.editedTexture->paletteAddress;
    };
    QCOMPARE(after(Qt::Key_Up), 2);
    QCOMPARE(after(Qt::Key_PageUp), 34);
    QCOMPARE(after(Qt::Key_PageUp, Qt::ControlModifier), 98);
    QCOMPARE(palette->text(), QStringLiteral("0x00000062"));
    QCOMPARE(after(Qt::Key_PageDown, Qt::ControlModifier), 34);
    QCOMPARE(after(Qt::Key_PageDown), 2);
    QCOMPARE(after(Qt::Key_Down), 0);
}

void MappingTest::stepsCanBeUndone()
{
    MappingWindow window;
    window.showTexture("i8", 0x1000, 16, 8);
    QTest::keyClick(window.field("textureOffset"), Qt::Key_PageUp);
    QCOMPARE(currentROM.editedTexture->address, 0x1010);
    window.field("textureOffset")->undo();
    QCOMPARE(currentROM.editedTexture->address, 0x1000);
}

void MappingTest::stepsStayInRange()
{
    MappingWindow window;
    window.showTexture("rgba32", 2, 16, 8);
    QTest::keyClick(window.field("textureOffset"), Qt::Key_Down);
    QCOMPARE(currentROM.editedTexture->address, 2);
    fileTreeFile *last = window.addTexture(currentROM.root, "Last", 0x7FFFFFFE, "rgba32", 16, 8);
    window.select(last);
    QTest::keyClick(window.field("textureOffset"), Qt::Key_Up);
    QCOMPARE(currentROM.editedTexture->address, 0x7FFFFFFE);
    fileTreeFile *negative = window.addTexture(currentROM.root, "Negative", -8, "rgba32", 16, 8);
    window.select(negative);
    QTest::keyClick(window.field("textureOffset"), Qt::Key_Down);
    QCOMPARE(currentROM.editedTexture->address, -12);
    QTest::keyClick(window.field("textureOffset"), Qt::Key_PageUp);
    QCOMPARE(currentROM.editedTexture->address, 52);
}

void MappingTest::readOnlyFieldsDoNotStep()
{
    MappingWindow window;
    QTest::keyClick(window.field("textureOffset"), Qt::Key_Up);
    QCOMPARE(window.field("textureOffset")->text(), QString());
}

void MappingTest::completesFormats_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("offered");

    QTest::newRow("beginning") << "rg" << QStringList {"rgb5a1", "rgba32"};
    QTest::newRow("part") << "a8" << QStringList {"ia8"};
    QTest::newRow("any case") << "CI" << QStringList {"ci4", "ci8"};
    QTest::newRow("alias") << "rgba1" << QStringList {"rgb5a1"};
    QTest::newRow("all") << "" << QStringList(textureFormats::getAsMap().keys());
    QTest::newRow("none") << "sky" << QStringList();
}

void MappingTest::completesFormats()
{
    QFETCH(const QString, typed);
    MappingWindow window;
    window.showTexture("i8", 0x1000, 16, 8);
    QCompleter *completer = window.field("textureFormat")->completer();
    QVERIFY(completer);
    completer->setCompletionPrefix(typed);
    QStringList offered;
    for (int row = 0; completer->setCurrentRow(row); ++row)
        offered << completer->currentCompletion();
    QTEST(offered, "offered");
}

void MappingTest::chosenFormatIsPreviewed()
{
    MappingWindow window;
    window.showActive();
    window.showTexture("i8", 0x1000, 16, 8);
    QLineEdit *field = window.field("textureFormat");
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, "rgba16");
    QWidget *popup = field->completer()->popup();
    QTRY_VERIFY(popup->isVisible());
    QCOMPARE(currentROM.editedTexture->format, QStringLiteral("rgba16")); // as typed
    QTest::keyClick(popup, Qt::Key_Down);
    QCOMPARE(field->text(), QStringLiteral("rgb5a1"));
    QCOMPARE(currentROM.editedTexture->format, QStringLiteral("rgb5a1"));
    QVERIFY(window.label()->showsPicture());
    QTest::keyClick(popup, Qt::Key_Return); // takes it, and saves
    QCOMPARE(currentROM.lastSelectedTexture->format, QStringLiteral("rgb5a1"));
    QVERIFY(window.find<QLabel>("textureUnsaved")->isHidden());
}

void MappingTest::aliasIsNotStored()
{
    MappingWindow window;
    window.showActive();
    fileTreeFile *texture = window.showTexture("i8", 0x1000, 16, 8);
    QLineEdit *field = window.field("textureFormat");
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, "rgba16");
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(texture->format, QStringLiteral("rgb5a1"));
    field->selectAll();
    QTest::keyClicks(field, "rgba16");
    QTest::keyClick(field, Qt::Key_Tab);
    QCOMPARE(field->text(), QStringLiteral("rgb5a1"));
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, "sky");
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(texture->format, QStringLiteral("sky")); // What is no format stays as typed.
}

void MappingTest::tipOfUnknownFormatListsAll()
{
    MappingWindow window;
    window.show();
    QLineEdit *field = window.field("textureFormat");
    const auto tip = [field] {
        QToolTip::hideText();
        QHelpEvent event(QEvent::ToolTip, QPoint(5, 5), field->mapToGlobal(QPoint(5, 5)));
        QCoreApplication::sendEvent(field, &event);
        return QToolTip::text();
    };
    window.showTexture("sky", 0x1000, 16, 8);
    QCOMPARE(tip(), QStringLiteral("Unknown format.\nThe formats are: ci4, ci8, i4, i8, ia16, ia4, ia8, jpeg, rgb5a1, rgba32"));
    field->selectAll();
    QTest::keyClicks(field, "i8");
    QCOMPARE(tip(), textureFormats::i8.description);
    QToolTip::hideText();
}

void MappingTest::tips()
{
    MappingWindow window;
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Ground", 0x1000);
    fileTreeFile *texture = window.addTexture(folder, "Grass", 0, "ci4", 16, 8);
    texture->paletteAddress = 0x20;
    window.select(texture);
    QVERIFY(window.field("textureOffset")->toolTip().contains("Ctrl+Page Up"));
    QVERIFY(window.field("texturePalette")->toolTip().startsWith("Address in the image: 0x00001020\n"));
    QVERIFY(window.field("texturePalette")->toolTip().contains("one palette"));
    QTest::keyClick(window.field("texturePalette"), Qt::Key_Up);
    QVERIFY(window.field("texturePalette")->toolTip().startsWith("Address in the image: 0x00001022\n"));
}

void MappingTest::enterSaves_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"textureName", "textureOffset", "textureFormat", "texturePalette", "textureWidth", "textureHeight",
                             "folderName", "folderOffset", "folderSize"})
        QTest::newRow(name) << name;
}

void MappingTest::enterSaves()
{
    QFETCH(const QString, name);
    MappingWindow window;
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Ground", 0x1000);
    fileTreeFile *texture = window.addTexture(folder, "Grass", 0, "ci4", 16, 8);
    window.select(texture);
    auto *field = window->findChild<QWidget *>(name);
    const bool ofFolder = name.startsWith("folder");
    const char *nameField = ofFolder ? "folderName" : "textureName";
    window.field(nameField)->selectAll();
    QTest::keyClicks(window.field(nameField), "Meadow");
    QCOMPARE(ofFolder ? folder->name : texture->name, ofFolder ? QStringLiteral("Ground") : QStringLiteral("Grass"));
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(ofFolder ? folder->name : texture->name, QStringLiteral("Meadow"));
    QVERIFY(window.find<QLabel>(ofFolder ? "folderUnsaved" : "textureUnsaved")->isHidden());
    QVERIFY(window.noticeIsShown());
}

void MappingTest::f2GoesToTheName()
{
    MappingWindow window;
    window.showActive();
    fileTreeDirectory *folder = window.addFolder(currentROM.root, "Ground", 0x1000);
    fileTreeFile *texture = window.addTexture(folder, "Grass", 0, "i8", 16, 8);
    window.tree()->setFocus();
    window.tree()->setCurrentItem(window.rootRow());
    QTest::keyClick(window.tree(), Qt::Key_F2); // The root cannot be named.
    QVERIFY(window.tree()->hasFocus());
    window.select(folder);
    QTest::keyClick(window.tree(), Qt::Key_F2);
    QVERIFY(window.field("folderName")->hasFocus());
    QCOMPARE(window.field("folderName")->selectedText(), QStringLiteral("Ground"));
    window.find<QTabWidget>("tabWidget")->setTabEnabled(1, true);
    window.find<QTabWidget>("tabWidget")->setCurrentIndex(1);
    window.tree()->setFocus();
    window.select(texture);
    QTest::keyClick(window.tree(), Qt::Key_F2);
    QVERIFY(window.field("textureName")->hasFocus());
    QCOMPARE(window.field("textureName")->selectedText(), QStringLiteral("Grass"));
}

void MappingTest::newEntriesAreNamedAtOnce()
{
    MappingWindow window;
    window.showActive();
    window.tree()->setFocus();
    window.tree()->setCurrentItem(window.rootRow());
    window->addFile();
    QVERIFY(window.field("folderName")->hasFocus());
    QCOMPARE(window.field("folderName")->selectedText(), QStringLiteral("New Folder"));
    window->addTexture();
    QVERIFY(window.field("textureName")->hasFocus());
    QCOMPARE(window.field("textureName")->selectedText(), QStringLiteral("New Texture"));
}

void MappingTest::searchTellsItsOutcome()
{
    MappingWindow window;
    const QByteArray sky = QByteArray::fromHex("0102030405060708090A0B0C0D0E0F10");
    currentROM.data.replace(0x1000, sky.size(), sky);
    currentROM.data.replace(0x2000, sky.size(), sky);
    window.tree()->setCurrentItem(window.rootRow());
    QTemporaryDir folder;
    const QString found = folder.filePath("Sky.png");
    const QString missing = folder.filePath("Sea.png");
    const QImage picture = textureManipulator::generateTexture(sky, textureFormats::i8, 4, QByteArray());
    QVERIFY(picture.save(found));
    QImage other(4, 4, QImage::Format_ARGB32);
    other.fill(qRgba(1, 1, 1, 255));
    QVERIFY(other.save(missing));

    const QMap<QString, textureFormat> formats {{"i8", textureFormats::i8}};
    window->runFindTexture({found, missing}, formats, false, 1);
    QCOMPARE(window.status(), QStringLiteral("Copies found: 2. Pictures found: 1 of 2."));
    window->runFindTexture({missing}, formats, false, 2);
    QCOMPARE(window.status(), QStringLiteral("No copies found."));
}

QTEST_MAIN(MappingTest)
#include "tst_mapping.moc"
