# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# What the walks share: a display with a window manager, the program in a folder of its own, keys, clicks, looks and files.
# To be sourced by walk-NAME.sh PROGRAMS SCREENSHOTS: the folder with the built programs, and the one for the pictures.
# Nothing waits for a fixed time where there is something to be waited for.
# shellcheck disable=SC2034,SC2153 # what the walks use; what xdotool names
set -euo pipefail

for tool in Xvfb openbox xdotool import convert compare; do
    command -v "$tool" >/dev/null || {
        echo "Left out: $tool is not installed."
        exit 77
    }
done

walk=$(basename "$0" .sh)
walk=${walk#walk-}
icons=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../../resources/icons" && pwd)
scale=1 # device pixels to a pixel
programs=$(cd "$1" && pwd)
screenshots=$2
patience=${QUILLARY_WALK_PATIENCE:-30} # seconds that anything may take

work=${QUILLARY_WALK_FOLDER:-}
[ -n "$work" ] || work=$(mktemp -d "${TMPDIR:-/tmp}/quillary-walk.XXXXXX")
started=() # processes, in the order in which they were started
program=   # the process of the window
mkdir -p "$screenshots" "$work/bin" "$work/home/.config" "$work/run"
chmod 700 "$work/run"

# A session of its own: no settings, theme, language, scale or session bus of whoever runs the test.
unset QT_STYLE_OVERRIDE QT_QPA_PLATFORMTHEME QT_SCALE_FACTOR QT_SCREEN_SCALE_FACTORS QT_FONT_DPI QT_AUTO_SCREEN_SCALE_FACTOR
unset XDG_CURRENT_DESKTOP DESKTOP_SESSION KDE_FULL_SESSION KDE_SESSION_VERSION WAYLAND_DISPLAY SESSION_MANAGER XAUTHORITY LANGUAGE
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share XDG_RUNTIME_DIR=$work/run
export XDG_CACHE_HOME=${XDG_CACHE_HOME:-$work/home/.cache} LC_ALL=C.UTF-8 QT_QPA_PLATFORM=xcb QT_LOGGING_TO_CONSOLE=1
export DBUS_SESSION_BUS_ADDRESS=disabled:

# --- processes ---------------------------------------------------------------------------------------------------------

running() { kill -0 "$1" 2>/dev/null; }

finish() { # at the end, however it comes: a picture and the log of a failure, and nothing left running
    local status=$?
    trap - EXIT
    if [ $status != 0 ] && [ -n "${DISPLAY:-}" ] && [ ${#started[@]} -gt 0 ]; then
        import -window root "$screenshots/$walk-failed.png" 2>/dev/null && echo "See $screenshots/$walk-failed.png"
        [ ! -f "$work/log" ] || tail -n 15 "$work/log"
    fi
    for ((i = ${#started[@]} - 1; i >= 0; i--)); do
        kill "${started[i]}" 2>/dev/null || true
        wait "${started[i]}" 2>/dev/null || true
    done
    rm -rf "$work"
    exit $status
}
trap finish EXIT
trap 'exit 1' INT TERM HUP

fail() {
    printf '%s: %s\n' "$walk" "$*" >&2
    exit 1
}

# wait_for WHAT COMMAND...: until the command succeeds
wait_for() {
    local what=$1 end=$((SECONDS + patience))
    shift
    until "$@"; do
        [ $SECONDS -lt $end ] || fail "waited in vain for $what"
        [ -z "$program" ] || running "$program" || [[ $what == "the end"* ]] || fail "the program ended before $what"
        sleep 0.05
    done
}

start_desktop() { # start_desktop WIDTHxHEIGHT
    Xvfb -displayfd 3 -screen 0 "${1}x24" -nolisten tcp -noreset 3>"$work/display" 2>"$work/xvfb.log" &
    started+=($!)
    wait_for "the display" test -s "$work/display"
    DISPLAY=:$(cat "$work/display")
    export DISPLAY
    openbox --sm-disable >"$work/openbox.log" 2>&1 &
    started+=($!)
    wait_for "the window manager" has_window_manager
}
has_window_manager() { xdotool get_num_desktops >/dev/null 2>&1; }

install_program() { # the program, and the demo cartridge with its profile, in a folder of their own
    ln "$programs/quillary" "$work/bin/" 2>/dev/null || cp "$programs/quillary" "$work/bin/"
    "$programs/quillary-demo" "$work/demo" "$work/bin/profiles" >/dev/null
    demo=$work/demo
    profiles=$work/bin/profiles/NQDE0
}

# dark_palette: the colours of a dark desktop, which the toolkit reads from that desktop's settings
dark_palette() {
    export XDG_CURRENT_DESKTOP=KDE KDE_FULL_SESSION=true KDE_SESSION_VERSION=5
    cat >"$XDG_CONFIG_HOME/kdeglobals" <<'COLOURS'
[General]
widgetStyle=fusion
[KDE]
widgetStyle=fusion
[Colors:Window]
BackgroundNormal=49,54,59
ForegroundNormal=239,240,241
[Colors:View]
BackgroundNormal=35,38,41
BackgroundAlternate=49,54,59
ForegroundNormal=239,240,241
ForegroundLink=41,128,185
ForegroundVisited=127,140,141
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=239,240,241
[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=239,240,241
[Colors:Tooltip]
BackgroundNormal=49,54,59
ForegroundNormal=239,240,241
COLOURS
    highlight='#3daee9'
}

start_program() { # start_program [ARGUMENT...]
    "$work/bin/quillary" "$@" >"$work/log" 2>&1 &
    program=$!
    started+=("$program")
}

ended() { ! running "$program"; }
wait_for_end() { # until the program has ended well
    wait_for "the end of the program" ended
    wait "$program" || fail "the program ended with status $?"
    program=
}

cli() { "$programs/quillary-cli" "$@" --profiles "$work/bin/profiles"; }

# --- windows -----------------------------------------------------------------------------------------------------------

active_title() { xdotool getactivewindow getwindowname 2>/dev/null; }
is_active() { [[ $(active_title) =~ ^$1$ ]]; }
wait_for_window() { wait_for "the window \"$1\"" is_active "$1"; } # wait_for_window TITLE: an extended regular expression

# settled: the picture of the screen has stopped changing
wait_until_settled() {
    local before='' now
    for _ in $(seq 40); do
        now=$(import -window root -depth 8 rgb:- | cksum)
        [ "$now" != "$before" ] || return 0
        before=$now
        sleep 0.1
    done
}

shot() { # shot NAME: a picture of the whole screen among the screenshots
    wait_until_settled
    import -window root "$screenshots/$walk-$1.png"
}

# --- keys and mouse ----------------------------------------------------------------------------------------------------

press() { xdotool key --delay 20 "$@"; }
write() { xdotool type --delay 5 -- "$1"; }
click() { xdotool mousemove "$1" "$2" click "${3:-1}"; } # click X Y [BUTTON]

# answer TITLE TEXT: types into the dialog of that title, and presses Enter
answer() {
    wait_for_window "$1"
    press ctrl+a
    write "$2"
    press Return
    wait_for "the end of \"$1\"" not_active "$1"
}
not_active() { ! is_active "$1"; }

menu() { # menu MENU ENTRY: both counted from 0; what cannot be used at the moment is not counted among the entries
    press Alt_L
    for ((i = 0; i < $1; i++)); do press Right; done
    press Down # opens the menu
    for ((i = 0; i < $2; i++)); do press Down; done
    press Return
}

# tool ICON: clicks the tool button with that icon, which has to show as it was drawn, pixel for pixel
tool() {
    wait_for "the tool button with the icon $1" place_of "$1"
    # shellcheck disable=SC2046 # two numbers
    click $(cat "$work/place")
}

place_of() { # place_of ICON: leaves the centre of the tool button with that icon, X Y, in the file "place"
    local frame=2 size=$((32 * scale)) top left ground # the third picture in each icon has 32 pixels, the fifth 64
    [ "$scale" = 1 ] || frame=4
    geometry || return 1
    left=$X top=$Y # of what the frame surrounds, or somewhat lower: some versions of xdotool add the frame's title bar
    import -window root -crop "$((620 * scale))x$((80 * scale))+$left+$top" +repage "$work/tools.png"
    ground=$(convert "$work/tools.png" -format '%[pixel:p{6,20}]' info:)
    convert "$icons/$1.ico[$frame]" -background "$ground" -flatten "$work/tool.png"
    find_picture "$work/tools.png" "$work/tool.png" 0.03 >"$work/found" || return 1 # the ground is not quite even
    read -r X Y <"$work/found"
    echo "$((left + X + size / 2)) $((top + Y + size / 2))" >"$work/place"
}

geometry() { # X, Y, WIDTH and HEIGHT of the active window; there is none while one gives way to another
    xdotool getactivewindow getwindowgeometry --shell >"$work/geometry" 2>/dev/null || return 1
    # shellcheck source=/dev/null
    . "$work/geometry"
}

expand_all() { # in the tree, from its first row
    press Home asterisk
    last_search=$((${EPOCHREALTIME/./} / 1000)) # the star counts as a name that is searched for
}

# find_row TEXT: in the tree, which has the focus, goes to the first visible row whose name begins so
last_search=0
find_row() {
    # What is typed within 400 ms goes on from what was typed before.
    local rest=$((450 - (${EPOCHREALTIME/./} / 1000 - last_search)))
    [ $rest -le 0 ] || sleep "0.$(printf %03d $rest)"
    press Home
    write "$1"
    last_search=$((${EPOCHREALTIME/./} / 1000))
}

# --- looking -----------------------------------------------------------------------------------------------------------

# selected_row: leaves X Y HEIGHT of the selected row in the left half of the screen, where the tree is, in the file "row"
selected_row() {
    import -window root "$work/look.png"
    local found half
    half=$(convert "$work/look.png" -format '%[fx:int(w*0.45)]x%h+0+0' info:)
    found=$(convert "$work/look.png" -crop "$half" +repage -fill black +opaque "$highlight" -format '%@' info: 2>/dev/null) || return 1
    [[ $found =~ ^([0-9]+)x([0-9]+)\+([0-9]+)\+([0-9]+)$ ]] || return 1
    echo "${BASH_REMATCH[3]} ${BASH_REMATCH[4]} ${BASH_REMATCH[2]}" >"$work/row"
}
highlight='#308cc6' # of selected rows

click_row() { # click_row [ROWS [BUTTON]]: with the mouse, the selected row, or one so many rows below
    local x y height
    wait_for "a selected row" selected_row
    read -r x y height <"$work/row"
    click $((x + 150 * scale)) $((y + height / 2 + height * ${1:-0})) "${2:-1}"
}

# search_picture PICTURE PART: X Y and the difference, from 0 to 1, of where the part fits best
search_picture() {
    local found
    found=$(compare -metric RMSE -dissimilarity-threshold 1 -subimage-search "$1" "$2" null: 2>&1) || true
    [[ $found =~ \(([0-9.e+-]+)\)\ @\ ([0-9]+),([0-9]+)$ ]] || return 1
    echo "${BASH_REMATCH[2]} ${BASH_REMATCH[3]} ${BASH_REMATCH[1]}"
}

# find_picture PICTURE PART [DIFFERENCE]: X Y of the part in the picture, pixel for pixel
find_picture() {
    local x y difference left=0 top=0 picture=$1
    if [ "$scale" != 1 ]; then # searched for at half the size first, and then where it was found, which is far quicker
        convert "$1" -sample 50% "$work/half.png"
        convert "$2" -sample 50% "$work/half-part.png"
        read -r x y difference < <(search_picture "$work/half.png" "$work/half-part.png") || return 1
        left=$((x > 2 ? 2 * x - 4 : 0)) top=$((y > 2 ? 2 * y - 4 : 0))
        picture=$work/there.png
        convert "$1" -crop "$(convert "$2" -format '%[fx:w+8]x%[fx:h+8]' info:)+$left+$top" +repage "$picture"
    fi
    read -r x y difference < <(search_picture "$picture" "$2") || return 1
    awk -v found="$difference" -v allowed="${3:-0}" 'BEGIN { exit !(found <= allowed) }' || return 1
    echo "$((left + x)) $((top + y))"
}

# shows PICTURE: whether the preview shows exactly that picture, each pixel as SCALE x SCALE pixels of the screen
shows() {
    local x y
    read -r x y < <(preview_centre) || return 1
    import -window root -crop "$((200 * scale))x$((160 * scale))+$((x - 100 * scale))+$((y - 80 * scale))" +repage "$work/preview.png"
    convert "$1" -scale "${scale}00%" "$work/wanted.png"
    find_picture "$work/preview.png" "$work/wanted.png" >/dev/null
}

preview_centre() { # X Y
    geometry || return 1
    echo "$((X + WIDTH - 163 * scale)) $((Y + HEIGHT / 2 + 34 * scale))" # there is more above it than below
}
click_preview() {
    local x y
    read -r x y < <(preview_centre)
    click "$x" "$y"
}

screen_has() { # screen_has COLOUR: whether the screen shows at least a hundred pixels of exactly that colour
    local count
    count=$(import -window root png:- | convert - -fill black +opaque "$1" -fill white -opaque "$1" -format '%[fx:int(mean*w*h)]' info:)
    [ "$count" -ge 100 ]
}

logged_part() { grep -qF -- "$1" "$work/log"; }
logged() { [ "$(grep -cxF -- "$1" "$work/log")" -ge "${2:-1}" ]; } # logged LINE [TIMES]

# --- drag and drop -----------------------------------------------------------------------------------------------------

# drag FILE X Y: from the window of a file manager, so to speak, to that place, with the mouse
drag() {
    QT_SCALE_FACTOR=1 "$programs/../tests/system/desktop/drag-source" "$1" >/dev/null 2>&1 &
    local x=$2 y=$3
    started+=($!)
    wait_for_window 'Drag source'
    xdotool getactivewindow windowmove --sync 5 5 || true
    wait_until_settled
    xdotool mousemove 40 60 mousedown 1 mousemove 60 80 mousemove 90 110
    wait_until_settled
    xdotool mousemove $((x - 20)) $((y - 10)) mousemove $((x - 5)) $((y - 5)) mousemove "$x" "$y"
    wait_until_settled
    xdotool mouseup 1
    wait_for "the end of the drag" not_active 'Drag source'
}

# --- files -------------------------------------------------------------------------------------------------------------

same_file() { cmp -s "$1" "$2"; }
expect_same() { # expect_same FILE FILE WHAT
    same_file "$1" "$2" || fail "$3: $(cmp "$1" "$2" 2>&1 | head -n 1)"
}
expect_text() { # expect_text FILE TEXT
    grep -qF -- "$2" "$1" || fail "$1 lacks $2"
}
