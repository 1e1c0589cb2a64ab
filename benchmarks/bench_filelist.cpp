// SPDX-License-Identifier: MIT
// The file list: saving and loading against bare passes of the stream classes, and what the window does with the rows.
#include "benchmark.h"

#include "app/mainwindow.h"
#include "base/hexnumber.h"
#include "persist/filelist.h"

#include <QApplication>
#include <QBuffer>
#include <QFile>
#include <QHeaderView>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QVector>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <cstdio>
#include <functional>

namespace
{
constexpr int repetitions = 7;

struct PlainEntry
{
    QString name;
    QString format;
    int address = 0;
    int palette = 0;
    int width = 0;
    int height = 0;
};

QByteArray document(int textures, int folders)
{
    QByteArray bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root version=\"2\">\n";
    for (int folder = 0; folder < folders; ++folder) {
        const QByteArray address = hexNumber((folder * 7919) % 100003).toLatin1();
        bytes +=
            "\t<directory name=\"Folder " + QByteArray::number(folder) + "\" address=\"" + address + "\" size=\"0x00001000\">\n";
        for (int i = folder; i < textures; i += folders) {
            const QByteArray offset = hexNumber(int((qint64(i) * 7919) % 1000003)).toLatin1();
            bytes += "\t\t<texture name=\"Texture " + QByteArray::number(i) + "\" address=\"" + offset
                + "\" format=\"ci4\" width=\"32\" height=\"16\" palette=\"0x00000200\"/>\n";
        }
        bytes += "\t</directory>\n";
    }
    return bytes + "</root>\n";
}

fileTreeDirectory *newRoot()
{
    auto *root = new fileTreeDirectory;
    root->isRoot = true;
    return root;
}

void load(const QByteArray &bytes, fileTreeDirectory *root)
{
    QString error;
    if (!readFileList(bytes, 1 << 24, root, nullptr, &error))
        qFatal("%s", qPrintable(error));
}

int plainHexadecimal(const QStringRef &text)
{
    return text.toInt(nullptr, 16);
}

/// What has to be done at least: tokens, attributes, numbers, into plain records.
QVector<QVector<PlainEntry>> loadPlainly(const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QXmlStreamReader xml(&buffer);
    QVector<QVector<PlainEntry>> folders;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QXmlStreamAttributes attributes = xml.attributes();
        if (xml.name() == QLatin1String("directory")) {
            folders.append(QVector<PlainEntry>());
        } else if (xml.name() == QLatin1String("texture")) {
            PlainEntry entry;
            entry.name = attributes.value(QLatin1String("name")).toString();
            entry.address = plainHexadecimal(attributes.value(QLatin1String("address")));
            entry.format = attributes.value(QLatin1String("format")).toString();
            entry.width = attributes.value(QLatin1String("width")).toInt();
            entry.height = attributes.value(QLatin1String("height")).toInt();
            entry.palette = plainHexadecimal(attributes.value(QLatin1String("palette")));
            folders.last().append(entry);
        }
    }
    return folders;
}

/// The elements and attributes of the list, already sorted, without a look at the table.
void savePlainly(const QVector<QVector<PlainEntry>> &folders)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QXmlStreamWriter writer(&buffer);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(-1);
    writer.writeStartDocument();
    writer.writeStartElement(QStringLiteral("root"));
    for (const QVector<PlainEntry> &folder : folders) {
        writer.writeStartElement(QStringLiteral("directory"));
        for (const PlainEntry &entry : folder) {
            writer.writeEmptyElement(QStringLiteral("texture"));
            writer.writeAttribute(QStringLiteral("name"), entry.name);
            writer.writeAttribute(QStringLiteral("address"), hexNumber(entry.address));
            writer.writeAttribute(QStringLiteral("format"), entry.format);
            writer.writeAttribute(QStringLiteral("width"), QString::number(entry.width));
            writer.writeAttribute(QStringLiteral("height"), QString::number(entry.height));
            writer.writeAttribute(QStringLiteral("palette"), hexNumber(entry.palette));
        }
        writer.writeEndElement();
    }
    writer.writeEndElement();
    writer.writeEndDocument();
}

void save(fileTreeDirectory *root)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QString error;
    if (!writeFileList(root, &buffer, &error))
        qFatal("%s", qPrintable(error));
}

double milliseconds(qint64 nanoseconds)
{
    return double(nanoseconds) / 1e6;
}

/// Prints the median times of \a plain and \a ours, and the median ratio of runs in the same moments.
template<typename Plain, typename Ours> void compare(const char *what, int textures, int folders, Plain plain, Ours ours)
{
    QVector<qint64> plainTimes;
    QVector<qint64> ourTimes;
    QVector<double> ratios;
    for (int i = 0; i < repetitions; ++i) {
        plainTimes.append(plain());
        ourTimes.append(ours());
        ratios.append(double(ourTimes.last()) / double(plainTimes.last()));
    }
    std::printf("%-8s %7d textures in %5d folders: %8.1f ms, bare pass %8.1f ms, ratio %.2f\n", what, textures, folders,
                milliseconds(medianOf(ourTimes)), milliseconds(medianOf(plainTimes)), medianOf(ratios));
}

void benchCore(int textures, int folders)
{
    const QByteArray bytes = document(textures, folders);
    const QVector<QVector<PlainEntry>> plain = loadPlainly(bytes);
    compare(
        "loading", textures, folders, [&] { return nanosecondsOf([&] { loadPlainly(bytes); }); },
        [&] {
            fileTreeDirectory *root = newRoot();
            return nanosecondsOf([&] { load(bytes, root); });
        });
    compare(
        "saving", textures, folders, [&] { return nanosecondsOf([&] { savePlainly(plain); }); },
        [&] {
            fileTreeDirectory *root = newRoot();
            load(bytes, root); // unsorted each time
            return nanosecondsOf([&] { save(root); });
        });
}

struct Step
{
    QString name;
    QVector<qint64> times;
};

void measure(QVector<Step> *steps, const QString &name, const std::function<void()> &work)
{
    const qint64 time = nanosecondsOf(work);
    for (Step &step : *steps) {
        if (step.name == name) {
            step.times.append(time);
            return;
        }
    }
    steps->append({name, {time}});
}

QVector<Step> benchWindow(MainWindow *window, int textures, int folders)
{
    QTemporaryDir temporary;
    const QString path = temporary.filePath(QStringLiteral("fileList.xml"));
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(document(textures, folders));
    file.close();
    auto *tree = window->findChild<QTreeWidget *>();
    QVector<Step> steps;
    for (int i = 0; i < 3; ++i) {
        window->clearFileTable();
        measure(&steps, QStringLiteral("load with rows"), [&] { window->parseXML(path); });
        measure(&steps, QStringLiteral("expand all folders"), [&] { tree->expandAll(); });
        measure(&steps, QStringLiteral("lay out and paint"), [] { QCoreApplication::processEvents(); });
        for (int column = 0; column < tree->columnCount(); ++column)
            measure(&steps, QStringLiteral("sort by ") + tree->headerItem()->text(column),
                    [&] { tree->sortByColumn(column, Qt::DescendingOrder); });
        tree->sortByColumn(1, Qt::AscendingOrder);
        QTreeWidgetItem *folder = tree->topLevelItem(0)->child(0);
        measure(&steps, QStringLiteral("select 100 textures"), [&] {
            for (int k = 0; k < 100; ++k)
                tree->setCurrentItem(folder->child(k * folder->childCount() / 100));
        });
        measure(&steps, QStringLiteral("save"), [&] { window->createXMLFile(path + QStringLiteral(".saved")); });
        measure(&steps, QStringLiteral("clear"), [&] { window->clearFileTable(); });
    }
    return steps;
}

void compareSizes(MainWindow *window, int folders, int smallFolders)
{
    constexpr int few = 10000;
    constexpr int many = 100000;
    const QVector<Step> small = benchWindow(window, few, smallFolders);
    const QVector<Step> large = benchWindow(window, many, folders);
    std::printf("\nrows, %d folders: %26s %12s %9s\n", folders, "10,000", "100,000", "growth");
    for (int i = 0; i < small.size(); ++i) {
        const qint64 before = medianOf(small.at(i).times);
        const qint64 after = medianOf(large.at(i).times);
        std::printf("%-30s %10.1f ms %9.1f ms %8.1f\n", qPrintable(small.at(i).name), milliseconds(before), milliseconds(after),
                    double(after) / double(qMax(qint64(1), before)));
    }
}
}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &text) {
        if (type == QtFatalMsg)
            std::fprintf(stderr, "%s\n", qPrintable(text));
    });
    for (const int textures : {10000, 100000}) {
        benchCore(textures, 1);
        benchCore(textures, textures / 100);
    }
    currentROM.data = QByteArray(1 << 24, '\x5a');
    currentROM.loaded = true;
    MainWindow window;
    window.show();
    compareSizes(&window, 1, 1);
    compareSizes(&window, 1000, 100);
    return 0;
}
