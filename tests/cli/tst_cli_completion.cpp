// SPDX-License-Identifier: MIT
// What the program offers for a word, and what the shells make of it.
#include "profilefolder.h"

#include "model/textureformat.h"
#include "support/images.h"

#include <QProcess>
#include <QStandardPaths>

namespace
{
/// What the program offers for the last of \a words; the first line, which says of what kind that is, goes to \a kind.
QStringList offered(const QStringList &words, QString *kind = nullptr)
{
    QStringList lines = call(QStringList {"complete"} + words).out.split('\n', Qt::SkipEmptyParts);
    if (kind)
        *kind = lines.value(0);
    lines.removeFirst();
    for (QString &line : lines)
        line = line.section('\t', 0, 0);
    lines.sort();
    return lines;
}

QString kindOf(const QStringList &words)
{
    QString kind;
    offered(words, &kind);
    return kind;
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

QString scriptPath(const char *shell)
{
    return QStringLiteral(QUILLARY_SOURCE_DIR "/packaging/completions/quillary-cli.") + shell;
}

/// What \a program, called with \a arguments in \a folder, prints, by lines.
QStringList linesOf(const QString &program, const QStringList &arguments, const QString &folder)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // The built program first; what a shell keeps of its own goes into the test's folder.
    environment.insert("PATH", QFileInfo(QUILLARY_CLI_PROGRAM).path() + ':' + environment.value("PATH"));
    environment.insert("HOME", folder);
    environment.insert("XDG_CONFIG_HOME", folder + "/config");
    environment.insert("XDG_DATA_HOME", folder + "/data");
    environment.insert("TERM", "dumb");
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        QTest::qFail(process.readAllStandardError().constData(), __FILE__, __LINE__);
    return QString::fromUtf8(process.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
}

class CompletionTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder.reset(new ProfileFolder(cartridgeImage(4096)));
        m_folder->addProfile("<directory name=\"Big Town\"><texture name=\"Sky\"/><texture name=\"Sea wall\"/></directory>"
                             "<texture name=\"Sign\"/><texture name=\"a&#10;files\"/>");
        m_folder->addProfile("<texture name=\"Other\"/>", "second one");
    }

    void everyCommandIsOffered()
    {
        QStringList expected {"--help", "--version"};
        for (const cli::Command &command : cli::commands())
            expected << command.name.section(' ', 0, 0);
        expected.removeDuplicates();
        expected.sort();
        QCOMPARE(offered({""}), expected);
        QVERIFY(!expected.contains("complete"));
        QCOMPARE(offered({"import-f"}), QStringList({"import-folder"}));
        QVERIFY(call({"complete", "conv"}).out.contains("convert\tWrite the image"));
    }

    void secondWordsAreOffered()
    {
        for (const cli::Command &command : cli::commands()) {
            if (command.name.contains(' '))
                QVERIFY(offered({command.name.section(' ', 0, 0), ""}).contains(command.name.section(' ', 1)));
        }
        QVERIFY(offered({"help", "ext"}) == QStringList({"extract"}));
    }

    void everyOptionIsOffered()
    {
        for (const cli::Command &command : cli::commands())
            QCOMPARE(offered(command.name.split(' ') << "-"), optionsOf(command));
    }

    void fixedValuesAreOffered()
    {
        QCOMPARE(offered({"convert", "--order", ""}), QStringList({"n64", "v64", "z64"}));
        QCOMPARE(offered({"convert", "--order=v"}), QStringList({"--order=v64"}));
        QCOMPARE(offered({"replace", "--resize", "k"}), QStringList({"keep"}));
        QStringList formats = textureFormats::getAsMap().keys() << "rgba16";
        formats.sort();
        QCOMPARE(offered({"extract", "--format", ""}), formats);
        QCOMPARE(offered({"checksum", "--chip", ""}).size(), 10);
        QCOMPARE(offered({"extract", "--width", ""}), QStringList());
        QCOMPARE(kindOf({"extract", "--width", ""}), QString("words"));
    }

    void listsGoOnBehindCommas()
    {
        QString kind;
        QCOMPARE(offered({"search", "--formats", "i4,ci8,c"}, &kind), QStringList({"i4,ci8,ci4"}));
        QCOMPARE(kind, QString("words open"));
    }

    void filesAndFoldersAreLeftToTheShell()
    {
        QCOMPARE(kindOf({"extract", ""}), QString("files"));
        QCOMPARE(kindOf({"extract", "-o", ""}), QString("files"));
        QCOMPARE(kindOf({"search", "image", "one", ""}), QString("files"));
        QCOMPARE(kindOf({"import-folder", "image", ""}), QString("folders"));
        QCOMPARE(kindOf({"list", "--profiles", ""}), QString("folders"));
        QCOMPARE(kindOf({"info", "image", ""}), QString("words"));
        QCOMPARE(kindOf({"frobnicate", ""}), QString("words"));
    }

    void tablePathsAreOffered()
    {
        const QStringList list {"list", "--profiles", m_folder->profiles(), m_folder->imagePath()};
        QString kind;
        QCOMPARE(offered(list + QStringList {""}, &kind), QStringList({"Root/"}));
        QCOMPARE(kind, QString("words open"));
        QCOMPARE(offered(list + QStringList {"Root/"}), QStringList({"Root/Big Town/", "Root/Sign"}));
        QCOMPARE(offered(list + QStringList {"Root/Big Town/S"}), QStringList({"Root/Big Town/Sea wall", "Root/Big Town/Sky"}));
        QCOMPARE(offered(list + QStringList {"Big Town/Sk"}), QStringList({"Big Town/Sky"}));
        QCOMPARE(offered(list + QStringList {"Root/None/"}), QStringList());
        QCOMPARE(offered(list + QStringList {"--profile", "second one", "Root/"}), QStringList({"Root/Other"}));
        QCOMPARE(offered({"search", "--profiles=" + m_folder->profiles(), m_folder->imagePath(), "--in", "Root/B"}),
                 QStringList({"Root/Big Town/"}));
        QCOMPARE(offered({"move", "--profiles", m_folder->profiles(), m_folder->imagePath(), "a", "b", "c", "Root/B"}),
                 QStringList({"Root/Big Town/"}));
        // A texture that options describe needs no entry.
        QCOMPARE(kindOf({"replace", "--offset", "1", m_folder->imagePath(), ""}), QString("files"));
    }

    void imagesInAnyOrderLeadToTheirTable()
    {
        writeFile(m_folder->path("game.v64"), withReversedUnits(cartridgeImage(4096), 2));
        QCOMPARE(offered({"list", "--profiles", m_folder->profiles(), m_folder->path("game.v64"), "Root/S"}),
                 QStringList({"Root/Sign"}));
        QCOMPARE(offered({"list", "--profiles", m_folder->profiles(), m_folder->path("none.z64"), "Root/S"}), QStringList());
    }

    void profilesAreOffered()
    {
        QCOMPARE(offered({"list", "--profiles", m_folder->profiles(), m_folder->imagePath(), "--profile", ""}),
                 QStringList({"default", "second one"}));
    }

    void bash()
    {
        QCOMPARE(inBash({"quillary-cli", "list", "game.z64", "--profiles", "profiles", "Root/Big\\ Town/Se"}),
                 QStringList({"Root/Big Town/Sea wall"}));
        QCOMPARE(inBash({"quillary-cli", "list", "game.z64", "--profiles", "profiles", "\"Root/Big Town/Se"}),
                 QStringList({"Root/Big Town/Sea wall"}));
        QCOMPARE(inBash({"quillary-cli", "convert", "--order", "=", "z"}), QStringList({"z64"}));
        QCOMPARE(inBash({"quillary-cli", "convert", "--order", "="}).size(), 3);
        QCOMPARE(inBash({"quillary-cli", "import-folder", "game.z64", "pro"}), QStringList({"profiles"}));
        QCOMPARE(inBash({"quillary-cli", "extract", "gam"}), QStringList());
        QVERIFY(fileBytes(scriptPath("bash")).contains("complete -o bashdefault -o default -F _quillary_cli quillary-cli"));
    }

    void fish()
    {
        if (QStandardPaths::findExecutable("fish").isEmpty())
            QSKIP("fish is not installed");
        QCOMPARE(inFish("quillary-cli conv"), QStringList({"convert"}));
        QCOMPARE(inFish("quillary-cli list game.z64 --profiles profiles \"Root/Big Town/Se"),
                 QStringList({"Root/Big Town/Sea wall"}));
        QCOMPARE(inFish("quillary-cli list game.z64 --profiles profiles Root/Big\\ Town/Se"),
                 QStringList({"Root/Big Town/Sea wall"}));
        QCOMPARE(inFish("quillary-cli extract gam"), QStringList({"game.z64"}));
        QCOMPARE(inFish("quillary-cli import-folder game.z64 pro"), QStringList({"profiles/"}));
    }

    void zsh()
    {
        if (QStandardPaths::findExecutable("zsh").isEmpty())
            QSKIP("zsh is not installed");
        QCOMPARE(inZsh("quillary-cli conv"), QStringList({"convert"}));
        QCOMPARE(inZsh("quillary-cli list game.z64 --profiles profiles Root/Big\\ Town/Se").constLast(),
                 QString("Root/Big Town/Sea wall"));
        QCOMPARE(inZsh("quillary-cli extract gam"), QStringList({"extract", "game.z64"}));
        QCOMPARE(inZsh("quillary-cli import-folder game.z64 pro").constLast(), QString("profiles"));
    }

private:
    /// What bash offers for the last of \a words, which are as its completion gets them.
    QStringList inBash(const QStringList &words) const
    {
        QStringList quoted;
        for (const QString &word : words)
            quoted << '\'' + word + '\'';
        QStringList lines = linesOf("bash",
                                    {"--norc", "-c",
                                     QStringLiteral("source '%1'; COMP_WORDS=(%2); COMP_CWORD=%3; _quillary_cli; printf '%s\\n' "
                                                    "\"${COMPREPLY[@]}\"")
                                         .arg(scriptPath("bash"), quoted.join(' '))
                                         .arg(words.size() - 1)},
                                    m_folder->path());
        lines.sort();
        return lines;
    }

    QStringList inFish(const QString &line) const
    {
        QStringList lines = linesOf(
            "fish", {"--no-config", "-c", QStringLiteral("source '%1'; complete -C $argv[1]").arg(scriptPath("fish")), line},
            m_folder->path());
        for (QString &one : lines)
            one = one.section('\t', 0, 0);
        return lines;
    }

    /// Types \a line, a tab and Enter into an interactive zsh, and returns the arguments of the program that it then starts: a
    /// script that hands only the questions of the completion on.
    QStringList inZsh(const QString &line) const
    {
        const QString bin = m_folder->path("bin");
        QDir().mkpath(bin);
        QFile::remove(bin + "/_quillary-cli");
        QFile::copy(scriptPath("zsh"), bin + "/_quillary-cli");
        QFile::remove(m_folder->path("called"));
        writeFile(bin + "/quillary-cli",
                  QByteArray("#!/bin/sh\n[ \"$1\" = complete ] && exec '") + QUILLARY_CLI_PROGRAM
                      + "' \"$@\"\nprintf '%s\\n' \"$@\" >called.part && mv called.part called\n");
        QFile::setPermissions(bin + "/quillary-cli", QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        writeFile(m_folder->path("drive.zsh"),
                  "zmodload zsh/zpty\n"
                  "zpty -b inner \"zsh -f -i\"\n"
                  "zpty -w inner \"PATH=$PWD/bin:\\$PATH; fpath=($PWD/bin \\$fpath); autoload -Uz compinit; compinit -u -D\"\n"
                  "zpty -w inner \"unsetopt autolist; : >ready\"\n"
                  "wait_for() { local i; for i in {1..200}; do [[ -e $1 ]] && return; sleep 0.05; done; }\n"
                  "wait_for ready\n"
                  "zpty -w -n inner \"$1\"$'\\t'\n"
                  "for i in {1..200}; do sleep 0.1; zpty -w -n inner $'\\r'; [[ -e called ]] && break; done\n"
                  "zpty -d inner\n"
                  "cat called\n");
        return linesOf("zsh", {"-f", "drive.zsh", line}, m_folder->path());
    }

    QScopedPointer<ProfileFolder> m_folder;
};
}

QTEST_GUILESS_MAIN(CompletionTest)
#include "tst_cli_completion.moc"
