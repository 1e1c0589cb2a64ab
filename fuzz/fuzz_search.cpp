// SPDX-License-Identifier: MIT
// Searching images of repetitive content, for byte patterns and for pictures, against a search that tries every place. The
// patterns' copies are the same ones in the same order, at any alignment and length, for the first copy and for all, and without
// a byte read beside the range; a search that is interrupted finds a beginning of them. For pictures, in any formats, range,
// duplicate mode and table, what is found, its outcome, and the table afterwards are the same.
#include "scratchfolder.h"
#include "tablecheck.h"

#include "codec/texturemanipulator.h"
#include "model/bulkadder.h"
#include "search/patternsearch.h"
#include "search/searchobserver.h"
#include "search/texturesearch.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace
{
constexpr int mostBytes = 6000;

void repeat(QByteArray *bytes, const QByteArray &tile, int size)
{
    for (int i = 0; i < size && !tile.isEmpty(); ++i)
        bytes->append(tile.at(i % tile.size()));
}

/// Bytes as images have them: single ones, flat parts, tiles of any period, and what was there before.
QByteArray anyBytes(FuzzInput *input, int most)
{
    QByteArray bytes;
    for (int parts = input->below(40); parts >= 0 && bytes.size() < most; --parts) {
        switch (input->below(5)) {
        case 0: bytes += input->bytes(input->below(20)); break;
        case 1: repeat(&bytes, QByteArray(1, char(input->byte())), input->byte()); break;
        case 2: {
            const QByteArray tile = input->bytes(1 + input->below(12));
            repeat(&bytes, tile, input->byte() * (1 + input->below(4)));
            break;
        }
        case 3: bytes += bytes.mid(input->byte() * 4, input->byte()); break;
        default: {
            const int first = input->byte();
            const int step = input->below(4);
            for (int i = input->byte(); i > 0; --i)
                bytes += char(first + step * i);
        }
        }
    }
    return bytes.left(most);
}

/// A part of \a range, at times with a byte changed, or something else.
QByteArray anyPattern(FuzzInput *input, const QByteArray &range)
{
    if (input->below(4) == 0)
        return anyBytes(input, 300);
    const int begin = input->byte() << 8 | input->byte();
    QByteArray pattern =
        range.mid(range.isEmpty() ? 0 : begin % range.size(), input->flag() ? input->below(40) : input->byte() * 2);
    if (input->below(4) == 0 && !pattern.isEmpty())
        pattern[input->byte() % pattern.size()] = char(input->byte());
    return pattern;
}

using Positions = QVector<int>;

Positions plainCopies(const std::vector<char> &range, const QByteArray &pattern)
{
    Positions found;
    const char *end = range.data() + range.size();
    for (const char *from = range.data(); !pattern.isEmpty();) {
        const void *copy = memmem(from, size_t(end - from), pattern.constData(), size_t(pattern.size()));
        if (!copy)
            break;
        found.append(int(static_cast<const char *>(copy) - range.data()));
        from = range.data() + found.last() + pattern.size();
    }
    return found;
}

Positions copies(PatternSearch *search, int pattern, bool firstOnly)
{
    Positions found;
    PatternSearch::Walk walk(pattern);
    for (int position = search->next(&walk); position >= 0; position = search->next(&walk)) {
        found.append(position);
        if (firstOnly)
            break;
    }
    return found;
}

void checkPatterns(FuzzInput *input)
{
    const bool interrupts = input->below(8) == 0;
    int questionsLeft = interrupts ? input->below(4) : -1;
    const bool firstOnly = input->flag();
    const QByteArray bytes = anyBytes(input, mostBytes);
    const std::vector<char> range(bytes.begin(), bytes.end()); // Of the exact size: no byte behind it can be read unnoticed.
    QVector<QByteArray> patterns;
    for (int count = input->below(12); count >= 0; --count)
        patterns.append(anyPattern(input, bytes));

    WorkSteps steps([&questionsLeft] { return questionsLeft-- == 0; });
    if (interrupts)
        steps.add(WorkSteps::bytesPerStep - 1);
    PatternSearch search({range.data(), int(range.size()), 0}, &steps);
    search.setPatterns(patterns, firstOnly);
    for (int i = 0; i < patterns.size(); ++i) {
        Positions expected = plainCopies(range, patterns.at(i));
        if (firstOnly)
            expected = expected.mid(0, 1);
        const Positions found = copies(&search, i, firstOnly);
        require(found == expected || steps.isCancelled(), "the copies that trying every place finds");
        require(found == expected.mid(0, found.size()), "an interrupted search finds a beginning of them");
    }
}

/// What a search tells, and the entries that it replaced.
class Recorder : public SearchObserver
{
public:
    void beginPicture(const QString &file, int number, int count) override
    {
        events << QStringLiteral("begin %1 %2/%3").arg(QFileInfo(file).fileName()).arg(number).arg(count);
    }
    void setValue(int value) override { events << QStringLiteral("value %1").arg(value); }
    void cannotReadPicture(const QString &file) override { events << QStringLiteral("unreadable ") + QFileInfo(file).fileName(); }
    void foundCopy(const QString &format, int position) override
    {
        events << format + QLatin1Char(' ') + QString::number(position);
    }
    void copyHandled(Outcome outcome) override
    {
        events << (outcome == Outcome::Overwrote ? "overwrote" : outcome == Outcome::Added ? "added" : "ignored");
    }
    void beforeReplacing(const QVector<TextureReplacement> &changes) override
    {
        for (const TextureReplacement &change : changes) {
            if (change.replaced)
                gone.emplace_back(change.replaced);
        }
    }

    QStringList events;
    std::vector<std::unique_ptr<fileTreeFile>> gone;
};

/// The search for pictures, done by trying every place and every entry.
class PlainSearch
{
public:
    PlainSearch(fileTreeDirectory *folder, const TextureSearchOptions &options, Recorder *log)
        : m_folder(folder), m_options(options), m_log(log)
    {
    }

    bool run(const QStringList &files)
    {
        bool found = false;
        for (int i = 0; i < files.size(); ++i) {
            m_log->beginPicture(files.at(i), i + 1, files.size());
            const QImage image(files.at(i));
            if (image.isNull())
                m_log->cannotReadPicture(files.at(i));
            else if (search(image, QFileInfo(files.at(i)).completeBaseName()))
                found = true;
            m_log->setValue(i + 1);
        }
        return found;
    }

private:
    bool search(const QImage &image, const QString &name)
    {
        QVector<fileTreeFile *> entries;
        for (auto format = m_options.formats.cbegin(); format != m_options.formats.cend(); ++format) {
            const QByteArray bytes = textureManipulator::generateData(image, format.value());
            for (qint64 place = next(bytes, 0); place >= 0; place = next(bytes, place + bytes.size())) {
                m_log->foundCopy(format.key(), int(place));
                auto *entry = new fileTreeFile;
                entry->name = name;
                entry->format = format.key();
                entry->width = image.width();
                entry->height = image.height();
                entry->address = int(place);
                entries.append(entry);
                if (m_options.firstOnly)
                    break;
            }
            if (m_options.firstOnly && !entries.isEmpty())
                break;
        }
        for (fileTreeFile *entry : qAsConst(entries))
            handle(entry);
        return !entries.isEmpty();
    }

    /// The first place in the folder, from \a from on, where the image has \a bytes; -1 when there is none.
    qint64 next(const QByteArray &bytes, qint64 from) const
    {
        const qint64 begin = m_folder->realAddress();
        const qint64 end = qMin<qint64>(begin + m_folder->size, currentROM.data.size());
        for (qint64 address = qMax<qint64>(begin + from, 0); !bytes.isEmpty() && address + bytes.size() <= end; ++address) {
            if (std::equal(bytes.begin(), bytes.end(), currentROM.data.constData() + address))
                return address - begin;
        }
        return -1;
    }

    void handle(fileTreeFile *entry)
    {
        const int equal = m_folder->containsFile(entry, true);
        if (m_options.duplicateMode == DoNotCreateEntry) {
            m_log->copyHandled(SearchObserver::Outcome::Ignored);
            delete entry;
        } else if (m_options.duplicateMode == OverwriteEntry && equal >= 0) {
            m_log->gone.emplace_back(m_folder->files.at(equal));
            m_folder->files.at(equal)->destroy();
            m_folder->addFile(entry);
            m_log->copyHandled(SearchObserver::Outcome::Overwrote);
        } else {
            m_folder->addFile(entry);
            m_log->copyHandled(SearchObserver::Outcome::Added);
        }
    }

    fileTreeDirectory *m_folder;
    TextureSearchOptions m_options;
    Recorder *m_log;
};

QImage anyPicture(FuzzInput *input)
{
    QImage image(1 + input->below(9), 1 + input->below(9), input->flag() ? QImage::Format_ARGB32 : QImage::Format_Indexed8);
    const bool indexed = image.format() == QImage::Format_Indexed8;
    QVector<QRgb> colours {0, 0xFF000000, 0xFFFFFFFF, 0x80FF0000, QRgb(input->number())};
    if (indexed)
        image.setColorTable(colours);
    const int picture = input->byte();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int index = picture < 50 ? 1
                : picture < 150            ? (x + y * picture) % colours.size()
                                           : input->below(colours.size());
            image.setPixel(x, y, indexed ? uint(index) : colours.at(index));
        }
    }
    return image;
}

/// A folder of any place, size and entries below \a root.
fileTreeDirectory *makeFolder(FuzzInput *input, const TextureSearchOptions &options, fileTreeDirectory *root)
{
    fileTreeDirectory *parent = root;
    if (input->flag()) {
        auto *outer = new fileTreeDirectory;
        outer->address = input->flag() ? input->byte() : input->number();
        parent = root->addDirectory(outer);
    }
    auto *folder = new fileTreeDirectory;
    folder->address = input->below(4) == 0 ? input->number() : input->byte() - 20;
    folder->size = input->below(4) == 0 ? input->number() : mostBytes;
    parent->addDirectory(folder);
    const QStringList formats = options.formats.keys();
    for (int count = input->below(6); count > 0; --count) {
        auto *entry = new fileTreeFile;
        entry->name = input->flag() ? QStringLiteral("p0") : input->text(2);
        entry->format = formats.isEmpty() ? QString() : formats.at(input->byte() % formats.size());
        entry->address = input->byte();
        entry->width = 1 + input->below(9);
        entry->height = 1 + input->below(9);
        folder->addFile(entry);
    }
    return folder;
}

void checkPictures(FuzzInput *input)
{
    needApplication();
    static const ScratchFolder scratch;
    TextureSearchOptions options;
    const QMap<QString, textureFormat> all = textureFormats::getAsMap();
    int chosen = input->byte() << 8 | input->byte();
    for (auto format = all.cbegin(); format != all.cend(); ++format, chosen >>= 1) {
        if (chosen & 1)
            options.formats.insert(format.key(), format.value());
    }
    options.firstOnly = input->flag();
    options.duplicateMode = input->below(5) - 1;

    QStringList files;
    currentROM.data = anyBytes(input, 1000);
    for (int count = input->below(4); count >= 0; --count) {
        const QImage picture = anyPicture(input);
        files << scratch.work() + QStringLiteral("/p%1.png").arg(count % 3);
        if (input->below(10) == 0)
            putFile(files.last(), input->bytes(30));
        else
            require(picture.save(files.last()), "a scratch picture can be written");
        for (int copy = input->below(5); copy > 0; --copy) {
            const QStringList names = all.keys();
            const textureFormat format = all.value(names.at(input->byte() % names.size()));
            const QByteArray bytes = textureManipulator::generateData(QImage(files.last()), format);
            currentROM.data.replace(input->byte(), input->flag() ? 0 : bytes.size(), bytes);
        }
    }

    FuzzInput same = *input;
    TableRoot root;
    TableRoot plainRoot;
    fileTreeDirectory *folder = makeFolder(input, options, &root);
    fileTreeDirectory *plainFolder = makeFolder(&same, options, &plainRoot);
    Recorder log;
    Recorder plainLog;
    const bool found = TextureSearch(folder, options, &log).run(files);
    require(found == PlainSearch(plainFolder, options, &plainLog).run(files), "whether anything is found");
    require(log.events == plainLog.events, "what is told, in its order");
    require(describeTable(&root) == describeTable(&plainRoot), "the table afterwards");
    require(log.gone.size() == plainLog.gone.size(), "as many entries make room");
    requireConsistent(&root);
    scratch.clear();
}
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    if (input.below(4) == 0)
        checkPictures(&input);
    else
        checkPatterns(&input);
    return 0;
}
