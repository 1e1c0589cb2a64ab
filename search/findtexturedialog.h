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

/// Asks for the parameters of a texture search and emits them to the slot runFindTexture() of the widget that opened it, after
/// closing itself and before exec() returns.
class findTextureDialog : public QDialog
{
    Q_OBJECT

public:
    /// \a parent receives the search() signal; the dialog is not its child. \a description names the searched range. The path
    /// field starts with \a fileName, a folder if \a multiple is true; empty for none.
    findTextureDialog(QWidget *parent, QString description, const QString &fileName, bool multiple);

public slots:
    /// Asks for one picture.
    void setFile();
    /// Asks for a folder of pictures.
    void setFolder();
    /// Lists the pictures at the chosen path and calls runSearch().
    void startSearch();
    /// Closes the dialog and emits search() for \a files with the checked options.
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
