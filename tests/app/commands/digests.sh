#!/bin/sh
# digests.sh VORNA MODELS: the pixels of real models are the same for every kernel set, number of threads, tile size and compiler.
set -u
vorna=$1 models=$2
output=$(mktemp -d)
trap 'rm -rf "$output"' EXIT
failures=0
# usage: expect DIGEST MODEL
expect() {
    for kernels in portable baseline avx2 avx512; do
        for tiling in "--threads=1" "--threads=1 --tile-size=64" "--threads=3 --tile-size=200"; do
            # The options are words of their own.
            # shellcheck disable=SC2086
            found=$("$vorna" --kernels $kernels render "$models/$2" -o "$output/out.png" --size 3000x1500 --view front --background white --edges --antialias --hash $tiling 2>&1)
            case $found in
            "$1") ;;
            *"this processor cannot run"*) echo "$2, $kernels: not on this processor" ;;
            *)
                echo "$2, $kernels, $tiling: expected $1, found $found"
                failures=$((failures + 1))
                ;;
            esac
        done
    done
}
expect 38537a1fc1aeb3b2e4b426930ce15a96bf5226d49e9ff4953cebb5d2909e2871 bunny.obj
expect 98069b65d865ca7c6f91e8969ba5f6fe6fe120cd485f0fc7c68eb1dcc862ffd3 horse.3ds
echo "$failures digests differ"
[ $failures -eq 0 ]
