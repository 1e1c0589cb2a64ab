// SPDX-License-Identifier: MIT
// Entries added to one folder in bulk: naming included, against linking alone, and against comparing with every sibling.
#include "benchmark.h"

#include "model/bulkadder.h"

#include <QStringList>

#include <cstdio>

namespace
{
QString nameOf(int i, bool distinct)
{
    return distinct ? QStringLiteral("Sky ") + QString::number(i) : QStringLiteral("Sky");
}

QVector<fileTreeFile *> entries(int count, bool distinct)
{
    QVector<fileTreeFile *> files;
    for (int i = 0; i < count; ++i) {
        files.append(new fileTreeFile);
        files.last()->name = nameOf(i, distinct);
    }
    return files;
}

qint64 addAll(int count, bool distinct)
{
    const QVector<fileTreeFile *> files = entries(count, distinct);
    fileTreeDirectory folder;
    const qint64 taken = nanosecondsOf([&] {
        BulkAdder adder(&folder);
        for (fileTreeFile *file : files)
            adder.addFile(file);
    });
    qDeleteAll(files);
    return taken;
}

qint64 destroyAll(int count, bool distinct)
{
    const QVector<fileTreeFile *> files = entries(count, distinct);
    fileTreeDirectory folder;
    BulkAdder adder(&folder);
    for (fileTreeFile *file : files)
        adder.addFile(file);
    const qint64 taken = nanosecondsOf([&] {
        for (fileTreeFile *file : files)
            file->destroy();
    });
    qDeleteAll(files);
    return taken;
}

qint64 linkAll(int count)
{
    const QVector<fileTreeFile *> files = entries(count, true);
    fileTreeDirectory folder;
    const qint64 taken = nanosecondsOf([&] {
        for (fileTreeFile *file : files) {
            file->parent = &folder;
            folder.files.append(file);
        }
    });
    qDeleteAll(files);
    return taken;
}

qint64 addAllBySiblings(int count, bool distinct)
{
    const QVector<fileTreeFile *> files = entries(count, distinct);
    fileTreeDirectory folder;
    const qint64 taken = nanosecondsOf([&] {
        for (fileTreeFile *file : files) {
            QStringList siblings;
            for (const fileTreeFile *sibling : qAsConst(folder.files))
                siblings << sibling->name;
            QString name = file->name;
            for (int number = 2; siblings.contains(name); ++number)
                name = QString(file->name) + QStringLiteral(" (") + QString::number(number) + QLatin1Char(')');
            file->name = name;
            folder.files.append(file);
        }
    });
    qDeleteAll(files);
    return taken;
}

template<typename Work> double medianMilliseconds(int repetitions, Work &&work)
{
    QVector<double> taken;
    for (int i = 0; i < repetitions; ++i)
        taken << double(work()) / 1e6;
    return medianOf(taken);
}
}

int main()
{
    for (const bool distinct : {true, false})
        std::printf("destroying 100,000 entries, %s names: %.0f ms\n", distinct ? "distinct" : "the same",
                    medianMilliseconds(3, [&] { return destroyAll(100000, distinct); }));
    std::printf("%-10s %8s %12s %12s %14s %18s\n", "names", "entries", "adding", "linking", "adding/linking",
                "by siblings/adding");
    for (const bool distinct : {true, false}) {
        double small = 0;
        for (const int count : {1000, 10000, 100000}) {
            const double adding = medianMilliseconds(5, [&] { return addAll(count, distinct); });
            const double linking = medianMilliseconds(5, [&] { return linkAll(count); });
            const bool bearable = count <= (distinct ? 10000 : 1000);
            const double siblings = bearable ? medianMilliseconds(1, [&] { return addAllBySiblings(count, distinct); }) : 0;
            std::printf("%-10s %8d %9.2f ms %9.2f ms %14.1f %18s\n", distinct ? "distinct" : "the same", count, adding, linking,
                        adding / linking, bearable ? qPrintable(QString::number(siblings / adding, 'f', 0)) : "-");
            if (count == 10000)
                small = adding;
            if (count == 100000)
                std::printf("%-10s growth from 10,000 to 100,000: %.1f-fold (target at most 40), 100,000 in %.0f ms (target at "
                            "most 100)\n",
                            "", adding / small, adding);
        }
    }
}
