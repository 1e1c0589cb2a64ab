// SPDX-License-Identifier: MIT
#include "cli/tablepaths.h"

#include "model/byteorder.h"
#include "model/rom.h"
#include "model/tablewalk.h"
#include "persist/filelist.h"
#include "persist/imagefile.h"
#include "persist/profilesfolder.h"
#include "persist/profilestore.h"

#include <QFile>
#include <QFileInfo>

#include <limits>

namespace cli
{
namespace
{
/// The identifier of the image at \a path, by its first bytes; empty when it cannot be read.
QString identifierOf(const QString &path)
{
    constexpr int headerBytes = 128;
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return QString();
    QByteArray header = file.read(headerBytes);
    const ByteOrder order = byteOrderOf(header);
    if (order == ByteOrder::Unknown)
        return QFileInfo(path).completeBaseName();
    convertByteOrder(&header, order, [](int) {});
    return cartridgeIdentifier(header);
}

ProfileStore storeOf(const QString &imagePath, const QString &profiles)
{
    ProfilesFolder folder = profiles.isEmpty() ? chooseProfilesFolder() : ProfilesFolder {profiles, QString()};
    if (!folder.path.endsWith(QLatin1Char('/')))
        folder.path += QLatin1Char('/');
    return ProfileStore(folder, identifierOf(imagePath));
}

/// The folder that \a path, which ends in "/" or is empty, names; null when there is none. Without a first part that names the
/// root, none is meant.
fileTreeDirectory *folderAt(fileTreeDirectory *root, const QString &path)
{
    return path.isEmpty() ? root : nodeAtPath(root, path).folder;
}
}

QStringList profileNames(const QString &imagePath, const QString &profiles)
{
    QStringList names = storeOf(imagePath, profiles).profiles();
    names.sort();
    return names;
}

QStringList tablePaths(const QString &imagePath, const QString &profiles, const QString &profile, const QString &start)
{
    const ProfileStore store = storeOf(imagePath, profiles);
    ProfileSettings settings;
    QString error;
    store.readSettings(&settings, &error);
    const QString name = profile.isEmpty() ? settings.autoload : profile;
    QByteArray list;
    auto *root = new fileTreeDirectory; // Released with all nodes at exit.
    root->isRoot = true;
    root->name = QStringLiteral("Root");
    if (!store.hasFileList(name) || !readWholeFile(store.fileListToRead(name), &list, &error))
        return {};
    readFileList(list, std::numeric_limits<int>::max(), root, nullptr, &error);

    const QString above = start.left(start.lastIndexOf(QLatin1Char('/')) + 1);
    const fileTreeDirectory *folder = folderAt(root, above);
    QStringList paths;
    if (!folder)
        return paths;
    if (above.isEmpty())
        paths << root->name + QLatin1Char('/');
    if (start.isEmpty()) // The root may be left out, but paths are shown with it.
        return paths;
    for (const fileTreeDirectory *child : folder->directories)
        paths << above + child->name + QLatin1Char('/');
    for (const fileTreeFile *texture : folder->files)
        paths << above + texture->name;
    return paths;
}
}
