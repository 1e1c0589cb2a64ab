// SPDX-License-Identifier: MIT
#include "persist/profilestore.h"

#include "base/folderbounds.h"
#include "persist/attributeguard.h"
#include "persist/savefile.h"
#include "persist/xmltext.h"

#include <QDebug>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace
{
/// Writes an element that holds \a text, carriage returns as references: a reader takes plain ones for line feeds.
void writeTextElement(QXmlStreamWriter *writer, const QString &element, const QString &text)
{
    writer->writeStartElement(element);
    const QStringList lines = text.split(QLatin1Char('\r'));
    writer->writeCharacters(lines.first());
    for (int i = 1; i < lines.size(); ++i) {
        writer->writeEntityReference(QStringLiteral("#13"));
        writer->writeCharacters(lines.at(i));
    }
    writer->writeEndElement();
}
}

bool readProfileSettings(QIODevice *device, ProfileSettings *settings, QString *error)
{
    *settings = ProfileSettings();
    if (!hasFewAttributes(device, error))
        return false;
    QXmlStreamReader xml(device);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QStringRef name = xml.name();
        const bool isAutoload = name == QLatin1String("autoload");
        if (!isAutoload && name != QLatin1String("autosave"))
            continue;
        const QString text = xml.readElementText(QXmlStreamReader::SkipChildElements);
        if (xml.hasError())
            break;
        if (isAutoload)
            settings->autoload = text;
        else
            settings->autosave = text == QLatin1String("true");
    }
    if (!xml.hasError())
        return true;
    *error = xml.errorString();
    return false;
}

bool writeProfileSettings(const ProfileSettings &settings, QIODevice *device)
{
    const QString autoload = xmlText(settings.autoload);
    QXmlStreamWriter writer(device);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(-1); // one tab
    writer.writeStartDocument();
    writer.writeComment(QStringLiteral("The settings version attribute is used by the parser to determine how it should read the "
                                       "data. Do not change it unless you know what you're doing."));
    writer.writeStartElement(QStringLiteral("settings"));
    writer.writeAttribute(QStringLiteral("version"), QStringLiteral("1"));
    writeTextElement(&writer, QStringLiteral("autoload"), autoload.isEmpty() ? QStringLiteral("default") : autoload);
    writer.writeTextElement(QStringLiteral("autosave"), settings.autosave ? QStringLiteral("true") : QStringLiteral("false"));
    writer.writeEndElement();
    writer.writeEndDocument();
    return !writer.hasError();
}

ProfileStore::ProfileStore(const QString &profilesFolder, const QString &romID) : m_profilesFolder(profilesFolder), m_romID(romID)
{
}

bool ProfileStore::isSafeName(const QString &name)
{
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") && !name.contains(QLatin1Char('/'))
        && !name.contains(QChar(QChar::Null));
}

QString ProfileStore::cartridgeFolder() const
{
    return m_profilesFolder + m_romID;
}

QString ProfileStore::settingsPath() const
{
    return cartridgeFolder() + QLatin1String("/settings.xml");
}

QString ProfileStore::profileFolder(const QString &profile) const
{
    return cartridgeFolder() + QLatin1Char('/') + profile;
}

QString ProfileStore::fileListPath(const QString &profile) const
{
    return profileFolder(profile) + QLatin1String("/fileList.xml");
}

bool ProfileStore::isSafe(const QString &profile) const
{
    return isSafeName(m_romID) && isSafeName(profile) && staysInside(fileListPath(profile));
}

bool ProfileStore::staysInside(const QString &path) const
{
    // With a name that is no plain one the path need not even begin with the folder.
    const bool inside = isSafeName(m_romID) && !FolderBounds(m_profilesFolder.chopped(1)).leavesOn(path);
    if (!inside)
        qDebug().noquote() << path + QLatin1String(": It leads out of the profiles folder");
    return inside;
}

bool ProfileStore::hasSettings() const
{
    return staysInside(settingsPath()) && QFileInfo::exists(settingsPath());
}

bool ProfileStore::hasProfile(const QString &profile) const
{
    return isSafe(profile) && QDir(profileFolder(profile)).exists();
}

bool ProfileStore::hasFileList(const QString &profile) const
{
    return isSafe(profile) && QFileInfo::exists(fileListPath(profile));
}

QStringList ProfileStore::profiles() const
{
    QStringList names;
    if (!staysInside(cartridgeFolder()))
        return names;
    QDirIterator folders(cartridgeFolder(), QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks);
    while (folders.hasNext()) {
        folders.next();
        names.append(folders.fileName());
    }
    return names;
}

bool ProfileStore::createCartridgeFolder() const
{
    return staysInside(cartridgeFolder()) && QDir().mkpath(cartridgeFolder());
}

bool ProfileStore::createProfile(const QString &profile) const
{
    return isSafe(profile) && QDir().mkpath(profileFolder(profile));
}

bool ProfileStore::removeProfile(const QString &profile) const
{
    if (!isSafeName(profile) || !staysInside(cartridgeFolder()))
        return false;
    const QString folder = profileFolder(profile);
    return QFileInfo(folder).isSymLink() ? QFile::remove(folder) : QDir(folder).removeRecursively();
}

ProfileStore::Reading ProfileStore::readSettings(ProfileSettings *settings, QString *error) const
{
    *settings = ProfileSettings();
    QFile file(settingsPath());
    if (!staysInside(settingsPath()) || !openXmlFile(&file))
        return Reading::NotOpened;
    return readProfileSettings(&file, settings, error) ? Reading::Done : Reading::Malformed;
}

bool ProfileStore::writeSettings(const ProfileSettings &settings, QString *error) const
{
    QString unused;
    return staysInside(settingsPath())
        && saveWhole(
               settingsPath(), [&settings](QIODevice *device) { return writeProfileSettings(settings, device); },
               error ? error : &unused);
}
