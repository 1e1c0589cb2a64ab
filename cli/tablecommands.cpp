// SPDX-License-Identifier: MIT
// The commands that edit a profile's table: add, set, move, remove.
#include "base/hexnumber.h"
#include "base/wrapping.h"
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/nodejson.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "model/rom.h"
#include "model/tableedit.h"
#include "model/textureformat.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

namespace cli
{
namespace
{
QList<QCommandLineOption> nodeOptions()
{
    return {{QStringLiteral("name"), QStringLiteral("Its name; a number is added when the folder has one of that name."),
             QStringLiteral("NAME")},
            {QStringLiteral("address"), QStringLiteral("Its address in the image."), QStringLiteral("N")},
            {QStringLiteral("offset"), QStringLiteral("Its address relative to its folder, instead of --address."),
             QStringLiteral("N")},
            {QStringLiteral("format"), QStringLiteral("An entry's format: %1.").arg(formatNames()), QStringLiteral("FORMAT")},
            {QStringLiteral("width"), QStringLiteral("An entry's width in pixels."), QStringLiteral("N")},
            {QStringLiteral("height"), QStringLiteral("An entry's height in pixels."), QStringLiteral("N")},
            {QStringLiteral("palette"), QStringLiteral("The address in the image of an entry's palette, for ci4 and ci8."),
             QStringLiteral("N")},
            {QStringLiteral("palette-offset"), QStringLiteral("The same relative to its folder, as the window shows it."),
             QStringLiteral("N")},
            {QStringLiteral("size"), QStringLiteral("A folder's length in bytes."), QStringLiteral("N")}};
}

QList<QCommandLineOption> tableOptions()
{
    return QList<QCommandLineOption> {{QStringLiteral("dry-run"), QStringLiteral("Write nothing, but say what would change.")}}
    << profileOptions() << jsonOption();
}

/// Rejects values that make no sense whatever the node is.
void checkNodeOptions(const Arguments &arguments)
{
    for (const char *number : {"address", "offset", "palette", "palette-offset", "size"})
        arguments.number(number);
    for (const char *pixels : {"width", "height"}) {
        constexpr int most = 100000;
        const int value = arguments.number(pixels).value_or(1);
        if (value < 1 || value > most)
            arguments.reject(QStringLiteral("--width and --height are from 1 to %1").arg(most));
    }
    arguments.format("format");
    if (arguments.isSet("address") && arguments.isSet("offset"))
        arguments.reject(QStringLiteral("--address and --offset exclude each other"));
    if (arguments.isSet("palette") && arguments.isSet("palette-offset"))
        arguments.reject(QStringLiteral("--palette and --palette-offset exclude each other"));
    if (arguments.isSet("name") && arguments.value("name").isEmpty())
        arguments.reject(QStringLiteral("--name needs a name"));
    if (arguments.isSet("size") && arguments.number("size").value_or(1) < 1)
        arguments.reject(QStringLiteral("--size is at least 1"));
}

/// The first of \a options that is given, as "--option"; empty when none is.
QString givenOf(const Arguments &arguments, const QVector<const char *> &options)
{
    for (const char *option : options) {
        if (arguments.isSet(option))
            return QStringLiteral("--") + QLatin1String(option);
    }
    return QString();
}

/// Changes \a texture as the options say. Returns what is wrong; empty when nothing is.
QString changeTexture(const Arguments &arguments, fileTreeFile *texture)
{
    const QString misplaced = givenOf(arguments, {"size", "fixed-content"});
    if (!misplaced.isEmpty())
        return QStringLiteral("%1 belongs to folders, and \"%2\" is an entry").arg(misplaced, fullPath(*texture));
    if (const std::optional<textureFormat> format = arguments.format("format"))
        texture->format = format->name;
    const QString palette = givenOf(arguments, {"palette", "palette-offset"});
    if (!palette.isEmpty() && !textureFormats::getAsMap().value(texture->format).usesPalette)
        return QStringLiteral("%1: a texture in %2 has no palette").arg(palette, texture->format);
    texture->width = arguments.number("width").value_or(texture->width);
    texture->height = arguments.number("height").value_or(texture->height);
    texture->address = arguments.number("offset").value_or(texture->address);
    if (const std::optional<qint32> address = arguments.number("address"))
        setRealAddress(texture, *address);
    texture->paletteAddress = arguments.number("palette-offset").value_or(texture->paletteAddress);
    if (const std::optional<qint32> address = arguments.number("palette"))
        setRealPaletteAddress(texture, *address);
    if (arguments.isSet("name"))
        texture->setName(arguments.value("name"));
    return QString();
}

/// The same for \a folder. One that begins outside the image would be read back at another place.
QString changeFolder(const Arguments &arguments, fileTreeDirectory *folder)
{
    const QString misplaced = givenOf(arguments, {"format", "width", "height", "palette", "palette-offset"});
    if (!misplaced.isEmpty())
        return QStringLiteral("%1 belongs to entries, and \"%2\" is a folder").arg(misplaced, fullPath(*folder));
    const int before = folder->address;
    folder->address = arguments.number("offset").value_or(folder->address);
    if (const std::optional<qint32> address = arguments.number("address"))
        setRealAddress(folder, *address);
    const int realAddress = folder->realAddress();
    if (folder->address != before && (realAddress < 0 || realAddress >= currentROM.data.size()))
        return QStringLiteral("A folder at %1 would begin outside the image").arg(hexNumber(realAddress));
    folder->size = arguments.number("size").value_or(folder->size);
    folder->updateBoundary();
    if (arguments.isSet("fixed-content"))
        moveContents(*folder, addWrapping(before, addWrapping(~folder->address, 1)));
    if (arguments.isSet("name"))
        folder->setName(arguments.value("name"));
    return QString();
}

QString changeNode(const Arguments &arguments, const TableNode &node)
{
    return node.texture ? changeTexture(arguments, node.texture) : changeFolder(arguments, node.folder);
}

QString pathOf(const TableNode &node)
{
    return node.texture ? fullPath(*node.texture) : fullPath(*node.folder);
}

QJsonObject nodeJson(const TableNode &node)
{
    return node.texture ? textureJson(*node.texture, pathOf(node)) : folderJson(*node.folder, pathOf(node));
}

/// The nodes whose address in the image is \a address: entries, or with \a folders those.
QVector<TableNode> nodesAt(int address, bool folders)
{
    QVector<TableNode> nodes;
    if (folders) {
        const QList<fileTreeDirectory *> all = fileTreeContainer().allDirectories(currentROM.root);
        for (fileTreeDirectory *folder : all) {
            if (folder->realAddress() == address)
                nodes.append({folder, nullptr});
        }
        return nodes;
    }
    const QList<fileTreeFile *> all = fileTreeContainer().allFiles(currentROM.root);
    for (fileTreeFile *texture : all) {
        if (texture->realAddress() == address)
            nodes.append({nullptr, texture});
    }
    return nodes;
}

/// The node that \a text names: by its path, or else the only entry, or with a "/" behind it the only folder, at that address of
/// the image. When there is none, the reason is said.
TableNode namedNode(const QString &text, const ChosenProfile &profile, Streams &streams)
{
    const TableNode node = nodeAtPath(currentROM.root, text);
    if (node.exists())
        return node;
    const bool folders = text.endsWith(QLatin1Char('/'));
    const std::optional<qint32> address = parsedNumber(folders ? text.chopped(1) : text);
    if (!address) {
        streams.failed(pathNamesNothing(text, profile));
        return {};
    }
    const QVector<TableNode> nodes = nodesAt(*address, folders);
    if (nodes.size() == 1)
        return nodes.constFirst();
    streams.failed(
        nodes.isEmpty()
            ? QStringLiteral("There is no %1 at %2").arg(folders ? QStringLiteral("folder") : QStringLiteral("entry"), text)
            : QStringLiteral("There are %1 at %2; name one by its path: %3")
                  .arg(nodes.size())
                  .arg(text, pathOf(nodes.constFirst())));
    return {};
}

/// Finds the folder that \a text names. Null with the reason said when there is none.
fileTreeDirectory *namedFolder(const QString &text, const ChosenProfile &profile, Streams &streams)
{
    fileTreeDirectory *folder =
        nodeAtPath(currentROM.root, text.endsWith(QLatin1Char('/')) ? text : text + QLatin1Char('/')).folder;
    if (!folder)
        streams.failed(
            QStringLiteral("There is no folder \"%1\" in the profile \"%2\" of %3").arg(text, profile.name, currentROM.romID));
    return folder;
}

/// What a command does, for people: as done, and as it would be by --dry-run.
struct Verb
{
    const char *done;
    const char *planned;

    QLatin1String text(const Arguments &arguments) const { return QLatin1String(arguments.isSet("dry-run") ? planned : done); }
};

/// Writes the table and says what \a nodes are now.
int finish(const Arguments &arguments, const Verb &verb, const QVector<TableNode> &nodes, ChosenProfile &profile,
           Streams &streams)
{
    if (!arguments.isSet("json")) {
        for (const TableNode &node : nodes) {
            const int address = node.texture ? node.texture->realAddress() : node.folder->realAddress();
            streams.out << verb.text(arguments) << ' ' << printable(pathOf(node)) << QLatin1String(" at ") << hexNumber(address)
                        << '\n';
        }
    }
    if (const int status = writeProfile(arguments, &profile, streams))
        return status;
    if (arguments.isSet("json")) {
        QJsonArray changed;
        for (const TableNode &node : nodes)
            changed.append(nodeJson(node));
        printJson(streams.out,
                  {{QStringLiteral("identifier"), currentROM.romID},
                   {QStringLiteral("profile"), profile.name},
                   {QStringLiteral("changed"), changed}});
    }
    return Done;
}

int runAdd(const Arguments &arguments, Streams &streams)
{
    checkNodeOptions(arguments);
    const QString path = arguments.positional(1);
    const bool isFolder = path.endsWith(QLatin1Char('/'));
    const QString whole = isFolder ? path.chopped(1) : path;
    const QString name = whole.mid(whole.lastIndexOf(QLatin1Char('/')) + 1);
    if (name.isEmpty())
        arguments.reject(QStringLiteral("PATH ends with the name of the new entry, or of the new folder and a /"));
    if (arguments.rejected(streams))
        return WrongUsage;
    OpenedImage image;
    ChosenProfile profile;
    if (!openImageAndProfile(arguments, MissingList::StartEmpty, &image, &profile, streams))
        return Failed;
    const QString above = whole.left(whole.size() - name.size());
    fileTreeDirectory *parent = above.isEmpty() ? currentROM.root : namedFolder(above, profile, streams);
    if (!parent)
        return Failed;
    TableNode node;
    if (isFolder) {
        node.folder = parent->addDirectory(new fileTreeDirectory);
        node.folder->setName(name);
    } else {
        node.texture = parent->addFile(new fileTreeFile);
        node.texture->setName(name);
    }
    const QString wrong = changeNode(arguments, node);
    return wrong.isEmpty() ? finish(arguments, {"Added", "Would add"}, {node}, profile, streams) : streams.failed(wrong);
}

/// The textures directly in the changed folder whose palettes count from it.
int countPalettes(const fileTreeDirectory &folder)
{
    int count = 0;
    for (const fileTreeFile *texture : folder.files)
        count += textureFormats::getAsMap().value(texture->format).usesPalette ? 1 : 0;
    return count;
}

int runSet(const Arguments &arguments, Streams &streams)
{
    checkNodeOptions(arguments);
    if (givenOf(arguments, {"name", "address", "offset", "format", "width", "height", "palette", "palette-offset", "size"})
            .isEmpty())
        arguments.reject(QStringLiteral("Say what to change, for example --name NAME"));
    if (arguments.isSet("fixed-content") && !arguments.isSet("address") && !arguments.isSet("offset"))
        arguments.reject(QStringLiteral("--fixed-content goes with --address or --offset"));
    if (arguments.rejected(streams))
        return WrongUsage;
    OpenedImage image;
    ChosenProfile profile;
    if (!openImageAndProfile(arguments, MissingList::RefuseAndWrite, &image, &profile, streams))
        return Failed;
    const TableNode node = namedNode(arguments.positional(1), profile, streams);
    if (!node.exists())
        return Failed;
    if (node.folder && node.folder->isRoot)
        return streams.failed(QStringLiteral("The root cannot be changed"));
    const int offset = node.folder ? node.folder->address : 0;
    const QString wrong = changeNode(arguments, node);
    if (!wrong.isEmpty())
        return streams.failed(wrong);
    if (node.folder && node.folder->address != offset && countPalettes(*node.folder) > 0)
        streams.remark(QStringLiteral("Palettes count from the folder's own offset: set those of %1 anew")
                           .arg(counted(countPalettes(*node.folder), QStringLiteral("entry"))));
    return finish(arguments, {"Set", "Would set"}, {node}, profile, streams);
}

/// Finds what \a texts name; empty with the reason said when one of them names nothing, or the root.
QVector<TableNode> namedNodes(const QStringList &texts, const ChosenProfile &profile, Streams &streams)
{
    QVector<TableNode> nodes;
    for (const QString &text : texts) {
        const TableNode node = namedNode(text, profile, streams);
        if (node.folder && node.folder->isRoot)
            streams.failed(QStringLiteral("The root stays where it is"));
        if (!node.exists() || (node.folder && node.folder->isRoot))
            return {};
        const bool again = std::any_of(nodes.begin(), nodes.end(), [&node](const TableNode &one) {
            return one.folder == node.folder && one.texture == node.texture;
        });
        if (!again)
            nodes.append(node);
    }
    return nodes;
}

int runMove(const Arguments &arguments, Streams &streams)
{
    OpenedImage image;
    ChosenProfile profile;
    if (!openImageAndProfile(arguments, MissingList::RefuseAndWrite, &image, &profile, streams))
        return Failed;
    QStringList texts = arguments.positionals().mid(1);
    fileTreeDirectory *target = namedFolder(texts.takeLast(), profile, streams);
    const QVector<TableNode> nodes = target ? namedNodes(texts, profile, streams) : QVector<TableNode>();
    if (nodes.isEmpty())
        return Failed;
    for (const TableNode &node : nodes) {
        if (isInside(*target, node))
            return streams.failed(QStringLiteral("\"%1\" cannot go into itself").arg(pathOf(node)));
    }
    const MoveKeeps keeps = arguments.isSet("keep-offsets") ? MoveKeeps::Offsets : MoveKeeps::Addresses;
    for (const TableNode &node : nodes)
        moveNode(node, target, keeps);
    return finish(arguments, {"Moved to", "Would move to"}, nodes, profile, streams);
}

int runRemove(const Arguments &arguments, Streams &streams)
{
    OpenedImage image;
    ChosenProfile profile;
    if (!openImageAndProfile(arguments, MissingList::RefuseAndWrite, &image, &profile, streams))
        return Failed;
    const QVector<TableNode> nodes = namedNodes(arguments.positionals().mid(1), profile, streams);
    if (nodes.isEmpty())
        return Failed;
    QJsonArray removed;
    for (const TableNode &node : nodes) {
        const bool filled = node.folder && (!node.folder->files.isEmpty() || !node.folder->directories.isEmpty());
        if (filled && !arguments.isSet("recursive"))
            return streams.failed(
                QStringLiteral("\"%1\" is not empty; --recursive removes it with all that is in it").arg(pathOf(node)));
        removed.append(nodeJson(node));
        if (!arguments.isSet("json"))
            streams.out << Verb {"Removed ", "Would remove "}.text(arguments) << printable(pathOf(node)) << '\n';
    }
    for (const TableNode &node : nodes) {
        if (node.texture)
            node.texture->destroy();
        else
            node.folder->destroy();
    }
    if (const int status = writeProfile(arguments, &profile, streams))
        return status;
    if (arguments.isSet("json"))
        printJson(streams.out,
                  {{QStringLiteral("identifier"), currentROM.romID},
                   {QStringLiteral("profile"), profile.name},
                   {QStringLiteral("removed"), removed}});
    return Done;
}
}

Command addCommand()
{
    return {QStringLiteral("add"),
            QStringLiteral("Add an entry or a folder to the table of a profile."),
            QStringLiteral("IMAGE PATH"),
            QStringLiteral(
                "Adds an entry whose name is the last part of PATH, or a folder when PATH ends in /. The folder around it must\n"
                "be there. What is not given is as in the window: rgba32, 32x32, at the folder's beginning. A profile that is\n"
                "missing is made. When the name is taken, a number is added."),
            2,
            2,
            nodeOptions() << tableOptions(),
            runAdd};
}

Command setCommand()
{
    QList<QCommandLineOption> options = nodeOptions();
    options << QCommandLineOption(
        QStringLiteral("fixed-content"),
        QStringLiteral("Keep the addresses of what lies directly in a folder that moves, as the window's "
                       "\"Fixed content addresses\" does."));
    return {QStringLiteral("set"),
            QStringLiteral("Change an entry or a folder of the table."),
            QStringLiteral("IMAGE PATH"),
            QStringLiteral(
                "Changes what the options name and nothing else. PATH is the path of an entry or a folder, or the address of\n"
                "the only entry there; with a / behind it, of the only folder. What lies in a folder moves along with it."),
            2,
            2,
            options << tableOptions(),
            runSet};
}

Command moveCommand()
{
    QList<QCommandLineOption> options {
        {QStringLiteral("keep-offsets"),
         QStringLiteral("Keep the offsets instead, so that the textures move in the image as the folder says.")}};
    return {QStringLiteral("move"),
            QStringLiteral("Move entries and folders to another folder of the table."),
            QStringLiteral("IMAGE PATH... PATH"),
            QStringLiteral(
                "Moves the entries and folders to the folder that the last PATH names. Each texture, and each palette, stays\n"
                "at its address in the image; the offsets, which count from the folder, change."),
            3,
            -1,
            options << tableOptions(),
            runMove};
}

Command removeCommand()
{
    QList<QCommandLineOption> options {{QStringLiteral("recursive"), QStringLiteral("Remove folders with all that is in them.")}};
    return {QStringLiteral("remove"),
            QStringLiteral("Remove entries and folders from the table."),
            QStringLiteral("IMAGE PATH..."),
            QStringLiteral("Removes the entries and folders from the table. The image keeps all its bytes."),
            2,
            -1,
            options << tableOptions(),
            runRemove};
}
}
