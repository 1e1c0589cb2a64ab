// SPDX-License-Identifier: MIT
// Comparing two images through the command line.
#include "profilefolder.h"

#include "support/images.h"

#include <QJsonArray>

namespace
{
const char *const table = "<directory name=\"Town\" address=\"0x1000\" size=\"0x1000\">"
                          "<texture name=\"Sign\" address=\"0x10\" format=\"rgba32\" width=\"2\" height=\"2\"/>"
                          "<texture name=\"Tile\" address=\"0x40\" format=\"ci4\" width=\"4\" height=\"1\" palette=\"0x80\"/>"
                          "</directory>";
}

class DiffCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void sameImages();
    void listsEntriesAndTheRest();
    void byteOrdersDoNotMatter();
    void printsJson();
    void writesAGallery();
    void needsNoProfile();
    void warnsOfAnotherCartridge();
    void exitCodeOnRequest();
    void namesWhatFails();

private:
    QString path(const QString &name) const { return m_folder->path(name); }
    CommandCall diff(const QStringList &more) const
    {
        return ::call(QStringList {"diff", "--profiles", m_folder->profiles(), m_folder->imagePath()} + more);
    }

    QScopedPointer<ProfileFolder> m_folder;
    QByteArray m_changed;
};

void DiffCommandTest::init()
{
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x1000, 0x1000, QByteArray(0x1000, '\0'));
    m_folder.reset(new ProfileFolder(image));
    m_folder->addProfile(table);
    m_changed = image;
    m_changed[0x1012] = 1;
    m_changed[0x1083] = 1;
    m_changed[0x1800] = 1;
    m_changed[0x1803] = 1;
    writeFile(path("new.z64"), m_changed);
}

void DiffCommandTest::sameImages()
{
    const CommandCall same = diff({m_folder->imagePath()});
    QCOMPARE(same.status, 0);
    QCOMPARE(same.out, QStringLiteral("0 bytes changed, 0 entries, 0 bytes outside all entries\n"));
    QVERIFY(same.err.isEmpty());
}

void DiffCommandTest::listsEntriesAndTheRest()
{
    const CommandCall listed = diff({path("new.z64")});
    QCOMPARE(listed.status, 0);
    QCOMPARE(listed.out,
             QStringLiteral("Root/Town/Sign: 1 byte\n"
                            "Root/Town/Tile: palette 1 byte\n"
                            "Outside: 0x00001800 to 0x00001803, 2 bytes\n"
                            "4 bytes changed, 2 entries, 2 bytes outside all entries\n"));
    QVERIFY2(listed.err.isEmpty(), qPrintable(listed.err));
    writeFile(path("long.z64"), m_changed + "more");
    QVERIFY(diff({path("long.z64")}).out.contains("The sizes differ: 16384 and 16388 bytes\n"));
}

void DiffCommandTest::byteOrdersDoNotMatter()
{
    writeFile(path("new.v64"), withReversedUnits(m_changed, 2));
    QCOMPARE(diff({path("new.v64")}).out, diff({path("new.z64")}).out);
}

void DiffCommandTest::printsJson()
{
    const QJsonObject document = diff({path("new.z64"), "--json"}).json();
    QCOMPARE(document["old"].toString(), m_folder->imagePath());
    QCOMPARE(document["new"].toString(), path("new.z64"));
    QCOMPARE(document["oldSize"].toInt(), 0x4000);
    QCOMPARE(document["newSize"].toInt(), 0x4000);
    QCOMPARE(document["identifier"].toString(), QString("NQLE0"));
    QCOMPARE(document["profile"].toString(), QString("default"));
    QCOMPARE(document["changedBytes"].toInt(), 4);
    QCOMPARE(document["outsideBytes"].toInt(), 2);
    QCOMPARE(document["outsideRanges"].toInt(), 1);
    QCOMPARE(document["entries"].toArray(),
             QJsonArray({QJsonObject {{"path", "Root/Town/Sign"},
                                      {"address", 0x1010},
                                      {"format", "rgba32"},
                                      {"changedBytes", 1},
                                      {"changedPaletteBytes", 0}},
                         QJsonObject {{"path", "Root/Town/Tile"},
                                      {"address", 0x1040},
                                      {"format", "ci4"},
                                      {"changedBytes", 0},
                                      {"changedPaletteBytes", 1}}}));
    QCOMPARE(document["outside"].toArray(), QJsonArray({QJsonObject {{"begin", 0x1800}, {"end", 0x1804}, {"changedBytes", 2}}}));
}

void DiffCommandTest::writesAGallery()
{
    QCOMPARE(diff({path("new.z64"), "--gallery", path("pages/changes.html")}).status, 0);
    const QByteArray page = fileBytes(path("pages/changes.html"));
    QCOMPARE(page.count("<figcaption>before"), 2);
    QCOMPARE(page.count("<figcaption>after"), 2);
    QVERIFY(page.contains("Sign") && page.contains("Tile"));
    for (const QString &target : {QString(), QStringLiteral("-"), m_folder->imagePath(), path("new.z64")}) {
        const CommandCall refused = diff({path("new.z64"), "--gallery", target});
        QCOMPARE(refused.status, 2);
        QVERIFY(refused.err.contains("--gallery"));
    }
    QCOMPARE(fileBytes(path("new.z64")), m_changed);
}

void DiffCommandTest::needsNoProfile()
{
    const CommandCall without = ::call({"diff", "--profiles", path("none"), m_folder->imagePath(), path("new.z64")});
    QCOMPARE(without.status, 0);
    QVERIFY(without.out.contains("Outside: 0x00001012 to 0x00001012, 1 byte\n"));
    QCOMPARE(diff({path("new.z64"), "--profile", "absent"}).status, 1);
}

void DiffCommandTest::warnsOfAnotherCartridge()
{
    m_changed.replace(0x3B, 4, "NXXP");
    writeFile(path("other.z64"), m_changed);
    const CommandCall other = diff({path("other.z64")});
    QCOMPARE(other.status, 0);
    QVERIFY2(other.err.contains("warning: ") && other.err.contains("NXXP0"), qPrintable(other.err));
}

void DiffCommandTest::exitCodeOnRequest()
{
    QCOMPARE(diff({path("new.z64"), "--exit-code"}).status, 1);
    QCOMPARE(diff({m_folder->imagePath(), "--exit-code"}).status, 0);
}

void DiffCommandTest::namesWhatFails()
{
    const CommandCall absent = diff({path("absent.z64")});
    QCOMPARE(absent.status, 1);
    QVERIFY(absent.err.contains("absent.z64"));
    QCOMPARE(diff({}).status, 2);
    writeFile(path("file"), "x");
    const CommandCall unwritable = diff({path("new.z64"), "--gallery", path("file/page.html")});
    QCOMPARE(unwritable.status, 1);
    QVERIFY(unwritable.out.isEmpty());
}

QTEST_GUILESS_MAIN(DiffCommandTest)
#include "tst_cli_diff.moc"
