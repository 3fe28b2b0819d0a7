#!/usr/bin/env bash
# usage: mutants_found.sh FAULTS FOLDER
# Checks that the text of each fault of the file FAULTS, the list of scripts/mutants.sh, is once in its source below FOLDER: a fault
# whose source has changed is not planted.
set -euo pipefail
faults=$1 folder=$2 status=0 count=0
while IFS= read -r line; do
    [[ -n $line && $line != '#'* ]] || continue
    count=$((count + 1))
    IFS=$'\x1f' read -r file old _ <<<"${line//' @@ '/$'\x1f'}"
    text=$(<"$folder/$file")
    rest=${text#*"$old"}
    if [ "$rest" = "$text" ]; then
        echo "$file: expected once, found nowhere: $old"
        status=1
    elif [ "${rest#*"$old"}" != "$rest" ]; then
        echo "$file: expected once, found several times: $old"
        status=1
    fi
done <"$faults"
[ "$count" -gt 0 ] || status=1
exit "$status"
