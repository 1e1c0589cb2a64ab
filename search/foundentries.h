// SPDX-License-Identifier: MIT
#pragma once

#include "model/rom.h"

#include <QHash>
#include <QSet>
#include <QVector>

/// What to do with a found texture; the values are those of the dialog's choices.
enum DuplicateMode {
    OverwriteEntry = 0, ///< It replaces an equal entry of the folder.
    CreateNewEntry = 1, ///< It becomes a new entry in any case.
    DoNotCreateEntry = 2, ///< It is only reported.
};

/// The textures that a whole table describes, by where they lie in the image.
class KnownTextures
{
public:
    /// Takes in the table that \a folder belongs to.
    explicit KnownTextures(const fileTreeDirectory &folder);

    /// Takes in a texture. Returns false when it is known already.
    bool insert(const fileTreeFile &texture, int realAddress);

private:
    QSet<QString> m_keys;
};

/// The entries of one folder, indexed by address, format, width and height. Gives the same answers as
/// fileTreeDirectory::containsFile() with equality, in constant time.
class EntryIndex
{
public:
    /// Indexes the entries of \a folder; the caller reports later changes.
    explicit EntryIndex(const fileTreeDirectory &folder);

    /// The first entry in list order that equals \a entry, or null. Removes it from the index.
    fileTreeFile *takeEqualTo(const fileTreeFile &entry);
    /// Adds \a entry as the last one.
    void add(fileTreeFile *entry);

private:
    struct Key
    {
        qint32 address;
        qint32 width;
        qint32 height;
        QString format;

        friend bool operator==(const Key &a, const Key &b)
        {
            return a.address == b.address && a.width == b.width && a.height == b.height && a.format == b.format;
        }
        friend uint qHash(const Key &key, uint seed)
        {
            return ::qHash(key.format, seed)
                ^ ::qHash(quint64(quint32(key.address)) << 32 ^ quint64(quint32(key.width)) << 16 ^ quint64(quint32(key.height)),
                          seed);
        }
    };
    /// Equal entries are chained in list order by their indexes in m_entries.
    struct Chain
    {
        int first = -1;
        int last = -1;
    };

    static Key keyOf(const fileTreeFile &entry);

    QHash<Key, Chain> m_chains;
    QVector<fileTreeFile *> m_entries;
    QVector<int> m_nextEqual;
};
