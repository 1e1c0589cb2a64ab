// SPDX-License-Identifier: MIT
#pragma once

#include "base/progress.h"
#include "model/bulkadder.h"
#include "model/rom.h"
#include "support/pictures.h"
#include "transfer/texturewriter.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>

/// Keeps what work has to say.
class KeptLog : public WorkLog
{
public:
    void debug(const QString &line) override { lines << line; }
    void status(const QString &text, int milliseconds) override
    {
        statuses << text;
        durations << milliseconds;
    }
    void warning(const QString &text) override { warnings << text; }
    void notImported(const QString &text) override { left << text; }

    QStringList lines;
    QStringList statuses;
    QList<int> durations;
    QStringList warnings;
    QStringList left; ///< What was not imported.
};

/// Keeps the values that work reports.
class KeptProgress : public Progress
{
public:
    void setValue(int value) override { values << value; }

    QList<int> values;
};

/// A texture that an import has handed over.
struct HandedOver
{
    QImage picture;
    int address;
    QString format;
    QByteArray rawPicture;
};

inline TextureSink keepIn(QList<HandedOver> *list)
{
    return [list](const QImage &picture, int address, const QString &format, const QByteArray &rawPicture) {
        list->append({picture, address, format, rawPicture});
    };
}

/// A new texture, listed in \a folder.
inline fileTreeFile *newTexture(fileTreeDirectory *folder, const QString &name, int address, const QString &format = "rgba32",
                                int width = 4, int height = 4, int paletteAddress = 0)
{
    auto *texture = new fileTreeFile;
    texture->name = name;
    texture->address = address;
    texture->format = format;
    texture->width = width;
    texture->height = height;
    texture->paletteAddress = paletteAddress;
    return folder->addFile(texture);
}

/// \a count textures in i8, all in \a folder and each \a stride bytes behind the one before it. One by one, naming them would
/// take long.
inline void addManyTextures(fileTreeDirectory *folder, int count, int stride, int width, int height, const QString &name = "%1")
{
    BulkAdder adder(folder);
    for (int i = 0; i < count; ++i) {
        auto *texture = new fileTreeFile;
        texture->name = name.arg(i);
        texture->address = stride * i;
        texture->format = "i8";
        texture->width = width;
        texture->height = height;
        adder.addFile(texture);
    }
}

/// A new folder, listed in \a parent.
inline fileTreeDirectory *newFolder(fileTreeDirectory *parent, const QString &name, int address = 0)
{
    auto *folder = new fileTreeDirectory;
    folder->name = name;
    folder->address = address;
    return parent->addDirectory(folder);
}
