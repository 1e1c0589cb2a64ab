// SPDX-License-Identifier: MIT
#include "profilefolder.h"

#include "support/images.h"
#include "support/revisions.h"

#include <QJsonArray>

namespace
{
class PortCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QRandomGenerator random(1);
        m_old = cartridgeImage(0x1000) + revisions::noise(&random, 0x7000);
        m_new = m_old;
        m_new.insert(0x3000, revisions::noise(&random, 0x800));
        m_new.replace(0x2100, 0x20, QByteArray(0x20, 'x'));
        m_new[63] = 1;
        m_folder.reset(new ProfileFolder(m_old));
        m_folder->addPart("new.z64", m_new);
        m_folder->addProfile(
            "<directory name=\"D\" address=\"0x4000\" size=\"0x1000\">"
            "<texture name=\"moved\" address=\"0x100\" format=\"i8\" width=\"16\" height=\"16\"/>"
            "<texture name=\"coloured\" address=\"0x300\" format=\"ci4\" width=\"16\" height=\"16\" palette=\"0x200\"/>"
            "</directory>"
            "<texture name=\"same\" address=\"0x1800\" format=\"i8\" width=\"16\" height=\"16\"/>"
            "<texture name=\"changed\" address=\"0x2000\" format=\"i8\" width=\"32\" height=\"16\"/>"
            "<texture name=\"behind\" address=\"0x2800\" format=\"i8\" width=\"32\" height=\"16\"/>");
    }

    void writesTheNewProfile()
    {
        const CommandCall ported = port({});
        QVERIFY2(ported.status == 0, qPrintable(ported.err));
        QCOMPARE(ported.out,
                 "changed    0x00002000  0x00002000  Root/changed\n"
                 "5 textures: 2 same, 2 moved, 0 ambiguous, 1 changed (placed by neighbours), 0 missing\n"
                 "Wrote "
                     + newList() + ".\n");
        const QByteArray list = fileBytes(newList());
        QVERIFY(list.contains("<directory name=\"D\" address=\"0x00004800\" size=\"0x00001000\">"));
        QVERIFY(list.contains("name=\"moved\" address=\"0x00000100\""));
        QVERIFY(list.contains(
            "name=\"coloured\" address=\"0x00000300\" format=\"ci4\" width=\"16\" height=\"16\" palette=\"0x00000200\""));
        QVERIFY(list.contains("name=\"same\" address=\"0x00001800\""));
        QVERIFY(list.contains("name=\"changed\" address=\"0x00002000\""));
    }

    void json()
    {
        const QJsonObject json = port({"--json"}).json();
        QCOMPARE(json["from"].toObject()["identifier"].toString(), QString("NQLE0"));
        QCOMPARE(json["to"].toObject()["identifier"].toString(), QString("NQLE1"));
        QCOMPARE(json["to"].toObject()["profile"].toString(), QString("default"));
        QCOMPARE(json["counts"].toObject()["moved"].toInt(), 2);
        QCOMPARE(json["textures"].toArray().size(), 5);
        QJsonObject coloured;
        for (const QJsonValue &texture : json["textures"].toArray()) {
            if (texture["path"].toString() == "Root/D/coloured")
                coloured = texture.toObject();
        }
        QCOMPARE(coloured["state"].toString(), QString("moved"));
        QCOMPARE(coloured["oldAddress"].toInt(), 0x4300);
        QCOMPARE(coloured["address"].toInt(), 0x4B00);
        QCOMPARE(coloured["oldPaletteAddress"].toInt(), 0x4200);
        QCOMPARE(coloured["paletteAddress"].toInt(), 0x4A00);
        QCOMPARE(coloured["paletteState"].toString(), QString("moved"));
    }

    void missingOnesAreLeftOut()
    {
        m_new.remove(0x2000, 0x600); // most of "changed", and what follows it
        m_folder->addPart("new.z64", m_new);
        const CommandCall ported = port({});
        QCOMPARE(ported.status, 1);
        QVERIFY2(ported.out.contains("missing    0x00002000  -           Root/changed\n"), qPrintable(ported.out));
        QVERIFY(ported.err.contains("1 texture"));
        QVERIFY(!fileBytes(newList()).contains("\"changed\""));
        QVERIFY(fileBytes(newList()).contains("\"behind\""));
    }

    void profilesAreChosen()
    {
        m_folder->addProfile("<texture name=\"other\" address=\"0x1900\" format=\"i8\" width=\"16\" height=\"16\"/>", "mine");
        const CommandCall ported = port({"--profile", "mine", "--to-profile", "theirs"});
        QCOMPARE(ported.status, 0);
        QVERIFY(fileBytes(m_folder->profiles() + "/NQLE1/theirs/fileList.xml").contains("\"other\""));
        QVERIFY(!QFile::exists(newList()));
    }

    void existingListsAreKept()
    {
        port({});
        const QByteArray list = fileBytes(newList());
        writeFile(newList(), list + "<!-- work -->");
        const CommandCall again = port({});
        QCOMPARE(again.status, 1);
        QVERIFY2(again.err.contains("--overwrite"), qPrintable(again.err));
        QCOMPARE(fileBytes(newList()), list + "<!-- work -->");
        QCOMPARE(port({"--overwrite"}).status, 0);
        QCOMPARE(fileBytes(newList()), list);
    }

    void theSourceIsNeverOverwritten()
    {
        m_new[63] = 0;
        m_folder->addPart("new.z64", m_new);
        const QByteArray list = fileBytes(m_folder->fileListPath());
        const CommandCall ported = port({"--overwrite"});
        QCOMPARE(ported.status, 1);
        QVERIFY2(ported.err.contains("--to-profile"), qPrintable(ported.err));
        QCOMPARE(fileBytes(m_folder->fileListPath()), list);
        QCOMPARE(port({"--to-profile", "1.1"}).status, 0);
        QVERIFY(QFile::exists(m_folder->fileListPath("1.1")));
    }

    void dryRunWritesNothing()
    {
        const CommandCall dry = port({"--dry-run"});
        QCOMPARE(dry.status, 0);
        QVERIFY(dry.out.contains("Would write"));
        QVERIFY(!QFile::exists(newList()));
    }

    void whatCannotBeReadIsNamed()
    {
        const CommandCall missing =
            ::call({"port", "--profiles", m_folder->profiles(), m_folder->imagePath(), m_folder->path("none.z64")});
        QCOMPARE(missing.status, 1);
        QVERIFY(missing.err.contains("none.z64"));
        QVERIFY(port({"--profile", "none"}).err.contains("There is no profile \"none\""));
        QVERIFY(port({"--to-profile", "../x"}).err.contains("cannot name a profile"));
        QCOMPARE(::call({"port", m_folder->imagePath()}).status, 2);
    }

private:
    CommandCall port(const QStringList &more) const
    {
        return m_folder->call("port", QStringList {m_folder->path("new.z64")} + more);
    }
    QString newList() const { return m_folder->profiles() + "/NQLE1/default/fileList.xml"; }

    QByteArray m_old;
    QByteArray m_new;
    QScopedPointer<ProfileFolder> m_folder;
};
}

QTEST_GUILESS_MAIN(PortCommandTest)
#include "tst_cli_port.moc"
