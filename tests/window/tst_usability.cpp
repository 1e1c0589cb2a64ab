// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"
#include "demo/democartridge.h"
#include "search/findtexturedialog.h"
#include "support/dialogs.h"
#include "support/images.h"
#include "support/pictures.h"
#include "support/tablewindow.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QProgressDialog>
#include <QRegularExpression>
#include <QScrollArea>
#include <QSettings>
#include <QSpinBox>
#include <QStatusBar>
#include <QStatusTipEvent>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>

#include <algorithm>
#include <cmath>
#include <memory>

namespace
{
QString nameOf(const QWidget *widget)
{
    if (!widget)
        return QStringLiteral("nothing");
    return widget->objectName().isEmpty() ? QString::fromLatin1(widget->metaObject()->className()) : widget->objectName();
}

/// The names of what Tab reaches from \a start, until it comes round or back to where it has been.
QString tabsFrom(QWidget *start)
{
    QStringList names {nameOf(start)};
    start->setFocus();
    for (int i = 0; i < 60; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        if (QApplication::focusWidget() == start)
            return names.join(QLatin1Char(' '));
        names << nameOf(QApplication::focusWidget());
    }
    return names.join(QLatin1Char(' ')) + QStringLiteral(" and never back");
}

/// Whether a screen reader has a name for \a widget: its own, that of its caption, or its text.
bool hasName(const QWidget *widget)
{
    if (!widget->accessibleName().isEmpty())
        return true;
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        return !button->text().isEmpty();
    const QList<QLabel *> captions = widget->window()->findChildren<QLabel *>();
    return std::any_of(captions.cbegin(), captions.cend(), [&](const QLabel *caption) { return caption->buddy() == widget; });
}

QStringList inputsWithoutName(const QWidget *window)
{
    QStringList nameless;
    const QList<QWidget *> widgets = window->findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        const bool input = qobject_cast<const QLineEdit *>(widget) || qobject_cast<const QAbstractSpinBox *>(widget)
            || qobject_cast<const QComboBox *>(widget) || qobject_cast<const QAbstractButton *>(widget)
            || qobject_cast<const QTreeWidget *>(widget);
        const bool partOfAnother = qobject_cast<const QAbstractSpinBox *>(widget->parentWidget())
            || qobject_cast<const QTabBar *>(widget->parentWidget())
            || widget->objectName().startsWith(QLatin1String("qt_")) // of the toolkit
            || widget->inherits("QTableCornerButton");
        if (input && !partOfAnother && !hasName(widget))
            nameless << nameOf(widget);
    }
    return nameless;
}

/// The letters that Alt, or a menu, finds more than once among \a texts.
QString repeatedMnemonics(const QStringList &texts)
{
    QString seen;
    QString repeated;
    for (const QString &text : texts) {
        const QString sequence = QKeySequence::mnemonic(text).toString();
        if (sequence.isEmpty())
            continue;
        const QChar letter = sequence.back();
        if (seen.contains(letter))
            repeated += letter;
        seen += letter;
    }
    return repeated;
}

/// Luminance from 0 to 1, as contrast is reckoned.
double luminance(QRgb colour)
{
    const auto linear = [](int value) {
        const double part = value / 255.0;
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

double contrast(QRgb one, QRgb other)
{
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

/// How much of \a icon's drawn area stands out against \a ground by at least \a least to 1.
double partThatStandsOut(const QImage &icon, QRgb ground, double least)
{
    int drawn = 0;
    int clear = 0;
    for (int y = 0; y < icon.height(); ++y) {
        for (int x = 0; x < icon.width(); ++x) {
            const QRgb pixel = icon.pixel(x, y);
            if (qAlpha(pixel) < 128)
                continue;
            ++drawn;
            clear += contrast(pixel, ground) >= least;
        }
    }
    return drawn > 0 ? static_cast<double>(clear) / drawn : 0;
}

/// Notes, for a scope, what progress dialogs show and which cursor shows with them.
class ProgressWatcher : public QObject
{
public:
    ProgressWatcher() { qApp->installEventFilter(this); }

    int shown = 0;
    int withWaitCursor = 0;
    int longestDelay = -1; ///< Milliseconds until a dialog of work that takes long shows.

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (const auto *dialog = qobject_cast<QProgressDialog *>(watched)) {
            if (event->type() == QEvent::Show) {
                ++shown;
                const QCursor *cursor = QGuiApplication::overrideCursor();
                withWaitCursor += cursor && cursor->shape() == Qt::WaitCursor;
            }
            // At its end, when it has got all its settings.
            if (event->type() == QEvent::DeferredDelete || event->type() == QEvent::Close || event->type() == QEvent::Hide)
                longestDelay = std::max(longestDelay, dialog->minimumDuration());
        }
        return false;
    }
};
}

/// Gives the application another font for a scope.
class FontForAll
{
public:
    explicit FontForAll(const QFont &font) : m_before(QApplication::font()) { QApplication::setFont(font); }
    ~FontForAll() { QApplication::setFont(m_before); }
    Q_DISABLE_COPY(FontForAll)

private:
    QFont m_before;
};

/// What makes the window pleasant or not, whatever it does: names, the order of Tab, letters, room, icons, cursors, progress.
class UsabilityTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void everyInputHasAName();
    void tabGoesThroughTheSelection();
    void tabGoesThroughTheProfile();
    void tabGoesThroughTheSearchDialog();
    void arrowsWorkInTheTableOnceAnImageIsOpen();
    void focusReturnsAfterDialogs();
    void noLetterStandsForTwoThings();
    void everyActionExplainsItself();
    void everyFieldHasItsRoom_data();
    void everyFieldHasItsRoom();
    void allColumnsShowOnALargeScreen_data();
    void allColumnsShowOnALargeScreen();
    void iconsStandOut_data();
    void iconsStandOut();
    void iconsAreSharpAtTwiceThePixels();
    void cursorIsItselfAgain_data();
    void cursorIsItselfAgain();
    void progressShowsSoon();
    void outcomesKeepTheirTime();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    template<typename Widget> Widget *find(const char *name) const
    {
        auto *widget = m_window->findChild<Widget *>(QString::fromLatin1(name));
        if (!widget)
            qFatal("the window has no %s", name);
        return widget;
    }
    void selectTexture(const QString &path);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<MainWindow> m_window;
};

void UsabilityTest::initTestCase()
{
    setApplicationIdentity();
    const QString profiles = QCoreApplication::applicationDirPath() + QStringLiteral("/profiles");
    QDir(profiles).removeRecursively();
    m_folder = std::make_unique<QTemporaryDir>();
    QString error;
    QVERIFY2(demo::writeDemo(path("demo"), profiles, &error), qPrintable(error));
}

void UsabilityTest::init()
{
    QSettings().clear();
    resetCurrentROM();
    m_window = std::make_unique<MainWindow>();
    m_window->resize(1280, 800);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    m_window->loadFile(path("demo/demo.z64"));
}

void UsabilityTest::cleanup()
{
    m_window.reset();
}

void UsabilityTest::selectTexture(const QString &texturePath)
{
    fileTreeFile *texture = fileTreeContainer().fileFromPath(texturePath);
    QVERIFY(texture);
    for (QTreeWidgetItem *row = texture->treeItem->parent(); row; row = row->parent())
        row->setExpanded(true);
    find<QTreeWidget>("fileTree")->setCurrentItem(texture->treeItem);
}

void UsabilityTest::everyInputHasAName()
{
    QCOMPARE(inputsWithoutName(m_window.get()).join(' '), QString());
    findTextureDialog dialog(m_window.get(), QStringLiteral("Where"), QString(), false);
    QCOMPARE(inputsWithoutName(&dialog).join(' '), QString());
}

void UsabilityTest::tabGoesThroughTheSelection()
{
    selectTexture(QStringLiteral("Root/Level/Liquids/Water/Water 1"));
    QCOMPARE(tabsFrom(find<QTreeWidget>("fileTree")),
             QStringLiteral("fileTree qt_tabwidget_tabbar folderPath folderName folderOffset folderAddress folderSize "
                            "fixedContentAddresses folderSave texturePath textureName textureOffset textureAddress textureFormat "
                            "texturePalette textureWidth textureHeight textureSave previewArea"));
}

void UsabilityTest::tabGoesThroughTheProfile()
{
    find<QTabWidget>("tabWidget")->setCurrentIndex(1);
    QCOMPARE(
        tabsFrom(find<QTreeWidget>("fileTree")),
        QStringLiteral(
            "fileTree qt_tabwidget_tabbar autoloadProfile autosave profile saveProfile loadProfile newProfile deleteProfile"));
}

void UsabilityTest::tabGoesThroughTheSearchDialog()
{
    findTextureDialog dialog(m_window.get(), QStringLiteral("Where"), path("demo/search"), true);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QCOMPARE(nameOf(QApplication::focusWidget()), QStringLiteral("selectImageButton"));
    QCOMPARE(tabsFrom(QApplication::focusWidget()),
             // The formats are one stop, and the choices too: the arrow keys go from one to the next.
             QStringLiteral(
                 "selectImageButton selectFolderButton subfoldersBox firstOnlyBox formatBox_i4 overwriteButton searchButton"));
}

void UsabilityTest::arrowsWorkInTheTableOnceAnImageIsOpen()
{
    QCOMPARE(nameOf(QApplication::focusWidget()), QStringLiteral("fileTree"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Home);
    QCOMPARE(find<QTreeWidget>("fileTree")->currentItem()->text(0), QStringLiteral("Root"));
    QCOMPARE(find<QLineEdit>("folderPath")->text(), QStringLiteral("Root"));
}

void UsabilityTest::focusReturnsAfterDialogs()
{
    selectTexture(QStringLiteral("Root/Level/Liquids/Lava"));
    auto *name = find<QLineEdit>("textureName");
    for (const char *action : {"deleteAction", "importImageAction", "extractAction", "findTextureAction"}) {
        name->setFocus();
        DialogAnswer<QDialog> answer([](QDialog *dialog) { dialog->reject(); });
        find<QAction>(action)->trigger();
        QVERIFY2(answer.answered(), action);
        QCOMPARE(nameOf(m_window->focusWidget()), QStringLiteral("textureName"));
    }
}

void UsabilityTest::noLetterStandsForTwoThings()
{
    QStringList titles;
    const QList<QMenu *> menus = m_window->findChildren<QMenu *>(QRegularExpression("^(file|edit|import|search|help)Menu$"));
    for (const QMenu *menu : menus) {
        titles << menu->title();
        QStringList texts;
        const QList<QAction *> actions = menu->actions();
        for (const QAction *action : actions) {
            if (action->isVisible())
                texts << action->text();
        }
        QCOMPARE(repeatedMnemonics(texts), QString());
    }
    QCOMPARE(menus.size(), 5);
    QCOMPARE(repeatedMnemonics(titles), QString());

    findTextureDialog dialog(m_window.get(), QStringLiteral("Where"), QString(), false);
    QStringList texts;
    const QList<QAbstractButton *> buttons = dialog.findChildren<QAbstractButton *>();
    for (const QAbstractButton *button : buttons)
        texts << button->text();
    QCOMPARE(repeatedMnemonics(texts), QStringLiteral("S")); // Select Image, Select Folder: Alt+S goes from one to the other.

    QStringList keys;
    const QList<QAction *> actions = m_window->findChildren<QAction *>();
    for (const QAction *action : actions) {
        const QList<QKeySequence> shortcuts = action->shortcuts();
        for (const QKeySequence &shortcut : shortcuts) {
            QVERIFY2(!keys.contains(shortcut.toString()), qPrintable(shortcut.toString()));
            keys << shortcut.toString();
        }
    }
    QVERIFY(keys.contains(QStringLiteral("Ctrl+O")));
}

void UsabilityTest::everyActionExplainsItself()
{
    int count = 0;
    const QList<QToolBar *> bars = m_window->findChildren<QToolBar *>();
    QList<QAction *> actions;
    for (const QToolBar *bar : bars)
        actions += bar->actions();
    const QList<QMenu *> menus = m_window->findChildren<QMenu *>(QRegularExpression("^(file|edit|import|search|help)Menu$"));
    for (const QMenu *menu : menus)
        actions += menu->actions();
    for (const QAction *action : qAsConst(actions)) {
        if (action->isSeparator() || action->objectName().startsWith(QLatin1String("recentFileAction")))
            continue;
        QVERIFY2(!action->statusTip().isEmpty(), qPrintable(action->text()));
        QVERIFY2(!action->toolTip().isEmpty(), qPrintable(action->text()));
        QVERIFY2(!action->icon().isNull(), qPrintable(action->text()));
        ++count;
    }
    QCOMPARE(count, 11 + 13); // on the bars, in the menus

    // The status bar says it when the mouse is over a button.
    auto *button = qobject_cast<QToolButton *>(find<QToolBar>("nameToolBar")->widgetForAction(find<QAction>("openAction")));
    QVERIFY(button);
    QTest::mouseMove(button);
    QTRY_COMPARE(find<QStatusBar>("statusBar")->currentMessage(), QStringLiteral("Open a file"));
}

void UsabilityTest::everyFieldHasItsRoom_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("small") << QSize(800, 600);
    QTest::newRow("common") << QSize(1280, 800);
    QTest::newRow("large") << QSize(1920, 1080);
}

void UsabilityTest::everyFieldHasItsRoom()
{
    QFETCH(const QSize, size);
    m_window->resize(size);
    auto *area = find<QScrollArea>("selectionFields");
    QList<int> lefts;
    for (const char *texture : {"Root/Level/Liquids/Lava", "Root/Level/Liquids/Water/Water 1", "Root/Title/Panorama"}) {
        selectTexture(QString::fromLatin1(texture));
        QCoreApplication::processEvents();
        QVERIFY2(area->widget()->width() <= area->viewport()->width(), texture);
        const QList<QWidget *> fields = area->findChildren<QWidget *>(QRegularExpression("^(folder|texture)[A-Z]"));
        for (const QWidget *field : fields) {
            if (!field->isVisible())
                continue;
            const int right = field->mapTo(area->viewport(), field->rect().bottomRight()).x();
            QVERIFY2(right < area->viewport()->width(), qPrintable(field->objectName()));
            if (qobject_cast<const QLineEdit *>(field))
                lefts << field->mapTo(area->viewport(), QPoint()).x();
        }
        QVERIFY(find<QWidget>("textureName")->width()
                >= find<QLineEdit>("textureName")->fontMetrics().horizontalAdvance("0x00000000"));
    }
    QCOMPARE(std::count(lefts.cbegin(), lefts.cend(), lefts.first()), lefts.size()); // They stand in one line.
}

void UsabilityTest::allColumnsShowOnALargeScreen_data()
{
    QTest::addColumn<int>("points");
    QTest::addColumn<QSize>("size");
    QTest::newRow("9 points") << 9 << QSize(1760, 900);
    QTest::newRow("12 points") << 12 << QSize(1960, 900);
}

void UsabilityTest::allColumnsShowOnALargeScreen()
{
    QFETCH(const int, points);
    QFETCH(const QSize, size);
    QFont font = QApplication::font();
    font.setPointSize(points);
    const FontForAll set(font);
    init();
    m_window->resize(size);
    QCoreApplication::processEvents();
    auto *tree = find<QTreeWidget>("fileTree");
    QVERIFY(tree->header()->length() <= tree->viewport()->width());
    // The preview has room for its messages.
    auto *preview = find<QScrollArea>("previewArea");
    QVERIFY(preview->viewport()->width() >= 280);
    // Of what a larger window gains beyond that, the preview has its share.
    m_window->resize(size.width() + 400, size.height());
    QCoreApplication::processEvents();
    QVERIFY(preview->viewport()->width() >= 380);
    for (int column = 0; column < tree->columnCount(); ++column)
        QVERIFY2(tree->header()->sectionSize(column) >= 64, qPrintable(tree->headerItem()->text(column)));
}

void UsabilityTest::iconsStandOut_data()
{
    QTest::addColumn<QRgb>("ground");
    QTest::newRow("light") << qRgb(239, 239, 239);
    QTest::newRow("dark") << qRgb(49, 54, 59);
}

void UsabilityTest::iconsStandOut()
{
    QFETCH(const QRgb, ground);
    const QList<QToolBar *> bars = m_window->findChildren<QToolBar *>();
    for (const QToolBar *bar : bars) {
        const QList<QAction *> actions = bar->actions();
        for (const QAction *action : actions) {
            if (action->isSeparator())
                continue;
            const QImage icon = action->icon().pixmap(QSize(32, 32)).toImage().convertToFormat(QImage::Format_ARGB32);
            QVERIFY2(partThatStandsOut(icon, ground, 3) > 0.2, qPrintable(action->text()));
            // What cannot be used is paler, but can be made out.
            const QImage pale =
                action->icon().pixmap(QSize(32, 32), QIcon::Disabled).toImage().convertToFormat(QImage::Format_ARGB32);
            QVERIFY(pale != icon);
            QVERIFY2(partThatStandsOut(pale, ground, 1.5) > 0.2, qPrintable(action->text()));
        }
    }
}

void UsabilityTest::iconsAreSharpAtTwiceThePixels()
{
    const QList<QToolBar *> bars = m_window->findChildren<QToolBar *>();
    for (const QToolBar *bar : bars) {
        const QList<QAction *> actions = bar->actions();
        for (const QAction *action : actions) {
            if (action->isSeparator())
                continue;
            QVERIFY2(action->icon().availableSizes().contains(QSize(32, 32)), qPrintable(action->text()));
            QVERIFY2(action->icon().availableSizes().contains(QSize(64, 64)), qPrintable(action->text()));
        }
    }
    QVERIFY(QFile::exists(QStringLiteral(":/style/alphaBG")));
}

void UsabilityTest::cursorIsItselfAgain_data()
{
    QTest::addColumn<QString>("operation");
    for (const char *operation :
         {"open", "open a missing file", "save", "save where nothing can be", "extract a folder", "extract where nothing can be",
          "import a folder", "import a folder of wrong files", "import a pack", "search", "search for what is no picture"})
        QTest::newRow(operation) << QString::fromLatin1(operation);
}

void UsabilityTest::cursorIsItselfAgain()
{
    QFETCH(const QString, operation);
    auto *tree = find<QTreeWidget>("fileTree");
    tree->setCurrentItem(currentROM.root->treeItem);
    const QMap<QString, textureFormat> formats {{"rgba32", textureFormats::getAsMap().value("rgba32")}};
    if (operation == QLatin1String("open")) {
        m_window->loadFile(path("demo/demo.n64"));
    } else if (operation == QLatin1String("open a missing file")) {
        BoxAnswer answer(QStringLiteral("OK"));
        m_window->loadFile(path("missing"));
        QVERIFY(answer.answered());
    } else if (operation == QLatin1String("save")) {
        QVERIFY(m_window->saveFile(path("saved")));
    } else if (operation == QLatin1String("save where nothing can be")) {
        BoxAnswer answer(QStringLiteral("OK"));
        QVERIFY(!m_window->saveFile(path("missing/saved")));
        QVERIFY(answer.answered());
    } else if (operation.startsWith(QLatin1String("extract"))) {
        if (operation == QLatin1String("extract a folder"))
            QVERIFY(QDir().mkpath(path(operation)));
        else
            QVERIFY(writeBytes(path(operation), "a file"));
        m_window->saveFolder(path(operation), currentROM.root);
        QCOMPARE(QFile::exists(path(operation + QStringLiteral("/Root/Level/Liquids/Lava.png"))),
                 operation == QLatin1String("extract a folder"));
    } else if (operation.startsWith(QLatin1String("import a folder"))) {
        FileDialogAnswer folder(operation.endsWith(QLatin1String("folder")) ? path("demo/import") : path("demo"));
        DialogAnswer<QMessageBox> box([](QMessageBox *said) { said->accept(); });
        m_window->importFolder();
        QVERIFY(folder.answered());
        QVERIFY(box.answered());
    } else if (operation == QLatin1String("import a pack")) {
        m_window->parseTexturePack(path("demo/pack"));
    } else if (operation == QLatin1String("search")) {
        m_window->runFindTexture({path("demo/search/Gem.png")}, formats, true, 0);
    } else {
        DialogAnswer<QMessageBox> box([](QMessageBox *said) { said->accept(); });
        m_window->runFindTexture({path("demo/demo.z64")}, formats, true, 0);
    }
    QVERIFY(!QGuiApplication::overrideCursor());
}

/// The tip of what is under the pointer waits until an outcome has had its time.
void UsabilityTest::outcomesKeepTheirTime()
{
    const auto *bar = find<QStatusBar>("statusBar");
    const auto tip = [this](const QString &text) {
        QStatusTipEvent event(text);
        QApplication::sendEvent(m_window.get(), &event);
    };
    QTRY_COMPARE(bar->currentMessage(), QString());
    tip("Open a file");
    QCOMPARE(bar->currentMessage(), QStringLiteral("Open a file"));
    QVERIFY(m_window->saveFile(path("saved.z64")));
    for (const char *text : {"Save the file to disk", "", "Open a file"}) {
        tip(text);
        QCOMPARE(bar->currentMessage(), QStringLiteral("File saved"));
    }
    QTRY_COMPARE(bar->currentMessage(), QStringLiteral("Open a file"));
    tip("Create a new folder");
    QCOMPARE(bar->currentMessage(), QStringLiteral("Create a new folder"));
    tip("");
    QCOMPARE(bar->currentMessage(), QString());
}

void UsabilityTest::progressShowsSoon()
{
    {
        ProgressWatcher watcher;
        m_window->loadFile(path("demo/demo.v64"));
        QVERIFY(watcher.longestDelay >= 0);
        QVERIFY(watcher.longestDelay <= 500);
    }
    {
        ProgressWatcher watcher;
        find<QTreeWidget>("fileTree")->setCurrentItem(currentROM.root->treeItem);
        m_window->runFindTexture({path("demo/search/Gem.png")}, textureFormats::getAsMap(), true, 0);
        QCOMPARE(watcher.shown, 1);
        QCOMPARE(watcher.withWaitCursor, 1);
    }
}

QTEST_MAIN(UsabilityTest)
#include "tst_usability.moc"
