// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

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
