#!/usr/bin/env bash
# usage: scripts/test.sh [all]
# Formatting and every test in a release build, with each kernel set: under ten minutes on two processors. With "all" everything else too that
# must hold before a release: the tests with sanitizers, clang-tidy, the tests for Windows on Wine, those for other processors
# under QEMU, and those for browsers, an hour more.
# Works on a fresh Debian 12 as root, without a display. The last words are those of the test runner,
# with "all" those of the recipes that draw an image in parts.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/packages.sh

case "${1-}" in
"" | all) ;;
*)
    echo "usage: scripts/test.sh [all]; found '$1'" >&2
    exit 2
    ;;
esac
everything=${1-}
jobs=$(nproc)

# usage: check PRESET [CMAKE-OPTION...]
check() {
    local preset=$1
    shift
    step "$preset"
    cmake --preset "$preset" "$@" >/dev/null
    cmake --build --preset "$preset" -j "$jobs"
    ctest --preset "$preset" -j "$jobs"
}

install_packages "${build_packages[@]}" "${python_packages[@]}" "${test_packages[@]}"
step "clang-format"
scripts/check-format.sh clang-format

if [ "$everything" ]; then
    install_packages clang clang-tidy libclang-rt-14-dev llvm "${windows_packages[@]}" "${windows_test_packages[@]}"

    # Sanitizers make everything several times slower: fewer rounds of the seeded properties.
    VORNA_TEST_SCALE=${VORNA_TEST_SCALE:-0.2} check clang-asan

    # Only what runs in several threads.
    VORNA_TEST_SCALE=${VORNA_TEST_SCALE:-0.2} check gcc-tsan

    # The sources of the kernel sets are the same but for their vocabulary of lanes.
    step "clang-tidy"
    run-clang-tidy -p build/clang-asan -j "$jobs" -quiet "^$PWD/(app|c|drawing|renderer|vorna)/(?!.*_(portable|baseline|avx512|neon)\.cpp)" 2>/dev/null

    # Seeded properties have no more to find there than what compilers and run-time libraries do differently.
    VORNA_TEST_SCALE=${VORNA_TEST_SCALE:-0.2} check windows-mingw

    scripts/test-foreign.sh
    scripts/test-web.sh
fi

check gcc-release

if [ "$everything" ]; then
    scripts/try-recipes.sh build/gcc-release/bin/vorna all
fi
