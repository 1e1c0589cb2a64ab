// SPDX-License-Identifier: MIT
#include "model/nameindex.h"

namespace
{
constexpr int firstNumber = 2;

QString numbered(const QString &name, int number)
{
    return name + QLatin1String(" (") + QString::number(number) + QLatin1Char(')');
}

/// Splits "Sky (2)" into the name and the number; false for every text that numbered() does not yield.
bool splitNumbered(const QString &text, QString *name, int *number)
{
    const int opening = text.lastIndexOf(QLatin1String(" ("));
    if (opening < 0 || !text.endsWith(QLatin1Char(')')))
        return false;
    *number = text.midRef(opening + 2, text.size() - opening - 3).toInt();
    *name = text.left(opening);
    return *number >= firstNumber && numbered(*name, *number) == text;
}
}

void NameIndex::insert(const QString &name)
{
    ++m_counts[name];
}

void NameIndex::remove(const QString &name)
{
    const auto found = m_counts.find(name);
    if (found == m_counts.end())
        return;
    if (--*found > 0)
        return;
    m_counts.erase(found);

    QString requested;
    int number = 0;
    if (!splitNumbered(name, &requested, &number))
        return;
    const auto lowest = m_lowestFreeNumber.find(requested);
    if (lowest != m_lowestFreeNumber.end() && *lowest > number)
        *lowest = number;
}

void NameIndex::dissolve()
{
    m_counts = QHash<QString, int>();
    m_lowestFreeNumber = QHash<QString, int>();
    m_stale = true;
}

QString NameIndex::freeName(const QString &requested, const QString &ignored)
{
    const auto isFree = [&](const QString &name) { return count(name) <= (!ignored.isNull() && name == ignored ? 1 : 0); };
    if (isFree(requested))
        return requested;

    int &lowest = m_lowestFreeNumber[requested];
    lowest = qMax(lowest, firstNumber);
    QString base;
    int own = 0;
    if (splitNumbered(ignored, &base, &own) && base == requested && own < lowest && isFree(ignored))
        return ignored;
    while (!isFree(numbered(requested, lowest)))
        ++lowest;
    return numbered(requested, lowest);
}

void NodeName::join(const std::shared_ptr<NameIndex> &index)
{
    if (m_index == index)
        return;
    if (m_index) {
        m_index->setStale();
        leave();
    }
    m_index = index;
    m_index->insert(*this);
}

void NodeName::leave()
{
    if (m_index)
        m_index->remove(*this);
    m_index.reset();
}

NodeName &NodeName::assign(const QString &name)
{
    // The old text is looked up before it goes, and name may be a part of this very string.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is for that part
    const QString assigned = name;
    if (m_index) {
        m_index->remove(*this);
        m_index->insert(assigned);
    }
    QString::operator=(assigned);
    return *this;
}
