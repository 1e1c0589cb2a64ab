// SPDX-License-Identifier: MIT
// An interrupt that comes before a command writes leaves every file as it was.
#include "profilefolder.h"

#include "cli/interrupt.h"
#include "support/bootimages.h"

#include <QDirIterator>
#include <QImage>

#include <csignal>

namespace
{
QMap<QString, QByteArray> filesBelow(const QString &folder)
{
    QMap<QString, QByteArray> files;
    QDirIterator iterator(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        const QString path = iterator.next();
        files.insert(path, fileBytes(path));
    }
    return files;
}

class InterruptTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(!cli::interrupted());
        cli::noticeInterrupts();
        QCOMPARE(std::raise(SIGINT), 0);
        QVERIFY(cli::interrupted());
    }

    void nothingIsWritten_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("convert") << QStringList {"convert", "@/game.z64", "--order", "v64", "--in-place"};
        QTest::newRow("convert elsewhere") << QStringList {"convert", "@/game.z64", "-o", "@/other.z64"};
        QTest::newRow("checksum") << QStringList {"checksum", "@/game.z64", "--fix", "--in-place"};
        QTest::newRow("extract an entry") << QStringList {"extract",   "@/game.z64", "Root/x",    "-o",
                                                          "@/out.png", "--profiles", "@/profiles"};
        QTest::newRow("extract all") << QStringList {"extract", "@/game.z64", "-o", "@/out", "--profiles", "@/profiles"};
        QTest::newRow("replace") << QStringList {"replace",    "@/game.z64", "Root/x",    "@/in/x.png",
                                                 "--in-place", "--profiles", "@/profiles"};
        QTest::newRow("import-folder") << QStringList {"import-folder", "@/game.z64", "@/in",
                                                       "--in-place",    "--profiles", "@/profiles"};
        QTest::newRow("import-pack") << QStringList {"import-pack", "@/game.z64", "@/pack",
                                                     "--in-place",  "--profiles", "@/profiles"};
        QTest::newRow("search") << QStringList {"search", "@/game.z64", "@/in", "--add", "--profiles", "@/profiles"};
        QTest::newRow("verify") << QStringList {"verify", "@/game.z64", "--profiles", "@/profiles"};
    }

    void nothingIsWritten()
    {
        QFETCH(QStringList, arguments);
        const ProfileFolder folder(bootImage(0x90BB6CB5));
        folder.addProfile("<texture name=\"x\" address=\"0x2000\" format=\"i8\" width=\"2\" height=\"2\"/>");
        QImage picture(2, 2, QImage::Format_ARGB32);
        picture.fill(Qt::white);
        for (const char *name : {"in/x.png", "pack/A_00003000_Hills/00003000_i8_rock.png"}) {
            QDir().mkpath(QFileInfo(folder.path(name)).path());
            QVERIFY(picture.save(folder.path(name)));
        }
        arguments.replaceInStrings("@", folder.path("."));
        const QMap<QString, QByteArray> before = filesBelow(folder.path("."));
        const CommandCall interrupted = call(arguments);
        QCOMPARE(interrupted.status, 1);
        QVERIFY2(interrupted.err.contains("Interrupted"), qPrintable(interrupted.err));
        QCOMPARE(filesBelow(folder.path(".")), before);
    }
};
}

QTEST_GUILESS_MAIN(InterruptTest)
#include "tst_cli_interrupt.moc"
