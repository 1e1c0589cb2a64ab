// SPDX-License-Identifier: MIT
#pragma once

namespace cli
{
/// Makes an interrupt (SIGINT) a request that work notices between its steps, before it writes anything. The second one ends the
/// program at once, as ever.
void noticeInterrupts();

/// Whether an interrupt has come.
bool interrupted();

/// Ends the program by the interrupt itself, so that a shell's loop around it ends as well.
void endByInterrupt();
}
