// SPDX-License-Identifier: MIT
// Reading settings.xml, any bytes or a document put together from the input, and keeping profiles of any names. What was read,
// also before an error, is written as a document that reads without error and gives the same settings, and that one is written as
// the same bytes; characters that XML cannot hold go at the first writing. A profile is made, listed, found as the one to load,
// and removed exactly when its name and the cartridge's are plain folder names; no name touches anything outside the profiles
// folder.
#include "scratchfolder.h"

#include "persist/profilestore.h"
#include "persist/xmltext.h"

namespace
{
QByteArray anyDocument(FuzzInput *input)
{
    static const char *const pieces[] = {"<autoload>", "</autoload>",   "<autosave>", "</autosave>",  "true",  "false",
                                         "default",    "<other/>",      "<settings>", "</settings>",  "&#13;", "&amp;",
                                         "\r\n",       "<![CDATA[<]]>", "<!-- -->",   "<x:autoload/>"};
    QByteArray text = "<settings version=\"1\">";
    while (!input->isUsedUp())
        text += input->below(4) == 0 ? input->text(6).toHtmlEscaped().toUtf8() : QByteArray(input->oneOf(pieces));
    return text + "</settings>";
}

bool read(const QByteArray &document, ProfileSettings *settings)
{
    QString error;
    const bool whole = readProfileSettings(document, settings, &error);
    require(whole == error.isEmpty(), "a failure has a reason, and nothing else has");
    return whole;
}

/// Writes and reads \a settings: they come back, and the second writing gives what the first gave.
void requireKept(const ProfileSettings &settings)
{
    const QByteArray document = writeProfileSettings(settings);
    ProfileSettings again;
    require(read(document, &again), "what is written reads without error");
    const QString name = xmlText(settings.autoload);
    require(again.autoload == (name.isEmpty() ? QStringLiteral("default") : name), "reading it again gives the same profile");
    require(again.autosave == settings.autosave, "and the same choice");
    require(writeProfileSettings(again) == document, "writing that gives the same bytes");
}

QString anyFolderName(FuzzInput *input)
{
    static const char *const names[] = {"default",        "a", ".", "..", "../beside", "../../x", "/", "a/b", "",
                                        "a/../../beside", "~", " "};
    return input->flag() ? QString::fromLatin1(input->oneOf(names)) : input->text(8);
}

/// A name that the file system can have, as it is: characters that have no place in a file's name are none of the store's
/// business.
bool isKeptByFileSystem(const QString &name)
{
    return QFile::decodeName(QFile::encodeName(name)) == name && QFile::encodeName(name).size() < 256;
}

void keepProfiles(FuzzInput *input)
{
    static const ScratchFolder scratch;
    const QString cartridge = anyFolderName(input);
    const QString profile = anyFolderName(input);
    ProfileSettings settings;
    settings.autoload = input->flag() ? profile : anyFolderName(input);
    settings.autosave = input->flag();

    const ProfileStore store({scratch.work() + QLatin1Char('/'), QString()}, cartridge);
    const bool kept = isKeptByFileSystem(cartridge) && isKeptByFileSystem(profile);
    const bool safe = store.isSafe(profile) && kept;
    const bool made = store.createCartridgeFolder() && store.createProfile(profile);
    require(made == safe || !kept, "a profile is made of plain folder names");
    if (safe) {
        require(store.hasProfile(profile), "it is there");
        require(store.profiles() == QStringList(profile), "and is listed, and nothing else");
        require(!store.hasFileList(profile) && !store.hasSettings(), "it holds nothing yet");
        require(store.writeSettings(settings) && store.hasSettings(), "settings can be written beside it");
        ProfileSettings again;
        QString error;
        require(store.readSettings(&again, &error) == ProfileStore::Reading::Done, "and read");
        require(again.autosave == settings.autosave, "with the same choice");
        const int expected = xmlText(settings.autoload) == profile ? 0
            : settings.autoload.isEmpty() && profile == "default"  ? 0
                                                                   : -1;
        require(xmlText(settings.autoload).isEmpty() || store.profiles().indexOf(again.autoload) == expected,
                "and lead to the profile that loads automatically");
        require(store.removeProfile(profile) && store.profiles().isEmpty(), "it can be removed");
    } else {
        store.writeSettings(settings);
        store.removeProfile(profile);
    }
    scratch.requireUntouchedAround();
    scratch.clear();
}
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    needApplication();
    FuzzInput input(data, size);
    ProfileSettings settings;
    switch (input.below(4)) {
    case 0:
        read(input.rest(), &settings);
        requireKept(settings);
        break;
    case 1:
        read(anyDocument(&input), &settings);
        requireKept(settings);
        break;
    case 2:
        settings.autosave = input.flag();
        settings.autoload = input.text(40);
        requireKept(settings);
        break;
    default: keepProfiles(&input); break;
    }
    return 0;
}
