// SPDX-License-Identifier: MIT
#include "search/indexedtextures.h"

#include "base/progress.h"
#include "codec/pictureloader.h"
#include "model/bulkadder.h"
#include "search/indexedsearch.h"
#include "search/palettesearch.h"
#include "search/texturesearch.h"

#include <QFileInfo>
#include <QImage>

namespace
{
struct Wanted
{
    int picture = 0;
    int width = 0;
    int height = 0;
    IndexedPattern pattern;
};

/// What has to stand in the palette for \a pattern to show its colours with \a indices.
WantedPalette paletteFor(const IndexedPattern &pattern, const QVector<int> &indices)
{
    WantedPalette palette;
    palette.indices = indices;
    palette.words = pattern.colours;
    return palette;
}

class Finder
{
public:
    Finder(const fileTreeDirectory &folder, const IndexedOptions &options, Progress *progress)
        : m_range(rangeOfFolder(folder)), m_firstAddress(folder.realAddress()), m_options(options), m_progress(progress),
          m_steps([progress] { return progress->cancelled(); })
    {
    }

    IndexedTextures find(const QStringList &files)
    {
        QVector<Wanted> batch;
        qint64 bytes = 0;
        for (int i = 0; i < files.size() && !m_steps.isCancelled(); ++i) {
            bytes += addPatterns(i, files.at(i), &batch);
            if (bytes > mostPatternBytes(m_range.size) || i + 1 == files.size()) {
                searchBatch(batch);
                batch.clear();
                bytes = 0;
            }
        }
        findAllPalettes();
        return m_result;
    }

private:
    /// Returns how much memory they take.
    qint64 addPatterns(int number, const QString &file, QVector<Wanted> *batch)
    {
        const QImage picture = loadPicture(file, [this] { return !m_steps.add(WorkSteps::bytesPerStep); });
        qint64 bytes = 0;
        for (const int bits : {4, 8}) {
            if (picture.isNull() || !(bits == 4 ? m_options.ci4 : m_options.ci8))
                continue;
            QString refusal;
            const QVector<IndexedPattern> patterns = indexedPatterns(picture, bits, &refusal);
            if (patterns.isEmpty())
                m_result.refusals.append({number, bits == 4 ? QStringLiteral("ci4") : QStringLiteral("ci8"), refusal});
            for (const IndexedPattern &pattern : patterns) {
                batch->append({number, picture.width(), picture.height(), pattern});
                bytes += pattern.numbers.size();
            }
        }
        return bytes;
    }

    void searchBatch(const QVector<Wanted> &batch)
    {
        for (const int bits : {4, 8}) {
            QVector<Wanted> wanted;
            QVector<IndexedPattern> patterns;
            for (const Wanted &one : batch) {
                if (one.pattern.bits == bits) {
                    wanted.append(one);
                    patterns.append(one.pattern);
                }
            }
            const QVector<QVector<int>> found = IndexedSearch(m_range, &m_steps).find(patterns);
            for (int i = 0; i < found.size(); ++i) {
                for (const int position : found.at(i)) {
                    const IndexedHit hit {wanted.at(i).picture, bits, position + m_range.cutInFront, wanted.at(i).width,
                                          wanted.at(i).height,  {}};
                    addHit(hit, paletteFor(patterns.at(i), indicesAt(m_range, position, patterns.at(i))));
                }
            }
        }
    }

    void addHit(const IndexedHit &hit, const WantedPalette &palette)
    {
        if (m_palettes.isEmpty() || !(m_palettes.last() == palette))
            m_palettes.append(palette);
        m_hits.append({hit, m_palettes.size() - 1});
    }

    static bool comesBefore(const IndexedHit &a, const IndexedHit &b)
    {
        return std::make_tuple(a.picture, a.bits, a.position) < std::make_tuple(b.picture, b.bits, b.position);
    }

    void findAllPalettes()
    {
        std::stable_sort(m_hits.begin(), m_hits.end(),
                         [](const HitWithPalette &a, const HitWithPalette &b) { return comesBefore(a.hit, b.hit); });
        const ByteRange image {currentROM.data.constData(), currentROM.data.size(), 0};
        const QVector<QVector<int>> places = findPalettes(image, m_palettes, &m_steps);
        for (HitWithPalette &one : m_hits) {
            if (m_options.firstOnly && !m_result.hits.isEmpty() && m_result.hits.last().picture == one.hit.picture)
                continue;
            one.hit.palettes = places.at(one.palette);
            sortPlaces(&one.hit.palettes, m_firstAddress + one.hit.position);
            m_result.hits.append(one.hit);
        }
    }

    struct HitWithPalette
    {
        IndexedHit hit;
        int palette; ///< Place in m_palettes.
    };

    ByteRange m_range;
    int m_firstAddress;
    IndexedOptions m_options;
    Progress *m_progress;
    WorkSteps m_steps;
    QVector<HitWithPalette> m_hits;
    QVector<WantedPalette> m_palettes;
    IndexedTextures m_result;
};
}

IndexedTextures findIndexedTextures(const fileTreeDirectory &folder, const QStringList &files, const IndexedOptions &options,
                                    Progress *progress)
{
    return Finder(folder, options, progress).find(files);
}

AddedEntries addIndexed(const QVector<IndexedHit> &hits, const QStringList &files, fileTreeDirectory *folder, DuplicateMode mode,
                        bool withoutPalette)
{
    AddedEntries count;
    if (mode == DoNotCreateEntry)
        return count;
    EntryIndex known(*folder);
    QVector<TextureReplacement> changes;
    for (const IndexedHit &hit : hits) {
        if (hit.palettes.isEmpty() && !withoutPalette)
            continue;
        auto *entry = new fileTreeFile;
        entry->name = QFileInfo(files.at(hit.picture)).completeBaseName();
        entry->format = hit.format();
        entry->width = hit.width;
        entry->height = hit.height;
        entry->address = hit.position;
        // A palette's address counts from the immediate folder's own address alone.
        if (!hit.palettes.isEmpty())
            entry->paletteAddress = hit.palettes.first() - folder->address;
        fileTreeFile *old = mode == OverwriteEntry ? known.takeEqualTo(*entry) : nullptr;
        if (mode == OverwriteEntry)
            known.add(entry);
        changes.append(TextureReplacement {entry, old});
        ++count.added;
        count.overwritten += old ? 1 : 0;
    }
    BulkAdder(folder).replaceFiles(changes);
    return count;
}
