// SPDX-License-Identifier: MIT
#pragma once

#include "cli/command.h"
#include "model/textureformat.h"

#include <QCommandLineParser>
#include <QStringList>

#include <optional>

namespace cli
{
/// A number as users type it: decimal, or hexadecimal behind "0x". Nothing for anything else, for a sign, and beyond 31 bits.
std::optional<qint32> parsedNumber(const QString &text);

/// The format of that exact name, or rgb5a1 for its other common name "rgba16". Nothing for any other text.
std::optional<textureFormat> parsedFormat(const QString &text);

/// The names that parsedFormat() takes, for messages and help.
QString formatNames();

/// The options that several commands share.
QCommandLineOption profilesOption();
QList<QCommandLineOption> profileOptions();
QList<QCommandLineOption> jsonOption();
QList<QCommandLineOption> imageWritingOptions();

/// What a command was called with. Values that make no sense are remembered as the usage error; commands read all their values
/// first and then ask for it, before they touch anything.
class Arguments
{
public:
    /// Parses \a given, whose first item is the program and whose second the command.
    Arguments(const Command &command, const QStringList &given);

    bool wantsHelp() const { return m_parser.isSet(QStringLiteral("help")); }
    QString helpText() const;

    /// Whether the option is given; false also for one that the command does not have.
    bool isSet(const char *option) const;
    QString value(const char *option) const { return m_parser.value(QLatin1String(option)); }
    /// The option's number; nothing when it is not given, or is none.
    std::optional<qint32> number(const char *option) const;
    /// The option's format; nothing when it is not given, or is none.
    std::optional<textureFormat> format(const char *option) const;
    /// The place of the option's value among \a choices; nothing when it is not given, or is none of them.
    std::optional<int> choice(const char *option, const QStringList &choices) const;
    /// Exactly one of --output and --in-place is needed, unless --dry-run is given.
    void checkImageWriting() const;

    const QStringList &positionals() const { return m_positionals; }
    QString positional(int index) const { return m_positionals.value(index); }

    /// Remembers \a message as what is wrong with the arguments, unless something is already.
    void reject(const QString &message) const;
    /// What is wrong with the arguments; empty when nothing is.
    const QString &error() const { return m_error; }
    /// True when something is wrong with the arguments; it has then been said, and the command ends with WrongUsage.
    bool rejected(Streams &streams) const;

private:
    const Command &m_command;
    QCommandLineParser m_parser;
    QStringList m_positionals;
    mutable QString m_error;
};
}
