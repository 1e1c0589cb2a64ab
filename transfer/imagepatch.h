// SPDX-License-Identifier: MIT
#pragma once

#include "model/byteorder.h"
#include "transfer/bpspatch.h"
#include "transfer/ipspatch.h"

#include <QByteArray>
#include <QString>

/// The kinds of patches for cartridge images.
enum class PatchKind {
    Unknown,
    Bps,
    Ips,
};

/// The kind told from the first bytes of \a patch.
PatchKind patchKindOf(const QByteArray &patch);

/// "BPS" or "IPS"; empty for Unknown.
QString patchKindName(PatchKind kind);

/// The metadata of a BPS patch that was made between two big-endian images.
QByteArray bigEndianMetadata();

/// The byte order that the metadata of a BPS patch name; Unknown when they name none.
ByteOrder orderInMetadata(const QByteArray &metadata);

/// Size in bytes above which a file is no patch for any image.
constexpr qint64 maximumPatchBytes = 512 * 1024 * 1024;

/// Turns the big-endian \a image into what \a patch makes of it, big-endian. \a isCartridge tells whether it is a cartridge
/// image, whose other byte orders make sense: a BPS patch whose checksum is that of the image in another order is applied in that
/// order, which \a madeFor then says. On failure the result is false, \a error says why, and the image is as it was.
bool applyPatch(QByteArray *image, bool isCartridge, const QByteArray &patch, ByteOrder *madeFor, QString *error);
