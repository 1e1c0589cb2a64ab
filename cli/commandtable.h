// SPDX-License-Identifier: MIT
#pragma once

#include "cli/command.h"

namespace cli
{
Command infoCommand();
Command convertCommand();
Command listCommand();
Command verifyCommand();
Command checksumCommand();
}
