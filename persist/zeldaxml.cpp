// SPDX-License-Identifier: MIT
#include "persist/zeldaxml.h"

#include "base/hexnumber.h"
#include "model/rom.h"
#include "model/textureformat.h"
#include "persist/xmldocument.h"
#include "persist/xmltext.h"

#include <QSet>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <cstring>

namespace
{
constexpr int segmentShift = 24;

/// \a path as the name of a C symbol, as these tools want it; unlike those in \a taken.
QString symbolOf(const QString &path, QSet<QString> *taken)
{
    QString symbol(QLatin1Char('g'));
    bool wordBegins = true;
    for (const QChar character : path) {
        const bool plain = character.unicode() < 0x80 && character.isLetterOrNumber();
        if (plain)
            symbol += wordBegins ? character.toUpper() : character;
        wordBegins = !plain;
    }
    symbol += QLatin1String("Tex");
    QString unique = symbol;
    for (int number = 2; taken->contains(unique); ++number)
        unique = symbol + QString::number(number);
    taken->insert(unique);
    return unique;
}

QString lineAbout(const TableEntry &entry, const QString &reason)
{
    return QStringLiteral("%1: %2").arg(entry.path, reason);
}

QString shortHex(qint32 number)
{
    return QStringLiteral("0x") + QString::number(number, 16).toUpper();
}

class ZeldaReader
{
public:
    ZeldaReader(const QString &text, TableDocument *table, QString *error) : m_xml(text), m_table(table), m_error(error) { }

    bool read()
    {
        bool anyFile = false;
        while (!m_xml.atEnd()) {
            if (m_xml.readNext() != QXmlStreamReader::StartElement)
                continue;
            ++m_depth;
            if (m_xml.name() == QLatin1String("File")) {
                anyFile = true;
                if (!readFile())
                    return false;
            } else if (m_depth > 1) {
                leaveOut();
            }
        }
        if (m_xml.hasError()) {
            *m_error = QStringLiteral("line %1: %2").arg(m_xml.lineNumber()).arg(m_xml.errorString());
            return false;
        }
        if (!anyFile)
            *m_error = QStringLiteral("line 1: there is no element \"File\"");
        return anyFile;
    }

private:
    bool fail(const QString &reason)
    {
        *m_error = QStringLiteral("line %1, %2 \"%3\": %4")
                       .arg(QString::number(m_xml.lineNumber()), m_xml.name().toString(), nameOf(m_xml.attributes()), reason);
        return false;
    }

    static QString nameOf(const QXmlStreamAttributes &attributes) { return attributes.value(QLatin1String("Name")).toString(); }

    /// Passes over the element that has just begun.
    void leaveOut()
    {
        m_table->leftOut << QStringLiteral("line %1: %2 \"%3\"")
                                .arg(QString::number(m_xml.lineNumber()), m_xml.name().toString(), nameOf(m_xml.attributes()));
        m_xml.skipCurrentElement();
    }

    bool readFile()
    {
        const QXmlStreamAttributes attributes = m_xml.attributes();
        m_file = nameOf(attributes);
        if (m_file.isEmpty())
            return fail(QStringLiteral("it has no Name"));
        m_segment = attributes.value(QLatin1String("Segment")).toInt();
        if (!m_files.contains(m_file)) {
            m_files.insert(m_file);
            TableRecord folder;
            folder.isFolder = true;
            folder.name = m_file;
            folder.line = int(m_xml.lineNumber());
            m_table->records.append(folder);
        }
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() != QLatin1String("Texture"))
                leaveOut();
            else if (!readTexture())
                return false;
        }
        return true;
    }

    /// A hexadecimal offset in the file, with or without "0x".
    std::optional<qint32> offset(const QStringRef &text) const
    {
        const QString digits =
            text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive) ? text.mid(2).toString() : text.toString();
        std::optional<qint32> number = tableNumber(QLatin1String("0x") + digits);
        if (number && m_segment > 0 && quint32(*number) >> segmentShift == quint32(m_segment))
            number = *number & ((1 << segmentShift) - 1);
        return number;
    }

    bool readTexture()
    {
        const QXmlStreamAttributes attributes = m_xml.attributes();
        TableRecord texture;
        texture.line = int(m_xml.lineNumber());
        const QStringRef outName = attributes.value(QLatin1String("OutName"));
        texture.folders =
            (outName.isEmpty() ? nameOf(attributes) : outName.toString()).split(QLatin1Char('/'), Qt::SkipEmptyParts);
        if (texture.folders.isEmpty())
            return fail(QStringLiteral("it has neither Name nor OutName"));
        texture.name = texture.folders.takeLast();
        texture.folders.prepend(m_file);
        texture.format = formatOfOtherTools(attributes.value(QLatin1String("Format")).toString());
        if (texture.format.isEmpty()) {
            if (!attributes.hasAttribute(QLatin1String("Format")))
                return fail(QStringLiteral("it has no Format"));
            leaveOut();
            return true;
        }
        const std::optional<qint32> address = offset(attributes.value(QLatin1String("Offset")));
        if (!address)
            return fail(QStringLiteral("Offset is missing or no hexadecimal number"));
        texture.address = *address;
        if (!size(attributes, "Width", &texture.width) || !size(attributes, "Height", &texture.height)
            || !readPalette(attributes, &texture))
            return false;
        m_table->records.append(texture);
        m_xml.skipCurrentElement();
        return true;
    }

    bool size(const QXmlStreamAttributes &attributes, const char *name, qint32 *value)
    {
        bool ok = false;
        *value = attributes.value(QLatin1String(name)).toInt(&ok);
        return (ok && *value > 0) || fail(QStringLiteral("%1 is missing or no number above 0").arg(QLatin1String(name)));
    }

    bool readPalette(const QXmlStreamAttributes &attributes, TableRecord *texture)
    {
        if (!textureFormats::find(texture->format)->usesPalette)
            return true;
        if (attributes.hasAttribute(QLatin1String("TlutOffset"))) {
            texture->palette = offset(attributes.value(QLatin1String("TlutOffset")));
            return texture->palette || fail(QStringLiteral("TlutOffset is no hexadecimal number"));
        }
        const bool elsewhere = attributes.hasAttribute(QLatin1String("ExternalTlut"));
        m_table->leftOut << QStringLiteral("line %1: the palette of Texture \"%2\", which %3")
                                .arg(QString::number(texture->line), texture->name,
                                     elsewhere ? QStringLiteral("is in another file") : QStringLiteral("is not named"));
        return true;
    }

    QXmlStreamReader m_xml;
    TableDocument *m_table;
    QString *m_error;
    int m_depth = 0;
    QString m_file;
    QSet<QString> m_files;
    int m_segment = 0;
};
}

bool writeZeldaXml(const fileTreeDirectory &root, const QString &identifier, QByteArray *document, QStringList *leftOut,
                   QString *error)
{
    QByteArray made;
    QXmlStreamWriter xml(&made);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("Root"));
    xml.writeStartElement(QStringLiteral("File"));
    xml.writeAttribute(QStringLiteral("Name"), identifier.isEmpty() ? QStringLiteral("image") : xmlText(identifier));
    xml.writeAttribute(QStringLiteral("Segment"), QStringLiteral("0"));
    QSet<QString> symbols;
    const bool whole = visitTable(root, [&](const TableEntry &entry) {
        if (entry.folder)
            return true;
        const QString format = nameForOtherTools(entry.texture->format);
        if (format.isEmpty() || entry.address < 0 || (entry.palette && *entry.palette < 0)) {
            *leftOut << lineAbout(entry,
                                  format.isEmpty() ? QStringLiteral("the format \"%1\"").arg(entry.texture->format)
                                                   : QStringLiteral("an address before the image"));
            return true;
        }
        const QString name = entry.path.mid(int(std::strlen(rootPath)));
        xml.writeEmptyElement(QStringLiteral("Texture"));
        xml.writeAttribute(QStringLiteral("Name"), symbolOf(name, &symbols));
        xml.writeAttribute(QStringLiteral("OutName"), xmlText(name));
        xml.writeAttribute(QStringLiteral("Format"), format);
        xml.writeAttribute(QStringLiteral("Width"), QString::number(entry.texture->width));
        xml.writeAttribute(QStringLiteral("Height"), QString::number(entry.texture->height));
        xml.writeAttribute(QStringLiteral("Offset"), shortHex(entry.address));
        if (entry.palette)
            xml.writeAttribute(QStringLiteral("TlutOffset"), shortHex(*entry.palette));
        return made.size() <= maximumTableBytes;
    });
    xml.writeEndDocument();
    if (whole)
        *document = made;
    else
        *error = tooLargeTable();
    return whole;
}

bool readZeldaXml(const QByteArray &document, TableDocument *table, QString *error)
{
    QString text;
    return decodeXml(document, &text, error) && ZeldaReader(text, table, error).read();
}
