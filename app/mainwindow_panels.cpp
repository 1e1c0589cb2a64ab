// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"

#include "base/hexnumber.h"
#include "base/wrapping.h"
#include "widgets/texturepreviewarea.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QStatusBar>
#include <QWheelEvent>

#include <algorithm>

namespace
{
constexpr int savedMessageTime = 5000; // milliseconds
constexpr int charactersToShow = 22; // of a field, at least

/// A spin box that the wheel turns only while it has the focus: elsewhere the wheel scrolls the column that it stands in.
class PixelField : public QSpinBox
{
public:
    explicit PixelField(QWidget *parent) : QSpinBox(parent) { setFocusPolicy(Qt::StrongFocus); }

protected:
    void wheelEvent(QWheelEvent *event) override
    {
        if (hasFocus())
            QSpinBox::wheelEvent(event);
        else
            event->ignore();
    }
};

/// Builds the rows of one panel from top to bottom: captions in the first column, fields in the second.
class PanelRows
{
public:
    explicit PanelRows(QGroupBox *box) : m_box(box), m_grid(new QGridLayout(box))
    {
        m_grid->setColumnStretch(0, 1);
        m_grid->setColumnStretch(1, 3);
    }
    Q_DISABLE_COPY(PanelRows)

    /// A row with \a field, named \a name for scripts and style sheets. Returns the caption.
    QLabel *add(const QString &caption, QWidget *field, const QString &name)
    {
        auto *label = new QLabel(caption, m_box);
        label->setBuddy(field);
        field->setObjectName(name);
        QString accessibleName = caption;
        accessibleName.chop(1); // the colon
        field->setAccessibleName(m_box->title() + QStringLiteral(": ") + accessibleName);
        m_grid->addWidget(label, m_row, 0);
        m_grid->addWidget(field, m_row, 1);
        keepWidth(0, label->sizeHint().width());
        ++m_row;
        return label;
    }

    QLineEdit *addText(const QString &caption, const QString &name, QLabel **label = nullptr)
    {
        auto *field = new QLineEdit(m_box);
        field->setReadOnly(true);
        field->setMinimumWidth(field->fontMetrics().averageCharWidth() * charactersToShow);
        QLabel *added = add(caption, field, name);
        if (label)
            *label = added;
        return field;
    }

    QSpinBox *addPixels(const QString &caption, const QString &name, QLabel **label)
    {
        auto *field = new PixelField(m_box);
        field->setRange(1, 100000);
        field->setLocale(QLocale::c()); // Digits as in the table, whatever the user's locale writes numbers in.
        // The panel frames its line edits; the one inside a spin box has the box's own frame.
        field->setStyleSheet(QStringLiteral("QLineEdit {qproperty-frame: false}"));
        *label = add(caption, field, name);
        return field;
    }

    /// A row of \a widget alone; to be added below those with captions.
    void addWhole(QWidget *widget, const QString &name)
    {
        widget->setObjectName(name);
        m_grid->addWidget(widget, m_row, 0, 1, 2);
        keepWidth(1, widget->sizeHint().width() - m_grid->columnMinimumWidth(0) - m_grid->horizontalSpacing());
        ++m_row;
    }

private:
    /// Room for a text, also while its row is hidden: the panel does not become wider later.
    void keepWidth(int column, int width)
    {
        m_grid->setColumnMinimumWidth(column, std::max(m_grid->columnMinimumWidth(column), width));
    }

    QGroupBox *m_box;
    QGridLayout *m_grid;
    int m_row = 0;
};

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

QLabel *createUnsavedLabel(QWidget *parent)
{
    auto *label = new QLabel(MainWindow::tr("There are unsaved changes."), parent);
    label->setAlignment(Qt::AlignHCenter);
    QSizePolicy policy = label->sizePolicy();
    policy.setRetainSizeWhenHidden(true); // The button below does not jump.
    label->setSizePolicy(policy);
    label->hide();
    return label;
}

QPushButton *createSaveButton(QWidget *parent)
{
    auto *button = new QPushButton(MainWindow::tr("Save changes"), parent);
    button->setEnabled(false);
    return button;
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

/// Shows a path from its beginning, and whole in the tool tip, where a name that looks like rich text stays a name.
void showPath(QLineEdit *field, const QString &path)
{
    field->setText(path);
    field->setCursorPosition(0);
    field->setToolTip(QStringLiteral("<span style=\"white-space:pre\">%1</span>").arg(path.toHtmlEscaped()));
}

bool liesInside(const fileTreeFile &texture, const fileTreeDirectory &folder)
{
    const fileTreeDirectory *outer = texture.parent;
    while (outer && outer != &folder)
        outer = outer->parent;
    return outer == &folder;
}

void moveContents(const fileTreeDirectory &folder, int delta)
{
    for (fileTreeFile *file : folder.files)
        file->address = addWrapping(file->address, delta);
    for (fileTreeDirectory *directory : folder.directories)
        directory->address = addWrapping(directory->address, delta);
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
    QGroupBox *folderBox = createFolderBox();
    QGroupBox *textureBox = createTextureBox();
    alignFields({folderBox, textureBox});
    auto *fieldsLayout = new QVBoxLayout(fields);
    fieldsLayout->setContentsMargins(0, 0, 0, 0);
    fieldsLayout->addWidget(createScrollingColumn(fields, {folderBox, textureBox}));
    layout->addWidget(fields);
    layout->addWidget(m_previewBox, 1); // The preview gets what the panel gains.
    setTabOrder(m_textureSave, m_previewArea);
}

QGroupBox *MainWindow::createFolderBox()
{
    auto *box = new QGroupBox(tr("Last Selected Folder"), m_selectionPanel);
    box->setObjectName(QStringLiteral("folderBox"));
    PanelRows rows(box);
    m_folderPath = rows.addText(tr("Path:"), QStringLiteral("folderPath"));
    m_folderName = rows.addText(tr("Name:"), QStringLiteral("folderName"));
    m_folderOffset = rows.addText(tr("Offset:"), QStringLiteral("folderOffset"));
    m_folderAddress = rows.addText(tr("Address:"), QStringLiteral("folderAddress"));
    m_folderSize = rows.addText(tr("Size:"), QStringLiteral("folderSize"));
    m_fixedContentAddresses = new QCheckBox(tr("Fixed content addresses"), box);
    m_fixedContentAddresses->setToolTip(tr("When this is enabled, the offset of the content is modified so that their addresses "
                                           "stay the same, even if you move the folder."));
    m_fixedContentAddresses->setEnabled(false);
    rows.addWhole(m_fixedContentAddresses, QStringLiteral("fixedContentAddresses"));
    m_folderUnsaved = createUnsavedLabel(box);
    rows.addWhole(m_folderUnsaved, QStringLiteral("folderUnsaved"));
    m_folderSave = createSaveButton(box);
    rows.addWhole(m_folderSave, QStringLiteral("folderSave"));

    for (QLineEdit *field : {m_folderName, m_folderOffset, m_folderSize})
        connect(field, &QLineEdit::textEdited, this, &MainWindow::applyDirectoryChanges);
    connect(m_folderSave, &QPushButton::clicked, this, &MainWindow::saveDirectoryInfo);
    return box;
}

QGroupBox *MainWindow::createTextureBox()
{
    auto *box = new QGroupBox(tr("Last Selected Texture"), m_selectionPanel);
    box->setObjectName(QStringLiteral("textureBox"));
    PanelRows rows(box);
    m_texturePath = rows.addText(tr("Path:"), QStringLiteral("texturePath"));
    m_textureName = rows.addText(tr("Name:"), QStringLiteral("textureName"));
    m_textureOffset = rows.addText(tr("Offset:"), QStringLiteral("textureOffset"));
    m_textureAddress = rows.addText(tr("Address:"), QStringLiteral("textureAddress"));
    m_textureFormat = rows.addText(tr("Format:"), QStringLiteral("textureFormat"));
    m_texturePalette = rows.addText(tr("Palette Address:"), QStringLiteral("texturePalette"), &m_texturePaletteLabel);
    m_texturePaletteLabel->hide();
    m_texturePalette->hide();
    m_textureWidth = rows.addPixels(tr("Width:"), QStringLiteral("textureWidth"), &m_textureWidthLabel);
    m_textureHeight = rows.addPixels(tr("Height:"), QStringLiteral("textureHeight"), &m_textureHeightLabel);
    m_textureUnsaved = createUnsavedLabel(box);
    rows.addWhole(m_textureUnsaved, QStringLiteral("textureUnsaved"));
    m_textureSave = createSaveButton(box);
    rows.addWhole(m_textureSave, QStringLiteral("textureSave"));

    for (QLineEdit *field : {m_textureName, m_textureOffset, m_textureAddress, m_textureFormat, m_texturePalette})
        connect(field, &QLineEdit::textEdited, this, &MainWindow::applyTextureChanges);
    connect(m_textureAddress, &QLineEdit::textEdited, this, &MainWindow::applyDirectoryChanges);
    for (QSpinBox *field : {m_textureWidth, m_textureHeight})
        connect(field, QOverload<int>::of(&QSpinBox::valueChanged), this, &MainWindow::applyTextureChanges);
    connect(m_textureSave, &QPushButton::clicked, this, &MainWindow::saveTextureInfo);
    return box;
}

/// The look depends on whether a field is read-only; Qt sees that anew when the sheet is set. Styling the whole panel is by far
/// the slowest part of showing an entry, so it is left out where nothing changed.
void MainWindow::setReadOnly(const QList<QLineEdit *> &fields, bool readOnly)
{
    bool changed = false;
    for (QLineEdit *field : fields) {
        changed = changed || field->isReadOnly() != readOnly;
        field->setReadOnly(readOnly);
    }
    if (changed)
        m_selectionPanel->setStyleSheet(m_selectionPanel->styleSheet());
}

void MainWindow::setFolderFieldsReadOnly(bool readOnly)
{
    m_fixedContentAddresses->setEnabled(!readOnly);
    m_folderSave->setEnabled(!readOnly);
    setReadOnly({m_folderName, m_folderOffset, m_folderSize}, readOnly);
}

void MainWindow::setTextureFieldsReadOnly(bool readOnly)
{
    m_textureSave->setEnabled(!readOnly);
    setReadOnly({m_textureName, m_textureOffset, m_textureFormat, m_texturePalette}, readOnly);
}

void MainWindow::updateDirectoryInfo()
{
    m_folderUnsaved->hide();
    m_fixedContentAddresses->setChecked(false);
    fileTreeDirectory *folder = currentROM.lastSelectedFolder;
    if (!folder) {
        showNoFolder();
        return;
    }
    showFolderFields(*folder);
    setFolderFieldsReadOnly(folder->isRoot);
    updateDirectoryInTree(folder);
}

void MainWindow::showNoFolder()
{
    for (QLineEdit *field : {m_folderPath, m_folderName, m_folderOffset, m_folderAddress, m_folderSize})
        field->clear();
    m_folderPath->setToolTip(QString());
    setFolderFieldsReadOnly(true);
}

/// Takes \a folder into the working copy and shows it.
void MainWindow::showFolderFields(const fileTreeDirectory &folder)
{
    currentROM.editedFolder->copyValues(folder);
    currentROM.editedFolder->parent = folder.parent; // Its addresses count in the working copy's real one.
    currentROM.editedFolder->isRoot = folder.isRoot;
    showPath(m_folderPath, folder.path() + folder.name);
    m_folderName->setText(folder.name);
    m_folderOffset->setText(hexNumber(folder.address));
    m_folderAddress->setText(hexNumber(folder.realAddress()));
    m_folderSize->setText(hexNumber(folder.size));
}

void MainWindow::updateTextureInfo()
{
    fileTreeFile *texture = currentROM.lastSelectedTexture;
    if (!texture) {
        showNoTexture();
        return;
    }
    showTextureFields(*texture);
    setTextureFieldsReadOnly(false);
    m_textureUnsaved->hide();
    renderTexture();
    updateTextureInTree(texture);
}

void MainWindow::showNoTexture()
{
    for (QLineEdit *field : {m_texturePath, m_textureName, m_textureOffset, m_textureAddress, m_textureFormat, m_texturePalette})
        field->clear();
    m_texturePath->setToolTip(QString());
    m_textureFormat->setToolTip(QString());
    m_textureWidth->setValue(0);
    m_textureHeight->setValue(0);
    clearPreview();
    setTextureFieldsReadOnly(true);
    for (QWidget *widget : QList<QWidget *> {m_textureWidthLabel, m_textureWidth, m_textureHeightLabel, m_textureHeight,
                                             m_textureUnsaved, m_texturePaletteLabel, m_texturePalette})
        widget->hide();
}

/// Takes \a texture into the working copy and shows it.
void MainWindow::showTextureFields(const fileTreeFile &texture)
{
    *currentROM.editedTexture = texture;
    showFieldsOfFormat(texture.format);
    showPath(m_texturePath, texture.path() + texture.name);
    m_textureName->setText(texture.name);
    m_textureOffset->setText(hexNumber(texture.address));
    m_textureAddress->setText(hexNumber(texture.realAddress()));
    m_textureFormat->setText(texture.format);
    m_texturePalette->setText(hexNumber(texture.paletteAddress));
    m_textureWidth->setValue(texture.width);
    m_textureHeight->setValue(texture.height);
    // The spin boxes signal an edit; where they cannot hold the texture's values, the working copy would keep what they can.
    *currentROM.editedTexture = texture;
}

/// Shows the rows that the format named \a format needs, and says what the format is.
void MainWindow::showFieldsOfFormat(const QString &format)
{
    const textureFormat record = textureFormats::getAsMap().value(format, textureFormats::null);
    const bool isJpeg = textureFormats::isJpegInAnyCase(format);
    m_textureFormat->setToolTip(textureFormats::describe(record));
    for (QWidget *widget : QList<QWidget *> {m_texturePaletteLabel, m_texturePalette})
        widget->setVisible(record.usesPalette);
    for (QWidget *widget : QList<QWidget *> {m_textureWidthLabel, m_textureWidth, m_textureHeightLabel, m_textureHeight})
        widget->setVisible(!isJpeg);
}

void MainWindow::applyDirectoryChanges()
{
    if (!currentROM.lastSelectedFolder)
        return;
    m_folderUnsaved->show();
    fileTreeDirectory *edited = currentROM.editedFolder;
    edited->name = m_folderName->text();
    edited->address = parseTypedNumber(m_folderOffset->text());
    m_folderAddress->setText(hexNumber(edited->realAddress()));
    edited->size = parseTypedNumber(m_folderSize->text());
}

void MainWindow::applyTextureChanges()
{
    if (!currentROM.lastSelectedTexture)
        return;
    m_textureUnsaved->show();
    fileTreeFile *edited = currentROM.editedTexture;
    edited->name = m_textureName->text();
    edited->address = parseTypedNumber(m_textureOffset->text());
    m_textureAddress->setText(hexNumber(edited->realAddress()));
    edited->format = m_textureFormat->text();
    edited->height = m_textureHeight->value();
    edited->width = m_textureWidth->value();
    edited->paletteAddress = parseTypedNumber(m_texturePalette->text());
    showFieldsOfFormat(edited->format);
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
    m_folderUnsaved->hide();
    showUnsavedFileListNotice();
    if (delta != 0) {
        if (m_fixedContentAddresses->isChecked()) {
            moveContents(*folder, delta);
            moveEditedTexture(*folder, delta);
        }
        followMovedFolder(*folder);
        updateChildrenInTree(folder);
    }
    showFolderFields(*folder);
    if (currentROM.lastSelectedTexture && liesInside(*currentROM.lastSelectedTexture, *folder))
        showPath(m_texturePath, currentROM.lastSelectedTexture->path() + currentROM.lastSelectedTexture->name);
    updateDirectoryInTree(folder);
    sortByCurrentColumn();
    statusBar()->showMessage(tr("The changes to the last selected folder has been saved."), savedMessageTime);
}

/// Moves the texture panel's working copy along with its texture, lest saving it undid that.
void MainWindow::moveEditedTexture(const fileTreeDirectory &folder, int delta)
{
    if (!currentROM.lastSelectedTexture || currentROM.lastSelectedTexture->parent != &folder)
        return;
    currentROM.editedTexture->address = addWrapping(currentROM.editedTexture->address, delta);
    m_textureOffset->setText(hexNumber(currentROM.editedTexture->address));
}

/// Shows where the selected texture lies now, if \a folder holds it.
void MainWindow::followMovedFolder(const fileTreeDirectory &folder)
{
    if (!currentROM.lastSelectedTexture || !liesInside(*currentROM.lastSelectedTexture, folder))
        return;
    m_textureAddress->setText(hexNumber(currentROM.editedTexture->realAddress()));
    renderTexture();
}

void MainWindow::saveTextureInfo()
{
    fileTreeFile *texture = currentROM.lastSelectedTexture;
    if (!texture)
        return;
    copyValues(*currentROM.editedTexture, texture);
    texture->setName(texture->name);
    m_textureUnsaved->hide();
    showUnsavedFileListNotice();
    showTextureFields(*texture);
    m_textureUnsaved->hide();
    enableActions(); // Some depend on the format.
    updateTextureInTree(texture);
    sortByCurrentColumn();
    statusBar()->showMessage(tr("The changes to the last selected texture has been saved."), savedMessageTime);
}
