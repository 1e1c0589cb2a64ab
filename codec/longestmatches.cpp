// SPDX-License-Identifier: MIT
#include "codec/longestmatches.h"

#include <QtEndian>

#include <cstring>

namespace
{
/// The number of bytes from \a known on that \a a and \a b have in common, at most \a most.
int commonLength(const char *a, const char *b, int known, int most)
{
    int length = known;
    for (; length + 8 <= most; length += 8) {
        quint64 wordOfA = 0;
        quint64 wordOfB = 0;
        std::memcpy(&wordOfA, a + length, 8);
        std::memcpy(&wordOfB, b + length, 8);
        if (wordOfA != wordOfB)
            break;
    }
    while (length < most && a[length] == b[length])
        ++length;
    return length;
}

/// The positions of the window as binary trees, one for each pair of first bytes, in the order of the bytes that follow. The
/// newest position is the root, and every child is older than its parent; so the path that a new position takes from the root
/// down meets the longest match, and what has left the window hangs below all that has not. A node is a slot in a ring of the
/// window's size.
class MatchTrees
{
public:
    MatchTrees(const QByteArray &bytes, int mostDistance, int mostLength)
        : m_bytes(bytes.constData()), m_size(bytes.size()), m_window(mostDistance), m_mostLength(mostLength),
          m_roots(0x10000, none), m_children(2 * (mostDistance + 1), none)
    {
    }

    /// Takes in \a position, the one after the last, and returns its longest match.
    Match add(int position)
    {
        Match found;
        const int most = qMin(m_mostLength, m_size - position);
        if (most < 3)
            return found; // Too near the end for a match, as are all that follow.
        const char *const here = m_bytes + position;
        int *root = &m_roots[qFromBigEndian<quint16>(here)];
        int node = *root;
        *root = position;
        // Where what is smaller, and what is greater, than all that has been met so far is to be hung up.
        int *smaller = child(position, 0);
        int *greater = child(position, 1);
        int commonWithSmaller = 2;
        int commonWithGreater = 2;
        while (node >= 0 && position - node <= m_window) {
            const char *const there = m_bytes + node;
            const int length = commonLength(here, there, qMin(commonWithSmaller, commonWithGreater), most);
            if (length > found.length)
                found = {position - node, length};
            if (length == most) {
                // As good as equal: the new one takes its place.
                *smaller = *child(node, 0);
                *greater = *child(node, 1);
                return found;
            }
            if (uchar(there[length]) < uchar(here[length])) {
                *smaller = node;
                smaller = child(node, 1);
                commonWithSmaller = length;
                node = *smaller;
            } else {
                *greater = node;
                greater = child(node, 0);
                commonWithGreater = length;
                node = *greater;
            }
        }
        *smaller = none;
        *greater = none;
        return found;
    }

private:
    static constexpr int none = -1;

    int *child(int position, int side) { return &m_children[2 * (position % (m_window + 1)) + side]; }

    const char *m_bytes;
    int m_size;
    int m_window;
    int m_mostLength;
    QVector<int> m_roots;
    QVector<int> m_children;
};
}

QVector<Match> longestMatches(const QByteArray &bytes, int mostDistance, int mostLength)
{
    QVector<Match> matches(bytes.size());
    MatchTrees trees(bytes, mostDistance, mostLength);
    for (int position = 0; position < bytes.size(); ++position) {
        const Match match = trees.add(position);
        if (match.length >= 3)
            matches[position] = match;
    }
    return matches;
}
