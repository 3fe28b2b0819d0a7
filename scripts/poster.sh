#!/usr/bin/env bash
# Draws a picture in parts, as many at a time as there are processors, and joins them; example of a job array on one machine.
# usage: poster.sh OUTPUT COLSxROWS MODEL [RENDER-OPTION...]; VORNA names the command, JOBS how many parts are drawn at a time.
set -euo pipefail
if [ $# -lt 3 ]; then
    sed -n 3p "$0" >&2
    exit 2
fi
output=$1 parts=$2
shift 2
export VORNA=${VORNA:-vorna}
jobs=${JOBS:-$(nproc)}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

last=$((${parts%x*} * ${parts#*x} - 1))
draw=("$VORNA" render "$@" --threads 1 --tiles-of "$parts" --tile '{}' -o "$folder/{}.png")
if command -v parallel >/dev/null; then
    seq 0 "$last" | parallel --will-cite --halt now,fail=1 --jobs "$jobs" --quote "${draw[@]}"
else
    seq 0 "$last" | xargs -P "$jobs" -I '{}' "${draw[@]}"
fi
"$VORNA" assemble "$folder"/*.png -o "$output"
