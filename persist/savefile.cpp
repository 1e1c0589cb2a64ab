// SPDX-License-Identifier: MIT
#include "persist/savefile.h"

#include <QSaveFile>

bool saveWhole(const QString &path, const std::function<bool(QIODevice *)> &write, QString *error)
{
    QSaveFile file(path);
    file.setDirectWriteFallback(true);
    if (file.open(QIODevice::WriteOnly) && write(&file) && file.commit())
        return true;
    *error = file.errorString();
    return false;
}

bool saveWhole(const QString &path, const QByteArray &bytes, QString *error)
{
    return saveWhole(
        path, [&bytes](QIODevice *device) { return device->write(bytes) == bytes.size(); }, error);
}
