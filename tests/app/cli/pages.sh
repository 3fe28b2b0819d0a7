#!/usr/bin/env bash
# usage: pages.sh MANDOC FOLDER SOURCES
# All manual pages in FOLDER are sound, there is one for the program and one for each source NAME_command.cpp, and the checker finds
# faults.
set -euo pipefail
mandoc=$1 folder=$2 sources=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Pages tell the version instead of a date.
complaints() {
    "$mandoc" -T lint -W warning "$1" | grep -v 'missing date' || true
}

for name in vorna $(cd "$sources" && ls -- *_command.cpp | sed 's/\(.*\)_command.cpp/vorna-\1/'); do
    [ -e "$folder/$name.1.gz" ] || { echo "$name: expected a page"; exit 1; }
done
for page in "$folder"/*.1.gz; do
    name=$(basename "$page" .1.gz)
    gunzip -c "$folder/$name.1.gz" >"$work/$name.1"
    found=$(complaints "$work/$name.1")
    [ -z "$found" ] || { echo "$found"; exit 1; }
    grep -q '^\.SH EXIT STATUS$' "$work/$name.1" || { echo "$name: expected exit statuses"; exit 1; }
done
printf '.TH A 1\n.SH\n.TP\n.nonsense\n' >"$work/bad.1"
[ "$(complaints "$work/bad.1")" ] || { echo "$mandoc finds nothing wrong with bad.1"; exit 1; }
