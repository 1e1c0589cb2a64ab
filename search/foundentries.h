// SPDX-License-Identifier: MIT
#pragma once

#include "model/rom.h"

#include <QHash>
#include <QVector>

/// What to do with a found texture; the values are those of the dialog's choices.
enum DuplicateMode {
    OverwriteEntry = 0, ///< An equal entry of the folder makes room for it.
    CreateNewEntry = 1, ///< It becomes an entry, whatever the folder has.
    DoNotCreateEntry = 2, ///< It is only reported.
};

/// The entries of one folder by address, format, width and height, kept current while entries are added and replaced. Answers
/// like fileTreeDirectory::containsFile() with equality, without visiting the list.
class EntryIndex
{
public:
    /// Knows the entries that \a folder has now; changes have to be told.
    explicit EntryIndex(const fileTreeDirectory &folder);

    /// The first of the folder's entries, in list order, that equals \a entry, or null. From now on it counts as gone.
    fileTreeFile *takeEqualTo(const fileTreeFile &entry);
    /// \a entry becomes the folder's last.
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
    /// Equal entries, in list order, are chained by their places in m_entries.
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
