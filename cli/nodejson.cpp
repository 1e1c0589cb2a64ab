// SPDX-License-Identifier: MIT
#include "cli/nodejson.h"

#include "model/rom.h"
#include "model/textureformat.h"

#include <QJsonObject>

namespace cli
{
QJsonObject textureJson(const fileTreeFile &texture, const QString &path)
{
    const bool isJpeg = texture.format.compare(textureFormats::jpeg.name, Qt::CaseInsensitive) == 0;
    const bool usesPalette = textureFormats::getAsMap().value(texture.format).usesPalette;
    const int size = texture.size();
    return {{QStringLiteral("path"), path},
            {QStringLiteral("address"), texture.realAddress()},
            {QStringLiteral("offset"), texture.address},
            {QStringLiteral("size"), size < 0 ? QJsonValue() : QJsonValue(size)},
            {QStringLiteral("format"), texture.format},
            {QStringLiteral("width"), isJpeg ? QJsonValue() : QJsonValue(texture.width)},
            {QStringLiteral("height"), isJpeg ? QJsonValue() : QJsonValue(texture.height)},
            {QStringLiteral("paletteAddress"), usesPalette ? QJsonValue(texture.realPaletteAddress()) : QJsonValue()},
            {QStringLiteral("paletteOffset"), usesPalette ? QJsonValue(texture.paletteAddress) : QJsonValue()}};
}

QJsonObject folderJson(const fileTreeDirectory &folder, const QString &path)
{
    return {{QStringLiteral("path"), path},
            {QStringLiteral("address"), folder.realAddress()},
            {QStringLiteral("offset"), folder.address},
            {QStringLiteral("size"), folder.size}};
}
}
