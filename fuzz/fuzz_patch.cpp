// SPDX-License-Identifier: MIT
// Patches: any bytes, and BPS patches with right checksums around any actions. A patch is applied whole or refused with a reason,
// and then the image stays as it was; what cannot be read cannot be applied. A patch made of any two images gives the second one
// of the first.
#include "fuzzinput.h"

#include "base/crc32.h"
#include "transfer/bpsdelta.h"
#include "transfer/imagepatch.h"

#include <QtEndian>

namespace
{
/// The end of the last record that an IPS patch can have; BPS patches of these sources stay far below.
constexpr int maximumReach = 0xFFFFFF + 0xFFFF;

void appendSum(QByteArray *patch, const QByteArray &bytes)
{
    char sum[4];
    qToLittleEndian(crc32(bytes.constData(), bytes.size()), sum);
    patch->append(sum, 4);
}

/// A BPS patch for \a source with right checksums, but for that of the target.
QByteArray sealedBps(const QByteArray &source, FuzzInput *input)
{
    QByteArray patch("BPS1");
    appendBpsNumber(&patch, quint64(source.size()));
    appendBpsNumber(&patch, input->byte());
    appendBpsNumber(&patch, 0);
    patch += input->rest();
    appendSum(&patch, source);
    appendSum(&patch, source);
    appendSum(&patch, patch);
    return patch;
}

/// Pieces of a few letters, so that they meet again.
QByteArray anyImage(FuzzInput *input, const QByteArray &from)
{
    QByteArray image;
    for (int pieces = input->below(8); pieces > 0; --pieces) {
        const int length = input->byte();
        switch (input->below(3)) {
        case 0: image += input->bytes(length); break;
        case 1: image += QByteArray(length, char(input->byte())); break;
        default: image += from.mid(input->byte(), length); break;
        }
    }
    return image;
}

void requireWholeOrNothing(const QByteArray &source, const QByteArray &patch)
{
    QByteArray image = source;
    ByteOrder order = ByteOrder::Unknown;
    QString error;
    const bool applied = applyPatch(&image, source.size() % 4 == 0, patch, &order, &error);
    require(applied || (image == source && !error.isEmpty()), "a patch is applied whole or refused with a reason");
    require(image.size() <= maximumReach, "no result is larger than an image can be");
    BpsFacts bps;
    IpsFacts ips;
    const bool readable = patchKindOf(patch) == PatchKind::Bps ? readBps(patch, &bps, &error) : readIps(patch, &ips, &error);
    require(readable || !applied, "what cannot be read cannot be applied");
}

void requireThereAndBack(const QByteArray &source, const QByteArray &target)
{
    QByteArray made;
    QString error;
    require(applyBps(source, createBps(source, target, "metadata"), &made, &error) && made == target, "BPS gives the target");
    QByteArray patch;
    require(createIps(source, target, &patch, &error), "small images fit into an IPS patch");
    made.clear();
    require(applyIps(source, patch, &made, &error) && made == target, "IPS gives the target");
}
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const int kind = input.below(4);
    const QByteArray source = input.bytes(input.below(64));
    if (kind == 0)
        requireWholeOrNothing(source, input.rest());
    else if (kind == 1)
        requireWholeOrNothing(source, sealedBps(source, &input));
    else if (kind == 2)
        requireWholeOrNothing(source, "PATCH" + input.rest());
    else {
        const QByteArray first = anyImage(&input, source);
        requireThereAndBack(first, anyImage(&input, first));
    }
    return 0;
}
