// SPDX-License-Identifier: MIT
#pragma once

#include "persist/profilesfolder.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

/// What a cartridge's settings.xml says, for all its profiles.
struct ProfileSettings
{
    QString autoload = QStringLiteral("default"); ///< The profile to load with the cartridge.
    bool autosave = true; ///< Write the file list when the program closes.
};

/// Reads a settings document, the whole content of the file. Starts from the defaults; unknown elements are ignored, and autosave
/// is on only for exactly "true". For a malformed document the result is false, \a error has the reader's message, and what was
/// read before counts. A document that decodeXml() refuses is not read at all.
bool readProfileSettings(const QByteArray &document, ProfileSettings *settings, QString *error);

/// The settings document, with "default" for an empty name and without characters that XML cannot hold.
QByteArray writeProfileSettings(const ProfileSettings &settings);

/// The folder of one cartridge's profiles: settings.xml and a folder per profile, which holds its fileList.xml. The names come
/// from untrusted files, and so may the folders: for a name that leads out of the profiles folder, and for a symbolic link that
/// does, every operation fails and touches nothing. The paths can be asked for all the same, for messages. What the folder does
/// not have is read from the read-only folder beside the program, if there is one.
class ProfileStore
{
public:
    enum class Reading { Done, NotOpened, Malformed };

    /// \a folder has the profiles of all cartridges. \a romID names the cartridge: a "/" in it gives nested folders, and an empty
    /// one a folder named "(no identifier)".
    ProfileStore(const ProfilesFolder &folder, const QString &romID);

    /// Whether \a name is that of a folder directly in another: not empty, neither "." nor "..", no "/" and no zero character.
    static bool isSafeName(const QString &name);
    /// Whether the folder of the cartridge \a romID lies in the profiles folder: not absolute, no "." or "..", no zero character.
    static bool isSafeIdentifier(const QString &romID);
    /// Whether users may give that name to a new profile: it is safe and has none of the characters / : * ? < > |
    static bool isAllowedName(const QString &name);

    // Where files are written.
    QString cartridgeFolder() const;
    QString settingsPath() const;
    QString profileFolder(const QString &profile) const;
    QString fileListPath(const QString &profile) const;

    // The files to read, in the read-only folder if need be; empty when there is none.
    QString settingsToRead() const;
    QString fileListToRead(const QString &profile) const;

    /// Whether the profile's paths lie inside the profiles folder, with all links followed.
    bool isSafe(const QString &profile) const;
    /// The symbolic link on the way to the profile's list that leads out of the profiles folder, or nowhere; empty without one.
    QString linkToFileList(const QString &profile) const;
    bool hasSettings() const { return !settingsToRead().isEmpty(); }
    bool hasProfile(const QString &profile) const;
    bool hasFileList(const QString &profile) const { return !fileListToRead(profile).isEmpty(); }
    /// The names of the profiles, in the order of the file system. Symbolic links are not profiles.
    QStringList profiles() const;

    /// Creates the cartridge's folder with all missing parents; true also when it exists already.
    bool createCartridgeFolder() const;
    /// Creates the profile's folder with all missing parents; true also when it exists already.
    bool createProfile(const QString &profile) const;
    /// Removes the profile's folder with everything in it, without following symbolic links. False when something is left, and
    /// for a profile in the read-only folder.
    bool removeProfile(const QString &profile) const;

    /// Reads settings.xml; the defaults when it cannot be opened or read. \a error is the reason of a failure.
    Reading readSettings(ProfileSettings *settings, QString *error) const;
    /// Replaces settings.xml, whole or not at all. On failure \a error, unless null, says why, and \a opened, unless null, is
    /// whether a file had been opened for writing.
    bool writeSettings(const ProfileSettings &settings, QString *error = nullptr, bool *opened = nullptr) const;

private:
    QString linkOn(const QString &path) const;
    /// Whether \a path, which begins with the profiles folder, leads nowhere else. Says so in the debug log when it does.
    bool staysInside(const QString &path) const;
    bool hasReadOnly() const { return !m_folder.unwritable.isEmpty(); }
    ProfileStore readOnly() const;

    ProfilesFolder m_folder;
    QString m_romID;
};
