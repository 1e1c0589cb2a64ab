// SPDX-License-Identifier: MIT
#include "base/hexnumber.h"
#include "base/naturalorder.h"
#include "base/wrapping.h"
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/interrupt.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "cli/terminalprogress.h"
#include "codec/pictureloader.h"
#include "model/rom.h"
#include "model/tablewalk.h"
#include "search/blocktexturesearch.h"
#include "search/compressedblocks.h"
#include "search/indexedtextures.h"
#include "search/picturefiles.h"
#include "search/searchobserver.h"
#include "search/texturesearch.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>

#include <algorithm>

namespace cli
{
namespace
{
constexpr int skipChoice = 3;

/// By the numbers of DuplicateMode, and skipChoice.
const QStringList &duplicateChoices()
{
    static const QStringList choices {QStringLiteral("overwrite"), QStringLiteral("create"), QStringLiteral("ignore"),
                                      QStringLiteral("skip")};
    return choices;
}

struct SearchedPicture
{
    QString path;
    QSize size;
    bool readable = true;
    int copies = 0;
};

struct Hit
{
    int picture; ///< Place in the list of pictures.
    QString format;
    int position; ///< In the folder.
    QVector<int> palettes; ///< Of an indexed texture: addresses in the image, the best first.
};

/// Keeps what a search finds, and shows how far it is.
class SearchReport : public SearchObserver
{
public:
    SearchReport(int count, QTextStream &err) : m_progress(err) { m_progress.setMaximum(count); }

    void setValue(int value) override { m_progress.setValue(value); }
    bool cancelled() override { return cli::interrupted(); }

    void beginPicture(const QString &file, int, int) override
    {
        m_progress.setLabel(QStringLiteral("Searching for ") + QFileInfo(file).fileName());
        pictures.append({file, sizeOfPicture(file), true, 0});
    }
    void cannotReadPicture(const QString &) override { pictures.last().readable = false; }
    void foundCopy(const QString &format, int position) override
    {
        ++pictures.last().copies;
        hits.append({pictures.size() - 1, format, position, {}});
    }
    void copyHandled(Outcome outcome) override
    {
        added += outcome == Outcome::Ignored ? 0 : 1;
        overwritten += outcome == Outcome::Overwrote ? 1 : 0;
    }

    /// Puts what was found as indexed textures before all else. So far pictures are those of \a files that \a found does not
    /// have, or all of them unless \a withoutFound.
    void insert(const QStringList &files, const IndexedTextures &found, bool withoutFound)
    {
        QSet<int> foundPictures;
        for (const IndexedHit &hit : found.hits)
            foundPictures.insert(hit.picture);
        QVector<SearchedPicture> all;
        QVector<int> places; // By the place that a picture had so far.
        for (int i = 0; i < files.size(); ++i) {
            if (withoutFound && foundPictures.contains(i)) {
                all.append({files.at(i), sizeOfPicture(files.at(i)), true, 0});
            } else if (places.size() < pictures.size()) {
                places.append(i);
                all.append(pictures.at(places.size() - 1));
            } else {
                break; // Cancelled before it came to that.
            }
        }
        QVector<Hit> allHits;
        for (const IndexedHit &hit : found.hits) {
            if (hit.picture < all.size()) {
                ++all[hit.picture].copies;
                allHits.append({hit.picture, hit.format(), hit.position, hit.palettes});
            }
        }
        for (Hit hit : qAsConst(hits)) {
            hit.picture = places.at(hit.picture);
            allHits.append(hit);
        }
        pictures = all;
        hits = allHits;
        refusals = found.refusals;
    }

    /// Before other text goes to the terminal.
    void clearProgress() { m_progress.clear(); }

    QVector<SearchedPicture> pictures;
    QVector<Hit> hits;
    QVector<IndexedRefusal> refusals;
    QVector<CompressedBlock> blocks; ///< Those searched, with --blocks.
    QVector<BlockHit> blockHits; ///< The picture is a place in the list of pictures.
    int added = 0;
    int overwritten = 0;

private:
    TerminalProgress m_progress;
};

/// The formats that --formats names, without it those that the window offers: all that show colours by themselves.
QMap<QString, textureFormat> chosenFormats(const Arguments &arguments)
{
    const QMap<QString, textureFormat> all = textureFormats::getAsMap();
    QMap<QString, textureFormat> chosen;
    if (!arguments.isSet("formats")) {
        for (const textureFormat &format : all) {
            if (!format.usesPalette && !textureFormats::isJpeg(format.name))
                chosen.insert(format.name, format);
        }
        return chosen;
    }
    const QStringList names = arguments.value("formats").split(QLatin1Char(','));
    for (const QString &name : names) {
        const std::optional<textureFormat> format = parsedFormat(name);
        if (!format)
            arguments.reject(QStringLiteral("There is no texture format \"%1\"; there are %2").arg(name, formatNames()));
        else if (textureFormats::isJpeg(format->name))
            arguments.reject(QStringLiteral("Pictures cannot be searched for as jpeg: no two encoders agree"));
        else
            chosen.insert(format->name, *format);
    }
    return chosen;
}

/// The pictures in the folder at \a path in natural order, with paths that begin as it is given.
QStringList picturesBelow(const QString &path, bool subfolders)
{
    const QDir folder(path);
    QStringList files = picturesInFolder(path, subfolders);
    std::sort(files.begin(), files.end(), naturallyBefore);
    for (QString &file : files)
        file = folder.filePath(folder.relativeFilePath(file));
    return files;
}

/// The pictures that the arguments from \a first on name; a folder stands for those in it. False with the reason said when one
/// of them is not there.
bool collectPictures(const Arguments &arguments, QStringList *files, Streams &streams)
{
    const QStringList given = arguments.positionals().mid(1);
    for (const QString &path : given) {
        const QFileInfo info(path);
        if (!info.exists()) {
            streams.failed(QStringLiteral("There is no file or folder %1").arg(path));
            return false;
        }
        if (info.isDir())
            *files += picturesBelow(path, !arguments.isSet("no-subfolders"));
        else
            *files << path;
    }
    return true;
}

bool isIndexed(const Hit &hit)
{
    return textureFormats::getAsMap().value(hit.format).usesPalette;
}

QJsonObject json(const SearchReport &report, const fileTreeDirectory &folder)
{
    QJsonArray pictures;
    for (const SearchedPicture &picture : report.pictures)
        pictures.append(QJsonObject {{QStringLiteral("picture"), picture.path},
                                     {QStringLiteral("readable"), picture.readable},
                                     {QStringLiteral("copies"), picture.copies}});
    QJsonArray hits;
    for (const Hit &hit : report.hits) {
        const SearchedPicture &picture = report.pictures.at(hit.picture);
        QJsonObject object {{QStringLiteral("picture"), picture.path},
                            {QStringLiteral("format"), hit.format},
                            {QStringLiteral("address"), folder.realAddress() + hit.position},
                            {QStringLiteral("offset"), hit.position},
                            {QStringLiteral("width"), picture.size.width()},
                            {QStringLiteral("height"), picture.size.height()}};
        if (isIndexed(hit)) {
            QJsonArray palettes;
            for (const int palette : hit.palettes)
                palettes.append(palette);
            object.insert(QStringLiteral("palettes"), palettes);
        }
        hits.append(object);
    }
    QJsonArray blockHits;
    for (const BlockHit &hit : report.blockHits) {
        const CompressedBlock &block = report.blocks.at(hit.block);
        blockHits.append(QJsonObject {{QStringLiteral("picture"), report.pictures.at(hit.picture).path},
                                      {QStringLiteral("format"), hit.format},
                                      {QStringLiteral("block"), block.address},
                                      {QStringLiteral("kind"), blockKindName(block.kind)},
                                      {QStringLiteral("offset"), hit.offset},
                                      {QStringLiteral("width"), hit.width},
                                      {QStringLiteral("height"), hit.height}});
    }
    QJsonArray refused;
    for (const IndexedRefusal &refusal : report.refusals)
        refused.append(QJsonObject {{QStringLiteral("picture"), report.pictures.value(refusal.picture).path},
                                    {QStringLiteral("format"), refusal.format},
                                    {QStringLiteral("reason"), refusal.reason}});
    return {{QStringLiteral("identifier"), currentROM.romID},
            {QStringLiteral("folder"), fullPath(folder)},
            {QStringLiteral("pictures"), pictures},
            {QStringLiteral("hits"), hits},
            {QStringLiteral("refused"), refused},
            {QStringLiteral("blocks"), report.blocks.size()},
            {QStringLiteral("blockHits"), blockHits},
            {QStringLiteral("added"), report.added},
            {QStringLiteral("overwritten"), report.overwritten}};
}

QString paletteText(const Hit &hit)
{
    if (hit.palettes.isEmpty())
        return QStringLiteral(", no palette found");
    QString text = QStringLiteral(", palette ") + hexNumber(hit.palettes.first());
    if (hit.palettes.size() > 1)
        text += QStringLiteral(" and %1 more").arg(hit.palettes.size() - 1);
    return text;
}

void printHit(int address, const QString &format, int width, int height, const QString &picture, QTextStream &out)
{
    out << hexNumber(address) << QLatin1String("  ") << format.leftJustified(8) << QLatin1String("  ")
        << QStringLiteral("%1x%2").arg(width).arg(height).leftJustified(11) << QLatin1String("  ") << printable(picture);
}

void printText(const SearchReport &report, const fileTreeDirectory &folder, QTextStream &out)
{
    for (const Hit &hit : report.hits) {
        const SearchedPicture &picture = report.pictures.at(hit.picture);
        printHit(folder.realAddress() + hit.position, hit.format, picture.size.width(), picture.size.height(), picture.path, out);
        if (isIndexed(hit))
            out << paletteText(hit);
        out << '\n';
    }
    for (const BlockHit &hit : report.blockHits) {
        const CompressedBlock &block = report.blocks.at(hit.block);
        printHit(block.address, hit.format, hit.width, hit.height, report.pictures.at(hit.picture).path, out);
        out << QStringLiteral("  in the %1 block at %2, offset %3\n")
                   .arg(blockKindName(block.kind), hexNumber(block.address), hexNumber(hit.offset));
    }
    for (const IndexedRefusal &refusal : report.refusals)
        out << QLatin1String("Not searched for as ") << refusal.format << QLatin1String(", since ") << refusal.reason
            << QLatin1String(": ") << printable(report.pictures.value(refusal.picture).path) << '\n';
    for (const SearchedPicture &picture : report.pictures) {
        if (picture.readable && picture.copies == 0)
            out << QLatin1String("Not found: ") << printable(picture.path) << '\n';
    }
    const int copies = report.hits.size() + report.blockHits.size();
    out << (copies == 1 ? QStringLiteral("1 copy") : QStringLiteral("%1 copies").arg(copies)) << QLatin1String(" found of ")
        << counted(report.pictures.size(), QStringLiteral("picture")) << '\n';
}

/// Looks for the pictures, without those that are no longer searched for, inside the compressed blocks that begin in \a folder's
/// range.
void searchBlocks(const Arguments &arguments, const fileTreeDirectory &folder, const QMap<QString, textureFormat> &formats,
                  SearchReport *report, QTextStream &err)
{
    TerminalProgress progress(err);
    progress.setLabel(QStringLiteral("Searching in compressed blocks"));
    const qint64 begin = folder.realAddress();
    const QVector<CompressedBlock> all = findBlocks(currentROM.data, &progress).blocks;
    for (const CompressedBlock &block : all) {
        if (block.address >= begin && block.address < begin + folder.size)
            report->blocks.append(block);
    }
    const bool firstOnly = arguments.isSet("first-only");
    QStringList files;
    QVector<int> places;
    for (int i = 0; i < report->pictures.size(); ++i) {
        if (firstOnly && report->pictures.at(i).copies > 0)
            continue;
        files.append(report->pictures.at(i).path);
        places.append(i);
    }
    report->blockHits = searchInBlocks(currentROM.data, report->blocks, files, formats, firstOnly, &progress);
    for (BlockHit &hit : report->blockHits) {
        hit.picture = places.at(hit.picture);
        ++report->pictures[hit.picture].copies;
    }
}

/// Takes those of \a hits out that an entry anywhere in the table of \a folder describes.
void dropKnown(const fileTreeDirectory &folder, QVector<IndexedHit> *hits)
{
    KnownTextures known(folder);
    const auto isKnown = [&](const IndexedHit &hit) {
        fileTreeFile texture;
        texture.format = hit.format();
        texture.width = hit.width;
        texture.height = hit.height;
        return !known.insert(texture, addWrapping(folder.realAddress(), hit.position));
    };
    hits->erase(std::remove_if(hits->begin(), hits->end(), isKnown), hits->end());
}

/// Searches \a folder, says what was found, and puts it into the file list when that is wanted.
int search(const Arguments &arguments, fileTreeDirectory *folder, const QStringList &files, ChosenProfile *profile,
           Streams &streams)
{
    const bool adding = arguments.isSet("add");
    const int choice = arguments.choice("duplicates", duplicateChoices()).value_or(OverwriteEntry);
    const bool onlyNew = choice == skipChoice;
    const int mode = onlyNew ? CreateNewEntry : choice;
    SearchReport report(files.size(), streams.err);
    QMap<QString, textureFormat> formats = chosenFormats(arguments);
    const IndexedOptions indexed {formats.remove(textureFormats::ci4.name) > 0, formats.remove(textureFormats::ci8.name) > 0,
                                  arguments.isSet("first-only")};
    IndexedTextures found;
    if (indexed.ci4 || indexed.ci8)
        found = findIndexedTextures(*folder, files, indexed, &report);
    QStringList left = files;
    for (int i = found.hits.size() - 1; i >= 0 && indexed.firstOnly; --i)
        left.removeAt(found.hits.at(i).picture); // One hit for each picture, by ascending place.
    TextureSearch(folder, {formats, indexed.firstOnly, adding ? mode : DoNotCreateEntry, onlyNew}, &report).run(left);
    report.insert(files, found, indexed.firstOnly);
    if (adding) {
        if (onlyNew)
            dropKnown(*folder, &found.hits);
        const AddedEntries entries =
            addIndexed(found.hits, files, folder, DuplicateMode(mode), arguments.isSet("without-palette"));
        report.added += entries.added;
        report.overwritten += entries.overwritten;
    }
    report.clearProgress();
    if (arguments.isSet("blocks"))
        searchBlocks(arguments, *folder, formats, &report, streams.err);
    if (arguments.isSet("blocks") && (indexed.ci4 || indexed.ci8))
        streams.remark(
            QStringLiteral("Inside of compressed blocks there is no search in ci4 and ci8: unpack them and search their files"));
    if (adding && !report.blockHits.isEmpty())
        streams.remark(
            QStringLiteral("What was found inside of compressed blocks is not added: unpack them and search their files"));

    bool allReadable = true;
    for (const SearchedPicture &picture : qAsConst(report.pictures)) {
        allReadable = allReadable && picture.readable;
        if (!picture.readable)
            streams.remark(QStringLiteral("Cannot read picture %1").arg(picture.path));
    }
    if (arguments.isSet("json"))
        printJson(streams.out, json(report, *folder));
    else
        printText(report, *folder, streams.out);
    if (interrupted())
        return streams.failed(QStringLiteral("Interrupted; not everything was searched, and no file list was written"));
    if (adding && report.added > 0) {
        QString sentence;
        QTextStream aside(&sentence);
        Streams quiet(aside, streams.err);
        const int status = writeProfile(arguments, profile, arguments.isSet("json") ? quiet : streams);
        if (status != Done)
            return status;
    }
    return allReadable ? Done : Failed;
}

int run(const Arguments &arguments, Streams &streams)
{
    const bool adding = arguments.isSet("add");
    chosenFormats(arguments);
    arguments.choice("duplicates", duplicateChoices());
    if (!adding && (arguments.isSet("duplicates") || arguments.isSet("dry-run") || arguments.isSet("without-palette")))
        arguments.reject(QStringLiteral("Only --add writes a file list; without it there is nothing to choose"));
    if (arguments.rejected(streams))
        return WrongUsage;

    OpenedImage image;
    ChosenProfile profile;
    QStringList files;
    const bool tableNeeded = adding || arguments.isSet("in");
    if (!openImage(arguments, &image, streams)
        || (tableNeeded && !openProfile(arguments, adding ? MissingList::StartEmpty : MissingList::Refuse, &profile, streams))
        || !collectPictures(arguments, &files, streams))
        return Failed;
    QString path = arguments.isSet("in") ? arguments.value("in") : QString();
    if (!path.isEmpty() && !path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/'); // Only a folder has a range.
    const TableNode node = nodeAtPath(currentROM.root, path);
    if (!node.folder)
        return streams.failed(pathNamesNothing(arguments.value("in"), profile));
    return search(arguments, node.folder, files, &profile, streams);
}
}

Command searchCommand()
{
    QList<QCommandLineOption> options {
        {QStringLiteral("in"), QStringLiteral("Search the range of this folder of the table; without it the whole image."),
         QStringLiteral("PATH")},
        {QStringLiteral("formats"),
         QStringLiteral("The formats to try, separated by commas; without it i4, i8, ia16, ia4, ia8, rgb5a1, rgba32."),
         QStringLiteral("FORMATS")},
        {QStringLiteral("without-palette"),
         QStringLiteral("With --add, also add copies in ci4 and ci8 for which no palette was found.")},
        {QStringLiteral("blocks"), QStringLiteral("Search also inside the compressed blocks of the range.")},
        {QStringLiteral("first-only"), QStringLiteral("End the search for a picture after its first copy.")},
        {QStringLiteral("no-subfolders"), QStringLiteral("Leave out pictures in the subfolders of the folders given.")},
        {QStringLiteral("add"), QStringLiteral("Add the copies found to the profile's file list, in the folder searched.")},
        {QStringLiteral("duplicates"),
         QStringLiteral(
             "With --add, what to do with a copy: overwrite an equal entry of the folder, or add one (the default); create an "
             "entry in "
             "any case; ignore it, so that nothing is added; or skip those that an entry anywhere in the table describes."),
         QStringLiteral("overwrite|create|ignore|skip")},
        {QStringLiteral("dry-run"), QStringLiteral("With --add, write no file list, but say what would change.")}};
    options << profileOptions() << jsonOption();
    return {
        QStringLiteral("search"),
        QStringLiteral("Find where pictures lie in the image."),
        QStringLiteral("IMAGE PICTURE..."),
        QStringLiteral(
            "Searches for the bytes that each picture has in each format, at any alignment. A folder stands for the PNG\n"
            "files in it. Prints each copy: address, format, width and height, and the picture. In ci4 and ci8, which have\n"
            "to be asked for, it searches for indices that are equal where the picture's colours are, and then for palettes."),
        2,
        -1,
        options,
        run};
}
}
