// SPDX-License-Identifier: MIT
#pragma once

#include "cli/command.h"
#include "transfer/jpegcheck.h"

#include <QCommandLineOption>
#include <QString>
#include <QStringList>

class QJsonObject;

namespace cli
{
class Arguments;

/// What an import did, for people and for programs.
struct ImportSummary
{
    QString source; ///< The picture, folder or pack.
    QString target; ///< The texture or folder of the table.
    int written = 0; ///< Textures.
    QStringList left; ///< A line for each picture or folder that was not imported.
    QStringList warnings; ///< A line for each thing that was dropped or changed beside what was imported.
    int foldersAdded = 0;
    int texturesAdded = 0;
};

QJsonObject json(const ImportSummary &summary);

/// Prints the warnings and then what was not imported to standard error.
void printProblems(const ImportSummary &summary, Streams &streams);

/// The option that lets a JPEG be longer than the one it replaces, which is refused without.
QCommandLineOption allowOverrunOption();
JpegRule jpegRule(const Arguments &arguments);
}
