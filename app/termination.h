// SPDX-License-Identifier: MIT
#pragma once

class MainWindow;

/// Makes the program keep the user's file list when it is ended from outside: by SIGTERM, SIGINT or SIGHUP, or with the session.
/// The list is written as closing \a window would write it, and nothing is asked; a signal then ends the program as it does by
/// default. A signal that is ignored at the program's start, as under nohup, stays ignored. Not owned; \a window must exist until
/// the program ends. To be called once, after the application object is made.
void saveFileListAtTermination(MainWindow *window);
