#!/usr/bin/env bash
# The command of the entry for file managers draws a thumbnail into a file without a suffix. usage: thumbnailer.sh VORNA ENTRY
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
printf 'v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n' >"$folder/model of three.obj"
read -r -a words <<<"$(sed -n 's/^Exec=vorna //p' "$2")"
for i in "${!words[@]}"; do
    words[i]=${words[i]//%o/$folder/thumbnail}
    words[i]=${words[i]//%s/96}
    words[i]=${words[i]//%i/$folder/model of three.obj}
done
"$1" "${words[@]}"
# The signature, and width and height of the header.
[ "$(head -c 24 "$folder/thumbnail" | od -An -tx1 | tr -d ' \n')" = 89504e470d0a1a0a0000000d494844520000006000000060 ]
