// SPDX-License-Identifier: MIT
// The built program, as a process of its own.
#include "commandcall.h"

#include "support/images.h"

#include <QProcess>
#include <QTemporaryDir>

#include <csignal>
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

Ended start(const QString &program, const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QLatin1String(variable));
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(60000))
        QTest::qFail("the program does not end", __FILE__, __LINE__);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

Ended start(const QStringList &arguments)
{
    return start(QUILLARY_CLI_PROGRAM, arguments);
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

    void needsNoWidgetLibrary()
    {
        const Ended libraries = start("ldd", {QUILLARY_CLI_PROGRAM});
        QCOMPARE(libraries.status, 0);
        QVERIFY(libraries.out.contains("libQt5Core"));
        QVERIFY(!libraries.out.contains("libQt5Widgets"));
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

private:
    QScopedPointer<QTemporaryDir> m_folder;
    QString m_path;
};
}

QTEST_GUILESS_MAIN(ProgramTest)
#include "tst_cli_program.moc"
