// SPDX-License-Identifier: MIT
#include "system/monkey/walkfiles.h"

#include "codec/texturemanipulator.h"
#include "model/textureformat.h"
#include "support/images.h"
#include "support/pictures.h"

#include <QDir>

namespace
{
constexpr int imageSize = 64 * 1024;

QImage tile(int width, int height, int seed)
{
    QImage picture(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            picture.setPixel(x, y, qRgba((x * 37 + seed * 11) & 255, (y * 53 + seed) & 255, (x * y + seed * 7) & 255, 255));
    }
    return picture;
}

QImage indexedTile(int width, int height, int colours)
{
    QImage picture(width, height, QImage::Format_Indexed8);
    QVector<QRgb> table;
    for (int i = 0; i < colours; ++i)
        table << qRgba(i * 8 & 255, i * 16 & 255, 255 - (i & 255), 255);
    picture.setColorTable(table);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            picture.setPixel(x, y, uint((x + y * width) % colours));
    }
    return picture;
}

/// An image with textures to find and a JPEG.
QByteArray imageWithTextures(const QByteArray &id, quint32 seed)
{
    QByteArray image = cartridgeImage(imageSize, id, 0, seed);
    const auto put = [&image](int address, const QByteArray &bytes) { image.replace(address, bytes.size(), bytes); };
    put(0x40, QByteArray::fromHex("00002000"));
    for (const int address : {0x1000, 0x3100, 0x5204})
        put(address, textureManipulator::generateData(tile(4, 4, 1), textureFormats::rgba32));
    put(0x2000, textureManipulator::generateData(tile(8, 8, 2), textureFormats::rgb5a1));
    put(0x2400, textureManipulator::generateData(tile(8, 8, 2), textureFormats::i8));
    put(0x4000, jpegBytes(16, 16));
    put(0x8000, QByteArray(0x1000, '\0'));
    return image;
}
}

WalkFiles::WalkFiles()
{
    makeImages();
    makePictures();
    makePictureFolder();
    makePack();
    QDir(m_folder.path()).mkpath(QStringLiteral("out/inner"));
}

void WalkFiles::makeImages()
{
    const QByteArray first = imageWithTextures("NWFA", 1);
    const QByteArray sameCartridge = imageWithTextures("NWFA", 2);
    const QByteArray second = imageWithTextures("NWSB", 3);
    writeBytes(path(QStringLiteral("first.z64")), first);
    writeBytes(path(QStringLiteral("same cartridge.n64")), withReversedUnits(sameCartridge, 4));
    writeBytes(path(QStringLiteral("second.v64")), withReversedUnits(second, 2));
    writeBytes(path(QStringLiteral("plain.bin")), QByteArray(4096, '\x11'));
    writeBytes(path(QStringLiteral("short.bin")), QByteArray(40, '\x22'));
    writeBytes(path(QStringLiteral("empty.bin")), QByteArray());
}

void WalkFiles::makePictures()
{
    tile(4, 4, 1).save(path(QStringLiteral("four.png")));
    tile(8, 8, 2).save(path(QStringLiteral("eight.png")));
    tile(16, 8, 3).save(path(QStringLiteral("wide.png")));
    tile(32, 32, 4).save(path(QStringLiteral("large.png")));
    tile(3, 5, 5).save(path(QStringLiteral("odd.png")));
    indexedTile(8, 8, 16).save(path(QStringLiteral("indexed16.png")));
    indexedTile(16, 16, 256).save(path(QStringLiteral("indexed256.png")));
    plainPicture(4, 4, qRgb(0, 0, 0)).save(path(QStringLiteral("black.png")));
    writeBytes(path(QStringLiteral("damaged.png")), "no picture");
    writeBytes(path(QStringLiteral("photo.jpeg")), jpegBytes(16, 16));
    writeBytes(path(QStringLiteral("photo.jpg")), jpegBytes(24, 8, qRgb(0, 90, 200)));
}

void WalkFiles::makePictureFolder()
{
    const QString folder = path(QStringLiteral("import"));
    QDir(folder).mkpath(QStringLiteral("Grass/Deep"));
    QDir(folder).mkpath(QStringLiteral("New Folder"));
    QDir(folder).mkpath(QStringLiteral("Unknown"));
    tile(4, 4, 6).save(folder + QStringLiteral("/Tile.png"));
    tile(8, 8, 7).save(folder + QStringLiteral("/Sky.png"));
    tile(32, 32, 8).save(folder + QStringLiteral("/New Texture.png"));
    tile(8, 8, 9).save(folder + QStringLiteral("/Grass/Blade.png"));
    indexedTile(8, 8, 16).save(folder + QStringLiteral("/Grass/Deep/Root.png"));
    writeBytes(folder + QStringLiteral("/Photo.jpeg"), jpegBytes(16, 16, qRgb(9, 9, 200)));
    writeBytes(folder + QStringLiteral("/notes.txt"), "notes");
}

void WalkFiles::makePack()
{
    const QString folder = path(QStringLiteral("pack"));
    QDir(folder).mkpath(QStringLiteral("A_00001000_Pack"));
    QDir(folder).mkpath(QStringLiteral("P_40_Pointed"));
    QDir(folder).mkpath(QStringLiteral("A_00000000_"));
    QDir(folder).mkpath(QStringLiteral("no pack folder"));
    tile(4, 4, 10).save(folder + QStringLiteral("/A_00001000_Pack/00006000_rgba32_tile.png"));
    tile(8, 8, 11).save(folder + QStringLiteral("/A_00001000_Pack/00006100_i8_sky.png"));
    indexedTile(8, 8, 16).save(folder + QStringLiteral("/P_40_Pointed/00006200_ci4_leaf.png"));
    writeBytes(folder + QStringLiteral("/P_40_Pointed/00006300_jpeg_photo.jpeg"), jpegBytes(16, 16));
    writeBytes(folder + QStringLiteral("/A_00000000_/00006400_rgba32_damaged.png"), "no picture");
    QDir(m_folder.path()).mkpath(QStringLiteral("empty pack"));
}

QStringList WalkFiles::images() const
{
    QStringList paths;
    for (const char *name :
         {"first.z64", "first.z64", "same cartridge.n64", "second.v64", "plain.bin", "short.bin", "empty.bin", "missing.z64"})
        paths << path(QLatin1String(name));
    return paths;
}

QStringList WalkFiles::pictures() const
{
    QStringList paths;
    for (const char *name : {"four.png", "eight.png", "wide.png", "large.png", "odd.png", "indexed16.png", "indexed256.png",
                             "black.png", "damaged.png", "photo.jpeg", "photo.jpg", "missing.png"})
        paths << path(QLatin1String(name));
    return paths;
}

QStringList WalkFiles::pictureFolders() const
{
    return {path(QStringLiteral("import")), path(QStringLiteral("import/Grass")), path(QStringLiteral("empty pack"))};
}

QStringList WalkFiles::packs() const
{
    return {path(QStringLiteral("pack")), path(QStringLiteral("pack")), path(QStringLiteral("empty pack"))};
}

QStringList WalkFiles::targets(const QString &suffix) const
{
    return {path(QStringLiteral("out/a") + suffix), path(QStringLiteral("out/b") + suffix),
            path(QStringLiteral("out/inner/c") + suffix), QStringLiteral("/proc/unwritable") + suffix};
}

QStringList WalkFiles::targetFolders() const
{
    return {path(QStringLiteral("out")), path(QStringLiteral("out/inner"))};
}

QByteArray WalkFiles::firstList()
{
    return R"(<root version="2">
<directory name="Grass" address="0x00001000" size="0x00003000">
 <directory name="Deep" address="0x00000100" size="0x00001000">
  <texture name="Root" address="0x00000080" format="ci4" width="8" height="8" palette="0x00000200"/>
  <texture name="Bark" address="0x00000000" format="ia8" width="8" height="8"/>
 </directory>
 <directory name="Empty" address="0x00000800" size="0x00000100"/>
 <texture name="Blade" address="0x00000000" format="rgba32" width="4" height="4"/>
 <texture name="Blade" address="0x00001000" format="rgb5a1" width="8" height="8"/>
 <texture name="Leaf" address="0x00001400" format="ci8" width="8" height="8" palette="0x00000300"/>
</directory>
<directory name="Sky" address="0x00004000" size="0x00000800">
 <texture name="Photo" address="0x00000000" format="jpeg"/>
 <texture name="No photo" address="0x00000100" format="jpeg"/>
 <texture name="Capitals" address="0x00000000" format="JPEG"/>
</directory>
<texture name="Tile" address="0x00003100" format="rgba32" width="4" height="4"/>
<texture name="Sky" address="0x00002400" format="i8" width="8" height="8"/>
<texture name="Past" address="0x0000FFF0" format="rgba32" width="8" height="8"/>
<texture name="Odd" address="0x00002000" format="tim" width="0" height="200000"/>
</root>
)";
}
