// SPDX-License-Identifier: MIT
// Window and command line side by side: the same work gives the same bytes and the same file list.
#include "app/mainwindow.h"
#include "demo/democartridge.h"
#include "model/rom.h"
#include "support/dialogs.h"
#include "support/images.h"

#include <QApplication>
#include <QDirIterator>
#include <QImage>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace
{
QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        QTest::qFail(qPrintable("cannot read " + path), __FILE__, __LINE__);
    return file.readAll();
}

QMap<QString, QByteArray> filesBelow(const QString &folder)
{
    QMap<QString, QByteArray> files;
    QDirIterator iterator(folder, QDir::AllEntries | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        const QString path = iterator.next();
        files.insert(QDir(folder).relativeFilePath(path), iterator.fileInfo().isDir() ? QByteArray("a folder") : bytesOf(path));
    }
    return files;
}

class WindowAndCommandLineTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void extractAFolder();
    void extractAnEntry_data();
    void extractAnEntry();
    void replaceAnEntry_data();
    void replaceAnEntry();
    void replaceWithAnotherSize_data();
    void replaceWithAnotherSize();
    void importAFolder();
    void importAPack();
    void search_data();
    void search();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    QString demo(const QString &name) const { return m_master.filePath("demo/" + name); }
    QString list(const QString &profiles) const { return profiles + "/NQDE0/default/fileList.xml"; }
    static QString windowProfiles() { return QCoreApplication::applicationDirPath() + "/profiles"; }
    fileTreeFile *entry(const QString &entryPath) const { return fileTreeContainer().fileFromPath(entryPath); }

    /// Runs the built program with the command line's own profiles.
    void command(const QStringList &arguments)
    {
        QProcess process;
        process.start(QUILLARY_CLI_PROGRAM, arguments + QStringList {"--profiles", path("profiles")});
        QVERIFY(process.waitForFinished(120000));
        QVERIFY2(process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0, process.readAllStandardError());
    }

    /// Saves what the window holds and compares it with the command line's image and file list.
    void compareOutcomes()
    {
        QVERIFY(m_window->saveFile(path("window.z64")));
        QVERIFY2(bytesOf(path("window.z64")) == bytesOf(path("command.z64")), "the images differ");
        m_window->createXMLFile(path("window.xml"));
        m_reread = bytesOf(list(path("profiles")));
        QCOMPARE(bytesOf(path("window.xml")), m_reread);
    }

    QTemporaryDir m_master; ///< The demo cartridge and its file list, which every test copies.
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<MainWindow> m_window;
    QByteArray m_reread;
};

void WindowAndCommandLineTest::initTestCase()
{
    QCoreApplication::setOrganizationName("Brimholt");
    QCoreApplication::setApplicationName("Quillary");
    QVERIFY(m_master.isValid());
    QString error;
    QVERIFY2(demo::writeDemo(demo(""), m_master.filePath("profiles"), &error), qPrintable(error));
}

void WindowAndCommandLineTest::init()
{
    QSettings().clear();
    QDir(windowProfiles()).removeRecursively();
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
    for (const QString &profiles : {windowProfiles(), path("profiles")}) {
        QVERIFY(QDir().mkpath(QFileInfo(list(profiles)).path()));
        QVERIFY(QFile::copy(list(m_master.filePath("profiles")), list(profiles)));
    }
    m_window.reset(new MainWindow);
    m_window->loadFile(demo("demo.v64"));
    QVERIFY(fileTreeContainer().allFiles(currentROM.root).size() > 30);
}

void WindowAndCommandLineTest::cleanup()
{
    m_window.reset();
    resetCurrentROM(); // Else the next image would have this one's file list written first.
    QDir(windowProfiles()).removeRecursively();
}

void WindowAndCommandLineTest::extractAFolder()
{
    m_window->saveFolder(path("by window"), currentROM.root);
    command({"extract", demo("demo.n64"), "-o", path("by command")});
    const QMap<QString, QByteArray> files = filesBelow(path("by window"));
    QVERIFY(files.size() > 40);
    QCOMPARE(filesBelow(path("by command")).keys(), files.keys());
    QVERIFY(filesBelow(path("by command")) == files);
}

void WindowAndCommandLineTest::extractAnEntry_data()
{
    QTest::addColumn<QString>("entryPath");
    QStringList seen;
    for (const demo::Texture &texture : demo::cartridge().textures) {
        if (!texture.listed || seen.contains(texture.format))
            continue;
        seen << texture.format;
        QTest::newRow(qPrintable(texture.format)) << "Root/" + texture.folder + texture.name;
    }
}

void WindowAndCommandLineTest::extractAnEntry()
{
    QFETCH(QString, entryPath);
    QVERIFY(entry(entryPath));
    QVERIFY(m_window->extractTexture(entry(entryPath), path("window.picture")));
    command({"extract", demo("demo.z64"), entryPath, "-o", path("command.picture")});
    QCOMPARE(bytesOf(path("command.picture")), bytesOf(path("window.picture")));
}

void WindowAndCommandLineTest::replaceAnEntry_data()
{
    extractAnEntry_data();
}

void WindowAndCommandLineTest::replaceAnEntry()
{
    QFETCH(QString, entryPath);
    // Another picture of the same size, with a colour table of its own where one is needed.
    const fileTreeFile *texture = entry(entryPath);
    const bool isJpeg = texture->format == "jpeg";
    QImage picture(texture->width, texture->height, QImage::Format_Indexed8);
    for (int i = 0; i < 16; ++i)
        picture.setColor(i, qRgb(i * 15, 255 - i, i * i));
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, uint((x * 7 + y * 3) % 16));
    }
    const QString file = path(isJpeg ? "picture.jpeg" : "picture.png");
    QVERIFY(picture.convertToFormat(isJpeg ? QImage::Format_RGB32 : QImage::Format_Indexed8).save(file));

    m_window->insertTexture(file, entry(entryPath));
    command({"replace", demo("demo.n64"), entryPath, file, "-o", path("command.z64")});
    QVERIFY(bytesOf(path("command.z64")) != bytesOf(demo("demo.z64")));
    compareOutcomes();
}

void WindowAndCommandLineTest::replaceWithAnotherSize_data()
{
    QTest::addColumn<QString>("choice");
    QTest::addColumn<QString>("button");
    QTest::newRow("ignore") << "ignore"
                            << "Ignore Aspect Ratio";
    QTest::newRow("keep") << "keep"
                          << "Keep Aspect Ratio";
}

void WindowAndCommandLineTest::replaceWithAnotherSize()
{
    QFETCH(QString, choice);
    QFETCH(QString, button);
    QImage picture(50, 20, QImage::Format_ARGB32);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, qRgba(x * 5, y * 12, 200, 55 + x * 4));
    }
    QVERIFY(picture.save(path("picture.png")));
    const QString entryPath = "Root/Interface/Heart";
    {
        const BoxAnswer answer(button);
        m_window->insertTexture(path("picture.png"), entry(entryPath));
        QVERIFY(answer.answered());
    }
    command({"replace", demo("demo.z64"), entryPath, path("picture.png"), "--resize", choice, "-o", path("command.z64")});
    QVERIFY(bytesOf(path("command.z64")) != bytesOf(demo("demo.z64")));
    compareOutcomes();
}

void WindowAndCommandLineTest::importAFolder()
{
    QString log;
    m_window->iterateFolder(demo("import"), currentROM.root, nullptr, &log);
    QCOMPARE(log, QString());
    command({"import-folder", demo("demo.z64"), demo("import"), "-o", path("command.z64")});
    QVERIFY(bytesOf(path("command.z64")) != bytesOf(demo("demo.z64")));
    compareOutcomes();
}

void WindowAndCommandLineTest::importAPack()
{
    const QByteArray before = bytesOf(list(path("profiles")));
    m_window->parseTexturePack(demo("pack"));
    command({"import-pack", demo("demo.n64"), demo("pack"), "-o", path("command.z64")});
    QVERIFY(bytesOf(path("command.z64")) != bytesOf(demo("demo.z64")));
    compareOutcomes();
    QVERIFY(m_reread != before);
}

void WindowAndCommandLineTest::search_data()
{
    QTest::addColumn<bool>("firstOnly");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("choice");
    QTest::newRow("first, overwrite") << true << 0 << "overwrite";
    QTest::newRow("all, overwrite") << false << 0 << "overwrite";
    QTest::newRow("all, create") << false << 1 << "create";
    QTest::newRow("all, ignore") << false << 2 << "ignore";
}

void WindowAndCommandLineTest::search()
{
    QFETCH(bool, firstOnly);
    QFETCH(int, mode);
    QFETCH(QString, choice);
    const QMap<QString, textureFormat> formats {{"rgb5a1", textureFormats::rgb5a1}, {"rgba32", textureFormats::rgba32}};
    QStringList files;
    for (const demo::Picture &picture : demo::cartridge().searches)
        files << demo(picture.path);
    currentROM.lastSelectedFolder = currentROM.root;
    m_window->runFindTexture(files, formats, firstOnly, mode);

    QStringList arguments {"search", demo("demo.v64"), "--add", "--duplicates", choice, "--formats", "rgba32,rgba16"};
    arguments << files;
    if (firstOnly)
        arguments << "--first-only";
    command(arguments);
    m_window->createXMLFile(path("window.xml"));
    const QByteArray found = bytesOf(list(path("profiles")));
    QCOMPARE(bytesOf(path("window.xml")), found);
    int listed = 0;
    for (const demo::Texture &texture : demo::cartridge().textures)
        listed += texture.listed ? 1 : 0;
    QCOMPARE(found.count("<texture ") > listed, mode != 2);
}
}

QTEST_MAIN(WindowAndCommandLineTest)
#include "tst_cli_window.moc"
