# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# What the checks of the packages share. To be sourced; makes the folder $work, which is removed at the end.

set -euo pipefail
umask 022
work=$(mktemp -d)
trap 'chmod -R u+w "$work"; rm -rf "$work"' EXIT

# Programs are started without a display, and keep out of the user's settings and data.
export LC_ALL=C.UTF-8 LANGUAGE=en QT_QPA_PLATFORM=offscreen HOME=$work/home XDG_CONFIG_HOME=$work/home/config XDG_DATA_HOME=$work/home/data
unset QT_LOGGING_RULES
mkdir -p "$HOME"

fail() {
    printf '%s\n' "$@" >&2
    exit 1
}

need() { # need TOOL...: skips the test where one is missing
    local tool
    for tool in "$@"; do
        command -v "$tool" >/dev/null || { echo "skipped: $tool is not installed"; exit 77; }
    done
}

expect() { # expect WHAT EXPECTED ACTUAL
    [ "$2" = "$3" ] || fail "$1" "--- expected" "$2" "--- actual" "$3"
}

expect_text() { # expect_text TEXT FILE
    grep -qF -- "$1" "$2" || fail "This is missing: $1" "--- in" "$(cat "$2")"
}

run_as=() # runs the programs as another user, unless empty

# run_programs FOLDER PROFILES: the programs of FOLDER make and open the demo cartridge, with their profiles in PROFILES
run_programs() {
    local bin=$1 profiles=$2 demo=$work/demo
    rm -rf "$demo" "$work/window.png"
    "${run_as[@]}" "$bin/quillary-cli" demo "$demo" >/dev/null
    [ -f "$profiles/NQDE0/default/fileList.xml" ] || fail "There is no profile in $profiles"
    "${run_as[@]}" "$bin/quillary-cli" info "$demo/demo.z64" >"$work/info"
    expect_text "Profiles in:    $profiles/" "$work/info"
    expect_text "default: " "$work/info"
    rm -f "$profiles/NQDE0/settings.xml"
    "${run_as[@]}" "$bin/quillary" --screenshot "$work/window.png" "$demo/demo.z64" 2>"$work/log"
    expect_text "Profiles are kept in $profiles/" "$work/log"
    [ -f "$profiles/NQDE0/settings.xml" ] || fail "The window did not use $profiles"
    [ -s "$work/window.png" ] || fail "The window drew nothing"
}

# The folder of the programs cannot be written: its permissions forbid it, and root, whom they do not stop, becomes another user.
run_programs_of_another_owner() {
    rm -rf "$1/profiles"
    mkdir -p "$XDG_DATA_HOME" "$XDG_CONFIG_HOME"
    chmod a-w "$1"
    if [ "$(id -u)" = 0 ]; then
        chmod a+rwx "$work" "$XDG_DATA_HOME" "$XDG_CONFIG_HOME"
        run_as=(setpriv --reuid=65534 --regid=65534 --clear-groups)
    fi
    run_programs "$1" "$XDG_DATA_HOME/Brimholt/Quillary/profiles"
    expect_text "because $1/profiles/ cannot be written" "$work/log"
    run_as=()
    chmod u+w "$1"
}

# files FOLDER: what is in it, but for the pages of the documents and their pictures
files() { (cd "$1" && find . -type f ! -path '*/doc*/*.md' ! -path '*/doc*/*.png' | sed 's,^\./,,' | LC_ALL=C sort); }

# What is read and run by all may be written by its owner alone.
check_modes() {
    expect "Files with unusual modes" "" "$(find "$1" -type f ! -path '*/quillary' ! -path '*/quillary-cli' ! -perm 644 -o -type d ! -perm 755)"
    expect "Programs with unusual modes" "" "$(find "$1" -type f \( -name quillary -o -path '*bin/quillary-cli' \) ! -perm 755)"
}

check_documents() { # check_documents FOLDER: users' pages are there, makers' are not, and links lead somewhere
    local page link
    for page in guide installing command-line formats; do
        [ -s "$1/$page.md" ] || fail "There is no $page.md"
    done
    for page in architecture translating; do
        [ ! -e "$1/$page.md" ] || fail "$page.md is for those who have the sources"
    done
    # Links lead to a page's neighbours, or away.
    find "$1" -name '*.md' -exec grep -HoE '\]\([^)#]+' {} + | sed 's/:\](/ /' >"$work/links"
    while read -r page link; do
        [[ $link = http*:* || -e ${page%/*}/$link ]] || fail "${page##*/} links to $link, which is not there"
    done <"$work/links"
}
