// SPDX-License-Identifier: MIT
#pragma once

#include "model/textureformat.h"

#include <QDialog>
#include <QMap>
#include <QStringList>

class QButtonGroup;
class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

/// Asks what a texture search is to look for, and hands that on: to the slot runFindTexture() of the widget that opened it, after
/// closing itself and before exec() returns.
class findTextureDialog : public QDialog
{
    Q_OBJECT

public:
    /// \a parent gets the search() signal; the dialog is no child of it. \a description tells the user where is searched. The
    /// path field starts with \a fileName, which names a folder when \a multiple is true; empty for none.
    findTextureDialog(QWidget *parent, QString description, const QString &fileName, bool multiple);

public slots:
    /// Asks for one picture.
    void setFile();
    /// Asks for a folder of pictures.
    void setFolder();
    /// Lists the pictures that the path stands for, and goes on with runSearch().
    void startSearch();
    /// Closes the dialog and emits search() for \a files with what is checked.
    void runSearch(const QStringList &files);

signals:
    /// \a entries are paths of pictures, \a formats the chosen ones by name, \a duplicateMode is a DuplicateMode.
    void search(QStringList entries, QMap<QString, textureFormat> formats, const bool firstOnly, const int duplicateMode);

private:
    void createPathRow(const QString &fileName);
    void createOptions();
    QGroupBox *createFormatBox();
    QGroupBox *createDuplicateBox();
    void arrange(QGroupBox *formatBox, QGroupBox *duplicateBox);
    void takePath(const QString &path, const QString &dialogPath, bool isFolder);

    QLabel *m_description = nullptr;
    QLineEdit *m_path = nullptr;
    QCheckBox *m_firstOnly = nullptr;
    QCheckBox *m_subfolders = nullptr;
    bool m_isFolder = false;
    QPushButton *m_selectImage = nullptr;
    QPushButton *m_selectFolder = nullptr;
    QPushButton *m_search = nullptr;
    QButtonGroup *m_duplicateModes = nullptr;
    QButtonGroup *m_formats = nullptr;
};
