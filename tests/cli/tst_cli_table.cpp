// SPDX-License-Identifier: MIT
// The commands that edit the table and the profiles: add, set, move, remove, profile.
#include "profilefolder.h"

#include "support/images.h"

#include <QJsonArray>

namespace
{
const char *const table =
    "<directory name=\"Town\" address=\"0x00000100\" size=\"0x00000400\">"
    "<directory name=\"Inner\" address=\"0x00000040\" size=\"0x00000100\">"
    "<texture name=\"Stone\" address=\"0x00000010\" format=\"ci4\" width=\"16\" height=\"8\" palette=\"0x00000020\"/>"
    "</directory>"
    "<texture name=\"Sky\" address=\"0x00000010\" format=\"rgba32\" width=\"8\" height=\"4\"/>"
    "</directory>"
    "<directory name=\"Wood\" address=\"0x00000800\" size=\"0x00000400\"></directory>"
    "<texture name=\"Sky\" address=\"0x00000900\" format=\"i8\" width=\"2\" height=\"2\"/>";

class TableCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder.reset(new ProfileFolder(cartridgeImage(4096)));
        m_folder->addProfile(table);
    }

    void addsAnEntry()
    {
        const CommandCall added = call("add",
                                       {"Root/Town/Inner/Leaf", "--address", "0x200", "--format", "ci8", "--width", "4",
                                        "--height", "2", "--palette", "0x300"});
        QCOMPARE(added.status, 0);
        QVERIFY(added.out.contains("Added Root/Town/Inner/Leaf at 0x00000200\n"));
        QVERIFY(list().contains("<texture name=\"Leaf\" address=\"0x000000C0\" format=\"ci8\" width=\"4\" height=\"2\" "
                                "palette=\"0x000002C0\"/>"));
    }

    void addsWithTheDefaultsOfTheWindow()
    {
        const QJsonObject document = call("add", {"New", "--json"}).json();
        const QJsonObject added = document["changed"].toArray().at(0).toObject();
        QCOMPARE(document["profile"].toString(), QString("default"));
        QCOMPARE(added["path"].toString(), QString("Root/New"));
        QCOMPARE(added["format"].toString(), QString("rgba32"));
        QCOMPARE(added["width"].toInt(), 32);
        QCOMPARE(added["height"].toInt(), 32);
        QCOMPARE(added["offset"].toInt(), 0);
        QVERIFY(added["paletteOffset"].isNull());
    }

    void addsAFolderAndCutsIt()
    {
        QCOMPARE(call("add", {"Root/Town/Hall/", "--offset", "0x20", "--size", "0x10"}).status, 0);
        QVERIFY(list().contains("<directory name=\"Hall\" address=\"0x00000020\" size=\"0x00000010\"/>"));
        QCOMPARE(call("add", {"Root/Rest/", "--address", "0xC00"}).status, 0);
        QVERIFY(list().contains("<directory name=\"Rest\" address=\"0x00000C00\" size=\"0x00000400\"/>"));
        QCOMPARE(call("add", {"Root/Rest/In it"}).status, 0);
    }

    void takenNamesAreNumbered()
    {
        QCOMPARE(call("add", {"Root/Sky", "--json"}).json()["changed"].toArray().at(0).toObject()["path"].toString(),
                 QString("Root/Sky (2)"));
        QCOMPARE(
            call("move", {"Root/Town/Sky", "Root", "--json"}).json()["changed"].toArray().at(0).toObject()["path"].toString(),
            QString("Root/Sky (3)"));
        QCOMPARE(call("set", {"Root/Town", "--name", "Wood"}).status, 0);
        QVERIFY(list().contains("directory name=\"Wood (2)\""));
    }

    void addMakesAMissingProfile()
    {
        QCOMPARE(call("add", {"Root/One", "--profile", "fresh"}).status, 0);
        QVERIFY(fileBytes(m_folder->fileListPath("fresh")).contains("name=\"One\""));
    }

    void setsWhatIsGivenAndNothingElse()
    {
        QCOMPARE(call("set", {"Root/Town/Inner/Stone", "--width", "8"}).status, 0);
        QVERIFY(list().contains(
            "name=\"Stone\" address=\"0x00000010\" format=\"ci4\" width=\"8\" height=\"8\" palette=\"0x00000020\""));
        QCOMPARE(call("set", {"town/inner/stone", "--palette", "0x80", "--address", "0x160", "--height", "4", "--format", "ci8"})
                     .status,
                 0);
        QVERIFY(list().contains(
            "name=\"Stone\" address=\"0x00000020\" format=\"ci8\" width=\"8\" height=\"4\" palette=\"0x00000040\""));
        QCOMPARE(call("set", {"Root/Town/Inner/Stone", "--palette-offset", "2", "--offset", "1"}).status, 0);
        QVERIFY(list().contains(
            "name=\"Stone\" address=\"0x00000001\" format=\"ci8\" width=\"8\" height=\"4\" palette=\"0x00000002\""));
    }

    void addressesNameEntriesAndFolders()
    {
        QCOMPARE(call("set", {"0x150", "--name", "Rock"}).status, 0);
        QVERIFY(list().contains("name=\"Rock\" address=\"0x00000010\" format=\"ci4\""));
        QCOMPARE(call("set", {"0x800/", "--name", "Forest"}).status, 0);
        QVERIFY(list().contains("directory name=\"Forest\""));
        call("add", {"Root/Twin", "--address", "0x150"});
        const CommandCall two = call("set", {"0x150", "--name", "x"});
        QCOMPARE(two.status, 1);
        QVERIFY(two.err.contains("There are 2 at 0x150"));
        QVERIFY(call("set", {"0x151", "--name", "x"}).err.contains("no entry at 0x151"));
    }

    void folderMovesItsContents()
    {
        const CommandCall moved = call("set", {"Root/Town/Inner", "--offset", "0x80"});
        QCOMPARE(moved.status, 0);
        QVERIFY(moved.err.contains("Palettes count from"));
        QCOMPARE(addressOf("Root/Town/Inner/Stone"), 0x190);
    }

    void folderKeepsItsContentsAsInTheWindow()
    {
        QCOMPARE(call("set", {"Root/Town", "--address", "0x120", "--fixed-content"}).status, 0);
        QCOMPARE(addressOf("Root/Town/Sky"), 0x110);
        QCOMPARE(addressOf("Root/Town/Inner/Stone"), 0x150);
        QVERIFY(list().contains("directory name=\"Inner\" address=\"0x00000020\""));
    }

    void moveKeepsAddresses()
    {
        QCOMPARE(call("move", {"Root/Town/Inner/Stone", "Root/Wood"}).status, 0);
        QVERIFY(list().contains(
            "name=\"Stone\" address=\"0xFFFFF950\" format=\"ci4\" width=\"16\" height=\"8\" palette=\"0xFFFFF860\""));
        QCOMPARE(addressOf("Root/Wood/Stone"), 0x150);
        QCOMPARE(paletteOf("Root/Wood/Stone"), 0x60);
    }

    void moveOfAFolderKeepsAddressesAndPalettes()
    {
        QCOMPARE(call("move", {"Root/Town/Inner", "Root"}).status, 0);
        QCOMPARE(addressOf("Root/Inner/Stone"), 0x150);
        QCOMPARE(paletteOf("Root/Inner/Stone"), 0x60);
    }

    void moveCanKeepOffsets()
    {
        QCOMPARE(call("move", {"Root/Town/Inner/Stone", "Root/Town/Sky", "Root/Wood/", "--keep-offsets"}).status, 0);
        QCOMPARE(addressOf("Root/Wood/Stone"), 0x810);
        QCOMPARE(paletteOf("Root/Wood/Stone"), 0x820);
        QCOMPARE(addressOf("Root/Wood/Sky"), 0x810);
    }

    void removesEntriesAndFolders()
    {
        const CommandCall full = call("remove", {"Root/Sky", "Root/Town"});
        QCOMPARE(full.status, 1);
        QVERIFY(full.err.contains("--recursive"));
        QCOMPARE(count("texture"), 3);
        const QJsonObject removed =
            call("remove", {"Root/Sky", "Root/Town/", "Root/Town/Sky", "Root/Sky", "--recursive", "--json"}).json();
        QCOMPARE(removed["removed"].toArray().size(), 3);
        QCOMPARE(count("texture"), 0);
        QCOMPARE(call("remove", {"Root/Wood"}).status, 0);
        QCOMPARE(count("directory"), 0);
    }

    void dryRunsWriteNothing()
    {
        const QByteArray before = fileBytes(m_folder->fileListPath());
        for (const QStringList &arguments : {QStringList {"add", "Root/x"},
                                             {"set", "Root/Sky", "--width", "1"},
                                             {"move", "Root/Sky", "Root/Wood"},
                                             {"remove", "Root/Sky"}}) {
            const CommandCall dry = call(arguments.first(), arguments.mid(1) << "--dry-run");
            QCOMPARE(dry.status, 0);
            QVERIFY2(dry.out.startsWith("Would "), qPrintable(dry.out));
            QVERIFY(!call(arguments.first(),
                          arguments.mid(1) << "--dry-run"
                                           << "--json")
                         .json()
                         .isEmpty());
        }
        QCOMPARE(fileBytes(m_folder->fileListPath()), before);
    }

    void refusesWhatMakesNoSense_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");
        QTest::newRow("no folder") << QStringList {"add", "Root/Nowhere/x"} << 1 << "Root/Nowhere";
        QTest::newRow("no name") << QStringList {"add", "/"} << 2 << "the name";
        QTest::newRow("two addresses") << QStringList {"add", "x", "--address", "1", "--offset", "1"} << 2 << "exclude";
        QTest::newRow("two palettes") << QStringList {"set", "x", "--palette", "1", "--palette-offset", "1"} << 2 << "exclude";
        QTest::newRow("no width") << QStringList {"add", "x", "--width", "0"} << 2 << "from 1";
        QTest::newRow("palette without use") << QStringList {"add", "x", "--palette", "1"} << 1 << "no palette";
        QTest::newRow("size of an entry") << QStringList {"add", "x", "--size", "1"} << 1 << "belongs to folders";
        QTest::newRow("format of a folder") << QStringList {"add", "x/", "--format", "i8"} << 1 << "belongs to entries";
        QTest::newRow("folder outside") << QStringList {"add", "x/", "--address", "0x1000"} << 1 << "outside the image";
        QTest::newRow("nothing to set") << QStringList {"set", "Root/Sky"} << 2 << "what to change";
        QTest::newRow("the root") << QStringList {"set", "Root", "--name", "x"} << 1 << "root";
        QTest::newRow("fixed content of nothing")
            << QStringList {"set", "Root/Town", "--name", "x", "--fixed-content"} << 2 << "--fixed-content";
        QTest::newRow("set of nothing") << QStringList {"set", "Root/None", "--name", "x"} << 1 << "Root/None";
        QTest::newRow("into itself") << QStringList {"move", "Root/Town", "Root/Town/Inner"} << 1 << "into itself";
        QTest::newRow("move of the root") << QStringList {"move", "Root", "Root/Town"} << 1 << "root";
        QTest::newRow("move to an entry") << QStringList {"move", "Root/Town", "Root/Sky"} << 1 << "no folder \"Root/Sky\"";
        QTest::newRow("remove of nothing") << QStringList {"remove", "Root/Sky", "Root/None"} << 1 << "Root/None";
    }

    void refusesWhatMakesNoSense()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, message);
        const QByteArray before = fileBytes(m_folder->fileListPath());
        const CommandCall refused = call(arguments.first(), arguments.mid(1));
        QCOMPARE(refused.status, status);
        QVERIFY2(refused.err.contains(message), qPrintable(refused.err));
        QVERIFY(refused.out.isEmpty());
        QCOMPARE(fileBytes(m_folder->fileListPath()), before);
    }

    void profilesAreMadeCopiedAndDeleted()
    {
        QCOMPARE(call("profile new", {"second"}).status, 0);
        QVERIFY(QDir(m_folder->profiles() + "/NQLE0/second").exists());
        QVERIFY(!QFile::exists(m_folder->fileListPath("second")));
        QCOMPARE(call("profile copy", {"default", "third"}).status, 0);
        QCOMPARE(fileBytes(m_folder->fileListPath("third")), fileBytes(m_folder->fileListPath()));
        QCOMPARE(call("profile list", {}).out, QString("default  (loads automatically)\nsecond\nthird\n"));

        QCOMPARE(call("profile autoload", {"third"}).status, 0);
        const QJsonObject document = call("profile list", {"--json"}).json();
        QCOMPARE(document["profiles"].toArray().at(2).toObject()["autoload"].toBool(), true);
        QCOMPARE(document["profiles"].toArray().at(0).toObject()["autoload"].toBool(true), false);
        QCOMPARE(document["profilesFolder"].toString(), m_folder->profiles() + '/');
        QCOMPARE(call("profile delete", {"third"}).status, 1);
        QCOMPARE(call("profile delete", {"default"}).status, 0);
        QVERIFY(!QDir(m_folder->profiles() + "/NQLE0/default").exists());
    }

    void autoloadKeepsTheOtherSetting()
    {
        m_folder->addPart("profiles/NQLE0/settings.xml",
                          "<settings version=\"1\"><autoload>x</autoload><autosave>false</autosave></settings>");
        QCOMPARE(call("profile autoload", {"default"}).status, 0);
        const QByteArray settings = fileBytes(m_folder->path("profiles/NQLE0/settings.xml"));
        QVERIFY(settings.contains("<autoload>default</autoload>") && settings.contains("<autosave>false</autosave>"));
    }

    void profilesFollowTheRulesOfTheWindow_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        for (const char *name : {"", "a/b", "a:b", "a*b", "a?b", "a<b", "a>b", "a|b", "..", "."})
            QTest::newRow(name[0] ? name : "empty") << QStringList {"profile new", name} << "is no name";
        QTest::newRow("taken") << QStringList {"profile new", "default"} << "already";
        QTest::newRow("copy over another") << QStringList {"profile copy", "default", "default"} << "already";
        QTest::newRow("copy of nothing") << QStringList {"profile copy", "none", "x"} << "\"none\"";
        QTest::newRow("delete nothing") << QStringList {"profile delete", "none"} << "\"none\"";
        QTest::newRow("delete outside") << QStringList {"profile delete", ".."} << "\"..\"";
        QTest::newRow("delete the automatic one") << QStringList {"profile delete", "default"} << "automatically";
        QTest::newRow("load nothing") << QStringList {"profile autoload", "none"} << "\"none\"";
    }

    void profilesFollowTheRulesOfTheWindow()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const CommandCall refused = call(arguments.first(), arguments.mid(1));
        QCOMPARE(refused.status, 1);
        QVERIFY2(refused.err.contains(message), qPrintable(refused.err));
        QCOMPARE(QDir(m_folder->profiles() + "/NQLE0").entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList {"default"});
    }

    void profileDryRunsWriteNothing()
    {
        m_folder->addProfile("", "second");
        for (const QStringList &arguments : {QStringList {"profile new", "x"},
                                             {"profile copy", "default", "x"},
                                             {"profile delete", "second"},
                                             {"profile autoload", "second"}}) {
            QVERIFY(call(arguments.first(), arguments.mid(1) << "--dry-run").out.startsWith("Would "));
            QCOMPARE(call(arguments.first(),
                          arguments.mid(1) << "--dry-run"
                                           << "--json")
                         .json()["dryRun"]
                         .toBool(),
                     true);
        }
        QCOMPARE(QDir(m_folder->profiles() + "/NQLE0").entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList({"default", "second"}));
    }

private:
    /// Calls \a command, whose name may have two words, with the image as its first positional argument.
    CommandCall call(const QString &command, const QStringList &more) const
    {
        return ::call(command.split(' ') << "--profiles" << m_folder->profiles() << m_folder->imagePath() << more);
    }
    QByteArray list() const { return fileBytes(m_folder->fileListPath()); }
    int count(const QByteArray &element) const { return list().count('<' + element + ' '); }
    QJsonObject entry(const QString &path) const
    {
        return call("list", {path, "--json"}).json()["textures"].toArray().at(0).toObject();
    }
    int addressOf(const QString &path) const { return entry(path)["address"].toInt(-1); }
    int paletteOf(const QString &path) const { return entry(path)["paletteAddress"].toInt(-1); }

    QScopedPointer<ProfileFolder> m_folder;
};
}

QTEST_GUILESS_MAIN(TableCommandsTest)
#include "tst_cli_table.moc"
