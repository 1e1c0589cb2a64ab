// SPDX-License-Identifier: MIT
#include "search/porting.h"

#include "base/wrapping.h"
#include "model/rom.h"
#include "model/textureformat.h"

#include <QHash>

#include <algorithm>

namespace
{
/// A texture entry, what it is made of, and where it goes.
struct Texture
{
    fileTreeFile *entry;
    int piece; ///< Place in the pieces.
    int palettePiece = -1;
    PortedTexture result;
};

/// A folder of the table and where it goes; parents come before their children.
struct Folder
{
    fileTreeDirectory *node = nullptr;
    QString path; ///< Its name included, ending in "/".
    int parent = -1; ///< Place in the list of folders; -1 for the root.
    int oldAddress = 0; ///< Real addresses, in the images.
    int newAddress = 0;
    int firstTexture = 0; ///< In the list of textures.
    int textureCount = 0;
    QVector<int> children; ///< Places in the list of folders.
};

/// Something in a folder: where it was and where it is.
struct Content
{
    qint64 oldAddress;
    qint64 newAddress;
    qint64 displacement() const { return newAddress - oldAddress; }
};

class TablePorting
{
public:
    TablePorting(fileTreeDirectory *root, const QByteArray &newImage) : m_newImage(newImage) { collect(root); }

    QVector<PortedTexture> run(Progress *progress)
    {
        const Placement placement(currentROM.data, m_newImage, m_pieces, progress);
        for (Texture &texture : m_textures)
            place(&texture, placement);
        // Children first: where they are decides where their parents go.
        for (int i = m_folders.size() - 1; i > 0; --i)
            placeFolder(&m_folders[i], placement);
        for (int i = 1; i < m_folders.size(); ++i)
            keepInside(&m_folders[i]);
        for (const Folder &folder : qAsConst(m_folders))
            move(folder);
        QVector<PortedTexture> results;
        for (const Texture &texture : qAsConst(m_textures))
            results.append(texture.result);
        return results;
    }

private:
    void collect(fileTreeDirectory *root)
    {
        struct Waiting
        {
            fileTreeDirectory *node;
            int parent;
        };
        QVector<Waiting> waiting {{root, -1}};
        while (!waiting.isEmpty()) {
            const Waiting next = waiting.takeLast();
            const int place = m_folders.size();
            Folder folder;
            folder.node = next.node;
            folder.parent = next.parent;
            folder.firstTexture = m_textures.size();
            folder.textureCount = next.node->files.size();
            QString path = next.node->name + QLatin1Char('/');
            if (next.parent >= 0) {
                path.prepend(m_folders.at(next.parent).path);
                folder.oldAddress = addWrapping(m_folders.at(next.parent).oldAddress, next.node->address);
                m_folders[next.parent].children.append(place);
            }
            folder.path = path;
            for (fileTreeFile *file : qAsConst(next.node->files))
                collectTexture(file, folder);
            m_folders.append(folder);
            const QList<fileTreeDirectory *> &children = next.node->directories;
            std::for_each(children.crbegin(), children.crend(), [&](fileTreeDirectory *child) {
                waiting.append({child, place});
            });
        }
    }

    void collectTexture(fileTreeFile *file, const Folder &folder)
    {
        Texture texture {file, -1, -1, {}};
        texture.result.path = folder.path + file->name;
        texture.result.oldAddress = addWrapping(folder.oldAddress, file->address);
        texture.piece = addPiece({texture.result.oldAddress, file->size()});
        const textureFormat format = m_formats.value(file->format);
        if (format.usesPalette) {
            texture.result.hasPalette = true;
            texture.result.oldPaletteAddress = file->realPaletteAddress();
            texture.palettePiece =
                addPiece({texture.result.oldPaletteAddress, format.name == textureFormats::ci8.name ? 512 : 32});
        }
        m_textures.append(texture);
    }

    /// Many textures share a palette, and some entries lie upon each other.
    int addPiece(const Piece &piece)
    {
        const quint64 key = quint64(quint32(piece.begin)) << 32 | quint32(piece.size);
        const auto known = m_placesOfPieces.constFind(key);
        if (known != m_placesOfPieces.constEnd())
            return *known;
        m_placesOfPieces.insert(key, m_pieces.size());
        m_pieces.append(piece);
        return m_pieces.size() - 1;
    }

    static void place(Texture *texture, const Placement &placement)
    {
        PortedTexture &result = texture->result;
        result.place = placement.places().at(texture->piece);
        result.state = result.place.state;
        if (!result.hasPalette)
            return;
        result.palette = placement.places().at(texture->palettePiece);
        result.state = std::max(result.state, result.palette.state);
    }

    /// Lets the folder move as the things in it did: as those that leave most of them inside its range, of which there are
    /// several when something was inserted between them; then as most of them did.
    void placeFolder(Folder *folder, const Placement &placement)
    {
        QVector<Content> contents;
        for (int i = 0; i < folder->textureCount; ++i) {
            const PortedTexture &texture = m_textures.at(folder->firstTexture + i).result;
            if (texture.place.state != PlaceState::Missing && texture.place.state != PlaceState::Ambiguous)
                contents.append({texture.oldAddress, texture.place.address});
        }
        for (const int child : qAsConst(folder->children)) {
            if (m_folders.at(child).newAddress >= 0)
                contents.append({m_folders.at(child).oldAddress, m_folders.at(child).newAddress});
        }
        const qint64 displacement = contents.isEmpty() ? placement.displacementAt(folder->oldAddress)
                                                       : displacementOf(contents, folder->oldAddress, folder->node->size);
        const qint64 address = folder->oldAddress + displacement;
        folder->newAddress = address >= 0 && address <= m_newImage.size() ? int(address) : -1;
    }

    static qint64 displacementOf(QVector<Content> contents, qint64 begin, qint64 size)
    {
        std::sort(contents.begin(), contents.end(),
                  [](const Content &a, const Content &b) { return a.newAddress < b.newAddress; });
        QVector<qint64> addresses;
        for (const Content &content : qAsConst(contents))
            addresses.append(content.newAddress);
        std::stable_sort(contents.begin(), contents.end(),
                         [](const Content &a, const Content &b) { return a.displacement() < b.displacement(); });
        qint64 best = 0;
        qint64 mostInside = -1;
        int mostAlike = 0;
        for (int i = 0; i < contents.size();) {
            const qint64 displacement = contents.at(i).displacement();
            int next = i;
            while (next < contents.size() && contents.at(next).displacement() == displacement)
                ++next;
            const qint64 inside = std::lower_bound(addresses.cbegin(), addresses.cend(), begin + displacement + size)
                - std::lower_bound(addresses.cbegin(), addresses.cend(), begin + displacement);
            if (inside > mostInside || (inside == mostInside && next - i > mostAlike)) {
                best = displacement;
                mostInside = inside;
                mostAlike = next - i;
            }
            i = next;
        }
        return best;
    }

    /// A folder that would be outside the image goes to where its parent is.
    void keepInside(Folder *folder) const
    {
        if (folder->newAddress < 0)
            folder->newAddress = m_folders.at(folder->parent).newAddress;
    }

    void move(const Folder &folder)
    {
        fileTreeDirectory *node = folder.node;
        if (folder.parent >= 0)
            node->address = folder.newAddress - m_folders.at(folder.parent).newAddress;
        QList<fileTreeFile *> kept;
        for (int i = 0; i < folder.textureCount; ++i) {
            const Texture &texture = m_textures.at(folder.firstTexture + i);
            const PortedTexture &result = texture.result;
            if (result.place.state == PlaceState::Missing)
                continue;
            kept.append(texture.entry);
            texture.entry->address = result.place.address - folder.newAddress;
            if (!result.hasPalette)
                continue;
            const int palette = result.palette.state == PlaceState::Missing
                ? addWrapping(result.oldPaletteAddress, result.place.address - result.oldAddress)
                : result.palette.address;
            texture.entry->paletteAddress = addWrapping(palette, int(0U - unsigned(node->address)));
        }
        if (kept.size() != node->files.size())
            node->files = kept;
    }

    const QByteArray &m_newImage;
    const QMap<QString, textureFormat> m_formats = textureFormats::getAsMap();
    QVector<Folder> m_folders;
    QVector<Texture> m_textures; ///< By folder.
    QVector<Piece> m_pieces;
    QHash<quint64, int> m_placesOfPieces;
};
}

QVector<PortedTexture> portTable(fileTreeDirectory *root, const QByteArray &newImage, Progress *progress)
{
    return TablePorting(root, newImage).run(progress);
}
