// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Whether \a a comes before \a b as people sort file names: runs of decimal digits by their value, so that "2" comes before
/// "10"; all else by its characters, without regard to case unless nothing else differs. A strict order, the same in every
/// locale.
bool naturallyBefore(const QString &a, const QString &b);
