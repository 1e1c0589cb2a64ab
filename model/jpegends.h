// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

/// The position of the first JPEG end marker (FF D9) in \a image from byte \a from on, 0 to the image's size; -1 if there is
/// none. Where the marker is not near, all markers of the image are found once and kept, so that asking for many positions does
/// not read the rest of the image each time.
///
/// The kept markers are those of a copy that shares the image's bytes. Any write to the image, also directly to ROM::data, then
/// gives it other bytes, which tells that the markers are outdated. The price is that such a write copies the image once.
int nextJpegEnd(const QByteArray &image, int from);

/// Discards the kept markers and the shared copy, so that the next write copies nothing.
void forgetJpegEnds();
