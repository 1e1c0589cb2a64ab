// SPDX-License-Identifier: MIT
#include "profilefolder.h"

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
