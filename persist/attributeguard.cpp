// SPDX-License-Identifier: MIT
#include "persist/attributeguard.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QIODevice>

namespace
{
/// Follows a document character by character as far as it takes to tell the attributes of an element: each has one "=" outside
/// quotes. Characters beyond ASCII count as letters.
class AttributeCounter
{
public:
    /// False once an element has too many attributes.
    bool add(ushort character)
    {
        if (m_endMask != 0) {
            skip(character);
        } else if (m_quote != 0) {
            if (character == m_quote)
                m_quote = 0;
        } else if (m_isInTag) {
            return addToTag(character);
        } else if (character == '<') {
            beginTag();
        }
        return true;
    }

private:
    static constexpr int openingLength = 9; // Of "<![CDATA[".

    void beginTag()
    {
        m_isInTag = true;
        m_attributes = 0;
        m_opening = "<";
    }

    bool addToTag(ushort character)
    {
        if (m_opening.size() < openingLength)
            m_opening += char(character < 0x80 ? character : 'x');
        if (m_opening == "<!--")
            skipUntil("-->");
        else if (m_opening == "<![CDATA[")
            skipUntil("]]>");
        else if (m_opening == "<?")
            skipUntil("?>");
        else if (character == '"' || character == '\'')
            m_quote = character;
        else if (character == '<')
            beginTag(); // A declaration inside the document type.
        else if (character == '>')
            m_isInTag = false;
        else if (character == '=')
            return ++m_attributes <= maximumAttributes;
        return true;
    }

    /// Passes over all up to \a end, of at most four characters.
    void skipUntil(const char *end)
    {
        m_end = 0;
        m_endMask = 0;
        for (; *end; ++end) {
            m_end = m_end << 8 | uchar(*end);
            m_endMask = m_endMask << 8 | 0xFF;
        }
        m_seen = 0;
        m_isInTag = false;
    }

    void skip(ushort character)
    {
        m_seen = m_seen << 8 | (character < 0x80 ? character : 'x');
        if ((m_seen & m_endMask) == m_end)
            m_endMask = 0;
    }

    bool m_isInTag = false;
    int m_attributes = 0;
    ushort m_quote = 0;
    QByteArray m_opening; ///< What the tag begins with.
    quint32 m_end = 0; ///< The characters at the end of what is passed over.
    quint32 m_endMask = 0; ///< As many bits as they have; none where nothing is passed over.
    quint32 m_seen = 0; ///< The last characters passed over.
};

/// What the bytes of a document are, told by how it begins: with a byte order mark or with "<".
struct CodeUnits
{
    explicit CodeUnits(const QByteArray &start)
        : isLittleEndian(start.startsWith("\xFF\xFE") || (start.size() > 1 && start.at(0) != 0 && start.at(1) == 0)),
          bytes(isLittleEndian || start.startsWith("\xFE\xFF") || (start.size() > 1 && start.at(0) == 0) ? 2 : 1)
    {
    }

    ushort at(const char *position) const
    {
        const auto byte = [position](int i) { return ushort(uchar(position[i])); };
        if (bytes == 1)
            return byte(0);
        return isLittleEndian ? ushort(byte(1) << 8 | byte(0)) : ushort(byte(0) << 8 | byte(1));
    }

    bool isLittleEndian;
    int bytes;
};

bool countAll(QIODevice *device)
{
    constexpr int chunkBytes = 64 * 1024; // Whole code units.
    const CodeUnits units(device->peek(2));
    AttributeCounter counter;
    for (QByteArray chunk = device->read(chunkBytes); !chunk.isEmpty(); chunk = device->read(chunkBytes)) {
        for (int i = 0; i + units.bytes <= chunk.size(); i += units.bytes) {
            if (!counter.add(units.at(chunk.constData() + i)))
                return false;
        }
    }
    return true;
}
}

bool hasFewAttributes(QIODevice *device, QString *error)
{
    if (device->isSequential())
        return true;
    const qint64 start = device->pos();
    const bool isAcceptable = countAll(device);
    device->seek(start);
    if (!isAcceptable)
        *error = QCoreApplication::translate("AttributeGuard", "An element has too many attributes");
    return isAcceptable;
}
