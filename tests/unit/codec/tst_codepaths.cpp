// SPDX-License-Identifier: MIT
// The kernels on every instruction set of this machine. tst_decode and tst_encode compare the fastest path with the naive codec;
// this test compares the paths with each other.
#include "codec/decode.h"
#include "codec/encode.h"

#include <QRandomGenerator>
#include <QTest>

class CodePathsTest : public QObject
{
    Q_OBJECT

private slots:
    void bestPathIsAvailable();
    void pathsGiveTheSame_data();
    void pathsGiveTheSame();
};

void CodePathsTest::bestPathIsAvailable()
{
    QVERIFY(hasCodePath(CodePath::Baseline));
    QVERIFY(hasCodePath(bestCodePath()));
    QCOMPARE(bestCodePath() == CodePath::Avx2, hasCodePath(CodePath::Avx2));
}

void CodePathsTest::pathsGiveTheSame_data()
{
    QTest::addColumn<int>("coding");
    const std::pair<const char *, TexelCoding> codings[] = {
        {"rgba32", TexelCoding::Rgba32}, {"rgb5a1", TexelCoding::Rgb5a1}, {"i4", TexelCoding::I4},    {"ia4", TexelCoding::Ia4},
        {"i8", TexelCoding::I8},         {"ia8", TexelCoding::Ia8},       {"ia16", TexelCoding::Ia16}};
    for (const auto &[name, coding] : codings)
        QTest::newRow(name) << int(coding);
}

void CodePathsTest::pathsGiveTheSame()
{
    if (!hasCodePath(CodePath::Avx2))
        QSKIP("This machine has the baseline alone");
    QFETCH(int, coding);
    const auto texels = TexelCoding(coding);
    QRandomGenerator random(64);
    QVector<quint32> noise(1100);
    random.fillRange(noise.data(), noise.size());
    // Every length around the widths of the vectors, at every alignment of the bytes, with a guard behind the last texel.
    for (int count = 0; count <= 1000; count += count < 140 ? 1 : 173) {
        for (int offset = 0; offset < 4; ++offset) {
            const uchar *bytes = reinterpret_cast<const uchar *>(noise.constData()) + offset;
            QVector<QRgb> plain(count + 1, 0x01020304);
            QVector<QRgb> wide = plain;
            decodeColours(texels, bytes, plain.data(), count, CodePath::Baseline);
            decodeColours(texels, bytes, wide.data(), count, CodePath::Avx2);
            QCOMPARE(wide, plain);
            QCOMPARE(wide.last(), QRgb(0x01020304));

            const int size = (count * bitsPerTexel(texels) + 7) / 8;
            QByteArray plainBytes(size + 1, '\x55');
            QByteArray wideBytes = plainBytes;
            const auto *pixels = noise.constData() + offset;
            encodeColours(texels, pixels, count, reinterpret_cast<uchar *>(plainBytes.data()), CodePath::Baseline);
            encodeColours(texels, pixels, count, reinterpret_cast<uchar *>(wideBytes.data()), CodePath::Avx2);
            QCOMPARE(wideBytes, plainBytes);
            QCOMPARE(wideBytes.at(size), '\x55');
        }
    }
}

QTEST_GUILESS_MAIN(CodePathsTest)
#include "tst_codepaths.moc"
