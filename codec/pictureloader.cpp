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
}

bool isAcceptablePictureSize(const QSize &size)
{
    return qint64(size.width()) * size.height() <= maximumPicturePixels;
}

QImage loadPicture(const QString &path, const std::function<bool()> &isUnwanted)
{
    // Opening a pipe would wait for a writer, and a device may have no end.
    if (!QFileInfo(path).isFile())
        return QImage();
    InterruptibleFile file(path, isUnwanted);
    if (!file.open(QIODevice::ReadOnly))
        return QImage();
    QImageReader reader(&file);
    if (!isAcceptablePictureSize(reader.size()))
        return QImage();
    return reader.read();
}
