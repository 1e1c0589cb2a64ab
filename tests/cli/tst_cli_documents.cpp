// SPDX-License-Identifier: MIT
// The manual page and the page about scripts know all that the program takes.
#include "profilefolder.h"

#include "codec/compressedblock.h"
#include "support/bootimages.h"
#include "support/displaylists.h"
#include "verify/verification.h"

#include <QImage>
#include <QJsonArray>
#include <QRegularExpression>

namespace
{
QString document(const QString &name)
{
    return QString::fromUtf8(fileBytes(QStringLiteral(QUILLARY_SOURCE_DIR "/") + name));
}

QStringList optionsOf(const cli::Command &command)
{
    QStringList options {"-h", "--help"};
    for (const QCommandLineOption &option : command.options) {
        for (const QString &name : option.names())
            options << (name.size() == 1 ? "-" : "--") + name;
    }
    options.sort();
    return options;
}

void collectKeys(const QJsonValue &value, QSet<QString> *keys)
{
    if (value.isArray()) {
        for (const QJsonValue &item : value.toArray())
            collectKeys(item, keys);
    }
    const QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end(); ++member) {
        keys->insert(member.key());
        collectKeys(member.value(), keys);
    }
}

class DocumentsTest : public QObject
{
    Q_OBJECT

private slots:
    void manualPageKnowsEverything()
    {
        const QString page = document("docs/man/quillary-cli.1").replace("\\-", "-");
        for (const cli::Command &command : cli::commands()) {
            const QString name = command.name.contains(' ') ? '"' + command.name + '"' : command.name;
            QVERIFY2(page.contains("\n.BR " + name + " \""), qPrintable(command.name));
            for (const QString &option : optionsOf(command))
                QVERIFY2(QRegularExpression("(^|[ \"\\n])" + QRegularExpression::escape(option) + "([ \"\\n]|$)")
                             .match(page)
                             .hasMatch(),
                         qPrintable(command.name + ' ' + option));
        }
        QVERIFY(page.contains("Quillary " QUILLARY_VERSION));
    }

    void everyJsonKeyIsDocumented()
    {
        QByteArray image = bootImage(0x90BB6CB5);
        image.replace(image.size() - 64, 64,
                      packedBlock(BlockKind::Yaz0, QByteArray("content") + QByteArray(16, '\xFF')).leftJustified(64, '\0'));
        const ProfileFolder folder(image);
        folder.addProfile("<texture name=\"x\" address=\"0x2000\" format=\"i8\" width=\"2\" height=\"2\"/>"
                          "<texture name=\"y\" address=\"0x2000\" format=\"rgba32\" width=\"2\" height=\"2\"/>"
                          "<texture name=\"z\" address=\"0x2100\" format=\"ci4\" width=\"2\" height=\"2\" palette=\"0x2200\"/>");
        QDir().mkpath(folder.path("in"));
        QImage picture(2, 2, QImage::Format_ARGB32);
        picture.fill(Qt::white);
        QVERIFY(picture.save(folder.path("in/x.png")));
        QSet<QString> keys;
        for (const QStringList &more : {QStringList {"info"}, QStringList {"list"}, QStringList {"verify", "--gaps"},
                                        QStringList {"search", folder.path("in"), "--blocks"},
                                        QStringList {"import-folder", folder.path("in"), "--in-place"}}) {
            collectKeys(folder.call(more.first(), more.mid(1) + QStringList {"--json"}).json(), &keys);
        }
        const QStringList dry {"--dry-run", "--json", "--profiles", folder.profiles()};
        for (const QStringList &one : {QStringList {"add", folder.imagePath(), "new"},
                                       {"remove", folder.imagePath(), "x"},
                                       {"profile", "new", folder.imagePath(), "new"},

                                       {"replace", folder.imagePath(), "x", folder.path("in/x.png")}})
            collectKeys(call(one + dry).json(), &keys);
        for (const QStringList &one : {QStringList {"gallery", "-o", folder.path("g.html")},
                                       {"profile", "list"},
                                       {"extract", "-o", folder.path("out")},
                                       {"help"}}) {
            const QStringList rest =
                one.first() == "help" ? QStringList() : QStringList {"--profiles", folder.profiles(), folder.imagePath()};
            collectKeys(call(one + QStringList {"--json"} + rest).json(), &keys);
        }
        collectKeys(call({"convert", folder.imagePath(), "--dry-run", "--json"}).json(), &keys);
        collectKeys(call({"demo", "--json", "--profiles", folder.profiles(), folder.path("demo")}).json(), &keys);
        collectKeys(call({"checksum", "--json", folder.imagePath()}).json(), &keys);
        collectKeys(folder.call("table export", {"-o", folder.path("t.csv"), "--json"}).json(), &keys);
        collectKeys(folder.call("table import", {folder.path("t.csv"), "--json"}).json(), &keys);
        folder.addPart("other.z64", image.replace(0x2000, 2, "zz").replace(0x3000, 2, "zz"));
        collectKeys(
            call({"diff", "--json", "--profiles", folder.profiles(), folder.imagePath(), folder.path("other.z64")}).json(),
            &keys);
        for (const QString &patch : {folder.path("p.bps"), folder.path("p.ips")}) {
            collectKeys(call({"patch", "create", folder.imagePath(), folder.imagePath(), "-o", patch, "--json"}).json(), &keys);
            collectKeys(call({"patch", "info", patch, "--json"}).json(), &keys);
            collectKeys(call({"patch", "apply", folder.imagePath(), patch, "--dry-run", "--json"}).json(), &keys);
        }
        folder.addPart("NQLE0-0x00001000.yay0", "x");
        collectKeys(folder.call("port", {folder.imagePath(), "--to-profile", "new", "--dry-run", "--json"}).json(), &keys);
        for (const QStringList &more : {QStringList {"blocks"}, QStringList {"unpack", "-o", folder.path("out")},
                                        QStringList {"pack", folder.path("NQLE0-0x00001000.yay0"), "--dry-run"}})
            collectKeys(call(QStringList {more.first(), "--json", folder.imagePath()} + more.mid(1)).json(), &keys);
        const TestList list = TestList().block(TestList::Rgba, 16, 32, 32, 0x80003000).end();
        image.replace(8, 4, QByteArray::fromHex("80000400"));
        image.replace(0x2000, list.bytes().size(), list.bytes());
        folder.addPart("lists.z64", image);
        collectKeys(call({"discover", "--json", folder.path("lists.z64")}).json(), &keys);
        for (const Finding finding : allFindings())
            keys.insert(findingName(finding));
        QVERIFY(keys.size() > 40);
        const QString page = document("docs/command-line.md");
        for (const QString &key : qAsConst(keys))
            QVERIFY2(QRegularExpression("[`.]" + QRegularExpression::escape(key) + "`").match(page).hasMatch(), qPrintable(key));
    }
};
}

QTEST_GUILESS_MAIN(DocumentsTest)
#include "tst_cli_documents.moc"
