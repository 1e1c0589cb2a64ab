// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QString>

#include <cstddef>

class QTreeWidgetItem;
class BulkAdder;
class fileTreeDirectory;

/// Base of both kinds of node. A node made with `new` is not deleted when it leaves the table: a selection or a panel may still
/// point to it. Leak checkers would report such nodes at exit, so a list that is never destroyed keeps their memory reachable.
/// Nothing is freed by way of that list; nodes in arrays, containers and smart pointers belong to their owners.
class fileTreeNode
{
public:
    static void *operator new(std::size_t bytes);
    static void *operator new(std::size_t, void *where) noexcept { return where; }
    static void operator delete(void *memory);
    static void operator delete(void *, void *) noexcept { }
};

/// A texture entry: where a texture lies in the loaded image, and how it is to be read.
class fileTreeFile : public fileTreeNode
{
public:
    fileTreeDirectory *parent = nullptr; ///< The folder that lists this entry; not owned.
    QTreeWidgetItem *treeItem = nullptr; ///< The row that shows this entry, if any; not owned.
    QString name = defaultName(); ///< Unique among the textures of the folder when set by setName().
    QString format = QStringLiteral("rgba32"); ///< A format's name, or whatever a list or a user wrote.
    qint32 address = 0; ///< Bytes, relative to the chain of folders.
    qint32 paletteAddress = 0; ///< Bytes, relative to the immediate folder alone.
    qint32 width = 32; ///< Pixels.
    qint32 height = 32; ///< Pixels.

    static QString defaultName() { return QStringLiteral("New Texture"); }

    /// The byte address in the image: the own one plus those of all folders but the root. Wraps at 32 bits.
    int realAddress() const;
    /// The palette's byte address in the image: only the immediate folder's own address is added. Wraps at 32 bits.
    int realPaletteAddress() const;
    /// Length in bytes of the texture's data, wrapped at 32 bits; 0 for an unknown format. A JPEG is measured by its markers: -1
    /// when none starts at the address, -2 when its tables are not reached, 1 when its end is missing.
    int size() const;
    /// The length as size() gives it, but not wrapped, so that it tells whether the texture lies inside the image.
    qint64 unwrappedSize() const;
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
    /// Takes \a newName, numbered if a sibling texture has it; an empty name keeps the current one. Visits all siblings: to name
    /// many nodes, use BulkAdder.
    void setName(const QString &newName);
    /// Unlinks the entry from its folder and removes its row from the tree. The object stays valid.
    void destroy();

private:
    friend class BulkAdder;
    /// Removes the row from the tree, and the entry from currentROM's selection.
    void leaveView();
};

/// A folder: a region of the image that holds textures and further folders.
class fileTreeDirectory : public fileTreeNode
{
public:
    fileTreeDirectory();

    fileTreeDirectory *parent = nullptr; ///< The enclosing folder, null for the root; not owned.
    QTreeWidgetItem *treeItem = nullptr; ///< The row that shows this folder, if any; not owned.
    QList<fileTreeDirectory *> directories; ///< In order of insertion until sort().
    QList<fileTreeFile *> files; ///< In order of insertion until sort().
    QString name = defaultName(); ///< Unique among sibling folders when set by setName().
    qint32 size; ///< Length of the region in bytes; the loaded image's at construction.
    qint32 address = 0; ///< Bytes, relative to the chain of folders.
    bool isRoot = false; ///< True only for the root, where every upward walk stops.

    static QString defaultName() { return QStringLiteral("New Folder"); }

    /// The byte address in the image: the sum over this folder and its ancestors but the root. Wraps at 32 bits.
    int realAddress() const;
    /// Whether the folder has a name and a size above 0.
    bool exists() const;
    /// Position in the parent's list, -1 if absent.
    int index() const;
    /// The names of the enclosing folders, each followed by "/"; empty for the root.
    QString path() const;
    /// As fileTreeFile::setName(), among sibling folders.
    void setName(const QString &newName);
    /// Stores the value, then calls updateBoundary().
    void setSize(int newSize);
    void setAddress(int newAddress);
    /// Cuts the region at the end of the loaded image, as far as the folder's own address tells.
    void updateBoundary();

    /// Links \a file as the last texture and makes its name unique. A previous parent keeps listing it. Returns \a file. Visits
    /// all siblings: to add many nodes, use BulkAdder.
    fileTreeFile *addFile(fileTreeFile *file);
    /// Links \a directory as the last folder and makes its name unique. Returns \a directory.
    fileTreeDirectory *addDirectory(fileTreeDirectory *directory);
    /// The first child folder of that name, ignoring case, or null.
    fileTreeDirectory *getDirectoryByName(const QString &wanted) const;
    /// The first texture of that name, ignoring case, or null.
    fileTreeFile *getFileByName(const QString &wanted) const;
    /// Position of \a file in the list, -1 if absent; with \a equal, of the first entry with the same address, format, width
    /// and height.
    int containsFile(const fileTreeFile *file, bool equal) const;
    /// Sorts the two lists with sortDirectoryDown() and sortFileDown(); entries of one address keep their order. The subtree
    /// is left alone.
    void sort();
    /// Unlinks the folder from its parent and removes its row from the tree. Its children and the object stay as they are.
    void destroy();

    /// Takes over name, address and size of \a values; the children, the parent and the row stay the folder's own.
    void copyValues(const fileTreeDirectory &values);
};

/// Whether the first node comes before the second: by relative address, signed.
bool sortDirectoryDown(const fileTreeDirectory *a, const fileTreeDirectory *b);
bool sortFileDown(const fileTreeFile *a, const fileTreeFile *b);

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

/// Size in bytes up to which overwrite() lets an image grow: four times the largest cartridge.
constexpr int maximumImageBytes = 256 * 1024 * 1024;

/// The one loaded cartridge image, its file table and profile. Its pointers are not owned in the sense of C++: a copy shares the
/// nodes with the original, and destroying either frees none.
class ROM
{
public:
    ROM();
    /// A copy shares the nodes of the file table and the working copies with the original.
    ROM(const ROM &) = default;
    ROM &operator=(const ROM &) = default;

    QString baseName; ///< Complete base name of the loaded file.
    QString romID; ///< Identifies the cartridge; names its folder of profiles.
    QString profileName; ///< The profile whose file list is in memory.
    QString autoloadProfile; ///< The profile to load with the cartridge.
    bool autosave = false; ///< Write the file list when the program closes.
    bool profileListUpdating = false; ///< View state: the profile lists are being refilled, so their signals are ignored.
    bool loaded = false; ///< A file has been loaded.
    QByteArray data; ///< The image, big-endian. Write to it with overwrite().
    fileTreeDirectory *root; ///< The file table's root.

    // View state: what the window shows and edits. The core reads none of it; it only forgets a node that leaves the table.
    fileTreeDirectory *lastSelectedFolder = nullptr; ///< Null when none is selected.
    fileTreeFile *lastSelectedTexture = nullptr; ///< Null when none is selected.
    fileTreeDirectory *editedFolder = new fileTreeDirectory; ///< Working copy that the folder panel shows and edits.
    fileTreeFile *editedTexture = new fileTreeFile; ///< Working copy that the texture panel shows and edits.
    int selectedType = 0; ///< Of the tree's current item: 0 nothing, 1 folder, 2 texture.

    /// Replaces the bytes of the image from \a address on with \a bytes. Everything that changes the loaded image goes through
    /// here. A range that crosses the end or starts behind it makes the image grow, with spaces (0x20) in a gap, as
    /// QByteArray::replace() fills it. False, with nothing changed, when \a address is negative or the image would grow past
    /// maximumImageBytes.
    [[nodiscard]] bool overwrite(int address, const QByteArray &bytes);
};

extern ROM currentROM;

Q_DECLARE_METATYPE(fileTreeFile *)
Q_DECLARE_METATYPE(fileTreeDirectory *)
