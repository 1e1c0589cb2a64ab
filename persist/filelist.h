// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QIODevice;
class QXmlStreamWriter;
class fileTreeDirectory;
class fileTreeFile;

/// Watches a file list being read: the window makes rows of what comes, a command line may print it.
class FileListObserver
{
public:
    virtual ~FileListObserver() = default;
    virtual void directoryStarted(fileTreeDirectory *) { } ///< A folder has been added to its parent; its contents follow.
    virtual void directoryEnded(fileTreeDirectory *) { } ///< What follows belongs to the folder's parent.
    virtual void fileAdded(fileTreeFile *) { } ///< A texture has been added to its folder.
};

/// Reads the folders and textures of the file list in \a device, a document of version 1 or 2, and adds them below \a root.
/// \a imageSize is the length in bytes of the image they describe: a folder whose address is outside begins at 0, and one
/// without a size reaches to the image's end. Unknown elements and attributes are passed over; numbers that are none count as 0.
/// \a observer may be null. A malformed document yields false and the reader's message in \a error; what was read before stays.
/// So does one in which an element has too many attributes, of which nothing is read.
bool readFileList(QIODevice *device, int imageSize, fileTreeDirectory *root, FileListObserver *observer, QString *error);

/// Sorts \a root and all folders below by address and writes them to \a device as a document of version 2. Characters that XML
/// cannot hold are left out of names and formats, so that every table can be written. Returns false, with the reason in
/// \a error, when the device refuses data; the document is then incomplete.
bool writeFileList(fileTreeDirectory *root, QIODevice *device, QString *error);

/// Writes the attributes of \a directory, unless it is the root, into the element that has just been started, and then what the
/// folder holds. The element stays open.
void writeFolder(QXmlStreamWriter *writer, const fileTreeDirectory *directory);
