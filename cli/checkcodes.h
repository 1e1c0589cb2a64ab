// SPDX-License-Identifier: MIT
#pragma once

#include "model/headerchecksum.h"

class QJsonObject;

namespace cli
{
/// The check codes of an image, as info and checksum show them.
struct CheckCodeFindings
{
    BootChip chip = BootChip::Unknown;
    CheckCodes stored;
    std::optional<CheckCodes> computed; ///< Nothing when the chip is unknown or the image too short.

    bool match() const { return computed && *computed == stored; }
    /// Why nothing was computed; empty when something was.
    QString obstacle() const;
    /// Three lines: the chip, the stored codes, the computed ones.
    QString text() const;
    QJsonObject json() const;
};

/// Looks at a big-endian \a image with a header. \a chosen, unless Unknown, counts instead of the chip that the boot code tells.
CheckCodeFindings checkCodesOf(const QByteArray &image, BootChip chosen = BootChip::Unknown);
}
