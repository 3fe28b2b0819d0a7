#!/bin/sh
# usage: check_names.sh NM LIBRARY ACTIONS HEADER...
#
# The library exports the functions of the headers and nothing else, and each slot of the action list is a function.
set -eu
nm=$1
library=$2
actions=$3
shift 3
declared=$(cat "$@" | sed 's://.*::' | grep -oE '\bvorna_[a-z0-9_]+\(' | tr -d '(' | grep -vE '^vorna_(rgba|present_function)$' | sort -u)
exported=$("$nm" -D --defined-only "$library" | awk '{ print $NF }' | sed 's/@.*//' | sort -u)
[ -n "$declared" ] || { echo "no functions in the headers" >&2; exit 1; }
status=0
for name in $exported; do
    echo "$declared" | grep -qx "$name" || { echo "exported but not declared: $name"; status=1; }
done
for name in $declared; do
    echo "$exported" | grep -qx "$name" || { echo "declared but not exported: $name"; status=1; }
done
for slot in $(sed -n 's/^VT_ACTION(\([a-z0-9_]*\),.*/\1/p' "$actions"); do
    echo "$declared" | grep -qx "vorna_$slot" || { echo "slot without a function: $slot"; status=1; }
done
exit $status
