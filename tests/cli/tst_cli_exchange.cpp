// SPDX-License-Identifier: MIT
#include "profilefolder.h"

#include "support/images.h"

#include <QJsonArray>

namespace
{
QByteArray content()
{
    return "<directory name=\"a/b\" address=\"0x100\" size=\"0x400\">"
           "<directory name=\"empty\" address=\"0x10\" size=\"0x20\"/>"
           "<texture name=\"say &quot;x&quot;, y\" address=\"0x8\" format=\"ci4\" width=\"4\" height=\"2\" palette=\"0x20\"/>"
           "</directory>"
           "<texture name=\"photo\" address=\"0x1\" format=\"jpeg\"/>"
           "<texture name=\"two&#10;lines\" address=\"0x2\" format=\"rgb5a1\" width=\"4\" height=\"2\"/>";
}

class ExchangeTest : public QObject
{
    Q_OBJECT

private slots:
    void whatIsExportedIsImported_data()
    {
        QTest::addColumn<QStringList>("exported");
        QTest::addColumn<QStringList>("imported");
        QTest::newRow("csv by its name") << QStringList {"-o", "@t.csv"} << QStringList {"@t.csv"};
        QTest::newRow("json by its name") << QStringList {"-o", "@t.JSON"} << QStringList {"@t.JSON"};
        QTest::newRow("csv by --as") << QStringList {"-o", "@t", "--as", "csv"} << QStringList {"@t", "--as", "csv"};
        QTest::newRow("json by --as") << QStringList {"-o", "@t.csv", "--as", "json"} << QStringList {"@t.csv", "--as", "json"};
    }
    void whatIsExportedIsImported()
    {
        QFETCH(QStringList, exported);
        QFETCH(QStringList, imported);
        const ProfileFolder folder(cartridgeImage(4096));
        folder.addProfile(content());
        exported.replaceInStrings("@", folder.path());
        imported.replaceInStrings("@", folder.path());
        const CommandCall out = folder.call("table export", exported);
        QVERIFY2(out.status == 0, qPrintable(out.err));
        for (const QString name : {"first", "second"}) {
            const CommandCall in = folder.call("table import", imported + QStringList {"--profile", name});
            QVERIFY2(in.status == 0, qPrintable(in.err));
            QVERIFY2(in.out.contains("Added 2 folders and 3 textures; 0 textures there already.\n"), qPrintable(in.out));
            const CommandCall again = folder.call("table export", exported + QStringList {"--profile", name});
            QVERIFY2(again.status == 0, qPrintable(again.err));
        }
        QCOMPARE(fileBytes(folder.fileListPath("first")), fileBytes(folder.fileListPath("second")));
        const QJsonArray before = folder.call("list", {"--json"}).json().value("textures").toArray();
        QCOMPARE(folder.call("list", {"--json", "--profile", "first"}).json().value("textures").toArray(), before);
        QCOMPARE(folder.call("list", {"--json", "--profile", "first"}).json().value("folders").toArray(),
                 folder.call("list", {"--json"}).json().value("folders").toArray());
    }

    void whatListPrintsIsImported()
    {
        const ProfileFolder folder(cartridgeImage(4096));
        folder.addProfile(
            "<directory name=\"a\" address=\"0x100\" size=\"0x400\">"
            "<texture name=\"x\" address=\"0x8\" format=\"ci4\" width=\"4\" height=\"2\" palette=\"0x20\"/></directory>");
        folder.addPart("list.json", folder.call("list", {"--json"}).out.toUtf8());
        QCOMPARE(folder.call("table import", {folder.path("list.json"), "--profile", "new"}).status, 0);
        QCOMPARE(folder.call("list", {"--profile", "new"}).out, folder.call("list").out);
    }

    void otherToolsTablesAreImported()
    {
        const ProfileFolder folder(cartridgeImage(4096));
        folder.addPart("o.xml",
                       "<Root><File Name=\"obj\" Segment=\"6\"><Texture Name=\"gA\" OutName=\"a\" Format=\"ci8\" Width=\"4\" "
                       "Height=\"2\" Offset=\"0x10\" TlutOffset=\"0x100\"/><DList Name=\"gD\"/></File></Root>");
        const CommandCall xml =
            folder.call("table import", {folder.path("o.xml"), "--base", "0x200", "--into", "Objects", "--json"});
        QCOMPARE(xml.status, 0);
        QCOMPARE(xml.json().value("foldersAdded").toInt(), 2);
        QCOMPARE(xml.json().value("texturesAdded").toInt(), 1);
        QCOMPARE(xml.json().value("leftOut").toArray(), QJsonArray({"line 1: DList \"gD\""}));
        QCOMPARE(xml.err, QString("quillary-cli: Left out: line 1: DList \"gD\"\n"));
        folder.addPart("s.yml", "segments:\n - [0x40, rgba16, ui/sky, 4, 2]\n");
        QCOMPARE(folder.call("table import", {folder.path("s.yml"), "--into", "Root/Objects/"}).status, 0);
        const QJsonArray textures = folder.call("list", {"--json"}).json().value("textures").toArray();
        QCOMPARE(textures.size(), 2);
        QCOMPARE(textures.at(0).toObject().value("path").toString(), QString("Root/Objects/ui/sky"));
        QCOMPARE(textures.at(0).toObject().value("address").toInt(), 0x40);
        QCOMPARE(textures.at(1).toObject().value("path").toString(), QString("Root/Objects/obj/a"));
        QCOMPARE(textures.at(1).toObject().value("address").toInt(), 0x210);
        QCOMPARE(textures.at(1).toObject().value("paletteAddress").toInt(), 0x300);
    }

    void whatHasNoCounterpartIsNamed()
    {
        const ProfileFolder folder(cartridgeImage(4096));
        folder.addProfile(content());
        for (const QString name : {"t.xml", "t.yaml"}) {
            const CommandCall out = folder.call("table export", {"-o", folder.path(name), "--json"});
            QCOMPARE(out.status, 0);
            QCOMPARE(out.json().value("textures").toInt(), 2);
            QCOMPARE(out.json().value("leftOut").toArray(), QJsonArray({"Root/photo: the format \"jpeg\""}));
            QCOMPARE(out.err, QString("quillary-cli: Left out: Root/photo: the format \"jpeg\"\n"));
        }
    }

    void errorsAddNothing_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("document");
        QTest::addColumn<QString>("error");
        QTest::newRow("csv") << "t.csv" << QByteArray("path,address,format,width,height\nx,1,i8,1,1\ny,1,i8,one,1\n")
                             << R"(line 3, column "width": "one" is no number of 32 bits)";
        QTest::newRow("json") << "t.json" << QByteArray("{\"textures\": [\n1]}") << "line 2, textures[0]: it is no object";
        QTest::newRow("xml") << "t.xml" << QByteArray("<Root><File Name=\"f\"><Texture Name=\"x\"/></File></Root>")
                             << R"(line 1, Texture "x": it has no Format)";
        QTest::newRow("yaml") << "t.yaml" << QByteArray("segments:\n - [1, i4, x, 1, 1]\n - [1, i4, y]")
                              << R"(line 3, segment "y": its width and height are missing or no numbers above 0)";
        QTest::newRow("second folder") << "t.csv" << QByteArray("path,address\na/,1\na/,2\n") << "line 3: the folder \"a\"";
    }
    void errorsAddNothing()
    {
        QFETCH(const QString, name);
        QFETCH(const QByteArray, document);
        QFETCH(const QString, error);
        const ProfileFolder folder(cartridgeImage(4096));
        folder.addProfile(content());
        folder.addPart(name, document);
        const QByteArray before = fileBytes(folder.fileListPath());
        const CommandCall in = folder.call("table import", {folder.path(name)});
        QCOMPARE(in.status, 1);
        QVERIFY(in.out.isEmpty());
        QVERIFY2(in.err.contains(error), qPrintable(in.err));
        QCOMPARE(fileBytes(folder.fileListPath()), before);
        QCOMPARE(folder.call("table import", {folder.path(name), "--profile", "new"}).status, 1);
        QVERIFY(!QFile::exists(folder.fileListPath("new")));
    }

    void dryRunsWriteNothing()
    {
        const ProfileFolder folder(cartridgeImage(4096));
        folder.addProfile(content());
        folder.addPart("t.csv", "path,address,format,width,height\nx,1,i8,1,1\n");
        const QByteArray before = fileBytes(folder.fileListPath());
        const CommandCall in = folder.call("table import", {folder.path("t.csv"), "--dry-run"});
        QCOMPARE(in.status, 0);
        QVERIFY(in.out.contains("Would add 0 folders and 1 texture; 0 textures there already.\n"));
        QCOMPARE(fileBytes(folder.fileListPath()), before);
        const CommandCall out = folder.call("table export", {"-o", folder.path("out.csv"), "--dry-run"});
        QCOMPARE(out.status, 0);
        QVERIFY(out.out.startsWith("Would write "));
        QVERIFY(!QFile::exists(folder.path("out.csv")));
    }

    void anUnknownFormatIsKeptAndTold()
    {
        const ProfileFolder folder(cartridgeImage(4096));
        folder.addPart("t.csv", "path,address,format,width,height\nx,1,rgba16,1,1\n");
        const CommandCall in = folder.call("table import", {folder.path("t.csv")});
        QCOMPARE(in.status, 0);
        QVERIFY(in.err.contains("line 2: \"rgba16\" is no format of textures; it is kept as it is written"));
        QVERIFY(fileBytes(folder.fileListPath()).contains("format=\"rgba16\""));
    }

    void wrongUsageIsTold_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QStringList>("more");
        QTest::addColumn<QString>("error");
        QTest::newRow("no format") << "table export" << QStringList {"-o", "t.txt"}
                                   << "Say which format it is: --as csv or json or zapd or splat";
        QTest::newRow("wrong format") << "table export" << QStringList {"-o", "t.csv", "--as", "xls"} << "--as takes csv or json";
        QTest::newRow("nowhere") << "table export" << QStringList {"--as", "csv"} << "Say where to write: --output FILE";
        QTest::newRow("no file") << "table import" << QStringList {} << "Too few arguments: it takes IMAGE FILE";
        QTest::newRow("wrong base") << "table import" << QStringList {"t.csv", "--base", "x"} << "--base takes a number";
    }
    void wrongUsageIsTold()
    {
        QFETCH(const QString, command);
        QFETCH(const QStringList, more);
        QFETCH(const QString, error);
        const ProfileFolder folder(cartridgeImage(4096));
        folder.addProfile(content());
        const CommandCall result = folder.call(command, more);
        QCOMPARE(result.status, 2);
        QVERIFY2(result.err.contains(error), qPrintable(result.err));
    }

    void aTableThatIsTooLargeIsNotRead()
    {
        const ProfileFolder folder(cartridgeImage(4096));
        QFile file(folder.path("t.csv"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(64 * 1024 * 1024 + 1));
        const CommandCall in = folder.call("table import", {folder.path("t.csv")});
        QCOMPARE(in.status, 1);
        QVERIFY2(in.err.contains("It is larger than 64 MiB"), qPrintable(in.err));
    }
};
}

QTEST_GUILESS_MAIN(ExchangeTest)
#include "tst_cli_exchange.moc"
