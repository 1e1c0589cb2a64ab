// SPDX-License-Identifier: MIT
#include "search/patternsearch.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

#include <sys/mman.h>
#include <unistd.h>

namespace
{
using Positions = QVector<int>;

/// The reference: the pattern is searched for from the front, each time from the end of the copy before.
Positions copiesNaive(const QByteArray &range, const QByteArray &pattern)
{
    Positions found;
    for (auto from = range.cbegin(); !pattern.isEmpty();) {
        const auto copy = std::search(from, range.cend(), pattern.cbegin(), pattern.cend());
        if (copy == range.cend())
            break;
        found.append(int(copy - range.cbegin()));
        from = copy + pattern.size();
    }
    return found;
}

WorkSteps uninterrupted()
{
    return WorkSteps([] { return false; });
}

ByteRange rangeOf(const QByteArray &bytes)
{
    return {bytes.constData(), bytes.size(), 0};
}

Positions walk(PatternSearch *search, int pattern)
{
    Positions found;
    PatternSearch::Walk walk(pattern);
    for (int position = search->next(&walk); position >= 0; position = search->next(&walk))
        found.append(position);
    return found;
}

QString describe(const QByteArray &range, const QByteArray &pattern)
{
    return QStringLiteral("range of %1 bytes %2, pattern of %3 bytes %4")
        .arg(range.size())
        .arg(QString::fromLatin1(range.left(120).toHex()))
        .arg(pattern.size())
        .arg(QString::fromLatin1(pattern.left(120).toHex()));
}

/// Compares the search with the reference for all patterns at once.
void compareAll(const QByteArray &range, const QVector<QByteArray> &patterns)
{
    WorkSteps steps = uninterrupted();
    PatternSearch search(rangeOf(range), &steps);
    for (const bool firstOnly : {false, true}) {
        search.setPatterns(patterns, firstOnly);
        for (int i = 0; i < patterns.size(); ++i) {
            const Positions expected = copiesNaive(range, patterns.at(i));
            if (firstOnly) {
                PatternSearch::Walk first(i);
                QVERIFY2(search.next(&first) == expected.value(0, -1), qPrintable(describe(range, patterns.at(i))));
            } else {
                QVERIFY2(walk(&search, i) == expected, qPrintable(describe(range, patterns.at(i))));
            }
        }
    }
}

class Bytes
{
public:
    explicit Bytes(quint32 seed) : m_random(seed) { }

    int below(int limit) { return int(m_random.bounded(limit)); }

    QByteArray ofAlphabet(int size, int letters)
    {
        QByteArray bytes(size, '\0');
        for (char &byte : bytes)
            byte = char(m_random.bounded(letters));
        return bytes;
    }

    QByteArray repeated(const QByteArray &tile, int size)
    {
        QByteArray bytes;
        while (bytes.size() < size)
            bytes += tile;
        bytes.truncate(size);
        return bytes;
    }

    /// What images are made of: noise, flat runs, tiles of many periods, few-valued noise, words.
    QByteArray mixed(int size, int longestPart)
    {
        QByteArray bytes;
        while (bytes.size() < size) {
            const int part = 1 + below(longestPart);
            switch (below(6)) {
            case 0: bytes += ofAlphabet(part, 256); break;
            case 1: bytes += QByteArray(part, '\0'); break;
            case 2: bytes += repeated(ofAlphabet(1 << below(4), 256), part); break;
            case 3: bytes += repeated(ofAlphabet(1 + below(70), 4), part); break;
            case 4: bytes += ofAlphabet(part, 2); break;
            default: bytes += repeated(ofAlphabet(16, 256), part); break;
            }
        }
        bytes.truncate(size);
        return bytes;
    }

    /// A part of \a range, at times with a byte changed.
    QByteArray cutFrom(const QByteArray &range, int longest)
    {
        const int size = qMin(range.size(), 1 + below(longest));
        QByteArray pattern = range.mid(below(range.size() - size + 1), size);
        if (below(3) == 0)
            pattern[below(size)] = char(below(3));
        return pattern;
    }

private:
    QRandomGenerator m_random;
};

/// Bytes between two pages that cannot be read: whoever reads one byte too far crashes.
class GuardedBytes
{
public:
    explicit GuardedBytes(const QByteArray &bytes, bool atEnd)
    {
        const size_t page = size_t(sysconf(_SC_PAGESIZE));
        const size_t pages = (size_t(bytes.size()) + page - 1) / page + 1;
        m_length = (pages + 2) * page;
        m_base = static_cast<char *>(mmap(nullptr, m_length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        char *first = m_base + page;
        m_data = atEnd ? first + pages * page - bytes.size() : first;
        std::copy(bytes.cbegin(), bytes.cend(), m_data);
        mprotect(m_base, page, PROT_NONE);
        mprotect(first + pages * page, page, PROT_NONE);
    }
    ~GuardedBytes() { munmap(m_base, m_length); }
    GuardedBytes(const GuardedBytes &) = delete;
    GuardedBytes &operator=(const GuardedBytes &) = delete;

    const char *data() const { return m_data; }

private:
    char *m_base;
    char *m_data;
    size_t m_length;
};
}

class PatternSearchTest : public QObject
{
    Q_OBJECT

private slots:
    void keepsEqualPatternsOnce();
    void findsCopies_data();
    void findsCopies();
    void matchesTheReferenceOnTinyAlphabets();
    void matchesTheReferenceOnMixedContent();
    void matchesTheReferenceOnFrequentPatterns();
    void matchesTheReferenceWhenPositionsRunOut();
    void matchesTheReferenceAtEveryPlaceAndLength();
    void matchesTheReferenceWithManyRuns();
    void readsNoByteBesideTheRange();
    void endsAtEveryInterruption();
    void listsMaximalRuns_data();
    void listsMaximalRuns();
    void listsAllLongRuns();
    void dropsShortRunsWhenThereAreTooMany();
    void findsTheLongestRun();
};

void PatternSearchTest::keepsEqualPatternsOnce()
{
    PatternBatch batch;
    QCOMPARE(batch.add("abc"), 0);
    QCOMPARE(batch.add(QByteArray()), -1);
    QCOMPARE(batch.add("abd"), 1);
    QCOMPARE(batch.add("abc"), 0);
    QCOMPARE(batch.patterns(), (QVector<QByteArray> {"abc", "abd"}));
    QCOMPARE(batch.bytes(), 6);
}

/// A mark ^ stands before each copy expected in the range.
void PatternSearchTest::findsCopies_data()
{
    QTest::addColumn<QByteArray>("marked");
    QTest::addColumn<QByteArray>("pattern");
    QTest::newRow("copies do not overlap") << QByteArray("^aa^aaa") << QByteArray("aa");
    QTest::newRow("scan resumes behind the copy") << QByteArray("^abababa") << QByteArray("ababa");
    QTest::newRow("copy ends on the last byte") << QByteArray("xxxx^abc") << QByteArray("abc");
    QTest::newRow("copy begins on the first byte") << QByteArray("^abcx") << QByteArray("abc");
    QTest::newRow("the whole range") << QByteArray("^abcd") << QByteArray("abcd");
    QTest::newRow("pattern longer than range") << QByteArray("ab") << QByteArray("abc");
    QTest::newRow("empty range") << QByteArray("") << QByteArray("a");
    QTest::newRow("empty pattern") << QByteArray("aaa") << QByteArray("");
    QTest::newRow("one byte") << QByteArray("b^ab^a^a") << QByteArray("a");
    const QByteArray word("0123456789abcdef");
    QTest::newRow("16 bytes, unaligned") << QByteArray("x^" + word + "yyy^" + word) << word;
    const QByteArray zeros(100, '\0');
    QTest::newRow("flat, fits twice") << QByteArray("x^" + zeros + "^" + zeros + zeros.left(99)) << zeros;
    QTest::newRow("flat with an end") << QByteArray(zeros + "^" + zeros + "e" + "^" + zeros + "e") << QByteArray(zeros + "e");
    QTest::newRow("flat with a start") << QByteArray("^s" + zeros + zeros + "^s" + zeros) << QByteArray("s" + zeros);
    QTest::newRow("flat inside") << QByteArray("s" + zeros + zeros + "e^s" + zeros + "e" + "s" + zeros.left(99) + "e")
                                 << QByteArray("s" + zeros + "e");
}

void PatternSearchTest::findsCopies()
{
    QFETCH(QByteArray, marked);
    QFETCH(QByteArray, pattern);
    QByteArray range;
    Positions expected;
    for (const char byte : qAsConst(marked)) {
        if (byte == '^')
            expected.append(range.size());
        else
            range.append(byte);
    }
    QCOMPARE(copiesNaive(range, pattern), expected);
    WorkSteps steps = uninterrupted();
    PatternSearch search(rangeOf(range), &steps);
    search.setPatterns({pattern}, false);
    QCOMPARE(walk(&search, 0), expected);
}

void PatternSearchTest::matchesTheReferenceOnTinyAlphabets()
{
    Bytes bytes(1);
    for (int round = 0; round < 4000; ++round) {
        const int letters = 1 + bytes.below(3);
        const QByteArray range = bytes.ofAlphabet(bytes.below(400), letters);
        QVector<QByteArray> patterns;
        for (int i = bytes.below(8); i >= 0; --i) {
            patterns.append(bytes.below(2) || range.isEmpty() ? bytes.ofAlphabet(1 + bytes.below(40), letters)
                                                              : bytes.cutFrom(range, 40));
        }
        compareAll(range, patterns);
        if (QTest::currentTestFailed())
            return;
    }
}

void PatternSearchTest::matchesTheReferenceOnMixedContent()
{
    Bytes bytes(2);
    for (int round = 0; round < 600; ++round) {
        const QByteArray range = bytes.mixed(1 + bytes.below(6000), 1 + bytes.below(900));
        QVector<QByteArray> patterns;
        for (int i = bytes.below(24); i >= 0; --i)
            patterns.append(bytes.below(8) ? bytes.cutFrom(range, 1 << (3 + bytes.below(9))) : bytes.mixed(100, 50));
        compareAll(range, patterns);
        if (QTest::currentTestFailed())
            return;
    }
}

/// Patterns of what the range is full of, so that the sweep refuses some at once and drops others on the way.
void PatternSearchTest::matchesTheReferenceOnFrequentPatterns()
{
    Bytes bytes(3);
    for (int round = 0; round < 12; ++round) {
        const QByteArray tile = bytes.ofAlphabet(16 + bytes.below(60), 2 + bytes.below(255));
        const int tiled = 1000 + bytes.below(120000);
        QByteArray range = bytes.ofAlphabet(bytes.below(150000), 256) + bytes.repeated(tile, tiled)
            + bytes.repeated(bytes.ofAlphabet(4, 2), 40000) + bytes.ofAlphabet(bytes.below(90000), 3);
        for (int i = 0; i < 40; ++i)
            range[bytes.below(range.size())] = char(bytes.below(2));
        QVector<QByteArray> patterns;
        for (int size : {16, 33, 64, 100, 128, 500, 512, 1024, 4096}) {
            QByteArray pattern = bytes.repeated(tile, size);
            patterns.append(pattern);
            pattern[bytes.below(size)] = char(bytes.below(256));
            patterns.append(pattern);
            patterns.append(bytes.cutFrom(range, size));
            patterns.append(bytes.repeated(bytes.ofAlphabet(4, 2), size));
        }
        compareAll(range, patterns);
        if (round < 2) {
            for (const QByteArray &pattern : qAsConst(patterns)) // Alone, for the wide strides.
                compareAll(range, {pattern});
        }
        if (QTest::currentTestFailed())
            return;
    }
}

/// More copies than a batch keeps: the rest is found one by one.
void PatternSearchTest::matchesTheReferenceWhenPositionsRunOut()
{
    Bytes bytes(4);
    const QByteArray sprite = bytes.ofAlphabet(40, 256);
    QByteArray range;
    for (int i = 0; i < 3000; ++i)
        range += sprite + bytes.ofAlphabet(bytes.below(5), 256);
    QVector<QByteArray> patterns;
    for (int size : {15, 16, 20, 24, 31, 32, 40})
        patterns << sprite.left(size) << sprite.right(size);
    compareAll(range, patterns);
}

/// One pattern, at every position and of every length around the strides.
void PatternSearchTest::matchesTheReferenceAtEveryPlaceAndLength()
{
    Bytes bytes(5);
    const QByteArray noise = bytes.ofAlphabet(5000, 256);
    for (int size : {7, 8, 9, 14, 15, 16, 17, 22, 23, 24, 30, 31, 32, 62, 63, 64, 126, 127, 128, 455, 456, 457, 967, 968, 4040}) {
        QVector<QByteArray> patterns;
        const int last = noise.size() - size;
        for (int start = 0; start <= last; start += start < 130 || start > last - 130 ? 1 : 97)
            patterns.append(noise.mid(start, size));
        compareAll(noise, patterns);
        for (const QByteArray &pattern : qAsConst(patterns).mid(0, 130)) // Alone, for the wide strides.
            compareAll(noise, {pattern});
        if (QTest::currentTestFailed())
            return;
    }
}

void PatternSearchTest::matchesTheReferenceWithManyRuns()
{
    Bytes bytes(6);
    QByteArray range;
    QVector<QByteArray> patterns;
    for (int i = 0; i < 4000; ++i) {
        range += bytes.repeated(bytes.ofAlphabet(1 << bytes.below(4), 2), 60 + bytes.below(30));
        range += bytes.ofAlphabet(bytes.below(4), 3);
    }
    for (int i = 0; i < 60; ++i) {
        patterns << bytes.cutFrom(range, 150);
        patterns << bytes.repeated(bytes.ofAlphabet(1 << bytes.below(4), 2), 60 + bytes.below(90));
    }
    range += QByteArray(100000, '\0') + 'x' + QByteArray(3000, '\0');
    patterns << QByteArray(512, '\0') << QByteArray(300, '\0') + 'x' << 'x' + QByteArray(300, '\0') << QByteArray(65, '\0') + 'y'
             << QByteArray(300, '\0') + 'x' + QByteArray(300, '\0') << QByteArray(3000, '\0') + 'x' << QByteArray(128, '\0');
    compareAll(range, patterns);
}

void PatternSearchTest::readsNoByteBesideTheRange()
{
    Bytes bytes(7);
    for (int round = 0; round < 400; ++round) {
        const QByteArray content = bytes.mixed(1 + bytes.below(3000), 400);
        const GuardedBytes guarded(content, round % 2);
        WorkSteps steps = uninterrupted();
        PatternSearch search({guarded.data(), content.size(), 0}, &steps);
        QVector<QByteArray> patterns {content.left(70), content.right(70), content, content.right(9), content.right(1)};
        for (int i = 0; i < 10; ++i)
            patterns.append(bytes.cutFrom(content, 300));
        search.setPatterns(patterns, false);
        for (int i = 0; i < patterns.size(); ++i)
            QCOMPARE(walk(&search, i), copiesNaive(content, patterns.at(i)));
    }
}

/// Interrupted at its n-th question, the search has found a beginning of what it would find, and finds nothing more.
void PatternSearchTest::endsAtEveryInterruption()
{
    Bytes bytes(8);
    const QByteArray range = bytes.ofAlphabet(900000, 256) + QByteArray(1500000, '\0') + bytes.ofAlphabet(900000, 2);
    const QVector<QByteArray> patterns {range.mid(1000, 600), QByteArray(4096, '\0'), QByteArray(700, '\0') + '\1',
                                        QByteArray("\1\0\1", 3), range.mid(2500000, 90)};
    QVector<Positions> expected;
    for (const QByteArray &pattern : patterns)
        expected.append(copiesNaive(range, pattern));
    int questions = 0;
    for (int limit = 0;; ++limit) {
        questions = 0;
        WorkSteps steps([&questions, limit] { return questions++ >= limit; });
        PatternSearch search(rangeOf(range), &steps);
        search.setPatterns(patterns, false);
        for (int i = 0; i < patterns.size(); ++i) {
            const Positions found = walk(&search, i);
            QVERIFY(found.size() <= expected.at(i).size());
            QVERIFY(std::equal(found.cbegin(), found.cend(), expected.at(i).cbegin()));
            if (!steps.isCancelled())
                QCOMPARE(found.size(), expected.at(i).size());
        }
        QVERIFY(questions <= limit + 1); // Once answered, it asks no more.
        if (!steps.isCancelled())
            break;
        QVERIFY(limit < 1000);
    }
    QVERIFY(questions > 5);
}

void PatternSearchTest::listsMaximalRuns_data()
{
    QTest::addColumn<QByteArray>("range");
    QTest::addColumn<QVector<int>>("ends"); // begin, end, begin, end ...
    const QByteArray noise = QByteArray("0123456789abcdefghijklmnopqrstuvwxyz").repeated(1);
    const QByteArray zeros(64, '\0');
    QTest::newRow("none") << noise << QVector<int> {};
    QTest::newRow("nothing") << QByteArray() << QVector<int> {};
    QTest::newRow("all") << zeros << QVector<int> {0, 64};
    QTest::newRow("too short") << zeros.left(47) << QVector<int> {};
    QTest::newRow("just long enough") << zeros.left(48) << QVector<int> {0, 48};
    QTest::newRow("inside") << noise + zeros + noise << QVector<int> {36, 100};
    QTest::newRow("two") << noise + zeros + "!" + zeros << QVector<int> {36, 100, 101, 165};
    QTest::newRow("words of eight") << noise + QByteArray("abcdefgh").repeated(20) + "abc?" << QVector<int> {36, 199};
    QTest::newRow("neighbours share bytes") << QByteArray("abababab").repeated(10) + QByteArray("abcd").repeated(20)
                                            << QVector<int> {0, 82, 80, 160};
}

void PatternSearchTest::listsMaximalRuns()
{
    QFETCH(QByteArray, range);
    QFETCH(QVector<int>, ends);
    WorkSteps steps = uninterrupted();
    PeriodicRuns runs;
    QVERIFY(runs.build(rangeOf(range), &steps));
    QVector<int> found;
    for (const PeriodicRun &run : runs.runs())
        found << run.begin << run.end;
    QCOMPARE(found, ends);
}

void PatternSearchTest::listsAllLongRuns()
{
    Bytes bytes(10);
    for (int round = 0; round < 300; ++round) {
        const QByteArray range = bytes.mixed(bytes.below(4000), 200);
        QVector<int> expected;
        for (int begin = 0; begin + 8 <= range.size();) {
            int end = begin + 8;
            while (end < range.size() && range.at(end) == range.at(end - 8))
                ++end;
            if (end - begin >= 48)
                expected << begin << end;
            begin = end - 7;
        }
        WorkSteps steps = uninterrupted();
        PeriodicRuns runs;
        QVERIFY(runs.build(rangeOf(range), &steps));
        QVector<int> found;
        for (const PeriodicRun &run : runs.runs())
            found << run.begin << run.end;
        QCOMPARE(found, expected);
    }
}

void PatternSearchTest::dropsShortRunsWhenThereAreTooMany()
{
    const QByteArray range = (QByteArray(70, 'a') + QByteArray(70, 'b')).repeated(2000) + QByteArray(1000, 'c');
    WorkSteps steps = uninterrupted();
    PeriodicRuns runs;
    QVERIFY(runs.build(rangeOf(range), &steps));
    QCOMPARE(runs.minimumLength(), 96);
    QVERIFY(runs.runs().size() >= 1);
    QVERIFY(runs.runs().size() <= range.size() / 256 + 65);
    QCOMPARE(runs.runs().last().begin, range.size() - 1000);
    compareAll(range, {QByteArray(70, 'a'), QByteArray(70, 'b') + 'a', QByteArray(500, 'c'), QByteArray(65, 'c')});
}

void PatternSearchTest::findsTheLongestRun()
{
    const auto longest = [](const QByteArray &bytes) {
        const PeriodicRun run = longestPeriodicRun(bytes.constData(), bytes.size());
        return QVector<int> {run.begin, run.end};
    };
    QCOMPARE(longest("abc"), (QVector<int> {0, 0}));
    QCOMPARE(longest(QByteArray(90, 'x')), (QVector<int> {0, 90}));
    QCOMPARE(longest("ab" + QByteArray(90, 'x') + "c"), (QVector<int> {2, 92}));
    QCOMPARE(longest(QByteArray(40, 'x') + "c" + QByteArray(50, 'y')), (QVector<int> {41, 91}));
}

QTEST_GUILESS_MAIN(PatternSearchTest)
#include "tst_patternsearch.moc"
