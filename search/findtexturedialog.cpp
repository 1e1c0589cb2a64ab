// SPDX-License-Identifier: MIT
#include "search/findtexturedialog.h"

#include "search/foundentries.h"
#include "search/picturefiles.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDebug>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>

namespace
{
const QString dialogPathKey = QStringLiteral("fileDialogPath");

QString organisation()
{
    return QStringLiteral("Brimholt");
}

QString application()
{
    return QStringLiteral("Quillary");
}

QString lastDialogPath()
{
    return QSettings(organisation(), application()).value(dialogPathKey).toString();
}
}

findTextureDialog::findTextureDialog(QWidget *parent, QString description, const QString &fileName, bool multiple)
    : m_description(new QLabel(description, this)), m_isFolder(multiple)
{
    setObjectName(QStringLiteral("findTextureDialog"));
    setWindowTitle(tr("Find Texture"));

    m_selectImage = new QPushButton(tr("&Select Image"), this);
    m_selectImage->setObjectName(QStringLiteral("selectImageButton"));
    connect(m_selectImage, &QPushButton::clicked, this, &findTextureDialog::setFile);
    m_selectFolder = new QPushButton(tr("&Select Folder"), this);
    m_selectFolder->setObjectName(QStringLiteral("selectFolderButton"));
    connect(m_selectFolder, &QPushButton::clicked, this, &findTextureDialog::setFolder);

    m_description->setObjectName(QStringLiteral("descriptionLabel"));
    m_description->setTextFormat(Qt::PlainText); // Folder names are untrusted.

    m_search = new QPushButton(tr("Search"), this);
    m_search->setObjectName(QStringLiteral("searchButton"));
    m_search->setCheckable(true);
    m_selectImage->setDefault(true);

    createPathRow(fileName);
    createOptions();
    // The Tab order is the order of creation.
    QGroupBox *formatBox = createFormatBox();
    arrange(formatBox, createDuplicateBox());

    connect(this, SIGNAL(search(QStringList, QMap<QString, textureFormat>, const bool, const int)), parent,
            SLOT(runFindTexture(QStringList, QMap<QString, textureFormat>, const bool, const int)));
    connect(m_search, &QPushButton::clicked, this, &findTextureDialog::startSearch);
}

void findTextureDialog::createPathRow(const QString &fileName)
{
    m_path = new QLineEdit(this);
    m_path->setObjectName(QStringLiteral("pathField"));
    m_path->setText(fileName.isEmpty() ? tr("No image or folder has been selected") : fileName);
    m_path->setAccessibleName(tr("Image or folder"));
    m_path->setEnabled(false);
    // The field is disabled but must be readable: use the colour of enabled text.
    QPalette colours = m_path->palette();
    colours.setColor(QPalette::Disabled, QPalette::Text, colours.color(QPalette::Active, QPalette::Text));
    m_path->setPalette(colours);
    m_search->setEnabled(!fileName.isEmpty());
}

void findTextureDialog::createOptions()
{
    m_subfolders = new QCheckBox(tr("Also search for images in subfolders"), this);
    m_subfolders->setObjectName(QStringLiteral("subfoldersBox"));
    m_subfolders->setChecked(true);
    m_subfolders->setEnabled(m_isFolder);
    m_firstOnly = new QCheckBox(tr("End search after finding texture once"), this);
    m_firstOnly->setObjectName(QStringLiteral("firstOnlyBox"));
    m_firstOnly->setChecked(true);
}

QGroupBox *findTextureDialog::createFormatBox()
{
    auto *box = new QGroupBox(tr("Texture formats to search for"), this);
    box->setObjectName(QStringLiteral("formatBox"));
    auto *layout = new QHBoxLayout(box);
    m_formats = new QButtonGroup(this);
    m_formats->setObjectName(QStringLiteral("formatGroup"));
    m_formats->setExclusive(false);
    const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    for (const textureFormat &format : formats) {
        // A picture determines neither the texture's palette nor the bytes of a JPEG.
        if (format.usesPalette || textureFormats::isJpeg(format.name))
            continue;
        auto *choice = new QCheckBox(format.name, box);
        choice->setObjectName(QStringLiteral("formatBox_") + format.name);
        choice->setToolTip(textureFormats::describe(format));
        choice->setChecked(true);
        layout->addWidget(choice);
        m_formats->addButton(choice);
    }
    return box;
}

QGroupBox *findTextureDialog::createDuplicateBox()
{
    auto *box = new QGroupBox(tr("How to handle textures that already are in the current folder"), this);
    box->setObjectName(QStringLiteral("duplicateBox"));
    auto *layout = new QHBoxLayout(box);
    m_duplicateModes = new QButtonGroup(this);
    m_duplicateModes->setObjectName(QStringLiteral("duplicateGroup"));
    const auto addChoice = [this, box, layout](const QString &text, DuplicateMode mode, const QString &name) {
        auto *choice = new QRadioButton(text, box);
        choice->setObjectName(name);
        layout->addWidget(choice);
        m_duplicateModes->addButton(choice, mode);
        return choice;
    };
    addChoice(tr("Overwrite entry"), OverwriteEntry, QStringLiteral("overwriteButton"))->setChecked(true);
    addChoice(tr("Create new entry"), CreateNewEntry, QStringLiteral("createButton"));
    addChoice(tr("Do not create entry"), DoNotCreateEntry, QStringLiteral("ignoreButton"));
    layout->addStretch();
    return box;
}

void findTextureDialog::arrange(QGroupBox *formatBox, QGroupBox *duplicateBox)
{
    auto *layout = new QGridLayout(this);
    layout->setObjectName(QStringLiteral("gridLayout"));
    layout->addWidget(m_description, 0, 0, 1, 2);
    layout->addWidget(m_selectImage, 1, 0);
    layout->addWidget(m_selectFolder, 1, 1);
    layout->addWidget(m_path, 2, 0, 1, 2);
    layout->addWidget(m_subfolders, 3, 0, 1, 2);
    layout->addWidget(m_firstOnly, 4, 0, 1, 2);
    layout->addWidget(formatBox, 5, 0, 1, 2);
    layout->addWidget(duplicateBox, 6, 0, 1, 2);
    layout->addWidget(m_search, 7, 0, 1, 2);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    setTabOrder(m_duplicateModes->buttons().last(), m_search); // It is created before the widgets above it.
}

void findTextureDialog::setFile()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Open Image File"), lastDialogPath(), tr("Image (*.png)"));
    if (!path.isEmpty())
        takePath(path, QFileInfo(path).absolutePath(), false);
}

void findTextureDialog::setFolder()
{
    const QString path =
        QFileDialog::getExistingDirectory(this, tr("Open Directory"), lastDialogPath(), QFileDialog::ShowDirsOnly);
    if (!path.isEmpty())
        takePath(path, QDir(path).absolutePath(), true);
}

/// Shows the chosen \a path and stores \a dialogPath, where the next file dialog starts.
void findTextureDialog::takePath(const QString &path, const QString &dialogPath, bool isFolder)
{
    QSettings(organisation(), application())
        .setValue(dialogPathKey, dialogPath.endsWith(QLatin1Char('/')) ? dialogPath : QString(dialogPath + QLatin1Char('/')));
    m_path->setText(path);
    m_isFolder = isFolder;
    m_search->setEnabled(true);
    m_subfolders->setEnabled(isFolder);
}

void findTextureDialog::startSearch()
{
    const QString path = m_path->text();
    if (!m_isFolder) {
        runSearch({path});
        return;
    }
    runSearch(picturesInFolder(path, m_subfolders->isChecked()));
}

void findTextureDialog::runSearch(const QStringList &files)
{
    QMap<QString, textureFormat> formats;
    const QList<QAbstractButton *> choices = m_formats->buttons();
    for (const QAbstractButton *choice : choices) {
        if (choice->isChecked())
            formats.insert(choice->text(), *textureFormats::find(choice->text()));
    }
    qDebug() << "Files to search for:" << files.size();
    const bool firstOnly = m_firstOnly->isChecked();
    const int duplicateMode = m_duplicateModes->checkedId();
    close();
    emit search(files, formats, firstOnly, duplicateMode);
}
