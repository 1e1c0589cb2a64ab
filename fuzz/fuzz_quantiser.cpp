// SPDX-License-Identifier: MIT
// Turning any picture to indices, with any palette, texels and places in use. What is written gives back the picture's colours
// where there are no more than the palette has room for, and untouched places keep their bytes.
#include "fuzzinput.h"

#include "codec/pixelsource.h"
#include "codec/texels.h"
#include "transfer/palettefitting.h"

#include <QSet>
#include <QtEndian>

namespace
{
/// A picture of few colours with repeats, or of any.
QImage anyPicture(FuzzInput *input)
{
    static const QImage::Format formats[] = {
        QImage::Format_ARGB32,     QImage::Format_RGB32,  QImage::Format_ARGB32_Premultiplied,
        QImage::Format_Grayscale8, QImage::Format_RGB888, QImage::Format_RGBA64};
    QImage picture(1 + input->below(40), 1 + input->below(40), input->oneOf(formats));
    picture.fill(0);
    const int kinds = 1 + input->below(255);
    quint32 seed = quint32(input->number());
    for (int y = 0; y < picture.height(); ++y) {
        uchar *row = picture.scanLine(y);
        for (int x = 0; x < picture.bytesPerLine(); ++x) {
            seed = seed * 1664525U + 1013904223U;
            row[x] = input->isUsedUp() ? uchar((seed >> 24) % uint(kinds)) : input->byte();
        }
    }
    return picture;
}

quint16 wordAt(const QByteArray &palette, int place)
{
    const quint16 word = 2 * place + 2 > palette.size() ? quint16(0) : qFromBigEndian<quint16>(palette.constData() + 2 * place);
    return word & 1 ? word : quint16(0);
}

QVector<quint16> wordsOf(const QImage &picture)
{
    const PixelSource source(picture);
    QVector<QRgb> pixels(int(source.count()));
    source.colours(0, pixels.size(), pixels.data());
    QVector<quint16> words;
    for (const QRgb pixel : qAsConst(pixels))
        words.append(quint16(texels::toRgb5a1(pixel)));
    return words;
}
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const textureFormat &format = input.flag() ? textureFormats::ci8 : textureFormats::ci4;
    const int places = textureFormats::paletteColours(format);
    PresentTexture present;
    present.palette = input.bytes(input.flag() ? 2 * places : input.byte());
    present.texels = input.bytes(input.byte());
    for (int i = input.byte(); i > 0; --i)
        present.usedByOthers.set(input.byte());
    const QImage picture = anyPicture(&input);
    const QVector<quint16> words = wordsOf(picture);
    const int colours = QSet<quint16>(words.begin(), words.end()).size();

    const FittedPicture fitted = fitPalette(picture, format, present);
    QByteArray palette = present.palette.leftJustified(2 * places, '\0', true);
    int written = 0;
    for (const PaletteRun &run : fitted.changes) {
        require(run.first >= written && run.first + run.colours.width() <= places,
                "runs lie in the palette, one behind the other");
        written = run.first + run.colours.width();
        for (int i = 0; i < run.colours.width(); ++i)
            qToBigEndian(quint16(texels::toRgb5a1(run.colours.pixel(i, 0))), palette.data() + 2 * (run.first + i));
    }
    require(fitted.picture.size() == picture.size(), "of the picture's size");
    require(fitted.colours == colours, "all colours are counted");
    require((fitted.lostColours == 0) == (colours <= places), "colours are lost only where there are too many");
    for (int i = 0; i < words.size(); ++i) {
        const int index = fitted.picture.pixelIndex(i % picture.width(), i / picture.width());
        require(index < places, "indices fit into the format");
        const quint16 shown = wordAt(palette, index);
        require(colours > places || shown == words.at(i), "each pixel has its colour");
        require((shown & 1) == (words.at(i) & 1), "clear stays clear");
    }

    const FittedPicture mapped = fitToPalette(picture, format, present);
    require(mapped.changes.isEmpty(), "the palette stays");
    require(mapped.picture.isNull() == (present.palette.size() < 2), "only without a palette there is no picture");
    for (int i = 0; i < words.size() && !mapped.picture.isNull(); ++i) {
        const int index = mapped.picture.pixelIndex(i % picture.width(), i / picture.width());
        require(2 * index + 2 <= present.palette.size(), "only places that are there");
    }
    return 0;
}
