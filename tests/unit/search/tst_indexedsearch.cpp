// SPDX-License-Identifier: MIT
#include "search/indexedsearch.h"
#include "search/palettesearch.h"

#include <QImage>
#include <QRandomGenerator>
#include <QTest>

#include <map>

namespace
{
/// A picture of the colours with the numbers that \a numberAt gives.
template<typename Function> QImage pictureOf(int width, int height, const QVector<QRgb> &colours, Function numberAt)
{
    QImage picture(width, height, QImage::Format_ARGB32);
    for (int i = 0; i < width * height; ++i)
        picture.setPixel(i % width, i / width, colours.at(numberAt(i)));
    return picture;
}

QVector<QRgb> someColours(int count)
{
    QVector<QRgb> colours;
    for (int i = 0; i < count; ++i)
        colours.append(qRgb(i % 32 * 8, i / 32 * 8 + 8, 128));
    return colours;
}

/// The index of each pixel.
int indexAt(const QByteArray &bytes, int position, int bits, int pixel)
{
    if (bits == 8)
        return uchar(bytes.at(position + pixel));
    const int byte = uchar(bytes.at(position + pixel / 2));
    return pixel % 2 == 0 ? byte / 16 : byte % 16;
}

/// Every place, by trying each with two maps.
QVector<int> naivePlaces(const QByteArray &bytes, const IndexedPattern &pattern)
{
    QVector<int> places;
    for (int position = 0; position + (pattern.pixels * pattern.bits + 7) / 8 <= bytes.size(); ++position) {
        std::map<int, int> numberOf;
        std::map<int, int> indexOf;
        bool fits = true;
        for (int i = 0; i < pattern.pixels && fits; ++i) {
            const int index = indexAt(bytes, position, pattern.bits, i);
            const int number = pattern.numberAt(i);
            fits =
                numberOf.emplace(index, number).first->second == number && indexOf.emplace(number, index).first->second == index;
        }
        if (fits)
            places.append(position);
    }
    return places;
}

QVector<QVector<int>> find(const QByteArray &bytes, const QVector<IndexedPattern> &patterns)
{
    WorkSteps steps([] { return false; });
    return IndexedSearch({bytes.constData(), bytes.size(), 0}, &steps).find(patterns);
}

/// The indices of \a pattern, each number replaced by \a indices.
QByteArray withIndices(const IndexedPattern &pattern, const QVector<int> &indices)
{
    QByteArray bytes((pattern.pixels * pattern.bits + 7) / 8, '\0');
    for (int i = 0; i < pattern.pixels; ++i) {
        const int index = indices.at(pattern.numberAt(i));
        if (pattern.bits == 8)
            bytes[i] = char(index);
        else
            bytes[i / 2] = char(uchar(bytes.at(i / 2)) | index << (i % 2 ? 0 : 4));
    }
    return bytes;
}

QVector<int> shuffledIndices(int count, QRandomGenerator &random)
{
    QVector<int> indices;
    for (int i = 0; i < count; ++i)
        indices.append(i);
    std::shuffle(indices.begin(), indices.end(), random);
    return indices;
}
}

class tst_IndexedSearch : public QObject
{
    Q_OBJECT

private slots:
    void refusals_data();
    void refusals();
    void coloursThatAreOneInAPalette();
    void clearPixels();
    void numbersAreInOrderOfAppearance();
    void findsAnyOrderAtAnyByte_data();
    void findsAnyOrderAtAnyByte();
    void oneWrongIndexIsNone();
    void sameAsNaive_data();
    void sameAsNaive();
    void placesAtTheEnds();
    void palettes();
    void palettesSameAsNaive();
    void placesAreSorted();
    void stopsWhenCancelled();
};

void tst_IndexedSearch::refusals_data()
{
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<int>("bits");
    QTest::addColumn<QString>("reason");
    const auto noise = [](int colours) {
        return [colours](int i) { return int(quint32(i * i * 7919 + i * 31) % quint32(colours)); };
    };
    QTest::newRow("17 colours in ci4") << pictureOf(16, 16, someColours(17), [](int i) { return i % 17; }) << 4
                                       << "it has more than 16 colours";
    QTest::newRow("257 colours in ci8") << pictureOf(32, 32, someColours(257), [](int i) { return i % 257; }) << 8
                                        << "it has more than 256 colours";
    QTest::newRow("one colour") << pictureOf(16, 16, someColours(1), [](int) { return 0; }) << 8 << "it has a single colour";
    QTest::newRow("47 pixels in ci4") << pictureOf(47, 1, someColours(9), noise(9)) << 4 << "it has fewer than 48 pixels";
    QTest::newRow("23 pixels in ci8") << pictureOf(23, 1, someColours(9), noise(9)) << 8 << "it has fewer than 24 pixels";
    QTest::newRow("a spot") << pictureOf(16, 16, someColours(2), [](int i) { return i == 77 ? 1 : 0; }) << 4
                            << "it has too little structure";
    QTest::newRow("a grid") << pictureOf(16, 16, someColours(2), [](int i) { return i % 2; }) << 4
                            << "it has too little structure";
    QTest::newRow("stripes of eight") << pictureOf(16, 16, someColours(8), [](int i) { return i % 8; }) << 8
                                      << "it has too little structure";
    QTest::newRow("no colour twice") << pictureOf(8, 8, someColours(64), [](int i) { return i; }) << 8
                                     << "it has too little structure";
    QTest::newRow("good") << pictureOf(16, 16, someColours(9), noise(9)) << 4 << QString();
}

void tst_IndexedSearch::refusals()
{
    QFETCH(QImage, picture);
    QFETCH(int, bits);
    QFETCH(QString, reason);
    QString refusal;
    const QVector<IndexedPattern> patterns = indexedPatterns(picture, bits, &refusal);
    QCOMPARE(refusal, reason);
    QCOMPARE(patterns.isEmpty(), !reason.isEmpty());
}

/// Colours that differ in their lowest bits only: one index, or one each.
void tst_IndexedSearch::coloursThatAreOneInAPalette()
{
    const QVector<QRgb> colours {qRgb(8, 8, 8), qRgb(15, 8, 8), qRgb(64, 0, 0), qRgb(0, 0, 255)};
    const QImage picture = pictureOf(16, 16, colours, [](int i) { return int(quint32(i * 2654435761U) >> 30); });
    QString refusal;
    const QVector<IndexedPattern> patterns = indexedPatterns(picture, 8, &refusal);
    QCOMPARE(patterns.size(), 2);
    QCOMPARE(patterns.at(0).colours.size(), 3);
    QCOMPARE(patterns.at(1).colours.size(), 4);
    const QByteArray image = QByteArray(50, '\x7F') + withIndices(patterns.at(0), {9, 3, 5}) + QByteArray(50, '\x7E')
        + withIndices(patterns.at(1), {4, 2, 200, 3});
    const QVector<QVector<int>> found = find(image, patterns);
    QCOMPARE(found.at(0), QVector<int>({50}));
    QCOMPARE(found.at(1), QVector<int>({50 + 256 + 50}));
}

/// The colours of clear pixels are in no palette: all of them are one, or each its own.
void tst_IndexedSearch::clearPixels()
{
    const QVector<QRgb> colours {qRgba(0, 0, 0, 0), qRgba(255, 255, 255, 0), qRgba(90, 90, 90, 254), qRgb(90, 0, 0)};
    const QImage picture = pictureOf(16, 16, colours, [](int i) { return int(quint32(i * 2654435761U) >> 30); });
    QString refusal;
    const QVector<IndexedPattern> patterns = indexedPatterns(picture, 4, &refusal);
    QCOMPARE(patterns.size(), 2);
    QCOMPARE(patterns.at(0).colours.size(), 2);
    QCOMPARE(patterns.at(1).colours.size(), 4);
    QCOMPARE(patterns.at(1).colours.count(0), 3);
    const QByteArray image = QByteArray(9, '\x11') + withIndices(patterns.at(1), {4, 2, 12, 3});
    QCOMPARE(find(image, patterns), QVector<QVector<int>>({{}, {9}}));
}

void tst_IndexedSearch::numbersAreInOrderOfAppearance()
{
    const QVector<int> first {0, 1, 0, 2, 2, 0, 1, 0};
    const QImage picture = pictureOf(12, 8, {qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255)}, [&first](int i) {
        return i < first.size() ? first.at(i) : int((quint32(i) * 2654435761U) >> 20) % 3;
    });
    QString refusal;
    const QVector<IndexedPattern> patterns = indexedPatterns(picture, 4, &refusal);
    QCOMPARE(patterns.size(), 1);
    QCOMPARE(patterns.first().pixels, 96);
    QCOMPARE(patterns.first().numbers.size(), 48);
    QCOMPARE(patterns.first().numbers.left(4), QByteArray("\x01\x02\x20\x10"));
    QCOMPARE(patterns.first().colours, QVector<quint16>({0xF801, 0x07C1, 0x003F}));
}

void tst_IndexedSearch::findsAnyOrderAtAnyByte_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("colours");
    QTest::addColumn<QSize>("size");
    QTest::newRow("ci4, 32x32") << 4 << 16 << QSize(32, 32);
    QTest::newRow("ci4, two colours") << 4 << 2 << QSize(16, 16);
    QTest::newRow("ci4, odd") << 4 << 7 << QSize(9, 7);
    QTest::newRow("ci8, 32x32") << 8 << 256 << QSize(32, 32);
    QTest::newRow("ci8, two colours") << 8 << 2 << QSize(24, 16);
    QTest::newRow("ci8, smallest") << 8 << 5 << QSize(24, 1);
    QTest::newRow("ci8, large") << 8 << 100 << QSize(120, 90);
}

void tst_IndexedSearch::findsAnyOrderAtAnyByte()
{
    QFETCH(int, bits);
    QFETCH(int, colours);
    QFETCH(QSize, size);
    QRandomGenerator random(64);
    const QImage picture =
        pictureOf(size.width(), size.height(), someColours(colours), [&](int) { return int(random.bounded(colours)); });
    QString refusal;
    const QVector<IndexedPattern> patterns = indexedPatterns(picture, bits, &refusal);
    QVERIFY2(patterns.size() == 1, qPrintable(refusal));
    for (int alignment = 0; alignment < 45; ++alignment) {
        const QByteArray bytes = withIndices(patterns.first(), shuffledIndices(1 << bits, random));
        const QByteArray image = QByteArray(40 + alignment, '\0') + bytes + QByteArray(alignment % 3, '\0') + bytes;
        const int second = 40 + alignment + bytes.size() + alignment % 3;
        QCOMPARE(find(image, patterns).first(), QVector<int>({40 + alignment, second}));
        const QVector<int> indices = indicesAt({image.constData(), image.size(), 0}, second, patterns.first());
        QCOMPARE(withIndices(patterns.first(), indices), bytes);
    }
}

void tst_IndexedSearch::oneWrongIndexIsNone()
{
    QRandomGenerator random(64);
    const QImage picture = pictureOf(16, 16, someColours(12), [&](int) { return int(random.bounded(12)); });
    QString refusal;
    const QVector<IndexedPattern> patterns = indexedPatterns(picture, 4, &refusal);
    const QByteArray bytes = withIndices(patterns.first(), shuffledIndices(16, random));
    for (int i = 0; i < bytes.size(); ++i) {
        QByteArray wrong = bytes;
        wrong[i] = char(uchar(wrong.at(i)) ^ 0x10);
        QCOMPARE(find(QByteArray(11, '\x55') + wrong + QByteArray(9, '\0'), patterns).first(), QVector<int>());
    }
}

void tst_IndexedSearch::sameAsNaive_data()
{
    QTest::addColumn<int>("bits");
    QTest::newRow("ci4") << 4;
    QTest::newRow("ci8") << 8;
}

void tst_IndexedSearch::sameAsNaive()
{
    QFETCH(int, bits);
    QRandomGenerator random {quint32(bits)};
    for (int round = 0; round < 150; ++round) {
        // Few values, repeated pieces and flat parts, so that much nearly fits.
        QByteArray image;
        const int values = 2 + int(random.bounded(6));
        while (image.size() < 600) {
            if (random.bounded(3) == 0 && !image.isEmpty())
                image += image.mid(int(random.bounded(image.size())), 40);
            else
                for (int i = int(random.bounded(60)); i > 0; --i)
                    image += char(random.bounded(values) * (bits == 4 ? 17 : 1) + (bits == 4 ? random.bounded(values) : 0));
            image += QByteArray(int(random.bounded(20)), '\0');
        }
        QVector<IndexedPattern> patterns;
        for (int i = 0; i < 4; ++i) {
            const int place = int(random.bounded(image.size() - 100));
            const QImage picture = pictureOf(8 + int(random.bounded(6)), 6, someColours(256),
                                             [&](int pixel) { return indexAt(image, place, bits, pixel % 100); });
            QString refusal;
            patterns += indexedPatterns(picture, bits, &refusal);
        }
        const QVector<QVector<int>> found = find(image, patterns);
        for (int i = 0; i < patterns.size(); ++i)
            QCOMPARE(found.at(i), naivePlaces(image, patterns.at(i)));
    }
}

void tst_IndexedSearch::placesAtTheEnds()
{
    QRandomGenerator random(1);
    const QImage picture = pictureOf(16, 8, someColours(9), [&](int) { return int(random.bounded(9)); });
    QString refusal;
    const QVector<IndexedPattern> patterns = indexedPatterns(picture, 8, &refusal);
    const QByteArray bytes = withIndices(patterns.first(), shuffledIndices(256, random));
    QCOMPARE(find(bytes, patterns).first(), QVector<int>({0}));
    QCOMPARE(find(bytes + bytes, patterns).first(), QVector<int>({0, 128}));
    for (int size = 0; size < bytes.size(); ++size)
        QCOMPARE(find(bytes.left(size), patterns).first(), QVector<int>());
    QCOMPARE(find(bytes, {}), QVector<QVector<int>>());
}

void tst_IndexedSearch::palettes()
{
    QByteArray image(1000, '\0');
    image.replace(100, 6, QByteArray::fromHex("F801F83F0000"));
    image.replace(205, 6, QByteArray::fromHex("F801F83F0000")); // Not at a multiple of two.
    image.replace(300, 6, QByteArray::fromHex("F801F83F0001")); // The third is not clear.
    image.replace(998, 2, QByteArray::fromHex("F801"));
    image.replace(400, 6, QByteArray::fromHex("F801F83FFFFE"));
    WorkSteps steps([] { return false; });
    const ByteRange range {image.constData(), image.size(), 0};
    const QVector<QVector<int>> found =
        findPalettes(range, {{{3, 4, 5}, {0xF801, 0xF83F, 0}}, {{0}, {0}}, {{255}, {0xF801}}}, &steps);
    QCOMPARE(found.at(0), QVector<int>({94, 394}));
    QCOMPARE(found.at(1), QVector<int>());
    QCOMPARE(found.at(2), QVector<int>({998 - 510}));
}

void tst_IndexedSearch::palettesSameAsNaive()
{
    QRandomGenerator random(3);
    WorkSteps steps([] { return false; });
    for (int round = 0; round < 100; ++round) {
        QByteArray image;
        for (int i = 0; i < 900; ++i)
            image += char(random.bounded(3));
        QVector<WantedPalette> wanted;
        for (int i = 0; i < 5; ++i) {
            WantedPalette palette;
            const QVector<int> indices = shuffledIndices(random.bounded(2) ? 16 : 40, random);
            const int place = int(random.bounded(400)) * 2;
            palette.indices = indices.mid(0, 1 + int(random.bounded(16)));
            for (const int index : qAsConst(palette.indices)) {
                const int at = place + 2 * index;
                const int word = at + 2 <= image.size() ? uchar(image.at(at)) << 8 | uchar(image.at(at + 1)) : 1;
                palette.words.append(quint16(word & 1 ? word : 0));
            }
            wanted.append(palette);
        }
        const QVector<QVector<int>> found = findPalettes({image.constData(), image.size(), 0}, wanted, &steps);
        for (int i = 0; i < wanted.size(); ++i) {
            const WantedPalette &palette = wanted.at(i);
            QVector<int> expected;
            for (int place = 0; place < image.size() && palette.words.count(0) < palette.words.size(); place += 2) {
                bool fits = true;
                for (int c = 0; c < palette.indices.size() && fits; ++c) {
                    const int at = place + 2 * palette.indices.at(c);
                    const int word = at + 2 <= image.size() ? uchar(image.at(at)) << 8 | uchar(image.at(at + 1)) : -1;
                    fits = word >= 0 && (palette.words.at(c) ? word == palette.words.at(c) : word % 2 == 0);
                }
                if (fits)
                    expected.append(place);
            }
            QCOMPARE(found.at(i), expected);
        }
    }
}

void tst_IndexedSearch::placesAreSorted()
{
    QVector<int> places {0, 2, 96, 98, 104, 112, 1000};
    sortPlaces(&places, 100);
    QCOMPARE(places, QVector<int>({96, 104, 112, 0, 1000, 98, 2}));
}

void tst_IndexedSearch::stopsWhenCancelled()
{
    WorkSteps steps([] { return true; });
    const QByteArray image(4 * 1024 * 1024, '\0');
    QRandomGenerator random(1);
    const QImage picture = pictureOf(16, 8, someColours(9), [&](int) { return int(random.bounded(9)); });
    QString refusal;
    const QVector<IndexedPattern> patterns = indexedPatterns(picture, 8, &refusal);
    const QByteArray all = image + withIndices(patterns.first(), shuffledIndices(256, random));
    QCOMPARE(IndexedSearch({all.constData(), all.size(), 0}, &steps).find(patterns).first(), QVector<int>());
}

QTEST_GUILESS_MAIN(tst_IndexedSearch)
#include "tst_indexedsearch.moc"
