// SPDX-License-Identifier: MIT
#include "persist/directwrite.h"

#include "persist/filesync.h"
#include "persist/imagefile.h"
#include "persist/savefile.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUuid>

namespace
{
class DirectWriteTexts
{
    Q_DECLARE_TR_FUNCTIONS(DirectWrite)
};

/// Writes what lies beyond the old size first: there the disk may turn out to be full, while all of the old content is still
/// there.
bool overwrite(QFile *file, const QByteArray &bytes, int oldSize)
{
    const int common = qMin(oldSize, bytes.size());
    return file->seek(common) && writeAll(file, bytes.mid(common)) && file->seek(0) && writeAll(file, bytes.left(common))
        && file->resize(bytes.size());
}
}

QString recoveryFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QLatin1String("/Brimholt/Quillary/recovery");
}

bool writeDirectly(const QString &path, const QByteArray &bytes, QString *error)
{
    constexpr int longestName = 100; // characters, so that the name of the copy is not too long
    QByteArray old;
    if (!readWholeFile(path, &old, error))
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered)) {
        *error = file.errorString();
        return false;
    }
    const QString kept = recoveryFolder() + QLatin1Char('/') + QFileInfo(path).fileName().left(longestName) + QLatin1Char('.')
        + QUuid::createUuid().toString(QUuid::Id128).left(8);
    if (!QDir().mkpath(recoveryFolder()) || !saveNew(kept, bytes, error, Flush::Yes)) {
        *error = DirectWriteTexts::tr("The folder allows no new file, and no copy could be kept in %1").arg(recoveryFolder());
        return false;
    }
    qDebug().noquote() << "Writing" << path << "directly; until that is done its content is kept in" << kept;
    error->clear();
    const bool written = overwrite(&file, bytes, old.size()) && syncFile(&file, error);
    if (!written && error->isEmpty())
        *error = file.errorString();
    QString unused;
    if (written || (overwrite(&file, old, bytes.size()) && syncFile(&file, &unused)))
        QFile::remove(kept);
    else
        *error = DirectWriteTexts::tr("%1. The file is damaged; what should be in it is kept in %2").arg(*error, kept);
    return written;
}
