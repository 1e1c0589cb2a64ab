// SPDX-License-Identifier: MIT
#include "model/tablewalk.h"

#include <QTest>

namespace
{
fileTreeDirectory *folder(fileTreeDirectory *parent, const QString &name)
{
    auto *directory = new fileTreeDirectory;
    directory->name = name;
    return parent->addDirectory(directory);
}

fileTreeFile *texture(fileTreeDirectory *parent, const QString &name)
{
    auto *file = new fileTreeFile;
    file->name = name;
    return parent->addFile(file);
}

class TableWalkTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root = new fileTreeDirectory;
        m_root->name = "Root";
        m_root->isRoot = true;
        m_a = folder(m_root, "A");
        m_b = folder(m_a, "B");
        m_sky = texture(m_b, "Sky");
    }

    void findsByPath()
    {
        for (const char *path : {"Root/A/B/Sky", "A/B/Sky", "root/a/b/sky", "a/b/SKY"}) {
            const TableNode node = nodeAtPath(m_root, QLatin1String(path));
            QVERIFY2(node.texture == m_sky && !node.folder, path);
        }
        for (const char *path : {"Root/A/B", "Root/A/B/", "A/B", "a/b/"}) {
            const TableNode node = nodeAtPath(m_root, QLatin1String(path));
            QVERIFY2(node.folder == m_b && !node.texture, path);
        }
        for (const char *path : {"", "Root", "Root/", "root"})
            QVERIFY2(nodeAtPath(m_root, QLatin1String(path)).folder == m_root, path);
        for (const char *path : {"B", "Root/B", "A/B/Sky/", "A/Sky", "/", "Root//A", "A/B/Sk", "A/B/Skyx"})
            QVERIFY2(!nodeAtPath(m_root, QLatin1String(path)).exists(), path);
    }

    void exactCaseComesFirst()
    {
        fileTreeFile *lower = texture(m_b, "sky");
        QCOMPARE(nodeAtPath(m_root, "Root/A/B/sky").texture, lower);
        QCOMPARE(nodeAtPath(m_root, "Root/A/B/Sky").texture, m_sky);
        QCOMPARE(nodeAtPath(m_root, "Root/A/B/SKY").texture, m_sky);
        fileTreeDirectory *lowerFolder = folder(m_root, "a");
        QCOMPARE(nodeAtPath(m_root, "a").folder, lowerFolder);
        QCOMPARE(nodeAtPath(m_root, "A").folder, m_a);
    }

    void textureBeforeFolderOfTheSameName()
    {
        fileTreeFile *file = texture(m_a, "B");
        QCOMPARE(nodeAtPath(m_root, "A/B").texture, file);
        QCOMPARE(nodeAtPath(m_root, "A/B/").folder, m_b);
        QCOMPARE(nodeAtPath(m_root, "A/B/Sky").texture, m_sky);
    }

    void namesWithSlashes()
    {
        fileTreeDirectory *odd = folder(m_root, "A/B");
        fileTreeFile *file = texture(odd, "x/y");
        QCOMPARE(nodeAtPath(m_root, "Root/A/B/x/y").texture, file);
        QCOMPARE(nodeAtPath(m_root, "Root/A/B/Sky").texture, m_sky);
    }

    void folderNamedLikeTheRoot()
    {
        fileTreeDirectory *inner = folder(m_root, "Root");
        fileTreeFile *file = texture(inner, "x");
        QCOMPARE(nodeAtPath(m_root, "Root/Root/x").texture, file);
        QCOMPARE(nodeAtPath(m_root, "Root/x").texture, file);
        QCOMPARE(nodeAtPath(m_root, "Root").folder, m_root);
    }

    void walksInListOrder()
    {
        texture(m_root, "Top");
        folder(m_root, "C");
        QStringList visited;
        walkTable(*m_root,
                  {[&visited](const fileTreeDirectory &, const QString &path) { visited << path; },
                   [&visited](const fileTreeFile &, const QString &path) { visited << path; }});
        QCOMPARE(visited, QStringList({"Root/", "Root/Top", "Root/A/", "Root/A/B/", "Root/A/B/Sky", "Root/C/"}));
        visited.clear();
        walkTable(*m_b,
                  {[&visited](const fileTreeDirectory &, const QString &path) { visited << path; },
                   [&visited](const fileTreeFile &, const QString &path) { visited << path; }});
        QCOMPARE(visited, QStringList({"Root/A/B/", "Root/A/B/Sky"}));
        QCOMPARE(fullPath(*m_sky), QString("Root/A/B/Sky"));
        QCOMPARE(fullPath(*m_root), QString("Root/"));
    }

private:
    fileTreeDirectory *m_root = nullptr;
    fileTreeDirectory *m_a = nullptr;
    fileTreeDirectory *m_b = nullptr;
    fileTreeFile *m_sky = nullptr;
};
}

QTEST_GUILESS_MAIN(TableWalkTest)
#include "tst_tablewalk.moc"
