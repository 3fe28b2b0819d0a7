#!/usr/bin/env bash
# usage: contact-sheet.sh VORNA OUT FOLDER...
# Draws all models below the folders and lays the images out on one sheet a kind of file, OUT/stl.png and so on, with the files'
# names. With VIEWER set, each image is followed by that command's: VIEWER='xvfb-run -a f3d --output=OUTPUT --resolution=320,240'
# gets OUTPUT replaced by a file, and the model's name behind it. OPTIONS are options of vorna render. What cannot be drawn is
# listed with its message in OUT/not-drawn.txt. Needs ImageMagick.
set -euo pipefail
if [ $# -lt 3 ]; then
    sed -n '2,/^set/{/^set/d;s/^# //;p}' "$0" >&2
    exit 2
fi
vorna=$(realpath "$1") out=$2
shift 2
size=320x240 most=120 # images on a sheet
mkdir -p "$out"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
: >"$out/not-drawn.txt"

# usage: draw_beside MODEL IMAGE: the viewer's image, or an empty one that says so.
draw_beside() {
    local words
    read -ra words <<<"${VIEWER//OUTPUT/$2}"
    if ! timeout 60 "${words[@]}" "$1" >/dev/null 2>&1 || [ ! -s "$2" ]; then
        convert -size "$size" xc:grey90 -gravity center -annotate 0 "not drawn" "$2"
    fi
}

number=0
while IFS= read -r -d '' model; do
    kind=${model##*.}
    kind=${kind,,}
    number=$((number + 1))
    image=$(printf '%s/%s-%05d' "$work" "$kind" "$number")
    # The options are words of their own.
    # shellcheck disable=SC2086
    if ! message=$(timeout 60 "$vorna" render "$model" -o "$image-a.png" --size "$size" ${OPTIONS-} 2>&1 >/dev/null); then
        echo "$model: ${message##*$'\n'}" >>"$out/not-drawn.txt"
        [ -n "${VIEWER-}" ] || continue
        convert -size "$size" xc:grey90 -gravity center -annotate 0 "not drawn" "$image-a.png"
    fi
    convert "$image-a.png" -set label "$(basename "$model")" "$image-a.png"
    if [ -n "${VIEWER-}" ]; then
        draw_beside "$model" "$image-b.png"
    fi
done < <(find "$@" -type f \( -iname '*.stl' -o -iname '*.obj' -o -iname '*.ply' -o -iname '*.gltf' -o -iname '*.glb' \
    -o -iname '*.3mf' -o -iname '*.off' -o -iname '*.3ds' -o -iname '*.dae' -o -iname '*.fbx' -o -iname '*.x3d' -o -iname '*.dxf' \) -print0 |
    sort -z)

shopt -s nullglob
for kind in $(cd "$work" && printf '%s\n' *.png | sed 's/-.*//' | sort -u); do
    images=("$work/$kind"-*.png)
    for ((first = 0; first < ${#images[@]}; first += most)); do
        sheet=$out/$kind.png
        if [ "$first" -gt 0 ]; then
            sheet=$out/$kind-$((first / most + 1)).png
        fi
        montage "${images[@]:first:most}" -tile 6x -geometry "$size+4+4" -pointsize 12 "$sheet"
        echo "$sheet"
    done
done
