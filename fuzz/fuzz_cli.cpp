// SPDX-License-Identifier: MIT
// The command line, called in this process with any command, options and values, in a scratch folder with images, profiles and
// pictures whose names are partly hostile. It ends with one of the documented statuses; wrong usage prints nothing but the
// complaint; with
// --json a command that is done prints one JSON document; no name steers the terminal. Commands that only look, wrong usage and
// dry runs change no file; the image stays as it is unless it is to be changed in place; nothing outside the scratch folder is
// touched.
#include "scratchfolder.h"
#include "tablecheck.h"

#include "cli/command.h"
#include "cli/commandline.h"

#include <QImage>
#include <QJsonDocument>
#include <QTextStream>

#include <algorithm>

#include <sys/stat.h>

namespace
{
QByteArray image(const QByteArray &start, const QByteArray &identifier)
{
    QByteArray bytes(4096, '\0');
    for (int i = 64; i < bytes.size(); ++i)
        bytes[i] = char(i / 3);
    bytes.replace(0, start.size(), start);
    return bytes.replace(59, identifier.size(), identifier);
}

QByteArray swapped(QByteArray bytes)
{
    for (int i = 0; i + 1 < bytes.size(); i += 2)
        std::reverse(bytes.begin() + i, bytes.begin() + i + 2);
    return bytes;
}

QByteArray tableDocument()
{
    return "<root version=\"2\"><directory name=\"water\" address=\"0x100\" size=\"0x200\">"
           "<texture name=\"sky\" address=\"0x0\" format=\"rgba32\" width=\"4\" height=\"4\"/>"
           "<directory name=\"..\" address=\"0x10\"><texture name=\"../beside/x\" format=\"i8\" width=\"2\" "
           "height=\"2\"/></directory>"
           "</directory>"
           "<texture name=\"indexed\" address=\"0x200\" format=\"ci4\" width=\"4\" height=\"4\" palette=\"0x300\"/>"
           "<texture name=\"/beside\" address=\"0xFF0\" format=\"i8\" width=\"8\" height=\"8\"/>"
           "<texture name=\"../../../../../beside/kept.txt\" address=\"0x40\" format=\"i4\" width=\"3\" height=\"3\"/>"
           "<texture name=\"line&#10;&#155;2J\" address=\"0x44\" format=\"ia16\" width=\"1\" height=\"9\"/>"
           "<texture name=\"photo\" address=\"0x800\" format=\"jpeg\"/>"
           "<texture name=\"large\" address=\"0x10\" format=\"rgba32\" width=\"2147483647\" height=\"2\"/>"
           "<texture name=\"none\" address=\"0x10\" format=\"none\" width=\"2\" height=\"2\"/></root>";
}

void putPicture(const QString &path, int width, int height, QImage::Format format)
{
    QImage picture(width, height, format);
    if (format == QImage::Format_Indexed8)
        picture.setColorTable(QVector<QRgb>(16, 0xFF336699));
    picture.fill(format == QImage::Format_Indexed8 ? 3u : 0x80123456u);
    require(picture.save(path), "a scratch picture can be written");
}

/// Fills the folder to work in.
void furnish(const ScratchFolder &scratch)
{
    scratch.clear();
    const QDir work(scratch.work());
    for (const char *folder : {"profiles/NFZE0/default", "profiles/NFZE0/broken", "profiles/junk/default", "pictures/water/",
                               "pack/A_100_lake", "pack/P_800_well"})
        require(work.mkpath(QString::fromLatin1(folder)), "a scratch folder can be made");
    const QByteArray game = image(QByteArray("\x80\x37\x12\x40\x00\x00\x00\x0F", 8), "NFZE");
    putFile(work.filePath("game.z64"), game);
    putFile(work.filePath("game.v64"), swapped(game));
    putFile(work.filePath("evil.z64"), image(game.left(8), "../b"));
    putFile(work.filePath("...bin"), "junk");
    putFile(work.filePath("junk.bin"), "junk");
    putFile(work.filePath("empty.bin"), QByteArray());
    mkfifo(work.filePath("pipe").toLocal8Bit(), 0600);
    putFile(work.filePath("profiles/NFZE0/settings.xml"), "<settings><autoload>default</autoload></settings>");
    putFile(work.filePath("profiles/NFZE0/default/fileList.xml"), tableDocument());
    putFile(work.filePath("profiles/junk/default/fileList.xml"), tableDocument());
    putFile(work.filePath("profiles/NFZE0/broken/fileList.xml"), "<root><texture name=\"sky\"/>");
    putPicture(work.filePath("pictures/sky.png"), 4, 4, QImage::Format_ARGB32);
    putPicture(work.filePath("pictures/indexed.png"), 4, 4, QImage::Format_Indexed8);
    putPicture(work.filePath("pictures/water/sky.png"), 4, 4, QImage::Format_ARGB32);
    putPicture(work.filePath("pictures/photo.jpeg"), 8, 8, QImage::Format_RGB32);
    putPicture(work.filePath("pack/A_100_lake/10_rgba32_sky.png"), 2, 2, QImage::Format_ARGB32);
    putPicture(work.filePath("pack/P_800_well/20_i8_sky.png"), 2, 2, QImage::Format_ARGB32);
}

/// The arguments of one call, and what is known about them.
class Call
{
public:
    explicit Call(FuzzInput *input) : m_input(input)
    {
        const int kind = input->below(16);
        const cli::Command &command = cli::commands().at(input->below(cli::commands().size()));
        m_command = kind == 0 ? text() : command.name;
        m_options = command.options;
        m_arguments << QStringLiteral("quillary-cli") << (kind == 0 ? QStringList(m_command) : m_command.split(QLatin1Char(' ')));
        // Without it, the profiles are beside the program, where nothing may be written.
        const auto isProfiles = [](const QCommandLineOption &one) { return one.names().contains(QStringLiteral("profiles")); };
        if (std::any_of(m_options.begin(), m_options.end(), isProfiles))
            m_arguments << QStringLiteral("--profiles") << QStringLiteral("profiles");
        if (m_command == QLatin1String("demo"))
            m_arguments << text() << text(); // Not the one that it takes: drawing the demo cartridge takes long.
        else
            addAll();
    }

    QStringList arguments() const
    {
        QStringList list = m_arguments;
        // Behind an option made up from the input, a name could become the file to write to.
        if (m_hasOddOption) {
            for (QString &argument : list)
                argument.remove(QStringLiteral(".."));
        }
        return list;
    }

    const QString &command() const { return m_command; }
    /// The image, unless its name or the options are made up from the input.
    QString imageName() const { return m_hasOddOption ? QString() : m_image; }
    bool has(const char *option) const { return m_arguments.contains(QLatin1String(option)); }
    bool hasOddOption() const { return m_hasOddOption; }

private:
    void addAll()
    {
        static const char *const images[] = {"game.z64", "game.z64",  "game.z64", "game.z64", "game.z64",
                                             "game.v64", "evil.z64",  "...bin",   "junk.bin", "empty.bin",
                                             "pipe",     "/dev/zero", ".",        "missing",  "./game.z64"};
        if (m_input->below(16) > 0)
            m_arguments << (m_image = QString::fromLatin1(m_input->oneOf(images)));
        for (int count = m_input->below(7); count > 0; --count) {
            if (m_input->below(3) == 0)
                addPositional();
            else
                addOption();
        }
    }

    void addPositional()
    {
        static const char *const names[] = {"pictures",
                                            "pictures/sky.png",
                                            "pictures/indexed.png",
                                            "pictures/photo.jpeg",
                                            "pack",
                                            "sky",
                                            "water/sky",
                                            "water/",
                                            "indexed",
                                            "photo",
                                            "../beside",
                                            "..",
                                            "water/..",
                                            "large",
                                            "pipe",
                                            "game.z64"};
        m_arguments << (m_input->below(10) == 0 ? text() : QString::fromLatin1(m_input->oneOf(names)));
    }

    void addOption()
    {
        const int kind = m_input->below(16);
        if (kind == 0 || m_options.isEmpty()) {
            m_hasOddOption = true;
            m_arguments << QLatin1String("-") + text();
        } else if (kind == 1) {
            m_hasOddOption = true;
            m_arguments << QStringLiteral("--");
        } else if (kind == 2) {
            m_arguments << QStringLiteral("--help");
        } else {
            addKnownOption(m_options.at(m_input->below(m_options.size())));
        }
    }

    void addKnownOption(const QCommandLineOption &known)
    {
        const QString name = known.names().at(m_input->below(known.names().size()));
        const QString option = (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
        if (known.valueName().isEmpty()) {
            m_arguments << option;
            return;
        }
        const QString value = valueOf(option);
        if (m_input->flag() && name.size() > 1)
            m_arguments << option + QLatin1Char('=') + value;
        else
            m_arguments << option << value;
    }

    QString valueOf(const QString &option)
    {
        static const char *const profiles[] = {"default", "broken", "../junk/default", "..", ".", "", "new", "../../../beside"};
        static const char *const files[] = {"out.bin",    "out/", "game.z64",   ".",        "pictures/sky.png",
                                            "./game.z64", "",     "game.z64/x", "missing/x"};
        static const char *const numbers[] = {"0", "0x10", "16", "4095", "0x7FFFFFFF", "2147483647", "-1", "65535", "4", "x"};
        static const char *const words[] = {"z64",    "v64",  "n64",    "rgba32", "i4,i8", "ci4", "jpeg",  "rgba16", "overwrite",
                                            "create", "keep", "ignore", "6102",   "7101",  "ci8", "water", "../..",  "sky"};
        if (m_input->below(10) == 0)
            return text();
        if (option == QLatin1String("--profile"))
            return QString::fromLatin1(m_input->oneOf(profiles));
        if (option == QLatin1String("-o") || option == QLatin1String("--output"))
            return QString::fromLatin1(m_input->oneOf(files));
        if (option == QLatin1String("--profiles"))
            return QStringLiteral("profiles");
        for (const char *number : {"--offset", "--width", "--height", "--palette"}) {
            if (option == QLatin1String(number))
                return QString::fromLatin1(m_input->oneOf(numbers));
        }
        return QString::fromLatin1(m_input->oneOf(words));
    }

    /// Characters that lead out of no folder.
    QString text()
    {
        QString text = m_input->text(6).remove(QLatin1Char('/')).remove(QStringLiteral(".."));
        m_hasOddOption = m_hasOddOption || text.startsWith(QLatin1Char('-'));
        return text;
    }

    FuzzInput *m_input;
    QString m_command;
    QList<QCommandLineOption> m_options; ///< Those that the command has.
    QString m_image;
    QStringList m_arguments;
    bool m_hasOddOption = false;
};

void requireNoControls(const QString &text)
{
    require(std::none_of(text.begin(), text.end(),
                         [](QChar c) { return c.category() == QChar::Other_Control && c != QLatin1Char('\n'); }),
            "no control character reaches the terminal");
}

void checkOutput(const Call &call, int status, const QString &out, const QString &err)
{
    require(status == cli::Done || status == cli::Failed || status == cli::WrongUsage, "a documented exit status");
    require(status == cli::Done || !err.isEmpty() || call.command() == QLatin1String("verify")
                || call.command() == QLatin1String("checksum"),
            "a failure is explained");
    require(status != cli::WrongUsage || (out.isEmpty() && err.endsWith(QLatin1String("--help\".\n"))),
            "wrong usage points to the help");
    requireNoControls(out);
    requireNoControls(err);
    if (status == cli::Done && call.has("--json") && !call.has("--help") && !call.hasOddOption()) {
        QJsonParseError error {};
        QJsonDocument::fromJson(out.toUtf8(), &error);
        require(error.error == QJsonParseError::NoError, "one JSON document");
    }
}

void checkFiles(const Call &call, int status, const FolderContent &before, const FolderContent &after)
{
    static const QStringList lookers {QStringLiteral("info"), QStringLiteral("list"), QStringLiteral("verify"),
                                      QStringLiteral("demo")};
    if (before == after)
        return;
    require(status != cli::WrongUsage, "wrong usage changes no file");
    require(!lookers.contains(call.command()), "a command that looks changes no file");
    require(!call.has("--dry-run") || call.hasOddOption(), "a dry run changes no file");
    const QString image = QDir::cleanPath(call.imageName());
    if (!call.imageName().isEmpty() && !call.has("--in-place"))
        require(before.value(image) == after.value(image), "the image stays as it is");
}
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    needApplication();
    static const ScratchFolder scratch;
    static FolderContent furnished;
    if (furnished.isEmpty()) {
        furnish(scratch);
        furnished = contentOf(scratch.work());
    }
    FuzzInput input(data, size);
    const Call call(&input);
    QString out;
    QString err;
    QTextStream outStream(&out);
    QTextStream errStream(&err);
    const QString home = QDir::currentPath();
    require(QDir::setCurrent(scratch.work()), "the scratch folder can be entered");
    const int status = cli::run(call.arguments(), outStream, errStream);
    require(QDir::setCurrent(home), "and left again");
    deleteBelow(currentROM.root);

    const FolderContent after = contentOf(scratch.work());
    checkOutput(call, status, out, err);
    checkFiles(call, status, furnished, after);
    scratch.requireUntouchedAround();
    if (after != furnished)
        furnish(scratch);
    return 0;
}
