// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QVector>

class Progress;

/// Part of the old image: where it begins and how long it is, in bytes.
struct Piece
{
    int begin = 0;
    int size = 0;

    qint64 end() const { return qint64(begin) + size; }
};

/// How sure it is where a piece of the old image is in the new one. The higher, the less.
enum class PlaceState {
    Same, ///< Its bytes are there, at the same address.
    Moved, ///< Its bytes are there, at another address.
    Ambiguous, ///< Its bytes are there, but in several places, between which nothing decides.
    Changed, ///< Its bytes are not there; what lies around it tells where it was.
    Missing, ///< Nothing tells where it is.
};

struct Place
{
    PlaceState state = PlaceState::Missing;
    int address = -1; ///< In the new image; -1 when the state is Missing.
};

/// Says where pieces of an old image are in a new one, such as another revision of a game.
///
/// All pieces are searched for in both images at once. Those of which there is exactly one copy in each are anchors: their
/// displacement, the new address minus the old one, is certain. From each anchor, the stretch around it in which both
/// images are the same is followed up to the next ones. A piece inside such a stretch moved with it. For what is left,
/// copies without number, flat pieces and changed ones, the displacements of the stretches before and behind decide: where
/// they agree, or where the bytes there and around there do.
class Placement
{
public:
    /// Looks for the places of \a pieces, which may overlap and lie anywhere, also outside. The time is linear in the images and
    /// the pieces. \a progress may be null; when it is cancelled, the places are of no use.
    Placement(const QByteArray &oldImage, const QByteArray &newImage, const QVector<Piece> &pieces, Progress *progress);

    const QVector<Place> &places() const { return m_places; } ///< By piece.
    /// How far what lies at \a address, or before it as near as possible, has moved.
    qint64 displacementAt(int address) const;

private:
    /// What the search found out about a piece; copies above two are not counted.
    struct Copies
    {
        bool isSearched = false; ///< Short and flat pieces are not: their copies abound.
        int inOld = 0;
        int inNew = 0;
        int positions[2] = {-1, -1}; ///< In the new image.

        bool areUnique() const { return inOld == 1 && inNew == 1; }
    };
    /// Bytes of the old image from begin to end that lie in the new one as they are, displaced.
    struct Stretch
    {
        qint64 begin;
        qint64 end;
        qint64 displacement;
    };

    void search(const QVector<Piece> &pieces, Progress *progress);
    void followAnchors(const QVector<Piece> &pieces);
    void addStretch(const Stretch &stretch);
    Place placeOf(const Piece &piece, const Copies &copies) const;
    Place placeBetween(const Piece &piece, const Copies &copies, const Stretch &before, const Stretch *behind) const;
    Place placeOfCopyless(const Piece &piece, qint64 before, const Stretch *behind) const;
    Place placeAmongCopies(const Piece &piece, const Copies &copies, qint64 displacement) const;

    bool isSearchable(const Piece &piece) const;
    bool isInsideNew(const Piece &piece, qint64 displacement) const;
    bool isEqualAt(const Piece &piece, qint64 displacement) const;
    bool hasEqualSurroundings(const Piece &piece, qint64 displacement) const;
    bool isInTheMiddle(const Piece &piece, const Stretch &stretch) const;
    int equalBytes(const Piece &piece, qint64 displacement) const;
    qint64 followForwards(qint64 from, qint64 to, qint64 displacement) const;
    qint64 followBackwards(qint64 from, qint64 to, qint64 displacement) const;
    Place found(const Piece &piece, qint64 displacement) const;

    QByteArray m_old;
    QByteArray m_new;
    QVector<Copies> m_copies; ///< By piece.
    QVector<Stretch> m_stretches; ///< None inside another, so in the order of both their ends. The first begins at 0.
    QVector<Place> m_places;
};
