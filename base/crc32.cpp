// SPDX-License-Identifier: MIT
#include "base/crc32.h"

#include <zlib.h>

quint32 crc32(const char *bytes, int size)
{
    return quint32(::crc32(0, reinterpret_cast<const Bytef *>(bytes), uInt(size)));
}
