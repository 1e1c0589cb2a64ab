// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// The most attributes that an element may have. A reader compares all attributes of an element with each other: more of them
/// would make the time quadratic in the size of the file.
constexpr int maximumAttributes = 2000;

/// Decodes \a document, the whole content of an untrusted XML file, into \a text for a QXmlStreamReader. Returns false, with the
/// reason in \a error, for everything whose cost a reader would not bound: an encoding other than UTF-8 and UTF-16, a document
/// type (also inside a comment), more than maximumAttributes "=" outside quotes in a tag, and more than 512 MiB.
/// Whether the text is well-formed is left to the reader.
bool decodeXml(const QByteArray &document, QString *text, QString *error);
