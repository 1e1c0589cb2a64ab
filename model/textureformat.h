// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>

/// One pixel format of the console's texture memory.
class textureFormat
{
public:
    QString name;             ///< The key: lower case, as the file list stores it.
    QString description;      ///< One sentence for the user.
    double bytesPerPixel = 0; ///< 0.5 for the 4-bit formats.
    bool usesPalette = false; ///< Pixels are indices into a palette of rgb5a1 words.
};

/// The formats the console's texture unit reads, and JPEG, which some games decode in software.
namespace textureFormats
{
extern const textureFormat i4;
extern const textureFormat ia4;
extern const textureFormat i8;
extern const textureFormat ia8;
extern const textureFormat ia16;
extern const textureFormat rgb5a1;
extern const textureFormat rgba32;
extern const textureFormat ci8;
extern const textureFormat ci4;
extern const textureFormat jpeg; ///< Its bytesPerPixel is a placeholder: a JPEG is measured by its markers.
extern const textureFormat null; ///< Stands for an unknown format; not in the map.

/// The ten real formats by name, ordered by name. Look-ups are exact and case-sensitive.
QMap<QString, textureFormat> getAsMap();

/// The description of \a format in the language of the program's texts.
QString describe(const textureFormat &format);
}
