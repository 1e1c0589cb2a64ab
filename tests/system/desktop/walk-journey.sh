#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# A newcomer's whole way through the program, with keyboard and mouse alone: open the demo cartridge, look around, find the palette
# of a ci4 texture, replace, extract, import a folder and a pack, search, switch profiles, and close with unsaved changes. In the
# end the image has to be what the command line makes of the same pictures.
# shellcheck source=tests/system/desktop/desktop.sh
. "$(dirname "$0")/desktop.sh"

start_desktop 1280x800
install_program
image=$demo/demo.z64
list=$profiles/default/fileList.xml
expected=$work/expected.z64
cp "$image" "$expected"
unchanged="Quillary [0-9.]+ - $image"
changed="$unchanged\\*"

picture_of() { # picture_of PATH: the file of that texture's picture, from the image as it should be
    cli extract "$expected" "$1" -o "$work/picture.png" >/dev/null
    echo "$work/picture.png"
}
by_cli() { # by_cli COMMAND ARGUMENT...: does to the expected image what the window is to do
    local command=$1
    shift
    cli "$command" "$expected" "$@" --in-place >/dev/null
}

lists() { grep -qF -- "$1" "$list"; }

tabs() { for ((n = 0; n < $1; n++)); do press Tab; done; }
fill() { # fill TEXT: in place of what the field holds
    press ctrl+a
    write "$1"
}

show_profile_tab() { # from the tree
    press Tab Right
}
show_selection_tab() { # and back to the tree
    click_row
    press Tab Left
    click_row
}
save_profile() {
    show_profile_tab
    tabs 4
    press space
}

echo "Open"
start_program
wait_for_window 'Quillary .* - No File Loaded'
shot 01-start
tool open
wait_for_window 'Open File'
shot 02-open
answer 'Open File' "$image"
wait_for_window "$unchanged"

echo "Browse"
expand_all
find_row Bricks
wait_for "the preview of Bricks" shows "$(picture_of Root/Level/Walls/Bricks)"
shot 03-browse
click_row 2
wait_for "the preview of Planks" shows "$(picture_of Root/Level/Walls/Planks)"

echo "Find the palette of a ci4 texture"
find_row Water # the folder
tool new_file
wait_for "the new entry" logged '"New Texture"'
fill 'First Wave'
tabs 1
fill 0x20
tabs 2
fill ci4
shot 04-wrong-palette
tabs 1
fill 0x160000
wait_for "the preview with the right palette" shows "$(picture_of 'Root/Level/Liquids/Water/Water 1')"
shot 05-right-palette
tabs 3
press space # Save changes
click_row
save_profile
wait_for "the saved profile" lists '<texture name="First Wave" address="0x00000020" format="ci4" width="32" height="32" palette="0x00160000"/>'
shot 06-described
show_selection_tab

echo "Replace"
find_row Grass
menu 1 1 # Edit, Import Image
answer 'Choose texture' "$demo/import/Level/Ground/Grass.png"
by_cli replace Root/Level/Ground/Grass "$demo/import/Level/Ground/Grass.png"
wait_for_window "$changed"
wait_for "the preview of the new grass" shows "$(picture_of Root/Level/Ground/Grass)"
shot 07-replaced
# A picture of another size: asks first.
find_row Bricks
tool replace_image
answer 'Choose texture' "$demo/import/Level/Ground/Meadow.png"
wait_for_window Quillary
shot 08-other-size
press Tab Return # "Ignore Aspect Ratio"
wait_for_window "$changed"
by_cli replace Root/Level/Walls/Bricks "$demo/import/Level/Ground/Meadow.png" --resize ignore
wait_for "the preview of the resized picture" shows "$(picture_of Root/Level/Walls/Bricks)"

echo "Extract"
click_row 0 3 # the context menu: Import Image, Extract, ...
press Down Down Return
wait_for_window 'Save File'
shot 09-extract
answer 'Save File' "$work/bricks.png"
wait_for "the extracted picture" same_file "$work/bricks.png" "$(picture_of Root/Level/Walls/Bricks)"
find_row Walls
menu 1 0 # Edit, Extract
answer 'Select Directory' "$work/home"
cli extract "$expected" Root/Level/Walls -o "$work/by-cli" >/dev/null
wait_for "the extracted folder" diff -qr "$work/by-cli/Walls" "$work/home/Walls"

echo "Import a folder"
press Home
menu 2 0 # Import, Import Folder
answer 'Select Directory' "$demo/import"
wait_for_window Quillary
shot 10-folder-imported
press Return
wait_for_window "$changed"
by_cli import-folder "$demo/import"

echo "Import a texture pack"
tool archive
answer 'Select Directory' "$demo/pack"
wait_for "the pack's last picture" logged_part Repainted
wait_for_window "$changed"
by_cli import-pack "$demo/pack" --no-add
shot 11-pack-imported

echo "Search"
press End
find_row Unexplored
press ctrl+f
wait_for_window 'Find Texture'
shot 12-find
tabs 1
press space # Select Folder
answer 'Open Directory' "$demo/search"
wait_for_window 'Find Texture'
tabs 5 # past two boxes, the formats and the choice of what becomes of duplicates
shot 13-find-folder
press space # Search
wait_for_window "$changed"
wait_for "the end of the search" logged 'Adding new texture' 4
wait_until_settled
click_row # The window manager may not yet have given the keys back to the main window.
press Right
shot 14-found
save_profile
wait_for "the entries found" lists '<texture name="Leaf"'
shot 15-profile
for name in Gem Key Grass; do lists "<texture name=\"$name\"" || fail "the search has not found $name"; done

echo "Switch profiles"
tabs 2
press space # New
wait_for_window 'Create new profile'
shot 16-new-profile
answer 'Create new profile' 'Night'
wait_for "the folder of the new profile" test -d "$profiles/Night"
press shift+Tab space # Load
wait_until_settled
shot 17-loaded-empty

echo "Close with unsaved changes"
press ctrl+q
wait_for_window Application
shot 18-close
press Escape
wait_for_window "$changed"
press alt+F4
wait_for_window Application
press Return # Save
wait_for_end
expect_same "$image" "$expected" "the saved image"
echo "The image is what it should be."
