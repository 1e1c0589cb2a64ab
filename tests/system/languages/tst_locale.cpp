// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"
#include "search/findtexturedialog.h"
#include "support/dialogs.h"
#include "support/images.h"
#include "support/pictures.h"
#include "support/tablewindow.h"
#include "system/languages/languages.h"

#include <QDir>
#include <QInputDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <QSpinBox>
#include <QTemporaryDir>

/// What is written and read is the same in every language and locale.
class LocaleTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void sameWorkGivesTheSameFiles_data();
    void sameWorkGivesTheSameFiles();
    void windowAloneIsEnglish();

private:
    using Files = QMap<QString, QByteArray>;
    static Files work();
    static void describeFolder(MainWindow *window);
    static void describeTexture(MainWindow *window);
    static void makeProfile(MainWindow *window);
    static void extractAll(MainWindow *window, const QString &folder);
    static void search(MainWindow *window, const QString &picture);
};

namespace
{
QString profiles()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/profiles");
}

template<typename Widget> Widget *child(MainWindow *window, const char *name)
{
    auto *widget = window->findChild<Widget *>(QLatin1String(name));
    if (!widget)
        qFatal("the window has no %s", name);
    return widget;
}

void type(QWidget *field, const char *text)
{
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(field, QLatin1String(text));
}

/// The texts of the row \a row and of all below it.
QByteArray tableBelow(const QTreeWidgetItem *row)
{
    QByteArray text = cellsOf(row).join(QLatin1Char('|')).toUtf8() + '\n';
    for (int i = 0; i < row->childCount(); ++i)
        text += tableBelow(row->child(i));
    return text;
}

void collect(const QString &folder, const QString &prefix, QMap<QString, QByteArray> *files)
{
    const QStringList paths = treeOnDisk(folder);
    for (const QString &path : paths)
        files->insert(prefix + path, bytesOfFile(folder + QLatin1Char('/') + path));
}
}

void LocaleTest::initTestCase()
{
    setApplicationIdentity();
}

void LocaleTest::init()
{
    QSettings().clear();
    QVERIFY(QDir(profiles()).removeRecursively());
    resetCurrentROM();
}

void LocaleTest::cleanup()
{
    QDir(profiles()).removeRecursively();
    resetCurrentROM();
}

/// A new folder under its own name, moved and sized by typing.
void LocaleTest::describeFolder(MainWindow *window)
{
    window->addFile();
    type(child<QLineEdit>(window, "folderOffset"), "0x1A00");
    type(child<QLineEdit>(window, "folderSize"), "16384");
    QTest::mouseClick(child<QPushButton>(window, "folderSave"), Qt::LeftButton);
}

void LocaleTest::describeTexture(MainWindow *window)
{
    window->addTexture();
    type(child<QLineEdit>(window, "textureOffset"), "0xABC");
    type(child<QLineEdit>(window, "textureFormat"), "ci4");
    type(child<QLineEdit>(window, "texturePalette"), "0x2000");
    type(child<QSpinBox>(window, "textureWidth"), "48");
    type(child<QSpinBox>(window, "textureHeight"), "1024");
    QTest::mouseClick(child<QPushButton>(window, "textureSave"), Qt::LeftButton);
}

/// A profile under the name that is proposed, and the table saved to it.
void LocaleTest::makeProfile(MainWindow *window)
{
    DialogAnswer<QInputDialog> name([](QInputDialog *dialog) { dialog->accept(); });
    window->newProfile();
    QVERIFY(name.answered());
    DialogAnswer<QMessageBox> question(
        [](QMessageBox *box) { QTest::mouseClick(box->button(QMessageBox::Save), Qt::LeftButton); });
    window->saveProfile();
    QVERIFY(question.answered());
}

void LocaleTest::extractAll(MainWindow *window, const QString &folder)
{
    window->saveFolder(folder, currentROM.root);
}

/// With all formats that the dialog offers.
void LocaleTest::search(MainWindow *window, const QString &picture)
{
    DialogAnswer<findTextureDialog> answer([](findTextureDialog *dialog) {
        QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("searchButton")), Qt::LeftButton);
    });
    window->loadTexture(picture);
    QVERIFY(answer.answered());
}

/// A day's work. Returns what is on the disk then, and what the table shows.
LocaleTest::Files LocaleTest::work()
{
    const QTemporaryDir folder;
    const QString image = folder.filePath(QStringLiteral("game.z64"));
    const QString picture = folder.filePath(QStringLiteral("Sun.png"));
    QByteArray bytes = cartridgeImage(256 * 1024);
    bytes.replace(0x8000, 4 * 16 * 16, QByteArray("\x20\x40\x60\xFF", 4).repeated(16 * 16));
    writeBytes(image, bytes);
    plainPicture(16, 16, qRgba(0x20, 0x40, 0x60, 0xFF)).save(picture);
    QDir(folder.path()).mkdir(QStringLiteral("out"));

    Files files;
    MainWindow window;
    window.show();
    window.loadFile(image);
    auto *tree = child<QTreeWidget>(&window, "fileTree");
    tree->setCurrentItem(currentROM.root->treeItem);
    describeFolder(&window);
    describeTexture(&window);
    for (const char *field : {"textureWidth", "textureHeight"})
        files.insert(QLatin1String(field), child<QSpinBox>(&window, field)->text().toUtf8());
    tree->setCurrentItem(currentROM.root->treeItem);
    search(&window, picture);
    makeProfile(&window);
    extractAll(&window, folder.filePath(QStringLiteral("out")));
    window.importTexture(QImage(picture), 0x9000, QStringLiteral("rgb5a1"), QByteArray());
    window.saveFile(image);
    tree->expandAll();

    collect(folder.path(), QStringLiteral("folder/"), &files);
    collect(profiles(), QStringLiteral("profiles/"), &files);
    files.insert(QStringLiteral("table"), tableBelow(currentROM.root->treeItem));
    files.insert(QStringLiteral("kind"), window.selectedItemType().toUtf8());
    return files;
}

void LocaleTest::sameWorkGivesTheSameFiles_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("language");

    QTest::newRow("German") << "de_DE"
                            << "de";
    QTest::newRow("German numbers") << "de_DE"
                                    << "en";
    QTest::newRow("Swiss numbers") << "de_CH"
                                   << "de";
    QTest::newRow("Arabic digits") << "ar_EG"
                                   << "en";
    QTest::newRow("Turkish letters") << "tr_TR"
                                     << "en";
}

void LocaleTest::sameWorkGivesTheSameFiles()
{
    QFETCH(QString, locale);
    QFETCH(QString, language);
    const Files expected = work();
    QVERIFY(expected.contains(QStringLiteral("profiles/NQLE0/New Profile/fileList.xml")));
    QVERIFY(expected.contains(QStringLiteral("folder/out/Root/New Folder/New Texture.png")));
    QVERIFY(expected.value(QStringLiteral("table")).contains("New Texture|0x00000ABC|0x00006ABC|0x000024BC"));
    QVERIFY(expected.value(QStringLiteral("table")).contains("|ci4|48|1024|0x00002000\n"));
    QVERIFY(expected.value(QStringLiteral("table")).contains("Sun|0x00008000"));
    init();

    const auto restore = qScopeGuard([before = QLocale()] { QLocale::setDefault(before); });
    QLocale::setDefault(QLocale(locale));
    const InLanguage inLanguage(language);
    const Files found = work();
    QCOMPARE(QStringList(found.keys()), QStringList(expected.keys()));
    for (auto file = expected.cbegin(); file != expected.cend(); ++file)
        QCOMPARE(found.value(file.key()), file.value());
}

/// Programs that use the window's library choose a language themselves.
void LocaleTest::windowAloneIsEnglish()
{
    const auto restore = qScopeGuard([before = QLocale()] { QLocale::setDefault(before); });
    QLocale::setDefault(QLocale(QStringLiteral("de_DE")));
    const MainWindow window;
    QCOMPARE(window.windowTitle(), QStringLiteral("Quillary " QUILLARY_VERSION " - No File Loaded[*]"));
}

QTEST_MAIN(LocaleTest)
#include "tst_locale.moc"
