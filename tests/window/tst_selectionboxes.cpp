// SPDX-License-Identifier: MIT
// The boxes of the folder and of the texture, without a window around them.
#include "app/folderpanel.h"
#include "app/texturepanel.h"
#include "support/images.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

class TestSelectionBoxes : public QObject
{
    Q_OBJECT

private slots:
    void folderIsShownAndRead();
    void rootIsNotEdited();
    void textureIsShownAndRead();
};

void TestSelectionBoxes::folderIsShownAndRead()
{
    QWidget panel;
    FolderPanel box(&panel);
    fileTreeDirectory folder;
    folder.name = "Walls";
    folder.address = 0x100;
    folder.size = 0x20;
    box.showFolder(folder);
    QCOMPARE(box.findChild<QLineEdit *>("folderOffset")->text(), QString("0x00000100"));
    QVERIFY(!box.findChild<QLineEdit *>("folderName")->isReadOnly());

    const QSignalSpy edited(&box, &FolderPanel::edited);
    const QSignalSpy saved(&box, &FolderPanel::saveRequested);
    auto *name = box.findChild<QLineEdit *>("folderName");
    name->selectAll();
    QTest::keyClicks(name, "X");
    QCOMPARE(edited.count(), 1);
    fileTreeDirectory copy;
    box.readValues(&copy);
    QCOMPARE(copy.name, QString("X"));
    QCOMPARE(copy.address, 0x100);
    QCOMPARE(copy.size, 0x20);
    box.findChild<QPushButton *>("folderSave")->click();
    QCOMPARE(saved.count(), 1);

    box.findChild<QCheckBox *>("fixedContentAddresses")->setChecked(true);
    QVERIFY(box.keepsContentAddresses());
    box.setUnsaved(true);
    QVERIFY(!box.findChild<QWidget *>("folderUnsaved")->isHidden());
    box.clearEdits();
    QVERIFY(!box.keepsContentAddresses());
    QVERIFY(box.findChild<QWidget *>("folderUnsaved")->isHidden());
}

void TestSelectionBoxes::rootIsNotEdited()
{
    QWidget panel;
    FolderPanel box(&panel);
    fileTreeDirectory root;
    root.isRoot = true;
    box.showFolder(root);
    QVERIFY(box.findChild<QLineEdit *>("folderName")->isReadOnly());
    QVERIFY(!box.findChild<QPushButton *>("folderSave")->isEnabled());
    box.showNothing();
    QCOMPARE(box.findChild<QLineEdit *>("folderSize")->text(), QString());
}

void TestSelectionBoxes::textureIsShownAndRead()
{
    QWidget panel;
    TexturePanel box(&panel);
    fileTreeFile texture;
    texture.name = "Bricks";
    texture.format = "ci4";
    texture.address = 0x40;
    texture.paletteAddress = 0x80;
    texture.width = 16;
    texture.height = 8;
    const QSignalSpy edited(&box, &TexturePanel::edited);
    box.showValues(texture);
    box.setEditable(true);
    QVERIFY(!box.findChild<QLineEdit *>("texturePalette")->isHidden());
    QCOMPARE(edited.count(), 2); // Width and Height
    QTest::keyClicks(box.findChild<QLineEdit *>("textureName"), "2");
    QCOMPARE(edited.count(), 3);

    fileTreeFile copy;
    box.readValues(&copy);
    QCOMPARE(copy.name, QString("Bricks2"));
    QCOMPARE(copy.format, QString("ci4"));
    QCOMPARE(copy.address, 0x40);
    QCOMPARE(copy.paletteAddress, 0x80);
    QCOMPARE(copy.width, 16);
    QCOMPARE(copy.height, 8);

    box.showNothing();
    QVERIFY(box.findChild<QSpinBox *>("textureWidth")->isHidden());
    QVERIFY(box.findChild<QLineEdit *>("textureName")->isReadOnly());
}

QTEST_MAIN(TestSelectionBoxes)
#include "tst_selectionboxes.moc"
