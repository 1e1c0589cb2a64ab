// SPDX-License-Identifier: MIT
#include "transfer/imagepatch.h"

#include "base/crc32.h"

#include <QXmlStreamReader>

namespace
{
bool fits(const QByteArray &image, const BpsFacts &facts)
{
    return image.size() == facts.sourceBytes && crc32(image.constData(), image.size()) == facts.sourceCrc;
}

/// The order in which the big-endian \a image is the patch's source; BigEndian when it is in none.
ByteOrder orderThatFits(const QByteArray &image, const BpsFacts &facts)
{
    if (image.size() != facts.sourceBytes || fits(image, facts))
        return ByteOrder::BigEndian;
    for (const ByteOrder order : {ByteOrder::ByteSwapped, ByteOrder::LittleEndian}) {
        QByteArray turned = image;
        convertByteOrder(&turned, order);
        if (fits(turned, facts))
            return order;
    }
    return ByteOrder::BigEndian;
}

bool applyBpsInOrder(QByteArray *image, const QByteArray &patch, ByteOrder order, QString *error)
{
    if (order == ByteOrder::BigEndian)
        return applyBps(*image, patch, image, error);
    QByteArray turned = *image;
    convertByteOrder(&turned, order);
    if (!applyBps(turned, patch, &turned, error))
        return false;
    convertByteOrder(&turned, order);
    *image = turned;
    return true;
}
}

PatchKind patchKindOf(const QByteArray &patch)
{
    return isBps(patch) ? PatchKind::Bps : isIps(patch) ? PatchKind::Ips : PatchKind::Unknown;
}

QString patchKindName(PatchKind kind)
{
    switch (kind) {
    case PatchKind::Bps: return QStringLiteral("BPS");
    case PatchKind::Ips: return QStringLiteral("IPS");
    case PatchKind::Unknown: break;
    }
    return QString();
}

QByteArray bigEndianMetadata()
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<patch creator=\"Quillary\" byteOrder=\"z64\"/>\n";
}

ByteOrder orderInMetadata(const QByteArray &metadata)
{
    // Metadata come from anywhere; the first element of ours ends long before this.
    constexpr int looked = 1024;
    QXmlStreamReader xml(metadata.left(looked));
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("patch"))
        return ByteOrder::Unknown;
    const QStringRef order = xml.attributes().value(QLatin1String("byteOrder"));
    if (order == QLatin1String("z64"))
        return ByteOrder::BigEndian;
    if (order == QLatin1String("v64"))
        return ByteOrder::ByteSwapped;
    return order == QLatin1String("n64") ? ByteOrder::LittleEndian : ByteOrder::Unknown;
}

bool applyPatch(QByteArray *image, bool isCartridge, const QByteArray &patch, ByteOrder *madeFor, QString *error)
{
    *madeFor = ByteOrder::BigEndian;
    switch (patchKindOf(patch)) {
    case PatchKind::Bps: break;
    case PatchKind::Ips: return applyIps(*image, patch, image, error);
    case PatchKind::Unknown: *error = QStringLiteral("It is neither a BPS nor an IPS patch"); return false;
    }
    BpsFacts facts;
    if (!readBps(patch, &facts, error))
        return false;
    if (isCartridge)
        *madeFor = orderThatFits(*image, facts);
    if (applyBpsInOrder(image, patch, *madeFor, error))
        return true;
    if (image->size() == facts.targetBytes && crc32(image->constData(), image->size()) == facts.targetCrc)
        *error += QStringLiteral("; the image is what the patch makes already");
    return false;
}
