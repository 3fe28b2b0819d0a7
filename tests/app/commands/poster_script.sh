#!/usr/bin/env bash
# The script for job arrays makes the very file that one command makes. usage: poster_script.sh VORNA
set -euo pipefail
script=$(dirname "$0")/../../../scripts/poster.sh
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
printf 'v -1 -1 0\nv 1 -0.9 0.1\nv 0.3 1 -0.2\nv -0.1 0.2 1\nf 1 2 3\nf 1 2 4\nf 2 3 4\nf 3 1 4\n' >"$folder/model of four.obj"
options=("$folder/model of four.obj" --size 700x500 --edges --antialias)
"$1" render "${options[@]}" -o "$folder/whole.png"
VORNA=$1 "$script" "$folder/joined.png" 3x2 "${options[@]}"
cmp "$folder/whole.png" "$folder/joined.png"
if VORNA=$1 "$script" "$folder/none.png" 3x2 "$folder/missing.obj" 2>/dev/null || [ -e "$folder/none.png" ]; then
    echo "a missing model was not noticed" >&2
    exit 1
fi
