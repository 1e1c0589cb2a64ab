// SPDX-License-Identifier: MIT
#pragma once

#include "model/rom.h"

#include <QByteArray>
#include <QRandomGenerator>
#include <utility>

/// The byte-order signature of a big-endian header.
inline QByteArray bigEndianSignature()
{
    return QByteArray::fromHex("803712400000000F");
}

/// A big-endian cartridge image of \a size bytes (at least 64) filled with noise, with the identifier \a id (four characters) and
/// version \a version in its header. The same every time.
inline QByteArray cartridgeImage(int size, const QByteArray &id = "NQLE", quint8 version = 0, quint32 seed = 64)
{
    QByteArray image(size, '\0');
    QRandomGenerator random(seed);
    for (char &byte : image)
        byte = char(random.bounded(256));
    image.replace(0, 8, bigEndianSignature());
    image.replace(59, 4, id);
    image[63] = char(version);
    return image;
}

/// \a image with the bytes of every unit of \a unit bytes reversed: 2 gives v64, 4 gives n64. Byte by byte, as a reference.
inline QByteArray withReversedUnits(QByteArray image, int unit)
{
    for (int start = 0; start + unit <= image.size(); start += unit) {
        for (int i = 0; i < unit / 2; ++i)
            std::swap(image.data()[start + i], image.data()[start + unit - 1 - i]);
    }
    return image;
}

/// Puts currentROM back to what it is at program start, with a new root.
inline void resetCurrentROM()
{
    currentROM = ROM();
}

/// Puts \a image into currentROM as a loaded image with an empty table.
inline void loadIntoCurrentROM(const QByteArray &image)
{
    resetCurrentROM();
    currentROM.data = image;
    currentROM.loaded = true;
    currentROM.root->size = image.size();
}
