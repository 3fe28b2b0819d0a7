#!/usr/bin/env bash
# usage: pages.sh MANDOC FOLDER
# The manual pages are sound, there is one for each command, and the checker finds what is not.
set -euo pipefail
mandoc=$1 folder=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Pages tell the version instead of a date.
complaints() {
    "$mandoc" -T lint -W warning "$1" | grep -v 'missing date' || true
}

for name in vorna vorna-{render,view,replay,info,compare,assemble,check,help}; do
    gunzip -c "$folder/$name.1.gz" >"$work/$name.1"
    found=$(complaints "$work/$name.1")
    [ -z "$found" ] || { echo "$found"; exit 1; }
    grep -q '^\.SH EXIT STATUS$' "$work/$name.1" || { echo "$name: expected exit statuses"; exit 1; }
done
printf '.TH A 1\n.SH\n.TP\n.nonsense\n' >"$work/bad.1"
[ "$(complaints "$work/bad.1")" ] || { echo "$mandoc finds nothing wrong with bad.1"; exit 1; }
