// SPDX-License-Identifier: MIT
#pragma once

#include "codec/compressedblock.h"

#include <QVector>

class Progress;

/// The compressed blocks of an image.
struct BlockList
{
    QVector<CompressedBlock> blocks; ///< By address; none lies inside another.
    /// Where the search was given up, because the image is made of headers that cost too much; its size when it was not.
    int searchedUpTo = 0;
};

/// Finds all blocks of \a image that decode completely, at any address, in one pass. Behind a block the search goes on at its
/// end, so headers that only look like one inside of it cost nothing. All headers that lead to nothing may cost together what
/// decoding a few times the image costs; then the search ends. \a progress may be null; when it is cancelled, the search ends as
/// well.
BlockList findBlocks(const QByteArray &image, Progress *progress = nullptr);
