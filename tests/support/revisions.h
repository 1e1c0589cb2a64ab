// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QRandomGenerator>
#include <QVector>

/// Made cartridge images and revisions of them of which it is known where everything went.
namespace revisions
{
struct Texture
{
    int begin = 0; ///< In the old image, in bytes.
    int size = 0;
};

struct Revision
{
    QByteArray oldImage;
    QByteArray newImage;
    QVector<Texture> textures; ///< By address; they do not overlap.
    /// By texture: where it is in the new image; -1 when it was deleted. At the border of what moved there may be a second place
    /// that is as right as the first.
    QVector<int> truth;
    QVector<int> otherTruth;
    QVector<bool> isIntact; ///< By texture: whether it is there with the same bytes.
};

inline QByteArray noise(QRandomGenerator *random, int size)
{
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(random->bounded(256));
    return bytes;
}

/// The bytes of a texture as games have them: photographs, gradients, sprites with clear margins, few colours, flat ones.
inline QByteArray textureBytes(QRandomGenerator *random, int size)
{
    QByteArray bytes(size, '\0');
    switch (random->bounded(8)) {
    case 0:
    case 1:
    case 2: return noise(random, size);
    case 3:
        for (int i = 0; i < size; ++i)
            bytes[i] = char(i / 8 + random->bounded(3));
        return bytes;
    case 4:
    case 5: {
        const int margin = size / 4;
        return bytes.left(margin) + noise(random, size - 2 * margin) + bytes.left(margin);
    }
    case 6: {
        const QByteArray colours = noise(random, 4);
        for (int i = 0; i < size; ++i)
            bytes[i] = colours.at(random->bounded(4));
        return bytes;
    }
    default: bytes.fill(random->bounded(2) == 0 ? '\0' : char(random->bounded(256))); return bytes;
    }
}

/// An image with \a count textures, one in ten of which has a twin further in front.
inline void makeOld(QRandomGenerator *random, int count, int meanSize, Revision *revision)
{
    QByteArray &image = revision->oldImage;
    image = noise(random, 0x1000);
    image.reserve(count * meanSize * 2);
    for (int i = 0; i < count; ++i) {
        const int gap = random->bounded(3);
        if (gap == 1)
            image.append(noise(random, 8 * random->bounded(40)));
        else if (gap == 2)
            image.append(QByteArray(8 * random->bounded(40), '\0'));
        Texture texture;
        texture.begin = image.size();
        if (i > 10 && random->bounded(10) == 0) {
            const Texture twin = revision->textures.at(random->bounded(i));
            image.append(image.mid(twin.begin, twin.size));
        } else {
            const int size =
                random->bounded(12) == 0 ? 8 + 8 * random->bounded(8) : 16 + meanSize / 16 * (1 + random->bounded(30));
            image.append(textureBytes(random, size));
        }
        texture.size = image.size() - texture.begin;
        revision->textures.append(texture);
    }
    image.append(noise(random, 0x400));
}

/// Cuts the old image into \a parts and makes the new one of them: some are left out, some change places, some get something
/// inserted before them, and in some bytes are changed.
inline void makeNew(QRandomGenerator *random, int parts, Revision *revision)
{
    const QByteArray &old = revision->oldImage;
    struct Part
    {
        int begin;
        int end;
        int newBegin = -1;
    };
    QVector<int> cuts {0, 0x1000};
    for (int i = 0; i < parts; ++i)
        cuts.append(0x1000 + random->bounded(old.size() - 0x1000) / 8 * 8);
    std::sort(cuts.begin(), cuts.end());
    cuts.append(old.size());
    QVector<Part> order;
    for (int i = 0; i + 1 < cuts.size(); ++i) {
        if (cuts.at(i) < cuts.at(i + 1))
            order.append({cuts.at(i), cuts.at(i + 1), -1});
    }
    for (int i = 1; i + 2 < order.size(); ++i) {
        if (random->bounded(8) == 0)
            std::swap(order[i], order[i + 1]);
    }
    QByteArray edited = old;
    QByteArray &image = revision->newImage;
    for (int i = 0; i < order.size(); ++i) {
        Part &part = order[i];
        const int what = i == 0 ? 9 : random->bounded(10);
        if (what == 0 && part.end - part.begin < old.size() / 16)
            continue; // left out
        if (what == 1)
            image.append(noise(random, 8 * (1 + random->bounded(200))));
        if (what == 2)
            image.append(QByteArray(8 * (1 + random->bounded(200)), '\0'));
        if (what == 3) { // A whole stretch is painted anew, or single bytes here and there.
            const int from = part.begin + random->bounded(part.end - part.begin);
            const int size = qMin(part.end - from, 1 + random->bounded(4000));
            if (random->bounded(2) == 0)
                edited.replace(from, size, noise(random, size));
            else
                for (int place = from; place < from + size; place += 1 + random->bounded(300))
                    edited[place] = char(edited.at(place) + 1);
        }
        part.newBegin = image.size();
        image.append(edited.constData() + part.begin, part.end - part.begin);
    }
    std::sort(order.begin(), order.end(), [](const Part &a, const Part &b) { return a.begin < b.begin; });
    const auto placeOf = [&](int address) {
        const auto next = std::upper_bound(order.cbegin(), order.cend(), address,
                                           [](int position, const Part &part) { return position < part.begin; });
        const Part &part = *std::prev(next);
        return part.newBegin < 0 ? -1 : part.newBegin + address - part.begin;
    };
    for (const Texture &texture : qAsConst(revision->textures)) {
        // A cut through a texture may leave its bytes as they are, beside either part: zeros put between zeros are no change.
        const int first = placeOf(texture.begin);
        const int last = placeOf(texture.begin + texture.size - 1);
        const int byLast = last < 0 ? -1 : last - texture.size + 1;
        const QByteArray bytes = old.mid(texture.begin, texture.size);
        const bool isAtFirst = first >= 0 && image.mid(first, texture.size) == bytes;
        const bool isAtLast = byLast >= 0 && image.mid(byLast, texture.size) == bytes;
        revision->truth.append(isAtLast && !isAtFirst ? byLast : first);
        revision->otherTruth.append(isAtLast ? byLast : -1);
        revision->isIntact.append(isAtFirst || isAtLast);
    }
}

inline Revision made(quint32 seed, int textures, int meanSize, int parts)
{
    QRandomGenerator random(seed);
    Revision revision;
    makeOld(&random, textures, meanSize, &revision);
    makeNew(&random, parts, &revision);
    return revision;
}
}
