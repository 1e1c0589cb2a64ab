// SPDX-License-Identifier: MIT
#include "persist/directwrite.h"

#include "persist/filesync.h"
#include "persist/imagefile.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryFile>

namespace
{
class DirectWriteTexts
{
    Q_DECLARE_TR_FUNCTIONS(DirectWrite)
};

/// A file that holds \a bytes on the disk, in the recovery folder or, without one, in that for temporary files.
bool keep(const QString &path, const QByteArray &bytes, QTemporaryFile *kept, QString *error)
{
    constexpr int longestName = 100; // Leaves room for what makes the name unique, whatever a character takes in a file name.
    const QString name = QFileInfo(path).fileName().left(longestName) + QLatin1String(".XXXXXX");
    for (const QString &folder : {recoveryFolder(), QDir::tempPath()}) {
        kept->setFileTemplate(folder + QLatin1Char('/') + name);
        if (!QDir().mkpath(folder)) {
            *error = DirectWriteTexts::tr("The folder %1 could not be created").arg(folder);
            continue;
        }
        if (!openUnbuffered(kept)) {
            *error = kept->errorString();
            continue;
        }
        // Asking for the name gives the file one, without which it would go with the program.
        if (!kept->fileName().isEmpty() && writeAll(kept, bytes) && syncFile(kept, error))
            return true;
        if (kept->error() != QFile::NoError)
            *error = kept->errorString();
        kept->remove();
        kept->close();
    }
    return false;
}

/// Puts \a bytes into \a file, whose length is \a oldSize. What lies beyond that goes first: it is where the disk may turn out to
/// be full, while nothing of the old content has gone.
bool overwrite(QFile *file, const QByteArray &bytes, int oldSize)
{
    const int common = qMin(oldSize, bytes.size());
    const auto put = [&](int from, int length) {
        return length == 0 || (file->seek(from) && writeAll(file, QByteArray::fromRawData(bytes.constData() + from, length)));
    };
    return put(common, bytes.size() - common) && put(0, common) && file->resize(bytes.size());
}
}

QString recoveryFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QLatin1String("/Brimholt/Quillary/recovery");
}

bool writeDirectly(const QString &path, const QByteArray &bytes, QString *error)
{
    QByteArray old;
    if (!readWholeFile(path, &old, error))
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered)) {
        *error = file.errorString();
        return false;
    }
    QTemporaryFile kept;
    if (!keep(path, bytes, &kept, error)) {
        *error = DirectWriteTexts::tr("The folder allows no new file, and no copy could be kept elsewhere: %1").arg(*error);
        return false;
    }
    qDebug().noquote() << "Writing" << path << "directly; until that is done its content is kept in" << kept.fileName();
    error->clear();
    if (overwrite(&file, bytes, old.size()) && syncFile(&file, error))
        return true;
    if (error->isEmpty())
        *error = file.errorString();
    QString unused;
    if (overwrite(&file, old, bytes.size()) && syncFile(&file, &unused))
        return false;
    kept.setAutoRemove(false);
    *error = DirectWriteTexts::tr("%1. The file is damaged; what should be in it is kept in %2").arg(*error, kept.fileName());
    return false;
}
