// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"
#include "model/rom.h"
#include "persist/filelist.h"
#include "persist/splatyaml.h"
#include "persist/tablecsv.h"
#include "persist/tablejson.h"
#include "persist/yamltree.h"
#include "persist/zeldaxml.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTest>

#include <memory>

namespace
{
constexpr int imageSize = 0x100000;

using Reader = bool (*)(const QByteArray &, TableDocument *, QString *);

std::unique_ptr<fileTreeDirectory> emptyRoot()
{
    auto root = std::make_unique<fileTreeDirectory>();
    root->isRoot = true;
    root->name = "Root";
    return root;
}

/// The table of a file list with \a content in its root element.
std::unique_ptr<fileTreeDirectory> tableOf(const QByteArray &content)
{
    auto root = emptyRoot();
    const QByteArray bytes = "<?xml version=\"1.0\"?><root version=\"2\">" + content + "</root>";
    QString error;
    if (!readFileList(bytes, imageSize, root.get(), nullptr, &error))
        QTest::qFail(qPrintable(error), __FILE__, __LINE__);
    return root;
}

QByteArray listOf(fileTreeDirectory *root)
{
    QBuffer device;
    device.open(QIODevice::WriteOnly);
    QString error;
    if (!writeFileList(root, &device, &error))
        QTest::qFail(qPrintable(error), __FILE__, __LINE__);
    return device.data();
}

QByteArray csvOf(const fileTreeDirectory &root)
{
    QByteArray document;
    QString error;
    if (!writeTableCsv(root, &document, &error))
        QTest::qFail(qPrintable(error), __FILE__, __LINE__);
    return document;
}

QByteArray jsonOf(const fileTreeDirectory &root)
{
    QByteArray document;
    QString error;
    if (!writeTableJson(root, "NQLE0", "default", &document, &error))
        QTest::qFail(qPrintable(error), __FILE__, __LINE__);
    return document;
}

/// A line for each texture, as "path address format WxH palette", of what \a document adds to an empty table; or the error.
QStringList imported(Reader reader, const QByteArray &document, qint32 base = 0, TableDocument *table = nullptr)
{
    TableDocument own;
    table = table ? table : &own;
    const auto root = emptyRoot();
    QString error;
    AddedRecords added;
    if (!reader(document, table, &error) || !addRecords(table->records, root.get(), base, imageSize, &added, &error))
        return {error};
    QStringList lines;
    const QList<fileTreeFile *> textures = fileTreeContainer().allFiles(root.get());
    for (const fileTreeFile *texture : textures)
        lines << QStringLiteral("%1%2 %3 %4 %5x%6 %7")
                     .arg(texture->path(), texture->name, hexNumber(texture->realAddress()), texture->format)
                     .arg(texture->width)
                     .arg(texture->height)
                     .arg(texture->paletteAddress == 0 ? QStringLiteral("-") : hexNumber(texture->realPaletteAddress()));
    return lines;
}

/// All that names and numbers can be, and all that hangs on the order of entries.
QByteArray oddContent()
{
    return "<directory name=\"a\" address=\"0x100\" size=\"0x8000\">"
           "<directory name=\"b\" address=\"0x10\" size=\"0x20\"><texture name=\"c\" address=\"0x1\" format=\"i8\" width=\"1\" "
           "height=\"2\"/>"
           "</directory>"
           "<directory name=\"empty\" address=\"0x40\" size=\"0x7\"/>"
           "<texture name=\"b/c\" address=\"0x11\" format=\"ci4\" width=\"4\" height=\"4\" palette=\"0x44\"/>"
           "<texture name=\"palette before\" address=\"0x12\" format=\"ci8\" width=\"4\" height=\"4\" palette=\"0xFFFFFF00\"/>"
           "</directory>"
           "<directory name=\"a/b\" address=\"0x200\" size=\"0x300\"><texture name=\"c\" address=\"0\" "
           "format=\"i8\"/></directory>"
           "<directory name=\"a\\\" address=\"0x200\"/>"
           "<directory name=\"Root\" address=\"0x201\"/>"
           "<directory name=\"/\" address=\"0x202\"/>"
           "<directory name=\"twin\" address=\"0x300\"/><texture name=\"twin\" address=\"0x300\" format=\"i4\" width=\"3\" "
           "height=\"3\"/>"
           "<texture name=\"Root\" address=\"0x300\" format=\"i4\"/>"
           "<texture name=\"TWIN\" address=\"0x300\" format=\"i4\"/>"
           "<texture name=\"say &quot;hello&quot;, you\" address=\"0x300\" format=\"rgba32\"/>"
           "<texture name=\"two&#10;lines&#13;&#10;and&#13;\" address=\"0x300\" format=\"rgba32\"/>"
           "<texture name=\"=1+1\" address=\"0x300\" format=\"+x\"/><texture name=\"-\" address=\"0x300\" format=\"@\"/>"
           "<texture name=\" spaces \" address=\"0x300\" format=\" i4 \"/><texture name=\"&#9;tab\" address=\"0x300\" "
           "format=\"\"/>"
           "<texture name=\"back\\slash\\\\\" address=\"0x300\" format=\"i4\"/>"
           "<texture name=\"B\xC3\xA4ume \xF0\x9F\x8C\xB2 \xE2\x80\xAE\" address=\"0x300\" format=\"i4\"/>"
           "<texture name=\"before\" address=\"0x80000000\" format=\"i4\"/><texture name=\"%1 &amp;amp; &lt;\" "
           "address=\"0xFFFFFFF0\" format=\"i4\"/>"
           "<texture name=\"sized\" address=\"1\" format=\"i4\" width=\"-5\" height=\"0\"/>"
           "<texture name=\"photo\" address=\"2\" format=\"jpeg\"/><texture name=\"loud\" address=\"2\" format=\"JPEG\" "
           "width=\"7\"/>"
           "<texture name=\"unknown\" address=\"3\" format=\"rgba16\" palette=\"0x8\"/>";
}

class TablesTest : public QObject
{
    Q_OBJECT

private slots:
    void csvAndJsonKeepEverything_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("odd") << oddContent();
        for (const char character : QByteArray(",\"\n\r\t /\\=+-@'{}[]:;#&<>"))
            QTest::newRow(qPrintable(QStringLiteral("name %1").arg(int(character))))
                << QByteArray("<directory name=\"&#%1;\" address=\"0x8\"><texture name=\"&#%1;\" format=\"i4\"/>"
                              "<texture name=\"a&#%1;b\" format=\"i4\"/></directory>")
                       .replace("%1", QByteArray::number(int(character)));
    }
    void csvAndJsonKeepEverything()
    {
        QFETCH(const QByteArray, content);
        const auto table = tableOf(content);
        const QByteArray wanted = listOf(table.get());
        for (const auto &written :
             {qMakePair(csvOf(*table), Reader(readTableCsv)), qMakePair(jsonOf(*table), Reader(readTableJson))}) {
            TableDocument document;
            QString error;
            QVERIFY2(written.second(written.first, &document, &error), qPrintable(error));
            const auto root = emptyRoot();
            AddedRecords added;
            QVERIFY2(addRecords(document.records, root.get(), 0, imageSize, &added, &error), qPrintable(error));
            QCOMPARE(listOf(root.get()), wanted);
            // Once more changes nothing.
            QVERIFY(addRecords(document.records, root.get(), 0, imageSize, &added, &error));
            QCOMPARE(added.folders + added.textures, 0);
            QCOMPARE(listOf(root.get()), wanted);
        }
    }

    void csvIsWrittenAsTheRfcSays()
    {
        const auto table = tableOf(
            "<directory name=\"a,b\" address=\"0x100\" size=\"0x10\">"
            "<texture name=\"say &quot;x&quot;\" address=\"0x8\" format=\"ci4\" width=\"4\" height=\"2\" palette=\"0x20\"/>"
            "</directory><texture name=\"x/y\\z\" address=\"1\" format=\"jpeg\"/>");
        QCOMPARE(csvOf(*table),
                 QByteArray("path,address,format,width,height,palette,size\r\n"
                            "Root/x\\/y\\\\z,0x00000001,jpeg,,,,\r\n"
                            "\"Root/a,b/\",0x00000100,,,,,0x00000010\r\n"
                            "\"Root/a,b/say \"\"x\"\"\",0x00000108,ci4,4,2,0x00000120,\r\n"));
    }

    void csvIsReadAsOthersWriteIt_data()
    {
        QTest::addColumn<QByteArray>("document");
        QTest::newRow("line feeds") << QByteArray("path,address,format,width,height,palette\nRoot/a/x,0x10,i8,4,2,\n");
        QTest::newRow("no end of line") << QByteArray("path,address,format,width,height,palette\r\nRoot/a/x,0x10,i8,4,2,");
        QTest::newRow("empty lines") << QByteArray("path,address,format,width,height,palette\n\nRoot/a/x,0x10,i8,4,2,\n\n");
        QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBFpath,address,format,width,height\nRoot/a/x,0x10,i8,4,2\n");
        QTest::newRow("other order and columns") << QByteArray("Format,height,note,WIDTH,path,address\ni8,2,\"a\nb\",4,a/x,16\n");
        QTest::newRow("everything quoted") << QByteArray(
            "\"path\",\"address\",\"format\",\"width\",\"height\"\n\"a/x\",\"0x10\",\"i8\",\"4\",\"2\"\n");
        QTest::newRow("sorted by another column")
            << QByteArray("path,address,format,width,height,size\na/x,0x10,i8,4,2,\na/,0,,,,0x100\n");
        QTest::newRow("unescaped backslash elsewhere") << QByteArray("path,address,format,width,height\na/x,16,i8,0x4,2\n");
    }
    void csvIsReadAsOthersWriteIt()
    {
        QFETCH(const QByteArray, document);
        QCOMPARE(imported(readTableCsv, document), QStringList("Root/a/x 0x00000010 i8 4x2 -"));
    }

    void wrongCsvIsNamedByLineAndColumn_data()
    {
        const QByteArray head = "path,address,format,width,height,palette,size\n";
        QTest::addColumn<QByteArray>("document");
        QTest::addColumn<QString>("error");
        const QString noColumns = R"(line 1: it has to name the columns, "path" and "address" among them, separated by commas)";
        QTest::newRow("empty") << QByteArray() << noColumns;
        QTest::newRow("no head") << QByteArray("Root/x,0x10,i8,4,2,\n") << noColumns;
        QTest::newRow("semicolons") << QByteArray("path;address;format\n") << noColumns;
        QTest::newRow("column twice") << QByteArray("path,address,path\n") << R"(line 1: the column "path" is there twice)";
        QTest::newRow("too few cells") << head + "x,1\n"
                                       << "line 2: 2 cells instead of 7";
        QTest::newRow("too many cells") << head + "\"a\nb\",1,i8,1,1,,\nx,1,i8,1,1,,,\n"
                                        << "line 4: 8 cells instead of 7";
        QTest::newRow("no number") << head + "x,12z,i8,1,1,,\n"
                                   << R"(line 2, column "address": "12z" is no number of 32 bits)";
        QTest::newRow("number too large") << head + "x,0x100000000,i8,1,1,,\n"
                                          << R"(line 2, column "address": "0x100000000" is no number of 32 bits)";
        QTest::newRow("number with sign in it") << head + "x,0x-1,i8,1,1,,\n"
                                                << R"(line 2, column "address": "0x-1" is no number of 32 bits)";
        QTest::newRow("missing number") << head + "x,,i8,1,1,,\n"
                                        << R"(line 2, column "address": a number is missing)";
        QTest::newRow("missing width") << head + "x,1,i8,,1,,\n"
                                       << R"(line 2, column "width": a number is missing)";
        QTest::newRow("wrong palette") << head + "x,1,ci4,1,1,?,\n"
                                       << R"(line 2, column "palette": "?" is no number of 32 bits)";
        QTest::newRow("wrong size") << head + "x/,1,,,,,big\n"
                                    << R"(line 2, column "size": "big" is no number of 32 bits)";
        QTest::newRow("empty name") << head + "a//x,1,i8,1,1,,\n"
                                    << R"(line 2, column "path": a name in it is empty)";
        QTest::newRow("no path") << head + ",1,i8,1,1,,\n"
                                 << R"(line 2, column "path": a name in it is empty)";
        QTest::newRow("open quotes") << head + "\"x,1\n,i8\n"
                                     << "line 2: the quotation mark that opens a cell is never closed";
        QTest::newRow("text behind quotes") << head + "\"x\"y,1,i8,1,1,,\n"
                                            << "line 2: text behind the quotation mark that ends a cell";
        QTest::newRow("quote inside")
            << head + "x\"y,1,i8,1,1,,\n"
            << "line 2: a quotation mark in the middle of a cell; such a cell has to be in quotation marks";
        QTest::newRow("folder twice") << head + "a/,1,,,,,\nb/,1,,,,,\na/,2,,,,,\n"
                                      << R"(line 4: the folder "a" is described a second time, after line 2)";
        QTest::newRow("no format column") << QByteArray("path,address\nx,1\n")
                                          << R"(line 2, column "format": a texture needs a format, but there is no such column)";
        QTest::newRow("no UTF-8") << head + "\xFF,1,i8,1,1,,\n"
                                  << "It is no text in UTF-8";
    }
    void wrongCsvIsNamedByLineAndColumn()
    {
        QFETCH(const QByteArray, document);
        QTEST(imported(readTableCsv, document).join('\n'), "error");
    }

    void wrongJsonIsNamedByLineAndElement_data()
    {
        const QByteArray good = R"({"path": "x", "address": 1, "format": "i8", "width": 1, "height": 1})";
        QTest::addColumn<QByteArray>("document");
        QTest::addColumn<QString>("error");
        QTest::newRow("empty") << QByteArray() << "line 1: illegal value";
        QTest::newRow("broken") << QByteArray("{\n\"textures\": [\n{]}") << "line 3: unterminated object";
        QTest::newRow("an array") << QByteArray("[]") << R"(line 1: there is no object with "folders" and "textures")";
        QTest::newRow("no array") << QByteArray(R"({"textures": 1})") << R"("textures" is no array)";
        QTest::newRow("no object") << "{\"other\": [[{}], 1],\n\"textures\": [" + good + ",\n\n7\n]}"
                                   << "line 4, textures[1]: it is no object";
        QTest::newRow("number as text") << "{\"textures\": [\n" + good + ",\n{\"path\": \"]x{\\\"\",\n \"address\": \"1\"}]}"
                                        << "line 3, textures[1].address: it is no whole number of 32 bits";
        QTest::newRow("fraction") << QByteArray(R"({"folders": [{"path": "x/", "address": 1.5}]})")
                                  << "line 1, folders[0].address: it is no whole number of 32 bits";
        QTest::newRow("too large") << QByteArray(R"({"folders": [{"path": "x/", "address": 4294967296}]})")
                                   << "line 1, folders[0].address: it is no whole number of 32 bits";
        QTest::newRow("no path") << QByteArray(R"({"textures": [{"address": 1}]})")
                                 << "line 1, textures[0].path: it is no path, or a name in it is empty";
        QTest::newRow("folder without slash") << QByteArray(R"({"folders": [{"path": "x", "address": 1}]})")
                                              << R"(line 1, folders[0].path: a folder's path ends in "/", and no other does)";
        QTest::newRow("no width") << QByteArray(R"({"textures": [{"path": "x", "address": 1, "format": "i8"}]})")
                                  << "line 1, textures[0].width: it is no whole number of 32 bits";
        QTest::newRow("no format") << QByteArray(R"({"textures": [{"path": "x", "address": 1}]})")
                                   << "line 1, textures[0].format: it is no text";
        QTest::newRow("folder twice") << QByteArray(
            "{\"folders\": [{\"path\": \"x/\", \"address\": 1},\n{\"path\": \"x/\", \"address\": 1}]}")
                                      << R"(line 2: the folder "x" is described a second time, after line 1)";
    }
    void wrongJsonIsNamedByLineAndElement()
    {
        QFETCH(const QByteArray, document);
        QTEST(imported(readTableJson, document).join('\n'), "error");
    }

    void nothingIsAddedByHalves()
    {
        const auto root = tableOf("<texture name=\"old\" format=\"i8\"/>");
        const QByteArray before = listOf(root.get());
        TableDocument table;
        QString error;
        QVERIFY(readTableCsv("path,address,format,width,height\nx,1,i8,1,1\na/,1,,,\na/,2,,,\n", &table, &error));
        AddedRecords added;
        QVERIFY(!addRecords(table.records, root.get(), 0, imageSize, &added, &error));
        QCOMPARE(listOf(root.get()), before);
    }

    void recordsGoIntoFoldersThatAreThere()
    {
        const auto root =
            tableOf("<directory name=\"a\" address=\"0x100\" size=\"0x50\"><directory name=\"b\" address=\"0x20\" size=\"0x10\">"
                    "<texture name=\"x\" address=\"0\" format=\"i8\" width=\"1\" height=\"1\"/></directory></directory>");
        TableDocument table;
        QString error;
        QVERIFY(readTableCsv("path,address,format,width,height,palette,size\n"
                             "b/,0x9000,,,,,0x9\nb/x,0x30,i8,2,2,,\nb/x,0x20,i8,1,1,,\nnew/y,0x40,ci4,1,1,0x60,\n",
                             &table, &error));
        AddedRecords added;
        QVERIFY(addRecords(table.records, root->directories.first(), 0x100, imageSize, &added, &error));
        QCOMPARE(added.folders, 1);
        QCOMPARE(added.textures, 2);
        QCOMPARE(added.unchanged, 1);
        const fileTreeDirectory *a = root->directories.first();
        const fileTreeDirectory *b = a->directories.first();
        QCOMPARE(b->realAddress(), 0x120);
        QCOMPARE(b->size, 0x10);
        QCOMPARE(QString(b->files.at(1)->name), QString("x (2)"));
        QCOMPARE(b->files.at(1)->realAddress(), 0x130);
        const fileTreeFile *y = a->directories.at(1)->files.first();
        QCOMPARE(y->realAddress(), 0x140);
        QCOMPARE(y->realPaletteAddress(), 0x160);
        QCOMPARE(a->directories.at(1)->size, imageSize);
    }

    void zeldaXmlIsRead()
    {
        const QByteArray document = R"(<Root><ExternalFile XmlPath="x.xml"/>
<File Name="object_a" Segment="6">
  <Texture Name="gEyeTex" OutName="eye" Format="ci8" Width="32" Height="16" Offset="0x10" TlutOffset="06001234"/>
  <Texture Name="gSkyTex" Format="rgba16" Width="64" Height="32" Offset="ABC"/>
  <Texture Name="gDeep" OutName="a/b/deep" Format="I4" Width="1" Height="2" Offset="0x06000020"/>
  <DList Name="gThingDL" Offset="0x500"><Inner/></DList>
  <Texture Name="gBare" OutName="bare" Format="ci4" Width="8" Height="8" Offset="0x30"/>
  <Texture Name="gFar" OutName="far" Format="ci4" Width="8" Height="8" Offset="0x40" ExternalTlut="object_b" ExternalTlutOffset="0"/>
  <Texture Name="gPhoto" Format="jpeg" Width="8" Height="8" Offset="0x50"/>
</File></Root>)";
        TableDocument table;
        QCOMPARE(imported(readZeldaXml, document, 0x1000, &table),
                 QStringList({"Root/object_a/eye 0x00001010 ci8 32x16 0x00002234",
                              "Root/object_a/gSkyTex 0x00001ABC rgb5a1 64x32 -", "Root/object_a/bare 0x00001030 ci4 8x8 -",
                              "Root/object_a/far 0x00001040 ci4 8x8 -", "Root/object_a/a/b/deep 0x00001020 i4 1x2 -"}));
        QCOMPARE(
            table.leftOut,
            QStringList({R"(line 1: ExternalFile "")", R"(line 6: DList "gThingDL")",
                         R"(line 7: the palette of Texture "bare", which is not named)",
                         R"(line 8: the palette of Texture "far", which is in another file)", R"(line 9: Texture "gPhoto")"}));
    }

    void wrongZeldaXmlIsNamedByLineAndElement_data()
    {
        const auto file = [](const QByteArray &texture) { return "<Root>\n<File Name=\"f\">\n" + texture + "</File></Root>"; };
        QTest::addColumn<QByteArray>("document");
        QTest::addColumn<QString>("error");
        QTest::newRow("empty") << QByteArray() << "line 1: Premature end of document.";
        QTest::newRow("broken") << QByteArray("<Root>\n<File Name=\"f\"></Root>") << "line 2: Opening and ending tag mismatch.";
        QTest::newRow("no file") << QByteArray("<Root/>") << R"(line 1: there is no element "File")";
        QTest::newRow("nameless file") << QByteArray("<Root>\n<File/></Root>") << R"(line 2, File "": it has no Name)";
        QTest::newRow("nameless") << file(R"(<Texture Format="i4"/>)")
                                  << R"(line 3, Texture "": it has neither Name nor OutName)";
        QTest::newRow("no format") << file(R"(<Texture Name="x"/>)") << R"(line 3, Texture "x": it has no Format)";
        QTest::newRow("no offset") << file(R"(<Texture Name="x" Format="i4"/>)")
                                   << R"(line 3, Texture "x": Offset is missing or no hexadecimal number)";
        QTest::newRow("wrong offset") << file(R"(<Texture Name="x" Format="i4" Offset="12q"/>)")
                                      << R"(line 3, Texture "x": Offset is missing or no hexadecimal number)";
        QTest::newRow("no width") << file(R"(<Texture Name="x" Format="i4" Offset="1"/>)")
                                  << R"(line 3, Texture "x": Width is missing or no number above 0)";
        QTest::newRow("no height") << file(R"(<Texture Name="x" Format="i4" Offset="1" Width="1" Height="0"/>)")
                                   << R"(line 3, Texture "x": Height is missing or no number above 0)";
        QTest::newRow("wrong palette") << file(
            R"(<Texture Name="x" Format="ci4" Offset="1" Width="1" Height="1" TlutOffset=""/>)")
                                       << R"(line 3, Texture "x": TlutOffset is no hexadecimal number)";
    }
    void wrongZeldaXmlIsNamedByLineAndElement()
    {
        QFETCH(const QByteArray, document);
        QTEST(imported(readZeldaXml, document).join('\n'), "error");
    }

    void splatYamlIsRead()
    {
        const QByteArray document = R"(name: game
options: {a: [1, 2]}
segments:
  - [0x0, header, header]
  - name: code
    type: code
    start: 0x1000
    vram: 0x80001000
    subsegments:
      - [0x1000, c, main]
      - [0x1100, rgba16, ui/sky, 32, 16]
      - {vram: 0x80001200, type: i8, name: shade, dims: [8, 4]}
      - start: 0x1300
        type: ci4
        name: coin
        width: 4
        height: 2
      - [0x1400, palette, coin]
      - {start: 0x1500, type: ci8, name: gem, dims: [1, 2], palettes: [shared, other]}
      - [0x1600, ci8, lone, 1, 1]
  - {start: 0x2000, type: palette, name: shared}
  - [0x2200, palette, unused]
  - [8192, ia16, "", 0x10, 2]
  - [0x3000]
)";
        TableDocument table;
        QCOMPARE(imported(readSplatYaml, document, 0, &table),
                 QStringList({"Root/shade 0x00001200 i8 8x4 -", "Root/coin 0x00001300 ci4 4x2 0x00001400",
                              "Root/gem 0x00001500 ci8 1x2 0x00002000", "Root/lone 0x00001600 ci8 1x1 -",
                              "Root/ia16_00002000 0x00002000 ia16 16x2 -", "Root/ui/sky 0x00001100 rgb5a1 32x16 -"}));
        QCOMPARE(table.leftOut,
                 QStringList({R"(line 20: the palette of "lone", which is in no segment)",
                              R"(line 22: the palette "unused", which no texture uses)", R"(line 10: 1 segment of the kind "c")",
                              R"(line 4: 1 segment of the kind "header")"}));
    }

    void aliasesAreFollowed()
    {
        QCOMPARE(imported(readSplatYaml, "size: &s [4, 2]\nsegments:\n - {start: 1, type: i8, name: x, dims: *s}\n"),
                 QStringList("Root/x 0x00000001 i8 4x2 -"));
    }

    void wrongSplatYamlIsNamedByLine_data()
    {
        QTest::addColumn<QByteArray>("document");
        QTest::addColumn<QString>("error");
        QTest::newRow("empty") << QByteArray() << "line 1: it is empty";
        QTest::newRow("broken") << QByteArray("segments:\n  - [1, i4") << "line 2: end of sequence flow not found";
        QTest::newRow("no segments") << QByteArray("a: b") << R"(line 1: there is no list "segments")";
        QTest::newRow("segments no list") << QByteArray("segments: b") << R"(line 1: there is no list "segments")";
        QTest::newRow("text as segment") << QByteArray("segments:\n - x")
                                         << "line 2: a segment that is neither a list nor a dictionary";
        QTest::newRow("subsegments no list")
            << QByteArray("segments:\n - {name: s, subsegments: 3}") << R"(line 2, segment "s": "subsegments" is no list)";
        QTest::newRow("start no number") << QByteArray("segments:\n - [auto, i4, x, 1, 1]")
                                         << R"(line 2, segment "x": its start "auto" is no number)";
        QTest::newRow("no start") << QByteArray("segments:\n - {type: i4, name: x}")
                                  << R"(line 2, segment "x": it has neither start nor vram)";
        QTest::newRow("vram alone") << QByteArray("segments:\n - {type: i4, name: x, vram: 0x80000000}")
                                    << R"(line 2, segment "x": it has vram, but is in no segment with start and vram)";
        QTest::newRow("no size") << QByteArray("segments:\n - [1, i4, x, 1]")
                                 << R"(line 2, segment "x": its width and height are missing or no numbers above 0)";
        QTest::newRow("a list as key") << QByteArray("segments:\n - {[a]: b}") << "line 2: a key that is no text";
        QTest::newRow("a circle") << QByteArray("segments: &s\n - {subsegments: *s}") << "line 2: an alias to what it is in";
        QTest::newRow("unknown alias") << QByteArray("segments: *s") << "line 1: the referenced anchor is not defined";
    }
    void wrongSplatYamlIsNamedByLine()
    {
        QFETCH(const QByteArray, document);
        QTEST(imported(readSplatYaml, document).join('\n'), "error");
    }

    void hostileYamlIsRefusedAtOnce()
    {
        // Ten values, each ten times the one before: a few hundred bytes for ten thousand million values.
        QByteArray bomb = "a0: &a0 [x, x, x, x, x, x, x, x, x, x]\n";
        for (int i = 1; i < 10; ++i) {
            const QByteArray alias = "*a" + QByteArray::number(i - 1);
            bomb +=
                "a" + QByteArray::number(i) + ": &a" + QByteArray::number(i) + " [" + (alias + ", ").repeated(9) + alias + "]\n";
        }
        QString error;
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!readYaml(bomb, &error));
        QVERIFY2(error.endsWith(": it has too many values"), qPrintable(error));
        QVERIFY(!readYaml(QByteArray(100000, '['), &error));
        QVERIFY2(error.endsWith(": it is nested too deeply"), qPrintable(error));
        QByteArray tower = "a0: &a0 [x]\n";
        for (int i = 1; i < 40; ++i)
            tower += "a" + QByteArray::number(i) + ": &a" + QByteArray::number(i) + " [*a" + QByteArray::number(i - 1) + "]\n";
        QVERIFY(!readYaml(tower, &error));
        QVERIFY2(error.endsWith(": it is nested too deeply"), qPrintable(error));
        QVERIFY(timer.elapsed() < 10000);
    }

    void otherToolsGetWhatTheyCanHold()
    {
        const auto table =
            tableOf("<directory name=\"a\" address=\"0x100\"><texture name=\"x y\" address=\"0\" format=\"ci4\" width=\"4\" "
                    "height=\"4\" palette=\"0x20\"/></directory>"
                    "<texture name=\"sky\" address=\"0x10\" format=\"rgb5a1\" width=\"4\" height=\"2\"/>"
                    "<texture name=\"photo\" format=\"jpeg\"/><texture name=\"before\" address=\"0x80000000\" format=\"i4\"/>");
        QByteArray document;
        QStringList leftOut;
        QString error;
        QVERIFY(writeZeldaXml(*table, "NQLE0", &document, &leftOut, &error));
        QCOMPARE(
            document,
            QByteArray(
                "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Root>\n    <File Name=\"NQLE0\" Segment=\"0\">\n"
                "        <Texture Name=\"gSkyTex\" OutName=\"sky\" Format=\"rgba16\" Width=\"4\" Height=\"2\" Offset=\"0x10\"/>\n"
                "        <Texture Name=\"gAXYTex\" OutName=\"a/x y\" Format=\"ci4\" Width=\"4\" Height=\"4\" Offset=\"0x100\" "
                "TlutOffset=\"0x120\"/>\n    </File>\n</Root>\n"));
        const QStringList wanted {"Root/photo: the format \"jpeg\"", "Root/before: an address before the image"};
        QCOMPARE(leftOut, wanted);
        leftOut.clear();
        QVERIFY(writeSplatYaml(*table, "NQLE0", 0x1000, &document, &leftOut, &error));
        QCOMPARE(document,
                 QByteArray("name: \"NQLE0\"\nsegments:\n  - [0x0, bin]\n"
                            "  - {start: 0x10, type: rgba16, name: \"sky\", dims: [4, 2]}\n  - [0x20, bin]\n"
                            "  - {start: 0x100, type: ci4, name: \"a/x y\", dims: [4, 4], palettes: [\"palette_00000120\"]}\n"
                            "  - [0x108, bin]\n  - [0x120, palette, \"palette_00000120\"]\n  - [0x140, bin]\n  - [0x1000]\n"));
        QCOMPARE(leftOut, wanted);
        QCOMPARE(imported(readSplatYaml, document),
                 QStringList({"Root/sky 0x00000010 rgb5a1 4x2 -", "Root/a/x y 0x00000100 ci4 4x4 0x00000120"}));
    }

    void formatsThatAreNoneAreLeftOut()
    {
        const auto table = tableOf(
            "<texture name=\"a\" format=\"I4\"/><texture name=\"b\" format=\"rgba16\"/><texture name=\"c\" format=\"\"/>");
        QByteArray document;
        QStringList leftOut;
        QString error;
        const QStringList wanted {"Root/a: the format \"I4\"", "Root/b: the format \"rgba16\"", "Root/c: the format \"\""};
        QVERIFY(writeSplatYaml(*table, "NQLE0", 0x1000, &document, &leftOut, &error));
        QCOMPARE(leftOut, wanted);
        leftOut.clear();
        QVERIFY(writeZeldaXml(*table, "NQLE0", &document, &leftOut, &error));
        QCOMPARE(leftOut, wanted);
    }

    void deepTablesAreRefusedNotWritten()
    {
        const auto root = emptyRoot();
        fileTreeDirectory *folder = root.get();
        for (int i = 0; i < 3000; ++i) {
            auto *child = new fileTreeDirectory;
            child->name = QString(20, 'x');
            folder = folder->addDirectory(child);
        }
        QByteArray document;
        QString error;
        QVERIFY(!writeTableCsv(*root, &document, &error));
        QCOMPARE(error, QString("The table's paths are too long: the document would be larger than 64 MiB"));
        QVERIFY(document.isEmpty());
    }

    void largeTablesTakeLinearTime()
    {
        QByteArray document = "path,address,format,width,height\n";
        for (int i = 0; i < 100000; ++i)
            document += "folder/Sky," + QByteArray::number(i) + ",i8,1,1\n";
        TableDocument table;
        QString error;
        QVERIFY(readTableCsv(document, &table, &error));
        const auto root = emptyRoot();
        AddedRecords added;
        QElapsedTimer timer;
        timer.start();
        QVERIFY(addRecords(table.records, root.get(), 0, imageSize, &added, &error));
        QCOMPARE(added.textures, 100000);
        QVERIFY(timer.elapsed() < 20000);
        QCOMPARE(QString(root->directories.first()->files.last()->name), QString("Sky (100000)"));
    }
};
}

QTEST_GUILESS_MAIN(TablesTest)
#include "tst_tables.moc"
