// SPDX-License-Identifier: MIT
#include "demo/democartridge.h"

#include "codec/compressedblock.h"
#include "demo/canvas.h"
#include "demo/displaylists.h"
#include "demo/layout.h"
#include "demo/lettering.h"
#include "demo/materials.h"
#include "demo/scenery.h"
#include "demo/sprites.h"
#include "model/headerchecksum.h"

namespace demo
{
namespace
{
constexpr int imageSize = 0x300000;
constexpr int programStart = 0x1000;
constexpr int programEnd = 0xF0000;
constexpr int unusedStart = 0x290000;
constexpr int pointerAddress = 0x1F00;
/// What the pointer points to: a place from which the pack's picture, counted as the table counts it, is one slot further on.
constexpr int pointedAddress = 0x1000;
constexpr int packSlot = 0x280000;
/// A compressed block, in what the label leaves of the range before the folders: 0xF8000 to at most 0xFC000.
constexpr int blockAddress = 0xF8000;
/// From here on the pack puts pictures that the cartridge does not have.
constexpr int packWalls = 0x284000;
/// Room for the panorama and for pictures that replace it.
constexpr int jpegRoom = 0x20000;

const QString rgba32 = QStringLiteral("rgba32");
const QString rgb5a1 = QStringLiteral("rgb5a1");
const QString ci4 = QStringLiteral("ci4");
const QString ci8 = QStringLiteral("ci8");
const QString i4 = QStringLiteral("i4");
const QString i8 = QStringLiteral("i8");
const QString ia4 = QStringLiteral("ia4");
const QString ia8 = QStringLiteral("ia8");
const QString ia16 = QStringLiteral("ia16");
const QString jpeg = QStringLiteral("jpeg");

/// A material or figure in both seasons.
template<typename Function> void addSeasons(Layout *layout, const QString &name, const QString &format, Function drawIn)
{
    layout->add(name, format, drawIn(Season::Summer), drawIn(Season::Winter));
}

void addSquare(Layout *layout, const QString &name, const QString &format, int side, QImage (*draw)(int, Season))
{
    addSeasons(layout, name, format, [&](Season season) { return draw(side, season); });
}

void addHeader(Layout *layout)
{
    layout->put(0, QByteArray::fromHex("803712400000000F80000400"));
    layout->put(0x20, QByteArray("QUILLARY DEMO").leftJustified(20, ' '));
    layout->put(59, "NQDE");
    // Stands for the game's program and its data: noise, as a search meets it in a real cartridge.
    for (int address = programStart; address < programEnd; address += 4)
        layout->putWord(address, scattered(address, 0, 1));
    layout->putWord(pointerAddress, pointedAddress);
    layout->put(unusedStart, QByteArray(imageSize - unusedStart, '\xFF'));
}

void addTitle(Layout *layout)
{
    layout->enter(QStringLiteral("Title/"), 0x100000, 0x40000);
    layout->add(QStringLiteral("Logo"), rgba32, logo(0xFFFFE36B, 0xFFF0882A), logo(0xFFF4FCFF, 0xFF4AA3E8));
    layout->add(QStringLiteral("Press Start"), ia8, banner(QStringLiteral("PRESS START"), 128, 16),
                banner(QStringLiteral("LET IT SNOW"), 128, 16));
    addSquare(layout, QStringLiteral("Sky"), rgb5a1, 64, sky);
    addSquare(layout, QStringLiteral("Sun"), rgba32, 64, sun);
    addSeasons(layout, QStringLiteral("Panorama"), jpeg, [](Season season) { return panorama(224, 112, season); });
    layout->skip(jpegRoom - layout->cartridge.textures.last().data.size());
}

void addLevel(Layout *layout)
{
    layout->enter(QStringLiteral("Level/"), 0x140000, 0x80000);
    layout->enter(QStringLiteral("Level/Ground/"), 0x140000, 0x10000);
    addSquare(layout, QStringLiteral("Grass"), rgb5a1, 32, grass);
    addSquare(layout, QStringLiteral("Meadow"), rgba32, 64, flowers);
    addSquare(layout, QStringLiteral("Dirt"), rgb5a1, 32, dirt);
    addSquare(layout, QStringLiteral("Cobblestones"), rgb5a1, 64, cobblestones);
    addSquare(layout, QStringLiteral("Sand"), rgb5a1, 32, sand);

    layout->enter(QStringLiteral("Level/Walls/"), 0x150000, 0x10000);
    addSquare(layout, QStringLiteral("Bricks"), rgb5a1, 32, bricks);
    addSquare(layout, QStringLiteral("Large Bricks"), rgba32, 64, bricks);
    addSquare(layout, QStringLiteral("Planks"), rgb5a1, 64, planks);
    addSquare(layout, QStringLiteral("Metal Plate"), rgb5a1, 32, metalPlate);
    addSquare(layout, QStringLiteral("Leaves"), rgb5a1, 64, leaves);

    layout->enter(QStringLiteral("Level/Liquids/"), 0x160000, 0x20000);
    layout->add(QStringLiteral("Lava"), rgb5a1, lava(64));
    layout->enter(QStringLiteral("Level/Liquids/Water/"), 0x168000, 0x8000);
    layout->addPalette(waterPalette());
    constexpr int frames = 4;
    for (int frame = 0; frame < frames; ++frame) {
        addSeasons(layout, QStringLiteral("Water %1").arg(frame + 1), ci4,
                   [&](Season season) { return water(32, frame, frames, season); });
    }
}

void addOwl(Layout *layout)
{
    // Both seasons share a palette: replacing a folder of pictures leaves palettes alone.
    QImage both(64, 128, QImage::Format_ARGB32);
    drawOnto(&both, owl(Season::Summer), 0, 0);
    drawOnto(&both, owl(Season::Winter), 0, 64);
    both = withPalette(both, 256);
    layout->addPalette(both.colorTable());
    layout->add(QStringLiteral("Owl"), ci8, both.copy(0, 0, 64, 64), both.copy(0, 64, 64, 64));
}

void addActors(Layout *layout)
{
    layout->enter(QStringLiteral("Actors/"), 0x1C0000, 0x40000);
    addOwl(layout);
    addSeasons(layout, QStringLiteral("Mushroom"), rgb5a1, mushroom);

    layout->enter(QStringLiteral("Actors/Coin/"), 0x1C8000, 0x8000);
    layout->addPalette(coinPalette());
    for (int frame = 0; frame < 4; ++frame)
        layout->add(QStringLiteral("Coin %1").arg(frame + 1), ci4, coin(frame));

    layout->enter(QStringLiteral("Actors/Slime/"), 0x1D0000, 0x8000);
    layout->addPalette(slimePalette());
    for (int frame = 0; frame < 2; ++frame)
        layout->add(QStringLiteral("Slime %1").arg(frame + 1), ci4, slime(frame));
}

void addInterface(Layout *layout)
{
    layout->enter(QStringLiteral("Interface/"), 0x200000, 0x20000);
    layout->add(QStringLiteral("Font"), i4, fontSheet());
    layout->add(QStringLiteral("Digits"), ia4, digits());
    addSeasons(layout, QStringLiteral("Heart"), rgba32, [](Season season) { return heart(Heart::Full, season); });
    addSeasons(layout, QStringLiteral("Half Heart"), rgba32, [](Season season) { return heart(Heart::Half, season); });
    layout->add(QStringLiteral("Empty Heart"), rgba32, heart(Heart::Empty, Season::Summer));
    const QImage map = islandMap(64);
    layout->addPalette(map.colorTable());
    layout->add(QStringLiteral("Map"), ci8, map);
}

void addEffects(Layout *layout)
{
    layout->enter(QStringLiteral("Effects/"), 0x220000, 0x20000);
    layout->add(QStringLiteral("Glow"), ia16, glow(32));
    layout->add(QStringLiteral("Flare"), ia16, flare(64));
    layout->add(QStringLiteral("Smoke"), i8, smoke(64));
    layout->add(QStringLiteral("Shadow"), i4, shadow(32));
    layout->add(QStringLiteral("Rain"), ia4, rain(64));
}

/// A region that the table does not describe, with things to find. The grass is there a second time.
void addUnexplored(Layout *layout)
{
    layout->enter(QStringLiteral("Unexplored/"), 0x240000, 0x40000);
    layout->skip(0x1230);
    layout->hide(QStringLiteral("Gem"), rgba32, gem(Season::Summer));
    layout->skip(0x458);
    layout->hide(QStringLiteral("Key"), rgb5a1, key());
    layout->skip(0x2A0);
    layout->hide(QStringLiteral("Grass"), rgb5a1, grass(32, Season::Summer));
    layout->skip(0x71C8);
    layout->hide(QStringLiteral("Leaf"), rgb5a1, leaf(Season::Summer));
    for (const Texture &texture : qAsConst(layout->cartridge.textures)) {
        if (!texture.listed)
            layout->cartridge.searches.append({QStringLiteral("search/%1.png").arg(texture.name), texture.picture});
    }
}

QString eightDigits(int number)
{
    return QStringLiteral("%1").arg(number, 8, 16, QLatin1Char('0')).toUpper();
}

QString packFile(const QString &folder, int address, const Texture &texture)
{
    return QStringLiteral("pack/%1/%2_%3_Repainted %4.png").arg(folder, eightDigits(address), texture.format, texture.name);
}

void addPack(Layout *layout)
{
    layout->enterRoot(packSlot);
    layout->hide(QStringLiteral("Gem in Slot"), rgba32, gem(Season::Summer));
    Cartridge &cartridge = layout->cartridge;
    cartridge.pack.append({packFile(QStringLiteral("P_%1_Treasure").arg(eightDigits(pointerAddress)),
                                    cartridge.textures.constLast().address, cartridge.textures.constLast()),
                           gem(Season::Winter)});
    layout->enterRoot(packSlot + pointedAddress);
    layout->hide(QStringLiteral("Repainted Gem"), rgba32, gem(Season::Winter));
    // Where nothing is yet: a table that lists the same bytes twice has errors.
    int address = packWalls;
    for (const Texture &texture : qAsConst(cartridge.textures)) {
        const QString imported = QStringLiteral("import/%1%2.png").arg(texture.folder, texture.name);
        if (texture.folder != QLatin1String("Level/Walls/") || !texture.listed)
            continue;
        for (const Picture &picture : qAsConst(cartridge.imports)) {
            if (picture.path != imported)
                continue;
            cartridge.pack.append({packFile(QStringLiteral("A_00000000_Repainted"), address, texture), picture.picture});
            address += texture.data.size();
        }
    }
}

/// A block as games pack theirs: a few words of a level's data, and two of the pictures to search for.
void addBlock(Layout *layout)
{
    QByteArray content("LEVEL 1");
    content = content.leftJustified(keyInBlock, '\0') + encoded(key(), rgb5a1);
    content = content.leftJustified(leafInBlock, '\0') + encoded(leaf(Season::Summer), rgb5a1);
    layout->cartridge.block = content;
    layout->put(blockAddress, packedBlock(BlockKind::Yay0, content));
}

/// The header's check codes as tools write them. There is no boot code that tells the chip; the usual one is taken.
void storeCodes(QByteArray *image)
{
    storeCheckCodes(image, *computedCheckCodes(*image, BootChip::Cic6102));
}

Cartridge made()
{
    Layout layout(imageSize);
    addHeader(&layout);
    layout.enterRoot(programEnd);
    layout.add(QStringLiteral("Cartridge Label"), rgba32, label());
    addBlock(&layout);
    addTitle(&layout);
    addLevel(&layout);
    addActors(&layout);
    addInterface(&layout);
    addEffects(&layout);
    addUnexplored(&layout);
    addPack(&layout);
    addDisplayLists(&layout);
    storeCodes(&layout.cartridge.image);
    return layout.cartridge;
}
}

const char *const identifier = "NQDE0";

const Cartridge &cartridge()
{
    static const Cartridge only = made();
    return only;
}

QByteArray secondRevision()
{
    constexpr int versionOffset = 63;
    constexpr int insertedAt = 0x140000; // the folder "Level"
    constexpr int insertedBytes = 0x2000;
    constexpr int interface = 0x200000;
    constexpr int effects = 0x220000;
    constexpr int folderBytes = 0x20000;
    QByteArray image = cartridge().image;
    image[versionOffset] = 1;
    for (const Texture &texture : cartridge().textures) {
        if (texture.listed && texture.name == QLatin1String("Sun"))
            image.replace(texture.address, texture.data.size(), encoded(sun(64, Season::Winter), rgba32));
    }
    const QByteArray first = image.mid(interface, folderBytes);
    image.replace(interface, folderBytes, image.mid(effects, folderBytes));
    image.replace(effects, folderBytes, first);
    QByteArray inserted;
    for (int address = 0; address < insertedBytes; ++address)
        inserted.append(char(scattered(address, 1, 2)));
    image.insert(insertedAt, inserted);
    image.truncate(imageSize); // What falls off the end is unused.
    storeCodes(&image);
    return image;
}
}
