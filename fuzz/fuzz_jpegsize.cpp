// SPDX-License-Identifier: MIT
// Measuring a JPEG stream in an image of any bytes, at any address. No read outside the image; the size is -1, -2, 1, or ends
// behind an end marker inside the image; the bytes of the entry are as many as its size says, and none for a negative one.
#include "fuzzinput.h"

#include "model/rom.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    static fileTreeFile texture;
    texture.format = QStringLiteral("jpeg");
    texture.address = input.byte() < 250 ? input.byte() : input.number();
    currentROM.data = input.rest();
    currentROM.loaded = true;

    const int measured = texture.size();
    const QByteArray bytes = texture.data();
    require(measured == -1 || measured == -2 || measured == 1 || measured >= 6, "a size is a failure, 1, or has its markers");
    if (measured < 0) {
        require(bytes.isNull(), "what cannot be measured has no bytes");
    } else {
        require(bytes.size() == measured, "the bytes lie inside the image");
        require(measured == 1 || bytes.startsWith("\xFF\xD8"), "it begins with a start marker");
        require(measured == 1 || bytes.endsWith("\xFF\xD9"), "it ends with an end marker");
    }
    return 0;
}
