// SPDX-License-Identifier: MIT
#include "cli/describedtexture.h"

#include "base/hexnumber.h"
#include "cli/arguments.h"
#include "model/rom.h"

#include <algorithm>

namespace cli
{
QList<QCommandLineOption> textureOptions()
{
    return {
        {QStringLiteral("offset"), QStringLiteral("Without a profile: the texture's address in the image."), QStringLiteral("N")},
        {QStringLiteral("format"), QStringLiteral("Its format: %1.").arg(formatNames()), QStringLiteral("FORMAT")},
        {QStringLiteral("width"), QStringLiteral("Its width in pixels."), QStringLiteral("N")},
        {QStringLiteral("height"), QStringLiteral("Its height in pixels."), QStringLiteral("N")},
        {QStringLiteral("palette"), QStringLiteral("The address of its palette in the image, for ci4 and ci8."),
         QStringLiteral("N")}};
}

bool describesTexture(const Arguments &arguments)
{
    const QList<QCommandLineOption> options = textureOptions();
    return std::any_of(options.begin(), options.end(), [&arguments](const QCommandLineOption &option) {
        return arguments.isSet(option.names().constFirst().toLatin1().constData());
    });
}

void checkDescribedTexture(const Arguments &arguments, bool sizeFromPicture)
{
    arguments.number("offset");
    const std::optional<qint32> width = arguments.number("width");
    const std::optional<qint32> height = arguments.number("height");
    arguments.number("palette");
    const std::optional<textureFormat> format = arguments.format("format");
    if (!arguments.isSet("offset") || !arguments.isSet("format"))
        arguments.reject(QStringLiteral("A texture without a profile needs --offset and --format"));
    if (!format)
        return;
    const bool sizeNeeded = !sizeFromPicture && !textureFormats::isJpeg(format->name);
    if (sizeNeeded && (!width || !height))
        arguments.reject(QStringLiteral("A texture in %1 needs --width and --height").arg(format->name));
    if (width.value_or(1) < 1 || height.value_or(1) < 1)
        arguments.reject(QStringLiteral("--width and --height are at least 1"));
    if (format->usesPalette != arguments.isSet("palette"))
        arguments.reject((format->usesPalette ? QStringLiteral("A texture in %1 needs --palette")
                                              : QStringLiteral("A texture in %1 has no palette"))
                             .arg(format->name));
}

fileTreeFile *describedTexture(const Arguments &arguments, const QSize &size)
{
    auto *texture = new fileTreeFile;
    texture->address = arguments.number("offset").value_or(0);
    texture->name = hexNumber(texture->address);
    texture->format = arguments.format("format").value_or(textureFormats::null).name;
    texture->paletteAddress = arguments.number("palette").value_or(0);
    texture->width = arguments.number("width").value_or(size.width());
    texture->height = arguments.number("height").value_or(size.height());
    return texture;
}
}
