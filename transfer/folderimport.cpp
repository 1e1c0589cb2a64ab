// SPDX-License-Identifier: MIT
#include "transfer/folderimport.h"

#include "base/nearestname.h"
#include "codec/pictureloader.h"
#include "model/tablewalk.h"
#include "persist/imagefile.h"
#include "transfer/debugline.h"
#include "transfer/pixelimport.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QHash>
#include <QStringList>

#include <vector>

namespace
{
constexpr QDir::Filters noLinks = QDir::NoSymLinks | QDir::NoDotAndDotDot;

class FolderImportTexts
{
    Q_DECLARE_TR_FUNCTIONS(FolderImport)
};

/// The nodes of a folder by lower-case name: of nodes with one name the first in the list, as a walk through it finds.
template<typename Node> QHash<QString, Node *> byName(const QList<Node *> &nodes)
{
    QHash<QString, Node *> result;
    result.reserve(nodes.size());
    for (Node *node : nodes) {
        const QString key = node->name.toLower();
        if (!result.contains(key))
            result.insert(key, node);
    }
    return result;
}

struct Entry
{
    QString path;
    bool isDirectory;
};

/// A directory that is being imported, and how far.
struct Level
{
    const fileTreeDirectory *directory = nullptr;
    std::vector<Entry> entries; ///< Read at once, so that a deep tree does not hold a directory open for each of its levels.
    size_t next = 0;
    QHash<QString, fileTreeFile *> textures;
    QHash<QString, fileTreeDirectory *> folders;
};

class FolderImporter
{
public:
    FolderImporter(const TextureSink &write, Progress *progress, WorkLog *log, QString *report, JpegRule rule)
        : m_write(write), m_progress(progress), m_log(log), m_report(report), m_pixels(currentROM.root, rule, log)
    {
    }

    void run(const QString &path, const fileTreeDirectory *directory)
    {
        enter(path, directory);
        while (!m_levels.empty()) {
            Level &level = m_levels.back();
            if (level.next == level.entries.size()) {
                m_levels.pop_back();
                continue;
            }
            const Entry entry = level.entries[level.next++];
            if (entry.isDirectory) {
                importDirectory(entry.path, level);
            } else {
                importFile(entry.path, level);
                m_progress->setValue(++m_filesVisited);
            }
        }
    }

private:
    void enter(const QString &path, const fileTreeDirectory *directory)
    {
        m_log->debug(debugLine("Importing directory", path));
        if (!directory) {
            leaveOut(path, FolderImportTexts::tr("The program tried to import into a non-existent folder."));
            return;
        }
        Level level;
        level.directory = directory;
        QDirIterator iterator(QDir(path, QString(), QDir::NoSort, QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot));
        while (iterator.hasNext()) {
            iterator.next();
            if (iterator.fileInfo().isSymLink())
                m_log->notImported(iterator.filePath() + QLatin1String(": a link, and links are left out"));
            else
                level.entries.push_back({iterator.filePath(), iterator.fileInfo().isDir()});
        }
        level.textures = byName(directory->files);
        level.folders = byName(directory->directories);
        m_levels.push_back(std::move(level));
    }

    void importFile(const QString &path, const Level &level)
    {
        m_log->debug(debugLine("Importing Texture", path));
        const bool isJpeg = path.endsWith(QLatin1String(".jpeg"));
        if (!isJpeg && !path.endsWith(QLatin1String(".png"))) {
            leaveOut(path, FolderImportTexts::tr("File format not supported."));
            return;
        }
        const fileTreeFile *texture = level.textures.value(QFileInfo(path).completeBaseName().toLower());
        if (!texture) {
            tellOfNoTexture(path, *level.directory);
            return;
        }
        QImage picture = loadPicture(path);
        if (!isJpeg && picture.size() != QSize(texture->width, texture->height)) {
            leaveOut(path, FolderImportTexts::tr("Incorrect image dimensions."));
            return;
        }
        QByteArray rawPicture;
        QString error;
        if (!readWholeFile(path, &rawPicture, &error)) {
            m_log->status(QCoreApplication::translate("MainWindow", "Could not read image file"), 2000);
            return;
        }
        const PixelImport::Outcome outcome = m_pixels.prepare(path, *texture, &picture, rawPicture);
        if (outcome == PixelImport::Outcome::Ready)
            m_write(picture, texture->realAddress(), texture->format, rawPicture);
        else if (outcome == PixelImport::Outcome::NoPalette)
            leaveOut(path, FolderImportTexts::tr("Its palette lies outside the image."));
    }

    /// The nearest name is looked for a few times only: with as many names as pictures that would take too long.
    void tellOfNoTexture(const QString &path, const fileTreeDirectory &directory)
    {
        QString text = QStringLiteral("%1: no such texture in %2").arg(path, fullPath(directory));
        constexpr int mostSuggestions = 20;
        if (m_suggestions++ < mostSuggestions) {
            QStringList names;
            for (const fileTreeFile *file : directory.files)
                names.append(file->name);
            const QString nearest = nearestName(QFileInfo(path).completeBaseName(), names);
            if (!nearest.isEmpty())
                text += QStringLiteral("; the nearest name is \"%1\"").arg(nearest);
        }
        m_log->notImported(text);
    }

    void importDirectory(const QString &path, const Level &level)
    {
        const QString name = QFileInfo(path).completeBaseName();
        if (const fileTreeDirectory *folder = level.folders.value(name.toLower())) {
            m_log->debug(debugLine("Found directory", path));
            enter(path, folder);
            return;
        }
        m_log->debug(debugLine("Could not find directory", name));
        leaveOut(path,
                 FolderImportTexts::tr("No folder named %1 in %2.").arg(name, level.directory->path() + level.directory->name));
    }

    void leaveOut(const QString &path, const QString &reason)
    {
        m_report->append(FolderImportTexts::tr("%1 was not imported. %2").arg(path, reason) + QLatin1Char('\n'));
    }

    const TextureSink &m_write;
    Progress *m_progress;
    WorkLog *m_log;
    QString *m_report;
    PixelImport m_pixels;
    std::vector<Level> m_levels;
    int m_filesVisited = 0;
    int m_suggestions = 0;
};
}

int countFilesBelow(const QString &path)
{
    int count = 0;
    QStringList directories {path};
    while (!directories.isEmpty()) {
        const QDir directory(directories.takeLast());
        count += directory.entryList(QDir::Files | noLinks, QDir::Unsorted).size();
        const QStringList names = directory.entryList(QDir::Dirs | noLinks, QDir::Unsorted);
        for (const QString &name : names)
            directories.append(directory.path() + QDir::separator() + name);
    }
    return count;
}

void importPictureFolder(const QString &path, const fileTreeDirectory *directory, const TextureSink &write, Progress *progress,
                         WorkLog *log, QString *report, JpegRule rule)
{
    FolderImporter(write, progress, log, report, rule).run(path, directory);
}
