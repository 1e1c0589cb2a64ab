// SPDX-License-Identifier: MIT
#include "cli/output.h"

#include "cli/command.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

namespace cli
{
QString printable(QString text)
{
    for (QChar &character : text) {
        if (character.category() == QChar::Other_Control)
            character = QChar(QChar::ReplacementCharacter);
    }
    return text;
}

void printJson(QTextStream &out, const QJsonObject &document)
{
    out << QString::fromUtf8(QJsonDocument(document).toJson());
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

void Streams::remark(const QString &message)
{
    err << QLatin1String("quillary-cli: ") << printable(message) << '\n';
}
}
