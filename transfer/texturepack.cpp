// SPDX-License-Identifier: MIT
#include "transfer/texturepack.h"

#include "base/folderbounds.h"
#include "base/hexnumber.h"
#include "codec/pictureloader.h"
#include "model/bulkadder.h"
#include "model/textureformat.h"
#include "persist/imagefile.h"
#include "transfer/debugline.h"

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

/// The entries of a directory, "." and ".." among them, read at once.
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
                 WorkLog *log)
        : m_path(QDir(path).absolutePath()), m_bounds(m_path), m_folders(root), m_cartridge(cartridge), m_write(write), m_log(log)
    {
    }

    TexturePackImport run()
    {
        const QVector<QFileInfo> entries = entriesOf(m_path);
        for (const QFileInfo &entry : entries) {
            if (entry.isDir() && isInside(entry))
                importDirectory(entry);
        }
        return m_result;
    }

private:
    /// Whether \a entry belongs to what the user chose.
    bool isInside(const QFileInfo &entry)
    {
        const bool inside = !m_bounds.leadsOut(entry);
        if (!inside)
            m_log->debug(entry.filePath() + QLatin1String(": A link that leads out of the pack"));
        return inside;
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
        if (!matches(&m_folderPattern, entry.fileName()))
            return;
        const std::optional<qint32> address = addressOfFolder(m_folderPattern.cap(1), m_folderPattern.cap(2));
        if (!address)
            return;
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
        }
    }

    void importFile(const QFileInfo &file, BulkAdder *folder)
    {
        if (!matches(&m_texturePattern, file.fileName()))
            return;
        const qint32 address = parseHexadecimal(m_texturePattern.cap(1));
        const QString format = m_texturePattern.cap(2);
        if (!textureFormats::find(format))
            return;
        const QImage picture = loadPicture(file.filePath());
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
        if (readWholeFile(file.filePath(), &rawPicture, &error))
            m_write(picture, address, format, rawPicture);
        else
            m_log->status(QCoreApplication::translate("MainWindow", "Could not read image file"), 2000);
    }

    QString m_path;
    FolderBounds m_bounds;
    BulkAdder m_folders;
    const QByteArray &m_cartridge;
    const TextureSink &m_write;
    WorkLog *m_log;
    TexturePackImport m_result;
    QRegExp m_folderPattern {QStringLiteral("([AP])_([0-9A-F]{1,8})_(.*)")};
    QRegExp m_texturePattern {QStringLiteral("([0-9A-F]{1,8})_([^_]+)_(.*)")};
};
}

TexturePackImport importPack(const QString &path, fileTreeDirectory *root, const QByteArray &cartridge, const TextureSink &write,
                             WorkLog *log)
{
    return PackImporter(path, root, cartridge, write, log).run();
}
