// SPDX-License-Identifier: MIT
#include "model/headerchecksum.h"

#include "base/crc32.h"

#include <QtEndian>

namespace
{
constexpr int firstCodeOffset = 0x10;
constexpr int secondCodeOffset = 0x14;
constexpr int headerBytes = 0x40;
constexpr int bootCodeEnd = 0x1000;

quint32 seedOf(BootChip chip)
{
    switch (chip) {
    case BootChip::Cic6103: return 0xA3886759;
    case BootChip::Cic6105: return 0xDF26F436;
    case BootChip::Cic6106: return 0x1FEA617A;
    case BootChip::Cic6101:
    case BootChip::Cic6102:
    case BootChip::Unknown: break;
    }
    return 0xF8CA4DDC;
}

quint32 rotatedLeft(quint32 word, quint32 bits)
{
    return bits == 0 ? word : word << bits | word >> (32 - bits);
}

/// The six running values of the boot code's loop, named by what changes them.
struct Sums
{
    explicit Sums(quint32 seed) : mixed(seed), chained(seed), parity(seed), carries(seed), rotations(seed), plain(seed) { }

    void add(quint32 word)
    {
        if (plain + word < plain)
            ++carries;
        plain += word;
        parity ^= word;
        const quint32 rotated = rotatedLeft(word, word & 31);
        rotations += rotated;
        chained ^= chained > word ? rotated : plain ^ word;
    }

    quint32 mixed;
    quint32 chained;
    quint32 parity;
    quint32 carries;
    quint32 rotations;
    quint32 plain;
};
}

QString bootChipName(BootChip chip)
{
    switch (chip) {
    case BootChip::Cic6101: return QStringLiteral("6101/7102");
    case BootChip::Cic6102: return QStringLiteral("6102/7101");
    case BootChip::Cic6103: return QStringLiteral("6103/7103");
    case BootChip::Cic6105: return QStringLiteral("6105/7105");
    case BootChip::Cic6106: return QStringLiteral("6106/7106");
    case BootChip::Unknown: break;
    }
    return QStringLiteral("unknown");
}

BootChip bootChipNamed(const QString &name)
{
    for (const BootChip chip : {BootChip::Cic6101, BootChip::Cic6102, BootChip::Cic6103, BootChip::Cic6105, BootChip::Cic6106}) {
        const QString both = bootChipName(chip);
        if (name == both || name == both.left(4) || name == both.right(4))
            return chip;
    }
    return BootChip::Unknown;
}

BootChip bootChipOf(const QByteArray &image)
{
    if (image.size() < bootCodeEnd)
        return BootChip::Unknown;
    switch (crc32(image.constData() + headerBytes, bootCodeEnd - headerBytes)) {
    case 0x6170A4A1:
    case 0x009E9EA3: return BootChip::Cic6101;
    case 0x90BB6CB5: return BootChip::Cic6102;
    case 0x0B050EE0: return BootChip::Cic6103;
    case 0x98BC2C86: return BootChip::Cic6105;
    case 0xACC8580A: return BootChip::Cic6106;
    default: return BootChip::Unknown;
    }
}

std::optional<CheckCodes> storedCheckCodes(const QByteArray &image)
{
    if (image.size() < headerBytes)
        return std::nullopt;
    return CheckCodes {qFromBigEndian<quint32>(image.constData() + firstCodeOffset),
                       qFromBigEndian<quint32>(image.constData() + secondCodeOffset)};
}

std::optional<CheckCodes> computedCheckCodes(const QByteArray &image, BootChip chip)
{
    if (chip == BootChip::Unknown || image.size() < checkedImageBytes)
        return std::nullopt;
    // This boot code mixes words of its own into the first code.
    const char *bootWords = image.constData() + headerBytes + 0x710;
    const char *bytes = image.constData();
    Sums sums(seedOf(chip));
    for (int i = bootCodeEnd; i < checkedImageBytes; i += 4) {
        const auto word = qFromBigEndian<quint32>(bytes + i);
        sums.add(word);
        sums.mixed += (chip == BootChip::Cic6105 ? qFromBigEndian<quint32>(bootWords + (i & 0xFF)) : sums.rotations) ^ word;
    }
    switch (chip) {
    case BootChip::Cic6103:
        return CheckCodes {(sums.plain ^ sums.carries) + sums.parity, (sums.rotations ^ sums.chained) + sums.mixed};
    case BootChip::Cic6106:
        return CheckCodes {sums.plain * sums.carries + sums.parity, sums.rotations * sums.chained + sums.mixed};
    default: return CheckCodes {sums.plain ^ sums.carries ^ sums.parity, sums.rotations ^ sums.chained ^ sums.mixed};
    }
}

void storeCheckCodes(QByteArray *image, const CheckCodes &codes)
{
    if (image->size() < headerBytes)
        return;
    qToBigEndian(codes.first, image->data() + firstCodeOffset);
    qToBigEndian(codes.second, image->data() + secondCodeOffset);
}
