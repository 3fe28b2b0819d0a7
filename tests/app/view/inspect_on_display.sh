#!/usr/bin/env bash
# usage: inspect_on_display.sh VORNA RECORDING KEYS
# The window of `vorna inspect` on a real X server, as large as its screen: what the server shows is what a screenshot holds.
set -euo pipefail
vorna=$1 recording=$2 keys=$3
work=$(mktemp -d)
server= window=
cleanup() {
    [ -z "$window" ] || kill "$window" 2>/dev/null || true
    [ -z "$server" ] || kill "$server" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "$*"; exit 1; }

Xvfb -displayfd 3 -screen 0 640x480x24 -nolisten tcp 3>"$work/display" 2>/dev/null &
server=$!
for ((i = 0; i < 300; ++i)); do
    [ ! -s "$work/display" ] || break
    sleep 0.1
done
[ -s "$work/display" ] || fail "the X server does not start"
export DISPLAY=:$(cat "$work/display")

SDL_VIDEODRIVER=x11 "$vorna" inspect "$recording" --size 640x480 --screenshots "$work" --script "$keys" >"$work/said" &
window=$!
shown=no
for ((i = 0; i < 300; ++i)); do
    kill -0 "$window" 2>/dev/null || fail "the window has closed: $(cat "$work/said")"
    if [ -s "$work/crystals-002.png" ] && import -window root "$work/screen.png" &&
        "$vorna" compare --by colors "$work/screen.png" "$work/crystals-002.png" >"$work/differs"; then
        shown=yes
        break
    fi
    sleep 0.1
done
[ $shown = yes ] || fail "expected the screen to show the screenshot: $(cat "$work/said" "$work/differs")"

# As the page says: from call to call of the pixel's history.
calls=$(sed -n 's/.*--until \([0-9]*\) .*/\1/p' "$work/said" | tr '\n' ' ')
[ "$calls" = "6 3 " ] || fail "expected the calls 6 and 3: $(cat "$work/said")"
