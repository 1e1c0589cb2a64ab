// SPDX-License-Identifier: MIT
#include "system/monkey/tablecopy.h"

#include "persist/filelist.h"

#include <QBuffer>

TableCopy::TableCopy() : m_root(new fileTreeDirectory)
{
    m_root->isRoot = true;
}

TableCopy::~TableCopy()
{
    const fileTreeContainer container;
    qDeleteAll(container.allFiles(m_root));
    qDeleteAll(container.allDirectories(m_root));
    delete m_root;
}

void TableCopy::copyContents(const fileTreeDirectory &source)
{
    QList<QPair<const fileTreeDirectory *, fileTreeDirectory *>> waiting {{&source, m_root}};
    while (!waiting.isEmpty()) {
        const auto [from, to] = waiting.takeFirst();
        for (const fileTreeFile *file : from->files) {
            auto *copy = new fileTreeFile(*file);
            copy->treeItem = nullptr;
            copy->parent = to;
            to->files.append(copy);
        }
        for (const fileTreeDirectory *directory : from->directories) {
            auto *copy = new fileTreeDirectory;
            copy->copyValues(*directory);
            copy->parent = to;
            to->directories.append(copy);
            waiting.append({directory, copy});
        }
    }
}

bool TableCopy::read(const QByteArray &list, int imageSize)
{
    QString error;
    return readFileList(list, imageSize, m_root, nullptr, &error);
}

QByteArray TableCopy::written()
{
    QBuffer buffer;
    QString error;
    return buffer.open(QIODevice::WriteOnly) && writeFileList(m_root, &buffer, &error) ? buffer.data() : QByteArray();
}

QByteArray listOf(const fileTreeDirectory &root)
{
    TableCopy copy;
    copy.copyContents(root);
    return copy.written();
}

QByteArray savedAgain(const QByteArray &list, int imageSize)
{
    TableCopy copy;
    return copy.read(list, imageSize) ? copy.written() : QByteArray();
}
