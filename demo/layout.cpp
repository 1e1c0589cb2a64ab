// SPDX-License-Identifier: MIT
#include "demo/layout.h"

#include "codec/texturemanipulator.h"
#include "model/textureformat.h"

#include <QBuffer>
#include <QtEndian>

namespace demo
{
namespace
{
constexpr int alignment = 8;
constexpr int jpegQuality = 90;

QString suffixOf(const QString &format)
{
    return format == QLatin1String("jpeg") ? QStringLiteral(".jpeg") : QStringLiteral(".png");
}
}

Layout::Layout(int size)
{
    cartridge.image.fill('\0', size);
}

void Layout::enter(const QString &path, int address, int size)
{
    cartridge.folders.append({path, address, size});
    m_folder = path;
    m_next = address;
}

void Layout::enterRoot(int address)
{
    m_folder.clear();
    m_next = address;
}

void Layout::addPalette(const QVector<QRgb> &colours)
{
    const QImage row(reinterpret_cast<const uchar *>(colours.constData()), colours.size(), 1, QImage::Format_ARGB32);
    m_palette = m_next;
    put(m_next, encoded(row, QStringLiteral("rgb5a1")));
    skip(colours.size() * 2);
}

int Layout::add(const QString &name, const QString &format, const QImage &picture, const QImage &winter)
{
    Texture texture;
    texture.folder = m_folder;
    texture.name = name;
    texture.format = format;
    texture.address = m_next;
    texture.picture = picture;
    texture.data = encoded(picture, format);
    if (textureFormats::getAsMap().value(format).usesPalette)
        texture.paletteAddress = m_palette;
    put(m_next, texture.data);
    skip(texture.data.size());
    if (!winter.isNull())
        cartridge.imports.append({QStringLiteral("import/") + m_folder + name + suffixOf(format), winter});
    cartridge.textures.append(texture);
    return texture.address;
}

int Layout::hide(const QString &name, const QString &format, const QImage &picture)
{
    const int address = add(name, format, picture);
    cartridge.textures.last().listed = false;
    return address;
}

void Layout::skip(int bytes)
{
    m_next = (m_next + bytes + alignment - 1) / alignment * alignment;
}

void Layout::put(int address, const QByteArray &bytes)
{
    Q_ASSERT(address >= 0 && address + bytes.size() <= cartridge.image.size());
    cartridge.image.replace(address, bytes.size(), bytes);
}

void Layout::putWord(int address, quint32 word)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(word, bytes.data());
    put(address, bytes);
}

QByteArray encoded(const QImage &picture, const QString &format)
{
    if (format != QLatin1String("jpeg"))
        return textureManipulator::generateData(picture, textureFormats::getAsMap().value(format));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    return picture.save(&buffer, "JPEG", jpegQuality) ? bytes : QByteArray();
}
}
