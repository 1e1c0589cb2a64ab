// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QTemporaryDir>

class MainWindow;

/// Lets the program read the user's settings from a copy, for as long as it lives, so that nothing it stores reaches them. To be
/// made before the first settings object.
class SettingsCopy
{
public:
    SettingsCopy();

private:
    QTemporaryDir m_folder;
};

/// Loads \a image into \a window, selects the first texture of the file table where there is one, with its folders unfolded, and
/// renders the window into the PNG file \a path. Nobody is there to answer a message box: each is printed to standard error and
/// closed. Returns whether the picture was made.
bool takeScreenshot(MainWindow *window, const QString &image, const QString &path);
