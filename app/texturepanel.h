// SPDX-License-Identifier: MIT
#pragma once

#include <QGroupBox>

class fileTreeFile;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

/// The box "Last Selected Texture": shows a texture, and lets the user edit a working copy of it.
class TexturePanel : public QGroupBox
{
    Q_OBJECT

public:
    /// \a styledPanel holds the box and the style sheet of its fields.
    explicit TexturePanel(QWidget *styledPanel);

    /// Shows no texture; nothing can be edited.
    void showNothing();
    /// Writes \a texture into the fields. Setting Width and Height may emit edited().
    void showValues(const fileTreeFile &texture);
    void setEditable(bool editable);
    void setUnsaved(bool unsaved);
    /// Writes what was edited to \a texture, and shows the address and the fields that follow.
    void readValues(fileTreeFile *texture);
    void showPathOf(const fileTreeFile &texture);
    void showOffsetOf(const fileTreeFile &texture);
    /// Shows where \a texture and, in a tool tip, its palette lie in the image.
    void showAddressOf(const fileTreeFile &texture);
    void editName(); ///< Focuses the name and selects its text.
    /// The last widget in the order of Tab.
    QWidget *lastField() const;

signals:
    void edited(); ///< A field was edited, or Width or Height changed.
    void addressEdited(); ///< Text came into the read-only address; no key does that.
    void saveRequested();

private:
    /// Shows the rows that the format named \a format needs, and its description.
    void showFieldsOfFormat(const QString &format);

    QWidget *m_styledPanel;
    QLineEdit *m_path;
    QLineEdit *m_name;
    QLineEdit *m_offset;
    QLineEdit *m_address;
    QLineEdit *m_format;
    QLabel *m_paletteLabel;
    QLineEdit *m_palette;
    QLabel *m_widthLabel;
    QSpinBox *m_width;
    QLabel *m_heightLabel;
    QSpinBox *m_height;
    QLabel *m_unsaved;
    QPushButton *m_save;
};
