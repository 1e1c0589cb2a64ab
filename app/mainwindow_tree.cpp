// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "app/texturepicture.h"
#include "base/hexnumber.h"
#include "base/wrapping.h"
#include "codec/texturemanipulator.h"
#include "widgets/onelinedelegate.h"

#include <QDebug>
#include <QHeaderView>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QShortcut>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTreeWidget>

#include <algorithm>

namespace
{
enum Column {
    FileColumn,
    OffsetColumn,
    OffsetEndColumn,
    AddressColumn,
    AddressEndColumn,
    SizeColumn,
    FormatColumn,
    WidthColumn,
    HeightColumn,
    PaletteColumn,
    ColumnCount
};

constexpr int nodeRole = Qt::UserRole; // in FileColumn
constexpr int filledRole = Qt::UserRole; // in OffsetColumn, texture rows only

/// Lets the cells of rows be written without a signal for each, which would make the view look every one of them up among all its
/// rows; the view is painted once instead.
class QuietCells
{
public:
    explicit QuietCells(QTreeWidget *tree) : m_tree(tree), m_blocker(tree->model()) { }
    ~QuietCells() { m_tree->viewport()->update(); }
    QuietCells(const QuietCells &) = delete;
    QuietCells &operator=(const QuietCells &) = delete;

private:
    QTreeWidget *m_tree;
    QSignalBlocker m_blocker;
};

int levelOf(const QTreeWidgetItem *row)
{
    int level = 0;
    while ((row = row->parent()))
        ++level;
    return level;
}

fileTreeFile *textureOf(const QTreeWidgetItem *row)
{
    return row->data(FileColumn, nodeRole).value<fileTreeFile *>();
}

fileTreeDirectory *folderOf(const QTreeWidgetItem *row)
{
    return row->data(FileColumn, nodeRole).value<fileTreeDirectory *>();
}

bool isWaitingTexture(const QTreeWidgetItem *row)
{
    return row->type() == MainWindow::TextureRow && !row->data(OffsetColumn, filledRole).toBool();
}

/// Whole sentences: what is put into one differs with the word for it in other languages.
QString deletionQuestion()
{
    switch (currentROM.selectedType) {
    case MainWindow::FolderSelected: return MainWindow::tr("Are you sure that you want to delete the selected folder?");
    case MainWindow::TextureSelected: return MainWindow::tr("Are you sure that you want to delete the selected texture?");
    default: return MainWindow::tr("Are you sure that you want to delete the selected none?");
    }
}

bool isInside(const fileTreeDirectory *folder, const fileTreeDirectory *outer)
{
    while (folder && folder != outer)
        folder = folder->parent;
    return folder == outer;
}

/// The columns are as wide as an address: titles have the narrower font of the window, and a longer one goes on in a second line.
void prepareHeader(QHeaderView *header, const QString &fontFamily)
{
    constexpr int lines = 2;
    QFont font = header->font();
    font.setFamily(fontFamily);
    font.setStyleHint(QFont::AnyStyle);
    header->setFont(font);
    header->setDefaultAlignment(Qt::Alignment(int(header->defaultAlignment()) | Qt::TextWordWrap));
    const int margin = header->style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, header);
    header->setMinimumHeight(lines * header->fontMetrics().lineSpacing() + 2 * margin);
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
}

/// Initial widths, in pixels.
constexpr int columnWidths[ColumnCount] = {296, 96, 96, 96, 96, 96, 64, 64, 64, 96};

/// No node has a row in a tree that has just been made.
void forgetAllRows()
{
    const fileTreeContainer container;
    const QList<fileTreeFile *> files = container.allFiles(currentROM.root);
    for (fileTreeFile *file : files)
        file->treeItem = nullptr;
    const QList<fileTreeDirectory *> folders = container.allDirectories(currentROM.root);
    for (fileTreeDirectory *folder : folders)
        folder->treeItem = nullptr;
    currentROM.root->treeItem = nullptr;
}
}

void MainWindow::createTreeView()
{
    forgetAllRows();
    m_emptyFolderIcon = QIcon(QStringLiteral(":/icons/folder_empty"));
    m_folderIcon = QIcon(QStringLiteral(":/icons/folder_textures"));
    m_fileIcon = QIcon(QStringLiteral(":/icons/file"));

    m_treeWidget = new QTreeWidget(this);
    m_treeWidget->setObjectName(QStringLiteral("fileTree"));
    m_treeWidget->setAccessibleName(tr("File table"));
    m_treeWidget->setItemDelegate(new OneLineDelegate(m_treeWidget));
    m_treeWidget->setColumnCount(ColumnCount);
    m_treeWidget->setHeaderLabels({tr("File", "column"), tr("Offset"), tr("Offset End"), tr("Address"), tr("Address End"),
                                   tr("Size"), tr("Format"), tr("Width"), tr("Height"), tr("Palette Address")});
    QFont font = m_treeWidget->font();
    font.setFamily(QStringLiteral("Courier"));
    font.setStyleHint(QFont::Monospace); // Where there is no Courier, the digits still stand below each other.
    m_treeWidget->setFont(font);
    for (int column = 0; column < ColumnCount; ++column)
        m_treeWidget->setColumnWidth(column, columnWidths[column]);
    m_treeWidget->setUniformRowHeights(true);
    prepareHeader(m_treeWidget->header(), this->font().family());
    m_treeWidget->setContextMenuPolicy(Qt::CustomContextMenu);
    m_treeWidget->sortByColumn(OffsetColumn, Qt::AscendingOrder);

    connect(m_treeWidget, &QTreeWidget::customContextMenuRequested, this, &MainWindow::showContextMenu);
    connect(m_treeWidget, &QTreeWidget::itemSelectionChanged, this, &MainWindow::updateActions);
    connect(m_treeWidget, &QTreeWidget::itemSelectionChanged, this, &MainWindow::updateSelectedInfo);
    connect(m_treeWidget, &QTreeWidget::itemActivated, this, &MainWindow::openTextureTab);
    connect(m_treeWidget->header(), &QHeaderView::sectionClicked, this, &MainWindow::sortTreeView);
    connect(m_treeWidget, &QTreeWidget::itemExpanded, this, &MainWindow::expandTreeDirectory);
    auto *rename = new QShortcut(QKeySequence(Qt::Key_F2), m_treeWidget);
    rename->setContext(Qt::WidgetShortcut);
    connect(rename, &QShortcut::activated, this, &MainWindow::editNameOfSelection);
}

void MainWindow::fitColumnsToFont()
{
    const QFontMetrics metrics(m_treeWidget->font());
    const int margins = 2 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, m_treeWidget) + 1);
    for (int column = OffsetColumn; column < ColumnCount; ++column) {
        const bool isText = column == FormatColumn || column == WidthColumn || column == HeightColumn;
        const QString longest = isText ? QStringLiteral("100000") : QStringLiteral("0x00000000");
        const int needed = metrics.horizontalAdvance(longest) + margins;
        if (m_treeWidget->columnWidth(column) == columnWidths[column] && needed > columnWidths[column])
            m_treeWidget->setColumnWidth(column, needed);
    }
}

/// Hangs \a row, which may be filled already, below \a parentRow, whose icon then shows that the folder has contents.
void MainWindow::addRow(QTreeWidgetItem *parentRow, QTreeWidgetItem *row)
{
    if (parentRow->icon(FileColumn).cacheKey() != m_folderIcon.cacheKey())
        parentRow->setIcon(FileColumn, m_folderIcon);
    parentRow->addChild(row);
}

void MainWindow::addDirectoryToTree(fileTreeDirectory *directory)
{
    QTreeWidgetItem *parentRow = directory->parent ? directory->parent->treeItem : nullptr;
    directory->treeItem = nullptr;
    if (!directory->isRoot && (!parentRow || levelOf(parentRow) >= deepestFolderRow))
        return;
    auto *row = new QTreeWidgetItem(FolderRow);
    row->setIcon(FileColumn, m_emptyFolderIcon);
    row->setData(FileColumn, nodeRole, QVariant::fromValue(directory));
    directory->treeItem = row;
    updateDirectoryInTree(directory);
    if (directory->isRoot)
        m_treeWidget->addTopLevelItem(row);
    else
        addRow(parentRow, row);
}

void MainWindow::addTextureToTree(fileTreeFile *file)
{
    QTreeWidgetItem *parentRow = file->parent ? file->parent->treeItem : nullptr;
    file->treeItem = nullptr;
    if (!parentRow)
        return;
    auto *row = new QTreeWidgetItem(TextureRow);
    row->setData(FileColumn, nodeRole, QVariant::fromValue(file));
    file->treeItem = row;
    const bool filled = parentRow->isExpanded();
    if (filled)
        updateTextureInTree(file);
    row->setData(OffsetColumn, filledRole, filled);
    addRow(parentRow, row);
}

void MainWindow::updateDirectoryInTree(fileTreeDirectory *directory)
{
    QTreeWidgetItem *row = directory->treeItem;
    if (!row)
        return;
    const QuietCells quiet(m_treeWidget);
    const int realAddress = directory->realAddress();
    row->setText(FileColumn, directory->name);
    row->setText(OffsetColumn, hexNumber(directory->address));
    row->setText(OffsetEndColumn, hexNumber(addWrapping(directory->address, directory->size)));
    row->setText(AddressColumn, hexNumber(realAddress));
    row->setText(AddressEndColumn, hexNumber(addWrapping(realAddress, directory->size)));
    row->setText(SizeColumn, hexNumber(directory->size));
}

void MainWindow::updateTextureInTree(fileTreeFile *file)
{
    QTreeWidgetItem *row = file->treeItem;
    if (!row)
        return;
    const QuietCells quiet(m_treeWidget);
    const textureFormat *format = textureFormats::find(file->format);
    const int realAddress = file->realAddress();
    const int size = file->size();
    const bool isJpeg = textureFormats::isJpegInAnyCase(file->format);
    const bool isValid = format && size >= 0;
    const bool hasPalette = format && format->usesPalette;
    const auto ifValid = [isValid](int value) { return isValid ? hexNumber(value) : QString(); };
    const QString palette = hasPalette ? hexNumber(file->paletteAddress) : QString();

    row->setText(FileColumn, file->name);
    row->setText(OffsetColumn, hexNumber(file->address));
    row->setText(OffsetEndColumn, ifValid(addWrapping(file->address, size)));
    row->setText(AddressColumn, hexNumber(realAddress));
    row->setText(AddressEndColumn, ifValid(addWrapping(realAddress, size)));
    row->setText(SizeColumn, ifValid(size));
    row->setText(FormatColumn, file->format);
    row->setText(WidthColumn, isJpeg ? QString() : QString::number(file->width));
    row->setText(HeightColumn, isJpeg ? QString() : QString::number(file->height));
    row->setText(PaletteColumn, palette);
    row->setToolTip(PaletteColumn, palette);
    row->setIcon(FileColumn, iconOf(*file));
}

/// The texture itself, small and centred; a plain sheet when it cannot be decoded.
QIcon MainWindow::iconOf(const fileTreeFile &texture) const
{
    constexpr int side = 16;
    const textureFormat *format = textureFormats::find(texture.format);
    // A picture that the preview does not show is not decoded for an icon either: it would take long and much memory.
    if (!format || qint64(texture.width) * texture.height > TexturePicture::maximumPixels)
        return m_fileIcon;
    const QImage image = textureManipulator::generateTexture(texture.data(), *format, texture.width, texture.palette());
    if (image.isNull())
        return m_fileIcon;
    const QImage small = image.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPixmap icon(side, side);
    icon.fill(Qt::transparent);
    QPainter painter(&icon);
    painter.drawImage((side - small.width()) / 2, (side - small.height()) / 2, small);
    painter.end();
    return QIcon(icon);
}

void MainWindow::updateChildrenInTree(fileTreeDirectory *directory)
{
    QList<fileTreeDirectory *> waiting {directory};
    while (!waiting.isEmpty()) {
        fileTreeDirectory *next = waiting.takeLast();
        updateDirectoryInTree(next);
        for (fileTreeFile *file : qAsConst(next->files))
            updateTextureInTree(file);
        std::reverse_copy(next->directories.cbegin(), next->directories.cend(), std::back_inserter(waiting));
    }
}

void MainWindow::expandTreeDirectory(QTreeWidgetItem *item)
{
    bool filledAny = false;
    {
        const QuietCells quiet(m_treeWidget);
        for (int i = 0; i < item->childCount(); ++i) {
            QTreeWidgetItem *row = item->child(i);
            if (!isWaitingTexture(row))
                continue;
            updateTextureInTree(textureOf(row));
            row->setData(OffsetColumn, filledRole, true);
            filledAny = true;
        }
    }
    // Empty cells had no place in the order that the header shows.
    if (filledAny)
        item->sortChildren(m_treeWidget->sortColumn(), m_treeWidget->header()->sortIndicatorOrder());
}

void MainWindow::sortTreeView(int index)
{
    qDebug() << "sorting";
    m_treeWidget->sortByColumn(index, m_treeWidget->header()->sortIndicatorOrder());
}

void MainWindow::sortByCurrentColumn()
{
    m_treeWidget->sortByColumn(m_treeWidget->sortColumn(), m_treeWidget->header()->sortIndicatorOrder());
}

void MainWindow::clearHighlight()
{
    const QSignalBlocker quiet(m_treeWidget);
    m_treeWidget->selectionModel()->clear();
}

void MainWindow::selectFileTableItem()
{
    const QTreeWidgetItem *current = m_treeWidget->currentItem();
    if (!current || m_treeWidget->selectedItems().isEmpty()) {
        qDebug() << "No item selected in treeWidget";
        currentROM.selectedType = NothingSelected;
        currentROM.lastSelectedTexture = nullptr;
        currentROM.lastSelectedFolder = nullptr;
    } else if (current->type() == TextureRow) {
        currentROM.lastSelectedTexture = textureOf(current);
        currentROM.lastSelectedFolder = currentROM.lastSelectedTexture->parent;
        currentROM.selectedType = TextureSelected;
    } else if (current->type() == FolderRow) {
        currentROM.lastSelectedFolder = folderOf(current);
        currentROM.selectedType = FolderSelected;
    }
}

QString MainWindow::selectedItemType() const
{
    switch (currentROM.selectedType) {
    case FolderSelected: return QStringLiteral("folder");
    case TextureSelected: return QStringLiteral("texture");
    default: return QStringLiteral("none");
    }
}

void MainWindow::updateSelectedInfo()
{
    updateDirectoryInfo();
    updateTextureInfo();
}

void MainWindow::openTextureTab()
{
    m_tabWidget->setCurrentIndex(0);
}

void MainWindow::addFile()
{
    if (!currentROM.lastSelectedFolder)
        return;
    fileTreeDirectory *folder = currentROM.lastSelectedFolder->addDirectory(new fileTreeDirectory);
    addDirectoryToTree(folder);
    sortByCurrentColumn();
    if (folder->treeItem)
        m_treeWidget->setCurrentItem(folder->treeItem);
    showUnsavedFileListNotice();
    if (folder->treeItem)
        editNameOfSelection();
    qDebug() << QString(folder->name);
}

void MainWindow::addTexture()
{
    if (!currentROM.lastSelectedFolder)
        return;
    auto *texture = new fileTreeFile;
    const fileTreeFile *model = currentROM.lastSelectedTexture;
    if (currentROM.selectedType == TextureSelected && model) {
        texture->address = addWrapping(model->address, model->size());
        texture->format = model->format;
        texture->width = model->width;
        texture->height = model->height;
        texture->paletteAddress = model->paletteAddress;
    }
    currentROM.lastSelectedFolder->addFile(texture);
    addTextureToTree(texture);
    sortByCurrentColumn();
    if (texture->treeItem)
        m_treeWidget->setCurrentItem(texture->treeItem);
    showUnsavedFileListNotice();
    if (texture->treeItem)
        editNameOfSelection();
    qDebug() << QString(texture->name);
}

void MainWindow::deleteItem()
{
    if (QMessageBox::question(this, tr("Delete"), deletionQuestion(), QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
        != QMessageBox::Yes)
        return;
    // Taking the current row out moves the selection on, and with it the pointers of currentROM, before destroy() returns.
    fileTreeDirectory *folder = currentROM.lastSelectedFolder;
    fileTreeFile *texture = currentROM.lastSelectedTexture;
    if (currentROM.selectedType == FolderSelected) {
        if (folder && folder->isRoot)
            return;
        deleteFolder(folder);
    } else if (texture) {
        QTreeWidgetItem *row = texture->treeItem;
        texture->destroy();
        keepRemovedRow(row);
    }
    enableActions(); // Some depend on the texture, which may be gone from the panel only now.
    updateDirectoryInfo();
    updateTextureInfo();
    showUnsavedFileListNotice();
}

/// Deletes \a folder, which may be null, and forgets the texture that the panel shows when it lies inside.
void MainWindow::deleteFolder(fileTreeDirectory *folder)
{
    if (!folder)
        return;
    QTreeWidgetItem *row = folder->treeItem;
    folder->destroy();
    keepRemovedRow(row);
    if (currentROM.lastSelectedTexture && isInside(currentROM.lastSelectedTexture->parent, folder))
        currentROM.lastSelectedTexture = nullptr;
    if (!currentROM.lastSelectedFolder) // It had no row, as those of a texture pack.
        currentROM.selectedType = NothingSelected;
}

/// Takes charge of \a row after it left the tree. It stays valid until the next one comes, since handlers of the selection change
/// that its removal caused may still hold it.
void MainWindow::keepRemovedRow(QTreeWidgetItem *row)
{
    forgetRows(row);
    if (row && !row->parent() && !row->treeWidget())
        m_removedRow.reset(row);
}

void MainWindow::showContextMenu(const QPoint &position)
{
    const QTreeWidgetItem *item = m_treeWidget->itemAt(position);
    if (!item)
        return;
    QAction *const separator = nullptr;
    QList<QAction *> entries;
    if (item->type() == TextureRow)
        entries = {m_importImageAction,       m_extractAction, separator,     m_importFolderAction,
                   m_importTexturePackAction, separator,       m_deleteAction};
    else
        entries = {m_findTextureAction, m_extractAction,    separator, m_importFolderAction, m_importTexturePackAction, separator,
                   m_newFolderAction,   m_newTextureAction, separator, m_deleteAction};
    QMenu menu(this);
    for (QAction *entry : qAsConst(entries)) {
        if (entry)
            menu.addAction(entry);
        else
            menu.addSeparator();
    }
    menu.exec(m_treeWidget->viewport()->mapToGlobal(position));
}
