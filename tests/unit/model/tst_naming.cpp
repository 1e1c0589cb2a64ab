// SPDX-License-Identifier: MIT
#include "model/bulkadder.h"

#include "support/images.h"

#include <QRandomGenerator>
#include <QTest>
#include <QTreeWidgetItem>

#include <ctime>
#include <memory>

namespace
{
/// The naming rule, sibling by sibling.
QString nameByTheRule(const QStringList &siblings, const QString &requested)
{
    if (!siblings.contains(requested))
        return requested;
    for (int number = 2;; ++number) {
        const QString candidate = requested + " (" + QString::number(number) + ")";
        if (!siblings.contains(candidate))
            return candidate;
    }
}

QStringList namesOf(const fileTreeDirectory &folder)
{
    QStringList names;
    for (const fileTreeFile *file : qAsConst(folder.files))
        names << file->name;
    return names;
}

fileTreeFile *named(const QString &name)
{
    auto *file = new fileTreeFile;
    file->name = name;
    return file;
}

const QStringList wishes {"a", "b", "a (2)", "a (3)", "a (2) (2)", "b (2)", "a (1)", "a (02)"};

qint64 cpuMilliseconds()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return qint64(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}
}

/// The naming rule, for single adds and renames and for BulkAdder.
class NamingTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { resetCurrentROM(); }

    void sameNamesAreNumberedFromTwo();
    void freedNumbersAreUsedAgain();
    void numberedNamesGetNoSecondNumberOfTheirOwn();
    void leadingZerosAreNoNumber();
    void ownNameAndNumberCountAsFree();
    void namesAndListsArePlain();
    void nodeListedInTwoFolders();
    void nodeListedTwice();
    void bulkUsesDefaultsForEmptyNames();
    void bulkKnowsTheFolder();
    void bulkReplacesInOrder();
    void bulkRemovesRowsAndSelection();
    void matchesTheRuleOnRandomOperations();
    void bulkMatchesTheRuleOnRandomOperations();
    void bulkIsLinear_data();
    void bulkIsLinear();
};

void NamingTest::sameNamesAreNumberedFromTwo()
{
    fileTreeDirectory folder;
    for (const char *expected : {"Sky", "Sky (2)", "Sky (3)"})
        QCOMPARE(folder.addFile(named("Sky"))->name, QString(expected));
    QCOMPARE(folder.addFile(named("sky"))->name, QStringLiteral("sky"));
}

void NamingTest::freedNumbersAreUsedAgain()
{
    fileTreeDirectory folder;
    for (int i = 0; i < 4; ++i)
        folder.addFile(named("Sky"));
    folder.files.at(1)->destroy();
    QCOMPARE(folder.addFile(named("Sky"))->name, QStringLiteral("Sky (2)"));
    QCOMPARE(folder.addFile(named("Sky"))->name, QStringLiteral("Sky (5)"));
}

void NamingTest::numberedNamesGetNoSecondNumberOfTheirOwn()
{
    fileTreeDirectory folder;
    folder.addFile(named("Sky (2)"));
    QCOMPARE(folder.addFile(named("Sky (2)"))->name, QStringLiteral("Sky (2) (2)"));
    QCOMPARE(folder.addFile(named("Sky"))->name, QStringLiteral("Sky"));
    QCOMPARE(folder.addFile(named("Sky"))->name, QStringLiteral("Sky (3)"));
}

void NamingTest::leadingZerosAreNoNumber()
{
    fileTreeDirectory folder;
    BulkAdder adder(&folder);
    adder.addFile(named("Sky"));
    fileTreeFile *second = adder.addFile(named("Sky"));
    fileTreeFile *odd = adder.addFile(named("Sky (02)"));
    adder.replaceFiles({{named("Sky"), odd}});
    QCOMPARE(folder.files.last()->name, QStringLiteral("Sky (3)"));
    adder.replaceFiles({{named("Sky"), second}});
    QCOMPARE(folder.files.last()->name, QStringLiteral("Sky (2)"));
}

void NamingTest::ownNameAndNumberCountAsFree()
{
    fileTreeDirectory folder;
    for (int i = 0; i < 4; ++i)
        folder.addFile(named("Sky"));
    fileTreeFile *second = folder.files.at(1);
    for (const char *wish : {"Sky", "Sky (2)"}) {
        second->setName(wish);
        QCOMPARE(second->name, QStringLiteral("Sky (2)"));
    }
    folder.files.at(3)->setName("Sky");
    QCOMPARE(folder.files.at(3)->name, QStringLiteral("Sky (4)"));
}

void NamingTest::namesAndListsArePlain()
{
    fileTreeDirectory folder;
    fileTreeFile *file = folder.addFile(named("Sky"));
    // Each kind of expression that works with a QString and a QList works with a node's.
    QCOMPARE(file->parent ? file->parent->name : "none", QStringLiteral("New Folder"));
    QString &name = file->name;
    name.truncate(2);
    name.push_back(QLatin1Char('y'));
    QCOMPARE(folder.addFile(named("Sky"))->name, QStringLiteral("Sky (2)"));
    name = QStringLiteral("Sea");
    const auto begin = folder.files.cbegin();
    folder.files.at(1)->setName("Sea");
    QVERIFY(begin == folder.files.cbegin());
    QCOMPARE((*begin)->name, QStringLiteral("Sea"));
    QCOMPARE(folder.files.at(1)->name, QStringLiteral("Sea (2)"));
    folder.files[0] = named("Lake");
    QCOMPARE(folder.addFile(named("Lake"))->name, QStringLiteral("Lake (2)"));
    folder.files = QList<fileTreeFile *> {named("River")};
    QCOMPARE(folder.addFile(named("River"))->name, QStringLiteral("River (2)"));
    folder.files.clear();
    QCOMPARE(folder.addFile(named("River"))->name, QStringLiteral("River"));
}

void NamingTest::nodeListedInTwoFolders()
{
    fileTreeDirectory a;
    fileTreeDirectory b;
    fileTreeFile *shared = a.addFile(named("Sky"));
    b.addFile(shared);
    QCOMPARE(shared->parent, &b);
    QCOMPARE(a.files.size(), 1);
    for (fileTreeDirectory *folder : {&a, &b})
        QCOMPARE(folder->addFile(named("Sky"))->name, QStringLiteral("Sky (2)"));
    shared->destroy();
    QCOMPARE(b.addFile(named("Sky"))->name, QStringLiteral("Sky"));
    QCOMPARE(a.files.size(), 2);
}

void NamingTest::nodeListedTwice()
{
    fileTreeDirectory folder;
    fileTreeFile *file = folder.addFile(named("Sky"));
    folder.addFile(file);
    QCOMPARE(folder.files.size(), 2);
    QCOMPARE(file->name, QStringLiteral("Sky"));
    file->destroy();
    QVERIFY(folder.files.isEmpty());
}

void NamingTest::bulkUsesDefaultsForEmptyNames()
{
    fileTreeDirectory folder;
    BulkAdder adder(&folder);
    auto *inner = new fileTreeDirectory;
    inner->name.clear();
    QCOMPARE(adder.addDirectory(inner), inner);
    QCOMPARE(inner->name, QStringLiteral("New Folder"));
    QCOMPARE(inner->parent, &folder);
    fileTreeFile *file = named(QString());
    QCOMPARE(adder.addFile(file), file);
    QCOMPARE(file->name, QStringLiteral("New Texture"));
    QCOMPARE(file->parent, &folder);
    QCOMPARE(adder.folder(), &folder);
    QCOMPARE(folder.files, QList<fileTreeFile *> {file});
    QCOMPARE(folder.directories, QList<fileTreeDirectory *> {inner});
}

void NamingTest::bulkKnowsTheFolder()
{
    fileTreeDirectory folder;
    folder.addFile(named("Sky"));
    auto *inner = new fileTreeDirectory;
    inner->name = QStringLiteral("Level");
    folder.addDirectory(inner);
    BulkAdder adder(&folder);
    QCOMPARE(adder.addFile(named("Sky"))->name, QStringLiteral("Sky (2)"));
    QCOMPARE(adder.addFile(named("Level"))->name, QStringLiteral("Level"));
    QCOMPARE(adder.addDirectory(new fileTreeDirectory(*inner))->name, QStringLiteral("Level (2)"));
}

void NamingTest::bulkReplacesInOrder()
{
    fileTreeDirectory folder;
    BulkAdder adder(&folder);
    for (int i = 0; i < 4; ++i)
        adder.addFile(named("Sky"));
    const QList<fileTreeFile *> old = folder.files;
    fileTreeFile *passing = named("Sky");
    // "Sky (3)" is given away before "Sky (2)" comes free; an entry may be added and replaced in one go.
    adder.replaceFiles({{named("Sky"), old.at(2)}, {named("Sky"), old.at(1)}, {passing, nullptr}, {named("Sky"), passing}});
    QCOMPARE(namesOf(folder), QStringList({"Sky", "Sky (4)", "Sky (3)", "Sky (2)", "Sky (5)"}));
    QVERIFY(!folder.files.contains(old.at(1)) && !folder.files.contains(passing));
    // A name that two siblings have stays in use until both are gone.
    fileTreeDirectory twins;
    twins.files = {named("Sea"), named("Sea")};
    const QList<fileTreeFile *> both = twins.files;
    BulkAdder(&twins).replaceFiles({{named("Sea"), both.at(0)}});
    QCOMPARE(twins.files.last()->name, QStringLiteral("Sea (2)"));
}

void NamingTest::bulkRemovesRowsAndSelection()
{
    QTreeWidgetItem folderRow;
    fileTreeDirectory folder;
    folder.treeItem = &folderRow;
    fileTreeFile *old = folder.addFile(named("Sky"));
    const auto row = std::make_unique<QTreeWidgetItem>(&folderRow);
    old->treeItem = row.get();
    currentROM.lastSelectedTexture = old;
    BulkAdder(&folder).replaceFiles({{named("Sky"), old}});
    QCOMPARE(folderRow.childCount(), 0);
    QVERIFY(!currentROM.lastSelectedTexture);
}

void NamingTest::matchesTheRuleOnRandomOperations()
{
    QRandomGenerator random(20);
    for (int round = 0; round < 60; ++round) {
        fileTreeDirectory folder;
        for (int step = 0; step < 120; ++step) {
            const QString wish = wishes.at(random.bounded(wishes.size()));
            fileTreeFile *chosen =
                folder.files.isEmpty() ? nullptr : qAsConst(folder.files).at(random.bounded(folder.files.size()));
            QStringList siblings = namesOf(folder);
            switch (random.bounded(5)) {
            case 0:
            case 1: QCOMPARE(folder.addFile(named(wish))->name, nameByTheRule(siblings, wish)); break;
            case 2:
                if (chosen) {
                    siblings.removeAt(chosen->index());
                    chosen->setName(wish);
                    QCOMPARE(chosen->name, nameByTheRule(siblings, wish));
                }
                break;
            case 3:
                if (chosen)
                    chosen->name = wish;
                break;
            default:
                if (chosen)
                    chosen->destroy();
            }
        }
    }
}

void NamingTest::bulkMatchesTheRuleOnRandomOperations()
{
    QRandomGenerator random(21);
    for (int round = 0; round < 60; ++round) {
        fileTreeDirectory folder;
        for (int i = random.bounded(4); i > 0; --i)
            folder.addFile(named("Sky"))->name = wishes.at(random.bounded(wishes.size())); // may be equal
        BulkAdder adder(&folder);
        for (int step = 0; step < 100; ++step) {
            fileTreeFile *added = named(wishes.at(random.bounded(wishes.size())));
            fileTreeFile *replaced = folder.files.isEmpty() || random.bounded(2)
                ? nullptr
                : qAsConst(folder.files).at(random.bounded(folder.files.size()));
            QStringList siblings = namesOf(folder);
            if (replaced)
                siblings.removeAt(replaced->index());
            const QString expected = nameByTheRule(siblings, added->name);
            adder.replaceFiles({{added, replaced}});
            QCOMPARE(added->name, expected);
            QCOMPARE(namesOf(folder), siblings << expected);
        }
    }
}

void NamingTest::bulkIsLinear_data()
{
    QTest::addColumn<bool>("distinct");
    QTest::newRow("distinct names") << true;
    QTest::newRow("one name for all") << false;
}

void NamingTest::bulkIsLinear()
{
    QFETCH(bool, distinct);
    constexpr int entries = 100000;
    fileTreeDirectory folder;
    const qint64 start = cpuMilliseconds();
    BulkAdder adder(&folder);
    for (int i = 0; i < entries; ++i)
        adder.addFile(named(distinct ? "Sky " + QString::number(i) : QStringLiteral("Sky")));
    const qint64 taken = cpuMilliseconds() - start;
    QCOMPARE(folder.files.size(), entries);
    QCOMPARE(qAsConst(folder.files).last()->name, distinct ? QStringLiteral("Sky 99999") : QStringLiteral("Sky (100000)"));
    // A quadratic rule takes a minute and more; the bound leaves room for sanitizers and a busy machine.
    QVERIFY2(taken < 5000, qPrintable(QString::number(taken)));
}

QTEST_GUILESS_MAIN(NamingTest)
#include "tst_naming.moc"
