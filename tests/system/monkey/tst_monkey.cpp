// SPDX-License-Identifier: MIT
// Monkey test: random operations in the window, with rules that are checked after each of them.
// QUILLARY_WALK_SEEDS (a number, or a range such as 1-200) and QUILLARY_WALK_STEPS ask for longer runs.
#include "system/monkey/walker.h"

#include "support/tablewindow.h"

#include <QTest>

class TestWalk : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { setApplicationIdentity(); }
    void walks_data();
    void walks();
};

namespace
{
constexpr int usualSteps = 150;
constexpr int shownTrail = 60;

QList<quint32> seeds()
{
    const QString wanted = qEnvironmentVariable("QUILLARY_WALK_SEEDS");
    if (wanted.isEmpty())
        return {1, 2, 3, 4};
    const quint32 first = wanted.section('-', 0, 0).toUInt();
    const quint32 last = wanted.section('-', -1).toUInt();
    QList<quint32> list;
    for (quint32 seed = first; seed <= last; ++seed)
        list << seed;
    return list;
}

int stepsOfWalk()
{
    const int wanted = qEnvironmentVariableIntValue("QUILLARY_WALK_STEPS");
    return wanted > 0 ? wanted : usualSteps;
}
}

void TestWalk::walks_data()
{
    QTest::addColumn<quint32>("seed");
    const QList<quint32> list = seeds();
    for (const quint32 seed : list)
        QTest::addRow("seed %u", seed) << seed;
}

void TestWalk::walks()
{
    QFETCH(quint32, seed);
    Walker walker(seed);
    const int steps = stepsOfWalk();
    for (int step = 1; step <= steps; ++step) {
        const QString problem = walker.step();
        if (problem.isEmpty())
            continue;
        const QStringList trail = walker.trail().mid(qMax(0, walker.trail().size() - shownTrail));
        QFAIL(qPrintable(QStringLiteral("seed %1, step %2: %3\n%4").arg(seed).arg(step).arg(problem, trail.join('\n'))));
    }
}

QTEST_MAIN(TestWalk)
#include "tst_monkey.moc"
