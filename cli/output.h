// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QJsonObject;
class QTextStream;

namespace cli
{
/// \a text with every control character replaced, so that no name out of a file steers a terminal or breaks a line in two.
QString printable(QString text);

/// Prints \a document as the one JSON document of a command.
void printJson(QTextStream &out, const QJsonObject &document);

/// \a count followed by \a noun, with an "s" unless there is one of it.
QString counted(qint64 count, const QString &noun);
}
