// SPDX-License-Identifier: MIT
#include "cli/commandcall.h"
#include "support/images.h"
#include "system/faults/faultruns.h"

#include <QProcess>

Q_DECLARE_METATYPE(Operation)

namespace
{
constexpr int imageBytes = 16 * 1024;

/// An image, a profile with two textures and a folder, a folder of pictures and a pack.
void prepare(const QString &folder)
{
    for (const char *path : {"profiles/NQLE0/default", "pictures", "pack/A_00001000_Grass", "out"})
        QVERIFY(QDir(folder).mkpath(path));
    writeFile(folder + "/game.z64", cartridgeImage(imageBytes));
    writeFile(folder + "/game.v64", withReversedUnits(cartridgeImage(imageBytes), 2));
    writeFile(folder + "/game.n64", withReversedUnits(cartridgeImage(imageBytes), 4));
    writeFile(folder + "/profiles/NQLE0/default/fileList.xml",
              "<root version=\"2\"><directory name=\"Hills\" address=\"0x100\" size=\"0x1000\">"
              "<texture name=\"One\" address=\"0x0\" format=\"rgba32\" width=\"4\" height=\"4\"/>"
              "<texture name=\"Two\" address=\"0x40\" format=\"rgba32\" width=\"4\" height=\"4\"/></directory></root>");
    QVERIFY(plainPicture(4, 4, qRgb(1, 2, 3)).save(folder + "/pictures/One.png"));
    QVERIFY(plainPicture(4, 4, qRgb(4, 5, 6)).save(folder + "/pack/A_00001000_Grass/00000010_rgba32_tile.png"));
    writeFile(folder + "/out/game.v64", "an earlier one");
}

/// The command \a arguments, in which "@" stands for the folder.
Operation command(const QStringList &arguments, bool makesFolders = false)
{
    return {prepare,
            [arguments](const QString &folder) {
                QStringList here = arguments;
                // What a run that was killed at its end has listed already must not be listed twice.
                if (fileBytes(folder + "/profiles/NQLE0/default/fileList.xml").contains("Grass"))
                    here.insert(1, "--no-add");
                const CommandCall done = call(here.replaceInStrings("@", folder + '/'));
                return done.status == 0 ? QString() : done.err;
            },
            !makesFolders, !makesFolders}; // Why a folder cannot be made is not told.
}
}

class TestCommandFaults : public QObject
{
    Q_OBJECT

private slots:
    void eachFileIsTheOldOrTheNewOne_data();
    void eachFileIsTheOldOrTheNewOne();
    void theLimitOnTheSizeOfFilesIsReported();
};

void TestCommandFaults::eachFileIsTheOldOrTheNewOne_data()
{
    QTest::addColumn<Operation>("operation");
    const QStringList profile {"--profiles", "@profiles"};
    QTest::newRow("v64 in place") << command({"convert", "--in-place", "@game.v64"});
    QTest::newRow("n64 in place") << command({"convert", "--in-place", "@game.n64"});
    QTest::newRow("to v64") << command({"convert", "--order", "v64", "--output", "@out/game.v64", "@game.z64"});
    QTest::newRow("to n64") << command({"convert", "--order", "n64", "--output", "@out/game.n64", "@game.z64"});
    QTest::newRow("extract") << command(QStringList {"extract", "--output", "@out"} + profile + QStringList {"@game.z64"}, true);
    QTest::newRow("extract one") << command(QStringList {"extract", "--output", "@out/game.v64"} + profile
                                            + QStringList {"@game.z64", "Root/Hills/One"});
    QTest::newRow("replace") << command(QStringList {"replace", "--in-place"} + profile
                                        + QStringList {"@game.z64", "Root/Hills/One", "@pictures/One.png"});
    QTest::newRow("import folder") << command(QStringList {"import-folder", "--in-place"} + profile
                                              + QStringList {"@game.z64", "@pictures", "Root/Hills"});
    QTest::newRow("import pack") << command(
        QStringList {"import-pack", "--output", "@out/game.z64"} + profile + QStringList {"@game.z64", "@pack"}, true);
}

void TestCommandFaults::eachFileIsTheOldOrTheNewOne()
{
    QFETCH(Operation, operation);
    FaultRuns runs(operation);
    runs.killAtEachCall();
    runs.failFromEachCallOn();
}

void TestCommandFaults::theLimitOnTheSizeOfFilesIsReported()
{
    const QTemporaryDir folder;
    prepare(folder.path());
    const Files old = filesBelow(folder.path());
    QProcess program;
    // In units of 512 or 1024 bytes.
    program.start(
        "/bin/sh",
        {"-c", "ulimit -f 4; exec \"$0\" convert --in-place \"$1\"", QUILLARY_CLI_PROGRAM, folder.filePath("game.v64")});
    QVERIFY(program.waitForFinished());
    const QString told = QString::fromUtf8(program.readAllStandardError());
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 1);
    QVERIFY2(told.contains(folder.filePath("game.v64")) && told.contains(qt_error_string(EFBIG)), qPrintable(told));
    QCOMPARE(filesBelow(folder.path()), old);
}

QTEST_GUILESS_MAIN(TestCommandFaults)
#include "tst_commandfaults.moc"
