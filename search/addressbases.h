// SPDX-License-Identifier: MIT
#pragma once

#include "search/byterange.h"
#include "search/pictureliness.h"
#include "search/worksteps.h"

#include <QHash>
#include <QVector>

#include <memory>

/// A place in the image to which the addresses of a neighbourhood may be relative, and how well its textures look there.
struct AddressBase
{
    qint64 base = 0; ///< What is added to an offset; a multiple of 16, below 0 for RAM addresses.
    double score = 0; ///< From 0 to about 1.
};

/// What was found for one neighbourhood.
struct FoundBase
{
    bool isClear = false; ///< The best base stands clear of all others.
    bool hasBest = false;
    bool hasSecond = false;
    AddressBase best;
    AddressBase second;
};

/// Finds out where in the image the addresses of display lists lead that are no addresses in the image: offsets in a segment, or
/// RAM that the game has loaded from somewhere.
///
/// All references of a neighbourhood share one base. At the right one every texture shows a picture from its first row to its
/// last; a little beside it, each has some rows of what lies before or behind. So the candidates are scored by how much rows
/// resemble the next ones, first all over the image by samples, then exactly around the best places and around the lists
/// themselves, with whose textures they often lie together. What is left is decoded and looked at. A base is clear when most
/// textures look better there than at the places around it, and it stands above all other candidates.
class AddressBases
{
public:
    /// \a commands are the positions of the commands of all lists, ascending: no texture lies over them. All are borrowed.
    AddressBases(const ByteRange &image, const QVector<int> &commands, WorkSteps *steps);
    ~AddressBases();

    /// The base for \a textures, whose addresses are offsets from it, as are the palettes'. Palettes at other places have to be
    /// taken off before. The lists lie from \a listsBegin to \a listsEnd.
    FoundBase find(const QVector<TextureReference> &textures, int listsBegin, int listsEnd);

private:
    struct Candidate
    {
        qint64 base = 0;
        double score = 0; ///< By rows, later by pictures.
        QVector<double> scores; ///< Of each chosen texture, by pictures.
    };
    struct Extent
    {
        qint64 lowest = 0; ///< Bases from here on keep everything in the image.
        qint64 highest = 0;
    };

    void choose(const QVector<TextureReference> &textures);
    Extent extentOf(const QVector<TextureReference> &textures) const;
    const QVector<float> &samplesFor(const RowLikeness &likeness);
    QVector<qint64> promisingBases(const Extent &extent);
    void scoreWindow(qint64 from, qint64 to, QVector<Candidate> *candidates);
    bool coversCommands(qint64 base) const;
    double scoreOf(int chosen, qint64 base) const;
    QVector<Candidate> refined(const Candidate &around, const Extent &extent, double *bestRegion);
    void scorePictures(Candidate *candidate);
    static FoundBase decided(const QVector<Candidate> &candidates);
    static bool isClearOf(const Candidate &best, const Candidate &other);

    ByteRange m_image;
    const QVector<int> &m_commands;
    WorkSteps *m_steps;
    QVector<TextureReference> m_chosen; ///< Those that the scores are taken from.
    std::vector<RowLikeness> m_likeness; ///< Of those.
    QVector<float> m_scores; ///< Of one texture at a row of places.
    QHash<quint64, QVector<float>> m_samples; ///< By kind and row length, sums of what samples of the image are like.
};
