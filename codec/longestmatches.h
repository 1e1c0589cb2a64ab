// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QVector>

/// Bytes that stand a second time further in front: how far, and how many.
struct Match
{
    int distance = 0; ///< 0 when there is none.
    int length = 0;
};

/// For each position of \a bytes, the longest match of at most \a mostLength bytes that begins at most \a mostDistance bytes in
/// front of it; it may reach into itself. Matches of two bytes and less are left out.
QVector<Match> longestMatches(const QByteArray &bytes, int mostDistance, int mostLength);
