#!/bin/sh
# digests.sh FOLDER "MODEL..." COMMAND...: the pixels of real models are the same for every kernel set, number of threads, tile size,
# compiler and processor. The command is vorna, with an emulator in front where it needs one.
set -u
folder=$1 models=$2
shift 2
output=$(mktemp -d)
trap 'rm -rf "$output"' EXIT
failures=0 drawn=0
# usage: expect DIGEST MODEL COMMAND...
expect() {
    digest=$1 model=$2
    shift 2
    case " $models " in
    *" $model "*) ;;
    *) return ;;
    esac
    drawn=$((drawn + 1))
    for kernels in portable baseline avx2 avx512 neon; do
        for tiling in "--threads=1" "--threads=1 --tile-size=64" "--threads=3 --tile-size=200"; do
            # The options are words of their own.
            # shellcheck disable=SC2086
            found=$("$@" --kernels $kernels render "$folder/$model" -o "$output/out.png" --size 3000x1500 --view front --background white --edges --antialias --hash $tiling 2>&1)
            case $found in
            "$digest") ;;
            *"cannot run the kernel set"*) echo "$model, $kernels: not on this processor" ;;
            *)
                echo "$model, $kernels, $tiling: expected $digest, found $found"
                failures=$((failures + 1))
                ;;
            esac
        done
    done
}
expect 3e888e28eb2ea8525b9cdb90a6f940b269748a720545a4c1cc4d23e341482bcf bunny.obj "$@"
expect 98069b65d865ca7c6f91e8969ba5f6fe6fe120cd485f0fc7c68eb1dcc862ffd3 horse.3ds "$@"
echo "$drawn models drawn, $failures digests differ"
[ $drawn -gt 0 ] && [ $failures -eq 0 ]
