// SPDX-License-Identifier: MIT
#include "model/rom.h"

#include "base/debuglog.h"
#include "model/jpegends.h"
#include "model/textureformat.h"
#include "base/wrapping.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>

/// Holds every node, so that those no longer linked into the table are released at exit.
class NodeRegistry
{
public:
    static NodeRegistry &instance()
    {
        static NodeRegistry registry;
        return registry;
    }

    void add(fileTreeNode *node)
    {
        node->m_next = m_first;
        if (m_first)
            m_first->m_previous = node;
        m_first = node;
    }

    void remove(fileTreeNode *node)
    {
        if (node->m_previous)
            node->m_previous->m_next = node->m_next;
        else
            m_first = node->m_next;
        if (node->m_next)
            node->m_next->m_previous = node->m_previous;
    }

    ~NodeRegistry()
    {
        while (m_first)
            delete m_first; // NOLINT(clang-analyzer-cplusplus.NewDelete): the destructor takes the node out, m_first is the next
    }

private:
    fileTreeNode *m_first = nullptr;
};

namespace
{
/// Sum of the folders' addresses from \a directory up to the root, whose own does not count.
int addressOfFolders(const fileTreeDirectory *directory)
{
    int sum = 0;
    for (; directory && !directory->isRoot; directory = directory->parent)
        sum = addWrapping(sum, directory->address);
    return sum;
}

/// The names from the root down to \a directory, each followed by "/".
QString pathOfFolders(const fileTreeDirectory *directory)
{
    QList<const fileTreeDirectory *> chain;
    for (; directory; directory = directory->isRoot ? nullptr : directory->parent)
        chain.append(directory);
    QString path;
    std::for_each(chain.crbegin(), chain.crend(),
                  [&path](const fileTreeDirectory *folder) { path += folder->name + QLatin1Char('/'); });
    return path;
}

/// Part of the loaded image, cut at its end; null when it starts outside.
QByteArray bytesOfImage(int address, int size)
{
    const QByteArray &image = currentROM.data;
    if (address < 0 || address > image.size() || size < 0)
        return QByteArray();
    return image.mid(address, size);
}

JpegEnds &jpegEnds()
{
    static JpegEnds ends;
    return ends;
}

constexpr int noJpegStart = -1;
constexpr int noJpegTables = -2;

/// Length of the JPEG stream that starts at \a address of the loaded image. Markers are walked up to the first quantisation
/// table (DQT), so that an end marker in a thumbnail before it does not count.
int jpegSize(int address)
{
    if (address < 0 || address >= currentROM.data.size())
        return noJpegStart;
    constexpr int maximumSteps = 10;
    constexpr quint16 startOfImage = 0xFFD8;
    constexpr quint16 quantisationTable = 0xFFDB;
    const QByteArray &image = currentROM.data;
    const auto fits = [&](qint64 position, int bytes) { return address + position + bytes <= image.size(); };
    const auto wordAt = [&](qint64 position) { return qFromBigEndian<quint16>(image.constData() + address + position); };

    if (!fits(0, 2) || wordAt(0) != startOfImage)
        return noJpegStart;
    qint64 position = 0;
    for (int step = 0; step < maximumSteps && fits(position, 2); ++step) {
        const quint16 marker = wordAt(position);
        position += 2;
        if (marker == quantisationTable) {
            const int end = jpegEnds().next(image, int(address + position));
            return end < 0 ? 1 : end - address + 2; // A missing end yields 1; such entries are shown as they always were.
        }
        if (marker == startOfImage)
            continue;
        if (!fits(position, 2))
            break;
        position += wordAt(position);
    }
    return noJpegTables;
}

template<typename Node> Node *firstByName(const QList<Node *> &nodes, const QString &wanted)
{
    const QString lower = wanted.toLower();
    for (Node *node : nodes) {
        if (node->name.toLower() == lower)
            return node;
    }
    return nullptr;
}

/// \a requested as the rules for names turn it for a node that carries \a current, among the siblings that \a names counts
/// (null without a parent).
QString nameToTake(QString requested, const NodeName &current, const QString &fallback, const std::shared_ptr<NameIndex> &names)
{
    if (requested.isEmpty())
        requested = current.isEmpty() ? fallback : current;
    if (!names)
        return requested;
    const bool listed = current.index() == names;
    return names->freeName(requested, listed ? QString(current) : QString());
}

QString defaultTextureName()
{
    return QStringLiteral("New Texture");
}

QString defaultFolderName()
{
    return QStringLiteral("New Folder");
}

void takeOutRow(QTreeWidgetItem *parentRow, QTreeWidgetItem *row)
{
    if (parentRow && row && removeTreeRow)
        removeTreeRow(parentRow, row);
}
}

TreeRowRemover removeTreeRow = nullptr;
ROM currentROM;

fileTreeNode::fileTreeNode()
{
    NodeRegistry::instance().add(this);
}

fileTreeNode::~fileTreeNode()
{
    NodeRegistry::instance().remove(this);
}

// The format's name is spelt out: currentROM makes a texture before main(), when the format records may not be there yet.
fileTreeFile::fileTreeFile() : name(defaultTextureName()), format(QStringLiteral("rgba32")) {}

fileTreeFile::~fileTreeFile() = default;

int fileTreeFile::realAddress() const
{
    return addWrapping(address, addressOfFolders(parent));
}

int fileTreeFile::realPaletteAddress() const
{
    return addWrapping(paletteAddress, parent ? parent->address : 0);
}

int fileTreeFile::size() const
{
    if (format == textureFormats::jpeg.name)
        return jpegSize(realAddress());
    const textureFormat record = textureFormats::getAsMap().value(format, textureFormats::null);
    const int pixels = int(unsigned(width) * unsigned(height));
    return int(unsigned(qint64(pixels * record.bytesPerPixel)));
}

QByteArray fileTreeFile::data() const
{
    return bytesOfImage(realAddress(), size());
}

QByteArray fileTreeFile::palette() const
{
    const textureFormat record = textureFormats::getAsMap().value(format);
    if (!record.usesPalette)
        return QByteArray();
    QUILLARY_DEBUG_AS("QByteArray fileTreeFile::palette()") << realPaletteAddress();
    constexpr int bytesPerColour = 2;
    return bytesOfImage(realPaletteAddress(), bytesPerColour * int(std::pow(256, record.bytesPerPixel)));
}

bool fileTreeFile::exists() const
{
    if (name.isNull())
        return false;
    if (format.toLower() == textureFormats::jpeg.name)
        return true;
    return !format.isNull() && width >= 1 && height >= 1;
}

int fileTreeFile::index() const
{
    return parent ? parent->files.indexOf(const_cast<fileTreeFile *>(this)) : -1;
}

QString fileTreeFile::path() const
{
    return pathOfFolders(parent);
}

void fileTreeFile::setName(const QString &newName)
{
    name = nameToTake(newName, name, defaultTextureName(),
                      parent ? parent->m_namedFiles.names(parent->files) : std::shared_ptr<NameIndex>());
}

void fileTreeFile::destroy()
{
    if (parent)
        takeOutRow(parent->treeItem, treeItem);
    if (currentROM.lastSelectedTexture == this)
        currentROM.lastSelectedTexture = nullptr;
    if (parent)
        parent->m_namedFiles.remove(&parent->files, this);
}

template<typename Node>
const std::shared_ptr<NameIndex> &fileTreeDirectory::NamedList<Node>::names(const QList<Node *> &list)
{
    if (!index || index->isStale() || !list.isSharedWith(indexed)) {
        index = std::make_shared<NameIndex>();
        for (Node *node : list)
            node->name.join(index);
        indexed = list;
    }
    return index;
}

template<typename Node> void fileTreeDirectory::NamedList<Node>::append(QList<Node *> *list, Node *node)
{
    names(*list);
    indexed.clear(); // Unshared while the list is written to, or the list would be copied.
    list->append(node);
    indexed = *list;
    node->name.join(index);
}

template<typename Node> void fileTreeDirectory::NamedList<Node>::remove(QList<Node *> *list, Node *node)
{
    names(*list);
    indexed.clear();
    if (list->removeAll(node) > 0 && node->name.index() == index)
        node->name.leave();
    indexed = *list;
}

template<typename Node>
void fileTreeDirectory::NamedList<Node>::replace(QList<Node *> *list, const QSet<Node *> &removed, const QList<Node *> &appended)
{
    indexed.clear();
    if (!removed.isEmpty())
        list->erase(std::remove_if(list->begin(), list->end(), [&removed](Node *node) { return removed.contains(node); }),
                    list->end());
    *list += appended;
    indexed = *list;
}

template<typename Node> void fileTreeDirectory::NamedList<Node>::sort(QList<Node *> *list)
{
    const bool indexIsValid = list->isSharedWith(indexed);
    indexed.clear();
    std::stable_sort(list->begin(), list->end(), [](const Node *a, const Node *b) { return a->address < b->address; });
    // Without an index the next name asked for makes one; an emptied list could not be told from the cleared copy otherwise.
    if (indexIsValid)
        indexed = *list;
    else
        index.reset();
}

fileTreeDirectory::fileTreeDirectory()
    : name(defaultFolderName()), size(currentROM.loaded ? currentROM.data.size() : 0)
{
}

fileTreeDirectory::fileTreeDirectory(const fileTreeDirectory &other)
    : fileTreeNode(other), parent(other.parent), treeItem(other.treeItem), directories(other.directories), files(other.files),
      name(other.name), size(other.size), address(other.address), isRoot(other.isRoot)
{
}

fileTreeDirectory &fileTreeDirectory::operator=(const fileTreeDirectory &other)
{
    if (this == &other)
        return *this;
    parent = other.parent;
    treeItem = other.treeItem;
    directories = other.directories;
    files = other.files;
    isRoot = other.isRoot;
    copyValues(other);
    return *this;
}

fileTreeDirectory::~fileTreeDirectory() = default;

int fileTreeDirectory::realAddress() const
{
    return addressOfFolders(this);
}

bool fileTreeDirectory::exists() const
{
    return !name.isNull() && size > 0;
}

int fileTreeDirectory::index() const
{
    return parent ? parent->directories.indexOf(const_cast<fileTreeDirectory *>(this)) : -1;
}

QString fileTreeDirectory::path() const
{
    return isRoot ? QString() : pathOfFolders(parent);
}

void fileTreeDirectory::setName(const QString &newName)
{
    name = nameToTake(newName, name, defaultFolderName(),
                      parent ? parent->m_namedDirectories.names(parent->directories) : std::shared_ptr<NameIndex>());
}

void fileTreeDirectory::setSize(int newSize)
{
    size = newSize;
    updateBoundary();
}

void fileTreeDirectory::setAddress(int newAddress)
{
    address = newAddress;
    updateBoundary();
}

void fileTreeDirectory::updateBoundary()
{
    if (!currentROM.loaded) {
        QUILLARY_DEBUG_AS("void fileTreeDirectory::updateBoundary()")
            << "Could not update file boundary because the ROM isn't loaded";
        return;
    }
    // The folder's own relative address is compared, not the real one.
    if (qint64(size) + address > currentROM.data.size() || size <= 0)
        size = int(unsigned(currentROM.data.size()) - unsigned(address));
}

fileTreeFile *fileTreeDirectory::addFile(fileTreeFile *file)
{
    file->parent = this;
    m_namedFiles.append(&files, file);
    file->setName(file->name);
    return file;
}

void fileTreeDirectory::addFiles(const QVector<fileTreeReplacement> &changes)
{
    // Names come and go one by one, since each decides what is free for the next; the list changes once.
    const std::shared_ptr<NameIndex> names = m_namedFiles.names(files);
    QSet<fileTreeFile *> removed;
    QList<fileTreeFile *> appended;
    for (const fileTreeReplacement &change : changes) {
        if (change.replaced) {
            takeOutRow(treeItem, change.replaced->treeItem);
            if (currentROM.lastSelectedTexture == change.replaced)
                currentROM.lastSelectedTexture = nullptr;
            if (change.replaced->name.index() == names)
                change.replaced->name.leave();
            removed.insert(change.replaced);
        }
        change.added->parent = this;
        change.added->name.join(names);
        change.added->setName(change.added->name);
        appended.append(change.added);
    }
    m_namedFiles.replace(&files, removed, appended);
}

fileTreeDirectory *fileTreeDirectory::addDirectory(fileTreeDirectory *directory)
{
    directory->parent = this;
    m_namedDirectories.append(&directories, directory);
    directory->setName(directory->name);
    return directory;
}

fileTreeDirectory *fileTreeDirectory::getDirectoryByName(const QString &wanted) const
{
    return firstByName(directories, wanted);
}

fileTreeFile *fileTreeDirectory::getFileByName(const QString &wanted) const
{
    return firstByName(files, wanted);
}

int fileTreeDirectory::containsFile(const fileTreeFile *file, bool equal) const
{
    const auto matches = [file, equal](const fileTreeFile *other) {
        if (!equal)
            return other == file;
        return other->address == file->address && other->format == file->format && other->width == file->width
            && other->height == file->height;
    };
    const auto found = std::find_if(files.cbegin(), files.cend(), matches);
    return found == files.cend() ? -1 : int(found - files.cbegin());
}

void fileTreeDirectory::sort()
{
    m_namedDirectories.sort(&directories);
    m_namedFiles.sort(&files);
}

void fileTreeDirectory::destroy()
{
    if (parent)
        takeOutRow(parent->treeItem, treeItem);
    if (currentROM.lastSelectedFolder == this)
        currentROM.lastSelectedFolder = nullptr;
    if (parent)
        parent->m_namedDirectories.remove(&parent->directories, this);
}

void fileTreeDirectory::forgetNames()
{
    if (m_namedFiles.index)
        m_namedFiles.index->dissolve();
    if (m_namedDirectories.index)
        m_namedDirectories.index->dissolve();
}

void fileTreeDirectory::copyValues(const fileTreeDirectory &values)
{
    name = values.name;
    size = values.size;
    address = values.address;
}

QList<fileTreeDirectory *> fileTreeContainer::allDirectories(const fileTreeDirectory *directory) const
{
    QList<fileTreeDirectory *> found;
    if (!directory)
        return found;
    // The children come as one block; then each child's own blocks, the first child's before the second's.
    QList<const fileTreeDirectory *> waiting{directory};
    while (!waiting.isEmpty()) {
        const QList<fileTreeDirectory *> &children = waiting.takeLast()->directories;
        found += children;
        std::for_each(children.crbegin(), children.crend(),
                      [&waiting](const fileTreeDirectory *child) { waiting.append(child); });
    }
    return found;
}

QList<fileTreeFile *> fileTreeContainer::allFiles(const fileTreeDirectory *directory) const
{
    QList<fileTreeFile *> found;
    if (!directory)
        return found;
    QList<const fileTreeDirectory *> waiting{directory};
    while (!waiting.isEmpty()) {
        const fileTreeDirectory *next = waiting.takeLast();
        found += next->files;
        std::for_each(next->directories.crbegin(), next->directories.crend(),
                      [&waiting](const fileTreeDirectory *child) { waiting.append(child); });
    }
    return found;
}

fileTreeFile *fileTreeContainer::fileFromPath(const QString &path) const
{
    const QStringList parts = path.split(QLatin1Char('/'));
    const fileTreeDirectory *folder = currentROM.root;
    if (parts.size() < 2 || !folder)
        return nullptr;
    for (int i = 1; folder && i < parts.size() - 1; ++i)
        folder = folder->getDirectoryByName(parts.at(i));
    fileTreeFile *found = folder ? folder->getFileByName(parts.last()) : nullptr;
    if (found)
        QUILLARY_DEBUG_AS("fileTreeFile *fileTreeContainer::fileFromPath(QString)") << "Found file from path" << path;
    return found;
}

void releaseImageBytes()
{
    jpegEnds().forget();
}

ROM::ROM() : root(new fileTreeDirectory), editedFolder(new fileTreeDirectory), editedTexture(new fileTreeFile)
{
    root->name = QStringLiteral("Root");
    root->isRoot = true;
}
