// SPDX-License-Identifier: MIT
#pragma once

#include "codec/codepath.h"
#include "codec/texelcoding.h"

#include <QRgb>

/// Writes the texels of \a count pixels in a direct-colour \a coding to \a out, which has room for them. With 4 bits a texel two
/// pixels share a byte, the first in its high half; the pixel missing beside an odd last one counts as 0. The two must not
/// overlap. Indexed codings, Jpeg and Unknown write nothing.
void encodeColours(TexelCoding coding, const QRgb *pixels, qint64 count, uchar *out, CodePath path = bestCodePath());

/// Packs \a count colour indices into \a out, two to a byte: the first's low 4 bits above the second, which is added unmasked.
void packIndexPairs(const uchar *indices, qint64 count, uchar *out);
