// SPDX-License-Identifier: MIT
#include "search/pictureliness.h"

#include "codec/texturemanipulator.h"

#include <QSet>
#include <QtAlgorithms>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace
{
/// The mean difference of two random values from 0 to 255.
constexpr double randomDifference = 85;

quint32 seen(QRgb colour)
{
    return qAlpha(colour) == 0 ? 0 : colour;
}

QRgb colourOfWord(quint16 word)
{
    return word & 1 ? qRgba(word >> 8 & 0xF8, word >> 3 & 0xF8, word << 2 & 0xF8, 255) : 0;
}

constexpr int channels = 4;

/// The sum of the differences of all channels of \a count pixels; bytes one by one, which compilers turn into wide instructions.
int sumOfDifferences(const QRgb *a, const QRgb *b, int count)
{
    const auto *bytes = reinterpret_cast<const uchar *>(a);
    const auto *others = reinterpret_cast<const uchar *>(b);
    int sum = 0;
    for (int i = 0; i < count * channels; ++i)
        sum += std::abs(bytes[i] - others[i]);
    return sum;
}

/// How rows, or columns, differ from the next: means over their pixels and channels.
struct Steps
{
    double mean = 0;
    double usual = 0;
    double worst = 0; ///< By how much the largest is above the usual one.
};

/// From the sums of the differences of each row or column of \a length pixels.
Steps stepsOf(QVector<int> sums, int length)
{
    Steps steps;
    if (sums.isEmpty())
        return steps;
    const double scale = 1.0 / (length * channels);
    steps.mean = double(std::accumulate(sums.cbegin(), sums.cend(), qint64(0))) / sums.size() * scale;
    const auto middle = sums.begin() + sums.size() / 2;
    std::nth_element(sums.begin(), middle, sums.end());
    steps.usual = *middle * scale;
    steps.worst = (*std::max_element(middle, sums.end()) - *middle) * scale;
    return steps;
}

Steps stepsDown(const QVector<QRgb> &pixels, int width, int height)
{
    QVector<int> sums(qMax(0, height - 1));
    for (int y = 0; y < sums.size(); ++y)
        sums[y] = sumOfDifferences(pixels.constData() + y * width, pixels.constData() + (y + 1) * width, width);
    return stepsOf(sums, width);
}

Steps stepsAcross(const QVector<QRgb> &pixels, int width, int height)
{
    const int pairs = qMax(0, width - 1);
    QVector<int> byChannel(pairs * channels);
    int *sums = byChannel.data();
    for (int y = 0; y < height; ++y) {
        const auto *row = reinterpret_cast<const uchar *>(pixels.constData() + y * width);
        for (int i = 0; i < pairs * channels; ++i)
            sums[i] += std::abs(row[i] - row[i + channels]);
    }
    QVector<int> columns(pairs);
    for (int i = 0; i < pairs * channels; ++i)
        columns[i / channels] += sums[i];
    return stepsOf(columns, height);
}

/// Mean distance of the pixels of \a width x \a height from those \a right and \a down of them.
double meanDistance(const QVector<QRgb> &pixels, int width, int height, int right, int down)
{
    qint64 sum = 0;
    for (int y = 0; y + down < height; ++y) {
        const QRgb *row = pixels.constData() + y * width;
        sum += sumOfDifferences(row, row + down * width + right, width - right);
    }
    const qint64 pairs = qint64(width - right) * (height - down);
    return pairs > 0 ? double(sum) / double(pairs * channels) : 0;
}

/// The colours of a palette as they are seen; without one, colours that are as different as random ones.
QVector<QRgb> coloursAt(const ByteRange &image, qint64 paletteAddress, int count)
{
    QVector<QRgb> colours(count);
    for (int i = 0; i < count; ++i) {
        const qint64 at = paletteAddress + 2 * i;
        if (paletteAddress < 0)
            colours[i] = quint32(i) * 0x9E3779B9U;
        else if (at + 2 <= image.size)
            colours[i] = colourOfWord(qFromBigEndian<quint16>(image.data + at));
    }
    return colours;
}

/// The pixels of \a height rows from \a address on, as they are seen.
QVector<QRgb> decode(const ByteRange &image, const TextureReference &texture, qint64 address, int height,
                     const QVector<QRgb> &colours)
{
    const int bits = bitsPerPixel(texture.format);
    const int count = texture.width * height;
    QVector<QRgb> pixels(count);
    const auto *bytes = reinterpret_cast<const uchar *>(image.data + address);
    const auto nibbleAt = [bytes](int i) { return bytes[i / 2] >> (i % 2 ? 0 : 4) & 0xF; };
    if (texture.isIndexed()) {
        for (int i = 0; i < count; ++i)
            pixels[i] = colours.at(bits == 4 ? nibbleAt(i) : bytes[i]);
        return pixels;
    }
    static const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    const QByteArray data = QByteArray::fromRawData(image.data + address, (count * bits + 7) / 8);
    const QImage picture = textureManipulator::generateTexture(data, formats.value(texture.format), texture.width, QByteArray());
    for (int y = 0; y < qMin(height, picture.height()); ++y) {
        const auto *row = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        std::transform(row, row + texture.width, pixels.begin() + y * texture.width, seen);
    }
    return pixels;
}

/// How many of the colours that the indices of a texture use are different from one another, from 0 to 1; 0 when an index is
/// beyond the colours that are loaded.
double varietyOfColours(const ByteRange &image, const TextureReference &texture, qint64 address, const QVector<QRgb> &colours)
{
    QVector<bool> isUsed(256);
    const auto *bytes = reinterpret_cast<const uchar *>(image.data + address);
    for (int i = 0; i < int(texture.size()); ++i) {
        if (bitsPerPixel(texture.format) == 8) {
            isUsed[bytes[i]] = true;
        } else {
            isUsed[bytes[i] >> 4] = true;
            isUsed[bytes[i] & 0xF] = true;
        }
    }
    int used = 0;
    QSet<QRgb> different;
    for (int i = 0; i < isUsed.size(); ++i) {
        if (!isUsed.at(i))
            continue;
        if (texture.hasPalette && i >= texture.paletteEntries)
            return 0;
        ++used;
        different.insert(colours.at(i));
    }
    return double(different.size()) / used;
}

/// The sum of the differences of the four 16-bit lanes of \a a and \a b, whose values are below 256. All lanes at once, since row
/// scores spend their time here.
int differenceOfLanes(quint64 a, quint64 b)
{
    constexpr quint64 ones = 0x0001000100010001;
    const quint64 raised = (a | ones << 8) - b; // 256 more in each lane, so that none borrows from the next.
    const quint64 isNegative = ~raised >> 8 & ones;
    const quint64 magnitudes = ((raised ^ isNegative * 0xFF) & ones * 0xFF) + isNegative;
    return int(magnitudes * ones >> 48);
}

/// The same for those bits of the lanes that \a mask has, \a shift bits further up.
int differenceOfBits(quint64 a, quint64 b, int shift, quint64 mask)
{
    constexpr quint64 ones = 0x0001000100010001;
    return differenceOfLanes(a >> shift & ones * mask, b >> shift & ones * mask);
}

using Kind = RowLikeness::Kind;

/// The sum of the differences of eight bytes, each from 0 to 255.
template<Kind kind> int differenceAs(quint64 a, quint64 b)
{
    if (kind == Kind::Bytes)
        return differenceOfBits(a, b, 0, 0xFF) + differenceOfBits(a, b, 8, 0xFF);
    if (kind == Kind::Nibbles) {
        const int sum = differenceOfBits(a, b, 0, 0xF) + differenceOfBits(a, b, 4, 0xF) + differenceOfBits(a, b, 8, 0xF)
            + differenceOfBits(a, b, 12, 0xF);
        return sum * 17 / 2;
    }
    if (kind == Kind::Colours16) {
        const int colours = differenceOfBits(a, b, 11, 31) + differenceOfBits(a, b, 6, 31) + differenceOfBits(a, b, 1, 31);
        return colours * 4 + differenceOfBits(a, b, 0, 1) * 127;
    }
    // Indices are equal or not: the top bit of each says which.
    constexpr quint64 tops = kind == Kind::Indices8 ? 0x8080808080808080 : 0x8888888888888888;
    const quint64 bits = a ^ b;
    const int different = int(qPopulationCount((((bits & ~tops) + ~tops) | bits) & tops));
    return different * int(randomDifference) / (kind == Kind::Indices8 ? 1 : 2);
}

}

double pictureliness(const ByteRange &image, const TextureReference &texture, qint64 address, qint64 paletteAddress)
{
    const int width = texture.width;
    const int bits = bitsPerPixel(texture.format);
    const int rowBytes = width * bits / 8;
    // Large ones are judged by their upper part.
    constexpr int mostPixels = 4096;
    const int height = qMin(texture.height, qMax(8, mostPixels / width));
    if (address < 0 || address + texture.size() > image.size || paletteAddress >= image.size || height < 2 || rowBytes < 1
        || texture.format == QLatin1String("yuv16"))
        return 0;
    QVector<QRgb> colours;
    double variety = 1;
    if (texture.isIndexed()) {
        colours = coloursAt(image, paletteAddress, bits == 4 ? 16 : 256);
        variety = varietyOfColours(image, texture, address, colours);
        if (variety <= 0)
            return 0;
    }
    // With the rows before and behind, which are of something else.
    const int before = address >= rowBytes ? 1 : 0;
    const int behind = height == texture.height && address + texture.size() + rowBytes <= image.size ? 1 : 0;
    const QVector<QRgb> around = decode(image, texture, address - before * rowBytes, before + height + behind, colours);
    const QVector<QRgb> pixels = around.mid(before * width, height * width);

    const Steps down = stepsDown(pixels, width, height);
    const Steps across = stepsAcross(pixels, width, height);
    const double shuffled =
        qMax(meanDistance(pixels, width, height, 0, height / 2), meanDistance(pixels, width, height, width / 2, height / 3));
    if (shuffled <= 0)
        return 0;
    // Far rows being more different than near ones counts only up to a point: how far they differ is up to the picture.
    const double contrast = qBound(0.0, (shuffled - qMin(down.mean, across.mean)) / (0.2 * shuffled), 1.0);
    const double smoothness = qMax(0.0, 1 - (down.mean + across.mean) / (2 * randomDifference));
    // Where one picture ends and the next begins, all of a row or column changes: it does at the borders, and not inside.
    const double seams = down.worst + across.worst;
    double borders = 0;
    if (before)
        borders += qMax(0.0, stepsDown(around, width, 2).mean - down.usual);
    if (behind)
        borders += qMax(0.0, stepsDown(around.mid((before + height - 1) * width), width, 2).mean - down.usual);
    const double edges = qBound(0.0, 0.5 + (borders - seams) / 255, 1.0);
    return contrast * variety * (smoothness + edges) / 2;
}

RowLikeness::RowLikeness(const TextureReference &texture)
{
    // Of a large texture the upper part tells enough.
    constexpr int mostBytes = 64 * 1024;
    const int bits = bitsPerPixel(texture.format);
    m_rowBytes = texture.width * bits / 8;
    m_rows = qMin(texture.height, mostBytes / qMax(1, m_rowBytes));
    if (texture.isIndexed())
        m_kind = bits == 4 ? Kind::Indices4 : Kind::Indices8;
    else if (bits == 4)
        m_kind = Kind::Nibbles;
    else if (texture.format == QLatin1String("rgb5a1"))
        m_kind = Kind::Colours16;
}

/// Fills the sums for \a words words from \a data on, of which \a left bytes are in the image.
template<RowLikeness::Kind kind> void RowLikeness::sumUp(const char *data, qint64 left, int words)
{
    const qint64 farBytes = qint64(m_rows / 2) * m_rowBytes;
    int *rough = m_rough.data();
    int *varied = m_varied.data();
    rough[0] = 0;
    varied[0] = 0;
    const auto wordOf = [data, left](qint64 at) { return at + wordBytes <= left ? qFromBigEndian<quint64>(data + at) : 0; };
    for (int i = 0; i < words; ++i) {
        const qint64 at = qint64(i) * wordBytes;
        const quint64 word = wordOf(at);
        rough[i + 1] = rough[i] + differenceAs<kind>(word, wordOf(at + m_rowBytes));
        varied[i + 1] = varied[i] + (word != wordOf(at + farBytes) ? 1 : 0);
    }
}

void RowLikeness::score(const ByteRange &image, qint64 address, int step, int count, float *scores)
{
    const int words = (step * (count - 1) + bytes()) / wordBytes;
    const int farRows = m_rows / 2;
    const char *data = image.data + address;
    const qint64 left = image.size - address;
    m_rough.resize(words + 1);
    m_varied.resize(words + 1);
    switch (m_kind) {
    case Kind::Bytes: sumUp<Kind::Bytes>(data, left, words); break;
    case Kind::Nibbles: sumUp<Kind::Nibbles>(data, left, words); break;
    case Kind::Indices8: sumUp<Kind::Indices8>(data, left, words); break;
    case Kind::Indices4: sumUp<Kind::Indices4>(data, left, words); break;
    case Kind::Colours16: sumUp<Kind::Colours16>(data, left, words); break;
    }
    const int pairWords = qMax(1, (m_rows - 1) * m_rowBytes / wordBytes);
    const int farWords = qMax(1, (m_rows - farRows) * m_rowBytes / wordBytes);
    const int *roughUpTo = m_rough.constData();
    const int *variedUpTo = m_varied.constData();
    for (int i = 0; i < count; ++i) {
        const int first = i * step / wordBytes;
        const int rough = roughUpTo[qMin(words, first + pairWords)] - roughUpTo[first];
        const int varied = variedUpTo[qMin(words, first + farWords)] - variedUpTo[first];
        const float variety = qMin(1.0F, 4.0F * float(varied) / float(farWords));
        scores[i] = variety * qMax(0.0F, 1.0F - float(rough) / float(pairWords * wordBytes * randomDifference));
    }
}

float RowLikeness::atSample(const ByteRange &image, qint64 address) const
{
    constexpr int farRows = 8;
    if (address < 0 || address + qint64(farRows) * m_rowBytes + wordBytes > image.size)
        return 0;
    const char *data = image.data + address;
    const auto word = qFromBigEndian<quint64>(data);
    if (word == qFromBigEndian<quint64>(data + farRows * m_rowBytes))
        return 0;
    const int rough = difference(word, qFromBigEndian<quint64>(data + m_rowBytes));
    return qMax(0.0F, 1.0F - float(rough) / float(wordBytes * randomDifference));
}

/// The sum of the differences of eight bytes, each from 0 to 255.
int RowLikeness::difference(quint64 a, quint64 b) const
{
    switch (m_kind) {
    case Kind::Bytes: return differenceAs<Kind::Bytes>(a, b);
    case Kind::Nibbles: return differenceAs<Kind::Nibbles>(a, b);
    case Kind::Indices8: return differenceAs<Kind::Indices8>(a, b);
    case Kind::Indices4: return differenceAs<Kind::Indices4>(a, b);
    case Kind::Colours16: break;
    }
    return differenceAs<Kind::Colours16>(a, b);
}
