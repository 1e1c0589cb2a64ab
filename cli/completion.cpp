// SPDX-License-Identifier: MIT
#include "cli/completion.h"

#include "cli/commandline.h"
#include "cli/helptexts.h"
#include "cli/output.h"
#include "cli/tablepaths.h"
#include "model/textureformat.h"

#include <QHash>
#include <QRegularExpression>
#include <QTextStream>

namespace cli
{
namespace
{
/// What to offer for a word.
struct Offer
{
    QString kind = QStringLiteral("words");
    bool open = false; ///< More can follow without a space.
    QStringList candidates; ///< With a tab and a description where there is one.
};

/// The words of a command line before the one to complete.
struct Typed
{
    const Command *command = nullptr;
    QStringList positionals;
    QHash<QString, QString> values; ///< By the last name of the option.
    QString awaited; ///< The value name of the option that the word is the value of; empty when it is none.
};

/// What can follow the words \a before of a command's name.
Offer commandWords(const QStringList &before)
{
    Offer offer;
    const QString group = before.isEmpty() ? QString() : before.constFirst() + QLatin1Char(' ');
    QString last;
    for (const Command &command : commands()) {
        if (!command.name.startsWith(group))
            continue;
        const QString word = command.name.mid(group.size()).section(QLatin1Char(' '), 0, 0);
        const bool whole = group + word == command.name;
        if (word != last)
            offer.candidates << (whole ? word + QLatin1Char('\t') + command.summary : word);
        last = word;
    }
    offer.candidates << (group.isEmpty() ? QStringList {QStringLiteral("--help"), QStringLiteral("--version")}
                                         : QStringList {QStringLiteral("-h"), QStringLiteral("--help")});
    return offer;
}

QStringList formatWords()
{
    return QStringList(textureFormats::getAsMap().keys()) << QStringLiteral("rgba16");
}

/// The formats that can follow those of a list whose last one \a current ends in.
Offer formatList(const QString &current)
{
    const QString done = current.left(current.lastIndexOf(QLatin1Char(',')) + 1);
    const QStringList taken = done.split(QLatin1Char(','), Qt::SkipEmptyParts);
    Offer offer;
    offer.open = true;
    const QStringList words = formatWords();
    for (const QString &format : words) {
        if (!taken.contains(format))
            offer.candidates << done + format;
    }
    return offer;
}

/// What a value, or a positional argument, of that name in the help can be.
Offer offerFor(const QString &name, const Typed &typed, const QString &current)
{
    Offer offer;
    if (name.contains(QLatin1Char('|')) && name != name.toUpper()) // Words to choose from, unlike FILE|DIR.
        offer.candidates = name.split(QLatin1Char('|'));
    else if (name == QLatin1String("FORMAT"))
        offer.candidates = formatWords();
    else if (name == QLatin1String("FORMATS"))
        offer = formatList(current);
    else if (name == QLatin1String("CHIP"))
        offer.candidates = QStringLiteral("6101 6102 6103 6105 6106 7101 7102 7103 7105 7106").split(QLatin1Char(' '));
    else if (name == QLatin1String("PROFILE"))
        offer.candidates = profileNames(typed.positionals.value(0), typed.values.value(QStringLiteral("profiles")));
    else if (name == QLatin1String("COMMAND"))
        offer = commandWords(typed.positionals);
    else if (name == QLatin1String("PATH")) {
        offer.open = true;
        offer.candidates = tablePaths(typed.positionals.value(0), typed.values.value(QStringLiteral("profiles")),
                                      typed.values.value(QStringLiteral("profile")), current);
    } else if (name == QLatin1String("DIR") || name == QLatin1String("FOLDER") || name == QLatin1String("PACK"))
        offer.kind = QStringLiteral("folders");
    else if (name != QLatin1String("N") && name != QLatin1String("ADDRESS") && name != QLatin1String("NAME")
             && !name.contains(QLatin1String("..")))
        offer.kind = QStringLiteral("files");
    return offer;
}

/// What the help calls the positional argument that comes next.
QString positionalName(const Typed &typed)
{
    QStringList names = typed.command->synopsis.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    // A texture that options describe needs no entry.
    if (typed.values.contains(QStringLiteral("offset")))
        names = names.filter(QRegularExpression(QStringLiteral("^[^\\[]")));
    QString name = names.value(typed.positionals.size());
    if (name.isEmpty())
        name = names.filter(QStringLiteral("...")).value(0);
    return name.remove(QLatin1String("...")).remove(QLatin1Char('[')).remove(QLatin1Char(']'));
}

const QCommandLineOption *optionNamed(const Command &command, const QString &word)
{
    const QString name = word.mid(word.startsWith(QLatin1String("--")) ? 2 : 1);
    for (const QCommandLineOption &option : command.options) {
        if (option.names().contains(name))
            return &option;
    }
    return nullptr;
}

/// Sorts the words behind the command into options, values and positional arguments.
void readWords(const QStringList &words, Typed *typed)
{
    const QCommandLineOption *awaiting = nullptr;
    for (const QString &word : words) {
        if (awaiting) {
            typed->values.insert(awaiting->names().constLast(), word);
            awaiting = nullptr;
        } else if (word.startsWith(QLatin1Char('-')) && word.size() > 1) {
            const QCommandLineOption *option = optionNamed(*typed->command, word.section(QLatin1Char('='), 0, 0));
            if (!option)
                continue;
            typed->values.insert(option->names().constLast(), word.section(QLatin1Char('='), 1));
            if (!option->valueName().isEmpty() && !word.contains(QLatin1Char('=')))
                awaiting = option;
        } else {
            typed->positionals << word;
        }
    }
    typed->awaited = awaiting ? awaiting->valueName() : QString();
}

Offer optionsOf(const Command &command)
{
    Offer offer;
    offer.candidates << QStringLiteral("-h\tShow this help and end.") << QStringLiteral("--help\tShow this help and end.");
    for (const QCommandLineOption &option : command.options) {
        const QStringList names = option.names();
        for (const QString &name : names)
            offer.candidates << (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name + QLatin1Char('\t')
                    + option.description();
    }
    return offer;
}

/// The offer for "--option=value", in which the candidates begin with the option.
Offer offerBehindEquals(const Typed &typed, const QString &current)
{
    const int equals = current.indexOf(QLatin1Char('='));
    const QCommandLineOption *option = optionNamed(*typed.command, current.left(equals));
    if (!option || option->valueName().isEmpty())
        return {};
    Offer offer = offerFor(option->valueName(), typed, current.mid(equals + 1));
    for (QString &candidate : offer.candidates)
        candidate.prepend(current.left(equals + 1));
    return offer;
}

Offer offerOf(const QStringList &before, const QString &current)
{
    Typed typed;
    typed.command = commandNamed(before.value(0));
    int taken = 1;
    if (before.isEmpty() || (!typed.command && before.size() == 1))
        return commandWords(before);
    if (!typed.command) {
        typed.command = commandNamed(before.at(0) + QLatin1Char(' ') + before.at(1));
        taken = 2;
    }
    if (!typed.command)
        return {};
    readWords(before.mid(taken), &typed);
    if (!typed.awaited.isEmpty())
        return offerFor(typed.awaited, typed, current);
    if (current.startsWith(QLatin1String("--")) && current.contains(QLatin1Char('=')))
        return offerBehindEquals(typed, current);
    if (current.startsWith(QLatin1Char('-')))
        return optionsOf(*typed.command);
    const QString name = positionalName(typed);
    return name.isEmpty() ? Offer() : offerFor(name, typed, current);
}
}

void complete(const QStringList &words, QTextStream &out)
{
    const QString current = words.isEmpty() ? QString() : words.constLast();
    const Offer offer = offerOf(words.mid(0, words.size() - 1), current);
    out << offer.kind << (offer.open ? " open" : "") << '\n';
    for (const QString &candidate : offer.candidates) {
        // No name out of a table may look like two candidates.
        const QString name = candidate.section(QLatin1Char('\t'), 0, 0);
        if (candidate.startsWith(current) && name == printable(name))
            out << name << (candidate.size() > name.size() ? candidate.mid(name.size()) : QString()) << '\n';
    }
}
}
