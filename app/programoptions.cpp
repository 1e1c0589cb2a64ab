// SPDX-License-Identifier: MIT
#include "app/programoptions.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

#include <cstdio>

namespace
{
constexpr int usageError = 2;

/// The program's options, and those of the toolkit, which are there before an application object takes them out.
class Parser : public QCommandLineParser
{
public:
    Parser()
    {
        setSingleDashWordOptionMode(ParseAsLongOptions);
        setApplicationDescription(QStringLiteral("Explore and edit the textures inside Nintendo 64 cartridge images."));
        addOptions({help, version, screenshot});
        addPositionalArgument(QStringLiteral("image"), QStringLiteral("The cartridge image to open."), QStringLiteral("[image]"));
        for (const char *name :
             {"platform", "platformpluginpath", "platformtheme", "plugin", "qwindowgeometry", "geometry", "qwindowicon", "icon",
              "qwindowtitle", "title", "style", "stylesheet", "session", "display", "fontengine", "dialogs"})
            addToolkitOption(QLatin1String(name), QStringLiteral("value"));
        for (const char *name : {"reverse", "widgetcount", "nograb", "dograb", "sync"})
            addToolkitOption(QLatin1String(name), QString());
    }

    /// Why the arguments are wrong, or nothing.
    QString complaint(const QStringList &arguments)
    {
        if (!parse(arguments))
            return errorText();
        if (positionalArguments().size() > 1)
            return QStringLiteral("More than one image is named.");
        if (isSet(screenshot) && value(screenshot).isEmpty())
            return QStringLiteral("The screenshot needs a file name.");
        return QString();
    }

    const QCommandLineOption help {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help and end.")};
    const QCommandLineOption version {{QStringLiteral("v"), QStringLiteral("version")},
                                      QStringLiteral("Show the version and end.")};
    const QCommandLineOption screenshot {
        QStringLiteral("screenshot"),
        QStringLiteral("Open the image, select its first texture, render the window into a PNG file and end."),
        QStringLiteral("png")};

private:
    void addToolkitOption(const QString &name, const QString &valueName)
    {
        QCommandLineOption option(name, QString(), valueName);
        option.setFlags(QCommandLineOption::HiddenFromHelp);
        addOption(option);
    }
};

void print(std::FILE *stream, const QString &text)
{
    std::fputs(qPrintable(text), stream);
}
}

std::optional<int> answerWithoutWindow(int &argc, char **argv)
{
    // What matters for this first look is ASCII; decoding the rest has to wait until an application object has set the locale.
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLatin1(argv[i]);
    Parser parser;
    if (parser.complaint(arguments).isEmpty() && !parser.isSet(parser.help) && !parser.isSet(parser.version))
        return std::nullopt;

    const QCoreApplication application(argc, argv);
    const QString complaint = parser.complaint(QCoreApplication::arguments());
    if (!complaint.isEmpty()) {
        print(stderr, QStringLiteral("quillary: %1\nTry \"quillary --help\".\n").arg(complaint));
        return usageError;
    }
    print(stdout, parser.isSet(parser.help) ? parser.helpText() : QStringLiteral("Quillary " QUILLARY_VERSION "\n"));
    return 0;
}

ProgramOptions programOptions(const QStringList &arguments)
{
    Parser parser;
    parser.parse(arguments);
    ProgramOptions options;
    const QString image = parser.positionalArguments().value(0);
    if (!image.isEmpty())
        options.image = QDir::cleanPath(QDir::current().absoluteFilePath(image));
    options.screenshot = parser.value(parser.screenshot);
    return options;
}
