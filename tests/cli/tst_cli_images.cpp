// SPDX-License-Identifier: MIT
#include "commandcall.h"
#include "support/bootimages.h"
#include "support/permissions.h"

#include <QDir>
#include <QTemporaryDir>

namespace
{
class ImageCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder.reset(new QTemporaryDir);
        QVERIFY(m_folder->isValid());
        m_image = cartridgeImage(4096, "NQLE", 3);
        m_image.replace(0x20, 20, "QUILL TOWN          ");
        m_path = m_folder->filePath("game.z64");
        writeFile(m_path, m_image);
    }

    void infoShowsTheHeader()
    {
        const CommandCall info = call({"info", m_path});
        QCOMPARE(info.status, 0);
        for (const char *part : {"z64", "4096 bytes", "QUILL TOWN\n", "NQLE3\n", "0x0000000F", "unknown"})
            QVERIFY2(info.out.contains(QLatin1String(part)), part);
        QVERIFY(info.err.isEmpty());
    }

    void infoTellsTheByteOrderAndLooksThroughIt()
    {
        writeFile(m_path, withReversedUnits(m_image, 2));
        QVERIFY(call({"info", m_path}).out.contains("v64"));
        QVERIFY(call({"info", m_path}).out.contains("QUILL TOWN\n"));
        writeFile(m_path, withReversedUnits(m_image, 4));
        QVERIFY(call({"info", m_path}).out.contains("n64"));
        QVERIFY(call({"info", m_path}).out.contains("NQLE3\n"));
    }

    void infoAsJson()
    {
        const QJsonObject document = call({"info", "--json", m_path}).json();
        QCOMPARE(document["file"].toString(), m_path);
        QCOMPARE(document["byteOrder"].toString(), QString("z64"));
        QCOMPARE(document["size"].toInt(), 4096);
        QCOMPARE(document["identifier"].toString(), QString("NQLE3"));
        const QJsonObject header = document["header"].toObject();
        QCOMPARE(header["title"].toString(), QString("QUILL TOWN"));
        QCOMPARE(header["version"].toInt(), 3);
        QCOMPARE(header["clockRate"].toInt(), 15);
        QVERIFY(header["checkCodes"].toObject()["computed"].isNull());
    }

    void infoNamesTheProfilesFolder()
    {
        const QString beside = QCoreApplication::applicationDirPath() + "/profiles/";
        const auto folderOf = [this](const QStringList &more) {
            return call(QStringList {"info", "--json", m_path} + more).json()["profilesFolder"].toString();
        };
        QCOMPARE(folderOf({}), beside);
        QCOMPARE(folderOf({"--profiles", "/elsewhere"}), QStringLiteral("/elsewhere/"));
        QVERIFY(call({"info", m_path}).out.contains("Profiles in:    " + beside + '\n'));
    }

    void profilesGoToTheUserWhereTheFolderCannotBeWritten()
    {
        const QTemporaryDir home;
        const QByteArray before = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", home.path().toUtf8());
        const QString beside = QCoreApplication::applicationDirPath() + "/profiles";
        QDir(beside).removeRecursively();
        QDir().mkpath(beside);
        const CommandCall shipped = call({"demo", home.filePath("demo")});
        QFile::setPermissions(beside, QFile::ReadOwner | QFile::ExeOwner);
        CommandCall read;
        CommandCall demo;
        CommandCall info;
        {
            const WithoutPrivileges unprivileged;
            read = call({"list", home.filePath("demo/demo.z64")});
            demo = call({"demo", home.filePath("demo")});
            info = call({"info", home.filePath("demo/demo.z64")});
        }
        QFile::setPermissions(beside, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QDir(beside).removeRecursively();
        qputenv("XDG_DATA_HOME", before);

        QCOMPARE(shipped.err, QString());
        QCOMPARE(read.err, QString());
        QVERIFY(read.out.contains("Root/"));
        QCOMPARE(demo.err, QString());
        QVERIFY(QFile::exists(home.filePath("Brimholt/Quillary/profiles/NQDE0/default/fileList.xml")));
        QVERIFY(info.out.contains("Profiles in:    " + home.filePath("Brimholt/Quillary/profiles/") + '\n'));
        QVERIFY(info.out.contains("Profiles:       default: "));
    }

    void infoMatchesTheBootChip()
    {
        writeFile(m_path, bootImage(0x0B050EE0));
        QVERIFY(call({"info", m_path}).out.contains("6103/7103"));
    }

    void infoOfWhatIsNoImage()
    {
        const QString path = m_folder->filePath("some.old.bin");
        writeFile(path, QByteArray(70, 'x'));
        const CommandCall info = call({"info", path});
        QCOMPARE(info.status, 0);
        QVERIFY(info.out.contains("unknown"));
        QVERIFY(info.out.contains("some.old\n"));
        QVERIFY(!info.out.contains("Title"));
        QVERIFY(call({"info", "--json", path}).json()["header"].isNull());
        writeFile(path, QByteArray());
        QCOMPARE(call({"info", path}).status, 0);
    }

    void infoKeepsAHostileTitleOffTheTerminal()
    {
        m_image.replace(0x20, 20, "\x1b[2J\x1b[31m hot\ntitle\x7f");
        writeFile(m_path, m_image);
        const CommandCall info = call({"info", m_path});
        QVERIFY(!info.out.contains(QChar(0x1B)));
        QVERIFY(info.out.contains(" hot\uFFFDtitle"));
    }

    void convertWritesEveryOrderFromEveryOrder_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("to");
        for (const int from : {1, 2, 4}) {
            QTest::addRow("%d to z64", from) << from << "z64" << 1;
            QTest::addRow("%d to v64", from) << from << "v64" << 2;
            QTest::addRow("%d to n64", from) << from << "n64" << 4;
        }
    }

    void convertWritesEveryOrderFromEveryOrder()
    {
        QFETCH(int, from);
        QFETCH(QString, name);
        QFETCH(int, to);
        writeFile(m_path, withReversedUnits(m_image, from));
        const QString target = m_folder->filePath("out");
        const CommandCall converted = call({"convert", m_path, "--order", name, "-o", target});
        QCOMPARE(converted.status, 0);
        QVERIFY(converted.out.contains(name));
        QCOMPARE(fileBytes(target), withReversedUnits(m_image, to));
        QCOMPARE(fileBytes(m_path), withReversedUnits(m_image, from));
    }

    void convertDefaultsToBigEndianAndWritesInPlace()
    {
        writeFile(m_path, withReversedUnits(m_image, 2));
        QCOMPARE(call({"convert", "--in-place", m_path}).status, 0);
        QCOMPARE(fileBytes(m_path), m_image);
    }

    void dryRunWritesNothing()
    {
        writeFile(m_path, withReversedUnits(m_image, 2));
        const QString target = m_folder->filePath("out");
        const CommandCall dry = call({"convert", m_path, "-o", target, "--dry-run"});
        QCOMPARE(dry.status, 0);
        QVERIFY(dry.out.contains("from v64 to z64"));
        QVERIFY(!QFile::exists(target));
        QCOMPARE(fileBytes(m_path), withReversedUnits(m_image, 2));
    }

    void outputIsNeverTheImageItself()
    {
        const QString link = m_folder->filePath("link.z64");
        QVERIFY(QFile::link(m_path, link));
        for (const QString &target : {m_path, link, m_folder->path() + "/./game.z64"}) {
            const CommandCall same = call({"convert", m_path, "--order", "v64", "-o", target});
            QCOMPARE(same.status, 2);
            QVERIFY(same.err.contains("--in-place"));
            QCOMPARE(fileBytes(m_path), m_image);
        }
    }

    void whatIsNoImageIsNotConverted()
    {
        writeFile(m_path, QByteArray(4096, 'x'));
        const QString target = m_folder->filePath("out");
        const CommandCall none = call({"convert", m_path, "-o", target});
        QCOMPARE(none.status, 1);
        QVERIFY(none.err.contains(m_path));
        QVERIFY(!QFile::exists(target));
    }

    void unwritableTargetIsNamed()
    {
        const QString target = m_path + "/folder/out.z64"; // A file is in the way.
        const CommandCall failed = call({"convert", m_path, "-o", target});
        QCOMPARE(failed.status, 1);
        QVERIFY(failed.err.contains(target));
        QVERIFY(failed.out.isEmpty());
    }

    void aFolderIsNoImage()
    {
        const CommandCall failed = call({"info", m_folder->path()});
        QCOMPARE(failed.status, 1);
        QVERIFY(failed.err.contains(m_folder->path()));
    }

private:
    QScopedPointer<QTemporaryDir> m_folder;
    QString m_path;
    QByteArray m_image;
};
}

QTEST_GUILESS_MAIN(ImageCommandsTest)
#include "tst_cli_images.moc"
