// SPDX-License-Identifier: MIT
#include "system/monkey/walker.h"

#include "app/mainwindow.h"
#include "support/images.h"
#include "support/pictures.h"
#include "system/monkey/tablecopy.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QInputMethodEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QScrollArea>
#include <QSettings>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>
#include <QTreeWidget>
#include <QUrl>

namespace
{
QStringList *warningsOfWalk = nullptr;

void keepWarnings(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(text));
        std::abort();
    }
    // Messages of the platform plugin and of the JPEG reader do not count.
    const bool isOfQt = text.size() > 1 && text.at(0) == QLatin1Char('Q') && text.at(1).isUpper();
    if (isOfQt && type != QtDebugMsg && type != QtInfoMsg && warningsOfWalk)
        warningsOfWalk->append(text);
}

QString profilesFolder()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/profiles/");
}

QString listPath()
{
    return profilesFolder() + currentROM.romID + '/' + currentROM.profileName + QStringLiteral("/fileList.xml");
}

QString nameOf(const QTreeWidgetItem *row)
{
    return row->parent() ? nameOf(row->parent()) + '/' + row->text(0) : row->text(0);
}
}

const QList<Walker::Operation> &Walker::operations()
{
    static const QList<Operation> list = {
        {"click a row", 22, &Walker::clickRow},
        {"press a key in the tree", 14, &Walker::pressKeyInTree},
        {"click beside the rows", 2, &Walker::clickBesideRows},
        {"expand or collapse", 10, &Walker::toggleRow},
        {"sort", 6, &Walker::sortByColumn},
        {"context menu", 6, &Walker::openContextMenu},
        {"edit the folder", 8, &Walker::editFolder},
        {"edit the texture", 10, &Walker::editTexture},
        {"check fixed addresses", 4, &Walker::checkFixedAddresses},
        {"save the folder", 7, &Walker::saveFolderPanel},
        {"save the texture", 7, &Walker::saveTexturePanel},
        {"new folder", 5, &Walker::newFolder},
        {"new texture", 7, &Walker::newTexture},
        {"delete", 6, &Walker::deleteItem},
        {"import an image", 5, &Walker::importImage},
        {"drop a picture", 6, &Walker::dropPicture},
        {"drop an image", 2, &Walker::dropImage},
        {"extract", 4, &Walker::extract},
        {"import a folder", 2, &Walker::importFolder},
        {"import a pack", 2, &Walker::importPack},
        {"find a texture", 5, &Walker::findTexture},
        {"click the preview", 2, &Walker::clickPreview},
        {"fill the grid", 3, &Walker::fillGrid},
        {"new profile", 2, &Walker::newProfile},
        {"select a profile", 4, &Walker::selectProfile},
        {"save the profile", 4, &Walker::saveProfile},
        {"load the profile", 5, &Walker::loadProfile},
        {"delete the profile", 2, &Walker::deleteProfile},
        {"select the autoload profile", 2, &Walker::selectAutoload},
        {"autosave", 1, &Walker::toggleAutosave},
        {"change the tab", 2, &Walker::changeTab},
        {"open", 3, &Walker::openImage},
        {"open a recent file", 2, &Walker::openRecentImage},
        {"save", 3, &Walker::saveImage},
        {"save as", 2, &Walker::saveImageAs},
        {"undo", 2, &Walker::pressUndo},
        {"about", 1, &Walker::showAbout},
        {"close", 2, &Walker::closeWindow},
    };
    return list;
}

Walker::Walker(quint32 seed) : m_random(seed), m_answers(&m_random, &m_trail)
{
    warningsOfWalk = &m_warnings;
    qInstallMessageHandler(keepWarnings);
    QSettings().clear();
    QDir(profilesFolder()).removeRecursively();
    QDir().mkpath(profilesFolder() + QStringLiteral("NWFA0/default"));
    writeBytes(profilesFolder() + QStringLiteral("NWFA0/default/fileList.xml"), WalkFiles::firstList());
    start();
    m_window->loadFile(m_files.path(QStringLiteral("first.z64")));
}

Walker::~Walker()
{
    m_window.reset();
    resetCurrentROM();
    qInstallMessageHandler(nullptr);
    warningsOfWalk = nullptr;
}

/// The program starts.
void Walker::start()
{
    m_rules.reset();
    m_window.reset();
    resetCurrentROM();
    m_window = std::make_unique<MainWindow>();
    m_rules = std::make_unique<WalkRules>(m_window.get());
    m_window->resize(1700, 1000);
    m_window->show();
    QApplication::setActiveWindow(m_window.get());
}

template<typename Widget> Widget *Walker::find(const char *name)
{
    auto *widget = m_window->findChild<Widget *>(QLatin1String(name));
    if (!widget)
        qFatal("the window has no %s", name);
    return widget;
}

QTreeWidget *Walker::tree()
{
    return find<QTreeWidget>("fileTree");
}

QString Walker::step()
{
    static const int total = [] {
        int sum = 0;
        for (const Operation &operation : operations())
            sum += operation.weight;
        return sum;
    }();
    int place = m_random.below(total);
    const Operation *chosen = nullptr;
    for (const Operation &operation : operations()) {
        chosen = &operation;
        place -= operation.weight;
        if (place < 0)
            break;
    }
    m_trail.append(QString::number(++m_steps) + QStringLiteral(": ") + QLatin1String(chosen->name));
    m_answers.prepare(DialogAnswers::Choices());
    m_facts = StepFacts();
    m_problem.clear();
    m_rules->begin();
    QApplication::setActiveWindow(m_window.get()); // As a window manager does after a dialog.
    (this->*chosen->run)();
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return afterwards();
}

QString Walker::afterwards()
{
    if (!m_problem.isEmpty())
        return m_problem;
    if (!m_warnings.isEmpty())
        return QStringLiteral("a warning: ") + m_warnings.join(QStringLiteral("; "));
    return m_rules->broken(m_facts);
}

QStringList Walker::someNames() const
{
    return {QStringLiteral("Sky"),
            QStringLiteral("Tile"),
            QStringLiteral("Grass"),
            QStringLiteral("sky"),
            QString(),
            QStringLiteral("New Texture"),
            QStringLiteral("Sky (2)"),
            QStringLiteral("a/b"),
            QStringLiteral("<&\">"),
            QString::fromUtf8("\xc3\xa9t\xc3\xa9"),
            QStringLiteral(" "),
            QStringLiteral(".."),
            QStringLiteral("default")};
}

QStringList Walker::someNumbers() const
{
    return {QStringLiteral("0"),          QStringLiteral("0x100"),
            QStringLiteral("0x00001000"), QStringLiteral("4096"),
            QStringLiteral("0x2400"),     QStringLiteral("0x4000"),
            QStringLiteral("0xFFF8"),     QStringLiteral("0x0001FFF0"),
            QStringLiteral("0xFFFFFFF0"), QStringLiteral("0x7FFFFFFF"),
            QStringLiteral("-16"),        QStringLiteral("0X10"),
            QStringLiteral("none"),       QString(),
            QStringLiteral("99999999999")};
}

QList<QTreeWidgetItem *> Walker::rowsInView()
{
    QList<QTreeWidgetItem *> rows;
    for (QTreeWidgetItem *row = tree()->topLevelItem(0); row; row = tree()->itemBelow(row))
        rows << row;
    return rows;
}

/// A random row, scrolled into view.
QTreeWidgetItem *Walker::showRow()
{
    const QList<QTreeWidgetItem *> rows = rowsInView();
    if (rows.isEmpty())
        return nullptr;
    QTreeWidgetItem *row = m_random.oneOf(rows);
    note(nameOf(row));
    tree()->scrollToItem(row);
    return row;
}

void Walker::clickRow()
{
    QTreeWidgetItem *row = showRow();
    if (!row)
        return;
    const Qt::KeyboardModifiers modifiers = m_random.chance(8) ? Qt::ControlModifier : Qt::NoModifier;
    QTest::mouseClick(tree()->viewport(), Qt::LeftButton, modifiers, tree()->visualItemRect(row).center());
}

void Walker::pressKeyInTree()
{
    static const QList<int> keys = {Qt::Key_Down,  Qt::Key_Down, Qt::Key_Up,     Qt::Key_Home,    Qt::Key_End,   Qt::Key_Left,
                                    Qt::Key_Right, Qt::Key_Plus, Qt::Key_Minus,  Qt::Key_Return,  Qt::Key_Space, Qt::Key_PageDown,
                                    Qt::Key_S,     Qt::Key_N,    Qt::Key_Escape, Qt::Key_Asterisk};
    const int key = m_random.oneOf(keys);
    note(QKeySequence(key).toString());
    tree()->setFocus();
    QTest::keyClick(tree(), Qt::Key(key), m_random.chance(5) ? Qt::ControlModifier : Qt::NoModifier);
}

void Walker::clickBesideRows()
{
    const QPoint below = tree()->viewport()->rect().bottomRight() - QPoint(3, 3);
    QTest::mouseClick(tree()->viewport(), m_random.chance(70) ? Qt::LeftButton : Qt::RightButton, Qt::NoModifier, below);
}

void Walker::toggleRow()
{
    if (QTreeWidgetItem *row = showRow())
        QTest::mouseDClick(tree()->viewport(), Qt::LeftButton, Qt::NoModifier, tree()->visualItemRect(row).center());
}

void Walker::sortByColumn()
{
    const QHeaderView *header = tree()->header();
    const int column = m_random.below(header->count());
    note(QString::number(column));
    const QPoint place(header->sectionViewportPosition(column) + header->sectionSize(column) / 2, header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, place);
}

void Walker::openContextMenu()
{
    QTreeWidgetItem *row = showRow();
    if (!row)
        return;
    // An entry of the menu may open further dialogs.
    DialogAnswers::Choices choices;
    choices.paths = m_files.pictures() + m_files.pictureFolders() + m_files.packs();
    choices.pictures = m_files.pictures();
    choices.folders = m_files.pictureFolders();
    m_answers.prepare(choices);
    m_facts.mayWriteImage = true;
    m_facts.mayImportPack = true;
    const QPoint place = tree()->visualItemRect(row).center();
    if (m_random.chance(80))
        QTest::mouseClick(tree()->viewport(), Qt::RightButton, Qt::NoModifier, place);
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, tree()->viewport()->mapToGlobal(place));
    QApplication::sendEvent(tree()->viewport(), &event);
}

void Walker::typeInto(const char *field, const QStringList &texts)
{
    auto *edit = find<QLineEdit>(field);
    if (!edit->isVisible())
        return;
    const QString typed = m_random.oneOf(texts);
    note(QLatin1String(field) + QStringLiteral(" = ") + typed);
    edit->setFocus();
    QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
    if (typed.isEmpty())
        QTest::keyClick(edit, Qt::Key_Backspace);
    if (typed.toUtf8().size() == typed.size()) {
        QTest::keyClicks(edit, typed);
    } else {
        QInputMethodEvent composed;
        composed.setCommitString(typed);
        QApplication::sendEvent(edit, &composed);
    }
    if (m_random.chance(20))
        QTest::keyClick(edit, Qt::Key_Return);
}

void Walker::spin(const char *field)
{
    static const QStringList values = {QStringLiteral("1"),    QStringLiteral("4"),      QStringLiteral("8"),
                                       QStringLiteral("16"),   QStringLiteral("33"),     QStringLiteral("0"),
                                       QStringLiteral("1025"), QStringLiteral("100000"), QStringLiteral("999999")};
    auto *box = find<QSpinBox>(field);
    if (!box->isVisible())
        return;
    if (m_random.chance(30)) {
        QTest::keyClick(box, m_random.chance(50) ? Qt::Key_Up : Qt::Key_Down);
        return;
    }
    const QString value = m_random.oneOf(values);
    note(QLatin1String(field) + QStringLiteral(" = ") + value);
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, value);
    if (m_random.chance(50))
        QTest::keyClick(box, Qt::Key_Return);
}

void Walker::editFolder()
{
    static const QList<const char *> fields = {"folderName", "folderOffset", "folderSize", "folderAddress", "folderPath"};
    const char *field = m_random.oneOf(fields);
    typeInto(field, qstrcmp(field, "folderName") == 0 ? someNames() : someNumbers());
}

void Walker::editTexture()
{
    static const QStringList formats = {
        QStringLiteral("rgba32"), QStringLiteral("ci4"),  QStringLiteral("ci8"),  QStringLiteral("i4"),  QStringLiteral("ia16"),
        QStringLiteral("rgb5a1"), QStringLiteral("jpeg"), QStringLiteral("JPEG"), QStringLiteral("tim"), QString()};
    switch (m_random.below(7)) {
    case 0: return typeInto("textureName", someNames());
    case 1: return typeInto("textureOffset", someNumbers());
    case 2: return typeInto("textureFormat", formats);
    case 3: return typeInto("texturePalette", someNumbers());
    case 4: return spin("textureWidth");
    case 5: return spin("textureHeight");
    default: return typeInto("textureAddress", someNumbers());
    }
}

void Walker::checkFixedAddresses()
{
    QTest::keyClick(find<QCheckBox>("fixedContentAddresses"), Qt::Key_Space);
}

void Walker::press(const char *button)
{
    QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton);
}

void Walker::saveFolderPanel()
{
    press("folderSave");
}

void Walker::saveTexturePanel()
{
    press("textureSave");
}

void Walker::trigger(const char *action)
{
    auto *found = find<QAction>(action);
    if (found->isEnabled())
        found->trigger();
    else
        note(QStringLiteral("disabled"));
}

void Walker::newFolder()
{
    trigger("newFolderAction");
}

void Walker::newTexture()
{
    trigger("newTextureAction");
}

void Walker::deleteItem()
{
    if (m_random.chance(50)) {
        trigger("deleteAction");
        return;
    }
    tree()->setFocus();
    QTest::keyClick(tree(), Qt::Key_Delete);
}

void Walker::importImage()
{
    DialogAnswers::Choices choices;
    choices.paths = m_files.pictures();
    m_answers.prepare(choices);
    m_facts.mayWriteImage = true;
    m_facts.replaced = currentROM.lastSelectedTexture;
    trigger("importImageAction");
}

/// Drags \a files over \a target and drops them if it accepts them.
void Walker::drop(QWidget *target, const QStringList &files)
{
    QMimeData data;
    QList<QUrl> urls;
    for (const QString &file : files)
        urls << QUrl::fromLocalFile(file);
    data.setUrls(urls);
    const QPoint place = target->rect().center();
    QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    if (!enter.isAccepted())
        return;
    note(QStringLiteral("dropped ") + files.first().section('/', -1));
    QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &event);
}

void Walker::dropPicture()
{
    QStringList files = {m_random.oneOf(m_files.pictures())};
    if (m_random.chance(10))
        files << m_random.oneOf(m_files.pictures());
    m_facts.mayWriteImage = true;
    m_facts.replaced = currentROM.lastSelectedTexture;
    drop(find<QScrollArea>("previewArea")->viewport(), files);
}

void Walker::dropImage()
{
    m_facts.mayLoadImage = true;
    drop(m_window.get(), {m_random.oneOf(m_files.images())});
}

void Walker::extract()
{
    DialogAnswers::Choices choices;
    choices.paths = currentROM.selectedType == MainWindow::TextureSelected ? m_files.targets(QStringLiteral(".png"))
                                                                           : m_files.targetFolders();
    m_answers.prepare(choices);
    trigger("extractAction");
}

void Walker::importFolder()
{
    DialogAnswers::Choices choices;
    choices.paths = m_files.pictureFolders();
    m_answers.prepare(choices);
    m_facts.mayWriteImage = true;
    trigger("importFolderAction");
}

void Walker::importPack()
{
    DialogAnswers::Choices choices;
    choices.paths = m_files.packs();
    m_answers.prepare(choices);
    m_facts.mayWriteImage = true;
    m_facts.mayImportPack = true;
    trigger("importTexturePackAction");
}

void Walker::findTexture()
{
    DialogAnswers::Choices choices;
    choices.pictures = m_files.pictures();
    choices.folders = m_files.pictureFolders();
    choices.cancelsProgress = m_random.chance(10);
    m_answers.prepare(choices);
    trigger("findTextureAction");
}

void Walker::clickPreview()
{
    QTest::mouseClick(find<QLabel>("previewLabel"), Qt::LeftButton);
}

void Walker::fillGrid()
{
    auto *grid = find<QTableWidget>("gridTable");
    QStringList paths = {QStringLiteral("Root/Tile"), QStringLiteral("root/grass/blade"), QStringLiteral("Root"), QString()};
    const QList<fileTreeFile *> textures = fileTreeContainer().allFiles(currentROM.root);
    if (!textures.isEmpty()) {
        const fileTreeFile *texture = m_random.oneOf(textures);
        paths << QString(texture->path() + texture->name);
    }
    const int row = m_random.below(grid->rowCount());
    const int column = m_random.below(grid->columnCount());
    const QString path = m_random.oneOf(paths);
    if (!grid->item(row, column))
        grid->setItem(row, column, new QTableWidgetItem(path));
    else if (grid->item(row, column)->text() != path)
        grid->item(row, column)->setText(path);
    else
        return; // No change: the cell is not looked up again, and the table may have changed since.
    const QColor expected = fileTreeContainer().fileFromPath(path) ? QColor(0, 255, 0) : QColor(255, 0, 0);
    if (grid->item(row, column)->background().color() != expected)
        m_problem = QStringLiteral("the grid's colour of ") + path;
}

void Walker::newProfile()
{
    DialogAnswers::Choices choices;
    choices.names =
        QStringList {QStringLiteral("New Profile"), QStringLiteral("Other"), QStringLiteral("third \"one\"")} + someNames();
    choices.names.removeAll(QString::fromUtf8("\xc3\xa9t\xc3\xa9"));
    m_answers.prepare(choices);
    if (currentROM.loaded)
        press("newProfile");
}

void Walker::selectProfile()
{
    QTest::keyClick(find<QComboBox>("profile"), m_random.chance(50) ? Qt::Key_Down : Qt::Key_Up);
    note(find<QComboBox>("profile")->currentText());
}

void Walker::saveProfile()
{
    if (currentROM.loaded)
        press("saveProfile");
}

void Walker::loadProfile()
{
    if (currentROM.loaded)
        press("loadProfile");
}

void Walker::deleteProfile()
{
    if (currentROM.loaded)
        press("deleteProfile");
}

void Walker::selectAutoload()
{
    if (currentROM.loaded)
        QTest::keyClick(find<QComboBox>("autoloadProfile"), m_random.chance(50) ? Qt::Key_Down : Qt::Key_Up);
}

void Walker::toggleAutosave()
{
    if (currentROM.loaded)
        QTest::keyClick(find<QCheckBox>("autosave"), Qt::Key_Space);
}

void Walker::changeTab()
{
    auto *tabs = find<QTabWidget>("tabWidget");
    const int tab = m_random.below(2);
    QTest::mouseClick(tabs->tabBar(), Qt::LeftButton, Qt::NoModifier, tabs->tabBar()->tabRect(tab).center());
}

void Walker::openImage()
{
    DialogAnswers::Choices choices;
    choices.paths = m_files.images();
    m_answers.prepare(choices);
    m_facts.mayLoadImage = true;
    QTest::keyClick(m_window.get(), Qt::Key_O, Qt::ControlModifier);
    if (m_answers.count() == 0)
        m_problem = QStringLiteral("the shortcut opens no dialog");
}

void Walker::openRecentImage()
{
    auto *action = find<QAction>(qPrintable(QStringLiteral("recentFileAction%1").arg(m_random.below(5) + 1)));
    if (!action->isVisible())
        return;
    const bool wasLoaded = currentROM.loaded;
    const QString oldList = listPath();
    const QByteArray oldTable = listOf(*currentROM.root);
    m_facts.mayLoadImage = true;
    note(action->data().toString().section('/', -1));
    action->trigger();
    if (wasLoaded && bytesOfFile(oldList) != oldTable)
        m_problem = QStringLiteral("opening another image did not save the old one's table");
}

void Walker::saveImage()
{
    DialogAnswers::Choices choices;
    choices.paths = m_files.targets(QStringLiteral(".z64"));
    m_answers.prepare(choices);
    trigger("saveAction");
}

void Walker::saveImageAs()
{
    DialogAnswers::Choices choices;
    choices.paths = m_files.targets(QStringLiteral(".z64")) << m_files.path(QStringLiteral("second.v64"));
    m_answers.prepare(choices);
    trigger("saveAsAction");
}

void Walker::pressUndo()
{
    QWidget *focused = QApplication::focusWidget();
    QTest::keyClick(focused ? focused : m_window.get(), Qt::Key_Z, Qt::ControlModifier);
}

void Walker::showAbout()
{
    trigger("aboutAction");
}

void Walker::closeWindow()
{
    m_facts.mayLoadImage = true;
    const bool autosaves = currentROM.loaded && currentROM.autosave;
    const QByteArray table = listOf(*currentROM.root);
    const QString list = listPath();
    const bool closed = m_window->close();
    if (autosaves && bytesOfFile(list) != table)
        m_problem = QStringLiteral("closing did not save the table");
    note(QLatin1String(closed ? "closed" : "stays"));
    if (!closed)
        return;
    // The program starts again.
    start();
    m_rules->begin();
    if (m_random.chance(80))
        m_window->loadFile(m_files.path(QStringLiteral("first.z64")));
}
