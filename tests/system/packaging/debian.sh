#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# debian.sh BUILD VERSION ID: the Debian package is well formed, and its programs run, with their profiles kept by the user
# shellcheck source=tests/system/packaging/common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
need cpack dpkg-deb dpkg-shlibdeps file gzip strip
version=$2 id=$3
cpack --config "$1/CPackConfig.cmake" -G DEB -B "$work/made" >"$work/log" 2>&1 || fail "$(cat "$work/log")"
package=$(echo "$work"/made/*.deb)
dpkg-deb -x "$package" "$work/root"
dpkg-deb -e "$package" "$work/control"
root=$work/root/usr
expect "Files outside of /usr" "" "$(find "$work/root" -type f ! -path "$root/*")"
expect "Files" "bin/quillary
bin/quillary-cli
share/applications/$id.desktop
share/bash-completion/completions/quillary-cli
share/doc/quillary/changelog.Debian.gz
share/doc/quillary/changelog.gz
share/doc/quillary/copyright
share/fish/vendor_completions.d/quillary-cli.fish
share/icons/hicolor/128x128/apps/quillary.png
share/icons/hicolor/16x16/apps/quillary.png
share/icons/hicolor/24x24/apps/quillary.png
share/icons/hicolor/256x256/apps/quillary.png
share/icons/hicolor/32x32/apps/quillary.png
share/icons/hicolor/48x48/apps/quillary.png
share/icons/hicolor/64x64/apps/quillary.png
share/icons/hicolor/scalable/apps/quillary.svg
share/man/man1/quillary-cli.1.gz
share/man/man1/quillary.1.gz
share/metainfo/$id.metainfo.xml
share/zsh/vendor-completions/_quillary-cli" "$(files "$root")"
check_modes "$root"
check_documents "$root/share/doc/quillary"
expect "Files of the package's control" "control md5sums" "$(cd "$work/control" && echo *)"
expect "Version" "$version-1" "$(dpkg-deb -f "$package" Version)"
[[ $(dpkg-deb -f "$package" Depends) = *libqt5widgets5* ]] || fail "The package does not ask for its libraries"
zcat "$root/share/doc/quillary/changelog.Debian.gz" >"$work/changelog"
expect_text "quillary ($version-1) " "$work/changelog"
gzip -t "$root"/share/man/man1/*.gz
if command -v lintian >/dev/null; then
    lintian --fail-on error "$package" || fail "lintian finds errors"
fi

run_programs_of_another_owner "$root/bin"
