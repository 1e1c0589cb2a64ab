// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// What an IPS patch says about itself; it has no checksum.
///
/// The format: "PATCH"; records of a 24-bit offset, a 16-bit length and that many bytes, or with length 0 a 16-bit count and the
/// byte to repeat; "EOF"; and, as an extension, the 24-bit length to cut the result to. Numbers are big-endian.
struct IpsFacts
{
    int records = 0;
    int runs = 0; ///< Records that repeat one byte.
    int newBytes = 0; ///< Bytes that the records set.
    int end = 0; ///< First byte behind all records: the result is at least as long before it is cut.
    int cutTo = -1; ///< Length to cut the result to; -1 when it is not cut.
};

bool isIps(const QByteArray &patch);

/// Reads \a patch whole. On failure the result is false and \a error says why.
bool readIps(const QByteArray &patch, IpsFacts *facts, QString *error);

/// What \a patch makes of \a source; a gap behind the source's end is filled with zero bytes. On failure the result is false,
/// \a error says why, and \a target is left alone.
bool applyIps(const QByteArray &source, const QByteArray &patch, QByteArray *target, QString *error);

/// The patch that makes \a target of \a source. False, with the reason in \a error, when bytes behind the first 16 MiB differ,
/// which the format cannot address.
bool createIps(const QByteArray &source, const QByteArray &target, QByteArray *patch, QString *error);
