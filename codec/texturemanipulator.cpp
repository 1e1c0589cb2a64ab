// SPDX-License-Identifier: MIT
#include "codec/texturemanipulator.h"

QImage textureManipulator::generateTexture(QByteArray, textureFormat, int, QByteArray)
{
    return QImage();
}

QByteArray textureManipulator::generateData(QImage, textureFormat)
{
    return QByteArray();
}
