// SPDX-License-Identifier: MIT
#include "transfer/palettefitting.h"

#include "codec/pixelsource.h"
#include "codec/texels.h"
#include "transfer/quantiser.h"

#include <QtEndian>

#include <algorithm>
#include <optional>

namespace
{
constexpr int wordCount = 0x10000;
constexpr int bytesPerColour = 2;
constexpr quint16 clearWord = 0;

bool isOpaque(quint16 word)
{
    return (word & 1) != 0;
}

/// A palette's words as colours: every clear word is the same colour, whatever its other bits.
QVector<quint16> coloursOf(const QByteArray &palette, int places)
{
    QVector<quint16> colours;
    for (int i = 0; i < std::min(places, palette.size() / bytesPerColour); ++i) {
        const quint16 word = qFromBigEndian<quint16>(palette.constData() + bytesPerColour * i);
        colours.append(isOpaque(word) ? word : clearWord);
    }
    return colours;
}

/// The colour of each pixel; with \a opaque, that of the pixel without its alpha.
QVector<quint16> wordsOf(const QImage &picture, bool opaque)
{
    const PixelSource source(picture);
    QVector<quint16> words(int(source.count()));
    constexpr int atOnce = 1024;
    QRgb pixels[atOnce];
    for (int done = 0; done < words.size(); done += atOnce) {
        const int count = std::min(atOnce, words.size() - done);
        source.colours(done, count, pixels);
        quint16 *out = words.data() + done;
        for (int i = 0; i < count; ++i)
            out[i] = quint16(texels::toRgb5a1(opaque ? pixels[i] | 0xFF000000U : pixels[i]));
    }
    return words;
}

/// The index of texel \a number, nothing behind the end of \a bytes.
std::optional<int> indexAt(const QByteArray &bytes, int number, int places)
{
    const bool pairs = places == 16;
    const int at = pairs ? number / 2 : number;
    if (at >= bytes.size())
        return std::nullopt;
    const int byte = quint8(bytes.at(at));
    return !pairs ? byte : number % 2 == 0 ? byte >> 4 : byte & 15;
}

class PaletteFitter
{
public:
    PaletteFitter(const QImage &picture, const textureFormat &format, const PresentTexture &present)
        : m_picture(picture), m_places(textureFormats::paletteColours(format)), m_present(present),
          m_palette(coloursOf(present.palette, m_places)), m_target(wordCount), m_placeOf(wordCount, -1)
    {
        for (int i = m_palette.size() - 1; i >= 0; --i)
            m_placeOf[m_palette.at(i)] = i;
    }

    FittedPicture withNewColours()
    {
        read(false);
        if (m_colours.size() > m_places)
            reduce();
        placeNewColours();
        return finished();
    }

    FittedPicture withPresentColours()
    {
        if (m_palette.isEmpty())
            return m_result;
        m_result.clearBecomesOpaque = m_placeOf.at(clearWord) < 0;
        read(m_result.clearBecomesOpaque);
        QVector<quint16> opaque;
        for (const quint16 word : qAsConst(m_palette)) {
            if (isOpaque(word))
                opaque.append(word >> 1);
        }
        for (const quint16 word : qAsConst(m_colours)) {
            if (m_placeOf.at(word) < 0)
                m_target[word] = opaque.isEmpty() ? clearWord : opaqueWord(opaque.at(nearestColour(word >> 1, opaque)));
        }
        return finished();
    }

private:
    static quint16 opaqueWord(quint16 colour) { return quint16(colour << 1 | 1); }

    /// Finds the picture's colours; each is shown by itself at first.
    void read(bool opaque)
    {
        m_words = wordsOf(m_picture, opaque);
        m_pixelsOf.fill(0, wordCount);
        for (const quint16 word : qAsConst(m_words))
            ++m_pixelsOf[word];
        for (int word = 0; word < wordCount; ++word) {
            m_target[word] = quint16(word);
            if (m_pixelsOf.at(word) > 0)
                m_colours.append(quint16(word));
        }
    }

    /// Has fewer colours show the picture: at most as many as the palette has places, one of them clear when a pixel is.
    void reduce()
    {
        const bool hasClear = m_pixelsOf.at(clearWord) > 0;
        QVector<quint32> pixelsOf(opaqueColourCount);
        for (int colour = 0; colour < opaqueColourCount; ++colour)
            pixelsOf[colour] = m_pixelsOf.at(opaqueWord(quint16(colour)));
        const QVector<quint16> chosen = quantisedColours(pixelsOf, m_places - int(hasClear));
        for (const quint16 word : qAsConst(m_colours)) {
            if (isOpaque(word))
                m_target[word] = opaqueWord(chosen.at(nearestColour(word >> 1, chosen)));
        }
    }

    /// The present index of a pixel, where it has the colour the pixel shall have.
    std::optional<int> keptIndex(int pixel, quint16 colour) const
    {
        const std::optional<int> index = indexAt(m_present.texels, pixel, m_places);
        return index && *index < m_palette.size() && m_palette.at(*index) == colour ? index : std::nullopt;
    }

    void placeNewColours()
    {
        QVector<quint16> fresh;
        std::bitset<256> needed; // First places of colours that are in the palette.
        QVector<bool> seen(wordCount);
        for (const quint16 word : qAsConst(m_colours)) {
            const quint16 colour = m_target.at(word);
            if (seen.at(colour))
                continue;
            seen[colour] = true;
            if (m_placeOf.at(colour) < 0)
                fresh.append(colour);
            else
                needed.set(size_t(m_placeOf.at(colour)));
        }
        // What lies outside the image is not there to be kept: it is written as a whole, so that the palette can be read again.
        std::bitset<256> changed;
        for (int i = m_palette.size(); i < m_places; ++i)
            changed.set(size_t(i));
        m_palette.resize(m_places);
        if (!fresh.isEmpty()) {
            const QVector<int> free = freePlaces(needed);
            for (int i = 0; i < fresh.size(); ++i) {
                m_palette[free.at(i)] = fresh.at(i);
                m_placeOf[fresh.at(i)] = free.at(i);
                changed.set(size_t(free.at(i)));
            }
        }
        addRuns(changed);
    }

    /// All places but those in \a needed, the ones to take first at the front.
    QVector<int> freePlaces(const std::bitset<256> &needed) const
    {
        // A colour may be in the palette twice, and the texels that have its second place keep it while there are others to take.
        std::bitset<256> used = needed;
        for (int i = 0; i < m_words.size(); ++i) {
            if (const std::optional<int> index = keptIndex(i, m_target.at(m_words.at(i))))
                used.set(size_t(*index));
        }
        const auto rank = [&](int place) {
            const auto at = size_t(place);
            return used.test(at) ? 2 : m_present.usedByOthers.test(at) ? 1 : 0;
        };
        QVector<int> places;
        for (int i = 0; i < m_places; ++i) {
            if (!needed.test(size_t(i)))
                places.append(i);
        }
        std::stable_sort(places.begin(), places.end(), [&rank](int a, int b) { return rank(a) < rank(b); });
        return places;
    }

    void addRuns(const std::bitset<256> &changed)
    {
        for (int first = 0; first < m_places; ++first) {
            int end = first;
            while (end < m_places && changed.test(size_t(end)))
                ++end;
            if (end == first)
                continue;
            PaletteRun run {first, QImage(end - first, 1, QImage::Format_ARGB32)};
            for (int i = first; i < end; ++i)
                run.colours.setPixel(i - first, 0, texels::fromRgb5a1(m_palette.at(i)));
            m_result.changes.append(run);
            first = end;
        }
    }

    FittedPicture finished()
    {
        m_result.colours = m_colours.size();
        for (const quint16 word : qAsConst(m_colours))
            m_result.lostColours += m_target.at(word) != word;
        m_result.picture = QImage(m_picture.size(), QImage::Format_Indexed8);
        if (m_result.picture.isNull())
            return m_result;
        QVector<QRgb> table;
        for (const quint16 word : qAsConst(m_palette))
            table.append(texels::fromRgb5a1(word));
        m_result.picture.setColorTable(table);
        int pixel = 0;
        for (int y = 0; y < m_picture.height(); ++y) {
            uchar *row = m_result.picture.scanLine(y);
            for (int x = 0; x < m_picture.width(); ++x, ++pixel) {
                const quint16 colour = m_target.at(m_words.at(pixel));
                row[x] = uchar(keptIndex(pixel, colour).value_or(m_placeOf.at(colour)));
            }
        }
        return m_result;
    }

    const QImage &m_picture;
    const int m_places;
    const PresentTexture &m_present;
    QVector<quint16> m_palette; ///< Colours by place: first the present ones, then those that are to be.
    QVector<quint16> m_target; ///< The colour that shows each colour of the picture.
    QVector<int> m_placeOf; ///< The first place of each colour, -1 for one that the palette does not have.
    QVector<quint16> m_words; ///< The picture's pixels.
    QVector<quint32> m_pixelsOf; ///< Number of pixels of each colour.
    QVector<quint16> m_colours; ///< Those of the picture, ascending.
    FittedPicture m_result;
};
}

PresentTexture presentTexture(const QByteArray &cartridge, const textureFormat &format, int address, int paletteAddress,
                              qint64 pixels)
{
    const auto bytesAt = [&cartridge](int from, qint64 count) {
        return from < 0 || from >= cartridge.size() ? QByteArray()
                                                    : cartridge.mid(from, int(std::min<qint64>(count, cartridge.size())));
    };
    const int places = textureFormats::paletteColours(format);
    return {bytesAt(paletteAddress, bytesPerColour * places), bytesAt(address, places == 16 ? (pixels + 1) / 2 : pixels), {}};
}

bool needsPalette(const QImage &picture, const textureFormat &format)
{
    return format.usesPalette && !picture.isNull() && picture.colorCount() == 0;
}

FittedPicture fitPalette(const QImage &picture, const textureFormat &format, const PresentTexture &present)
{
    return PaletteFitter(picture, format, present).withNewColours();
}

FittedPicture fitToPalette(const QImage &picture, const textureFormat &format, const PresentTexture &present)
{
    return PaletteFitter(picture, format, present).withPresentColours();
}
