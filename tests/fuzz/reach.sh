#!/usr/bin/env bash
# Fails when there is a function of a reader that no input of the fuzzers has called, but for those in unreached.txt, which says why.
# usage: reach.sh OBJECTS PROGRAM...; OBJECTS: a list of the readers' object files; beside each program is what it has called.
set -euo pipefail
export LC_ALL=C
objects=$1
shift
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# Functions of the project; instances of a template count as one, and so do forms with other parameters. What compilers write, to
# copy and to destroy, does not count, nor does the loop of a thread, since what it calls is called by the first thread too.
functions='^_ZZ?Z?NK?5vorna(3app|7drawing)'
left_out='14run_on_threads|D[012]Ev$|C[12]E(RK|O)S[0-9A-Z]*_$|aSE(RK|O)|\.cold|\.part'
names_in() { awk '$2 ~ /^[tTwW]$/ { print $1, $3 }' | sort; }
without_parameters() {
    c++filt | sed -E 's/\(anonymous namespace\)/@/g; s/operator\(\)/operator@@/g; s/\[abi:cxx11\]//g; s/(operator|->)[<>=-]+//g
        :inner; s/<[^<>]*>|\([^()]*\)( const)?//; t inner
        s/@@/()/g; s/@/(anonymous namespace)/g; s/^([^{]* )?(vorna::)/\2/; s/ const$//' | sort -u
}
xargs nm --defined-only <"$objects" | names_in | cut -d ' ' -f 2 | grep -E "$functions" | grep -Ev "$left_out" | without_parameters >"$folder/wanted"
for program in "$@"; do
    nm --defined-only "$program" | names_in >"$folder/names"
    sort "$program.reach" | join - "$folder/names" | cut -d ' ' -f 2 >>"$folder/called"
done
without_parameters <"$folder/called" | comm -23 "$folder/wanted" - >"$folder/missed"
sed '/^#/d; /^$/d' "$(dirname "$0")/unreached.txt" | sort -u >"$folder/allowed"
printf '%d functions, %d not called by any input\n' "$(wc -l <"$folder/wanted")" "$(wc -l <"$folder/missed")"
comm -23 "$folder/missed" "$folder/allowed" | sed 's/^/not called: /'
comm -13 "$folder/missed" "$folder/allowed" | sed 's/^/in unreached.txt, but called or gone: /'
cmp -s "$folder/missed" "$folder/allowed"
