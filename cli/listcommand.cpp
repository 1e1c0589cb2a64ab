// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/nodejson.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "model/rom.h"
#include "model/tablewalk.h"
#include "model/textureformat.h"

#include <QJsonArray>
#include <QJsonObject>

namespace cli
{
namespace
{
/// What the list says of a texture beside its path.
struct Row
{
    explicit Row(const fileTreeFile &texture)
        : address(texture.realAddress()), size(texture.size()), paletteAddress(texture.realPaletteAddress()),
          isJpeg(textureFormats::isJpegInAnyCase(texture.format)),
          usesPalette(textureFormats::getAsMap().value(texture.format).usesPalette)
    {
    }

    int address;
    int size; ///< Negative when a JPEG cannot be measured.
    int paletteAddress;
    bool isJpeg;
    bool usesPalette;
};

void printRow(QTextStream &out, int address, const QString &size, const QString &format, const QString &dimensions,
              const QString &palette, const QString &path)
{
    const QLatin1String gap("  ");
    out << hexNumber(address) << gap << size.rightJustified(10) << gap << printable(format).leftJustified(8) << gap
        << dimensions.leftJustified(11) << gap << palette.leftJustified(10) << gap << printable(path) << '\n';
}

void printHeading(QTextStream &out)
{
    out << QLatin1String("Address           Size  Format    Dimensions   Palette     Path\n");
}

void printTexture(QTextStream &out, const fileTreeFile &texture, const QString &path)
{
    const Row row(texture);
    const QString none = QStringLiteral("-");
    printRow(out, row.address, row.size < 0 ? none : QString::number(row.size), texture.format,
             row.isJpeg ? none : QString::number(texture.width) + QLatin1Char('x') + QString::number(texture.height),
             row.usesPalette ? hexNumber(row.paletteAddress) : none, path);
}

void printFolder(QTextStream &out, const fileTreeDirectory &folder, const QString &path)
{
    const QString none = QStringLiteral("-");
    printRow(out, folder.realAddress(), QString::number(folder.size), QStringLiteral("folder"), none, none, path);
}

void printText(const TableNode &node, QTextStream &out)
{
    printHeading(out);
    if (node.texture) {
        printTexture(out, *node.texture, fullPath(*node.texture));
        return;
    }
    walkTable(*node.folder,
              {[&out](const fileTreeDirectory &folder, const QString &path) { printFolder(out, folder, path); },
               [&out](const fileTreeFile &texture, const QString &path) { printTexture(out, texture, path); }});
}

QJsonObject json(const TableNode &node, const ChosenProfile &profile)
{
    QJsonArray folders;
    QJsonArray textures;
    if (node.texture)
        textures.append(textureJson(*node.texture, fullPath(*node.texture)));
    else
        walkTable(*node.folder,
                  {[&](const fileTreeDirectory &folder, const QString &path) { folders.append(folderJson(folder, path)); },
                   [&](const fileTreeFile &texture, const QString &path) { textures.append(textureJson(texture, path)); }});
    return {{QStringLiteral("identifier"), currentROM.romID},
            {QStringLiteral("profile"), profile.name},
            {QStringLiteral("folders"), folders},
            {QStringLiteral("textures"), textures}};
}

int run(const Arguments &arguments, Streams &streams)
{
    OpenedImage image;
    ChosenProfile profile;
    if (!openImageAndProfile(arguments, MissingList::EmptyUnlessNamed, &image, &profile, streams))
        return Failed;
    const TableNode node = nodeAtPath(currentROM.root, arguments.positional(1));
    if (!node.exists())
        return streams.failed(pathNamesNothing(arguments.positional(1), profile));
    if (arguments.isSet("json"))
        printJson(streams.out, json(node, profile));
    else
        printText(node, streams.out);
    return Done;
}
}

Command listCommand()
{
    return {
        QStringLiteral("list"),
        QStringLiteral("List the file table of a profile."),
        QStringLiteral("IMAGE [PATH]"),
        QStringLiteral("Lists the textures and folders of the profile, or only what PATH names: address in the image, size in\n"
                       "bytes, format, width and height, the palette's address in the image, and the path."),
        1,
        2,
        profileOptions() << jsonOption(),
        run};
}
}
