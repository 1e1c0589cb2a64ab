#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# commands.sh PROGRAMS PAGE: the commands that the page has in its section "Try it" do what they are to do, one after the other.
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$1/quillary-cli" "$1/quillary-demo" "$work/"
commands=$(sed -n '/^## Try it/,/^## Rules/p' "$2" | grep '^    quillary-cli ')
[ "$(wc -l <<<"$commands")" -ge 5 ] || { echo "The page has too few commands"; exit 1; }
cd "$work"
while read -r program arguments; do
    echo "$program $arguments"
    # shellcheck disable=SC2086 # several words
    "./$program" $arguments >output 2>&1 || { cat output; exit 1; }
done <<<"$commands"
cmp demo/demo.z64 again.z64
