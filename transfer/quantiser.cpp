// SPDX-License-Identifier: MIT
#include "transfer/quantiser.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace
{
constexpr int levels = 32; ///< Of one channel.
constexpr int channels = 3;

/// A colour of the picture and how many pixels have it.
struct Point
{
    std::array<qint32, channels> value;
    qint64 weight;
};

Point pointOf(int colour, quint32 weight)
{
    return {{colour >> 10 & 31, colour >> 5 & 31, colour & 31}, qint64(weight)};
}

int colourAt(const std::array<qint32, channels> &value)
{
    return value[0] << 10 | value[1] << 5 | value[2];
}

/// Sums over some points, from which their squared error follows: the sum of their squared distances to their mean.
struct Moments
{
    qint64 weight = 0;
    std::array<qint64, channels> sum {};
    qint64 squares = 0;

    void add(const Point &point)
    {
        weight += point.weight;
        for (size_t c = 0; c < channels; ++c) {
            sum[c] += point.weight * point.value[c];
            squares += point.weight * point.value[c] * point.value[c];
        }
    }

    void add(const Moments &other)
    {
        weight += other.weight;
        squares += other.squares;
        for (size_t c = 0; c < channels; ++c)
            sum[c] += other.sum[c];
    }

    double error() const
    {
        if (weight == 0)
            return 0;
        double ofMean = 0;
        for (const qint64 one : sum)
            ofMean += double(one) * double(one);
        return double(squares) - ofMean / double(weight);
    }
};

/// The points [begin, end) of the list, and the best way to split them in two by one channel.
struct Box
{
    int begin = 0;
    int end = 0;
    Moments moments;
    double gain = -1; ///< Squared error that the split saves; negative for a box of one colour.
    size_t channel = 0;
    int limit = 0; ///< Points below this value of the channel form the first half.
};

/// Splits the box of greatest gain again and again. As in Wu's method the cut is where the squared errors of both halves have the
/// least sum; with 32 levels a channel, the sums of each level are enough to try all cuts of a box in one pass over its points.
class BoxSplitter
{
public:
    explicit BoxSplitter(QVector<Point> *points) : m_points(*points) { }

    QVector<Box> split(int most)
    {
        QVector<Box> boxes {measured(0, m_points.size())};
        while (boxes.size() < most) {
            const auto best =
                std::max_element(boxes.begin(), boxes.end(), [](const Box &a, const Box &b) { return a.gain < b.gain; });
            if (best->gain < 0)
                break;
            const Box whole = *best;
            const auto middle =
                std::stable_partition(m_points.begin() + whole.begin, m_points.begin() + whole.end,
                                      [&whole](const Point &point) { return point.value[whole.channel] < whole.limit; });
            const int cut = int(middle - m_points.begin());
            *best = measured(whole.begin, cut);
            boxes.append(measured(cut, whole.end));
        }
        return boxes;
    }

private:
    Box measured(int begin, int end) const
    {
        Box box;
        box.begin = begin;
        box.end = end;
        std::array<std::array<Moments, levels>, channels> ofLevel;
        for (int i = begin; i < end; ++i) {
            const Point &point = m_points.at(i);
            box.moments.add(point);
            for (size_t c = 0; c < channels; ++c)
                ofLevel[c][size_t(point.value[c])].add(point);
        }
        for (size_t c = 0; c < channels; ++c)
            findCut(ofLevel[c], c, &box);
        return box;
    }

    static void findCut(const std::array<Moments, levels> &ofLevel, size_t channel, Box *box)
    {
        std::array<Moments, levels> behind; // Of the levels from the place on.
        behind[levels - 1] = ofLevel[levels - 1];
        for (size_t i = levels - 1; i-- > 0;) {
            behind[i] = behind[i + 1];
            behind[i].add(ofLevel[i]);
        }
        Moments before;
        for (size_t i = 1; i < levels; ++i) {
            before.add(ofLevel[i - 1]);
            if (before.weight == 0 || behind[i].weight == 0)
                continue;
            const double gain = box->moments.error() - before.error() - behind[i].error();
            if (gain > box->gain) {
                box->gain = gain;
                box->channel = channel;
                box->limit = int(i);
            }
        }
    }

    QVector<Point> &m_points;
};

/// Moves colours to the means of the points that are nearest to them (Lloyd's k-means). Colours are whole numbers with 8
/// bits behind the binary point.
class MeanSteps
{
public:
    static constexpr qint32 one = 256;

    MeanSteps(const QVector<Point> &points, const QVector<Box> &boxes) : m_points(points)
    {
        for (const Box &box : boxes)
            m_centres.append(meanOf(box.moments));
    }

    QVector<std::array<qint32, channels>> run()
    {
        // What remains to be gained after as many steps is below a hundredth, as benchmarks show.
        constexpr int mostSteps = 10;
        for (int i = 0; i < mostSteps && step(); ++i) { }
        return m_centres;
    }

private:
    using Centre = std::array<qint32, channels>;

    static Centre meanOf(const Moments &moments)
    {
        Centre mean;
        for (size_t c = 0; c < channels; ++c)
            mean[c] = qint32((moments.sum[c] * one + moments.weight / 2) / moments.weight);
        return mean;
    }

    /// Returns whether a centre has moved.
    bool step()
    {
        // Along the first channel, so that the search from a point's own place outward can stop early.
        std::sort(m_centres.begin(), m_centres.end());
        QVector<Moments> nearest(m_centres.size());
        int near = 0;
        for (const Point &point : m_points) {
            near = nearestCentre(point, near);
            nearest[near].add(point);
        }
        bool moved = false;
        for (int i = 0; i < m_centres.size(); ++i) {
            if (nearest.at(i).weight == 0)
                continue;
            const Centre mean = meanOf(nearest.at(i));
            moved = moved || mean != m_centres.at(i);
            m_centres[i] = mean;
        }
        return moved;
    }

    /// The centre nearest to \a point, searched up and down the sorted list from \a start until the first channel alone is too
    /// far.
    int nearestCentre(const Point &point, int start) const
    {
        const qint32 red = point.value[0] * one;
        const qint32 green = point.value[1] * one;
        const qint32 blue = point.value[2] * one;
        const Centre *centres = m_centres.constData();
        qint32 least = std::numeric_limits<qint32>::max();
        int found = start;
        const auto look = [&](int i) {
            const qint32 r = centres[i][0] - red;
            const qint32 g = centres[i][1] - green;
            const qint32 b = centres[i][2] - blue;
            const qint32 distance = r * r + g * g + b * b; // At most 3 * 7936 squared, which fits.
            if (distance < least || (distance == least && i < found)) {
                least = distance;
                found = i;
            }
            return r * r;
        };
        const int count = m_centres.size();
        for (int i = start; i < count; ++i) {
            if (look(i) > least && centres[i][0] > red)
                break;
        }
        for (int i = start - 1; i >= 0; --i) {
            if (look(i) > least && centres[i][0] < red)
                break;
        }
        return found;
    }

    const QVector<Point> &m_points;
    QVector<Centre> m_centres;
};

qint32 squaredDistance(const std::array<qint32, channels> &a, const std::array<qint32, channels> &b)
{
    qint32 sum = 0;
    for (size_t c = 0; c < channels; ++c)
        sum += (a[c] - b[c]) * (a[c] - b[c]);
    return sum;
}

/// Adds to \a colours, of which rounding may have made several the same, the points that they show worst, until there are \a
/// most.
void fillUp(QVector<std::array<qint32, channels>> *colours, const QVector<Point> &points, int most)
{
    QVector<qint32> distance(points.size(), std::numeric_limits<qint32>::max());
    int seen = 0;
    while (colours->size() < most) {
        qint64 worst = 0;
        int worstPoint = -1;
        for (int i = 0; i < points.size(); ++i) {
            for (int c = seen; c < colours->size(); ++c)
                distance[i] = std::min(distance.at(i), squaredDistance(points.at(i).value, colours->at(c)));
            const qint64 error = distance.at(i) * points.at(i).weight;
            if (error > worst) {
                worst = error;
                worstPoint = i;
            }
        }
        if (worstPoint < 0)
            return;
        seen = colours->size();
        colours->append(points.at(worstPoint).value);
    }
}
}

QVector<quint16> quantisedColours(const QVector<quint32> &pixelsOf, int most)
{
    QVector<Point> points;
    for (int colour = 0; colour < pixelsOf.size(); ++colour) {
        if (pixelsOf.at(colour) > 0)
            points.append(pointOf(colour, pixelsOf.at(colour)));
    }
    QVector<std::array<qint32, channels>> colours;
    if (points.size() <= most) {
        for (const Point &point : qAsConst(points))
            colours.append(point.value);
    } else {
        const QVector<Box> boxes = BoxSplitter(&points).split(most);
        const QVector<std::array<qint32, channels>> centres = MeanSteps(points, boxes).run();
        for (std::array<qint32, channels> centre : centres) {
            for (qint32 &value : centre)
                value = (value + MeanSteps::one / 2) / MeanSteps::one;
            if (!colours.contains(centre))
                colours.append(centre);
        }
        fillUp(&colours, points, most);
    }
    QVector<quint16> result;
    result.reserve(colours.size());
    for (const std::array<qint32, channels> &value : qAsConst(colours))
        result.append(quint16(colourAt(value)));
    std::sort(result.begin(), result.end());
    return result;
}

int nearestColour(quint16 colour, const QVector<quint16> &choices)
{
    const Point wanted = pointOf(colour, 1);
    qint32 least = std::numeric_limits<qint32>::max();
    int found = 0;
    for (int i = 0; i < choices.size(); ++i) {
        const qint32 distance = squaredDistance(wanted.value, pointOf(choices.at(i), 1).value);
        if (distance < least) {
            least = distance;
            found = i;
        }
    }
    return found;
}
