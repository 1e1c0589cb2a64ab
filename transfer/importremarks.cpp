// SPDX-License-Identifier: MIT
#include "transfer/importremarks.h"

#include "codec/pixelsource.h"
#include "codec/texelcoding.h"
#include "codec/texels.h"
#include "model/tablewalk.h"

#include <QVector>
#include <QtEndian>

#include <algorithm>
#include <vector>

namespace
{
/// \a pixel as it is after being encoded and decoded. Intensity formats without alpha of their own give it as opaque here: that
/// the intensity is their alpha is no matter of the picture. The grey formats take the red channel.
QRgb codedPixel(TexelCoding coding, QRgb pixel)
{
    constexpr quint32 opaque = 0xFF000000U;
    switch (coding) {
    case TexelCoding::Rgba32: return pixel;
    case TexelCoding::Rgb5a1:
    case TexelCoding::Ci8:
    case TexelCoding::Ci4: return texels::fromRgb5a1(texels::toRgb5a1(pixel));
    case TexelCoding::I4: return texels::fromI4(texels::toI4(pixel)) | opaque;
    case TexelCoding::Ia4: return texels::fromIa4(texels::toIa4(pixel));
    case TexelCoding::I8: return texels::fromI8(texels::toI8(pixel)) | opaque;
    case TexelCoding::Ia8: return texels::fromIa8(texels::toIa8(pixel));
    case TexelCoding::Ia16: return texels::fromIa16(texels::toIa16(pixel));
    case TexelCoding::Jpeg:
    case TexelCoding::Unknown: break;
    }
    return pixel;
}

bool isGrey(TexelCoding coding)
{
    switch (coding) {
    case TexelCoding::I4:
    case TexelCoding::Ia4:
    case TexelCoding::I8:
    case TexelCoding::Ia8:
    case TexelCoding::Ia16: return true;
    default: return false;
    }
}

bool hasNoAlpha(TexelCoding coding)
{
    return coding == TexelCoding::I4 || coding == TexelCoding::I8;
}

/// The number of different values among \a colours, which have 24 bits.
int countDifferent(std::vector<quint32> *colours)
{
    constexpr size_t fewEnoughToSort = 65536;
    if (colours->size() <= fewEnoughToSort) {
        std::sort(colours->begin(), colours->end());
        return int(std::unique(colours->begin(), colours->end()) - colours->begin());
    }
    std::vector<bool> seen(size_t(1) << 24);
    int count = 0;
    for (const quint32 colour : *colours) {
        count += !seen[colour];
        seen[colour] = true;
    }
    return count;
}

/// What a format drops of a picture's pixels.
struct Drops
{
    qint64 becameClear = 0; ///< Of partial alpha.
    qint64 becameOpaque = 0; ///< Of partial alpha.
    qint64 alphaDropped = 0; ///< Not opaque, in a format without alpha.
    qint64 coloured = 0; ///< Not grey, in a grey format.
    int colours = 0; ///< Different ones among the pixels that are to be seen.
    int coloursAfter = 0;
};

template<typename Visit> void forEachPixel(const QImage &picture, Visit visit)
{
    const PixelSource source(picture);
    constexpr int atOnce = 1024;
    QRgb pixels[atOnce];
    for (qint64 done = 0; done < source.count(); done += atOnce) {
        const int count = int(std::min<qint64>(atOnce, source.count() - done));
        source.colours(done, count, pixels);
        for (int i = 0; i < count; ++i)
            visit(pixels[i]);
    }
}

Drops dropsOf(const QImage &picture, TexelCoding coding)
{
    constexpr quint32 colourBits = 0x00FFFFFFU;
    Drops drops;
    std::vector<quint32> before;
    std::vector<quint32> after;
    forEachPixel(picture, [&](QRgb pixel) {
        const QRgb coded = codedPixel(coding, pixel);
        const int alpha = qAlpha(pixel);
        const bool partial = alpha > 0 && alpha < 255;
        if (hasNoAlpha(coding))
            // An extracted intensity texture has its intensity as alpha, which is no loss.
            drops.alphaDropped += alpha != 255 && alpha != qRed(coded);
        else if (partial) {
            drops.becameClear += qAlpha(coded) == 0;
            drops.becameOpaque += qAlpha(coded) == 255;
        }
        if (alpha == 0 || qAlpha(coded) == 0)
            return;
        drops.coloured += isGrey(coding) && !(qRed(pixel) == qGreen(pixel) && qRed(pixel) == qBlue(pixel));
        before.push_back(pixel & colourBits);
        after.push_back(coded & colourBits);
    });
    drops.colours = countDifferent(&before);
    drops.coloursAfter = countDifferent(&after);
    return drops;
}

QString countedPixels(qint64 count)
{
    return count == 1 ? QStringLiteral("1 pixel") : QStringLiteral("%1 pixels").arg(count);
}

QString countedColours(int count)
{
    return count == 1 ? QStringLiteral("1 colour") : QStringLiteral("%1 colours").arg(count);
}

/// An index that a picture uses, and how many pixels have it.
QVector<qint64> pixelsOfIndices(const QImage &picture)
{
    const PixelSource source(picture);
    QVector<qint64> counts(256);
    constexpr int atOnce = 1024;
    uchar indices[atOnce];
    for (qint64 done = 0; done < source.count(); done += atOnce) {
        const int count = int(std::min<qint64>(atOnce, source.count() - done));
        source.indices(done, count, indices);
        for (int i = 0; i < count; ++i)
            ++counts[indices[i]];
    }
    return counts;
}
}

QString listed(const QStringList &names)
{
    constexpr int most = 10;
    const QString shown = names.mid(0, most).join(QStringLiteral(", "));
    return names.size() <= most ? shown : QStringLiteral("%1 and %2 more").arg(shown).arg(names.size() - most);
}

void ImportRemarks::warn(const QString &text) const
{
    m_log->warning(m_path + QLatin1String(": ") + text);
}

void ImportRemarks::onEncoding(const QImage &picture, const textureFormat &format) const
{
    const TexelCoding coding = codingOf(format.name);
    if (picture.isNull() || coding == TexelCoding::Rgba32 || bitsPerTexel(coding) == 0)
        return;
    const Drops drops = dropsOf(picture, coding);
    if (drops.becameClear > 0)
        warn(QStringLiteral("%1 of partial alpha become clear in %2").arg(countedPixels(drops.becameClear), format.name));
    if (drops.becameOpaque > 0)
        warn(QStringLiteral("%1 of partial alpha become opaque in %2").arg(countedPixels(drops.becameOpaque), format.name));
    if (drops.alphaDropped > 0)
        warn(QStringLiteral("%1 lose their alpha; %2 has none of its own").arg(countedPixels(drops.alphaDropped), format.name));
    if (drops.coloured > 0)
        warn(QStringLiteral("%1 are not grey; %2 keeps only the red channel").arg(countedPixels(drops.coloured), format.name));
    else if (drops.coloursAfter < drops.colours)
        warn(QStringLiteral("%1 become %2 in %3").arg(countedColours(drops.colours)).arg(drops.coloursAfter).arg(format.name));
    if (coding == TexelCoding::Ci4) {
        const QVector<qint64> counts = pixelsOfIndices(picture);
        qint64 beyond = 0;
        for (int index = 16; index < counts.size(); ++index)
            beyond += counts.at(index);
        if (beyond > 0)
            warn(QStringLiteral("%1 have a colour index above 15, which ci4 cannot hold").arg(countedPixels(beyond)));
    }
}

void ImportRemarks::onFitting(const QImage &picture, const FittedPicture &fitted, bool paletteStays) const
{
    qint64 partial = 0;
    qint64 clear = 0;
    forEachPixel(picture, [&](QRgb pixel) {
        clear += qAlpha(pixel) == 0;
        partial += qAlpha(pixel) > 0 && qAlpha(pixel) < 255;
    });
    const QString path = fullPath(m_texture);
    if (fitted.clearBecomesOpaque && clear + partial > 0)
        warn(QStringLiteral("%1 become opaque; the palette of %2 has no clear colour").arg(countedPixels(clear + partial), path));
    else if (partial > 0)
        warn(QStringLiteral("%1 of partial alpha become clear in %2").arg(countedPixels(partial), m_texture.format));
    if (fitted.lostColours == 0)
        return;
    if (paletteStays)
        warn(QStringLiteral("%1 of %2 are not in the palette of %3; the nearest take their part")
                 .arg(fitted.lostColours)
                 .arg(countedColours(fitted.colours), path));
    else
        warn(QStringLiteral("%1 are too many for %2; %3 of them are shown by others")
                 .arg(countedColours(fitted.colours), m_texture.format)
                 .arg(fitted.lostColours));
}

void ImportRemarks::onColourTable(const QImage &picture, const textureFormat &format, const QByteArray &palette) const
{
    if (picture.colorCount() == 0)
        return;
    const QVector<qint64> counts = pixelsOfIndices(picture);
    int changed = 0;
    for (int index = 0; index < std::min(counts.size(), textureFormats::paletteColours(format)); ++index) {
        if (counts.at(index) == 0 || 2 * index + 2 > palette.size())
            continue;
        const QRgb present = texels::fromRgb5a1(qFromBigEndian<quint16>(palette.constData() + 2 * index));
        changed += texels::toRgb5a1(index < picture.colorCount() ? picture.color(index) : 0) != texels::toRgb5a1(present);
    }
    if (changed > 0)
        warn(QStringLiteral("%1 of its colour table are not those of the palette of %2, which stays as it is")
                 .arg(countedColours(changed), fullPath(m_texture)));
}

void ImportRemarks::onSharedPalette(const QVector<PaletteSharer> &sharers, const std::bitset<256> &changed) const
{
    if (changed.none())
        return;
    QStringList spoilt;
    QStringList safe;
    for (const PaletteSharer &sharer : sharers)
        ((sharer.places & changed).any() ? spoilt : safe).append(fullPath(*sharer.texture));
    if (!spoilt.isEmpty())
        warn(QStringLiteral("colours of %1 change too: the palette of %2 is shared").arg(listed(spoilt), fullPath(m_texture)));
    if (!safe.isEmpty())
        warn(QStringLiteral("the palette of %1 changes, which %2 shares without a change of its colours")
                 .arg(fullPath(m_texture), listed(safe)));
}
