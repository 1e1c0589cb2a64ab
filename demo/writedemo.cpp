// SPDX-License-Identifier: MIT
#include "demo/democartridge.h"
#include "demo/layout.h"
#include "model/byteorder.h"
#include "model/rom.h"
#include "persist/filelist.h"
#include "persist/savefile.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QHash>

namespace demo
{
namespace
{
bool fail(QString *error, const QString &path, const QString &reason)
{
    *error = QStringLiteral("Cannot write %1: %2").arg(QDir::toNativeSeparators(path), reason);
    return false;
}

bool writeFile(const QString &path, const QByteArray &bytes, QString *error)
{
    QString reason;
    if (!QDir().mkpath(QFileInfo(path).path()))
        return fail(error, path, QStringLiteral("its folder cannot be made"));
    return saveWhole(path, bytes, &reason) || fail(error, path, reason);
}

bool writePictures(const QString &folder, const QVector<Picture> &pictures, QString *error)
{
    for (const Picture &picture : pictures) {
        const QString path = folder + QLatin1Char('/') + picture.path;
        QByteArray bytes;
        if (path.endsWith(QLatin1String(".jpeg"))) {
            bytes = encoded(picture.picture, QStringLiteral("jpeg"));
        } else {
            QBuffer buffer(&bytes);
            buffer.open(QIODevice::WriteOnly);
            picture.picture.save(&buffer, "PNG");
        }
        if (bytes.isEmpty())
            return fail(error, path, QStringLiteral("the picture cannot be encoded"));
        if (!writeFile(path, bytes, error))
            return false;
    }
    return true;
}

bool writeImages(const QString &folder, QString *error)
{
    static const struct
    {
        ByteOrder order;
        const char *name;
    } images[] = {
        {ByteOrder::BigEndian, "demo.z64"}, {ByteOrder::ByteSwapped, "demo.v64"}, {ByteOrder::LittleEndian, "demo.n64"}};
    for (const auto &wanted : images) {
        QByteArray image = cartridge().image;
        convertByteOrder(&image, wanted.order);
        if (!writeFile(folder + QLatin1Char('/') + QLatin1String(wanted.name), image, error))
            return false;
    }
    return writeFile(folder + QLatin1String("/demo-1.1.z64"), secondRevision(), error);
}

/// The file table: addresses count from the enclosing folder, those of palettes from the address of the immediate folder alone.
fileTreeDirectory *makeTable()
{
    auto *root = new fileTreeDirectory;
    root->isRoot = true;
    QHash<QString, fileTreeDirectory *> folders {{QString(), root}};
    for (const Folder &folder : cartridge().folders) {
        const QString inner = folder.path.section(QLatin1Char('/'), -2, -2);
        fileTreeDirectory *parent = folders.value(folder.path.left(folder.path.size() - inner.size() - 1));
        auto *node = new fileTreeDirectory;
        node->setName(inner);
        parent->addDirectory(node);
        node->address = folder.address - parent->realAddress();
        node->size = folder.size;
        folders.insert(folder.path, node);
    }
    for (const Texture &texture : cartridge().textures) {
        if (!texture.listed)
            continue;
        fileTreeDirectory *folder = folders.value(texture.folder);
        auto *node = new fileTreeFile;
        node->setName(texture.name);
        folder->addFile(node);
        node->format = texture.format;
        node->address = texture.address - folder->realAddress();
        node->width = texture.picture.width();
        node->height = texture.picture.height();
        if (texture.paletteAddress >= 0)
            node->paletteAddress = texture.paletteAddress - folder->address;
    }
    return root;
}

bool writeProfile(const QString &profilesFolder, QString *error)
{
    const QString path = QStringLiteral("%1/%2/default/fileList.xml").arg(profilesFolder, QLatin1String(identifier));
    if (QFileInfo::exists(path))
        return true;
    QBuffer list;
    list.open(QIODevice::WriteOnly);
    QString reason;
    if (!writeFileList(makeTable(), &list, &reason))
        return fail(error, path, reason);
    return writeFile(path, list.data(), error);
}
}

bool writeDemo(const QString &folder, const QString &profilesFolder, QString *error)
{
    const Cartridge &whole = cartridge();
    return writeImages(folder, error) && writePictures(folder, whole.imports + whole.pack + whole.searches, error)
        && writeProfile(profilesFolder, error);
}
}
