// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

class QIODevice;

/// What a cartridge's settings.xml says, for all its profiles.
struct ProfileSettings
{
    QString autoload = QStringLiteral("default"); ///< The profile to load with the cartridge.
    bool autosave = true; ///< Write the file list when the program closes.
};

/// Reads a settings document. Starts from the defaults; whatever it does not know is passed over, and autosave is on only for
/// exactly "true". A malformed document yields false and the reader's message in \a error; what was read before counts. So does
/// one in which an element has too many attributes, of which nothing is read.
bool readProfileSettings(QIODevice *device, ProfileSettings *settings, QString *error);

/// Writes a settings document, with "default" for an empty name and without characters that XML cannot hold. Returns false when
/// the device refuses data.
bool writeProfileSettings(const ProfileSettings &settings, QIODevice *device);

/// The folder of one cartridge's profiles: settings.xml and a folder per profile, which holds its fileList.xml.
/// The names come from cartridge headers and files, and the folders may have been handed on: with a name that is no plain folder
/// name, and with a symbolic link that leads out of the profiles folder, every operation fails and nothing is touched. The paths
/// are put together all the same, for messages.
class ProfileStore
{
public:
    enum class Reading { Done, NotOpened, Malformed };

    /// \a profilesFolder is the folder of all cartridges and ends in "/"; \a romID names the cartridge.
    ProfileStore(const QString &profilesFolder, const QString &romID);

    /// Whether \a name stands for a folder right inside another: not empty, neither "." nor "..", no "/" and no zero character.
    static bool isSafeName(const QString &name);

    QString cartridgeFolder() const;
    QString settingsPath() const;
    QString profileFolder(const QString &profile) const;
    QString fileListPath(const QString &profile) const;

    /// Whether the profile's paths lie inside the profiles folder, with all links followed.
    bool isSafe(const QString &profile) const;
    bool hasSettings() const;
    bool hasProfile(const QString &profile) const;
    bool hasFileList(const QString &profile) const;
    /// The names of the profiles, in the order of the file system. Symbolic links are no profiles.
    QStringList profiles() const;

    /// Creates the cartridge's folder with all that is missing above it; true also when it is there already.
    bool createCartridgeFolder() const;
    /// Creates the profile's folder with all that is missing above it; true also when it is there already.
    bool createProfile(const QString &profile) const;
    /// Removes the profile's folder with everything in it, without following symbolic links. False when something is left.
    bool removeProfile(const QString &profile) const;

    /// Reads settings.xml; the defaults when it cannot be opened. \a error is the reader's message for a malformed one.
    Reading readSettings(ProfileSettings *settings, QString *error) const;
    /// Replaces settings.xml, whole or not at all. On failure \a error, unless null, says why.
    bool writeSettings(const ProfileSettings &settings, QString *error = nullptr) const;

private:
    /// Whether no link on \a path, which begins with the profiles folder, leads out of that. Says so in the log when one does.
    bool staysInside(const QString &path) const;

    QString m_profilesFolder;
    QString m_romID;
};
