// SPDX-License-Identifier: MIT
#include "codec/texturemanipulator.h"
#include "model/bulkadder.h"
#include "search/searchobserver.h"
#include "search/texturesearch.h"
#include "support/images.h"
#include "support/pictures.h"

#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

namespace
{
/// Keeps what a search tells, and cancels it where told.
class Recorder : public SearchObserver
{
public:
    int cancelAt = -1; ///< The number, from 0, of the question cancelled() that is answered by yes.
    int interruptAt = -1; ///< Likewise for interrupted().
    int questions = 0;
    int interruptions = 0;
    QStringList events;
    QStringList found;
    QVector<fileTreeFile *> added;

    void beginPicture(const QString &file, int number, int count) override
    {
        events << QStringLiteral("begin %1 %2/%3").arg(QFileInfo(file).fileName()).arg(number).arg(count);
    }
    void setValue(int value) override { events << QStringLiteral("value %1").arg(value); }
    bool cancelled() override
    {
        m_cancelled = m_cancelled || questions == cancelAt;
        ++questions;
        return m_cancelled;
    }
    bool interrupted() override
    {
        m_cancelled = m_cancelled || interruptions == interruptAt;
        ++interruptions;
        return m_cancelled;
    }
    void cannotReadPicture(const QString &file) override { events << "unreadable " + QFileInfo(file).fileName(); }
    void foundCopy(const QString &format, int position) override
    {
        events << QStringLiteral("found %1 %2").arg(format).arg(position);
        found << events.last();
    }
    void copyHandled(Outcome outcome) override
    {
        events << (outcome == Outcome::Overwrote ? "overwrote" : outcome == Outcome::Added ? "added" : "ignored");
    }
    void beforeReplacing(const QVector<TextureReplacement> &changes) override
    {
        for (const TextureReplacement &change : changes)
            QVERIFY(!change.replaced || change.replaced->index() >= 0);
    }
    void entriesAdded(const QVector<fileTreeFile *> &entries) override { added += entries; }

private:
    bool m_cancelled = false;
};

struct Options : TextureSearchOptions
{
    Options(bool first, int mode, const QStringList &names = {})
    {
        firstOnly = first;
        duplicateMode = mode;
        const QMap<QString, textureFormat> all = textureFormats::getAsMap();
        for (const textureFormat &format : all) {
            if (names.isEmpty() ? !format.usesPalette && format.name != "jpeg" : names.contains(format.name))
                formats.insert(format.name, format);
        }
    }
};

/// The plain search: the reference for the copies, their order and their outcomes.
class PlainSearch
{
public:
    PlainSearch(fileTreeDirectory *folder, const TextureSearchOptions &options, Recorder *log)
        : m_folder(folder), m_options(options), m_log(log)
    {
    }

    void run(const QStringList &files)
    {
        for (int i = 0; i < files.size(); ++i) {
            m_log->beginPicture(files.at(i), i + 1, files.size());
            findTexture(files.at(i));
            if (isCancelled())
                break;
            m_log->setValue(i + 1);
        }
    }

private:
    bool isCancelled() { return m_cancelled = m_log->cancelled() || m_cancelled; }

    void findTexture(const QString &file)
    {
        const QImage image(file);
        if (image.isNull()) {
            m_log->cannotReadPicture(file);
            return;
        }
        const QByteArray range = currentROM.data.mid(m_folder->realAddress(), m_folder->size);
        QList<fileTreeFile *> entries;
        collect(image, file, range, &entries);
        for (fileTreeFile *entry : qAsConst(entries))
            handle(entry);
    }

    void collect(const QImage &image, const QString &file, const QByteArray &range, QList<fileTreeFile *> *entries)
    {
        for (auto format = m_options.formats.cbegin(); format != m_options.formats.cend(); ++format) {
            if (isCancelled())
                return;
            const QByteArray bytes = textureManipulator::generateData(image, format.value());
            if (bytes.isEmpty())
                continue;
            for (int from = 0;;) {
                const int position = range.indexOf(bytes, from);
                if (position < 0 || isCancelled())
                    break;
                m_log->foundCopy(format.key(), position);
                auto *entry = new fileTreeFile;
                entry->name = QFileInfo(file).completeBaseName();
                entry->format = format.key();
                entry->width = image.width();
                entry->height = image.height();
                entry->address = position;
                entries->append(entry);
                if (m_options.firstOnly)
                    return;
                from = position + bytes.size();
            }
        }
    }

    void handle(fileTreeFile *entry)
    {
        const int equal = m_folder->containsFile(entry, true);
        if (m_options.duplicateMode == 2) {
            m_log->copyHandled(SearchObserver::Outcome::Ignored);
        } else if (m_options.duplicateMode == 0 && equal >= 0) {
            m_adder.replaceFiles({{entry, m_folder->files.at(equal)}});
            m_log->copyHandled(SearchObserver::Outcome::Overwrote);
        } else {
            m_log->copyHandled(SearchObserver::Outcome::Added);
            m_adder.addFile(entry);
        }
    }

    fileTreeDirectory *m_folder;
    BulkAdder m_adder {m_folder};
    TextureSearchOptions m_options;
    Recorder *m_log;
    bool m_cancelled = false;
};

QStringList tableOf(const fileTreeDirectory &folder)
{
    QStringList lines;
    for (const fileTreeFile *file : folder.files) {
        lines << QStringLiteral("%1 %2 %3 %4x%5 %6")
                     .arg(file->name, file->format)
                     .arg(file->address)
                     .arg(file->width)
                     .arg(file->height)
                     .arg(file->paletteAddress);
    }
    return lines;
}

fileTreeDirectory *addFolder(int address, int size, fileTreeDirectory *parent = currentROM.root)
{
    auto *folder = new fileTreeDirectory;
    folder->address = address;
    folder->size = size;
    return parent->addDirectory(folder);
}

fileTreeFile *addEntry(fileTreeDirectory *folder, const QString &name, const QString &format, int address, int width, int height)
{
    auto *entry = new fileTreeFile;
    entry->name = name;
    entry->format = format;
    entry->address = address;
    entry->width = width;
    entry->height = height;
    return folder->addFile(entry);
}

void place(QByteArray *image, int address, const QByteArray &bytes)
{
    image->replace(address, bytes.size(), bytes);
}
}

class SearchEngineTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void findsEachFormat_data();
    void findsEachFormat();
    void namesEntriesAfterTheFile();
    void rangeIsThatOfTheFolder_data();
    void rangeIsThatOfTheFolder();
    void firstOnlyEndsThePicture();
    void overwritesTheFirstEqualEntry();
    void namesDependOnTheOrderOfOverwriting();
    void overwritingForgetsTheSelection();
    void unknownModeCreatesEntries();
    void skipsWhatCannotBeRead();
    void skipsAHugePicture();
    void findsNothingWithoutFormats();
    void skipsFormatsThatEncodeNothing();
    void matchesThePlainSearch_data();
    void matchesThePlainSearch();
    void cancelledAtEveryQuestion();
    void interruptedAtEveryQuestion();
    void interruptedWhileLoading();
    void largePicturesGoOneFormatAtATime();
    void manyBatches();
    void readsNothingBehindTheImage();
    void manyCopiesAreLinear();

private:
    QString save(const QString &name, const QImage &picture);
    QImage randomPicture(int width, int height, int colours);

    std::unique_ptr<QTemporaryDir> m_folder;
    QRandomGenerator m_random {64};
};

void SearchEngineTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_random.seed(64);
    loadIntoCurrentROM(cartridgeImage(4096));
}

QString SearchEngineTest::save(const QString &name, const QImage &picture)
{
    const QString path = m_folder->filePath(name);
    if (!picture.save(path, "PNG"))
        qFatal("cannot save a picture");
    return path;
}

/// Grey, so that every format can hold it; with more than two colours some pixels are transparent.
QImage SearchEngineTest::randomPicture(int width, int height, int colours)
{
    QImage picture(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int value = m_random.bounded(colours);
            const int grey = value * 37 & 255;
            picture.setPixel(x, y, qRgba(grey, grey, grey, value % 5 == 4 ? 0 : 255));
        }
    }
    return picture;
}

void SearchEngineTest::findsEachFormat_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QByteArray>("bytes"); // of a picture of 8 x 1 pixels, counted out by hand
    QTest::newRow("i4") << "i4" << QByteArray::fromHex("F0807310");
    QTest::newRow("ia4") << "ia4" << QByteArray::fromHex("F1900331");
    QTest::newRow("i8") << "i8" << QByteArray::fromHex("FF00880077332005");
    QTest::newRow("ia8") << "ia8" << QByteArray::fromHex("FF0F8F00773F1F0F");
    QTest::newRow("ia16") << "ia16" << QByteArray::fromHex("FFFF00FF88FF0000777F33FF20FF05FF");
    QTest::newRow("rgb5a1") << "rgb5a1" << QByteArray::fromHex("FFFF00018C6300000000318D21090001");
    QTest::newRow("rgba32") << "rgba32"
                            << QByteArray::fromHex("FFFFFFFF000000FF888888FF000000007777777F333333FF202020FF050505FF");
}

void SearchEngineTest::findsEachFormat()
{
    QFETCH(QString, format);
    QFETCH(QByteArray, bytes);
    QImage picture(8, 1, QImage::Format_ARGB32);
    const QRgb pixels[] = {
        qRgba(255, 255, 255, 255),    qRgba(0, 0, 0, 255),          qRgba(0x88, 0x88, 0x88, 255), qRgba(0, 0, 0, 0),
        qRgba(0x77, 0x77, 0x77, 127), qRgba(0x33, 0x33, 0x33, 255), qRgba(0x20, 0x20, 0x20, 255), qRgba(5, 5, 5, 255)};
    for (int x = 0; x < 8; ++x)
        picture.setPixel(x, 0, pixels[x]);
    place(&currentROM.data, 1001, bytes);
    Recorder log;
    TextureSearch search(currentROM.root, Options(false, CreateNewEntry, {format}), &log);
    QVERIFY(search.run({save("p.png", picture)}));
    QVERIFY2(log.found.contains(QStringLiteral("found %1 1001").arg(format)),
             textureManipulator::generateData(picture, textureFormats::getAsMap().value(format)).toHex());
}

void SearchEngineTest::namesEntriesAfterTheFile()
{
    const QImage picture = randomPicture(6, 5, 200);
    const QByteArray bytes = textureManipulator::generateData(picture, textureFormats::rgba32);
    place(&currentROM.data, 100, bytes);
    place(&currentROM.data, 777, bytes);
    Recorder log;
    TextureSearch search(currentROM.root, Options(false, CreateNewEntry, {"rgba32"}), &log);
    QVERIFY(search.runOne(save("a.b.png", picture)));
    QCOMPARE(tableOf(*currentROM.root), (QStringList {"a.b rgba32 100 6x5 0", "a.b (2) rgba32 777 6x5 0"}));
    QCOMPARE(log.events, (QStringList {"found rgba32 100", "found rgba32 777", "added", "added"}));
    QCOMPARE(log.added.size(), 2);
    QCOMPARE(log.added.at(0), currentROM.root->files.at(0));
}

void SearchEngineTest::rangeIsThatOfTheFolder_data()
{
    QTest::addColumn<int>("outerAddress");
    QTest::addColumn<int>("address");
    QTest::addColumn<int>("size");
    QTest::addColumn<QVector<int>>("positions"); // of copies at 200, 1000 and, to the last byte, 4032
    QTest::newRow("all") << 0 << 0 << 4096 << QVector<int> {200, 1000, 4032};
    QTest::newRow("relative to both folders") << 100 << 50 << 2000 << QVector<int> {50, 850};
    QTest::newRow("begins on a copy") << 0 << 200 << 864 << QVector<int> {0, 800};
    QTest::newRow("a byte too short") << 0 << 200 << 863 << QVector<int> {0};
    QTest::newRow("begins behind a copy") << 0 << 201 << 800 << QVector<int> {};
    QTest::newRow("past the end") << 0 << 1000 << 100000 << QVector<int> {0, 3032};
    QTest::newRow("past the end, overflowing") << 0 << 1000 << INT_MAX << QVector<int> {0, 3032};
    QTest::newRow("outside") << 0 << 5000 << 100 << QVector<int> {};
    QTest::newRow("at the end") << 0 << 4096 << 100 << QVector<int> {};
    QTest::newRow("before the start") << -300 << 0 << 600 << QVector<int> {500};
    QTest::newRow("all before the start") << -300 << 0 << 300 << QVector<int> {};
    QTest::newRow("no size") << 0 << 0 << 0 << QVector<int> {};
    QTest::newRow("negative size") << 0 << 0 << -5 << QVector<int> {};
    QTest::newRow("lowest address") << INT_MIN << 0 << INT_MAX << QVector<int> {};
}

void SearchEngineTest::rangeIsThatOfTheFolder()
{
    QFETCH(int, outerAddress);
    QFETCH(int, address);
    QFETCH(int, size);
    QFETCH(QVector<int>, positions);
    const QImage picture = randomPicture(4, 4, 200);
    const QByteArray bytes = textureManipulator::generateData(picture, textureFormats::rgba32);
    for (int copy : {200, 1000, 4032})
        place(&currentROM.data, copy, bytes);
    fileTreeDirectory *folder = addFolder(address, size, addFolder(outerAddress, 10));
    Recorder log;
    TextureSearch search(folder, Options(false, CreateNewEntry, {"rgba32"}), &log);
    QCOMPARE(search.runOne(save("p.png", picture)), !positions.isEmpty());
    QVector<int> found;
    for (const fileTreeFile *file : qAsConst(folder->files)) {
        found << file->address;
        QCOMPARE(file->data(), bytes);
    }
    QCOMPARE(found, positions);
}

void SearchEngineTest::firstOnlyEndsThePicture()
{
    const QImage picture = randomPicture(8, 8, 200);
    for (const textureFormat &format : {textureFormats::i8, textureFormats::ia16, textureFormats::rgba32})
        place(&currentROM.data, format.name == "i8" ? 3000 : 500, textureManipulator::generateData(picture, format));
    const QString first = save("first.png", picture);
    const QString second = save("second.png", picture.mirrored());
    place(&currentROM.data, 2000, textureManipulator::generateData(picture.mirrored(), textureFormats::rgb5a1));
    Recorder log;
    TextureSearch search(currentROM.root, Options(true, CreateNewEntry), &log);
    QVERIFY(search.run({first, second}));
    QCOMPARE(log.found, (QStringList {"found i8 3000", "found rgb5a1 2000"}));
}

void SearchEngineTest::overwritesTheFirstEqualEntry()
{
    const QImage picture = randomPicture(8, 4, 200);
    place(&currentROM.data, 500, textureManipulator::generateData(picture, textureFormats::i8));
    addEntry(currentROM.root, "other address", "i8", 501, 8, 4);
    addEntry(currentROM.root, "other format", "ia8", 500, 8, 4);
    addEntry(currentROM.root, "other width", "i8", 500, 9, 4);
    addEntry(currentROM.root, "other height", "i8", 500, 8, 5);
    fileTreeFile *equal = addEntry(currentROM.root, "equal", "i8", 500, 8, 4);
    fileTreeFile *alsoEqual = addEntry(currentROM.root, "also equal", "i8", 500, 8, 4);
    equal->paletteAddress = 5;
    const QString file = save("p.png", picture);
    Recorder log;
    TextureSearch search(currentROM.root, Options(false, OverwriteEntry, {"i8"}), &log);
    QVERIFY(search.run({file, file, file}));
    QCOMPARE(tableOf(*currentROM.root),
             (QStringList {"other address i8 501 8x4 0", "other format ia8 500 8x4 0", "other width i8 500 9x4 0",
                           "other height i8 500 8x5 0", "p (2) i8 500 8x4 0", "p i8 500 8x4 0"}));
    QCOMPARE(log.events.count("overwrote"), 3);
    QCOMPARE(equal->index(), -1);
    QCOMPARE(alsoEqual->index(), -1);
}

/// Each new entry takes a name that is free at its turn, when entries yet to be overwritten still have theirs.
void SearchEngineTest::namesDependOnTheOrderOfOverwriting()
{
    const QImage picture = randomPicture(8, 4, 200);
    const QByteArray bytes = textureManipulator::generateData(picture, textureFormats::i8);
    place(&currentROM.data, 500, bytes);
    place(&currentROM.data, 900, bytes);
    addEntry(currentROM.root, "p (2)", "i8", 500, 8, 4);
    addEntry(currentROM.root, "p", "i8", 900, 8, 4);
    Recorder log;
    TextureSearch search(currentROM.root, Options(false, OverwriteEntry, {"i8"}), &log);
    QVERIFY(search.runOne(save("p.png", picture)));
    QCOMPARE(tableOf(*currentROM.root), (QStringList {"p (2) i8 500 8x4 0", "p i8 900 8x4 0"}));
    addEntry(currentROM.root, "p", "i4", 0, 1, 1);
    QCOMPARE(currentROM.root->files.last()->name, QString("p (3)"));
}

void SearchEngineTest::overwritingForgetsTheSelection()
{
    const QImage picture = randomPicture(8, 4, 200);
    place(&currentROM.data, 500, textureManipulator::generateData(picture, textureFormats::i8));
    currentROM.lastSelectedTexture = addEntry(currentROM.root, "p", "i8", 500, 8, 4);
    Recorder log;
    TextureSearch search(currentROM.root, Options(true, OverwriteEntry), &log);
    QVERIFY(search.runOne(save("p.png", picture)));
    QVERIFY(!currentROM.lastSelectedTexture);
}

void SearchEngineTest::unknownModeCreatesEntries()
{
    const QImage picture = randomPicture(8, 4, 200);
    place(&currentROM.data, 500, textureManipulator::generateData(picture, textureFormats::i8));
    addEntry(currentROM.root, "p", "i8", 500, 8, 4);
    for (const int mode : {-1, 3, 77}) {
        Recorder log;
        TextureSearch search(currentROM.root, Options(true, mode), &log);
        QVERIFY(search.runOne(save("p.png", picture)));
        QVERIFY(log.events.contains("added"));
    }
    QCOMPARE(currentROM.root->files.size(), 4);
}

void SearchEngineTest::skipsWhatCannotBeRead()
{
    const QImage picture = randomPicture(8, 4, 200);
    place(&currentROM.data, 500, textureManipulator::generateData(picture, textureFormats::i8));
    const QString good = save("good.png", picture);
    const QString text = m_folder->filePath("text.png");
    QVERIFY(writeBytes(text, "no picture"));
    const QString truncated = m_folder->filePath("truncated.png");
    QVERIFY(writeBytes(truncated, bytesOfFile(good).left(40)));
    Recorder log;
    TextureSearch search(currentROM.root, Options(true, DoNotCreateEntry), &log);
    QVERIFY(search.run({text, good, m_folder->filePath("absent.png"), truncated, good}));
    QCOMPARE(
        log.events,
        (QStringList {"begin text.png 1/5", "unreadable text.png", "value 1", "begin good.png 2/5", "found i8 500", "ignored",
                      "value 2", "begin absent.png 3/5", "unreadable absent.png", "value 3", "begin truncated.png 4/5",
                      "unreadable truncated.png", "value 4", "begin good.png 5/5", "found i8 500", "ignored", "value 5"}));
    QVERIFY(currentROM.root->files.isEmpty());
}

void SearchEngineTest::skipsAHugePicture()
{
    const QString huge = m_folder->filePath("huge.png");
    QVERIFY(writeBytes(huge, pngHeader(60000, 60000)));
    Recorder log;
    TextureSearch search(currentROM.root, Options(true, CreateNewEntry), &log);
    QVERIFY(!search.run({huge}));
    QCOMPARE(log.events, (QStringList {"begin huge.png 1/1", "unreadable huge.png", "value 1"}));
}

void SearchEngineTest::findsNothingWithoutFormats()
{
    Options options(false, CreateNewEntry);
    options.formats.clear();
    Recorder log;
    TextureSearch search(currentROM.root, options, &log);
    QVERIFY(!search.run({save("a.png", randomPicture(2, 2, 2)), save("b.png", randomPicture(2, 2, 2))}));
    QCOMPARE(log.events, (QStringList {"begin a.png 1/2", "value 1", "begin b.png 2/2", "value 2"}));
}

void SearchEngineTest::skipsFormatsThatEncodeNothing()
{
    const QImage picture = randomPicture(8, 4, 200);
    place(&currentROM.data, 500, textureManipulator::generateData(picture, textureFormats::rgba32));
    Recorder log;
    TextureSearch search(currentROM.root, Options(false, CreateNewEntry, {"jpeg", "rgba32"}), &log);
    QVERIFY(search.runOne(save("a.png", picture)));
    QCOMPARE(log.found, QStringList {"found rgba32 500"});
}

void SearchEngineTest::matchesThePlainSearch_data()
{
    QTest::addColumn<bool>("firstOnly");
    QTest::addColumn<int>("mode");
    for (const bool firstOnly : {false, true}) {
        for (const int mode : {OverwriteEntry, CreateNewEntry, DoNotCreateEntry})
            QTest::addRow("%s, mode %d", firstOnly ? "first only" : "all", mode) << firstOnly << mode;
    }
}

/// Random pictures of few colours in an image that holds them many times, searched for by both on equal tables.
void SearchEngineTest::matchesThePlainSearch()
{
    QFETCH(bool, firstOnly);
    QFETCH(int, mode);
    for (int round = 0; round < 12; ++round) {
        QStringList files;
        QByteArray image(3000 + m_random.bounded(20000), '\0');
        for (int i = 0; i < 8; ++i) {
            const QImage picture =
                randomPicture(1 + m_random.bounded(12), 1 + m_random.bounded(12), 1 + m_random.bounded(i < 4 ? 3 : 200));
            files << save(QStringLiteral("p%1.png").arg(m_random.bounded(5)), picture);
            const QMap<QString, textureFormat> formats = Options(false, 0).formats;
            for (const textureFormat &format : formats) {
                const QByteArray bytes = textureManipulator::generateData(picture, format);
                for (int copy = m_random.bounded(4); copy > 0; --copy)
                    place(&image, m_random.bounded(image.size() - bytes.size()), bytes);
            }
        }
        QStringList tables[2];
        QStringList events[2];
        for (const bool plain : {false, true}) {
            loadIntoCurrentROM(image);
            fileTreeDirectory *folder = addFolder(m_random.bounded(1), image.size() - round);
            QRandomGenerator choices(quint32(round) + 1);
            const QMap<QString, textureFormat> formats = Options(false, 0).formats;
            for (int i = 0; i < 200; ++i) {
                addEntry(folder, QStringLiteral("p%1").arg(choices.bounded(5)),
                         formats.keys().at(choices.bounded(formats.size())), choices.bounded(40), 1 + choices.bounded(2),
                         1 + choices.bounded(2));
            }
            Recorder log;
            if (plain)
                PlainSearch(folder, Options(firstOnly, mode), &log).run(files);
            else
                TextureSearch(folder, Options(firstOnly, mode), &log).run(files);
            tables[plain] = tableOf(*folder);
            events[plain] = log.events;
        }
        QCOMPARE(events[0], events[1]);
        QCOMPARE(tables[0], tables[1]);
        QVERIFY(!events[0].isEmpty());
    }
}

void SearchEngineTest::cancelledAtEveryQuestion()
{
    const QImage picture = randomPicture(8, 8, 200);
    const QImage other = randomPicture(3, 3, 1);
    QByteArray image = cartridgeImage(8000);
    for (int i = 0; i < 3; ++i) {
        place(&image, 200 + i * 700, textureManipulator::generateData(picture, textureFormats::rgba32));
        place(&image, 5000 + i * 700, textureManipulator::generateData(picture, textureFormats::i8));
    }
    const QStringList files {save("a.png", picture), m_folder->filePath("absent.png"), save("b.png", other),
                             save("c.png", picture)};
    for (int limit = 0;; ++limit) {
        QStringList tables[2];
        Recorder logs[2];
        for (const bool plain : {false, true}) {
            loadIntoCurrentROM(image);
            logs[plain].cancelAt = limit;
            if (plain)
                PlainSearch(currentROM.root, Options(false, OverwriteEntry), &logs[plain]).run(files);
            else
                TextureSearch(currentROM.root, Options(false, OverwriteEntry), &logs[plain]).run(files);
            tables[plain] = tableOf(*currentROM.root);
        }
        QCOMPARE(logs[0].events, logs[1].events);
        QCOMPARE(tables[0], tables[1]);
        QCOMPARE(tables[0].size(), currentROM.root->files.size());
        if (logs[0].questions <= limit) {
            QCOMPARE(logs[0].events.last(), QString("value 4"));
            QVERIFY(limit > 30);
            break;
        }
        QVERIFY(logs[0].events.last() != QString("value 4"));
    }
}

/// Wherever the work is interrupted, what was found till then is a beginning of what would have been, and has its entries.
void SearchEngineTest::interruptedAtEveryQuestion()
{
    QByteArray image = cartridgeImage(3000000);
    image.replace(1000000, 500000, QByteArray(500000, '\0'));
    const QImage picture = randomPicture(16, 16, 200);
    const QImage tiny = randomPicture(2, 1, 200);
    for (const int copy : {100000, 700000, 2900000}) {
        place(&image, copy, textureManipulator::generateData(picture, textureFormats::ia16));
        place(&image, copy + 2000, textureManipulator::generateData(tiny, textureFormats::rgba32));
    }
    const QStringList files {save("a.png", picture), save("flat.png", plainPicture(64, 64, qRgba(0, 0, 0, 0))),
                             save("tiny.png", tiny)};
    QStringList all;
    for (int limit = -1;; ++limit) {
        loadIntoCurrentROM(image);
        Recorder log;
        log.interruptAt = limit;
        TextureSearch(currentROM.root, Options(false, CreateNewEntry), &log).run(files);
        if (limit < 0) {
            all = log.found;
            QVERIFY(log.interruptions > 5);
            QVERIFY(all.size() > 100);
            continue;
        }
        QCOMPARE(log.found, all.mid(0, log.found.size()));
        QCOMPARE(currentROM.root->files.size(), log.found.size());
        if (log.interruptions <= limit)
            break;
        QCOMPARE(log.interruptions, limit + 1); // Told once, it asks no more.
        QVERIFY(!log.events.contains("value 3"));
        limit += limit / 20;
    }
}

void SearchEngineTest::interruptedWhileLoading()
{
    QStringList files;
    for (int i = 0; i < 20; ++i)
        files << save(QStringLiteral("%1.png").arg(i), randomPicture(4, 4, 200));
    Recorder log;
    log.interruptAt = 12;
    TextureSearch search(currentROM.root, Options(false, CreateNewEntry), &log);
    QVERIFY(!search.run(files));
    QCOMPARE(log.events, QStringList {"begin 0.png 1/20"}); // No word that a picture could not be read.
}

/// A picture whose patterns are more than a batch may hold, among small ones.
void SearchEngineTest::largePicturesGoOneFormatAtATime()
{
    const QImage large = randomPicture(400, 300, 200);
    const QImage small = randomPicture(16, 16, 200);
    QByteArray image = cartridgeImage(1500000);
    place(&image, 300001, textureManipulator::generateData(large, textureFormats::ia8));
    place(&image, 500000, textureManipulator::generateData(large, textureFormats::rgba32));
    place(&image, 1400000, textureManipulator::generateData(small, textureFormats::ia8));
    const QStringList files {save("s1.png", small), save("large.png", large), save("s2.png", small), save("large2.png", large)};
    for (const bool firstOnly : {false, true}) {
        loadIntoCurrentROM(image);
        Recorder log;
        TextureSearch(currentROM.root, Options(firstOnly, CreateNewEntry), &log).run(files);
        loadIntoCurrentROM(image);
        Recorder reference;
        PlainSearch(currentROM.root, Options(firstOnly, CreateNewEntry), &reference).run(files);
        QCOMPARE(log.events, reference.events);
        QCOMPARE(log.found.count("found ia8 300001"), 2);
    }
}

void SearchEngineTest::manyBatches()
{
    QByteArray image = cartridgeImage(40000);
    QStringList files;
    QStringList expected;
    for (int i = 0; i < 1500; ++i) {
        const QImage picture = randomPicture(8, 8, 256);
        files << save(QStringLiteral("%1.png").arg(i), picture);
        if (i % 100)
            continue;
        place(&image, 100 + i * 20, textureManipulator::generateData(picture, textureFormats::i8));
        expected << QStringLiteral("found i8 %1").arg(100 + i * 20);
    }
    loadIntoCurrentROM(image);
    Recorder log;
    TextureSearch search(currentROM.root, Options(true, CreateNewEntry), &log);
    QVERIFY(search.run(files));
    QCOMPARE(log.found, expected);
    QCOMPARE(log.events.last(), QString("value 1500"));
}

void SearchEngineTest::readsNothingBehindTheImage()
{
    const QImage picture = randomPicture(4, 4, 200);
    const QByteArray bytes = textureManipulator::generateData(picture, textureFormats::ia16);
    const QByteArray image = cartridgeImage(4096) + bytes;
    const QByteArray exact(image.constData(), image.size() - 1); // The copy lacks its last byte.
    loadIntoCurrentROM(exact);
    currentROM.root->size = image.size() + 100;
    Recorder log;
    TextureSearch search(currentROM.root, Options(false, CreateNewEntry, {"ia16"}), &log);
    QVERIFY(!search.runOne(save("a.png", picture)));
}

/// One picture, a copy every 8 bytes: 50,000 entries of one name, then each overwritten. Quadratic work would take minutes.
void SearchEngineTest::manyCopiesAreLinear()
{
    const QImage picture = plainPicture(4, 2, qRgba(255, 255, 255, 255));
    loadIntoCurrentROM(QByteArray(400000, '\xFF'));
    const QString file = save("white.png", picture);
    for (const int mode : {CreateNewEntry, OverwriteEntry}) {
        Recorder log;
        TextureSearch search(currentROM.root, Options(false, mode, {"i8"}), &log);
        QVERIFY(search.run({file}));
        QCOMPARE(currentROM.root->files.size(), 50000);
        QCOMPARE(currentROM.root->files.first()->name, QString("white"));
        QCOMPARE(currentROM.root->files.last()->name, QString("white (50000)"));
    }
}

QTEST_GUILESS_MAIN(SearchEngineTest)
#include "tst_searchengine.moc"
