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
    if (!isAcceptablePictureSize(reader.size()))
        return QImage();
    return reader.read();
}
