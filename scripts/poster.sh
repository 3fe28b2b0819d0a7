#!/usr/bin/env bash
# Draws an image in parts of about equal work, side by side, and joins them.
# usage: poster.sh OUTPUT PARTS MODEL [RENDER-OPTION...]
# VORNA names the command, JOBS says how many parts each machine draws at a time. With GNU parallel HOSTS may name machines that
# share the folder, as its option --sshlogin does; the parts of a machine that fails are drawn by the others. What was drawn
# before an abort is not drawn again.
set -euo pipefail
if [ $# -lt 3 ]; then
    sed -n 3p "$0" >&2
    exit 2
fi
output=$1 parts=$2
shift 2
jobs=${JOBS:-$(nproc)}
plan=$(mktemp)
trap 'rm -f "$plan"' EXIT

"${VORNA:-vorna}" render --output="$output" --plan="$parts" --plan-lines --threads=1 "$@" >"$plan"
if command -v parallel >/dev/null; then
    hosts=()
    if [ "${HOSTS-}" ]; then
        hosts=(--sshlogin "$HOSTS" --workdir "$PWD" --retries 5)
    fi
    head -n -1 "$plan" | parallel --will-cite --halt now,fail=1 --jobs "$jobs" "${hosts[@]}"
else
    head -n -1 "$plan" | xargs -r -d '\n' -n 1 -P "$jobs" sh -c
fi
eval "set -- $(tail -n 1 "$plan")"
"$@"
while [ "$1" != -- ]; do
    shift
done
shift
rm -f "$@"
