// SPDX-License-Identifier: MIT
#include "search/texturesearch.h"

#include "base/wrapping.h"
#include "codec/pictureloader.h"
#include "codec/texturemanipulator.h"
#include "model/bulkadder.h"
#include "search/patternsearch.h"
#include "search/searchobserver.h"

#include <QFileInfo>

qint64 mostPatternBytes(qint64 rangeSize)
{
    constexpr qint64 alwaysAllowed = qint64(1024) * 1024;
    return qMax(rangeSize / 32 * 3, alwaysAllowed);
}

ByteRange rangeOfFolder(const fileTreeDirectory &folder)
{
    const qint64 begin = folder.realAddress();
    const qint64 end = qMin<qint64>(begin + folder.size, currentROM.data.size());
    const qint64 first = qMax<qint64>(begin, 0);
    ByteRange range;
    if (first >= end)
        return range;
    range.data = currentROM.data.constData() + first;
    range.size = int(end - first);
    range.cutInFront = int(first - begin);
    return range;
}

TextureSearch::TextureSearch(fileTreeDirectory *folder, const TextureSearchOptions &options, SearchObserver *observer)
    : m_folder(folder), m_options(options), m_observer(observer), m_range(rangeOfFolder(*folder)),
      m_steps(std::make_unique<WorkSteps>([observer] { return observer->interrupted(); })),
      m_patternSearch(std::make_unique<PatternSearch>(m_range, m_steps.get()))
{
}

TextureSearch::~TextureSearch() = default;

bool TextureSearch::run(const QStringList &files)
{
    bool found = false;
    for (int i = 0; i < files.size(); ++i) {
        m_observer->beginPicture(files.at(i), i + 1, files.size());
        if (searchFor(files, i))
            found = true;
        if (isCancelled())
            break;
        m_observer->setValue(i + 1);
    }
    return found;
}

bool TextureSearch::runOne(const QString &file)
{
    return searchFor({file}, 0);
}

/// Searches for the picture at index \a place of \a files. If the batch is used up, first fills it from there on.
bool TextureSearch::searchFor(const QStringList &files, int place)
{
    const QString &file = files.at(place);
    if (m_nextPicture == m_pictures.size())
        loadBatch(files, place);
    const Picture picture = m_pictures.at(m_nextPicture++);
    if (!picture.isReadable) {
        m_observer->cannotReadPicture(file);
        return false;
    }
    const QVector<Hit> hits = picture.isLarge ? collectHitsOfLarge(file) : collectHits(picture);
    storeHits(hits, QFileInfo(file).completeBaseName(), picture);
    return !hits.isEmpty();
}

void TextureSearch::loadBatch(const QStringList &files, int first)
{
    // Memory of a picture besides its patterns.
    constexpr qint64 bytesPerPicture = 1024;
    m_pictures.clear();
    m_nextPicture = 0;
    PatternBatch batch;
    for (int i = first; i < files.size(); ++i) {
        if (batch.bytes() + m_pictures.size() * bytesPerPicture > mostPatternBytes(m_range.size)
            || !addToBatch(files.at(i), i == first, &batch))
            break;
    }
    m_patternSearch->setPatterns(batch.patterns(), m_options.firstOnly);
}

/// Loads the picture in \a file and encodes it in every format. Returns false when the user has cancelled. A picture that
/// \a isNext is loaded all the same: one that cannot be read is reported before anything else.
bool TextureSearch::addToBatch(const QString &file, bool isNext, PatternBatch *batch)
{
    const QImage image = loadPicture(file, [this, isNext] { return !m_steps->add(WorkSteps::bytesPerStep) && !isNext; });
    const bool cancelled = m_steps->isCancelled();
    if (cancelled && !isNext)
        return false;
    Picture picture;
    picture.isReadable = !image.isNull();
    picture.width = image.width();
    picture.height = image.height();

    double bytesPerPixel = 0;
    for (const textureFormat &format : qAsConst(m_options.formats))
        bytesPerPixel += format.bytesPerPixel;
    picture.isLarge = double(picture.width) * picture.height * bytesPerPixel > double(mostPatternBytes(m_range.size));
    if (picture.isReadable && !picture.isLarge && !cancelled) {
        for (const textureFormat &format : qAsConst(m_options.formats))
            picture.patterns.append(batch->add(encoded(image, format)));
    }
    m_pictures.append(picture);
    return !cancelled;
}

/// The bytes to search for; empty if the format cannot be encoded or the bytes do not fit in the range.
QByteArray TextureSearch::encoded(const QImage &image, const textureFormat &format) const
{
    const qint64 size = textureFormats::encodedBytes(format, qint64(image.width()) * image.height());
    return size > m_range.size ? QByteArray() : textureManipulator::generateData(image, format);
}

QVector<TextureSearch::Hit> TextureSearch::collectHits(const Picture &picture)
{
    QVector<Hit> hits;
    for (int format = 0; format < picture.patterns.size(); ++format) {
        if (isCancelled())
            break;
        const int pattern = picture.patterns.at(format);
        if (pattern >= 0 && !collectHitsOfPattern(m_patternSearch.get(), pattern, format, &hits))
            break;
    }
    return hits;
}

/// Like collectHits(), for a picture whose patterns exceed a batch: one pattern at a time.
QVector<TextureSearch::Hit> TextureSearch::collectHitsOfLarge(const QString &file)
{
    QVector<Hit> hits;
    // The batch is still needed for the following pictures.
    if (!m_searchForLarge)
        m_searchForLarge = std::make_unique<PatternSearch>(m_range, m_steps.get());
    const QImage image = loadPicture(file, [this] { return !m_steps->add(WorkSteps::bytesPerStep); });
    int format = 0;
    for (const textureFormat &record : qAsConst(m_options.formats)) {
        if (isCancelled())
            break;
        const QByteArray pattern = encoded(image, record);
        if (!pattern.isEmpty()) {
            m_searchForLarge->setPatterns({pattern}, m_options.firstOnly);
            if (!collectHitsOfPattern(m_searchForLarge.get(), 0, format, &hits))
                break;
        }
        ++format;
    }
    return hits;
}

/// Appends the copies of a pattern to \a hits. Returns false if the search for the picture ends here.
bool TextureSearch::collectHitsOfPattern(PatternSearch *search, int pattern, int format, QVector<Hit> *hits)
{
    const QString name = *std::next(m_options.formats.keyBegin(), format);
    PatternSearch::Walk walk(pattern);
    for (int position = search->next(&walk); position >= 0; position = search->next(&walk)) {
        if (isCancelled())
            break;
        m_observer->foundCopy(name, position + m_range.cutInFront);
        hits->append({format, position + m_range.cutInFront});
        if (m_options.firstOnly)
            return false;
    }
    return true;
}

bool TextureSearch::isCancelled()
{
    if (m_observer->cancelled())
        m_steps->cancel();
    return m_steps->isCancelled();
}

void TextureSearch::storeHits(const QVector<Hit> &hits, const QString &name, const Picture &picture)
{
    if (hits.isEmpty())
        return;
    if (m_options.duplicateMode == DoNotCreateEntry) {
        for (int i = 0; i < hits.size(); ++i)
            m_observer->copyHandled(SearchObserver::Outcome::Ignored);
        return;
    }
    if (m_options.duplicateMode == OverwriteEntry && !m_entries)
        m_entries = std::make_unique<EntryIndex>(*m_folder);
    if (m_options.onlyNew && !m_known)
        m_known = std::make_unique<KnownTextures>(*m_folder);

    const QStringList formats = m_options.formats.keys();
    QVector<TextureReplacement> changes;
    QVector<fileTreeFile *> added;
    bool replaces = false;
    for (const Hit &hit : hits) {
        auto *entry = new fileTreeFile;
        entry->name = name;
        entry->format = formats.at(hit.format);
        entry->width = picture.width;
        entry->height = picture.height;
        entry->address = hit.position;
        if (m_known && !m_known->insert(*entry, addWrapping(m_folder->realAddress(), hit.position))) {
            m_observer->copyHandled(SearchObserver::Outcome::Ignored);
            delete entry;
            continue;
        }
        fileTreeFile *old = m_entries ? m_entries->takeEqualTo(*entry) : nullptr;
        if (m_entries)
            m_entries->add(entry);
        changes.append(TextureReplacement {entry, old});
        added.append(entry);
        replaces = replaces || old;
        m_observer->copyHandled(old ? SearchObserver::Outcome::Overwrote : SearchObserver::Outcome::Added);
    }
    if (replaces)
        m_observer->beforeReplacing(changes);
    if (added.isEmpty())
        return;
    BulkAdder(m_folder).replaceFiles(changes);
    m_observer->entriesAdded(added);
}
