// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>
#include <QTemporaryDir>

/// The files that a run opens, imports, searches for and writes to, in a temporary folder.
class WalkFiles
{
public:
    WalkFiles();

    bool isValid() const { return m_folder.isValid(); }
    QString path(const QString &name) const { return m_folder.filePath(name); }
    /// Images of the three byte orders and two cartridges, and files that are none.
    QStringList images() const;
    /// Pictures of several sizes and kinds, a damaged one and a missing one.
    QStringList pictures() const;
    QStringList pictureFolders() const;
    QStringList packs() const;
    /// Paths to write to; some cannot be written.
    QStringList targets(const QString &suffix) const;
    QStringList targetFolders() const;
    /// A table for the first cartridge.
    static QByteArray firstList();

private:
    void makeImages();
    void makePictures();
    void makePictureFolder();
    void makePack();

    QTemporaryDir m_folder;
};
