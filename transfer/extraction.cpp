// SPDX-License-Identifier: MIT
#include "transfer/extraction.h"

#include "base/folderbounds.h"
#include "codec/texturemanipulator.h"
#include "model/textureformat.h"
#include "persist/imagefile.h"
#include "persist/savefile.h"
#include "transfer/debugline.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QImage>

namespace
{
class ExtractionTexts
{
    Q_DECLARE_TR_FUNCTIONS(Extraction)
};

bool writeFile(const QString &path, const QByteArray &bytes, QString *error)
{
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink())
        return saveNew(path, bytes, error);
    // Opening a pipe would wait for a reader.
    if (info.exists() && !info.isFile()) {
        *error = ExtractionTexts::tr("There is something of that name that is no regular file");
        return false;
    }
    // A folder that is extracted again has mostly unchanged files; replacing each would cost a flush to the disk.
    QByteArray old;
    if (info.size() == bytes.size() && readWholeFile(path, &old, error) && old == bytes)
        return true;
    return saveWhole(path, bytes, error);
}

QByteArray encodedAsPng(QImage image)
{
    // A new image has the resolution of the screen, which is stored in the file and differs between machines.
    constexpr int dotsPerMeter = 3780; // 96 dots per inch.
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, "PNG") ? buffer.data() : QByteArray();
}

/// Whether a relative \a path of names stays below its folder: it is not absolute and has no component "..". A name with "/"
/// gives nested folders; an empty one is the folder itself.
bool staysBelow(const QString &path)
{
#ifdef Q_OS_WIN
    const QString separated = QString(path).replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (separated.contains(QLatin1Char(':')))
        return false;
#else
    const QString &separated = path;
#endif
    return !separated.startsWith(QLatin1Char('/')) && !separated.contains(QChar(0))
        && !separated.split(QLatin1Char('/')).contains(QLatin1String(".."));
}

class FolderExtractor
{
public:
    FolderExtractor(const QString &path, WorkLog *log, Progress *progress) : m_path(path), m_log(log), m_progress(progress) { }

    FolderExtraction run(const fileTreeDirectory *top)
    {
        QDir().mkpath(m_path);
        m_bounds = FolderBounds(m_path);
        m_progress->setMaximum(fileTreeContainer().allFiles(top).size());
        // No recursion: the depth of a table is untrusted.
        QList<Step> stack {{m_path, top}};
        while (!stack.isEmpty()) {
            const Step step = stack.takeLast();
            const QString target = step.path + QLatin1Char('/') + step.directory->name;
            if (!makeDirectory(*step.directory, step.path))
                continue;
            for (const fileTreeFile *texture : step.directory->files) {
                m_result.cancelled = m_progress->cancelled();
                if (m_result.cancelled)
                    return m_result;
                extract(*texture, target);
                m_progress->setValue(++m_visited);
            }
            for (int i = step.directory->directories.size() - 1; i >= 0; --i)
                stack.append({target, step.directory->directories.at(i)});
        }
        return m_result;
    }

private:
    struct Step
    {
        QString path; ///< The parent directory on disk.
        const fileTreeDirectory *directory;
    };

    void leaveOut(const QString &pathInTable, const QString &reason)
    {
        m_result.problems.append(pathInTable + QLatin1String(": ") + reason);
    }

    /// Reports a texture or folder that cannot be written because of the disk, its name or a link, also to the log.
    void failToWrite(const QString &pathInTable, const QString &reason)
    {
        leaveOut(pathInTable, reason);
        m_log->debug(m_result.problems.last());
    }

    /// Creates the directory \a name, which may be nested, in the directory at \a path, for the node at \a pathInTable. Looks at
    /// the new names alone: the directories above have been checked.
    bool makeDirectory(const QString &pathInTable, QString path, const QString &name)
    {
        const QStringList components = name.split(QLatin1Char('/'), Qt::SkipEmptyParts);
        for (const QString &component : components) {
            path += QLatin1Char('/') + component;
            const QFileInfo info(path);
            if (m_bounds.leadsOut(info)) {
                failToWrite(pathInTable, ExtractionTexts::tr("A link of that name leads out of the chosen folder"));
                return false;
            }
            if (!info.isDir() && !QDir().mkdir(path)) {
                failToWrite(pathInTable, ExtractionTexts::tr("The directory could not be created"));
                return false;
            }
        }
        return true;
    }

    bool makeDirectory(const fileTreeDirectory &directory, const QString &path)
    {
        const QString pathInTable = directory.path() + directory.name;
        if (staysBelow(directory.name))
            return makeDirectory(pathInTable, path, directory.name);
        failToWrite(pathInTable, ExtractionTexts::tr("Its name is no name for a directory"));
        return false;
    }

    void extract(const fileTreeFile &texture, const QString &directory)
    {
        const QString name = texture.name + pictureExtension(texture.format);
        const QString fileName = directory + QLatin1Char('/') + name;
        const QString pathInTable = texture.path() + texture.name;
        if (!staysBelow(name))
            return failToWrite(pathInTable, ExtractionTexts::tr("Its name is no name for a file"));
        if (!makeDirectory(pathInTable, directory, name.section(QLatin1Char('/'), 0, -2)))
            return;
        if (m_bounds.leadsOut(QFileInfo(fileName)))
            return failToWrite(pathInTable, ExtractionTexts::tr("A link of that name leads out of the chosen folder"));
        QString error;
        switch (extractTexture(texture, fileName, m_log, &error)) {
        case ExtractOutcome::Extracted: ++m_result.written; break;
        case ExtractOutcome::NotWritten: failToWrite(pathInTable, error); break;
        default: leaveOut(pathInTable, error);
        }
    }

    QString m_path;
    FolderBounds m_bounds {m_path};
    WorkLog *m_log;
    Progress *m_progress;
    int m_visited = 0;
    FolderExtraction m_result;
};
}

QString pictureExtension(const QString &format)
{
    return textureFormats::isJpegInAnyCase(format) ? QStringLiteral(".jpeg") : QStringLiteral(".png");
}

ExtractOutcome extractTexture(const fileTreeFile &texture, const QString &path, WorkLog *log, QString *error)
{
    if (!texture.exists()) {
        *error = ExtractionTexts::tr("It has no data");
        return ExtractOutcome::MissingData;
    }
    const textureFormat *record = textureFormats::find(texture.format);
    if (!record) {
        *error = ExtractionTexts::tr("Its format is not supported");
        return ExtractOutcome::UnknownFormat;
    }
    log->debug(debugLine(static_cast<const QString &>(texture.name), texture.format, texture.width, texture.height));
    if (textureFormats::isJpeg(texture.format))
        return writeFile(path, texture.data(), error) ? ExtractOutcome::Extracted : ExtractOutcome::NotWritten;

    const QImage image = textureManipulator::generateTexture(texture.data(), *record, texture.width, texture.palette());
    if (image.isNull()) {
        *error = ExtractionTexts::tr("Its data gives no picture");
        return ExtractOutcome::NotDecodable;
    }
    log->debug(debugLine("Saving texture in format", int(image.format())));
    log->debug(debugLine("Texture format palette colors:", image.colorCount()));
    const QByteArray png = encodedAsPng(image);
    if (png.isEmpty()) {
        *error = ExtractionTexts::tr("It could not be encoded as PNG");
        return ExtractOutcome::NotWritten;
    }
    return writeFile(path, png, error) ? ExtractOutcome::Extracted : ExtractOutcome::NotWritten;
}

FolderExtraction extractFolder(const QString &path, const fileTreeDirectory *directory, WorkLog *log, Progress *progress)
{
    Progress unseen;
    return FolderExtractor(path, log, progress ? progress : &unseen).run(directory);
}
