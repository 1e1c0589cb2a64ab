// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/files.h"
#include "cli/interrupt.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "cli/terminalprogress.h"
#include "codec/texturemanipulator.h"
#include "model/rom.h"
#include "model/tablewalk.h"
#include "model/textureformat.h"
#include "transfer/gallery.h"

#include <QFileInfo>
#include <QJsonObject>

namespace cli
{
namespace
{
constexpr int rowsPerStrip = 256;

/// A part of the image that is shown without any entry.
struct RawRange
{
    qint64 begin = 0;
    qint64 end = 0; ///< Behind the last byte.
    QVector<textureFormat> formats;
    QVector<int> widths; ///< In pixels.
    std::optional<qint32> palette; ///< Address; without it the indices of ci4 and ci8 are shown in grey.
};

/// The two numbers of "FROM..TO".
bool parseRange(const QString &text, RawRange *range)
{
    const QStringList ends = text.split(QStringLiteral(".."));
    const std::optional<qint32> begin = parsedNumber(ends.value(0));
    const std::optional<qint32> end = parsedNumber(ends.value(1));
    if (ends.size() != 2 || !begin || !end || *begin >= *end)
        return false;
    range->begin = *begin;
    range->end = *end;
    return true;
}

QVector<textureFormat> rawFormats(const Arguments &arguments)
{
    QVector<textureFormat> formats;
    const QString all = QStringLiteral("i4,i8,ia4,ia8,ia16,rgb5a1,rgba32,ci4,ci8");
    const QStringList names = (arguments.isSet("format") ? arguments.value("format") : all).split(QLatin1Char(','));
    for (const QString &name : names) {
        const std::optional<textureFormat> format = parsedFormat(name);
        if (!format)
            arguments.reject(QStringLiteral("There is no texture format \"%1\"; there are %2").arg(name, formatNames()));
        else if (textureFormats::isJpeg(format->name))
            arguments.reject(QStringLiteral("A raw range cannot be shown as jpeg"));
        else
            formats.append(*format);
    }
    return formats;
}

QVector<int> rawWidths(const Arguments &arguments)
{
    constexpr int widest = 4096;
    QVector<int> widths;
    const QString given = arguments.isSet("width") ? arguments.value("width") : QStringLiteral("16,32,64");
    const QStringList numbers = given.split(QLatin1Char(','));
    for (const QString &text : numbers) {
        const int width = parsedNumber(text).value_or(0);
        if (width < 1 || width > widest)
            arguments.reject(
                QStringLiteral("--width takes numbers from 1 to %1, separated by commas, not \"%2\"").arg(widest).arg(text));
        widths.append(width);
    }
    return widths;
}

QByteArray greyPalette(const textureFormat &format)
{
    const int colours = format.bytesPerPixel < 1 ? 16 : 256;
    QByteArray palette;
    for (int i = 0; i < colours; ++i) {
        const int grey = i * 31 / (colours - 1);
        const int word = grey << 11 | grey << 6 | grey << 1 | 1;
        palette.append(char(word >> 8)).append(char(word & 0xFF));
    }
    return palette;
}

/// Adds the strips of \a range in one format and width.
void addStrips(const RawRange &range, const textureFormat &format, int width, GalleryWriter *page, TerminalProgress *progress)
{
    const int wanted = int(2 * (format.bytesPerPixel < 1 ? 16 : 256));
    const QByteArray palette = !format.usesPalette ? QByteArray()
        : range.palette                            ? currentROM.data.mid(*range.palette, wanted)
                                                   : greyPalette(format);
    const auto stripBytes = qint64(rowsPerStrip * width * format.bytesPerPixel);
    for (qint64 begin = range.begin; begin < range.end && !progress->cancelled(); begin += stripBytes) {
        const int bytes = int(qMin(stripBytes, range.end - begin));
        GalleryItem item;
        item.name = hexNumber(qint32(begin)) + QStringLiteral(", %1, %2 wide").arg(format.name).arg(width);
        item.address = begin;
        item.format = format.name;
        item.bytes = bytes;
        item.pictures = {
            {QString(), textureManipulator::generateTexture(currentROM.data.mid(int(begin), bytes), format, width, palette), {}}};
        if (format.usesPalette && range.palette)
            item.palette = paletteColours(palette);
        page->add(item);
    }
}

void addRange(const RawRange &range, GalleryWriter *page, TerminalProgress *progress)
{
    progress->setMaximum(range.formats.size() * range.widths.size());
    int done = 0;
    for (const textureFormat &format : range.formats) {
        for (const int width : range.widths) {
            addStrips(range, format, width, page, progress);
            progress->setValue(++done);
        }
    }
}

void addEntries(const QList<const fileTreeFile *> &textures, GalleryWriter *page, TerminalProgress *progress)
{
    progress->setMaximum(textures.size());
    for (int i = 0; i < textures.size() && !progress->cancelled(); ++i) {
        page->add(galleryItemOf(*textures.at(i)));
        progress->setValue(i + 1);
    }
}

/// Writes the page with what \a addItems adds, and says so.
int writePage(const Arguments &arguments, const GalleryHeading &heading,
              const std::function<void(GalleryWriter *, TerminalProgress *)> &addItems, Streams &streams)
{
    const QString path = arguments.value("output");
    int items = 0;
    int leftOut = 0;
    QString error;
    const auto write = [&](QIODevice *device) {
        GalleryWriter page(device, heading);
        TerminalProgress progress(streams.err);
        progress.setLabel(QStringLiteral("Writing the gallery"));
        addItems(&page, &progress);
        items = page.items();
        leftOut = page.leftOut();
        return page.finish() && !interrupted();
    };
    const bool written = writeOutput(path, write, streams, &error);
    if (interrupted())
        return streams.failed(QStringLiteral("Interrupted; %1 was not written").arg(path));
    if (!written)
        return streams.failed(QStringLiteral("Cannot write file %1: %2").arg(path, error));
    if (leftOut > 0)
        streams.remark(QStringLiteral("The page is full: %1 left out").arg(counted(leftOut, QStringLiteral("picture"))));
    if (arguments.isSet("json"))
        printJson(streams.out,
                  {{QStringLiteral("output"), path}, {QStringLiteral("items"), items}, {QStringLiteral("leftOut"), leftOut}});
    else if (!isStandardStream(path))
        streams.out << QLatin1String("Wrote ") << printable(path) << QLatin1String(" with ")
                    << counted(items, QStringLiteral("picture")) << '\n';
    return leftOut > 0 ? Failed : Done;
}

int runRaw(const Arguments &arguments, RawRange range, Streams &streams)
{
    OpenedImage image;
    if (!openImage(arguments, &image, streams))
        return Failed;
    if (range.begin >= currentROM.data.size())
        return streams.failed(QStringLiteral("The image ends at %1").arg(hexNumber(currentROM.data.size())));
    range.end = qMin(range.end, qint64(currentROM.data.size()));
    const GalleryHeading heading {QFileInfo(image.path).fileName(),
                                  QStringLiteral("Bytes from %1 to %2 of %3")
                                      .arg(hexNumber(qint32(range.begin)), hexNumber(qint32(range.end)), currentROM.romID)};
    return writePage(
        arguments, heading, [&range](GalleryWriter *page, TerminalProgress *progress) { addRange(range, page, progress); },
        streams);
}

int runProfile(const Arguments &arguments, Streams &streams)
{
    OpenedImage image;
    ChosenProfile profile;
    if (!openImageAndProfile(arguments, MissingList::Refuse, &image, &profile, streams))
        return Failed;
    const TableNode node = nodeAtPath(currentROM.root, arguments.positional(1));
    if (!node.exists())
        return streams.failed(pathNamesNothing(arguments.positional(1), profile));
    QList<const fileTreeFile *> textures;
    if (node.texture)
        textures.append(node.texture);
    else
        walkTable(*node.folder,
                  {[](const fileTreeDirectory &, const QString &) {},
                   [&textures](const fileTreeFile &texture, const QString &) { textures.append(&texture); }});
    const GalleryHeading heading {QFileInfo(image.path).fileName(),
                                  QStringLiteral("Profile \"%1\" of %2").arg(profile.name, currentROM.romID)};
    return writePage(
        arguments, heading,
        [&textures](GalleryWriter *page, TerminalProgress *progress) { addEntries(textures, page, progress); }, streams);
}

int run(const Arguments &arguments, Streams &streams)
{
    const bool raw = arguments.isSet("raw");
    RawRange range;
    if (raw) {
        if (!parseRange(arguments.value("raw"), &range))
            arguments.reject(
                QStringLiteral("--raw takes FROM..TO, two addresses, the lower first, not \"%1\"").arg(arguments.value("raw")));
        range.formats = rawFormats(arguments);
        range.widths = rawWidths(arguments);
        range.palette = arguments.number("palette");
        if (arguments.positionals().size() > 1)
            arguments.reject(QStringLiteral("Either PATH names an entry or a folder, or --raw shows a range"));
    } else if (arguments.isSet("format") || arguments.isSet("width") || arguments.isSet("palette")) {
        arguments.reject(QStringLiteral("--format, --width and --palette say how --raw is shown"));
    }
    if (arguments.value("output").isEmpty())
        arguments.reject(QStringLiteral("Say where to write: --output FILE"));
    if (isImageItself(arguments, arguments.value("output")))
        arguments.reject(QStringLiteral("--output names the image itself"));
    if (arguments.rejected(streams))
        return WrongUsage;
    return raw ? runRaw(arguments, range, streams) : runProfile(arguments, streams);
}
}

Command galleryCommand()
{
    QList<QCommandLineOption> options {
        {{QStringLiteral("o"), QStringLiteral("output")},
         QStringLiteral("The file to write, - for standard output."),
         QStringLiteral("FILE")},
        {QStringLiteral("raw"), QStringLiteral("Show the bytes of this range of the image instead of the profile's entries."),
         QStringLiteral("FROM..TO")},
        {QStringLiteral("format"), QStringLiteral("With --raw: the formats, separated by commas; without it all but jpeg."),
         QStringLiteral("FORMATS")},
        {QStringLiteral("width"), QStringLiteral("With --raw: the widths in pixels, separated by commas; without it 16,32,64."),
         QStringLiteral("N,N...")},
        {QStringLiteral("palette"),
         QStringLiteral("With --raw: the address of the palette for ci4 and ci8; without it their indices are shown in grey."),
         QStringLiteral("N")}};
    options << profileOptions() << jsonOption();
    return {QStringLiteral("gallery"),
            QStringLiteral("Write all textures as pictures into one page for a browser."),
            QStringLiteral("IMAGE [PATH]"),
            QStringLiteral(
                "Writes an HTML page with the textures of the profile, or only those that PATH names, each with its name, path,\n"
                "address, format, size and palette. The page filters, sorts and zooms, and needs nothing but itself. With --raw\n"
                "it shows strips of a range of the image in several formats and widths, to find out what lies there."),
            1,
            2,
            options,
            run};
}
}
