// SPDX-License-Identifier: MIT
#include "app/folderpanel.h"

#include "app/mainwindow.h"
#include "app/panelrows.h"
#include "base/hexnumber.h"
#include "model/rom.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

FolderPanel::FolderPanel(QWidget *styledPanel)
    : QGroupBox(MainWindow::tr("Last Selected Folder"), styledPanel), m_styledPanel(styledPanel)
{
    setObjectName(QStringLiteral("folderBox"));
    PanelRows rows(this);
    m_path = rows.addText(MainWindow::tr("Path:"), QStringLiteral("folderPath"));
    m_name = rows.addText(MainWindow::tr("Name:"), QStringLiteral("folderName"));
    m_offset = rows.addText(MainWindow::tr("Offset:"), QStringLiteral("folderOffset"));
    m_address = rows.addText(MainWindow::tr("Address:"), QStringLiteral("folderAddress"));
    m_size = rows.addText(MainWindow::tr("Size:"), QStringLiteral("folderSize"));
    m_fixedContentAddresses = new QCheckBox(MainWindow::tr("Fixed content addresses"), this);
    m_fixedContentAddresses->setToolTip(MainWindow::tr("When this is enabled, the offset of the content is modified so that "
                                                       "their addresses stay the same, even if you move the folder."));
    m_fixedContentAddresses->setEnabled(false);
    rows.addWhole(m_fixedContentAddresses, QStringLiteral("fixedContentAddresses"));
    m_unsaved = rows.addUnsavedLabel(QStringLiteral("folderUnsaved"));
    m_save = rows.addSaveButton(QStringLiteral("folderSave"));

    // The address is connected to nothing.
    for (QLineEdit *field : {m_name, m_offset, m_size})
        connect(field, &QLineEdit::textEdited, this, &FolderPanel::edited);
    for (QLineEdit *field : {m_name, m_offset, m_size})
        clickOnEnter(m_save, field);
    connect(m_save, &QPushButton::clicked, this, &FolderPanel::saveRequested);
}

void FolderPanel::setEditable(bool editable)
{
    m_fixedContentAddresses->setEnabled(editable);
    m_save->setEnabled(editable);
    setReadOnly(m_styledPanel, {m_name, m_offset, m_size}, !editable);
}

void FolderPanel::showNothing()
{
    for (QLineEdit *field : {m_path, m_name, m_offset, m_address, m_size})
        field->clear();
    m_path->setToolTip(QString());
    setEditable(false);
}

void FolderPanel::showFolder(const fileTreeDirectory &folder)
{
    showValues(folder);
    setEditable(!folder.isRoot);
}

void FolderPanel::showValues(const fileTreeDirectory &folder)
{
    showPath(m_path, folder.path() + folder.name);
    m_name->setText(folder.name);
    m_offset->setText(hexNumber(folder.address));
    m_address->setText(hexNumber(folder.realAddress()));
    m_size->setText(hexNumber(folder.size));
}

void FolderPanel::clearEdits()
{
    m_unsaved->hide();
    m_fixedContentAddresses->setChecked(false);
}

void FolderPanel::setUnsaved(bool unsaved)
{
    m_unsaved->setVisible(unsaved);
}

void FolderPanel::editName()
{
    m_name->setFocus(Qt::OtherFocusReason);
    m_name->selectAll();
}

void FolderPanel::readValues(fileTreeDirectory *folder)
{
    folder->name = m_name->text();
    folder->address = parseTypedNumber(m_offset->text());
    m_address->setText(hexNumber(folder->realAddress()));
    folder->size = parseTypedNumber(m_size->text());
}

bool FolderPanel::keepsContentAddresses() const
{
    return m_fixedContentAddresses->isChecked();
}
