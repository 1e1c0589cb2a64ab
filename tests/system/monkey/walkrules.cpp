// SPDX-License-Identifier: MIT
#include "system/monkey/walkrules.h"

#include "app/mainwindow.h"
#include "model/textureformat.h"
#include "support/images.h"
#include "support/pictures.h"
#include "system/monkey/rendering.h"
#include "system/monkey/tablecopy.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QSpinBox>
#include <QTreeWidget>

namespace
{
constexpr int columns = 10;
constexpr int filledColumn = 1;

template<typename... Parts> QString text(const char *format, Parts... parts)
{
    QString result = QLatin1String(format);
    ((result = result.arg(parts)), ...);
    return result;
}

fileTreeFile *textureOf(const QTreeWidgetItem *row)
{
    return row->data(0, Qt::UserRole).value<fileTreeFile *>();
}

fileTreeDirectory *folderOf(const QTreeWidgetItem *row)
{
    return row->data(0, Qt::UserRole).value<fileTreeDirectory *>();
}

bool isFilled(const QTreeWidgetItem *row)
{
    return row->data(filledColumn, Qt::UserRole).toBool();
}

QStringList cellsIn(const QTreeWidgetItem *row)
{
    QStringList cells;
    for (int column = 0; column < columns; ++column)
        cells << row->text(column);
    return cells;
}

QImage iconIn(const QTreeWidgetItem *row)
{
    return row->icon(0).pixmap(16, 16).toImage();
}

template<typename Node> QString repeatedName(const QList<Node *> &nodes)
{
    QSet<QString> names;
    for (const Node *node : nodes) {
        if (names.contains(node->name))
            return node->name;
        names.insert(node->name);
    }
    return QString();
}

qint32 typedNumber(const QString &typed)
{
    return typed.startsWith(QLatin1String("0x")) ? qint32(typed.toUInt(nullptr, 16)) : typed.toInt();
}

QList<fileTreeDirectory *> allFolders()
{
    return fileTreeContainer().allDirectories(currentROM.root) << currentROM.root;
}

bool isInTable(const fileTreeDirectory *folder)
{
    while (folder && folder != currentROM.root)
        folder = folder->parent && folder->parent->directories.contains(const_cast<fileTreeDirectory *>(folder)) ? folder->parent
                                                                                                                 : nullptr;
    return folder;
}

bool isInTable(const fileTreeFile *texture)
{
    return texture->parent && texture->parent->files.contains(const_cast<fileTreeFile *>(texture)) && isInTable(texture->parent);
}

bool touches(qint32 start, qint32 end, qint32 address)
{
    return start <= address && address < end;
}

bool touch(const fileTreeFile &a, const fileTreeFile &b)
{
    const qint32 aStart = a.realAddress();
    const qint32 bStart = b.realAddress();
    const qint32 aEnd = qint32(quint32(aStart) + quint32(a.size()));
    const qint32 bEnd = qint32(quint32(bStart) + quint32(b.size()));
    return touches(aStart, aEnd, bStart) || touches(aStart, aEnd, bEnd) || touches(bStart, bEnd, aStart)
        || touches(bStart, bEnd, aEnd);
}

QByteArray bigEndian(const QByteArray &image)
{
    if (image.size() < 65 || image.size() % 4 != 0)
        return image;
    for (const int unit : {2, 4}) {
        if (withReversedUnits(image.left(8), unit) == bigEndianSignature())
            return withReversedUnits(image, unit);
    }
    return image;
}
}

template<typename Widget> Widget *WalkRules::find(const char *name) const
{
    auto *widget = m_window->findChild<Widget *>(QLatin1String(name));
    if (!widget)
        qFatal("the window has no %s", name);
    return widget;
}

void WalkRules::begin()
{
    m_imageBefore = currentROM.data;
    m_foldersBefore = currentROM.root->directories;
}

QString WalkRules::broken(const StepFacts &facts)
{
    static const QList<QPair<const char *, Rule>> rules = {
        {"nothing is left over", &WalkRules::nothingIsLeftOver},
        {"the image keeps its size", &WalkRules::imageKeepsItsSize},
        {"names are unique", &WalkRules::namesAreUnique},
        {"rows agree with the table", &WalkRules::rowsAgreeWithTable},
        {"cells are fresh", &WalkRules::cellsAreFresh},
        {"the selection points into the table", &WalkRules::selectionPointsIntoTable},
        {"the selection agrees with the tree", &WalkRules::selectionAgreesWithTree},
        {"actions follow the rule", &WalkRules::actionsFollowTheRule},
        {"the folder panel agrees", &WalkRules::folderPanelAgrees},
        {"the texture panel agrees", &WalkRules::texturePanelAgrees},
        {"the list survives saving", &WalkRules::listSurvivesSaving},
        {"the notice tells the truth", &WalkRules::noticeTellsTheTruth},
        {"the modified flag tells the truth", &WalkRules::modifiedFlagTellsTheTruth},
        {"recent files are listed", &WalkRules::recentFilesAreListed},
    };
    for (const auto &[name, rule] : rules) {
        const QString problem = (this->*rule)(facts);
        if (!problem.isEmpty())
            return QLatin1String(name) + QStringLiteral(": ") + problem;
    }
    return QString();
}

QString WalkRules::nothingIsLeftOver(const StepFacts &)
{
    if (QApplication::overrideCursor())
        return QStringLiteral("an override cursor");
    if (QApplication::activeModalWidget() || QApplication::activePopupWidget())
        return QStringLiteral("a dialog or a menu");
    if (!m_window->isEnabled())
        return QStringLiteral("the window is disabled");
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (const QWidget *window : windows) {
        if (window != m_window && window->isVisible())
            return text("a %1", QLatin1String(window->metaObject()->className()));
    }
    if (m_window->findChildren<QProgressDialog *>().size() > 1)
        return QStringLiteral("progress dialogs pile up");
    QKeyEvent probe(QEvent::KeyRelease, Qt::Key_unknown, Qt::NoModifier);
    QObject receiver(m_window);
    QCoreApplication::sendEvent(&receiver, &probe);
    return probe.isAccepted() ? QString() : QStringLiteral("input is blocked");
}

QString WalkRules::imageKeepsItsSize(const StepFacts &facts)
{
    const int before = m_imageBefore.size();
    const int now = currentROM.data.size();
    if (facts.mayLoadImage || now == before || (facts.mayWriteImage && now > before))
        return QString();
    return text("%1 bytes are now %2", before, now);
}

QString WalkRules::namesAreUnique(const StepFacts &)
{
    const QList<fileTreeDirectory *> folders = allFolders();
    for (const fileTreeDirectory *folder : folders) {
        const QString textures = repeatedName(folder->files);
        const QString directories = repeatedName(folder->directories);
        if (!textures.isNull() || !directories.isNull())
            return text("%1 in %2", textures + directories, folder->path() + folder->name);
    }
    return QString();
}

QString WalkRules::rowsAgreeWithTable(const StepFacts &facts)
{
    if (facts.mayImportPack) {
        for (const fileTreeDirectory *folder : qAsConst(currentROM.root->directories)) {
            if (!folder->treeItem && !m_foldersBefore.contains(const_cast<fileTreeDirectory *>(folder)))
                m_foldersWithoutRow.insert(folder);
        }
    }
    const auto *tree = find<QTreeWidget>("fileTree");
    if (!currentROM.loaded)
        return QString();
    if (tree->topLevelItemCount() != 1 || tree->topLevelItem(0) != currentROM.root->treeItem)
        return QStringLiteral("the root has no row of its own");
    const QList<fileTreeDirectory *> folders = allFolders();
    for (const fileTreeDirectory *folder : folders) {
        const bool mayLackRow = m_foldersWithoutRow.contains(folder) || (folder->parent && !folder->parent->treeItem);
        if (!folder->treeItem && !mayLackRow)
            return text("the folder %1 has no row", QString(folder->name));
        const QString problem = folder->treeItem ? brokenRow(folder->treeItem, *folder) : QString();
        if (!problem.isEmpty())
            return problem;
    }
    return QString();
}

/// Whether \a row is the folder's, and its children are those of the folder.
QString WalkRules::brokenRow(const QTreeWidgetItem *row, const fileTreeDirectory &folder)
{
    const QString name = folder.path() + folder.name;
    if (row->type() != MainWindow::FolderRow || folderOf(row) != &folder)
        return text("the row of %1 belongs to another", name);
    int children = 0;
    for (const fileTreeFile *file : folder.files) {
        if (!file->treeItem || file->treeItem->parent() != row || textureOf(file->treeItem) != file
            || file->treeItem->type() != MainWindow::TextureRow)
            return text("the texture %1 in %2 has no row of its own", QString(file->name), name);
        ++children;
    }
    for (const fileTreeDirectory *directory : folder.directories) {
        if (directory->treeItem && directory->treeItem->parent() != row)
            return text("the row of %1 is not in %2", QString(directory->name), name);
        children += directory->treeItem ? 1 : 0;
    }
    if (row->childCount() != children)
        return text("%1 has %2 rows instead of %3", name, row->childCount(), children);
    static const QImage empty = builtInIcon(QStringLiteral("folder_empty"));
    static const QImage full = builtInIcon(QStringLiteral("folder_textures"));
    if (iconIn(row) != (children > 0 ? full : empty))
        return text("the icon of %1 is wrong", name);
    return QString();
}

QString WalkRules::cellsAreFresh(const StepFacts &facts)
{
    const QList<fileTreeDirectory *> folders = allFolders();
    for (const fileTreeDirectory *folder : folders) {
        if (!folder->treeItem)
            continue;
        const QStringList expected = cellsOfFolder(*folder);
        if (cellsIn(folder->treeItem) != expected)
            return text("%1 instead of %2", cellsIn(folder->treeItem).join(' '), expected.join(' '));
        for (const fileTreeFile *file : qAsConst(folder->files)) {
            const QString problem = staleTexture(*file, facts);
            if (!problem.isEmpty())
                return problem;
        }
    }
    return QString();
}

QString WalkRules::staleTexture(const fileTreeFile &texture, const StepFacts &facts)
{
    const QTreeWidgetItem *row = texture.treeItem;
    const QStringList cells = cellsIn(row);
    if (!isFilled(row) && row->parent()->isExpanded())
        return text("%1 waits in an expanded folder", QString(texture.name));
    if (!isFilled(row) && cells.join(QString()).isEmpty())
        return QString();
    const QStringList expected = cellsOfTexture(texture);
    bool isStale = isFilled(row) && iconIn(row) != iconOfTexture(texture);
    for (int column = 0; column < columns; ++column) {
        if (cells.at(column) == expected.at(column))
            continue;
        if (!dependsOnBytes(texture, column))
            return text("%1 instead of %2", cells.join(' '), expected.join(' '));
        isStale = true;
    }
    if (!isStale) {
        m_staleTextures.remove(&texture);
        return QString();
    }
    const bool bytesChanged = currentROM.data != m_imageBefore;
    if (facts.replaced && bytesChanged && touch(texture, *facts.replaced))
        return text("%1 lies in the range that was written, and was not refreshed", QString(texture.name));
    if (bytesChanged && facts.mayWriteImage)
        m_staleTextures.insert(&texture);
    return m_staleTextures.contains(&texture) || !isFilled(row)
        ? QString()
        : text("icon or size of %1 is stale: %2 instead of %3", QString(texture.name), cells.join(' '), expected.join(' '));
}

QString WalkRules::selectionPointsIntoTable(const StepFacts &)
{
    if (currentROM.lastSelectedFolder && !isInTable(currentROM.lastSelectedFolder))
        return text("folder %1", QString(currentROM.lastSelectedFolder->name));
    if (currentROM.lastSelectedTexture && !isInTable(currentROM.lastSelectedTexture))
        return text("texture %1", QString(currentROM.lastSelectedTexture->name));
    return QString();
}

QString WalkRules::selectionAgreesWithTree(const StepFacts &facts)
{
    const auto *tree = find<QTreeWidget>("fileTree");
    const QList<QTreeWidgetItem *> selected = tree->selectedItems();
    if (facts.mayImportPack && currentROM.root->directories != m_foldersBefore)
        m_packFolder = currentROM.lastSelectedFolder;
    if (m_packFolder && currentROM.lastSelectedFolder != m_packFolder)
        m_packFolder = nullptr;
    if (selected.isEmpty()) {
        // A texture pack leaves its folder selected, which has no row, and the texture that was shown before.
        if (m_packFolder)
            return QString();
        if (currentROM.selectedType != MainWindow::NothingSelected || currentROM.lastSelectedTexture
            || currentROM.lastSelectedFolder)
            return QStringLiteral("no row is selected");
        return QString();
    }
    if (selected.size() != 1 || selected.first() != tree->currentItem())
        return QStringLiteral("another row than the current one is selected");
    const QTreeWidgetItem *row = selected.first();
    const bool isTexture = row->type() == MainWindow::TextureRow;
    if (currentROM.selectedType != (isTexture ? MainWindow::TextureSelected : MainWindow::FolderSelected))
        return text("type %1", currentROM.selectedType);
    if (isTexture && currentROM.lastSelectedTexture != textureOf(row))
        return QStringLiteral("another texture");
    const fileTreeDirectory *folder = isTexture ? textureOf(row)->parent : folderOf(row);
    if (currentROM.lastSelectedFolder != folder)
        return QStringLiteral("another folder");
    return QString();
}

QString WalkRules::actionsFollowTheRule(const StepFacts &)
{
    const bool loaded = currentROM.loaded;
    const int type = currentROM.selectedType;
    const fileTreeDirectory *folder = currentROM.lastSelectedFolder;
    const fileTreeFile *texture = currentROM.lastSelectedTexture;
    const bool formatOK = texture ? textureFormats::getAsMap().contains(texture->format) : folder != nullptr;
    const QList<QPair<const char *, bool>> expected = {
        {"openAction", true},
        {"saveAction", loaded},
        {"saveAsAction", loaded},
        {"exitAction", true},
        {"aboutAction", true},
        {"extractAction", type == 1 || (type == 2 && formatOK)},
        {"importImageAction", formatOK},
        {"importFolderAction", loaded && folder},
        {"importTexturePackAction", loaded},
        {"newFolderAction", folder != nullptr},
        {"newTextureAction", folder != nullptr},
        {"findTextureAction", folder != nullptr},
        {"deleteAction", folder && (type != 1 || !folder->isRoot)},
    };
    for (const auto &[name, enabled] : expected) {
        if (find<QAction>(name)->isEnabled() != enabled)
            return text("%1 is %2", QLatin1String(name), QLatin1String(enabled ? "disabled" : "enabled"));
    }
    return QString();
}

QString WalkRules::folderPanelAgrees(const StepFacts &)
{
    const fileTreeDirectory *folder = currentROM.lastSelectedFolder;
    const QString path = find<QLineEdit>("folderPath")->text();
    const QString name = find<QLineEdit>("folderName")->text();
    const QString offset = find<QLineEdit>("folderOffset")->text();
    const QString address = find<QLineEdit>("folderAddress")->text();
    const QString size = find<QLineEdit>("folderSize")->text();
    const bool isEdited = !find<QLabel>("folderUnsaved")->isHidden();
    const bool isEditable = folder && !folder->isRoot;
    for (const char *field : {"folderName", "folderOffset", "folderSize"}) {
        if (find<QLineEdit>(field)->isReadOnly() == isEditable)
            return text("%1 is %2", QLatin1String(field), QLatin1String(isEditable ? "read-only" : "editable"));
    }
    if (find<QPushButton>("folderSave")->isEnabled() != isEditable
        || find<QCheckBox>("fixedContentAddresses")->isEnabled() != isEditable)
        return QStringLiteral("button or box");
    if (!folder)
        return (path + name + offset + address + size).isEmpty() && !isEdited ? QString()
                                                                              : QStringLiteral("no folder is selected");
    const fileTreeDirectory &edited = *currentROM.editedFolder;
    if (path != folder->path() + folder->name)
        return text("path %1 of %2", path, folder->path() + folder->name);
    if (!isEdited
        && (name != folder->name || offset != hexCell(folder->address) || size != hexCell(folder->size)
            || address != hexCell(addressInImage(folder))))
        return text("fields of %1: %2 %3 %4 %5", QString(folder->name), name, offset, address, size);
    if (edited.name != name || edited.address != typedNumber(offset) || edited.size != typedNumber(size)
        || address != hexCell(edited.realAddress()))
        return text("working copy of %1", QString(folder->name));
    if (edited.parent != folder->parent || edited.isRoot != folder->isRoot)
        return QStringLiteral("place of the working copy");
    return QString();
}

QString WalkRules::texturePanelAgrees(const StepFacts &)
{
    const fileTreeFile *texture = currentROM.lastSelectedTexture;
    const auto *width = find<QSpinBox>("textureWidth");
    const auto *height = find<QSpinBox>("textureHeight");
    const QString path = find<QLineEdit>("texturePath")->text();
    const QString name = find<QLineEdit>("textureName")->text();
    const QString offset = find<QLineEdit>("textureOffset")->text();
    const QString address = find<QLineEdit>("textureAddress")->text();
    const QString format = find<QLineEdit>("textureFormat")->text();
    const QString palette = find<QLineEdit>("texturePalette")->text();
    const bool isEdited = !find<QLabel>("textureUnsaved")->isHidden();
    for (const char *field : {"textureName", "textureOffset", "textureFormat", "texturePalette"}) {
        if (find<QLineEdit>(field)->isReadOnly() == (texture != nullptr))
            return text("%1 is %2", QLatin1String(field), QLatin1String(texture ? "read-only" : "editable"));
    }
    if (find<QPushButton>("textureSave")->isEnabled() != (texture != nullptr))
        return QStringLiteral("button");
    if (!texture) {
        // The spin boxes are there until a selection hides them.
        const bool isEmpty = (path + name + offset + address + format + palette).isEmpty() && !isEdited
            && find<QLabel>("previewLabel")->text().isEmpty();
        return isEmpty ? QString() : QStringLiteral("no texture is selected");
    }
    const fileTreeFile &edited = *currentROM.editedTexture;
    if (path != texture->path() + texture->name)
        return text("path %1 of %2", path, texture->path() + texture->name);
    if (edited.parent != texture->parent)
        return QStringLiteral("place of the working copy");
    if (edited.name != name || edited.address != typedNumber(offset) || edited.format != format
        || edited.paletteAddress != typedNumber(palette) || address != hexCell(edited.realAddress()))
        return text("working copy of %1", QString(texture->name));
    const bool isJpeg = format.compare(QLatin1String("jpeg"), Qt::CaseInsensitive) == 0;
    const bool hasPalette = textureFormats::getAsMap().value(format, textureFormats::null).usesPalette;
    if (width->isHidden() != isJpeg || height->isHidden() != isJpeg
        || find<QLineEdit>("texturePalette")->isHidden() == hasPalette)
        return text("rows of the format %1", format);
    if (isEdited)
        return edited.width == width->value() && edited.height == height->value() ? QString()
                                                                                  : QStringLiteral("width or height, edited");
    if (name != texture->name || offset != hexCell(texture->address) || format != texture->format
        || palette != hexCell(texture->paletteAddress) || edited.width != texture->width || edited.height != texture->height)
        return text("fields of %1", QString(texture->name));
    return QString();
}

QString WalkRules::listSurvivesSaving(const StepFacts &)
{
    const QByteArray list = listOf(*currentROM.root);
    const QByteArray once = savedAgain(list, currentROM.data.size());
    if (once.isEmpty() || savedAgain(once, currentROM.data.size()) != once)
        return QStringLiteral("the list changes each time it is read and saved");
    const QList<fileTreeDirectory *> folders = fileTreeContainer().allDirectories(currentROM.root);
    for (const fileTreeDirectory *folder : folders) {
        // Such values are corrected on reading.
        if (folder->address < 0 || folder->address > currentROM.data.size() || folder->size <= 0)
            return QString();
    }
    return once == list ? QString() : QStringLiteral("the list read again is not the table");
}

QString WalkRules::noticeTellsTheTruth(const StepFacts &)
{
    if (!currentROM.loaded || !find<QLabel>("unsavedFileList")->isHidden())
        return QString();
    const QString path = QCoreApplication::applicationDirPath() + QStringLiteral("/profiles/") + currentROM.romID + '/'
        + currentROM.profileName + QStringLiteral("/fileList.xml");
    QByteArray saved = bytesOfFile(path);
    if (saved.isEmpty())
        saved = TableCopy().written();
    const int size = currentROM.data.size();
    return savedAgain(saved, size) == savedAgain(listOf(*currentROM.root), size)
        ? QString()
        : QStringLiteral("the table is not what is saved, but nothing says so");
}

QString WalkRules::modifiedFlagTellsTheTruth(const StepFacts &)
{
    if (!currentROM.loaded || m_window->isWindowModified())
        return QString();
    const QString path = m_window->windowTitle().section(QStringLiteral(" - "), 1).chopped(3);
    return bigEndian(bytesOfFile(path)) == currentROM.data
        ? QString()
        : QStringLiteral("the image is not that of the file, but nothing says so");
}

QString WalkRules::recentFilesAreListed(const StepFacts &)
{
    QStringList shown;
    for (int number = 1; number <= 5; ++number) {
        const auto *action = find<QAction>(qPrintable(QStringLiteral("recentFileAction%1").arg(number)));
        if (action->isVisible())
            shown << action->data().toString();
    }
    const QStringList stored = QSettings().value(QStringLiteral("recentFileList")).toStringList();
    return shown == stored && QStringList(stored).removeDuplicates() == 0 ? QString() : shown.join(' ');
}
