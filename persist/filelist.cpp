// SPDX-License-Identifier: MIT
#include "persist/filelist.h"

#include "base/hexnumber.h"
#include "base/wrapping.h"
#include "model/bulkadder.h"
#include "model/rom.h"
#include "model/textureformat.h"
#include "persist/xmldocument.h"
#include "persist/xmltext.h"

#include <QIODevice>
#include <QVector>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <vector>

namespace
{
constexpr int versionOfFileElements = 1; // Textures are "file" elements.

/// Deeper elements are written in one line. With a tab for each level the document would grow with the square of the depth: a
/// hostile list of 10 MB, 800,000 levels deep, would become one of many gigabytes.
constexpr int deepestIndentation = 100;

class FileListReader
{
public:
    FileListReader(const QString &text, int imageSize, fileTreeDirectory *root, FileListObserver *observer)
        : m_xml(text), m_imageSize(imageSize), m_root(root), m_observer(observer)
    {
        // A list has no namespaces, and looking up their prefixes takes time quadratic in the depth.
        m_xml.setNamespaceProcessing(false);
    }

    bool read(QString *error)
    {
        while (!m_xml.atEnd()) {
            const QXmlStreamReader::TokenType token = m_xml.readNext();
            if (token == QXmlStreamReader::StartElement)
                startElement();
            else if (token == QXmlStreamReader::EndElement && m_xml.name() == QLatin1String("directory"))
                endDirectory();
        }
        if (!m_xml.hasError())
            return true;
        *error = m_xml.errorString();
        return false;
    }

private:
    void startElement()
    {
        const QStringRef name = m_xml.name();
        if (name == m_textureElement)
            addTexture();
        else if (name == QLatin1String("directory"))
            startDirectory();
        else if (name == QLatin1String("root") || name == QLatin1String("fileTable"))
            startDocument();
    }

    void startDocument()
    {
        if (m_xml.attributes().value(QLatin1String("version")).toInt() == versionOfFileElements)
            m_textureElement = QLatin1String("file");
        if (m_open.empty())
            m_open.emplace_back(m_root);
        m_open.erase(m_open.begin() + 1, m_open.end());
        m_isInDocument = true;
        m_realAddress = 0;
    }

    void startDirectory()
    {
        if (!m_isInDocument)
            return;
        auto *directory = new fileTreeDirectory;
        directory->size = 0;
        const QXmlStreamAttributes attributes = m_xml.attributes();
        for (const QXmlStreamAttribute &attribute : attributes) {
            const QStringRef name = attribute.qualifiedName();
            if (name == QLatin1String("name"))
                directory->name = attribute.value().toString();
            else if (name == QLatin1String("address"))
                directory->address = parseHexadecimal(attribute.value());
            else if (name == QLatin1String("size"))
                directory->size = parseHexadecimal(attribute.value());
        }
        if (!isUsableAddress(directory->address))
            directory->address = 0;
        if (directory->size <= 0)
            directory->size = subtractWrapping(m_imageSize, directory->address);
        m_realAddress = addWrapping(m_realAddress, directory->address);
        m_open.back().addDirectory(directory);
        m_open.emplace_back(directory);
        if (m_observer)
            m_observer->directoryStarted(directory);
    }

    /// A negative address is one behind which a folder was moved with its contents fixed. It counts when the folder then lies in
    /// the image.
    bool isUsableAddress(int address) const
    {
        const int realAddress = addWrapping(m_realAddress, address);
        return address >= 0 ? address <= m_imageSize : realAddress >= 0 && realAddress < m_imageSize;
    }

    void endDirectory()
    {
        if (!m_isInDocument)
            return;
        if (m_observer)
            m_observer->directoryEnded(m_open.back().folder());
        if (m_open.size() > 1) {
            m_realAddress = subtractWrapping(m_realAddress, m_open.back().folder()->address);
            m_open.pop_back();
        } else {
            m_isInDocument = false;
        }
    }

    /// \a name as text. All textures of a known format share one text, which saves memory.
    QString sharedFormat(const QStringRef &name) const
    {
        for (const textureFormat &format : m_formats) {
            if (format.name == name)
                return format.name;
        }
        return name.toString();
    }

    void addTexture()
    {
        if (!m_isInDocument)
            return;
        auto *texture = new fileTreeFile;
        const QXmlStreamAttributes attributes = m_xml.attributes();
        for (const QXmlStreamAttribute &attribute : attributes) {
            const QStringRef name = attribute.qualifiedName();
            if (name == QLatin1String("name"))
                texture->name = attribute.value().toString();
            else if (name == QLatin1String("address"))
                texture->address = parseHexadecimal(attribute.value());
            else if (name == QLatin1String("format"))
                texture->format = sharedFormat(attribute.value());
            else if (name == QLatin1String("width"))
                texture->width = attribute.value().toInt();
            else if (name == QLatin1String("height"))
                texture->height = attribute.value().toInt();
            else if (name == QLatin1String("palette"))
                texture->paletteAddress = parseHexadecimal(attribute.value());
        }
        m_open.back().addFile(texture);
        if (m_observer)
            m_observer->fileAdded(texture);
    }

    QXmlStreamReader m_xml;
    int m_imageSize;
    fileTreeDirectory *m_root;
    FileListObserver *m_observer;
    std::vector<BulkAdder> m_open; ///< The root and the folders that are open in it; the last is the one that elements go to.
    bool m_isInDocument = false; ///< False before the document element and after a stray end: elements are ignored.
    int m_realAddress = 0; ///< Of the last open folder, in the image.
    QLatin1String m_textureElement {"texture"};
    const QMap<QString, textureFormat> m_formats = textureFormats::getAsMap();
};

void writeDirectoryAttributes(QXmlStreamWriter *writer, const fileTreeDirectory &directory)
{
    writer->writeAttribute(QStringLiteral("name"), xmlText(directory.name));
    writer->writeAttribute(QStringLiteral("address"), hexNumber(directory.address));
    writer->writeAttribute(QStringLiteral("size"), hexNumber(directory.size));
}

void writeTexture(QXmlStreamWriter *writer, const fileTreeFile &texture)
{
    writer->writeEmptyElement(QStringLiteral("texture"));
    writer->writeAttribute(QStringLiteral("name"), xmlText(texture.name));
    writer->writeAttribute(QStringLiteral("address"), hexNumber(texture.address));
    writer->writeAttribute(QStringLiteral("format"), xmlText(texture.format));
    if (!textureFormats::isJpegInAnyCase(texture.format)) {
        writer->writeAttribute(QStringLiteral("width"), QString::number(texture.width));
        writer->writeAttribute(QStringLiteral("height"), QString::number(texture.height));
    }
    const textureFormat *format = textureFormats::find(texture.format);
    if (format && format->usesPalette)
        writer->writeAttribute(QStringLiteral("palette"), hexNumber(texture.paletteAddress));
}

void sortAll(fileTreeDirectory *root)
{
    root->sort();
    const QList<fileTreeDirectory *> directories = fileTreeContainer().allDirectories(root);
    for (fileTreeDirectory *directory : directories)
        directory->sort();
}
}

bool readFileList(const QByteArray &document, int imageSize, fileTreeDirectory *root, FileListObserver *observer, QString *error)
{
    QString text;
    return decodeXml(document, &text, error) && FileListReader(text, imageSize, root, observer).read(error);
}

bool writeFileList(fileTreeDirectory *root, QIODevice *device, QString *error)
{
    sortAll(root);
    QXmlStreamWriter writer(device);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(-1); // one tab
    writer.writeStartDocument();
    writer.writeComment(QStringLiteral("This list was created using Brimholt's Quillary."));
    writer.writeComment(
        QStringLiteral("The root version attribute is used by the parser to determine how it should read the data. "
                       "Do not change it unless you know what you're doing."));
    writer.writeStartElement(QStringLiteral("root"));
    writer.writeAttribute(QStringLiteral("version"), QStringLiteral("2"));
    writeFolder(&writer, root);
    writer.writeEndElement();
    writer.writeEndDocument();
    if (!writer.hasError())
        return true;
    *error = device->errorString();
    return false;
}

void writeFolder(QXmlStreamWriter *writer, const fileTreeDirectory *directory)
{
    struct OpenFolder
    {
        const fileTreeDirectory *folder;
        int nextChild;
    };
    const bool formatting = writer->autoFormatting();
    const auto formatLevel = [writer, formatting](int level) {
        writer->setAutoFormatting(formatting && level <= deepestIndentation);
    };

    if (!directory->isRoot)
        writeDirectoryAttributes(writer, *directory);
    QVector<OpenFolder> open {{directory, 0}};
    while (!open.isEmpty()) {
        OpenFolder &innermost = open.last();
        formatLevel(open.size());
        if (innermost.nextChild < innermost.folder->directories.size()) {
            const fileTreeDirectory *child = innermost.folder->directories.at(innermost.nextChild++);
            writer->writeStartElement(QStringLiteral("directory"));
            writeDirectoryAttributes(writer, *child);
            open.append({child, 0});
            continue;
        }
        for (const fileTreeFile *texture : innermost.folder->files)
            writeTexture(writer, *texture);
        open.removeLast();
        formatLevel(open.size());
        if (!open.isEmpty())
            writer->writeEndElement();
    }
    writer->setAutoFormatting(formatting);
}
