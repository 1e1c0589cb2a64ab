// SPDX-License-Identifier: MIT
#pragma once

#include "cli/command.h"

namespace cli
{
/// The command of that name, which may have two words; null when there is none.
const Command *commandNamed(const QString &name);

/// The commands whose names are \a first and a second word.
QList<Command> groupNamed(const QString &first);

/// What "--help" prints: all commands, a line for each.
QString overview();

/// The same for the commands of \a group, whose first word is \a name.
QString groupOverview(const QString &name, const QList<Command> &group);
}
