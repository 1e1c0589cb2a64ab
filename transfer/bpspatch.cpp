// SPDX-License-Identifier: MIT
#include "transfer/bpspatch.h"

#include "base/crc32.h"
#include "base/hexnumber.h"
#include "transfer/bpsdelta.h"
#include "transfer/texturewriter.h"

#include <QtEndian>

#include <cstring>

namespace
{
constexpr int markBytes = 4;
constexpr int sumBytes = 4;
constexpr int sumsBytes = 3 * sumBytes;
constexpr int fewestBytes = markBytes + 3 + sumsBytes;

/// Above all sizes and offsets that can be right, so that sums of two never overflow.
constexpr quint64 largestNumber = quint64(1) << 40;

quint32 crcOf(const QByteArray &bytes)
{
    return crc32(bytes.constData(), bytes.size());
}

/// One action with its ranges checked.
struct Action
{
    BpsAction kind;
    int length;
    int from; ///< In source, target or patch.
};

/// Reads the numbers and actions of a patch, front to back. Each action is checked against the sizes before it is handed out.
class BpsReader
{
public:
    explicit BpsReader(const QByteArray &patch) : m_patch(patch), m_end(patch.size() - sumsBytes) { }

    bool readHeader(BpsFacts *facts, QString *error)
    {
        quint64 sourceBytes = 0;
        quint64 targetBytes = 0;
        quint64 metadataBytes = 0;
        if (!number(&sourceBytes, error) || !number(&targetBytes, error) || !number(&metadataBytes, error))
            return false;
        if (sourceBytes > maximumImageBytes || targetBytes > maximumImageBytes)
            return fail(error, QStringLiteral("It is for images above %1 MiB").arg(maximumImageBytes / 1024 / 1024));
        if (metadataBytes > quint64(m_end - m_position))
            return fail(error, QStringLiteral("Its metadata reach past its end"));
        facts->sourceBytes = m_sourceBytes = int(sourceBytes);
        facts->targetBytes = m_targetBytes = int(targetBytes);
        facts->metadata = m_patch.mid(m_position, int(metadataBytes));
        m_position += int(metadataBytes);
        return true;
    }

    bool atEnd() const { return m_position == m_end; }
    int targetBytesDone() const { return m_done; }

    bool next(Action *action, QString *error)
    {
        const int start = m_position;
        quint64 head = 0;
        if (!number(&head, error))
            return false;
        action->kind = BpsAction(head & 3);
        const quint64 length = (head >> 2) + 1;
        if (length > quint64(m_targetBytes - m_done))
            return fail(error, QStringLiteral("The action at byte %1 reaches past the result's end").arg(start));
        action->length = int(length);
        qint64 from = 0;
        if (!place(*action, &from, error))
            return false;
        if (from < 0 || from + (action->kind == BpsAction::TargetCopy ? 1 : action->length) > available(action->kind))
            return fail(error, QStringLiteral("The action at byte %1 takes bytes from outside").arg(start));
        action->from = int(from);
        if (action->kind == BpsAction::TargetRead)
            m_position += action->length;
        else if (action->kind == BpsAction::SourceCopy)
            m_sourceEnd = from + action->length;
        else if (action->kind == BpsAction::TargetCopy)
            m_targetEnd = from + action->length;
        m_done += action->length;
        return true;
    }

private:
    static bool fail(QString *error, const QString &reason)
    {
        *error = reason;
        return false;
    }

    bool number(quint64 *value, QString *error)
    {
        quint64 sum = 0;
        for (int shift = 0;; shift += 7) {
            if (m_position >= m_end)
                return fail(error, QStringLiteral("It ends in the middle of a number"));
            const auto byte = quint8(m_patch.at(m_position++));
            sum += quint64(byte & 0x7F) << shift;
            if (sum > largestNumber || shift > 42)
                return fail(error, QStringLiteral("The number before byte %1 is too large").arg(m_position));
            if (byte & 0x80)
                break;
            sum += quint64(1) << (shift + 7);
        }
        *value = sum;
        return true;
    }

    /// Where the bytes of \a action come from.
    bool place(const Action &action, qint64 *from, QString *error)
    {
        if (action.kind == BpsAction::SourceRead || action.kind == BpsAction::TargetRead) {
            *from = action.kind == BpsAction::SourceRead ? m_done : m_position;
            return true;
        }
        quint64 distance = 0;
        if (!number(&distance, error))
            return false;
        const auto bytes = qint64(distance >> 1);
        *from = (action.kind == BpsAction::SourceCopy ? m_sourceEnd : m_targetEnd) + (distance & 1 ? -bytes : bytes);
        return true;
    }

    /// Size of what actions of that kind take bytes from.
    int available(BpsAction kind) const
    {
        switch (kind) {
        case BpsAction::SourceRead:
        case BpsAction::SourceCopy: return m_sourceBytes;
        case BpsAction::TargetRead: return m_end;
        case BpsAction::TargetCopy: break;
        }
        return m_done; // A copy may go on into what it makes itself, but not begin there.
    }

    const QByteArray &m_patch;
    const int m_end; ///< Of the actions.
    int m_position = markBytes;
    int m_sourceBytes = 0;
    int m_targetBytes = 0;
    int m_done = 0; ///< Target bytes made by the actions so far.
    qint64 m_sourceEnd = 0; ///< Where the last source copy ended: offsets are relative to it.
    qint64 m_targetEnd = 0;
};

void perform(const Action &action, const QByteArray &source, const QByteArray &patch, char *target, int position)
{
    switch (action.kind) {
    case BpsAction::SourceRead:
    case BpsAction::SourceCopy: std::memcpy(target + position, source.constData() + action.from, size_t(action.length)); break;
    case BpsAction::TargetRead: std::memcpy(target + position, patch.constData() + action.from, size_t(action.length)); break;
    case BpsAction::TargetCopy:
        for (int i = 0; i < action.length; ++i)
            target[position + i] = target[action.from + i];
        break;
    }
}

void appendSum(QByteArray *patch, quint32 sum)
{
    char bytes[sumBytes];
    qToLittleEndian(sum, bytes);
    patch->append(bytes, sumBytes);
}
}

bool isBps(const QByteArray &patch)
{
    return patch.startsWith("BPS1");
}

bool readBps(const QByteArray &patch, BpsFacts *facts, QString *error)
{
    if (!isBps(patch) || patch.size() < fewestBytes) {
        *error = QStringLiteral("It is no whole BPS patch");
        return false;
    }
    const char *sums = patch.constData() + patch.size() - sumsBytes;
    if (qFromLittleEndian<quint32>(sums + 2 * sumBytes) != crc32(patch.constData(), patch.size() - sumBytes)) {
        *error = QStringLiteral("It is damaged: its own checksum is wrong");
        return false;
    }
    BpsReader reader(patch);
    *facts = BpsFacts();
    if (!reader.readHeader(facts, error))
        return false;
    while (!reader.atEnd()) {
        Action action {};
        if (!reader.next(&action, error))
            return false;
        ++facts->actions;
        if (action.kind == BpsAction::TargetRead)
            facts->newBytes += action.length;
    }
    if (reader.targetBytesDone() != facts->targetBytes) {
        *error = QStringLiteral("It makes %1 of the result's %2 bytes").arg(reader.targetBytesDone()).arg(facts->targetBytes);
        return false;
    }
    facts->sourceCrc = qFromLittleEndian<quint32>(sums);
    facts->targetCrc = qFromLittleEndian<quint32>(sums + sumBytes);
    return true;
}

bool applyBps(const QByteArray &source, const QByteArray &patch, QByteArray *target, QString *error)
{
    BpsFacts facts;
    if (!readBps(patch, &facts, error))
        return false;
    if (source.size() != facts.sourceBytes || crcOf(source) != facts.sourceCrc) {
        *error = QStringLiteral("It is for another image: it expects %1 bytes with the checksum %2, not %3 bytes with %4")
                     .arg(facts.sourceBytes)
                     .arg(hexNumber(qint32(facts.sourceCrc)))
                     .arg(source.size())
                     .arg(hexNumber(qint32(crcOf(source))));
        return false;
    }
    QByteArray made(facts.targetBytes, Qt::Uninitialized);
    BpsReader reader(patch);
    reader.readHeader(&facts, error);
    while (!reader.atEnd()) {
        Action action {};
        const int position = reader.targetBytesDone();
        reader.next(&action, error);
        perform(action, source, patch, made.data(), position);
    }
    if (crcOf(made) != facts.targetCrc) {
        *error = QStringLiteral("The result has the checksum %1, not %2 as the patch says")
                     .arg(hexNumber(qint32(crcOf(made))))
                     .arg(hexNumber(qint32(facts.targetCrc)));
        return false;
    }
    *target = made;
    return true;
}

QByteArray createBps(const QByteArray &source, const QByteArray &target, const QByteArray &metadata)
{
    QByteArray patch("BPS1");
    appendBpsNumber(&patch, quint64(source.size()));
    appendBpsNumber(&patch, quint64(target.size()));
    appendBpsNumber(&patch, quint64(metadata.size()));
    patch += metadata;
    appendBpsActions(&patch, source, target);
    appendSum(&patch, crcOf(source));
    appendSum(&patch, crcOf(target));
    appendSum(&patch, crcOf(patch));
    return patch;
}
