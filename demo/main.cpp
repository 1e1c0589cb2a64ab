// SPDX-License-Identifier: MIT
#include "demo/democartridge.h"

#include <QCoreApplication>
#include <QTextStream>

/// quillary-demo [FOLDER [PROFILES]]: writes the demo cartridge and what goes with it to FOLDER ("demo" unless given), and its
/// file list below PROFILES (the folder "profiles" beside this program, where the window looks).
int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QTextStream errors(stderr);
    if (arguments.size() > 3 || (arguments.size() > 1 && arguments.at(1).startsWith(QLatin1Char('-')))) {
        errors << "Usage: quillary-demo [FOLDER [PROFILES]]\n"
                  "Writes the demo cartridge, pictures and a texture pack to FOLDER (demo unless given), and its file list\n"
                  "below PROFILES (the folder profiles beside this program unless given).\n";
        const bool asked = arguments.at(1) == QLatin1String("--help") || arguments.at(1) == QLatin1String("-h");
        return asked ? 0 : 2;
    }
    const QString folder = arguments.value(1, QStringLiteral("demo"));
    const QString profiles = arguments.value(2, QCoreApplication::applicationDirPath() + QStringLiteral("/profiles"));
    QString error;
    if (!demo::writeDemo(folder, profiles, &error)) {
        errors << error << '\n';
        return 1;
    }
    QTextStream(stdout) << "Wrote the demo cartridge to " << folder << '\n';
    return 0;
}
