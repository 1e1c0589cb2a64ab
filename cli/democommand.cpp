// SPDX-License-Identifier: MIT
#include "cli/arguments.h"
#include "cli/commandtable.h"
#include "cli/output.h"
#include "cli/profile.h"
#include "demo/democartridge.h"

#include <QFileInfo>
#include <QJsonObject>

namespace cli
{
namespace
{
int run(const Arguments &arguments, Streams &streams)
{
    const QString folder = arguments.positional(0);
    if (folder.isEmpty())
        arguments.reject(QStringLiteral("It needs the name of a folder"));
    if (arguments.rejected(streams))
        return WrongUsage;
    const ProfileStore store(profilesFolder(arguments), QLatin1String(demo::identifier));
    const QString list = store.fileListPath(ProfileSettings().autoload);
    const bool kept = QFileInfo::exists(list);
    QString error;
    if (!demo::writeDemo(folder, profilesFolder(arguments).path, &error))
        return streams.failed(error);
    if (arguments.isSet("json")) {
        printJson(streams.out,
                  {{QStringLiteral("folder"), folder}, {QStringLiteral("fileList"), list}, {QStringLiteral("kept"), kept}});
        return Done;
    }
    streams.out << QLatin1String("Wrote the demo cartridge, pictures and a texture pack to ") << printable(folder) << '\n'
                << (kept ? QLatin1String("Kept ") : QLatin1String("Wrote ")) << printable(list) << '\n';
    return Done;
}
}

Command demoCommand()
{
    return {QStringLiteral("demo"),
            QStringLiteral("Write the demo cartridge with its pictures and its profile."),
            QStringLiteral("FOLDER"),
            QStringLiteral(
                "Writes a cartridge of the program's own in three byte orders, pictures to import, a texture pack and pictures\n"
                "to search for into FOLDER, and the cartridge's file list into the profiles folder unless there is one."),
            1,
            1,
            QList<QCommandLineOption> {profilesOption()} << jsonOption(),
            run};
}
}
