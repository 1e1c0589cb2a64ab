// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>

#include <memory>
#include <utility>

/// The names that the textures, or the folders, of one folder carry, so that finding a free one does not visit the siblings.
class NameIndex
{
public:
    void insert(const QString &name);
    void remove(const QString &name);

    /// How many siblings carry \a name.
    int count(const QString &name) const { return m_counts.value(name); }

    /// \a requested, or \a requested with the lowest number from 2 on that is free: "Sky (2)". A sibling that carries
    /// \a ignored is the one that asks, so it does not count; a null string when there is none.
    QString freeName(const QString &requested, const QString &ignored);

    /// True once a node that the folder lists has joined another index; the folder then needs a new one.
    bool isStale() const { return m_stale; }
    void setStale() { m_stale = true; }
    /// Frees what it holds; stale from then on.
    void dissolve();

private:
    QHash<QString, int> m_counts;
    QHash<QString, int> m_lowestFreeNumber; ///< By requested name: no lower number from 2 on is free.
    bool m_stale = false;
};

/// The name of a node of the file table: a string, and while its node is listed in a folder every assignment to it reaches
/// that folder's index. Copies are names of their own: they know no index.
class NodeName : public QString
{
public:
    NodeName() = default;
    NodeName(const QString &name) : QString(name) {}
    NodeName(const NodeName &other) : QString(other) {}
    ~NodeName() { leave(); }

    NodeName &operator=(const NodeName &other)
    {
        if (this != &other)
            assign(other);
        return *this;
    }
    NodeName &operator=(const QString &name)
    {
        assign(name);
        return *this;
    }
    NodeName &operator=(const char *name) { return *this = QString::fromUtf8(name); }
    NodeName &operator=(QLatin1String name) { return *this = QString(name); }
    NodeName &operator=(QChar name) { return *this = QString(name); }

    template<typename T> NodeName &operator+=(const T &text) { return assign(QString(*this) += text); }
    template<typename... T> NodeName &append(T &&...text) { return assign(QString(*this).append(std::forward<T>(text)...)); }
    template<typename... T> NodeName &prepend(T &&...text) { return assign(QString(*this).prepend(std::forward<T>(text)...)); }
    template<typename... T> NodeName &insert(T &&...text) { return assign(QString(*this).insert(std::forward<T>(text)...)); }
    template<typename... T> NodeName &remove(T &&...text) { return assign(QString(*this).remove(std::forward<T>(text)...)); }
    template<typename... T> NodeName &replace(T &&...text) { return assign(QString(*this).replace(std::forward<T>(text)...)); }
    void clear() { assign(QString()); }
    void swap(QString &other)
    {
        const QString old = *this;
        assign(other);
        other = old;
    }

    /// Makes assignments reach \a index, which then counts the name. A former index is stale from then on, since its folder may
    /// still list the node.
    void join(const std::shared_ptr<NameIndex> &index);
    /// Makes the index forget the name; for a node that its folder no longer lists.
    void leave();
    /// The index that counts the name, or null.
    const std::shared_ptr<NameIndex> &index() const { return m_index; }

private:
    NodeName &assign(const QString &name);

    std::shared_ptr<NameIndex> m_index;
};
