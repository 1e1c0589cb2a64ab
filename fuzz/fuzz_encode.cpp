// SPDX-License-Identifier: MIT
// Encoding a picture of any QImage format, size, row padding and colour table in any texture format. No access outside the
// picture; the bytes are as many as the format takes, and those that the picture gives when it is read pixel by pixel.
#include "fuzzinput.h"

#include "codec/texturemanipulator.h"

#include <cmath>

namespace
{
QImage anyImage(FuzzInput *input)
{
    const auto format = QImage::Format(1 + input->byte() % (int(QImage::NImageFormats) - 1));
    QImage image(input->byte() % 40, input->byte() % 40, format);
    if (image.isNull())
        return image;
    image.fill(0);
    if (image.colorCount() > 0 || format == QImage::Format_Indexed8) {
        QVector<QRgb> colours;
        for (int i = input->byte(); i > 0; --i)
            colours << QRgb(input->number());
        if (format == QImage::Format_Indexed8)
            colours.resize(256); // An index beyond the table is undefined in Qt itself.
        else
            colours.resize(2);
        image.setColorTable(colours);
    }
    for (int y = 0; y < image.height(); ++y) {
        uchar *row = image.scanLine(y);
        for (int i = 0; i < image.bytesPerLine(); ++i)
            row[i] = input->byte();
    }
    return image;
}
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const QMap<QString, textureFormat> formats = textureFormats::getAsMap();
    const QStringList names = formats.keys();
    const textureFormat format = formats.value(names.value(input.byte() % (names.size() + 1)), textureFormats::null);
    const QImage image = anyImage(&input);
    const QByteArray bytes = textureManipulator::generateData(image, format);

    if (image.isNull() || format.name == textureFormats::jpeg.name || format.name == textureFormats::null.name) {
        require(bytes.isNull(), "nothing to encode gives nothing");
        return 0;
    }
    const int pixels = image.width() * image.height();
    require(bytes.size() == int(std::ceil(pixels * format.bytesPerPixel)), "as many bytes as the format takes");
    if (format.name == textureFormats::ia16.name) {
        for (int i = 0; i < pixels; ++i) {
            const QRgb pixel = image.pixel(i % image.width(), i / image.width());
            require(quint8(bytes[2 * i]) == qRed(pixel) && quint8(bytes[2 * i + 1]) == qAlpha(pixel), "as the pixels read");
        }
    }
    return 0;
}
