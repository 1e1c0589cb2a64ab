#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Renders the icons in svg/ to the files that the program carries: one .ico an icon with all its sizes, so that one resource
# path is crisp in menus, toolbars and on displays of high density; and the program's own icon to hicolor/, for desktops. Needed
# only when a drawing changes; the results are kept in the repository. Uses rsvg-convert (librsvg2-bin) and python3.
#
# NAME-16.svg is drawn on a grid of 16 pixels and gives the sizes 16, 32 and 64; NAME-24.svg gives 24 and 48.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p icons style

render() { # render SVG SIZE: the drawing as a PNG of SIZE x SIZE; prints its path
    local png
    png="$work/$(basename "$1" .svg)-$2.png"
    rsvg-convert --width "$2" --height "$2" "$1" --output "$png"
    printf '%s\n' "$png"
}

for small in svg/*-16.svg; do
    name=$(basename "$small" -16.svg)
    if [ "$name" = quillary ]; then
        large=svg/quillary.svg
        pictures=("$(render "$small" 16)")
        for size in 24 32 48 64 128 256; do pictures+=("$(render "$large" "$size")"); done
    else
        large=svg/$name-24.svg
        pictures=("$(render "$small" 16)" "$(render "$large" 24)" "$(render "$small" 32)" "$(render "$large" 48)"
                  "$(render "$small" 64)")
    fi
    python3 packico.py "icons/$name.ico" "${pictures[@]}"
done
rsvg-convert svg/alphabg.svg --output style/alphabg.png

for size in 16 24 32 48 64 128 256; do
    drawing=svg/quillary.svg
    [ "$size" = 16 ] && drawing=svg/quillary-16.svg
    folder=hicolor/${size}x$size/apps
    mkdir -p "$folder"
    cp "$(render "$drawing" "$size")" "$folder/quillary.png"
done
