// SPDX-License-Identifier: MIT
#include "codec/pictureloader.h"

#include <QFileInfo>
#include <QImageReader>

bool isAcceptablePictureSize(const QSize &size)
{
    return qint64(size.width()) * size.height() <= maximumPicturePixels;
}

QImage loadPicture(const QString &path)
{
    // Opening a pipe would wait for a writer, and a device may have no end.
    if (!QFileInfo(path).isFile())
        return QImage();
    QImageReader reader(path);
    if (!isAcceptablePictureSize(reader.size()))
        return QImage();
    return reader.read();
}
