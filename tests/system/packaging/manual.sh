#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# manual.sh FOLDER VERSION PROGRAM: the manual pages are well formed and of this version, and the window's knows all its options
# shellcheck source=tests/system/packaging/common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
need groff
for page in "$1"/quillary.1 "$1"/quillary-cli.1; do
    expect "Complaints about $page" "" "$(groff -man -ww -Tutf8 "$page" 2>&1 >/dev/null || true)"
    expect_text "\"Quillary $2\"" "$page"
done
sed 's/\\-/-/g' "$1/quillary.1" >"$work/page"
options=$("$3" --help | grep -oE '^ +-.*' | grep -oE '(^| )--?[a-z]+')
[ "$(wc -w <<<"$options")" -ge 5 ] || fail "The help names too few options: $options"
for option in $options; do
    expect_text "$option" "$work/page"
done
