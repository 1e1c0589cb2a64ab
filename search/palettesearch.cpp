// SPDX-License-Identifier: MIT
#include "search/palettesearch.h"

#include <QtEndian>

#include <algorithm>
#include <cstdlib>

namespace
{
constexpr int colourBytes = 2;
/// Four colours in a row are eight bytes, which are looked for at multiples of eight.
constexpr int coloursOfWord = 4;

quint16 colourAt(const char *bytes)
{
    return qFromBigEndian<quint16>(bytes);
}

/// A part of a palette to look for.
struct Anchor
{
    quint64 word = 0; ///< As wordAt() reads it, or a single colour.
    int palette = 0;
    int offset = 0; ///< In the palette, in bytes.
};

class PaletteSweep
{
public:
    PaletteSweep(const ByteRange &range, const QVector<WantedPalette> &wanted, WorkSteps *steps)
        : m_range(range), m_wanted(wanted), m_steps(steps), m_found(wanted.size())
    {
        sampleColours();
        for (int i = 0; i < wanted.size(); ++i) {
            if (!addWords(i))
                addColour(i);
        }
    }

    QVector<QVector<int>> run()
    {
        sweepWords();
        sweepColours();
        for (QVector<int> &places : m_found) {
            std::sort(places.begin(), places.end());
            places.erase(std::unique(places.begin(), places.end()), places.end());
        }
        return m_found;
    }

private:
    void sampleColours()
    {
        constexpr int samples = 65536;
        m_counts.fill(0, 65536);
        const qint64 step = qMax(1, m_range.size / colourBytes / samples) * colourBytes;
        for (qint64 position = 0; position + colourBytes <= m_range.size; position += step)
            ++m_counts[colourAt(m_range.data + position)];
    }

    /// A palette begins at a multiple of two, so four words find it at any: of each remainder one. False when there are too few
    /// colours in a row.
    bool addWords(int number)
    {
        const WantedPalette &palette = m_wanted.at(number);
        QVector<int> words(256, 0);
        for (int i = 0; i < palette.indices.size(); ++i)
            words[palette.indices.at(i)] = palette.words.at(i);
        QVector<Anchor> anchors;
        for (int remainder = 0; remainder < coloursOfWord; ++remainder) {
            int rarest = 0;
            Anchor best;
            best.offset = -1;
            for (int first = remainder; first + coloursOfWord <= words.size(); first += coloursOfWord) {
                int commonness = 65536;
                char bytes[wordBytes];
                bool isKnown = true;
                for (int i = 0; i < coloursOfWord; ++i) {
                    const auto word = quint16(words.at(first + i));
                    isKnown = isKnown && word != 0;
                    commonness = qMin(commonness, int(m_counts.at(word)));
                    qToBigEndian(word, bytes + colourBytes * i);
                }
                if (isKnown && (best.offset < 0 || commonness < rarest)) {
                    rarest = commonness;
                    best = {wordAt(bytes), number, first * colourBytes};
                }
            }
            if (best.offset < 0)
                return false;
            anchors.append(best);
        }
        m_words += anchors;
        return true;
    }

    void addColour(int number)
    {
        const WantedPalette &palette = m_wanted.at(number);
        int best = -1;
        for (int i = 0; i < palette.words.size(); ++i) {
            const quint16 word = palette.words.at(i);
            if (word != 0 && (best < 0 || m_counts.at(word) < m_counts.at(palette.words.at(best))))
                best = i;
        }
        if (best >= 0)
            m_colours.append({palette.words.at(best), number, palette.indices.at(best) * colourBytes});
    }

    void check(const Anchor &anchor, qint64 position)
    {
        const qint64 start = position - anchor.offset;
        const WantedPalette &palette = m_wanted.at(anchor.palette);
        if (start < 0 || m_found.at(anchor.palette).size() >= mostPlacesOfPalette)
            return;
        for (int i = 0; i < palette.indices.size(); ++i) {
            const qint64 at = start + colourBytes * palette.indices.at(i);
            if (at + colourBytes > m_range.size)
                return;
            const quint16 colour = colourAt(m_range.data + at);
            const quint16 word = palette.words.at(i);
            if (word != 0 ? colour != word : (colour & 1) != 0)
                return;
        }
        m_found[anchor.palette].append(int(start));
    }

    static quint64 bitOf(quint64 word) { return hashOfWord(word) >> 44; }

    void sweepWords()
    {
        if (m_words.isEmpty())
            return;
        QHash<quint64, QVector<int>> places;
        QVector<quint64> filter((1 << 20) / 64);
        for (int i = 0; i < m_words.size(); ++i) {
            places[m_words.at(i).word].append(i);
            const quint64 bit = bitOf(m_words.at(i).word);
            filter[int(bit >> 6)] |= Q_UINT64_C(1) << (bit & 63);
        }
        const quint64 *filterWords = filter.constData();
        for (qint64 position = 0; position + wordBytes <= m_range.size; position += wordBytes) {
            const quint64 word = wordAt(m_range.data + position);
            const quint64 bit = bitOf(word);
            if (position % WorkSteps::bytesPerStep == 0 && !m_steps->add(WorkSteps::bytesPerStep))
                return;
            if (Q_LIKELY(!(filterWords[bit >> 6] >> (bit & 63) & 1)))
                continue;
            const auto known = places.constFind(word);
            if (known == places.constEnd())
                continue;
            for (const int i : *known)
                check(m_words.at(i), position);
        }
    }

    void sweepColours()
    {
        if (m_colours.isEmpty())
            return;
        QHash<quint16, QVector<int>> places;
        QVector<quint64> filter(65536 / 64);
        for (int i = 0; i < m_colours.size(); ++i) {
            const auto word = quint16(m_colours.at(i).word);
            places[word].append(i);
            filter[word >> 6] |= Q_UINT64_C(1) << (word & 63);
        }
        const quint64 *filterWords = filter.constData();
        for (qint64 position = 0; position + colourBytes <= m_range.size; position += colourBytes) {
            const quint16 colour = colourAt(m_range.data + position);
            if (position % WorkSteps::bytesPerStep == 0 && !m_steps->add(WorkSteps::bytesPerStep))
                return;
            if (Q_LIKELY(!(filterWords[colour >> 6] >> (colour & 63) & 1)))
                continue;
            for (const int i : places.value(colour))
                check(m_colours.at(i), position);
        }
    }

    ByteRange m_range;
    const QVector<WantedPalette> &m_wanted;
    WorkSteps *m_steps;
    QVector<QVector<int>> m_found;
    QVector<int> m_counts; ///< Of sampled colours.
    QVector<Anchor> m_words;
    QVector<Anchor> m_colours;
};
}

QVector<QVector<int>> findPalettes(const ByteRange &range, const QVector<WantedPalette> &wanted, WorkSteps *steps)
{
    if (wanted.isEmpty())
        return {};
    return PaletteSweep(range, wanted, steps).run();
}

void sortPlaces(QVector<int> *places, int texture)
{
    const auto key = [texture](int place) { return std::make_tuple(place % 8 != 0, std::abs(qint64(place) - texture), place); };
    std::sort(places->begin(), places->end(), [&key](int a, int b) { return key(a) < key(b); });
}
