#!/usr/bin/env bash
# usage: inspect_on_display.sh VORNA RECORDING
# The window of `vorna inspect` on a real X server, as large as its screen: what the server shows is what a screenshot holds.
set -euo pipefail
vorna=$1 recording=$2
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

cat >"$work/script" <<KEYS
key 2
key Left
key Left
wheel 3 300,150
click 320,200
drag left 60,420 320,420
key c
KEYS
SDL_VIDEODRIVER=x11 "$vorna" inspect "$recording" --size 640x480 --screenshots "$work" --script "$work/script" >"$work/said" &
window=$!
shown=no
for ((i = 0; i < 300; ++i)); do
    kill -0 "$window" 2>/dev/null || fail "the window has closed: $(cat "$work/said")"
    if [ -s "$work/said" ] && import -window root "$work/screen.png" &&
        "$vorna" compare "$work/screen.png" "$(head -n 1 "$work/said")" >"$work/differs"; then
        shown=yes
        break
    fi
    sleep 0.1
done
[ $shown = yes ] || fail "expected the screen to show the screenshot: $(cat "$work/said" "$work/differs")"

# The slider has gone to the middle.
calls=$("$vorna" replay "$recording" | sed 's/.*: drew \([0-9]*\) call.*/\1/')
call=$(((calls + 1) / 2 - 1))
grep -q -- "--until $call " "$work/said" || fail "expected call $call of $calls: $(cat "$work/said")"
