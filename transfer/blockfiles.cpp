// SPDX-License-Identifier: MIT
#include "transfer/blockfiles.h"

#include "base/hexnumber.h"
#include "base/printabletext.h"

namespace
{
constexpr int addressCharacters = 10; // "0x" and eight digits
}

QString fileIdentifier(const QString &romID)
{
    static const QString reserved = QStringLiteral("/\\:*?\"<>|");
    QString name = romID;
    for (QChar &character : name) {
        if (isControlOrBidi(character) || reserved.contains(character))
            character = QLatin1Char('_');
    }
    // A dot in front hides a file, and a hyphen looks like an option.
    if (name.isEmpty() || name.startsWith(QLatin1Char('.')) || name.startsWith(QLatin1Char('-')))
        name.prepend(QLatin1Char('_'));
    return name;
}

QString blockFileName(const QString &romID, const CompressedBlock &block)
{
    return fileIdentifier(romID) + QLatin1Char('-') + hexNumber(block.address) + QLatin1Char('.')
        + blockKindName(block.kind).toLower();
}

std::optional<BlockFileName> parsedBlockFileName(const QString &fileName)
{
    const int dot = fileName.lastIndexOf(QLatin1Char('.'));
    const int hyphen = dot - addressCharacters - 1;
    if (hyphen < 1 || fileName.at(hyphen) != QLatin1Char('-'))
        return std::nullopt;
    BlockFileName name;
    name.identifier = fileName.left(hyphen);
    name.address = parseHexadecimal(fileName.mid(hyphen + 1, addressCharacters));
    for (const BlockKind kind : allBlockKinds) {
        name.kind = kind;
        // Written again it has to be the same: so the digits are digits, and the letters are in their case.
        if (name.address >= 0 && blockFileName(name.identifier, {kind, name.address, 0, 0}) == fileName)
            return name;
    }
    return std::nullopt;
}

BlockPacking packBlock(const QByteArray &image, int address, BlockKind kind, const QByteArray &content)
{
    BlockPacking packing;
    const std::optional<CompressedBlock> old = blockAt(image, address);
    if (!old || old->kind != kind)
        return packing;
    packing.oldUnpackedSize = old->unpackedSize;
    packing.room = old->packedSize;
    packing.packedSize = old->packedSize;
    if (unpackedBlock(image, *old) == content) {
        packing.result = BlockPacking::Result::Unchanged;
        return packing;
    }
    const QByteArray packed = packedBlock(kind, content, image.mid(address, old->packedSize));
    packing.packedSize = packed.size();
    if (packed.isEmpty()) {
        packing.result = BlockPacking::Result::NotPackable;
    } else if (packing.missing() > 0) {
        packing.result = BlockPacking::Result::TooLong;
    } else {
        packing.bytes = packed.leftJustified(packing.room, '\0');
        packing.result = BlockPacking::Result::Packed;
    }
    return packing;
}
