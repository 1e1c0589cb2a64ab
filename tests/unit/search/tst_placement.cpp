// SPDX-License-Identifier: MIT
#include "search/placement.h"

#include "base/progress.h"
#include "support/revisions.h"

#include <QTest>

Q_DECLARE_METATYPE(PlaceState)

namespace
{
const char *nameOf(PlaceState state)
{
    static const char *const names[] = {"same", "moved", "ambiguous", "changed", "missing"};
    return names[int(state)];
}

bool isSure(const Place &place)
{
    return place.state == PlaceState::Same || place.state == PlaceState::Moved;
}

class PlacementTest : public QObject
{
    Q_OBJECT

private slots:
    /// Each case by hand: old and new image, one piece, where it goes. Letters stand for stretches of bytes of their own, in both
    /// images; "0" is a stretch of zeros. Each is 256 bytes long, a capital; small letters are 16 bytes.
    void cases_data()
    {
        QTest::addColumn<QString>("oldImage");
        QTest::addColumn<QString>("newImage");
        QTest::addColumn<int>("begin");
        QTest::addColumn<int>("size");
        QTest::addColumn<PlaceState>("state");
        QTest::addColumn<int>("address");
        const auto row = [](const char *name, const char *before, const char *now, int begin, int size, PlaceState state,
                            int address) {
            QTest::newRow(name) << QString(before) << QString(now) << begin << size << state << address;
        };
        row("same", "ABC", "ABC", 0x100, 0x100, PlaceState::Same, 0x100);
        row("moved", "ABC", "AXBC", 0x100, 0x100, PlaceState::Moved, 0x200);
        row("changed places", "ABCD", "ACBD", 0x100, 0x100, PlaceState::Moved, 0x200);
        row("twins, in front of an insertion", "ABCBD", "ABXCBD", 0x100, 0x100, PlaceState::Same, 0x100);
        row("twins, behind an insertion", "ABCBD", "ABXCBD", 0x300, 0x100, PlaceState::Moved, 0x400);
        row("of twins, this one was changed", "ABCDBE", "AXCDBE", 0x100, 0x100, PlaceState::Changed, 0x100);
        row("now there are two", "ABCDE", "ABCBDE", 0x100, 0x100, PlaceState::Same, 0x100);
        row("flat, with its neighbours", "A0BCDE", "XA0BCDE", 0x100, 0x100, PlaceState::Moved, 0x200);
        row("flat, at the border of what moved", "A0B", "A00B", 0x100, 0x100, PlaceState::Ambiguous, 0x100);
        row("flat, between changes", "AB0CD", "AX0YD", 0x200, 0x100, PlaceState::Ambiguous, 0x200);
        row("changed between neighbours that stayed", "ABC", "AXC", 0x100, 0x100, PlaceState::Changed, 0x100);
        row("changed between neighbours that moved", "ABCDE", "YABXDE", 0x200, 0x100, PlaceState::Changed, 0x300);
        row("left out", "ABCDE", "ABDE", 0x200, 0x100, PlaceState::Missing, -1);
        row("short, with its neighbours", "AbC", "XAbC", 0x100, 8, PlaceState::Moved, 0x200);
        row("short and elsewhere alone", "ABcDEF", "ABDEFc", 0x200, 0x10, PlaceState::Ambiguous, 0x500);
        row("nothing in front", "AB", "XB", 0, 0x100, PlaceState::Changed, 0);
        row("outside", "AB", "AB", 0x180, 0x100, PlaceState::Missing, -1);
        row("far outside", "AB", "AB", 0x7FFFFF00, 0x7FFFFFFF, PlaceState::Missing, -1);
        row("before the image", "AB", "AB", -1, 0x10, PlaceState::Missing, -1);
        row("empty", "AB", "AB", 0x10, 0, PlaceState::Missing, -1);
        row("of no size", "AB", "AB", 0x10, -2, PlaceState::Missing, -1);
        row("an empty new image", "AB", "", 0x100, 0x100, PlaceState::Missing, -1);
        row("all of it", "AB", "AB", 0, 0x200, PlaceState::Same, 0);
    }

    void cases()
    {
        QFETCH(QString, oldImage);
        QFETCH(QString, newImage);
        QFETCH(int, begin);
        QFETCH(int, size);
        QFETCH(PlaceState, state);
        QFETCH(int, address);
        const auto bytesOf = [](const QString &letters) {
            QByteArray bytes;
            for (const QChar letter : letters) {
                QRandomGenerator random(letter.toUpper().unicode());
                bytes += letter == '0' ? QByteArray(256, '\0') : revisions::noise(&random, letter.isLower() ? 16 : 256);
            }
            return bytes;
        };
        // All other stretches are pieces as well, but those that the one asked about touches.
        QVector<Piece> pieces {{begin, size}};
        int end = 0;
        for (const QChar letter : oldImage) {
            const int length = letter.isLower() ? 16 : 256;
            if (letter != '0' && (end + length <= begin || end >= qint64(begin) + size))
                pieces.append({end, length});
            end += length;
        }
        const Placement placement(bytesOf(oldImage), bytesOf(newImage), pieces, nullptr);
        QCOMPARE(nameOf(placement.places().first().state), nameOf(state));
        QCOMPARE(placement.places().first().address, address);
    }

    /// Any number of entries as large as the image costs no more than a few of them.
    void hugePiecesCostLittle()
    {
        QRandomGenerator random(1);
        const QByteArray image = revisions::noise(&random, 1 << 20);
        QVector<Piece> pieces;
        for (int i = 0; i < 100000; ++i)
            pieces.append({i, image.size() - i});
        pieces.append({50, 100});
        const Placement placement(image, image, pieces, nullptr);
        QCOMPARE(placement.places().first().state == PlaceState::Same, true);
        QCOMPARE(placement.places().last().state == PlaceState::Same, true);
        QCOMPARE(placement.places().at(50000).state == PlaceState::Missing, true);
    }

    /// Of all that is still there, at least 99 of 100 are placed right, and what is wrong is never called found.
    void madeRevisions_data()
    {
        QTest::addColumn<int>("textures");
        QTest::addColumn<int>("parts");
        for (int seed = 0; seed < 8; ++seed)
            QTest::addRow("%d", seed) << 700 + 100 * seed << 6 + 8 * seed;
    }

    void madeRevisions()
    {
        QFETCH(int, textures);
        QFETCH(int, parts);
        const revisions::Revision revision = revisions::made(quint32(parts), textures, 400, parts);
        QVector<Piece> pieces;
        for (const revisions::Texture &texture : revision.textures)
            pieces.append({texture.begin, texture.size});
        const Placement placement(revision.oldImage, revision.newImage, pieces, nullptr);
        int findable = 0;
        int right = 0;
        int sure = 0;
        for (int i = 0; i < pieces.size(); ++i) {
            const Place &place = placement.places().at(i);
            const bool isRight = place.address == revision.truth.at(i) || place.address == revision.otherTruth.at(i);
            if (revision.isIntact.at(i)) {
                ++findable;
                right += isRight ? 1 : 0;
                sure += isRight && isSure(place) ? 1 : 0;
            }
            if (!isSure(place))
                continue;
            QVERIFY2(isRight,
                     qPrintable(QStringLiteral("%1 at %2, %3 bytes: %4 at %5, not %6")
                                    .arg(i)
                                    .arg(pieces.at(i).begin)
                                    .arg(pieces.at(i).size)
                                    .arg(nameOf(place.state))
                                    .arg(place.address)
                                    .arg(revision.truth.at(i))));
            QCOMPARE(place.state == PlaceState::Same, place.address == pieces.at(i).begin);
            QVERIFY(revision.newImage.mid(place.address, pieces.at(i).size)
                    == revision.oldImage.mid(pieces.at(i).begin, pieces.at(i).size));
        }
        qInfo("%d textures, %d intact, %d right, %d of them sure", textures, findable, right, sure);
        QVERIFY2(right * 100 >= findable * 99, qPrintable(QStringLiteral("%1 of %2").arg(right).arg(findable)));
        QVERIFY(sure * 100 >= findable * 97);
    }
};
}

QTEST_GUILESS_MAIN(PlacementTest)
#include "tst_placement.moc"
