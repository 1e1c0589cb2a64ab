// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "support/boxes.h"
#include "support/dialogs.h"
#include "support/filesizelimit.h"
#include "support/images.h"
#include "support/messages.h"
#include "support/permissions.h"

#include <QElapsedTimer>
#include <QHeaderView>
#include <QLockFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QXmlStreamWriter>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

namespace
{
constexpr int imageSize = 0x1000;
const QString parseSignature = QStringLiteral("void MainWindow::parseXML(const QString &)");
const QString createSignature = QStringLiteral("void MainWindow::createXMLFile(const QString &)");

void makeFile(const QString &path, const QByteArray &content)
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

QByteArray rooted(const QByteArray &content)
{
    return "<root version=\"2\">" + content + "</root>";
}

QStringList cellsOf(const QTreeWidgetItem *row)
{
    QStringList cells;
    for (int column = 0; column < row->columnCount(); ++column)
        cells << row->text(column);
    return cells;
}

QStringList childNames(const QTreeWidgetItem *row)
{
    QStringList names;
    for (int i = 0; i < row->childCount(); ++i)
        names << row->child(i)->text(0);
    return names;
}

/// The names of the nodes that the rows below \a row show, waiting rows included.
QStringList childNodeNames(const QTreeWidgetItem *row)
{
    QStringList names;
    for (int i = 0; i < row->childCount(); ++i) {
        const QVariant node = row->child(i)->data(0, Qt::UserRole);
        if (row->child(i)->type() == MainWindow::FolderRow)
            names << node.value<fileTreeDirectory *>()->name;
        else
            names << node.value<fileTreeFile *>()->name;
    }
    return names;
}
}

class FileListTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void clearingLeavesAnEmptyRoot();
    void clearingForgetsSelectionAndRows();
    void clearingKeepsTheNodes();

    void parsingMakesNodesAndRows();
    void parsingWritesDebugLines();
    void parsingAddsToTheTable();
    void parsingFillsRowsOfExpandedFolders();
    void parsingSortsByTheCurrentColumn();
    void unreadableListsAreReported_data();
    void unreadableListsAreReported();
    void malformedListsKeepWhatWasRead();
    void malformedListsAreKeptBesideTheirSuccessor();
    void listsOfOthersAreKept_data();
    void listsOfOthersAreKept();
    void listsThatCannotBeKeptAreNotReplaced();
    void waitsForAnotherProgram();
    void messagesShowNamesAsTheyAre();

    void writingReplacesTheFile();
    void writingSortsTheTableButNotTheRows();
    void unwritableListsAreReported_data();
    void unwritableListsAreReported();
    void aFullDiskLeavesTheOldList();
    void innerWritesOneFolder();

    void removesTheFoldersOfAPath_data();
    void removesTheFoldersOfAPath();

    void deepTables_data();
    void deepTables();
    void manyEntries();

private:
    QString pathOf(const QString &name) const { return m_folder->filePath(name); }
    QString makeList(const QByteArray &document)
    {
        const QString path = pathOf(QStringLiteral("fileList.xml"));
        makeFile(path, document);
        return path;
    }
    void load(const QByteArray &document)
    {
        m_window->clearFileTable();
        m_window->parseXML(makeList(document));
    }

    QScopedPointer<QTemporaryDir> m_folder;
    QScopedPointer<MainWindow> m_window;
    QTreeWidget *m_tree = nullptr;
};

void FileListTest::initTestCase()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Brimholt"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillary"));
}

void FileListTest::init()
{
    QSettings().clear();
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
    loadIntoCurrentROM(cartridgeImage(imageSize));
    m_window.reset(new MainWindow);
    m_tree = m_window->findChild<QTreeWidget *>();
    QVERIFY(m_tree);
    m_window->clearFileTable();
}

void FileListTest::cleanup()
{
    m_window.reset();
    resetCurrentROM();
}

void FileListTest::clearingLeavesAnEmptyRoot()
{
    load(rooted("<directory><texture/></directory><texture/>"));
    currentROM.root->address = 0x20; // Not shown: it never counts.
    currentROM.root->size = 5;
    m_window->clearFileTable();

    QVERIFY(currentROM.root->directories.isEmpty());
    QVERIFY(currentROM.root->files.isEmpty());
    QCOMPARE(currentROM.root->size, imageSize);
    QCOMPARE(m_tree->topLevelItemCount(), 1);
    QTreeWidgetItem *row = m_tree->topLevelItem(0);
    QCOMPARE(row->type(), 1002);
    QCOMPARE(row->childCount(), 0);
    QCOMPARE(cellsOf(row),
             (QStringList {QStringLiteral("Root"), QStringLiteral("0x00000000"), QStringLiteral("0x00001000"),
                           QStringLiteral("0x00000000"), QStringLiteral("0x00001000"), QStringLiteral("0x00001000")}));
    const QVariant node = row->data(0, Qt::UserRole);
    QCOMPARE(QByteArray(node.typeName()), QByteArray("fileTreeDirectory*"));
    QCOMPARE(node.value<fileTreeDirectory *>(), currentROM.root);
    QCOMPARE(currentROM.root->treeItem, row);
}

void FileListTest::clearingForgetsSelectionAndRows()
{
    load(rooted("<directory name=\"d\"><texture name=\"a\"/><texture name=\"b\"/></directory><texture name=\"c\"/>"));
    fileTreeDirectory *folder = currentROM.root->directories.first();
    fileTreeFile *texture = folder->files.first();
    m_tree->expandAll();
    m_tree->setCurrentItem(texture->treeItem);
    QCOMPARE(currentROM.lastSelectedTexture, texture);
    QCOMPARE(currentROM.selectedType, 2);

    // While the old rows go, nothing may select one of them again.
    QList<fileTreeFile *> seen;
    connect(m_tree, &QTreeWidget::itemSelectionChanged, this, [&seen] { seen << currentROM.lastSelectedTexture; });
    connect(m_tree, &QTreeWidget::currentItemChanged, this, [this] {
        if (m_tree->currentItem())
            QFAIL("the current row moved on");
    });
    m_window->clearFileTable();
    QCOMPARE(seen, QList<fileTreeFile *> {nullptr});
    QCOMPARE(currentROM.selectedType, 0);
    QVERIFY(!currentROM.lastSelectedTexture);
    QVERIFY(!currentROM.lastSelectedFolder);
    QVERIFY(m_tree->selectedItems().isEmpty());
    QVERIFY(!texture->treeItem);
    QVERIFY(!folder->treeItem);
    QVERIFY(!currentROM.editedTexture->treeItem);
    QVERIFY(!currentROM.editedFolder->treeItem);
    // Whoever still holds the nodes may refresh or remove them.
    m_window->updateTextureInTree(texture);
    m_window->updateChildrenInTree(folder);
    texture->destroy();
    folder->destroy();
    QCOMPARE(m_tree->topLevelItem(0)->childCount(), 0);
}

void FileListTest::clearingKeepsTheNodes()
{
    load(rooted("<directory name=\"d\"><texture name=\"a\"/></directory>"));
    fileTreeDirectory *folder = currentROM.root->directories.first();
    m_window->clearFileTable();
    QCOMPARE(QString(folder->name), QStringLiteral("d"));
    QCOMPARE(folder->files.size(), 1);
    QCOMPARE(QString(folder->files.first()->name), QStringLiteral("a"));
}

void FileListTest::parsingMakesNodesAndRows()
{
    load(rooted("<directory name=\"Outer\" address=\"0x100\" size=\"0x80\">"
                "<directory name=\"Inner\" address=\"0x20\" size=\"0x10\"/><texture name=\"t\" address=\"0x8\"/></directory>"
                "<directory name=\"Empty\" address=\"0x400\" size=\"0x10\"/>"));
    const QTreeWidgetItem *rootRow = m_tree->topLevelItem(0);
    QCOMPARE(childNames(rootRow), (QStringList {QStringLiteral("Outer"), QStringLiteral("Empty")}));
    const QTreeWidgetItem *outer = rootRow->child(0);
    QCOMPARE(outer->type(), 1002);
    QCOMPARE(cellsOf(outer).mid(1, 5),
             (QStringList {QStringLiteral("0x00000100"), QStringLiteral("0x00000180"), QStringLiteral("0x00000100"),
                           QStringLiteral("0x00000180"), QStringLiteral("0x00000080")}));
    QCOMPARE(outer->childCount(), 2);
    const fileTreeDirectory *folder = currentROM.root->directories.first();
    QCOMPARE(folder->treeItem, outer);
    const QTreeWidgetItem *texture = folder->files.first()->treeItem;
    QCOMPARE(texture->parent(), outer);
    QCOMPARE(texture->type(), 1001);
    QCOMPARE(texture->text(1), QString());
    QCOMPARE(texture->data(1, Qt::UserRole), QVariant(false));
    m_tree->expandItem(rootRow->child(0));
    QCOMPARE(texture->text(1), QStringLiteral("0x00000008"));
    QCOMPARE(texture->text(3), QStringLiteral("0x00000108"));
    QCOMPARE(texture->data(1, Qt::UserRole), QVariant(true));
}

void FileListTest::parsingWritesDebugLines()
{
    const QString path =
        makeList(rooted("<directory name=\"A\"><directory name=\"B &quot;\"/></directory><directory name=\"A\"/>"));
    MessageCapture log;
    m_window->parseXML(path);
    QCOMPARE(log.textsOf(parseSignature),
             (QStringList {QStringLiteral("Starting dir \"A\""), QStringLiteral("Starting dir \"B \\\"\""),
                           QStringLiteral("Ending dir \"B \\\"\""), QStringLiteral("Ending dir \"A\""),
                           QStringLiteral("Starting dir \"A (2)\""), QStringLiteral("Ending dir \"A (2)\"")}));
    QVERIFY(!log.texts().contains(QStringLiteral("sorting")));
    for (const LoggedMessage &message : log.all()) {
        QCOMPARE(message.type, QtDebugMsg);
        QVERIFY(message.file.contains(QLatin1String("mainwindow")));
    }
}

void FileListTest::parsingAddsToTheTable()
{
    load(rooted("<texture name=\"a\"/>"));
    m_window->parseXML(makeList(rooted("<texture name=\"a\"/>")));
    QCOMPARE(childNodeNames(m_tree->topLevelItem(0)), (QStringList {QStringLiteral("a"), QStringLiteral("a (2)")}));
}

void FileListTest::parsingFillsRowsOfExpandedFolders()
{
    load(rooted("<texture name=\"a\"/>"));
    m_tree->expandItem(m_tree->topLevelItem(0));
    m_window->parseXML(makeList(rooted("<texture name=\"b\" address=\"0x10\"/>")));
    QCOMPARE(childNames(m_tree->topLevelItem(0)), (QStringList {QStringLiteral("a"), QStringLiteral("b")}));
}

void FileListTest::parsingSortsByTheCurrentColumn()
{
    const QByteArray document = rooted("<directory name=\"b\" address=\"2\"/><directory name=\"c\" address=\"1\"/>"
                                       "<directory name=\"a\" address=\"3\"/>");
    const auto names = [this] { return childNames(m_tree->topLevelItem(0)).join(QString()); };
    load(document);
    QCOMPARE(names(), QStringLiteral("cba"));
    m_tree->sortByColumn(0, Qt::AscendingOrder);
    load(document);
    QCOMPARE(names(), QStringLiteral("abc"));
    m_tree->sortByColumn(0, Qt::DescendingOrder);
    load(document);
    QCOMPARE(names(), QStringLiteral("cba"));
    QCOMPARE(m_tree->header()->sortIndicatorSection(), 0);
    QCOMPARE(m_tree->header()->sortIndicatorOrder(), Qt::DescendingOrder);
}

void FileListTest::unreadableListsAreReported_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("folder") << QStringLiteral("folder");
    QTest::newRow("pipe") << QStringLiteral("pipe");
}

void FileListTest::unreadableListsAreReported()
{
    QFETCH(QString, kind);
    load(rooted("<texture name=\"a\"/>"));
    const QString path = pathOf(kind);
    if (kind == QLatin1String("folder"))
        QVERIFY(QDir().mkpath(path));
    if (kind == QLatin1String("pipe"))
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);

    BoxAnswer box(QStringLiteral("OK"));
    m_window->parseXML(path);
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("parseXML"));
    QCOMPARE(box.text, QStringLiteral("Couldn't open ") + path);
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.buttons, QStringList {QStringLiteral("OK")});
    QCOMPARE(currentROM.root->files.size(), 1);
    QCOMPARE(m_tree->topLevelItem(0)->childCount(), 1);
}

void FileListTest::malformedListsKeepWhatWasRead()
{
    const QString path = makeList("<root><directory name=\"b\" address=\"2\"/><directory name=\"a\" address=\"1\"/></list>");
    BoxAnswer box(QStringLiteral("OK"));
    m_window->parseXML(path);
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("XMLReader::parseXML"));
    QCOMPARE(box.text, QStringLiteral("Opening and ending tag mismatch."));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(currentROM.root->directories.size(), 2);
    QCOMPARE(childNames(m_tree->topLevelItem(0)), (QStringList {QStringLiteral("a"), QStringLiteral("b")}));
}

void FileListTest::malformedListsAreKeptBesideTheirSuccessor()
{
    const QByteArray damaged = "<root><texture name=\"a\"/><texture name=\"b\"><texture name=\"c\"/></root>";
    const QString path = makeList(damaged);
    makeFile(path + QStringLiteral(".damaged"), "of an earlier time");
    BoxAnswer box(QStringLiteral("OK"));
    m_window->parseXML(path);
    QVERIFY(box.answered());
    QVERIFY(box.informativeText.contains(path + QStringLiteral(".damaged.2")));
    m_window->createXMLFile(path);
    QVERIFY(contentOf(path) != damaged);
    QCOMPARE(contentOf(path + QStringLiteral(".damaged")), QByteArray("of an earlier time"));
    QCOMPARE(contentOf(path + QStringLiteral(".damaged.2")), damaged);
    QVERIFY(!QFile::exists(path + QStringLiteral(".1")));

    // The same list again needs no further copy; a link is not written through.
    QVERIFY(QFile::link(pathOf(QStringLiteral("outside")), path + QStringLiteral(".damaged.3")));
    for (const QByteArray &list : {damaged, QByteArray("<root>other")}) {
        makeFile(path, list);
        BoxAnswer next(QStringLiteral("OK"));
        m_window->parseXML(path);
        QVERIFY(next.answered());
    }
    QCOMPARE(contentOf(path + QStringLiteral(".damaged.4")), QByteArray("<root>other"));
    QVERIFY(!QFile::exists(path + QStringLiteral(".damaged.5")));
    QVERIFY(!QFile::exists(pathOf(QStringLiteral("outside"))));
}

void FileListTest::listsOfOthersAreKept_data()
{
    QTest::addColumn<bool>("readBefore");
    QTest::newRow("changed since it was read") << true;
    QTest::newRow("never read") << false;
}

void FileListTest::listsOfOthersAreKept()
{
    QFETCH(bool, readBefore);
    const QString path = pathOf(QStringLiteral("fileList.xml"));
    if (readBefore) {
        load(rooted("<texture name=\"T\"/>"));
        m_window->createXMLFile(path);
        m_window->createXMLFile(path);
        QVERIFY(!QFile::exists(path + QStringLiteral(".1")));
    }
    makeFile(path, "another program's");
    MessageCapture log;
    m_window->createXMLFile(path);
    QCOMPARE(contentOf(path + QStringLiteral(".1")), QByteArray("another program's"));
    QCOMPARE(log.texts().filter(path + QStringLiteral(".1")).size(), 1);
    const QByteArray own = contentOf(path);
    QVERIFY(own.startsWith("<?xml"));
    makeFile(path, "a third one's");
    m_window->createXMLFile(path);
    QCOMPARE(contentOf(path), own);
    QCOMPARE(contentOf(path + QStringLiteral(".1")), QByteArray("another program's"));
    QCOMPARE(contentOf(path + QStringLiteral(".2")), QByteArray("a third one's"));
}

void FileListTest::listsThatCannotBeKeptAreNotReplaced()
{
    const QString path = makeList("unreadable");
    QVERIFY(QFile::setPermissions(path, QFile::WriteOwner));
    const WithoutPrivileges unprivileged;
    {
        BoxAnswer box(QStringLiteral("OK"));
        m_window->parseXML(path);
        QCOMPARE(box.text, QStringLiteral("Couldn't open ") + path);
    }
    BoxAnswer box(QStringLiteral("OK"));
    m_window->createXMLFile(path);
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("createXMLFile"));
    QCOMPARE(box.text, QStringLiteral("Couldn't open ") + path);
    QVERIFY2(box.informativeText.startsWith(
                 QLatin1String("The list that is there was not read whole, and no copy of it could be made")),
             qPrintable(box.informativeText));
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
    QCOMPARE(contentOf(path), QByteArray("unreadable"));
    // Readable again, it is kept.
    m_window->createXMLFile(path);
    QCOMPARE(contentOf(path + QStringLiteral(".1")), QByteArray("unreadable"));
    QVERIFY(contentOf(path).startsWith("<?xml"));
}

/// Two programs that write the same list wait for each other; a lock whose program has ended is ignored.
void FileListTest::waitsForAnotherProgram()
{
    const QString path = pathOf(QStringLiteral("out.xml"));
    QLockFile other(path + QStringLiteral(".lock"));
    QVERIFY(other.tryLock(0));
    {
        BoxAnswer box(QStringLiteral("OK"));
        QElapsedTimer time;
        time.start();
        m_window->createXMLFile(path);
        QVERIFY(box.answered());
        QVERIFY2(box.informativeText.contains(path + QStringLiteral(".lock")), qPrintable(box.informativeText));
        QVERIFY(time.elapsed() >= 4500 && time.elapsed() < 10000);
        QVERIFY(!QFile::exists(path));
    }
    other.unlock();
    makeFile(path + QStringLiteral(".lock"), "999999999\nquillary\n" + QSysInfo::machineHostName().toUtf8() + "\n");
    m_window->createXMLFile(path);
    QVERIFY(QFile::exists(path));
    QVERIFY(!QFile::exists(path + QStringLiteral(".lock")));
}

void FileListTest::messagesShowNamesAsTheyAre()
{
    const QString path = pathOf(QStringLiteral("<b>bold</b>"));
    Qt::TextFormat format = Qt::AutoText;
    Qt::TextInteractionFlags interaction;
    bool okHasFocus = false;
    DialogAnswer<QMessageBox> box([&](QMessageBox *shown) {
        format = shown->textFormat();
        interaction = shown->textInteractionFlags();
        okHasFocus = shown->button(QMessageBox::Ok) == shown->focusWidget();
        shown->accept();
    });
    m_window->parseXML(path);
    QVERIFY(box.answered());
    QCOMPARE(format, Qt::PlainText);
    QVERIFY(interaction.testFlag(Qt::TextSelectableByKeyboard));
    QVERIFY(okHasFocus);
}

void FileListTest::writingReplacesTheFile()
{
    load(rooted("<texture name=\"T\" address=\"0x10\"/>"));
    const QString path = pathOf(QStringLiteral("out.xml"));
    makeFile(path, QByteArray(100000, 'x'));
    m_window->createXMLFile(path);
    QCOMPARE(contentOf(path),
             QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                        "<!--This list was created using Brimholt's Quillary.-->\n"
                        "<!--The root version attribute is used by the parser to determine how it should read the data. Do not "
                        "change it unless you know what you're doing.-->\n"
                        "<root version=\"2\">\n"
                        "\t<texture name=\"T\" address=\"0x00000010\" format=\"rgba32\" width=\"32\" height=\"32\"/>\n"
                        "</root>\n"));
}

void FileListTest::writingSortsTheTableButNotTheRows()
{
    m_tree->sortByColumn(0, Qt::AscendingOrder);
    load(rooted("<directory name=\"a\" address=\"2\"/><directory name=\"b\" address=\"1\"/>"));
    m_window->createXMLFile(pathOf(QStringLiteral("out.xml")));
    QCOMPARE(QString(currentROM.root->directories.first()->name), QStringLiteral("b"));
    QCOMPARE(childNames(m_tree->topLevelItem(0)), (QStringList {QStringLiteral("a"), QStringLiteral("b")}));
}

void FileListTest::unwritableListsAreReported_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("in a missing folder") << QStringLiteral("missing/fileList.xml");
    QTest::newRow("below a file") << QStringLiteral("file/fileList.xml");
    QTest::newRow("a folder") << QStringLiteral("folder");
}

void FileListTest::unwritableListsAreReported()
{
    QFETCH(QString, name);
    makeFile(pathOf(QStringLiteral("file")), "old");
    QVERIFY(QDir().mkpath(pathOf(QStringLiteral("folder"))));
    load(rooted("<directory name=\"a\" address=\"2\"/><directory name=\"b\" address=\"1\"/>"));
    BoxAnswer box(QStringLiteral("OK"));
    m_window->createXMLFile(pathOf(name));
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("createXMLFile"));
    QCOMPARE(box.text, QStringLiteral("Couldn't open ") + pathOf(name));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(contentOf(pathOf(QStringLiteral("file"))), QByteArray("old"));
    QCOMPARE(QString(currentROM.root->directories.first()->name), QStringLiteral("a"));
}

void FileListTest::aFullDiskLeavesTheOldList()
{
    const QByteArray old = rooted(QByteArray("<texture name=\"A name of some length\"/>").repeated(2000));
    load(old);
    const QString path = pathOf(QStringLiteral("fileList.xml"));
    const QStringList before = QDir(m_folder->path()).entryList();
    MessageCapture log;
    BoxAnswer box(QStringLiteral("OK"));
    {
        const FileSizeLimit limit(50000);
        m_window->createXMLFile(path);
    }
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("createXMLFile"));
    QCOMPARE(box.text, QStringLiteral("Couldn't open ") + path);
    QCOMPARE(log.textsOf(createSignature), QStringList {QStringLiteral("error")});
    QCOMPARE(contentOf(path), old);
    QCOMPARE(QDir(m_folder->path()).entryList(), before);
}

void FileListTest::innerWritesOneFolder()
{
    load(rooted("<directory name=\"A\" address=\"1\" size=\"2\"><texture name=\"T\" format=\"jpeg\"/></directory>"));
    QByteArray document;
    QXmlStreamWriter writer(&document);
    writer.writeStartElement(QStringLiteral("root"));
    m_window->createXMLFileInner(&writer, currentROM.root);
    writer.writeEndElement();
    QCOMPARE(document,
             QByteArray("<root><directory name=\"A\" address=\"0x00000001\" size=\"0x00000002\">"
                        "<texture name=\"T\" address=\"0x00000000\" format=\"jpeg\"/></directory></root>"));
}

void FileListTest::removesTheFoldersOfAPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");
    QTest::newRow("absolute") << QStringLiteral("/a/b c/d.png") << QStringLiteral("d.png");
    QTest::newRow("relative") << QStringLiteral("a/d.png") << QStringLiteral("d.png");
    QTest::newRow("name alone") << QStringLiteral("d.png") << QStringLiteral("d.png");
    QTest::newRow("empty") << QString() << QString();
}

void FileListTest::removesTheFoldersOfAPath()
{
    QFETCH(QString, path);
    QFETCH(QString, name);
    QCOMPARE(m_window->removeFilePath(path), name);
}

void FileListTest::deepTables_data()
{
    QTest::addColumn<int>("depth");
    QTest::newRow("5,000") << 5000;
    QTest::newRow("100,000") << 100000;
}

void FileListTest::deepTables()
{
    QFETCH(int, depth);
    const QByteArray document = rooted(QByteArray("<directory name=\"d\">").repeated(depth) + "<texture name=\"deep\"/>"
                                       + QByteArray("</directory>").repeated(depth));
    MessageCapture log;
    load(document);
    QCOMPARE(fileTreeContainer().allDirectories(currentROM.root).size(), depth);
    const fileTreeFile *deepest = fileTreeContainer().allFiles(currentROM.root).first();
    int rows = 0;
    for (QTreeWidgetItem *row = m_tree->topLevelItem(0); row->childCount() > 0; row = row->child(0))
        ++rows;
    QCOMPARE(rows, qMin(depth + 1, MainWindow::deepestFolderRow));
    QCOMPARE(deepest->treeItem != nullptr, depth <= MainWindow::deepestFolderRow);

    for (const Qt::SortOrder order : {Qt::DescendingOrder, Qt::AscendingOrder})
        m_tree->sortByColumn(0, order);
    m_window->updateChildrenInTree(currentROM.root);
    m_tree->expandItem(m_tree->topLevelItem(0));
    if (deepest->treeItem) {
        m_tree->setCurrentItem(deepest->treeItem);
        QCOMPARE(currentROM.lastSelectedTexture, deepest);
    }
    m_window->clearFileTable();
    QCOMPARE(m_tree->topLevelItem(0)->childCount(), 0);
    load(document);
}

void FileListTest::manyEntries()
{
    constexpr int count = 100000;
    load(rooted("<directory name=\"d\">" + QByteArray("<texture name=\"Sky\" format=\"none\"/>").repeated(count)
                + "</directory>"));
    QTreeWidgetItem *row = m_tree->topLevelItem(0)->child(0);
    QCOMPARE(row->childCount(), count);
    m_tree->expandItem(row);
    QCOMPARE(row->child(count - 1)->text(6), QStringLiteral("none"));
    m_tree->setCurrentItem(row->child(count / 2));
    m_window->clearFileTable();
    QCOMPARE(m_tree->topLevelItem(0)->childCount(), 0);
}

QTEST_MAIN(FileListTest)
#include "tst_filelist.moc"
