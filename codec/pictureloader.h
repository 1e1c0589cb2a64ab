// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include <functional>

/// Pixels that a picture may have to be loaded or scaled to: far more than any texture, and few enough to fit in memory.
constexpr qint64 maximumPicturePixels = qint64(64) * 1024 * 1024;

/// Whether a picture of \a size has no more than maximumPicturePixels.
bool isAcceptablePictureSize(const QSize &size);

/// The size of the picture in the file at \a path, as far as its header tells, in pixels. Invalid when there is none.
QSize sizeOfPicture(const QString &path);

/// The picture in the file at \a path, its format told by its content. Null when there is none, when it does not decode, or when
/// it claims to be larger than maximumPicturePixels, or much larger than a file of its length can reasonably hold; such a picture
/// is not decoded at all. Null also when \a isUnwanted, which is asked again and again while the file is read, says so.
QImage loadPicture(const QString &path, const std::function<bool()> &isUnwanted = {});
