#!/usr/bin/env bash
# The script for parts on one machine makes the very file that one command makes, and draws again only what is missing.
# usage: poster_script.sh VORNA
set -euo pipefail
script=$(cd "$(dirname "$0")/../../../scripts" && pwd)/poster.sh
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
printf 'v -1 -1 0\nv 1 -0.9 0.1\nv 0.3 1 -0.2\nv -0.1 0.2 1\nf 1 2 3\nf 1 2 4\nf 2 3 4\nf 3 1 4\n' >"model of 'four'.obj"
options=("model of 'four'.obj" --size 700x500 --edges --antialias)
"$1" render "${options[@]}" -o whole.png
VORNA=$1 "$script" joined.png 7 "${options[@]}"
cmp whole.png joined.png
if [ "$(ls | wc -l)" -ne 3 ]; then
    echo "expected no parts beside the image, found $(ls)" >&2
    exit 1
fi

# Two parts are there; the second one is damaged. The first one is not drawn again.
"$1" render "${options[@]}" --threads=1 -o joined.png --plan 7 --plan-lines | head -n 2 | sh
truncate -s -1 joined.part-1.png
"$1" render "${options[@]}" -o joined.png --plan 7 --plan-lines >plan
if [ "$(wc -l <plan)" -ne 7 ] || grep -q -e --tile=0 plan; then
    echo "expected six parts and the command that joins them, found:" >&2
    cat plan >&2
    exit 1
fi
rm joined.png
VORNA=$1 "$script" joined.png 7 "${options[@]}"
cmp whole.png joined.png

if VORNA=$1 "$script" none.png 6 missing.obj 2>/dev/null || [ -e none.png ]; then
    echo "a missing model was not noticed" >&2
    exit 1
fi
