#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# install.sh BUILD VERSION ID: "cmake --install" puts everything in its place, below DESTDIR, and it runs from there
# shellcheck source=tests/system/packaging/common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
version=$2 id=$3
DESTDIR="$work/root" cmake --install "$1" --prefix /opt/house >"$work/log"
root=$work/root/opt/house
expect "Files outside of the prefix" "" "$(find "$work/root" -type f ! -path "$root/*")"
expect "Installed files" "bin/quillary
bin/quillary-cli
share/applications/$id.desktop
share/bash-completion/completions/quillary-cli
share/doc/quillary/LICENSE
share/fish/vendor_completions.d/quillary-cli.fish
share/icons/hicolor/128x128/apps/quillary.png
share/icons/hicolor/16x16/apps/quillary.png
share/icons/hicolor/24x24/apps/quillary.png
share/icons/hicolor/256x256/apps/quillary.png
share/icons/hicolor/32x32/apps/quillary.png
share/icons/hicolor/48x48/apps/quillary.png
share/icons/hicolor/64x64/apps/quillary.png
share/icons/hicolor/scalable/apps/quillary.svg
share/man/man1/quillary-cli.1
share/man/man1/quillary.1
share/metainfo/$id.metainfo.xml
share/zsh/vendor-completions/_quillary-cli" "$(files "$root")"
check_modes "$root"
check_documents "$root/share/doc/quillary"
[ -s "$root/share/doc/quillary/CHANGELOG.md" ] || fail "There is no CHANGELOG.md"

# The files name each other.
expect_text "Icon=quillary" "$root/share/applications/$id.desktop"
expect_text ">$id.desktop<" "$root/share/metainfo/$id.metainfo.xml"
expect_text "version=\"$version\"" "$root/share/metainfo/$id.metainfo.xml"
for size in 16 24 32 48 64 128 256; do
    icon=$root/share/icons/hicolor/${size}x$size/apps/quillary.png
    # Width and height of a PNG are the two big-endian words at 16.
    expect "Size of $icon" "$size $size" "$(od -An -t u1 -j 16 -N 8 "$icon" | awk '{ print $3 * 256 + $4, $7 * 256 + $8 }')"
done

expect "Version" "Quillary $version" "$("$root/bin/quillary" --version)"
run_programs "$root/bin" "$root/bin/profiles"
run_programs_of_another_owner "$root/bin"
