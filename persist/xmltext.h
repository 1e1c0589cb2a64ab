// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// \a text without what an XML document cannot hold: control characters other than tab, line feed and carriage return, the two
/// non-characters at the end of the basic plane, and surrogates without their other half. A stream writer drops most of these as
/// well, but counts that as an error.
QString xmlText(const QString &text);
