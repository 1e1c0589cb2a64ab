// SPDX-License-Identifier: MIT
#include "base/printabletext.h"
#include "cli/profilefolder.h"
#include "support/dialogs.h"
#include "support/tablewindow.h"

#include "app/messagebox.h"

#include <QJsonArray>
#include <QStyledItemDelegate>

#include <algorithm>

namespace
{
/// Names as a list may hold them, each of which steers what is shown around it.
const QStringList steeringNames()
{
    return {QString("red\x1B[31m"),
            QString(QChar(0x9B)) + "31m",
            QString("title\x1B]0;owned\x07"),
            QString("back\b\b\bforth"),
            QString("gnp.exe") + QChar(0x202E) + "gnp",
            QString(QChar(0x2067)) + "isolated",
            QString("line") + QChar(0x2028) + "two",
            QString("mark") + QChar(0x200F),
            QString("line\nfeed"),
            QString("tab\tulator"),
            QString("delete\x7F")};
}

bool steers(const QString &text)
{
    return std::any_of(text.cbegin(), text.cend(),
                       [](QChar character) { return isControlOrBidi(character) && character != '\n'; });
}
}

class TestHostileNames : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { setApplicationIdentity(); }
    void ordinaryTextStaysAsItIs();
    void terminalsGetNoneOfThem_data();
    void terminalsGetNoneOfThem();
    void boxesShowNoneOfThem();
    void theTreeShowsNoneOfThem();
    void identifiersNameNoOtherFolder_data();
    void identifiersNameNoOtherFolder();
};

void TestHostileNames::ordinaryTextStaysAsItIs()
{
    for (const QString &text :
         {QString("Sky 1 (2)"), QString::fromUtf8("Größe 日本語 שלום عربى 🎮"), QString(), QString("a\\b<c>&d;")})
        QCOMPARE(printableText(text), text);
    for (const QString &name : steeringNames()) {
        QVERIFY(steers(name) || name.contains('\n'));
        const QString shown = printableText(name);
        QCOMPARE(shown.size(), name.size());
        QVERIFY(!steers(shown) && !shown.contains('\n'));
        QVERIFY(shown.contains(QChar(QChar::ReplacementCharacter)));
    }
}

void TestHostileNames::terminalsGetNoneOfThem_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::newRow("list") << QStringList {"list"};
    QTest::newRow("list as JSON") << QStringList {"list", "--json"};
    QTest::newRow("info") << QStringList {"info"};
    QTest::newRow("verify") << QStringList {"verify"};
    QTest::newRow("verify as JSON") << QStringList {"verify", "--json"};
    QTest::newRow("extract") << QStringList {"extract", "--output", "@out"};
}

void TestHostileNames::terminalsGetNoneOfThem()
{
    QFETCH(QStringList, command);
    const ProfileFolder folder(cartridgeImage(16 * 1024));
    fileTreeDirectory table;
    QByteArray content;
    const QStringList names = steeringNames();
    for (const QString &name : names) {
        QString escaped;
        for (const QChar character : name) {
            // Characters that XML has no room for cannot come in by a list.
            if (character.unicode() >= 0x20 || character == '\n' || character == '\t')
                escaped += QString("&#%1;").arg(character.unicode());
        }
        content +=
            ("<directory name=\"" + escaped + "\"><texture name=\"" + escaped + "\" format=\"" + escaped + "\"/></directory>")
                .toUtf8();
    }
    folder.addProfile(content);
    QStringList more = command.mid(1).replaceInStrings("@out", folder.path("out"));
    const CommandCall done = folder.call(command.first(), more);
    QVERIFY2(!steers(done.out), qPrintable(done.out));
    QVERIFY2(!steers(done.err), qPrintable(done.err));
    if (command.contains("--json"))
        QVERIFY(!done.json().isEmpty());
    if (command == QStringList({"list", "--json"})) {
        // Only how they are written differs: who reads the document gets the names.
        QStringList read;
        const QJsonArray folders = done.json()["folders"].toArray();
        for (const QJsonValue &value : folders)
            read << value.toObject()["path"].toString();
        for (const QString &name : {names.at(1), names.at(4), names.at(8)})
            QVERIFY2(!read.filter(name).isEmpty(), qPrintable(printableText(name)));
    }
}

void TestHostileNames::boxesShowNoneOfThem()
{
    for (const QString &name : steeringNames()) {
        BoxAnswer box("OK");
        showBox(nullptr, QMessageBox::Warning, "Application", "First <b>line</b>\n" + name);
        QVERIFY(box.answered());
        QVERIFY2(!steers(box.text), qPrintable(box.text));
        QVERIFY(box.text.startsWith("First <b>line</b>\n"));
    }
}

void TestHostileNames::theTreeShowsNoneOfThem()
{
    TableWindow window;
    window.show();
    QTreeWidget *tree = window.tree();
    const auto *delegate = qobject_cast<QStyledItemDelegate *>(tree->itemDelegate());
    QVERIFY(delegate);
    const fileTreeFile *plain = window.addTexture(currentROM.root, "plain", 0);
    const QStringList names = steeringNames();
    for (const QString &name : names) {
        const fileTreeFile *texture = window.addTexture(currentROM.root, name, 0);
        window.rootRow()->setExpanded(true);
        // The row keeps the name, which is edited and found by it.
        QCOMPARE(texture->treeItem->text(0), name);
        const QString shown = delegate->displayText(texture->treeItem->data(0, Qt::DisplayRole), QLocale());
        QVERIFY2(!steers(shown) && !shown.contains('\n'), qPrintable(shown));
        QCOMPARE(tree->visualItemRect(texture->treeItem).height(), tree->visualItemRect(plain->treeItem).height());
    }
}

void TestHostileNames::identifiersNameNoOtherFolder_data()
{
    QTest::addColumn<QByteArray>("identifier");
    QTest::newRow("parent") << QByteArray("../x");
    QTest::newRow("separator") << QByteArray("a/bc");
    QTest::newRow("only separators") << QByteArray("////");
    QTest::newRow("escape") << QByteArray("\x1B[3m");
    QTest::newRow("line feed") << QByteArray("a\nbc");
    QTest::newRow("empty") << QByteArray(4, '\0');
    QTest::newRow("dots") << QByteArray("..\0\0", 4);
}

void TestHostileNames::identifiersNameNoOtherFolder()
{
    QFETCH(QByteArray, identifier);
    const ProfileFolder folder(cartridgeImage(4096, identifier));
    QVERIFY(QDir(folder.path("")).mkpath("profiles"));
    const QStringList before = QDir(folder.path("")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const char *command : {"list", "info", "verify"}) {
        const CommandCall done = folder.call(command);
        QVERIFY(!steers(done.out) && !steers(done.err));
    }
    QCOMPARE(QDir(folder.path("")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot), before);
}

QTEST_MAIN(TestHostileNames)
#include "tst_hostile_names.moc"
