// SPDX-License-Identifier: MIT
#pragma once

#include "search/foundentries.h"
#include "search/indexedpattern.h"

#include <QStringList>
#include <QVector>

class Progress;

/// A place where a picture lies as an indexed texture.
struct IndexedHit
{
    int picture = 0; ///< Place in the list of files.
    int bits = 8; ///< Of its indices; ci4 or ci8.
    int position = 0; ///< In the folder, in bytes.
    int width = 0; ///< Pixels, as for height.
    int height = 0;
    QVector<int> palettes; ///< Addresses in the image where its colours stand, the best first; see sortPlaces().

    QString format() const { return bits == 4 ? QStringLiteral("ci4") : QStringLiteral("ci8"); }
};

/// Why a picture was not searched for in a format.
struct IndexedRefusal
{
    int picture = 0;
    QString format;
    QString reason; ///< As in "it has a single colour".
};

struct IndexedTextures
{
    QVector<IndexedHit> hits; ///< By picture, format and position.
    QVector<IndexedRefusal> refusals;
};

/// What to search for, beside the pictures.
struct IndexedOptions
{
    bool ci4 = false;
    bool ci8 = false;
    bool firstOnly = false; ///< Of each picture the first hit alone, of ci4 before ci8.
};

/// Searches the range of \a folder in the loaded image for the pictures in \a files as indexed textures, and all of the image for
/// their palettes. Pictures that cannot be read are passed over. Asks \a progress whether to go on, and returns what it has when
/// not.
IndexedTextures findIndexedTextures(const fileTreeDirectory &folder, const QStringList &files, const IndexedOptions &options,
                                    Progress *progress);

/// How many entries came of hits.
struct AddedEntries
{
    int added = 0;
    int overwritten = 0; ///< Of those, the ones that took the place of an equal one.
};

/// Makes entries of \a hits in \a folder, named after their files, each with the first of its palettes. Those without a palette
/// are left out unless \a withoutPalette.
AddedEntries addIndexed(const QVector<IndexedHit> &hits, const QStringList &files, fileTreeDirectory *folder, DuplicateMode mode,
                        bool withoutPalette);
