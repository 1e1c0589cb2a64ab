// SPDX-License-Identifier: MIT
#include "search/indexedpattern.h"

#include <QHash>
#include <QImage>

#include <cmath>

namespace
{
constexpr int fewestBytes = 24;
constexpr int farthest = 8;
constexpr int fewestChanges = 12;
constexpr double fewestBitsOfChance = 40;

/// The word that a palette holds for \a colour: 0 for what is not fully opaque.
quint16 paletteWord(QRgb colour)
{
    if (qAlpha(colour) != 255)
        return 0;
    return quint16(qRed(colour) / 8 << 11 | qGreen(colour) / 8 << 6 | qBlue(colour) / 8 << 1 | 1);
}

/// What tells colours apart in a reading.
quint64 keyOf(QRgb colour, bool joinColours, bool joinClear)
{
    const quint16 word = paletteWord(colour);
    if (word == 0)
        return joinClear ? 0 : Q_UINT64_C(1) << 32 | colour;
    return joinColours ? word : Q_UINT64_C(2) << 32 | colour;
}

/// False when there are more colours than numbers.
bool read(const QVector<QRgb> &pixels, bool joinColours, bool joinClear, IndexedPattern *pattern)
{
    QHash<quint64, int> numbers;
    pattern->pixels = pixels.size();
    pattern->numbers = QByteArray((pixels.size() * pattern->bits + 7) / 8, '\0');
    char *bytes = pattern->numbers.data();
    for (int i = 0; i < pixels.size(); ++i) {
        const quint64 key = keyOf(pixels.at(i), joinColours, joinClear);
        auto number = numbers.find(key);
        if (number == numbers.end()) {
            if (numbers.size() == 1 << pattern->bits)
                return false;
            number = numbers.insert(key, numbers.size());
            pattern->colours.append(paletteWord(pixels.at(i)));
        }
        if (pattern->bits == 8)
            bytes[i] = char(*number);
        else
            bytes[i / 2] = char(bytes[i / 2] | *number << (i % 2 ? 0 : 4));
    }
    return true;
}

/// The logarithm of how improbable it is that random indices match.
double bitsOfChance(const IndexedPattern &pattern)
{
    const double all = 1 << pattern.bits;
    double bits = (pattern.pixels - pattern.colours.size()) * pattern.bits;
    for (int seen = 0; seen < pattern.colours.size(); ++seen)
        bits -= std::log2((all - seen) / all);
    return bits;
}

bool hasStructure(const IndexedPattern &pattern)
{
    for (int distance = 1; distance <= farthest; ++distance) {
        int changes = 0;
        for (int i = distance; i < pattern.pixels && changes < fewestChanges; ++i)
            changes += pattern.numberAt(i) != pattern.numberAt(i - distance) ? 1 : 0;
        if (changes < fewestChanges)
            return false;
    }
    return bitsOfChance(pattern) >= fewestBitsOfChance;
}

bool isSame(const IndexedPattern &a, const IndexedPattern &b)
{
    return a.numbers == b.numbers;
}
}

QVector<IndexedPattern> indexedPatterns(const QImage &picture, int bits, QString *refusal)
{
    if (qint64(picture.width()) * picture.height() * bits < fewestBytes * 8) {
        *refusal = QStringLiteral("it has fewer than %1 pixels").arg(fewestBytes * 8 / bits);
        return {};
    }
    QVector<QRgb> pixels;
    pixels.reserve(picture.width() * picture.height());
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            pixels.append(picture.pixel(x, y));
    }
    QVector<IndexedPattern> patterns;
    bool hasFewColours = false;
    bool hasSeveralColours = false;
    // From most joined to least; later readings that come to the same add nothing.
    for (const bool joinColours : {true, false}) {
        for (const bool joinClear : {true, false}) {
            IndexedPattern pattern;
            pattern.bits = bits;
            if (!read(pixels, joinColours, joinClear, &pattern))
                continue;
            hasFewColours = true;
            hasSeveralColours |= pattern.colours.size() > 1;
            const bool isKnown = std::any_of(patterns.cbegin(), patterns.cend(),
                                             [&pattern](const IndexedPattern &known) { return isSame(known, pattern); });
            if (!isKnown && hasStructure(pattern))
                patterns.append(pattern);
        }
    }
    if (!hasFewColours)
        *refusal = QStringLiteral("it has more than %1 colours").arg(1 << bits);
    else if (!hasSeveralColours)
        *refusal = QStringLiteral("it has a single colour");
    else if (patterns.isEmpty())
        *refusal = QStringLiteral("it has too little structure");
    return patterns;
}
