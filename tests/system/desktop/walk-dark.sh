#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# On a dark desktop of 1920 x 1080, mostly with the mouse: files dragged in, the preview's background, a search for one picture,
# profiles with unsaved changes, an entry deleted, and the way back.
# shellcheck source=tests/system/desktop/desktop.sh
. "$(dirname "$0")/desktop.sh"

start_desktop 1920x1080
dark_palette
install_program
image=$demo/demo.v64
list=$profiles/default/fileList.xml
expected=$work/expected.z64
cp "$demo/demo.z64" "$expected"
unchanged="Quillary [0-9.]+ - $image"
changed="$unchanged\\*"

echo "Open by drag and drop"
start_program
wait_for_window 'Quillary .* - No File Loaded'
shot 01-start
drag "$image" 700 600
wait_for_window "$unchanged"
shot 02-open
[ "$(convert "$screenshots/$walk-02-open.png" -crop 500x300+350+600 +repage -format '%[fx:mean<0.3]' info:)" = 1 ] ||
    fail "the file table is not dark"

echo "Browse"
click 400 300 # into the table
expand_all
find_row Font
shot 03-font
click_preview
wait_for "the preview's other background" screen_has '#ff00ff'
shot 04-font-on-magenta

echo "Replace by drag and drop"
click_row
find_row Planks
shot 05-planks
read -r x y < <(preview_centre)
drag "$demo/import/Level/Walls/Planks.png" "$x" "$y"
wait_for_window "$changed"
cli replace "$expected" Root/Level/Walls/Planks "$demo/import/Level/Walls/Planks.png" --in-place >/dev/null
cli extract "$expected" Root/Level/Walls/Planks -o "$work/planks.png" >/dev/null
wait_for "the preview of the new planks" shows "$work/planks.png"
shot 06-replaced

echo "Search for one picture"
click_row
find_row Unexplored
tool search_file
wait_for_window 'Find Texture'
shot 07-find
press Return # Select Image
answer 'Open Image File' "$demo/search/Key.png"
wait_for_window 'Find Texture'
shot 08-find-key
press Tab Tab Tab Tab Tab space
wait_for_window "$changed"
wait_for "the key that was found" logged 'Adding new texture'

echo "Delete an entry"
find_row Lava
tool delete
wait_for_window Delete
shot 09-delete
press Left Return # Yes; No is the default
wait_for_window "$changed"

echo "Switch profiles with unsaved changes"
press Tab Right Tab Tab Tab Tab Tab Tab space # New
answer 'Create new profile' Night
wait_for "the folder of the new profile" test -d "$profiles/Night"
shot 10-profile
press shift+Tab space # Load
wait_for_window Application
shot 11-unsaved
press Return # Save and Load
wait_for_window "$changed"
wait_for "the saved file list" grep -q '<texture name="Key"' "$list"
! grep -q Lava "$list" || fail "the deleted entry is still in the file list"
shot 12-empty-profile

echo "Save and close"
press ctrl+s
wait_for_window "$unchanged"
press ctrl+q
wait_for_end
expect_same "$image" "$expected" "the saved image"

echo "Again: what was opened and how the window stood is remembered"
start_program
wait_for_window 'Quillary .* - No File Loaded'
menu 0 1 # File, the first of the recent files: Save and Save As cannot be used yet
wait_for_window "$unchanged"
shot 13-again
press ctrl+q
wait_for_end
