// SPDX-License-Identifier: MIT
#include "commandcall.h"

#include "cli/arguments.h"
#include "cli/output.h"

#include <QJsonArray>
#include <QTest>

#include <algorithm>

namespace
{
class ArgumentsTest : public QObject
{
    Q_OBJECT

private slots:
    void numbers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("value");
        QTest::newRow("decimal") << "1234" << 1234;
        QTest::newRow("hexadecimal") << "0x1aF" << 0x1AF;
        QTest::newRow("decimal with leading zero") << "010" << 10;
        QTest::newRow("largest") << "2147483647" << 2147483647;
        QTest::newRow("largest hexadecimal") << "0x7FFFFFFF" << 2147483647;
        QTest::newRow("too large") << "2147483648" << -1;
        QTest::newRow("too large hexadecimal") << "0x80000000" << -1;
        QTest::newRow("far too large") << "99999999999" << -1;
        QTest::newRow("negative") << "-1" << -1;
        QTest::newRow("with a sign") << "+1" << -1;
        QTest::newRow("capital prefix") << "0X10" << -1;
        QTest::newRow("two prefixes") << "0x0x10" << -1;
        QTest::newRow("digits without prefix") << "1F" << -1;
        QTest::newRow("prefix alone") << "0x" << -1;
        QTest::newRow("blank") << " 1" << -1;
        QTest::newRow("empty") << "" << -1;
    }

    void numbers()
    {
        QFETCH(QString, text);
        QFETCH(int, value);
        QCOMPARE(cli::parsedNumber(text).value_or(-1), value);
    }

    void formats()
    {
        QCOMPARE(cli::parsedFormat("rgba16")->name, QString("rgb5a1"));
        QCOMPARE(cli::parsedFormat("ci4")->name, QString("ci4"));
        for (const char *wrong : {"", "null", "RGBA32", "rgba16 ", "png"})
            QVERIFY2(!cli::parsedFormat(QLatin1String(wrong)), wrong);
    }

    void controlCharactersDoNotReachTheTerminal()
    {
        QCOMPARE(cli::printable(QString("a\033[2Jb\rc") + QChar(0x9B)), QString("a\uFFFD[2Jb\uFFFDc\uFFFD"));
        QCOMPARE(cli::printable("Wiese \u00e4\u3042"), QString("Wiese \u00e4\u3042"));
    }

    void counts()
    {
        QCOMPARE(cli::counted(1, "entry"), QString("1 entry"));
        QCOMPARE(cli::counted(0, "entry"), QString("0 entries"));
        QCOMPARE(cli::counted(2, "byte"), QString("2 bytes"));
    }

    void helpNamesEveryCommand()
    {
        for (const QString &option : {QString("--help"), QString("-h")}) {
            const CommandCall help = call({option});
            QCOMPARE(help.status, 0);
            QVERIFY(help.err.isEmpty());
            for (const cli::Command &command : cli::commands())
                QVERIFY2(help.out.contains("\n  " + command.name + ' '), qPrintable(command.name));
        }
    }

    void everyCommandHasHelp()
    {
        for (const cli::Command &command : cli::commands()) {
            const CommandCall help = call(command.name.split(' ') << "--help");
            QCOMPARE(call(QStringList {"help"} + command.name.split(' ')).out, help.out);
            QCOMPARE(help.status, 0);
            QVERIFY(help.err.isEmpty());
            QVERIFY(help.out.startsWith("Usage: quillary-cli " + command.name + " [options] " + command.synopsis + '\n'));
            for (const QCommandLineOption &option : command.options)
                QVERIFY2(help.out.contains("--" + option.names().last()), qPrintable(option.names().last()));
        }
    }

    void everyCommandHasJson()
    {
        for (const cli::Command &command : cli::commands()) {
            const bool has = std::any_of(command.options.begin(), command.options.end(),
                                         [](const QCommandLineOption &option) { return option.names().contains("json"); });
            QVERIFY2(has, qPrintable(command.name));
        }
    }

    void helpIsACommandToo()
    {
        QCOMPARE(call({"help"}).out, call({"--help"}).out);
        const CommandCall unknown = call({"help", "frobnicate"});
        QCOMPARE(unknown.status, 2);
        QVERIFY(unknown.err.contains("\"frobnicate\""));
        const QJsonArray one = call({"help", "convert", "--json"}).json()["commands"].toArray();
        QCOMPARE(one.size(), 1);
        QCOMPARE(one.at(0).toObject()["name"].toString(), QString("convert"));
        QCOMPARE(one.at(0).toObject()["synopsis"].toString(), QString("IMAGE"));
        QCOMPARE(one.at(0).toObject()["options"].toArray().at(0).toObject()["value"].toString(), QString("z64|v64|n64"));
        QCOMPARE(call({"help", "--json"}).json()["commands"].toArray().size(), cli::commands().size());
    }

    void version()
    {
        const CommandCall version = call({"--version"});
        QCOMPARE(version.status, 0);
        QCOMPARE(version.out, QString("quillary-cli " QUILLARY_VERSION "\n"));
        QCOMPARE(call({"-v"}).out, version.out);
    }

    void wrongUsageIsToldFromFailure_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        QTest::newRow("nothing") << QStringList() << "No command";
        QTest::newRow("unknown command") << QStringList {"frobnicate"} << "\"frobnicate\"";
        QTest::newRow("option before the command") << QStringList {"--json", "info"} << "before the options";
        QTest::newRow("no image") << QStringList {"info"} << "IMAGE";
        QTest::newRow("an image too many") << QStringList {"info", "a", "surplus"} << "\"surplus\"";
        QTest::newRow("unknown option") << QStringList {"info", "--frobnicate", "a"} << "frobnicate";
        QTest::newRow("option without its value") << QStringList {"convert", "a", "--order"} << "order";
        QTest::newRow("two inputs from one stream") << QStringList {"import-folder", "-", "-", "-o", "x"} << "only be read once";
        QTest::newRow("standard input in place") << QStringList {"convert", "-", "--in-place"} << "is a file";
        QTest::newRow("two outputs to one stream") << QStringList {"convert", "a", "-o", "-", "--json"} << "standard output";
        QTest::newRow("nowhere to write") << QStringList {"convert", "a"} << "--in-place";
        QTest::newRow("two places to write") << QStringList {"convert", "a", "-o", "b", "--in-place"} << "exclude";
        QTest::newRow("no name to write") << QStringList {"convert", "a", "-o", ""} << "file name";
        QTest::newRow("no such order") << QStringList {"convert", "a", "-o", "b", "--order", "z65"} << "\"z65\"";
        QTest::newRow("no such chip") << QStringList {"checksum", "a", "--chip", "6104"} << "\"6104\"";
        QTest::newRow("writing without --fix") << QStringList {"checksum", "a", "--in-place"} << "--fix";
        QTest::newRow("fixing without a place") << QStringList {"checksum", "a", "--fix"} << "--in-place";
    }

    void wrongUsageIsToldFromFailure()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const CommandCall wrong = call(arguments);
        QCOMPARE(wrong.status, 2);
        QVERIFY(wrong.out.isEmpty());
        QVERIFY2(wrong.err.contains(message), qPrintable(wrong.err));
        QVERIFY(wrong.err.contains("--help"));
    }

    void missingImageIsNamed()
    {
        for (const cli::Command &command : cli::commands()) {
            if (!command.synopsis.startsWith("IMAGE"))
                continue;
            QStringList arguments = command.name.split(' ') << "no/such/image.z64";
            const int words = command.name.count(' ') + 1;
            while (arguments.size() - words < (command.name == "replace" ? command.most : command.fewest))
                arguments << "Root/x";
            for (const QCommandLineOption &option : command.options) {
                if (option.names().contains("dry-run") && command.name != "checksum" && command.name != "search"
                    && command.name != "discover")
                    arguments << "--dry-run";
            }
            if (command.name.startsWith("table "))
                arguments << "--as"
                          << "csv";
            if (command.name == "gallery")
                arguments << "-o"
                          << "out.html";
            if (command.name == "set")
                arguments << "--width"
                          << "1";
            const CommandCall missing = call(arguments);
            QVERIFY2(missing.status == 1, qPrintable(command.name + missing.err));
            QVERIFY2(missing.err.contains("no/such/image.z64"), qPrintable(missing.err));
            QVERIFY(missing.out.isEmpty());
        }
    }
};
}

QTEST_GUILESS_MAIN(ArgumentsTest)
#include "tst_cli_arguments.moc"
