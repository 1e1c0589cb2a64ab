// SPDX-License-Identifier: MIT
#include "app/termination.h"

#include "app/mainwindow.h"

#include <QApplication>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace
{
// A signal handler may call almost nothing. It writes the signal's number into a pipe, whose other end the event loop reads.
int writeEnd = -1;

void passOn(int signal)
{
    const auto number = static_cast<unsigned char>(signal);
    const int savedError = errno;
    if (write(writeEnd, &number, 1) != 1) { } // A full pipe holds a signal already.
    errno = savedError;
}

/// Ends the program with \a signal, so that whoever waits for it learns the reason.
void endWith(int signal)
{
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void catchSignal(int signal)
{
    struct sigaction old = {};
    sigaction(signal, nullptr, &old);
    if (old.sa_handler == SIG_IGN)
        return;
    struct sigaction action = {};
    action.sa_handler = passOn;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}
}

void saveFileListAtTermination(MainWindow *window)
{
    // Without this, the toolkit would close the window at the session's end, which asks about unsaved changes.
    QGuiApplication::setFallbackSessionManagementEnabled(false);
    QObject::connect(qApp, &QGuiApplication::commitDataRequest, window, [window] { window->saveFileListUnasked(); });

    int ends[2] = {};
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    const int readEnd = ends[0];
    writeEnd = ends[1];
    auto *notifier = new QSocketNotifier(readEnd, QSocketNotifier::Read, window);
    QObject::connect(notifier, &QSocketNotifier::activated, window, [window, readEnd] {
        unsigned char signal = 0;
        if (read(readEnd, &signal, 1) != 1)
            return;
        window->saveFileListUnasked();
        endWith(signal);
    });
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        catchSignal(signal);
}
