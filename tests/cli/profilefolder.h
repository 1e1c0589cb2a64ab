// SPDX-License-Identifier: MIT
#pragma once

#include "commandcall.h"

#include <QDir>
#include <QTemporaryDir>

/// A folder with an image and a profiles folder, for one test.
class ProfileFolder
{
public:
    /// Writes \a image, whose identifier is "NQLE0", as "game.z64".
    explicit ProfileFolder(const QByteArray &image) { writeFile(imagePath(), image); }

    QString path(const QString &name = QString()) const { return m_folder.filePath(name); }
    QString imagePath() const { return path("game.z64"); }
    QString profiles() const { return path("profiles"); }
    QString fileListPath(const QString &profile = "default") const { return profiles() + "/NQLE0/" + profile + "/fileList.xml"; }

    /// Makes the profile \a name with \a content as the content of its list's root element.
    void addProfile(const QByteArray &content, const QString &name = "default") const
    {
        QDir().mkpath(profiles() + "/NQLE0/" + name);
        writeFile(fileListPath(name), "<?xml version=\"1.0\"?><root version=\"2\">" + content + "</root>");
    }

    void addPart(const QString &name, const QByteArray &bytes) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        writeFile(path(name), bytes);
    }

    /// Calls \a command, of one or two words, with this folder's profiles and image, and \a more behind.
    CommandCall call(const QString &command, const QStringList &more = QStringList()) const
    {
        return ::call(command.split(' ') + QStringList {"--profiles", profiles(), imagePath()} + more);
    }

private:
    QTemporaryDir m_folder;
};
