// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QMap>

/// Finds the end markers of JPEG streams in an image. It keeps in mind where there are none over long stretches, so that
/// measuring many entries whose end is far away, or missing, does not read those bytes once for each.
class JpegEnds
{
public:
    /// The position of the first end marker (FF D9) in \a image from \a from on, -1 if there is none.
    int next(const QByteArray &image, int from);
    /// Lets go of the image that was searched last. Until then it shares that image's bytes, by which it sees that they are still
    /// the same; a write to a shared image copies it.
    void forget();

private:
    QByteArray m_image;
    /// No end marker begins between the key and the value; one does at the value, unless that is the end of the image.
    QMap<int, int> m_stretches;
};
