// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

class QIODevice;
class QXmlStreamWriter;
class fileTreeDirectory;
class fileTreeFile;

/// Is told what a file list contains while it is read.
class FileListObserver
{
public:
    virtual ~FileListObserver() = default;
    virtual void directoryStarted(fileTreeDirectory *) { } ///< A folder has been added to its parent; its contents follow.
    virtual void directoryEnded(fileTreeDirectory *) { } ///< What follows belongs to the folder's parent.
    virtual void fileAdded(fileTreeFile *) { } ///< A texture has been added to its folder.
};

/// Reads the folders and textures of a file list, a document of version 1 or 2, and adds them below  root.  document is the
/// whole content of the file.  imageSize is the length in bytes of the image that the list describes: a folder whose address is
/// outside gets the address 0, and one without a size reaches to the end of the image. A negative folder address is kept when the
/// folder's real address lies in the image. Unknown elements and attributes are ignored; what is not a number counts as 0.
///  observer may be null. For a malformed document the result is false,  error has the reader's message, and what was read
/// before stays. A document that decodeXml() refuses is not read at all.
bool readFileList(const QByteArray &document, int imageSize, fileTreeDirectory *root, FileListObserver *observer, QString *error);

/// Sorts \a root and all folders below by address and writes them to \a device as a document of version 2. Characters that XML
/// cannot hold are left out of names and formats, so that every table can be written. Returns false, with the reason in
/// \a error, when the device refuses data; the document is then incomplete.
bool writeFileList(fileTreeDirectory *root, QIODevice *device, QString *error);

/// Writes the attributes of \a directory, unless it is the root, into the element that was started last, and then the contents of
/// the folder. The element stays open.
void writeFolder(QXmlStreamWriter *writer, const fileTreeDirectory *directory);
