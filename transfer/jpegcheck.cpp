// SPDX-License-Identifier: MIT
#include "transfer/jpegcheck.h"

#include "model/tablewalk.h"
#include "model/textureformat.h"
#include "transfer/importremarks.h"

#include <algorithm>

bool JpegProblems::areRefused(JpegRule rule) const
{
    return (!notJpeg.isEmpty() && rule != JpegRule::WriteAnyway) || (!overrun.isEmpty() && rule == JpegRule::Refuse);
}

QString JpegProblems::text() const
{
    return notJpeg.isEmpty() || overrun.isEmpty() ? notJpeg + overrun : notJpeg + QStringLiteral("; ") + overrun;
}

JpegProblems JpegChecker::check(const QByteArray &file, const fileTreeFile &texture)
{
    if (!m_measured)
        measureTable();
    JpegProblems problems;
    if (!file.startsWith("\xFF\xD8"))
        problems.notJpeg = QStringLiteral("It is no JPEG: it does not begin with the bytes FF D8");

    constexpr int endIsMissing = 1;
    const auto known = m_sizes.constFind(&texture);
    const int size = known == m_sizes.constEnd() ? texture.size() : *known;
    const bool measured = size > endIsMissing;
    if (measured && file.size() <= size)
        return problems;
    const qint64 address = texture.realAddress();
    const QString others = texturesBetween(address + (measured ? size : 0), address + file.size(), texture);
    if (measured)
        problems.overrun = QStringLiteral("It has %1 bytes and the JPEG it replaces %2; ").arg(file.size()).arg(size)
            + (others.isEmpty() ? QStringLiteral("no texture is listed behind, but the bytes there may be in use")
                                : QStringLiteral("it runs over ") + others);
    else if (!others.isEmpty())
        problems.overrun =
            QStringLiteral("It has %1 bytes and no JPEG is there to replace; it runs over %2").arg(file.size()).arg(others);
    return problems;
}

void JpegChecker::measureTable()
{
    m_measured = true;
    const QList<fileTreeFile *> all = fileTreeContainer().allFiles(m_root);
    for (const fileTreeFile *texture : all) {
        const int size = texture->size();
        const qint64 begin = texture->realAddress();
        if (texture->format == textureFormats::jpeg.name)
            m_sizes.insert(texture, size);
        if (size > 0)
            m_spans.append({begin, begin + size, texture, 0});
    }
    std::stable_sort(m_spans.begin(), m_spans.end(), [](const Span &a, const Span &b) { return a.begin < b.begin; });
    qint64 furthest = 0;
    for (Span &span : m_spans) {
        furthest = std::max(furthest, span.end);
        span.furthestEnd = furthest;
    }
}

/// The paths of the textures, other than \a texture, that have bytes in [\a begin, \a end).
QString JpegChecker::texturesBetween(qint64 begin, qint64 end, const fileTreeFile &texture) const
{
    QStringList paths;
    auto span = std::lower_bound(m_spans.begin(), m_spans.end(), end, [](const Span &one, qint64 at) { return one.begin < at; });
    while (span != m_spans.begin() && (--span)->furthestEnd > begin) {
        const bool isSame = span->begin == texture.realAddress() && span->texture->format == texture.format;
        if (span->end > begin && !isSame)
            paths.prepend(fullPath(*span->texture));
    }
    return listed(paths);
}
