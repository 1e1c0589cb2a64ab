// SPDX-License-Identifier: MIT
#pragma once

#include "cli/command.h"

namespace cli
{
Command infoCommand();
Command convertCommand();
Command listCommand();
Command extractCommand();
Command replaceCommand();
Command importFolderCommand();
Command importPackCommand();
Command searchCommand();
Command discoverCommand();
Command addCommand();
Command setCommand();
Command moveCommand();
Command removeCommand();
Command profileListCommand();
Command profileNewCommand();
Command profileCopyCommand();
Command profileDeleteCommand();
Command profileAutoloadCommand();
Command verifyCommand();
Command diffCommand();
Command checksumCommand();
Command patchCreateCommand();
Command patchApplyCommand();
Command patchInfoCommand();
Command tableExportCommand();
Command tableImportCommand();
Command blocksCommand();
Command unpackCommand();
Command packCommand();
Command portCommand();
Command galleryCommand();
Command demoCommand();
Command helpCommand();
}
