// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class MainWindow;

/// Loads \a image into \a window, selects the first texture of the file table where there is one, with its folders unfolded, and
/// renders the window into the PNG file \a path. Nobody is there to answer a message box: each is printed to standard error and
/// closed. Returns whether the picture was made.
bool takeScreenshot(MainWindow *window, const QString &image, const QString &path);
