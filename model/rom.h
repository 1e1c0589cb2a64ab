// SPDX-License-Identifier: MIT
#pragma once

#include "model/nameindex.h"

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QSet>
#include <QString>
#include <QVector>

class QTreeWidgetItem;
class fileTreeDirectory;

/// Common to both kinds of node: every node made with new and not deleted lives until the program ends, also unlinked from the
/// table, and is released then.
class fileTreeNode
{
public:
    virtual ~fileTreeNode();

protected:
    fileTreeNode();
    fileTreeNode(const fileTreeNode &) : fileTreeNode() {}
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is taken over from another one
    fileTreeNode &operator=(const fileTreeNode &) { return *this; }

private:
    friend class NodeRegistry;
    fileTreeNode *m_previous = nullptr;
    fileTreeNode *m_next = nullptr;
};

/// A texture entry: where a texture lies in the loaded image, and how it is to be read.
class fileTreeFile : public fileTreeNode
{
public:
    fileTreeFile();
    fileTreeFile(const fileTreeFile &other) = default;
    fileTreeFile &operator=(const fileTreeFile &other) = default;
    ~fileTreeFile() override;

    fileTreeDirectory *parent = nullptr;  ///< The folder that lists this entry; not owned.
    QTreeWidgetItem *treeItem = nullptr;  ///< The row that shows this entry, if any; not owned.
    NodeName name;                        ///< Unique among the textures of the folder when set by setName().
    QString format;                       ///< A key of textureFormats::getAsMap(), or whatever a list or a user wrote.
    qint32 address = 0;                   ///< Bytes, relative to the chain of folders.
    qint32 paletteAddress = 0;            ///< Bytes, relative to the immediate folder alone.
    qint32 width = 32;                    ///< Pixels.
    qint32 height = 32;                   ///< Pixels.

    /// The byte address in the image: the own one plus those of all folders but the root. Wraps at 32 bits.
    int realAddress() const;
    /// The palette's byte address in the image: only the immediate folder's own address is added.
    int realPaletteAddress() const;
    /// Length in bytes of the texture's data; 0 for an unknown format. A JPEG is measured by its markers: -1 when none starts
    /// at the address, -2 when its tables are not reached, 1 when its end is missing.
    int size() const;
    /// The texture's bytes in the loaded image, fewer where the image ends first; null when size() is negative or the range
    /// lies outside.
    QByteArray data() const;
    /// The palette's bytes in the loaded image: up to 512 for "ci8", 32 for "ci4", none for formats without palette.
    QByteArray palette() const;
    /// Whether the entry says enough to be read: a name, and a JPEG or a format with a width and a height.
    bool exists() const;
    /// Position in the folder's list, -1 if absent.
    int index() const;
    /// The names of the enclosing folders, each followed by "/"; the entry's own name is not part of it.
    QString path() const;
    /// Takes \a newName, numbered if a sibling texture has it; an empty name keeps the current one.
    void setName(const QString &newName);
    /// Unlinks the entry from its folder and takes its row out of the tree. The object stays valid.
    void destroy();
};

/// A texture to link to a folder, and the one that it takes the place of.
struct fileTreeReplacement
{
    fileTreeFile *added = nullptr;
    fileTreeFile *replaced = nullptr; ///< Null when it takes nobody's place.
};

/// A folder: a region of the image that holds textures and further folders.
class fileTreeDirectory : public fileTreeNode
{
public:
    fileTreeDirectory();
    /// A copy has the same fields and is listed nowhere.
    fileTreeDirectory(const fileTreeDirectory &other);
    fileTreeDirectory &operator=(const fileTreeDirectory &other);
    ~fileTreeDirectory() override;

    fileTreeDirectory *parent = nullptr;    ///< The enclosing folder, null for the root; not owned.
    QTreeWidgetItem *treeItem = nullptr;    ///< The row that shows this folder, if any; not owned.
    QList<fileTreeDirectory *> directories; ///< In order of insertion until sort().
    QList<fileTreeFile *> files;            ///< In order of insertion until sort().
    NodeName name;                          ///< Unique among sibling folders when set by setName().
    qint32 size = 0;                        ///< Length of the region in bytes; the loaded image's at construction.
    qint32 address = 0;                     ///< Bytes, relative to the chain of folders.
    bool isRoot = false;                    ///< True only for the root, where every upward walk stops.

    /// The byte address in the image: the sum over this folder and its ancestors but the root. Wraps at 32 bits.
    int realAddress() const;
    bool exists() const;
    int index() const;
    /// The names of the enclosing folders, each followed by "/"; empty for the root.
    QString path() const;
    void setName(const QString &newName);
    void setSize(int newSize);
    void setAddress(int newAddress);
    /// Cuts the region at the end of the loaded image, as far as the folder's own address tells.
    void updateBoundary();

    /// Links \a file as the last texture and makes its name unique. A previous parent keeps listing it. Returns \a file.
    fileTreeFile *addFile(fileTreeFile *file);
    /// Does for each of \a changes in turn what replaced->destroy() and addFile(added) do, in time linear in the list. The replaced
    /// ones must be listed here.
    void addFiles(const QVector<fileTreeReplacement> &changes);
    /// Links \a directory as the last folder and makes its name unique. Returns \a directory.
    fileTreeDirectory *addDirectory(fileTreeDirectory *directory);
    /// The first child folder of that name, ignoring case, or null.
    fileTreeDirectory *getDirectoryByName(const QString &wanted) const;
    /// The first texture of that name, ignoring case, or null.
    fileTreeFile *getFileByName(const QString &wanted) const;
    /// Position of \a file in the list, -1 if absent; with \a equal, of the first entry with the same address, format, width
    /// and height.
    int containsFile(const fileTreeFile *file, bool equal) const;
    /// Sorts the two lists by address; entries of one address keep their order. The subtree is left alone.
    void sort();
    /// Unlinks the folder from its parent and takes its row out of the tree. Its children and the object stay as they are.
    void destroy();

    /// Frees what serves to find free names among the children, for a folder that leaves the table. It comes back when needed.
    void forgetNames();

    /// Takes over name, address and size of \a values; the children, the parent and the row stay the folder's own.
    void copyValues(const fileTreeDirectory &values);

private:
    friend class fileTreeFile;

    /// The names in a list of children. The lists are public, so it keeps a copy that shares the list's data: once it no longer
    /// does, somebody wrote to the list directly, and the index is filled anew.
    template<typename Node> struct NamedList
    {
        std::shared_ptr<NameIndex> index;
        QList<Node *> indexed;

        const std::shared_ptr<NameIndex> &names(const QList<Node *> &list);
        void append(QList<Node *> *list, Node *node);
        void remove(QList<Node *> *list, Node *node);
        void replace(QList<Node *> *list, const QSet<Node *> &removed, const QList<Node *> &appended);
        void sort(QList<Node *> *list);
    };
    NamedList<fileTreeFile> m_namedFiles;
    NamedList<fileTreeDirectory> m_namedDirectories;
};

/// Walks the file table. Stateless; no recursion, so that depth costs no stack.
class fileTreeContainer
{
public:
    /// All folders below \a directory: its children in list order, then for each child in turn all folders below that.
    QList<fileTreeDirectory *> allDirectories(const fileTreeDirectory *directory) const;
    /// The textures of \a directory, then for each child folder in turn all textures in and below that.
    QList<fileTreeFile *> allFiles(const fileTreeDirectory *directory) const;
    /// The texture at a path as path() and the name spell it. The first part is not compared; case is ignored.
    fileTreeFile *fileFromPath(const QString &path) const;
};

/// The one loaded cartridge image and what hangs on it.
class ROM
{
public:
    ROM();
    ~ROM() = default;
    ROM(const ROM &) = delete;
    ROM &operator=(const ROM &) = delete;

    QString baseName;                 ///< Complete base name of the loaded file.
    QString romID;                    ///< Identifies the cartridge; names its folder of profiles.
    QString profileName;              ///< The profile whose file list is in memory.
    QString autoloadProfile;          ///< The profile to load with the cartridge.
    bool autosave = false;            ///< Write the file list when the program closes.
    bool profileListUpdating = false; ///< The profile lists are being refilled; their signals mean nothing.
    bool loaded = false;              ///< A file has been loaded.
    QByteArray data;                  ///< The image, big-endian.
    fileTreeDirectory *root;          ///< The file table's root; released with all nodes at exit.
    fileTreeDirectory *lastSelectedFolder = nullptr; ///< Not owned.
    fileTreeFile *lastSelectedTexture = nullptr;     ///< Not owned.
    fileTreeDirectory *editedFolder;  ///< Working copy that the folder panel shows and edits.
    fileTreeFile *editedTexture;      ///< Working copy that the texture panel shows and edits.
    int selectedType = 0;             ///< Of the tree's current item: 0 nothing, 1 folder, 2 texture.
};

extern ROM currentROM;

/// Lets go of the loaded image's bytes wherever they are kept for measuring. Call it before writing into the image or replacing
/// it: the bytes are seen to have changed without it too, but at the price of a copy of the whole image.
void releaseImageBytes();

/// Takes \a row out of \a parentRow, and shows the parent row as empty when it was the last. Set by the window library, so that
/// the model needs none; null in programs without one.
using TreeRowRemover = void (*)(QTreeWidgetItem *parentRow, QTreeWidgetItem *row);
extern TreeRowRemover removeTreeRow;

Q_DECLARE_METATYPE(fileTreeFile *)
Q_DECLARE_METATYPE(fileTreeDirectory *)
