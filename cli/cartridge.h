// SPDX-License-Identifier: MIT
#pragma once

#include "cli/command.h"
#include "model/byteorder.h"
#include "persist/filelock.h"

#include <QString>

class QJsonObject;

namespace cli
{
class Arguments;

/// Facts about the file of the loaded image. The image itself is in currentROM, big-endian.
struct OpenedImage
{
    QString path;
    ByteOrder order = ByteOrder::Unknown; ///< Of the file; Unknown for what is no cartridge image and was taken as it is.
    int size = 0; ///< In bytes.
    QByteArray original; ///< The bytes at opening, big-endian: shared with currentROM until these change.
    FileLock lock; ///< On the file, for a command that writes over it.
};

/// "z64", "v64" or "n64"; "unknown" for Unknown.
QString byteOrderName(ByteOrder order);

/// The order of that name, Unknown for any other text.
ByteOrder byteOrderNamed(const QString &name);

/// Reads the image at \a path into \a bytes, big-endian, and sets \a order to the byte order of the file. On failure the result
/// is false and the error is printed.
bool readImage(const QString &path, QByteArray *bytes, ByteOrder *order, Streams &streams);

/// Reads the image that is the first positional argument into currentROM, with an empty file table. With --in-place the file is
/// locked from then on, so that of two commands none undoes the other's work. On failure the result is false and the error is
/// printed.
bool openImage(const Arguments &arguments, OpenedImage *image, Streams &streams);

/// Whether \a path leads to the image that is the first positional argument, under whatever name.
bool isImageItself(const Arguments &arguments, const QString &path);

/// Checks that it is said where a changed image goes: to --output, which may not be the image itself under whatever path, or over
/// it with --in-place. Rejects the arguments when not.
void checkImageWriting(const Arguments &arguments);

/// Writes currentROM's bytes, turned to \a order, where --output or --in-place says, whole or not at all, and says so; with
/// --dry-run it only says what would change, and with --json nothing. Returns an exit status.
int writeImage(const Arguments &arguments, const OpenedImage &image, Streams &streams, ByteOrder order = ByteOrder::BigEndian);

/// The bytes in which two images differ.
struct ByteChanges
{
    qint64 count = 0;
    int first = -1; ///< Address; -1 when there is none.
    int last = -1;

    /// "N bytes from ADDRESS to ADDRESS"; empty when there is none.
    QString text() const;
};

/// The bytes in which \a after differs from \a before; those that only one of them has count.
ByteChanges changesBetween(const QByteArray &before, const QByteArray &after);

/// What writeImage() with the same arguments writes, for a command's --json, by which writeImage() itself prints nothing. Call it
/// before that: writing in another order lets go of the image.
QJsonObject imageWritingJson(const Arguments &arguments, const OpenedImage &image, ByteOrder order = ByteOrder::BigEndian);

/// As writeImage(), but a file that would stay the same is not written, which is said: the image itself when no byte of it
/// changes, whatever its byte order, and another file that has these very bytes.
int writeChangedImage(const Arguments &arguments, const OpenedImage &image, Streams &streams);
}
