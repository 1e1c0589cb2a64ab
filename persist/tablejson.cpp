// SPDX-License-Identifier: MIT
#include "persist/tablejson.h"

#include "model/rom.h"
#include "model/textureformat.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace
{
QString numberOrNull(bool known, qint32 number)
{
    return known ? QString::number(number) : QStringLiteral("null");
}

QString objectOf(const TableEntry &entry)
{
    const QString start = QStringLiteral("{\"path\": ") + quotedText(entry.path) + QStringLiteral(", \"address\": ")
        + QString::number(entry.address) + QStringLiteral(", \"size\": ");
    if (entry.folder)
        return start + QString::number(entry.folder->size) + QLatin1Char('}');
    const fileTreeFile &texture = *entry.texture;
    const bool sized = !textureFormats::isJpegInAnyCase(texture.format);
    const int size = texture.size();
    return start + numberOrNull(size >= 0, size) + QStringLiteral(", \"format\": ") + quotedText(texture.format)
        + QStringLiteral(", \"width\": ") + numberOrNull(sized, texture.width) + QStringLiteral(", \"height\": ")
        + numberOrNull(sized, texture.height) + QStringLiteral(", \"paletteAddress\": ")
        + numberOrNull(entry.palette.has_value(), entry.palette.value_or(0)) + QLatin1Char('}');
}

void appendItem(QByteArray *list, const QString &object)
{
    *list += list->isEmpty() ? "\n        " : ",\n        ";
    *list += object.toUtf8();
}

/// The lines, from 1, on which the elements of the array \a name of the document's object begin. The document is known to be
/// right.
QVector<int> linesOfElements(const QByteArray &document, const QByteArray &name)
{
    QVector<int> lines;
    int line = 1;
    int depth = 0;
    bool awaited = false; // The next element of the array.
    QByteArray key; // The last string on the document's own level.
    for (int i = 0; i < document.size(); ++i) {
        const char character = document.at(i);
        line += character == '\n' ? 1 : 0;
        if (awaited && character > ' ' && character != ']') {
            lines.append(line);
            awaited = false;
        }
        if (character == '"') {
            const int begin = i + 1;
            for (++i; document.at(i) != '"'; ++i)
                i += document.at(i) == '\\' ? 1 : 0;
            if (depth == 1)
                key = document.mid(begin, i - begin);
        } else if (character == '[' || character == '{') {
            ++depth;
            awaited = depth == 2 && character == '[' && key == name;
        } else if (character == ']' || character == '}') {
            --depth;
        } else if (character == ',' && depth == 2) {
            awaited = key == name;
        }
    }
    return lines;
}

/// Reads the elements of one of the two arrays.
class ElementReader
{
public:
    ElementReader(const QByteArray &document, const QString &list, QString *error)
        : m_lines(linesOfElements(document, list.toLatin1())), m_list(list), m_error(error)
    {
    }

    bool read(const QJsonValue &value, int index, TableRecord *record)
    {
        m_index = index;
        record->line = line();
        m_object = value.toObject();
        if (!value.isObject())
            return fail(QString(), QStringLiteral("it is no object"));
        const QJsonValue path = m_object.value(QLatin1String("path"));
        bool endsAsFolder = false;
        if (!path.isString() || !splitPath(path.toString(), &record->folders, &endsAsFolder))
            return fail(QStringLiteral("path"), QStringLiteral("it is no path, or a name in it is empty"));
        record->isFolder = m_list == QLatin1String("folders");
        if (endsAsFolder != record->isFolder)
            return fail(QStringLiteral("path"), QStringLiteral("a folder's path ends in \"/\", and no other does"));
        if (!number("address", &record->address))
            return false;
        if (record->folders.isEmpty())
            return true; // The root itself, which nothing describes.
        record->name = record->folders.takeLast();
        return record->isFolder ? isMissing("size") || number("size", &record->size.emplace()) : readTexture(record);
    }

private:
    int line() const { return m_lines.value(m_index, 1); }

    bool fail(const QString &key, const QString &reason)
    {
        *m_error = QStringLiteral("line %1, %2[%3]%4: %5")
                       .arg(QString::number(line()), m_list, QString::number(m_index),
                            key.isEmpty() ? QString() : QLatin1Char('.') + key, reason);
        return false;
    }

    bool number(const char *key, qint32 *value)
    {
        const QJsonValue member = m_object.value(QLatin1String(key));
        const double number = member.toDouble();
        const bool fits = number >= std::numeric_limits<qint32>::min() && number <= std::numeric_limits<quint32>::max();
        if (!member.isDouble() || !fits || std::trunc(number) != number)
            return fail(QLatin1String(key), QStringLiteral("it is no whole number of 32 bits"));
        *value = qint32(quint32(qint64(number)));
        return true;
    }

    bool isMissing(const char *key) const
    {
        const QJsonValue member = m_object.value(QLatin1String(key));
        return member.isUndefined() || member.isNull();
    }

    bool readTexture(TableRecord *record)
    {
        const QJsonValue format = m_object.value(QLatin1String("format"));
        if (!format.isString())
            return fail(QStringLiteral("format"), QStringLiteral("it is no text"));
        record->format = format.toString();
        if (!textureFormats::isJpegInAnyCase(record->format)
            && (!number("width", &record->width) || !number("height", &record->height)))
            return false;
        if (isMissing("paletteAddress"))
            return true;
        qint32 palette = 0;
        if (!number("paletteAddress", &palette))
            return false;
        record->palette = palette;
        return true;
    }

    const QVector<int> m_lines;
    const QString m_list;
    QString *m_error;
    QJsonObject m_object;
    int m_index = 0;
};

bool readList(const QByteArray &document, const QJsonObject &object, const QString &name, TableDocument *table, QString *error)
{
    const QJsonValue list = object.value(name);
    if (!list.isArray() && !list.isUndefined()) {
        *error = QStringLiteral("\"%1\" is no array").arg(name);
        return false;
    }
    const QJsonArray elements = list.toArray();
    ElementReader reader(document, name, error);
    for (int i = 0; i < elements.size(); ++i) {
        TableRecord record;
        if (!reader.read(elements.at(i), i, &record))
            return false;
        if (!record.name.isNull())
            table->records.append(record);
    }
    return true;
}
}

bool writeTableJson(const fileTreeDirectory &root, const QString &identifier, const QString &profile, QByteArray *document,
                    QString *error)
{
    QByteArray folders;
    QByteArray textures;
    const bool whole = visitTable(root, [&](const TableEntry &entry) {
        appendItem(entry.folder ? &folders : &textures, objectOf(entry));
        return qint64(folders.size()) + textures.size() <= maximumTableBytes - 1024;
    });
    if (!whole) {
        *error = tooLargeTable();
        return false;
    }
    const auto list = [](const QByteArray &items) { return items.isEmpty() ? QByteArray("[]") : '[' + items + "\n    ]"; };
    *document = "{\n    \"identifier\": " + quotedText(identifier).toUtf8()
        + ",\n    \"profile\": " + quotedText(profile).toUtf8() + ",\n    \"folders\": " + list(folders)
        + ",\n    \"textures\": " + list(textures) + "\n}\n";
    return true;
}

bool readTableJson(const QByteArray &document, TableDocument *table, QString *error)
{
    QJsonParseError parseError {};
    const QJsonDocument json = QJsonDocument::fromJson(document, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        *error =
            QStringLiteral("line %1: %2").arg(document.left(parseError.offset).count('\n') + 1).arg(parseError.errorString());
        return false;
    }
    const QJsonObject object = json.object();
    if (!object.contains(QLatin1String("textures")) && !object.contains(QLatin1String("folders"))) {
        *error = QStringLiteral("line 1: there is no object with \"folders\" and \"textures\"");
        return false;
    }
    return readList(document, object, QStringLiteral("folders"), table, error)
        && readList(document, object, QStringLiteral("textures"), table, error);
}
