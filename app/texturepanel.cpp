// SPDX-License-Identifier: MIT
#include "app/texturepanel.h"

#include "app/mainwindow.h"
#include "app/panelrows.h"
#include "base/hexnumber.h"
#include "model/rom.h"
#include "model/textureformat.h"
#include "widgets/addressstepper.h"
#include "widgets/formatcompleter.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

TexturePanel::TexturePanel(QWidget *styledPanel)
    : QGroupBox(MainWindow::tr("Last Selected Texture"), styledPanel), m_styledPanel(styledPanel)
{
    setObjectName(QStringLiteral("textureBox"));
    PanelRows rows(this);
    m_path = rows.addText(MainWindow::tr("Path:"), QStringLiteral("texturePath"));
    m_name = rows.addText(MainWindow::tr("Name:"), QStringLiteral("textureName"));
    m_offset = rows.addText(MainWindow::tr("Offset:"), QStringLiteral("textureOffset"));
    m_address = rows.addText(MainWindow::tr("Address:"), QStringLiteral("textureAddress"));
    m_format = rows.addText(MainWindow::tr("Format:"), QStringLiteral("textureFormat"));
    m_palette = rows.addText(MainWindow::tr("Palette Address:"), QStringLiteral("texturePalette"), &m_paletteLabel);
    m_paletteLabel->hide();
    m_palette->hide();
    m_width = rows.addPixels(MainWindow::tr("Width:"), QStringLiteral("textureWidth"), &m_widthLabel);
    m_height = rows.addPixels(MainWindow::tr("Height:"), QStringLiteral("textureHeight"), &m_heightLabel);
    m_unsaved = rows.addUnsavedLabel(QStringLiteral("textureUnsaved"));
    m_save = rows.addSaveButton(QStringLiteral("textureSave"));

    for (QLineEdit *field : {m_name, m_offset, m_address, m_format, m_palette})
        connect(field, &QLineEdit::textEdited, this, &TexturePanel::edited);
    connect(m_address, &QLineEdit::textEdited, this, &TexturePanel::addressEdited);
    for (QSpinBox *field : {m_width, m_height})
        connect(field, QOverload<int>::of(&QSpinBox::valueChanged), this, &TexturePanel::edited);
    new FormatCompleter(m_format);
    new AddressStepper(m_offset, [] { return stepsOfTexture(*currentROM.editedTexture); });
    new AddressStepper(m_palette, [] { return stepsOfPalette(*currentROM.editedTexture); });
    m_offset->setToolTip(MainWindow::tr("Up, Down: one texel\n"
                                        "Page Up, Page Down: one row\n"
                                        "Ctrl+Page Up, Ctrl+Page Down: one texture"));
    for (QLineEdit *field : {m_name, m_offset, m_format, m_palette})
        clickOnEnter(m_save, field);
    for (QSpinBox *field : {m_width, m_height})
        clickOnEnter(m_save, field->findChild<QLineEdit *>());
    connect(m_save, &QPushButton::clicked, this, &TexturePanel::saveRequested);
}

void TexturePanel::setEditable(bool editable)
{
    m_save->setEnabled(editable);
    setReadOnly(m_styledPanel, {m_name, m_offset, m_format, m_palette}, !editable);
}

void TexturePanel::showNothing()
{
    for (QLineEdit *field : {m_path, m_name, m_offset, m_address, m_format, m_palette})
        field->clear();
    m_path->setToolTip(QString());
    m_format->setToolTip(QString());
    m_palette->setToolTip(QString());
    m_width->setValue(0);
    m_height->setValue(0);
    setEditable(false);
    for (QWidget *widget :
         QList<QWidget *> {m_widthLabel, m_width, m_heightLabel, m_height, m_unsaved, m_paletteLabel, m_palette})
        widget->hide();
}

void TexturePanel::showValues(const fileTreeFile &texture)
{
    showFieldsOfFormat(texture.format);
    showPathOf(texture);
    m_name->setText(texture.name);
    showOffsetOf(texture);
    showAddressOf(texture);
    m_format->setText(texture.format);
    m_palette->setText(hexNumber(texture.paletteAddress));
    m_width->setValue(texture.width);
    m_height->setValue(texture.height);
}

void TexturePanel::showFieldsOfFormat(const QString &format)
{
    const textureFormat record = textureFormats::getAsMap().value(format, textureFormats::null);
    const bool isJpeg = textureFormats::isJpegInAnyCase(format);
    m_format->setToolTip(textureFormats::describe(record));
    for (QWidget *widget : QList<QWidget *> {m_paletteLabel, m_palette})
        widget->setVisible(record.usesPalette);
    for (QWidget *widget : QList<QWidget *> {m_widthLabel, m_width, m_heightLabel, m_height})
        widget->setVisible(!isJpeg);
}

void TexturePanel::setUnsaved(bool unsaved)
{
    m_unsaved->setVisible(unsaved);
}

void TexturePanel::readValues(fileTreeFile *texture)
{
    texture->name = m_name->text();
    texture->address = parseTypedNumber(m_offset->text());
    texture->format = m_format->text();
    texture->height = m_height->value();
    texture->width = m_width->value();
    texture->paletteAddress = parseTypedNumber(m_palette->text());
    showAddressOf(*texture);
    showFieldsOfFormat(texture->format);
}

void TexturePanel::showPathOf(const fileTreeFile &texture)
{
    showPath(m_path, texture.path() + texture.name);
}

void TexturePanel::showOffsetOf(const fileTreeFile &texture)
{
    m_offset->setText(hexNumber(texture.address));
}

void TexturePanel::showAddressOf(const fileTreeFile &texture)
{
    m_address->setText(hexNumber(texture.realAddress()));
    m_palette->setToolTip(MainWindow::tr("Address in the image: %1\n"
                                         "Up, Down: one colour\n"
                                         "Page Up, Page Down: one palette\n"
                                         "Ctrl+Page Up, Ctrl+Page Down: one texture")
                              .arg(hexNumber(texture.realPaletteAddress())));
}

void TexturePanel::editName()
{
    m_name->setFocus(Qt::OtherFocusReason);
    m_name->selectAll();
}

QWidget *TexturePanel::lastField() const
{
    return m_save;
}
