// SPDX-License-Identifier: MIT
#pragma once

#include "fuzzinput.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QTemporaryDir>

#include <filesystem>

/// The application object that some of Qt wants, one for the whole run. Names of files are UTF-8 from then on.
inline void needApplication()
{
    static const bool isSet = qputenv("LC_ALL", "C.UTF-8");
    require(isSet, "the locale can be chosen");
    static int count = 1;
    static char name[] = "fuzz";
    static char *arguments[] = {name, nullptr};
    static QCoreApplication application(count, arguments);
}

/// What lies in a folder: by path in it, a file's content or what else it is.
using FolderContent = QMap<QString, QByteArray>;

/// All below the folder at \a path; links are not followed and pipes not opened.
inline FolderContent contentOf(const QString &path)
{
    FolderContent content;
    const QDir folder(path);
    QDirIterator entries(path, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        entries.next();
        const QFileInfo info = entries.fileInfo();
        QFile file(info.filePath());
        QByteArray entry;
        if (info.isSymLink())
            entry = "link to " + info.symLinkTarget().toUtf8();
        else if (info.isDir())
            entry = "folder";
        else if (info.isFile() && file.open(QIODevice::ReadOnly))
            entry = "file " + file.readAll();
        content.insert(folder.relativeFilePath(info.filePath()), entry);
    }
    return content;
}

inline void putFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(), "a scratch file can be written");
}

/// A temporary folder, in memory where the system has such, with two folders in it: one to work in, and one beside it that
/// nothing may touch. Both lie deep enough for a name with a few ".." to stay in the temporary folder.
class ScratchFolder
{
public:
    ScratchFolder() : m_folder(base() + QStringLiteral("/quillary-fuzz-XXXXXX"))
    {
        require(m_folder.isValid() && QDir().mkpath(work()) && QDir().mkpath(beside()), "a scratch folder can be made");
        putFile(beside() + QStringLiteral("/kept.txt"), "kept");
        m_around = around();
    }

    QString work() const { return m_folder.filePath(QStringLiteral("a/b/c/work")); }
    QString beside() const { return m_folder.filePath(QStringLiteral("a/b/c/beside")); }

    /// Removes what lies in the folder to work in.
    void clear() const
    {
        // Qt cannot remove what has a name that it cannot decode.
        std::error_code error;
        std::filesystem::remove_all(work().toStdString(), error);
        require(!error && QDir().mkpath(work()), "the scratch folder can be emptied");
    }

    /// Nothing outside the folder to work in is new, gone or changed.
    void requireUntouchedAround() const { require(around() == m_around, "nothing outside the folder is touched"); }

private:
    static QString base()
    {
        const QFileInfo memory(QStringLiteral("/dev/shm"));
        return memory.isDir() && memory.isWritable() ? memory.filePath() : QDir::tempPath();
    }

    FolderContent around() const
    {
        FolderContent content = contentOf(beside());
        const QStringList folders {m_folder.path(), m_folder.filePath(QStringLiteral("a")),
                                   m_folder.filePath(QStringLiteral("a/b")), m_folder.filePath(QStringLiteral("a/b/c"))};
        for (const QString &folder : folders) {
            const QStringList names =
                QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
            content.insert(folder, names.join(QLatin1Char('/')).toUtf8());
        }
        return content;
    }

    QTemporaryDir m_folder;
    FolderContent m_around;
};
