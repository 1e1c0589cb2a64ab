// SPDX-License-Identifier: MIT
#include "persist/profilestore.h"

#include "persist/xmltext.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace
{
const QString cartridge = QStringLiteral("NQLE0");

QByteArray settingsDocument(const QByteArray &autoload, const QByteArray &autosave)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!--The settings version attribute is used by the parser to determine how it should read the data. Do not change it "
           "unless you know what you're doing.-->\n"
           "<settings version=\"1\">\n"
           "\t<autoload>"
        + autoload
        + "</autoload>\n"
          "\t<autosave>"
        + autosave
        + "</autosave>\n"
          "</settings>\n";
}

void makeFile(const QString &path, const QByteArray &content = "x")
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

QStringList entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}
}

class ProfileStoreTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder.reset(new QTemporaryDir);
        QVERIFY(m_folder->isValid());
        m_base = m_folder->path() + QStringLiteral("/profiles/");
    }

    void writesSettings();
    void leavesOutWhatXmlCannotHold();
    void readsSettings_data();
    void readsSettings();
    void malformedSettingsKeepWhatWasRead_data();
    void malformedSettingsKeepWhatWasRead();
    void truncatedAutosaveCountsByItsText_data();
    void truncatedAutosaveCountsByItsText();
    void settingsSurviveARoundTrip_data();
    void settingsSurviveARoundTrip();

    void putsPathsTogether();
    void knowsSafeNames_data();
    void knowsSafeNames();
    void unsafeNamesTouchNothing_data();
    void unsafeNamesTouchNothing();
    void oddIdentifiersHaveProfiles_data();
    void oddIdentifiersHaveProfiles();
    void readsBesideTheProgramWhatTheUserDoesNotHave();
    void namesTheLinkThatLeadsOut();
    void createsFolders();
    void listsProfiles();
    void removesAProfileWhole();
    void removingFollowsNoLinks();
    void removesALinkOnly();
    void removingWhatIsGoneIsDone();
    void storesSettings();
    void readsNoPipes();
    void worksWithoutAFolder();

private:
    QScopedPointer<QTemporaryDir> m_folder;
    QString m_base;
};

void ProfileStoreTest::writesSettings()
{
    QCOMPARE(writeProfileSettings({QStringLiteral("Best & <last>"), false}),
             settingsDocument("Best &amp; &lt;last&gt;", "false"));
    QCOMPARE(writeProfileSettings({QStringLiteral("default"), true}), settingsDocument("default", "true"));
    QCOMPARE(writeProfileSettings({QString(), true}), settingsDocument("default", "true"));
}

void ProfileStoreTest::leavesOutWhatXmlCannotHold()
{
    QCOMPARE(writeProfileSettings({QStringLiteral("a\u0002b") + QChar(0xD800), true}), settingsDocument("ab", "true"));
    QCOMPARE(writeProfileSettings({QStringLiteral("\u0002"), true}), settingsDocument("default", "true"));
}

void ProfileStoreTest::readsSettings_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("autoload");
    QTest::addColumn<bool>("autosave");
    const QString standard = QStringLiteral("default");
    QTest::newRow("written") << settingsDocument("Mine", "false") << QStringLiteral("Mine") << false;
    QTest::newRow("nothing said") << QByteArray("<settings/>") << standard << true;
    QTest::newRow("any version") << QByteArray("<settings version=\"9\"><autosave>false</autosave></settings>") << standard
                                 << false;
    QTest::newRow("any document element") << QByteArray("<x><autoload>A</autoload></x>") << QStringLiteral("A") << true;
    QTest::newRow("deeper") << QByteArray("<settings><more><autoload>A</autoload></more></settings>") << QStringLiteral("A")
                            << true;
    QTest::newRow("empty") << QByteArray("<settings><autoload/></settings>") << QString() << true;
    QTest::newRow("child elements") << QByteArray(
        "<settings><autoload>A<b>no</b>B</autoload><autosave>t<b/>rue</autosave></settings>")
                                    << QStringLiteral("AB") << true;
    QTest::newRow("the last counts") << QByteArray("<s><autoload>A</autoload><autoload>B</autoload></s>") << QStringLiteral("B")
                                     << true;
    QTest::newRow("white space counts") << QByteArray("<s><autoload> A </autoload></s>") << QStringLiteral(" A ") << true;
    for (const char *text : {"True", "TRUE", " true", "true ", "1", "yes", "", "false"}) {
        const QByteArray document = QByteArray("<settings><autosave>") + text + "</autosave></settings>";
        QTest::newRow(qPrintable(QStringLiteral("autosave '%1'").arg(QLatin1String(text)))) << document << standard << false;
    }
}

void ProfileStoreTest::readsSettings()
{
    QFETCH(QByteArray, document);
    QFETCH(QString, autoload);
    QFETCH(bool, autosave);
    ProfileSettings settings {QStringLiteral("before"), !autosave};
    QString error;
    QVERIFY2(readProfileSettings(document, &settings, &error), qPrintable(error));
    QCOMPARE(settings.autoload, autoload);
    QCOMPARE(settings.autosave, autosave);
}

void ProfileStoreTest::malformedSettingsKeepWhatWasRead_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("autoload");
    QByteArray laughs = "<!DOCTYPE s [<!ENTITY l0 \"lolololololololololo\">";
    for (int i = 1; i < 12; ++i) {
        const QByteArray inner = "&l" + QByteArray::number(i - 1) + ";";
        laughs += "<!ENTITY l" + QByteArray::number(i) + " \"" + inner.repeated(10) + "\">";
    }
    laughs += "]><s><autoload>A</autoload><autoload>&l11;</autoload></s>";
    const QString standard = QStringLiteral("default");
    QTest::newRow("empty") << QByteArray() << standard;
    QTest::newRow("rubbish") << QByteArray("\x7F"
                                           "ELF rubbish")
                             << standard;
    QTest::newRow("zeros") << QByteArray(100, '\0') << standard;
    QTest::newRow("cut") << QByteArray("<settings><autoload>A</autoload>") << QStringLiteral("A");
    QTest::newRow("cut in the text") << QByteArray("<settings><autoload>A") << QString();
    QTest::newRow("wrong end") << QByteArray("<settings><autoload>A</autoload></s>") << QStringLiteral("A");
    QByteArray attributes;
    for (int i = 0; i < 60000; ++i)
        attributes += " a" + QByteArray::number(i) + "=''";
    QTest::newRow("attributes that would take for ever")
        << QByteArray("<s" + attributes + "><autoload>A</autoload></s>") << standard;
    QTest::newRow("expanding entities") << laughs << standard;
}

void ProfileStoreTest::malformedSettingsKeepWhatWasRead()
{
    QFETCH(QByteArray, document);
    QFETCH(QString, autoload);
    ProfileSettings settings;
    QString error;
    QVERIFY(!readProfileSettings(document, &settings, &error));
    QVERIFY(!error.isEmpty());
    QCOMPARE(settings.autoload, autoload);
    QVERIFY(settings.autosave);
}

void ProfileStoreTest::truncatedAutosaveCountsByItsText_data()
{
    QTest::addColumn<QByteArray>("end");
    QTest::addColumn<bool>("autosave");
    QTest::newRow("before the element") << QByteArray("<autosav") << true;
    QTest::newRow("no text") << QByteArray("<autosave>") << false;
    QTest::newRow("part of the text") << QByteArray("<autosave>tru") << false;
    QTest::newRow("other text") << QByteArray("<autosave>false</auto") << false;
    QTest::newRow("the text and an end tag that is cut") << QByteArray("<autosave>true</auto") << true;
    QTest::newRow("the text and another end tag") << QByteArray("<autosave>true</settings>") << true;
    // The reader gives text that the end of the document cuts as none at all: more of it may be missing.
    QTest::newRow("the text alone") << QByteArray("<autosave>true") << false;
}

void ProfileStoreTest::truncatedAutosaveCountsByItsText()
{
    QFETCH(const QByteArray, end);
    QFETCH(const bool, autosave);
    ProfileSettings settings {QString(), !autosave};
    QString error;
    QVERIFY(!readProfileSettings("<settings>" + end, &settings, &error));
    QVERIFY(!error.isEmpty());
    QCOMPARE(settings.autosave, autosave);
}

void ProfileStoreTest::settingsSurviveARoundTrip_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("markup") << QStringLiteral("<&>'\"]]>");
    QTest::newRow("white space") << QStringLiteral(" a\tb\nc ");
    QTest::newRow("carriage return") << QStringLiteral("\ra\r\nb\r");
    QTest::newRow("other scripts") << QString::fromUtf8("профиль \xF0\x9F\x98\x80");
}

void ProfileStoreTest::settingsSurviveARoundTrip()
{
    QFETCH(QString, name);
    ProfileSettings settings;
    QString error;
    QVERIFY(readProfileSettings(writeProfileSettings({name, false}), &settings, &error));
    QCOMPARE(settings.autoload, name);
    QVERIFY(!settings.autosave);
}

void ProfileStoreTest::putsPathsTogether()
{
    const ProfileStore store({QStringLiteral("/base/"), QString()}, cartridge);
    QCOMPARE(store.cartridgeFolder(), QStringLiteral("/base/NQLE0"));
    QCOMPARE(store.settingsPath(), QStringLiteral("/base/NQLE0/settings.xml"));
    QCOMPARE(store.profileFolder(QStringLiteral("My one")), QStringLiteral("/base/NQLE0/My one"));
    QCOMPARE(store.fileListPath(QStringLiteral("My one")), QStringLiteral("/base/NQLE0/My one/fileList.xml"));
}

void ProfileStoreTest::knowsSafeNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("safe");
    QTest::newRow("plain") << QStringLiteral("default") << true;
    QTest::newRow("blank") << QStringLiteral(" ") << true;
    QTest::newRow("three dots") << QStringLiteral("...") << true;
    QTest::newRow("dot in front") << QStringLiteral(".hidden") << true;
    QTest::newRow("backslash") << QStringLiteral("..\\x") << true;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("this folder") << QStringLiteral(".") << false;
    QTest::newRow("folder above") << QStringLiteral("..") << false;
    QTest::newRow("up and over") << QStringLiteral("../x") << false;
    QTest::newRow("absolute") << QStringLiteral("/etc") << false;
    QTest::newRow("inside") << QStringLiteral("a/b") << false;
    QTest::newRow("ends in a slash") << QStringLiteral("a/") << false;
    QTest::newRow("zero") << QStringLiteral("a") + QChar(QChar::Null) << false;
}

void ProfileStoreTest::knowsSafeNames()
{
    QFETCH(QString, name);
    QFETCH(bool, safe);
    QCOMPARE(ProfileStore::isSafeName(name), safe);
}

void ProfileStoreTest::unsafeNamesTouchNothing_data()
{
    QTest::addColumn<QString>("romID");
    QTest::addColumn<QString>("profile");
    const QString valid = QStringLiteral("default");
    QTest::newRow("cartridge above") << QStringLiteral("..") << valid;
    QTest::newRow("cartridge elsewhere") << QStringLiteral("../outside") << valid;
    QTest::newRow("cartridge of a path above") << QStringLiteral("a/../../outside") << valid;
    QTest::newRow("absolute cartridge") << QStringLiteral("/outside") << valid;
    QTest::newRow("the profiles folder itself") << QStringLiteral(".") << QStringLiteral("outside");
    QTest::newRow("profile above") << cartridge << QStringLiteral("../../outside");
    QTest::newRow("profile of another cartridge") << cartridge << QStringLiteral("../OTHR1/default");
    QTest::newRow("the cartridge itself") << cartridge << QStringLiteral(".");
    QTest::newRow("profile without a name") << cartridge << QString();
}

void ProfileStoreTest::unsafeNamesTouchNothing()
{
    QFETCH(QString, romID);
    QFETCH(QString, profile);
    const QString outside = m_folder->path() + QStringLiteral("/outside");
    for (const QString &folder : {outside + QStringLiteral("/default"), m_base + QStringLiteral("outside"),
                                  m_base + QStringLiteral("OTHR1/default"), m_base + cartridge}) {
        QVERIFY(QDir().mkpath(folder));
        makeFile(folder + QStringLiteral("/fileList.xml"));
        makeFile(folder + QStringLiteral("/settings.xml"), settingsDocument("Hidden", "false"));
    }
    makeFile(outside + QStringLiteral("/settings.xml"), settingsDocument("Hidden", "false"));
    makeFile(m_base + QStringLiteral("/settings.xml"), settingsDocument("Hidden", "false"));
    makeFile(m_folder->filePath(QStringLiteral("settings.xml")), settingsDocument("Hidden", "false"));

    const ProfileStore store({m_base, QString()}, romID);
    QVERIFY(!store.isSafe(profile));
    QVERIFY(!store.hasProfile(profile));
    QVERIFY(!store.hasFileList(profile));
    QVERIFY(!store.createProfile(profile));
    QVERIFY(!store.removeProfile(profile));
    if (romID != cartridge) {
        ProfileSettings settings;
        QString error;
        QCOMPARE(store.readSettings(&settings, &error), ProfileStore::Reading::NotOpened);
        QCOMPARE(settings.autoload, QStringLiteral("default"));
        QVERIFY(!store.hasSettings());
        QVERIFY(!store.writeSettings({QStringLiteral("Changed"), true}));
        QVERIFY(!store.createCartridgeFolder());
        QCOMPARE(store.profiles(), QStringList());
    }
    QCOMPARE(contentOf(outside + QStringLiteral("/settings.xml")), settingsDocument("Hidden", "false"));
    QCOMPARE(entriesOf(m_folder->path()),
             (QStringList {QStringLiteral("outside"), QStringLiteral("profiles"), QStringLiteral("settings.xml")}));
    QCOMPARE(entriesOf(outside), (QStringList {QStringLiteral("default"), QStringLiteral("settings.xml")}));
    QCOMPARE(entriesOf(m_base + cartridge), (QStringList {QStringLiteral("fileList.xml"), QStringLiteral("settings.xml")}));
    QVERIFY(QFile::exists(m_base + QStringLiteral("OTHR1/default/fileList.xml")));
    QVERIFY(QFile::exists(m_base + QStringLiteral("outside/fileList.xml")));
}

/// A "/" gives nested folders; without an identifier the profiles do not lie beside the folders of other cartridges.
void ProfileStoreTest::oddIdentifiersHaveProfiles_data()
{
    QTest::addColumn<QString>("romID");
    QTest::addColumn<QString>("folder");
    QTest::newRow("nested") << QStringLiteral("A/BC2") << QStringLiteral("A/BC2");
    QTest::newRow("nested twice") << QStringLiteral("A//B/2") << QStringLiteral("A/B/2");
    QTest::newRow("empty") << QString() << QStringLiteral("(no identifier)");
    QTest::newRow("dots in a name") << QStringLiteral("..A2") << QStringLiteral("..A2");
}

void ProfileStoreTest::oddIdentifiersHaveProfiles()
{
    QFETCH(QString, romID);
    QFETCH(QString, folder);
    const ProfileStore store({m_base, QString()}, romID);
    QVERIFY(store.createCartridgeFolder() && store.createProfile(QStringLiteral("default")));
    QCOMPARE(store.profiles(), QStringList {QStringLiteral("default")});
    QVERIFY(store.writeSettings({QStringLiteral("default"), false}) && store.hasSettings());
    QVERIFY(store.isSafe(QStringLiteral("default")));
    makeFile(store.fileListPath(QStringLiteral("default")));
    QVERIFY(store.hasFileList(QStringLiteral("default")));
    QVERIFY(QFile::exists(m_base + folder + QStringLiteral("/default/fileList.xml")));
    QCOMPARE(entriesOf(m_base), QStringList {folder.section(QLatin1Char('/'), 0, 0)});
}

/// Profiles beside the program, which cannot be written, are read; what the user saves goes to the user's own and counts then.
void ProfileStoreTest::readsBesideTheProgramWhatTheUserDoesNotHave()
{
    const QString program = m_folder->filePath(QStringLiteral("program/"));
    const ProfileStore shipped({program, QString()}, cartridge);
    QVERIFY(shipped.createProfile(QStringLiteral("default")) && shipped.createProfile(QStringLiteral("more")));
    QVERIFY(shipped.writeSettings({QStringLiteral("more"), false}));
    makeFile(shipped.fileListPath(QStringLiteral("default")));
    makeFile(shipped.fileListPath(QStringLiteral("more")));

    const ProfileStore store({m_base, program}, cartridge);
    ProfileSettings settings;
    QString error;
    QVERIFY(store.hasSettings());
    QCOMPARE(store.readSettings(&settings, &error), ProfileStore::Reading::Done);
    QCOMPARE(settings.autoload, QStringLiteral("more"));
    QVERIFY(store.hasProfile(QStringLiteral("more")) && store.hasFileList(QStringLiteral("more")));
    QCOMPARE(store.fileListToRead(QStringLiteral("more")), shipped.fileListPath(QStringLiteral("more")));
    QCOMPARE(store.fileListPath(QStringLiteral("more")), m_base + QStringLiteral("NQLE0/more/fileList.xml"));

    QVERIFY(store.createProfile(QStringLiteral("default")) && store.createProfile(QStringLiteral("own")));
    QVERIFY(store.writeSettings({QStringLiteral("default"), true}));
    makeFile(store.fileListPath(QStringLiteral("default")));
    QCOMPARE(store.readSettings(&settings, &error), ProfileStore::Reading::Done);
    QCOMPARE(settings.autoload, QStringLiteral("default"));
    QCOMPARE(store.fileListToRead(QStringLiteral("default")), store.fileListPath(QStringLiteral("default")));
    QStringList names = store.profiles();
    names.sort();
    QCOMPARE(names, (QStringList {QStringLiteral("default"), QStringLiteral("more"), QStringLiteral("own")}));

    // A profile that would come back is not removed.
    QVERIFY(!store.removeProfile(QStringLiteral("default")));
    QVERIFY(QFile::exists(store.fileListPath(QStringLiteral("default"))));
    QVERIFY(store.removeProfile(QStringLiteral("own")));
}

void ProfileStoreTest::namesTheLinkThatLeadsOut()
{
    const ProfileStore store({m_base, QString()}, cartridge);
    QVERIFY(store.createProfile(QStringLiteral("default")));
    QCOMPARE(store.linkToFileList(QStringLiteral("default")), QString());
    makeFile(m_folder->filePath(QStringLiteral("outside.xml")));
    const QString list = store.fileListPath(QStringLiteral("default"));
    QVERIFY(QFile::link(m_folder->filePath(QStringLiteral("outside.xml")), list));
    QCOMPARE(store.linkToFileList(QStringLiteral("default")), list);
    QVERIFY(!store.hasFileList(QStringLiteral("default")));
    QVERIFY(QFile::link(m_folder->path(), store.profileFolder(QStringLiteral("link"))));
    QCOMPARE(store.linkToFileList(QStringLiteral("link")), store.profileFolder(QStringLiteral("link")));
}

void ProfileStoreTest::createsFolders()
{
    const ProfileStore store({m_base, QString()}, cartridge);
    QVERIFY(store.createCartridgeFolder());
    QVERIFY(store.createCartridgeFolder());
    QVERIFY(QDir(m_base + cartridge).exists());
    QVERIFY(!store.hasProfile(QStringLiteral("a\\\"b")));
    QVERIFY(store.createProfile(QStringLiteral("a\\\"b")));
    QVERIFY(store.createProfile(QStringLiteral("a\\\"b")));
    QVERIFY(store.hasProfile(QStringLiteral("a\\\"b")));
    QVERIFY(!store.hasFileList(QStringLiteral("a\\\"b")));
    QCOMPARE(store.profiles(), QStringList {QStringLiteral("a\\\"b")});
    QVERIFY(!store.createProfile(QString(300, QLatin1Char('n'))));
}

void ProfileStoreTest::listsProfiles()
{
    const ProfileStore store({m_base, QString()}, cartridge);
    QVERIFY(store.createProfile(QStringLiteral("one")));
    QVERIFY(store.createProfile(QStringLiteral("two words")));
    QVERIFY(store.createProfile(QStringLiteral(".hidden")));
    QVERIFY(QDir().mkpath(store.profileFolder(QStringLiteral("one/inside"))));
    QVERIFY(QFile::link(store.profileFolder(QStringLiteral("one")), store.profileFolder(QStringLiteral("link"))));
    QVERIFY(store.writeSettings({}));
    QStringList names = store.profiles();
    names.sort();
    QCOMPARE(names, (QStringList {QStringLiteral(".hidden"), QStringLiteral("one"), QStringLiteral("two words")}));
}

void ProfileStoreTest::removesAProfileWhole()
{
    const ProfileStore store({m_base, QString()}, cartridge);
    QVERIFY(store.createProfile(QStringLiteral("stays")));
    QVERIFY(store.createProfile(QStringLiteral("goes")));
    QVERIFY(QDir().mkpath(store.profileFolder(QStringLiteral("goes/a/b"))));
    makeFile(store.fileListPath(QStringLiteral("goes")));
    makeFile(store.profileFolder(QStringLiteral("goes/a/.hidden")));
    QVERIFY(store.removeProfile(QStringLiteral("goes")));
    QCOMPARE(entriesOf(store.cartridgeFolder()), QStringList {QStringLiteral("stays")});
}

void ProfileStoreTest::removingFollowsNoLinks()
{
    const ProfileStore store({m_base, QString()}, cartridge);
    const QString outside = m_folder->filePath(QStringLiteral("outside"));
    QVERIFY(QDir().mkpath(outside));
    makeFile(outside + QStringLiteral("/kept"));
    QVERIFY(store.createProfile(QStringLiteral("goes")));
    QVERIFY(QFile::link(outside, store.profileFolder(QStringLiteral("goes/folder"))));
    QVERIFY(QFile::link(outside + QStringLiteral("/kept"), store.profileFolder(QStringLiteral("goes/file"))));
    QVERIFY(QFile::link(QStringLiteral("/nowhere"), store.profileFolder(QStringLiteral("goes/nowhere"))));
    QVERIFY(store.removeProfile(QStringLiteral("goes")));
    QVERIFY(!store.hasProfile(QStringLiteral("goes")));
    QVERIFY(QFile::exists(outside + QStringLiteral("/kept")));
}

void ProfileStoreTest::removesALinkOnly()
{
    const ProfileStore store({m_base, QString()}, cartridge);
    const QString outside = m_folder->filePath(QStringLiteral("outside"));
    QVERIFY(QDir().mkpath(outside) && store.createCartridgeFolder());
    makeFile(outside + QStringLiteral("/kept"));
    QVERIFY(QFile::link(outside, store.profileFolder(QStringLiteral("link"))));
    QVERIFY(store.removeProfile(QStringLiteral("link")));
    QCOMPARE(entriesOf(store.cartridgeFolder()), QStringList());
    QVERIFY(QFile::exists(outside + QStringLiteral("/kept")));
}

void ProfileStoreTest::removingWhatIsGoneIsDone()
{
    QVERIFY(ProfileStore({m_base, QString()}, cartridge).removeProfile(QStringLiteral("gone")));
}

void ProfileStoreTest::storesSettings()
{
    const ProfileStore store({m_base, QString()}, cartridge);
    QVERIFY(store.createCartridgeFolder());
    QVERIFY(!store.hasSettings());
    QVERIFY(store.writeSettings({QStringLiteral("Mine"), false}));
    QVERIFY(store.hasSettings());
    QCOMPARE(contentOf(store.settingsPath()), settingsDocument("Mine", "false"));
    ProfileSettings settings;
    QString error;
    QCOMPARE(store.readSettings(&settings, &error), ProfileStore::Reading::Done);
    QCOMPARE(settings.autoload, QStringLiteral("Mine"));
    QVERIFY(!settings.autosave);

    makeFile(store.settingsPath(), "<settings>");
    QCOMPARE(store.readSettings(&settings, &error), ProfileStore::Reading::Malformed);
    QVERIFY(!error.isEmpty());
    QCOMPARE(settings.autoload, QStringLiteral("default"));
    QVERIFY(settings.autosave);
}

void ProfileStoreTest::readsNoPipes()
{
    const ProfileStore store({m_base, QString()}, cartridge);
    QVERIFY(store.createCartridgeFolder());
    QCOMPARE(mkfifo(QFile::encodeName(store.settingsPath()).constData(), 0600), 0);
    ProfileSettings settings;
    QString error;
    QCOMPARE(store.readSettings(&settings, &error), ProfileStore::Reading::NotOpened);
}

void ProfileStoreTest::worksWithoutAFolder()
{
    makeFile(m_folder->filePath(QStringLiteral("profiles")));
    const ProfileStore store({m_base, QString()}, cartridge);
    QVERIFY(!store.createCartridgeFolder());
    QVERIFY(!store.createProfile(QStringLiteral("default")));
    QVERIFY(!store.hasSettings());
    QVERIFY(!store.writeSettings({}));
    QCOMPARE(store.profiles(), QStringList());
    ProfileSettings settings;
    QString error;
    QCOMPARE(store.readSettings(&settings, &error), ProfileStore::Reading::NotOpened);
    QCOMPARE(contentOf(m_folder->filePath(QStringLiteral("profiles"))), QByteArray("x"));
}

QTEST_GUILESS_MAIN(ProfileStoreTest)
#include "tst_profilestore.moc"
