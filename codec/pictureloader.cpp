// SPDX-License-Identifier: MIT
#include "codec/pictureloader.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>

namespace
{
/// A file that reads as broken off from the moment nobody wants it any more, which makes the decoder give up.
class InterruptibleFile : public QFile
{
public:
    InterruptibleFile(const QString &path, const std::function<bool()> &isUnwanted) : QFile(path), m_isUnwanted(isUnwanted) { }

protected:
    qint64 readData(char *data, qint64 maximum) override
    {
        return m_isUnwanted && m_isUnwanted() ? -1 : QFile::readData(data, maximum);
    }

private:
    const std::function<bool()> &m_isUnwanted;
};

/// Opens a regular file only: opening a pipe would wait for a writer, and a device may have no end.
bool openPicture(QFile *file)
{
    return QFileInfo(file->fileName()).isFile() && file->open(QIODevice::ReadOnly);
}

/// Whether a file of \a bytes may hold a picture of \a size. Megabytes of one colour compress to a few kilobytes, so that small
/// files could ask for much time and memory. What is far larger than any texture has to bring some bytes along.
bool isProportionate(const QSize &size, qint64 bytes)
{
    constexpr qint64 pixelsForNothing = qint64(16) * 1024 * 1024;
    constexpr qint64 pixelsPerByte = 64;
    const qint64 pixels = qint64(size.width()) * size.height();
    return pixels <= pixelsForNothing || pixels / pixelsPerByte <= bytes;
}
}

bool isAcceptablePictureSize(const QSize &size)
{
    return qint64(size.width()) * size.height() <= maximumPicturePixels;
}

QSize sizeOfPicture(const QString &path)
{
    QFile file(path);
    return openPicture(&file) ? QImageReader(&file).size() : QSize();
}

QImage loadPicture(const QString &path, const std::function<bool()> &isUnwanted)
{
    InterruptibleFile file(path, isUnwanted);
    if (!openPicture(&file))
        return QImage();
    QImageReader reader(&file);
    if (!isAcceptablePictureSize(reader.size()) || !isProportionate(reader.size(), file.size()))
        return QImage();
    return reader.read();
}
