// SPDX-License-Identifier: MIT
#include "cli/arguments.h"

#include "cli/output.h"

#include <algorithm>
#include <limits>

namespace cli
{
std::optional<qint32> parsedNumber(const QString &text)
{
    const bool hexadecimal = text.startsWith(QLatin1String("0x"));
    const QString digits = hexadecimal ? text.mid(2) : text;
    // The conversion itself would also take signs, spaces and a second prefix.
    for (const QChar digit : digits) {
        const ushort code = digit.toLower().unicode();
        if (!(code >= '0' && code <= '9') && !(hexadecimal && code >= 'a' && code <= 'f'))
            return std::nullopt;
    }
    bool ok = false;
    const quint32 value = digits.toUInt(&ok, hexadecimal ? 16 : 10);
    if (!ok || value > quint32(std::numeric_limits<qint32>::max()))
        return std::nullopt;
    return qint32(value);
}

std::optional<textureFormat> parsedFormat(const QString &text)
{
    const textureFormat *found = textureFormats::findByNameOrAlias(text);
    return found ? std::optional<textureFormat>(*found) : std::nullopt;
}

QString formatNames()
{
    return QStringList(textureFormats::getAsMap().keys()).join(QStringLiteral(", ")) + QStringLiteral(" (or rgba16 for rgb5a1)");
}

QCommandLineOption profilesOption()
{
    return {QStringLiteral("profiles"),
            QStringLiteral("The folder of all profiles; without it the one the window uses, see \"info\"."),
            QStringLiteral("DIR")};
}

QList<QCommandLineOption> profileOptions()
{
    return {{QStringLiteral("profile"), QStringLiteral("The profile to use; without it the one that loads automatically."),
             QStringLiteral("PROFILE")},
            profilesOption()};
}

QList<QCommandLineOption> jsonOption()
{
    return {{QStringLiteral("json"), QStringLiteral("Print one JSON document instead of text.")}};
}

QList<QCommandLineOption> imageWritingOptions()
{
    return {
        {{QStringLiteral("o"), QStringLiteral("output")}, QStringLiteral("Write the result to FILE."), QStringLiteral("FILE")},
        {QStringLiteral("in-place"), QStringLiteral("Write the result over the image itself.")},
        {QStringLiteral("dry-run"), QStringLiteral("Write nothing, but say what would change.")}};
}

Arguments::Arguments(const Command &command, const QStringList &given) : m_command(command)
{
    m_parser.addOption({{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help and end.")});
    m_parser.addOptions(command.options);
    if (!m_parser.parse(given))
        m_error = m_parser.errorText();
    m_positionals = m_parser.positionalArguments().mid(1);
    if (m_positionals.count(QStringLiteral("-")) > 1)
        reject(QStringLiteral("Standard input can only be read once"));
    const int count = m_positionals.size();
    if (count < command.fewest)
        reject(QStringLiteral("Too few arguments: it takes %1").arg(command.synopsis));
    if (command.most >= 0 && count > command.most)
        reject(QStringLiteral("Unexpected argument \"%1\": it takes %2").arg(m_positionals.at(command.most), command.synopsis));
}

QString Arguments::helpText() const
{
    // The parser's own first line would name the file that was started and not the command.
    const QString text = m_parser.helpText();
    return QStringLiteral("Usage: quillary-cli %1 [options] %2\n%3\n\n")
               .arg(m_command.name, m_command.synopsis, m_command.description)
        + text.mid(text.indexOf(QLatin1String("Options:")));
}

bool Arguments::isSet(const char *option) const
{
    // The parser complains about a question for an option that was never declared.
    const QString name = QLatin1String(option);
    return std::any_of(m_command.options.begin(), m_command.options.end(),
                       [&name](const QCommandLineOption &one) { return one.names().contains(name); })
        && m_parser.isSet(name);
}

std::optional<qint32> Arguments::number(const char *option) const
{
    if (!isSet(option))
        return std::nullopt;
    const std::optional<qint32> number = parsedNumber(value(option));
    if (!number)
        reject(QStringLiteral("--%1 takes a number, decimal or with 0x hexadecimal, not \"%2\"")
                   .arg(QLatin1String(option), value(option)));
    return number;
}

std::optional<textureFormat> Arguments::format(const char *option) const
{
    if (!isSet(option))
        return std::nullopt;
    std::optional<textureFormat> format = parsedFormat(value(option));
    if (!format)
        reject(QStringLiteral("There is no texture format \"%1\"; there are %2").arg(value(option), formatNames()));
    return format;
}

std::optional<int> Arguments::choice(const char *option, const QStringList &choices) const
{
    if (!isSet(option))
        return std::nullopt;
    const int place = choices.indexOf(value(option));
    if (place >= 0)
        return place;
    reject(QStringLiteral("--%1 takes %2, not \"%3\"")
               .arg(QLatin1String(option), choices.join(QStringLiteral(" or ")), value(option)));
    return std::nullopt;
}

void Arguments::checkImageWriting() const
{
    const bool output = isSet("output");
    const bool inPlace = isSet("in-place");
    if (output && inPlace)
        reject(QStringLiteral("--output and --in-place exclude each other"));
    if (!output && !inPlace && !isSet("dry-run"))
        reject(QStringLiteral("Say where to write: --output FILE, or --in-place for the image itself"));
    if (output && value("output").isEmpty())
        reject(QStringLiteral("--output needs a file name"));
    if (inPlace && positional(0) == QLatin1String("-"))
        reject(QStringLiteral("--in-place needs an image that is a file"));
}

void Arguments::reject(const QString &message) const
{
    if (m_error.isEmpty())
        m_error = message;
}

bool Arguments::rejected(Streams &streams) const
{
    if (m_error.isEmpty())
        return false;
    streams.err
        << QStringLiteral("quillary-cli %1: %2\nTry \"quillary-cli %1 --help\".\n").arg(m_command.name, printable(m_error));
    return true;
}
}
