// SPDX-License-Identifier: MIT
#include "model/rom.h"

#include "base/debuglog.h"
#include "base/wrapping.h"
#include "model/bulkadder.h"
#include "model/jpegends.h"
#include "model/textureformat.h"

#include <QIcon>
#include <QTreeWidgetItem>
#include <QVector>
#include <QtEndian>

#include <algorithm>
#include <deque>

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

/// Bytes of the loaded image, cut at its end; null when they start outside.
QByteArray bytesOfImage(int address, int size)
{
    const QByteArray &image = currentROM.data;
    if (address < 0 || address > image.size() || size < 0)
        return QByteArray();
    return image.mid(address, size);
}

constexpr int noJpegStart = -1;
constexpr int noJpegTables = -2;
constexpr int noJpegEnd = 1;

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
            const int end = nextJpegEnd(image, int(address + position));
            return end < 0 ? noJpegEnd : end - address + 2;
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

/// The lowest number from 2 on that no sibling but \a node has behind \a name, as in "Sky (2)".
template<typename Node> int lowestFreeNumber(const QList<Node *> &siblings, const Node *node, const QString &name)
{
    // So many siblings leave one of so many numbers free.
    QVector<bool> isUsed(siblings.size() + 1);
    const QString prefix = name + QLatin1String(" (");
    for (const Node *sibling : siblings) {
        QString base;
        int number = 0;
        if (sibling != node && sibling->name.startsWith(prefix) && splitNumberedName(sibling->name, &base, &number)
            && base == name && number - firstNameNumber < isUsed.size())
            isUsed[number - firstNameNumber] = true;
    }
    return firstNameNumber + isUsed.indexOf(false);
}

/// Names \a node by the naming rule among \a siblings, the list of its parent; null without a parent.
template<typename Node> void nameAmong(const QList<Node *> *siblings, Node *node, const QString &newName)
{
    const QString current = node->name.isEmpty() ? Node::defaultName() : node->name;
    const QString requested = newName.isEmpty() ? current : newName;
    const auto hasName = [&](const Node *sibling) { return sibling != node && sibling->name == requested; };
    if (siblings && std::any_of(siblings->cbegin(), siblings->cend(), hasName))
        node->name = numberedName(requested, lowestFreeNumber(*siblings, node, requested));
    else
        node->name = requested;
}

/// Removes \a row from \a parentRow, which then shows whether it is empty.
void removeRow(QTreeWidgetItem *parentRow, QTreeWidgetItem *row)
{
    if (!parentRow || !row)
        return;
    parentRow->removeChild(row);
    if (parentRow->childCount() == 0)
        parentRow->setIcon(0, QIcon(QStringLiteral(":/icons/folder_empty")));
}
}

ROM currentROM;

void *fileTreeNode::operator new(std::size_t bytes)
{
    static auto &nodes = *new std::deque<void *>;
    nodes.push_back(::operator new(bytes));
    return nodes.back();
}

// Not inline: the compiler would take the pair with operator new above for a mismatch.
void fileTreeNode::operator delete(void *memory)
{
    ::operator delete(memory);
}

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
    if (textureFormats::isJpeg(format))
        return jpegSize(realAddress());
    const textureFormat *record = textureFormats::find(format);
    const int pixels = int(unsigned(width) * unsigned(height));
    return record ? int(textureFormats::bytesOfPixels(*record, pixels)) : 0;
}

qint64 fileTreeFile::unwrappedSize() const
{
    if (textureFormats::isJpeg(format))
        return jpegSize(realAddress());
    const textureFormat *record = textureFormats::find(format);
    return record ? textureFormats::bytesOfPixels(*record, qint64(width) * height) : 0;
}

QByteArray fileTreeFile::data() const
{
    return bytesOfImage(realAddress(), size());
}

QByteArray fileTreeFile::palette() const
{
    const textureFormat *record = textureFormats::find(format);
    if (!record || !record->usesPalette)
        return QByteArray();
    QUILLARY_DEBUG_AS("QByteArray fileTreeFile::palette()") << realPaletteAddress();
    return bytesOfImage(realPaletteAddress(), textureFormats::paletteBytes(*record));
}

bool fileTreeFile::exists() const
{
    if (name.isNull())
        return false;
    if (textureFormats::isJpegInAnyCase(format))
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
    nameAmong(parent ? &parent->files : nullptr, this, newName);
}

void fileTreeFile::leaveView()
{
    if (parent)
        removeRow(parent->treeItem, treeItem);
    if (currentROM.lastSelectedTexture == this)
        currentROM.lastSelectedTexture = nullptr;
}

void fileTreeFile::destroy()
{
    leaveView();
    if (parent)
        parent->files.removeAll(this);
}

fileTreeDirectory::fileTreeDirectory() : size(currentROM.loaded ? currentROM.data.size() : 0) { }

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
    nameAmong(parent ? &parent->directories : nullptr, this, newName);
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
    files.append(file);
    file->setName(file->name);
    return file;
}

fileTreeDirectory *fileTreeDirectory::addDirectory(fileTreeDirectory *directory)
{
    directory->parent = this;
    directories.append(directory);
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

bool sortDirectoryDown(const fileTreeDirectory *a, const fileTreeDirectory *b)
{
    return a->address < b->address;
}

bool sortFileDown(const fileTreeFile *a, const fileTreeFile *b)
{
    return a->address < b->address;
}

void fileTreeDirectory::sort()
{
    std::stable_sort(directories.begin(), directories.end(), sortDirectoryDown);
    std::stable_sort(files.begin(), files.end(), sortFileDown);
}

void fileTreeDirectory::destroy()
{
    if (parent)
        removeRow(parent->treeItem, treeItem);
    if (currentROM.lastSelectedFolder == this)
        currentROM.lastSelectedFolder = nullptr;
    if (parent)
        parent->directories.removeAll(this);
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
    QList<const fileTreeDirectory *> waiting {directory};
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
    QList<const fileTreeDirectory *> waiting {directory};
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

ROM::ROM() : root(new fileTreeDirectory)
{
    root->name = QStringLiteral("Root");
    root->isRoot = true;
}

bool ROM::overwrite(int address, const QByteArray &bytes)
{
    const qint64 end = qint64(address) + bytes.size();
    if (address < 0 || (end > data.size() && end > maximumImageBytes))
        return false;
    forgetJpegEnds();
    data.replace(address, bytes.size(), bytes);
    return true;
}
