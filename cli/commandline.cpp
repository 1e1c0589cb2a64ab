// SPDX-License-Identifier: MIT
#include "cli/commandline.h"

#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/completion.h"
#include "cli/files.h"
#include "cli/helptexts.h"
#include "cli/output.h"

namespace cli
{
namespace
{
int wrongUsage(const QString &message, QTextStream &err)
{
    err << QStringLiteral("quillary-cli: %1\nTry \"quillary-cli --help\".\n").arg(printable(message));
    return WrongUsage;
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

int runCommand(const Command &command, const QStringList &given, QTextStream &out, QTextStream &err)
{
    const Arguments arguments(command, given);
    if (arguments.wantsHelp()) {
        out << arguments.helpText();
        return Done;
    }
    const bool fileToOutput = arguments.isSet("output") && isStandardStream(arguments.value("output"));
    if (fileToOutput && arguments.isSet("json"))
        arguments.reject(QStringLiteral("--json and --output - both want standard output"));
    Streams streams(fileToOutput ? err : out, err, out);
    if (arguments.rejected(streams))
        return WrongUsage;
    return command.run(arguments, streams);
}
}

const QList<Command> &commands()
{
    static const QList<Command> all {infoCommand(),        convertCommand(),       listCommand(),
                                     extractCommand(),     replaceCommand(),       importFolderCommand(),
                                     importPackCommand(),  searchCommand(),        discoverCommand(),
                                     addCommand(),         setCommand(),           moveCommand(),
                                     removeCommand(),      profileListCommand(),   profileNewCommand(),
                                     profileCopyCommand(), profileDeleteCommand(), profileAutoloadCommand(),
                                     verifyCommand(),      diffCommand(),          galleryCommand(),
                                     checksumCommand(),    patchCreateCommand(),   patchApplyCommand(),
                                     patchInfoCommand(),   tableExportCommand(),   tableImportCommand(),
                                     blocksCommand(),      unpackCommand(),        portCommand(),
                                     packCommand(),        demoCommand(),          helpCommand()};
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
    if (first == QLatin1String("complete")) { // For the shells' completion, not for users.
        complete(arguments.mid(2), out);
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
    const Command *command = commandNamed(name);
    if (!command && !group.isEmpty())
        return wrongSecondWord(first, arguments.value(2), group, err);
    if (!command) {
        const bool option = first.startsWith(QLatin1Char('-'));
        return wrongUsage((option ? QStringLiteral("The command comes before the options, but \"%1\" came first")
                                  : QStringLiteral("There is no command \"%1\""))
                              .arg(first),
                          err);
    }
    return runCommand(*command, given, out, err);
}
}
