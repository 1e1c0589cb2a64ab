// SPDX-License-Identifier: MIT
// What stays in memory: 100 images opened one after another, 1,000 profiles loaded, and tables of 100,000 entries shown and
// cleared. The nodes of the file table stay until the program ends, so each load costs theirs, and should cost no more.
#include "app/mainwindow.h"
#include "tests/support/memory.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <cstdio>

namespace
{
constexpr double mebibyte = 1 << 20;

void write(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
}

QString profilesFolder()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/profiles/");
}

void openImages(int bytes, const QTemporaryDir &folder)
{
    QStringList paths;
    for (const char *id : {"MEMA", "MEMB"}) {
        QByteArray image(bytes, '\x5A');
        image.replace(0, 8, QByteArray::fromHex("803712400000000F"));
        image.replace(59, 5, QByteArray(id) + '\0');
        paths << folder.filePath(QLatin1String(id) + QStringLiteral(".z64"));
        write(paths.last(), image);
    }
    MainWindow window;
    window.show();
    std::printf("opening images of %d MiB, resident MiB after", bytes >> 20);
    for (int i = 1; i <= 100; ++i) {
        window.loadFile(paths.at(i % 2));
        QCoreApplication::processEvents();
        if (i == 1 || i == 2 || i == 10 || i == 50 || i == 100)
            std::printf("   %d: %.1f", i, double(residentBytes()) / mebibyte);
    }
    std::printf("\n");
}

void loadProfiles(MainWindow *window, int textures)
{
    const QByteArray list = tableList(textures);
    write(profilesFolder() + currentROM.romID + QStringLiteral("/default/fileList.xml"), list);
    window->loadProfile();
    QCoreApplication::processEvents();
    constexpr int loads = 1000;
    const double nodes = nodeBytesOf(list);
    const qint64 heap = heapBytes();
    const qint64 resident = residentBytes();
    for (int i = 0; i < loads; ++i) {
        window->loadProfile();
        QCoreApplication::processEvents();
    }
    const double growth = double(heapBytes() - heap) / loads;
    std::printf("profile of %5d textures: a load keeps %8.0f bytes, its nodes take %8.0f (%.0f a texture), beyond them %6.0f; "
                "resident %+.1f MiB in %d loads\n",
                textures, growth, nodes, nodes / textures, growth - nodes, double(residentBytes() - resident) / mebibyte, loads);
}

void showLargeTable(MainWindow *window)
{
    constexpr int textures = 100000;
    const QByteArray list = tableList(textures);
    const QString path = profilesFolder() + currentROM.romID + QStringLiteral("/default/fileList.xml");
    write(path, list);
    auto *tree = window->findChild<QTreeWidget *>();
    const double nodes = nodeBytesOf(list);
    for (int round = 1; round <= 3; ++round) {
        window->clearFileTable();
        QCoreApplication::processEvents();
        const qint64 heap = heapBytes();
        std::printf("table of %d, round %d, resident MiB: cleared %.1f", textures, round, double(residentBytes()) / mebibyte);
        window->parseXML(path);
        QCoreApplication::processEvents();
        std::printf(", loaded %.1f", double(residentBytes()) / mebibyte);
        tree->expandAll();
        QCoreApplication::processEvents();
        std::printf(", expanded %.1f", double(residentBytes()) / mebibyte);
        window->clearFileTable();
        QCoreApplication::processEvents();
        const double growth = double(heapBytes() - heap);
        std::printf(", cleared %.1f; kept beyond the nodes %.1f\n", double(residentBytes()) / mebibyte,
                    (growth - nodes) / mebibyte);
    }
}
}

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir folder;
    qputenv("XDG_CONFIG_HOME", folder.path().toLocal8Bit());
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    const QApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Brimholt"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillary"));

    std::printf("a texture node has %zu bytes, a folder node %zu\n", sizeof(fileTreeFile), sizeof(fileTreeDirectory));
    openImages(16 << 20, folder);
    openImages(64 << 20, folder);
    MainWindow window;
    window.show();
    window.loadFile(folder.filePath(QStringLiteral("MEMA.z64")));
    loadProfiles(&window, 40);
    loadProfiles(&window, 2000);
    showLargeTable(&window);
    return 0;
}
