// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QIODevice;

/// Attributes that an element of a document may have: many more than any that this program writes has.
constexpr int maximumAttributes = 1000;

/// Looks through the XML document in \a device, from where it stands to the end, for an element with more than maximumAttributes
/// attributes; the device stands where it stood afterwards. A stream reader compares all attributes of an element with each
/// other, so that a list of a few MiB in one element would keep it busy for minutes. False, with the reason in \a error, when
/// there is one. Documents in UTF-8, UTF-16 and the single-byte encodings are looked through; a sequential device is not.
bool hasFewAttributes(QIODevice *device, QString *error);
