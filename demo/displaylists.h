// SPDX-License-Identifier: MIT
#pragma once

#include "demo/layout.h"

namespace demo
{
/// Puts display lists that bring the listed textures of \a layout into the program: those of the title by addresses in RAM, those
/// of the levels, the actors, and the interface with the effects by segments, the label by its address from the start on. The
/// JPEG is no texture to the console. No program runs them.
void addDisplayLists(Layout *layout);
}
