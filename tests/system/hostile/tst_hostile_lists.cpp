// SPDX-License-Identifier: MIT
#include "persist/filelist.h"
#include "persist/savefile.h"
#include "support/pictures.h"
#include "support/tablewindow.h"
#include "system/hostile/limits.h"

#include <QBuffer>
#include <QTemporaryDir>

namespace
{
/// A size for every run, or with QUILLARY_HUGE=1 the full one.
int scaled(int full, int everyRun)
{
    return qEnvironmentVariableIntValue("QUILLARY_HUGE") > 0 ? full : everyRun;
}

QByteArray longList(int entries)
{
    QByteArray list("<root version=\"2\">");
    for (int i = 0; i < entries; ++i)
        list += "<texture name=\"Tile " + QByteArray::number(i) + "\" address=\"0x" + QByteArray::number(i, 16)
            + "\" format=\"i4\" width=\"8\" height=\"8\"/>";
    return list + "</root>";
}

QByteArray deepList(int levels)
{
    return "<root version=\"2\">" + QByteArray("<directory name=\"a\" address=\"0x1\" size=\"0x10\">").repeated(levels)
        + "<texture name=\"deepest\"/>" + QByteArray("</directory>").repeated(levels) + "</root>";
}

int levelsOf(const fileTreeDirectory *folder)
{
    int levels = 0;
    for (; !folder->directories.isEmpty(); folder = folder->directories.first())
        ++levels;
    return levels;
}
}

class TestHostileLists : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void longAndDeepLists_data();
    void longAndDeepLists();
    void theWindowShowsThem_data();
    void theWindowShowsThem();
    void cyclicIdeasOfNesting_data();
    void cyclicIdeasOfNesting();
    void entitiesThatMultiply();

private:
    QTemporaryDir m_folder;
};

void TestHostileLists::init()
{
    setApplicationIdentity();
    loadIntoCurrentROM(cartridgeImage(64 * 1024));
}

void TestHostileLists::longAndDeepLists_data()
{
    QTest::addColumn<QByteArray>("list");
    QTest::addColumn<int>("textures");
    QTest::addColumn<int>("levels");
    const int entries = scaled(1000000, 20000);
    const int levels = scaled(100000, 20000);
    QTest::newRow("long") << longList(entries) << entries << 0;
    QTest::newRow("deep") << deepList(levels) << 1 << levels;
    QByteArray alike("<root version=\"2\">");
    alike += QByteArray("<texture name=\"a\"/>").repeated(entries) + "</root>";
    QTest::newRow("one name for all") << alike << entries << 0;
}

void TestHostileLists::longAndDeepLists()
{
    QFETCH(QByteArray, list);
    QFETCH(int, textures);
    QFETCH(int, levels);
    QString error;
    QVERIFY(isQuick(list.size(), [&] { QVERIFY(readFileList(list, currentROM.data.size(), currentROM.root, nullptr, &error)); }));
    QCOMPARE(fileTreeContainer().allFiles(currentROM.root).size(), textures);
    QCOMPARE(levelsOf(currentROM.root), levels);
    const QString path = m_folder.filePath("fileList.xml");
    QVERIFY(isQuick(list.size(), [&] {
        QBuffer document;
        document.open(QIODevice::WriteOnly);
        QVERIFY(writeFileList(currentROM.root, &document, &error) && saveWhole(path, document.data(), &error));
    }));
    QVERIFY(QFileInfo(path).size() > list.size() / 4);
}

void TestHostileLists::theWindowShowsThem_data()
{
    QTest::addColumn<QByteArray>("list");
    QTest::newRow("long") << longList(scaled(1000000, 10000));
    QTest::newRow("deep") << deepList(scaled(100000, 3000));
}

void TestHostileLists::theWindowShowsThem()
{
    QFETCH(QByteArray, list);
    TableWindow window;
    window.show();
    const QString path = m_folder.filePath("shown.xml");
    QString error;
    QVERIFY(saveWhole(path, list, &error));
    // Rows, which are painted and sorted, may take some times as long as reading.
    constexpr int patience = 4;
    QVERIFY(isQuick(patience * list.size(), [&] {
        window->parseXML(path);
        window->repaint();
    }));
    QVERIFY(window.rootRow()->childCount() > 0);
    QVERIFY(isQuick(patience * list.size(), [&] {
        window->clearFileTable();
        window->repaint();
    }));
    QCOMPARE(window.rootRow()->childCount(), 0);
}

void TestHostileLists::cyclicIdeasOfNesting_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("levels");
    QTest::newRow("a root in the root") << QByteArray("<root version=\"2\"><texture name=\"t\"/></root>") << 0;
    QTest::newRow("a root in a directory") << QByteArray(
        "<directory name=\"a\"><root version=\"2\"><texture name=\"t\"/></root></directory>")
                                           << 1;
    QTest::newRow("a table in a directory and on")
        << QByteArray("<directory name=\"a\"><fileTable><directory name=\"b\"/></fileTable></directory><texture name=\"t\"/>")
        << 1;
    QTest::newRow("a directory named as its parent")
        << QByteArray("<directory name=\"Root\"><directory name=\"Root\"><texture name=\"t\"/></directory></directory>") << 2;
    QTest::newRow("a directory in a texture")
        << QByteArray("<texture name=\"t\"><directory name=\"a\"/></texture><directory name=\"b\"/>") << 1;
}

void TestHostileLists::cyclicIdeasOfNesting()
{
    QFETCH(QByteArray, content);
    QFETCH(int, levels);
    const QByteArray list = "<root version=\"2\">" + content + "</root>";
    QString error;
    QVERIFY2(readFileList(list, currentROM.data.size(), currentROM.root, nullptr, &error), qPrintable(error));
    QCOMPARE(levelsOf(currentROM.root), levels);
    const QList<fileTreeDirectory *> directories = fileTreeContainer().allDirectories(currentROM.root);
    for (const fileTreeDirectory *directory : directories) {
        // Upwards each ends in the root.
        int steps = 0;
        for (const fileTreeDirectory *up = directory; up != currentROM.root; up = up->parent) {
            QVERIFY(up->parent && up->parent->directories.contains(const_cast<fileTreeDirectory *>(up)));
            QVERIFY(++steps <= directories.size());
        }
    }
    QByteArray written;
    QBuffer output(&written);
    output.open(QIODevice::WriteOnly);
    QVERIFY(writeFileList(currentROM.root, &output, &error));
}

void TestHostileLists::entitiesThatMultiply()
{
    QByteArray list("<!DOCTYPE root [<!ENTITY a0 \"aaaaaaaaaa\">");
    for (int i = 1; i < 12; ++i)
        list += "<!ENTITY a" + QByteArray::number(i) + " \"" + ("&a" + QByteArray::number(i - 1) + ';').repeated(10) + "\">";
    list += "]><root version=\"2\"><texture name=\"&a11;\"/></root>";
    QVERIFY(fitsInto(64 * 1024 * 1024, [list] {
        QString error;
        readFileList(list, currentROM.data.size(), currentROM.root, nullptr, &error);
        return currentROM.root->files.isEmpty() || currentROM.root->files.first()->name.size() < 1000000;
    }));
    // An entity from a file must not come in.
    QVERIFY(writeBytes(m_folder.filePath("secret"), "secret"));
    const QByteArray reading = "<!DOCTYPE root [<!ENTITY s SYSTEM \"file://" + QFile::encodeName(m_folder.filePath("secret"))
        + "\">]><root version=\"2\"><directory name=\"d\">&s;</directory><texture name=\"t\"/></root>";
    QString error;
    readFileList(reading, currentROM.data.size(), currentROM.root, nullptr, &error);
    const QList<fileTreeDirectory *> directories = fileTreeContainer().allDirectories(currentROM.root);
    for (const fileTreeDirectory *directory : directories)
        QVERIFY(!directory->name.contains("secret"));
}

QTEST_MAIN(TestHostileLists)
#include "tst_hostile_lists.moc"
