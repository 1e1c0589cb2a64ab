#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# On a display with twice the pixels: icons as drawn for it, pictures pixel for pixel, and the dialogs; in the end the changes are
# thrown away.
# shellcheck source=tests/system/desktop/desktop.sh
. "$(dirname "$0")/desktop.sh"

start_desktop 2560x1600
scale=2
export QT_SCALE_FACTOR=$scale
install_program
image=$demo/demo.n64
before=$work/before.n64
cp "$image" "$before"
unchanged="Quillary [0-9.]+ - $image"
changed="$unchanged\\*"

echo "Open and browse"
start_program "$image"
wait_for_window "$unchanged"
expand_all
find_row 'Bricks'
cli extract "$image" Root/Level/Walls/Bricks -o "$work/bricks.png" >/dev/null
wait_for "the preview of Bricks" shows "$work/bricks.png"
shot 01-browse

echo "Extract"
tool save_image
answer 'Save File' "$work/extracted.png"
wait_for "the extracted picture" same_file "$work/bricks.png" "$work/extracted.png"

echo "Replace"
tool replace_image
answer 'Choose texture' "$demo/import/Level/Walls/Bricks.png"
wait_for_window "$changed"
shot 02-replaced

echo "Search"
press ctrl+f
wait_for_window 'Find Texture'
shot 03-find
press Escape
wait_for_window "$changed"

echo "Profiles"
press Tab Right
shot 04-profile
click_row

echo "Throw the changes away"
press alt+F4
wait_for_window Application
shot 05-close
press Right Return # Discard
wait_for_end
expect_same "$image" "$before" "the image that was not saved"
