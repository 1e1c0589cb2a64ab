// SPDX-License-Identifier: MIT
#pragma once

#include "cli/command.h"

#include <QSize>

class fileTreeFile;

namespace cli
{
class Arguments;

/// The options that describe a texture without any profile: --offset, --format, --width, --height, --palette.
QList<QCommandLineOption> textureOptions();

/// Whether any of them is given, so that no entry of a profile is meant.
bool describesTexture(const Arguments &arguments);

/// Rejects the arguments when what is given of the options does not describe a texture: offset and format belong to each, a
/// palette to the formats that use one and to no other, and to all but JPEG width and height, unless \a sizeFromPicture.
void checkDescribedTexture(const Arguments &arguments, bool sizeFromPicture);

/// The texture that the options describe, listed nowhere, with \a size where they say none. Not owned.
fileTreeFile *describedTexture(const Arguments &arguments, const QSize &size = QSize());
}
