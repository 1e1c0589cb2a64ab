// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// The boot chips of the console's cartridges, the North American and the European one of a kind together. The chip decides
/// which boot code a cartridge carries, and by which arithmetic that code checks the header's two check codes at the start.
enum class BootChip {
    Unknown, ///< The boot code is none of the known ones.
    Cic6101, ///< 6101 and 7102; their boot codes differ, their check codes do not.
    Cic6102, ///< 6102 and 7101, in nearly all games.
    Cic6103, ///< 6103 and 7103.
    Cic6105, ///< 6105 and 7105.
    Cic6106, ///< 6106 and 7106.
};

/// The chip's two names as in "6102/7101"; "unknown" for Unknown.
QString bootChipName(BootChip chip);

/// The chip of the given name: one of its two numbers, or both as bootChipName() writes them; Unknown for anything else.
BootChip bootChipNamed(const QString &name);

/// The two words of the header that the console compares with what it computes over the first MiB behind the boot code.
struct CheckCodes
{
    quint32 first = 0;
    quint32 second = 0;

    bool operator==(const CheckCodes &other) const { return first == other.first && second == other.second; }
    bool operator!=(const CheckCodes &other) const { return !(*this == other); }
};

/// The chip whose boot code the big-endian \a image carries; Unknown also when it is too short to carry one.
BootChip bootChipOf(const QByteArray &image);

/// Bytes an image needs before its check codes can be computed: header, boot code, and the MiB that they cover.
constexpr int checkedImageBytes = 0x101000;

/// The check codes in the header of the big-endian \a image; nothing when it is shorter than a header.
std::optional<CheckCodes> storedCheckCodes(const QByteArray &image);

/// The check codes that the console computes for the big-endian \a image with \a chip; nothing when the chip is Unknown or the
/// image shorter than checkedImageBytes.
std::optional<CheckCodes> computedCheckCodes(const QByteArray &image, BootChip chip);

/// Writes \a codes into the header of the big-endian \a image. An image shorter than a header stays as it is.
void storeCheckCodes(QByteArray *image, const CheckCodes &codes);
