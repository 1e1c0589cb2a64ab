// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"
#include "codec/texturemanipulator.h"
#include "model/byteorder.h"
#include "model/rom.h"
#include "model/textureformat.h"
#include "persist/filelist.h"
#include "persist/profilestore.h"
#include "persist/splatyaml.h"
#include "persist/tablecsv.h"
#include "persist/zeldaxml.h"
#include "support/pictures.h"
#include "support/transfer.h"
#include "transfer/texturepack.h"

#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QImage>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>

namespace
{
constexpr int imageSize = 0x300000;

QString sourcePath(const QString &name)
{
    return QStringLiteral(QUILLARY_SOURCE_DIR "/") + name;
}

QString document(const QString &name)
{
    return QString::fromUtf8(bytesOfFile(sourcePath(name)));
}

/// All documents, by their paths in the project.
QStringList documents()
{
    QStringList names {"README.md", "CONTRIBUTING.md", "CHANGELOG.md"};
    QDirIterator files(sourcePath("docs"), {"*.md"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
        names << QDir(sourcePath(QString())).relativeFilePath(files.next());
    names.sort();
    return names;
}

/// \a text without its blocks and spans of code, where nothing is a link.
QString withoutCode(QString text)
{
    text.remove(
        QRegularExpression("^```.*?^```", QRegularExpression::MultilineOption | QRegularExpression::DotMatchesEverythingOption));
    return text.remove(QRegularExpression("`[^`\n]*`"));
}

/// What a heading is called in a link to it.
QString anchorOf(QString heading)
{
    heading = heading.trimmed().toLower();
    heading.remove(QRegularExpression("[^\\w\\s-]", QRegularExpression::UseUnicodePropertiesOption));
    return heading.replace(QLatin1Char(' '), QLatin1Char('-'));
}

QStringList anchors(const QString &name)
{
    QStringList found;
    QRegularExpressionMatchIterator headings =
        QRegularExpression("^#+ (.*)$", QRegularExpression::MultilineOption).globalMatch(document(name));
    while (headings.hasNext())
        found << anchorOf(headings.next().captured(1));
    return found;
}

/// The blocks of code of that language, with the text that follows each of them.
QList<QPair<QString, QString>> blocks(const QString &name, const QString &language)
{
    QList<QPair<QString, QString>> found;
    const QString text = document(name);
    QRegularExpressionMatchIterator matches =
        QRegularExpression("^```" + language + "\n(.*?)^```\n",
                           QRegularExpression::MultilineOption | QRegularExpression::DotMatchesEverythingOption)
            .globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        found << qMakePair(match.captured(1), text.mid(match.capturedEnd()));
    }
    return found;
}

/// The rows of the first table in \a text, without its head, cells joined by "|".
QStringList tableRows(const QString &text)
{
    QStringList rows;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        if (line.startsWith(QLatin1Char('|'))) {
            QStringList cells = line.split(QLatin1Char('|'));
            cells.removeFirst();
            cells.removeLast();
            for (QString &cell : cells)
                cell = cell.trimmed();
            rows << cells.join(QLatin1Char('|'));
        } else if (!rows.isEmpty()) {
            break;
        }
    }
    return rows.mid(2); // behind the head and its line
}

/// The table \a root as the page on formats writes it.
QStringList rowsOf(const fileTreeDirectory *root)
{
    QStringList rows;
    const QList<fileTreeFile *> files = fileTreeContainer().allFiles(root);
    for (const fileTreeFile *file : files) {
        const bool sized = file->format != QLatin1String("jpeg");
        const bool coloured = textureFormats::getAsMap().value(file->format).usesPalette;
        const QString none = QStringLiteral("-");
        rows << QStringList {file->path() + file->name,
                             hexNumber(file->realAddress()),
                             file->format,
                             sized ? QString::number(file->width) : none,
                             sized ? QString::number(file->height) : none,
                             coloured ? hexNumber(file->realPaletteAddress()) : none}
                    .join(QLatin1Char('|'));
    }
    return rows;
}

QByteArray bytesOf(const QString &hexadecimal)
{
    return QByteArray::fromHex(QString(hexadecimal).remove(QLatin1Char('`')).toLatin1());
}

QString writtenOut(QRgb colour)
{
    return QStringLiteral("(%1, %2, %3, %4)").arg(qRed(colour)).arg(qGreen(colour)).arg(qBlue(colour)).arg(qAlpha(colour));
}
}

/// The documents say what is so: their links lead somewhere, and their examples are read as they claim.
class DocumentsTest : public QObject
{
    Q_OBJECT

private slots:
    void linksResolve_data();
    void linksResolve();
    void everyPictureIsShown();
    void byteOrdersAreRecognised();
    void fileListsAreReadAsStated();
    void settingsAreReadAsStated();
    void pixelsAreReadAsStated();
    void sizesAreAsStated();
    void packIsReadAsStated();
    void tablesOfOtherToolsAreReadAsStated();
};

void DocumentsTest::linksResolve_data()
{
    QTest::addColumn<QString>("name");
    const QStringList names = documents();
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << name;
}

void DocumentsTest::linksResolve()
{
    QFETCH(const QString, name);
    const QString folder = QFileInfo(sourcePath(name)).path();
    QRegularExpressionMatchIterator links = QRegularExpression("\\]\\(([^)\\s]+)\\)").globalMatch(withoutCode(document(name)));
    while (links.hasNext()) {
        const QString target = links.next().captured(1);
        if (target.contains(QLatin1String("://")))
            continue;
        const QString file = target.section(QLatin1Char('#'), 0, 0);
        const QString anchor = target.section(QLatin1Char('#'), 1);
        const QString path = file.isEmpty() ? sourcePath(name) : folder + QLatin1Char('/') + file;
        QVERIFY2(QFileInfo::exists(path), qPrintable(target));
        if (!anchor.isEmpty()) {
            const QString page = QDir(sourcePath(QString())).relativeFilePath(QDir::cleanPath(path));
            QVERIFY2(anchors(page).contains(anchor), qPrintable(target));
        }
    }
}

void DocumentsTest::everyPictureIsShown()
{
    QString all;
    const QStringList names = documents();
    for (const QString &name : names)
        all += document(name);
    QDirIterator pictures(sourcePath("docs/images"), QDir::Files);
    int count = 0;
    while (pictures.hasNext()) {
        pictures.next();
        QVERIFY2(all.contains(QLatin1String("images/") + pictures.fileName()), qPrintable(pictures.fileName()));
        QVERIFY2(!QImage(pictures.filePath()).isNull(), qPrintable(pictures.fileName()));
        QVERIFY2(pictures.fileInfo().size() < 200 * 1024, qPrintable(pictures.fileName()));
        ++count;
    }
    QVERIFY(count > 0);
}

void DocumentsTest::byteOrdersAreRecognised()
{
    const QStringList rows = tableRows(document("docs/formats.md"));
    QCOMPARE(rows.size(), 3);
    const QList<ByteOrder> orders {ByteOrder::BigEndian, ByteOrder::ByteSwapped, ByteOrder::LittleEndian};
    for (int i = 0; i < rows.size(); ++i) {
        QByteArray image = bytesOf(rows.at(i).section(QLatin1Char('|'), 1, 1));
        QCOMPARE(image.size(), 8);
        image.append(QByteArray(60, '\0'));
        QCOMPARE(byteOrderOf(image), orders.at(i));
        QCOMPARE(image.left(4), bytesOf(rows.at(i).section(QLatin1Char('|'), 2, 2)));
    }
}

void DocumentsTest::fileListsAreReadAsStated()
{
    int lists = 0;
    const QList<QPair<QString, QString>> examples = blocks("docs/formats.md", "xml");
    for (const auto &example : examples) {
        if (example.first.contains(QLatin1String("<settings")))
            continue;
        fileTreeDirectory root;
        root.isRoot = true;
        root.name = "Root";
        QString error;
        QVERIFY2(readFileList(example.first.toUtf8(), imageSize, &root, nullptr, &error), qPrintable(error));
        QCOMPARE(rowsOf(&root), tableRows(example.second));
        ++lists;
    }
    QCOMPARE(lists, 2);
}

void DocumentsTest::settingsAreReadAsStated()
{
    int documentsRead = 0;
    const QList<QPair<QString, QString>> examples = blocks("docs/formats.md", "xml");
    for (const auto &example : examples) {
        if (!example.first.contains(QLatin1String("<settings")))
            continue;
        ProfileSettings settings;
        QString error;
        QVERIFY2(readProfileSettings(example.first.toUtf8(), &settings, &error), qPrintable(error));
        QCOMPARE(settings.autoload, QStringLiteral("Night"));
        QVERIFY(!settings.autosave);
        ++documentsRead;
    }
    QCOMPARE(documentsRead, 1);
}

void DocumentsTest::pixelsAreReadAsStated()
{
    const QString text = document("docs/formats.md");
    const QStringList rows = tableRows(text.mid(text.indexOf(QLatin1String("| format | bytes | pixels |"))));
    QCOMPARE(rows.size(), 7);
    for (const QString &row : rows) {
        const QStringList cells = row.split(QLatin1Char('|'));
        const textureFormat format = textureFormats::getAsMap().value(QString(cells.at(0)).remove(QLatin1Char('`')));
        QVERIFY2(!format.name.isEmpty(), qPrintable(row));
        const QByteArray data = bytesOf(cells.at(1));
        const int width = static_cast<int>(data.size() / format.bytesPerPixel);
        const QImage picture = textureManipulator::generateTexture(data, format, width, QByteArray());
        QStringList pixels;
        for (int x = 0; x < picture.width(); ++x)
            pixels << writtenOut(picture.pixel(x, 0));
        QCOMPARE(pixels.join(QLatin1Char(' ')), cells.at(2));
    }
}

void DocumentsTest::sizesAreAsStated()
{
    const QString text = document("docs/formats.md");
    const QStringList rows = tableRows(text.mid(text.indexOf(QLatin1String("| format | bits a pixel |"))));
    const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    QCOMPARE(rows.size(), formats.size());
    for (const QString &row : rows) {
        const QStringList cells = row.split(QLatin1Char('|'));
        const QString name = QString(cells.at(0)).remove(QLatin1Char('`'));
        QVERIFY2(formats.contains(name), qPrintable(name));
        if (name == QLatin1String("jpeg"))
            continue;
        const textureFormat format = formats.value(name);
        QCOMPARE(cells.at(1), QString::number(format.bytesPerPixel * 8));
        QString bytes = QString::number(32 * 32 * format.bytesPerPixel);
        if (format.usesPalette)
            bytes += QStringLiteral(", and %1 of palette").arg(2 * std::pow(256, format.bytesPerPixel));
        QCOMPARE(cells.at(2), bytes);
    }
}

void DocumentsTest::packIsReadAsStated()
{
    // The names in the drawing of a pack, each with the directory above it.
    const QString text = document("docs/formats.md");
    const QString drawing = text.mid(text.indexOf(QLatin1String("\npack/\n"))).section(QLatin1String("```"), 0, 0);
    QTemporaryDir folder;
    QString directory;
    int pictures = 0;
    const QStringList lines = drawing.split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const QString name = line.section(QStringLiteral("── "), 1);
        if (name.endsWith(QLatin1Char('/'))) {
            directory = folder.filePath(name);
            QVERIFY(QDir().mkpath(directory));
        } else if (!name.isEmpty()) {
            QImage picture(4, 4, QImage::Format_Indexed8);
            picture.setColorTable({qRgb(1, 2, 3)});
            picture.fill(0);
            QVERIFY(picture.save(directory + name));
            ++pictures;
        }
    }
    QCOMPARE(pictures, 3);

    fileTreeDirectory root;
    root.isRoot = true;
    QByteArray image(imageSize, '\0');
    image.replace(0x1F00, 4, QByteArray::fromHex("00150000"));
    QList<int> written;
    KeptLog log;
    importPack(
        folder.path(), &root, image,
        [&written](const QImage &, int address, const QString &, const QByteArray &) { written << address; }, &log);
    QStringList entries;
    const QList<fileTreeFile *> files = fileTreeContainer().allFiles(&root);
    for (const fileTreeFile *file : files)
        entries << file->parent->name + '/' + file->name + ' ' + file->format + ' ' + hexNumber(file->realAddress());
    entries.sort();
    std::sort(written.begin(), written.end());
    QCOMPARE(entries,
             QStringList(
                 {"Treasure/Gem.png rgba32 0x003D0000", "Walls/sign.png ci8 0x00151010", "Walls/tile_a.png rgba32 0x00150010"}));
    QCOMPARE(written, QList<int>({0x10, 0x1010, 0x280000}));
}

void DocumentsTest::tablesOfOtherToolsAreReadAsStated()
{
    const auto example = [](const QString &language, const QString &begin) {
        const QList<QPair<QString, QString>> examples = blocks("docs/formats.md", language);
        for (const auto &one : examples) {
            if (one.first.startsWith(begin))
                return one.first.toUtf8();
        }
        return QByteArray();
    };
    const auto records = [](bool (*read)(const QByteArray &, TableDocument *, QString *), const QByteArray &document) {
        TableDocument table;
        QString error;
        if (!read(document, &table, &error) || !table.leftOut.isEmpty())
            QTest::qFail(qPrintable(error + table.leftOut.join('\n')), __FILE__, __LINE__);
        QStringList lines;
        for (const TableRecord &record : qAsConst(table.records))
            lines << (record.folders + QStringList(record.name)).join('/') + ' ' + hexNumber(record.address) + ' '
                    + hexNumber(record.palette.value_or(-1)) + ' ' + record.format;
        return lines;
    };
    const QString grass = "Level/Grass 0x00140000 0xFFFFFFFF rgb5a1";
    const QString wave = "Level/Water/Wave 0x00168020 0x00168000 ci4";
    QCOMPARE(records(readTableCsv, example("csv", "path,")),
             QStringList({"Level 0x00140000 0xFFFFFFFF ", grass, "Level/Water 0x00168000 0xFFFFFFFF ", wave}));
    QCOMPARE(records(readSplatYaml, example("yaml", "segments:")), QStringList({grass, wave}));
    QCOMPARE(records(readZeldaXml, example("html", "<Root>")),
             QStringList({"object_coin 0x00000000 0xFFFFFFFF ", "object_coin/coin 0x00000020 0x00000000 ci4"}));
}

QTEST_MAIN(DocumentsTest)
#include "tst_documents.moc"
