// SPDX-License-Identifier: MIT
#include "transfer/ipspatch.h"

#include <algorithm>
#include <limits>

namespace
{
constexpr int markBytes = 5;
constexpr int endBytes = 3;
constexpr int addressableBytes = 1 << 24;
constexpr int longestRecord = 0xFFFF;

/// "EOF" read as an offset: a record that starts there looks like the patch's end to most programs, so none may be written.
constexpr int endAsOffset = 0x454F46;

/// Fewer equal bytes than this between two changes are written along: a record's head costs as much.
constexpr int recordHead = 5;
/// A repeated byte gets a record of its own from this length on: its record and the head of the next one cost as much.
constexpr int shortestRun = 14;

int numberAt(const QByteArray &patch, int position, int bytes)
{
    int number = 0;
    for (int i = 0; i < bytes; ++i)
        number = number << 8 | quint8(patch.at(position + i));
    return number;
}

void appendNumber(QByteArray *patch, int number, int bytes)
{
    for (int i = bytes - 1; i >= 0; --i)
        patch->append(char(number >> (8 * i)));
}

struct Record
{
    int offset;
    int length;
    int data; ///< Where in the patch its bytes, or the byte to repeat, are.
    bool run;
};

class IpsReader
{
public:
    explicit IpsReader(const QByteArray &patch) : m_patch(patch) { }

    /// True with the next record; false at the end, and with \a error set when there is none where one has to be.
    bool next(Record *record, QString *error)
    {
        if (isEnd())
            return false;
        if (left() < recordHead)
            return fail(error);
        record->offset = numberAt(m_patch, m_position, 3);
        record->length = numberAt(m_patch, m_position + 3, 2);
        record->run = record->length == 0;
        m_start = m_position;
        m_position += recordHead;
        if (record->run) {
            if (left() < 3)
                return fail(error);
            record->length = numberAt(m_patch, m_position, 2);
            m_position += 2;
        }
        record->data = m_position;
        const int bytes = record->run ? 1 : record->length;
        if (left() < bytes)
            return fail(error);
        m_position += bytes;
        return true;
    }

    /// Once next() has met the end: the length to cut to, or -1.
    int cutTo() const { return left() == 2 * endBytes ? numberAt(m_patch, m_position + endBytes, 3) : -1; }

private:
    int left() const { return m_patch.size() - m_position; }

    /// "EOF" is the end only where nothing but a length follows. Otherwise it is an offset: some programs write such records.
    bool isEnd()
    {
        if (left() < endBytes || numberAt(m_patch, m_position, 3) != endAsOffset)
            return false;
        if (left() == endBytes || left() == 2 * endBytes)
            return true;
        m_likelyEnd = m_likelyEnd < 0 ? m_position : m_likelyEnd;
        return false;
    }

    bool fail(QString *error) const
    {
        if (m_likelyEnd >= 0)
            *error = QStringLiteral("It goes on behind its end at byte %1").arg(m_likelyEnd);
        else
            *error =
                QStringLiteral("It is cut off: it ends in the middle of the record at byte %1, or without \"EOF\"").arg(m_start);
        return false;
    }

    const QByteArray &m_patch;
    int m_position = markBytes;
    int m_start = markBytes; ///< Of the last record.
    int m_likelyEnd = -1;
};

class IpsWriter
{
public:
    IpsWriter(const QByteArray &target, QByteArray *patch) : m_target(target), m_patch(patch) { }

    /// Records for the target's bytes from \a begin to before \a end.
    void append(int begin, int end)
    {
        int pending = begin;
        for (int position = begin; position < end;) {
            const int runEnd = endOfRun(position, end);
            if (runEnd - position >= shortestRun) {
                appendBytes(pending, position);
                appendRun(position, runEnd);
                pending = runEnd;
            }
            position = runEnd;
        }
        appendBytes(pending, end);
    }

private:
    int endOfRun(int position, int end) const
    {
        const char *bytes = m_target.constData();
        const char byte = bytes[position];
        return int(std::find_if(bytes + position, bytes + end, [byte](char other) { return other != byte; }) - bytes);
    }

    void appendBytes(int begin, int end)
    {
        while (begin < end) {
            if (begin == endAsOffset)
                --begin; // The byte before is set to what it is.
            const int length = std::min(end - begin, longestRecord);
            appendNumber(m_patch, begin, 3);
            appendNumber(m_patch, length, 2);
            m_patch->append(m_target.constData() + begin, length);
            begin += length;
        }
    }

    void appendRun(int begin, int end)
    {
        while (begin < end) {
            if (begin == endAsOffset) {
                appendBytes(begin, begin + 1);
                ++begin;
                continue;
            }
            const int length = std::min(end - begin, longestRecord);
            appendNumber(m_patch, begin, 3);
            appendNumber(m_patch, 0, 2);
            appendNumber(m_patch, length, 2);
            m_patch->append(m_target.at(begin));
            begin += length;
        }
    }

    const QByteArray &m_target;
    QByteArray *m_patch;
};
}

bool isIps(const QByteArray &patch)
{
    return patch.startsWith("PATCH");
}

bool readIps(const QByteArray &patch, IpsFacts *facts, QString *error)
{
    if (!isIps(patch)) {
        *error = QStringLiteral("It is no IPS patch");
        return false;
    }
    *facts = IpsFacts();
    error->clear();
    IpsReader reader(patch);
    Record record {};
    while (reader.next(&record, error)) {
        ++facts->records;
        facts->runs += record.run ? 1 : 0;
        facts->newBytes = int(std::min<qint64>(qint64(facts->newBytes) + record.length, std::numeric_limits<int>::max()));
        facts->end = std::max(facts->end, record.offset + record.length);
    }
    facts->cutTo = error->isEmpty() ? reader.cutTo() : -1;
    return error->isEmpty();
}

bool applyIps(const QByteArray &source, const QByteArray &patch, QByteArray *target, QString *error)
{
    IpsFacts facts;
    if (!readIps(patch, &facts, error))
        return false;
    QByteArray made = source;
    if (facts.end > made.size())
        made.append(QByteArray(facts.end - made.size(), '\0'));
    IpsReader reader(patch);
    Record record {};
    char *bytes = made.data();
    while (reader.next(&record, error)) {
        if (record.run)
            std::fill_n(bytes + record.offset, record.length, patch.at(record.data));
        else
            std::copy_n(patch.constData() + record.data, record.length, bytes + record.offset);
    }
    if (facts.cutTo >= 0)
        made.truncate(facts.cutTo);
    *target = made;
    return true;
}

bool createIps(const QByteArray &source, const QByteArray &target, QByteArray *patch, QString *error)
{
    QByteArray made("PATCH");
    const bool cut = target.size() < source.size();
    const auto beyondLimit = [error] {
        *error = QStringLiteral("The images differ behind the first 16 MiB, which an IPS patch cannot say; make a BPS patch");
        return false;
    };
    if (cut && target.size() >= addressableBytes)
        return beyondLimit();
    IpsWriter writer(target, &made);
    const auto differs = [&](int position) { return position >= source.size() || source.at(position) != target.at(position); };
    int begin = -1; // Of the changes that go into one row of records.
    int end = 0;
    for (int position = 0; position < target.size(); ++position) {
        if (!differs(position))
            continue;
        if (position >= addressableBytes)
            return beyondLimit();
        if (begin >= 0 && position - end > recordHead) {
            writer.append(begin, end);
            begin = -1;
        }
        begin = begin < 0 ? position : begin;
        end = position + 1;
    }
    if (begin >= 0)
        writer.append(begin, end);
    made += "EOF";
    if (cut)
        appendNumber(&made, target.size(), 3);
    *patch = made;
    return true;
}
