#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# portable.sh BUILD VERSION ID: the portable archive is one folder that works wherever it is put
# shellcheck source=tests/system/packaging/common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
need cpack tar gzip strip
cpack --config "$1/CPackConfig.cmake" -G TGZ -B "$work/made" >"$work/log" 2>&1 || fail "$(cat "$work/log")"
mkdir "$work/unpacked"
tar -xzf "$work"/made/quillary-"$2"-*.tar.gz -C "$work/unpacked"
folder=$(echo "$work"/unpacked/*)
[[ $folder = $work/unpacked/quillary-$2-* ]] || fail "Not one folder: $folder"
expect "Files" "CHANGELOG.md
LICENSE
README.txt
completions/quillary-cli.bash
completions/quillary-cli.fish
completions/quillary-cli.zsh
docs/man/quillary-cli.1
docs/man/quillary.1
icons/quillary-128.png
icons/quillary-16.png
icons/quillary-24.png
icons/quillary-256.png
icons/quillary-32.png
icons/quillary-48.png
icons/quillary-64.png
icons/quillary.svg
quillary
quillary-cli" "$(files "$folder")"
check_modes "$folder"
check_documents "$folder/docs"
[ "$(stat -c %s "$folder/quillary")" -lt 8000000 ] || fail "The program carries its debug data"

run_programs "$folder" "$folder/profiles"
[ ! -e "$XDG_DATA_HOME/Brimholt" ] || fail "Something was left outside of the folder"
mv "$folder" "$work/another place"
run_programs "$work/another place" "$work/another place/profiles"
run_programs_of_another_owner "$work/another place"
