// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// What a BPS patch says about itself.
///
/// The format: "BPS1", three numbers (bytes of the source, of the target, of the metadata), the metadata, actions up to the last
/// twelve bytes, and three little-endian CRC-32 sums, of the source, of the target, and of the patch before this last sum.
/// A number has seven bits a byte, the lowest first, the last byte marked by bit 7; each further byte adds 1 to what it counts,
/// so that no number can be written in two ways.
struct BpsFacts
{
    int sourceBytes = 0;
    int targetBytes = 0;
    QByteArray metadata; ///< By convention XML in UTF-8; empty when there is none. Untrusted.
    quint32 sourceCrc = 0;
    quint32 targetCrc = 0;
    int actions = 0;
    int newBytes = 0; ///< Target bytes that the patch itself holds.
};

bool isBps(const QByteArray &patch);

/// Reads \a patch whole and checks all that can be checked without the source: its own checksum, and that its actions stay inside
/// source, target and patch and fill the target exactly. On failure the result is false and \a error says why.
bool readBps(const QByteArray &patch, BpsFacts *facts, QString *error);

/// The target that \a patch makes of \a source. The three checksums are compared first and last: on failure the result is false,
/// \a error says why, and \a target is left alone. A target above maximumImageBytes is refused.
bool applyBps(const QByteArray &source, const QByteArray &patch, QByteArray *target, QString *error);

/// The patch that makes \a target of \a source, with \a metadata in it.
QByteArray createBps(const QByteArray &source, const QByteArray &target, const QByteArray &metadata);
