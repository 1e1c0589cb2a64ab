// SPDX-License-Identifier: MIT
#pragma once

#include <QDebug>

/// A debug line whose context names \a function in a fixed spelling: compilers spell signatures differently.
#define QUILLARY_DEBUG_AS(function) QMessageLogger(__FILE__, __LINE__, function).debug()
