// SPDX-License-Identifier: MIT
#include "transfer/texturepack.h"

#include "base/folderbounds.h"
#include "base/hexnumber.h"
#include "codec/pictureloader.h"
#include "model/bulkadder.h"
#include "model/textureformat.h"
#include "persist/imagefile.h"
#include "transfer/debugline.h"
#include "transfer/pixelimport.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QRegExp>
#include <QVector>
#include <QtEndian>

#include <optional>

namespace
{
/// The word to which a pack's pointer at \a address leads. The first four bytes hold no pointer: they begin the header.
std::optional<qint32> pointerAt(const QByteArray &cartridge, quint32 address)
{
    constexpr qint64 wordBytes = 4;
    if (address < wordBytes || address + wordBytes > cartridge.size())
        return std::nullopt;
    return qFromBigEndian<qint32>(cartridge.constData() + address);
}

/// The entries of a directory, read at once. "." and ".." are among them.
QVector<QFileInfo> entriesOf(const QString &path)
{
    QVector<QFileInfo> entries;
    QDirIterator iterator(path);
    while (iterator.hasNext()) {
        iterator.next();
        entries.append(iterator.fileInfo());
    }
    return entries;
}

class PackImporter
{
public:
    PackImporter(const QString &path, fileTreeDirectory *root, const QByteArray &cartridge, const TextureSink &write,
                 WorkLog *log, JpegRule rule)
        : m_path(QDir(path).absolutePath()), m_bounds(m_path), m_folders(root), m_cartridge(cartridge), m_write(write),
          m_log(log), m_pixels(root, rule, log)
    {
    }

    TexturePackImport run()
    {
        m_pixels.measureTable();
        const QVector<QFileInfo> entries = entriesOf(m_path);
        for (const QFileInfo &entry : entries) {
            if (entry.isDir() && isInside(entry))
                importDirectory(entry);
            else if (!entry.isDir())
                leaveOutPicture(entry, QStringLiteral("only the pictures in a pack's directories are read"));
        }
        if (m_result.folders == 0)
            m_log->notImported(m_path + QLatin1String(": no directory in it is named as \"A_00B5F000_Grass\" is"));
        return m_result;
    }

private:
    /// Whether \a entry belongs to what the user chose.
    bool isInside(const QFileInfo &entry)
    {
        const bool inside = !m_bounds.leadsOut(entry);
        if (!inside)
            leaveOut(entry, QStringLiteral("a link that leads out of the pack"));
        return inside;
    }

    void leaveOut(const QFileInfo &entry, const QString &reason)
    {
        if (entry.fileName() == QLatin1String(".") || entry.fileName() == QLatin1String(".."))
            return;
        m_log->notImported(entry.filePath() + QLatin1String(": ") + reason);
    }

    /// The same for what seems to be a picture; other files, such as notes and licences, belong to a pack too.
    void leaveOutPicture(const QFileInfo &file, const QString &reason)
    {
        static const QStringList suffixes {QStringLiteral("png"), QStringLiteral("jpeg"), QStringLiteral("jpg"),
                                           QStringLiteral("bmp"), QStringLiteral("gif"),  QStringLiteral("tga")};
        if (suffixes.contains(file.suffix().toLower()))
            leaveOut(file, reason);
    }

    /// Whether all of \a name matches, with the parts it is made of in the log.
    bool matches(QRegExp *pattern, const QString &name)
    {
        const bool exact = pattern->exactMatch(name);
        m_log->debug(debugLine(pattern->capturedTexts()));
        return exact && pattern->matchedLength() > 0;
    }

    std::optional<qint32> addressOfFolder(const QString &kind, const QString &digits) const
    {
        const qint32 number = parseHexadecimal(digits);
        return kind == QLatin1String("P") ? pointerAt(m_cartridge, quint32(number)) : number;
    }

    void importDirectory(const QFileInfo &entry)
    {
        m_log->debug(debugLine(QString(QLatin1String("Directory path: ") + entry.filePath() + QLatin1String(" Directory name: ")
                                       + entry.fileName())));
        if (!matches(&m_folderPattern, entry.fileName())) {
            leaveOut(entry, QStringLiteral("its name is not one of a pack's directory, such as \"A_00B5F000_Grass\""));
            return;
        }
        const std::optional<qint32> address = addressOfFolder(m_folderPattern.cap(1), m_folderPattern.cap(2));
        if (!address) {
            leaveOut(entry, QStringLiteral("its pointer lies outside the image"));
            return;
        }
        auto *folder = new fileTreeDirectory;
        folder->address = *address;
        folder->name = m_folderPattern.cap(3);
        folder->size = qint32(quint32(m_cartridge.size()) - quint32(*address));
        m_result.lastFolder = m_folders.addDirectory(folder);
        ++m_result.folders;
        m_log->debug(debugLine(QString::number(*address)));

        const QVector<QFileInfo> files = entriesOf(entry.filePath());
        BulkAdder textures(m_result.lastFolder);
        for (const QFileInfo &file : files) {
            if (!file.isDir() && isInside(file))
                importFile(file, &textures);
            else if (file.isDir())
                leaveOut(file, QStringLiteral("directories in a pack's directories are not read"));
        }
    }

    void importFile(const QFileInfo &file, BulkAdder *folder)
    {
        if (!matches(&m_texturePattern, file.fileName())) {
            leaveOutPicture(file,
                            QStringLiteral("its name is not one of a pack's picture, such as \"00001A00_rgba32_tile.png\""));
            return;
        }
        const qint32 address = parseHexadecimal(m_texturePattern.cap(1));
        const QString format = m_texturePattern.cap(2);
        if (!textureFormats::find(format)) {
            leaveOut(file, QStringLiteral("there is no texture format \"%1\"").arg(format));
            return;
        }
        QImage picture = loadPicture(file.filePath());
        auto *texture = new fileTreeFile;
        texture->address = address;
        texture->format = format;
        texture->height = picture.height();
        texture->width = picture.width();
        texture->name = m_texturePattern.cap(3);
        folder->addFile(texture);
        ++m_result.textures;

        QByteArray rawPicture;
        QString error;
        if (!readWholeFile(file.filePath(), &rawPicture, &error)) {
            m_log->status(QCoreApplication::translate("MainWindow", "Could not read image file"), 2000);
            return;
        }
        // Pictures are written where their name says, which need not be where the new entry points.
        fileTreeFile target;
        target.name = texture->path() + texture->name;
        target.format = format;
        target.width = texture->width;
        target.height = texture->height;
        target.address = address;
        target.paletteAddress = texture->realPaletteAddress();
        const PixelImport::Outcome outcome = m_pixels.prepare(file.filePath(), target, &picture, rawPicture);
        if (outcome == PixelImport::Outcome::Ready)
            m_write(picture, address, format, rawPicture);
        else if (outcome == PixelImport::Outcome::NoPalette)
            leaveOut(file, QStringLiteral("its palette lies outside the image"));
    }

    QString m_path;
    FolderBounds m_bounds;
    BulkAdder m_folders;
    const QByteArray &m_cartridge;
    const TextureSink &m_write;
    WorkLog *m_log;
    PixelImport m_pixels;
    TexturePackImport m_result;
    QRegExp m_folderPattern {QStringLiteral("([AP])_([0-9A-F]{1,8})_(.*)")};
    QRegExp m_texturePattern {QStringLiteral("([0-9A-F]{1,8})_([^_]+)_(.*)")};
};
}

TexturePackImport importPack(const QString &path, fileTreeDirectory *root, const QByteArray &cartridge, const TextureSink &write,
                             WorkLog *log, JpegRule rule)
{
    return PackImporter(path, root, cartridge, write, log, rule).run();
}
