// SPDX-License-Identifier: MIT
#include "persist/splatyaml.h"

#include "base/hexnumber.h"
#include "base/wrapping.h"
#include "model/rom.h"
#include "model/textureformat.h"
#include "persist/yamltree.h"

#include <QMap>

#include <algorithm>
#include <cstring>

namespace
{
/// What a segment says, in whichever form.
struct Segment
{
    int line = 0;
    QString kind;
    QString name;
    const YamlValue *start = nullptr;
    const YamlValue *vram = nullptr;
    const YamlValue *width = nullptr;
    const YamlValue *height = nullptr;
    const YamlValue *palettes = nullptr;
    const YamlValue *subsegments = nullptr;
};

/// Where the segments inside one begin.
struct Frame
{
    std::optional<qint32> start;
    std::optional<qint32> vram;
};

const YamlValue *itemOf(const YamlValue &list, int index)
{
    return index < list.items.size() ? list.items.at(index).get() : nullptr;
}

QString textOf(const YamlValue *value)
{
    return value && value->kind == YamlValue::Kind::Text ? value->text : QString();
}

std::optional<qint32> numberOf(const YamlValue *value)
{
    return value && value->kind == YamlValue::Kind::Text ? tableNumber(value->text) : std::nullopt;
}

Segment segmentOf(const YamlValue &value)
{
    Segment segment;
    segment.line = value.line;
    if (value.kind == YamlValue::Kind::List) {
        segment.start = itemOf(value, 0);
        segment.kind = textOf(itemOf(value, 1));
        segment.name = textOf(itemOf(value, 2));
        segment.width = itemOf(value, 3);
        segment.height = itemOf(value, 4);
        return segment;
    }
    segment.start = value.member("start");
    segment.vram = value.member("vram");
    segment.kind = textOf(value.member("type"));
    segment.name = textOf(value.member("name"));
    const YamlValue *dims = value.member("dims");
    segment.width = dims ? itemOf(*dims, 0) : value.member("width");
    segment.height = dims ? itemOf(*dims, 1) : value.member("height");
    segment.palettes = value.member("palettes") ? value.member("palettes") : value.member("palette");
    segment.subsegments = value.member("subsegments");
    return segment;
}

class SplatReader
{
public:
    SplatReader(TableDocument *table, QString *error) : m_table(table), m_error(error) { }

    bool read(const YamlValue &document)
    {
        const YamlValue *segments = document.member("segments");
        if (!segments || segments->kind != YamlValue::Kind::List) {
            *m_error = QStringLiteral("line %1: there is no list \"segments\"").arg(document.line);
            return false;
        }
        if (!readSegments(*segments, {}))
            return false;
        givePalettes();
        for (auto kind = m_otherKinds.cbegin(); kind != m_otherKinds.cend(); ++kind)
            m_table->leftOut << QStringLiteral("line %1: %2 of the kind \"%3\"")
                                    .arg(QString::number(kind->first),
                                         kind->second == 1 ? QStringLiteral("1 segment")
                                                           : QStringLiteral("%1 segments").arg(kind->second),
                                         kind.key());
        return true;
    }

private:
    struct Palette
    {
        qint32 address;
        int line;
        bool used = false;
    };

    bool fail(const Segment &segment, const QString &reason)
    {
        *m_error = QStringLiteral("line %1, segment \"%2\": %3").arg(QString::number(segment.line), segment.name, reason);
        return false;
    }

    bool readSegments(const YamlValue &list, const Frame &around)
    {
        for (const auto &item : list.items) {
            if (item->kind == YamlValue::Kind::Text) {
                *m_error = QStringLiteral("line %1: a segment that is neither a list nor a dictionary").arg(item->line);
                return false;
            }
            if (!readSegment(segmentOf(*item), around))
                return false;
        }
        return true;
    }

    bool readSegment(const Segment &segment, const Frame &around)
    {
        if (segment.subsegments) {
            // What is inside counts from the image's start too; only vram needs the segment around.
            if (segment.subsegments->kind != YamlValue::Kind::List)
                return fail(segment, QStringLiteral("\"subsegments\" is no list"));
            return readSegments(*segment.subsegments, {numberOf(segment.start), numberOf(segment.vram)});
        }
        const QString format = formatOfOtherTools(segment.kind);
        const bool isPalette = segment.kind == QLatin1String("palette");
        if (format.isEmpty() && !isPalette) {
            if (segment.kind.isEmpty())
                return true; // The mark of the end has a start alone.
            auto &count = m_otherKinds[segment.kind];
            count.first = count.second == 0 ? segment.line : count.first;
            ++count.second;
            return true;
        }
        qint32 address = 0;
        if (!place(segment, around, &address))
            return false;
        return isPalette ? addPalette(segment, address) : addTexture(segment, format, address);
    }

    bool place(const Segment &segment, const Frame &around, qint32 *address)
    {
        const std::optional<qint32> start = numberOf(segment.start);
        if (start) {
            *address = *start;
            return true;
        }
        if (segment.start)
            return fail(segment, QStringLiteral("its start \"%1\" is no number").arg(textOf(segment.start)));
        const std::optional<qint32> vram = numberOf(segment.vram);
        if (!vram)
            return fail(segment, QStringLiteral("it has neither start nor vram"));
        if (!around.start || !around.vram)
            return fail(segment, QStringLiteral("it has vram, but is in no segment with start and vram"));
        *address = addWrapping(*around.start, int(unsigned(*vram) - unsigned(*around.vram)));
        return true;
    }

    static QString nameOf(const Segment &segment, qint32 address)
    {
        return segment.name.isEmpty() ? segment.kind + QLatin1Char('_') + hexNumber(address).mid(2) : segment.name;
    }

    bool addPalette(const Segment &segment, qint32 address)
    {
        const QString name = nameOf(segment, address);
        if (!m_palettes.contains(name))
            m_palettes.insert(name, {address, segment.line});
        return true;
    }

    bool addTexture(const Segment &segment, const QString &format, qint32 address)
    {
        TableRecord texture;
        texture.line = segment.line;
        texture.format = format;
        texture.address = address;
        const QString name = nameOf(segment, address);
        texture.folders = name.split(QLatin1Char('/'), Qt::SkipEmptyParts);
        if (texture.folders.isEmpty())
            return fail(segment, QStringLiteral("its name is empty"));
        texture.name = texture.folders.takeLast();
        const std::optional<qint32> width = numberOf(segment.width);
        const std::optional<qint32> height = numberOf(segment.height);
        if (width.value_or(0) < 1 || height.value_or(0) < 1)
            return fail(segment, QStringLiteral("its width and height are missing or no numbers above 0"));
        texture.width = *width;
        texture.height = *height;
        if (textureFormats::find(format)->usesPalette)
            m_paletteNames.append({m_table->records.size(), paletteName(segment, name)});
        m_table->records.append(texture);
        return true;
    }

    /// The first of the palettes that the segment names, otherwise its own name.
    static QString paletteName(const Segment &segment, const QString &name)
    {
        const YamlValue *palettes = segment.palettes;
        if (palettes && palettes->kind == YamlValue::Kind::List)
            palettes = itemOf(*palettes, 0);
        const QString given = textOf(palettes);
        return given.isEmpty() ? name : given;
    }

    /// Palettes may come behind the textures that use them.
    void givePalettes()
    {
        for (const auto &wanted : qAsConst(m_paletteNames)) {
            TableRecord &texture = m_table->records[wanted.first];
            const auto palette = m_palettes.find(wanted.second);
            if (palette == m_palettes.end()) {
                m_table->leftOut << QStringLiteral("line %1: the palette of \"%2\", which is in no segment")
                                        .arg(QString::number(texture.line), texture.name);
                continue;
            }
            texture.palette = palette->address;
            palette->used = true;
        }
        for (auto palette = m_palettes.cbegin(); palette != m_palettes.cend(); ++palette) {
            if (!palette->used)
                m_table->leftOut << QStringLiteral("line %1: the palette \"%2\", which no texture uses")
                                        .arg(QString::number(palette->line), palette.key());
        }
    }

    TableDocument *m_table;
    QString *m_error;
    QMap<QString, Palette> m_palettes;
    QVector<QPair<int, QString>> m_paletteNames; ///< Of textures, by the places of their records.
    QMap<QString, QPair<int, int>> m_otherKinds; ///< First line and count.
};

/// A line of the document to write.
struct Line
{
    qint32 begin;
    qint64 end;
    QString text;
};

QString startOf(qint64 address)
{
    return QStringLiteral("0x") + QString::number(address, 16).toUpper();
}

QString paletteNameAt(qint32 address)
{
    return QStringLiteral("palette_") + hexNumber(address).mid(2);
}

Line lineOf(const TableEntry &entry, const QString &name)
{
    const fileTreeFile &texture = *entry.texture;
    const QString palettes =
        entry.palette ? QStringLiteral(", palettes: [\"%1\"]").arg(paletteNameAt(*entry.palette)) : QString();
    // Put together by hand: the name may hold what arg() takes for a place.
    const QString text = QStringLiteral("{start: ") + startOf(entry.address) + QStringLiteral(", type: ")
        + nameForOtherTools(texture.format) + QStringLiteral(", name: ") + quotedText(name)
        + QStringLiteral(", dims: [%1, %2]").arg(texture.width).arg(texture.height) + palettes + QLatin1Char('}');
    return {entry.address,
            entry.address
                + textureFormats::bytesOfPixels(*textureFormats::find(texture.format), qint64(texture.width) * texture.height),
            text};
}
}

bool writeSplatYaml(const fileTreeDirectory &root, const QString &identifier, int imageSize, QByteArray *document,
                    QStringList *leftOut, QString *error)
{
    QVector<Line> lines;
    QMap<qint32, int> palettes; // Bytes by address.
    qint64 bytes = 0;
    const bool whole = visitTable(root, [&](const TableEntry &entry) {
        if (entry.folder)
            return true;
        const fileTreeFile &texture = *entry.texture;
        QString reason;
        if (nameForOtherTools(texture.format).isEmpty())
            reason = QStringLiteral("the format \"%1\"").arg(texture.format);
        else if (entry.address < 0 || (entry.palette && *entry.palette < 0))
            reason = QStringLiteral("an address before the image");
        else if (texture.width < 1 || texture.height < 1)
            reason = QStringLiteral("no size");
        if (!reason.isEmpty()) {
            *leftOut << entry.path + QLatin1String(": ") + reason;
            return true;
        }
        lines.append(lineOf(entry, entry.path.mid(int(std::strlen(rootPath)))));
        if (entry.palette)
            palettes[*entry.palette] =
                qMax(palettes.value(*entry.palette), textureFormats::paletteBytes(*textureFormats::find(texture.format)));
        bytes += 2 * lines.constLast().text.size();
        return bytes <= maximumTableBytes;
    });
    if (!whole) {
        *error = tooLargeTable();
        return false;
    }
    for (auto palette = palettes.cbegin(); palette != palettes.cend(); ++palette)
        lines.append({palette.key(), qint64(palette.key()) + palette.value(),
                      QStringLiteral("[%1, palette, \"%2\"]").arg(startOf(palette.key()), paletteNameAt(palette.key()))});
    std::stable_sort(lines.begin(), lines.end(), [](const Line &a, const Line &b) { return a.begin < b.begin; });

    QByteArray made = "name: " + quotedText(identifier).toUtf8() + "\nsegments:\n";
    qint64 end = 0;
    for (const Line &line : qAsConst(lines)) {
        if (line.begin > end)
            made += "  - [" + startOf(end).toUtf8() + ", bin]\n";
        made += "  - " + line.text.toUtf8() + '\n';
        end = qMax(end, line.end);
    }
    if (end < imageSize)
        made += "  - [" + startOf(end).toUtf8() + ", bin]\n";
    *document = made + "  - [" + startOf(qMax<qint64>(end, imageSize)).toUtf8() + "]\n";
    return true;
}

bool readSplatYaml(const QByteArray &document, TableDocument *table, QString *error)
{
    const std::shared_ptr<const YamlValue> root = readYaml(document, error);
    return root && SplatReader(table, error).read(*root);
}
