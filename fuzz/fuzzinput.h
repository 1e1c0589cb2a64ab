// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>

/// Takes values from the front of a fuzzer's input; zeros once it is used up.
class FuzzInput
{
public:
    FuzzInput(const std::uint8_t *data, std::size_t size) : m_data(data), m_left(size) { }

    std::uint8_t byte()
    {
        if (m_left == 0)
            return 0;
        --m_left;
        return *m_data++;
    }

    std::int32_t number()
    {
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i)
            value = value << 8 | byte();
        return std::int32_t(value);
    }

    QByteArray bytes(int count)
    {
        QByteArray taken;
        while (taken.size() < count && m_left > 0)
            taken.append(char(byte()));
        return taken;
    }

    QByteArray rest() { return bytes(int(m_left)); }

    bool isUsedUp() const { return m_left == 0; }
    bool flag() { return (byte() & 1) != 0; }
    int below(int limit) { return byte() % limit; }

    /// One of \a choices, which are not none.
    template<typename List> auto oneOf(const List &choices) { return choices[below(int(std::size(choices)))]; }

    /// Up to \a most characters, any of them.
    QString text(int most)
    {
        QString text;
        for (int count = below(most + 1); count > 0; --count) {
            const int kind = byte();
            // Mostly plain letters, few of them, so that names meet again.
            text += QChar(kind < 160 ? ushort('a' + kind % 8) : kind < 224 ? ushort(byte()) : ushort(byte() << 8 | byte()));
        }
        return text;
    }

private:
    const std::uint8_t *m_data;
    std::size_t m_left;
};

/// Ends the program, and with it the fuzzer's run, when an invariant does not hold.
inline void require(bool holds, const char *invariant)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", invariant);
    std::abort();
}
