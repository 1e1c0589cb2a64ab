// SPDX-License-Identifier: MIT
// From nothing to the first painted window, and opening a 64 MiB image of each byte order against the bare reading of the file.
#include "benchmark.h"

#include "app/mainwindow.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>

namespace
{
constexpr int imageBytes = 64 << 20;
constexpr int repetitions = 5;

QByteArray imageIn(const char *signature)
{
    QByteArray image(imageBytes, '\x5A');
    image.replace(0, 8, QByteArray::fromHex(signature));
    return image;
}

double millisecondsToFirstPaint()
{
    return double(nanosecondsOf([] {
               MainWindow window;
               window.show();
               while (!window.isVisible())
                   QCoreApplication::processEvents();
               window.grab(); // Everything is laid out and painted now, whatever the platform would have put off.
           }))
        / 1e6;
}

void measureOpening(const char *order, const char *signature, const QTemporaryDir &folder)
{
    const QString path = folder.filePath(QStringLiteral("image.") + QLatin1String(order));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(imageIn(signature)) != imageBytes)
        qFatal("cannot write %s", qPrintable(path));
    file.close();

    QVector<double> opening;
    QVector<double> reading;
    QVector<double> ratios;
    for (int i = 0; i < repetitions; ++i) {
        reading << double(nanosecondsOf([&path] {
                       QFile bare(path);
                       if (!bare.open(QIODevice::ReadOnly) || bare.readAll().size() != imageBytes)
                           qFatal("cannot read %s", qPrintable(path));
                   }))
                / 1e6;
        MainWindow window;
        opening << double(nanosecondsOf([&] { window.loadFile(path); })) / 1e6;
        ratios << opening.last() / reading.last();
    }
    std::printf("opening 64 MiB %-4s %7.1f ms   reading the file %7.1f ms   ratio %5.2f\n", order, medianOf(opening),
                medianOf(reading), medianOf(ratios));
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

    QVector<double> starts;
    for (int i = 0; i < repetitions; ++i)
        starts << millisecondsToFirstPaint();
    std::printf("first window %.0f ms, further ones %.0f ms (fonts and icons are there by then)\n", starts.first(),
                medianOf(starts));

    measureOpening("z64", "803712400000000F", folder);
    measureOpening("v64", "3780401200000F00", folder);
    measureOpening("n64", "401237800F000000", folder);
    QDir(QCoreApplication::applicationDirPath() + QStringLiteral("/profiles")).removeRecursively();
    return 0;
}
