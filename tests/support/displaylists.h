// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QtEndian>

/// Composes display lists for tests, word by word.
class TestList
{
public:
    enum Format { Rgba = 0, Yuv = 1, Indexed = 2, IntensityAlpha = 3, Intensity = 4 };

    TestList &word(quint64 value)
    {
        QByteArray bytes(8, '\0');
        qToBigEndian(value, bytes.data());
        m_bytes += bytes;
        return *this;
    }
    TestList &image(int format, int bits, int width, quint32 address)
    {
        return word(quint64(0xFD) << 56 | quint64(format) << 53 | size(bits) << 51 | quint64(width - 1) << 32 | address);
    }
    TestList &tile(int number, int format, int bits, int line, int memory, int palette = 0, int maskT = 0, int maskS = 0)
    {
        return word(quint64(0xF5) << 56 | quint64(format) << 53 | size(bits) << 51 | quint64(line) << 41 | quint64(memory) << 32
                    | quint64(number) << 24 | quint64(palette) << 20 | quint64(maskT) << 14 | quint64(maskS) << 4);
    }
    TestList &tileSize(int number, int width, int height) { return rectangle(0xF2, number, 0, 0, width, height); }
    TestList &loadTile(int number, int left, int top, int width, int height)
    {
        return rectangle(0xF4, number, left, top, width, height);
    }
    TestList &loadBlock(int number, int texels, int rowIncrement)
    {
        return word(quint64(0xF3) << 56 | quint64(number) << 24 | quint64(texels - 1) << 12 | quint64(rowIncrement));
    }
    TestList &loadTlut(int number, int entries) { return rectangle(0xF0, number, 0, 0, entries, 1); }
    TestList &syncs() { return word(Q_UINT64_C(0xE6) << 56).word(Q_UINT64_C(0xE7) << 56).word(Q_UINT64_C(0xE8) << 56); }
    TestList &draw() { return word(Q_UINT64_C(0x0100400805000000)).word(Q_UINT64_C(0x0600020400000406)); }
    TestList &end() { return word(Q_UINT64_C(0xDF) << 56); }

    /// A whole texture at once, as 16-bit texels unless they have 32 bits.
    TestList &block(int format, int bits, int width, int height, quint32 address)
    {
        const int loadBits = qMax(bits, 16);
        const int rowWords = width * bits / 64;
        const int line = width * qMin(bits, 16) / 64;
        image(format, loadBits, 1, address).tile(7, format, loadBits, 0, 0).syncs();
        loadBlock(7, width * height * bits / loadBits, (2048 + rowWords - 1) / rowWords);
        return tile(0, format, bits, line, 0).tileSize(0, width, height);
    }
    TestList &palette(int entries, quint32 address, int memory = 256)
    {
        return image(Rgba, 16, 1, address).tile(7, Rgba, 4, 0, memory).syncs().loadTlut(7, entries);
    }

    const QByteArray &bytes() const { return m_bytes; }

private:
    static quint64 size(int bits) { return bits == 4 ? 0 : bits == 8 ? 1 : bits == 16 ? 2 : 3; }
    TestList &rectangle(int command, int number, int left, int top, int width, int height)
    {
        return word(quint64(command) << 56 | quint64(left * 4) << 44 | quint64(top * 4) << 32 | quint64(number) << 24
                    | quint64((left + width - 1) * 4) << 12 | quint64((top + height - 1) * 4));
    }

    QByteArray m_bytes;
};
