// SPDX-License-Identifier: MIT
// The built program as it is started from a terminal: what it answers without a window, and pictures of its window.
#include "demo/democartridge.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace
{
class ProgramTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void helpNeedsNoDisplay_data();
    void helpNeedsNoDisplay();
    void versionNeedsNoDisplay();
    void refusesWrongUsage_data();
    void refusesWrongUsage();
    void drawsTheEmptyWindow();
    void drawsAnImageNamedFromTheWorkingFolder();
    void takesTheOptionsOfTheToolkit();
    void reportsAnImageThatCannotBeRead();
    void reportsAPictureThatCannotBeWritten();

private:
    /// Runs the program to its end, below the test's own folder. The exit code, or -1 when it had to be stopped or crashed.
    int run(const QStringList &arguments, const QString &platform = QStringLiteral("offscreen"));
    QString path(const QString &name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
    QString m_program; ///< A copy: its profiles lie beside it.
    QString m_output;
    QString m_errors;
};

int ProgramTest::run(const QStringList &arguments, const QString &platform)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), platform);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), path("config"));
    environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("*.debug=false"));
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(m_folder.path());
    process.start(m_program, arguments);
    const bool ended = process.waitForFinished(120000);
    m_output = QString::fromUtf8(process.readAllStandardOutput());
    m_errors = QString::fromUtf8(process.readAllStandardError());
    return ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

void ProgramTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    m_program = path("quillary");
    QVERIFY(QFile::copy(QStringLiteral(QUILLARY_PROGRAM), m_program));
    QString error;
    QVERIFY2(demo::writeDemo(path("demo"), path("profiles"), &error), qPrintable(error));
}

void ProgramTest::init()
{
    QFile::remove(path("window.png"));
}

void ProgramTest::helpNeedsNoDisplay_data()
{
    QTest::addColumn<QString>("option");
    QTest::newRow("long") << "--help";
    QTest::newRow("short") << "-h";
}

void ProgramTest::helpNeedsNoDisplay()
{
    QFETCH(QString, option);
    QCOMPARE(run({option}, "none"), 0);
    QCOMPARE(m_errors, QString());
    QVERIFY(m_output.startsWith("Usage: "));
    QVERIFY(m_output.contains("--screenshot <png>"));
    QVERIFY(m_output.contains("Explore and edit the textures inside Nintendo 64 cartridge images."));
    QVERIFY2(!m_output.contains("stylesheet"), "the toolkit's options are not ours to explain");
}

void ProgramTest::versionNeedsNoDisplay()
{
    QCOMPARE(run({"--version"}, "none"), 0);
    QCOMPARE(m_output, QStringLiteral("Quillary " QUILLARY_VERSION "\n"));
    QCOMPARE(m_errors, QString());
}

void ProgramTest::refusesWrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("complaint");
    QTest::newRow("two images") << QStringList {"a.z64", "b.z64"} << "More than one image is named.";
    QTest::newRow("unknown option") << QStringList {"--fast"} << "Unknown option 'fast'.";
    QTest::newRow("no picture") << QStringList {"--screenshot="} << "The screenshot needs a file name.";
    QTest::newRow("with help") << QStringList {"--help", "a.z64", "b.z64"} << "More than one image is named.";
}

void ProgramTest::refusesWrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, complaint);
    QCOMPARE(run(arguments, "none"), 2);
    QCOMPARE(m_output, QString());
    QCOMPARE(m_errors, "quillary: " + complaint + "\nTry \"quillary --help\".\n");
}

void ProgramTest::drawsTheEmptyWindow()
{
    QCOMPARE(run({"--screenshot", path("window.png")}), 0);
    QCOMPARE(QImage(path("window.png")).size(), QSize(1280, 800));
    QVERIFY2(!m_errors.contains("quillary: "), qPrintable(m_errors));
}

void ProgramTest::drawsAnImageNamedFromTheWorkingFolder()
{
    const QStringList images = QDir(path("demo")).entryList({"*.z64"});
    QVERIFY(!images.isEmpty());
    QCOMPARE(run({"--screenshot", "empty.png"}), 0);
    QCOMPARE(run({"--screenshot", "window.png", "demo/" + images.first()}), 0);
    const QImage picture(path("window.png"));
    QCOMPARE(picture.size(), QSize(1280, 800));
    QVERIFY(picture != QImage(path("empty.png")));
}

void ProgramTest::takesTheOptionsOfTheToolkit()
{
    QCOMPARE(run({"--style", "fusion", "-nograb", "--screenshot", "window.png"}), 0);
    QVERIFY(QFile::exists(path("window.png")));
}

/// There is nobody to close a message box.
void ProgramTest::reportsAnImageThatCannotBeRead()
{
    QCOMPARE(run({"--screenshot", "window.png", "missing.z64"}), 1);
    QVERIFY2(m_errors.contains("quillary: Cannot read file " + path("missing.z64") + ":\n"), qPrintable(m_errors));
    QVERIFY(!QFile::exists(path("window.png")));
}

void ProgramTest::reportsAPictureThatCannotBeWritten()
{
    QVERIFY(QDir().mkpath(path("folder.png")));
    QCOMPARE(run({"--screenshot", path("folder.png")}), 1);
    QVERIFY2(m_errors.contains("quillary: Cannot write file " + path("folder.png") + ":\n"), qPrintable(m_errors));
}
}

QTEST_GUILESS_MAIN(ProgramTest)
#include "tst_program.moc"
