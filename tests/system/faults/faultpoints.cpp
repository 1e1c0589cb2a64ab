// SPDX-License-Identifier: MIT
#include "system/faults/faultpoints.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
enum Effect : unsigned {
    Names = 1, ///< Makes, renames or removes a name.
    Space = 2, ///< May need space.
};

struct State
{
    bool armed = false;
    std::string folder;
    faults::Fault fault;
    QList<QByteArray> calls;
    std::array<bool, 1024> ours {}; ///< File descriptors of files below the folder.
};

State &state()
{
    static State theState;
    return theState;
}

bool isOurs(int descriptor)
{
    const auto &ours = state().ours;
    return descriptor >= 0 && size_t(descriptor) < ours.size() && ours[size_t(descriptor)];
}

bool isBelow(const char *path)
{
    std::string absolute = path;
    if (path[0] != '/') {
        char folder[4096];
        if (!getcwd(folder, sizeof folder))
            return false;
        absolute = std::string(folder) + '/' + path;
    }
    const std::string &folder = state().folder;
    return absolute == folder || absolute.compare(0, folder.size() + 1, folder + '/') == 0;
}

/// What is to happen to a call.
enum class Fate { Pass, Fail, Halve };

/// Counts the call \a name and says what is to become of it.
Fate fateOf(const char *name, unsigned effects, bool writes = false)
{
    State &now = state();
    const faults::Fault &fault = now.fault;
    if (fault.folderAllowsNoFile && (effects & Names)) {
        errno = EACCES;
        return Fate::Fail;
    }
    now.calls.append(name);
    const bool isIt = now.calls.size() == fault.at;
    const bool isPast = fault.at > 0 && now.calls.size() >= fault.at;
    bool fails = false;
    switch (fault.what) {
    case faults::What::Nothing: break;
    case faults::What::Kill:
        if (isIt)
            _exit(faults::killed);
        break;
    case faults::What::KillHalfway: return isIt && writes ? Fate::Halve : Fate::Pass;
    case faults::What::Fail: fails = isIt; break;
    case faults::What::FailFromHereOn:
        if (isIt && writes)
            return Fate::Halve;
        fails = isPast && (effects & Space);
        break;
    case faults::What::DenyFromHereOn: fails = isPast && (effects & Names); break;
    }
    if (!fails)
        return Fate::Pass;
    errno = fault.error;
    return Fate::Fail;
}

template<typename Function> Function *real(const char *name)
{
    void *symbol = dlsym(RTLD_NEXT, name);
    Function *function = nullptr;
    std::memcpy(&function, &symbol, sizeof symbol);
    return function;
}

/// Calls the function \a name of the system unless the call, which is for our files when \a counts, is to fail.
template<typename Function, typename... Arguments>
auto through(const char *name, bool counts, unsigned effects, Arguments... arguments)
{
    Function *const function = real<Function>(name);
    using Result = decltype(function(arguments...));
    if (state().armed && counts && fateOf(name, effects) == Fate::Fail)
        return Result(-1);
    return function(arguments...);
}

/// Also whether open() has been given a mode.
bool makesName(int flags)
{
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

/// Flushing itself is left out: it would take most of the time of a test, and nothing but a loss of power shows that it is.
int flushThrough(const char *name, int descriptor)
{
    return state().armed && isOurs(descriptor) && fateOf(name, Space) == Fate::Fail ? -1 : 0;
}

int openThrough(const char *name, int folder, const char *path, int flags, mode_t mode)
{
    static auto *const function = real<int(int, const char *, int, ...)>("openat");
    const bool below = state().armed && (folder == AT_FDCWD || path[0] == '/') && isBelow(path);
    const bool makes = makesName(flags);
    if (below && (makes || (flags & O_TRUNC) != 0)) {
        const std::string made = std::string(name) + ((flags & O_TMPFILE) == O_TMPFILE ? "(O_TMPFILE)" : "");
        if (fateOf(made.c_str(), makes ? Names | Space : Space) == Fate::Fail)
            return -1;
    }
    const int descriptor = function(folder, path, flags, mode);
    if (below && descriptor >= 0 && size_t(descriptor) < state().ours.size())
        state().ours[size_t(descriptor)] = true;
    return descriptor;
}

mode_t modeOf(int flags, va_list list)
{
    return makesName(flags) ? va_arg(list, mode_t) : 0;
}

/// Half of \a length, then the end, or as much as a disk takes that is full now.
template<typename Write> ssize_t writeThrough(const char *name, int descriptor, size_t length, const Write &write)
{
    if (!state().armed || !isOurs(descriptor))
        return write(length);
    switch (fateOf(name, Space, true)) {
    case Fate::Fail: return -1;
    case Fate::Pass: break;
    case Fate::Halve: {
        const ssize_t written = write(length / 2);
        if (state().fault.what == faults::What::KillHalfway)
            _exit(faults::killed);
        return written;
    }
    }
    return write(length);
}
}

extern "C" {
int open(const char *path, int flags, ...)
{
    va_list list;
    va_start(list, flags);
    const mode_t mode = modeOf(flags, list);
    va_end(list);
    return openThrough("open", AT_FDCWD, path, flags, mode);
}

int open64(const char *path, int flags, ...)
{
    va_list list;
    va_start(list, flags);
    const mode_t mode = modeOf(flags, list);
    va_end(list);
    return openThrough("open", AT_FDCWD, path, flags, mode);
}

int openat(int folder, const char *path, int flags, ...)
{
    va_list list;
    va_start(list, flags);
    const mode_t mode = modeOf(flags, list);
    va_end(list);
    return openThrough("open", folder, path, flags, mode);
}

int openat64(int folder, const char *path, int flags, ...)
{
    va_list list;
    va_start(list, flags);
    const mode_t mode = modeOf(flags, list);
    va_end(list);
    return openThrough("open", folder, path, flags, mode);
}

int close(int descriptor)
{
    if (isOurs(descriptor))
        state().ours[size_t(descriptor)] = false;
    return through<int(int)>("close", false, 0, descriptor);
}

ssize_t write(int descriptor, const void *bytes, size_t length)
{
    static auto *const function = real<ssize_t(int, const void *, size_t)>("write");
    return writeThrough("write", descriptor, length, [&](size_t part) { return function(descriptor, bytes, part); });
}

ssize_t pwrite(int descriptor, const void *bytes, size_t length, off_t offset)
{
    static auto *const function = real<ssize_t(int, const void *, size_t, off_t)>("pwrite");
    return writeThrough("pwrite", descriptor, length, [&](size_t part) { return function(descriptor, bytes, part, offset); });
}

ssize_t pwrite64(int descriptor, const void *bytes, size_t length, off64_t offset)
{
    return pwrite(descriptor, bytes, length, offset);
}

ssize_t writev(int descriptor, const struct iovec *parts, int count)
{
    return through<ssize_t(int, const struct iovec *, int)>("writev", isOurs(descriptor), Space, descriptor, parts, count);
}

ssize_t sendfile(int to, int from, off_t *offset, size_t length) noexcept
{
    return through<ssize_t(int, int, off_t *, size_t)>("sendfile", isOurs(to), Space, to, from, offset, length);
}

ssize_t sendfile64(int to, int from, off64_t *offset, size_t length) noexcept
{
    return sendfile(to, from, offset, length);
}

int fsync(int descriptor)
{
    return flushThrough("fsync", descriptor);
}

int fdatasync(int descriptor)
{
    return flushThrough("fdatasync", descriptor);
}

int ftruncate(int descriptor, off_t length) noexcept
{
    return through<int(int, off_t)>("ftruncate", isOurs(descriptor), 0, descriptor, length);
}

int ftruncate64(int descriptor, off64_t length) noexcept
{
    return ftruncate(descriptor, length);
}

int fchmod(int descriptor, mode_t mode) noexcept
{
    return through<int(int, mode_t)>("fchmod", isOurs(descriptor), 0, descriptor, mode);
}

int rename(const char *from, const char *to) noexcept
{
    return through<int(const char *, const char *)>("rename", state().armed && isBelow(to), Names | Space, from, to);
}

int renameat2(int fromFolder, const char *from, int toFolder, const char *to, unsigned flags) noexcept
{
    return through<int(int, const char *, int, const char *, unsigned)>("renameat2", state().armed && isBelow(to), Names | Space,
                                                                        fromFolder, from, toFolder, to, flags);
}

int link(const char *from, const char *to) noexcept
{
    return through<int(const char *, const char *)>("link", state().armed && isBelow(to), Names | Space, from, to);
}

int linkat(int fromFolder, const char *from, int toFolder, const char *to, int flags) noexcept
{
    return through<int(int, const char *, int, const char *, int)>("linkat", state().armed && isBelow(to), Names | Space,
                                                                   fromFolder, from, toFolder, to, flags);
}

int unlink(const char *path) noexcept
{
    return through<int(const char *)>("unlink", state().armed && isBelow(path), Names, path);
}

int rmdir(const char *path) noexcept
{
    return through<int(const char *)>("rmdir", state().armed && isBelow(path), Names, path);
}

int mkdir(const char *path, mode_t mode) noexcept
{
    return through<int(const char *, mode_t)>("mkdir", state().armed && isBelow(path), Names | Space, path, mode);
}
}

void faults::arm(const QString &folder, const Fault &fault)
{
    State &now = state();
    now.folder = QFile::encodeName(folder).toStdString();
    now.fault = fault;
    now.calls.clear();
    now.ours.fill(false);
    now.armed = true;
}

QList<QByteArray> faults::disarm()
{
    state().armed = false;
    return state().calls;
}

void faults::becomeOrdinaryUser()
{
    constexpr unsigned nobody = 65534;
    if (geteuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0))
        _exit(1);
}

int faults::runInChild(const std::function<void()> &action)
{
    // Else both processes print what waits to be printed.
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        action();
        _exit(0);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}
