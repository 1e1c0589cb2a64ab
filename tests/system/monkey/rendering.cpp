// SPDX-License-Identifier: MIT
#include "system/monkey/rendering.h"

#include "codec/texturemanipulator.h"
#include "model/textureformat.h"

#include <QIcon>
#include <QPainter>
#include <QPixmap>

namespace
{
constexpr int side = 16;
enum Column { OffsetEndColumn = 2, AddressEndColumn = 4, SizeColumn = 5 };

qint32 sum(qint32 a, qint32 b)
{
    return qint32(quint32(a) + quint32(b));
}

bool isJpeg(const fileTreeFile &texture)
{
    return texture.format.compare(QLatin1String("jpeg"), Qt::CaseInsensitive) == 0;
}
}

QString hexCell(qint32 value)
{
    return QString::asprintf("0x%08X", quint32(value));
}

qint32 addressInImage(const fileTreeDirectory *folder)
{
    qint32 address = 0;
    for (; folder && !folder->isRoot; folder = folder->parent)
        address = sum(address, folder->address);
    return address;
}

QStringList cellsOfFolder(const fileTreeDirectory &folder)
{
    const qint32 address = addressInImage(&folder);
    return {folder.name,
            hexCell(folder.address),
            hexCell(sum(folder.address, folder.size)),
            hexCell(address),
            hexCell(sum(address, folder.size)),
            hexCell(folder.size),
            QString(),
            QString(),
            QString(),
            QString()};
}

QStringList cellsOfTexture(const fileTreeFile &texture)
{
    const bool isKnown = textureFormats::getAsMap().contains(texture.format);
    const bool hasPalette = isKnown && textureFormats::getAsMap().value(texture.format).usesPalette;
    const qint32 address = sum(texture.address, addressInImage(texture.parent));
    const int size = texture.size();
    const bool isValid = isKnown && size >= 0;
    return {texture.name,
            hexCell(texture.address),
            isValid ? hexCell(sum(texture.address, size)) : QString(),
            hexCell(address),
            isValid ? hexCell(sum(address, size)) : QString(),
            isValid ? hexCell(size) : QString(),
            texture.format,
            isJpeg(texture) ? QString() : QString::number(texture.width),
            isJpeg(texture) ? QString() : QString::number(texture.height),
            hasPalette ? hexCell(texture.paletteAddress) : QString()};
}

bool dependsOnBytes(const fileTreeFile &texture, int column)
{
    return isJpeg(texture) && (column == OffsetEndColumn || column == AddressEndColumn || column == SizeColumn);
}

QImage iconOfTexture(const fileTreeFile &texture)
{
    const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    QImage picture;
    if (formats.contains(texture.format))
        picture =
            textureManipulator::generateTexture(texture.data(), formats.value(texture.format), texture.width, texture.palette());
    if (picture.isNull())
        return builtInIcon(QStringLiteral("file"));
    const QImage small = picture.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPixmap icon(side, side);
    icon.fill(Qt::transparent);
    QPainter painter(&icon);
    painter.drawImage((side - small.width()) / 2, (side - small.height()) / 2, small);
    painter.end();
    return icon.toImage();
}

QImage builtInIcon(const QString &name)
{
    return QIcon(QStringLiteral(":/icons/") + name).pixmap(side, side).toImage();
}
