// SPDX-License-Identifier: MIT
#include "persist/profilesfolder.h"

#include "support/permissions.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

/// Makes folders unusable in ways that bind privileged users too.
class ProfilesFolderTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void besideTheProgramComesFirst_data();
    void besideTheProgramComesFirst();
    void withoutPermissionTheUsersFolderIsTaken();
    void whatIsOtherwiseUnusableStays_data();
    void whatIsOtherwiseUnusableStays();
    void whereNeitherCanBeWrittenTheFirstStays();
    void aRelativePlaceIsNone();
    void theUsersFolderIsThatOfTheWindow();
    void standsBesideThisProgram();
    void saysWhere();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString ofUser() const { return path("home/data/profiles/"); }
    void makeFile(const QString &name) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QStringList entries() const
    {
        return QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    QScopedPointer<QTemporaryDir> m_folder;
};

void ProfilesFolderTest::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
}

void ProfilesFolderTest::besideTheProgramComesFirst_data()
{
    QTest::addColumn<QStringList>("present");
    QTest::newRow("there") << QStringList {"program/profiles"};
    QTest::newRow("missing") << QStringList {"program"};
    QTest::newRow("missing with its folder") << QStringList();
    QTest::newRow("though the user has one") << QStringList {"program", "home/data/profiles"};
}

void ProfilesFolderTest::besideTheProgramComesFirst()
{
    QFETCH(QStringList, present);
    for (const QString &name : qAsConst(present))
        QVERIFY(QDir().mkpath(path(name)));
    const QStringList before = entries();
    const ProfilesFolder chosen = chooseProfilesFolder(path("program/profiles/"), ofUser());
    QCOMPARE(chosen.path, path("program/profiles/"));
    QCOMPARE(chosen.unwritable, QString());
    QCOMPARE(entries(), before);
    QCOMPARE(QDir(path("program/profiles")).exists(), present.contains("program/profiles"));
    QVERIFY(QDir(path("program/profiles")).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot));
}

void ProfilesFolderTest::withoutPermissionTheUsersFolderIsTaken()
{
    QVERIFY(QDir().mkpath(path("program")));
    const QFile::Permissions readOnly = QFile::ReadOwner | QFile::ExeOwner;
    QVERIFY(QFile::setPermissions(path("program"), readOnly));
    const WithoutPrivileges unprivileged;
    const ProfilesFolder chosen = chooseProfilesFolder(path("program/profiles/"), ofUser());
    QVERIFY(QFile::setPermissions(path("program"), readOnly | QFile::WriteOwner));
    QCOMPARE(chosen.path, ofUser());
    QCOMPARE(chosen.unwritable, path("program/profiles/"));
    QCOMPARE(entries(), QStringList {"program"});
}

void ProfilesFolderTest::whatIsOtherwiseUnusableStays_data()
{
    QTest::addColumn<QString>("besideProgram");
    QTest::newRow("a file in its place") << QStringLiteral("file/");
    QTest::newRow("a file on the way") << QStringLiteral("file/below/profiles/");
    QTest::newRow("a link to nowhere") << QStringLiteral("link/");
    QTest::newRow("no place for files") << QStringLiteral("/proc/profiles/");
}

void ProfilesFolderTest::whatIsOtherwiseUnusableStays()
{
    if (QByteArray(QTest::currentDataTag()) == "no place for files" && (!QDir("/proc/self").exists() || geteuid() != 0))
        QSKIP("only root lacks no permission in /proc");
    QFETCH(QString, besideProgram);
    if (QDir::isRelativePath(besideProgram))
        besideProgram = path(besideProgram);
    makeFile("file");
    QVERIFY(QFile::link(path("gone"), path("link")));
    const QStringList before = entries();
    const ProfilesFolder chosen = chooseProfilesFolder(besideProgram, ofUser());
    QCOMPARE(chosen.path, besideProgram);
    QCOMPARE(chosen.unwritable, QString());
    QCOMPARE(entries(), before);
}

void ProfilesFolderTest::whereNeitherCanBeWrittenTheFirstStays()
{
    makeFile("a");
    makeFile("b");
    const ProfilesFolder chosen = chooseProfilesFolder(path("a/"), path("b/"));
    QCOMPARE(chosen.path, path("a/"));
    QCOMPARE(chosen.unwritable, QString());
}

void ProfilesFolderTest::aRelativePlaceIsNone()
{
    makeFile("a");
    QCOMPARE(chooseProfilesFolder(path("a/"), QStringLiteral("data/profiles/")).path, path("a/"));
}

void ProfilesFolderTest::theUsersFolderIsThatOfTheWindow()
{
    const QString before = userProfilesFolder();
    QVERIFY(before.endsWith("/Brimholt/Quillary/profiles/"));
    QCoreApplication::setOrganizationName(QStringLiteral("Brimholt"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillary"));
    QCOMPARE(before, QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/profiles/");
    QCOMPARE(userProfilesFolder(), before);
}

void ProfilesFolderTest::standsBesideThisProgram()
{
    QCOMPARE(chooseProfilesFolder().path, QCoreApplication::applicationDirPath() + "/profiles/");
    QCOMPARE(chooseProfilesFolder().unwritable, QString());
}

void ProfilesFolderTest::saysWhere()
{
    QCOMPARE(describe({"/a/%2/", QString()}), QStringLiteral("Profiles are kept in /a/%2/"));
    QCOMPARE(describe({"/a/%2/", "/b/"}), QStringLiteral("Profiles are kept in /a/%2/, because /b/ cannot be written"));
}

QTEST_GUILESS_MAIN(ProfilesFolderTest)
#include "tst_profilesfolder.moc"
