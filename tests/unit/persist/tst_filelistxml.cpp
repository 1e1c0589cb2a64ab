// SPDX-License-Identifier: MIT
#include "persist/filelist.h"

#include "model/rom.h"
#include "support/images.h"

#include <QBuffer>
#include <QTest>
#include <QTextCodec>
#include <QXmlStreamWriter>

namespace
{
constexpr int imageSize = 0x1000;

/// What an observer was told, in order.
class Recorder : public FileListObserver
{
public:
    void directoryStarted(fileTreeDirectory *directory) override { events << QStringLiteral("+") + directory->name; }
    void directoryEnded(fileTreeDirectory *directory) override { events << QStringLiteral("-") + directory->name; }
    void fileAdded(fileTreeFile *file) override { events << QStringLiteral("*") + file->name; }

    QStringList events;
};

/// A device that takes a number of bytes and then no more, as a full disk does.
class FullDevice : public QIODevice
{
public:
    explicit FullDevice(qint64 room) : m_room(room) { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 length) override
    {
        if (length > m_room) {
            setErrorString(QStringLiteral("full"));
            return -1;
        }
        m_room -= length;
        return length;
    }

private:
    qint64 m_room;
};

QByteArray written(fileTreeDirectory *root)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QString error;
    return writeFileList(root, &buffer, &error) ? buffer.data() : "error: " + error.toUtf8();
}

bool parse(const QByteArray &document, fileTreeDirectory *root, FileListObserver *observer = nullptr, QString *error = nullptr)
{
    QString reason;
    const bool read = readFileList(document, imageSize, root, observer, error ? error : &reason);
    if (!read && !error)
        qWarning("%s", qPrintable(reason));
    return read;
}

fileTreeDirectory *newRoot()
{
    auto *root = new fileTreeDirectory;
    root->name = QStringLiteral("Root");
    root->isRoot = true;
    return root;
}

fileTreeFile *addTexture(fileTreeDirectory *folder, const QString &name, int address, const QString &format)
{
    auto *file = new fileTreeFile;
    file->name = name;
    file->address = address;
    file->format = format;
    return folder->addFile(file);
}

fileTreeDirectory *addFolder(fileTreeDirectory *folder, const QString &name, int address, int size)
{
    auto *directory = new fileTreeDirectory;
    directory->name = name;
    directory->address = address;
    directory->size = size;
    return folder->addDirectory(directory);
}

template<typename Node> QStringList namesOf(const QList<Node *> &nodes)
{
    QStringList names;
    for (const Node *node : nodes)
        names << node->name;
    return names;
}

QByteArray rooted(const QByteArray &content)
{
    return "<root version=\"2\">" + content + "</root>";
}

QByteArray head()
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!--This list was created using Brimholt's Quillary.-->\n"
           "<!--The root version attribute is used by the parser to determine how it should read the data. Do not change it "
           "unless "
           "you know what you're doing.-->\n";
}
}

class FileListXmlTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { resetCurrentROM(); }

    void writesTheDocument();
    void writesAnEmptyTable();
    void writesAttributesByFormat_data();
    void writesAttributesByFormat();
    void sortsTheTable();
    void writesTwosComplement();
    void writesOneFolderIntoTheOpenElement();
    void leavesOutWhatXmlCannotHold_data();
    void leavesOutWhatXmlCannotHold();
    void namesSurviveARoundTrip_data();
    void namesSurviveARoundTrip();
    void tableSurvivesARoundTrip();
    void reportsAFullDevice();

    void readsVersions_data();
    void readsVersions();
    void keepsDefaultsOfAbsentAttributes();
    void takesNumbers_data();
    void takesNumbers();
    void fitsFoldersIntoTheImage_data();
    void fitsFoldersIntoTheImage();
    void makesNamesUnique();
    void passesOverWhatItDoesNotKnow();
    void ignoresElementsWithoutAFolder_data();
    void ignoresElementsWithoutAFolder();
    void addsToWhatIsThere();
    void tellsTheObserver();
    void keepsWhatCameBeforeAnError_data();
    void keepsWhatCameBeforeAnError();
    void refusesExpandingEntities();
    void refusesAnElementOfTooManyAttributes_data();
    void refusesAnElementOfTooManyAttributes();
    void readsExternalEntitiesFromNowhere();
    void refusesDocuments_data();
    void refusesDocuments();
    void declaredEncodingsAreRead_data();
    void declaredEncodingsAreRead();
    void prefixesCount();
    void keepsNegativeFolderAddresses_data();
    void keepsNegativeFolderAddresses();

    void depthCostsNoStack_data();
    void depthCostsNoStack();
    void hugeDepthIsWrittenInModeration();
    void readsManyEntries();
};

void FileListXmlTest::writesTheDocument()
{
    fileTreeDirectory *root = newRoot();
    fileTreeDirectory *outer = addFolder(root, QStringLiteral("Outer"), 0x100, 0xABC);
    fileTreeDirectory *inner = addFolder(outer, QStringLiteral("In & out"), 0x20, 0x40);
    addTexture(inner, QStringLiteral("Leaf"), 0x1A2B, QStringLiteral("rgba32"));
    fileTreeFile *indexed = addTexture(outer, QStringLiteral("Indexed"), 0, QStringLiteral("ci8"));
    indexed->width = 16;
    indexed->height = 8;
    indexed->paletteAddress = 0xFACE;
    addTexture(root, QStringLiteral("Photo"), 0x10, QStringLiteral("jpeg"));

    QCOMPARE(written(root),
             head()
                 + "<root version=\"2\">\n"
                   "\t<directory name=\"Outer\" address=\"0x00000100\" size=\"0x00000ABC\">\n"
                   "\t\t<directory name=\"In &amp; out\" address=\"0x00000020\" size=\"0x00000040\">\n"
                   "\t\t\t<texture name=\"Leaf\" address=\"0x00001A2B\" format=\"rgba32\" width=\"32\" height=\"32\"/>\n"
                   "\t\t</directory>\n"
                   "\t\t<texture name=\"Indexed\" address=\"0x00000000\" format=\"ci8\" width=\"16\" height=\"8\" "
                   "palette=\"0x0000FACE\"/>\n"
                   "\t</directory>\n"
                   "\t<texture name=\"Photo\" address=\"0x00000010\" format=\"jpeg\"/>\n"
                   "</root>\n");
}

void FileListXmlTest::writesAnEmptyTable()
{
    QCOMPARE(written(newRoot()), head() + "<root version=\"2\"/>\n");
}

void FileListXmlTest::writesAttributesByFormat_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QByteArray>("attributes");
    const QByteArray size = " width=\"32\" height=\"32\"";
    const QByteArray palette = " palette=\"0x00000000\"";
    for (const char *plain : {"i4", "ia4", "i8", "ia8", "ia16", "rgb5a1", "rgba32", "unknown", "CI4", "Ci8", ""})
        QTest::newRow(plain) << QString::fromLatin1(plain) << size;
    QTest::newRow("ci4") << QStringLiteral("ci4") << size + palette;
    QTest::newRow("ci8") << QStringLiteral("ci8") << size + palette;
    QTest::newRow("jpeg") << QStringLiteral("jpeg") << QByteArray();
    QTest::newRow("JPEG") << QStringLiteral("JPEG") << QByteArray();
    QTest::newRow("jPeG") << QStringLiteral("jPeG") << QByteArray();
}

void FileListXmlTest::writesAttributesByFormat()
{
    QFETCH(QString, format);
    QFETCH(QByteArray, attributes);
    fileTreeDirectory *root = newRoot();
    addTexture(root, QStringLiteral("T"), 0, format);
    QCOMPARE(written(root),
             head() + "<root version=\"2\">\n\t<texture name=\"T\" address=\"0x00000000\" format=\"" + format.toLatin1() + "\""
                 + attributes + "/>\n</root>\n");
}

void FileListXmlTest::sortsTheTable()
{
    fileTreeDirectory *root = newRoot();
    addFolder(root, QStringLiteral("Late"), 0x200, 1);
    fileTreeDirectory *early = addFolder(root, QStringLiteral("Early"), 0x100, 1);
    addFolder(early, QStringLiteral("Second"), 2, 1);
    addFolder(early, QStringLiteral("First"), 1, 1);
    for (fileTreeDirectory *folder : {root, early}) {
        addTexture(folder, QStringLiteral("c"), 3, QStringLiteral("i8"));
        addTexture(folder, QStringLiteral("a"), -1, QStringLiteral("i8"));
        addTexture(folder, QStringLiteral("b"), 0, QStringLiteral("i8"));
    }
    const QByteArray document = written(root);

    const QStringList textures {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")};
    QCOMPARE(namesOf(root->directories), (QStringList {QStringLiteral("Early"), QStringLiteral("Late")}));
    QCOMPARE(namesOf(early->directories), (QStringList {QStringLiteral("First"), QStringLiteral("Second")}));
    QCOMPARE(namesOf(root->files), textures);
    QCOMPARE(namesOf(early->files), textures);
    QVERIFY(document.indexOf("First") < document.indexOf("Second"));
    QVERIFY(document.indexOf("Second") < document.indexOf("Late"));
}

void FileListXmlTest::writesTwosComplement()
{
    fileTreeDirectory *root = newRoot();
    addTexture(root, QStringLiteral("Before its folder"), -16, QStringLiteral("ci4"))->paletteAddress = INT_MIN;
    const QByteArray document = written(root);
    QVERIFY(document.contains("address=\"0xFFFFFFF0\""));
    QVERIFY(document.contains("palette=\"0x80000000\""));

    fileTreeDirectory *read = newRoot();
    QVERIFY(parse(document, read));
    QCOMPARE(read->files.first()->address, -16);
    QCOMPARE(read->files.first()->paletteAddress, INT_MIN);
}

void FileListXmlTest::writesOneFolderIntoTheOpenElement()
{
    fileTreeDirectory *root = newRoot();
    fileTreeDirectory *folder = addFolder(root, QStringLiteral("A"), 1, 2);
    addTexture(folder, QStringLiteral("T"), 3, QStringLiteral("jpeg"));
    QByteArray document;
    QXmlStreamWriter writer(&document);
    writer.writeStartElement(QStringLiteral("directory"));
    writeFolder(&writer, folder);
    writer.writeEmptyElement(QStringLiteral("after"));
    writer.writeEndElement();
    QCOMPARE(document,
             QByteArray("<directory name=\"A\" address=\"0x00000001\" size=\"0x00000002\">"
                        "<texture name=\"T\" address=\"0x00000003\" format=\"jpeg\"/><after/></directory>"));
}

void FileListXmlTest::leavesOutWhatXmlCannotHold_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("kept");
    QTest::newRow("control") << QStringLiteral("S\u0001k\u001Fy\v\f") << QStringLiteral("Sky");
    QTest::newRow("zero") << QString(QChar(QChar::Null)) + QLatin1String("Sky") << QStringLiteral("Sky");
    QTest::newRow("high surrogate alone") << QStringLiteral("Sky") + QChar(0xD83D) << QStringLiteral("Sky");
    QTest::newRow("high surrogate before a letter") << QString(QChar(0xD83D)) + QLatin1String("Sky") << QStringLiteral("Sky");
    QTest::newRow("low surrogate alone") << QStringLiteral("S") + QChar(0xDE00) + QLatin1String("ky") << QStringLiteral("Sky");
    QTest::newRow("wrong order") << QString(QChar(0xDE00)) + QChar(0xD83D) + QLatin1String("Sky") << QStringLiteral("Sky");
    QTest::newRow("non-characters") << QStringLiteral("Sky") + QChar(0xFFFE) + QChar(0xFFFF) << QStringLiteral("Sky");
}

void FileListXmlTest::leavesOutWhatXmlCannotHold()
{
    QFETCH(QString, text);
    QFETCH(QString, kept);
    fileTreeDirectory *root = newRoot();
    addTexture(addFolder(root, text, 0, 1), text, 0, text);
    const QByteArray document = written(root);

    fileTreeDirectory *read = newRoot();
    QVERIFY2(parse(document, read), document.constData());
    QCOMPARE(QString(read->directories.first()->name), kept);
    QCOMPARE(QString(read->directories.first()->files.first()->name), kept);
    QCOMPARE(read->directories.first()->files.first()->format, kept);
}

void FileListXmlTest::namesSurviveARoundTrip_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("markup") << QStringLiteral("<a href=\"x\">&amp;'--></a>]]>");
    QTest::newRow("white space") << QStringLiteral(" \ttab\nline\rreturn\r\n ");
    QTest::newRow("other scripts") << QStringLiteral("空 небо \u00E9\u0301 \u202E");
    QTest::newRow("outside the basic plane") << QString::fromUtf8("\xF0\x9F\x98\x80");
    QTest::newRow("path") << QStringLiteral("../../etc/passwd");
    QTest::newRow("delete") << QString(QChar(0x7F)) + QChar(0x85) + QChar(0xFFFD);
    QTest::newRow("long") << QString(100000, QLatin1Char('n'));
}

void FileListXmlTest::namesSurviveARoundTrip()
{
    QFETCH(QString, name);
    fileTreeDirectory *root = newRoot();
    addTexture(addFolder(root, name, 0, 1), name, 0, name);
    fileTreeDirectory *read = newRoot();
    QVERIFY(parse(written(root), read));
    QCOMPARE(QString(read->directories.first()->name), name);
    QCOMPARE(QString(read->directories.first()->files.first()->name), name);
    QCOMPARE(read->directories.first()->files.first()->format, name);
}

void FileListXmlTest::tableSurvivesARoundTrip()
{
    fileTreeDirectory *root = newRoot();
    for (int i = 9; i >= 0; --i) {
        fileTreeDirectory *folder = addFolder(root, QStringLiteral("Folder %1").arg(i), i * 0x100, 0x100 + i);
        fileTreeFile *file = addTexture(folder, QStringLiteral("Texture"), i, QStringLiteral("ci4"));
        file->paletteAddress = 7 * i;
        file->width = i;
        file->height = -i;
        addTexture(folder, QStringLiteral("Photo"), 2 * i, QStringLiteral("jpeg"))->width = 5;
    }
    const QByteArray document = written(root);
    fileTreeDirectory *read = newRoot();
    QVERIFY(parse(document, read));
    QCOMPARE(read->directories.size(), 10);
    for (int i = 0; i < 10; ++i) {
        const fileTreeDirectory *folder = read->directories.at(i);
        QCOMPARE(QString(folder->name), QStringLiteral("Folder %1").arg(i));
        QCOMPARE(folder->address, i * 0x100);
        QCOMPARE(folder->size, 0x100 + i);
        QCOMPARE(folder->parent, read);
        QCOMPARE(folder->files.size(), 2);
        const fileTreeFile *file = folder->getFileByName(QStringLiteral("Texture"));
        QCOMPARE(file->address, i);
        QCOMPARE(file->paletteAddress, 7 * i);
        QCOMPARE(file->width, i);
        QCOMPARE(file->height, -i);
        QCOMPARE(file->parent, folder);
        QCOMPARE(folder->getFileByName(QStringLiteral("Photo"))->width, 32);
    }
    QCOMPARE(written(read), document);
}

void FileListXmlTest::reportsAFullDevice()
{
    fileTreeDirectory *root = newRoot();
    addTexture(root, QStringLiteral("T"), 0, QStringLiteral("i8"));
    const int whole = written(root).size();
    for (int room : {0, 10, 200, whole - 1}) {
        FullDevice device(room);
        QString error;
        QVERIFY(!writeFileList(root, &device, &error));
        QCOMPARE(error, QStringLiteral("full"));
    }
    FullDevice device(whole);
    QString error;
    QVERIFY(writeFileList(root, &device, &error));
}

void FileListXmlTest::readsVersions_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QString>("found");
    const QString file = QStringLiteral("f");
    const QString texture = QStringLiteral("t");
    QTest::newRow("fileTable, version 1") << QByteArray("fileTable version=\"1\"") << file;
    QTest::newRow("root, version 1") << QByteArray("root version=\"1\"") << file;
    QTest::newRow("fileTable, version 2") << QByteArray("fileTable version=\"2\"") << texture;
    QTest::newRow("root, version 2") << QByteArray("root version=\"2\"") << texture;
    QTest::newRow("no version") << QByteArray("root") << texture;
    QTest::newRow("no number") << QByteArray("root version=\"one\"") << texture;
    QTest::newRow("hexadecimal") << QByteArray("root version=\"0x1\"") << texture;
    QTest::newRow("later version") << QByteArray("root version=\"3\"") << texture;
    QTest::newRow("zero in front") << QByteArray("root version=\"01\"") << file;
}

void FileListXmlTest::readsVersions()
{
    QFETCH(QByteArray, start);
    QFETCH(QString, found);
    const QByteArray element = start.split(' ').first();
    fileTreeDirectory *root = newRoot();
    QVERIFY(parse("<" + start + "><directory name=\"d\"><file name=\"f\"/><texture name=\"t\"/></directory></" + element + ">",
                  root));
    QCOMPARE(namesOf(root->directories.first()->files), QStringList {found});
}

void FileListXmlTest::keepsDefaultsOfAbsentAttributes()
{
    fileTreeDirectory *root = newRoot();
    QVERIFY(parse(rooted("<directory/><texture/>"), root));
    const fileTreeDirectory *folder = root->directories.first();
    QCOMPARE(QString(folder->name), QStringLiteral("New Folder"));
    QCOMPARE(folder->address, 0);
    QCOMPARE(folder->size, imageSize);
    const fileTreeFile *texture = root->files.first();
    QCOMPARE(QString(texture->name), QStringLiteral("New Texture"));
    QCOMPARE(texture->format, QStringLiteral("rgba32"));
    QCOMPARE(texture->address, 0);
    QCOMPARE(texture->paletteAddress, 0);
    QCOMPARE(texture->width, 32);
    QCOMPARE(texture->height, 32);
}

void FileListXmlTest::takesNumbers_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("hexadecimal");
    QTest::addColumn<int>("decimal");
    QTest::newRow("digits") << QByteArray("10") << 16 << 10;
    QTest::newRow("prefix") << QByteArray("0x1f") << 31 << 0;
    QTest::newRow("capitals") << QByteArray("0X1F") << 31 << 0;
    QTest::newRow("no prefix") << QByteArray("aB") << 171 << 0;
    QTest::newRow("empty") << QByteArray("") << 0 << 0;
    QTest::newRow("rubbish") << QByteArray("12 apples") << 0 << 0;
    QTest::newRow("negative") << QByteArray("-8") << -8 << -8;
    QTest::newRow("two's complement") << QByteArray("0xFFFFFFFE") << -2 << 0;
    QTest::newRow("too many digits") << QByteArray("0x100000000") << 0 << 0;
    QTest::newRow("largest") << QByteArray("2147483647") << 0 << INT_MAX;
    QTest::newRow("beyond the largest") << QByteArray("2147483648") << 0 << 0;
    QTest::newRow("fraction") << QByteArray("1.5") << 0 << 0;
}

void FileListXmlTest::takesNumbers()
{
    QFETCH(QByteArray, text);
    QFETCH(int, hexadecimal);
    QFETCH(int, decimal);
    fileTreeDirectory *root = newRoot();
    QVERIFY(parse(
        rooted("<texture address=\"" + text + "\" palette=\"" + text + "\" width=\"" + text + "\" height=\"" + text + "\"/>"),
        root));
    const fileTreeFile *texture = root->files.first();
    QCOMPARE(texture->address, hexadecimal);
    QCOMPARE(texture->paletteAddress, hexadecimal);
    QCOMPARE(texture->width, decimal);
    QCOMPARE(texture->height, decimal);
}

void FileListXmlTest::fitsFoldersIntoTheImage_data()
{
    QTest::addColumn<QByteArray>("attributes");
    QTest::addColumn<int>("address");
    QTest::addColumn<int>("size");
    QTest::newRow("inside") << QByteArray("address=\"0x100\" size=\"0x20\"") << 0x100 << 0x20;
    QTest::newRow("at the end") << QByteArray("address=\"0x1000\" size=\"0x20\"") << 0x1000 << 0x20;
    QTest::newRow("beyond the end") << QByteArray("address=\"0x1001\" size=\"0x20\"") << 0 << 0x20;
    QTest::newRow("negative address") << QByteArray("address=\"-1\" size=\"0x20\"") << 0 << 0x20;
    QTest::newRow("address's top bit") << QByteArray("address=\"0x80000000\" size=\"0x20\"") << 0 << 0x20;
    QTest::newRow("no size") << QByteArray("address=\"0x100\"") << 0x100 << 0xF00;
    QTest::newRow("size before the address") << QByteArray("size=\"0\" address=\"0x100\"") << 0x100 << 0xF00;
    QTest::newRow("no size, beyond the end") << QByteArray("address=\"0x2000\"") << 0 << 0x1000;
    QTest::newRow("negative size") << QByteArray("address=\"0x100\" size=\"-5\"") << 0x100 << 0xF00;
    QTest::newRow("size's top bit") << QByteArray("address=\"0x100\" size=\"0xFFFFFFFF\"") << 0x100 << 0xF00;
    QTest::newRow("size that is no number") << QByteArray("address=\"0x100\" size=\"big\"") << 0x100 << 0xF00;
    QTest::newRow("end outside") << QByteArray("address=\"0x800\" size=\"0x7FFFFFFF\"") << 0x800 << INT_MAX;
}

void FileListXmlTest::fitsFoldersIntoTheImage()
{
    QFETCH(QByteArray, attributes);
    QFETCH(int, address);
    QFETCH(int, size);
    fileTreeDirectory *root = newRoot();
    QVERIFY(parse(rooted("<directory " + attributes + "/>"), root));
    QCOMPARE(root->directories.first()->address, address);
    QCOMPARE(root->directories.first()->size, size);
}

void FileListXmlTest::makesNamesUnique()
{
    fileTreeDirectory *root = newRoot();
    QVERIFY(parse(rooted("<directory name=\"A\"/><directory name=\"A\"/><directory name=\"\"/>"
                         "<texture name=\"Sky\"/><texture name=\"Sky\"/><texture name=\"Sky\"/><texture name=\"\"/><texture/>"),
                  root));
    QCOMPARE(namesOf(root->directories),
             (QStringList {QStringLiteral("A"), QStringLiteral("A (2)"), QStringLiteral("New Folder")}));
    QCOMPARE(namesOf(root->files),
             (QStringList {QStringLiteral("Sky"), QStringLiteral("Sky (2)"), QStringLiteral("Sky (3)"),
                           QStringLiteral("New Texture"), QStringLiteral("New Texture (2)")}));
}

void FileListXmlTest::passesOverWhatItDoesNotKnow()
{
    fileTreeDirectory *root = newRoot();
    QVERIFY(parse("<?xml version=\"1.0\"?><!-- c --><?p i?>"
                  "<root version=\"2\" other=\"1\">text<group name=\"x\" address=\"5\"><texture name=\"a\" colour=\"red\">"
                  "<texture name=\"b\"/>text</texture></group><![CDATA[<texture/>]]>"
                  "<directory name=\"d\" palette=\"7\"><group><directory name=\"e\"/></group><texture name=\"c\"/></directory>"
                  "<Directory name=\"f\"/><Texture/></root><!-- end -->",
                  root));
    QCOMPARE(namesOf(root->files), (QStringList {QStringLiteral("a"), QStringLiteral("b")}));
    QCOMPARE(namesOf(root->directories), QStringList {QStringLiteral("d")});
    QCOMPARE(namesOf(root->directories.first()->directories), QStringList {QStringLiteral("e")});
    QCOMPARE(namesOf(root->directories.first()->files), QStringList {QStringLiteral("c")});
}

void FileListXmlTest::ignoresElementsWithoutAFolder_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QStringList>("events");
    QTest::newRow("before the document element")
        << QByteArray("<x><texture/><directory><texture/></directory><root version=\"2\"><texture name=\"a\"/></root></x>")
        << QStringList {QStringLiteral("*a")};
    QTest::newRow("after a stray end") << QByteArray("<directory><root version=\"2\"><texture name=\"a\"/></root></directory>")
                                       << QStringList {QStringLiteral("*a"), QStringLiteral("-Root")};
    QTest::newRow("document element inside a folder")
        << QByteArray("<root><directory name=\"d\"><directory name=\"e\"><root><texture name=\"a\"/></root></directory>"
                      "<texture name=\"b\"/></directory><directory name=\"f\"/></root>")
        << QStringList {QStringLiteral("+d"), QStringLiteral("+e"), QStringLiteral("*a"), QStringLiteral("-Root")};
    QTest::newRow("no document element") << QByteArray("<list><texture/><directory/></list>") << QStringList();
}

void FileListXmlTest::ignoresElementsWithoutAFolder()
{
    QFETCH(QByteArray, document);
    QFETCH(QStringList, events);
    Recorder recorder;
    QVERIFY(parse(document, newRoot(), &recorder));
    QCOMPARE(recorder.events, events);
}

void FileListXmlTest::addsToWhatIsThere()
{
    fileTreeDirectory *root = newRoot();
    addTexture(root, QStringLiteral("Sky"), 0, QStringLiteral("i8"));
    addFolder(root, QStringLiteral("A"), 0, 1);
    QVERIFY(parse(rooted("<texture name=\"Sky\"/><directory name=\"A\"/>"), root));
    QCOMPARE(namesOf(root->files), (QStringList {QStringLiteral("Sky"), QStringLiteral("Sky (2)")}));
    QCOMPARE(namesOf(root->directories), (QStringList {QStringLiteral("A"), QStringLiteral("A (2)")}));
}

void FileListXmlTest::tellsTheObserver()
{
    Recorder recorder;
    QVERIFY(parse(rooted("<directory name=\"A\"><directory name=\"B\"><texture name=\"t\"/></directory></directory>"
                         "<directory name=\"A\"/><texture name=\"t\"/><texture name=\"t\"/>"),
                  newRoot(), &recorder));
    QCOMPARE(recorder.events.join(QLatin1Char(' ')), QStringLiteral("+A +B *t -B -A +A (2) -A (2) *t *t (2)"));
}

void FileListXmlTest::keepsWhatCameBeforeAnError_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QStringList>("textures");
    const QByteArray start = "<root version=\"2\"><texture name=\"a\"/>";
    const QStringList one {QStringLiteral("a")};
    QTest::newRow("empty") << QByteArray() << QStringList();
    QTest::newRow("no XML") << QByteArray("PK\003\004 rubbish") << QStringList();
    QTest::newRow("zeros") << QByteArray(1000, '\0') << QStringList();
    QTest::newRow("cut") << start << one;
    QTest::newRow("cut in an attribute") << start + "<texture name=\"b" << one;
    QTest::newRow("wrong end") << start + "</list>" << one;
    QTest::newRow("twice the same attribute") << start + "<texture name=\"b\" name=\"c\"/></root>" << one;
    QTest::newRow("control character") << start + "<texture name=\"\001\"/></root>" << one;
    QTest::newRow("reference to a control character") << start + "<texture name=\"&#1;\"/></root>" << one;
    QTest::newRow("unknown entity") << start + "<texture name=\"&who;\"/></root>" << one;
    QTest::newRow("broken UTF-8") << start + "<texture name=\"\xFF\xFE\xC3\"/></root>" << QStringList();
    QTest::newRow("unknown encoding") << "<?xml version=\"1.0\" encoding=\"klingon\"?>" + start + "</root>" << QStringList();
    QTest::newRow("second document element") << start + "</root><root/>" << one;
    QTest::newRow("two colons in a name") << start + "<a:b:c/></root>" << one;
}

void FileListXmlTest::keepsWhatCameBeforeAnError()
{
    QFETCH(QByteArray, document);
    QFETCH(QStringList, textures);
    fileTreeDirectory *root = newRoot();
    QString error;
    QVERIFY(!parse(document, root, nullptr, &error));
    QVERIFY(!error.isEmpty());
    QCOMPARE(namesOf(root->files), textures);
}

void FileListXmlTest::refusesExpandingEntities()
{
    QByteArray document = "<?xml version=\"1.0\"?><!DOCTYPE root [<!ENTITY l0 \"lolololololololololo\">";
    for (int i = 1; i < 12; ++i) {
        const QByteArray inner = "&l" + QByteArray::number(i - 1) + ";";
        document += "<!ENTITY l" + QByteArray::number(i) + " \"" + inner.repeated(10) + "\">";
    }
    document += "]>";
    for (const QByteArray &content : {QByteArray("<texture name=\"&l11;\"/>"), QByteArray("<x>&l11;</x>")}) {
        QString error;
        QVERIFY(!parse(document + rooted("<texture name=\"before\"/>" + content), newRoot(), nullptr, &error));
        QVERIFY(!error.isEmpty());
    }
    QString error;
    QVERIFY(!parse("<!DOCTYPE root [<!ENTITY a \"&b;\"><!ENTITY b \"&a;\">]>" + rooted("<texture name=\"&a;\"/>"), newRoot(),
                   nullptr, &error));
}

void FileListXmlTest::refusesAnElementOfTooManyAttributes_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<bool>("readable");
    const auto attributes = [](int count) {
        QByteArray text;
        for (int i = 0; i < count; ++i)
            text += " a" + QByteArray::number(i) + (i % 2 ? "='\"='" : "=\"'>\"");
        return text;
    };
    const auto withPicture = [](const QByteArray &other) { return rooted(other + "<texture name=\"a\"/>"); };
    const QByteArray most = withPicture("<other" + attributes(2000) + "/>");
    const QByteArray tooMany = withPicture("<other" + attributes(2001) + "/>");
    const QByteArray equalSigns(3000, '=');
    QTest::newRow("1,001") << withPicture("<other" + attributes(1001) + "/>") << true;
    QTest::newRow("most") << most << true;
    QTest::newRow("one too many") << tooMany << false;
    QTest::newRow("that would take for ever") << withPicture("<other" + attributes(100000) + "/>") << false;
    QTest::newRow("in several elements") << withPicture(("<other" + attributes(1200) + "/>").repeated(3)) << true;
    QTest::newRow("in a closing tag") << withPicture("<other></other" + attributes(2001) + ">") << false;
    QTest::newRow("signs in a comment") << withPicture("<!-- '<other \" " + equalSigns.left(2000) + "-->") << true;
    QTest::newRow("signs in text") << withPicture(equalSigns + "' \"") << true;
    QTest::newRow("signs in character data") << withPicture("<![CDATA[<other> " + equalSigns + "]]>") << true;
    QTest::newRow("signs in an instruction") << withPicture("<?other <x> " + equalSigns + "?>") << true;
    QTest::newRow("signs in a value") << withPicture("<other a=\"" + equalSigns + "\" b='" + equalSigns + "'/>") << true;
    QTest::newRow("behind a comment") << withPicture("<!-- <x ' --><other" + attributes(2001) + "/>") << false;
    QTest::newRow("behind character data") << withPicture("<![CDATA[<x \" ]] > ]]><other" + attributes(2001) + "/>") << false;
    QTest::newRow("behind an instruction") << withPicture("<?x <x ' ?><other" + attributes(2001) + "/>") << false;
    for (const char *encoding : {"UTF-16", "UTF-16LE", "UTF-16BE"}) {
        const QTextCodec *codec = QTextCodec::codecForName(encoding);
        const QByteArray declaration = QByteArray("<?xml version=\"1.0\" encoding=\"UTF-16\"?>");
        const QByteArray signs = declaration + withPicture("<!-- ' > " + equalSigns + " \xE2\x88\xAD\xE3\xB0\xBC -->");
        QTest::addRow("%s, most", encoding) << codec->fromUnicode(QString::fromUtf8(declaration + most)) << true;
        QTest::addRow("%s, signs in a comment", encoding) << codec->fromUnicode(QString::fromUtf8(signs)) << true;
        QTest::addRow("%s, one too many", encoding) << codec->fromUnicode(QString::fromUtf8(declaration + tooMany)) << false;
    }
}

void FileListXmlTest::refusesAnElementOfTooManyAttributes()
{
    QFETCH(QByteArray, document);
    QFETCH(bool, readable);
    fileTreeDirectory *root = newRoot();
    QString error;
    QCOMPARE(parse(document, root, nullptr, &error), readable);
    QCOMPARE(error, readable ? QString() : QStringLiteral("An element has too many attributes"));
    QCOMPARE(root->files.size(), readable ? 1 : 0);
}

void FileListXmlTest::readsExternalEntitiesFromNowhere()
{
    fileTreeDirectory *root = newRoot();
    QString error;
    parse("<!DOCTYPE root [<!ENTITY secret SYSTEM \"file:///etc/passwd\">]>"
              + rooted("<x>&secret;</x><texture name=\"&secret;\"/>"),
          root, nullptr, &error);
    for (const fileTreeFile *file : qAsConst(root->files))
        QVERIFY(!file->name.contains(QLatin1String("root:")));
}

void FileListXmlTest::refusesDocuments_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("reason");
    const QString type = QStringLiteral("The document has a document type, which is not accepted");
    const QString encoding = QStringLiteral("The encoding of the document is neither UTF-8 nor UTF-16");
    const QByteArray list = rooted("<texture name=\"a\"/>");
    const auto declaring = [&list](const QByteArray &name) { return "<?xml version='1.0' encoding='" + name + "'?>" + list; };
    QTest::newRow("document type") << "<!DOCTYPE root>" + list << type;
    QTest::newRow("default attribute") << "<!DOCTYPE root [<!ATTLIST texture name CDATA \"b\">]>" + list << type;
    QTest::newRow("document type in UTF-16")
        << QTextCodec::codecForName("UTF-16")->fromUnicode(QString::fromUtf8("<!DOCTYPE root>" + list)) << type;
    QTest::newRow("Latin-1") << declaring("ISO-8859-1") << encoding;
    QTest::newRow("UTF-7") << declaring("UTF-7") << encoding;
    QTest::newRow("EBCDIC") << declaring("IBM037") << encoding;
    QTest::newRow("other quotes") << "<?xml version=\"1.0\" standalone='no'  encoding = \"utf-32\" ?>" + list << encoding;
    QTest::newRow("broken UTF-8") << rooted("<texture name=\"\xC3\"/>") << encoding;
    QTest::newRow("cut UTF-8") << list + "\xE2\x82" << encoding;
}

void FileListXmlTest::refusesDocuments()
{
    QFETCH(QByteArray, document);
    QFETCH(QString, reason);
    fileTreeDirectory *root = newRoot();
    QString error;
    QVERIFY(!parse(document, root, nullptr, &error));
    QCOMPARE(error, reason);
    QVERIFY(root->files.isEmpty());
}

void FileListXmlTest::declaredEncodingsAreRead_data()
{
    QTest::addColumn<QByteArray>("declared");
    QTest::addColumn<QByteArray>("codec");
    QTest::newRow("UTF-8") << QByteArray("UTF-8") << QByteArray("UTF-8");
    QTest::newRow("small letters") << QByteArray("utf-8") << QByteArray("UTF-8");
    QTest::newRow("UTF-16") << QByteArray("UTF-16") << QByteArray("UTF-16");
    // The bytes decide: a wrong declaration between the two cannot mislead.
    QTest::newRow("UTF-16, in UTF-8") << QByteArray("UTF-16") << QByteArray("UTF-8");
}

void FileListXmlTest::declaredEncodingsAreRead()
{
    QFETCH(QByteArray, declared);
    QFETCH(QByteArray, codec);
    const QString text = QString::fromUtf8("<?xml version='1.0' encoding='" + declared + "'?>" + rooted("<texture name=\"é\"/>"));
    fileTreeDirectory *root = newRoot();
    QVERIFY(parse(QTextCodec::codecForName(codec)->fromUnicode(text), root));
    QCOMPARE(namesOf(root->files), QStringList {QStringLiteral("é")});
}

/// Namespaces are not processed: a prefix that stands for nothing is not an error.
void FileListXmlTest::prefixesCount()
{
    fileTreeDirectory *root = newRoot();
    QVERIFY(parse(rooted("<p:texture name=\"a\" p:name=\"b\"/>"), root));
    QCOMPARE(namesOf(root->files), QStringList {QStringLiteral("a")});
}

void FileListXmlTest::keepsNegativeFolderAddresses_data()
{
    QTest::addColumn<QByteArray>("outer");
    QTest::addColumn<QByteArray>("inner");
    QTest::addColumn<int>("address");
    QTest::newRow("inside the image") << QByteArray("0x100") << QByteArray("0xFFFFFFF0") << -0x10;
    QTest::newRow("at its start") << QByteArray("0x10") << QByteArray("0xFFFFFFF0") << -0x10;
    QTest::newRow("before its start") << QByteArray("0xF") << QByteArray("0xFFFFFFF0") << 0;
    QTest::newRow("last byte") << QByteArray("0x1000") << QByteArray("0xFFFFFFFF") << -1;
    QTest::newRow("far outside") << QByteArray("0x1000") << QByteArray("0x80000000") << 0;
}

void FileListXmlTest::keepsNegativeFolderAddresses()
{
    QFETCH(QByteArray, outer);
    QFETCH(QByteArray, inner);
    QFETCH(int, address);
    fileTreeDirectory *root = newRoot();
    // What comes before and between leaves the address of the folder around as it was.
    const QByteArray other = "<directory address=\"0x20\"><directory address=\"0x8\"/></directory>";
    QVERIFY(parse(rooted(other + "<directory address=\"" + outer + "\">" + other + "<directory name=\"inner\" address=\"" + inner
                         + "\"/></directory>"),
                  root));
    const fileTreeDirectory *folder = root->directories.at(1)->getDirectoryByName(QStringLiteral("inner"));
    QCOMPARE(folder->address, address);
    QCOMPARE(folder->size, imageSize - address);
    fileTreeDirectory *again = newRoot();
    QVERIFY(parse(written(root), again));
    QCOMPARE(
        again->directories.at(outer == "0xF" || outer == "0x10" ? 0 : 1)->getDirectoryByName(QStringLiteral("inner"))->address,
        address);
}

void FileListXmlTest::depthCostsNoStack_data()
{
    QTest::addColumn<int>("depth");
    QTest::newRow("5,000") << 5000;
    QTest::newRow("100,000") << 100000;
}

void FileListXmlTest::depthCostsNoStack()
{
    QFETCH(int, depth);
    fileTreeDirectory *root = newRoot();
    Recorder recorder;
    QVERIFY(parse(rooted(QByteArray("<directory name=\"d\">").repeated(depth) + "<texture name=\"deep\"/>"
                         + QByteArray("</directory>").repeated(depth)),
                  root, &recorder));
    QCOMPARE(recorder.events.size(), 2 * depth + 1);
    const fileTreeContainer container;
    QCOMPARE(container.allDirectories(root).size(), depth);
    QCOMPARE(namesOf(container.allFiles(root)), QStringList {QStringLiteral("deep")});
}

void FileListXmlTest::hugeDepthIsWrittenInModeration()
{
    constexpr int depth = 100000;
    fileTreeDirectory *root = newRoot();
    fileTreeDirectory *folder = root;
    for (int i = 0; i < depth; ++i)
        folder = addFolder(folder, QStringLiteral("d"), 0, 1);
    addTexture(folder, QStringLiteral("deep"), 0, QStringLiteral("i8"));
    const QByteArray document = written(root);
    QVERIFY(document.size() < 10 * 1024 * 1024);
    // Every element down to level 100 is on a line of its own, indented by its level.
    const QByteArray element = "<directory name=\"d\" address=\"0x00000000\" size=\"0x00000001\">";
    QVERIFY(document.contains("\n" + QByteArray(99, '\t') + element + "\n" + QByteArray(100, '\t') + element + element));
    QVERIFY(document.contains("\n" + QByteArray(99, '\t') + "</directory>\n" + QByteArray(98, '\t') + "</directory>\n"));

    fileTreeDirectory *read = newRoot();
    QVERIFY(parse(document, read));
    QCOMPARE(fileTreeContainer().allDirectories(read).size(), depth);
    QCOMPARE(namesOf(fileTreeContainer().allFiles(read)), QStringList {QStringLiteral("deep")});
}

void FileListXmlTest::readsManyEntries()
{
    constexpr int count = 100000;
    fileTreeDirectory *root = newRoot();
    QVERIFY(parse(rooted(QByteArray("<texture name=\"Sky\" address=\"0x10\"/>").repeated(count)), root));
    QCOMPARE(root->files.size(), count);
    QCOMPARE(QString(root->files.last()->name), QStringLiteral("Sky (%1)").arg(count));
}

QTEST_GUILESS_MAIN(FileListXmlTest)
#include "tst_filelistxml.moc"
