// SPDX-License-Identifier: MIT
#pragma once

#include "model/textureformat.h"

#include <QByteArray>
#include <QImage>
#include <QVector>

#include <bitset>

/// What of a palette has to be written.
struct PaletteRun
{
    int first = 0; ///< Place of the first colour in the palette.
    QImage colours; ///< One row in Format_ARGB32, to be written in rgb5a1.
};

/// What an image holds of a texture before a picture is imported over it.
struct PresentTexture
{
    QByteArray palette; ///< Its rgb5a1 words, big-endian, as far as they lie in the image.
    QByteArray texels; ///< Its indices as the format packs them, as far as they lie in the image.
    std::bitset<256> usedByOthers; ///< Places of the palette that other textures use.
};

/// What \a cartridge holds of a texture in \a format with \a pixels at \a address, and of its palette. The places that others use
/// are left empty.
PresentTexture presentTexture(const QByteArray &cartridge, const textureFormat &format, int address, int paletteAddress,
                              qint64 pixels);

/// Whether a picture has to be turned to indices before it is encoded in \a format: one without a colour table, for a format with
/// a palette. A null picture does not.
bool needsPalette(const QImage &picture, const textureFormat &format);

/// A picture turned to indices, and what that changes. Colours are those of rgb5a1: five bits a channel, and one clear colour
/// that every pixel with an alpha below 255 has.
struct FittedPicture
{
    QImage picture; ///< Format_Indexed8 with the palette it is meant for; null when there is no palette to map to.
    QVector<PaletteRun> changes; ///< Ascending and apart from each other; empty when the palette stays as it is.
    int colours = 0; ///< Different ones in the picture.
    int lostColours = 0; ///< How many of them are shown by another one.
    bool clearBecomesOpaque = false; ///< The palette has no clear colour: what is clear or partly clear becomes opaque.
};

/// \a picture, which is not null, as indices for a texture in \a format (one with a palette), with a palette made for it:
/// - Colours that the present palette has stay at their places, the first place of each; but a texel whose present index already
///   has the wanted colour keeps that index.
/// - Other colours take places that neither the picture nor another texture uses, then those that the picture does not use.
/// - Of more colours than the palette has room for, the ones that show the picture best take the part of all.
/// Places that no new colour takes keep their bytes, also clear ones with colour bits.
FittedPicture fitPalette(const QImage &picture, const textureFormat &format, const PresentTexture &present);

/// The same without a change of the palette: each colour becomes the nearest one of the present palette, and the picture null
/// when none of that lies in the image.
FittedPicture fitToPalette(const QImage &picture, const textureFormat &format, const PresentTexture &present);
