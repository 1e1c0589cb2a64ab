// SPDX-License-Identifier: MIT
#include "model/bulkadder.h"

#include <QSet>

#include <algorithm>

QString numberedName(const QString &name, int number)
{
    return name + QLatin1String(" (") + QString::number(number) + QLatin1Char(')');
}

bool splitNumberedName(const QString &text, QString *name, int *number)
{
    const int opening = text.lastIndexOf(QLatin1String(" ("));
    if (opening < 0 || !text.endsWith(QLatin1Char(')')))
        return false;
    *number = text.midRef(opening + 2, text.size() - opening - 3).toInt();
    *name = text.left(opening);
    return *number >= firstNameNumber && numberedName(*name, *number) == text;
}

namespace
{
template<typename Node> void nameAmong(SiblingNames *names, Node *node)
{
    node->name = names->take(node->name.isEmpty() ? Node::defaultName() : node->name);
}
}

void SiblingNames::remove(const QString &name)
{
    const auto found = m_names.find(name);
    if (found == m_names.end() || found->bearers == 0 || --found->bearers > 0)
        return;
    QString requested;
    int number = 0;
    if (!splitNumberedName(name, &requested, &number))
        return;
    const auto base = m_names.find(requested);
    if (base != m_names.end())
        base->nextNumber = qMin(base->nextNumber, number);
}

QString SiblingNames::take(const QString &requested)
{
    Entry &entry = m_names[requested];
    if (entry.bearers == 0) {
        entry.bearers = 1;
        return requested;
    }
    int number = entry.nextNumber;
    const auto isTaken = [this](const QString &name) {
        const auto found = m_names.constFind(name);
        return found != m_names.constEnd() && found->bearers > 0;
    };
    QString name = numberedName(requested, number);
    while (isTaken(name))
        name = numberedName(requested, ++number);
    entry.nextNumber = number + 1;
    insert(name);
    return name;
}

BulkAdder::BulkAdder(fileTreeDirectory *folder) : m_folder(folder)
{
    for (const fileTreeFile *file : qAsConst(folder->files))
        m_files.insert(file->name);
    for (const fileTreeDirectory *directory : qAsConst(folder->directories))
        m_directories.insert(directory->name);
}

fileTreeFile *BulkAdder::addFile(fileTreeFile *file)
{
    file->parent = m_folder;
    m_folder->files.append(file);
    nameAmong(&m_files, file);
    return file;
}

fileTreeDirectory *BulkAdder::addDirectory(fileTreeDirectory *directory)
{
    directory->parent = m_folder;
    m_folder->directories.append(directory);
    nameAmong(&m_directories, directory);
    return directory;
}

void BulkAdder::replaceFiles(const QVector<TextureReplacement> &changes)
{
    QSet<fileTreeFile *> replaced;
    for (const TextureReplacement &change : changes) {
        if (change.replaced) {
            change.replaced->leaveView();
            m_files.remove(change.replaced->name);
            replaced.insert(change.replaced);
        }
        addFile(change.added);
    }
    if (replaced.isEmpty())
        return;
    QList<fileTreeFile *> &files = m_folder->files;
    files.erase(std::remove_if(files.begin(), files.end(), [&](fileTreeFile *file) { return replaced.contains(file); }),
                files.end());
}
