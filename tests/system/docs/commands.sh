#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# commands.sh PROGRAMS PAGE FROM TO: the commands of quillary-cli that the page has between the headings FROM and TO do what they are to do,
# one after the other.
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$1/quillary-cli" "$work/"
commands=$(sed -n "/^## $3/,/^## $4/p" "$2" | sed -n 's/^    \(quillary-cli .*\)/\1/p')
[ "$(wc -l <<<"$commands")" -ge 5 ] || { echo "The page has too few commands"; exit 1; }
cd "$work"
PATH=$work:$PATH
while read -r command; do
    echo "$command"
    bash -c "$command" </dev/null >output 2>&1 || { cat output; exit 1; }
done <<<"$commands"
# What was extracted and imported again changes nothing.
[ ! -f again.z64 ] || cmp demo/demo.z64 again.z64
