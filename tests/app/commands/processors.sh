#!/bin/sh
# processors.sh VORNA QEMU MODEL: the bytes of image files are the same on processors with other instructions.
set -u
vorna=$1 qemu=$2 model=$3
output=$(mktemp -d)
trap 'rm -rf "$output"' EXIT
failures=0
for suffix in png tif webp jpg; do
    for compress in fast default; do
        set -- render "$model" --size 320x240 --edges --antialias --compress $compress --kernels portable
        "$vorna" "$@" -o "$output/own.$suffix" || exit 1
        for processor in Nehalem Haswell; do
            "$qemu" -cpu $processor "$vorna" "$@" -o "$output/other.$suffix" 2>"$output/errors" || { cat "$output/errors"; exit 1; }
            cmp "$output/own.$suffix" "$output/other.$suffix" || failures=$((failures + 1))
        done
    done
done
echo "$failures files differ"
[ $failures -eq 0 ]
