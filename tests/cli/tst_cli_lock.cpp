// SPDX-License-Identifier: MIT
// Two programs and one file list: who comes second waits, and what nobody has read is kept.
#include "profilefolder.h"

#include "support/images.h"

#include <QElapsedTimer>
#include <QProcess>

namespace
{
const char *const oldTexture = "<texture name=\"Old\" address=\"0x00000010\" format=\"i8\" width=\"1\" height=\"1\"/>";
const char *const records = "path,address,format,width,height\nNew,1,i8,1,1\n";

/// The built program in "table import", which reads the list, then waits for the records from standard input.
class WaitingProgram
{
public:
    explicit WaitingProgram(const ProfileFolder &folder) : m_lock(folder.fileListPath() + ".lock")
    {
        m_process.start(QUILLARY_CLI_PROGRAM,
                        {"table", "import", "--as", "csv", "--profiles", folder.profiles(), folder.imagePath(), "-"});
    }
    ~WaitingProgram() { end(); }

    bool hasLock()
    {
        return QTest::qWaitFor([&] { return QFile::exists(m_lock); }, 30000);
    }

    /// Gives it the records. Returns its exit code.
    int finish()
    {
        m_process.write(records);
        m_process.closeWriteChannel();
        return m_process.waitForFinished(30000) ? m_process.exitCode() : -1;
    }

    /// Without a chance to tidy up.
    void end()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QString m_lock;
    QProcess m_process;
};

class LockTest : public QObject
{
    Q_OBJECT

private slots:
    void secondProgramWaitsForTheFirst()
    {
        const ProfileFolder folder(cartridgeImage(4096));
        folder.addProfile(oldTexture);
        const QByteArray before = fileBytes(folder.fileListPath());
        WaitingProgram first(folder);
        QVERIFY(first.hasLock());
        QElapsedTimer time;
        time.start();
        const CommandCall second = folder.call("add", {"Other"});
        QVERIFY(time.elapsed() >= 4500 && time.elapsed() < 20000);
        QCOMPARE(second.status, 1);
        QVERIFY2(second.err.contains("Another program is changing it; its lock is " + folder.fileListPath() + ".lock"),
                 qPrintable(second.err));
        QCOMPARE(fileBytes(folder.fileListPath()), before);
        QCOMPARE(first.finish(), 0);
        QVERIFY(!QFile::exists(folder.fileListPath() + ".lock"));
        QCOMPARE(folder.call("add", {"Other"}).status, 0);
        for (const char *name : {"\"Old\"", "\"New\"", "\"Other\""})
            QVERIFY(fileBytes(folder.fileListPath()).contains(name));
        QVERIFY(!QFile::exists(folder.fileListPath() + ".1"));
    }

    /// An empty lock file is what a program leaves behind that is killed, or a loss of power.
    void killedProgramKeepsNobodyOut()
    {
        const ProfileFolder folder(cartridgeImage(4096));
        folder.addProfile(oldTexture);
        WaitingProgram first(folder);
        QVERIFY(first.hasLock());
        first.end();
        QVERIFY(QFile::exists(folder.fileListPath() + ".lock"));
        QElapsedTimer time;
        time.start();
        QCOMPARE(folder.call("add", {"Other"}).status, 0);
        QVERIFY(time.elapsed() < 4000);
        QVERIFY(!QFile::exists(folder.fileListPath() + ".lock"));
    }

    /// A program that knows of no lock writes the list between the command's reading and its writing.
    void listThatChangedMeanwhileIsKept()
    {
        const ProfileFolder folder(cartridgeImage(4096));
        folder.addProfile(oldTexture);
        WaitingProgram program(folder);
        QVERIFY(program.hasLock());
        QTest::qWait(2000); // It has the lock before it reads the list.
        writeFile(folder.fileListPath(), "<root version=\"2\"/>");
        QCOMPARE(program.finish(), 0);
        QCOMPARE(fileBytes(folder.fileListPath() + ".1"), QByteArray("<root version=\"2\"/>"));
        QVERIFY(fileBytes(folder.fileListPath()).contains("\"Old\""));
        QVERIFY(fileBytes(folder.fileListPath()).contains("\"New\""));
    }
};
}

QTEST_GUILESS_MAIN(LockTest)
#include "tst_cli_lock.moc"
