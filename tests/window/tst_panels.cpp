// SPDX-License-Identifier: MIT
#include "support/tablewindow.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSettings>
#include <QSpinBox>
#include <QStatusBar>
#include <QTabWidget>
#include <QWheelEvent>

namespace
{
/// A window with the folder Root/A at 0x100, in it the texture Sky at 0x40 and the folder B at 0x20, in that the texture Sea at
/// 0x8; besides, the folder Root/AB with the texture Sun.
class PanelWindow : public TableWindow
{
public:
    PanelWindow()
    {
        a = addFolder(currentROM.root, "A", 0x100, 0x800);
        sky = addTexture(a, "Sky", 0x40, "ci4", 16, 8);
        sky->paletteAddress = 0x20;
        b = addFolder(a, "B", 0x20);
        sea = addTexture(b, "Sea", 0x8, "i8", 8, 8);
        ab = addFolder(currentROM.root, "AB", 0x200);
        sun = addTexture(ab, "Sun", 0x30, "i8", 8, 8);
    }

    QLineEdit *field(const char *name) { return find<QLineEdit>(name); }
    QString text(const char *name) { return field(name)->text(); }
    bool isHidden(const char *name) { return find<QWidget>(name)->isHidden(); }
    bool isEnabled(const char *name) { return find<QWidget>(name)->isEnabled(); }

    /// Replaces what stands in a field by typing.
    void type(const char *name, const QString &typed)
    {
        QLineEdit *line = field(name);
        line->selectAll();
        if (typed.isEmpty())
            QTest::keyClick(line, Qt::Key_Backspace);
        else
            QTest::keyClicks(line, typed);
    }

    void press(const char *name) { QTest::mouseClick(find<QPushButton>(name), Qt::LeftButton); }

    QLabel *captionOf(const char *name)
    {
        const QList<QLabel *> labels = get()->findChildren<QLabel *>();
        for (QLabel *label : labels) {
            if (label->buddy() == find<QWidget>(name))
                return label;
        }
        qFatal("no caption belongs to %s", name);
        return nullptr;
    }

    fileTreeDirectory *a;
    fileTreeDirectory *b;
    fileTreeDirectory *ab;
    fileTreeFile *sky;
    fileTreeFile *sea;
    fileTreeFile *sun;
};
}

class TestPanels : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { setApplicationIdentity(); }
    void init() { QSettings().clear(); }

    void layout_data();
    void layout();
    void initialState();
    void styleFollowsReadOnly();
    void tabOrderFollowsTheRows();
    void showsFolder();
    void showsRoot();
    void showsNoFolder();
    void showsTexture();
    void showsFieldsByFormat_data();
    void showsFieldsByFormat();
    void showsNoTexture();
    void showingAnEntryIsNoEdit();
    void showsNumbers();
    void valuesBeyondTheSpinBoxes();
    void numberEntry_data();
    void numberEntry();
    void folderEditStaysInTheWorkingCopy();
    void textureEditStaysInTheWorkingCopy();
    void sizeOfTheSpinBoxes();
    void addressFieldsAreWiredOddly();
    void editsWithoutSelection();
    void typedFormat();
    void selectingAnotherEntryDropsEdits();
    void savesFolder();
    void savedFolderKeepsItsContents();
    void savedFolderNameIsUnique();
    void movedFolder_data();
    void movedFolder();
    void unmovedFolderLeavesItsContents();
    void movedFolderRefreshesTheTexturePanel();
    void renamedFolderRefreshesTheTexturesPath();
    void movedSiblingLeavesTheTexturePanel();
    void savingTheTextureKeepsItsFixedAddress();
    void savesTexture();
    void savedTextureStaysInItsFolder();
    void emptyNames();
    void rootIsNotSaved();
    void savingSorts();
    void savingAFormatChangesTheActions();
    void firstScrollAreaIsThePreview();
    void wheelNeedsTheFocus();
    void buttonsStayWhenTheLabelsAppear_data();
    void buttonsStayWhenTheLabelsAppear();
};

void TestPanels::firstScrollAreaIsThePreview()
{
    PanelWindow window;
    QWidget *tab = window.find<QTabWidget>("tabWidget")->widget(0);
    QCOMPARE(tab->findChild<QScrollArea *>()->objectName(), QStringLiteral("previewArea"));
    QCOMPARE(tab->findChildren<QScrollArea *>().first()->objectName(), QStringLiteral("previewArea"));
    QCOMPARE(window->findChild<QScrollArea *>()->objectName(), QStringLiteral("previewArea"));
}

/// A user who scrolls the column with the wheel does not change what is under the pointer.
void TestPanels::wheelNeedsTheFocus()
{
    PanelWindow window;
    window.show();
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    window.select(window.sky);
    for (const char *name : {"textureWidth", "textureHeight"}) {
        auto *field = window.find<QSpinBox>(name);
        const int value = field->value();
        const auto turn = [field] {
            const QPointF centre = field->rect().center();
            QWheelEvent event(centre, field->mapToGlobal(field->rect().center()), QPoint(), QPoint(0, 120), Qt::NoButton,
                              Qt::NoModifier, Qt::NoScrollPhase, false);
            QApplication::sendEvent(field, &event);
        };
        window.tree()->setFocus();
        turn();
        QCOMPARE(field->value(), value);
        QVERIFY(!field->hasFocus());
        QVERIFY(window.isHidden("textureUnsaved"));
        field->setFocus();
        turn();
        QCOMPARE(field->value(), value + 1);
        window->updateTextureInfo();
    }
}

void TestPanels::buttonsStayWhenTheLabelsAppear_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("tab");
    QTest::newRow("folder") << "folderUnsaved"
                            << "folderSave" << 0;
    QTest::newRow("texture") << "textureUnsaved"
                             << "textureSave" << 0;
    QTest::newRow("profile") << "unsavedFileList"
                             << "saveProfile" << 1;
}

void TestPanels::buttonsStayWhenTheLabelsAppear()
{
    QFETCH(const QString, label);
    QFETCH(const QString, button);
    QFETCH(const int, tab);
    PanelWindow window;
    window.show();
    auto *tabs = window.find<QTabWidget>("tabWidget");
    tabs->setTabEnabled(tab, true);
    tabs->setCurrentIndex(tab);
    window.select(window.sky);
    QCoreApplication::processEvents();
    const auto *widget = window->findChild<QPushButton *>(button);
    const QPoint before = widget->mapTo(window.get(), QPoint());
    window->findChild<QLabel *>(label)->show();
    QCoreApplication::processEvents();
    QCOMPARE(widget->mapTo(window.get(), QPoint()), before);
}

void TestPanels::layout_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("captions");
    QTest::addColumn<int>("wholeRows");

    QTest::newRow("folder") << "Last Selected Folder" << QStringList({"Path:", "Name:", "Offset:", "Address:", "Size:"}) << 3;
    QTest::newRow("texture") << "Last Selected Texture"
                             << QStringList(
                                    {"Path:", "Name:", "Offset:", "Address:", "Format:", "Palette Address:", "Width:", "Height:"})
                             << 2;
}

void TestPanels::layout()
{
    QFETCH(QString, title);
    QFETCH(QStringList, captions);
    QFETCH(int, wholeRows);
    PanelWindow window;
    QGroupBox *box = nullptr;
    const QList<QGroupBox *> boxes = window->findChildren<QGroupBox *>();
    for (QGroupBox *candidate : boxes) {
        if (candidate->title() == title)
            box = candidate;
    }
    QVERIFY(box);
    auto *grid = qobject_cast<QGridLayout *>(box->layout());
    QVERIFY(grid);
    QCOMPARE(grid->columnStretch(0), 1);
    QCOMPARE(grid->columnStretch(1), 3);
    QCOMPARE(grid->rowCount(), captions.size() + wholeRows);
    for (int row = 0; row < captions.size(); ++row) {
        auto *caption = qobject_cast<QLabel *>(grid->itemAtPosition(row, 0)->widget());
        QVERIFY(caption);
        QCOMPARE(caption->text(), captions.at(row));
        QWidget *field = grid->itemAtPosition(row, 1)->widget();
        QCOMPARE(caption->buddy(), field);
        QVERIFY(!field->accessibleName().isEmpty());
        QVERIFY(!field->objectName().isEmpty());
    }
    for (int row = int(captions.size()); row < grid->rowCount(); ++row)
        QCOMPARE(grid->itemAtPosition(row, 0)->widget(), grid->itemAtPosition(row, 1)->widget());
}

void TestPanels::initialState()
{
    resetCurrentROM();
    MainWindow window;
    for (const char *name : {"folderPath", "folderName", "folderOffset", "folderAddress", "folderSize", "texturePath",
                             "textureName", "textureOffset", "textureAddress", "textureFormat", "texturePalette"}) {
        auto *field = window.findChild<QLineEdit *>(QLatin1String(name));
        QVERIFY2(field, name);
        QVERIFY2(field->isReadOnly(), name);
        QCOMPARE(field->text(), QString());
    }
    auto *fixed = window.findChild<QCheckBox *>("fixedContentAddresses");
    QCOMPARE(fixed->text(), QStringLiteral("Fixed content addresses"));
    QCOMPARE(fixed->toolTip(),
             QStringLiteral("When this is enabled, the offset of the content is modified so that their "
                            "addresses stay the same, even if you move the folder."));
    QVERIFY(!fixed->isChecked());
    QVERIFY(!fixed->isEnabled());
    for (const char *name : {"folderUnsaved", "textureUnsaved"}) {
        auto *label = window.findChild<QLabel *>(QLatin1String(name));
        QCOMPARE(label->text(), QStringLiteral("There are unsaved changes."));
        QVERIFY(label->alignment() & Qt::AlignHCenter);
        QVERIFY(label->isHidden());
    }
    for (const char *name : {"folderSave", "textureSave"}) {
        auto *button = window.findChild<QPushButton *>(QLatin1String(name));
        QCOMPARE(button->text(), QStringLiteral("Save changes"));
        QVERIFY(!button->isEnabled());
    }
    QVERIFY(window.findChild<QWidget *>("texturePalette")->isHidden());
    for (const char *name : {"textureWidth", "textureHeight"}) {
        auto *box = window.findChild<QSpinBox *>(QLatin1String(name));
        QCOMPARE(box->minimum(), 1);
        QCOMPARE(box->maximum(), 100000);
    }
}

void TestPanels::styleFollowsReadOnly()
{
    PanelWindow window;
    auto *panel = window.find<QWidget>("selectionPanel");
    const QString sheet = QStringLiteral("QLineEdit {qproperty-frame: true} "
                                         "QLineEdit[readOnly=\"true\"] {qproperty-frame: false;background-color:transparent}");
    QCOMPARE(panel->styleSheet(), sheet);
    window.show();
    window.select(window.a);
    QVERIFY(window.field("folderName")->hasFrame());
    QVERIFY(!window.field("folderAddress")->hasFrame());
    window.select(currentROM.root);
    QVERIFY(!window.field("folderName")->hasFrame());
    window.select(window.sky);
    QVERIFY(window.field("folderName")->hasFrame());
    QVERIFY(window.field("textureFormat")->hasFrame());
    QVERIFY(!window.field("texturePath")->hasFrame());
    window.tree()->clearSelection();
    QVERIFY(!window.field("textureFormat")->hasFrame());
    QCOMPARE(panel->styleSheet(), sheet);
}

void TestPanels::tabOrderFollowsTheRows()
{
    PanelWindow window;
    window.show();
    window.select(window.sky);
    window.field("folderPath")->setFocus();
    const QStringList expected {"folderName",    "folderOffset",   "folderAddress", "folderSize",    "fixedContentAddresses",
                                "folderSave",    "texturePath",    "textureName",   "textureOffset", "textureAddress",
                                "textureFormat", "texturePalette", "textureWidth",  "textureHeight", "textureSave"};
    QStringList reached;
    for (int i = 0; i < expected.size(); ++i) {
        QTest::keyClick(window->focusWidget(), Qt::Key_Tab);
        reached << window->focusWidget()->objectName();
    }
    QCOMPARE(reached, expected);
}

void TestPanels::showsFolder()
{
    PanelWindow window;
    window.select(window.b);
    QCOMPARE(window.text("folderPath"), QStringLiteral("Root/A/B"));
    QCOMPARE(window.text("folderName"), QStringLiteral("B"));
    QCOMPARE(window.text("folderOffset"), QStringLiteral("0x00000020"));
    QCOMPARE(window.text("folderAddress"), QStringLiteral("0x00000120"));
    QCOMPARE(window.text("folderSize"), QStringLiteral("0x00001000"));
    for (const char *name : {"folderName", "folderOffset", "folderSize"})
        QVERIFY2(!window.field(name)->isReadOnly(), name);
    for (const char *name : {"folderPath", "folderAddress"})
        QVERIFY2(window.field(name)->isReadOnly(), name);
    QVERIFY(window.isEnabled("fixedContentAddresses"));
    QVERIFY(window.isEnabled("folderSave"));
    QVERIFY(window.isHidden("folderUnsaved"));
    QCOMPARE(currentROM.editedFolder->name, QStringLiteral("B"));
    QCOMPARE(currentROM.editedFolder->realAddress(), 0x120);

    window.find<QCheckBox>("fixedContentAddresses")->setChecked(true);
    window.b->size = 0x99;
    window->updateDirectoryInfo();
    QVERIFY(!window.find<QCheckBox>("fixedContentAddresses")->isChecked());
    QCOMPARE(window.b->treeItem->text(5), QStringLiteral("0x00000099")); // the row follows
}

void TestPanels::showsRoot()
{
    PanelWindow window;
    window.select(window.b);
    window.select(currentROM.root);
    QCOMPARE(window.text("folderPath"), QStringLiteral("Root"));
    QCOMPARE(window.text("folderName"), QStringLiteral("Root"));
    QCOMPARE(window.text("folderAddress"), QStringLiteral("0x00000000"));
    QCOMPARE(window.text("folderSize"), QStringLiteral("0x00010000"));
    for (const char *name : {"folderPath", "folderName", "folderOffset", "folderAddress", "folderSize"})
        QVERIFY2(window.field(name)->isReadOnly(), name);
    QVERIFY(!window.isEnabled("fixedContentAddresses"));
    QVERIFY(!window.isEnabled("folderSave"));
}

void TestPanels::showsNoFolder()
{
    PanelWindow window;
    window.select(window.b);
    window.find<QCheckBox>("fixedContentAddresses")->setChecked(true);
    window.type("folderName", "X");
    window.tree()->clearSelection();
    for (const char *name : {"folderPath", "folderName", "folderOffset", "folderAddress", "folderSize"}) {
        QCOMPARE(window.text(name), QString());
        QVERIFY2(window.field(name)->isReadOnly(), name);
    }
    QVERIFY(!window.find<QCheckBox>("fixedContentAddresses")->isChecked());
    QVERIFY(!window.isEnabled("fixedContentAddresses"));
    QVERIFY(!window.isEnabled("folderSave"));
    QVERIFY(window.isHidden("folderUnsaved"));
}

void TestPanels::showsTexture()
{
    PanelWindow window;
    window.select(window.sky);
    QCOMPARE(window.text("texturePath"), QStringLiteral("Root/A/Sky"));
    QCOMPARE(window.text("textureName"), QStringLiteral("Sky"));
    QCOMPARE(window.text("textureOffset"), QStringLiteral("0x00000040"));
    QCOMPARE(window.text("textureAddress"), QStringLiteral("0x00000140"));
    QCOMPARE(window.text("textureFormat"), QStringLiteral("ci4"));
    QCOMPARE(window.field("textureFormat")->toolTip(), textureFormats::ci4.description);
    QCOMPARE(window.text("texturePalette"), QStringLiteral("0x00000020")); // not 0x120
    QCOMPARE(window.find<QSpinBox>("textureWidth")->value(), 16);
    QCOMPARE(window.find<QSpinBox>("textureHeight")->value(), 8);
    for (const char *name : {"textureName", "textureOffset", "textureFormat", "texturePalette"})
        QVERIFY2(!window.field(name)->isReadOnly(), name);
    for (const char *name : {"texturePath", "textureAddress"})
        QVERIFY2(window.field(name)->isReadOnly(), name);
    QVERIFY(window.isEnabled("textureSave"));
    QVERIFY(window.isHidden("textureUnsaved"));
    QVERIFY(!window.find<QLabel>("previewLabel")->pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(window.sky->treeItem->text(0), QStringLiteral("Sky")); // filled, though its folder is collapsed
    // A folder that is selected next leaves the texture's panel as it is.
    window.select(window.ab);
    QCOMPARE(window.text("textureName"), QStringLiteral("Sky"));
}

void TestPanels::showsFieldsByFormat_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<bool>("palette");
    QTest::addColumn<bool>("dimensions");
    QTest::newRow("ci4") << "ci4" << true << true;
    QTest::newRow("ci8") << "ci8" << true << true;
    QTest::newRow("rgba32") << "rgba32" << false << true;
    QTest::newRow("jpeg") << "jpeg" << false << false;
    QTest::newRow("JPEG") << "JPEG" << false << false;
    QTest::newRow("CI8") << "CI8" << false << true;
    QTest::newRow("unknown") << "tim" << false << true;
}

void TestPanels::showsFieldsByFormat()
{
    QFETCH(QString, format);
    QFETCH(bool, palette);
    QFETCH(bool, dimensions);
    for (const bool typed : {false, true}) {
        PanelWindow window;
        if (!typed)
            window.sea->format = format;
        window.select(window.sea);
        if (typed)
            window.type("textureFormat", format);
        QCOMPARE(!window.isHidden("texturePalette"), palette);
        QCOMPARE(!window.captionOf("texturePalette")->isHidden(), palette);
        for (const char *name : {"textureWidth", "textureHeight"}) {
            QCOMPARE(!window.isHidden(name), dimensions);
            QCOMPARE(!window.captionOf(name)->isHidden(), dimensions);
        }
    }
}

void TestPanels::showsNoTexture()
{
    PanelWindow window;
    window.select(window.sky);
    window.type("textureName", "X");
    window.tree()->clearSelection();
    for (const char *name :
         {"texturePath", "textureName", "textureOffset", "textureAddress", "textureFormat", "texturePalette"}) {
        QCOMPARE(window.text(name), QString());
        QVERIFY2(window.field(name)->isReadOnly(), name);
    }
    for (const char *name : {"textureWidth", "textureHeight"}) {
        QCOMPARE(window.find<QSpinBox>(name)->value(), 1);
        QVERIFY(window.isHidden(name));
        QVERIFY(window.captionOf(name)->isHidden());
    }
    QVERIFY(window.isHidden("textureUnsaved"));
    QVERIFY(window.isHidden("texturePalette"));
    QVERIFY(window.captionOf("texturePalette")->isHidden());
    QVERIFY(!window.isEnabled("textureSave"));
    const auto *preview = window.find<QLabel>("previewLabel");
    QCOMPARE(preview->text(), QString());
    QCOMPARE(preview->styleSheet(), QString());
    QVERIFY(preview->pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(preview->size(), preview->sizeHint());
}

void TestPanels::showingAnEntryIsNoEdit()
{
    PanelWindow window;
    for (fileTreeFile *texture : {window.sky, window.sea, window.sky}) {
        window.select(texture);
        QVERIFY(window.isHidden("textureUnsaved"));
        QCOMPARE(currentROM.editedTexture->name, texture->name);
        QCOMPARE(currentROM.editedTexture->width, texture->width);
        QCOMPARE(currentROM.editedTexture->height, texture->height);
        QCOMPARE(currentROM.editedTexture->address, texture->address);
        QCOMPARE(currentROM.editedTexture->paletteAddress, texture->paletteAddress);
    }
    QCOMPARE(window.sky->width, 16);
    QCOMPARE(window.sea->height, 8);
    QVERIFY(!window.noticeIsShown());
}

void TestPanels::showsNumbers()
{
    PanelWindow window;
    window.sea->address = 10597056 - 0x120;
    window.select(window.sea);
    QCOMPARE(window.text("textureAddress"), QStringLiteral("0x00A1B2C0"));
}

void TestPanels::valuesBeyondTheSpinBoxes()
{
    PanelWindow window;
    window.sea->width = 200000;
    window.sea->height = 0;
    window.select(window.sky);
    window.select(window.sea);
    QCOMPARE(window.find<QSpinBox>("textureWidth")->value(), 100000);
    QCOMPARE(window.find<QSpinBox>("textureHeight")->value(), 1);
    QCOMPARE(currentROM.editedTexture->width, 200000);
    QCOMPARE(currentROM.editedTexture->height, 0);
    QVERIFY(window.isHidden("textureUnsaved"));
}

void TestPanels::numberEntry_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("expected");
    QTest::newRow("decimal") << "10" << 10;
    QTest::newRow("hexadecimal") << "0x10" << 16;
    QTest::newRow("lower-case digits") << "0xab" << 171;
    QTest::newRow("capital X") << "0X10" << 0;
    QTest::newRow("digits of hexadecimal alone") << "1A" << 0;
    QTest::newRow("letters") << "abc" << 0;
    QTest::newRow("nothing") << "" << 0;
    QTest::newRow("prefix alone") << "0x" << 0;
    QTest::newRow("negative") << "-5" << -5;
    QTest::newRow("too large") << "99999999999" << 0;
}

void TestPanels::numberEntry()
{
    QFETCH(QString, typed);
    QFETCH(int, expected);
    PanelWindow window;
    window.select(window.sky);
    for (const char *name : {"folderOffset", "folderSize", "textureOffset", "texturePalette"})
        window.type(name, typed);
    QCOMPARE(currentROM.editedFolder->address, expected);
    QCOMPARE(currentROM.editedFolder->size, expected);
    QCOMPARE(currentROM.editedTexture->address, expected);
    QCOMPARE(currentROM.editedTexture->paletteAddress, expected);
}

void TestPanels::folderEditStaysInTheWorkingCopy()
{
    PanelWindow window;
    window.select(window.b);
    window.type("folderOffset", "0x30");
    QVERIFY(!window.isHidden("folderUnsaved"));
    QVERIFY(window.isHidden("textureUnsaved"));
    QCOMPARE(window.text("folderAddress"), QStringLiteral("0x00000130"));
    window.type("folderName", "Beach");
    window.type("folderSize", "64");
    QCOMPARE(currentROM.editedFolder->name, QStringLiteral("Beach"));
    QCOMPARE(currentROM.editedFolder->size, 64);
    QCOMPARE(window.b->name, QStringLiteral("B"));
    QCOMPARE(window.b->address, 0x20);
    QCOMPARE(window.b->size, 0x1000);
    QCOMPARE(window.b->treeItem->text(0), QStringLiteral("B"));
    QVERIFY(!window.noticeIsShown());
}

void TestPanels::textureEditStaysInTheWorkingCopy()
{
    PanelWindow window;
    window.select(window.sea);
    window.type("textureOffset", "0x18");
    QVERIFY(!window.isHidden("textureUnsaved"));
    QVERIFY(window.isHidden("folderUnsaved"));
    QCOMPARE(window.text("textureAddress"), QStringLiteral("0x00000138"));
    window.type("textureName", "Ocean");
    window.type("textureFormat", "ci8");
    window.type("texturePalette", "0x40");
    QCOMPARE(currentROM.editedTexture->name, QStringLiteral("Ocean"));
    QCOMPARE(currentROM.editedTexture->format, QStringLiteral("ci8"));
    QCOMPARE(currentROM.editedTexture->paletteAddress, 0x40);
    QCOMPARE(window.sea->name, QStringLiteral("Sea"));
    QCOMPARE(window.sea->format, QStringLiteral("i8"));
    QCOMPARE(window.sea->address, 0x8);
    QCOMPARE(window.sea->treeItem->text(0), QStringLiteral("Sea"));
    QVERIFY(!window.noticeIsShown());
}

void TestPanels::sizeOfTheSpinBoxes()
{
    PanelWindow window;
    window.select(window.sea);
    auto *width = window.find<QSpinBox>("textureWidth");
    width->selectAll();
    QTest::keyClicks(width, "24");
    QTest::keyClick(window.find<QSpinBox>("textureHeight"), Qt::Key_Up);
    QVERIFY(!window.isHidden("textureUnsaved"));
    QCOMPARE(currentROM.editedTexture->width, 24);
    QCOMPARE(currentROM.editedTexture->height, 9);
    QCOMPARE(window.sea->width, 8);
    QCOMPARE(window.find<QLabel>("previewLabel")->pixmap(Qt::ReturnByValue).size(), QSize(24, 9));
}

void TestPanels::addressFieldsAreWiredOddly()
{
    PanelWindow window;
    window.select(window.sky);
    emit window.field("folderAddress")->textEdited(QString());
    QVERIFY(window.isHidden("folderUnsaved"));
    QVERIFY(window.isHidden("textureUnsaved"));
    emit window.field("textureAddress")->textEdited(QString());
    QVERIFY(!window.isHidden("folderUnsaved"));
    QVERIFY(!window.isHidden("textureUnsaved"));
    // No key reaches either.
    window.type("textureAddress", "5");
    QCOMPARE(window.text("textureAddress"), QStringLiteral("0x00000140"));
}

void TestPanels::editsWithoutSelection()
{
    PanelWindow window;
    window.select(window.sky);
    window.type("textureName", "X");
    window.tree()->clearSelection(); // the working copies are stale now
    window->applyDirectoryChanges();
    window->applyTextureChanges();
    window->saveDirectoryInfo();
    window->saveTextureInfo();
    window->renderTexture();
    QVERIFY(window.isHidden("folderUnsaved"));
    QVERIFY(window.isHidden("textureUnsaved"));
    QCOMPARE(window.sky->name, QStringLiteral("Sky"));
    QCOMPARE(window.a->name, QStringLiteral("A"));
    QVERIFY(!window.noticeIsShown());
}

void TestPanels::typedFormat()
{
    PanelWindow window;
    window.select(window.sea);
    window.type("textureFormat", "JPEG");
    QVERIFY(window.isHidden("textureWidth"));
    QCOMPARE(window.find<QLabel>("previewLabel")->text(), QStringLiteral("The texture format is not supported."));
    window.type("textureFormat", "i8");
    QVERIFY(!window.isHidden("textureWidth"));
    QVERIFY(!window.find<QLabel>("previewLabel")->pixmap(Qt::ReturnByValue).isNull());
}

void TestPanels::selectingAnotherEntryDropsEdits()
{
    PanelWindow window;
    window.select(window.sea);
    window.type("textureOffset", "0x33");
    window.type("folderOffset", "0x44");
    window.select(window.sun);
    QVERIFY(window.isHidden("textureUnsaved"));
    QVERIFY(window.isHidden("folderUnsaved"));
    window.select(window.sea);
    QCOMPARE(window.text("textureOffset"), QStringLiteral("0x00000008"));
    QCOMPARE(window.text("folderOffset"), QStringLiteral("0x00000020"));
}

void TestPanels::savesFolder()
{
    PanelWindow window;
    window.select(window.b);
    window.type("folderName", "Beach");
    window.type("folderOffset", "0x30");
    window.type("folderSize", "0x44");
    window.press("folderSave");
    QCOMPARE(window.b->name, QStringLiteral("Beach"));
    QCOMPARE(window.b->address, 0x30);
    QCOMPARE(window.b->size, 0x44);
    QVERIFY(window.isHidden("folderUnsaved"));
    QVERIFY(window.noticeIsShown());
    QCOMPARE(window->statusBar()->currentMessage(), QStringLiteral("The changes to the last selected folder has been saved."));
    QCOMPARE(cellsOf(window.b->treeItem).mid(0, 6),
             QStringList({"Beach", "0x00000030", "0x00000074", "0x00000130", "0x00000174", "0x00000044"}));
    QCOMPARE(window.text("folderPath"), QStringLiteral("Root/A/Beach"));
}

void TestPanels::savedFolderKeepsItsContents()
{
    PanelWindow window;
    window.select(window.b);
    window.type("folderName", "Beach");
    // Added since the folder was selected.
    fileTreeFile *late = window.addTexture(window.b, "Late", 0x80);
    QTreeWidgetItem *row = window.b->treeItem;
    window.press("folderSave");
    QCOMPARE(window.b->files, QList<fileTreeFile *>({window.sea, late}));
    QCOMPARE(window.b->parent, window.a);
    QCOMPARE(window.b->treeItem, row);
    QVERIFY(!window.b->isRoot);
}

void TestPanels::savedFolderNameIsUnique()
{
    PanelWindow window;
    window.select(window.ab);
    window.type("folderName", "A");
    window.press("folderSave");
    QCOMPARE(window.ab->name, QStringLiteral("A (2)"));
    QCOMPARE(window.ab->treeItem->text(0), QStringLiteral("A (2)"));
    QCOMPARE(window.text("folderName"), QStringLiteral("A (2)"));
    window.press("folderSave"); // its own name is no obstacle
    QCOMPARE(window.ab->name, QStringLiteral("A (2)"));
}

void TestPanels::movedFolder_data()
{
    QTest::addColumn<bool>("fixedAddresses");
    QTest::addColumn<int>("skyOffset");
    QTest::addColumn<int>("bOffset");
    QTest::newRow("contents move along") << false << 0x40 << 0x20;
    QTest::newRow("contents stay") << true << 0x40 - 0x80 << 0x20 - 0x80;
}

void TestPanels::movedFolder()
{
    QFETCH(bool, fixedAddresses);
    QFETCH(int, skyOffset);
    QFETCH(int, bOffset);
    PanelWindow window;
    window.tree()->expandAll();
    window.select(window.a);
    if (fixedAddresses)
        QTest::keyClick(window.find<QCheckBox>("fixedContentAddresses"), Qt::Key_Space);
    window.type("folderOffset", "0x180");
    window.press("folderSave");
    QCOMPARE(window.a->address, 0x180);
    QCOMPARE(window.sky->address, skyOffset);
    QCOMPARE(window.b->address, bOffset);
    QCOMPARE(window.sea->address, 0x8); // relative to its own parent
    QCOMPARE(window.sky->realAddress(), fixedAddresses ? 0x140 : 0x1C0);
    QCOMPARE(window.sea->realAddress(), fixedAddresses ? 0x128 : 0x1A8);
    QCOMPARE(window.sun->address, 0x30);
    const auto shown = [](const fileTreeFile *texture) { return texture->treeItem->text(3); };
    QCOMPARE(shown(window.sky), fixedAddresses ? QStringLiteral("0x00000140") : QStringLiteral("0x000001C0"));
    QCOMPARE(shown(window.sea), fixedAddresses ? QStringLiteral("0x00000128") : QStringLiteral("0x000001A8"));
}

void TestPanels::unmovedFolderLeavesItsContents()
{
    for (const bool fixedAddresses : {false, true}) {
        PanelWindow window;
        window.select(window.a);
        window.find<QCheckBox>("fixedContentAddresses")->setChecked(fixedAddresses);
        window.type("folderSize", "0x500");
        window.press("folderSave");
        QCOMPARE(window.sky->address, 0x40);
        QCOMPARE(window.b->address, 0x20);
        QCOMPARE(cellsOf(window.sky->treeItem).join(QString()), QString()); // not refreshed either
    }
}

void TestPanels::movedFolderRefreshesTheTexturePanel()
{
    PanelWindow window;
    window.select(window.sea);
    window.select(window.a);
    const QImage before = window.find<QLabel>("previewLabel")->pixmap(Qt::ReturnByValue).toImage();
    window.type("folderOffset", "0x180");
    window.press("folderSave");
    QCOMPARE(window.text("textureAddress"), QStringLiteral("0x000001A8"));
    QVERIFY(window.find<QLabel>("previewLabel")->pixmap(Qt::ReturnByValue).toImage() != before);
}

void TestPanels::renamedFolderRefreshesTheTexturesPath()
{
    PanelWindow window;
    window.select(window.sky);
    window.select(window.a);
    window.type("folderName", "Renamed");
    window.press("folderSave");
    QCOMPARE(window.text("texturePath"), QStringLiteral("Root/Renamed/Sky"));
}

void TestPanels::movedSiblingLeavesTheTexturePanel()
{
    PanelWindow window;
    window.select(window.sun); // in AB, which only begins like A
    window.select(window.a);
    window.field("textureAddress")->setText("untouched");
    window.type("folderOffset", "0x180");
    window.press("folderSave");
    QCOMPARE(window.text("textureAddress"), QStringLiteral("untouched"));
}

void TestPanels::savingTheTextureKeepsItsFixedAddress()
{
    PanelWindow window;
    window.select(window.sky);
    window.type("folderOffset", "0x120");
    window.find<QCheckBox>("fixedContentAddresses")->setChecked(true);
    window.press("folderSave");
    QCOMPARE(window.text("textureOffset"), QStringLiteral("0x00000020"));
    QCOMPARE(window.text("textureAddress"), QStringLiteral("0x00000140"));
    window.press("textureSave");
    QCOMPARE(window.sky->address, 0x20);
    QCOMPARE(window.sky->realAddress(), 0x140);
}

void TestPanels::savesTexture()
{
    PanelWindow window;
    window.select(window.sea);
    window.type("textureName", "Ocean");
    window.type("textureOffset", "0x10");
    window.type("textureFormat", "ci8");
    window.type("texturePalette", "256");
    window.find<QSpinBox>("textureWidth")->setValue(12);
    window.find<QSpinBox>("textureHeight")->setValue(4);
    window.press("textureSave");
    QCOMPARE(window.sea->name, QStringLiteral("Ocean"));
    QCOMPARE(window.sea->address, 0x10);
    QCOMPARE(window.sea->format, QStringLiteral("ci8"));
    QCOMPARE(window.sea->paletteAddress, 256);
    QCOMPARE(window.sea->width, 12);
    QCOMPARE(window.sea->height, 4);
    QVERIFY(window.isHidden("textureUnsaved"));
    QVERIFY(window.noticeIsShown());
    QCOMPARE(window->statusBar()->currentMessage(), QStringLiteral("The changes to the last selected texture has been saved."));
    QCOMPARE(cellsOf(window.sea->treeItem),
             QStringList({"Ocean", "0x00000010", "0x00000040", "0x00000130", "0x00000160", "0x00000030", "ci8", "12", "4",
                          "0x00000100"}));
    QCOMPARE(window.text("texturePath"), QStringLiteral("Root/A/B/Ocean"));
}

void TestPanels::savedTextureStaysInItsFolder()
{
    PanelWindow window;
    fileTreeFile *twin = window.addTexture(window.b, "Twin", 0);
    window.select(twin);
    QTreeWidgetItem *row = twin->treeItem;
    window.type("textureName", "Sea");
    window.press("textureSave");
    QCOMPARE(twin->name, QStringLiteral("Sea (2)"));
    QCOMPARE(window.text("textureName"), QStringLiteral("Sea (2)"));
    QCOMPARE(twin->parent, window.b);
    QCOMPARE(twin->treeItem, row);
}

void TestPanels::emptyNames()
{
    PanelWindow window;
    window.select(window.sea);
    window.type("textureName", "");
    window.type("folderName", "");
    window.press("textureSave");
    window.press("folderSave");
    QCOMPARE(window.sea->name, QStringLiteral("New Texture"));
    QCOMPARE(window.b->name, QStringLiteral("New Folder"));
}

void TestPanels::rootIsNotSaved()
{
    PanelWindow window;
    window.select(currentROM.root);
    window.type("folderOffset", "5"); // read-only
    QVERIFY(window.isHidden("folderUnsaved"));
    // Reached from the program alone, it works on the root's copy too; nothing of that can be saved.
    window.field("folderName")->setText("Base");
    window->applyDirectoryChanges();
    QVERIFY(!window.isHidden("folderUnsaved"));
    QCOMPARE(currentROM.editedFolder->name, QStringLiteral("Base"));
    currentROM.editedFolder->address = 5;
    window->saveDirectoryInfo();
    QCOMPARE(currentROM.root->address, 0);
    QCOMPARE(currentROM.root->name, QStringLiteral("Root"));
    QVERIFY(!window.noticeIsShown());
}

void TestPanels::savingSorts()
{
    PanelWindow window;
    window.tree()->expandAll();
    window.select(window.a);
    window.type("folderOffset", "0x300");
    window.press("folderSave");
    QCOMPARE(namesBelow(window.rootRow()), QStringList({"AB", "A"}));
    fileTreeFile *other = window.addTexture(window.ab, "Other", 0x40, "i8", 8, 8);
    QCOMPARE(namesBelow(window.ab->treeItem), QStringList({"Sun", "Other"}));
    window.select(other);
    window.type("textureOffset", "0x10");
    window.press("textureSave");
    QCOMPARE(namesBelow(window.ab->treeItem), QStringList({"Other", "Sun"}));
}

void TestPanels::savingAFormatChangesTheActions()
{
    PanelWindow window;
    window.select(window.sea);
    QVERIFY(window.action("Extract")->isEnabled());
    window.type("textureFormat", "tim");
    QVERIFY(window.action("Extract")->isEnabled());
    window.press("textureSave");
    QVERIFY(!window.action("Extract")->isEnabled());
    QVERIFY(!window.action("Import Image")->isEnabled());
    window.type("textureFormat", "i8");
    window.press("textureSave");
    QVERIFY(window.action("Extract")->isEnabled());
    QVERIFY(window.action("Import Image")->isEnabled());
    QCOMPARE(currentROM.lastSelectedTexture, window.sea);
}

QTEST_MAIN(TestPanels)
#include "tst_panels.moc"
