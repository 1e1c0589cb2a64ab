// SPDX-License-Identifier: MIT
#pragma once

#include "search/byterange.h"
#include "search/displayliststate.h"

/// How much like a picture the bytes of \a image at \a address look as \a texture, from 0 to 1: whether neighbouring pixels are
/// alike while rows further apart are not, and clear pixels lie together. An index beyond the colours that are loaded gives 0, as
/// does one colour alone. \a paletteAddress is -1 when it is unknown: indices then count as alike only when they are equal. Bytes
/// outside the image give 0.
double pictureliness(const ByteRange &image, const TextureReference &texture, qint64 address, qint64 paletteAddress);

/// How much the rows of a texture resemble the next ones, for many places at once. Works on undecoded bytes, which is rougher
/// than pictureliness() but takes a few operations for each byte and place.
class RowLikeness
{
public:
    explicit RowLikeness(const TextureReference &texture);

    /// Whether the texture has rows enough to say anything.
    bool isTelling() const { return m_rows >= 4 && m_rowBytes >= 4; }
    int bytes() const { return m_rowBytes * m_rows; }
    int rowBytes() const { return m_rowBytes; }
    /// Textures of the same kind and row length look alike to atSample().
    int kind() const { return int(m_kind); }

    /// Puts into \a scores what the texture at \a address, at \a address + step and so on, \a count places, is like. All of them
    /// must lie in the image; step is a multiple of eight.
    void score(const ByteRange &image, qint64 address, int step, int count, float *scores);
    /// The same for the eight bytes at \a address alone: 0 where the image ends too early.
    float atSample(const ByteRange &image, qint64 address) const;

    /// What the bytes stand for.
    enum class Kind { Bytes, Nibbles, Indices8, Indices4, Colours16 };

private:
    int difference(quint64 a, quint64 b) const;
    template<Kind kind> void sumUp(const char *data, qint64 left, int words);

    Kind m_kind = Kind::Bytes;
    int m_rowBytes = 0;
    int m_rows = 0;
    QVector<int> m_rough; ///< Sums of differences from row to row up to each word.
    QVector<int> m_varied; ///< Counts of words that differ from the one half the height away.
};
