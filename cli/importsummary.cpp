// SPDX-License-Identifier: MIT
#include "cli/importsummary.h"

#include "cli/arguments.h"

#include <QJsonArray>
#include <QJsonObject>

namespace cli
{
QJsonObject json(const ImportSummary &summary)
{
    return {{QStringLiteral("source"), summary.source},
            {QStringLiteral("target"), summary.target},
            {QStringLiteral("written"), summary.written},
            {QStringLiteral("notImported"), QJsonArray::fromStringList(summary.left)},
            {QStringLiteral("warnings"), QJsonArray::fromStringList(summary.warnings)},
            {QStringLiteral("foldersAdded"), summary.foldersAdded},
            {QStringLiteral("texturesAdded"), summary.texturesAdded}};
}

void printProblems(const ImportSummary &summary, Streams &streams)
{
    for (const QString &line : summary.warnings)
        streams.warn(line);
    for (const QString &line : summary.left)
        streams.remark(line);
}

QCommandLineOption allowOverrunOption()
{
    return {QStringLiteral("allow-overrun"),
            QStringLiteral("Write a JPEG although it is longer than the one it replaces and runs over what is behind.")};
}

JpegRule jpegRule(const Arguments &arguments)
{
    return arguments.isSet("allow-overrun") ? JpegRule::AllowOverrun : JpegRule::Refuse;
}
}
