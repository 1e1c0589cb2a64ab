// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>

/// One pixel format of the console's texture memory.
class textureFormat
{
public:
    QString name; ///< The key: lower case, as the file list stores it.
    QString description; ///< One sentence for the user, in English; describe() translates it.
    double bytesPerPixel = 0; ///< 0.5 for the 4-bit formats.
    bool usesPalette = false; ///< Pixels are indices into a palette of rgb5a1 words.
};

/// The formats that the console's texture unit reads, and JPEG, which some games decode in software. The records are inline
/// variables, so that the static initialisers of every file that includes this header can use them.
namespace textureFormats
{
inline const textureFormat i4 {QStringLiteral("i4"),
                               QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "4 bit per pixel. All channels share value.")),
                               0.5, false};
inline const textureFormat ia4 {
    QStringLiteral("ia4"),
    QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "4 bit per pixel. 3 bit for greyscale channel, 1 bit for alpha channel.")),
    0.5, false};
inline const textureFormat i8 {QStringLiteral("i8"),
                               QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "8 bit per pixel. All channels share value.")),
                               1.0, false};
inline const textureFormat ia8 {
    QStringLiteral("ia8"),
    QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "8 bit per pixel. 4 bit for greyscale channel, 4 bit for alpha channel.")),
    1.0, false};
inline const textureFormat ia16 {
    QStringLiteral("ia16"),
    QStringLiteral(
        QT_TRANSLATE_NOOP("textureFormats", "16 bit per pixel. 8 bit for greyscale channel, 8 bit for alpha channel.")),
    2.0, false};
inline const textureFormat rgb5a1 {
    QStringLiteral("rgb5a1"),
    QStringLiteral(QT_TRANSLATE_NOOP(
        "textureFormats", "16 bit per pixel. 5 bit per color channel, 1 bit for alpha channel. Also known as rgba16.")),
    2.0, false};
inline const textureFormat rgba32 {
    QStringLiteral("rgba32"),
    QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "32 bit per pixel. 8 bit per color channel, 8 bit for alpha channel.")),
    4.0, false};
inline const textureFormat ci8 {QStringLiteral("ci8"),
                                QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "8 bit per pixel. Uses a rgb5a1 palette.")),
                                1.0, true};
inline const textureFormat ci4 {QStringLiteral("ci4"),
                                QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "4 bit per pixel. Uses a rgb5a1 palette.")),
                                0.5, true};
/// Its bytesPerPixel is a placeholder: a JPEG is measured by its markers.
inline const textureFormat jpeg {
    QStringLiteral("jpeg"),
    QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "Uses the JPEG File Interchange Format (JFIF) standard.")), 1.0, false};
/// Stands for an unknown format; not in the map.
inline const textureFormat null {QStringLiteral("null"), QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "Unknown format.")),
                                 0, false};

/// The ten real formats by name, ordered by name. Look-ups are exact and case-sensitive.
QMap<QString, textureFormat> getAsMap();

/// The real format called \a name, exactly; null when there is none. The record lives as long as the program.
const textureFormat *find(const QString &name);

/// Another name that people know \a format by, empty when there is none. Users may type it; nothing stores it.
QString aliasOf(const textureFormat &format);
/// As find(), but takes an alias as well.
const textureFormat *findByNameOrAlias(const QString &name);

/// Whether \a name is exactly "jpeg": the rule wherever the bytes in the image are measured, read or checked.
bool isJpeg(const QString &name);
/// Whether \a name is "jpeg" in any case: the rule wherever an entry is shown, stored, exported or imported.
bool isJpegInAnyCase(const QString &name);

/// Bytes that \a pixels pixels take, truncated toward zero: an odd pixel of a 4-bit format has no byte of its own. Counts beyond
/// any image, 2 to the power of 40, are cut to that. Not for jpeg.
qint64 bytesOfPixels(const textureFormat &format, qint64 pixels);
/// Bytes that encoding \a pixels pixels gives: as bytesOfPixels(), but with an odd pixel of a 4-bit format rounded up.
qint64 encodedBytes(const textureFormat &format, qint64 pixels);

/// Colours in a palette of \a format: 256 to the power of its bytes per pixel, 256 for ci8 and 16 for ci4; 0 without palette.
int paletteColours(const textureFormat &format);
/// Bytes of such a palette, which holds rgb5a1 words.
int paletteBytes(const textureFormat &format);

/// The description of \a format in the language of the program's texts.
QString describe(const textureFormat &format);
}
