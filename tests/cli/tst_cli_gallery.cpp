// SPDX-License-Identifier: MIT
// The command, and the page that it writes in a browser.
#include "profilefolder.h"

#include "support/images.h"

#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <utility>

#include <unistd.h>

namespace
{
/// What a browser shows of a page.
struct Shown
{
    QString document; ///< After the page's script has run.
    QString errors; ///< What the browser printed, its messages on the page's console among it.

    /// The names of the cards that are shown, in their order.
    QStringList names() const
    {
        QStringList names;
        QRegularExpressionMatchIterator card = QRegularExpression("<article ([^>]*)>").globalMatch(document);
        while (card.hasNext()) {
            const QString attributes = card.next().captured(1);
            if (!attributes.contains("hidden"))
                names << QRegularExpression("data-name=\"([^\"]*)\"").match(attributes).captured(1);
        }
        return names;
    }
};

QString browser()
{
    return QStandardPaths::findExecutable("chromium");
}

class GalleryCommandTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder.reset(new ProfileFolder(cartridgeImage(0x8000)));
        m_folder->addProfile(
            "<directory name=\"Town\" address=\"0x1000\" size=\"0x1000\">"
            "<texture name=\"Sky 10\" address=\"0x10\" format=\"i8\" width=\"16\" height=\"8\"/>"
            "<texture name=\"Stone\" address=\"0x400\" format=\"ci4\" width=\"8\" height=\"8\" palette=\"0x20\"/></directory>"
            "<texture name=\"Sky 2\" address=\"0x4000\" format=\"rgba32\" width=\"4\" height=\"4\"/>"
            "<texture name=\"&lt;/script&gt;&lt;script&gt;x()&lt;/script&gt;\" address=\"0x5000\" format=\"i8\" width=\"2\" "
            "height=\"2\"/>");
    }

    void writesAPage()
    {
        const CommandCall written = m_folder->call("gallery", {"-o", page()});
        QCOMPARE(written.status, 0);
        QCOMPARE(written.out, "Wrote " + page() + " with 4 pictures\n");
        QCOMPARE(fileBytes(page()).count("<article "), 4);
        QVERIFY(fileBytes(page()).contains("Profile &quot;default&quot; of NQLE0"));
        QCOMPARE(m_folder->call("gallery", {"Root/Town", "-o", page(), "--json"}).json()["items"].toInt(), 2);
        QCOMPARE(fileBytes(page()).count("<article "), 2);
        QCOMPARE(m_folder->call("gallery", {"Root/Town/Stone", "-o", "-"}).out.count("<article "), 1);
    }

    void showsARawRange()
    {
        const CommandCall written =
            m_folder->call("gallery", {"-o", page(), "--raw", "0x1000..0x1400", "--format", "i8,ci4", "--width", "16,32"});
        QVERIFY2(written.status == 0, qPrintable(written.err));
        const QString text = QString::fromUtf8(fileBytes(page()));
        QCOMPARE(text.count("<article "), 4);
        QVERIFY(text.contains("0x00001000, i8, 16 wide") && text.contains("16\u00D764"));
        QVERIFY(text.contains("0x00001000, ci4, 32 wide") && text.contains("32\u00D764"));
        // Strips are at most 256 rows high; what lies beyond the image is not there.
        m_folder->call("gallery", {"-o", page(), "--raw", "0x7000..0x9000", "--format", "i8", "--width", "8"});
        QCOMPARE(fileBytes(page()).count("<article "), 2);
        QVERIFY(m_folder->call("gallery", {"-o", page(), "--raw", "0x0..0x100", "--format", "ci8", "--palette", "0x100"}).status
                == 0);
        QVERIFY(fileBytes(page()).contains("class=\"swatches\""));
    }

    void refusesWhatMakesNoSense_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");
        QTest::newRow("nowhere") << QStringList {} << 2 << "--output";
        QTest::newRow("the image") << QStringList {"-o", "@/game.z64"} << 2 << "the image itself";
        QTest::newRow("no range") << QStringList {"-o", "@/x", "--raw", "1..b"} << 2 << "FROM..TO";
        QTest::newRow("empty range") << QStringList {"-o", "@/x", "--raw", "2..2"} << 2 << "FROM..TO";
        QTest::newRow("range outside") << QStringList {"-o", "@/x", "--raw", "0x8000..0x8001"} << 1 << "ends at 0x00008000";
        QTest::newRow("no format") << QStringList {"-o", "@/x", "--raw", "0..1", "--format", "png"} << 2 << "\"png\"";
        QTest::newRow("jpeg") << QStringList {"-o", "@/x", "--raw", "0..1", "--format", "jpeg"} << 2 << "jpeg";
        QTest::newRow("width") << QStringList {"-o", "@/x", "--raw", "0..1", "--width", "8,0"} << 2 << "--width";
        QTest::newRow("format alone") << QStringList {"-o", "@/x", "--format", "i8"} << 2 << "--raw";
        QTest::newRow("path and range") << QStringList {"Root/Town", "-o", "@/x", "--raw", "0..1"} << 2 << "Either";
        QTest::newRow("no path") << QStringList {"Root/None", "-o", "@/x"} << 1 << "Root/None";
    }

    void refusesWhatMakesNoSense()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        QFETCH(QString, message);
        const CommandCall refused = m_folder->call("gallery", arguments.replaceInStrings("@", m_folder->path(".")));
        QCOMPARE(refused.status, status);
        QVERIFY2(refused.err.contains(message), qPrintable(refused.err));
        QVERIFY(!QFile::exists(m_folder->path("x")));
    }

    void browserFiltersSortsAndZooms()
    {
        if (browser().isEmpty())
            QSKIP("chromium is not installed");
        m_folder->call("gallery", {"-o", page()});
        const QString evil = "&lt;/script&gt;&lt;script&gt;x()&lt;/script&gt;";
        const Shown all = open("");
        QCOMPARE(all.names(), QStringList({"Sky 2", evil, "Sky 10", "Stone"}));
        QVERIFY(all.document.contains("4 shown"));
        QVERIFY(all.document.contains("<option value=\"ci4\">"));

        QCOMPARE(open("text=sky").names(), QStringList({"Sky 2", "Sky 10"}));
        QCOMPARE(open("text=ROOT/town+i8").names(), QStringList({"Sky 10"}));
        QVERIFY(open("text=sky").document.contains("2 of 4 shown"));
        QCOMPARE(open("format=ci4").names(), QStringList({"Stone"}));
        QCOMPARE(open("sort=name&text=s").names().mid(1), QStringList({"Sky 2", "Sky 10", "Stone"}));
        QCOMPARE(open("sort=address&text=town+sky").names(), QStringList({"Sky 10"}));
        QCOMPARE(open("sort=address").names(), QStringList({"Sky 10", "Stone", "Sky 2", evil}));
        QCOMPARE(open("sort=pixels").names().first(), QString("Sky 10"));
        QCOMPARE(open("sort=folder").names().mid(2), QStringList({"Sky 10", "Stone"}));
        QVERIFY(open("zoom=4").document.contains("--zoom: 4"));
        const QString chosen = open("ground=magenta&theme=dark").document;
        QVERIFY(chosen.contains("data-ground=\"magenta\"") && chosen.contains("data-theme=\"dark\""));
        QVERIFY(open("sort=nothing&zoom=7").document.contains("4 shown"));
    }

    void browserShowsThePixels()
    {
        if (browser().isEmpty())
            QSKIP("chromium is not installed");
        QByteArray image = cartridgeImage(0x8000);
        image.replace(0x4000, 64, QByteArray::fromHex("00FF00FF").repeated(8) + QByteArray(32, '\0'));
        writeFile(m_folder->imagePath(), image);
        m_folder->call("gallery", {"Root/Sky 2", "-o", page()});
        // Green above, clear below, so that the ground is seen.
        for (const auto &[theme, card] : {std::pair<QString, QRgb> {"light", 0xFFFFFFFF}, {"dark", 0xFF26282B}}) {
            open("zoom=16&ground=magenta&theme=" + theme, true);
            const QImage shot(m_folder->path("shot.png"));
            QVERIFY(!shot.isNull());
            int green = 0;
            int magenta = 0;
            int ofCard = 0;
            for (int y = 0; y < shot.height(); ++y) {
                for (int x = 0; x < shot.width(); ++x) {
                    const QRgb pixel = shot.pixel(x, y);
                    green += pixel == 0xFF00FF00;
                    magenta += pixel == 0xFFFF00FF;
                    ofCard += pixel == card;
                }
            }
            QCOMPARE(green, 64 * 32);
            QCOMPARE(magenta, 64 * 32);
            QVERIFY(ofCard > 1000);
        }
    }

    void browserCopesWithTenThousandTextures()
    {
        if (browser().isEmpty())
            QSKIP("chromium is not installed");
        QByteArray list;
        for (int i = 0; i < 10000; ++i)
            list += "<texture name=\"T" + QByteArray::number(i) + "\" address=\"0x" + QByteArray::number(i, 16)
                + "\" format=\"rgb5a1\" width=\"16\" height=\"16\"/>";
        m_folder->addProfile(list);
        QCOMPARE(m_folder->call("gallery", {"-o", page()}).status, 0);
        const Shown shown = open("text=T999&sort=name&zoom=4");
        QVERIFY(shown.document.contains("11 of 10000 shown"));
        QCOMPARE(shown.names().first(), QString("T999"));
    }

private:
    QString page() const { return m_folder->path("gallery.html"); }

    /// Opens the page with \a fragment in a browser without a screen. Fails when it says anything on the console.
    Shown open(const QString &fragment, bool screenshot = false) const
    {
        QStringList arguments {"--headless",
                               "--disable-gpu",
                               "--no-first-run",
                               "--enable-logging=stderr",
                               "--window-size=900,700",
                               "--force-device-scale-factor=1",
                               "--user-data-dir=" + m_folder->path("browser")};
        if (geteuid() == 0) // It has no sandbox for the superuser.
            arguments << "--no-sandbox";
        arguments << (screenshot ? "--screenshot=" + m_folder->path("shot.png") : QString("--dump-dom"))
                  << "file://" + page() + '#' + fragment;
        QProcess process;
        process.start(browser(), arguments);
        if (!process.waitForFinished(120000))
            QTest::qFail("the browser does not end", __FILE__, __LINE__);
        const Shown shown {QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
        if (shown.errors.contains("CONSOLE"))
            QTest::qFail(qPrintable(shown.errors), __FILE__, __LINE__);
        return shown;
    }

    QScopedPointer<ProfileFolder> m_folder;
};
}

QTEST_GUILESS_MAIN(GalleryCommandTest)
#include "tst_cli_gallery.moc"
