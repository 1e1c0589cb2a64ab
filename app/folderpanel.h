// SPDX-License-Identifier: MIT
#pragma once

#include <QGroupBox>

class fileTreeDirectory;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

/// The box "Last Selected Folder": shows a folder, and lets the user edit a working copy of it.
class FolderPanel : public QGroupBox
{
    Q_OBJECT

public:
    /// \a styledPanel holds the box and the style sheet of its fields.
    explicit FolderPanel(QWidget *styledPanel);

    /// Shows no folder; nothing can be edited.
    void showNothing();
    /// Shows \a folder. The root cannot be edited.
    void showFolder(const fileTreeDirectory &folder);
    /// Writes \a folder into the fields, and leaves what can be edited as it is.
    void showValues(const fileTreeDirectory &folder);
    /// Forgets that something was edited, and unchecks "Fixed content addresses".
    void clearEdits();
    void setUnsaved(bool unsaved);
    void editName(); ///< Focuses the name and selects its text.
    /// Writes the edited name, offset and size to \a folder, and shows the address that follows.
    void readValues(fileTreeDirectory *folder);
    bool keepsContentAddresses() const;

signals:
    void edited(); ///< The user typed into a field.
    void saveRequested();

private:
    void setEditable(bool editable);

    QWidget *m_styledPanel;
    QLineEdit *m_path;
    QLineEdit *m_name;
    QLineEdit *m_offset;
    QLineEdit *m_address;
    QLineEdit *m_size;
    QCheckBox *m_fixedContentAddresses;
    QLabel *m_unsaved;
    QPushButton *m_save;
};
