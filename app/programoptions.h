// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// What the program was started for.
struct ProgramOptions
{
    QString image; ///< Absolute path of the cartridge image to open; empty for none.
    QString screenshot; ///< Path of the PNG to render the window into, instead of running; empty for none.
};

/// Answers what needs no window and so no display: prints the help or the version to standard output, or what is wrong with the
/// arguments to standard error. Returns the exit status then, nothing when the program is to start. To be called before any
/// application object is made.
std::optional<int> answerWithoutWindow(int &argc, char **argv);

/// The options in \a arguments, the program's name first, that answerWithoutWindow() found right.
ProgramOptions programOptions(const QStringList &arguments);
