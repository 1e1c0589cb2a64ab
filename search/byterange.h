// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <cstring>

/// Part of the loaded image that is searched. Borrowed: the bytes must neither move nor change while a search runs.
struct ByteRange
{
    const char *data = nullptr;
    int size = 0;
    /// What a position in the range is short of the address inside the folder: above 0 only for a range that would begin before
    /// the image, whose first bytes do not exist.
    int cutInFront = 0;
};

constexpr int wordBytes = 8;

/// The eight bytes at \a bytes, in the machine's order: words are compared and hashed, never read as numbers.
inline quint64 wordAt(const char *bytes)
{
    quint64 word = 0;
    std::memcpy(&word, bytes, wordBytes);
    return word;
}

/// Spreads the bits of \a word; the upper ones of the result are the best mixed.
inline quint64 hashOfWord(quint64 word)
{
    return (word ^ word >> 29) * Q_UINT64_C(0x9E3779B97F4A7C15);
}
