// SPDX-License-Identifier: MIT
#pragma once

/// Registers the icons (":/icons/...") and the checkerboard tile (":/style/alphaBG"). They lie in a static library, from which
/// the linker would drop them unasked. To be called before the first of them is used; calling it again does no harm.
void initResources();
