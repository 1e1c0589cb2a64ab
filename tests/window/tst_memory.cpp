// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "support/memory.h"
#include "support/pictures.h"
#include "support/tablewindow.h"

#include <QDir>
#include <QTemporaryDir>

/// What a window that works for long keeps in memory: the nodes of the tables that it has shown, and nothing else.
class TestMemory : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        setApplicationIdentity();
#if defined(__SANITIZE_ADDRESS__)
        QSKIP("the sanitizers have a heap of their own");
#endif
        QVERIFY(heapBytes() > 0);
    }
    void init();
    void cleanup()
    {
        resetCurrentROM();
    }

    void imagesReplaceEachOther();
    void profilesKeepTheirNodesOnly();
    void clearedRowsAreFreed();
    void searchesKeepNothing();

private:
    QString writtenImage(const QTemporaryDir &folder, const QByteArray &id, int bytes);
};

namespace
{
QString profilesFolder()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/profiles/");
}

/// Heap bytes that stay when \a work is done \a times times; before that it is done a few times to fill what is kept for good.
template<typename Work> double keptBy(int times, Work &&work)
{
    const auto doIt = [&work](int count) {
        for (int i = 0; i < count; ++i) {
            work();
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    };
    doIt(5);
    const qint64 before = heapBytes();
    doIt(times);
    return double(heapBytes() - before);
}
}

void TestMemory::init()
{
    QSettings().clear();
    QDir(profilesFolder()).removeRecursively();
}

QString TestMemory::writtenImage(const QTemporaryDir &folder, const QByteArray &id, int bytes)
{
    const QString path = folder.filePath(QString::fromLatin1(id));
    return writeBytes(path, cartridgeImage(bytes, id)) ? path : QString();
}

void TestMemory::imagesReplaceEachOther()
{
    constexpr int bytes = 2 << 20;
    const QTemporaryDir folder;
    const QString a = writtenImage(folder, "MEMA", bytes);
    const QString b = writtenImage(folder, "MEMB", bytes);
    MainWindow window;
    window.show();
    const double kept = keptBy(20, [&] {
        window.loadFile(a);
        window.loadFile(b);
    });
    QVERIFY2(kept < bytes, qPrintable(QString::number(kept)));
}

void TestMemory::profilesKeepTheirNodesOnly()
{
    constexpr int loads = 200;
    const QTemporaryDir folder;
    const QByteArray list = tableList(40);
    QDir().mkpath(profilesFolder() + QStringLiteral("MEMA0/default"));
    QVERIFY(writeBytes(profilesFolder() + QStringLiteral("MEMA0/default/fileList.xml"), list));
    MainWindow window;
    window.show();
    window.loadFile(writtenImage(folder, "MEMA", 1 << 16));
    QCOMPARE(fileTreeContainer().allFiles(currentROM.root).size(), 40);
    const double nodes = nodeBytesOf(list);
    const double kept = keptBy(loads, [&] { window.loadProfile(); });
    // A row would take far more than this for each load.
    constexpr double slack = 2048;
    QVERIFY2(kept < loads * (nodes + slack), qPrintable(QStringLiteral("%1 of %2").arg(kept / loads).arg(nodes)));
}

void TestMemory::clearedRowsAreFreed()
{
    constexpr int textures = 5000;
    const QTemporaryDir folder;
    const QByteArray list = tableList(textures);
    const QString path = folder.filePath(QStringLiteral("list.xml"));
    QVERIFY(writeBytes(path, list));
    TableWindow window;
    window.show();
    const double nodes = nodeBytesOf(list);
    constexpr int rounds = 3;
    const double kept = keptBy(rounds, [&] {
        window->parseXML(path);
        window.tree()->expandAll();
        QCoreApplication::processEvents();
        window->clearFileTable();
    });
    constexpr double slack = 32 * textures;
    QVERIFY2(kept < rounds * (nodes + slack), qPrintable(QStringLiteral("%1 of %2").arg(kept / rounds).arg(nodes)));
}

void TestMemory::searchesKeepNothing()
{
    const QTemporaryDir folder;
    const QString picture = folder.filePath(QStringLiteral("a.png"));
    QVERIFY(plainPicture(4, 4, qRgb(1, 2, 3)).save(picture));
    TableWindow window;
    window.select(currentROM.root);
    constexpr int searches = 40;
    constexpr int doNotCreateEntries = 2;
    const double kept = keptBy(searches, [&] {
        window->runFindTexture({picture}, {{QStringLiteral("i8"), textureFormats::i8}}, true, doNotCreateEntries);
    });
    // A progress dialog has more than this.
    QVERIFY2(kept < searches * 4096, qPrintable(QString::number(kept / searches)));
}

QTEST_MAIN(TestMemory)
#include "tst_memory.moc"
