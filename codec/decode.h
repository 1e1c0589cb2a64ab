// SPDX-License-Identifier: MIT
#pragma once

#include "codec/codepath.h"
#include "codec/texelcoding.h"

#include <QRgb>

/// Writes the colours of the first \a count texels of a direct-colour \a coding to \a pixels, non-premultiplied. \a data must
/// hold that many texels (no byte beyond them is read) and needs no alignment; the two must not overlap. Indexed codings, Jpeg
/// and Unknown write nothing.
void decodeColours(TexelCoding coding, const uchar *data, QRgb *pixels, qint64 count, CodePath path = bestCodePath());

/// Writes the colour indices of \a count texels of an indexed \a coding to \a indices, beginning with the texel numbered \a first
/// in \a data. Other codings write nothing.
void decodeIndices(TexelCoding coding, const uchar *data, qint64 first, uchar *indices, qint64 count);
