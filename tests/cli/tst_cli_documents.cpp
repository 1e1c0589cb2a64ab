// SPDX-License-Identifier: MIT
// What stands beside the program, the completion, the manual page and the page about scripts, knows all that it takes.
#include "profilefolder.h"

#include "model/textureformat.h"
#include "codec/compressedblock.h"
#include "support/bootimages.h"
#include "verify/verification.h"

#include <QImage>
#include <QJsonArray>
#include <QProcess>
#include <QRegularExpression>

namespace
{
QString document(const QString &name)
{
    return QString::fromUtf8(fileBytes(QStringLiteral(QUILLARY_SOURCE_DIR "/") + name));
}

/// What bash offers for the last of \a words.
QStringList completions(const QStringList &words)
{
    QStringList quoted;
    for (const QString &word : words)
        quoted << '\'' + word + '\'';
    QProcess bash;
    bash.start("bash",
               {"--norc", "-c",
                QStringLiteral("source '%1'; COMP_WORDS=(%2); COMP_CWORD=%3; _quillary_cli; printf '%s\\n' "
                               "\"${COMPREPLY[@]}\"; complete -p quillary-cli >&2")
                    .arg(QUILLARY_SOURCE_DIR "/packaging/completions/quillary-cli.bash", quoted.join(' '))
                    .arg(words.size() - 1)});
    if (!bash.waitForFinished() || bash.exitCode() != 0)
        QTest::qFail(bash.readAllStandardError().constData(), __FILE__, __LINE__);
    QStringList lines = QString::fromUtf8(bash.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    lines.sort();
    return lines;
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
    void completionOffersEveryCommand()
    {
        QStringList expected {"--help", "--version"};
        for (const cli::Command &command : cli::commands())
            expected << command.name.section(' ', 0, 0);
        expected.removeDuplicates();
        expected.sort();
        QCOMPARE(completions({"quillary-cli", ""}), expected);
        QCOMPARE(completions({"quillary-cli", "im"}), QStringList({"import-folder", "import-pack"}));
    }

    void completionOffersEveryOption()
    {
        for (const cli::Command &command : cli::commands()) {
            const QStringList words = QStringList {"quillary-cli"} + command.name.split(' ');
            QCOMPARE(completions(words + QStringList {"-"}), optionsOf(command));
            QCOMPARE(completions(words + QStringList {""}), QStringList());
        }
    }

    void completionOffersSecondWords()
    {
        QMap<QString, QStringList> groups;
        for (const cli::Command &command : cli::commands()) {
            if (command.name.contains(' '))
                groups[command.name.section(' ', 0, 0)] << command.name.section(' ', 1);
        }
        for (auto group = groups.begin(); group != groups.end(); ++group) {
            group->sort();
            QCOMPARE(completions({"quillary-cli", group.key(), ""}), *group);
            QCOMPARE(completions({"quillary-cli", group.key(), "-"}), QStringList({"--help", "-h"}));
        }
    }

    void completionOffersFixedValues()
    {
        QCOMPARE(completions({"quillary-cli", "convert", "--order", ""}), QStringList({"n64", "v64", "z64"}));
        QCOMPARE(completions({"quillary-cli", "replace", "--resize", "k"}), QStringList({"keep"}));
        QCOMPARE(completions({"quillary-cli", "search", "--duplicates", ""}), QStringList({"create", "ignore", "overwrite"}));
        QStringList formats = textureFormats::getAsMap().keys();
        formats << "rgba16";
        formats.sort();
        QCOMPARE(completions({"quillary-cli", "extract", "--format", ""}), formats);
        QCOMPARE(completions({"quillary-cli", "checksum", "--chip", ""}).size(), 10);
    }

    void completionLeavesFileNamesToTheShell()
    {
        QCOMPARE(completions({"quillary-cli", "extract", "-o", ""}), QStringList());
        QVERIFY(document("packaging/completions/quillary-cli.bash").contains("complete -o bashdefault -o default"));
    }

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
        image.replace(image.size() - 64, 64, packedBlock(BlockKind::Yaz0, "content").leftJustified(64, '\0'));
        const ProfileFolder folder(image);
        folder.addProfile("<texture name=\"x\" address=\"0x2000\" format=\"i8\" width=\"2\" height=\"2\"/>"
                          "<texture name=\"y\" address=\"0x2000\" format=\"rgba32\" width=\"2\" height=\"2\"/>");
        QDir().mkpath(folder.path("in"));
        QImage picture(2, 2, QImage::Format_ARGB32);
        picture.fill(Qt::white);
        QVERIFY(picture.save(folder.path("in/x.png")));
        QSet<QString> keys;
        for (const QStringList &more :
             {QStringList {"info"}, QStringList {"list"}, QStringList {"verify", "--gaps"},
              QStringList {"search", folder.path("in")}, QStringList {"import-folder", folder.path("in"), "--in-place"}}) {
            collectKeys(folder.call(more.first(), more.mid(1) + QStringList {"--json"}).json(), &keys);
        }
        collectKeys(call({"checksum", "--json", folder.imagePath()}).json(), &keys);
        for (const QString &patch : {folder.path("p.bps"), folder.path("p.ips")}) {
            collectKeys(call({"patch", "create", folder.imagePath(), folder.imagePath(), "-o", patch, "--json"}).json(), &keys);
            collectKeys(call({"patch", "info", patch, "--json"}).json(), &keys);
            collectKeys(call({"patch", "apply", folder.imagePath(), patch, "--dry-run", "--json"}).json(), &keys);
        }
        folder.addPart("NQLE0-0x00001000.yay0", "x");
        for (const QStringList &more : {QStringList {"blocks"}, QStringList {"unpack", "-o", folder.path("out")},
                                        QStringList {"pack", folder.path("NQLE0-0x00001000.yay0"), "--dry-run"}})
            collectKeys(call(QStringList {more.first(), "--json", folder.imagePath()} + more.mid(1)).json(), &keys);
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
