#!/usr/bin/env bash
# usage: scripts/test-foreign.sh [PRESET...]
# Cross-builds for other processors, and runs tests there under QEMU's user mode: those of renderer and host library everywhere,
# on AArch64 with each of its kernel sets, and those of drawing on s390x, which is big-endian. Then the golden recordings and the
# images of the gallery are drawn, and their digests compared with docs/receipt.json, but for ARM, which has 32 bits: renderer and
# host library only are built there. Presets choose some of linux-aarch64, linux-s390x, linux-riscv64 and linux-arm.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

presets=("$@")
[ $# -gt 0 ] || presets=(linux-aarch64 linux-s390x linux-riscv64 linux-arm)
# usage: target_of PRESET, the system that it builds for, as the compiler names it; nothing for other presets
target_of() {
    awk -v name="\"name\": \"$1\"," 'index($0, name) && match($0, /"VORNA_TARGET": "[^"]*"/) {
        print substr($0, RSTART + 17, RLENGTH - 18)}' CMakePresets.json
}
# Before anything is built.
for preset in "${presets[@]}"; do
    if [ -z "$(target_of "$preset")" ]; then
        echo "scripts/test-foreign.sh: found '$preset', expected linux-aarch64, linux-s390x, linux-riscv64 or linux-arm" >&2
        exit 2
    fi
done
# Emulated programs are some ten times slower.
export VORNA_TEST_SCALE=${VORNA_TEST_SCALE:-0.1}

install_packages "${build_packages[@]}" "${foreign_packages[@]}"
for preset in "${presets[@]}"; do
    step "$preset"
    scripts/zlib-for.sh "$(target_of "$preset")"
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" -j "$(nproc)"
    ctest --preset "$preset" -j "$(nproc)"
    [ ! -e "build/$preset/bin/vorna" ] || scripts/receipt.py --check "$preset"
done
