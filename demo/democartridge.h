// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QVector>

/// A cartridge of the project's own, to try the program with, and to test and measure it: art drawn by code, in all formats.
namespace demo
{
/// A folder of the demo's file table.
struct Folder
{
    QString path; ///< The names from below the root on, each followed by "/".
    int address = 0; ///< In the image, in bytes.
    int size = 0;
};

/// A texture in the image.
struct Texture
{
    QString folder; ///< Path of its folder; empty for the root.
    QString name;
    QString format; ///< A key of textureFormats::getAsMap().
    int address = 0; ///< In the image, in bytes.
    int paletteAddress = -1; ///< In the image; -1 without one.
    QImage picture; ///< As drawn: the format may hold less of it. Format_Indexed8 for the palette formats.
    QByteArray data; ///< As it lies in the image.
    bool listed = true; ///< Described by the file table; the others are there to be found.
};

/// A picture that lies outside the image, for the file \a path (relative to the demo's folder).
struct Picture
{
    QString path;
    QImage picture;
};

struct Cartridge
{
    QByteArray image; ///< Big-endian, with the check codes of the boot chip 6102; there is no boot code.
    QVector<Folder> folders;
    QVector<Texture> textures;
    QVector<Picture> imports; ///< A folder "import" that mirrors the file table: the same places in winter.
    QVector<Picture> pack; ///< A texture pack "pack", with a folder by address and one by pointer.
    QVector<Picture> searches; ///< A folder "search": pictures of textures that the table does not list.
    QByteArray block; ///< What the Yay0 block at 0xF8000 holds.
};

/// Where two of the pictures to search for lie in the block's content, in bytes; both are rgb5a1.
constexpr int keyInBlock = 0x40;
constexpr int leafInBlock = 0x1000;

/// The name of the cartridge's folder of profiles.
extern const char *const identifier;

/// The cartridge, made on the first call and the same every time. Where Qt cannot write JPEG files, its JPEG is empty.
const Cartridge &cartridge();

/// The image as a later revision of a game might be: version 1, so that its identifier is "NQDE1". Something is inserted before
/// the folder "Level", so that all from there on moves by 0x2000 bytes; "Interface" and "Effects" have changed places; "Sun" is
/// painted anew.
QByteArray secondRevision();

/// Writes into \a folder, which is made if missing: demo.z64, demo.v64 and demo.n64, the second revision demo-1.1.z64, and the
/// folders "import", "pack" and "search". Files that are there already are replaced. The file list of the profile "default" goes
/// below \a profilesFolder, unless there is one: it may hold the user's work. False and a sentence in \a error when something
/// cannot be written.
bool writeDemo(const QString &folder, const QString &profilesFolder, QString *error);
}
