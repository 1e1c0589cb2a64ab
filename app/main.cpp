// SPDX-License-Identifier: MIT
#include "app/mainwindow.h"
#include "app/programoptions.h"
#include "app/screenshot.h"
#include "app/termination.h"
#include "persist/filesync.h"
#include "translations/translations.h"

#include <QApplication>
#include <QDebug>
#include <QIcon>
#include <QTimer>

#include <memory>

int main(int argc, char *argv[])
{
    if (const std::optional<int> status = answerWithoutWindow(argc, argv))
        return *status;

    surviveFileSizeLimit();
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Brimholt"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("brimholt.example"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillary"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUILLARY_VERSION));
    QCoreApplication::setAttribute(Qt::AA_DontShowIconsInMenus, true);
    // By its desktop entry a desktop knows the window's name and icon.
    QGuiApplication::setDesktopFileName(QStringLiteral(QUILLARY_APPLICATION_ID));

    const ProgramOptions options = programOptions(QCoreApplication::arguments());
    const std::unique_ptr<SettingsCopy> settingsCopy(options.screenshot.isEmpty() ? nullptr : new SettingsCopy);
    installTranslation(systemLanguages());
    MainWindow window;
    saveFileListAtTermination(&window);
    qDebug().noquote() << describe(window.profilesFolder());
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/quillary")));
    window.show();
    if (!options.screenshot.isEmpty())
        return takeScreenshot(&window, options.image, options.screenshot) ? EXIT_SUCCESS : EXIT_FAILURE;
    if (!options.image.isEmpty())
        QTimer::singleShot(0, &window, [&] { window.loadFile(options.image); });
    return QApplication::exec();
}
