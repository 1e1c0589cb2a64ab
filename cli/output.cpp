// SPDX-License-Identifier: MIT
#include "cli/output.h"

#include "base/printabletext.h"
#include "cli/command.h"

#include <QIODevice>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

#include <utility>

namespace cli
{
QString printable(QString text)
{
    return printableText(std::move(text));
}

void printJson(QTextStream &out, const QJsonObject &document)
{
    // The document's own line feeds aside, such characters stand in strings, where they can be written by their number.
    const QString json = QString::fromUtf8(QJsonDocument(document).toJson());
    QString escaped;
    escaped.reserve(json.size());
    for (const QChar character : json) {
        if (character != QLatin1Char('\n') && isControlOrBidi(character))
            escaped += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
        else
            escaped += character;
    }
    out << escaped;
}

QString counted(qint64 count, const QString &noun)
{
    // Built by hand: the texts have numbers in them, which arg() would take for more places.
    QString text = QString::number(count) + QLatin1Char(' ');
    if (count != 1 && noun.endsWith(QLatin1String("try")))
        return text + noun.chopped(1) + QLatin1String("ies");
    return text + noun + (count == 1 ? QString() : QStringLiteral("s"));
}

int Streams::failed(const QString &message)
{
    remark(message);
    return Failed;
}

void Streams::warn(const QString &message)
{
    remark(QStringLiteral("warning: ") + message);
}

void Streams::remark(const QString &message)
{
    err << QLatin1String("quillary-cli: ") << printable(message) << '\n';
}

bool Streams::writeBytes(const QByteArray &bytes, QString *error)
{
    QIODevice *device = m_standardOutput.device();
    if (!device) { // The stream of a test, which keeps each byte as a character.
        m_standardOutput << QString::fromLatin1(bytes);
        return true;
    }
    m_standardOutput.flush();
    if (m_standardOutput.status() == QTextStream::Ok && device->write(bytes) == bytes.size())
        return true;
    *error = device->errorString();
    return false;
}
}
