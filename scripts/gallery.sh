#!/usr/bin/env bash
# usage: gallery.sh [VORNA]           draws the pictures of docs/gallery.md anew into docs/images/gallery
#        gallery.sh --check VORNA     draws them and compares; what needs a file that is not there is left out, and so is what
#                                     others' programs draw
# The commands are those of the page. VORNA is the command to use, by default that of scripts/demo.sh.
set -euo pipefail
cd "$(dirname "$0")/.."
check=
if [ "${1-}" = --check ]; then
    check=yes
    shift
fi
command=$(realpath "${1:-build/demo/bin/vorna}")
page=$PWD/docs/gallery.md images=$PWD/docs/images/gallery
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
ln -s "$PWD/recordings" "$work/recordings"
cd "$work"

vorna() {
    "$command" "$@"
}

# The page's blocks, each ended by a zero byte.
blocks() {
    awk '/^```sh$/ {inside = 1; next} /^```$/ && inside {inside = 0; printf "%c", 0} inside {print}' "$page"
}

# Files that a block reads: words with a slash in them.
missing_file() {
    local word
    for word in $1; do
        if [[ $word == */* && ! -e $word ]]; then
            echo "$word"
            return
        fi
    done
}

differing=0 drawn=0
while IFS= read -r -d '' block; do
    if [[ $block == npm\ * || $block == xvfb-run\ * ]]; then
        if [ ! "$check" ]; then
            eval "$block" >/dev/null
        fi
        continue
    fi
    missing=$(missing_file "$block")
    if [ "$check" ] && [ "$missing" ]; then
        echo "left out, no $missing"
        continue
    fi
    eval "$block"
done < <(blocks)

mkdir -p "$images"
for picture in *.png; do
    drawn=$((drawn + 1))
    if [ ! "$check" ]; then
        mv "$picture" "$images/$picture"
    elif ! vorna compare "$images/$picture" "$picture" >difference; then
        echo "$picture: $(cat difference)"
        differing=$((differing + 1))
    fi
done
echo "$drawn pictures${check:+, $differing of them differ}"
[ "$drawn" -gt 0 ] && [ "$differing" -eq 0 ]
