// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QTest>

#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

/// Processor time of this process in seconds, which other work on the machine does not lengthen.
inline double processorSeconds()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Whether \a action takes no more than a second of processor time for each megabyte of \a inputBytes, and one to begin with.
/// A build with sanitizers may take ten times that.
inline bool isQuick(qint64 inputBytes, const std::function<void()> &action)
{
    constexpr double megabyte = 1e6;
    const double start = processorSeconds();
    action();
    const double taken = processorSeconds() - start;
    const double allowed = (1 + double(inputBytes) / megabyte) * (isSanitized ? 10 : 1);
    if (taken > allowed)
        qWarning("%.2f s for %.2f MB", taken, double(inputBytes) / megabyte);
    return taken <= allowed;
}

/// Whether \a action, run in a copy of this process, gets by with \a bytes of memory more than there is now, and returns true.
/// Memory is not limited in a build with sanitizers, which need it without end.
inline bool fitsInto(qint64 bytes, const std::function<bool()> &action)
{
    const pid_t child = fork();
    if (child == 0) {
        long pages = 0;
        if (FILE *statm = std::fopen("/proc/self/statm", "r")) {
            if (std::fscanf(statm, "%ld", &pages) != 1)
                pages = 0;
            std::fclose(statm);
        }
        const rlim_t limit = rlim_t(pages) * rlim_t(sysconf(_SC_PAGESIZE)) + rlim_t(bytes);
        const rlimit memory = {limit, limit};
        if (!isSanitized && (pages == 0 || setrlimit(RLIMIT_AS, &memory) != 0))
            _exit(2);
        _exit(action() ? 0 : 1);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
