// SPDX-License-Identifier: MIT
// The built program, as a process of its own.
#include "commandcall.h"

#include "support/images.h"

#include <QBuffer>
#include <QDir>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace
{
struct Ended
{
    int status;
    QByteArray out;
    QByteArray err;
};

Ended start(const QString &program, const QStringList &arguments, const QByteArray &input = QByteArray())
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QLatin1String(variable));
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000))
        QTest::qFail("the program does not end", __FILE__, __LINE__);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

Ended start(const QStringList &arguments)
{
    return start(QUILLARY_CLI_PROGRAM, arguments);
}

/// Sends an interrupt to \a process, unless it has ended: no id would mean this program's whole group.
/// Has \a process, if it counts coverage, do so below \a folder: interrupted while it ends, it leaves counters half written, on
/// which the counting of all others would fail.
void keepCountersIn(const QString &folder, QProcess *process)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("GCOV_PREFIX"), folder);
    process->setProcessEnvironment(environment);
}

bool interrupt(const QProcess &process)
{
    const auto id = pid_t(process.processId());
    return id > 0 && kill(id, SIGINT) == 0;
}

class ProgramTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder.reset(new QTemporaryDir);
        QVERIFY(m_folder->isValid());
        m_path = m_folder->filePath("game.z64");
        writeFile(m_path, cartridgeImage(4096));
    }

    void statusOutputAndComplaints()
    {
        const Ended done = start({"info", m_path});
        QCOMPARE(done.status, 0);
        QVERIFY(done.out.contains("NQLE0"));
        QVERIFY(done.err.isEmpty());

        const Ended failed = start({"info", "missing.z64"});
        QCOMPARE(failed.status, 1);
        QVERIFY(failed.err.contains("missing.z64"));
        QVERIFY(failed.out.isEmpty());

        QCOMPARE(start({"info"}).status, 2);
        QCOMPARE(start({"--version"}).out, QByteArray("quillary-cli " QUILLARY_VERSION "\n"));
    }

    void filesGoThroughPipes()
    {
        const QByteArray image = cartridgeImage(4096);
        const Ended turned = start(QUILLARY_CLI_PROGRAM, {"convert", "-", "--order", "v64", "-o", "-"}, image);
        QCOMPARE(turned.status, 0);
        QVERIFY(turned.err.isEmpty());
        QVERIFY(turned.out == withReversedUnits(image, 2));
        QCOMPARE(start(QUILLARY_CLI_PROGRAM, {"info", "-"}, turned.out).status, 0);

        // Of a profile as well: the identifier is the image's own. Texts go to standard error then.
        addProfileOf(1);
        const QStringList profiles {"--profiles", m_folder->filePath("profiles")};
        const QImage picture = QImage::fromData(start(QStringList {"extract", m_path, "Root/0", "-o", "-"} + profiles).out);
        QCOMPARE(picture.size(), QSize(4, 4));
        QImage white(4, 4, QImage::Format_ARGB32);
        white.fill(Qt::white);
        QBuffer file;
        file.open(QIODevice::WriteOnly);
        white.save(&file, "PNG");
        const Ended replaced =
            start(QUILLARY_CLI_PROGRAM, QStringList {"replace", m_path, "Root/0", "-", "-o", "-"} + profiles, file.data());
        QVERIFY2(replaced.status == 0, replaced.err.constData());
        QByteArray expected = image;
        expected.replace(0x100, 16, QByteArray(16, '\xFF'));
        QVERIFY(replaced.out == expected);
        // Messages name the picture as it was given.
        const auto replacedBy = [&](const QByteArray &standardInput) {
            return start(QUILLARY_CLI_PROGRAM, QStringList {"replace", m_path, "Root/0", "-", "--dry-run"} + profiles,
                         standardInput)
                .err;
        };
        QCOMPARE(replacedBy("none"), QByteArray("quillary-cli: Cannot read picture -\n"));
        QByteArray wide;
        QBuffer wideFile(&wide);
        wideFile.open(QIODevice::WriteOnly);
        white.scaled(5, 4).save(&wideFile, "PNG");
        const QByteArray said = replacedBy(wide);
        QVERIFY2(said.startsWith("quillary-cli: -: The picture is 5x4"), said.constData());
        const Ended dry = start(QStringList {"convert", m_path, "--order", "v64", "-o", "-", "--dry-run"});
        QVERIFY(dry.out.isEmpty());
        QVERIFY(dry.err.contains("Would turn"));
    }

    void fullPipeIsAFailure()
    {
        QProcess process;
        process.setStandardOutputFile("/dev/full");
        process.start(QUILLARY_CLI_PROGRAM, {"convert", m_path, "-o", "-"});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 1);
        QVERIFY(process.readAllStandardError().contains("No space left"));
    }

    void foldersAreMadeForTheOutput()
    {
        const QString path = m_folder->filePath("new/one/out.z64");
        QCOMPARE(start({"convert", m_path, "-o", path, "--dry-run"}).status, 0);
        QVERIFY(!QFile::exists(m_folder->filePath("new")));
        QCOMPARE(start({"convert", m_path, "-o", path}).status, 0);
        QVERIFY(fileBytes(path) == cartridgeImage(4096));
        addProfileOf(1);
        const QStringList extract {"extract", m_path, "Root/0", "--profiles", m_folder->filePath("profiles"), "-o"};
        QCOMPARE(start(extract + QStringList {m_folder->filePath("two/a.png")}).status, 0);
        QVERIFY(QFile::exists(m_folder->filePath("two/a.png")));
        QCOMPARE(start(extract + QStringList {m_folder->filePath("three/")}).status, 0);
        QVERIFY(QFile::exists(m_folder->filePath("three/0.png")));
    }

    void printsUtf8InAnyLocale()
    {
        const QString path = m_folder->filePath(QString::fromUtf8("Wiese.z64"));
        QByteArray image = cartridgeImage(4096);
        image.replace(0x20, 20, QByteArray("\xb1\xb2\xb3", 3).leftJustified(20, ' '));
        writeFile(path, image);
        qputenv("LC_ALL", "C");
        const Ended info = start({"info", "--json", path});
        qunsetenv("LC_ALL");
        QVERIFY2(info.out.contains("\xEF\xBD\xB1\xEF\xBD\xB2\xEF\xBD\xB3"), info.out.constData());
    }

    void fullStandardOutputIsAFailure()
    {
        QProcess process;
        process.setStandardOutputFile("/dev/full");
        process.start(QUILLARY_CLI_PROGRAM, {"info", m_path});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 1);
        QVERIFY(process.readAllStandardError().contains("standard output"));
    }

    void interruptEndsAnExtractionBetweenTwoFiles()
    {
        addProfileOf(20000);
        const QTemporaryDir counters;
        QProcess process;
        keepCountersIn(counters.path(), &process);
        process.start(QUILLARY_CLI_PROGRAM,
                      {"extract", m_path, "--profiles", m_folder->filePath("profiles"), "-o", m_folder->filePath("out")});
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_folder->filePath("out/Root/0.png")), 60000);
        QVERIFY(interrupt(process));
        QVERIFY(process.waitForFinished(60000));
        // By the signal itself, so that a shell's loop around it ends too.
        QCOMPARE(process.exitStatus(), QProcess::CrashExit);
        QCOMPARE(process.exitCode(), SIGINT);
        QVERIFY(process.readAllStandardError().contains("Interrupted"));
        const QStringList files = QDir(m_folder->filePath("out/Root")).entryList(QDir::Files | QDir::Hidden);
        QVERIFY(files.size() < 20000);
        for (const QString &file : files)
            QVERIFY2(!QImage(m_folder->filePath("out/Root/" + file)).isNull(), qPrintable(file));
    }

    void interruptAtAnyTimeLeavesTheImageWhole()
    {
        const QByteArray before = cartridgeImage(4096);
        const QByteArray after = withReversedUnits(before, 2);
        const QTemporaryDir counters;
        for (int milliseconds = 1; milliseconds < 40; milliseconds += 2) {
            writeFile(m_path, before);
            QProcess process;
            keepCountersIn(counters.path(), &process);
            process.start(QUILLARY_CLI_PROGRAM, {"convert", m_path, "--order", "v64", "--in-place"});
            QVERIFY(process.waitForStarted());
            QTest::qSleep(milliseconds);
            interrupt(process);
            QVERIFY(process.waitForFinished(60000));
            const bool done = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
            const QByteArray now = fileBytes(m_path);
            QVERIFY(now == before || now == after);
            QVERIFY(!done || now == after);
        }
    }

    void progressBarOnATerminalOnly()
    {
        addProfileOf(200);
        const QStringList arguments {"verify", m_path, "--profiles", m_folder->filePath("profiles")};
        QVERIFY(start(arguments).err.isEmpty());

        const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
        QVERIFY(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
        // Held open here as well: what the program wrote would go with the last end.
        const int held = open(ptsname(terminal), O_RDWR | O_NOCTTY);
        QVERIFY(held >= 0);
        QProcess process;
        process.setStandardErrorFile(ptsname(terminal));
        process.start(QUILLARY_CLI_PROGRAM, arguments);
        QByteArray shown;
        char bytes[4096];
        while (!process.waitForFinished(10) || shown.isEmpty()) {
            const ssize_t count = read(terminal, bytes, sizeof bytes);
            if (count > 0)
                shown.append(bytes, int(count));
            else if (process.state() == QProcess::NotRunning)
                break;
        }
        for (ssize_t count = read(terminal, bytes, sizeof bytes); count > 0; count = read(terminal, bytes, sizeof bytes))
            shown.append(bytes, int(count));
        close(held);
        close(terminal);
        QCOMPARE(process.exitCode(), 1);
        QVERIFY2(shown.contains("[###############...............]  50% Verifying"), shown.constData());
        QVERIFY2(shown.endsWith("\r\033[K"), shown.constData());
        QVERIFY(!process.readAllStandardOutput().contains('\033'));
    }

    void demoRoundTrip()
    {
        const QString demo = m_folder->filePath("demo");
        const QStringList profiles {"--profiles", m_folder->filePath("profiles")};
        const auto run = [&profiles](const QStringList &arguments) {
            const Ended ended = start(arguments + profiles);
            if (ended.status != 0)
                QTest::qFail(ended.err + ended.out, __FILE__, __LINE__);
            return ended;
        };
        run({"demo", demo});
        const QByteArray image = fileBytes(demo + "/demo.z64");
        QCOMPARE(image.size() % (1024 * 1024), 0);
        QVERIFY(QFile::exists(demo + "/demo.v64"));
        QVERIFY(run({"list", demo + "/demo.n64"}).out == run({"list", demo + "/demo.z64"}).out);
        run({"verify", demo + "/demo.z64"});
        // Back to the byte, but for the clear texels whose colours verify remarks on: those are gone after the first time.
        run({"extract", demo + "/demo.z64", "-o", m_folder->filePath("out")});
        run({"import-folder", demo + "/demo.v64", m_folder->filePath("out/Root"), "-o", m_folder->filePath("once.z64")});
        QVERIFY(run({"verify", m_folder->filePath("once.z64")}).out.endsWith(" 0 faulty: 0 problems, 0 remarks\n"));
        run({"extract", m_folder->filePath("once.z64"), "-o", m_folder->filePath("out")});
        run({"import-folder", demo + "/demo.n64", m_folder->filePath("out/Root"), "-o", m_folder->filePath("twice.z64")});
        const QByteArray once = fileBytes(m_folder->filePath("once.z64"));
        QVERIFY(fileBytes(m_folder->filePath("twice.z64")) == once);
        QCOMPARE(once.size(), image.size());
        const int before = run({"verify", demo + "/demo.z64"}).out.count(": transparent: ");
        QCOMPARE(once == image, before == 0);
        QVERIFY(!run({"search", demo + "/demo.z64", demo + "/search"}).out.contains("Not found"));
        QVERIFY(run({"demo", demo}).out.contains("Kept"));
    }

private:
    /// A profile of \a count entries that all have the same bytes.
    void addProfileOf(int count) const
    {
        QByteArray list = "<root version=\"2\">";
        for (int i = 0; i < count; ++i)
            list += "<texture name=\"" + QByteArray::number(i) + "\" address=\"0x100\" format=\"i8\" width=\"4\" height=\"4\"/>";
        QDir().mkpath(m_folder->filePath("profiles/NQLE0/default"));
        writeFile(m_folder->filePath("profiles/NQLE0/default/fileList.xml"), list + "</root>");
    }

    QScopedPointer<QTemporaryDir> m_folder;
    QString m_path;
};
}

QTEST_GUILESS_MAIN(ProgramTest)
#include "tst_cli_program.moc"
