// SPDX-License-Identifier: MIT
#pragma once

class QJsonObject;
class QString;
class fileTreeDirectory;
class fileTreeFile;

namespace cli
{
/// A node of the table, as all commands print it: path, address in the image, offset in its folder, size in bytes, and for a
/// texture format, width and height in pixels, and the palette's address in the image and offset in the folder; null for what the
/// texture does not have. \a path is the node's full path.
QJsonObject textureJson(const fileTreeFile &texture, const QString &path);
QJsonObject folderJson(const fileTreeDirectory &folder, const QString &path);
}
