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

/// Where results and errors go.
class Streams
{
public:
    /// \a standardOutput takes the bytes of a file that is written to standard output. \a results is the same stream unless such
    /// a file is written: texts would damage it.
    Streams(QTextStream &results, QTextStream &errors, QTextStream &standardOutput)
        : out(results), err(errors), m_standardOutput(standardOutput)
    {
    }
    Streams(QTextStream &results, QTextStream &errors) : Streams(results, errors, results) { }

    /// Prints \a message as an error and returns Failed.
    int failed(const QString &message);
    /// A warning on standard error that is no failure.
    void remark(const QString &message);
    /// Writes \a bytes to standard output as they are. Returns false with the reason in \a error.
    bool writeBytes(const QByteArray &bytes, QString *error);
    /// The same, marked as a warning: it was done, but not all is as the user may expect.
    void warn(const QString &message);

    QTextStream &out;
    QTextStream &err;

private:
    QTextStream &m_standardOutput;
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
