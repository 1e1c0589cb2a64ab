// SPDX-License-Identifier: MIT
#include "model/tableedit.h"
#include "support/images.h"

#include <QTest>

class TableEditTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        loadIntoCurrentROM(QByteArray(0x1000, '\0'));
        m_outer = folder(currentROM.root, "Outer", 0x100);
        m_inner = folder(m_outer, "Inner", 0x40);
        m_other = folder(currentROM.root, "Other", 0x800);
        m_texture = m_inner->addFile(new fileTreeFile);
        m_texture->address = 0x10;
        m_texture->paletteAddress = 0x20;
    }

    void textureKeepsItsAddresses()
    {
        moveNode({nullptr, m_texture}, m_other, MoveKeeps::Addresses);
        QVERIFY(m_texture->parent == m_other && m_inner->files.isEmpty());
        QCOMPARE(m_texture->realAddress(), 0x150);
        QCOMPARE(m_texture->realPaletteAddress(), 0x60);
        QCOMPARE(m_texture->address, 0x150 - 0x800);
        QCOMPARE(m_texture->paletteAddress, 0x60 - 0x800);
    }

    void textureKeepsItsOffsets()
    {
        moveNode({nullptr, m_texture}, m_other, MoveKeeps::Offsets);
        QCOMPARE(m_texture->realAddress(), 0x810);
        QCOMPARE(m_texture->realPaletteAddress(), 0x820);
    }

    void folderKeepsAllAddresses()
    {
        fileTreeDirectory *deep = folder(m_inner, "Deep", 4);
        fileTreeFile *below = deep->addFile(new fileTreeFile);
        moveNode({m_inner, nullptr}, m_other, MoveKeeps::Addresses);
        QVERIFY(m_inner->parent == m_other && m_outer->directories.isEmpty());
        QCOMPARE(m_inner->realAddress(), 0x140);
        QCOMPARE(m_texture->realAddress(), 0x150);
        QCOMPARE(m_texture->realPaletteAddress(), 0x60);
        QCOMPARE(below->realAddress(), 0x144);
        QCOMPARE(below->realPaletteAddress(), 4);
    }

    void staysInItsFolder()
    {
        fileTreeFile *second = m_inner->addFile(new fileTreeFile);
        moveNode({nullptr, m_texture}, m_inner, MoveKeeps::Addresses);
        QCOMPARE(m_inner->files, QList<fileTreeFile *>({m_texture, second}));
    }

    void namesStayUnique()
    {
        m_other->addFile(new fileTreeFile)->setName(m_texture->name);
        moveNode({nullptr, m_texture}, m_other, MoveKeeps::Addresses);
        QCOMPARE(QString(m_texture->name), QString("New Texture (2)"));
    }

    void insideCountsTheFolderItself()
    {
        QVERIFY(isInside(*m_inner, {m_outer, nullptr}) && isInside(*m_outer, {m_outer, nullptr}));
        QVERIFY(!isInside(*m_outer, {m_inner, nullptr}) && !isInside(*m_inner, {nullptr, m_texture}));
    }

    void extremeAddressesWrap()
    {
        setRealAddress(m_texture, std::numeric_limits<int>::min());
        QCOMPARE(m_texture->realAddress(), std::numeric_limits<int>::min());
        setRealPaletteAddress(m_texture, std::numeric_limits<int>::max());
        QCOMPARE(m_texture->realPaletteAddress(), std::numeric_limits<int>::max());
        setRealAddress(m_inner, -1);
        QCOMPARE(m_inner->realAddress(), -1);
    }

    void contentsMoveOneLevel()
    {
        moveContents(*m_outer, 0x10);
        QCOMPARE(m_inner->address, 0x50);
        QCOMPARE(m_texture->address, 0x10);
    }

private:
    static fileTreeDirectory *folder(fileTreeDirectory *parent, const QString &name, int address)
    {
        fileTreeDirectory *made = parent->addDirectory(new fileTreeDirectory);
        made->setName(name);
        made->address = address;
        return made;
    }

    fileTreeDirectory *m_outer = nullptr;
    fileTreeDirectory *m_inner = nullptr;
    fileTreeDirectory *m_other = nullptr;
    fileTreeFile *m_texture = nullptr;
};

QTEST_GUILESS_MAIN(TableEditTest)
#include "tst_tableedit.moc"
