// SPDX-License-Identifier: MIT
// Recognising and converting any bytes as an image. Conversions are their own inverses and agree with the byte loop; an image
// that is recognised is big-endian afterwards and has an identifier; progress rises from 0 to the size.
#include "fuzzinput.h"

#include "model/byteorder.h"

namespace
{
QByteArray reversedUnits(QByteArray image, int unit)
{
    for (int start = 0; start < image.size(); start += unit)
        std::reverse(image.begin() + start, image.begin() + start + unit);
    return image;
}

void checkConversion(const QByteArray &image, ByteOrder order, int unit)
{
    QByteArray converted = image;
    int last = -1;
    convertByteOrder(&converted, order, [&](int bytes) {
        require(bytes > last && bytes <= image.size(), "progress rises and stays within the size");
        last = bytes;
    });
    require(last == image.size(), "progress ends at the size");
    require(converted == reversedUnits(image, unit), "as the byte loop converts");
    convertByteOrder(&converted, order);
    require(converted == image, "converting twice changes nothing");
}
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const QByteArray any = input.rest();
    const ByteOrder order = byteOrderOf(any);
    require(order == ByteOrder::Unknown || hasDetectableByteOrder(any.size()), "only whole images are recognised");
    cartridgeIdentifier(any);

    const QByteArray image = any.left(any.size() / 4 * 4);
    if (image.isEmpty())
        return 0;
    checkConversion(image, ByteOrder::ByteSwapped, 2);
    checkConversion(image, ByteOrder::LittleEndian, 4);
    if (order != ByteOrder::Unknown) {
        QByteArray normal = image;
        convertByteOrder(&normal, order);
        require(byteOrderOf(normal) == ByteOrder::BigEndian, "a recognised image is big-endian once converted");
        require(!cartridgeIdentifier(normal).isEmpty(), "it has an identifier");
    }
    return 0;
}
