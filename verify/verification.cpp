// SPDX-License-Identifier: MIT
#include "verify/verification.h"

#include "base/hexnumber.h"
#include "codec/texturemanipulator.h"
#include "model/tablewalk.h"
#include "model/textureformat.h"

#include <QHash>

#include <algorithm>

namespace
{
constexpr int mostOverlapsNamed = 10;

bool isInside(const ByteSpan &span)
{
    return span.begin >= 0 && span.end <= currentROM.data.size();
}

QString spanText(const ByteSpan &span)
{
    // Wide enough for what lies far behind any image, which eight digits would wrap.
    const auto address = [](qint64 value) {
        return value < 0 ? QLatin1Char('-') + hexNumber(qint32(qMin<qint64>(-value, 0x7FFFFFFF)))
                         : QLatin1String("0x") + QString::number(value, 16).toUpper().rightJustified(8, QLatin1Char('0'));
    };
    return QStringLiteral("%1 to %2").arg(address(span.begin), address(span.end));
}

QString sizeText(const QSize &size)
{
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

/// Texels whose bytes differ between two texel arrays of \a format.
int differingTexels(const QByteArray &a, const QByteArray &b, const QString &format)
{
    int count = 0;
    if (format == textureFormats::ia4.name) {
        for (int i = 0; i < a.size(); ++i) {
            const int difference = a.at(i) ^ b.at(i);
            count += (difference & 0xF0 ? 1 : 0) + (difference & 0x0F ? 1 : 0);
        }
        return count;
    }
    const int texel = int(textureFormats::find(format)->bytesPerPixel);
    for (int i = 0; i + texel <= a.size(); i += texel)
        count += std::equal(a.cbegin() + i, a.cbegin() + i + texel, b.cbegin() + i) ? 0 : 1;
    return count;
}

/// Looks at one entry at a time and collects what is to be said about it.
class EntryChecker
{
public:
    explicit EntryChecker(Verification *result) : m_result(result) { }

    void check(const fileTreeFile &texture, const ByteSpan &span)
    {
        m_texture = &texture;
        const textureFormat *format = textureFormats::find(texture.format);
        if (!format) {
            add(Finding::Format, QStringLiteral("The format \"%1\" is unknown").arg(texture.format));
            return;
        }
        if (isReadable(*format, span))
            checkPicture(*format);
        const ByteSpan palette = paletteSpanOf(texture);
        if (!isInside(palette))
            add(Finding::Palette, QStringLiteral("The palette, %1, is not inside the image").arg(spanText(palette)));
    }

    void addOverlap(const fileTreeFile &texture, const Overlaps &overlaps, const QList<fileTreeFile *> &all)
    {
        if (overlaps.count == 0)
            return;
        m_texture = &texture;
        QStringList names;
        EntryFinding finding {m_texture, Finding::Overlap, QString(), {}, overlaps.count};
        for (const int other : overlaps.others) {
            finding.others.append(all.at(other));
            names << fullPath(*all.at(other));
        }
        finding.message = QStringLiteral("It overlaps with ") + names.join(QStringLiteral(", "));
        if (overlaps.count > names.size())
            finding.message += QStringLiteral(" and %1 more").arg(overlaps.count - names.size());
        m_result->findings.append(finding);
    }

private:
    void add(Finding finding, const QString &message) { m_result->findings.append({m_texture, finding, message, {}, 0}); }

    bool isReadable(const textureFormat &format, const ByteSpan &span)
    {
        if (textureFormats::isJpeg(format.name))
            return isMeasurableJpeg();
        if (m_texture->width < 1 || m_texture->height < 1) {
            add(Finding::Dimensions, QStringLiteral("It is %1 pixels").arg(sizeText(QSize(m_texture->width, m_texture->height))));
            return false;
        }
        if (!isInside(span)) {
            add(Finding::Outside, QStringLiteral("Its bytes, %1, are not inside the image").arg(spanText(span)));
            return false;
        }
        return true;
    }

    bool isMeasurableJpeg()
    {
        const int address = m_texture->realAddress();
        if (address < 0 || address >= currentROM.data.size()) {
            add(Finding::Outside, QStringLiteral("Its address, %1, is not inside the image").arg(spanText({address, address})));
            return false;
        }
        const int size = m_texture->size();
        if (size > 1)
            return true;
        add(Finding::Jpeg,
            size == -1       ? QStringLiteral("No JPEG begins at its address")
                : size == -2 ? QStringLiteral("The JPEG at its address has no quantization table where one belongs")
                             : QStringLiteral("The JPEG at its address has no end"));
        return false;
    }

    void checkPicture(const textureFormat &format)
    {
        const QByteArray data = m_texture->data();
        const QImage picture = textureManipulator::generateTexture(data, format, m_texture->width, m_texture->palette());
        if (picture.isNull()) {
            add(Finding::Undecodable, QStringLiteral("Its bytes give no picture"));
            return;
        }
        if (textureFormats::isJpeg(format.name))
            return;
        const QSize wanted(m_texture->width, m_texture->height);
        if (picture.size() == wanted)
            checkRoundTrip(format, data, picture);
        else // Half a byte too many pixels: the size in bytes is rounded down.
            add(Finding::Undecodable,
                QStringLiteral("Its bytes give a picture of %1 pixels, not %2").arg(sizeText(picture.size()), sizeText(wanted)));
    }

    void checkRoundTrip(const textureFormat &format, const QByteArray &data, const QImage &picture)
    {
        const QByteArray encoded = textureManipulator::generateData(picture, format);
        if (encoded == data)
            return;
        if (encoded != withClearTexelsCleared(data, format.name)) {
            add(Finding::RoundTrip, QStringLiteral("Its picture encodes to other bytes"));
            return;
        }
        const int count = differingTexels(data, encoded, format.name);
        add(Finding::Transparent,
            (count == 1 ? QStringLiteral("%1 clear texel has a colour that an import of its picture would drop")
                        : QStringLiteral("%1 clear texels have colours that an import of its picture would drop"))
                .arg(count));
    }

    Verification *m_result;
    const fileTreeFile *m_texture = nullptr;
};

/// The number of different textures with a problem; findings of one texture stand together.
int countFaulty(const QVector<EntryFinding> &findings)
{
    int count = 0;
    const fileTreeFile *last = nullptr;
    for (const EntryFinding &finding : findings) {
        if (!isProblem(finding.finding) || finding.texture == last)
            continue;
        last = finding.texture;
        ++count;
    }
    return count;
}
}

const QVector<Finding> &allFindings()
{
    static const QVector<Finding> all {Finding::Format,  Finding::Dimensions,  Finding::Outside,
                                       Finding::Jpeg,    Finding::Undecodable, Finding::RoundTrip,
                                       Finding::Overlap, Finding::Palette,     Finding::Transparent};
    return all;
}

QString findingName(Finding finding)
{
    switch (finding) {
    case Finding::Format: return QStringLiteral("format");
    case Finding::Dimensions: return QStringLiteral("dimensions");
    case Finding::Outside: return QStringLiteral("outside");
    case Finding::Jpeg: return QStringLiteral("jpeg");
    case Finding::Undecodable: return QStringLiteral("undecodable");
    case Finding::RoundTrip: return QStringLiteral("round-trip");
    case Finding::Overlap: return QStringLiteral("overlap");
    case Finding::Palette: return QStringLiteral("palette");
    case Finding::Transparent: return QStringLiteral("transparent");
    }
    return QString();
}

bool isProblem(Finding finding)
{
    return finding != Finding::Transparent;
}

int Verification::count(Finding finding) const
{
    return int(
        std::count_if(findings.begin(), findings.end(), [finding](const EntryFinding &one) { return one.finding == finding; }));
}

ByteSpan spanOf(const fileTreeFile &texture)
{
    const qint64 begin = texture.realAddress();
    const bool hasPixels = textureFormats::isJpeg(texture.format) || (texture.width >= 1 && texture.height >= 1);
    return {begin, begin + (hasPixels ? qMax(qint64(0), texture.unwrappedSize()) : 0)};
}

ByteSpan paletteSpanOf(const fileTreeFile &texture)
{
    const textureFormat *format = textureFormats::find(texture.format);
    if (!format || !format->usesPalette)
        return {};
    const qint64 begin = texture.realPaletteAddress();
    return {begin, begin + textureFormats::paletteBytes(*format)};
}

Verification verifyEntries(const QList<fileTreeFile *> &wanted, const QList<fileTreeFile *> &all, Progress *progress)
{
    Verification result;
    QVector<ByteSpan> spans;
    QHash<const fileTreeFile *, int> places;
    spans.reserve(all.size());
    places.reserve(all.size());
    for (const fileTreeFile *texture : all) {
        places.insert(texture, spans.size());
        spans.append(spanOf(*texture));
    }
    const QVector<Overlaps> overlaps = overlapsOf(spans, mostOverlapsNamed);

    EntryChecker checker(&result);
    progress->setMaximum(wanted.size());
    for (const fileTreeFile *texture : wanted) {
        if (progress->cancelled()) {
            result.cancelled = true;
            break;
        }
        const int place = places.value(texture);
        checker.check(*texture, spans.at(place));
        checker.addOverlap(*texture, overlaps.at(place), all);
        progress->setValue(++result.entries);
    }
    result.faulty = countFaulty(result.findings);
    return result;
}

QVector<ByteSpan> uncoveredSpans(const QList<fileTreeFile *> &all)
{
    QVector<ByteSpan> covered;
    for (const fileTreeFile *texture : all)
        covered << spanOf(*texture) << paletteSpanOf(*texture);
    return gapsBetween(covered, currentROM.data.size());
}

namespace
{
/// Clears the texels of \a texelBytes bytes that \a isClear tells, given where one begins.
template<typename IsClear> void clearTexels(QByteArray *data, int texelBytes, IsClear isClear)
{
    char *const bytes = data->data();
    for (int i = 0; i + texelBytes <= data->size(); i += texelBytes) {
        if (isClear(bytes + i))
            std::fill_n(bytes + i, texelBytes, '\0');
    }
}
}

QByteArray withClearTexelsCleared(QByteArray data, const QString &format)
{
    if (format == textureFormats::rgba32.name) {
        clearTexels(&data, 4, [](const char *texel) { return texel[3] == 0; });
    } else if (format == textureFormats::rgb5a1.name) {
        clearTexels(&data, 2, [](const char *texel) { return (texel[1] & 0x01) == 0; });
    } else if (format == textureFormats::ia4.name) {
        for (char &pair : data)
            pair = char((pair & 0x10 ? pair & 0xF0 : 0) | (pair & 0x01 ? pair & 0x0F : 0));
    } else if (format == textureFormats::ia8.name) {
        clearTexels(&data, 1, [](const char *texel) { return (*texel & 0x0F) == 0; });
    }
    return data;
}
