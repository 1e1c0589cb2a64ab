// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "support/boxes.h"
#include "support/dialogs.h"
#include "support/filesizelimit.h"
#include "support/images.h"
#include "support/messages.h"
#include "support/permissions.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QGridLayout>
#include <QGroupBox>
#include <QInputDialog>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QTreeWidget>

namespace
{
const QString cartridge = QStringLiteral("NQLE0");

QByteArray settingsDocument(const QByteArray &autoload, const QByteArray &autosave)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!--The settings version attribute is used by the parser to determine how it should read the data. Do not change it "
           "unless you know what you're doing.-->\n"
           "<settings version=\"1\">\n"
           "\t<autoload>"
        + autoload
        + "</autoload>\n"
          "\t<autosave>"
        + autosave
        + "</autosave>\n"
          "</settings>\n";
}

QByteArray listWith(const QByteArray &texture)
{
    return "<root version=\"2\"><texture name=\"" + texture + "\"/></root>";
}

void makeFile(const QString &path, const QByteArray &content)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

QStringList itemsOf(const QComboBox *box)
{
    QStringList items;
    for (int i = 0; i < box->count(); ++i)
        items << box->itemText(i);
    return items;
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

QStringList texturesInTable()
{
    QStringList names;
    for (const fileTreeFile *file : qAsConst(currentROM.root->files))
        names << file->name;
    return names;
}

/// The widget in a cell, checked to fill \a columns columns.
QWidget *cell(const QWidget *box, int row, int column, int columns)
{
    auto *grid = qobject_cast<QGridLayout *>(box->layout());
    QLayoutItem *item = grid ? grid->itemAtPosition(row, column) : nullptr;
    if (!item)
        return nullptr;
    int itemRow = 0;
    int itemColumn = 0;
    int rowSpan = 0;
    int columnSpan = 0;
    grid->getItemPosition(grid->indexOf(item->widget()), &itemRow, &itemColumn, &rowSpan, &columnSpan);
    return itemColumn == column && columnSpan == columns ? item->widget() : nullptr;
}

QString captionIn(const QWidget *box, int row, int column)
{
    auto *label = qobject_cast<QLabel *>(cell(box, row, column, 1));
    return label ? label->text() : QString();
}
}

/// Nothing can be created in a folder while it exists.
class ReadOnlyFolder
{
public:
    explicit ReadOnlyFolder(const QString &path) : m_path(path)
    {
        QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner);
    }
    ~ReadOnlyFolder() { QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner); }
    ReadOnlyFolder(const ReadOnlyFolder &) = delete;
    ReadOnlyFolder &operator=(const ReadOnlyFolder &) = delete;

private:
    QString m_path;
    WithoutPrivileges m_unprivileged;
};

class ProfilesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void panelHasItsWidgets();
    void panelNamesItsWidgets();

    void firstOpeningMakesTheProfile();
    void readingShowsTheProfiles();
    void readingTakesTheAutoloadProfile();
    void readingIgnoresLinksAndFiles();
    void readingLeavesTheSettingsAlone();
    void emptyAutoloadNameMeansDefault();
    void autoloadLeadingOutsideIsRefused_data();
    void autoloadLeadingOutsideIsRefused();
    void cartridgeLeadingOutsideIsRefused_data();
    void cartridgeLeadingOutsideIsRefused();
    void unusableProfilesFolderIsReported();
    void profilesGoToTheUserWhereTheFolderCannotBeWritten();
    void saysWhereProfilesAreKept_data();
    void saysWhereProfilesAreKept();

    void readsSettings_data();
    void readsSettings();
    void missingSettingsAreReported();
    void malformedSettingsAreReported();
    void changesSettings();
    void unwritableSettingsStayInForce();
    void failedSettingsWriteIsLogged();

    void createsAProfile();
    void newProfileCanBeCancelled();
    void refusesInvalidNames_data();
    void refusesInvalidNames();
    void acceptsOddNames_data();
    void acceptsOddNames();
    void refusesExistingProfiles_data();
    void refusesExistingProfiles();
    void reportsProfilesThatCannotBeMade();

    void loadsAProfile();
    void loadsAnEmptyProfile();
    void loadingAsksAboutChanges_data();
    void loadingAsksAboutChanges();
    void loadingStopsWhenSavingFails();
    void loadingCopesWithAVanishedFolder();

    void namesTheLinkToAListOutside();
    void savingOverAListThatWasNotReadKeepsIt();
    void keepsATableWithoutAnIdentifier();
    void closingWhileOpeningWritesNoOtherTable();
    void savesAProfile();
    void savingOverAnotherAsks();
    void failedSavingKeepsTheNotice_data();
    void failedSavingKeepsTheNotice();

    void deletesAProfile();
    void deletingCanBeCancelled();
    void refusesToDelete_data();
    void refusesToDelete();
    void protectsOnlyLowerCaseAutoloadNames();
    void deletesAVanishedProfile();
    void deletingNothingDeletesNothing();

    void openingAnotherImageSavesTheTable();
    void openingAnotherImageAsksWhenSavingFails_data();
    void openingAnotherImageAsksWhenSavingFails();
    void closingSavesTheTable();
    void noticeCountsBehindAnotherTab();

private:
    QString base() const { return QCoreApplication::applicationDirPath() + QStringLiteral("/profiles/"); }
    QString inCartridge(const QString &name) const { return base() + cartridge + QLatin1Char('/') + name; }
    QString listOf(const QString &profile) const { return inCartridge(profile) + QStringLiteral("/fileList.xml"); }
    template<typename Widget> Widget *child(const char *name) const { return m_window->findChild<Widget *>(QLatin1String(name)); }
    QComboBox *profileBox() const { return child<QComboBox>("profile"); }
    QComboBox *autoloadBox() const { return child<QComboBox>("autoloadProfile"); }
    QLabel *notice() const { return child<QLabel>("unsavedFileList"); }
    QString status() const { return m_window->statusBar()->currentMessage(); }
    /// For how many milliseconds the status bar shows its message.
    int statusTime() const
    {
        const auto *timer = m_window->statusBar()->findChild<QTimer *>();
        return timer && timer->isActive() ? timer->interval() : 0;
    }
    void click(const char *name) { child<QPushButton>(name)->click(); }
    void addTextureToTable(const QString &name)
    {
        auto *texture = new fileTreeFile;
        texture->name = name;
        currentROM.root->addFile(texture);
    }
    /// A cartridge with the profiles "default" (loaded, with the texture "d") and "other" (with the texture "o").
    void openTwoProfiles();
    void select(const QString &profile) { profileBox()->setCurrentIndex(profileBox()->findText(profile)); }
    void changeTable();

    const QByteArray m_dataHome = qgetenv("XDG_DATA_HOME");
    QScopedPointer<MainWindow> m_window;
};

void ProfilesTest::initTestCase()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Brimholt"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillary"));
}

void ProfilesTest::init()
{
    QSettings().clear();
    qputenv("XDG_DATA_HOME", m_dataHome);
    QFile::remove(base().chopped(1));
    QVERIFY(QDir(base()).removeRecursively());
    loadIntoCurrentROM(cartridgeImage(0x1000));
    currentROM.romID = cartridge;
    m_window.reset(new MainWindow);
    m_window->findChild<QTabWidget *>()->setTabEnabled(1, true);
}

void ProfilesTest::cleanup()
{
    m_window.reset();
    resetCurrentROM();
}

void ProfilesTest::openTwoProfiles()
{
    makeFile(listOf(QStringLiteral("default")), listWith("d"));
    makeFile(listOf(QStringLiteral("other")), listWith("o"));
    m_window->readProfiles();
    m_window->loadProfile();
    QCOMPARE(texturesInTable(), QStringList {QStringLiteral("d")});
}

/// Leaves a new texture "changed" in the table, unsaved.
void ProfilesTest::changeTable()
{
    auto *tree = m_window->findChild<QTreeWidget *>();
    tree->setCurrentItem(tree->topLevelItem(0));
    m_window->addTexture();
    currentROM.root->files.last()->setName(QStringLiteral("changed"));
    QVERIFY(!notice()->isHidden());
}

void ProfilesTest::panelHasItsWidgets()
{
    auto *tabs = m_window->findChild<QTabWidget *>();
    QCOMPARE(tabs->tabText(1), QStringLiteral("Profile"));
    const QList<QGroupBox *> boxes = tabs->widget(1)->findChildren<QGroupBox *>();
    QCOMPARE(boxes.size(), 2);

    const QGroupBox *global = boxes.at(0);
    QCOMPARE(global->title(), QStringLiteral("Global Settings"));
    QCOMPARE(qobject_cast<QGridLayout *>(global->layout())->columnCount(), 2);
    QCOMPARE(captionIn(global, 0, 0), QStringLiteral("ID:"));
    QCOMPARE(cell(global, 0, 1, 1), child<QLabel>("romID"));
    QCOMPARE(captionIn(global, 1, 0), QStringLiteral("Autoload Profile:"));
    QCOMPARE(cell(global, 1, 1, 1), autoloadBox());
    QCOMPARE(captionIn(global, 2, 0), QStringLiteral("Auto Save:"));
    QCOMPARE(
        cell(global, 2, 0, 1)->toolTip(),
        QStringLiteral("When enabled, the profile will be saved when you Open a file, Save the file, or close the program."));
    QCOMPARE(cell(global, 2, 1, 1), child<QCheckBox>("autosave"));

    const QGroupBox *settings = boxes.at(1);
    QCOMPARE(settings->title(), QStringLiteral("Profile Settings"));
    QCOMPARE(qobject_cast<QGridLayout *>(settings->layout())->columnCount(), 4);
    QCOMPARE(captionIn(settings, 0, 0), QStringLiteral("Current Profile:"));
    QCOMPARE(cell(settings, 0, 1, 3), child<QLabel>("currentProfile"));
    QCOMPARE(captionIn(settings, 1, 0), QStringLiteral("Profile:"));
    QCOMPARE(cell(settings, 1, 1, 3), profileBox());
    QCOMPARE(cell(settings, 2, 0, 4), notice());
    QCOMPARE(notice()->text(), QStringLiteral("There are unsaved changes in the file list."));
    QVERIFY(notice()->isHidden());
    const QStringList buttons {QStringLiteral("Save"), QStringLiteral("Load"), QStringLiteral("New"), QStringLiteral("Delete")};
    for (int column = 0; column < buttons.size(); ++column) {
        auto *button = qobject_cast<QPushButton *>(cell(settings, 3, column, 1));
        QVERIFY(button);
        QCOMPARE(button->text(), buttons.at(column));
    }
}

void ProfilesTest::panelNamesItsWidgets()
{
    const QList<QGroupBox *> boxes = m_window->findChild<QTabWidget *>()->widget(1)->findChildren<QGroupBox *>();
    for (const QGroupBox *box : boxes) {
        QVERIFY(!box->objectName().isEmpty());
        const QList<QWidget *> widgets = box->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
        QVERIFY(!widgets.isEmpty());
        for (const QWidget *widget : widgets) {
            QVERIFY(!widget->objectName().isEmpty());
            const auto *label = qobject_cast<const QLabel *>(widget);
            if (label && label->text().endsWith(QLatin1Char(':')))
                QVERIFY(label->buddy());
        }
    }
    for (const char *name : {"romID", "currentProfile"}) {
        QVERIFY(child<QLabel>(name)->textInteractionFlags().testFlag(Qt::TextSelectableByKeyboard));
        QCOMPARE(child<QLabel>(name)->textFormat(), Qt::PlainText);
    }
}

void ProfilesTest::firstOpeningMakesTheProfile()
{
    MessageCapture log;
    m_window->readProfiles();
    QCOMPARE(log.textsOf(QStringLiteral("void MainWindow::readProfiles()")),
             QStringList {QStringLiteral("settings does not exist")});
    QCOMPARE(contentOf(inCartridge(QStringLiteral("settings.xml"))), settingsDocument("default", "true"));
    QVERIFY(QDir(inCartridge(QStringLiteral("default"))).isEmpty());
    QCOMPARE(currentROM.autoloadProfile, QStringLiteral("default"));
    QCOMPARE(currentROM.profileName, QStringLiteral("default"));
    QVERIFY(currentROM.autosave);
    QVERIFY(!currentROM.profileListUpdating);
    QCOMPARE(child<QLabel>("romID")->text(), cartridge);
    QCOMPARE(child<QLabel>("currentProfile")->text(), QStringLiteral("default"));
    QCOMPARE(itemsOf(profileBox()), QStringList {QStringLiteral("default")});
    QCOMPARE(itemsOf(autoloadBox()), QStringList {QStringLiteral("default")});
    QVERIFY(child<QCheckBox>("autosave")->isChecked());
}

void ProfilesTest::readingShowsTheProfiles()
{
    for (const char *name : {"a", "b", "default", "z"})
        QVERIFY(QDir().mkpath(inCartridge(QLatin1String(name))));
    m_window->readProfiles();
    m_window->readProfiles();
    const QStringList names {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("default"), QStringLiteral("z")};
    QCOMPARE(sorted(itemsOf(profileBox())), names);
    QCOMPARE(itemsOf(autoloadBox()), itemsOf(profileBox()));
    QCOMPARE(profileBox()->currentText(), QStringLiteral("default"));
    QCOMPARE(autoloadBox()->currentText(), QStringLiteral("default"));
}

void ProfilesTest::readingTakesTheAutoloadProfile()
{
    makeFile(inCartridge(QStringLiteral("settings.xml")), settingsDocument("Mine &amp; yours", "false"));
    QVERIFY(QDir().mkpath(inCartridge(QStringLiteral("default"))));
    m_window->readProfiles();
    const QString name = QStringLiteral("Mine & yours");
    QCOMPARE(currentROM.profileName, name);
    QCOMPARE(currentROM.autoloadProfile, name);
    QVERIFY(!currentROM.autosave);
    QVERIFY(!child<QCheckBox>("autosave")->isChecked());
    QVERIFY(QDir(inCartridge(name)).exists());
    QCOMPARE(profileBox()->currentText(), name);
    QCOMPARE(autoloadBox()->currentText(), name);
    QCOMPARE(child<QLabel>("currentProfile")->text(), name);
}

void ProfilesTest::readingIgnoresLinksAndFiles()
{
    QVERIFY(QDir().mkpath(inCartridge(QStringLiteral("default/inside"))));
    makeFile(inCartridge(QStringLiteral("notes.txt")), "x");
    QVERIFY(QFile::link(inCartridge(QStringLiteral("default")), inCartridge(QStringLiteral("link"))));
    m_window->readProfiles();
    QCOMPARE(itemsOf(profileBox()), QStringList {QStringLiteral("default")});
}

void ProfilesTest::readingLeavesTheSettingsAlone()
{
    // Another writer's settings, which would not survive being written by refilled boxes.
    const QByteArray document = "<settings><autosave>false</autosave><more/></settings>";
    makeFile(inCartridge(QStringLiteral("settings.xml")), document);
    m_window->readProfiles();
    child<QCheckBox>("autosave")->setChecked(true);
    makeFile(inCartridge(QStringLiteral("settings.xml")), document);
    m_window->readProfiles();
    QVERIFY(!child<QCheckBox>("autosave")->isChecked());
    QCOMPARE(contentOf(inCartridge(QStringLiteral("settings.xml"))), document);
}

void ProfilesTest::emptyAutoloadNameMeansDefault()
{
    makeFile(inCartridge(QStringLiteral("settings.xml")), "<settings><autoload/></settings>");
    m_window->readProfiles();
    QCOMPARE(currentROM.autoloadProfile, QStringLiteral("default"));
    QCOMPARE(currentROM.profileName, QStringLiteral("default"));
    QCOMPARE(profileBox()->currentText(), QStringLiteral("default"));
}

void ProfilesTest::autoloadLeadingOutsideIsRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("beside the profiles") << QStringLiteral("../../../outside");
    QTest::newRow("another cartridge") << QStringLiteral("../OTHR1/default");
    QTest::newRow("the folder above") << QStringLiteral("..");
    QTest::newRow("the folder itself") << QStringLiteral(".");
}

void ProfilesTest::autoloadLeadingOutsideIsRefused()
{
    QFETCH(QString, name);
    makeFile(listOf(name), listWith("stolen"));
    const QByteArray before = contentOf(listOf(name));
    makeFile(inCartridge(QStringLiteral("settings.xml")), settingsDocument(name.toUtf8(), "true"));
    makeFile(listOf(QStringLiteral("default")), listWith("own"));

    BoxRecorder recorder;
    m_window->readProfiles();
    m_window->loadProfile();
    QCOMPARE(recorder.boxes, QStringList {QStringLiteral("parseXML: Couldn't open ") + listOf(name)});
    QCOMPARE(currentROM.profileName, QStringLiteral("default"));
    QCOMPARE(texturesInTable(), QStringList {QStringLiteral("own")});
    m_window->saveProfile();
    QCOMPARE(contentOf(listOf(name)), before);
    QFile::remove(listOf(name));
    QDir().rmdir(inCartridge(name));
}

void ProfilesTest::cartridgeLeadingOutsideIsRefused_data()
{
    QTest::addColumn<QString>("romID");
    QTest::newRow("above") << QStringLiteral("..");
    QTest::newRow("elsewhere") << QStringLiteral("../x0");
    QTest::newRow("the profiles folder itself") << QStringLiteral(".");
}

void ProfilesTest::cartridgeLeadingOutsideIsRefused()
{
    QFETCH(QString, romID);
    currentROM.romID = romID;
    QVERIFY(QDir().mkpath(base() + QStringLiteral("OTHR1/default")));
    const QString settings = base() + romID + QStringLiteral("/settings.xml");
    const QString list = base() + romID + QStringLiteral("/default/fileList.xml");
    const QStringList entriesBefore = QDir(base() + QStringLiteral("..")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);

    BoxRecorder recorder;
    m_window->readProfiles();
    m_window->loadProfile();
    QCOMPARE(recorder.boxes,
             (QStringList {QStringLiteral("saveProfileSettings: Couldn't open ") + settings,
                           QStringLiteral("readProfileSettings: Couldn't open ") + settings}));
    QCOMPARE(itemsOf(profileBox()), QStringList());
    QCOMPARE(currentROM.profileName, QStringLiteral("default"));
    recorder.boxes.clear();
    changeTable();
    m_window->saveProfile();
    QCOMPARE(recorder.boxes, QStringList {QStringLiteral("createXMLFile: Couldn't open ") + list});
    QVERIFY(!notice()->isHidden());
    recorder.boxes.clear();
    m_window->deleteProfile();
    QCOMPARE(recorder.boxes, QStringList());
    QCOMPARE(QDir(base() + QStringLiteral("..")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), entriesBefore);
    QCOMPARE(QDir(base()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList {QStringLiteral("OTHR1")});
}

void ProfilesTest::unusableProfilesFolderIsReported()
{
    makeFile(base().chopped(1), "in the way");
    const QString settings = inCartridge(QStringLiteral("settings.xml"));
    BoxRecorder recorder;
    m_window->readProfiles();
    m_window->loadProfile();
    QCOMPARE(recorder.boxes,
             (QStringList {QStringLiteral("saveProfileSettings: Couldn't open ") + settings,
                           QStringLiteral("readProfileSettings: Couldn't open ") + settings}));
    recorder.boxes.clear();
    QCOMPARE(currentROM.profileName, QStringLiteral("default"));
    QCOMPARE(currentROM.autoloadProfile, QStringLiteral("default"));
    QVERIFY(currentROM.autosave);
    QCOMPARE(child<QLabel>("currentProfile")->text(), QStringLiteral("default"));

    changeTable();
    m_window->saveProfile();
    QCOMPARE(recorder.boxes, QStringList {QStringLiteral("createXMLFile: Couldn't open ") + listOf(QStringLiteral("default"))});
    QVERIFY(!notice()->isHidden());
    QCOMPARE(texturesInTable(), QStringList {QStringLiteral("changed")});
    QCOMPARE(contentOf(base().chopped(1)), QByteArray("in the way"));
}

void ProfilesTest::profilesGoToTheUserWhereTheFolderCannotBeWritten()
{
    const QTemporaryDir home;
    qputenv("XDG_DATA_HOME", home.path().toUtf8());
    makeFile(listOf(QStringLiteral("default")), listWith("shipped"));
    const ReadOnlyFolder readOnly(base());
    BoxRecorder recorder;
    m_window.reset(new MainWindow);
    QCOMPARE(status(), QStringLiteral("Ready"));
    m_window->readProfiles();
    m_window->loadProfile();
    QCOMPARE(texturesInTable(), QStringList {QStringLiteral("shipped")});
    addTextureToTable(QStringLiteral("kept"));
    m_window->saveProfile();
    QCOMPARE(recorder.boxes, QStringList());
    const QString folder = home.filePath(QStringLiteral("Brimholt/Quillary/profiles/") + currentROM.romID);
    QVERIFY(QFile::exists(folder + QStringLiteral("/settings.xml")));
    QVERIFY(contentOf(folder + QStringLiteral("/default/fileList.xml")).contains("kept"));
    QCOMPARE(contentOf(listOf(QStringLiteral("default"))), listWith("shipped"));
    // From now on the user's own counts.
    m_window->readProfiles();
    m_window->loadProfile();
    QCOMPARE(texturesInTable(), (QStringList {QStringLiteral("shipped"), QStringLiteral("kept")}));
}

void ProfilesTest::saysWhereProfilesAreKept_data()
{
    QTest::addColumn<QString>("home");
    QTest::addColumn<QString>("shown");
    QTest::newRow("beside the program") << QString() << QStringLiteral("Profiles are kept in %1");
    QTest::newRow("elsewhere") << QStringLiteral("home")
                               << QStringLiteral("Profiles are kept in %2, because %1 cannot be written");
    QTest::newRow("a name that looks like rich text")
        << QStringLiteral("<b>home</b>") << QStringLiteral("Profiles are kept in %2, because %1 cannot be written");
}

void ProfilesTest::saysWhereProfilesAreKept()
{
    QFETCH(QString, home);
    QFETCH(QString, shown);
    const QTemporaryDir folder;
    const QString data = folder.filePath(home);
    if (!home.isEmpty()) {
        QVERIFY(QDir().mkpath(data) && QDir().mkpath(base()));
        qputenv("XDG_DATA_HOME", data.toUtf8());
        const ReadOnlyFolder readOnly(base());
        m_window.reset(new MainWindow);
    }
    shown.replace(QLatin1String("%1"), base());
    shown.replace(QLatin1String("%2"), data + QStringLiteral("/Brimholt/Quillary/profiles/"));
    for (const char *name : {"romIDCaption", "romID"}) {
        const QString tip = child<QLabel>(name)->toolTip();
        QCOMPARE(Qt::mightBeRichText(tip) ? QTextDocumentFragment::fromHtml(tip).toPlainText() : tip, shown);
    }
}

void ProfilesTest::readsSettings_data()
{
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QString>("autoload");
    QTest::addColumn<bool>("autosave");
    QTest::newRow("written") << settingsDocument("Mine", "false") << QStringLiteral("Mine") << false;
    QTest::newRow("nothing") << QByteArray("<settings/>") << QStringLiteral("default") << true;
    QTest::newRow("capital") << settingsDocument("a", "True") << QStringLiteral("a") << false;
    QTest::newRow("exactly") << settingsDocument("a", "true") << QStringLiteral("a") << true;
}

void ProfilesTest::readsSettings()
{
    QFETCH(QByteArray, document);
    QFETCH(QString, autoload);
    QFETCH(bool, autosave);
    makeFile(inCartridge(QStringLiteral("settings.xml")), document);
    currentROM.autoloadProfile = QStringLiteral("before");
    currentROM.autosave = !autosave;
    m_window->readProfileSettings();
    QCOMPARE(currentROM.autoloadProfile, autoload);
    QCOMPARE(currentROM.autosave, autosave);
}

void ProfilesTest::missingSettingsAreReported()
{
    currentROM.autoloadProfile = QStringLiteral("before");
    BoxAnswer box(QStringLiteral("OK"));
    m_window->readProfileSettings();
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("readProfileSettings"));
    QCOMPARE(box.text, QStringLiteral("Couldn't open ") + inCartridge(QStringLiteral("settings.xml")));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(currentROM.autoloadProfile, QStringLiteral("default"));
    QVERIFY(currentROM.autosave);
}

void ProfilesTest::malformedSettingsAreReported()
{
    makeFile(inCartridge(QStringLiteral("settings.xml")), "<settings><autoload>Mine</autoload></s>");
    BoxAnswer box(QStringLiteral("OK"));
    m_window->readProfiles();
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("XMLReader::parseXML"));
    QCOMPARE(box.text, QStringLiteral("Opening and ending tag mismatch."));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(currentROM.profileName, QStringLiteral("Mine"));
}

void ProfilesTest::changesSettings()
{
    const QString settings = inCartridge(QStringLiteral("settings.xml"));
    openTwoProfiles();
    child<QCheckBox>("autosave")->click();
    QVERIFY(!currentROM.autosave);
    QCOMPARE(contentOf(settings), settingsDocument("default", "false"));
    m_window->setAutosaveProfile(Qt::PartiallyChecked);
    QVERIFY(currentROM.autosave);
    QCOMPARE(contentOf(settings), settingsDocument("default", "true"));

    // By the keyboard, as a user does; setting the index alone is no choice of the user.
    autoloadBox()->setCurrentIndex(autoloadBox()->findText(QStringLiteral("other")));
    QCOMPARE(currentROM.autoloadProfile, QStringLiteral("default"));
    autoloadBox()->setCurrentIndex(autoloadBox()->findText(QStringLiteral("default")));
    QTest::keyClick(autoloadBox(), autoloadBox()->currentIndex() == 0 ? Qt::Key_Down : Qt::Key_Up);
    QCOMPARE(currentROM.autoloadProfile, QStringLiteral("other"));
    QCOMPARE(contentOf(settings), settingsDocument("other", "true"));
    QCOMPARE(currentROM.profileName, QStringLiteral("default"));

    currentROM.profileListUpdating = true;
    m_window->setAutoloadProfile(QStringLiteral("default"));
    m_window->setAutosaveProfile(0);
    QCOMPARE(currentROM.autoloadProfile, QStringLiteral("other"));
    QVERIFY(currentROM.autosave);
    QCOMPARE(contentOf(settings), settingsDocument("other", "true"));
    currentROM.profileListUpdating = false;
    m_window->setAutoloadProfile(QString());
    QCOMPARE(contentOf(settings), settingsDocument("default", "true"));
}

void ProfilesTest::unwritableSettingsStayInForce()
{
    m_window->readProfiles();
    const QString settings = inCartridge(QStringLiteral("settings.xml"));
    QVERIFY(QFile::remove(settings) && QDir().mkpath(settings));
    BoxAnswer box(QStringLiteral("OK"));
    m_window->setAutosaveProfile(0);
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("saveProfileSettings"));
    QCOMPARE(box.text, QStringLiteral("Couldn't open ") + settings);
    QCOMPARE(box.icon, QMessageBox::Critical);
    QVERIFY(!currentROM.autosave);
}

void ProfilesTest::failedSettingsWriteIsLogged()
{
    const QString signature = QStringLiteral("void MainWindow::saveProfileSettings()");
    m_window->readProfiles();
    const QByteArray before = contentOf(inCartridge(QStringLiteral("settings.xml")));
    MessageCapture log;
    {
        const FileSizeLimit full(20);
        BoxAnswer box(QStringLiteral("OK"));
        m_window->setAutosaveProfile(0);
        QVERIFY(box.answered());
    }
    QCOMPARE(log.textsOf(signature).count(QStringLiteral("error")), 1);
    QCOMPARE(contentOf(inCartridge(QStringLiteral("settings.xml"))), before);
    m_window->setAutosaveProfile(0);
    QCOMPARE(log.textsOf(signature).count(QStringLiteral("error")), 1);
}

void ProfilesTest::createsAProfile()
{
    openTwoProfiles();
    QString title;
    QString label;
    QString initial;
    DialogAnswer<QInputDialog> name([&](QInputDialog *dialog) {
        title = dialog->windowTitle();
        label = dialog->labelText();
        initial = dialog->textValue();
        dialog->setTextValue(QStringLiteral("Third"));
        dialog->accept();
    });
    click("newProfile");
    QVERIFY(name.answered());
    QCOMPARE(title, QStringLiteral("Create new profile"));
    QCOMPARE(label, QStringLiteral("Profile Name:"));
    QCOMPARE(initial, QStringLiteral("New Profile"));
    QVERIFY(QDir(inCartridge(QStringLiteral("Third"))).isEmpty());
    QVERIFY(QDir(inCartridge(QStringLiteral("Third"))).exists());
    QCOMPARE(itemsOf(profileBox()).last(), QStringLiteral("Third"));
    QCOMPARE(itemsOf(autoloadBox()), itemsOf(profileBox()));
    QCOMPARE(profileBox()->currentText(), QStringLiteral("Third"));
    QCOMPARE(autoloadBox()->currentText(), QStringLiteral("default"));
    QCOMPARE(currentROM.profileName, QStringLiteral("default"));
    QCOMPARE(texturesInTable(), QStringList {QStringLiteral("d")});
    QCOMPARE(status(), QStringLiteral("Profile created."));
    QCOMPARE(statusTime(), 2000);
}

void ProfilesTest::newProfileCanBeCancelled()
{
    openTwoProfiles();
    m_window->statusBar()->clearMessage();
    for (const bool accept : {false, true}) {
        DialogAnswer<QInputDialog> name([accept](QInputDialog *dialog) {
            dialog->setTextValue(accept ? QString() : QStringLiteral("Third"));
            accept ? dialog->accept() : dialog->reject();
        });
        m_window->newProfile();
        QVERIFY(name.answered());
        QCOMPARE(profileBox()->count(), 2);
        QCOMPARE(status(), QString());
        QVERIFY(!QDir(inCartridge(QStringLiteral("Third"))).exists());
    }
}

void ProfilesTest::refusesInvalidNames_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"a/b", "a:b", "a*b", "a?b", "a<b", "a>b", "a|b", "/", "../x"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void ProfilesTest::refusesInvalidNames()
{
    QFETCH(QString, name);
    openTwoProfiles();
    DialogAnswer<QInputDialog> dialog([name](QInputDialog *shown) {
        shown->setTextValue(name);
        shown->accept();
    });
    BoxAnswer box(QStringLiteral("OK"));
    m_window->newProfile();
    QVERIFY(dialog.answered());
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("Application"));
    QCOMPARE(box.text, QStringLiteral("The name included invalid file name characters."));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(profileBox()->count(), 2);
}

void ProfilesTest::acceptsOddNames_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"a\\b", "a\"b", "..\\x", "...", " ", ".hidden", "new & old", "100%1"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void ProfilesTest::acceptsOddNames()
{
    QFETCH(QString, name);
    openTwoProfiles();
    DialogAnswer<QInputDialog> dialog([name](QInputDialog *shown) {
        shown->setTextValue(name);
        shown->accept();
    });
    m_window->newProfile();
    QVERIFY(dialog.answered());
    QVERIFY(QDir(inCartridge(name)).exists());
    QCOMPARE(profileBox()->currentText(), name);
    m_window->readProfiles();
    QVERIFY(itemsOf(profileBox()).contains(name));
}

void ProfilesTest::refusesExistingProfiles_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"other", ".", ".."})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void ProfilesTest::refusesExistingProfiles()
{
    openTwoProfiles();
    QFETCH(QString, name);
    DialogAnswer<QInputDialog> dialog([name](QInputDialog *shown) {
        shown->setTextValue(name);
        shown->accept();
    });
    BoxAnswer box(QStringLiteral("OK"));
    m_window->newProfile();
    QVERIFY(dialog.answered());
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("Application"));
    QCOMPARE(box.text, QStringLiteral("A profile with that name already exists."));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(profileBox()->count(), 2);
}

void ProfilesTest::reportsProfilesThatCannotBeMade()
{
    openTwoProfiles();
    DialogAnswer<QInputDialog> dialog([](QInputDialog *shown) {
        shown->setTextValue(QStringLiteral("settings.xml"));
        shown->accept();
    });
    BoxAnswer box(QStringLiteral("OK"));
    m_window->newProfile();
    QVERIFY(dialog.answered());
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("Application"));
    QCOMPARE(box.text, QStringLiteral("Couldn't create ") + inCartridge(QStringLiteral("settings.xml")));
    QCOMPARE(profileBox()->count(), 2);
    QCOMPARE(contentOf(inCartridge(QStringLiteral("settings.xml"))), settingsDocument("default", "true"));
}

void ProfilesTest::loadsAProfile()
{
    openTwoProfiles();
    QCOMPARE(status(), QStringLiteral("Profile loaded."));
    select(QStringLiteral("other"));
    m_window->statusBar()->clearMessage();
    click("loadProfile");
    QCOMPARE(currentROM.profileName, QStringLiteral("other"));
    QCOMPARE(child<QLabel>("currentProfile")->text(), QStringLiteral("other"));
    QCOMPARE(texturesInTable(), QStringList {QStringLiteral("o")});
    QCOMPARE(status(), QStringLiteral("Profile loaded."));
    QCOMPARE(contentOf(listOf(QStringLiteral("default"))), listWith("d"));
    QCOMPARE(statusTime(), 2000);
}

void ProfilesTest::loadsAnEmptyProfile()
{
    openTwoProfiles();
    QVERIFY(QFile::remove(listOf(QStringLiteral("other"))));
    select(QStringLiteral("other"));
    m_window->loadProfile();
    QCOMPARE(texturesInTable(), QStringList());
    QCOMPARE(currentROM.profileName, QStringLiteral("other"));
    QVERIFY(!QFile::exists(listOf(QStringLiteral("other"))));
}

void ProfilesTest::loadingAsksAboutChanges_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("loads");
    QTest::addColumn<bool>("saves");
    QTest::newRow("Save and Load") << QStringLiteral("Save and Load") << true << true;
    QTest::newRow("Load") << QStringLiteral("Load") << true << false;
    QTest::newRow("Cancel") << QStringLiteral("Cancel") << false << false;
    QTest::newRow("Escape") << QString() << false << false;
}

void ProfilesTest::loadingAsksAboutChanges()
{
    QFETCH(QString, button);
    QFETCH(bool, loads);
    QFETCH(bool, saves);
    openTwoProfiles();
    changeTable();
    select(QStringLiteral("other"));
    BoxAnswer box(button);
    m_window->loadProfile();
    QVERIFY(box.answered());
    QCOMPARE(box.text, QStringLiteral("There are unsaved changes.\nWhat do you want to do?"));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(sorted(box.buttons),
             (QStringList {QStringLiteral("Cancel"), QStringLiteral("Load"), QStringLiteral("Save and Load")}));
    QCOMPARE(currentROM.profileName, loads ? QStringLiteral("other") : QStringLiteral("default"));
    QCOMPARE(child<QLabel>("currentProfile")->text(), currentROM.profileName);
    QCOMPARE(texturesInTable(),
             loads ? QStringList {QStringLiteral("o")} : QStringList({QStringLiteral("d"), QStringLiteral("changed")}));
    QCOMPARE(notice()->isHidden(), loads);
    QCOMPARE(contentOf(listOf(QStringLiteral("default"))).contains("changed"), saves);
    QCOMPARE(contentOf(listOf(QStringLiteral("other"))), listWith("o"));
}

void ProfilesTest::loadingStopsWhenSavingFails()
{
    openTwoProfiles();
    changeTable();
    select(QStringLiteral("other"));
    const QString list = listOf(QStringLiteral("default"));
    QVERIFY(QFile::remove(list) && QDir().mkpath(list));
    BoxButtons boxes({QStringLiteral("Save and Load"), QStringLiteral("OK")});
    m_window->loadProfile();
    QCOMPARE(boxes.texts,
             (QStringList {QStringLiteral("There are unsaved changes.\nWhat do you want to do?"),
                           QStringLiteral("Couldn't open ") + list}));
    QCOMPARE(currentROM.profileName, QStringLiteral("default"));
    QVERIFY(!notice()->isHidden());
    QCOMPARE(texturesInTable(), (QStringList {QStringLiteral("d"), QStringLiteral("changed")}));
}

void ProfilesTest::loadingCopesWithAVanishedFolder()
{
    openTwoProfiles();
    QVERIFY(QDir(inCartridge(QStringLiteral("other"))).removeRecursively());
    select(QStringLiteral("other"));
    m_window->loadProfile();
    QCOMPARE(currentROM.profileName, QStringLiteral("other"));
    QCOMPARE(texturesInTable(), QStringList());
}

void ProfilesTest::namesTheLinkToAListOutside()
{
    openTwoProfiles();
    QTemporaryDir outside;
    makeFile(outside.filePath(QStringLiteral("list.xml")), listWith("stolen"));
    const QString list = listOf(QStringLiteral("other"));
    QVERIFY(QFile::remove(list) && QFile::link(outside.filePath(QStringLiteral("list.xml")), list));
    select(QStringLiteral("other"));
    {
        BoxAnswer box(QStringLiteral("OK"));
        m_window->loadProfile();
        QVERIFY(box.answered());
        QCOMPARE(box.title, QStringLiteral("parseXML"));
        QCOMPARE(box.text, QStringLiteral("Couldn't open ") + list);
        QCOMPARE(box.informativeText, list + QStringLiteral(" is a link that leads out of the profiles folder."));
    }
    QCOMPARE(texturesInTable(), QStringList());
    BoxAnswer box(QStringLiteral("OK"));
    m_window->saveProfile();
    QCOMPARE(box.title, QStringLiteral("createXMLFile"));
    QCOMPARE(box.informativeText, list + QStringLiteral(" is a link that leads out of the profiles folder."));
    QCOMPARE(contentOf(outside.filePath(QStringLiteral("list.xml"))), listWith("stolen"));
}

void ProfilesTest::savingOverAListThatWasNotReadKeepsIt()
{
    openTwoProfiles();
    select(QStringLiteral("other"));
    BoxAnswer box(QStringLiteral("Save"));
    m_window->saveProfile();
    QVERIFY(box.answered());
    QCOMPARE(contentOf(listOf(QStringLiteral("other")) + QStringLiteral(".1")), listWith("o"));
    m_window->saveProfile();
    QVERIFY(!QFile::exists(listOf(QStringLiteral("other")) + QStringLiteral(".2")));
}

/// A cartridge without an identifier has a folder of its own, and its table can be kept.
void ProfilesTest::keepsATableWithoutAnIdentifier()
{
    currentROM.romID.clear();
    BoxRecorder recorder;
    m_window->readProfiles();
    m_window->loadProfile();
    changeTable();
    m_window->saveProfile();
    m_window->loadProfile();
    QCOMPARE(recorder.boxes, QStringList());
    QCOMPARE(texturesInTable(), QStringList {QStringLiteral("changed")});
    QCOMPARE(QDir(base()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList {QStringLiteral("(no identifier)")});
}

/// The window may be told to close while opening an image shows a box: the table is still that of the image before.
void ProfilesTest::closingWhileOpeningWritesNoOtherTable()
{
    QTemporaryDir images;
    const QString first = images.filePath(QStringLiteral("first.z64"));
    const QString second = images.filePath(QStringLiteral("second.z64"));
    makeFile(first, cartridgeImage(0x1000, "NQLE", 0));
    makeFile(second, cartridgeImage(0x1000, "OTHR", 1));
    const QString otherList = base() + QStringLiteral("OTHR1/default/fileList.xml");
    makeFile(otherList, listWith("others"));
    makeFile(base() + QStringLiteral("OTHR1/settings.xml"), "<settings>");
    currentROM.loaded = false;
    m_window->loadFile(first);
    changeTable();
    QString romID;
    DialogAnswer<QMessageBox> box([&](QMessageBox *shown) {
        romID = currentROM.romID;
        m_window->close();
        shown->accept();
    });
    m_window->loadFile(second);
    QVERIFY(box.answered());
    QCOMPARE(romID, QStringLiteral("OTHR1"));
    QCOMPARE(contentOf(otherList), listWith("others"));
    QVERIFY(contentOf(listOf(QStringLiteral("default"))).contains("changed"));
    QCOMPARE(texturesInTable(), QStringList {QStringLiteral("others")});
    // The opened image's table is written again.
    changeTable();
    m_window->close();
    QVERIFY(contentOf(otherList).contains("changed"));
}

void ProfilesTest::savesAProfile()
{
    openTwoProfiles();
    changeTable();
    click("saveProfile");
    QVERIFY(notice()->isHidden());
    QCOMPARE(status(), QStringLiteral("Profile saved."));
    QVERIFY(contentOf(listOf(QStringLiteral("default"))).contains("changed"));
    QCOMPARE(statusTime(), 2000);
}

void ProfilesTest::savingOverAnotherAsks()
{
    openTwoProfiles();
    changeTable();
    m_window->statusBar()->clearMessage();
    select(QStringLiteral("other"));
    {
        BoxAnswer box(QStringLiteral("Cancel"));
        m_window->saveProfile();
        QVERIFY(box.answered());
        QCOMPARE(box.title, QStringLiteral("Application"));
        QCOMPARE(box.text, QStringLiteral("You are about to save default over other.\nWhat do you want to do?"));
        QCOMPARE(box.icon, QMessageBox::Warning);
        QCOMPARE(sorted(box.buttons), (QStringList {QStringLiteral("Cancel"), QStringLiteral("Save")}));
        QCOMPARE(currentROM.profileName, QStringLiteral("default"));
        QVERIFY(!notice()->isHidden());
        QCOMPARE(status(), QString());
        QCOMPARE(contentOf(listOf(QStringLiteral("other"))), listWith("o"));
    }
    BoxAnswer box(QStringLiteral("Save"));
    m_window->saveProfile();
    QVERIFY(box.answered());
    QCOMPARE(currentROM.profileName, QStringLiteral("other"));
    QCOMPARE(child<QLabel>("currentProfile")->text(), QStringLiteral("other"));
    QVERIFY(notice()->isHidden());
    QVERIFY(contentOf(listOf(QStringLiteral("other"))).contains("changed"));
    QCOMPARE(contentOf(listOf(QStringLiteral("default"))), listWith("d"));
    QCOMPARE(status(), QStringLiteral("Profile saved."));
}

void ProfilesTest::failedSavingKeepsTheNotice_data()
{
    QTest::addColumn<bool>("folderVanished");
    QTest::newRow("folder in the way") << false;
    QTest::newRow("profile's folder vanished") << true;
}

void ProfilesTest::failedSavingKeepsTheNotice()
{
    QFETCH(bool, folderVanished);
    openTwoProfiles();
    changeTable();
    m_window->statusBar()->clearMessage();
    const QString list = listOf(QStringLiteral("default"));
    if (folderVanished)
        QVERIFY(QDir(inCartridge(QStringLiteral("default"))).removeRecursively());
    else
        QVERIFY(QFile::remove(list) && QDir().mkpath(list));
    BoxAnswer box(QStringLiteral("OK"));
    m_window->saveProfile();
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("createXMLFile"));
    QCOMPARE(box.text, QStringLiteral("Couldn't open ") + list);
    QVERIFY(!notice()->isHidden());
    QCOMPARE(status(), QString());

    // Nor does a failed save make another profile the current one.
    const QString other = listOf(QStringLiteral("other"));
    QVERIFY(QFile::remove(other) && QDir().mkpath(other));
    select(QStringLiteral("other"));
    BoxButtons boxes({QStringLiteral("Save"), QStringLiteral("OK")});
    m_window->saveProfile();
    QCOMPARE(boxes.texts.value(1), QStringLiteral("Couldn't open ") + other);
    QCOMPARE(currentROM.profileName, QStringLiteral("default"));
    QVERIFY(!notice()->isHidden());
}

void ProfilesTest::deletesAProfile()
{
    for (const char *name : {"default", "x", "y", "z"})
        QVERIFY(QDir().mkpath(inCartridge(QLatin1String(name))));
    makeFile(inCartridge(QStringLiteral("y/inside/fileList.xml")), "x");
    m_window->readProfiles();
    QStringList names = itemsOf(profileBox());
    select(QStringLiteral("y"));
    BoxAnswer box(QStringLiteral("Yes"));
    click("deleteProfile");
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("Application"));
    QCOMPARE(box.text,
             QStringLiteral("You are about to delete y.\nThis will delete the profile and all of its files "
                            "permanently.\nDo you want to continue?"));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(sorted(box.buttons), (QStringList {QStringLiteral("Cancel"), QStringLiteral("Yes")}));
    QVERIFY(!QDir(inCartridge(QStringLiteral("y"))).exists());
    names.removeAll(QStringLiteral("y"));
    QCOMPARE(itemsOf(profileBox()), names);
    QCOMPARE(itemsOf(autoloadBox()), names);
    QCOMPARE(autoloadBox()->currentText(), QStringLiteral("default"));
    for (const QString &name : qAsConst(names))
        QVERIFY(QDir(inCartridge(name)).exists());
    QCOMPARE(status(), QStringLiteral("Profile deleted."));
    QCOMPARE(statusTime(), 2000);
}

void ProfilesTest::deletingCanBeCancelled()
{
    openTwoProfiles();
    select(QStringLiteral("other"));
    for (const QString &button : {QStringLiteral("Cancel"), QString()}) {
        BoxAnswer box(button);
        m_window->deleteProfile();
        QVERIFY(box.answered());
        QVERIFY(QFile::exists(listOf(QStringLiteral("other"))));
        QCOMPARE(profileBox()->count(), 2);
    }
}

void ProfilesTest::refusesToDelete_data()
{
    QTest::addColumn<QString>("autoload");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<QString>("text");
    const QString isAutoload = QStringLiteral("You can not delete the autoload profile.");
    const QString isLoaded = QStringLiteral("You can not delete a profile that is currently loaded.");
    QTest::newRow("autoload profile") << QStringLiteral("other") << QStringLiteral("other") << isAutoload;
    QTest::newRow("loaded profile") << QStringLiteral("other") << QStringLiteral("default") << isLoaded;
    QTest::newRow("both") << QStringLiteral("default") << QStringLiteral("default") << isAutoload;
}

void ProfilesTest::refusesToDelete()
{
    QFETCH(QString, autoload);
    QFETCH(QString, selected);
    QFETCH(QString, text);
    openTwoProfiles();
    currentROM.autoloadProfile = autoload;
    select(selected);
    BoxAnswer box(QStringLiteral("OK"));
    m_window->deleteProfile();
    QVERIFY(box.answered());
    QCOMPARE(box.title, QStringLiteral("Application"));
    QCOMPARE(box.text, text);
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(profileBox()->count(), 2);
    QVERIFY(QDir(inCartridge(selected)).exists());
}

void ProfilesTest::protectsOnlyLowerCaseAutoloadNames()
{
    QVERIFY(QDir().mkpath(inCartridge(QStringLiteral("Best"))));
    QVERIFY(QDir().mkpath(inCartridge(QStringLiteral("BEST"))));
    openTwoProfiles();
    currentROM.autoloadProfile = QStringLiteral("Best");
    select(QStringLiteral("Best"));
    {
        BoxAnswer box(QStringLiteral("Cancel"));
        m_window->deleteProfile();
        QVERIFY(box.text.startsWith(QLatin1String("You are about to delete Best.")));
    }
    currentROM.autoloadProfile = QStringLiteral("best");
    select(QStringLiteral("BEST"));
    BoxAnswer box(QStringLiteral("OK"));
    m_window->deleteProfile();
    QCOMPARE(box.text, QStringLiteral("You can not delete the autoload profile."));
}

void ProfilesTest::deletesAVanishedProfile()
{
    openTwoProfiles();
    QVERIFY(QDir(inCartridge(QStringLiteral("other"))).removeRecursively());
    select(QStringLiteral("other"));
    BoxAnswer box(QStringLiteral("Yes"));
    m_window->deleteProfile();
    QVERIFY(box.answered());
    QCOMPARE(itemsOf(profileBox()), QStringList {QStringLiteral("default")});
    QCOMPARE(itemsOf(autoloadBox()), QStringList {QStringLiteral("default")});
}

void ProfilesTest::deletingNothingDeletesNothing()
{
    openTwoProfiles();
    profileBox()->setCurrentIndex(-1);
    m_window->deleteProfile();
    QVERIFY(QFile::exists(listOf(QStringLiteral("other"))));
    QVERIFY(QFile::exists(listOf(QStringLiteral("default"))));
}

void ProfilesTest::openingAnotherImageSavesTheTable()
{
    QTemporaryDir images;
    const QString first = images.filePath(QStringLiteral("first.z64"));
    const QString second = images.filePath(QStringLiteral("second.z64"));
    makeFile(first, cartridgeImage(0x1000, "NQLE", 0));
    makeFile(second, cartridgeImage(0x1000, "OTHR", 1));
    currentROM.loaded = false;
    m_window->loadFile(first);
    changeTable();
    currentROM.autosave = false;
    m_window->loadFile(second);
    QVERIFY(notice()->isHidden());
    QVERIFY(contentOf(listOf(QStringLiteral("default"))).contains("changed"));
    QCOMPARE(currentROM.romID, QStringLiteral("OTHR1"));
    QCOMPARE(texturesInTable(), QStringList());
    QVERIFY(!QFile::exists(base() + QStringLiteral("OTHR1/default/fileList.xml")));
}

void ProfilesTest::openingAnotherImageAsksWhenSavingFails_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("opens");
    QTest::newRow("Load") << QStringLiteral("Load") << true;
    QTest::newRow("Cancel") << QStringLiteral("Cancel") << false;
}

void ProfilesTest::openingAnotherImageAsksWhenSavingFails()
{
    QFETCH(QString, button);
    QFETCH(bool, opens);
    QTemporaryDir images;
    const QString first = images.filePath(QStringLiteral("first.z64"));
    const QString second = images.filePath(QStringLiteral("second.z64"));
    makeFile(first, cartridgeImage(0x1000, "NQLE", 0));
    makeFile(second, cartridgeImage(0x1000, "OTHR", 1));
    currentROM.loaded = false;
    m_window->loadFile(first);
    changeTable();
    const QString list = listOf(QStringLiteral("default"));
    QVERIFY(QDir().mkpath(list));

    BoxButtons boxes({QStringLiteral("OK"), button});
    m_window->loadFile(second);
    QCOMPARE(boxes.texts,
             (QStringList {QStringLiteral("Couldn't open ") + list,
                           QStringLiteral("There are unsaved changes.\nWhat do you want to do?")}));
    QCOMPARE(currentROM.romID, opens ? QStringLiteral("OTHR1") : cartridge);
    QCOMPARE(notice()->isHidden(), opens);
    QCOMPARE(texturesInTable(), opens ? QStringList() : QStringList {QStringLiteral("changed")});
    QVERIFY(!QFile::exists(base() + QStringLiteral("OTHR1/default/fileList.xml")));
}

void ProfilesTest::closingSavesTheTable()
{
    openTwoProfiles();
    changeTable();
    currentROM.autosave = false;
    m_window->show();
    m_window->close();
    QVERIFY(!contentOf(listOf(QStringLiteral("default"))).contains("changed"));
    currentROM.autosave = true;
    m_window->show();
    m_window->close();
    QVERIFY(contentOf(listOf(QStringLiteral("default"))).contains("changed"));
    QVERIFY(notice()->isHidden());
}

void ProfilesTest::noticeCountsBehindAnotherTab()
{
    openTwoProfiles();
    m_window->findChild<QTabWidget *>()->setCurrentIndex(0);
    m_window->show();
    changeTable();
    QVERIFY(!notice()->isVisible());
    BoxAnswer box(QStringLiteral("Cancel"));
    m_window->loadProfile();
    QVERIFY(box.answered());
}

QTEST_MAIN(ProfilesTest)
#include "tst_profiles.moc"
