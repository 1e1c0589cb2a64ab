# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# What run and test share: getting the tools, configuring and building. To be sourced from the project's root.

say() { printf '== %s\n' "$*"; }
die() {
    printf '== %s\n' "$*" >&2
    exit 1
}
have() { command -v "$1" >/dev/null 2>&1; }

has_package() { # whether the Debian package is installed; without dpkg nothing can be told, and CMake will
    ! have dpkg-query || [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

may_install() { # whether packages can be installed: as root, or by sudo without a question or with someone there to answer it
    have apt-get || return 1
    [ "$(id -u)" = 0 ] && return 0
    have sudo && { sudo -n true 2>/dev/null || [ -t 0 ]; }
}

# apt_get ARGUMENT...: without questions, and waiting for another package manager that is at work
apt_get() { as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=300 "$@"; }

install_packages() {
    [ $# -gt 0 ] || return 0
    say "Missing Debian packages: $*"
    may_install || die "They cannot be installed from here. As root: apt-get update && apt-get install $*"
    local log
    log=$(mktemp)
    if ! apt_get install --no-install-recommends "$@" >"$log" 2>&1; then
        # The lists of packages may be missing or out of date.
        if ! { apt_get update && apt_get install --no-install-recommends "$@"; } >"$log" 2>&1; then
            tail -n 20 "$log" >&2
            die "Installing them failed; the whole of it is in $log"
        fi
    fi
    rm -f "$log"
    say "Installed: $*"
}

# What compiles the translations, and Qt's own texts in other languages.
translation_packages=(qttools5-dev qttools5-dev-tools qttranslations5-l10n)

# The libraries that the programs are built on.
library_packages=(qtbase5-dev zlib1g-dev libdeflate-dev libyaml-cpp-dev)

# require_tools [PACKAGE...]: a compiler, CMake, a build tool and the libraries, and further Debian packages
require_tools() {
    local missing=() package
    have c++ || have g++ || have clang++ || missing+=(g++)
    have cmake || missing+=(cmake)
    have ninja || have make || missing+=(ninja-build)
    for package in "${library_packages[@]}"; do
        has_package "$package" || missing+=("$package")
    done
    # Where something is installed anyway, let the quicker build tool come along.
    if [ ${#missing[@]} -gt 0 ] && ! have ninja && [[ " ${missing[*]} " != *" ninja-build "* ]]; then
        missing+=(ninja-build)
    fi
    for package in "$@"; do
        has_package "$package" || missing+=("$package")
    done
    install_packages "${missing[@]}"
}

# A display without a screen, a window manager, and what presses keys and looks at pictures there. Tests that need them are left
# out where they cannot be installed.
want_desktop() {
    local missing=()
    have Xvfb || missing+=(xvfb)
    have openbox || missing+=(openbox)
    have xdotool || missing+=(xdotool)
    { have import && have convert && have compare; } || missing+=(imagemagick)
    [ ${#missing[@]} -gt 0 ] || return 0
    if may_install; then
        install_packages "${missing[@]}"
    else
        say "The tests on a desktop will be left out: ${missing[*]} cannot be installed from here."
    fi
}

# Without them the window is in English alone, which is no reason to stop.
try_translation_packages() {
    local missing=() package
    for package in "${translation_packages[@]}"; do
        has_package "$package" || missing+=("$package")
    done
    [ ${#missing[@]} = 0 ] || (install_packages "${missing[@]}") || say "Going on: the window will be in English"
}

# What looks at manual pages, desktop entries and packages. Tests that need them are skipped where they cannot be installed.
want_packaging_tools() {
    local missing=()
    have desktop-file-validate || missing+=(desktop-file-utils)
    have appstreamcli || missing+=(appstream)
    have dpkg-shlibdeps || missing+=(dpkg-dev)
    have file || missing+=(file)
    have groff || missing+=(groff-base)
    [ ${#missing[@]} -gt 0 ] || return 0
    if may_install; then
        install_packages "${missing[@]}"
    else
        say "Some tests of the packages will be skipped: ${missing[*]} cannot be installed from here."
    fi
}

# The shells whose completion is tested (46 MB), and a browser for the gallery (117 MB to fetch, 27 s to install). Their tests are
# skipped where they cannot be installed.
want_shells_and_browser() {
    local missing=()
    have zsh || missing+=(zsh)
    have fish || missing+=(fish)
    have chromium || missing+=(chromium)
    [ ${#missing[@]} -gt 0 ] || return 0
    if ! may_install || ! (install_packages "${missing[@]}"); then
        say "Some tests will be skipped: ${missing[*]} cannot be installed from here."
    fi
}

# build FOLDER TARGETS [CMAKE ARGUMENT...]: configures FOLDER if that has not been done, and builds TARGETS, several in one word
build() {
    local folder=$1 targets=$2 log
    shift 2
    # A folder that was configured elsewhere, before the project was moved or copied, is of no use.
    if [ -f "$folder/CMakeCache.txt" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$folder/CMakeCache.txt"; then
        rm -rf "$folder/CMakeCache.txt" "$folder/CMakeFiles"
    fi
    if [ ! -f "$folder/CMakeCache.txt" ] || { [ ! -f "$folder/build.ninja" ] && [ ! -f "$folder/Makefile" ]; }; then
        say "Configuring in $folder"
        rm -rf "$folder/CMakeCache.txt" "$folder/CMakeFiles"
        if have ninja; then set -- -G Ninja "$@"; else set -- -G "Unix Makefiles" "$@"; fi
        if have ccache; then set -- "$@" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache; fi
        mkdir -p "$folder"
        log=$folder/configure.log
        cmake -S . -B "$folder" "$@" >"$log" 2>&1 || { cat "$log" >&2; die "Configuring failed"; }
    fi
    say "Building in $folder"
    if [ -t 1 ]; then # Someone watches: show the progress.
        # shellcheck disable=SC2086 # the targets are several words
        cmake --build "$folder" --parallel "$(nproc)" --target $targets || die "Building failed"
        return
    fi
    log=$folder/build.log
    # shellcheck disable=SC2086 # the targets are several words
    cmake --build "$folder" --parallel "$(nproc)" --target $targets >"$log" 2>&1 || { tail -n 60 "$log" >&2; die "Building failed; see $log"; }
}
