#!/bin/sh
# Wine for tests. Its server outlives programs, and what it starts keeps their output open: it has none here, and programs write
# into a file, so that nobody waits for it.
#
# wine.sh start|stop PREFIX WINE
# wine.sh test PREFIX WINE PROGRAM ARGUMENT...: passes with status 0 and a line that says so, because a program that breaks
# down early may have status 0 too.
set -u
action=$1 wine=$3
export WINEPREFIX="$2" WINEDEBUG=-all WINEDLLOVERRIDES=mscoree=,mshtml=
server=$(dirname "$wine")/wineserver64
[ -x "$server" ] || server=$(dirname "$wine")/wineserver
shift 3
case $action in
start)
    mkdir -p "$WINEPREFIX"
    { "$server" -p600; "$wine" wineboot; } </dev/null >/dev/null 2>&1
    ;;
stop)
    "$server" -k </dev/null >/dev/null 2>&1
    exit 0
    ;;
test)
    output=$(mktemp)
    trap 'rm -f "$output"' EXIT
    "$wine" "$@" </dev/null >"$output" 2>&1
    status=$?
    cat "$output"
    if [ $status -eq 0 ] && ! grep -q '^\[  PASSED  \] [1-9]\|^[1-9][0-9]* checks: .* 0 failed, 0 not run\|^[1-9][0-9]* inputs and [0-9]* changed copies of each' "$output"; then
        echo "it ended before all tests"
        status=1
    fi
    echo "status $status"
    exit $status
    ;;
esac
