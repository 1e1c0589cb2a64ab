// SPDX-License-Identifier: MIT
#include "model/rom.h"

#include "support/images.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTest>

#include <ctime>

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

qint64 cpuMilliseconds()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return qint64(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}
}

/// Names among siblings, above all where the lists and names, which are public, are written to directly.
class NameIndexTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { resetCurrentROM(); }

    void sameNamesAreNumberedFromTwo();
    void freedNumbersAreTakenAgain();
    void numberedNamesGetNoSecondNumberOfTheirOwn();
    void leadingZerosAreNoNumber();
    void ownNumberCountsAsFree();
    void seesNamesWrittenDirectly();
    void seesEveryWayOfWritingANameDirectly();
    void seesListsWrittenDirectly();
    void copiesOfANodeAreNoSiblings();
    void nodeListedInTwoFolders();
    void nodeListedTwice();
    void deletedNodesAreForgotten();
    void nodeOutlivesItsFolder();
    void matchesTheRuleOnRandomOperations();
    void addingIsLinear_data();
    void addingIsLinear();
};

void NameIndexTest::sameNamesAreNumberedFromTwo()
{
    fileTreeDirectory folder;
    for (int i = 0; i < 4; ++i)
        folder.addFile(named("Sky"));
    QCOMPARE(namesOf(folder), (QStringList{"Sky", "Sky (2)", "Sky (3)", "Sky (4)"}));
}

void NameIndexTest::freedNumbersAreTakenAgain()
{
    fileTreeDirectory folder;
    for (int i = 0; i < 5; ++i)
        folder.addFile(named("Sky"));
    folder.files.at(2)->destroy();
    QCOMPARE(QString(folder.addFile(named("Sky"))->name), QStringLiteral("Sky (3)"));
    folder.files.at(1)->setName("Cloud");
    QCOMPARE(QString(folder.addFile(named("Sky"))->name), QStringLiteral("Sky (2)"));
    QCOMPARE(QString(folder.addFile(named("Sky"))->name), QStringLiteral("Sky (6)"));
}

void NameIndexTest::numberedNamesGetNoSecondNumberOfTheirOwn()
{
    fileTreeDirectory folder;
    folder.addFile(named("Sky (2)"));
    QCOMPARE(QString(folder.addFile(named("Sky (2)"))->name), QStringLiteral("Sky (2) (2)"));
    QCOMPARE(QString(folder.addFile(named("Sky"))->name), QStringLiteral("Sky"));
    QCOMPARE(QString(folder.addFile(named("Sky"))->name), QStringLiteral("Sky (3)"));
}

void NameIndexTest::leadingZerosAreNoNumber()
{
    fileTreeDirectory folder;
    folder.addFile(named("Sky"));
    fileTreeFile *second = folder.addFile(named("Sky"));
    fileTreeFile *odd = folder.addFile(named("Sky (02)"));
    QCOMPARE(QString(folder.addFile(named("Sky"))->name), QStringLiteral("Sky (3)"));
    odd->destroy();
    QCOMPARE(QString(folder.addFile(named("Sky"))->name), QStringLiteral("Sky (4)"));
    second->destroy();
    QCOMPARE(QString(folder.addFile(named("Sky"))->name), QStringLiteral("Sky (2)"));
}

void NameIndexTest::ownNumberCountsAsFree()
{
    fileTreeDirectory folder;
    for (int i = 0; i < 4; ++i)
        folder.addFile(named("Sky"));
    fileTreeFile *second = folder.files.at(1);
    second->setName("Sky");
    QCOMPARE(QString(second->name), QStringLiteral("Sky (2)"));
    second->setName("Sky (2)");
    QCOMPARE(QString(second->name), QStringLiteral("Sky (2)"));
    folder.files.at(3)->setName("Sky");
    QCOMPARE(QString(folder.files.at(3)->name), QStringLiteral("Sky (4)"));
}

void NameIndexTest::seesNamesWrittenDirectly()
{
    fileTreeDirectory folder;
    fileTreeFile *first = folder.addFile(named("Sky"));
    first->name = QStringLiteral("Sea");
    QCOMPARE(QString(folder.addFile(named("Sky"))->name), QStringLiteral("Sky"));
    QCOMPARE(QString(folder.addFile(named("Sea"))->name), QStringLiteral("Sea (2)"));
    // Written directly, a name may stand twice; each bearer counts.
    folder.files.at(2)->name = QStringLiteral("Sea");
    first->name = QStringLiteral("Lake");
    QCOMPARE(QString(folder.addFile(named("Sea"))->name), QStringLiteral("Sea (2)"));
}

void NameIndexTest::seesEveryWayOfWritingANameDirectly()
{
    fileTreeDirectory folder;
    fileTreeFile *file = folder.addFile(named("a"));
    const auto nameTakenBy = [&folder](const QString &text) {
        fileTreeFile probe;
        probe.name = text;
        folder.addFile(&probe);
        const bool taken = QString(probe.name) != text;
        probe.destroy();
        return taken;
    };
    file->name = "b";
    QVERIFY(nameTakenBy("b") && !nameTakenBy("a"));
    file->name = QLatin1String("c");
    QVERIFY(nameTakenBy("c"));
    file->name = QLatin1Char('d');
    QVERIFY(nameTakenBy("d"));
    file->name += QLatin1Char('e');
    QVERIFY(nameTakenBy("de"));
    file->name.append("f");
    QVERIFY(nameTakenBy("def"));
    file->name.prepend("c");
    QVERIFY(nameTakenBy("cdef"));
    file->name.insert(1, "x");
    QVERIFY(nameTakenBy("cxdef"));
    file->name.remove("x");
    QVERIFY(nameTakenBy("cdef"));
    file->name.replace("cd", "z");
    QVERIFY(nameTakenBy("zef"));
    QString other = "swapped";
    file->name.swap(other);
    QVERIFY(nameTakenBy("swapped"));
    QCOMPARE(other, QStringLiteral("zef"));
    const fileTreeFile source = *named("copied");
    file->name = source.name;
    QVERIFY(nameTakenBy("copied"));
    file->name = file->name;
    QVERIFY(nameTakenBy("copied"));
    file->name.clear();
    QVERIFY(file->name.isNull() && !nameTakenBy("copied"));
}

void NameIndexTest::seesListsWrittenDirectly()
{
    fileTreeDirectory folder;
    folder.addFile(named("Sky"));
    folder.files.append(named("Sea"));
    QCOMPARE(QString(folder.addFile(named("Sea"))->name), QStringLiteral("Sea (2)"));
    folder.files.removeFirst();
    QCOMPARE(QString(folder.addFile(named("Sky"))->name), QStringLiteral("Sky"));
    folder.files[0] = named("Lake");
    QCOMPARE(QString(folder.addFile(named("Lake"))->name), QStringLiteral("Lake (2)"));
    QCOMPARE(QString(folder.addFile(named("Sea"))->name), QStringLiteral("Sea"));
    folder.files.clear();
    QCOMPARE(QString(folder.addFile(named("Sky"))->name), QStringLiteral("Sky"));
    folder.files = QList<fileTreeFile *>{named("River")};
    QCOMPARE(QString(folder.addFile(named("River"))->name), QStringLiteral("River (2)"));
    folder.sort();
    QCOMPARE(QString(folder.addFile(named("River"))->name), QStringLiteral("River (3)"));
}

void NameIndexTest::copiesOfANodeAreNoSiblings()
{
    fileTreeDirectory folder;
    fileTreeFile *file = folder.addFile(named("Sky"));
    fileTreeFile copy = *file;
    copy.name = QStringLiteral("Sea");
    QCOMPARE(QString(folder.addFile(named("Sea"))->name), QStringLiteral("Sea"));
    // The copy is in the folder's eyes a stranger that asks: every sibling counts.
    copy.setName("Sky");
    QCOMPARE(QString(copy.name), QStringLiteral("Sky (2)"));
    *file = copy;
    QCOMPARE(QString(folder.addFile(named("Sky (2)"))->name), QStringLiteral("Sky (2) (2)"));
}

void NameIndexTest::nodeListedInTwoFolders()
{
    fileTreeDirectory a;
    fileTreeDirectory b;
    fileTreeFile *shared = a.addFile(named("Sky"));
    b.addFile(shared);
    QCOMPARE(shared->parent, &b);
    QCOMPARE(a.files.size(), 1);
    QCOMPARE(QString(a.addFile(named("Sky"))->name), QStringLiteral("Sky (2)"));
    QCOMPARE(QString(b.addFile(named("Sky"))->name), QStringLiteral("Sky (2)"));
    shared->name = QStringLiteral("Sea");
    QCOMPARE(QString(a.addFile(named("Sea"))->name), QStringLiteral("Sea (2)"));
    QCOMPARE(QString(b.addFile(named("Sea"))->name), QStringLiteral("Sea (2)"));
    shared->destroy();
    QCOMPARE(QString(b.addFile(named("Sea"))->name), QStringLiteral("Sea"));
    QCOMPARE(QString(a.addFile(named("Sea"))->name), QStringLiteral("Sea (3)"));
}

void NameIndexTest::nodeListedTwice()
{
    fileTreeDirectory folder;
    fileTreeFile *file = folder.addFile(named("Sky"));
    folder.addFile(file);
    QCOMPARE(folder.files.size(), 2);
    QCOMPARE(QString(file->name), QStringLiteral("Sky"));
    file->destroy();
    QVERIFY(folder.files.isEmpty());
    QCOMPARE(QString(folder.addFile(named("Sky"))->name), QStringLiteral("Sky"));
}

void NameIndexTest::deletedNodesAreForgotten()
{
    fileTreeDirectory folder;
    fileTreeFile *file = folder.addFile(named("Sky"));
    file->destroy();
    delete file;
    QCOMPARE(QString(folder.addFile(named("Sky"))->name), QStringLiteral("Sky"));
}

void NameIndexTest::nodeOutlivesItsFolder()
{
    auto folder = std::make_unique<fileTreeDirectory>();
    fileTreeFile *file = folder->addFile(named("Sky"));
    folder.reset();
    file->parent = nullptr;
    file->name = QStringLiteral("Sea");
    fileTreeDirectory other;
    other.addFile(file);
    QCOMPARE(QString(file->name), QStringLiteral("Sea"));
}

void NameIndexTest::matchesTheRuleOnRandomOperations()
{
    QRandomGenerator random(20);
    const QStringList wishes{"a", "b", "a (2)", "a (3)", "a (2) (2)", "b (2)", "a (1)", "a (02)"};
    for (int round = 0; round < 60; ++round) {
        fileTreeDirectory folder;
        for (int step = 0; step < 120; ++step) {
            const QString wish = wishes.at(random.bounded(wishes.size()));
            fileTreeFile *chosen
                = folder.files.isEmpty() ? nullptr : qAsConst(folder.files).at(random.bounded(folder.files.size()));
            QStringList siblings = namesOf(folder);
            switch (random.bounded(5)) {
            case 0:
            case 1:
                QCOMPARE(QString(folder.addFile(named(wish))->name), nameByTheRule(siblings, wish));
                break;
            case 2:
                if (chosen) {
                    siblings.removeAt(chosen->index());
                    chosen->setName(wish);
                    QCOMPARE(QString(chosen->name), nameByTheRule(siblings, wish));
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

void NameIndexTest::addingIsLinear_data()
{
    QTest::addColumn<bool>("distinct");
    QTest::newRow("distinct names") << true;
    QTest::newRow("one name for all") << false;
}

void NameIndexTest::addingIsLinear()
{
    QFETCH(bool, distinct);
    constexpr int entries = 100000;
    fileTreeDirectory folder;
    const qint64 start = cpuMilliseconds();
    for (int i = 0; i < entries; ++i)
        folder.addFile(named(distinct ? "Sky " + QString::number(i) : QStringLiteral("Sky")));
    const qint64 taken = cpuMilliseconds() - start;
    QCOMPARE(folder.files.size(), entries);
    QCOMPARE(QString(qAsConst(folder.files).last()->name), distinct ? QStringLiteral("Sky 99999") : QStringLiteral("Sky (100000)"));
    // A quadratic rule takes a minute and more; the bound leaves room for sanitizers and a busy machine.
    QVERIFY2(taken < 5000, qPrintable(QString::number(taken)));
}

QTEST_GUILESS_MAIN(NameIndexTest)
#include "tst_nameindex.moc"
