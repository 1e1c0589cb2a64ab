// SPDX-License-Identifier: MIT
#pragma once

#include "base/hexnumber.h"
#include "model/rom.h"
#include "persist/filelist.h"

#include <QBuffer>
#include <QFile>
#include <QList>
#include <QtGlobal>

#include <malloc.h>
#include <unistd.h>

/// Bytes that the process has on the heap; 0 where the C library does not say, as under the sanitizers.
inline qint64 heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return qint64(info.uordblks) + qint64(info.hblkhd);
}

/// Bytes of the process in main memory, after the heap has given back what is free.
inline qint64 residentBytes()
{
    malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

/// A file list of \a textures textures, twenty to a folder.
inline QByteArray tableList(int textures)
{
    static const char *const formats[] = {"rgba32", "ci4", "ci8", "i8", "ia16", "rgb5a1"};
    constexpr int texturesPerFolder = 20;
    QByteArray list = "<root version=\"2\">\n";
    for (int i = 0; i < textures; ++i) {
        if (i % texturesPerFolder == 0)
            list += QByteArray(i ? "</directory>" : "") + "<directory name=\"Folder " + QByteArray::number(i)
                + "\" address=\"0x00000100\" size=\"0x00010000\">\n";
        list += "<texture name=\"Texture " + QByteArray::number(i) + "\" address=\"" + hexNumber(i * 64).toLatin1()
            + "\" format=\"" + formats[i % 6] + "\" width=\"8\" height=\"8\"/>\n";
    }
    return list + "</directory></root>\n";
}

/// Heap bytes that the nodes of \a list keep once they are in no table any more.
inline double nodeBytesOf(const QByteArray &list)
{
    const qint64 before = heapBytes();
    auto *root = new fileTreeDirectory;
    root->isRoot = true;
    QString error;
    if (!readFileList(list, 1 << 24, root, nullptr, &error))
        qFatal("%s", qPrintable(error));
    root->directories.clear();
    return double(heapBytes() - before);
}
