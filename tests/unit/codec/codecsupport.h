// SPDX-License-Identifier: MIT
#pragma once

#include "model/textureformat.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QRandomGenerator>

#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

/// All formats whose texels have one size.
inline QList<textureFormat> texelFormats()
{
    using namespace textureFormats;
    return {rgba32, rgb5a1, i4, ia4, i8, ia8, ia16, ci8, ci4};
}

/// Noise; the same for the same seed.
inline QByteArray noise(int size, quint32 seed)
{
    QRandomGenerator random(seed);
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    return bytes;
}

/// Where two pictures differ in kind, size, colour table or a stored pixel; empty where they are the same. Unlike their
/// operator==, also where two indices stand for one colour.
inline QString difference(const QImage &actual, const QImage &expected)
{
    if (actual.isNull() || expected.isNull())
        return actual.isNull() == expected.isNull() ? QString() : QStringLiteral("only one is null");
    if (actual.format() != expected.format())
        return QStringLiteral("format %1 instead of %2").arg(actual.format()).arg(expected.format());
    if (actual.size() != expected.size())
        return QStringLiteral("%1 rows instead of %2").arg(actual.height()).arg(expected.height());
    if (actual.colorTable() != expected.colorTable())
        return QStringLiteral("colour table");
    const int bytes = actual.width() * actual.depth() / 8;
    for (int y = 0; y < actual.height(); ++y) {
        if (std::memcmp(actual.constScanLine(y), expected.constScanLine(y), size_t(bytes)) != 0)
            return QStringLiteral("row %1").arg(y);
    }
    return QString();
}

/// A copy of some bytes whose last one lies right before a page that cannot be read: one byte too far crashes at once.
class GuardedBytes
{
public:
    explicit GuardedBytes(const QByteArray &bytes) : m_size(bytes.size())
    {
        const size_t page = size_t(sysconf(_SC_PAGESIZE));
        m_readable = (size_t(m_size) + page - 1) / page * page;
        m_mapped = m_readable + page;
        void *memory = mmap(nullptr, m_mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED)
            qFatal("no memory for guarded bytes");
        m_memory = static_cast<char *>(memory);
        std::memcpy(begin(), bytes.constData(), size_t(m_size));
        if (mprotect(m_memory + m_readable, page, PROT_NONE) != 0)
            qFatal("no guard page");
    }
    ~GuardedBytes() { munmap(m_memory, m_mapped); }
    GuardedBytes(const GuardedBytes &) = delete;
    GuardedBytes &operator=(const GuardedBytes &) = delete;

    char *begin() { return m_memory + m_readable - m_size; }

    /// The bytes in place, not copied.
    QByteArray view() { return QByteArray::fromRawData(begin(), m_size); }

private:
    char *m_memory = nullptr;
    size_t m_readable = 0;
    size_t m_mapped = 0;
    int m_size = 0;
};
