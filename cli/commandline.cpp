// SPDX-License-Identifier: MIT
#include "cli/commandline.h"

#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/output.h"

#include <algorithm>

namespace cli
{
namespace
{
QString summaryLine(const Command &command)
{
    return QLatin1String("  ") + command.name.leftJustified(15) + command.summary + QLatin1Char('\n');
}

/// The commands whose names are \a first and a second word.
QList<Command> groupNamed(const QString &first)
{
    QList<Command> group;
    for (const Command &command : commands()) {
        if (command.name.startsWith(first + QLatin1Char(' ')))
            group << command;
    }
    return group;
}

QString overview()
{
    QString text = QStringLiteral("Usage: quillary-cli COMMAND [options] IMAGE ...\n"
                                  "Explore and edit the textures inside Nintendo 64 cartridge images.\n\nCommands:\n");
    for (const Command &command : commands())
        text += summaryLine(command);
    return text
        + QStringLiteral("\nOptions:\n"
                         "  -h, --help     Show this help and end; behind a command, that command's.\n"
                         "  -v, --version  Show the version and end.\n\n"
                         "Numbers are decimal or, with 0x before them, hexadecimal.\n"
                         "Exit status: 0 done, 1 could not be done or a check found something, 2 wrong usage.\n");
}

int wrongUsage(const QString &message, QTextStream &err)
{
    err << QStringLiteral("quillary-cli: %1\nTry \"quillary-cli --help\".\n").arg(printable(message));
    return WrongUsage;
}

QString groupOverview(const QString &name, const QList<Command> &group)
{
    QString text = QStringLiteral("Usage: quillary-cli %1 COMMAND [options] ...\n\nCommands:\n").arg(name);
    for (const Command &command : group)
        text += summaryLine(command);
    return text + QStringLiteral("\n\"quillary-cli %1 COMMAND --help\" explains one.\n").arg(name);
}

int wrongSecondWord(const QString &first, const QString &second, const QList<Command> &group, QTextStream &err)
{
    QStringList words;
    for (const Command &command : group)
        words << command.name.mid(first.size() + 1);
    const QString choices = words.join(QStringLiteral(", "));
    return wrongUsage(second.isEmpty()
                          ? QStringLiteral("\"%1\" needs one of: %2").arg(first, choices)
                          : QStringLiteral("There is no command \"%1 %2\"; there are: %3").arg(first, second, choices),
                      err);
}

int runCommand(const Command &command, const QStringList &given, Streams &streams)
{
    const Arguments arguments(command, given);
    if (arguments.wantsHelp()) {
        streams.out << arguments.helpText();
        return Done;
    }
    if (arguments.rejected(streams))
        return WrongUsage;
    return command.run(arguments, streams);
}
}

const QList<Command> &commands()
{
    static const QList<Command> all {
        infoCommand(),       convertCommand(), listCommand(),   extractCommand(),  replaceCommand(),     importFolderCommand(),
        importPackCommand(), searchCommand(),  verifyCommand(), checksumCommand(), patchCreateCommand(), patchApplyCommand(),
        patchInfoCommand(),  blocksCommand(),  unpackCommand(), packCommand(),     demoCommand()};
    return all;
}

int run(const QStringList &arguments, QTextStream &out, QTextStream &err)
{
    const QString first = arguments.value(1);
    if (first.isEmpty())
        return wrongUsage(QStringLiteral("No command is given"), err);
    if (first == QLatin1String("--help") || first == QLatin1String("-h")) {
        out << overview();
        return Done;
    }
    if (first == QLatin1String("--version") || first == QLatin1String("-v")) {
        out << QStringLiteral("quillary-cli " QUILLARY_VERSION "\n");
        return Done;
    }
    // Of the commands with two words, both together are the name.
    QString name = first;
    QStringList given = arguments;
    const QList<Command> group = groupNamed(first);
    if (!group.isEmpty()) {
        const QString second = arguments.value(2);
        if (second == QLatin1String("--help") || second == QLatin1String("-h")) {
            out << groupOverview(first, group);
            return Done;
        }
        name += QLatin1Char(' ') + second;
        given.removeAt(1);
    }
    const auto command =
        std::find_if(commands().begin(), commands().end(), [&name](const Command &one) { return one.name == name; });
    if (command == commands().end() && !group.isEmpty())
        return wrongSecondWord(first, arguments.value(2), group, err);
    if (command == commands().end()) {
        const bool option = first.startsWith(QLatin1Char('-'));
        return wrongUsage((option ? QStringLiteral("The command comes before the options, but \"%1\" came first")
                                  : QStringLiteral("There is no command \"%1\""))
                              .arg(first),
                          err);
    }
    Streams streams(out, err);
    return runCommand(*command, given, streams);
}
}
