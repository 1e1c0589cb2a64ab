// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <cstring>

/// Part of the loaded image that is searched. Borrowed: the bytes must neither move nor change while a search runs.
struct ByteRange
{
    const char *data = nullptr;
    int size = 0;
    /// Add this to a position in the range to get the offset in the folder. Above 0 only if the folder begins before the image.
    int cutInFront = 0;
};

constexpr int wordBytes = 8;

/// The eight bytes at \a bytes in native order: words are only compared and hashed.
inline quint64 wordAt(const char *bytes)
{
    quint64 word = 0;
    std::memcpy(&word, bytes, wordBytes);
    return word;
}

/// A multiplicative hash of \a word; the upper bits are the best mixed.
inline quint64 hashOfWord(quint64 word)
{
    return (word ^ word >> 29) * Q_UINT64_C(0x9E3779B97F4A7C15);
}
