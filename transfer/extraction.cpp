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

#include <algorithm>

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
    // Extracting a folder anew finds most of its files as they were; replacing each costs a flush to the disk.
    QByteArray old;
    if (info.size() == bytes.size() && readWholeFile(path, &old, error) && old == bytes)
        return true;
    return saveWhole(path, bytes, error);
}

QByteArray encodedAsPng(QImage image)
{
    // A new image has the screen's resolution, which goes into the file: it would differ from one machine to the next.
    constexpr int dotsPerMeter = 3780; // 96 dots per inch.
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, "PNG") ? buffer.data() : QByteArray();
}

/// Characters that lead from one folder to another on the system at hand.
constexpr const char *pathCharacters()
{
#ifdef Q_OS_WIN
    return "/\\:";
#else
    return "/";
#endif
}

/// Whether \a name stays within its folder when it is used as a file name. An empty one does: the folder itself.
bool staysInFolder(const QString &name)
{
    const QLatin1String leading(pathCharacters());
    return name != QLatin1String("..") && !name.contains(QChar(0))
        && std::none_of(leading.begin(), leading.end(), [&name](char c) { return name.contains(QLatin1Char(c)); });
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
        // An own stack: how deep a table goes is up to whoever wrote it.
        QList<Step> stack {{m_path, top}};
        while (!stack.isEmpty()) {
            const Step step = stack.takeLast();
            const QString target = step.path + QLatin1Char('/') + step.directory->name;
            if (!makeDirectory(*step.directory, target))
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
        QString path; ///< Of the directory on disk that holds this one.
        const fileTreeDirectory *directory;
    };

    void leaveOut(const QString &pathInTable, const QString &reason)
    {
        m_result.problems.append(pathInTable + QLatin1String(": ") + reason);
    }

    /// Leaves out what could have been extracted but for the disk, or for a name or a link that leads elsewhere.
    void failToWrite(const QString &pathInTable, const QString &reason)
    {
        leaveOut(pathInTable, reason);
        m_log->debug(m_result.problems.last());
    }

    bool makeDirectory(const fileTreeDirectory &directory, const QString &target)
    {
        if (!staysInFolder(directory.name)) {
            failToWrite(directory.path() + directory.name, ExtractionTexts::tr("Its name is no name for a directory"));
            return false;
        }
        if (!QDir(target).exists() && !QDir(target).mkpath(QStringLiteral("."))) {
            failToWrite(directory.path() + directory.name, ExtractionTexts::tr("The directory could not be created"));
            return false;
        }
        if (m_bounds.leadsOut(QFileInfo(target))) {
            failToWrite(directory.path() + directory.name,
                        ExtractionTexts::tr("A link of that name leads out of the chosen folder"));
            return false;
        }
        return true;
    }

    void extract(const fileTreeFile &texture, const QString &directory)
    {
        const QString fileName = directory + QLatin1Char('/') + texture.name + pictureExtension(texture.format);
        const QString pathInTable = texture.path() + texture.name;
        if (!staysInFolder(texture.name))
            return failToWrite(pathInTable, ExtractionTexts::tr("Its name is no name for a file"));
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
