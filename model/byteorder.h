// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// The byte orders in which cartridge images circulate.
enum class ByteOrder {
    Unknown, ///< Not recognised: no cartridge image, or a damaged one.
    BigEndian, ///< z64: as the console's bus delivers it.
    ByteSwapped, ///< v64: the two bytes of every 16-bit word exchanged.
    LittleEndian, ///< n64: the four bytes of every 32-bit word reversed.
};

/// Whether an image of \a bytes bytes is looked at for a byte order at all: at least 65 bytes, and whole 32-bit words.
bool hasDetectableByteOrder(int bytes);

/// The order of \a image told from its first eight bytes, the header's bus settings and clock rate; Unknown when none fits.
ByteOrder byteOrderOf(const QByteArray &image);

/// Called with the number of bytes converted so far, about a hundred times a conversion, and with the whole at its end.
using ConversionProgress = std::function<void(int bytes)>;

/// Converts \a image in place between \a order and big-endian; the two conversions are their own inverses.
/// The size must be a multiple of 4; BigEndian and Unknown change nothing and report nothing.
void convertByteOrder(QByteArray *image, ByteOrder order, const ConversionProgress &progress = {});

/// The identifier in the header of a big-endian \a image: the characters at 59 to 62 up to the first zero byte, one for each
/// byte, then the version at 63 in decimal. Empty when the image has no 64 bytes.
QString cartridgeIdentifier(const QByteArray &image);
