// SPDX-License-Identifier: MIT
#include "profilefolder.h"

#include "support/images.h"

#include <QJsonArray>

namespace
{
const char *const table = "<directory name=\"Town\" address=\"0x00000100\" size=\"0x00000400\">"
                          "<directory name=\"Inner\" address=\"0x40\" size=\"0x100\">"
                          "<texture name=\"Stone\" address=\"0x10\" format=\"ci4\" width=\"16\" height=\"8\" palette=\"0x20\"/>"
                          "</directory>"
                          "<texture name=\"Sky\" address=\"0x00000010\" format=\"rgba32\" width=\"8\" height=\"4\"/>"
                          "</directory>"
                          "<texture name=\"Photo\" address=\"0x00000800\" format=\"jpeg\"/>";

class ListCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder.reset(new ProfileFolder(cartridgeImage(4096)));
        m_folder->addProfile(table);
    }

    void listsEveryNode()
    {
        const CommandCall list = m_folder->call("list");
        QCOMPARE(list.status, 0);
        QVERIFY(list.err.isEmpty());
        QCOMPARE(list.out,
                 QString("Address           Size  Format    Dimensions   Palette     Path\n"
                         "0x00000000        4096  folder    -            -           Root/\n"
                         "0x00000800           -  jpeg      -            -           Root/Photo\n"
                         "0x00000100        1024  folder    -            -           Root/Town/\n"
                         "0x00000110         128  rgba32    8x4          -           Root/Town/Sky\n"
                         "0x00000140         256  folder    -            -           Root/Town/Inner/\n"
                         "0x00000150          64  ci4       16x8         0x00000060  Root/Town/Inner/Stone\n"));
    }

    void aPathLimitsIt()
    {
        QCOMPARE(m_folder->call("list", {"Root/Town/Inner"}).out.count('\n'), 3);
        const CommandCall one = m_folder->call("list", {"town/sky"});
        QCOMPARE(one.out.count('\n'), 2);
        QVERIFY(one.out.endsWith("Root/Town/Sky\n"));
    }

    void aPathThatNamesNothingIsNamed()
    {
        const CommandCall none = m_folder->call("list", {"Root/Twon"});
        QCOMPARE(none.status, 1);
        QVERIFY(none.err.contains("Root/Twon"));
        QVERIFY(none.out.isEmpty());
    }

    void json()
    {
        const QJsonObject document = m_folder->call("list", {"--json"}).json();
        QCOMPARE(document["identifier"].toString(), QString("NQLE0"));
        QCOMPARE(document["profile"].toString(), QString("default"));
        QCOMPARE(document["folders"].toArray().size(), 3);
        const QJsonArray textures = document["textures"].toArray();
        QCOMPARE(textures.size(), 3);
        const QJsonObject stone = textures.at(2).toObject();
        QCOMPARE(stone["path"].toString(), QString("Root/Town/Inner/Stone"));
        QCOMPARE(stone["address"].toInt(), 0x150);
        QCOMPARE(stone["size"].toInt(), 64);
        QCOMPARE(stone["format"].toString(), QString("ci4"));
        QCOMPARE(stone["width"].toInt(), 16);
        QCOMPARE(stone["height"].toInt(), 8);
        QCOMPARE(stone["paletteAddress"].toInt(), 0x60);
        QCOMPARE(stone["offset"].toInt(), 0x10);
        QCOMPARE(stone["paletteOffset"].toInt(), 0x20);
        QVERIFY(textures.at(1).toObject()["paletteAddress"].isNull());
        QVERIFY(textures.at(0).toObject()["width"].isNull());
        QVERIFY(textures.at(0).toObject()["size"].isNull());
        QCOMPARE(document["folders"].toArray().at(1).toObject()["path"].toString(), QString("Root/Town/"));
        QCOMPARE(document["folders"].toArray().at(1).toObject()["size"].toInt(), 0x400);
    }

    void profilesAreChosen()
    {
        m_folder->addProfile("<texture name=\"Other\"/>", "second one");
        QVERIFY(m_folder->call("list", {"--profile", "second one"}).out.contains("Root/Other\n"));
        QVERIFY(!m_folder->call("list").out.contains("Root/Other\n"));
        m_folder->addPart("profiles/NQLE0/settings.xml",
                          "<settings version=\"1\"><autoload>second one</autoload><autosave>true</autosave></settings>");
        QVERIFY(m_folder->call("list").out.contains("Root/Other\n"));
        QVERIFY(m_folder->call("list", {"--profile", "default"}).out.contains("Root/Photo\n"));
    }

    void missingProfileIsNamedAndNothingIsMade()
    {
        const CommandCall none = m_folder->call("list", {"--profile", "missing"});
        QCOMPARE(none.status, 1);
        QVERIFY(none.err.contains("\"missing\""));
        QVERIFY(!QDir(m_folder->profiles() + "/NQLE0/missing").exists());
        QVERIFY(!QFile::exists(m_folder->profiles() + "/NQLE0/settings.xml"));

        QDir().mkpath(m_folder->profiles() + "/NQLE0/empty");
        const CommandCall empty = m_folder->call("verify", {"--profile", "empty"});
        QCOMPARE(empty.status, 1);
        QVERIFY(empty.err.contains("fileList.xml"));
    }

    void imageWithoutProfileHasAnEmptyTable()
    {
        const ProfileFolder folder(cartridgeImage(4096));
        const CommandCall list = folder.call("list");
        QCOMPARE(list.status, 0);
        QVERIFY(list.err.isEmpty());
        QVERIFY(list.out.endsWith("0x00000000        4096  folder    -            -           Root/\n"));
        QVERIFY(folder.call("list", {"--json"}).json()["textures"].toArray().isEmpty());
        QVERIFY(!QDir(folder.profiles()).exists());
        QDir().mkpath(m_folder->profiles() + "/NQLE0/empty");
        QCOMPARE(m_folder->call("list", {"--profile", "empty"}).status, 0);
    }

    void infoTellsOfASharedIdentifier()
    {
        const ProfileFolder folder(cartridgeImage(4096, QByteArray(4, '\0'), 3));
        QVERIFY(folder.call("info").out.contains("3 (the header names no game"));
        QCOMPARE(folder.call("info", {"--json"}).json()["identifierShared"].toBool(), true);
        QVERIFY(!m_folder->call("info").out.contains("names no game"));
        QCOMPARE(m_folder->call("info", {"--json"}).json()["identifierShared"].toBool(true), false);
    }

    void profileNamesStayInTheirFolder()
    {
        m_folder->addPart("fileList.xml", "<root version=\"2\"><texture name=\"Secret\"/></root>");
        for (const QString &name : {QString("../.."), QString(".."), QString("."), QString(""), QString("a/b")}) {
            const CommandCall refused = m_folder->call("list", {"--profile", name});
            QCOMPARE(refused.status, 1);
            QVERIFY(refused.out.isEmpty());
            QVERIFY(!refused.err.isEmpty());
        }
    }

    void hostileIdentifierIsRefused()
    {
        const ProfileFolder folder(cartridgeImage(4096, QByteArray("../x"), 0));
        const CommandCall refused = folder.call("list");
        QCOMPARE(refused.status, 1);
        QVERIFY(refused.err.contains("../x0"));
    }

    void malformedListsAreRefused()
    {
        m_folder->addPart("profiles/NQLE0/default/fileList.xml", "<root version=\"2\"><texture name=\"Sky\"/>");
        const CommandCall malformed = m_folder->call("list");
        QCOMPARE(malformed.status, 1);
        QVERIFY(malformed.err.contains("fileList.xml"));
        m_folder->addPart("profiles/NQLE0/settings.xml", "<settings>");
        QVERIFY(m_folder->call("list").err.contains("settings.xml"));
    }

    void hostileNamesStayOffTheTerminal()
    {
        m_folder->addProfile("<texture name=\"a&#10;b\xC2\x9B&#9;c\"/>");
        const CommandCall list = m_folder->call("list");
        QCOMPARE(list.out.count('\n'), 3);
        QVERIFY(list.out.contains("Root/a\uFFFDb\uFFFD\uFFFDc\n"));
        QCOMPARE(m_folder->call("list", {"--json"}).json()["textures"].toArray().at(0).toObject()["path"].toString(),
                 QString("Root/a\nb\u009B\tc"));
    }

    void infoCountsTheProfiles()
    {
        m_folder->addProfile("<texture name=\"Other\"/>", "second");
        const CommandCall info = m_folder->call("info");
        QCOMPARE(info.status, 0);
        QVERIFY2(info.out.contains("default: 2 folders, 3 textures, loads automatically\n"), qPrintable(info.out));
        QVERIFY(info.out.contains("second: 0 folders, 1 texture\n"));
        const QJsonArray profiles = m_folder->call("info", {"--json"}).json()["profiles"].toArray();
        QCOMPARE(profiles.size(), 2);
        QCOMPARE(profiles.at(0).toObject()["textures"].toInt(), 3);
        QCOMPARE(profiles.at(0).toObject()["autoload"].toBool(), true);
        QCOMPARE(profiles.at(1).toObject()["autoload"].toBool(true), false);

        m_folder->addPart("profiles/NQLE0/second/fileList.xml", "<root version=\"2\">");
        const CommandCall malformed = m_folder->call("info");
        QCOMPARE(malformed.status, 1);
        QVERIFY(malformed.out.contains("not readable to its end"));
        QVERIFY(malformed.err.contains("second/fileList.xml"));
    }

private:
    QScopedPointer<ProfileFolder> m_folder;
};
}

QTEST_GUILESS_MAIN(ListCommandTest)
#include "tst_cli_list.moc"
