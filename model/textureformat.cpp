// SPDX-License-Identifier: MIT
#include "model/textureformat.h"

#include <QCoreApplication>

#include <cmath>

namespace
{
const QMap<QString, textureFormat> &formatMap()
{
    using namespace textureFormats;
    static const QMap<QString, textureFormat> formats = [] {
        QMap<QString, textureFormat> map;
        for (const textureFormat &format : {i4, ia4, i8, ia8, ia16, rgb5a1, rgba32, ci8, ci4, jpeg})
            map.insert(format.name, format);
        return map;
    }();
    return formats;
}
}

namespace textureFormats
{
QMap<QString, textureFormat> getAsMap()
{
    return formatMap(); // Implicitly shared; a caller that writes to it gets a copy of its own.
}

const textureFormat *find(const QString &name)
{
    const auto found = formatMap().constFind(name);
    return found == formatMap().constEnd() ? nullptr : &*found;
}

QString aliasOf(const textureFormat &format)
{
    return format.name == rgb5a1.name ? QStringLiteral("rgba16") : QString();
}

const textureFormat *findByNameOrAlias(const QString &name)
{
    return find(name == aliasOf(rgb5a1) ? rgb5a1.name : name);
}

bool isJpeg(const QString &name)
{
    return name == jpeg.name;
}

bool isJpegInAnyCase(const QString &name)
{
    return name.toLower() == jpeg.name;
}

qint64 bytesOfPixels(const textureFormat &format, qint64 pixels)
{
    constexpr qint64 beyondAnyImage = qint64(1) << 40;
    return qint64(double(qBound(-beyondAnyImage, pixels, beyondAnyImage)) * format.bytesPerPixel);
}

qint64 encodedBytes(const textureFormat &format, qint64 pixels)
{
    return format.bytesPerPixel < 1 ? bytesOfPixels(format, pixels + 1) : bytesOfPixels(format, pixels);
}

int paletteColours(const textureFormat &format)
{
    return format.usesPalette ? int(std::pow(256.0, format.bytesPerPixel)) : 0;
}

int paletteBytes(const textureFormat &format)
{
    constexpr int bytesPerColour = 2;
    return bytesPerColour * paletteColours(format);
}

QString describe(const textureFormat &format)
{
    return QCoreApplication::translate("textureFormats", format.description.toUtf8().constData());
}
}
