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
/// The file that \a path stands for: where all links lead, also to a file that does not exist yet. Empty for a circle of links.
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

/// Whether the name with the seven characters that make a temporary file's name unique is too long for a file beside it.
bool hasLongName(const QString &path)
{
    constexpr int longestName = 255 - 7;
    return QFile::encodeName(QFileInfo(path).fileName()).size() > longestName;
}

/// Why the last operation on \a file failed. errno was 0 before it: a file that could not be renamed does not always know.
QString reasonOf(const QFileDevice &file, int systemError)
{
    return systemError != 0 && file.errorString() == QIODevice::tr("Unknown error") ? qt_error_string(systemError)
                                                                                    : file.errorString();
}

using Writer = std::function<bool(QIODevice *)>;

/// Collects what is written and passes it on in large parts. Unlike the buffer of the file itself it finds out why one was not
/// taken whole.
class Collector : public QIODevice
{
public:
    explicit Collector(QFileDevice *file) : m_file(file) { open(WriteOnly); }

    bool passOn()
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
        return m_bytes.size() < partSize || passOn() ? length : -1;
    }

private:
    QFileDevice *m_file;
    QByteArray m_bytes;
};

bool writeDirectly(const QString &path, const Writer &write, QString *error)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (write(&buffer))
        return writeDirectly(path, buffer.data(), error);
    *error = buffer.errorString();
    return false;
}

enum class Replacing { Done, Failed, NotAllowed };

/// Whether \a systemError says that the folder takes no new file, or that none may take the place of the old one: without the
/// permission, in a sticky folder, or when the old file is a mount point.
bool isNotAllowed(int systemError)
{
    return systemError == EACCES || systemError == EPERM || systemError == EBUSY || systemError == EXDEV;
}

Replacing replace(const QString &path, const Writer &write, QString *error)
{
    QSaveFile file(path);
    errno = 0;
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        const bool notAllowed = file.error() == QFileDevice::OpenError && isNotAllowed(errno);
        *error = file.errorString();
        return notAllowed ? Replacing::NotAllowed : Replacing::Failed;
    }
    if (!takeOwnerAndPermissions(path, &file, error))
        return Replacing::Failed;
    Collector collector(&file);
    if (!write(&collector) || !collector.passOn()) {
        *error = collector.errorString();
        return Replacing::Failed;
    }
    // Committing flushes to the disk as well, but takes a failure of that for a success.
    if (!syncFile(&file, error))
        return Replacing::Failed;
    errno = 0;
    if (!file.commit()) {
        const int systemError = errno;
        *error = reasonOf(file, systemError);
        return isNotAllowed(systemError) ? Replacing::NotAllowed : Replacing::Failed;
    }
    return syncFolder(QFileInfo(path).absolutePath(), error) ? Replacing::Done : Replacing::Failed;
}
}

bool saveWhole(const QString &path, const QByteArray &bytes, QString *error)
{
    return saveWhole(
        path, [&bytes](QIODevice *device) { return device->write(bytes) == bytes.size(); }, error);
}

bool saveWhole(const QString &path, const Writer &write, QString *error)
{
    const QString target = fileBehindLinks(path);
    const QFileInfo old(target);
    if (target.isEmpty() || (old.exists() && !old.isFile() && !old.isDir())) {
        *error = QCoreApplication::translate("SaveFile", "It is not a regular file");
        return false;
    }
    Replacing outcome = Replacing::NotAllowed;
    if (!old.isFile() || !hasLongName(target))
        outcome = replace(target, write, error);
    if (outcome != Replacing::NotAllowed || !old.isFile() || !old.isWritable())
        return outcome == Replacing::Done;
    return writeDirectly(target, write, error);
}

bool saveNew(const QString &path, const QByteArray &bytes, QString *error, Flush flush)
{
    // Where the file system can do that, the file has no name until it is whole.
    const QString folder = QFileInfo(path).absolutePath();
    QTemporaryFile file(folder + QLatin1String("/.quillary-XXXXXX"));
    if (!openUnbuffered(&file)) {
        *error = file.errorString();
        return false;
    }
    takeUsualPermissions(&file);
    if (!writeAll(&file, bytes)) {
        *error = file.errorString();
        return false;
    }
    if (flush == Flush::Yes && !syncFile(&file, error))
        return false;
    errno = 0;
    if (!file.rename(path)) {
        *error = reasonOf(file, errno);
        return false;
    }
    file.setAutoRemove(false);
    if (flush == Flush::No || syncFolder(folder, error))
        return true;
    QFile::remove(path); // The name may be gone after a loss of power.
    return false;
}
