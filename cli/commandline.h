// SPDX-License-Identifier: MIT
#pragma once

#include "cli/command.h"

#include <QStringList>

namespace cli
{
/// All commands, in the order in which the help lists them.
const QList<Command> &commands();

/// Does what \a arguments ask for; the first of them is the program. Results go to \a out, errors to \a err. A
/// QCoreApplication must exist. Returns one of ExitStatus.
int run(const QStringList &arguments, QTextStream &out, QTextStream &err);
}
