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

/// What to search for, beside the pictures.
struct TextureSearchOptions
{
    QMap<QString, textureFormat> formats; ///< By name, in whose order they are tried.
    bool firstOnly = true; ///< A picture's search ends with the first copy.
    int duplicateMode = OverwriteEntry; ///< A DuplicateMode.
};

/// Bytes of patterns to keep at once for a range of \a rangeSize bytes. With the sweep's tables, the list of runs and the copies
/// found, a batch then stays within a quarter of the range's size; in a small range within a few MiB.
qint64 mostPatternBytes(qint64 rangeSize);

/// The bytes of the loaded image that \a folder covers: its size from its real address on, cut at both ends of the image.
ByteRange rangeOfFolder(const fileTreeDirectory &folder);

/// Searches a folder's range of the loaded image for the encoded bytes of pictures, at any alignment, and makes entries of the
/// copies, named after the picture's file.
///
/// What is found, in which order, and what the observer hears of it and when, is as if each picture were loaded, encoded in one
/// format after the other, and searched for from the front of the range, each time from the end of the copy before. The work
/// itself is done ahead for as many pictures as fit in a quarter of the range's size, because searching for many patterns costs
/// hardly more than for one.
class TextureSearch
{
public:
    /// Borrows \a folder and \a observer. While the search lives, the loaded image must stay as it is, and the folder's entries
    /// must be changed by nobody else.
    TextureSearch(fileTreeDirectory *folder, const TextureSearchOptions &options, SearchObserver *observer);
    ~TextureSearch();

    /// Searches for the pictures in \a files. Returns whether any copy was found. Ends early once the observer has it cancelled;
    /// copies of the current picture found till then still become entries.
    bool run(const QStringList &files);
    /// Searches for one picture, without the word that it begins and without the value.
    bool runOne(const QString &file);

private:
    struct Picture
    {
        int width = 0;
        int height = 0;
        bool isReadable = false;
        bool isLarge = false; ///< Its patterns are not kept but made, and searched for, one after the other.
        QVector<int> patterns; ///< By format: a place in the batch's patterns, -1 where there is nothing to search for.
    };
    struct Hit
    {
        int format; ///< Place in the order of names.
        int position;
    };

    bool searchFor(const QStringList &files, int place);
    void loadBatch(const QStringList &files, int first);
    bool addToBatch(const QString &file, PatternBatch *batch);
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
    std::unique_ptr<PatternSearch> m_searchForLarge; ///< Made when the first picture needs it.
    std::unique_ptr<EntryIndex> m_entries; ///< Made when the first copy could overwrite one.
    QVector<Picture> m_pictures; ///< Of the batch.
    int m_nextPicture = 0;
};
