// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

class QTextStream;

namespace cli
{
/// Completes the last of \a words, which are those of a command line behind the program's name, for the scripts in
/// packaging/completions. What can come there follows from the commands' synopses and options, so new ones need nothing here.
/// Prints to \a out a first line of "words", "files" or "folders", what the shell is to offer by itself, followed by " open" when
/// more can follow a candidate without a space, and then the candidates, each with a tab and a description if it has one.
void complete(const QStringList &words, QTextStream &out);
}
