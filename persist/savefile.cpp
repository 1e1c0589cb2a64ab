// SPDX-License-Identifier: MIT
#include "persist/savefile.h"

#include "persist/directwrite.h"
#include "persist/filesync.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryFile>

#include <cerrno>

namespace
{
using Writer = std::function<bool(QIODevice *)>;

/// The file that \a path stands for: where all links lead, also to a file that is not there yet. Empty when they lead in a
/// circle.
QString fileBehindLinks(QString path)
{
    constexpr int mostLinks = 40;
    for (int i = 0; i < mostLinks; ++i) {
        const QFileInfo info(path);
        if (!info.isSymLink())
            return path;
        path = info.exists() ? info.canonicalFilePath() : info.symLinkTarget();
    }
    return QString();
}

/// Whether a name with the seven characters behind it that make it unique is too long for a file beside the old one.
bool hasLongName(const QString &path)
{
    constexpr int longestName = 255 - 7;
    return QFile::encodeName(QFileInfo(path).fileName()).size() > longestName;
}

bool replaceDirectly(const QString &path, const Writer &write, QString *error)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (write(&buffer))
        return writeDirectly(path, buffer.data(), error);
    *error = buffer.errorString();
    return false;
}

/// Why the last operation on \a file, before which errno was 0, failed. A file that could not get its name does not always know.
QString reasonOf(const QFileDevice &file)
{
    const int systemError = errno;
    return systemError != 0 && file.errorString() == QIODevice::tr("Unknown error") ? qt_error_string(systemError)
                                                                                    : file.errorString();
}

/// Collects what is written and hands it on in large parts. Unlike the buffer of the file itself it finds out why one was not
/// taken whole.
class Collector : public QIODevice
{
public:
    explicit Collector(QFileDevice *file) : m_file(file) { open(WriteOnly); }

    bool handOn()
    {
        const bool written = writeAll(m_file, m_bytes);
        if (!written)
            setErrorString(m_file->errorString());
        m_bytes.clear();
        return written;
    }

protected:
    qint64 readData(char *, qint64) override { return -1; }

    qint64 writeData(const char *data, qint64 length) override
    {
        constexpr int partSize = 1024 * 1024;
        m_bytes.append(data, int(length));
        return m_bytes.size() < partSize || handOn() ? length : -1;
    }

private:
    QFileDevice *m_file;
    QByteArray m_bytes;
};

bool replace(QSaveFile *file, const Writer &write, QString *error)
{
    const QString path = file->fileName();
    takeOwnerFrom(path, file);
    Collector collector(file);
    if (!write(&collector) || !collector.handOn()) {
        *error = collector.errorString();
        return false;
    }
    // Committing flushes to the disk as well, but takes a failure of that for a success.
    if (!syncFile(file, error))
        return false;
    errno = 0;
    if (!file->commit()) {
        *error = reasonOf(*file);
        return false;
    }
    return syncFolder(QFileInfo(path).absolutePath(), error);
}
}

bool saveWhole(const QString &path, const Writer &write, QString *error)
{
    const QString target = fileBehindLinks(path);
    const QFileInfo old(target);
    if (target.isEmpty() || (old.exists() && !old.isFile() && !old.isDir())) {
        *error = QCoreApplication::translate("SaveFile", "It is not a regular file");
        return false;
    }
    if (old.isFile() && hasLongName(target))
        return replaceDirectly(target, write, error);
    QSaveFile file(target);
    errno = 0;
    if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return replace(&file, write, error);
    const bool folderAllowsNoFile = file.error() == QFileDevice::OpenError && (errno == EACCES || errno == EPERM);
    if (folderAllowsNoFile && old.isFile())
        return replaceDirectly(target, write, error);
    *error = file.errorString();
    return false;
}

bool saveWhole(const QString &path, const QByteArray &bytes, QString *error)
{
    return saveWhole(
        path, [&bytes](QIODevice *device) { return device->write(bytes) == bytes.size(); }, error);
}

bool saveNew(const QString &path, const QByteArray &bytes, QString *error)
{
    // Nameless until it is whole, where the file system can do that.
    QTemporaryFile file(QFileInfo(path).absolutePath() + QLatin1String("/.quillary-XXXXXX"));
    if (!openUnbuffered(&file)) {
        *error = file.errorString();
        return false;
    }
    takeUsualPermissions(&file);
    errno = 0;
    if (writeAll(&file, bytes) && file.rename(path)) {
        file.setAutoRemove(false);
        return true;
    }
    *error = reasonOf(file);
    return false;
}
