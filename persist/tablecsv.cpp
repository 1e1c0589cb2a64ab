// SPDX-License-Identifier: MIT
#include "persist/tablecsv.h"

#include "base/hexnumber.h"
#include "model/rom.h"
#include "model/textureformat.h"

namespace
{
/// What a column holds; the names in the order in which they are written.
enum Column { Path, Address, Format, Width, Height, Palette, Size, columnCount };

const QStringList &columnNames()
{
    static const QStringList names {QStringLiteral("path"),  QStringLiteral("address"), QStringLiteral("format"),
                                    QStringLiteral("width"), QStringLiteral("height"),  QStringLiteral("palette"),
                                    QStringLiteral("size")};
    return names;
}

QString cell(const QString &text)
{
    const auto needsQuotes = [](QChar c) {
        return c == QLatin1Char(',') || c == QLatin1Char('"') || c == QLatin1Char('\n') || c == QLatin1Char('\r') || c.isSpace();
    };
    if (std::none_of(text.begin(), text.end(), needsQuotes))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QStringList cellsOf(const TableEntry &entry)
{
    if (entry.folder)
        return {entry.path, hexNumber(entry.address), QString(), QString(), QString(), QString(), hexNumber(entry.folder->size)};
    const bool sized = !textureFormats::isJpegInAnyCase(entry.texture->format);
    return {entry.path,
            hexNumber(entry.address),
            entry.texture->format,
            sized ? QString::number(entry.texture->width) : QString(),
            sized ? QString::number(entry.texture->height) : QString(),
            entry.palette ? hexNumber(*entry.palette) : QString(),
            QString()};
}

struct CsvRecord
{
    QStringList cells;
    int line = 0; ///< On which it begins, from 1.
};

/// Takes records from the front of a text.
class CsvReader
{
public:
    explicit CsvReader(const QString &text) : m_text(text) { }

    bool atEnd() const { return m_position >= m_text.size(); }

    bool next(CsvRecord *record, QString *error)
    {
        *record = CsvRecord {{}, m_line};
        for (;;) {
            QString text;
            const bool whole = at(m_position) == QLatin1Char('"') ? quoted(&text, error) : plain(&text, error);
            if (!whole)
                return false;
            record->cells.append(text);
            const QChar end = at(m_position);
            if (end == QLatin1Char(',')) {
                ++m_position;
                continue;
            }
            endLine();
            return true;
        }
    }

private:
    QChar at(int position) const { return position < m_text.size() ? m_text.at(position) : QChar(QLatin1Char('\n')); }

    static bool endsCell(QChar character)
    {
        return character == QLatin1Char(',') || character == QLatin1Char('\n') || character == QLatin1Char('\r');
    }

    bool plain(QString *text, QString *error)
    {
        const int begin = m_position;
        while (!endsCell(at(m_position))) {
            if (at(m_position) == QLatin1Char('"')) {
                *error =
                    QStringLiteral("line %1: a quotation mark in the middle of a cell; such a cell has to be in quotation marks")
                        .arg(m_line);
                return false;
            }
            ++m_position;
        }
        *text = m_text.mid(begin, m_position - begin);
        return true;
    }

    bool quoted(QString *text, QString *error)
    {
        const int firstLine = m_line;
        for (++m_position; m_position < m_text.size(); ++m_position) {
            const QChar character = m_text.at(m_position);
            if (character == QLatin1Char('"')) {
                ++m_position;
                if (at(m_position) != QLatin1Char('"')) {
                    if (endsCell(at(m_position)))
                        return true;
                    *error = QStringLiteral("line %1: text behind the quotation mark that ends a cell").arg(m_line);
                    return false;
                }
            }
            m_line += character == QLatin1Char('\n') ? 1 : 0;
            *text += character;
        }
        *error = QStringLiteral("line %1: the quotation mark that opens a cell is never closed").arg(firstLine);
        return false;
    }

    void endLine()
    {
        if (at(m_position) == QLatin1Char('\r') && at(m_position + 1) == QLatin1Char('\n'))
            ++m_position;
        ++m_position;
        ++m_line;
    }

    const QString &m_text;
    int m_position = 0;
    int m_line = 1;
};

/// Makes table records of lines, by the columns that the first line names.
class RowReader
{
public:
    bool readHeader(const CsvRecord &header, QString *error)
    {
        m_cells = header.cells.size();
        for (int i = 0; i < m_cells; ++i) {
            const int column = columnNames().indexOf(header.cells.at(i).trimmed().toLower());
            if (column < 0)
                continue;
            if (m_places[column] >= 0) {
                *error = QStringLiteral("line 1: the column \"%1\" is there twice").arg(columnNames().at(column));
                return false;
            }
            m_places[column] = i;
        }
        if (m_places[Path] >= 0 && m_places[Address] >= 0)
            return true;
        *error = QStringLiteral("line 1: it has to name the columns, \"path\" and \"address\" among them, separated by commas");
        return false;
    }

    bool read(const CsvRecord &row, TableRecord *record, QString *error)
    {
        m_row = &row;
        m_error = error;
        record->line = row.line;
        if (row.cells.size() != m_cells) {
            *error = QStringLiteral("line %1: %2 cells instead of %3").arg(row.line).arg(row.cells.size()).arg(m_cells);
            return false;
        }
        if (!splitPath(text(Path), &record->folders, &record->isFolder))
            return fail(Path, QStringLiteral("a name in it is empty"));
        if (!number(Address, &record->address))
            return false;
        if (record->folders.isEmpty())
            return true; // The root itself, which nothing describes.
        record->name = record->folders.takeLast();
        return record->isFolder ? readFolder(record) : readTexture(record);
    }

private:
    QString text(Column column) const { return m_places[column] < 0 ? QString() : m_row->cells.at(m_places[column]); }

    bool fail(Column column, const QString &reason)
    {
        *m_error =
            QStringLiteral("line %1, column \"%2\": %3").arg(QString::number(m_row->line), columnNames().at(column), reason);
        return false;
    }

    bool number(Column column, qint32 *value)
    {
        const QString digits = text(column).trimmed();
        if (digits.isEmpty())
            return fail(column, QStringLiteral("a number is missing"));
        const std::optional<qint32> parsed = tableNumber(digits);
        if (!parsed)
            return fail(column, QStringLiteral("\"%1\" is no number of 32 bits").arg(digits));
        *value = *parsed;
        return true;
    }

    bool readFolder(TableRecord *record) { return text(Size).isEmpty() || number(Size, &record->size.emplace()); }

    bool readTexture(TableRecord *record)
    {
        record->format = text(Format);
        if (record->format.isEmpty() && m_places[Format] < 0)
            return fail(Format, QStringLiteral("a texture needs a format, but there is no such column"));
        if (!textureFormats::isJpegInAnyCase(record->format)
            && (!number(Width, &record->width) || !number(Height, &record->height)))
            return false;
        if (text(Palette).isEmpty())
            return true;
        qint32 palette = 0;
        if (!number(Palette, &palette))
            return false;
        record->palette = palette;
        return true;
    }

    int m_places[columnCount] = {-1, -1, -1, -1, -1, -1, -1};
    int m_cells = 0;
    const CsvRecord *m_row = nullptr;
    QString *m_error = nullptr;
};
}

bool writeTableCsv(const fileTreeDirectory &root, QByteArray *document, QString *error)
{
    QByteArray made = columnNames().join(QLatin1Char(',')).toUtf8() + "\r\n";
    const bool whole = visitTable(root, [&made](const TableEntry &entry) {
        QStringList cells = cellsOf(entry);
        for (QString &one : cells)
            one = cell(one);
        made += cells.join(QLatin1Char(',')).toUtf8() + "\r\n";
        return made.size() <= maximumTableBytes;
    });
    if (whole)
        *document = made;
    else
        *error = tooLargeTable();
    return whole;
}

bool readTableCsv(const QByteArray &document, TableDocument *table, QString *error)
{
    QString text;
    if (!decodedText(document, &text, error))
        return false;
    CsvReader reader(text);
    CsvRecord row;
    RowReader rows;
    if (!reader.next(&row, error) || !rows.readHeader(row, error))
        return false;
    while (!reader.atEnd()) {
        if (!reader.next(&row, error))
            return false;
        if (row.cells.size() == 1 && row.cells.constFirst().isEmpty())
            continue; // An empty line.
        TableRecord record;
        if (!rows.read(row, &record, error))
            return false;
        if (!record.name.isNull())
            table->records.append(record);
    }
    return true;
}
