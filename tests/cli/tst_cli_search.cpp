// SPDX-License-Identifier: MIT
#include "profilefolder.h"

#include "codec/compressedblock.h"
#include "support/images.h"

#include <QImage>
#include <QJsonArray>

#include <sys/stat.h>

namespace
{
/// A picture with no two pixels alike, whose red is what the intensity formats store.
QImage picture(int seed)
{
    QImage image(4, 4, QImage::Format_ARGB32);
    for (int i = 0; i < 16; ++i)
        image.setPixel(i % 4, i / 4, qRgba((i * 16 + seed) % 256, 255 - i, seed, 255));
    return image;
}

QByteArray bytesI8(int seed)
{
    QByteArray bytes;
    for (int i = 0; i < 16; ++i)
        bytes.append(char(i * 16 + seed));
    return bytes;
}

QByteArray bytesRgba32(int seed)
{
    QByteArray bytes;
    for (int i = 0; i < 16; ++i)
        bytes.append(char(i * 16 + seed)).append(char(255 - i)).append(char(seed)).append('\xFF');
    return bytes;
}

class SearchCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QByteArray image = cartridgeImage(0x8000);
        image.replace(0x1003, 16, bytesI8(1));
        image.replace(0x2000, 64, bytesRgba32(1));
        image.replace(0x4000, 16, bytesI8(1));
        image.replace(0x5000, 64, bytesRgba32(2));
        m_folder.reset(new ProfileFolder(image));
        m_folder->addProfile("<directory name=\"D\" address=\"0x2000\" size=\"0x2010\"/>");
        QDir().mkpath(m_folder->path("in/deep"));
        QVERIFY(picture(1).save(path("one.png")));
        QVERIFY(picture(1).save(path("in/one.png")));
        QVERIFY(picture(2).save(path("in/deep/two.png")));
        QVERIFY(picture(2).save(path("in/two.PNG")));
        QVERIFY(picture(3).save(path("in/deep/three.png")));
    }

    void findsEveryCopy()
    {
        const CommandCall found = call({path("one.png")});
        QCOMPARE(found.status, 0);
        QVERIFY2(found.err.isEmpty(), qPrintable(found.err));
        QCOMPARE(found.out,
                 QString("0x00001003  i8        4x4          %1\n"
                         "0x00004000  i8        4x4          %1\n"
                         "0x00002000  rgba32    4x4          %1\n"
                         "3 copies found of 1 picture\n")
                     .arg(path("one.png")));
        QVERIFY(!fileBytes(m_folder->fileListPath()).contains("one"));
    }

    void picturesComeInNaturalOrderWithThePathsAsGiven()
    {
        QDir().mkpath(path("many/B"));
        for (const char *name : {"many/10.png", "many/2.png", "many/B/1.png", "many/a.png"})
            QVERIFY(picture(1).save(path(name)));
        const auto order = [this](const QString &given) {
            QStringList files;
            const QJsonArray pictures = call({given, "--json", "--formats", "i8"}).json()["pictures"].toArray();
            for (const QJsonValue &one : pictures)
                files << one.toObject()["picture"].toString();
            return files;
        };
        const QString folder = path("many");
        QCOMPARE(order(folder), QStringList({folder + "/2.png", folder + "/10.png", folder + "/a.png", folder + "/B/1.png"}));
        const QString back = QDir::currentPath();
        QVERIFY(QDir::setCurrent(folder));
        const QStringList relative = order("../many/B/..");
        QDir::setCurrent(back);
        QCOMPARE(relative.first(), QString("../many/B/../2.png"));
    }

    void skipAddsOnlyWhatIsNew()
    {
        // The copy at 0x2000 is described in the folder, that at 0x4000 in another format.
        m_folder->addProfile("<directory name=\"D\" address=\"0x1000\" size=\"0x2000\">"
                             "<texture name=\"known\" address=\"0x1000\" format=\"rgba32\" width=\"4\" height=\"4\"/></directory>"
                             "<texture name=\"other\" address=\"0x4000\" format=\"i4\" width=\"4\" height=\"4\"/>");
        const QStringList skipping {path("one.png"), "--add", "--duplicates", "skip", "--json"};
        const QJsonObject first = call(skipping).json();
        QCOMPARE(first["hits"].toArray().size(), 3);
        QCOMPARE(first["added"].toInt(), 2);
        QCOMPARE(first["overwritten"].toInt(), 0);
        QCOMPARE(fileBytes(m_folder->fileListPath()).count("<texture "), 4);
        QCOMPARE(call(skipping).json()["added"].toInt(), 0);
        QCOMPARE(call(QStringList {"--in", "D"} + skipping).json()["added"].toInt(), 0);
        QCOMPARE(fileBytes(m_folder->fileListPath()).count("<texture "), 4);
        QCOMPARE(call({path("one.png"), "--add", "--duplicates", "ignore", "--json"}).json()["added"].toInt(), 0);
    }

    void needsNoProfile()
    {
        const CommandCall found =
            ::call({"search", m_folder->imagePath(), path("one.png"), "--profiles", path("none"), "--json"});
        QCOMPARE(found.json()["hits"].toArray().size(), 3);
        QVERIFY(!QDir(path("none")).exists());
    }

    void formatsAndFirstOnly()
    {
        QCOMPARE(addresses(call({path("one.png"), "--json", "--formats", "rgba32,ia8"})), QList<int>({0x2000}));
        QCOMPARE(addresses(call({path("one.png"), "--json", "--first-only"})), QList<int>({0x1003}));
        QCOMPARE(addresses(call({path("one.png"), "--json", "--formats", "rgba16"})), QList<int>());
    }

    void foldersOfPictures()
    {
        const QJsonObject deep = call({path("in"), "--json"}).json();
        QCOMPARE(deep["pictures"].toArray().size(), 3);
        QCOMPARE(deep["hits"].toArray().size(), 4);
        const QJsonObject flat = call({path("in"), "--json", "--no-subfolders"}).json();
        QCOMPARE(flat["pictures"].toArray().size(), 1);
        const CommandCall text = call({path("in"), path("one.png")});
        QCOMPARE(text.status, 0);
        QVERIFY(text.out.contains("Not found: " + path("in/deep/three.png")));
        QVERIFY(text.out.endsWith("7 copies found of 4 pictures\n"));
    }

    void rangeOfAFolder()
    {
        const CommandCall found = call({path("one.png"), "--in", "Root/D", "--json"});
        QCOMPARE(addresses(found), QList<int>({0x4000, 0x2000}));
        const QJsonObject first = found.json()["hits"].toArray().at(0).toObject();
        QCOMPARE(first["offset"].toInt(), 0x2000);
        QCOMPARE(first["width"].toInt(), 4);
        QCOMPARE(first["format"].toString(), QString("i8"));
        QCOMPARE(found.json()["folder"].toString(), QString("Root/D/"));
    }

    /// A picture of few colours lies with indices of another order, its palette before it, in a folder two deep.
    void indexedTextures()
    {
        QImage image(8, 8, QImage::Format_ARGB32);
        QByteArray indices(32, '\0');
        const QRgb colours[] = {qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255), qRgb(248, 248, 0)};
        const int order[] = {3, 0, 2, 1};
        for (int i = 0; i < 64; ++i) {
            const int number = int(quint32(i + 1) * 2654435761U >> 30);
            image.setPixel(i % 8, i / 8, colours[number]);
            indices[i / 2] = char(indices.at(i / 2) | order[number] << (i % 2 ? 0 : 4));
        }
        QVERIFY(image.save(path("few.png")));
        QByteArray bytes = fileBytes(m_folder->imagePath());
        bytes.replace(0x3001, 32, indices);
        bytes.replace(0x6001, 32, indices);
        bytes.replace(0x2F00, 8, QByteArray::fromHex("07C1FFC1003FF801"));
        bytes.replace(0x7002, 8, QByteArray::fromHex("07C1FFC1003FF801"));
        writeFile(m_folder->imagePath(), bytes);
        m_folder->addProfile("<directory name=\"O\" address=\"0x1000\" size=\"0x7000\">"
                             "<directory name=\"D\" address=\"0x1000\" size=\"0x2010\"/></directory>");
        const CommandCall text = call({path("few.png"), "--formats", "ci4,ci8,rgba32"});
        QCOMPARE(text.status, 0);
        QCOMPARE(text.out,
                 QString("0x00003001  ci4       8x8          %1, palette 0x00002F00 and 1 more\n"
                         "0x00006001  ci4       8x8          %1, palette 0x00002F00 and 1 more\n"
                         "2 copies found of 1 picture\n")
                     .arg(path("few.png")));
        QCOMPARE(addresses(call({path("few.png"), "--json", "--formats", "ci8"})), QList<int>());
        QCOMPARE(addresses(call({path("few.png"), "--json", "--formats", "ci4,rgba32", "--first-only"})), QList<int>({0x3001}));
        const CommandCall added = call({path("few.png"), "--formats", "ci4", "--in", "Root/O/D", "--add", "--json"});
        QCOMPARE(added.json()["added"].toInt(), 1);
        const QJsonArray palettes = added.json()["hits"].toArray().at(0).toObject()["palettes"].toArray();
        QCOMPARE(palettes, QJsonArray({0x2F00, 0x7002}));
        const QJsonObject entry = m_folder->call("list", {"--json"}).json()["textures"].toArray().at(0).toObject();
        QCOMPARE(entry["path"].toString(), QString("Root/O/D/few"));
        QCOMPARE(entry["address"].toInt(), 0x3001);
        QCOMPARE(entry["paletteAddress"].toInt(), 0x2F00);
        QCOMPARE(call({path("few.png"), "--formats", "ci4", "--in", "Root/O/D", "--add", "--json"}).json()["overwritten"].toInt(),
                 1);
    }

    void indexedWithoutPalette()
    {
        QImage image(8, 8, QImage::Format_ARGB32);
        QByteArray bytes = fileBytes(m_folder->imagePath());
        for (int i = 0; i < 64; ++i) {
            const int number = int(quint32(i + 1) * 2654435761U >> 29);
            image.setPixel(i % 8, i / 8, qRgb(number * 32, 200, 100));
            bytes[0x3001 + i] = char(number + 7);
        }
        QVERIFY(image.save(path("few.png")));
        writeFile(m_folder->imagePath(), bytes);
        const QStringList options {path("few.png"), "--formats", "ci8", "--in", "D", "--add", "--json"};
        const QJsonObject left = call(options).json();
        QCOMPARE(left["hits"].toArray().size(), 1);
        QVERIFY(left["hits"].toArray().at(0).toObject()["palettes"].toArray().isEmpty());
        QCOMPARE(left["added"].toInt(), 0);
        QVERIFY(!fileBytes(m_folder->fileListPath()).contains("few"));
        QCOMPARE(call(options + QStringList("--without-palette")).json()["added"].toInt(), 1);
        QVERIFY(fileBytes(m_folder->fileListPath()).contains("few"));
        QCOMPARE(call({path("few.png"), "--without-palette"}).status, 2);
    }

    void indexedRefusals()
    {
        const CommandCall text = call({path("one.png"), "--formats", "ci4"});
        QVERIFY2(text.out.startsWith("Not searched for as ci4, since it has fewer than 48 pixels: " + path("one.png") + '\n'),
                 qPrintable(text.out));
        const QJsonObject refused =
            call({path("one.png"), "--formats", "ci8", "--json"}).json()["refused"].toArray().at(0).toObject();
        QCOMPARE(refused["format"].toString(), QString("ci8"));
        QCOMPARE(refused["picture"].toString(), path("one.png"));
        QVERIFY(!refused["reason"].toString().isEmpty());
    }

    void addPutsHitsIntoTheList()
    {
        const CommandCall found = call({path("one.png"), "--in", "D", "--add"});
        QCOMPARE(found.status, 0);
        QVERIFY(found.out.contains("Wrote " + m_folder->fileListPath()));
        const QByteArray list = fileBytes(m_folder->fileListPath());
        QVERIFY(list.contains("<texture name=\"one\" address=\"0x00002000\" format=\"i8\" width=\"4\" height=\"4\"/>"));
        QVERIFY(list.contains("<texture name=\"one (2)\" address=\"0x00000000\" format=\"rgba32\" width=\"4\" height=\"4\"/>"));

        QVERIFY(picture(1).save(path("other.png")));
        const QJsonObject again = call({path("other.png"), "--in", "D", "--add", "--json"}).json();
        QCOMPARE(again["added"].toInt(), 2);
        QCOMPARE(again["overwritten"].toInt(), 2);
        QCOMPARE(fileBytes(m_folder->fileListPath()).count("<texture"), 2);
        QVERIFY(fileBytes(m_folder->fileListPath()).contains("name=\"other\""));
        call({path("other.png"), "--in", "D", "--add", "--duplicates", "create"});
        QCOMPARE(fileBytes(m_folder->fileListPath()).count("<texture"), 4);
        QCOMPARE(call({path("other.png"), "--in", "D", "--add", "--duplicates", "ignore", "--json"}).json()["added"].toInt(), 0);
        QCOMPARE(fileBytes(m_folder->fileListPath()).count("<texture"), 4);
    }

    void looksInsideBlocks()
    {
        QByteArray content(0x123, '\x05');
        content += bytesRgba32(3) + bytesI8(1);
        const QByteArray block = packedBlock(BlockKind::Yaz0, content);
        QByteArray image = fileBytes(m_folder->imagePath());
        image.replace(0x6000, block.size(), block);
        m_folder->addPart("game.z64", image);
        QVERIFY(call({path("in/deep/three.png")}).out.contains("Not found"));
        const CommandCall found = call({path("in/deep/three.png"), path("one.png"), "--blocks"});
        QCOMPARE(found.status, 0);
        QVERIFY2(found.out.contains("0x00006000  rgba32    4x4          " + path("in/deep/three.png")
                                    + "  in the Yaz0 block at 0x00006000, offset 0x00000123\n"),
                 qPrintable(found.out));
        QVERIFY(found.out.contains("0x00006000  i8        4x4          " + path("one.png")
                                   + "  in the Yaz0 block at 0x00006000, offset 0x00000163\n"));
        QVERIFY(found.out.endsWith("5 copies found of 2 pictures\n"));
        QVERIFY(!found.out.contains("Not found"));

        const QJsonObject json = call({path("in/deep/three.png"), path("one.png"), "--blocks", "--first-only", "--json"}).json();
        QCOMPARE(json["blocks"].toInt(), 1);
        QCOMPARE(json["hits"].toArray().size(), 1);
        QCOMPARE(json["blockHits"].toArray().size(), 1);
        const QJsonObject hit = json["blockHits"].toArray().at(0).toObject();
        QCOMPARE(hit["picture"].toString(), path("in/deep/three.png"));
        QCOMPARE(hit["block"].toInt(), 0x6000);
        QCOMPARE(hit["kind"].toString(), QString("Yaz0"));
        QCOMPARE(hit["offset"].toInt(), 0x123);
        // The block lies outside the folder; and nothing of it becomes an entry of the image.
        QCOMPARE(call({path("one.png"), "--blocks", "--in", "D", "--json"}).json()["blocks"].toInt(), 0);
        const CommandCall added = call({path("in/deep/three.png"), "--blocks", "--add"});
        QVERIFY2(added.err.contains("is not added"), qPrintable(added.err));
        QVERIFY(!fileBytes(m_folder->fileListPath()).contains("three"));
    }

    void addStartsAProfile()
    {
        QCOMPARE(call({path("one.png"), "--add", "--profile", "fresh"}).status, 0);
        QCOMPARE(fileBytes(m_folder->fileListPath("fresh")).count("<texture"), 3);
    }

    void dryRunWritesNothing()
    {
        const QByteArray list = fileBytes(m_folder->fileListPath());
        const CommandCall dry = call({path("one.png"), "--add", "--dry-run"});
        QCOMPARE(dry.status, 0);
        QVERIFY(dry.out.contains("Would write"));
        QCOMPARE(fileBytes(m_folder->fileListPath()), list);
    }

    void unreadablePicturesAreNamed()
    {
        m_folder->addPart("broken.png", "no picture");
        const CommandCall found = call({path("broken.png"), path("one.png")});
        QCOMPARE(found.status, 1);
        QVERIFY(found.err.contains("broken.png"));
        QVERIFY(found.out.contains("3 copies found of 2 pictures"));
        QVERIFY(!found.out.contains("Not found"));
        const CommandCall missing = call({path("missing.png")});
        QCOMPARE(missing.status, 1);
        QVERIFY(missing.err.contains("missing.png"));
        QVERIFY(missing.out.isEmpty());
        QVERIFY(call({path("one.png"), "--in", "Root/E"}).err.contains("Root/E"));
    }

    void pipesAreNoPicturesAndNotWaitedFor()
    {
        QCOMPARE(::mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
        const CommandCall found = call({path("pipe"), path("one.png")});
        QCOMPARE(found.status, 1);
        QVERIFY(found.err.contains("Cannot read picture"));
        QVERIFY(found.out.contains("3 copies found of 2 pictures"));
    }

    void wrongUsage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        QTest::newRow("no such format") << QStringList {"x.png", "--formats", "i8,i9"} << "\"i9\"";
        QTest::newRow("jpeg") << QStringList {"x.png", "--formats", "jpeg"} << "jpeg";
        QTest::newRow("no such mode") << QStringList {"x.png", "--add", "--duplicates", "keep"} << "\"keep\"";
        QTest::newRow("mode without adding") << QStringList {"x.png", "--duplicates", "create"} << "--add";
        QTest::newRow("dry run without adding") << QStringList {"x.png", "--dry-run"} << "--add";
        QTest::newRow("no picture") << QStringList {} << "PICTURE";
    }

    void wrongUsage()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const CommandCall wrong = call(arguments);
        QCOMPARE(wrong.status, 2);
        QVERIFY2(wrong.err.contains(message), qPrintable(wrong.err));
    }

private:
    QString path(const QString &name) const { return m_folder->path(name); }
    CommandCall call(const QStringList &more) const { return m_folder->call("search", more); }
    QList<int> addresses(const CommandCall &found) const
    {
        QList<int> result;
        const QJsonArray hits = found.json()["hits"].toArray();
        for (const QJsonValue &hit : hits)
            result << hit.toObject()["address"].toInt();
        return result;
    }

    QScopedPointer<ProfileFolder> m_folder;
};
}

QTEST_GUILESS_MAIN(SearchCommandTest)
#include "tst_cli_search.moc"
