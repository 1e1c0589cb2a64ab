// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"
#include "codec/texturemanipulator.h"
#include "search/findtexturedialog.h"
#include "support/dialogs.h"
#include "support/images.h"
#include "support/messages.h"
#include "support/pictures.h"

#include <QAction>
#include <QButtonGroup>
#include <QCheckBox>
#include <QDir>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QMimeData>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

namespace
{
/// What a dialog sent on.
struct Sent
{
    int count = 0;
    QStringList entries;
    QMap<QString, textureFormat> formats;
    bool firstOnly = false;
    int duplicateMode = -1;
    bool dialogWasVisible = true;
};

/// Stands in for the window that opened the dialog.
class Receiver : public QWidget
{
    Q_OBJECT

public:
    Sent sent;
    QWidget *dialog = nullptr;

public slots:
    bool runFindTexture(QStringList entries, QMap<QString, textureFormat> formats, const bool firstOnly, const int duplicateMode)
    {
        sent = {sent.count + 1, entries, formats, firstOnly, duplicateMode, dialog && dialog->isVisible()};
        return false;
    }
};

const char noPath[] = "No image or folder has been selected";

template<typename Widget> Widget *child(const QObject &parent, const char *name)
{
    auto *found = parent.findChild<Widget *>(QString::fromLatin1(name));
    if (!found)
        qFatal("there is no %s", name);
    return found;
}

/// A picture of noise in grey, which every format can hold.
QImage noisePicture(int side, quint32 seed)
{
    QRandomGenerator random(seed);
    QImage picture(side, side, QImage::Format_ARGB32);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const int grey = random.bounded(256);
            picture.setPixel(x, y, qRgba(grey, grey, grey, 255));
        }
    }
    return picture;
}

QByteArray encode(const QImage &picture, const char *format)
{
    return textureManipulator::generateData(picture, textureFormats::getAsMap().value(QString::fromLatin1(format)));
}

QMap<QString, textureFormat> formatsNamed(const QStringList &names)
{
    QMap<QString, textureFormat> formats;
    for (const QString &name : names)
        formats.insert(name, textureFormats::getAsMap().value(name));
    return formats;
}
}

/// Counts how often a progress dialog comes up.
class ShownDialogs : public QObject
{
public:
    ShownDialogs() { qApp->installEventFilter(this); }

    int count = 0;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        count += event->type() == QEvent::Show && qobject_cast<QProgressDialog *>(watched);
        return false;
    }
};

class SearchWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void dialogOffersWhatItShould();
    void dialogStartsWithoutAPath();
    void dialogStartsWithAFile();
    void dialogStartsWithAFolder();
    void dialogShowsNamesAsTheyAre();
    void choosingAFile();
    void choosingAFolder();
    void choosingTheRootFolderKeepsOneSlash();
    void cancelledFileDialogsChangeNothing();
    void fileAndFolderTakeTurns();
    void searchesOneFile();
    void listsTheFolder_data();
    void listsTheFolder();
    void sendsWhatIsChecked();
    void sendsEmptyLists();
    void formatGroupHasNoPaletteFormats();

    void needsAnImage();
    void needsAFolder();
    void describesTheFolder();
    void searchesThroughTheRealDialog();
    void findsNothingWithoutFormats();
    void emptyListDoesNothing();
    void withoutAFolderNothingIsSearched();
    void addsRowsAndEntries();
    void rowsAreFilledBelowAnExpandedFolder();
    void overwritesTheSelectedTexture();
    void overwritesTheShownTexture();
    void overwrittenRowsLeaveTheTree();
    void modeTwoOnlyReports();
    void reSortsWhenFound();
    void endsAtTheFirstCopy();
    void warnsOfAnUnreadablePicture();
    void warnsThoughCancelled();
    void progressShowsOnce_data();
    void progressShowsOnce();
    void showsItsProgress();
    void progressDialogsDoNotPileUp();
    void cancelledByButton();
    void cancelledAtACopyKeepsWhatWasFound();
    void nothingReachesTheWindowMeanwhile();
    void folderWithoutARow();
    void oneFileDirectly();
    void removesTheLastExtension();
    void manyCopiesStayLinear();

private:
    QString picturePath(const QString &name, const QImage &picture);
    void openImage(const QByteArray &image);
    void select(QTreeWidgetItem *row) { tree()->setCurrentItem(row); }
    QTreeWidget *tree() const { return child<QTreeWidget>(*m_window, "fileTree"); }
    bool run(const QStringList &files, const QStringList &formats, bool firstOnly, int mode);
    QProgressDialog *progress() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<MainWindow> m_window;
};

void SearchWindowTest::initTestCase()
{
    QCoreApplication::setOrganizationName("Brimholt");
    QCoreApplication::setApplicationName("Quillary");
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

void SearchWindowTest::init()
{
    QSettings().clear();
    QDir(QCoreApplication::applicationDirPath() + "/profiles").removeRecursively();
    resetCurrentROM();
    m_folder = std::make_unique<QTemporaryDir>();
    m_window = std::make_unique<MainWindow>();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void SearchWindowTest::cleanup()
{
    QVERIFY(!QApplication::overrideCursor());
    m_window.reset();
    m_folder.reset();
}

QString SearchWindowTest::picturePath(const QString &name, const QImage &picture)
{
    const QString path = m_folder->filePath(name);
    QDir().mkpath(QFileInfo(path).path());
    if (!picture.save(path, "PNG"))
        qFatal("cannot save a picture");
    return path;
}

/// Opens \a image in the window and selects the root's row.
void SearchWindowTest::openImage(const QByteArray &image)
{
    const QString path = m_folder->filePath("game.z64");
    QVERIFY(writeBytes(path, image));
    m_window->loadFile(path);
    QCOMPARE(currentROM.data, image);
    QVERIFY(currentROM.root->treeItem);
    select(currentROM.root->treeItem);
    QCOMPARE(currentROM.lastSelectedFolder, currentROM.root);
}

bool SearchWindowTest::run(const QStringList &files, const QStringList &formats, bool firstOnly, int mode)
{
    return m_window->runFindTexture(files, formatsNamed(formats), firstOnly, mode);
}

QProgressDialog *SearchWindowTest::progress() const
{
    const QList<QProgressDialog *> dialogs = m_window->findChildren<QProgressDialog *>();
    return dialogs.isEmpty() ? nullptr : dialogs.last();
}

void SearchWindowTest::dialogOffersWhatItShould()
{
    Receiver receiver;
    findTextureDialog dialog(&receiver, "Somewhere", QString(), false);
    QVERIFY(!dialog.parent());
    QCOMPARE(dialog.windowTitle(), QString("Find Texture"));
    QCOMPARE(child<QLabel>(dialog, "descriptionLabel")->text(), QString("Somewhere"));
    auto *selectImage = child<QPushButton>(dialog, "selectImageButton");
    QCOMPARE(selectImage->text(), QString("&Select Image"));
    QVERIFY(selectImage->isDefault());
    QCOMPARE(child<QPushButton>(dialog, "selectFolderButton")->text(), QString("&Select Folder"));
    auto *search = child<QPushButton>(dialog, "searchButton");
    QCOMPARE(search->text(), QString("Search"));
    QVERIFY(search->isCheckable());
    QVERIFY(!search->isChecked());
    auto *firstOnly = child<QCheckBox>(dialog, "firstOnlyBox");
    QCOMPARE(firstOnly->text(), QString("End search after finding texture once"));
    QVERIFY(firstOnly->isChecked());
    auto *subfolders = child<QCheckBox>(dialog, "subfoldersBox");
    QCOMPARE(subfolders->text(), QString("Also search for images in subfolders"));
    QVERIFY(subfolders->isChecked());

    auto *formatBox = child<QGroupBox>(dialog, "formatBox");
    QCOMPARE(formatBox->title(), QString("Texture formats to search for"));
    QVERIFY(qobject_cast<QHBoxLayout *>(formatBox->layout()));
    QStringList names;
    for (int i = 0; i < formatBox->layout()->count(); ++i) {
        auto *choice = qobject_cast<QCheckBox *>(formatBox->layout()->itemAt(i)->widget());
        QVERIFY(choice);
        QVERIFY(choice->isChecked());
        QCOMPARE(choice->toolTip(), textureFormats::getAsMap().value(choice->text()).description);
        names << choice->text();
    }
    QCOMPARE(names, (QStringList {"i4", "i8", "ia16", "ia4", "ia8", "rgb5a1", "rgba32"}));
    auto *formats = child<QButtonGroup>(dialog, "formatGroup");
    QVERIFY(!formats->exclusive());
    QCOMPARE(formats->buttons().size(), 7);

    auto *duplicateBox = child<QGroupBox>(dialog, "duplicateBox");
    QCOMPARE(duplicateBox->title(), QString("How to handle textures that already are in the current folder"));
    QVERIFY(qobject_cast<QHBoxLayout *>(duplicateBox->layout()));
    QCOMPARE(duplicateBox->layout()->count(), 4); // Three choices and a stretch.
    QVERIFY(duplicateBox->layout()->itemAt(3)->spacerItem());
    auto *modes = child<QButtonGroup>(dialog, "duplicateGroup");
    QCOMPARE(modes->checkedId(), 0);
    const QStringList texts {"Overwrite entry", "Create new entry", "Do not create entry"};
    for (int id = 0; id < 3; ++id) {
        auto *choice = qobject_cast<QRadioButton *>(modes->button(id));
        QVERIFY(choice);
        QCOMPARE(choice->text(), texts.at(id));
        QCOMPARE(duplicateBox->layout()->itemAt(id)->widget(), choice);
    }

    auto *grid = qobject_cast<QGridLayout *>(dialog.layout());
    QVERIFY(grid);
    QCOMPARE(grid->sizeConstraint(), QLayout::SetFixedSize);
    QCOMPARE(grid->columnCount(), 2);
    QCOMPARE(grid->rowCount(), 8);
    const auto standsAt = [grid](QWidget *widget, int row, int column, int columns) {
        int position[4];
        grid->getItemPosition(grid->indexOf(widget), &position[0], &position[1], &position[2], &position[3]);
        QCOMPARE(position[0], row);
        QCOMPARE(position[1], column);
        QCOMPARE(position[2], 1);
        QCOMPARE(position[3], columns);
    };
    standsAt(child<QLabel>(dialog, "descriptionLabel"), 0, 0, 2);
    standsAt(selectImage, 1, 0, 1);
    standsAt(child<QPushButton>(dialog, "selectFolderButton"), 1, 1, 1);
    standsAt(child<QLineEdit>(dialog, "pathField"), 2, 0, 2);
    standsAt(subfolders, 3, 0, 2);
    standsAt(firstOnly, 4, 0, 2);
    standsAt(formatBox, 5, 0, 2);
    standsAt(duplicateBox, 6, 0, 2);
    standsAt(search, 7, 0, 2);
    const QList<QWidget *> widgets = dialog.findChildren<QWidget *>();
    for (const QWidget *widget : widgets)
        QVERIFY2(!widget->objectName().isEmpty(), widget->metaObject()->className());
}

void SearchWindowTest::dialogStartsWithoutAPath()
{
    Receiver receiver;
    findTextureDialog dialog(&receiver, QString(), QString(), true);
    QCOMPARE(child<QLineEdit>(dialog, "pathField")->text(), QString(noPath));
    QVERIFY(!child<QLineEdit>(dialog, "pathField")->isEnabled());
    QVERIFY(!child<QPushButton>(dialog, "searchButton")->isEnabled());
}

void SearchWindowTest::dialogStartsWithAFile()
{
    Receiver receiver;
    findTextureDialog dialog(&receiver, QString(), "/a/b.png", false);
    QCOMPARE(child<QLineEdit>(dialog, "pathField")->text(), QString("/a/b.png"));
    QVERIFY(!child<QLineEdit>(dialog, "pathField")->isEnabled());
    const QPalette colours = child<QLineEdit>(dialog, "pathField")->palette();
    QCOMPARE(colours.color(QPalette::Disabled, QPalette::Text), colours.color(QPalette::Active, QPalette::Text));
    QVERIFY(child<QPushButton>(dialog, "searchButton")->isEnabled());
    QVERIFY(!child<QCheckBox>(dialog, "subfoldersBox")->isEnabled());
    QVERIFY(child<QCheckBox>(dialog, "subfoldersBox")->isChecked());
}

void SearchWindowTest::dialogStartsWithAFolder()
{
    picturePath("in/a.png", noisePicture(2, 1));
    Receiver receiver;
    findTextureDialog dialog(&receiver, QString(), m_folder->filePath("in"), true);
    QVERIFY(child<QCheckBox>(dialog, "subfoldersBox")->isEnabled());
    child<QPushButton>(dialog, "searchButton")->click();
    QCOMPARE(receiver.sent.entries, QStringList {m_folder->filePath("in/a.png")});
}

void SearchWindowTest::dialogShowsNamesAsTheyAre()
{
    Receiver receiver;
    findTextureDialog dialog(&receiver, "Searching in <b>x</b>", QString(), false);
    QCOMPARE(child<QLabel>(dialog, "descriptionLabel")->textFormat(), Qt::PlainText);
}

void SearchWindowTest::choosingAFile()
{
    const QString file = picturePath("some/a.png", noisePicture(2, 1));
    QSettings("Brimholt", "Quillary").setValue("fileDialogPath", QString(m_folder->path() + '/'));
    Receiver receiver;
    findTextureDialog dialog(&receiver, QString(), QString(), true);
    FileDialogAnswer answer(file);
    child<QPushButton>(dialog, "selectImageButton")->click();
    QVERIFY(answer.answered());
    QCOMPARE(answer.title, QString("Open Image File"));
    QCOMPARE(answer.directory, m_folder->path());
    QCOMPARE(answer.filters, QStringList {"Image (*.png)"});
    QCOMPARE(child<QLineEdit>(dialog, "pathField")->text(), file);
    QVERIFY(child<QPushButton>(dialog, "searchButton")->isEnabled());
    QVERIFY(!child<QCheckBox>(dialog, "subfoldersBox")->isEnabled());
    QCOMPARE(QSettings("Brimholt", "Quillary").value("fileDialogPath").toString(), m_folder->filePath("some/"));
}

void SearchWindowTest::choosingAFolder()
{
    QVERIFY(QDir(m_folder->path()).mkdir("some"));
    QSettings("Brimholt", "Quillary").setValue("fileDialogPath", QString(m_folder->path() + '/'));
    Receiver receiver;
    findTextureDialog dialog(&receiver, QString(), QString(), false);
    FileDialogAnswer answer(m_folder->filePath("some"));
    child<QPushButton>(dialog, "selectFolderButton")->click();
    QVERIFY(answer.answered());
    QCOMPARE(answer.title, QString("Open Directory"));
    QCOMPARE(answer.directory, m_folder->path());
    QVERIFY(answer.options & QFileDialog::ShowDirsOnly);
    QCOMPARE(child<QLineEdit>(dialog, "pathField")->text(), m_folder->filePath("some"));
    QVERIFY(child<QPushButton>(dialog, "searchButton")->isEnabled());
    QVERIFY(child<QCheckBox>(dialog, "subfoldersBox")->isEnabled());
    QCOMPARE(QSettings("Brimholt", "Quillary").value("fileDialogPath").toString(), m_folder->filePath("some/"));
}

void SearchWindowTest::choosingTheRootFolderKeepsOneSlash()
{
    Receiver receiver;
    findTextureDialog dialog(&receiver, QString(), QString(), false);
    FileDialogAnswer answer("/");
    dialog.setFolder();
    QVERIFY(answer.answered());
    QCOMPARE(QSettings("Brimholt", "Quillary").value("fileDialogPath").toString(), QString("/"));
}

void SearchWindowTest::cancelledFileDialogsChangeNothing()
{
    QSettings("Brimholt", "Quillary").setValue("fileDialogPath", QString(m_folder->path() + '/'));
    Receiver receiver;
    findTextureDialog dialog(&receiver, QString(), QString(), true);
    FileDialogAnswer file((QString()));
    dialog.setFile();
    QVERIFY(file.answered());
    FileDialogAnswer folder((QString()));
    dialog.setFolder();
    QVERIFY(folder.answered());
    QCOMPARE(child<QLineEdit>(dialog, "pathField")->text(), QString(noPath));
    QVERIFY(!child<QPushButton>(dialog, "searchButton")->isEnabled());
    QVERIFY(child<QCheckBox>(dialog, "subfoldersBox")->isEnabled());
    QCOMPARE(QSettings("Brimholt", "Quillary").value("fileDialogPath").toString(), m_folder->path() + '/');
}

void SearchWindowTest::fileAndFolderTakeTurns()
{
    const QString file = picturePath("a.png", noisePicture(2, 1));
    Receiver receiver;
    findTextureDialog dialog(&receiver, QString(), file, false);
    auto *subfolders = child<QCheckBox>(dialog, "subfoldersBox");
    FileDialogAnswer folder(m_folder->path());
    dialog.setFolder();
    QVERIFY(folder.answered());
    QVERIFY(subfolders->isEnabled());
    FileDialogAnswer again(file);
    dialog.setFile();
    QVERIFY(again.answered());
    QVERIFY(!subfolders->isEnabled());
    dialog.startSearch();
    QCOMPARE(receiver.sent.entries, QStringList {file});
}

void SearchWindowTest::searchesOneFile()
{
    Receiver receiver;
    findTextureDialog dialog(&receiver, QString(), "/no/such.file", false);
    receiver.dialog = &dialog;
    MessageCapture log;
    QTimer::singleShot(0, &dialog, [&dialog] { child<QPushButton>(dialog, "searchButton")->click(); });
    dialog.exec();
    QCOMPARE(receiver.sent.count, 1);
    QCOMPARE(receiver.sent.entries, QStringList {"/no/such.file"});
    QCOMPARE(receiver.sent.formats.keys(), (QStringList {"i4", "i8", "ia16", "ia4", "ia8", "rgb5a1", "rgba32"}));
    QCOMPARE(receiver.sent.formats.value("ia16").bytesPerPixel, 2.0);
    QVERIFY(receiver.sent.firstOnly);
    QCOMPARE(receiver.sent.duplicateMode, 0);
    QVERIFY(!receiver.sent.dialogWasVisible);
    bool logged = false;
    for (const LoggedMessage &message : log.all()) {
        if (message.text == "Files to search for: 1") {
            logged = true;
            QVERIFY(message.file.contains("findtexturedialog"));
        }
    }
    QVERIFY(logged);
}

void SearchWindowTest::listsTheFolder_data()
{
    QTest::addColumn<bool>("subfolders");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("with subfolders") << true << QStringList {"a.png", "in/b.png", "in/deep/c.png", "no picture.png"};
    QTest::newRow("without") << false << QStringList {"a.png", "no picture.png"};
}

void SearchWindowTest::listsTheFolder()
{
    QFETCH(bool, subfolders);
    QFETCH(QStringList, expected);
    for (const char *name :
         {"a.png", "in/b.png", "in/deep/c.png", "upper.PNG", "a.png.txt", ".hidden.png", "no picture.png", "apng"}) {
        QDir().mkpath(QFileInfo(m_folder->filePath(name)).path());
        QVERIFY(writeBytes(m_folder->filePath(name), "x"));
    }
    QVERIFY(QDir(m_folder->path()).mkdir("folder.png"));
    Receiver receiver;
    findTextureDialog dialog(&receiver, QString(), m_folder->path(), true);
    child<QCheckBox>(dialog, "subfoldersBox")->setChecked(subfolders);
    dialog.startSearch();
    QStringList found;
    for (const QString &entry : qAsConst(receiver.sent.entries))
        found << QDir(m_folder->path()).relativeFilePath(entry);
    found.sort();
    QCOMPARE(found, expected);
}

void SearchWindowTest::sendsWhatIsChecked()
{
    Receiver receiver;
    findTextureDialog dialog(&receiver, QString(), QString(), false);
    child<QCheckBox>(dialog, "formatBox_i4")->setChecked(false);
    child<QCheckBox>(dialog, "formatBox_rgba32")->setChecked(false);
    child<QCheckBox>(dialog, "firstOnlyBox")->setChecked(false);
    child<QRadioButton>(dialog, "ignoreButton")->click();
    dialog.runSearch({"a", "b"});
    QCOMPARE(receiver.sent.entries, (QStringList {"a", "b"}));
    QCOMPARE(receiver.sent.formats.keys(), (QStringList {"i8", "ia16", "ia4", "ia8", "rgb5a1"}));
    QVERIFY(!receiver.sent.firstOnly);
    QCOMPARE(receiver.sent.duplicateMode, 2);
    child<QRadioButton>(dialog, "createButton")->click();
    dialog.runSearch({});
    QCOMPARE(receiver.sent.duplicateMode, 1);
}

void SearchWindowTest::sendsEmptyLists()
{
    Receiver receiver;
    findTextureDialog dialog(&receiver, QString(), m_folder->path(), true);
    const QList<QCheckBox *> formats = child<QGroupBox>(dialog, "formatBox")->findChildren<QCheckBox *>();
    for (QCheckBox *format : formats)
        format->setChecked(false);
    MessageCapture log;
    dialog.startSearch();
    QCOMPARE(receiver.sent.count, 1);
    QVERIFY(receiver.sent.entries.isEmpty());
    QVERIFY(receiver.sent.formats.isEmpty());
    QVERIFY(log.texts().contains("Files to search for: 0"));
}

void SearchWindowTest::formatGroupHasNoPaletteFormats()
{
    Receiver receiver;
    findTextureDialog dialog(&receiver, QString(), QString(), false);
    for (const char *name : {"ci4", "ci8", "jpeg", "null"})
        QVERIFY(!dialog.findChild<QCheckBox *>(QStringLiteral("formatBox_") + name));
}

void SearchWindowTest::needsAnImage()
{
    currentROM.lastSelectedFolder = currentROM.root;
    DialogAnswer<findTextureDialog> answer([](findTextureDialog *dialog) { dialog->reject(); });
    m_window->loadTexture();
    QVERIFY(!answer.answered());
    QVERIFY(m_window->statusBar()->currentMessage() != QString("You must select a folder to search in."));
}

void SearchWindowTest::needsAFolder()
{
    openImage(cartridgeImage(4096));
    tree()->clearSelection();
    QVERIFY(!currentROM.lastSelectedFolder);
    DialogAnswer<findTextureDialog> answer([](findTextureDialog *dialog) { dialog->reject(); });
    m_window->loadTexture();
    QVERIFY(!answer.answered());
    QCOMPARE(m_window->statusBar()->currentMessage(), QString("You must select a folder to search in."));
}

void SearchWindowTest::describesTheFolder()
{
    openImage(cartridgeImage(0x4000));
    auto *outer = new fileTreeDirectory;
    outer->name = QStringLiteral("A%1");
    outer->address = 0xabc;
    currentROM.root->addDirectory(outer);
    auto *folder = new fileTreeDirectory;
    folder->address = 0x100;
    folder->size = 0x2000;
    folder->name = QStringLiteral("<b>");
    outer->addDirectory(folder);
    currentROM.lastSelectedFolder = folder;
    QString text;
    QString path;
    bool subfolders = false;
    DialogAnswer<findTextureDialog> answer([&](findTextureDialog *dialog) {
        text = child<QLabel>(*dialog, "descriptionLabel")->text();
        path = child<QLineEdit>(*dialog, "pathField")->text();
        subfolders = child<QCheckBox>(*dialog, "subfoldersBox")->isEnabled();
        dialog->reject();
    });
    m_window->loadTexture("/some/where", true);
    QVERIFY(answer.answered());
    QCOMPARE(text,
             QString("Searching in Root/A%1/<b>, from address 0x00000BBC to 0x00002BBC.\n"
                     "Note that searching within large amounts of data is very slow."));
    QCOMPARE(path, QString("/some/where"));
    QVERIFY(subfolders);
    currentROM.lastSelectedFolder = currentROM.root;
    DialogAnswer<findTextureDialog> second([&](findTextureDialog *dialog) {
        text = child<QLabel>(*dialog, "descriptionLabel")->text();
        path = child<QLineEdit>(*dialog, "pathField")->text();
        dialog->reject();
    });
    child<QAction>(*m_window, "findTextureAction")->trigger();
    QVERIFY(second.answered());
    QVERIFY(text.startsWith("Searching in Root, from address 0x00000000 to 0x00004000."));
    QCOMPARE(path, QString(noPath));
}

void SearchWindowTest::searchesThroughTheRealDialog()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x1235, 256, encode(picture, "rgba32"));
    openImage(image);
    picturePath("in/a.png", noisePicture(8, 2));
    picturePath("in/deep/grass.png", picture);
    FileDialogAnswer folder(m_folder->filePath("in"));
    DialogAnswer<findTextureDialog> answer([](findTextureDialog *dialog) {
        QTest::mouseClick(child<QPushButton>(*dialog, "selectFolderButton"), Qt::LeftButton);
        QTest::mouseClick(child<QPushButton>(*dialog, "searchButton"), Qt::LeftButton);
    });
    m_window->activateWindow();
    QTest::keyClick(m_window.get(), Qt::Key_F, Qt::ControlModifier);
    QVERIFY(answer.answered());
    QVERIFY(folder.answered());
    QCOMPARE(currentROM.root->files.size(), 1);
    const fileTreeFile *entry = currentROM.root->files.first();
    QCOMPARE(QString(entry->name), QString("grass"));
    QCOMPARE(entry->format, QString("rgba32"));
    QCOMPARE(entry->address, 0x1235);
    QCOMPARE(entry->width, 8);
    QCOMPARE(entry->height, 8);
    QCOMPARE(entry->paletteAddress, 0);
    QVERIFY(entry->treeItem);
    QCOMPARE(entry->treeItem->parent(), currentROM.root->treeItem);
    QVERIFY(!m_window->isWindowModified());
    QVERIFY(progress());
    QVERIFY(!progress()->isVisible());
}

void SearchWindowTest::findsNothingWithoutFormats()
{
    openImage(cartridgeImage(4096));
    MessageCapture log;
    QVERIFY(!run({picturePath("a.png", noisePicture(4, 1)), picturePath("b.png", noisePicture(4, 2))}, {}, true, 0));
    QVERIFY(currentROM.root->files.isEmpty());
    QVERIFY(log.texts().contains("File \"2\" of 2"));
}

void SearchWindowTest::emptyListDoesNothing()
{
    openImage(cartridgeImage(4096));
    MessageCapture log;
    QVERIFY(!run({}, {"i8"}, true, 0));
    QVERIFY(log.texts().isEmpty());
    QVERIFY(!progress() || progress()->labelText() != QString("Initializing search..."));
}

void SearchWindowTest::withoutAFolderNothingIsSearched()
{
    openImage(cartridgeImage(4096));
    tree()->clearSelection();
    const QString file = picturePath("a.png", noisePicture(4, 1));
    QVERIFY(!run({file}, {"i8"}, true, 0));
    QVERIFY(!m_window->findTexture(file, nullptr, formatsNamed({"i8"}), true, 0));
    QCOMPARE(m_window->statusBar()->currentMessage(), QString("You must select a folder to search in."));
}

void SearchWindowTest::addsRowsAndEntries()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x2ABC, 64, encode(picture, "i8"));
    image.replace(0x1000, 64, encode(picture, "i8"));
    image.replace(0x3000, 256, encode(picture, "rgba32"));
    openImage(image);
    const QString file = picturePath("wall.v2.png", picture);
    MessageCapture log;
    QVERIFY(!run({file}, {"rgba32", "i8"}, false, 1));
    QStringList table;
    for (const fileTreeFile *entry : qAsConst(currentROM.root->files))
        table << QStringLiteral("%1 %2 %3").arg(entry->name, entry->format, QString::number(entry->address, 16));
    QCOMPARE(table, (QStringList {"wall.v2 i8 1000", "wall.v2 (2) i8 2abc", "wall.v2 (3) rgba32 3000"}));
    QCOMPARE(currentROM.root->treeItem->childCount(), 3);
    const QStringList expected {"File \"1\" of 1",
                                "\"Found i8 texture at 0x1000\"",
                                "\"Found i8 texture at 0x2ABC\"",
                                "\"Found rgba32 texture at 0x3000\"",
                                "Adding new texture",
                                "Adding new texture",
                                "Adding new texture"};
    QStringList lines;
    for (const LoggedMessage &message : log.all()) {
        if (!message.file.contains("mainwindow_search"))
            continue;
        lines << message.text;
        QVERIFY(message.function.startsWith(lines.size() == 1 ? "bool MainWindow::runFindTexture("
                                                              : "bool MainWindow::findTexture("));
    }
    QCOMPARE(lines, expected);
    QVERIFY(!child<QLabel>(*m_window, "unsavedFileList")->isHidden());
    QVERIFY(!m_window->isWindowModified());
}

void SearchWindowTest::rowsAreFilledBelowAnExpandedFolder()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x2000, 64, encode(picture, "i8"));
    image.replace(0x1000, 64, encode(picture, "i8"));
    openImage(image);
    QTreeWidgetItem *root = currentROM.root->treeItem;
    const QString file = picturePath("a.png", picture);
    root->setExpanded(false);
    run({file}, {"i8"}, false, 1);
    QCOMPARE(root->child(0)->text(1), QString());
    root->setExpanded(true);
    QCOMPARE(root->child(0)->text(1), QString("0x00001000"));
    run({file}, {"i8"}, false, 1);
    QCOMPARE(root->childCount(), 4);
    QStringList offsets;
    for (int i = 0; i < 4; ++i)
        offsets << root->child(i)->text(1);
    QCOMPARE(offsets, (QStringList {"0x00001000", "0x00001000", "0x00002000", "0x00002000"}));
}

void SearchWindowTest::overwritesTheSelectedTexture()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x1000, 64, encode(picture, "i8"));
    image.replace(0x2000, 64, encode(picture.mirrored(), "i8"));
    openImage(image);
    currentROM.root->treeItem->setExpanded(true);
    const QString file = picturePath("a.png", picture);
    run({file}, {"i8"}, true, 0);
    fileTreeFile *old = currentROM.root->files.first();
    select(old->treeItem);
    QCOMPARE(currentROM.lastSelectedTexture, old);
    MessageCapture log;
    run({file, picturePath("b.png", picture.mirrored())}, {"i8"}, true, 0);
    QVERIFY(log.texts().contains("Overwrote old texture"));
    QCOMPARE(currentROM.root->files.size(), 2);
    QVERIFY(currentROM.root->files.first() != old);
    // The entry in its place is the current one.
    const fileTreeFile *entry = currentROM.root->files.first();
    QCOMPARE(entry->name, QStringLiteral("a"));
    QCOMPARE(currentROM.lastSelectedTexture, entry);
    QVERIFY(!old->treeItem);
    QCOMPARE(tree()->currentItem(), entry->treeItem);
    QCOMPARE(tree()->selectedItems(), QList<QTreeWidgetItem *> {entry->treeItem});
    QCOMPARE(currentROM.lastSelectedFolder, currentROM.root); // The second picture was searched for in the same folder.
    QCOMPARE(child<QLineEdit>(*m_window, "textureName")->text(), QStringLiteral("a"));
}

/// With the folder as the current row, the new entry takes the old one's place in the texture panel alone.
void SearchWindowTest::overwritesTheShownTexture()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x1000, 64, encode(picture, "i8"));
    openImage(image);
    currentROM.root->treeItem->setExpanded(true);
    const QString file = picturePath("a.png", picture);
    run({file}, {"i8"}, true, 0);
    select(currentROM.root->files.first()->treeItem);
    select(currentROM.root->treeItem);
    run({file}, {"i8"}, true, 0);
    QCOMPARE(currentROM.root->files.size(), 1);
    QCOMPARE(currentROM.lastSelectedTexture, currentROM.root->files.first());
    QCOMPARE(tree()->currentItem(), currentROM.root->treeItem);
    QCOMPARE(child<QLineEdit>(*m_window, "textureName")->text(), QStringLiteral("a"));
}

void SearchWindowTest::overwrittenRowsLeaveTheTree()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x8000);
    for (int i = 0; i < 20; ++i)
        image.replace(0x1000 + i * 0x100, 64, encode(picture, "i8"));
    openImage(image);
    auto *other = new fileTreeDirectory;
    currentROM.root->addDirectory(other);
    m_window->addDirectoryToTree(other);
    QTreeWidgetItem *root = currentROM.root->treeItem;
    root->setExpanded(true);
    const QString file = picturePath("a.png", picture);
    for (int round = 0; round < 3; ++round) {
        run({file}, {"i8"}, false, 0);
        QCOMPARE(currentROM.root->files.size(), 20);
        QCOMPARE(root->childCount(), 21);
        for (const fileTreeFile *entry : qAsConst(currentROM.root->files)) {
            QVERIFY(root->indexOfChild(entry->treeItem) >= 0);
            QCOMPARE(entry->treeItem->data(0, Qt::UserRole).value<fileTreeFile *>(), entry);
        }
    }
    QCOMPARE(other->treeItem->parent(), root);
    run({file}, {"i8"}, false, 1);
    QCOMPARE(root->childCount(), 41);
}

void SearchWindowTest::modeTwoOnlyReports()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x1000, 64, encode(picture, "i8"));
    openImage(image);
    MessageCapture log;
    run({picturePath("a.png", picture)}, {"i8"}, false, 2);
    QVERIFY(log.texts().contains("\"Found i8 texture at 0x1000\""));
    QVERIFY(log.texts().contains("Ignoring texture"));
    QVERIFY(currentROM.root->files.isEmpty());
    QCOMPARE(currentROM.root->treeItem->childCount(), 0);
    QVERIFY(child<QLabel>(*m_window, "unsavedFileList")->isHidden());
}

/// Also where nothing was added, as in mode 2; a search that found nothing leaves the rows alone.
void SearchWindowTest::reSortsWhenFound()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x1000, 64, encode(picture, "i8"));
    openImage(image);
    QTreeWidgetItem *root = currentROM.root->treeItem;
    root->setExpanded(true);
    const auto addEntry = [this](int address) {
        auto *entry = new fileTreeFile;
        entry->address = address;
        m_window->addTextureToTree(currentROM.root->addFile(entry));
    };
    addEntry(0x300);
    addEntry(0x100);
    run({picturePath("absent.png", noisePicture(8, 7))}, {"i8"}, false, 2);
    QCOMPARE(root->child(0)->text(1), QString("0x00000300"));
    run({picturePath("a.png", picture)}, {"i8"}, false, 2);
    QCOMPARE(root->child(0)->text(1), QString("0x00000100"));
}

void SearchWindowTest::endsAtTheFirstCopy()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x1000, 64, encode(picture, "i8"));
    image.replace(0x1100, 64, encode(picture, "i8"));
    image.replace(0x3000, 256, encode(picture, "rgba32"));
    openImage(image);
    run({picturePath("a.png", picture), picturePath("b.png", picture)}, {"i8", "rgba32"}, true, 1);
    QCOMPARE(currentROM.root->files.size(), 2);
    QCOMPARE(currentROM.root->files.at(0)->address, 0x1000);
    QCOMPARE(currentROM.root->files.at(1)->address, 0x1000);
    QCOMPARE(QString(currentROM.root->files.at(1)->name), QString("b"));
}

void SearchWindowTest::warnsOfAnUnreadablePicture()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x1000, 64, encode(picture, "i8"));
    openImage(image);
    const QString broken = m_folder->filePath("<i>broken%1.png");
    QVERIFY(writeBytes(broken, "no picture"));
    BoxAnswer box("OK");
    run({broken, picturePath("a.png", picture)}, {"i8"}, true, 0);
    QVERIFY(box.answered());
    QCOMPARE(box.title, QString("Application"));
    QCOMPARE(box.text, QStringLiteral("Cannot read file ") + broken + '.');
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.buttons, QStringList {"OK"});
    QCOMPARE(currentROM.root->files.size(), 1);
}

/// Loading comes before the first look at whether the user has cancelled.
void SearchWindowTest::warnsThoughCancelled()
{
    openImage(cartridgeImage(0x4000));
    const QString broken = m_folder->filePath("broken.png");
    QVERIFY(writeBytes(broken, "no picture"));
    QProgressDialog cancelled("Searching", "Cancel", 0, 2, m_window.get());
    cancelled.cancel();
    BoxAnswer box("OK");
    QVERIFY(!m_window->findTexture(broken, &cancelled, formatsNamed({"i8"}), true, 0));
    QVERIFY(box.answered());
    QCOMPARE(box.text, QStringLiteral("Cannot read file ") + broken + '.');
}

/// Neither at its end nor after Cancel does the dialog come up a second time.
void SearchWindowTest::progressShowsOnce_data()
{
    QTest::addColumn<bool>("cancel");
    QTest::newRow("to the end") << false;
    QTest::newRow("cancelled") << true;
}

void SearchWindowTest::progressShowsOnce()
{
    QFETCH(const bool, cancel);
    openImage(cartridgeImage(0x4000));
    const QString broken = m_folder->filePath("broken.png");
    QVERIFY(writeBytes(broken, "no picture"));
    ShownDialogs shown;
    DialogAnswer<QMessageBox> box([&](QMessageBox *said) {
        progress()->setMinimumDuration(0); // As if the search had taken long.
        if (cancel)
            progress()->cancel();
        said->accept();
    });
    run({broken, picturePath("a.png", noisePicture(4, 1))}, {"i8"}, true, 0);
    QVERIFY(box.answered());
    QCOMPARE(shown.count, 1);
}

void SearchWindowTest::showsItsProgress()
{
    openImage(cartridgeImage(0x4000));
    const QString broken = m_folder->filePath("broken.png");
    QVERIFY(writeBytes(broken, "no picture"));
    QString label;
    int value = -1;
    int maximum = -1;
    bool visible = false;
    Qt::WindowModality modality = Qt::NonModal;
    Qt::WindowFlags flags;
    QString cancelText;
    Qt::TextFormat labelFormat = Qt::AutoText;
    QCursor cursor;
    DialogAnswer<QMessageBox> box([&](QMessageBox *shown) {
        label = progress()->labelText();
        value = progress()->value();
        maximum = progress()->maximum();
        visible = progress()->isVisible();
        modality = progress()->windowModality();
        flags = progress()->windowFlags();
        cancelText = progress()->findChild<QPushButton *>()->text();
        labelFormat = progress()->findChild<QLabel *>()->textFormat();
        cursor = QApplication::overrideCursor() ? *QApplication::overrideCursor() : QCursor(Qt::ArrowCursor);
        shown->accept();
    });
    run({picturePath("a.png", noisePicture(4, 1)), broken, picturePath("b.png", noisePicture(4, 2))}, {"i8"}, true, 0);
    QVERIFY(box.answered());
    QCOMPARE(label, QStringLiteral("Searching for ") + broken + "...");
    QCOMPARE(value, 1);
    QCOMPARE(maximum, 3);
    QVERIFY(visible);
    QCOMPARE(modality, Qt::WindowModal);
    QVERIFY(!(flags & Qt::WindowContextHelpButtonHint));
    QCOMPARE(cancelText, QString("Cancel"));
    QCOMPARE(labelFormat, Qt::PlainText);
    QCOMPARE(cursor.shape(), Qt::WaitCursor);
    QVERIFY(!progress()->isVisible());
    QCOMPARE(progress()->parent(), m_window.get());
    QVERIFY(!QApplication::overrideCursor());
}

void SearchWindowTest::progressDialogsDoNotPileUp()
{
    openImage(cartridgeImage(4096));
    const QString picture = picturePath("a.png", noisePicture(4, 1));
    for (int i = 0; i < 3; ++i)
        run({picture}, {"i8"}, true, 0);
    QCOMPARE(m_window->findChildren<QProgressDialog *>().size(), 1);
}

void SearchWindowTest::cancelledByButton()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x1000, 64, encode(picture, "i8"));
    openImage(image);
    DialogAnswer<QProgressDialog> answer(
        [](QProgressDialog *dialog) { QTest::mouseClick(dialog->findChild<QPushButton *>(), Qt::LeftButton); });
    QStringList files;
    for (int i = 0; i < 2000; ++i)
        files << picturePath(QStringLiteral("%1.png").arg(i), picture);
    run(files, {"i8"}, true, 1);
    QVERIFY(answer.answered());
    QVERIFY(currentROM.root->files.size() < 2000);
    QVERIFY(!progress()->isVisible());
    run({files.first()}, {"i8"}, true, 1); // The next search is not cancelled.
    QCOMPARE(QString(currentROM.root->files.last()->name), QString("0"));
}

/// Cancelled when the second copy has been found: the two get their entries, and the next picture is not begun.
void SearchWindowTest::cancelledAtACopyKeepsWhatWasFound()
{
    static QProgressDialog *dialog;
    static QtMessageHandler previous;
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    for (int i = 0; i < 5; ++i)
        image.replace(0x1000 + 0x100 * i, 64, encode(picture, "i8"));
    openImage(image);
    const QStringList files {picturePath("a.png", picture), picturePath("b.png", picture)};
    QTimer::singleShot(0, this, [this] {
        dialog = progress();
        previous = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
            if (text.contains("0x1100"))
                dialog->cancel();
        });
    });
    run(files, {"i8", "rgba32"}, false, 1);
    qInstallMessageHandler(previous);
    QCOMPARE(currentROM.root->files.size(), 2);
    QCOMPARE(currentROM.root->files.last()->address, 0x1100);
    QCOMPARE(currentROM.root->treeItem->childCount(), 2);
}

void SearchWindowTest::nothingReachesTheWindowMeanwhile()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x1000, 64, encode(picture, "i8"));
    openImage(image);
    const QString other = m_folder->filePath("other.z64");
    QVERIFY(writeBytes(other, cartridgeImage(8192, "NOTH")));
    const QString broken = m_folder->filePath("broken.png");
    QVERIFY(writeBytes(broken, "no picture"));
    bool closed = true;
    DialogAnswer<findTextureDialog> noDialog([](findTextureDialog *dialog) { dialog->reject(); });
    DialogAnswer<QMessageBox> box([&](QMessageBox *shown) {
        closed = m_window->close();
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(other)});
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_window.get(), &enter);
        QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_window.get(), &drop);
        QTest::keyClick(tree(), Qt::Key_Delete);
        m_window->loadTexture();
        m_window->runFindTexture({broken}, formatsNamed({"i8"}), true, 0);
        QTest::mouseClick(tree()->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(5, tree()->viewport()->height() - 2));
        shown->accept();
    });
    run({broken, picturePath("a.png", picture)}, {"i8"}, true, 0);
    QVERIFY(box.answered());
    QVERIFY(!noDialog.answered());
    QVERIFY(!closed);
    QVERIFY(m_window->isVisible());
    QCOMPARE(currentROM.data, image);
    QCOMPARE(currentROM.lastSelectedFolder, currentROM.root);
    QCOMPARE(currentROM.root->files.size(), 1);
}

void SearchWindowTest::folderWithoutARow()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x1000, 64, encode(picture, "i8"));
    openImage(image);
    auto *folder = new fileTreeDirectory;
    currentROM.root->addDirectory(folder);
    currentROM.lastSelectedFolder = folder;
    const QString file = picturePath("a.png", picture);
    run({file}, {"i8"}, true, 0);
    currentROM.lastSelectedFolder = folder;
    run({file}, {"i8"}, true, 0);
    QCOMPARE(folder->files.size(), 1);
    QVERIFY(!folder->files.first()->treeItem);
}

void SearchWindowTest::oneFileDirectly()
{
    const QImage picture = noisePicture(8, 1);
    QByteArray image = cartridgeImage(0x4000);
    image.replace(0x1000, 64, encode(picture, "i8"));
    openImage(image);
    const QString file = picturePath("a.png", picture);
    QProgressDialog dialog("label", "Cancel", 0, 1);
    QVERIFY(m_window->findTexture(file, &dialog, formatsNamed({"i8", "rgba32"}), true, 1));
    QVERIFY(!m_window->findTexture(file, &dialog, formatsNamed({"rgba32"}), true, 1));
    QVERIFY(m_window->findTexture(file, nullptr, formatsNamed({"i8"}), true, 2));
    QCOMPARE(currentROM.root->files.size(), 1);
    QCOMPARE(dialog.labelText(), QString("label"));
    dialog.cancel();
    QVERIFY(!m_window->findTexture(file, &dialog, formatsNamed({"i8"}), true, 1));
    QCOMPARE(currentROM.root->files.size(), 1);
}

void SearchWindowTest::removesTheLastExtension()
{
    QCOMPARE(m_window->removeFileExtension("/a.b/c.d.png"), QString("c.d"));
    QCOMPARE(m_window->removeFileExtension("plain"), QString("plain"));
    QCOMPARE(m_window->removeFileExtension(QString()), QString());
}

/// 20,000 copies with their rows, and then each of them overwritten. Quadratic work would take minutes.
void SearchWindowTest::manyCopiesStayLinear()
{
    QByteArray image = cartridgeImage(0x100);
    image += QByteArray(8 * 20000, '\xFF');
    openImage(image);
    const QString file = picturePath("white.png", plainPicture(4, 2, qRgba(255, 255, 255, 255)));
    MessageCapture quiet;
    run({file}, {"i8"}, false, 1);
    QCOMPARE(currentROM.root->treeItem->childCount(), 20000);
    select(currentROM.root->files.last()->treeItem);
    run({file}, {"i8"}, false, 0);
    QCOMPARE(currentROM.root->treeItem->childCount(), 20000);
    QCOMPARE(currentROM.root->files.size(), 20000);
}

QTEST_MAIN(SearchWindowTest)
#include "tst_search.moc"
