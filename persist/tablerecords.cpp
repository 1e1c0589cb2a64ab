// SPDX-License-Identifier: MIT
#include "persist/tablerecords.h"

#include "base/printabletext.h"
#include "base/wrapping.h"
#include "model/bulkadder.h"
#include "model/rom.h"
#include "model/textureformat.h"

#include <QHash>
#include <QTextCodec>

#include <limits>
#include <memory>

namespace
{
/// Below a folder of the table, what the records name. Made completely before anything is added to the table.
struct Node
{
    Node() = default;
    Node(int nodeAround, const QString &itsName) : parent(nodeAround), name(itsName) { }

    int parent = -1;
    QString name;
    int record = -1; ///< The one that describes it; -1 for a folder that only holds something.
    QHash<QString, int> children;
    std::shared_ptr<BulkAdder> adder; ///< Of the folder in the table.
    qint32 address = 0; ///< In the image.
    QHash<QString, fileTreeDirectory *> foldersBefore; ///< In the folder before anything is added.
    QHash<QString, const fileTreeFile *> texturesBefore;
};

class RecordAdder
{
public:
    RecordAdder(const QVector<TableRecord> &records, fileTreeDirectory *into, qint32 base, int imageSize)
        : m_records(records), m_base(base), m_imageSize(imageSize)
    {
        Node top;
        use(&top, into, into->realAddress());
        m_nodes.append(top);
    }

    bool plan(QString *error)
    {
        for (int i = 0; i < m_records.size(); ++i) {
            if (m_records.at(i).isFolder && !planFolder(i, error))
                return false;
        }
        m_nodeOfTexture.fill(0, m_records.size());
        for (int i = 0; i < m_records.size(); ++i) {
            if (!m_records.at(i).isFolder)
                m_nodeOfTexture[i] = nodeOf(m_records.at(i).folders);
        }
        return true;
    }

    AddedRecords add()
    {
        AddedRecords added;
        for (int i = 1; i < m_nodes.size(); ++i)
            added.folders += addFolder(&m_nodes[i]) ? 1 : 0;
        for (int i = 0; i < m_records.size(); ++i) {
            if (!m_records.at(i).isFolder)
                ++(addTexture(m_records.at(i), m_nodes.at(m_nodeOfTexture.at(i))) ? added.textures : added.unchanged);
        }
        return added;
    }

private:
    int nodeOf(const QStringList &folders)
    {
        int node = 0;
        for (const QString &name : folders) {
            const auto child = qAsConst(m_nodes).at(node).children.constFind(name);
            if (child != m_nodes.at(node).children.constEnd()) {
                node = *child;
                continue;
            }
            const int made = m_nodes.size();
            m_nodes[node].children.insert(name, made);
            m_nodes.append(Node(node, name));
            node = made;
        }
        return node;
    }

    bool planFolder(int index, QString *error)
    {
        const TableRecord &record = m_records.at(index);
        int &described = m_nodes[nodeOf(record.folders + QStringList(record.name))].record;
        if (described < 0) {
            described = index;
            return true;
        }
        *error = QStringLiteral("line %1: the folder \"%2\" is described a second time, after line %3")
                     .arg(QString::number(record.line), record.name, QString::number(m_records.at(described).line));
        return false;
    }

    /// Makes \a folder, which is in the table and has \a address in the image, the one that the node stands for.
    static void use(Node *node, fileTreeDirectory *folder, qint32 address)
    {
        node->adder = std::make_shared<BulkAdder>(folder);
        node->address = address;
        for (fileTreeDirectory *child : qAsConst(folder->directories))
            node->foldersBefore.insert(child->name, child);
        for (const fileTreeFile *texture : qAsConst(folder->files))
            node->texturesBefore.insert(texture->name, texture);
    }

    /// False when the folder is there already. Parents come before their children in the list of nodes.
    bool addFolder(Node *node)
    {
        const Node &parent = m_nodes.at(node->parent);
        if (fileTreeDirectory *existing = parent.foldersBefore.value(node->name)) {
            use(node, existing, addWrapping(parent.address, existing->address));
            return false;
        }
        auto *folder = new fileTreeDirectory;
        folder->name = node->name;
        folder->address = 0;
        std::optional<qint32> size;
        if (node->record >= 0) {
            const TableRecord &record = m_records.at(node->record);
            folder->address = addWrapping(addWrapping(record.address, m_base), int(0u - unsigned(parent.address)));
            size = record.size;
        }
        folder->size = size.value_or(m_imageSize - qBound(0, folder->address, m_imageSize));
        use(node, parent.adder->addDirectory(folder), addWrapping(parent.address, folder->address));
        return true;
    }

    bool addTexture(const TableRecord &record, const Node &node)
    {
        auto *texture = new fileTreeFile;
        texture->name = record.name;
        texture->format = record.format;
        texture->width = record.width;
        texture->height = record.height;
        texture->address = addWrapping(addWrapping(record.address, m_base), int(0u - unsigned(node.address)));
        // A palette's address counts from the innermost folder's own offset.
        if (record.palette)
            texture->paletteAddress =
                addWrapping(addWrapping(*record.palette, m_base), int(0u - unsigned(node.adder->folder()->address)));
        const fileTreeFile *before = node.texturesBefore.value(record.name);
        if (before && before->address == texture->address && before->format == texture->format && before->width == texture->width
            && before->height == texture->height && before->paletteAddress == texture->paletteAddress) {
            delete texture;
            return false;
        }
        node.adder->addFile(texture);
        return true;
    }

    const QVector<TableRecord> &m_records;
    const qint32 m_base;
    const int m_imageSize;
    QVector<Node> m_nodes;
    QVector<int> m_nodeOfTexture;
};
}

bool addRecords(const QVector<TableRecord> &records, fileTreeDirectory *into, qint32 base, int imageSize, AddedRecords *added,
                QString *error)
{
    RecordAdder adder(records, into, base, imageSize);
    if (!adder.plan(error))
        return false;
    *added = adder.add();
    return true;
}

bool visitTable(const fileTreeDirectory &root, const std::function<bool(const TableEntry &entry)> &visit)
{
    struct Pending
    {
        const fileTreeDirectory *folder;
        QString path;
        qint32 address;
    };
    QVector<Pending> pending {{&root, QLatin1String(rootPath), 0}};
    while (!pending.isEmpty()) {
        const Pending current = pending.takeLast();
        if (current.folder != &root && !visit({current.folder, nullptr, current.path, current.address, std::nullopt}))
            return false;
        for (const fileTreeFile *texture : current.folder->files) {
            std::optional<qint32> palette;
            const textureFormat *format = textureFormats::find(texture->format);
            if (format && format->usesPalette)
                palette = addWrapping(texture->paletteAddress, current.folder->address);
            if (!visit({nullptr, texture, current.path + pathName(texture->name), addWrapping(current.address, texture->address),
                        palette}))
                return false;
        }
        for (int i = current.folder->directories.size() - 1; i >= 0; --i) {
            const fileTreeDirectory *child = current.folder->directories.at(i);
            const QString path = current.path + pathName(child->name) + QLatin1Char('/');
            // Each folder that waits keeps its whole path.
            if (path.size() > maximumTableBytes / 4)
                return false;
            pending.append({child, path, addWrapping(current.address, child->address)});
        }
    }
    return true;
}

QString pathName(const QString &name)
{
    QString escaped = name;
    escaped.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    return escaped.replace(QLatin1Char('/'), QLatin1String("\\/"));
}

bool splitPath(const QString &path, QStringList *names, bool *isFolder)
{
    names->clear();
    QString name;
    bool open = true; // A name is being read, even if it is empty so far.
    for (int i = 0; i < path.size(); ++i) {
        const QChar character = path.at(i);
        const QChar next = i + 1 < path.size() ? path.at(i + 1) : QChar();
        open = character != QLatin1Char('/');
        if (!open) {
            names->append(name);
            name.clear();
        } else if (character == QLatin1Char('\\') && (next == QLatin1Char('/') || next == QLatin1Char('\\'))) {
            name += next;
            ++i;
        } else {
            name += character;
        }
    }
    *isFolder = !open;
    if (open)
        names->append(name);
    if ((names->size() > 1 || *isFolder) && names->constFirst() == QLatin1String("Root"))
        names->removeFirst();
    return !names->contains(QString());
}

std::optional<qint32> tableNumber(const QString &text)
{
    bool ok = false;
    if (text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
        const QString digits = text.mid(2);
        const bool signedOrSpaced = digits.isEmpty() || !digits.at(0).isLetterOrNumber();
        const quint32 value = digits.toUInt(&ok, 16);
        return ok && !signedOrSpaced && digits.size() <= 8 ? std::optional<qint32>(qint32(value)) : std::nullopt;
    }
    const QChar first = text.isEmpty() ? QChar() : text.at(0);
    if (!first.isDigit() && first != QLatin1Char('-'))
        return std::nullopt;
    const qint64 value = text.toLongLong(&ok, 10);
    const bool fits = value >= std::numeric_limits<qint32>::min() && value <= std::numeric_limits<quint32>::max();
    return ok && fits && !text.at(text.size() - 1).isSpace() ? std::optional<qint32>(qint32(quint32(value))) : std::nullopt;
}

QString formatOfOtherTools(const QString &name)
{
    const QString lower = name.toLower();
    if (lower == QLatin1String("rgba16"))
        return textureFormats::rgb5a1.name;
    return !textureFormats::isJpeg(lower) && textureFormats::find(lower) ? lower : QString();
}

QString nameForOtherTools(const QString &format)
{
    if (format == textureFormats::rgb5a1.name)
        return QStringLiteral("rgba16");
    return textureFormats::find(format) && !textureFormats::isJpeg(format) ? format : QString();
}

QString quotedText(const QString &text)
{
    QString quoted(QLatin1Char('"'));
    for (const QChar character : text) {
        if (character == QLatin1Char('"') || character == QLatin1Char('\\'))
            quoted += QLatin1Char('\\') + QString(character);
        else if (isControlOrBidi(character) || character.unicode() == 0xFEFF || character.unicode() >= 0xFFFE)
            quoted += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
        else
            quoted += character;
    }
    return quoted + QLatin1Char('"');
}

bool decodedText(const QByteArray &document, QString *text, QString *error)
{
    QTextCodec::ConverterState state;
    *text = QTextCodec::codecForName("UTF-8")->toUnicode(document.constData(), document.size(), &state);
    if (state.invalidChars == 0 && state.remainingChars == 0)
        return true;
    *error = QStringLiteral("It is no text in UTF-8");
    return false;
}

QString tooLargeTable()
{
    return QStringLiteral("The table's paths are too long: the document would be larger than %1 MiB")
        .arg(maximumTableBytes / 1024 / 1024);
}
