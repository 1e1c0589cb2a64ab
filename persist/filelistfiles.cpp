// SPDX-License-Identifier: MIT
#include "persist/filelistfiles.h"

#include "persist/filelist.h"
#include "persist/imagefile.h"
#include "persist/savefile.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDebug>
#include <QFileInfo>

namespace
{
class FileListTexts
{
    Q_DECLARE_TR_FUNCTIONS(FileListFiles)
};

QByteArray checksumOf(const QByteArray &list)
{
    return QCryptographicHash::hash(list, QCryptographicHash::Md5); // Tells changes apart; nobody gains by a forged one.
}

bool holds(const QString &path, const QByteArray &bytes)
{
    QByteArray content;
    QString error;
    return QFileInfo(path).size() == bytes.size() && readWholeFile(path, &content, &error) && content == bytes;
}

/// Writes \a bytes to a new file, \a first or else \a base with a number, unless one of those that exist holds them. Returns its
/// path; empty, with the reason in \a error, when that fails. No link is written through.
QString keepCopy(const QString &first, const QString &base, const QByteArray &bytes, QString *error)
{
    constexpr int mostCopies = 1000;
    QString path = first;
    for (int number = 2; number <= mostCopies; ++number) {
        const QFileInfo info(path);
        const bool isFree = !info.exists() && !info.isSymLink();
        if (isFree && saveNew(path, bytes, error, Flush::Yes))
            return path;
        // Another program may have been quicker.
        if (isFree && !QFileInfo::exists(path))
            return QString();
        if (!QFileInfo(path).isSymLink() && holds(path, bytes))
            return path;
        path = base + QLatin1Char('.') + QString::number(number);
    }
    *error = FileListTexts::tr("There are too many copies already");
    return QString();
}
}

FileListFiles::Reading FileListFiles::read(const QString &path, int imageSize, fileTreeDirectory *root,
                                           FileListObserver *observer, QString *error, QString *copy)
{
    m_known.remove(path);
    QByteArray document;
    if (!readWholeFile(path, &document, error))
        return Reading::NotOpened;
    const bool complete = readFileList(document, imageSize, root, observer, error);
    if (!complete && copy) {
        QString reason;
        const QString damaged = path + QLatin1String(".damaged");
        *copy = keepCopy(damaged, damaged, document, &reason);
        if (copy->isEmpty())
            qDebug().noquote() << damaged + QLatin1Char(':') << reason;
    }
    if (complete || (copy && !copy->isEmpty()))
        m_known.insert(path, checksumOf(document));
    return complete ? Reading::Done : Reading::Malformed;
}

bool FileListFiles::lock(const QString &path, QString *error)
{
    m_lockedPath.clear();
    if (!m_lock.lock(path, error))
        return false;
    m_lockedPath = path;
    return true;
}

/// Copies the list at \a path unless it is the known one. False, with the reason in \a error, when there is one without a copy.
bool FileListFiles::keepUnknown(const QString &path, QString *error) const
{
    const QFileInfo info(path);
    if (!info.exists() || info.isDir())
        return true;
    QByteArray document;
    QString reason;
    if (readWholeFile(path, &document, &reason)) {
        if (checksumOf(document) == m_known.value(path))
            return true;
        const QString copy = keepCopy(path + QLatin1String(".1"), path, document, &reason);
        if (!copy.isEmpty()) {
            qDebug().noquote() << path + QLatin1String(": It is not the list that was read or written last; it is kept in")
                               << copy;
            return true;
        }
    }
    *error = FileListTexts::tr("The list that is there was not read whole, and no copy of it could be made: %1").arg(reason);
    return false;
}

FileListFiles::Writing FileListFiles::write(const QString &path, fileTreeDirectory *root, QString *error)
{
    FileLock once;
    if ((m_lockedPath != path && !once.lock(path, error)) || !keepUnknown(path, error))
        return Writing::NotOpened;
    // Writing sorts the table, which has to stay as it is when the file cannot be opened.
    QBuffer list;
    const auto write = [&list, root, error](QIODevice *device) {
        list.open(QIODevice::WriteOnly | QIODevice::Truncate);
        return writeFileList(root, &list, error) && device->write(list.data()) == list.size();
    };
    if (!saveWhole(path, write, error))
        return list.isOpen() ? Writing::NotWritten : Writing::NotOpened;
    m_known.insert(path, checksumOf(list.data()));
    return Writing::Done;
}
