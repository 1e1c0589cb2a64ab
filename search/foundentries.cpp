// SPDX-License-Identifier: MIT
#include "search/foundentries.h"

EntryIndex::EntryIndex(const fileTreeDirectory &folder)
{
    m_chains.reserve(folder.files.size());
    for (fileTreeFile *entry : folder.files)
        add(entry);
}

EntryIndex::Key EntryIndex::keyOf(const fileTreeFile &entry)
{
    return {entry.address, entry.width, entry.height, entry.format};
}

fileTreeFile *EntryIndex::takeEqualTo(const fileTreeFile &entry)
{
    const auto chain = m_chains.find(keyOf(entry));
    if (chain == m_chains.end())
        return nullptr;
    fileTreeFile *first = m_entries.at(chain->first);
    chain->first = m_nextEqual.at(chain->first);
    if (chain->first < 0)
        m_chains.erase(chain);
    return first;
}

void EntryIndex::add(fileTreeFile *entry)
{
    const int place = m_entries.size();
    m_entries.append(entry);
    m_nextEqual.append(-1);
    Chain &chain = m_chains[keyOf(*entry)];
    if (chain.first < 0)
        chain.first = place;
    else
        m_nextEqual[chain.last] = place;
    chain.last = place;
}

KnownTextures::KnownTextures(const fileTreeDirectory &folder)
{
    const fileTreeDirectory *root = &folder;
    while (root->parent)
        root = root->parent;
    const QList<fileTreeFile *> textures = fileTreeContainer().allFiles(root);
    for (const fileTreeFile *texture : textures)
        insert(*texture, texture->realAddress());
}

bool KnownTextures::insert(const fileTreeFile &texture, int realAddress)
{
    const QString key = QStringLiteral("%1 %2 %3 ").arg(realAddress).arg(texture.width).arg(texture.height) + texture.format;
    const int before = m_keys.size();
    m_keys.insert(key);
    return m_keys.size() > before;
}
