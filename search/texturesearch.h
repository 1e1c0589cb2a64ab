// SPDX-License-Identifier: MIT
#pragma once

#include "model/textureformat.h"
#include "search/byterange.h"
#include "search/foundentries.h"

#include <QMap>
#include <QStringList>

#include <memory>

class PatternBatch;
class PatternSearch;
class QImage;
class SearchObserver;
class WorkSteps;

/// Options of a search.
struct TextureSearchOptions
{
    QMap<QString, textureFormat> formats; ///< Tried in the order of their names.
    bool firstOnly = true; ///< A picture's search ends with the first copy.
    int duplicateMode = OverwriteEntry; ///< A DuplicateMode.
    /// Copies whose address, format, width and height an entry anywhere in the table has are only reported.
    bool onlyNew = false;
};

/// Maximum bytes of patterns in a batch for a range of \a rangeSize bytes. With the tables of the sweep, the list of runs and the
/// copies, a batch then needs at most a quarter of the memory of the range; in a small range a few MiB.
qint64 mostPatternBytes(qint64 rangeSize);

/// The bytes of the loaded image in the region of \a folder, cut at both ends of the image.
ByteRange rangeOfFolder(const fileTreeDirectory &folder);

/// Searches the region of a folder for the encoded bytes of pictures, at any alignment, and adds entries for the copies, named
/// after the picture file.
///
/// The results, their order and the callbacks are those of a search that loads one picture after the other, encodes it in each
/// format and searches from the front, each time from the end of the previous copy. Internally pictures are searched for in
/// batches, because a search for many patterns costs little more than a search for one.
class TextureSearch
{
public:
    /// Borrows \a folder and \a observer. During its lifetime the loaded image must not change, and the folder's entries only
    /// through the search.
    TextureSearch(fileTreeDirectory *folder, const TextureSearchOptions &options, SearchObserver *observer);
    ~TextureSearch();

    /// Searches for the pictures in \a files. Returns whether any copy was found. A cancellation ends it early; copies of the
    /// current picture found so far are still added.
    bool run(const QStringList &files);
    /// Searches for one picture, without beginPicture() and setValue().
    bool runOne(const QString &file);

private:
    struct Picture
    {
        int width = 0;
        int height = 0;
        bool isReadable = false;
        bool isLarge = false; ///< Its patterns are made and searched for one at a time.
        QVector<int> patterns; ///< By format: index in the batch, -1 for none.
    };
    struct Hit
    {
        int format; ///< Index in the order of names.
        int position;
    };

    bool searchFor(const QStringList &files, int place);
    void loadBatch(const QStringList &files, int first);
    bool addToBatch(const QString &file, bool isNext, PatternBatch *batch);
    QByteArray encoded(const QImage &image, const textureFormat &format) const;

    QVector<Hit> collectHits(const Picture &picture);
    QVector<Hit> collectHitsOfLarge(const QString &file);
    bool collectHitsOfPattern(PatternSearch *search, int pattern, int format, QVector<Hit> *hits);
    bool isCancelled();

    void storeHits(const QVector<Hit> &hits, const QString &name, const Picture &picture);

    fileTreeDirectory *m_folder;
    TextureSearchOptions m_options;
    SearchObserver *m_observer;
    ByteRange m_range;
    std::unique_ptr<WorkSteps> m_steps;
    std::unique_ptr<PatternSearch> m_patternSearch;
    std::unique_ptr<PatternSearch> m_searchForLarge; ///< Made for the first large picture.
    std::unique_ptr<EntryIndex> m_entries; ///< Made for the first copy that can overwrite an entry.
    QVector<Picture> m_pictures; ///< Of the batch.
    std::unique_ptr<KnownTextures> m_known; ///< Made for the first copy that can be known already.
    int m_nextPicture = 0;
};
