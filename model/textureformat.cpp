// SPDX-License-Identifier: MIT
#include "model/textureformat.h"

#include <QCoreApplication>

namespace textureFormats
{
const textureFormat i4 {QStringLiteral("i4"),
                        QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "4 bit per pixel. All channels share value.")), 0.5,
                        false};
const textureFormat ia4 {
    QStringLiteral("ia4"),
    QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "4 bit per pixel. 3 bit for greyscale channel, 1 bit for alpha channel.")),
    0.5, false};
const textureFormat i8 {QStringLiteral("i8"),
                        QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "8 bit per pixel. All channels share value.")), 1.0,
                        false};
const textureFormat ia8 {
    QStringLiteral("ia8"),
    QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "8 bit per pixel. 4 bit for greyscale channel, 4 bit for alpha channel.")),
    1.0, false};
const textureFormat ia16 {QStringLiteral("ia16"),
                          QStringLiteral(QT_TRANSLATE_NOOP(
                              "textureFormats", "16 bit per pixel. 8 bit for greyscale channel, 8 bit for alpha channel.")),
                          2.0, false};
const textureFormat rgb5a1 {
    QStringLiteral("rgb5a1"),
    QStringLiteral(QT_TRANSLATE_NOOP(
        "textureFormats", "16 bit per pixel. 5 bit per color channel, 1 bit for alpha channel. Also known as rgba16.")),
    2.0, false};
const textureFormat rgba32 {
    QStringLiteral("rgba32"),
    QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "32 bit per pixel. 8 bit per color channel, 8 bit for alpha channel.")),
    4.0, false};
const textureFormat ci8 {QStringLiteral("ci8"),
                         QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "8 bit per pixel. Uses a rgb5a1 palette.")), 1.0,
                         true};
const textureFormat ci4 {QStringLiteral("ci4"),
                         QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "4 bit per pixel. Uses a rgb5a1 palette.")), 0.5,
                         true};
const textureFormat jpeg {
    QStringLiteral("jpeg"),
    QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "Uses the JPEG File Interchange Format (JFIF) standard.")), 1.0, false};
const textureFormat null {QStringLiteral("null"), QStringLiteral(QT_TRANSLATE_NOOP("textureFormats", "Unknown format.")), 0,
                          false};

QMap<QString, textureFormat> getAsMap()
{
    // Implicitly shared: every caller gets the same nodes, and a copy of its own on writing.
    static const QMap<QString, textureFormat> formats = [] {
        QMap<QString, textureFormat> map;
        for (const textureFormat &format : {i4, ia4, i8, ia8, ia16, rgb5a1, rgba32, ci8, ci4, jpeg})
            map.insert(format.name, format);
        return map;
    }();
    return formats;
}

QString describe(const textureFormat &format)
{
    return QCoreApplication::translate("textureFormats", format.description.toUtf8().constData());
}
}
