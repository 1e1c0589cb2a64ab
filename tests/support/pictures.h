// SPDX-License-Identifier: MIT
#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QStringList>

/// A picture of one colour.
inline QImage plainPicture(int width, int height, QRgb colour)
{
    QImage picture(width, height, QImage::Format_ARGB32);
    picture.fill(colour);
    return picture;
}

/// The bytes of a file; null when it cannot be read.
inline QByteArray bytesOfFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Writes \a bytes to the file at \a path; its folder must be there.
inline bool writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

/// The paths below \a path, relative to it and sorted; those of directories end in "/".
inline QStringList treeOnDisk(const QString &path)
{
    QStringList result;
    QDirIterator iterator(path, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                          QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        const QString entry = iterator.next().mid(path.size() + 1);
        result << (iterator.fileInfo().isDir() ? entry + '/' : entry);
    }
    result.sort();
    return result;
}

/// A JPEG as an encoder writes it, and the marker walk of a texture entry understands.
inline QByteArray jpegBytes(int width, int height, QRgb colour = qRgb(200, 60, 20))
{
    QImage picture(width, height, QImage::Format_RGB32);
    picture.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "JPEG", 80);
    return bytes;
}

/// The head of a PNG that claims \a width by \a height pixels, up to where their data would begin.
inline QByteArray pngHeader(quint32 width, quint32 height)
{
    QByteArray header("IHDR");
    for (const quint32 value : {width, height}) {
        for (int shift = 24; shift >= 0; shift -= 8)
            header.append(char(value >> shift));
    }
    header.append(QByteArray::fromHex("0806000000"));
    quint32 crc = 0xFFFFFFFF;
    for (const char byte : qAsConst(header)) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
    }
    crc = ~crc;
    QByteArray png = QByteArray::fromHex("89504E470D0A1A0A0000000D") + header;
    for (int shift = 24; shift >= 0; shift -= 8)
        png.append(char(crc >> shift));
    // Without the head of the first data chunk, no reader tells the size.
    return png + QByteArray::fromHex("0000000A49444154");
}
