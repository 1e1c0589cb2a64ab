// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "app/folderpanel.h"
#include "app/texturepanel.h"
#include "base/wrapping.h"
#include "model/tableedit.h"
#include "widgets/texturepreviewarea.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QScrollArea>
#include <QScrollBar>
#include <QStatusBar>

#include <algorithm>

namespace
{
constexpr int savedMessageTime = 5000; // milliseconds

/// Gives the captions of all boxes the room of the widest one, shown or not: the fields stand in one line and stay where they
/// are when a row comes or goes.
void alignFields(const QList<QGroupBox *> &boxes)
{
    int widest = 0;
    for (const QGroupBox *box : boxes)
        widest = std::max(widest, static_cast<const QGridLayout *>(box->layout())->columnMinimumWidth(0));
    for (const QGroupBox *box : boxes)
        static_cast<QGridLayout *>(box->layout())->setColumnMinimumWidth(0, widest);
}

/// The boxes one below the other, which scroll where the window is too low for them.
QScrollArea *createScrollingColumn(QWidget *parent, const QList<QGroupBox *> &boxes)
{
    auto *area = new QScrollArea(parent);
    area->setObjectName(QStringLiteral("selectionFields"));
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto *content = new QWidget(area);
    auto *layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QGroupBox *box : boxes)
        layout->addWidget(box);
    layout->addStretch();
    area->setWidget(content);
    area->setFocusPolicy(Qt::NoFocus);
    for (QWidget *widget : {content, area->viewport()}) // They would paint a ground unlike the tab's.
        widget->setAutoFillBackground(false);
    area->setMinimumWidth(content->minimumSizeHint().width() + area->verticalScrollBar()->sizeHint().width());
    return area;
}

bool liesInside(const fileTreeFile &texture, const fileTreeDirectory &folder)
{
    const fileTreeDirectory *outer = texture.parent;
    while (outer && outer != &folder)
        outer = outer->parent;
    return outer == &folder;
}

void takeIntoWorkingCopy(const fileTreeDirectory &folder)
{
    currentROM.editedFolder->copyValues(folder);
    currentROM.editedFolder->parent = folder.parent; // Its addresses count in the working copy's real one.
    currentROM.editedFolder->isRoot = folder.isRoot;
}

/// What the panel edits; the parent and the row stay the texture's own.
void copyValues(const fileTreeFile &values, fileTreeFile *texture)
{
    texture->name = values.name;
    texture->format = values.format;
    texture->address = values.address;
    texture->paletteAddress = values.paletteAddress;
    texture->width = values.width;
    texture->height = values.height;
}
}

void MainWindow::createTextureViewer()
{
    m_selectionPanel = new QWidget(this);
    m_selectionPanel->setObjectName(QStringLiteral("selectionPanel"));
    m_selectionPanel->setStyleSheet(
        QStringLiteral("QLineEdit {qproperty-frame: true} "
                       "QLineEdit[readOnly=\"true\"] {qproperty-frame: false;background-color:transparent}"));
    auto *layout = new QHBoxLayout(m_selectionPanel);
    // Made before the fields, whose scroll area lies as deep as the preview: the first scroll area that is found is the preview.
    createPreviewBox();
    auto *fields = new QWidget(m_selectionPanel);
    m_folderPanel = new FolderPanel(m_selectionPanel);
    m_texturePanel = new TexturePanel(m_selectionPanel);
    alignFields({m_folderPanel, m_texturePanel});
    auto *fieldsLayout = new QVBoxLayout(fields);
    fieldsLayout->setContentsMargins(0, 0, 0, 0);
    fieldsLayout->addWidget(createScrollingColumn(fields, {m_folderPanel, m_texturePanel}));
    layout->addWidget(fields);
    layout->addWidget(m_previewBox, 1); // The preview gets what the panel gains.
    setTabOrder(m_texturePanel->lastField(), m_previewArea);

    connect(m_folderPanel, &FolderPanel::edited, this, &MainWindow::applyDirectoryChanges);
    connect(m_folderPanel, &FolderPanel::saveRequested, this, &MainWindow::saveDirectoryInfo);
    connect(m_texturePanel, &TexturePanel::edited, this, &MainWindow::applyTextureChanges);
    connect(m_texturePanel, &TexturePanel::addressEdited, this, &MainWindow::applyDirectoryChanges);
    connect(m_texturePanel, &TexturePanel::saveRequested, this, &MainWindow::saveTextureInfo);
}

void MainWindow::editNameOfSelection()
{
    const bool isTexture = currentROM.selectedType == TextureSelected;
    const bool isFolder = currentROM.selectedType == FolderSelected && !currentROM.lastSelectedFolder->isRoot;
    if (!isTexture && !isFolder)
        return;
    openTextureTab();
    if (isTexture)
        m_texturePanel->editName();
    else
        m_folderPanel->editName();
}

void MainWindow::updateDirectoryInfo()
{
    m_folderPanel->clearEdits();
    fileTreeDirectory *folder = currentROM.lastSelectedFolder;
    if (!folder) {
        m_folderPanel->showNothing();
        return;
    }
    takeIntoWorkingCopy(*folder);
    m_folderPanel->showFolder(*folder);
    updateDirectoryInTree(folder);
}

void MainWindow::updateTextureInfo()
{
    fileTreeFile *texture = currentROM.lastSelectedTexture;
    if (!texture) {
        m_texturePanel->showNothing();
        clearPreview();
        return;
    }
    showTextureFields(*texture);
    m_texturePanel->setEditable(true);
    m_texturePanel->setUnsaved(false);
    renderTexture();
    updateTextureInTree(texture);
}

/// Takes \a texture into the working copy and shows it.
void MainWindow::showTextureFields(const fileTreeFile &texture)
{
    *currentROM.editedTexture = texture;
    m_texturePanel->showValues(texture);
    // The spin boxes signal an edit; where they cannot hold the texture's values, the working copy would keep what they can.
    *currentROM.editedTexture = texture;
}

void MainWindow::applyDirectoryChanges()
{
    if (!currentROM.lastSelectedFolder)
        return;
    m_folderPanel->setUnsaved(true);
    m_folderPanel->readValues(currentROM.editedFolder);
}

void MainWindow::applyTextureChanges()
{
    if (!currentROM.lastSelectedTexture)
        return;
    m_texturePanel->setUnsaved(true);
    m_texturePanel->readValues(currentROM.editedTexture);
    renderTexture();
}

void MainWindow::saveDirectoryInfo()
{
    fileTreeDirectory *folder = currentROM.lastSelectedFolder;
    if (!folder || folder->isRoot)
        return;
    const int delta = addWrapping(folder->address, addWrapping(~currentROM.editedFolder->address, 1));
    folder->copyValues(*currentROM.editedFolder);
    folder->setName(folder->name);
    m_folderPanel->setUnsaved(false);
    showUnsavedFileListNotice();
    if (delta != 0) {
        if (m_folderPanel->keepsContentAddresses()) {
            moveContents(*folder, delta);
            moveEditedTexture(*folder, delta);
        }
        followMovedFolder(*folder);
        updateChildrenInTree(folder);
    }
    takeIntoWorkingCopy(*folder);
    m_folderPanel->showValues(*folder);
    if (currentROM.lastSelectedTexture && liesInside(*currentROM.lastSelectedTexture, *folder))
        m_texturePanel->showPathOf(*currentROM.lastSelectedTexture);
    updateDirectoryInTree(folder);
    sortByCurrentColumn();
    statusBar()->showMessage(tr("The changes to the last selected folder has been saved."), savedMessageTime);
}

/// Moves the texture panel's working copy along with its texture, so that saving it does not undo that.
void MainWindow::moveEditedTexture(const fileTreeDirectory &folder, int delta)
{
    if (!currentROM.lastSelectedTexture || currentROM.lastSelectedTexture->parent != &folder)
        return;
    currentROM.editedTexture->address = addWrapping(currentROM.editedTexture->address, delta);
    m_texturePanel->showOffsetOf(*currentROM.editedTexture);
}

/// Shows where the selected texture lies now, if \a folder holds it.
void MainWindow::followMovedFolder(const fileTreeDirectory &folder)
{
    if (!currentROM.lastSelectedTexture || !liesInside(*currentROM.lastSelectedTexture, folder))
        return;
    m_texturePanel->showAddressOf(*currentROM.editedTexture);
    renderTexture();
}

void MainWindow::saveTextureInfo()
{
    fileTreeFile *texture = currentROM.lastSelectedTexture;
    if (!texture)
        return;
    copyValues(*currentROM.editedTexture, texture);
    texture->setName(texture->name);
    m_texturePanel->setUnsaved(false);
    showUnsavedFileListNotice();
    showTextureFields(*texture);
    m_texturePanel->setUnsaved(false);
    enableActions(); // Some depend on the format.
    updateTextureInTree(texture);
    sortByCurrentColumn();
    statusBar()->showMessage(tr("The changes to the last selected texture has been saved."), savedMessageTime);
}
