// SPDX-License-Identifier: MIT
#include "cli/interrupt.h"

#include <csignal>

namespace
{
volatile std::sig_atomic_t interruptSeen = 0;

void remember(int)
{
    interruptSeen = 1;
    std::signal(SIGINT, SIG_DFL);
}
}

namespace cli
{
void noticeInterrupts()
{
    // A program started in the background ignores interrupts, and stays so.
    if (std::signal(SIGINT, remember) == SIG_IGN)
        std::signal(SIGINT, SIG_IGN);
}

bool interrupted()
{
    return interruptSeen != 0;
}

void endByInterrupt()
{
    std::signal(SIGINT, SIG_DFL);
    std::raise(SIGINT);
}
}
