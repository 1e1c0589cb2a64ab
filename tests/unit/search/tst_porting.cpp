// SPDX-License-Identifier: MIT
#include "search/porting.h"

#include "model/rom.h"
#include "support/revisions.h"

#include <QTest>

namespace
{
/// A table in a made image: 0x200 bytes of noise for each texture, one after the other, 0x100 bytes apart.
class PortingTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QRandomGenerator random(3);
        currentROM.data = revisions::noise(&random, 0x8000);
        currentROM.loaded = true;
        currentROM.root->directories.clear();
        currentROM.root->files.clear();
    }

    void foldersMoveWithTheirContents()
    {
        fileTreeDirectory *outer = addFolder(currentROM.root, "Outer", 0x1000, 0x4000);
        fileTreeDirectory *inner = addFolder(outer, "Inner", 0x1000, 0x800);
        fileTreeDirectory *empty = addFolder(inner, "Empty", 0x10, 0x20);
        fileTreeFile *first = addTexture(outer, "First", 0x100);
        fileTreeFile *second = addTexture(outer, "Second", 0x3000);
        fileTreeFile *deep = addTexture(inner, "Deep", 0x40);
        fileTreeFile *top = addTexture(currentROM.root, "Top", 0x6000);
        // Inserted before the folder; and what lies in the inner one is moved behind everything.
        QByteArray image = currentROM.data;
        const QByteArray moved = image.mid(0x2000, 0x800);
        QRandomGenerator random(4);
        image.replace(0x2000, 0x800, revisions::noise(&random, 0x800));
        image += moved;
        image.insert(0x800, revisions::noise(&random, 0x300));
        const QVector<PortedTexture> ported = portTable(currentROM.root, image, nullptr);
        QCOMPARE(ported.size(), 4);
        QCOMPARE(ported.at(0).path, QString("Root/Top"));
        QCOMPARE(ported.at(3).path, QString("Root/Outer/Inner/Deep"));
        for (const PortedTexture &texture : ported)
            QVERIFY2(texture.state == PlaceState::Moved, qPrintable(texture.path));
        QCOMPARE(outer->realAddress(), 0x1300);
        QCOMPARE(inner->realAddress(), 0x8300);
        QCOMPARE(empty->parent, inner);
        QCOMPARE(first->realAddress(), 0x1400);
        QCOMPARE(first->address, 0x100);
        QCOMPARE(second->realAddress(), 0x4300);
        QCOMPARE(deep->realAddress(), 0x8340);
        QCOMPARE(deep->address, 0x40);
        QCOMPARE(top->realAddress(), 0x6300);
        QCOMPARE(outer->size, 0x4000);
        QCOMPARE(inner->size, 0x800);
        QCOMPARE(empty->size, 0x20);
        QCOMPARE(QString(outer->name), QString("Outer"));
        QCOMPARE(outer->directories, QList<fileTreeDirectory *> {inner});
        QCOMPARE(outer->files, QList<fileTreeFile *>({first, second}));
    }

    /// Where something was inserted among its contents, a folder begins with the first of them: so most are inside.
    void foldersBeginWhereMostIsInside()
    {
        fileTreeDirectory *folder = addFolder(currentROM.root, "Folder", 0x1000, 0x4000);
        addTexture(folder, "1", 0x100);
        addTexture(folder, "2", 0x800);
        addTexture(folder, "3", 0x1000);
        addTexture(folder, "4", 0x1800);
        QRandomGenerator random(4);
        QByteArray image = currentROM.data;
        image.insert(0x1600, revisions::noise(&random, 0x900));
        portTable(currentROM.root, image, nullptr);
        QCOMPARE(folder->address, 0x1000);
        QCOMPARE(folder->files.at(0)->address, 0x100);
        QCOMPARE(folder->files.at(3)->address, 0x2100);
    }

    void palettesGoTheirOwnWay()
    {
        fileTreeDirectory *outer = addFolder(currentROM.root, "Outer", 0x1000, 0x4000);
        fileTreeDirectory *folder = addFolder(outer, "Folder", 0x400, 0x1000);
        fileTreeFile *texture = addTexture(folder, "Indexed", 0x100);
        texture->format = "ci4";
        texture->width = 32;
        texture->height = 32;
        texture->paletteAddress = 0x5000; // counted from the innermost folder's own address
        QCOMPARE(texture->realPaletteAddress(), 0x5400);
        QRandomGenerator random(4);
        QByteArray image = currentROM.data;
        image.insert(0x5000, revisions::noise(&random, 0x40));
        image.insert(0x100, revisions::noise(&random, 0x20));
        const PortedTexture ported = portTable(currentROM.root, image, nullptr).first();
        QVERIFY(ported.hasPalette);
        QCOMPARE(ported.oldPaletteAddress, 0x5400);
        QCOMPARE(ported.palette.address, 0x5460);
        QCOMPARE(ported.place.address, 0x1520);
        QVERIFY(ported.state == PlaceState::Moved);
        QCOMPARE(texture->realPaletteAddress(), 0x5460);
        QCOMPARE(texture->realAddress(), 0x1520);
    }

    void changedPalettesMakeTheTextureChanged()
    {
        fileTreeFile *texture = addTexture(currentROM.root, "Indexed", 0x1000);
        texture->format = "ci8";
        texture->width = 16;
        texture->paletteAddress = 0x2000;
        QByteArray image = currentROM.data;
        image.replace(0x2010, 4, "edit");
        const PortedTexture ported = portTable(currentROM.root, image, nullptr).first();
        QVERIFY(ported.place.state == PlaceState::Same);
        QVERIFY(ported.palette.state == PlaceState::Changed);
        QVERIFY(ported.state == PlaceState::Changed);
        QCOMPARE(texture->realPaletteAddress(), 0x2000);
    }

    void whatIsMissingLeavesTheTable()
    {
        fileTreeDirectory *folder = addFolder(currentROM.root, "Folder", 0x1000, 0x4000);
        addTexture(folder, "Before", 0x100);
        addTexture(folder, "Deleted", 0x1000);
        addTexture(folder, "Behind", 0x2000);
        addTexture(folder, "Outside", 0x70000);
        QByteArray image = currentROM.data;
        image.remove(0x1F00, 0x600);
        const QVector<PortedTexture> ported = portTable(currentROM.root, image, nullptr);
        QVERIFY(ported.at(1).state == PlaceState::Missing);
        QVERIFY(ported.at(3).state == PlaceState::Missing);
        QCOMPARE(folder->files.size(), 2);
        QCOMPARE(QString(folder->files.at(1)->name), QString("Behind"));
        auto *another = new fileTreeFile;
        another->name = "Deleted"; // The name is free again.
        QCOMPARE(QString(folder->addFile(another)->name), QString("Deleted"));
    }

    void foldersStayInsideTheImage()
    {
        fileTreeDirectory *outer = addFolder(currentROM.root, "Outer", 0x1000, 0x100);
        fileTreeDirectory *gone = addFolder(outer, "Gone", 0x6000, 0x100);
        portTable(currentROM.root, currentROM.data.left(0x2000), nullptr);
        QCOMPARE(outer->realAddress(), 0x1000);
        QCOMPARE(gone->realAddress(), 0x1000);
    }

    void deepTablesAreNoTrouble()
    {
        fileTreeDirectory *folder = currentROM.root;
        for (int i = 0; i < 3000; ++i)
            folder = addFolder(folder, "f", 1, 0x200);
        fileTreeFile *texture = addTexture(folder, "Deep", 0);
        const int address = texture->realAddress();
        const QByteArray image = QByteArray(0x40, '\1') + currentROM.data;
        QVERIFY(portTable(currentROM.root, image, nullptr).first().state == PlaceState::Moved);
        QCOMPARE(texture->realAddress(), address + 0x40);
        QCOMPARE(folder->realAddress(), address + 0x40);
    }

private:
    static fileTreeDirectory *addFolder(fileTreeDirectory *parent, const QString &name, int address, int size)
    {
        auto *folder = new fileTreeDirectory;
        folder->name = name;
        folder->address = address;
        folder->size = size;
        return parent->addDirectory(folder);
    }

    static fileTreeFile *addTexture(fileTreeDirectory *parent, const QString &name, int address)
    {
        auto *texture = new fileTreeFile;
        texture->name = name;
        texture->address = address;
        texture->format = "i8";
        texture->width = 32;
        texture->height = 16;
        return parent->addFile(texture);
    }
};
}

QTEST_GUILESS_MAIN(PortingTest)
#include "tst_porting.moc"
