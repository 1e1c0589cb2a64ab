// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// The CRC-32 (as in zip and PNG) of \a size bytes; \a size is at least 0.
quint32 crc32(const char *bytes, int size);
