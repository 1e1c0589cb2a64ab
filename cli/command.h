// SPDX-License-Identifier: MIT
#pragma once

#include <QCommandLineOption>
#include <QList>
#include <QString>
#include <QTextStream>

namespace cli
{
/// How the program ends.
enum ExitStatus {
    Done = 0, ///< What was asked for was done.
    Failed = 1, ///< It could not be done, or a check found something wrong.
    WrongUsage = 2, ///< The arguments make no sense.
};

/// Where results and complaints go.
class Streams
{
public:
    Streams(QTextStream &results, QTextStream &complaints) : out(results), err(complaints) { }

    /// Complains and returns Failed.
    int failed(const QString &message);
    /// A remark on standard error that is no failure.
    void remark(const QString &message);

    QTextStream &out;
    QTextStream &err;
};

class Arguments;

/// One command: what it is called, what it takes, and what it does.
struct Command
{
    QString name; ///< One word, or two as in "patch create".
    QString summary; ///< One line for the list of commands.
    QString synopsis; ///< Its positional arguments, as in "IMAGE [PATH]".
    QString description; ///< What the help says about the arguments and the work.
    int fewest; ///< Positional arguments at least.
    int most; ///< Positional arguments at most; -1 for any number.
    QList<QCommandLineOption> options;
    int (*run)(const Arguments &arguments, Streams &streams); ///< Called with valid counts and known options only.
};
}
