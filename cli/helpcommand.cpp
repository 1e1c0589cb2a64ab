// SPDX-License-Identifier: MIT
#include "cli/arguments.h"
#include "cli/commandline.h"
#include "cli/commandtable.h"
#include "cli/helptexts.h"
#include "cli/output.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

namespace cli
{
namespace
{
QString summaryLine(const Command &command)
{
    return QLatin1String("  ") + command.name.leftJustified(18) + command.summary + QLatin1Char('\n');
}

QJsonObject commandJson(const Command &command)
{
    QJsonArray options;
    for (const QCommandLineOption &option : command.options)
        options.append(QJsonObject {{QStringLiteral("names"), QJsonArray::fromStringList(option.names())},
                                    {QStringLiteral("value"), option.valueName()},
                                    {QStringLiteral("description"), option.description()}});
    return {{QStringLiteral("name"), command.name},
            {QStringLiteral("summary"), command.summary},
            {QStringLiteral("synopsis"), command.synopsis},
            {QStringLiteral("options"), options}};
}

QJsonObject json(const QList<Command> &described)
{
    QJsonArray all;
    for (const Command &command : described)
        all.append(commandJson(command));
    return {{QStringLiteral("version"), QStringLiteral(QUILLARY_VERSION)}, {QStringLiteral("commands"), all}};
}

int run(const Arguments &arguments, Streams &streams)
{
    const QString name = arguments.positionals().join(QLatin1Char(' '));
    const Command *command = commandNamed(name);
    const QList<Command> group = groupNamed(name);
    if (!name.isEmpty() && !command && group.isEmpty()) {
        arguments.reject(QStringLiteral("There is no command \"%1\"").arg(name));
        arguments.rejected(streams);
        return WrongUsage;
    }
    if (arguments.isSet("json"))
        printJson(streams.out, json(command ? QList<Command> {*command} : group.isEmpty() ? commands() : group));
    else if (command)
        streams.out << Arguments(*command, {QString(), name}).helpText();
    else
        streams.out << (group.isEmpty() ? overview() : groupOverview(name, group));
    return Done;
}
}

const Command *commandNamed(const QString &name)
{
    const auto command =
        std::find_if(commands().begin(), commands().end(), [&name](const Command &one) { return one.name == name; });
    return command == commands().end() ? nullptr : &*command;
}

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
                         "Numbers are decimal or, with 0x before them, hexadecimal. Where one file is meant, - stands for\n"
                         "standard input or output.\n"
                         "Exit status: 0 done, 1 could not be done or a check found something, 2 wrong usage.\n");
}

QString groupOverview(const QString &name, const QList<Command> &group)
{
    QString text = QStringLiteral("Usage: quillary-cli %1 COMMAND [options] ...\n\nCommands:\n").arg(name);
    for (const Command &command : group)
        text += summaryLine(command);
    return text + QStringLiteral("\n\"quillary-cli %1 COMMAND --help\" explains one.\n").arg(name);
}

Command helpCommand()
{
    return {QStringLiteral("help"),
            QStringLiteral("Show what a command does and takes."),
            QStringLiteral("[COMMAND]"),
            QStringLiteral("Shows the help of COMMAND, which may have two words; without it the list of commands."),
            0,
            2,
            jsonOption(),
            run};
}
}
