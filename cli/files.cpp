// SPDX-License-Identifier: MIT
#include "cli/files.h"

#include "cli/command.h"
#include "persist/imagefile.h"
#include "persist/savefile.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <limits>

#include <unistd.h>

namespace cli
{
namespace
{
bool readStandardInput(QByteArray *bytes, QString *error)
{
    QFile input;
    if (!input.open(STDIN_FILENO, QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        *error = input.errorString();
        return false;
    }
    constexpr int partSize = 1024 * 1024;
    constexpr int mostBytes = std::numeric_limits<int>::max() - 1024; // The array itself takes some as well.
    QByteArray content;
    for (;;) {
        const QByteArray part = input.read(partSize);
        if (part.isEmpty())
            break;
        if (content.size() > mostBytes - part.size()) {
            *error = QStringLiteral("It is larger than 2 GiB");
            return false;
        }
        content += part;
    }
    if (input.error() != QFile::NoError) {
        *error = input.errorString();
        return false;
    }
    *bytes = content;
    return true;
}
}

bool isStandardStream(const QString &path)
{
    return path == QLatin1String("-");
}

bool readInput(const QString &path, QByteArray *bytes, QString *error)
{
    return isStandardStream(path) ? readStandardInput(bytes, error) : readWholeFile(path, bytes, error);
}

bool makeFolderFor(const QString &path, QString *error)
{
    const QString folder = QFileInfo(path).path();
    if (QFileInfo(folder).isDir() || QDir().mkpath(folder))
        return true;
    *error = QStringLiteral("Cannot create folder %1").arg(folder);
    return false;
}

bool writeOutput(const QString &path, const std::function<bool(QIODevice *)> &write, Streams &streams, QString *error)
{
    if (!isStandardStream(path))
        return makeFolderFor(path, error) && saveWhole(path, write, error);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (!write(&buffer)) {
        *error = buffer.errorString();
        return false;
    }
    return streams.writeBytes(buffer.data(), error);
}

bool writeOutput(const QString &path, const QByteArray &bytes, Streams &streams, QString *error)
{
    return writeOutput(
        path, [&bytes](QIODevice *device) { return device->write(bytes) == bytes.size(); }, streams, error);
}
}
