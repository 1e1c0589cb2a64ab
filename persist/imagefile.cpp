// SPDX-License-Identifier: MIT
#include "persist/imagefile.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <limits>

bool readWholeFile(const QString &path, QByteArray *bytes, QString *error)
{
    const QFileInfo info(path);
    // Opening a pipe would wait for a writer, and a device may have no end.
    if (info.exists() && !info.isFile() && !info.isDir()) {
        *error = QCoreApplication::translate("ImageFile", "It is not a regular file");
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return false;
    }
    constexpr qint64 spaceForTheArrayItself = 1024;
    if (file.size() > std::numeric_limits<int>::max() - spaceForTheArrayItself) {
        *error = QCoreApplication::translate("ImageFile", "It is larger than 2 GiB");
        return false;
    }
    const QByteArray content = file.readAll();
    if (file.error() != QFile::NoError) {
        *error = file.errorString();
        return false;
    }
    *bytes = content;
    return true;
}
