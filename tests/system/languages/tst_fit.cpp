// SPDX-License-Identifier: MIT
#include "search/findtexturedialog.h"
#include "support/dialogs.h"
#include "support/pictures.h"
#include "support/tablewindow.h"
#include "system/languages/cuttexts.h"
#include "system/languages/languages.h"

#include <QComboBox>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QStatusBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QToolTip>

namespace
{
constexpr QSize screenSize(1280, 800); ///< That everything has to fit on.

/// As a test fails: each text on a line of its own.
QByteArray lines(const QStringList &texts)
{
    return texts.join(QLatin1Char('\n')).toLocal8Bit();
}

/// What is cut off in the dialog of type Dialog that \a operation shows; the dialog is closed then.
template<typename Dialog> QStringList cutInDialog(const std::function<void()> &operation)
{
    QStringList cut;
    DialogAnswer<Dialog> answer([&cut](Dialog *dialog) {
        QApplication::processEvents();
        cut = CutTexts::in(dialog);
        if (dialog->width() > screenSize.width() || dialog->height() > screenSize.height())
            cut << QStringLiteral("the dialog is larger than the screen");
        dialog->reject();
    });
    operation();
    if (!answer.answered())
        cut << QStringLiteral("no such dialog was shown");
    return cut;
}
}

/// No text of the window and its dialogs is cut off, in any language.
class FitTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void initTestCase_data();
    void cleanup();

    void window_data();
    void window();
    void largestPanels();
    void menus();
    void statusMessages();
    void toolTips();
    void deleteQuestion();
    void aboutBox();
    void unsavedImage();
    void unsavedTable();
    void profileDialogs();
    void resizeQuestion();
    void folderReport();
    void searchDialog();
    void searchProgress();
    void errorBoxes();

    void longTextsAreNoticed_data();
    void longTextsAreNoticed();

private:
    static fileTreeFile *showEverything(TableWindow *window);
};

void FitTest::initTestCase()
{
    setApplicationIdentity();
    // Without a font every text would need no room at all.
    QVERIFY(QApplication::fontMetrics().horizontalAdvance(QStringLiteral("Palette")) > 20);
}

void FitTest::initTestCase_data()
{
    QTest::addColumn<QString>("language");
    QTest::newRow("English") << "en";
    const QStringList languages = QStringLiteral(QUILLARY_LANGUAGES).split(QLatin1Char('|'));
    for (const QString &language : languages) {
        QCOMPARE(translationFor({language}), language);
        QTest::newRow(qPrintable(language)) << language;
    }
}

void FitTest::cleanup()
{
    resetCurrentROM();
}

/// Shows what is hidden at first: the row of a palette, and that there are unsaved changes, in the table and in both boxes.
fileTreeFile *FitTest::showEverything(TableWindow *window)
{
    fileTreeDirectory *folder = window->addFolder(currentROM.root, QStringLiteral("Level"), 0x1000);
    fileTreeFile *texture = window->addTexture(folder, QStringLiteral("Sky"), 0x100, QStringLiteral("ci8"));
    window->rootRow()->setExpanded(true);
    window->select(texture);
    for (const char *field : {"folderName", "textureName"})
        QTest::keyClicks(window->find<QLineEdit>(field), QStringLiteral("a"));
    (*window)->addFile();
    window->select(texture);
    for (const char *field : {"folderName", "textureName"})
        QTest::keyClicks(window->find<QLineEdit>(field), QStringLiteral("a"));
    window->find<QTabWidget>("tabWidget")->setTabEnabled(1, true);
    return texture;
}

void FitTest::window_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("tab");
    for (int tab : {0, 1}) {
        QTest::addRow("default size, tab %d", tab) << QSize() << tab;
        QTest::addRow("1280x800, tab %d", tab) << screenSize << tab;
        QTest::addRow("smallest size, tab %d", tab) << QSize(1, 1) << tab;
    }
}

void FitTest::window()
{
    QFETCH_GLOBAL(QString, language);
    QFETCH(QSize, size);
    QFETCH(int, tab);
    const InLanguage inLanguage(language);
    TableWindow window;
    const QSize usual = window->size();
    window.show();
    showEverything(&window);
    window.find<QTabWidget>("tabWidget")->setCurrentIndex(tab);
    window->resize(size.isValid() ? size : usual);
    QApplication::processEvents();
    QVERIFY(window->width() <= qMax(usual.width(), screenSize.width()));
    for (const char *shown : {"folderUnsaved", "textureUnsaved", "texturePalette"})
        QCOMPARE(window.find<QWidget>(shown)->isVisible(), tab == 0);
    QCOMPARE(window.find<QWidget>("unsavedFileList")->isVisible(), tab == 1);
    const QStringList cut = CutTexts::in(window.get());
    QVERIFY2(cut.isEmpty(), lines(cut));
}

/// The window must be able to be as small as a common screen.
void FitTest::largestPanels()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    TableWindow window;
    window.show();
    showEverything(&window);
    for (int tab : {0, 1}) {
        window.find<QTabWidget>("tabWidget")->setCurrentIndex(tab);
        window->resize(1, 1);
        QApplication::processEvents();
        QVERIFY2(window->width() <= screenSize.width() && window->height() <= screenSize.height(),
                 qPrintable(QStringLiteral("%1x%2").arg(window->width()).arg(window->height())));
    }
}

void FitTest::menus()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    TableWindow window;
    window.show();
    int menus = 0;
    const QList<QMenu *> all = window->findChildren<QMenu *>();
    for (QMenu *menu : all) {
        if (menu->objectName().isEmpty())
            continue;
        ++menus;
        menu->popup(QPoint(0, 0));
        QApplication::processEvents();
        QVERIFY(menu->size().width() >= menu->sizeHint().width() && menu->size().height() >= menu->sizeHint().height());
        QVERIFY2(menu->height() <= screenSize.height(), qPrintable(menu->objectName()));
        menu->hide();
    }
    QCOMPARE(menus, 5);
}

/// What an action says about itself fits into the smallest window, and so do the messages of the work itself.
void FitTest::statusMessages()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    TableWindow window;
    window.show();
    window->resize(screenSize);
    QApplication::processEvents();
    constexpr int marginAndGrip = 6 + 20;
    const int room = window->statusBar()->width() - marginAndGrip;
    const auto fits = [&](const QString &text) {
        const int width = window->statusBar()->fontMetrics().horizontalAdvance(text);
        return width <= room ? QByteArray()
                             : QStringLiteral("\"%1\" needs %2, has %3").arg(text).arg(width).arg(room).toLocal8Bit();
    };
    QStringList texts;
    const QList<QAction *> actions = window->findChildren<QAction *>();
    for (const QAction *action : actions)
        texts << action->statusTip();
    for (const char *text :
         {"There was an error with the texture converision: Incorrect length. Texture was not imported",
          "The texture is using an unsupported format. Texture was not imported",
          "Could not extract texture (unsupported format or missing data)", "You must select a folder to search in.",
          "You must select a folder or a texture in the list to extract", "You must select a texture in the list to import over",
          "The changes to the last selected texture has been saved.", "The changes to the last selected folder has been saved."})
        texts << MainWindow::tr(text);
    for (const char *text : {"Texture format %1 is not supported, can't import texture",
                             "Texture format %1 is not supported, can't extract texture"})
        texts << MainWindow::tr(text).arg(QStringLiteral("rgb5a1"));
    for (const QString &text : qAsConst(texts))
        QVERIFY2(fits(text).isEmpty(), fits(text).constData());
}

/// A tool tip of plain text is one line.
void FitTest::toolTips()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    TableWindow window;
    showEverything(&window);
    int tips = 0;
    const QList<QWidget *> widgets = window->findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        const QString tip = widget->toolTip();
        if (tip.isEmpty() || Qt::mightBeRichText(tip))
            continue;
        ++tips;
        QVERIFY2(QFontMetrics(QToolTip::font()).horizontalAdvance(tip) < screenSize.width(), qPrintable(tip));
    }
    QVERIFY(tips >= 3);
}

void FitTest::deleteQuestion()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    TableWindow window;
    window.show();
    fileTreeFile *texture = showEverything(&window);
    for (int i : {0, 1}) {
        if (i == 0)
            window.select(texture);
        else
            window.select(texture->parent);
        const QStringList cut = cutInDialog<QMessageBox>([&] { window->deleteItem(); });
        QVERIFY2(cut.isEmpty(), lines(cut));
    }
}

void FitTest::aboutBox()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    TableWindow window;
    window.show();
    const QStringList cut = cutInDialog<QMessageBox>([&] { window->about(); });
    QVERIFY2(cut.isEmpty(), lines(cut));
}

void FitTest::unsavedImage()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    TableWindow window;
    window.show();
    window->setWindowModified(true);
    const QStringList cut = cutInDialog<QMessageBox>([&] { window->maybeSave(); });
    QVERIFY2(cut.isEmpty(), lines(cut));
}

void FitTest::unsavedTable()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    TableWindow window;
    window.show();
    showEverything(&window);
    const QStringList cut = cutInDialog<QMessageBox>([&] { window->loadProfile(); });
    QVERIFY2(cut.isEmpty(), lines(cut));
}

void FitTest::profileDialogs()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    TableWindow window;
    window.show();
    currentROM.autoloadProfile = QStringLiteral("default");
    currentROM.profileName = QStringLiteral("default");
    auto *profile = window.find<QComboBox>("profile");
    profile->addItems({QStringLiteral("default"), QStringLiteral("Second")});

    QStringList cut = cutInDialog<QInputDialog>([&] { window->newProfile(); });
    profile->setCurrentIndex(0);
    cut += cutInDialog<QMessageBox>([&] { window->deleteProfile(); }); // It is the one that is loaded at the start.
    currentROM.autoloadProfile = QStringLiteral("Second");
    cut += cutInDialog<QMessageBox>([&] { window->deleteProfile(); }); // It is the one that is loaded.
    currentROM.autoloadProfile = QStringLiteral("default");
    profile->setCurrentIndex(1);
    cut += cutInDialog<QMessageBox>([&] { window->deleteProfile(); });
    cut += cutInDialog<QMessageBox>([&] { window->saveProfile(); });
    QVERIFY2(cut.isEmpty(), lines(cut));
}

void FitTest::resizeQuestion()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    const QTemporaryDir folder;
    const QString picture = folder.filePath(QStringLiteral("large.png"));
    QVERIFY(plainPicture(100, 50, qRgb(1, 2, 3)).save(picture));
    TableWindow window;
    window.show();
    fileTreeFile *texture = window.addTexture(currentROM.root, QStringLiteral("Sky"), 0x100);
    const QStringList cut = cutInDialog<QMessageBox>([&] { window->insertTexture(picture, texture); });
    QVERIFY2(cut.isEmpty(), lines(cut));
}

void FitTest::folderReport()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    const QTemporaryDir folder;
    QVERIFY(plainPicture(100, 50, qRgb(1, 2, 3)).save(folder.filePath(QStringLiteral("Sky.png"))));
    TableWindow window;
    window.show();
    window.select(window.addTexture(currentROM.root, QStringLiteral("Sky"), 0x100));
    FileDialogAnswer choice(folder.path());
    const QStringList cut = cutInDialog<QMessageBox>([&] { window->importFolder(); });
    QVERIFY(choice.answered());
    QVERIFY2(cut.isEmpty(), lines(cut));
}

void FitTest::searchDialog()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    TableWindow window;
    window.show();
    window.select(currentROM.root);
    const QStringList cut = cutInDialog<findTextureDialog>([&] { window->loadTexture(); });
    QVERIFY2(cut.isEmpty(), lines(cut));
}

void FitTest::searchProgress()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    const QTemporaryDir folder;
    const QString picture = folder.filePath(QStringLiteral("Sky.png"));
    QVERIFY(plainPicture(16, 16, qRgb(1, 2, 3)).save(picture));
    TableWindow window;
    window.show();
    window.select(currentROM.root);
    QStringList cut;
    int looks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, &timer, [&] {
        auto *progress = qobject_cast<QProgressDialog *>(QApplication::activeModalWidget());
        if (!progress || !progress->isVisible() || looks > 0)
            return;
        ++looks;
        cut = CutTexts::in(progress);
    });
    timer.start(0);
    window->runFindTexture({picture}, textureFormats::getAsMap(), true, 0);
    QVERIFY(looks > 0);
    QVERIFY2(cut.isEmpty(), lines(cut));
}

void FitTest::errorBoxes()
{
    QFETCH_GLOBAL(QString, language);
    const InLanguage inLanguage(language);
    const QTemporaryDir folder;
    const QString damaged = folder.filePath(QStringLiteral("fileList.xml"));
    QVERIFY(writeBytes(damaged, "<root version=\"2\"><directory"));
    const QString missing = folder.filePath(QStringLiteral("none/game.z64"));
    TableWindow window;
    window.show();
    currentROM.loaded = false;
    QStringList cut = cutInDialog<QMessageBox>([&] { window->loadFile(missing); });
    cut += cutInDialog<QMessageBox>([&] { window->saveFile(missing); });
    cut += cutInDialog<QMessageBox>([&] { window->parseXML(missing); });
    cut += cutInDialog<QMessageBox>([&] { window->createXMLFile(missing); });
    cut += cutInDialog<QMessageBox>([&] { window->parseXML(damaged); });
    QVERIFY2(cut.isEmpty(), lines(cut));
}

/// The checks above must be able to fail: each of these gets a text that is too long for it.
void FitTest::longTextsAreNoticed_data()
{
    QTest::addColumn<QByteArray>("widget");
    for (const char *widget : {"folderSave", "fixedContentAddresses", "folderUnsaved", "folderBox", "textureSave", "tabWidget",
                               "fileTree", "saveProfile", "unsavedFileList", "autoloadProfile", "menuBar", "folderName"})
        QTest::newRow(widget) << QByteArray(widget);
}

void FitTest::longTextsAreNoticed()
{
    QFETCH(QByteArray, widget);
    const QString text = QStringLiteral("A text as long as nobody would write one ").repeated(12);
    TableWindow window;
    window.show();
    showEverything(&window);
    window.find<QTabWidget>("tabWidget")
        ->setCurrentIndex(QByteArrayList {"saveProfile", "unsavedFileList", "autoloadProfile"}.contains(widget) ? 1 : 0);
    QApplication::processEvents();
    QVERIFY(CutTexts::in(window.get()).isEmpty());

    auto *changed = window.find<QWidget>(widget.constData());
    changed->setFixedSize(changed->size());
    if (auto *button = qobject_cast<QAbstractButton *>(changed))
        button->setText(text);
    else if (auto *label = qobject_cast<QLabel *>(changed))
        label->setText(text);
    else if (auto *box = qobject_cast<QGroupBox *>(changed))
        box->setTitle(text);
    else if (auto *tabs = qobject_cast<QTabWidget *>(changed))
        tabs->setTabText(0, text);
    else if (auto *tree = qobject_cast<QTreeWidget *>(changed))
        tree->headerItem()->setText(6, text);
    else if (auto *choice = qobject_cast<QComboBox *>(changed))
        choice->addItem(text);
    else if (auto *bar = qobject_cast<QMenuBar *>(changed))
        bar->addMenu(text);
    else if (auto *field = qobject_cast<QLineEdit *>(changed))
        field->setText(text);
    QApplication::processEvents();
    const QStringList cut = CutTexts::in(window.get());
    QCOMPARE(cut.filter(QStringLiteral("as nobody would write")).size(), 1);
}

QTEST_MAIN(FitTest)
#include "tst_fit.moc"
