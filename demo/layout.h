// SPDX-License-Identifier: MIT
#pragma once

#include "demo/democartridge.h"

namespace demo
{
/// Puts folders and textures into an image, one behind the other.
class Layout
{
public:
    /// An image of \a size bytes, all zero.
    explicit Layout(int size);

    /// Opens the folder \a path; what is added next lies in it, from its start on.
    void enter(const QString &path, int address, int size);
    /// Goes on at \a address, in the root.
    void enterRoot(int address);
    /// Puts down a palette of big-endian rgb5a1 words; the textures with a palette that follow use it.
    void addPalette(const QVector<QRgb> &colours);
    /// Puts down a texture, aligned to eight bytes, and returns its address. \a winter is its picture to import, null for none.
    int add(const QString &name, const QString &format, const QImage &picture, const QImage &winter = QImage());
    /// The same for a texture that the file table does not list.
    int hide(const QString &name, const QString &format, const QImage &picture);
    /// Leaves out \a bytes.
    void skip(int bytes);
    /// Writes \a bytes at \a address.
    void put(int address, const QByteArray &bytes);
    void putWord(int address, quint32 word);

    Cartridge cartridge;

private:
    QString m_folder;
    int m_next = 0;
    int m_palette = -1;
};

/// The bytes of \a picture in \a format. A JPEG is written by Qt, with a fixed quality.
QByteArray encoded(const QImage &picture, const QString &format);
}
