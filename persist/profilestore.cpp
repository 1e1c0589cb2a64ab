// SPDX-License-Identifier: MIT
#include "persist/profilestore.h"

#include "base/folderbounds.h"
#include "persist/imagefile.h"
#include "persist/savefile.h"
#include "persist/xmldocument.h"
#include "persist/xmltext.h"

#include <QDebug>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>

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

bool readProfileSettings(const QByteArray &document, ProfileSettings *settings, QString *error)
{
    *settings = ProfileSettings();
    QString decoded;
    if (!decodeXml(document, &decoded, error))
        return false;
    QXmlStreamReader xml(decoded);
    xml.setNamespaceProcessing(false);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QStringRef name = xml.name();
        const bool isAutoload = name == QLatin1String("autoload");
        if (!isAutoload && name != QLatin1String("autosave"))
            continue;
        const QString text = xml.readElementText(QXmlStreamReader::SkipChildElements);
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

QByteArray writeProfileSettings(const ProfileSettings &settings)
{
    const QString autoload = xmlText(settings.autoload);
    QByteArray document;
    QXmlStreamWriter writer(&document);
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
    return document;
}

ProfileStore::ProfileStore(const ProfilesFolder &folder, const QString &romID) : m_folder(folder), m_romID(romID) { }

bool ProfileStore::isSafeIdentifier(const QString &romID)
{
    const QStringList names = romID.split(QLatin1Char('/'));
    return !romID.startsWith(QLatin1Char('/')) && !romID.contains(QChar(QChar::Null)) && !names.contains(QLatin1String("."))
        && !names.contains(QLatin1String(".."));
}

bool ProfileStore::isSafeName(const QString &name)
{
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") && !name.contains(QLatin1Char('/'))
        && !name.contains(QChar(QChar::Null));
}

bool ProfileStore::isAllowedName(const QString &name)
{
    const QLatin1String refused("/:*?<>|");
    return isSafeName(name)
        && std::none_of(refused.begin(), refused.end(), [&name](char one) { return name.contains(QLatin1Char(one)); });
}

QString ProfileStore::cartridgeFolder() const
{
    return m_folder.path + (m_romID.isEmpty() ? QStringLiteral("(no identifier)") : m_romID);
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
    return isSafeName(profile) && staysInside(fileListPath(profile));
}

QString ProfileStore::linkOn(const QString &path) const
{
    return FolderBounds(m_folder.path.chopped(1)).linkOn(path);
}

QString ProfileStore::linkToFileList(const QString &profile) const
{
    return isSafeIdentifier(m_romID) && isSafeName(profile) ? linkOn(fileListPath(profile)) : QString();
}

bool ProfileStore::staysInside(const QString &path) const
{
    const bool inside = isSafeIdentifier(m_romID) && linkOn(path).isEmpty();
    if (!inside)
        qDebug().noquote() << path + QLatin1String(": It leads out of the profiles folder");
    return inside;
}

ProfileStore ProfileStore::readOnly() const
{
    return ProfileStore({m_folder.unwritable, QString()}, m_romID);
}

QString ProfileStore::settingsToRead() const
{
    if (staysInside(settingsPath()) && QFileInfo::exists(settingsPath()))
        return settingsPath();
    return hasReadOnly() ? readOnly().settingsToRead() : QString();
}

QString ProfileStore::fileListToRead(const QString &profile) const
{
    if (isSafe(profile) && QFileInfo::exists(fileListPath(profile)))
        return fileListPath(profile);
    return hasReadOnly() ? readOnly().fileListToRead(profile) : QString();
}

bool ProfileStore::hasProfile(const QString &profile) const
{
    return (isSafe(profile) && QDir(profileFolder(profile)).exists()) || (hasReadOnly() && readOnly().hasProfile(profile));
}

QStringList ProfileStore::profiles() const
{
    QStringList names;
    if (staysInside(cartridgeFolder())) {
        QDirIterator folders(cartridgeFolder(), QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks);
        while (folders.hasNext()) {
            folders.next();
            names.append(folders.fileName());
        }
    }
    if (hasReadOnly())
        names += readOnly().profiles();
    names.removeDuplicates();
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
    if (!isSafeName(profile) || !staysInside(cartridgeFolder()) || (hasReadOnly() && readOnly().hasProfile(profile)))
        return false;
    const QString folder = profileFolder(profile);
    return QFileInfo(folder).isSymLink() ? QFile::remove(folder) : QDir(folder).removeRecursively();
}

ProfileStore::Reading ProfileStore::readSettings(ProfileSettings *settings, QString *error) const
{
    *settings = ProfileSettings();
    QByteArray document;
    const QString path = settingsToRead();
    if (path.isEmpty() || !readWholeFile(path, &document, error))
        return Reading::NotOpened;
    return readProfileSettings(document, settings, error) ? Reading::Done : Reading::Malformed;
}

bool ProfileStore::writeSettings(const ProfileSettings &settings, QString *error, bool *opened) const
{
    QString unused;
    const auto write = [&settings, opened](QIODevice *device) {
        if (opened)
            *opened = true;
        return device->write(writeProfileSettings(settings)) > 0;
    };
    return staysInside(settingsPath()) && saveWhole(settingsPath(), write, error ? error : &unused);
}
