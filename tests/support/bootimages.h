// SPDX-License-Identifier: MIT
#pragma once

#include "support/images.h"

#include <QByteArray>

#include <array>

/// CRC-32 bit by bit, as a reference.
inline quint32 plainCrcRegister(const QByteArray &bytes)
{
    quint32 value = 0xFFFFFFFFu;
    for (const char byte : bytes) {
        value ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            value = (value >> 1) ^ ((value & 1) ? 0xEDB88320u : 0u);
    }
    return value;
}

/// The four bytes that, behind \a bytes, give the whole the CRC-32 \a wanted: no real boot code is needed to be taken for one.
inline QByteArray forgedTail(const QByteArray &bytes, quint32 wanted)
{
    // Runs the register backwards over four zero bytes; what then differs from the register is what the bytes must be.
    quint32 value = ~wanted;
    for (int bit = 0; bit < 32; ++bit)
        value = (value & 0x80000000u) ? ((value ^ 0xEDB88320u) << 1 | 1u) : value << 1;
    const quint32 difference = value ^ plainCrcRegister(bytes);
    QByteArray tail;
    for (int byte = 0; byte < 4; ++byte)
        tail.append(char(difference >> (8 * byte)));
    return tail;
}

/// An image just long enough for check codes, with noise as boot code of the CRC-32 \a bootCodeCrc.
inline QByteArray bootImage(quint32 bootCodeCrc, int size = 0x101000)
{
    QByteArray image = cartridgeImage(size);
    const QByteArray head = image.mid(0x40, 0xFC0 - 4);
    image.replace(0x40 + head.size(), 4, forgedTail(head, bootCodeCrc));
    return image;
}

/// The check codes by the arithmetic written down plainly, for the chip number \a chip.
inline std::array<quint32, 2> plainCheckCodes(const QByteArray &image, int chip)
{
    const auto word = [&image](int at) {
        return quint32(quint8(image[at])) << 24 | quint32(quint8(image[at + 1])) << 16 | quint32(quint8(image[at + 2])) << 8
            | quint32(quint8(image[at + 3]));
    };
    const quint32 seed = chip == 6103 ? 0xA3886759u : chip == 6105 ? 0xDF26F436u : chip == 6106 ? 0x1FEA617Au : 0xF8CA4DDCu;
    quint32 t1 = seed, t2 = seed, t3 = seed, t4 = seed, t5 = seed, t6 = seed;
    for (int i = 0; i < 0x100000; i += 4) {
        const quint32 d = word(0x1000 + i);
        const quint64 sum = quint64(t6) + d;
        if (sum > 0xFFFFFFFFu)
            t4 = t4 + 1;
        t6 = quint32(sum);
        t3 = t3 ^ d;
        quint32 r = d;
        for (quint32 turn = d % 32; turn > 0; --turn)
            r = r * 2 + (r >= 0x80000000u ? 1 : 0);
        t5 = t5 + r;
        if (t2 > d)
            t2 = t2 ^ r;
        else
            t2 = t2 ^ t6 ^ d;
        if (chip == 6105)
            t1 = t1 + (word(0x750 + i % 256) ^ d);
        else
            t1 = t1 + (t5 ^ d);
    }
    if (chip == 6103)
        return {(t6 ^ t4) + t3, (t5 ^ t2) + t1};
    if (chip == 6106)
        return {t6 * t4 + t3, t5 * t2 + t1};
    return {t6 ^ t4 ^ t3, t5 ^ t2 ^ t1};
}
